#include "TavloCommonModule/player/PipelineInput.h"

#include "TavloCommonModule/player/MonotonicClock.h"
#include "shared/Gstreamer.h"

#include <QDebug>

#include <gst/app/gstappsink.h>
#include <gst/audio/audio.h>
#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <utility>

namespace tavlo {
namespace {

struct UnrefSample
{
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};
using SamplePtr = std::unique_ptr<GstSample, UnrefSample>;

struct VideoLayout
{
    GstVideoFormat gst;
    AVPixelFormat format;
};

constexpr std::array videoLayouts{
    VideoLayout{GST_VIDEO_FORMAT_UYVY, AV_PIX_FMT_UYVY422}, VideoLayout{GST_VIDEO_FORMAT_NV12, AV_PIX_FMT_NV12},
    VideoLayout{GST_VIDEO_FORMAT_BGRA, AV_PIX_FMT_BGRA}, VideoLayout{GST_VIDEO_FORMAT_BGRx, AV_PIX_FMT_BGR0}};

struct SampleLayout
{
    GstAudioFormat gst;
    AVSampleFormat format;
};

constexpr std::array sampleLayouts{SampleLayout{GST_AUDIO_FORMAT_S16LE, AV_SAMPLE_FMT_S16},
                                   SampleLayout{GST_AUDIO_FORMAT_S32LE, AV_SAMPLE_FMT_S32},
                                   SampleLayout{GST_AUDIO_FORMAT_F32LE, AV_SAMPLE_FMT_FLT}};

// What waits is little: the reading thread takes it at once, and where it cannot, new pictures are of more use.
constexpr char pictureEnd[] = " ! videoconvert ! video/x-raw,format={UYVY,NV12,BGRA,BGRx}"
                              " ! appsink name=pictures sync=false max-buffers=4 drop=true ";
constexpr char soundEnd[] = " ! audio/x-raw,format={S16LE,S32LE,F32LE},layout=interleaved"
                            " ! appsink name=sound sync=false max-buffers=50 drop=true ";

/// Microseconds of the pipeline's clock.
qint64 stampOf(GstBuffer* buffer)
{
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    return GST_CLOCK_TIME_IS_VALID(pts) ? static_cast<qint64>(pts / 1000) : monotonicNow();
}

AVColorSpace matrixOf(const GstVideoInfo& info)
{
    switch (info.colorimetry.matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
        return AVCOL_SPC_SMPTE170M;
    case GST_VIDEO_COLOR_MATRIX_BT709:
        return AVCOL_SPC_BT709;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        return AVCOL_SPC_BT2020_NCL;
    default:
        return AVCOL_SPC_UNSPECIFIED;
    }
}

/// A picture that stays where GStreamer has put it. Null when its layout is not one of those above.
FramePtr pictureOf(SamplePtr sample, AVRational& frameRate)
{
    struct Lent
    {
        SamplePtr sample;
        GstVideoFrame mapped;
    };
    GstVideoInfo info;
    GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
    GstCaps* const caps = gst_sample_get_caps(sample.get());
    if (!buffer || !caps || !gst_video_info_from_caps(&info, caps))
        return nullptr;
    const auto* const layout = std::ranges::find(videoLayouts, GST_VIDEO_INFO_FORMAT(&info), &VideoLayout::gst);
    FramePtr frame(layout != videoLayouts.end() ? av_frame_alloc() : nullptr);
    auto lent = std::make_unique<Lent>(std::move(sample), GstVideoFrame{});
    if (!frame || !gst_video_frame_map(&lent->mapped, &info, buffer, GST_MAP_READ))
        return nullptr;
    const auto giveBack = [](void* opaque, uint8_t*) {
        const std::unique_ptr<Lent> owned(static_cast<Lent*>(opaque));
        gst_video_frame_unmap(&owned->mapped);
    };
    for (unsigned i = 0; i < GST_VIDEO_FRAME_N_PLANES(&lent->mapped); ++i) {
        frame->data[i] = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&lent->mapped, i));
        frame->linesize[i] = GST_VIDEO_FRAME_PLANE_STRIDE(&lent->mapped, i);
    }
    frame->buf[0] = av_buffer_create(frame->data[0], GST_VIDEO_FRAME_SIZE(&lent->mapped), giveBack, lent.get(),
                                     AV_BUFFER_FLAG_READONLY);
    if (!frame->buf[0]) {
        giveBack(lent.release(), nullptr);
        return nullptr;
    }
    (void)lent.release(); // the buffer's
    frame->width = GST_VIDEO_INFO_WIDTH(&info);
    frame->height = GST_VIDEO_INFO_HEIGHT(&info);
    frame->format = layout->format;
    frame->colorspace = matrixOf(info);
    frame->sample_aspect_ratio = {GST_VIDEO_INFO_PAR_N(&info), GST_VIDEO_INFO_PAR_D(&info)};
    frame->interlaced_frame = GST_VIDEO_INFO_IS_INTERLACED(&info);
    frame->top_field_first = GST_VIDEO_INFO_FIELD_ORDER(&info) == GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST ||
                             GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_TFF);
    frame->pts = stampOf(buffer);
    frameRate = {GST_VIDEO_INFO_FPS_N(&info), GST_VIDEO_INFO_FPS_D(&info)};
    frame->pkt_duration = frameRate.num > 0 ? av_rescale(frameRate.den, 1'000'000, frameRate.num) : 40'000;
    return frame;
}

