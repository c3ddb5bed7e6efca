#include "TavloCommonModule/player/NdiInput.h"

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/MonotonicClock.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tavlo {
namespace {

constexpr qint64 findingTime = 3'000'000; ///< microseconds in which a sender has to make itself known
constexpr int longestSide = 16'384;

constexpr int uyvyOrRgba = 3; // which the drawing takes as they are
constexpr int soundAlone = 10;
constexpr int fullBandwidth = 100;

/// How the library's pictures lie in memory.
struct Layout
{
    quint32 chroma;
    AVPixelFormat format;
    int bytesPerPixel; ///< of the first plane
    int planes;
    int strideDivisor; ///< of the further planes, which have half the rows
};

constexpr std::array layouts{
    Layout{tavloFourcc("UYVY"), AV_PIX_FMT_UYVY422, 2, 1, 1},
    Layout{tavloFourcc("UYVA"), AV_PIX_FMT_UYVY422, 2, 1, 1}, // what says how transparent it is lies behind it
    Layout{tavloFourcc("BGRA"), AV_PIX_FMT_BGRA, 4, 1, 1},
    Layout{tavloFourcc("BGRX"), AV_PIX_FMT_BGR0, 4, 1, 1},
    Layout{tavloFourcc("RGBA"), AV_PIX_FMT_RGBA, 4, 1, 1},
    Layout{tavloFourcc("RGBX"), AV_PIX_FMT_RGB0, 4, 1, 1},
    Layout{tavloFourcc("NV12"), AV_PIX_FMT_NV12, 1, 2, 1},
    Layout{tavloFourcc("I420"), AV_PIX_FMT_YUV420P, 1, 3, 2},
    Layout{tavloFourcc("YV12"), AV_PIX_FMT_YUV420P, 1, 3, 2},
};

/// Sets the planes of a picture. \return its bytes
qint64 placePlanes(AVFrame& frame, const Layout& layout, const ndi::VideoFrame& video)
{
    auto* plane = const_cast<uint8_t*>(video.data);
    const bool swapped = layout.chroma == tavloFourcc("YV12");
    for (int i = 0; i < layout.planes; ++i) {
        const int place = swapped && i > 0 ? 3 - i : i;
        const int stride = i == 0 ? video.stride : video.stride / layout.strideDivisor;
        frame.data[place] = plane;
        frame.linesize[place] = stride;
        plane += qint64{stride} * (i == 0 ? video.height : (video.height + 1) / 2);
    }
    return plane - video.data;
}

/// Microseconds of the sender's clock, or of ours when it tells none.
qint64 stampOf(qint64 timestamp)
{
    return timestamp != ndi::noTimestamp && timestamp > 0 ? timestamp / 10 : monotonicNow();
}

/// "MACHINE (name)" in its parts.
std::pair<QString, QString> splitName(const QString& full)
{
    const qsizetype open = full.indexOf(QLatin1String(" ("));
    if (open < 0 || !full.endsWith(u')'))
        return {QString(), full};
    return {full.left(open), full.mid(open + 2).chopped(1)};
}

/// Whether that is what is looked for. \param name  whole or without its machine  \param place  of a machine, by name or
/// address; either may be empty
bool isWanted(const ndi::Source& source, const QString& name, const QString& place)
{
    const QString full = QString::fromUtf8(source.name);
    const QString address = QString::fromUtf8(source.address);
    const auto [machine, shortName] = splitName(full);
    const bool isNamed = name.isEmpty() || name == full || name == shortName;
    const bool isPlaced = place.isEmpty() || machine.compare(place, Qt::CaseInsensitive) == 0 || address == place ||
                          address.startsWith(place + u':');
    return isNamed && isPlaced;
}

/// Whether a text can be an address in numbers.
bool isNumeric(const QString& place)
{
    return !place.isEmpty() &&
           std::all_of(place.begin(), place.end(), [](QChar c) { return c.isDigit() || c == u'.' || c == u':'; });
}

} // namespace

class NdiInput::Connection
{
public:
    Connection(const ndi::Library& ndiLibrary, ndi::Receiver ndiReceiver) : library(ndiLibrary), receiver(ndiReceiver)
    {}
    ~Connection() { library.destroyReceiver(receiver); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const ndi::Library& library;
    const ndi::Receiver receiver;
};

QString NdiInput::connect(const InputLocation& location, bool pictures, bool)
{
    const ndi::Library* const library = ndi::Library::get();
    if (!library)
        return QStringLiteral("NDI's library is not to be had");
    _cameAlready = false;
    _connection = find(*library, location, pictures);
    return _connection ? QString() : QStringLiteral("nobody sends under this name");
}

std::shared_ptr<NdiInput::Connection> NdiInput::find(const ndi::Library& library, const InputLocation& location,
                                                     bool pictures) const
{
    const QByteArray place = location.host.section(u':', 0, 0).toUtf8();
    const ndi::FinderSettings settings{true, nullptr, isNumeric(location.host) ? place.constData() : nullptr};
    const std::unique_ptr<void, void (*)(ndi::Finder)> finder(library.createFinder(&settings), library.destroyFinder);
    if (!finder)
        return nullptr;
    const qint64 deadline = monotonicNow() + findingTime;
    while (!_interrupted) {
        quint32 count = 0;
        const ndi::Source* const all = library.sources(finder.get(), &count);
        const ndi::Source* const found = std::find_if(
            all, all + count, [&](const ndi::Source& s) { return isWanted(s, location.url, location.host); });
        if (found != all + count) {
            const ndi::ReceiverSettings wanted{*found, uyvyOrRgba, pictures ? fullBandwidth : soundAlone, false,
                                               "Tavlo"};
            const ndi::Receiver receiver = library.createReceiver(&wanted);
            return receiver ? std::make_shared<Connection>(library, receiver) : nullptr;
        }
        if (monotonicNow() > deadline)
            break;
        library.waitForSources(finder.get(), slice / 1000);
    }
    return nullptr;
}

int NdiInput::fetch(Arrival& arrival)
{
    const ndi::Library& library = _connection->library;
    ndi::VideoFrame video{};
    ndi::PlanarAudioFrame audio{};
    switch (library.capture(_connection->receiver, &video, &audio, nullptr, slice / 1000)) {
    case ndi::ArrivedVideo:
        _cameAlready = true;
        return take(video, arrival) ? 0 : AVERROR(EAGAIN);
    case ndi::ArrivedAudio: {
        _cameAlready = true;
        const bool taken = take(audio, arrival);
        library.freeAudio(_connection->receiver, &audio);
        return taken ? 0 : AVERROR(EAGAIN);
    }
    case ndi::ArrivedError:
        return AVERROR(ECONNRESET);
    default:
        break;
    }
    // A sender that went is looked for anew: it may come back elsewhere.
    const bool isGone = _cameAlready && library.connections(_connection->receiver) == 0;
    return isGone ? AVERROR(ECONNRESET) : AVERROR(EAGAIN);
}

/// The picture stays where the library has put it until it is shown.
bool NdiInput::take(const ndi::VideoFrame& video, Arrival& arrival)
{
    struct Lent
    {
        std::shared_ptr<Connection> connection;
        ndi::VideoFrame video;
    };
    const auto giveBack = [](void* opaque, uint8_t*) {
        const std::unique_ptr<Lent> lent(static_cast<Lent*>(opaque));
        lent->connection->library.freeVideo(lent->connection->receiver, &lent->video);
    };
    auto lent = std::make_unique<Lent>(_connection, video);
    const auto* const layout = std::ranges::find(layouts, video.chroma, &Layout::chroma);
    const bool fits = layout != layouts.end() && video.data && video.width > 0 && video.width <= longestSide &&
                      video.height > 0 && video.height <= longestSide &&
                      video.stride >= video.width * layout->bytesPerPixel;
    if (!fits && std::exchange(_toldLayout, video.chroma) != video.chroma)
        qDebug().noquote() << "NDI: no picture can be made of layout" << Qt::hex << video.chroma << Qt::dec
                           << video.width << "x" << video.height;
    FramePtr frame(fits ? av_frame_alloc() : nullptr);
    if (frame) {
        const qint64 bytes = placePlanes(*frame, *layout, video);
        frame->buf[0] = av_buffer_create(const_cast<uint8_t*>(video.data), static_cast<size_t>(bytes), giveBack,
                                         lent.get(), AV_BUFFER_FLAG_READONLY);
    }
    if (!frame || !frame->buf[0]) {
        _connection->library.freeVideo(_connection->receiver, &video);
        return false;
    }
    (void)lent.release(); // the buffer's
    frame->width = video.width;
    frame->height = video.height;
    frame->format = layout->format;
    frame->pts = stampOf(video.timestamp);
    const bool hasRate = video.fpsNum > 0 && video.fpsDen > 0;
    arrival.frameRate = hasRate ? AVRational{video.fpsNum, video.fpsDen} : AVRational{0, 1};
    frame->pkt_duration = hasRate ? av_rescale(video.fpsDen, 1'000'000, video.fpsNum) : 40'000;
    if (video.aspectRatio > 0) // of the whole picture
        frame->sample_aspect_ratio = av_d2q(static_cast<double>(video.aspectRatio) * video.height / video.width, 1'000);
    arrival.frame = std::move(frame);
    arrival.isVideo = true;
    return true;
}

bool NdiInput::take(const ndi::PlanarAudioFrame& audio, Arrival& arrival) const
{
    constexpr int mostChannels = 64;
    const auto bytes = static_cast<size_t>(std::max(audio.samples, 0)) * sizeof(float);
    if (!audio.data || audio.samples < 1 || audio.channels < 1 || audio.channels > mostChannels ||
        audio.sampleRate < 1 || (audio.channels > 1 && static_cast<size_t>(std::abs(audio.channelStride)) < bytes))
        return false;
    FramePtr frame(av_frame_alloc());
    if (!frame)
        return false;
    frame->format = AV_SAMPLE_FMT_FLT;
    frame->sample_rate = audio.sampleRate;
    frame->nb_samples = audio.samples;
    av_channel_layout_default(&frame->ch_layout, audio.channels);
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return false;
    auto* const target = reinterpret_cast<float*>(frame->data[0]);
    for (int channel = 0; channel < audio.channels; ++channel) {
        const auto* const source = reinterpret_cast<const float*>(audio.data + qint64{channel} * audio.channelStride);
        for (int i = 0; i < audio.samples; ++i)
            target[qint64{i} * audio.channels + channel] = source[i];
    }
    frame->pts = stampOf(audio.timestamp);
    frame->pkt_duration = av_rescale(audio.samples, 1'000'000, audio.sampleRate);
    arrival.frame = std::move(frame);
    arrival.isVideo = false;
    return true;
}

} // namespace tavlo
