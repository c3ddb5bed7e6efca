#include "support/PlayerSink.h"

#include "base/Clock.h"
#include "shared/VlcTypes.h"
#include "support/TestClips.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

#include <vlc_picture_pool.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <ranges>

namespace tavlo::test {
namespace {

constexpr unsigned poolSize = 4;

std::atomic<int> stages{0};

/// How a picture lies in a texture.
struct Layout
{
    quint32 chroma;
    int bytesPerPixel; ///< of the first plane
    int lumaOffset;    ///< of a brightness, or of red
    int lumaStride;
    bool hasHalfPlanes; ///< half as many rows of chroma behind it, in one plane or two
};

constexpr std::array layouts{
    Layout{tavloFourcc("I420"), 1, 0, 1, true},  Layout{tavloFourcc("YV12"), 1, 0, 1, true},
    Layout{tavloFourcc("NV12"), 1, 0, 1, true},  Layout{tavloFourcc("NV21"), 1, 0, 1, true},
    Layout{tavloFourcc("YUY2"), 2, 0, 2, false}, Layout{tavloFourcc("UYVY"), 2, 1, 2, false},
    Layout{tavloFourcc("RGBA"), 4, 0, 4, false}, Layout{tavloFourcc("BGRA"), 4, 2, 4, false},
    Layout{tavloFourcc("RV32"), 4, 2, 4, false},
};

const Layout& layoutOf(quint32 chroma) { return *std::ranges::find(layouts, chroma, &Layout::chroma); }

/// Its memory has exactly the texture's size: a write beyond it is a fault that the address sanitizer sees.
picture_t* texturePicture(const video_format_t& format)
{
    const Layout& layout = layoutOf(format.i_chroma);
    const int width = static_cast<int>(format.i_width), height = static_cast<int>(format.i_height);
    const int pitch = width * layout.bytesPerPixel;
    const bool planar = format.i_chroma == tavloFourcc("I420") || format.i_chroma == tavloFourcc("YV12");
    const int rows = layout.hasHalfPlanes ? height + (planar ? height & ~1 : height / 2) : height;
    auto* plane = new quint8[static_cast<size_t>(pitch) * static_cast<size_t>(rows)]{};
    picture_resource_t resource{};
    resource.p_sys = reinterpret_cast<picture_sys_t*>(plane);
    resource.pf_destroy = [](picture_t* picture) {
        delete[] reinterpret_cast<quint8*>(picture->p_sys);
        free(picture);
    };
    picture_t* const picture = picture_NewFromResource(&format, &resource);
    for (int i = 0; i < picture->i_planes; ++i) {
        const int lines = i == 0 ? height : planar ? height / 2 : height; // of two planes, the second says too much
        picture->p[i].p_pixels = plane;
        picture->p[i].i_pitch = pitch;
        picture->p[i].i_lines = lines;
        plane += pitch * lines;
    }
    if (format.i_chroma == tavloFourcc("I420"))
        std::swap(picture->p[1].p_pixels, picture->p[2].p_pixels);
    return picture;
}

std::vector<quint8> contentOf(const picture_t& picture)
{
    std::vector<quint8> bytes;
    const int width = static_cast<int>(picture.format.i_width), height = static_cast<int>(picture.format.i_height);
    const Layout& layout = layoutOf(picture.format.i_chroma);
    for (int i = 0; i < picture.i_planes; ++i) {
        const bool half = i > 0 && picture.i_planes == 3;
        const int rowBytes = half ? (width + 1) / 2 : width * layout.bytesPerPixel;
        for (int y = 0; y < (i > 0 ? height / 2 : height); ++y) {
            const quint8* const row = picture.p[i].p_pixels + y * picture.p[i].i_pitch;
            bytes.insert(bytes.end(), row, row + rowBytes);
        }
    }
    return bytes;
}

} // namespace

bool PlayerSink::waitFor(const std::function<bool()>& condition)
{
    std::unique_lock lock(_lock);
    return _changed.wait_for(lock, std::chrono::seconds(100), condition);
}

bool PlayerSink::waitForPictures(size_t count)
{
    return waitFor([&] { return pictures.size() >= count; });
}

bool PlayerSink::waitForState(State state, size_t from)
{
    return waitFor([&] { return std::ranges::count(states | std::views::drop(from), state) > 0; });
}

size_t PlayerSink::pictureCount()
{
    const std::scoped_lock lock(_lock);
    return pictures.size();
}

size_t PlayerSink::stateCount()
{
    const std::scoped_lock lock(_lock);
    return states.size();
}

std::vector<int> PlayerSink::numbers() const
{
    std::vector<int> all;
    for (const Picture& picture : pictures)
        all.push_back(picture.number);
    return all;
}

IUnknownEx* PlayerSink::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    if (id == ITavloSourcePlayerTime::interfaceId)
        return heldTime;
    return Implements::queryInterface(id, version);
}

