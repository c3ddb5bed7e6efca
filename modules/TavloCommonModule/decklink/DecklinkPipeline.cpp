#include "TavloCommonModule/decklink/DecklinkPipeline.h"

#include "shared/Gstreamer.h"

#include <gst/app/gstappsrc.h>

#include <algorithm>
#include <cstring>

namespace tavlo::decklink {

namespace {

constexpr guint mostPictures = 8;                    // that wait or are on their way
constexpr guint mostBlocks = 64, blockSize = 16'384; // the same of sound; bytes of one, whole samples
constexpr int bytesPerPixel = 2;
constexpr qint64 bytesPerSample = 4, sampleRate = 48'000;
constexpr GstClockTime latency = 100 * GST_MSECOND; // from a picture's time to when it is shown

/// Buffers that are used again and again; so many of them is all that can wait.
GstOwned<GstBufferPool> makePool(guint size, guint count)
{
    GstOwned<GstBufferPool> pool(gst_buffer_pool_new());
    GstStructure* const config = gst_buffer_pool_get_config(pool.get());
    gst_buffer_pool_config_set_params(config, nullptr, size, count, count);
    if (!gst_buffer_pool_set_config(pool.get(), config) || !gst_buffer_pool_set_active(pool.get(), TRUE))
        pool.reset();
    return pool;
}

/// Null where all of them are in use.
GstBuffer* takeBuffer(GstBufferPool* pool)
{
    GstBufferPoolAcquireParams params{};
    params.flags = GST_BUFFER_POOL_ACQUIRE_FLAG_DONTWAIT;
    GstBuffer* buffer = nullptr;
    return gst_buffer_pool_acquire_buffer(pool, &buffer, &params) == GST_FLOW_OK ? buffer : nullptr;
}

bool copyRows(GstBuffer* buffer, const quint8* data, int stride, const Mode& mode)
{
    GstMapInfo to;
    if (!gst_buffer_map(buffer, &to, GST_MAP_WRITE))
        return false;
    const size_t row = size_t{bytesPerPixel} * static_cast<size_t>(mode.width);
    for (int y = 0; y < mode.height; ++y)
        std::memcpy(to.data + row * static_cast<size_t>(y), data + ptrdiff_t{y} * stride, row);
    gst_buffer_unmap(buffer, &to);
    return true;
}

void setTime(GstBuffer* buffer, qint64 microseconds)
{
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(std::max<qint64>(microseconds, 0)) * GST_USECOND;
}

std::string launchText(const Mode& mode, const Sinks& sinks)
{
    const std::string size = "width=" + std::to_string(mode.width) + ",height=" + std::to_string(mode.height);
    const std::string rate = std::to_string(mode.fpsNum) + '/' + std::to_string(mode.fpsDen);
    const std::string source = " is-live=true format=time block=false max-bytes=0 caps=";
    return "appsrc name=video" + source + "video/x-raw,format=UYVY,framerate=0/1," + size +
           " ! videorate skip-to-first=true ! video/x-raw,framerate=" + rate + " ! " + sinks.video +
           " appsrc name=audio" + source + "audio/x-raw,format=S16LE,layout=interleaved,channels=2,rate=48000 ! " +
           sinks.audio;
}

} // namespace

/// GStreamer's side of it.
class Pipeline::Gst
{
public:
    bool open(const Mode& mode, const Sinks& sinks, std::string& error);
    ~Gst();

    qint64 now() const;
    std::string waitForEnd(GstClockTime longest, const char* otherwise);
    void interrupt();

    GstOwned<GstElement> pipeline;
    GstOwned<GstBufferPool> pictures, blocks;
    GstOwned<GstAppSrc> video, audio;

private:
    GstOwned<GstAppSrc> source(const char* name) const
    {
        return GstOwned<GstAppSrc>(
            reinterpret_cast<GstAppSrc*>(gst_bin_get_by_name(reinterpret_cast<GstBin*>(pipeline.get()), name)));
    }

