#include "TavloCommonModule/player/MediaInput.h"

#include "TavloCommonModule/player/MonotonicClock.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/time.h>
}

#include <QDebug>
#include <QFile>

#include <cstring>
#include <mutex>
#include <sys/stat.h>

namespace tavlo {
namespace {

constexpr qint64 patienceWithPieces = 30'000'000; ///< microseconds: the next one may be a whole one away

/// Options of an input that is being opened; FFmpeg takes out what it knows.
class Options
{
public:
    ~Options() { av_dict_free(&_dictionary); }

    void set(const char* key, const QString& value) { av_dict_set(&_dictionary, key, value.toUtf8().constData(), 0); }
    AVDictionary** get() { return &_dictionary; }

private:
    AVDictionary* _dictionary = nullptr;
};

/// Packets of a camera lie in its driver's memory, which goes with the device while others still look at them.
int takeOut(AVPacket& packet)
{
    const auto size = static_cast<size_t>(packet.size);
    AVBufferRef* const copy = av_buffer_alloc(size + AV_INPUT_BUFFER_PADDING_SIZE);
    if (!copy)
        return AVERROR(ENOMEM);
    std::memcpy(copy->data, packet.data, size);
    std::memset(copy->data + size, 0, AV_INPUT_BUFFER_PADDING_SIZE);
    av_buffer_unref(&packet.buf);
    packet.buf = copy;
    packet.data = copy->data;
    return 0;
}

} // namespace

void prepareFfmpeg()
{
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_FATAL); // what matters comes back as an error, and is told with the input's name
        avformat_network_init();
        avdevice_register_all();
    });
}

bool MediaInput::open(const InputLocation& location, bool pictures, bool sound)
{
    prepareFfmpeg();
    close();
    _pace = location.pace;
    _isCamera = location.isCamera;
    if (location.url.isEmpty()) {
        qDebug().noquote() << "player: no input can be opened by this name:" << location.name;
        return false;
    }
    if (_pace == InputLocation::Pace::File && !isRegular(location)) {
        qDebug().noquote() << "player: not a file that can be read:" << location.name;
        return false;
    }
    const int result = openContext(location);
    if (result < 0) {
        close();
        if (!_interrupted)
            qDebug().noquote() << "player: failed to open" << location.name << "-" << ffmpegError(result);
        return false;
    }
    chooseStreams(pictures && !location.soundOnly, sound && !location.picturesOnly);
    if (!_video && !_audio) {
        qDebug().noquote() << "player: neither picture nor sound to play in" << location.name;
        close();
        return false;
    }
    return true;
}

int MediaInput::openContext(const InputLocation& location)
{
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->interrupt_callback = {
        [](void* self) { return static_cast<int>(static_cast<const MediaInput*>(self)->isOver()); }, this};
    Options options;
    options.set("protocol_whitelist", location.protocols);
    options.set("pattern_type", QStringLiteral("none")); // a percent sign in a picture's name is no pattern
    for (const auto& [key, value] : location.options)
        options.set(key.toUtf8().constData(), value);
    const QByteArray format = location.format.toUtf8();
    const AVInputFormat* const demuxer = format.isEmpty() ? nullptr : av_find_input_format(format.constData());
    if (!format.isEmpty() && !demuxer) {
        avformat_free_context(context);
        return AVERROR_DEMUXER_NOT_FOUND;
    }
    const bool isDevice = _pace == InputLocation::Pace::Device;
    if (isDevice)
        context->flags |= AVFMT_FLAG_NONBLOCK; // a driver doesn't ask whether it is to wait on
    const QString url = location.isCamera ? cameraFile(location.url) : location.url;
    armDeadline();
    // A failure frees the context.
    const int opened = avformat_open_input(&context, url.toUtf8().constData(), demuxer, options.get());
    if (opened < 0)
        return opened;
    _context.reset(context);
    const QLatin1String read(context->iformat->name);
    _inPieces = read == QLatin1String("hls") || read == QLatin1String("dash");
    armDeadline();
    return isDevice ? 0 : avformat_find_stream_info(context, nullptr); // devices have told all about themselves
}

