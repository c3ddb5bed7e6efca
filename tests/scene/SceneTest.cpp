#include "scene/SceneTest.h"

#include <cmath>

namespace tavlo::test {

using namespace scene;

void SceneTest::SetUp()
{
    director = Director::create();
    view = GLViewImpl::createWithRect({}, {0, 0, viewWidth, viewHeight}, -1);
    ASSERT_TRUE(view);
    ASSERT_TRUE(director->init());
    director->setOpenGLView(view);
    director->startAnimation();
    root = Scene::createWithSize(*director, view->frameSize());
    director->runWithScene(root);
}

void SceneTest::TearDown()
{
    root.reset();
    director->end();
    director->mainLoop();
}

void SceneTest::step(std::uint64_t microseconds)
{
    clock += microseconds;
    view->beginFrame(clock / 1000, 1, clock);
    director->mainLoop();
    view->endFrame();
}

Image SceneTest::read(const graphics::TexturePtr& texture)
{
    const std::vector<std::uint8_t> bytes = readBack(*view->device(), *view->context(), texture);
    Image image{static_cast<int>(texture->desc().width), static_cast<int>(texture->desc().height), {}};
    for (std::size_t i = 0; i + 3 < bytes.size(); i += 4)
        image.pixels.push_back({bytes[i] / 255.0, bytes[i + 1] / 255.0, bytes[i + 2] / 255.0, bytes[i + 3] / 255.0});
    EXPECT_EQ(image.pixels.size(), static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    return image;
}

graphics::TexturePtr SceneTest::upload(const Image& picture)
{
    std::vector<std::uint8_t> bytes;
    for (const Rgba& pixel : picture.pixels)
        for (const double value : pixel)
            bytes.push_back(static_cast<std::uint8_t>(std::lround(value * 255)));
    const auto width = static_cast<std::uint32_t>(picture.width), height = static_cast<std::uint32_t>(picture.height);
    return view->device()->createTexture({width, height}, bytes.data(), width * 4);
}

Image testPicture(int width, int height, unsigned seed)
{
    const std::vector<std::uint8_t> bytes =
        pattern(static_cast<std::uint32_t>(width) * 4, static_cast<std::uint32_t>(height), seed);
    Image picture{width, height, {}};
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const double alpha = std::round(64 + bytes[i + 3] * 0.7) / 255;
        const auto stored = [&](std::uint8_t value) { return std::round(value * alpha) / 255; };
        picture.pixels.push_back({stored(bytes[i]), stored(bytes[i + 1]), stored(bytes[i + 2]), alpha});
    }
    return picture;
}

} // namespace tavlo::test
