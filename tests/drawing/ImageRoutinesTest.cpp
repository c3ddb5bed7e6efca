#include "drawing/PrivateUtil.h"
#include "graphics/GraphicsTest.h"
#include "support/LogCapture.h"

#include <QImage>
#include <QTemporaryDir>

namespace tavlo::test {
namespace {

using namespace graphics;

using Bytes = std::vector<std::uint8_t>;

class ImageRoutinesGL : public GraphicsTest
{
public:
    Bytes bytesOf(const TexturePtr& texture) { return texture ? readBack(*device, *context, texture) : Bytes(); }
};

TEST_F(ImageRoutinesGL, TellsWhyATextureCannotBeMade)
{
    const LogCapture log;
    EXPECT_EQ(PrivateUtil::createImageRes(device, 1 << 30, 3, Usage::Default, Format::R8G8B8A8_UNORM), nullptr);
    EXPECT_FALSE(PrivateUtil::lastD3DMessage(device).isEmpty());
    EXPECT_EQ(PrivateUtil::createImageRes(device, 0, 3, Usage::Default, Format::R8G8B8A8_UNORM), nullptr);
    EXPECT_EQ(PrivateUtil::createImageRes(device, -4, 3, Usage::Dynamic, Format::R8G8B8A8_UNORM), nullptr);
    EXPECT_EQ(PrivateUtil::createImageRes(nullptr, 2, 3, Usage::Dynamic, Format::R8G8B8A8_UNORM), nullptr);
    const QStringList lines = log.lines().filter(QStringLiteral("failed to create texture2d hr: "));
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[1].contains(QLatin1String(" w:0 h:3"))) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].contains(QLatin1String(" w:-4 h:3")));
    EXPECT_TRUE(lines[3].contains(QLatin1String("NULL ID3D11Device"))) << lines[3].toStdString();
}

/// A shader's red is the file's red.
TEST_F(ImageRoutinesGL, LoadsAnImageFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("colours.png"));
    QImage image(3, 2, QImage::Format_ARGB32);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            image.setPixelColor(x, y, QColor(10 + x, 60 + 7 * y, 200 + 3 * x + y, 100 + 50 * y + x));
    ASSERT_TRUE(image.save(path));

    const TexturePtr texture = PrivateUtil::loadImageRes(device, *context, path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->desc().usage, Usage::Dynamic);
    EXPECT_EQ(texture->desc().format, Format::R8G8B8A8_UNORM);
    const Bytes expected{10, 60, 200, 100, 11, 60, 203, 101, 12, 60, 206, 102,
                         10, 67, 201, 150, 11, 67, 204, 151, 12, 67, 207, 152};
    EXPECT_EQ(bytesOf(texture), expected);

    // Scaled without a filter and without regard to its aspect; one size alone scales nothing.
    const TexturePtr larger = PrivateUtil::loadImageRes(device, *context, path, 3, 6);
    ASSERT_TRUE(larger);
    EXPECT_EQ(larger->desc().height, 6U);
    const Bytes tall = bytesOf(larger);
    ASSERT_EQ(tall.size(), 72U);
    EXPECT_EQ(Bytes(tall.begin() + 24, tall.begin() + 36), Bytes(expected.begin(), expected.begin() + 12));
    EXPECT_EQ(Bytes(tall.begin() + 36, tall.begin() + 48), Bytes(expected.begin() + 12, expected.end()));
    const TexturePtr own = PrivateUtil::loadImageRes(device, *context, path, 9, 0);
    ASSERT_TRUE(own);
    EXPECT_EQ(own->desc().width, 3U);

    const LogCapture log;
    EXPECT_EQ(PrivateUtil::loadImageRes(device, *context, folder.filePath(QStringLiteral("none.png"))), nullptr);
    const QStringList lines = log.lines().filter(QStringLiteral("failed to load image : "));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QLatin1String("none.png")));
}

TEST_F(ImageRoutinesGL, UpdatesRowsOfATexture)
{
    constexpr std::uint32_t width = 6, height = 5;
    constexpr int pitch = 12; // three texels
    const Bytes data = pattern(pitch, 4, 2);
    for (const Usage usage : {Usage::Default, Usage::Dynamic}) {
        const TexturePtr texture = makeTexture(Format::R8G8B8A8_UNORM, width, height, usage);
        ASSERT_TRUE(texture);
        ASSERT_TRUE(PrivateUtil::UpdateSubresource(*context, texture, 2, 1, data.data(), pitch, 1, 2));
        const Bytes drawn = bytesOf(texture);
        ASSERT_EQ(drawn.size(), width * height * 4);
        for (std::size_t row = 0; row < 2; ++row) {
            const auto at = drawn.begin() + (1 + row) * width * 4 + 8;
            const auto from = data.begin() + (1 + row) * pitch;
            EXPECT_EQ(Bytes(at, at + pitch), Bytes(from, from + pitch)) << "row " << row;
        }
    }
}

/// Data that is wider than the texture has room for keeps to its rows, and a place outside is refused or writes
/// nothing.
TEST_F(ImageRoutinesGL, UpdateKeepsInsideTheTexture)
{
    const LogCapture log;
    const Bytes data = pattern(40, 9, 2);
    for (const Usage usage : {Usage::Default, Usage::Dynamic}) {
        const TexturePtr texture = makeTexture(Format::R8G8B8A8_UNORM, 6, 5, usage);
        ASSERT_TRUE(texture);
        EXPECT_TRUE(PrivateUtil::UpdateSubresource(*context, texture, 0, 0, data.data(), 40, 0, 5));
        const Bytes drawn = bytesOf(texture);
        ASSERT_EQ(drawn.size(), 120U);
        EXPECT_EQ(Bytes(drawn.begin() + 24, drawn.begin() + 48), Bytes(data.begin() + 40, data.begin() + 64));
        EXPECT_FALSE(PrivateUtil::UpdateSubresource(*context, texture, 7, 0, data.data(), 40, 0, 5));
        EXPECT_FALSE(PrivateUtil::UpdateSubresource(*context, texture, 0, 6, data.data(), 40, 0, 1));
        EXPECT_FALSE(PrivateUtil::UpdateSubresource(*context, texture, -1, 0, data.data(), 40, 0, 1));
        EXPECT_FALSE(PrivateUtil::UpdateSubresource(*context, texture, 0, 0, nullptr, 40, 0, 1));
    }
    EXPECT_FALSE(PrivateUtil::UpdateSubresource(*context, nullptr, 0, 0, data.data(), 40, 0, 1));
}

TEST(FitRect, FitsAndCentres)
{
    double scale = 0;
    EXPECT_EQ(PrivateUtil::fitRect({200, 100}, {50, 50}, &scale), QRectF(50, 0, 100, 100));
    EXPECT_EQ(scale, 2);
    EXPECT_EQ(PrivateUtil::fitRect({100, 200}, {400, 100}, &scale), QRectF(0, 87.5, 100, 25));
    EXPECT_EQ(scale, 0.25);
    EXPECT_EQ(PrivateUtil::fitRect({30, 20}, {30, 20}), QRectF(0, 0, 30, 20));
}

} // namespace
} // namespace tavlo::test
