#include "support/reference/Picture.h"

namespace tavlo::reference {

Picture::Picture(int columns, int rows, std::span<const std::uint8_t> bytes) : Picture(columns, rows, Rgba{0, 0, 0, 1})
{
    const std::size_t channels = bytes.size() / texels.size();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        texels[i / channels][i % channels] = bytes[i] / 255.0;
}

Rgba Picture::at(Vector uv) const
{
    if (texels.empty())
        return {};
    // Far outside is as good as just outside, and fits an int.
    const double x = std::clamp(uv.x * width - 0.5, -1.0, width + 1.0);
    const double y = std::clamp(uv.y * height - 0.5, -1.0, height + 1.0);
    const double left = std::floor(x), top = std::floor(y);
    const auto row = [&](double down) {
        const int line = std::clamp(int(down), 0, height - 1);
        return lerp(at(std::clamp(int(left), 0, width - 1), line), at(std::clamp(int(left) + 1, 0, width - 1), line),
                    x - left);
    };
    return lerp(row(top), row(top + 1), y - top);
}

} // namespace tavlo::reference
