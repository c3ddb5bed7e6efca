#include "OutputSupport.h"
#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"
#include "TavloOutputModule/HttpServer.h"
#include "Viewer.h"
#include "output/ITavloHDMIOutputObject.h"
#include "output/TavloCodecAggregationUtil.h"
#include "shared/VlcPointers.h"
#include "support/LogCapture.h"

#include <tavlo/InterfacePtr.h>

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <random>
#include <semaphore>
#include <shared_mutex>
#include <thread>
#include <utility>

namespace {

using namespace tavlo::test;

constexpr int record = TavloPresentOutputTypeRecord, net = TavloPresentOutputTypeNet;

/// Where pictures and what is coded of them pass as long as nobody holds it.
struct Gates
{
    std::shared_mutex in, out;
    int patience = 0; ///< milliseconds for which the encoder's room is waited for, if it is more than asked for
};

/// The encoder as it is, but for a gate in front of it and one behind it.
class GatedEncoder final : public tavlo::Implements<GatedEncoder, ITavloVideoEncoder>
{
public:
    explicit GatedEncoder(Gates& gates) : _gates(gates), _sink(gates) {}

    void init(quint32, ITavloVideoEncoderSink* sink, ITavloGraphicsContext* context) override
    {
        _sink.next = sink;
        _encoder->init(0, &_sink, context);
    }
    bool open(const tagTavloVideoInfo& info, const tagTavloPresentOutputParam& param, quint32) override
    {
        return _encoder->open(info, param, 0);
    }
    void close() override { _encoder->close(); }
    void getExtraData(const quint8** data, int* size) override { _encoder->getExtraData(data, size); }
    bool encode(const picture_t* picture, int flag, qint64 pts, qint64 dts) override
    {
        return _encoder->encode(picture, flag, pts, dts);
    }
    picture_t* acquirePicture(quint32, int milliseconds) override
    {
        const std::shared_lock waiting(_gates.in);
        return _encoder->acquirePicture(0, std::max(milliseconds, _gates.patience));
    }
    void submitPicture(picture_t* picture) override { _encoder->submitPicture(picture); }
    void getStatistics(tagTavloOutputStatistics* statistics) override { _encoder->getStatistics(statistics); }

private:
    class Sink final : public tavlo::Implements<Sink, ITavloVideoEncoderSink>
    {
    public:
        explicit Sink(Gates& gates) : _gates(gates) {}
        void destroy() override {}
        void onEncoded(IUnknownEx* encoder, block_t* block) override
        {
            const std::shared_lock waiting(_gates.out);
            next->onEncoded(encoder, block);
        }
        ITavloVideoEncoderSink* next = nullptr;

    private:
        Gates& _gates;
    };

    Gates& _gates;
    Sink _sink;
    const tavlo::InterfacePtr<ITavloVideoEncoder> _encoder =
        TavloCodecAggregationUtil::createEncoder(TavloVideoEncodeImplSoftware);
};

class Gated final : public tavlo::Implements<Gated, ITavloCodecAggregation>
{
public:
    Gated() : _encoder(new GatedEncoder(gates)) { TavloCodecAggregationUtil::replace(this); }
    ~Gated() { TavloCodecAggregationUtil::replace(nullptr); }
    void destroy() override {}
    ITavloGraphicsContext* createGraphicsContext(TavloVideoEncodeImpl) override { return nullptr; }
    ITavloVideoEncoder* createEncoder(TavloVideoEncodeImpl) override { return std::exchange(_encoder, nullptr); }