qint64 PlayerSink::now() const { return heldTime ? heldTime->now() : monotonicMicroseconds(); }

template <class Change>
void PlayerSink::update(Change change)
{
    {
        const std::scoped_lock lock(_lock);
        change();
    }
    _changed.notify_all();
}

void PlayerSink::OnMediaSourcePlayerDoVideoStart(quint32 chroma, tagTavloVideoInfo& info)
{
    if (!layouts.empty() && std::ranges::find(layouts, chroma) == layouts.end())
        info.chroma = tavloFourcc("NV12");
    update([&] {
        videoInfo = info;
        ++videoStarts;
    });
}

void PlayerSink::OnMediaSourcePlayerDoVideoStop()
{
    if (onVideoStop)
        onVideoStop();
    update([&] { ++videoStops; });
}

void PlayerSink::OnMediaSourcePlayerDoAudioStart(tagTavloAudioInfo& audioInfo)
{
    update([&] {
        _audioInfo = audioInfo;
        ++audioStarts;
    });
}

void PlayerSink::OnMediaSourcePlayerDoAudioStop()
{
    update([&] { ++audioStops; });
}

picture_pool_t* PlayerSink::OnMediaSourcePlayerDoVideoSamplePool(quint32* count)
{
    if (!hasPool)
        return nullptr;
    video_format_t format;
    video_format_Setup(&format, videoInfo.chroma, videoInfo.sourceWidth, videoInfo.sourceHeight, videoInfo.sourceWidth,
                       videoInfo.sourceHeight, 1, 1);
    if (makePool)
        return makePool(format);
    std::array<picture_t*, poolSize> all{};
    for (picture_t*& picture : all)
        picture = texturePicture(format);
    *count = poolSize;
    return picture_pool_New(poolSize, all.data());
}

void PlayerSink::OnMediaSourcePlayerDoVideoSample(quint32, picture_t* picture)
{
    if (onSample)
        onSample(*picture);
    int number = -1;
    if (readsPictures) {
        const plane_t& plane = picture->p[0];
        const Layout& layout = layoutOf(picture->format.i_chroma);
        number = pictureNumber(plane.p_pixels + layout.lumaOffset, static_cast<int>(picture->format.i_width),
                               static_cast<int>(picture->format.i_height), plane.i_pitch, layout.lumaStride);
    }
    update([&] {
        if (readsPictures)
            lastPicture = contentOf(*picture);
        pictures.push_back({number, picture->date, soundFrames - queuedFrames()});
    });
    if (heldTime)
        heldTime->takePicture();
    if (onPicture)
        onPicture(number);
}

