// What the way to an output costs at 1280 x 720: the commit on the frame thread, the conversion behind it, a whole
// recording, and the encoder alone on the same pictures. "CPU" is that of all threads of the process.

#include "TavloCodecAggregationModule/FfmpegVideoEncoder.h"
#include "output/Nv12Rows.h"
#include "output/TavloCodecAggregationUtil.h"
#include "output/TavloPresentOutputTarget.h"

#include <tavlo/records/OutputRecords.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <ctime>
#include <thread>
#include <vector>

namespace {

using namespace tavlo;

constexpr int width = 1280, height = 720;
constexpr qint64 step = 40'000; // microseconds

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

tagTavloVideoInfo videoInfo()
{
    tagTavloVideoInfo info;
    info.width = info.sourceWidth = width;
    info.height = info.sourceHeight = height;
    return info;
}

/// Something that moves, so that the encoder has work: soft stripes and a little noise.
std::vector<quint8> movingPicture(int number)
{
    constexpr size_t channels = 4; // of RGBA
    std::vector<quint8> bytes(size_t{width} * height * channels);
    quint32 noise = static_cast<quint32>(number) * 2654435761U + 1;
    for (size_t i = 0; i < bytes.size(); ++i) {
        noise = noise * 1664525 + 1013904223;
        const size_t x = i / channels % width;
        const double wave = std::sin(static_cast<double>(x + static_cast<size_t>(8 * number)) * 0.02);
        bytes[i] = static_cast<quint8>(120 + 90 * wave + (noise >> 30));
    }
    return bytes;
}

/// Gives a picture and throws it away.
class NoEncoder final : public Implements<NoEncoder, ITavloVideoEncoder>
{
public:
    static inline std::atomic<qint64> pictures{0};

    void init(quint32, ITavloVideoEncoderSink*, ITavloGraphicsContext*) override {}
    bool open(const tagTavloVideoInfo&, const tagTavloPresentOutputParam&, quint32) override { return true; }
    void close() override {}
    void getExtraData(const quint8** data, int* size) override
    {
        *data = nullptr;
        *size = 0;
    }
    bool encode(const picture_t*, int, qint64, qint64) override { return false; }
    picture_t* acquirePicture(quint32, int) override { return _picture.get(); }
    void submitPicture(picture_t*) override { pictures.fetch_add(1); }
    void getStatistics(tagTavloOutputStatistics*) override {}

private:
    const PicturePtr _picture{picture_New(VLC_CODEC_NV12, width, height, 1, 1)};
};

class NoCodecs final : public Implements<NoCodecs, ITavloCodecAggregation>
{
public:
    NoCodecs() { TavloCodecAggregationUtil::replace(this); }
    ~NoCodecs() { TavloCodecAggregationUtil::replace(nullptr); }
    void destroy() override {}
    ITavloGraphicsContext* createGraphicsContext(TavloVideoEncodeImpl) override { return nullptr; }
    ITavloVideoEncoder* createEncoder(TavloVideoEncodeImpl) override { return new NoEncoder; }
};

class Show
{
public:
    explicit Show(OutputConversion::Place place) : target({.place = place, .rows = Rows::TopFirst})
    {
        device = graphics::Device::create();
        for (int i = 0; i < 8; ++i) {
            const std::vector<quint8> pixels = movingPicture(i);
            textures.push_back(device->createTexture(desc, pixels.data(), 4 * width));
        }
        target.create(0, QStringLiteral("bench"), videoInfo(), {}, device, device->immediateContext(), textures[0],
                      desc);
        tagTavloPresentOutputParam param;
        param.recordDir = folder.path();
        target.startOutput(0, 0, QVariant::fromValue(param));
        target.stopOutput(0, 1, true);
    }

    /// \return seconds of this thread
    double commit()
    {
        const double begin = threadSeconds();
        target.commitVideoData(textures[static_cast<size_t>(number) % textures.size()], number * step);
        ++number;
        const double spent = threadSeconds() - begin;
        target.stopOutput(0, 1, true); // comes behind the conversion
        return spent;
    }