    GstOwned<GstBus> _bus;
};

bool Pipeline::Gst::open(const Mode& mode, const Sinks& sinks, std::string& error)
{
    if (!initGstreamer(error))
        return false;
    GError* failure = nullptr;
    pipeline.reset(gst_parse_launch(launchText(mode, sinks).c_str(), &failure));
    if (!pipeline || failure) {
        error = takeGstError(failure, "no pipeline");
        return false;
    }
    gst_object_ref_sink(pipeline.get());
    gst_pipeline_set_latency(GST_PIPELINE(pipeline.get()), latency);
    _bus.reset(gst_pipeline_get_bus(GST_PIPELINE(pipeline.get())));
    pictures = makePool(static_cast<guint>(bytesPerPixel * mode.width * mode.height), mostPictures);
    blocks = makePool(blockSize, mostBlocks);
    video = source("video");
    audio = source("audio");
    if (!pictures || !blocks || !video || !audio) {
        error = "no memory";
        return false;
    }
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE)
        return true;
    error = waitForEnd(0, "its element does not start");
    return false;
}

Pipeline::Gst::~Gst()
{
    if (pipeline)
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    for (GstBufferPool* pool : {pictures.get(), blocks.get()})
        if (pool)
            gst_buffer_pool_set_active(pool, FALSE);
}

qint64 Pipeline::Gst::now() const
{
    const GstClockTime time = gst_element_get_current_running_time(pipeline.get());
    return GST_CLOCK_TIME_IS_VALID(time) ? static_cast<qint64>(time / 1000) : 0;
}

std::string Pipeline::Gst::waitForEnd(GstClockTime longest, const char* otherwise)
{
    constexpr auto wanted = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS | GST_MESSAGE_APPLICATION);
    GstMessage* const message = gst_bus_timed_pop_filtered(_bus.get(), longest, wanted);
    if (!message)
        return otherwise;
    std::string text = GST_MESSAGE_TYPE(message) == GST_MESSAGE_APPLICATION ? std::string() : otherwise;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* failure = nullptr;
        gst_message_parse_error(message, &failure, nullptr);
        text = takeGstError(failure, otherwise);
    }
    gst_message_unref(message);
    return text;
}

void Pipeline::Gst::interrupt()
{
    gst_bus_post(_bus.get(), gst_message_new_application(GST_OBJECT(pipeline.get()), gst_structure_new_empty("end")));
}

Pipeline::Pipeline(const Mode& mode, std::unique_ptr<Gst> gst, std::function<qint64()> now)
    : _mode(mode), _gst(std::move(gst)), _now(std::move(now))
{}

Pipeline::~Pipeline() = default;

std::unique_ptr<Pipeline> Pipeline::open(const Mode& mode, const Sinks& sinks, std::string& error)
{
    auto gst = std::make_unique<Gst>();
    if (!gst->open(mode, sinks, error))
        return nullptr;
    return std::unique_ptr<Pipeline>(new Pipeline(mode, std::move(gst), sinks.now));
}

bool Pipeline::writeVideo(const quint8* data, int stride, qint64 time)
{
    const qint64 due = _clocks.follow(time, _now ? _now() : _gst->now());
    GstBuffer* const buffer = takeBuffer(_gst->pictures.get());
    if (!buffer)
        return false;
    if (!copyRows(buffer, data, stride, _mode)) {
        gst_buffer_unref(buffer);
        return false;
    }
    setTime(buffer, due);
    return gst_app_src_push_buffer(_gst->video.get(), buffer) == GST_FLOW_OK; // takes the buffer over
}

bool Pipeline::writeAudio(const quint8* data, int size, qint64 time)
{
    if (!_clocks.hasBegun())
        return false;
    for (int done = 0; done < size;) {
        GstBuffer* const buffer = takeBuffer(_gst->blocks.get());
        if (!buffer)
            return false;
        const int part = std::min(size - done, int{blockSize});
        gst_buffer_fill(buffer, 0, data + done, static_cast<gsize>(part));
        gst_buffer_set_size(buffer, part);
        setTime(buffer, _clocks.timeOf(time) + done / bytesPerSample * 1'000'000 / sampleRate);
        if (gst_app_src_push_buffer(_gst->audio.get(), buffer) != GST_FLOW_OK)
            return false;
        done += part;
    }
    return true;
}

std::string Pipeline::waitForEnd() { return _gst->waitForEnd(GST_CLOCK_TIME_NONE, "it ended"); }

void Pipeline::interrupt() { _gst->interrupt(); }

} // namespace tavlo::decklink
