#include "scene/text/AlphaBlur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavlo::scene {

namespace {

constexpr int passes = 3;

// Half of the window of one mean: three means over 2 r + 1 pixels have the variance ((2 r + 1)² - 1) / 4.
int radiusOf(float sigma)
{
    return sigma > 0 ? static_cast<int>(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2)) : 0;
}

// One moving mean along a row or a column of `count` values that lie `step` apart.
void mean(uchar* values, int count, qsizetype step, int radius, std::vector<uchar>& copy)
{
    for (int i = 0; i < count; ++i)
        copy[static_cast<std::size_t>(i)] = values[i * step];
    const int window = 2 * radius + 1;
    int sum = 0;
    for (int i = 0; i < std::min(radius, count); ++i)
        sum += copy[static_cast<std::size_t>(i)];
    for (int i = 0; i < count; ++i) {
        if (i + radius < count)
            sum += copy[static_cast<std::size_t>(i + radius)];
        if (i - radius - 1 >= 0)
            sum -= copy[static_cast<std::size_t>(i - radius - 1)];
        values[i * step] = static_cast<uchar>((sum + window / 2) / window);
    }
}

} // namespace

int blurReach(float sigma) { return passes * radiusOf(sigma); }

void blurAlpha(QImage& image, float sigma)
{
    const int radius = radiusOf(sigma);
    if (radius == 0 || image.isNull())
        return;
    const int width = image.width(), height = image.height();
    const qsizetype pitch = image.bytesPerLine();
    uchar* const bits = image.bits();
    std::vector<uchar> copy(static_cast<std::size_t>(std::max(width, height)));
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < height; ++y)
            mean(bits + y * pitch, width, 1, radius, copy);
        for (int x = 0; x < width; ++x)
            mean(bits + x, height, pitch, radius, copy);
    }
}

} // namespace tavlo::scene
