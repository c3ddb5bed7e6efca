#include "TavloCodecAggregationModule/FfmpegVideoEncoder.h"

#include "TavloCodecAggregationModule/EncoderSettings.h"
#include "TavloCodecAggregationModule/HardwareDevice.h"

#include <tavlo/TavloOutputStatistics.h>

#include <QDebug>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <pthread.h>
#include <utility>

namespace tavlo {

namespace {

/// Keeps what codecs tell about themselves from the standard error stream; their failures are told here.
constexpr int quieter = AV_LOG_TRACE - AV_LOG_FATAL;

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

AVCodecID codecIdOf(quint32 codec) { return codec == TavloVideoCodecHEVC ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264; }

AVFrame* newFrame(AVPixelFormat format, int width, int height)
{
    AVFrame* frame = av_frame_alloc();
    if (!frame)
        return nullptr;
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame, 0) < 0)
        av_frame_free(&frame);
    return frame;
}

/// A picture on the frame's memory.
PicturePtr wrap(const AVFrame& frame)
{
    video_format_t format{};
    const auto width = static_cast<int>(frame.width), height = static_cast<int>(frame.height);
    video_format_Setup(&format, VLC_CODEC_NV12, width, height, width, height, 1, 1);
    picture_resource_t resource{};
    for (int i = 0; i < 2; ++i) {
        resource.p[i].p_pixels = frame.data[i];
        resource.p[i].i_pitch = frame.linesize[i];
        resource.p[i].i_lines = i == 0 ? height : (height + 1) / 2;
    }
    return PicturePtr(picture_NewFromResource(&format, &resource));
}

bool takesInterleavedChroma(const AVCodec& codec)
{
    for (const AVPixelFormat* format = codec.pix_fmts; format && *format != AV_PIX_FMT_NONE; ++format)
        if (*format == AV_PIX_FMT_NV12)
            return true;
    return false;
}

void copyRows(quint8* target, int targetPitch, const quint8* source, int sourcePitch, int bytes, int rows)
{
    for (int row = 0; row < rows; ++row)
        std::memcpy(target + ptrdiff_t{row} * targetPitch, source + ptrdiff_t{row} * sourcePitch,
                    static_cast<size_t>(bytes));
}

/// Only pictures that decoding can begin with count as intra pictures.
quint32 flagsOf(const AVPacket& packet)
{
    if (packet.flags & AV_PKT_FLAG_KEY)
        return BLOCK_FLAG_TYPE_I;
    const quint8* stats = av_packet_get_side_data(&packet, AV_PKT_DATA_QUALITY_STATS, nullptr);
    const int type = stats ? int{stats[4]} : int{AV_PICTURE_TYPE_NONE};
    if (type == AV_PICTURE_TYPE_B)
        return BLOCK_FLAG_TYPE_B;
    return type == AV_PICTURE_TYPE_P || type == AV_PICTURE_TYPE_I ? BLOCK_FLAG_TYPE_P : BLOCK_FLAG_TYPE_PB;
}

/// The calling thread's name for a while: the codec's own threads take over that of the thread that opens it.
class ThreadName
{
public:
    explicit ThreadName(const char* name)
    {
        pthread_getname_np(pthread_self(), _before.data(), _before.size());
        pthread_setname_np(pthread_self(), name);
    }
    ~ThreadName() { pthread_setname_np(pthread_self(), _before.data()); }
    ThreadName(const ThreadName&) = delete;
    ThreadName& operator=(const ThreadName&) = delete;

private:
    std::array<char, 16> _before{};
};

} // namespace

void FfmpegVideoEncoder::FreeFfmpeg::operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
void FfmpegVideoEncoder::FreeFfmpeg::operator()(AVFrame* frame) const { av_frame_free(&frame); }
void FfmpegVideoEncoder::FreeFfmpeg::operator()(AVPacket* packet) const { av_packet_free(&packet); }

FfmpegVideoEncoder::~FfmpegVideoEncoder() { FfmpegVideoEncoder::close(); }

void FfmpegVideoEncoder::init(quint32, ITavloVideoEncoderSink* sink, ITavloGraphicsContext* graphicsContext)
{
    _sink = sink;
    _graphicsContext = graphicsContext;
}

bool FfmpegVideoEncoder::open(const tagTavloVideoInfo& videoInfo, const tagTavloPresentOutputParam& param, quint32)
{
    close();
    if (videoInfo.width <= 0 || videoInfo.height <= 0 || videoInfo.fpsNum <= 0 || videoInfo.fpsDen <= 0) {
        qDebug() << "FfmpegVideoEncoder::open: no size or rate";
        return false;
    }
    for (const EncoderChoice& choice : encoderChoices())
        if (!_codec && choice.codec == param.videoCodec &&
            (_impl == TavloVideoEncodeImplAutomatic || _impl == choice.impl))
            _codec = openCodec(choice, videoInfo, param);
    if (!_codec || !makeSlots(videoInfo)) {
        qDebug() << "FfmpegVideoEncoder::open: nothing codes codec" << param.videoCodec << "by" << quint32{_impl}
                 << "at" << videoInfo.width << "x" << videoInfo.height;
        _codec.reset();
        return false;
    }
    _grid = FrameGrid(videoInfo.fpsNum, videoInfo.fpsDen);
    _sent.reset(av_frame_alloc());
    _packet.reset(av_packet_alloc());
    _ending = false;
    _thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "tavlo-encode");
        run();
    });
    return true;
}