    Gates gates;

private:
    GatedEncoder* _encoder;
};

TEST(OutputThreads, AnEndThatTakesLongIsTold)
{
    Gated aggregation;
    const LogCapture log;
    const QTemporaryDir folder;
    std::optional<Stage> stage(std::in_place, Stage::Way::Pictures);
    stage->start(record, Stage::param(folder.path()));
    aggregation.gates.in.lock();
    stage->commit(0, 1, false);
    std::thread ending([&stage] { stage.reset(); });
    while (log.count("wait thread timeout: TavloPresentThread::stop") == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    aggregation.gates.in.unlock();
    ending.join();
}

TEST(OutputThreads, AStalledEncoderHoldsUpNoCommitAndWhatItMissedIsFilled)
{
    const QTemporaryDir folder;
    Gated aggregation;
    Stage stage(Stage::Way::Pictures);
    stage.start(record, Stage::param(folder.path()));
    stage.commit(0, 20);
    aggregation.gates.in.lock();
    stage.commit(20, 75, false); // three seconds; would never return if it waited
    EXPECT_GE(stage.statistics().droppedPictures, 75U - 5);
    aggregation.gates.in.unlock();
    const quint64 dropped = stage.statistics().droppedPictures;
    stage.stop(net); // comes behind what waited
    stage.commit(95, 35);
    stage.stop(record);
    const tagTavloOutputStatistics statistics = stage.statistics();
    EXPECT_EQ(statistics.droppedPictures, dropped);
    EXPECT_EQ(statistics.droppedBlocks + statistics.encoderDropped, 0U);
    EXPECT_EQ(statistics.repeatedPictures, dropped);
    EXPECT_EQ(statistics.codedPictures, 130U);

    const std::vector<int> numbers = decode(folder.filePath(QStringLiteral("show.mp4"))).numbers;
    ASSERT_EQ(numbers.size(), 130U);
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
    EXPECT_EQ(numbers[19], 19);
    EXPECT_EQ(numbers.back(), 129);
}

TEST(OutputThreads, ARecordingBeginsThoughItsPicturesComeLongBehindTheirSound)
{
    for (const quint32 mode : {0U, 1U, 2U}) {
        const QTemporaryDir folder;
        Gated aggregation;
        Stage stage(Stage::Way::Pictures);
        tagTavloPresentOutputParam param = Stage::param(folder.path());
        param.recordMode = mode;
        stage.start(record, param);
        aggregation.gates.out.lock();
        for (int number = 0; number < 75; ++number) { // the sound of three seconds does not wait so long
            stage.commit(number, 1, false);
            stage.stop(net);
        }
        aggregation.gates.out.unlock();
        stage.awaitCoded(); // what the encoder had no room for is lost, what comes now is not
        stage.commit(75, 25);
        stage.stop(record);
        EXPECT_EQ(stage.statistics().recordWritten, 100U);
        const QString file = folder.filePath(QDir(folder.path()).entryList({QStringLiteral("show.*")}).value(0));
        const Decoded decoded = decode(file);
        ASSERT_EQ(decoded.numbers.size(), 100U) << mode;
        EXPECT_EQ(decoded.numbers.front(), 0);
        EXPECT_EQ(decoded.numbers.back(), 99);
        EXPECT_NEAR(decoded.times.back() - decoded.times.front(), 99.0 / Programme::fps, 0.01) << mode;
        EXPECT_TRUE(decoded.beepsAt(decoded.times[80])) << mode; // the sound is where it belongs
    }
}

/// All of them wait at the begin, for longer than sound waits by itself.
TEST(OutputThreads, ARecordingHasTheSoundOfPicturesThatAnEncoderLooksAheadFrom)
{
    const QTemporaryDir folder;
    Gated aggregation;
    aggregation.gates.patience = 60'000;
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.encoderSettings[2] = param.videoSettings[3] = 60; // not beyond a key picture
    param.rateSettings[1] = 1;                              // a constant quantizer needs none
    stage.start(record, param);
    for (int number = 0; number < 120; ++number) {
        stage.commit(number, 1, false);
        stage.stop(net);
    }
    EXPECT_LT(stage.statistics().codedPictures, 120U - 30);
    stage.stop(record);
    const Decoded decoded = decode(folder.filePath(QStringLiteral("show.mp4")));
    EXPECT_EQ(decoded.numbers, numbersFrom(0, 120));
    EXPECT_NEAR(static_cast<double>(decoded.samples), 120 * 1920, 3 * 1024);
}

/// Of this process: what `task` and `fd` list.
qsizetype countOf(const char* what)
{
    return QDir(QStringLiteral("/proc/self/") + QLatin1String(what))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

TEST(OutputThreads, StartsAndStopsInAnyOrderWhilePicturesFlow)
{
#ifdef __SANITIZE_THREAD__
    constexpr std::array types{0, 1, 2, 5, 8}; // no card: GStreamer's locks are none that the sanitizer knows
#else
    constexpr std::array types{0, 1, 2, 3, 5, 8};
#endif
    const QTemporaryDir folder;
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.push2Enabled = 1;
    param.push2Paths[3] = QStringLiteral("tcp://127.0.0.1:9"); // nobody is there
    param.hdmi[0].enable = 1;
    param.httpEnabled = param.hlsEnabled = param.relayEnabled = 1; // the second output finds the places taken
    param.httpPort = static_cast<quint16>(freePort());
    param.httpPaths[1] = QStringLiteral("/live.flv");
    param.hlsDir = folder.path();
    for (const int type : types) { // what is loaded once
        stage.start(type, param);
        stage.stop(type);
    }
    const qsizetype threads = countOf("task"), handles = countOf("fd");
    std::atomic<bool> done{false};
    std::thread committing([&] {
        for (int number = 0; !done; ++number) {
            stage.commit(number, 1, false);
            std::this_thread::yield();
        }
    });
    std::thread looking([&] {
        while (!done)
            for (int index = 0; index < TavloPresentOutputIndexCount; ++index)
                stage.statistics(index);
    });
    std::minstd_rand random(7);
    for (int i = 0; i < 300; ++i) {
        const int type = types[random() % types.size()];
        const auto index = static_cast<int>(random() % 2);
        if (random() % 2)
            stage.target.startOutput(index, type, QVariant::fromValue(param));
        else
            stage.target.stopOutput(index, type, random() % 2);
    }
    done = true;
    committing.join();
    looking.join();
    for (const int index : {0, 1}) {
        for (const int type : types)
            stage.stop(type, index);
        EXPECT_GT(stage.statistics(index).committedPictures, 0U);
        EXPECT_EQ(openPictures(stage.statistics(index)), 0);
    }
    constexpr qsizetype some = 8; // of GStreamer, which come and go; each output was begun more often
    EXPECT_LE(countOf("task"), threads + some);
    EXPECT_LE(countOf("fd"), handles + some);
    stage.target.destroy();
    stage.target.destroy();
    stage.start(record, param); // lost with no word
}

/// Reads a pipe, which cannot be opened for writing before; returns when its writer has closed it.
void readPipe(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().isEmpty());
}

/// The stream's end writes its playlist, which is stuck until it is read.
TEST(OutputThreads, AStuckStreamThatIsStoppedHoldsUpNoRecording)
{
    const QTemporaryDir folder;
    const QString list = folder.filePath(QStringLiteral("index.m3u8.tmp")); // while it is written
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.hlsEnabled = 1;
    param.hlsDir = folder.path();
    param.hlsPath.clear();
    param.hlsFlag = 0; // what is there stays as it is
    param.hlsSegmentSeconds = 3600;
    const LogCapture log;
    int number = 0;
    const auto commit = [&](int count) { // none of them can be coded while the node waits
        for (; count > 0; --count) {
            stage.commit(number++, 1, false);
            stage.awaitCoded(3); // the node has four buffers
        }
    };
    const auto makePipe = [&] { EXPECT_EQ(mkfifo(list.toUtf8().constData(), 0600), 0); };
    const auto start = [&] { stage.target.startOutput(0, net, QVariant::fromValue(param)); };
    const auto awaitStreams = [&](int count) {
        while (log.count("hls sends to") < count)
            commit(1);
    };
    stage.start(record, param);
    start();
    awaitStreams(1);
    makePipe();
    stage.target.stopOutput(0, net, false);
    commit(20);
    EXPECT_EQ(stage.statistics().netState, tagTavloOutputStatistics::Running);
    start(); // comes behind the end
    commit(20);
    EXPECT_EQ(log.count("hls sends to"), 1);
    readPipe(list);
    awaitStreams(2);

    makePipe();
    std::atomic<bool> stopped{false};
    std::thread stopping([&] {
        stage.stop(net);
        stopped = true;
    });
    commit(20);
    EXPECT_FALSE(stopped);
    readPipe(list);
    stopping.join();
    EXPECT_EQ(stage.statistics().netState, tagTavloOutputStatistics::Off);
    stage.stop(record);
    EXPECT_EQ(decode(folder.filePath(QStringLiteral("show.mp4"))).numbers, numbersFrom(0, number));

    stage.start(net, param);
    awaitStreams(3);
    makePipe();
    stage.target.stopOutput(0, net, false);
    stage.stop(record); // comes behind the end of the encoder
    param.recordName = QStringLiteral("next");
    stage.target.startOutput(0, record, QVariant::fromValue(param));
    const quint64 before = stage.statistics().committedPictures;
    while (stage.statistics().committedPictures == before) // nobody wants it yet
        stage.commit(number, 1, false);
    const int first = number++;
    commit(20);
    std::thread reading([&] { readPipe(list); });
    stage.target.destroy();
    reading.join();
    EXPECT_EQ(decode(folder.filePath(QStringLiteral("next.mp4"))).numbers, numbersFrom(first, 21));
}

/// Takes the two seconds for which they have patience.
TEST(OutputThreads, StreamsWhoseServersSayNothingAreGivenUpAtTheirEnd)
{
    const std::array ports{freePort(), freePort()};
    Listener one(ports[0]), other(ports[1]);
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(QString());
    param.rtmp1Enabled = param.rtmp2Enabled = 1;
    param.rtmp1Url = QStringLiteral("rtmp://127.0.0.1:%1/live/key").arg(ports[0]);
    param.rtmp2Url = QStringLiteral("rtmp://127.0.0.1:%1/live/key").arg(ports[1]);
    const LogCapture log;
    stage.start(net, param);
    stage.commit(0, 10); // the first pictures wait for their sound
    one.await();
    other.await();
    stage.stop(net);
    EXPECT_EQ(log.count(" cannot open rtmp://127.0.0.1"), 2);
    EXPECT_EQ(log.count("tries again in"), 0);
    EXPECT_EQ(stage.statistics().netState, tagTavloOutputStatistics::Off);
}

/// Each finds its port free, or the server of the one that leaves.
TEST(OutputThreads, APlaceIsThereAsSoonAsTheLastOneHasLeftIt)
{
    class Nothing final : public tavlo::HttpResource
    {
        tavlo::HttpReply get(const std::string&) override { return {}; }
    };
    const auto port = static_cast<quint16>(freePort());
    const auto nothing = std::make_shared<Nothing>();
    std::string error;
    tavlo::HttpPlace place;
    ASSERT_TRUE(place.take("127.0.0.1", port, "/0", nothing, error)) << error;
    for (int i = 1; i < 200; ++i) {
        tavlo::HttpPlace next;
        std::thread leaving([&] { place.leave(); });
        EXPECT_TRUE(next.take("127.0.0.1", port, "/" + std::to_string(i), nothing, error)) << error;
        leaving.join();
        place = std::move(next);
    }
}

TEST(OutputThreads, RefusesWhatIsNoOutput)
{
    Stage stage(Stage::Way::Pictures);
    const LogCapture log;
    const QVariant param = QVariant::fromValue(tagTavloPresentOutputParam());
    for (const auto& [index, type] : {std::pair(4, 0), std::pair(-1, 0), std::pair(0, 9)})
        stage.target.startOutput(index, type, param);
    stage.target.stopOutput(0, 0, true);
    stage.commit(0, 20, false);
    EXPECT_EQ(log.lines(), QStringList()); // without an output no buffer is asked for, and none is missing
    stage.target.startOutput(0, 4, param);
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_EQ(stage.statistics().droppedPictures, 0U);
}

/// Keeps what a projection would show.
class Projection final : public ITavloHDMIOutputObject
{
public:
    static inline std::vector<std::array<quint8, 3>> shown; ///< of each picture, its first field of colour
    static inline int sounds = 0, ends = 0;

    bool create(int, const QString&, const tagTavloPresentHDMIOutputInfo&, const tagTavloVideoInfo&,
                const tagTavloAudioInfo&, quint32) override
    {
        return true;
    }
    void stop() override { ++ends; }
    void writeVideo(const picture_t*, const quint8* data, int stride, int, qint64, qint64, bool, quint32) override
    {
        const quint8* at = data + (Programme::height - 2) * stride;
        shown.push_back({at[0], at[1], at[2]});
    }
    void writeAudio(const quint8*, int, qint64, qint64) override { ++sounds; }
};

TEST(OutputThreads, ProjectionsTakePicturesAsTheyAreAndNobodyElseIsMissed)
{
    tavlo::setHdmiOutputFactory(
        []() -> std::unique_ptr<ITavloHDMIOutputObject> { return std::make_unique<Projection>(); });
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param;
    param.hdmi[2].enable = 1;
    stage.start(TavloPresentOutputTypeNDI, param);   // without its library it only counts
    stage.start(TavloPresentOutputTypeHDMI1, param); // switched off
    stage.start(TavloPresentOutputTypeHDMI2, param);
    for (int number = 0; number < 12; ++number) {
        stage.commit(number, 1, false);
        stage.stop(TavloPresentOutputTypeHDMI0); // comes behind the picture
    }
    EXPECT_EQ(stage.statistics().droppedPictures, 0U);
    stage.start(TavloPresentOutputTypeHDMI2, param); // begins anew
    stage.target.destroy();
    EXPECT_EQ(Projection::shown, std::vector(12, Programme::fieldColor(0)));
    EXPECT_EQ(Projection::sounds, 12);
    EXPECT_EQ(Projection::ends, 2);
    tavlo::setHdmiOutputFactory(nullptr);
}

} // namespace