FramePtr soundOf(const SamplePtr& sample)
{
    GstAudioInfo info;
    GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
    GstCaps* const caps = gst_sample_get_caps(sample.get());
    if (!buffer || !caps || !gst_audio_info_from_caps(&info, caps) || GST_AUDIO_INFO_BPF(&info) < 1)
        return nullptr;
    const auto* const layout = std::ranges::find(sampleLayouts, GST_AUDIO_INFO_FORMAT(&info), &SampleLayout::gst);
    const gsize bytes = gst_buffer_get_size(buffer);
    FramePtr frame(layout != sampleLayouts.end() ? av_frame_alloc() : nullptr);
    if (!frame)
        return nullptr;
    frame->format = layout->format;
    frame->sample_rate = GST_AUDIO_INFO_RATE(&info);
    frame->nb_samples = static_cast<int>(bytes) / GST_AUDIO_INFO_BPF(&info);
    av_channel_layout_default(&frame->ch_layout, GST_AUDIO_INFO_CHANNELS(&info));
    if (frame->nb_samples < 1 || av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    gst_buffer_extract(buffer, 0, frame->data[0], bytes);
    frame->pts = stampOf(buffer);
    frame->pkt_duration = av_rescale(frame->nb_samples, 1'000'000, frame->sample_rate);
    return frame;
}

} // namespace

/// The elements at work, and where their samples come out. GStreamer's threads ring a bell, the reading thread answers.
class PipelineInput::Pipeline
{
public:
    explicit Pipeline(GstElement* element)
        : _element(element), _bus(gst_element_get_bus(element)), _pictures(outlet("pictures")), _sound(outlet("sound"))
    {}

    ~Pipeline()
    {
        gst_element_set_state(_element.get(), GST_STATE_NULL); // no bell rings from here on
    }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /// \return whether it runs, or soon will
    bool start() { return gst_element_set_state(_element.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE; }

    SamplePtr takePicture() const { return take(_pictures); }
    SamplePtr takeSound() const { return take(_sound); }

    /// Waits until something came, or so long.
    void wait(qint64 microseconds)
    {
        std::unique_lock lock(_lock);
        _bell.wait_for(lock, std::chrono::microseconds(microseconds), [this] { return _rang; });
        _rang = false;
    }

    /// Why nothing comes any more; empty when all is well.
    QString failure() const
    {
        constexpr auto ends = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
        GstMessage* const message = gst_bus_pop_filtered(_bus.get(), ends); // the others are thrown away
        if (!message)
            return QString();
        GError* error = nullptr;
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
            gst_message_parse_error(message, &error, nullptr);
        gst_message_unref(message);
        return QString::fromStdString(takeGstError(error, "it ended"));
    }

private:
    GstOwned<GstAppSink> outlet(const char* name)
    {
        auto* const found = reinterpret_cast<GstAppSink*>(gst_bin_get_by_name(GST_BIN(_element.get()), name));
        if (!found)
            return nullptr;
        GstAppSinkCallbacks callbacks{};
        callbacks.new_sample = [](GstAppSink*, void* self) {
            static_cast<Pipeline*>(self)->ring();
            return GST_FLOW_OK;
        };
        gst_app_sink_set_callbacks(found, &callbacks, this, nullptr);
        return GstOwned<GstAppSink>(found);
    }

    static SamplePtr take(const GstOwned<GstAppSink>& sink)
    {
        return SamplePtr(sink ? gst_app_sink_try_pull_sample(sink.get(), 0) : nullptr);
    }

    void ring()
    {
        {
            const std::scoped_lock lock(_lock);
            _rang = true;
        }
        _bell.notify_one();
    }

    std::mutex _lock;
    std::condition_variable _bell;
    bool _rang = false; ///< guarded by _lock

    // fixed after create
    const GstOwned<GstElement> _element;
    const GstOwned<GstBus> _bus;
    const GstOwned<GstAppSink> _pictures;
    const GstOwned<GstAppSink> _sound;
};

PipelineInput::PipelineInput(const std::atomic<bool>& interrupted) : FrameInput(interrupted) {}

PipelineInput::~PipelineInput() { close(); }

QString PipelineInput::connect(const InputLocation& location, bool pictures, bool sound)
{
    _name = location.name;
    if (std::string reason; !initGstreamer(reason))
        return QString::fromStdString(reason);
    QString text;
    if (pictures && !location.url.isEmpty())
        text += location.url + QLatin1String(pictureEnd);
    if (sound && !location.sound.isEmpty())
        text += location.sound + QLatin1String(soundEnd);
    if (text.isEmpty())
        return QStringLiteral("neither pictures nor sound are wanted of it");
    GError* error = nullptr;
    GstElement* const element =
        gst_parse_launch_full(text.toUtf8().constData(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error);
    if (!element)
        return QString::fromStdString(takeGstError(error, "no such elements"));
    _pipeline = std::make_unique<Pipeline>(element);
    if (_pipeline->start())
        return QString();
    const QString reason = _pipeline->failure();
    return reason.isEmpty() ? QStringLiteral("there is no such card, or its driver is not installed") : reason;
}

void PipelineInput::disconnect() { _pipeline.reset(); }

int PipelineInput::fetch(Arrival& arrival)
{
    if (SamplePtr sample = _pipeline->takePicture()) {
        arrival.frame = pictureOf(std::move(sample), arrival.frameRate);
        arrival.isVideo = true;
    } else if (sample = _pipeline->takeSound(); sample) {
        arrival.frame = soundOf(sample);
        arrival.isVideo = false;
    } else {
        _pipeline->wait(slice);
        arrival.frame.reset();
    }
    if (const QString reason = _pipeline->failure(); !reason.isEmpty()) {
        qDebug().noquote() << "player:" << _name << "-" << reason;
        return AVERROR(EIO);
    }
    return arrival.frame ? 0 : AVERROR(EAGAIN);
}

} // namespace tavlo