FfmpegVideoEncoder::CodecPtr FfmpegVideoEncoder::openCodec(const EncoderChoice& choice,
                                                           const tagTavloVideoInfo& videoInfo,
                                                           const tagTavloPresentOutputParam& param)
{
    const auto refuses = [&](const char* why) {
        qDebug().noquote() << "FfmpegVideoEncoder::open:" << choice.name << "refuses:" << why;
        return nullptr;
    };
    const AVCodec* const codec = avcodec_find_encoder_by_name(choice.name);
    CodecPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context)
        return refuses("it is not a part of this FFmpeg");
    context->log_level_offset = quieter;
    context->codec_id = codecIdOf(param.videoCodec);
    context->pix_fmt = takesInterleavedChroma(*codec) ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P;
    applySettings(*context, choice, videoInfo, param);
    if (choice.onDevice) {
        void* const device = _graphicsContext ? _graphicsContext->device() : nullptr;
        if (!device || !takeFromDevice(*context, static_cast<AVBufferRef*>(device)))
            return refuses("there is no device");
    }
    const ThreadName codecName("tavlo-encode");
    if (const int failure = avcodec_open2(context.get(), codec, nullptr); failure < 0) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(failure, text.data(), text.size());
        return refuses(text.data());
    }
    if (context->extradata_size == 0)
        return refuses("it gives no header");
    _planar.reset(context->pix_fmt == AV_PIX_FMT_YUV420P
                      ? newFrame(AV_PIX_FMT_YUV420P, videoInfo.width, videoInfo.height)
                      : nullptr);
    qDebug() << "FfmpegVideoEncoder::open:" << choice.name << videoInfo.width << "x" << videoInfo.height;
    return context;
}

bool FfmpegVideoEncoder::makeSlots(const tagTavloVideoInfo& videoInfo)
{
    _free.clear();
    _free.reserve(pictureCount);
    _queued.reserve(pictureCount);
    for (Slot& slot : _slots) {
        slot.frame.reset(newFrame(AV_PIX_FMT_NV12, videoInfo.width, videoInfo.height));
        if (!slot.frame)
            return false;
        slot.picture = wrap(*slot.frame);
        if (!slot.picture)
            return false;
        _free.push_back(&slot);
    }
    return true;
}

void FfmpegVideoEncoder::close()
{
    if (_thread.joinable()) {
        {
            const std::lock_guard guard(_lock);
            _ending = true;
        }
        _changed.notify_all();
        _thread.join();
    }
    _codec.reset();
    _last = nullptr;
    for (Slot& slot : _slots)
        slot = {};
}

void FfmpegVideoEncoder::getExtraData(const quint8** data, int* size)
{
    *data = _codec ? _codec->extradata : nullptr;
    *size = _codec ? _codec->extradata_size : 0;
}