    tagTavloOutputStatistics statistics()
    {
        tagTavloOutputStatistics statistics;
        target.getStatistics(0, &statistics);
        return statistics;
    }

    const graphics::TextureDesc desc{width, height, graphics::Format::R8G8B8A8_UNORM, graphics::Usage::Default, true};
    QTemporaryDir folder;
    graphics::DevicePtr device;
    std::vector<graphics::TexturePtr> textures;
    TavloPresentOutputTarget target;
    qint64 number = 0;
};

/// Commit and conversion, with no encoder behind them.
void convert(benchmark::State& state, OutputConversion::Place place)
{
    NoCodecs none;
    Show show(place);
    double commits = 0;
    for (auto _ : state)
        commits += show.commit();
    state.counters["commit_ms"] = benchmark::Counter(commits * 1000, benchmark::Counter::kAvgIterations);
}

void convertOnGraphics(benchmark::State& state) { convert(state, OutputConversion::Place::Graphics); }
void convertInMemory(benchmark::State& state) { convert(state, OutputConversion::Place::Memory); }

double processSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double encoderSeconds = 0; ///< of all threads for a picture, as encodeAlone measured it; 0: not yet

/// From the composed texture to the file. "graph_percent" is what comes on top of the encoder alone.
void recordWhole(benchmark::State& state)
{
    Show show(OutputConversion::Place::Memory);
    double commits = 0;
    quint64 committed = 0;
    const double begin = processSeconds();
    for (auto _ : state) {
        commits += show.commit();
        ++committed;
        while (show.statistics().codedPictures + 8 < committed)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    state.counters["commit_ms"] = benchmark::Counter(commits * 1000, benchmark::Counter::kAvgIterations);
    show.target.stopOutput(0, 0, true); // what the encoder holds belongs to it
    if (encoderSeconds > 0)
        state.counters["graph_percent"] =
            100 * ((processSeconds() - begin) / static_cast<double>(committed) / encoderSeconds - 1);
    state.counters["lost"] = static_cast<double>(show.statistics().encoderDropped + show.statistics().droppedPictures);
}

class CountingSink final : public Implements<CountingSink, ITavloVideoEncoderSink>
{
public:
    std::atomic<quint64> pictures{0};
    void destroy() override {}
    void onEncoded(IUnknownEx*, block_t* block) override
    {
        block_Release(block);
        pictures.fetch_add(1);
    }
};

/// The pictures of the show as the graph gives them to the encoder.
std::vector<PicturePtr> codedPictures()
{
    std::vector<PicturePtr> pictures;
    for (int i = 0; i < 8; ++i) {
        const std::vector<quint8> pixels = movingPicture(i);
        pictures.emplace_back(picture_New(VLC_CODEC_NV12, width, height, 1, 1));
        const plane_t &luma = pictures.back()->p[0], &chroma = pictures.back()->p[1];
        convertToNv12({pixels.data(), 4 * width, false}, width, height, luma.p_pixels, luma.i_pitch, chroma.p_pixels,
                      chroma.i_pitch);
    }
    return pictures;
}

/// libx264 alone on the same pictures, NV12 already.
void encodeAlone(benchmark::State& state)
{
    CountingSink sink;
    FfmpegVideoEncoder encoder(TavloVideoEncodeImplSoftware);
    encoder.init(0, &sink, nullptr);
    if (!encoder.open(videoInfo(), tagTavloPresentOutputParam(), 0))
        return state.SkipWithError("no libx264");
    const std::vector<PicturePtr> pictures = codedPictures();
    quint64 number = 0;
    const double begin = processSeconds();
    for (auto _ : state) {
        const picture_t* const picture = pictures[number % pictures.size()].get();
        while (!encoder.encode(picture, 1, static_cast<qint64>(number) * step, 0))
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        ++number;
    }
    encoder.close();
    encoderSeconds = (processSeconds() - begin) / static_cast<double>(number);
    state.counters["coded"] = static_cast<double>(sink.pictures);
}

BENCHMARK(convertOnGraphics)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(convertInMemory)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(encodeAlone)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(250);
BENCHMARK(recordWhole)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(250);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