block_t* PlayerSink::OnMediaSourcePlayerDoAudioSample(quint32, block_t* block, tagTavloAudioInfo& audioInfo)
{
    const int frames = static_cast<int>(block->i_buffer / 2) / audioInfo.channels;
    const int second =
        toneSecond(reinterpret_cast<const qint16*>(block->p_buffer), frames, audioInfo.channels, audioInfo.sampleRate);
    update([&] {
        blocks.push_back({block->i_pts, frames, second});
        const qint64 at = now();
        const qint64 queued = queuedFrames();
        _queuedAt = queued == 0 ? at + deviceLatency : std::max(at, _queuedAt);
        _queued = static_cast<double>(queued + frames);
        soundFrames += frames;
    });
    if (heldTime)
        heldTime->takeSound(block->i_length);
    return block;
}

void PlayerSink::OnMediaSourcePlayerDoAudioFlush(bool)
{
    update([&] {
        _queued = 0.0;
        ++flushes;
    });
}

qint32 PlayerSink::OnMediaSourcePlayerDoAudioTime(qint64* time)
{
    const std::scoped_lock lock(_lock);
    *time = 0;
    if (!hasDevice)
        return -1;
    *time = 7'000'000 + (soundFrames - queuedFrames()) * 1'000'000 / _audioInfo.sampleRate;
    return 0;
}

void PlayerSink::OnMediaSourcePlayerDoAudioPause(qint64)
{
    update([&] { ++pauses; });
}

void PlayerSink::OnMediaSourcePlayerDoAudioResume(qint64)
{
    update([&] { ++resumes; });
}

void PlayerSink::OnMediaSourcePlayerState(qint32 state, qint32 index, qint32)
{
    update([&] { states.push_back({state, index}); });
}

/// Under the lock.
qint64 PlayerSink::queuedFrames()
{
    const auto since = static_cast<double>(std::max<qint64>(now() - _queuedAt, 0));
    const double played = since * deviceSpeed * _audioInfo.sampleRate / 1e6;
    return static_cast<qint64>(std::max(_queued - played, 0.0));
}

bool waitUntil(const std::function<bool()>& condition)
{
    for (int i = 0; i < 10'000; ++i) {
        if (condition())
            return true;
        QThread::msleep(10);
    }
    return false;
}

bool readersEnd()
{
    const auto reads = [](const QFileInfo& thread) {
        QFile name(thread.filePath() + QStringLiteral("/comm"));
        return name.open(QIODevice::ReadOnly) && name.readAll().startsWith("tavlo-reader");
    };
    return waitUntil([&] {
        const auto threads = QDir(QStringLiteral("/proc/self/task")).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
        return std::ranges::none_of(threads, reads);
    });
}

PlayerStage::PlayerStage()
{
    ++stages;
    EXPECT_TRUE(_module.create());
    player = _module.get();
    player->setSink(&sink);
    info.enabled = 1;
    wanted.videoInfo.sourceWidth = 0;
    wanted.videoInfo.chroma = 0xFFFFFFFF;
}

PlayerStage::~PlayerStage()
{
    _module.destroy();
    EXPECT_TRUE(--stages > 0 || readersEnd());
}

void PlayerStage::holdTime(int pictures, double soundSeconds)
{
    time.expect(pictures, std::llround(soundSeconds * 1e6));
    if (!sink.heldTime) // once it plays, its threads look there
        sink.heldTime = &time;
}

void PlayerStage::play(const QStringList& paths, bool loop)
{
    info.pathList = paths;
    info.playbackLoop = loop ? 1 : 0;
    player->play(&info, &wanted, 0);
}

bool PlayerStage::playToEnd(const QStringList& paths, int pictures, double soundSeconds)
{
    holdTime(pictures, soundSeconds);
    play(paths);
    const int last = static_cast<int>(std::max<qsizetype>(info.pathList.size(), 1)) - 1;
    const bool ends = sink.waitForState({TavloSourcePlayerStateEnded, last});
    player->stop();
    return ends;
}

qint64 PlayerStage::place() const
{
    qint64 value = 0;
    player->time(&value);
    return value;
}

qint64 PlayerStage::length() const
{
    qint64 value = 0;
    player->length(&value);
    return value;
}

} // namespace tavlo::test