bool FfmpegVideoEncoder::encode(const picture_t* picture, int, qint64 pts, qint64)
{
    picture_t* const own = acquirePicture(0, 0);
    if (!own) {
        _dropped.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    for (int i = 0; i < own->i_planes; ++i)
        copyRows(own->p[i].p_pixels, own->p[i].i_pitch, picture->p[i].p_pixels, picture->p[i].i_pitch,
                 std::min(own->p[i].i_visible_pitch, picture->p[i].i_visible_pitch),
                 std::min(own->p[i].i_visible_lines, picture->p[i].i_visible_lines));
    own->date = pts;
    submitPicture(own);
    return true;
}

picture_t* FfmpegVideoEncoder::acquirePicture(quint32, int timeoutMilliseconds)
{
    Slot* slot = nullptr;
    {
        std::unique_lock guard(_lock);
        if (!_changed.wait_for(guard, std::chrono::milliseconds(timeoutMilliseconds),
                               [this] { return !_free.empty(); }))
            return nullptr;
        slot = _free.back();
        _free.pop_back();
    }
    if (makeWritable(*slot))
        return slot->picture.get();
    giveBack(slot); // there may be memory another time
    return nullptr;
}

/// A codec that keeps what it was sent has it for itself: the slot gets memory of its own again. False when there is none.
bool FfmpegVideoEncoder::makeWritable(Slot& slot)
{
    if (av_frame_is_writable(slot.frame.get()))
        return true;
    FramePtr fresh(newFrame(AV_PIX_FMT_NV12, slot.frame->width, slot.frame->height));
    PicturePtr picture = fresh ? wrap(*fresh) : nullptr;
    if (!picture)
        return false;
    slot.frame = std::move(fresh);
    slot.picture = std::move(picture);
    return true;
}

void FfmpegVideoEncoder::submitPicture(picture_t* picture)
{
    const auto slot = std::ranges::find(_slots, picture, [](const Slot& one) { return one.picture.get(); });
    Q_ASSERT(slot != _slots.end());
    if (slot == _slots.end())
        return;
    {
        const std::lock_guard guard(_lock);
        _queued.push_back(&*slot);
    }
    _changed.notify_all();
}

void FfmpegVideoEncoder::getStatistics(tagTavloOutputStatistics* statistics)
{
    statistics->encoderDropped += _dropped.load(std::memory_order_relaxed);
    statistics->repeatedPictures += _repeated.load(std::memory_order_relaxed);
    statistics->skippedPictures += _skipped.load(std::memory_order_relaxed);
    statistics->outputDelay = _delay.load(std::memory_order_relaxed);
}

void FfmpegVideoEncoder::run()
{
    while (Slot* slot = nextSlot())
        codeSlot(slot);
    avcodec_send_frame(_codec.get(), nullptr);
    receive();
}

/// Null at the end, when nothing is left to code.
FfmpegVideoEncoder::Slot* FfmpegVideoEncoder::nextSlot()
{
    std::unique_lock guard(_lock);
    _changed.wait(guard, [this] { return _ending || !_queued.empty(); });
    if (_queued.empty())
        return nullptr;
    Slot* const slot = _queued.front();
    _queued.erase(_queued.begin());
    return slot;
}

void FfmpegVideoEncoder::giveBack(Slot* slot)
{
    if (!slot)
        return;
    {
        const std::lock_guard guard(_lock);
        _free.push_back(slot);
    }
    _changed.notify_all();
}

void FfmpegVideoEncoder::codeSlot(Slot* slot)
{
    const FrameGrid::Place place = _grid.accept(slot->picture->date);
    if (!place.taken) {
        _skipped.fetch_add(1, std::memory_order_relaxed);
        giveBack(slot);
        return;
    }
    _repeated.fetch_add(static_cast<quint64>(place.repeats), std::memory_order_relaxed); // before they count as coded
    for (int i = 0; i < place.repeats; ++i)
        send(*(_last ? _last : slot)->frame, place.index - place.repeats + i);
    send(*slot->frame, place.index);
    giveBack(std::exchange(_last, slot));
}

void FfmpegVideoEncoder::send(const AVFrame& picture, qint64 index)
{
    av_frame_unref(_sent.get());
    const bool ready = _codec->hw_frames_ctx ? upload(*_codec, picture, *_sent)
                                             : av_frame_ref(_sent.get(), _planar ? planar(picture) : &picture) == 0;
    if (!ready) {
        _dropped.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    _sent->pts = index;
    _sent->pict_type = AV_PICTURE_TYPE_NONE;
    _sentAt[static_cast<size_t>(index) % _sentAt.size()] = now();
    if (avcodec_send_frame(_codec.get(), _sent.get()) < 0)
        _dropped.fetch_add(1, std::memory_order_relaxed);
    av_frame_unref(_sent.get());
    receive();
}

/// The same with each component of colour in a plane of its own.
const AVFrame* FfmpegVideoEncoder::planar(const AVFrame& picture)
{
    av_frame_make_writable(_planar.get());
    copyRows(_planar->data[0], _planar->linesize[0], picture.data[0], picture.linesize[0], picture.width,
             picture.height);
    for (int row = 0; row < (picture.height + 1) / 2; ++row) {
        const quint8* from = picture.data[1] + ptrdiff_t{row} * picture.linesize[1];
        quint8* const u = _planar->data[1] + ptrdiff_t{row} * _planar->linesize[1];
        quint8* const v = _planar->data[2] + ptrdiff_t{row} * _planar->linesize[2];
        for (int x = 0; x < (picture.width + 1) / 2; ++x) {
            u[x] = from[2 * x];
            v[x] = from[2 * x + 1];
        }
    }
    return _planar.get();
}

void FfmpegVideoEncoder::receive()
{
    while (avcodec_receive_packet(_codec.get(), _packet.get()) == 0) {
        deliver(*_packet);
        av_packet_unref(_packet.get());
    }
}

void FfmpegVideoEncoder::deliver(const AVPacket& packet)
{
    const qint64 taken = now() - _sentAt[static_cast<size_t>(packet.pts) % _sentAt.size()];
    _delay.store(static_cast<float>(taken) / 1000, std::memory_order_relaxed);
    block_t* const block = block_Alloc(static_cast<size_t>(packet.size));
    if (!block) {
        _dropped.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    std::memcpy(block->p_buffer, packet.data, static_cast<size_t>(packet.size));
    block->i_pts = _grid.timeOf(packet.pts);
    block->i_dts = _grid.timeOf(packet.dts);
    block->i_length = _grid.timeOf(packet.pts + 1) - block->i_pts;
    block->i_flags = flagsOf(packet);
    _sink->onEncoded(static_cast<ITavloVideoEncoder*>(this), block);
}

} // namespace tavlo
