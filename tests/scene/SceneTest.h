#pragma once

#include "graphics/GraphicsTest.h"
#include "scene/Director.h"
#include "scene/GLView.h"
#include "scene/Scene.h"

#include <array>
#include <functional>
#include <vector>

namespace tavlo::test {

/// Red, green, blue, alpha, 0 to 1, colour multiplied by alpha.
using Rgba = std::array<double, 4>;

/// Top row first.
struct Image
{
    int width = 0, height = 0;
    std::vector<Rgba> pixels;

    Rgba& at(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    const Rgba& at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

/// A director on an off-screen view with an empty scene running.
class SceneTest : public testing::Test
{
public:
    static constexpr int viewWidth = 67, viewHeight = 49;

    void SetUp() override;
    void TearDown() override;

    /// One frame, `microseconds` after the one before.
    void step(std::uint64_t microseconds = 40000);

    Image shown() { return read(view->backBuffer()); }
    Image read(const graphics::TexturePtr& texture);

    /// A texture of the picture, of its bytes as they stand.
    graphics::TexturePtr upload(const Image& picture);

    scene::RefPtr<scene::Director> director;
    scene::RefPtr<scene::GLViewImpl> view;
    scene::RefPtr<scene::Scene> root;
    std::uint64_t clock = 1'000'000; ///< microseconds
};

/// A picture in which no two texels, rows or channels are alike, with colours of their own and alpha between 0 and 1.
Image testPicture(int width, int height, unsigned seed);

} // namespace tavlo::test