/// To open a pipe or a device file could wait for ever.
bool MediaInput::isRegular(const InputLocation& location)
{
    struct stat status
    {};
    const QByteArray path = QFile::encodeName(location.url.mid(5)); // behind "file:"
    return stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

void MediaInput::close()
{
    _context.reset();
    _video.reset();
    _audio.reset();
    _videoIndex = _audioIndex = -1;
    _isStill = _inPieces = false;
}

int MediaInput::read(AVPacket& packet)
{
    for (;;) {
        if (const int result = readFrame(packet); result < 0)
            return result;
        if (packet.stream_index == _videoIndex || packet.stream_index == _audioIndex)
            return _isCamera ? takeOut(packet) : 0;
        av_packet_unref(&packet);
    }
}

/// Waits where a device has nothing just now.
int MediaInput::readFrame(AVPacket& packet)
{
    armDeadline();
    for (;;) {
        const int result = av_read_frame(_context.get(), &packet);
        if (result != AVERROR(EAGAIN))
            return result;
        if (isOver())
            return _interrupted ? AVERROR_EXIT : AVERROR(ETIMEDOUT);
        av_usleep(2000);
    }
}

bool MediaInput::seek(qint64 itemTime)
{
    armDeadline();
    AVFormatContext* const context = _context.get();
    // Formats without an index find a time, not a picture that can be decoded: to go back further finds one.
    const bool hasIndex = (context->iformat->flags & AVFMT_TS_DISCONT) == 0;
    const qint64 target = hasIndex ? itemTime : std::max<qint64>(itemTime - 5'000'000, 0);
    if (!hasIndex && target == 0 && !(context->iformat->flags & AVFMT_NO_BYTE_SEEK))
        return avformat_seek_file(context, -1, INT64_MIN, 0, INT64_MAX, AVSEEK_FLAG_BYTE) >= 0;
    const qint64 stamp = target + firstStamp();
    return avformat_seek_file(context, -1, INT64_MIN, stamp, stamp, 0) >= 0 ||
           avformat_seek_file(context, -1, INT64_MIN, stamp, INT64_MAX, AVSEEK_FLAG_ANY) >= 0;
}

qint64 MediaInput::firstStamp() const
{
    const qint64 first = _context->start_time != AV_NOPTS_VALUE ? _context->start_time : 0;
    if (!_video || _video->isPicture)
        return first;
    // Sound that comes before the first picture would tear the pictures of a list apart.
    const qint64 picture = _context->streams[_videoIndex]->start_time;
    if (picture == AV_NOPTS_VALUE)
        return first;
    const qint64 stamp = av_rescale_q(picture, _video->timeBase, microsecondBase);
    return stamp > first && stamp - first < 1'000'000 ? stamp : first;
}

qint64 MediaInput::length() const
{
    return !_isStill && _context->duration != AV_NOPTS_VALUE && _context->duration > 0 ? _context->duration : 0;
}

bool MediaInput::isLive() const
{
    switch (_pace) {
    case InputLocation::Pace::File:
        return false;
    case InputLocation::Pace::Remote:
        return !_isStill && length() == 0;
    case InputLocation::Pace::RealTime:
    case InputLocation::Pace::Device:
        break;
    }
    return true;
}

bool MediaInput::stampsMayJump() const { return (_context->iformat->flags & AVFMT_TS_DISCONT) != 0 || isLive(); }

void MediaInput::chooseStreams(bool pictures, bool sound)
{
    AVFormatContext* const context = _context.get();
    const auto find = [&](bool wanted, AVMediaType type, int related) {
        return wanted ? av_find_best_stream(context, type, -1, related, nullptr, 0) : -1;
    };
    _videoIndex = find(pictures, AVMEDIA_TYPE_VIDEO, -1);
    _audioIndex = find(sound, AVMEDIA_TYPE_AUDIO, _videoIndex);
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const int index = static_cast<int>(i);
        if (index != _videoIndex && index != _audioIndex)
            context->streams[i]->discard = AVDISCARD_ALL;
    }
    _video = describe(_videoIndex);
    _audio = describe(_audioIndex);
    const QLatin1String format(context->iformat->name);
    _isStill = _video && !_audio && (format.endsWith(QLatin1String("_pipe")) || format == QLatin1String("image2"));
}

std::shared_ptr<const StreamInfo> MediaInput::describe(int index) const
{
    if (index < 0)
        return nullptr;
    AVStream* const stream = _context->streams[index];
    return std::make_shared<const StreamInfo>(*stream, av_guess_frame_rate(_context.get(), stream, nullptr));
}

void MediaInput::armDeadline() { _deadline = monotonicNow() + (_inPieces ? patienceWithPieces : patience); }

bool MediaInput::isOver() const { return _interrupted || monotonicNow() > _deadline; }

} // namespace tavlo
