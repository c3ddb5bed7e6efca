#include "drawing/TavloCanvas.h"

#include "base/BuildStamp.h"
#include "drawing/PictureChroma.h"
#include "drawing/PrivateUtil.h"
#include "graphics/GraphicsTest.h"
#include "support/LogCapture.h"
#include "support/WindowPixels.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <cstdlib>
#include <thread>

namespace tavlo::test {
namespace {

using graphics::TexturePtr;
using graphics::Window;

constexpr QSize size{101, 53};

/// Opaque, without a symmetry.
QImage makePicture()
{
    QImage picture(size, QImage::Format_RGBA8888);
    for (int i = 0; i < size.width() * size.height(); ++i) {
        const int x = i % size.width(), y = i / size.width();
        picture.setPixel(x, y, qRgb(x * 2, y * 4, (x * 5 + y * 3) % 256));
    }
    return picture;
}

/// Whether that picture is shown at twice its size, by its red and green.
bool isStretched(const QImage& shown)
{
    bool fits = shown.size() == 2 * size;
    for (int i = 0; fits && i < shown.width() * shown.height(); ++i) {
        const int x = i % shown.width(), y = i / shown.width();
        fits = std::abs(qRed(shown.pixel(x, y)) - x) <= 2 && std::abs(qGreen(shown.pixel(x, y)) - 2 * y) <= 4;
    }
    return fits;
}

void draw(TavloCanvas& canvas, const QImage& picture)
{
    const TexturePtr texture = PrivateUtil::createImageRes(canvas.device(), picture.width(), picture.height(),
                                                           graphics::Usage::Dynamic, graphics::Format::R8G8B8A8_UNORM);
    ASSERT_TRUE(PrivateUtil::UpdateSubresource(*canvas.context(), texture, 0, 0, picture.constBits(),
                                               static_cast<int>(picture.bytesPerLine()), 0, picture.height()));
    canvas.renderTargetDraw().drawPicture(chromaRgbx, texture, picture.size(), {}, nullptr, true, false, false);
}

QImage backBuffer(TavloCanvas& canvas)
{
    const std::vector<std::uint8_t> bytes = readBack(*canvas.device(), *canvas.context(), canvas.backBuffer());
    return QImage(bytes.data(), size.width(), size.height(), QImage::Format_RGBA8888).copy();
}

class CanvasGL : public testing::Test
{
protected:
    bool create(quintptr window = 0)
    {
        return canvas.createCanvas(ITavloGraphicsRes::WithoutImages, -1, window, size, cache.path());
    }

    /// Presents until the window shows what passes the check, and tells whether it ever does.
    template <class Check>
    bool shows(const Window& window, const Check& check)
    {
        for (const QDeadlineTimer patience(10000); !patience.hasExpired();) {
            Window::processEvents();
            canvas.present();
            if (check(windowPixels(window.handle())))
                return true;
        }
        return false;
    }

    const QTemporaryDir cache;
    TavloCanvas canvas;
};

TEST_F(CanvasGL, IsDrawnOnByAnotherThreadOffScreen)
{
    EXPECT_EQ(canvas.size(), QSizeF(-1, -1));
    canvas.present();
    for (int turn = 0; turn < 2; ++turn) {
        const LogCapture log;
        ASSERT_TRUE(create());
        EXPECT_EQ(log.count("TavloCanvas:: use graphics card: "), 1);
        EXPECT_EQ(canvas.size(), QSizeF(size));
        EXPECT_FALSE(canvas.deviceInfo().name.isEmpty());
        QImage shown;
        std::thread frameThread([&] {
            draw(canvas, makePicture());
            canvas.present();
            shown = backBuffer(canvas);
            canvas.context()->detach();
        });
        frameThread.join();
        EXPECT_EQ(shown, makePicture());
        canvas.destroyCanvas();
        canvas.destroyCanvas();
        EXPECT_FALSE(canvas.isCreated());
        EXPECT_EQ(canvas.size(), QSizeF(-1, -1));
        EXPECT_EQ(canvas.backBuffer(), nullptr);
    }
}

TEST_F(CanvasGL, StaysEmptyWhenItCannotBeCreated)
{
    const auto device = graphics::Device::create();
    ASSERT_TRUE(device);
    const LogCapture log;
    EXPECT_FALSE(canvas.createSwapChain(0, device, nullptr, 0, size, cache.path()));
    EXPECT_FALSE(canvas.createSwapChain(0, nullptr, device->immediateContext(), 0, size, cache.path()));
    EXPECT_EQ(log.count(" _dxContext == nullptr "), 2);
    EXPECT_FALSE(canvas.createSwapChain(1, device, device->immediateContext(), 0x7fffff01, size, cache.path()));
    EXPECT_EQ(log.count(" Could not create the SwapChain. "), 1);
    EXPECT_FALSE(canvas.createCanvas(1, -1, 0, QSizeF(0, 20), cache.path()));
    EXPECT_FALSE(canvas.isCreated());
    EXPECT_EQ(canvas.device(), nullptr);
    canvas.present();
    EXPECT_TRUE(create()); // nothing of the failures is left
}

TEST_F(CanvasGL, KeepsTheCacheOfItsBuildAlone)
{
    const QDir all(cache.filePath("hlslObj"));
    const QString own = QString::number(buildStamp());
    const auto mark = [&](const QString& folder) {
        all.mkpath(folder);
        return QFile(all.filePath(folder + "/mark")).open(QIODevice::WriteOnly);
    };
    const auto isMarked = [&](const QString& folder) { return all.exists(folder + "/mark"); };

    const LogCapture log;
    ASSERT_TRUE(create());
    EXPECT_EQ(log.count("reset shader bin cache : "), 1);
    EXPECT_EQ(QDir(all.filePath(own)).entryList(QDir::Files).size(), ITavloGraphicsRes::effectCount);
    EXPECT_TRUE(all.exists(own + "/shader"));
    ASSERT_TRUE(mark(own) && mark("20200101000000"));
    ASSERT_TRUE(create());
    EXPECT_TRUE(isMarked(own) && isMarked("20200101000000"));
    EXPECT_EQ(log.count("reset shader bin cache : "), 1);

    // As a new build meets it: caches of others, none of its own.
    ASSERT_TRUE(QDir(all.filePath(own)).removeRecursively());
    ASSERT_TRUE(create());
    EXPECT_EQ(all.entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList(own));
    EXPECT_FALSE(isMarked(own));
    EXPECT_EQ(log.count("reset shader bin cache : "), 2);
}

TEST_F(CanvasGL, ShowsInAWindowWhatItDrawsOffScreen)
{
    const auto probe = graphics::Device::create();
    if (!probe || !probe->hasDisplay())
        GTEST_SKIP() << "no display server";
    ASSERT_TRUE(create());
    draw(canvas, makePicture());
    const QImage offScreen = backBuffer(canvas).convertToFormat(QImage::Format_RGB32);

    const auto window = Window::create("canvas", {10, 10, size.width(), size.height()});
    ASSERT_TRUE(window);
    ASSERT_TRUE(create(window->handle()));
    draw(canvas, makePicture());
    const auto isWhole = [&](const QImage& shown) { return shown == offScreen; };
    EXPECT_TRUE(shows(*window, isWhole));

    // Twice the size: the picture is stretched.
    window->setPlace({10, 10, 2 * size.width(), 2 * size.height()});
    EXPECT_TRUE(shows(*window, isStretched));
    window->setPlace({10, 10, size.width(), size.height()});
    EXPECT_TRUE(shows(*window, isWhole));
}

} // namespace
} // namespace tavlo::test
