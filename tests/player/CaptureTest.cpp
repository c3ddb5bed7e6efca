// Cameras, played by this program: what the system is asked about one is answered here.

#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <deque>
#include <mutex>

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace tavlo::test {
namespace {

/// The one camera, whatever its file: takes YUY2 and UYVY of any size, and has a grey picture at once whenever it is
/// asked for one. Its buffers lie in its file.
struct FakeCamera
{
    static constexpr unsigned most = 4, usualWidth = 160, usualHeight = 90;

    std::atomic<bool> isDark{false}; ///< has no picture, for ever
    std::atomic<unsigned> layout{0}, width{0}, height{0}, rate{0};
    std::atomic<int> asked{0}; ///< for a picture

    void begin()
    {
        isDark = false;
        layout = V4L2_PIX_FMT_YUYV;
        width = usualWidth;
        height = usualHeight;
        rate = 50;
    }

    int answer(int file, unsigned long request, void* argument)
    {
        switch (request) {
        case VIDIOC_QUERYCAP:
            static_cast<v4l2_capability*>(argument)->capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
            return 0;
        case VIDIOC_S_FMT:
        case VIDIOC_G_FMT:
            return format(static_cast<v4l2_format*>(argument)->fmt.pix, request == VIDIOC_S_FMT);
        case VIDIOC_S_PARM:
            rate = static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe.denominator;
            [[fallthrough]];
        case VIDIOC_G_PARM:
            static_cast<v4l2_streamparm*>(argument)->parm.capture = {V4L2_CAP_TIMEPERFRAME, 0, {1, rate}, 0, most, {}};
            return 0;
        case VIDIOC_REQBUFS:
            for (unsigned index = 0; takeWaiting(index);) {
            }
            static_cast<v4l2_requestbuffers*>(argument)->count = most;
            return ftruncate(file, room() * most);
        case VIDIOC_QUERYBUF:
            return place(*static_cast<v4l2_buffer*>(argument));
        case VIDIOC_QBUF:
            return await(static_cast<v4l2_buffer*>(argument)->index);
        case VIDIOC_DQBUF:
            return film(file, *static_cast<v4l2_buffer*>(argument));
        case VIDIOC_G_INPUT:
        case VIDIOC_ENUMINPUT:
        case VIDIOC_STREAMON:
        case VIDIOC_STREAMOFF:
            return 0;
        default:
            return refuse(ENOTTY);
        }
    }

private:
    static int refuse(int reason)
    {
        errno = reason;
        return -1;
    }

    unsigned size() const { return width * height * 2; }
    unsigned room() const { return (size() + 0xFFFF) & ~0xFFFFU; } ///< whole pages

    int format(v4l2_pix_format& pix, bool set)
    {
        if (set) {
            layout = pix.pixelformat == V4L2_PIX_FMT_UYVY ? V4L2_PIX_FMT_UYVY : V4L2_PIX_FMT_YUYV;
            width = pix.width;
            height = pix.height;
        }
        pix.pixelformat = layout;
        pix.width = width;
        pix.height = height;
        pix.sizeimage = size();
        pix.field = V4L2_FIELD_NONE;
        return 0;
    }

    int place(v4l2_buffer& buffer) const
    {
        buffer.length = size();
        buffer.m.offset = buffer.index * room();
        return 0;
    }

    int film(int file, v4l2_buffer& buffer)
    {
        ++asked;
        while (isDark && !(fcntl(file, F_GETFL) & O_NONBLOCK))
            usleep(1000);
        if (isDark || !takeWaiting(buffer.index))
            return refuse(EAGAIN);
        const std::string grey(size(), '\x80');
        buffer.bytesused = size();
        gettimeofday(&buffer.timestamp, nullptr);
        usleep(5000); // as no camera is quicker
        return pwrite(file, grey.data(), grey.size(), buffer.index * room()) < 0 ? -1 : 0;
    }

    int await(unsigned index)
    {
        const std::scoped_lock lock(_lock);
        _waiting.push_back(index);
        return 0;
    }

    bool takeWaiting(unsigned& index)
    {
        const std::scoped_lock lock(_lock);
        if (_waiting.empty())
            return false;
        index = _waiting.front();
        _waiting.pop_front();
        return true;
    }

    std::mutex _lock;
    std::deque<unsigned> _waiting; ///< guarded by _lock: buffers come back on the thread that decodes
};

FakeCamera camera;

QString plainCamera()
{
    QFile file(clipFolderFile(QStringLiteral("camera")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    return file.fileName();
}

/// A camera's name, under which a file is found when it is plugged in.
class CameraName
{
public:
    CameraName() { QDir(folder).mkpath(QStringLiteral(".")); }
    ~CameraName() { unplug(); }

    bool plugIn() const { return QFile::link(plainCamera(), QDir(folder).filePath(name)); }
    void unplug() const { QFile::remove(QDir(folder).filePath(name)); }

    const QString folder = QStringLiteral("/dev/v4l/by-id");
    const QString name = QStringLiteral("tavlo-test-%1").arg(getpid());
};

void playCamera(PlayerStage& stage, const QString& name, qint32 kind = TavloSourcePlayerKindCapture)
{
    camera.begin();
    stage.info.kind = kind;
    stage.info.deviceName = name;
    stage.info.audioDeviceName = QStringLiteral("None");
    stage.play({});
}

/// Layout, size and rate of the record go to a device that has them; a card is taken as it is.
TEST(PlayerCapture, ADeviceIsAskedForWhatTheRecordWants)
{
    struct Case
    {
        qint32 kind;
        quint32 chroma;
        unsigned layout;
        quint32 handedOn;
    };
    for (const Case& c :
         {Case{TavloSourcePlayerKindCapture, tavloFourcc("UYVY"), V4L2_PIX_FMT_UYVY, tavloFourcc("UYVY")},
          Case{TavloSourcePlayerKindCapture, tavloFourcc("NV12"), V4L2_PIX_FMT_YUYV, tavloFourcc("NV12")},
          Case{TavloSourcePlayerKindMW, 0xFFFFFFFF, V4L2_PIX_FMT_YUYV, tavloFourcc("YUY2")}}) {
        const bool asks = c.kind == TavloSourcePlayerKindCapture;
        PlayerStage stage;
        stage.wanted.videoInfo.chroma = c.chroma;
        stage.wanted.videoInfo.sourceWidth = asks ? 320 : 0;
        stage.wanted.videoInfo.sourceHeight = asks ? 180 : 0;
        playCamera(stage, plainCamera(), c.kind);
        ASSERT_TRUE(stage.sink.waitForPictures(3));
        stage.player->stop();
        ASSERT_TRUE(readersEnd());
        EXPECT_EQ(camera.layout, c.layout);
        EXPECT_EQ(camera.width, asks ? 320U : FakeCamera::usualWidth);
        EXPECT_EQ(camera.rate, asks ? 25U : 50U);
        EXPECT_EQ(stage.sink.videoInfo.chroma, c.handedOn);
        EXPECT_NEAR(stage.sink.lastPicture.front(), 0x80, 1);
    }
}

TEST(PlayerCapture, IsLetGoThoughItHasNoPicture)
{
    PlayerStage stage;
    playCamera(stage, plainCamera());
    ASSERT_TRUE(stage.sink.waitForPictures(1));
    camera.isDark = true;
    const int before = camera.asked;
    EXPECT_TRUE(waitUntil([&] { return camera.asked >= before + 2; })) << "the driver holds it";
    stage.player->stop();
    EXPECT_TRUE(readersEnd());
}

TEST(PlayerCapture, IsFoundByItsNameWhenItIsPluggedInLater)
{
    const CameraName device;
    if (!device.plugIn())
        GTEST_SKIP() << "nobody but root can plug a camera in";
    device.unplug();
    const LogCapture log;
    PlayerStage stage;
    playCamera(stage, device.name);
    ASSERT_TRUE(waitUntil([&] { return log.count("trying again") > 0; }));
    ASSERT_TRUE(device.plugIn());
    EXPECT_TRUE(stage.sink.waitForPictures(2));
    stage.player->stop();
}

} // namespace
} // namespace tavlo::test

/// The system's own, but for questions about cameras.
extern "C" [[gnu::visibility("default")]] int ioctl(int file, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return _IOC_TYPE(request) == 'V' ? tavlo::test::camera.answer(file, request, argument)
                                     : static_cast<int>(syscall(SYS_ioctl, file, request, argument));
}
