// What it costs to bring a clip's pictures into plain memory and into mapped textures, against the `ffmpeg` command that
// decodes the same file into nothing, in the same run: processor time for each picture, and "factor", the ratio of both.
// And what a picture of another matrix costs.

#include "TavloCommonModule/player/PictureWriter.h"

#include "graphics/Device.h"
#include "sources/PicturePool.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <QCoreApplication>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

namespace {

using namespace tavlo::test;

constexpr int frames = 125;

/// Seconds of processor time.
double used(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

QString clip(int width, int height)
{
    ClipForm form;
    form.width = width;
    form.height = height;
    form.frames = frames;
    form.sound = false;
    form.options = QStringLiteral("-c:v libx264 -preset veryfast -b:v 4M").split(u' ');
    return clipFile(form);
}

double decodeAlone(const QString& path)
{
    const double before = used(RUSAGE_CHILDREN);
    runFfmpeg({QStringLiteral("-i"), path, QStringLiteral("-f"), QStringLiteral("null"), QStringLiteral("-")});
    return used(RUSAGE_CHILDREN) - before;
}

/// Has pictures written into textures that are mapped for it, as the engine's sources have it.
class MappedPictures
{
public:
    void take(PlayerSink& sink)
    {
        sink.makePool = [this](const video_format_t& format) {
            return _pool.create(
                format, format.i_chroma, *_device, *_context, [](void*) { return true; }, nullptr);
        };
        sink.onSample = [this](picture_t& picture) {
            tavlo::PooledPicture& pooled = *tavlo::pooledPicture(picture);
            _context->unmap(pooled.texture);
            pooled.mapped = false;
            benchmark::DoNotOptimize(_context->finishCommandList());
        };
        sink.onVideoStop = [this] {
            _pool.reset();
            _context->detach();
        };
    }

private:
    const tavlo::graphics::DevicePtr _device = tavlo::graphics::Device::create();
    const tavlo::graphics::ContextPtr _context = _device->createDeferredContext();
    tavlo::PicturePool _pool;
};

/// \param shown  pictures that came to the sink
double play(const QString& path, bool mapped, size_t& shown)
{
    MappedPictures pictures;
    const double before = used(RUSAGE_SELF);
    PlayerStage stage;
    stage.sink.readsPictures = false;
    if (mapped)
        pictures.take(stage.sink);
    stage.player->setRate(2);
    stage.play({path});
    stage.sink.waitForState({TavloSourcePlayerStateEnded, 0});
    stage.player->stop();
    shown = stage.sink.pictures.size();
    return used(RUSAGE_SELF) - before;
}

void playClip(benchmark::State& state)
{
    const QString path = clip(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    double alone = 0.0, played = 0.0;
    size_t pictures = 0;
    for (auto _ : state) {
        size_t shown = 0;
        alone += decodeAlone(path);
        played += play(path, state.range(2) != 0, shown);
        pictures += shown;
    }
    const double count = static_cast<double>(state.iterations()) * frames;
    state.counters["ffmpeg_ms"] = alone * 1000 / count;
    state.counters["player_ms"] = played * 1000 / count;
    state.counters["factor"] = played / alone;
    state.counters["shown"] = static_cast<double>(pictures) / count;
}

BENCHMARK(playClip)
    ->ArgNames({"width", "height", "mapped"})
    ->ArgsProduct({{1280}, {720}, {0, 1}})
    ->ArgsProduct({{1920}, {1080}, {0, 1}})
    ->Iterations(3)
    ->Unit(benchmark::kSecond);

/// A picture of standard definition or of full range into one of the drawing's matrix and range.
void writePicture(benchmark::State& state, AVPixelFormat from, quint32 to, AVColorRange range)
{
    tavlo::PictureWriter writer;
    const tavlo::FramePtr frame(av_frame_alloc());
    frame->width = static_cast<int>(state.range(0));
    frame->height = static_cast<int>(state.range(1));
    frame->format = from;
    frame->color_range = range;
    frame->colorspace = AVCOL_SPC_SMPTE170M;
    av_frame_get_buffer(frame.get(), 0);
    video_format_t format;
    video_format_Setup(&format, to, frame->width, frame->height, frame->width, frame->height, 1, 1);
    picture_t* const picture = picture_NewFromFormat(&format);
    writer.setChroma(to);
    for (auto _ : state)
        benchmark::DoNotOptimize(writer.write(*frame, *picture));
    picture_Release(picture);
}

BENCHMARK_CAPTURE(writePicture, I420, AV_PIX_FMT_YUV420P, tavloFourcc("I420"), AVCOL_RANGE_MPEG)
    ->Args({720, 576})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(writePicture, NV12, AV_PIX_FMT_NV12, tavloFourcc("NV12"), AVCOL_RANGE_MPEG)
    ->Args({720, 576})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(writePicture, UYVY, AV_PIX_FMT_UYVY422, tavloFourcc("UYVY"), AVCOL_RANGE_MPEG)
    ->Args({720, 576})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(writePicture, CameraJpeg, AV_PIX_FMT_YUVJ422P, tavloFourcc("NV12"), AVCOL_RANGE_JPEG)
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
