#include "OutputSupport.h"

#include "shared/VlcPointers.h"
#include "support/TestClips.h"

#include <QFile>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <numeric>
#include <thread>

namespace tavlo::test {

namespace {

constexpr int bits = 12;
constexpr int fields = 6;

struct Free
{
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Free>;

int lumaAt(const AVFrame& frame, int x, int y) { return frame.data[0][y * frame.linesize[0] + x]; }

/// The middle of a field of colour, by the matrix of BT.709, limited range.
std::array<double, 3> colorAt(const AVFrame& frame, int field)
{
    const int x = (2 * field + 1) * frame.width / (2 * fields), y = frame.height * 3 / 4;
    const double luma = (lumaAt(frame, x, y) - 16) / 219.0;
    const int at = y / 2 * frame.linesize[1] + x / 2, at2 = y / 2 * frame.linesize[2] + x / 2;
    const double cb = (frame.data[1][at] - 128) / 224.0, cr = (frame.data[2][at2] - 128) / 224.0;
    const double red = luma + 1.5748 * cr, blue = luma + 1.8556 * cb;
    const double green = (luma - 0.2126 * red - 0.0722 * blue) / 0.7152;
    return {red * 255, green * 255, blue * 255};
}

/// Decodes one file.
class Reader
{
public:
    explicit Reader(Decoded& result) : _result(result) {}

