#include "engines/EngineStage.h"
#include "support/WindowPixels.h"

#include <QDeadlineTimer>
#include <QThreadPool>

using namespace tavlo;
using namespace tavlo::test;

namespace {

class WindowedEngine : public EngineStage
{
public:
    void SetUp() override
    {
        window = graphics::Window::create("host", {0, 0, 640, 400});
        if (!window)
            GTEST_SKIP() << "no display server";
    }

    /// Whether the window comes to show what every frame draws anew.
    bool shows(int x, int y, QColor color)
    {
        QColor seen;
        for (const QDeadlineTimer patience(10000); seen != color && !patience.hasExpired();) {
            graphics::Window::processEvents();
            step();
            const QImage pixels = windowPixels(window->handle());
            seen = pixels.isNull() ? QColor() : pixels.pixelColor(x, y);
        }
        return seen == color;
    }

    std::unique_ptr<graphics::Window> window;
};

TEST_F(WindowedEngine, ComesAndGoesOnTheHostsWindow)
{
    tagTavloWindowInfo placed = windowInfo();
    placed.window = window->handle();
    for (int i = 0; i < 3; ++i) {
        create(engineInfo(2), placed, 2);
        if (inside->world().canvasPicture())
            GTEST_SKIP() << "no windows on this device";
        send(TavloEventSelectChannel, TavloPresentChannelIDPGM, 1);
        const scene::Rect& program = inside->channels().program()->innerRect();
        const int x = static_cast<int>(program.minX() + program.width / 4);
        const int y = 400 - static_cast<int>(program.minY() + program.height * 3 / 4);
        EXPECT_TRUE(shows(x, y, QColor(TestSource::redOf(1), 0, 250)));

        const QString path = cache.filePath("canvas.png");
        send(TavloEventSaveChannelPicture, TavloPresentChannelIDCanvas, path);
        QThreadPool::globalInstance()->waitForDone();
        const QImage saved(path);
        ASSERT_EQ(saved.size(), QSize(640, 400));
        EXPECT_EQ(saved.pixelColor(x, y), QColor(TestSource::redOf(1), 0, 250)) << "upright, as the window shows it";
        send(TavloEventDestroyEngine);
        releaseSources();
    }
}

} // namespace