    void read(const QString& path)
    {
        AVFormatContext* context = nullptr;
        const int opened = avformat_open_input(&context, path.toUtf8().constData(), nullptr, nullptr);
        _file.reset(context);
        if (opened < 0 || avformat_find_stream_info(context, nullptr) < 0) {
            _result.error = QStringLiteral("cannot open ") + path;
            return;
        }
        for (unsigned i = 0; i < context->nb_streams; ++i)
            addDecoder(*context->streams[i]);
        const Owned<AVPacket> packet(av_packet_alloc());
        while (av_read_frame(context, packet.get()) >= 0) {
            feed(static_cast<size_t>(packet->stream_index), packet.get());
            av_packet_unref(packet.get());
        }
        for (size_t i = 0; i < _decoders.size(); ++i)
            feed(i, nullptr);
    }

private:
    void addDecoder(const AVStream& stream)
    {
        const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
        Owned<AVCodecContext> decoder(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(decoder.get(), stream.codecpar);
        decoder->pkt_timebase = stream.time_base;
        decoder->thread_count = 1;
        if (avcodec_open2(decoder.get(), codec, nullptr) < 0)
            _result.error = QStringLiteral("no decoder");
        _decoders.push_back(std::move(decoder));
    }

    void feed(size_t index, const AVPacket* packet)
    {
        AVCodecContext* const decoder = _decoders[index].get();
        avcodec_send_packet(decoder, packet);
        const Owned<AVFrame> frame(av_frame_alloc());
        while (avcodec_receive_frame(decoder, frame.get()) == 0) {
            const double time =
                static_cast<double>(frame->best_effort_timestamp) * av_q2d(_file->streams[index]->time_base);
            if (decoder->codec_type == AVMEDIA_TYPE_VIDEO)
                takePicture(*frame, time);
            else
                takeSound(*frame, time);
        }
    }

    void takePicture(const AVFrame& frame, double time)
    {
        if (_result.numbers.empty())
            for (int field = 0; field < fields; ++field)
                _result.colors.push_back(colorAt(frame, field));
        _result.numbers.push_back(pictureNumber(frame.data[0], frame.width, frame.height, frame.linesize[0]));
        _result.times.push_back(time);
    }

    void takeSound(const AVFrame& frame, double time)
    {
        const auto* samples = reinterpret_cast<const float*>(frame.data[0]);
        for (int i = 0; i < frame.nb_samples; ++i) {
            const double now = time + double{1} * i / frame.sample_rate;
            if (std::abs(samples[i]) <= 0.2F)
                continue;
            if (now - _lastLoud > 0.1)
                _result.beeps.push_back(now);
            _lastLoud = now;
        }
        _result.samples += frame.nb_samples;
    }

    Decoded& _result;
    Owned<AVFormatContext> _file;
    std::vector<Owned<AVCodecContext>> _decoders;
    double _lastLoud = -1;
};

} // namespace

qint64 openPictures(const tagTavloOutputStatistics& now)
{
    return static_cast<qint64>(now.committedPictures - now.droppedPictures - now.latePictures - now.encoderDropped -
                               now.skippedPictures - now.codedPictures + now.repeatedPictures);
}

std::array<quint8, 3> Programme::fieldColor(int field)
{
    constexpr std::array<std::array<quint8, 3>, fields> colors{
        {{200, 60, 30}, {40, 180, 70}, {30, 50, 210}, {235, 225, 20}, {128, 128, 128}, {20, 190, 200}}};
    return colors[static_cast<size_t>(field)];
}

std::vector<quint8> Programme::picture(int number)
{
    std::vector<quint8> pixels(size_t{4} * width * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const quint8 bit = ((number >> (bits - 1 - x * bits / width)) & 1) ? 255 : 0;
            const std::array<quint8, 3> block{bit, bit, bit};
            const auto& color = y < height / 2 ? block : fieldColor(x * fields / width);
            quint8* const at = pixels.data() + (size_t{4} * static_cast<size_t>(y * width + x));
            std::ranges::copy(color, at);
            at[3] = 255;
        }
    return pixels;
}

std::vector<qint16> Programme::sound(int number)
{
    std::vector<qint16> samples;
    for (int i = number * rate / fps; i < (number + 1) * rate / fps; ++i) {
        const bool loud = number % beepEvery < 3;
        const auto value = static_cast<qint16>(loud ? 16000 * std::cos(2 * M_PI * 1000 * i / rate) : 0);
        samples.insert(samples.end(), 2, value);
    }
    return samples;
}

Stage::Stage(Way way)
    : target({.place = way == Way::Graphics ? OutputConversion::Place::Graphics : OutputConversion::Place::Memory,
              .rows = way == Way::BottomFirst ? Rows::BottomFirst : Rows::TopFirst}),
      _way(way)
{
    tagTavloVideoInfo videoInfo;
    videoInfo.width = videoInfo.sourceWidth = Programme::width;
    videoInfo.height = videoInfo.sourceHeight = Programme::height;
    videoInfo.chroma = tavloFourcc("RGBA");
    graphics::TextureDesc desc{Programme::width, Programme::height, graphics::Format::R8G8B8A8_UNORM};
    if (way != Way::Pictures) {
        _device = graphics::Device::create();
        _context = _device->immediateContext();
        _texture = _device->createTexture(desc);
    }
    _up = target.create(7, QStringLiteral("stage"), videoInfo, {}, _device, _context, _texture, desc);
}

Stage::~Stage() { target.destroy(); }

tagTavloPresentOutputParam Stage::param(const QString& folder)
{
    tagTavloPresentOutputParam param;
    param.programName = QStringLiteral("show");
    param.recordName = QStringLiteral("${PROGRAMNAME}");
    param.recordDir = folder;
    param.rateSettings = {0, 0}; // constant quantizer
    param.videoSettings[2] = 10; // nearly without loss
    param.videoSettings[3] = 12;
    param.encoderSettings[4] = 1; // no thread holds a picture of its own
    return param;
}

void Stage::start(int type, const tagTavloPresentOutputParam& param, int index)
{
    _type = type;
    target.startOutput(index, type, QVariant::fromValue(param));
    await(index, type);
}

/// The end of an output that does not run comes behind everything that its node was asked for.
void Stage::await(int index, int type) { target.stopOutput(index, type < 2 ? 1 - type : 8, true); }

void Stage::commit(int first, int count, bool awaits)
{
    for (int number = first; number < first + count; ++number) {
        const std::vector<qint16> sound = Programme::sound(number);
        target.commitAudioData(sound.data(), static_cast<int>(sound.size() * sizeof(qint16)),
                               Programme::begin + number * Programme::step);
        commitPicture(number);
        if (awaits) {
            await(0, _type);
            awaitCoded();
        }
    }
}

void Stage::awaitCoded(int but)
{
    while (openPictures(statistics()) > but)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}

void Stage::commitPicture(int number)
{
    const qint64 time = Programme::begin + number * Programme::step;
    std::vector<quint8> pixels = Programme::picture(number);
    constexpr size_t row = size_t{4} * Programme::width;
    if (_way == Way::BottomFirst)
        for (size_t y = 0; y < Programme::height / 2; ++y)
            std::swap_ranges(pixels.begin() + static_cast<ptrdiff_t>(y * row),
                             pixels.begin() + static_cast<ptrdiff_t>((y + 1) * row),
                             pixels.end() - static_cast<ptrdiff_t>((y + 1) * row));
    if (_way != Way::Pictures) {
        _context->updateSubresource(*_texture, {0, 0, Programme::width, Programme::height}, pixels.data(), row);
        target.commitVideoData(_texture, time);
        return;
    }
    const PicturePtr picture(picture_New(VLC_CODEC_RGBA, Programme::width, Programme::height, 1, 1));
    for (size_t y = 0; y < Programme::height; ++y)
        std::copy_n(pixels.data() + y * row, row,
                    picture->p[0].p_pixels + y * static_cast<size_t>(picture->p[0].i_pitch));
    picture->date = time;
    target.commitVideoData(picture.get());
}

tagTavloOutputStatistics Stage::statistics(int index)
{
    tagTavloOutputStatistics statistics;
    target.getStatistics(index, &statistics);
    return statistics;
}

void Stage::awaitWritten()
{
    const auto isWritten = [](const tagTavloOutputStatistics& now) {
        return now.netWritten + now.netDropped + inFlight >= now.codedPictures;
    };
    while (!isWritten(statistics()))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

Decoded decode(const QString& path)
{
    Decoded result;
    Reader(result).read(path);
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        result.plainIndex = path.endsWith(QStringLiteral(".mp4")) && file.read(4096).contains("mdat");
    return result;
}

bool Decoded::beepsAt(double time) const
{
    return std::ranges::any_of(beeps, [time](double at) { return std::abs(at - time) < 0.020; });
}

std::vector<int> numbersFrom(int first, int count)
{
    std::vector<int> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

} // namespace tavlo::test
