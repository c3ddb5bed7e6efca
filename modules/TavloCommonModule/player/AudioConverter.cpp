#include "TavloCommonModule/player/AudioConverter.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
}

#include <QDebug>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace tavlo {

AudioConverter::AudioConverter(int channels, int rate) : _channels(channels), _rate(rate) {}

AudioConverter::~AudioConverter() { av_channel_layout_uninit(&_inLayout); }

int AudioConverter::process(const AVFrame& frame, std::vector<qint16>& out)
{
    const bool same = _resampler && frame.sample_rate == _inRate && frame.format == _inFormat &&
                      av_channel_layout_compare(&frame.ch_layout, &_inLayout) == 0;
    int added = 0;
    if (!same) {
        added = drain(out);
        if (!open(frame))
            return added;
    }
    return added + convert(&frame, out);
}

int AudioConverter::drain(std::vector<qint16>& out)
{
    const int added = _resampler ? convert(nullptr, out) : 0;
    _resampler.reset();
    return added;
}

bool AudioConverter::open(const AVFrame& frame)
{
    av_channel_layout_copy(&_inLayout, &frame.ch_layout);
    _inRate = frame.sample_rate;
    _inFormat = frame.format;
    AVChannelLayout in{};
    AVChannelLayout out{};
    av_channel_layout_default(&out, _channels);
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&in, frame.ch_layout.nb_channels);
    else
        av_channel_layout_copy(&in, &frame.ch_layout);
    SwrContext* context = nullptr;
    int result = swr_alloc_set_opts2(&context, &out, AV_SAMPLE_FMT_S16, _rate, &in,
                                     static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    _resampler.reset(context);
    av_channel_layout_uninit(&in);
    if (result >= 0)
        result = swr_init(context);
    if (result < 0) {
        qDebug().noquote() << "player: sound cannot be converted -" << ffmpegError(result);
        _resampler.reset();
    }
    return result >= 0;
}

int AudioConverter::convert(const AVFrame* frame, std::vector<qint16>& out)
{
    const int in = frame ? frame->nb_samples : 0;
    const int most = swr_get_out_samples(_resampler.get(), in);
    if (most <= 0)
        return 0;
    const size_t before = out.size();
    out.resize(before + static_cast<size_t>(most) * static_cast<size_t>(_channels));
    auto* target = reinterpret_cast<uint8_t*>(out.data() + before);
    auto** const source = frame ? const_cast<const uint8_t**>(frame->extended_data) : nullptr;
    const int made = std::max(swr_convert(_resampler.get(), &target, most, source, in), 0);
    out.resize(before + static_cast<size_t>(made) * static_cast<size_t>(_channels));
    return made;
}

TempoFilter::TempoFilter(int channels, int rate) : _channels(channels), _rate(rate), _frame(av_frame_alloc()) {}

bool TempoFilter::open(double tempo)
{
    AVChannelLayout layout{};
    std::array<char, 64> layoutName{};
    av_channel_layout_default(&layout, _channels);
    av_channel_layout_describe(&layout, layoutName.data(), layoutName.size());
    const QByteArray text =
        QStringLiteral("abuffer@in=sample_rate=%1:sample_fmt=s16:channel_layout=%2:time_base=1/%1,atempo=%3,atempo=%3,"
                       "aformat=sample_fmts=s16,abuffersink@out")
            .arg(_rate)
            .arg(QString::fromLatin1(layoutName.data()))
            .arg(std::sqrt(tempo), 0, 'f', 9) // twice, as one alone skips samples beyond a factor of 2
            .toLatin1();
    AVFilterInOut* in = nullptr;
    AVFilterInOut* out = nullptr;
    _graph.reset(avfilter_graph_alloc());
    int result = _graph ? avfilter_graph_parse2(_graph.get(), text.constData(), &in, &out) : AVERROR(ENOMEM);
    avfilter_inout_free(&in);
    avfilter_inout_free(&out);
    if (result >= 0)
        result = avfilter_graph_config(_graph.get(), nullptr);
    if (result < 0) {
        qDebug().noquote() << "player: sound keeps its own speed -" << ffmpegError(result);
        _graph.reset();
        return false;
    }
    _in = avfilter_graph_get_filter(_graph.get(), "abuffer@in");
    _out = avfilter_graph_get_filter(_graph.get(), "abuffersink@out");
    return true;
}

void TempoFilter::process(std::vector<qint16>& samples)
{
    if (!_graph || samples.empty())
        return;
    AVFrame& frame = *_frame;
    frame.format = AV_SAMPLE_FMT_S16;
    frame.sample_rate = _rate;
    frame.nb_samples = static_cast<int>(samples.size() / static_cast<size_t>(_channels));
    av_channel_layout_default(&frame.ch_layout, _channels);
    if (av_frame_get_buffer(&frame, 0) >= 0) {
        std::memcpy(frame.data[0], samples.data(), samples.size() * sizeof(qint16));
        if (av_buffersrc_add_frame(_in, &frame) < 0)
            qDebug() << "player: sound is lost on its way to another speed";
    }
    av_frame_unref(&frame);
    samples.clear();
    fetch(samples);
}

void TempoFilter::drain(std::vector<qint16>& samples)
{
    samples.clear();
    if (!_graph)
        return;
    if (av_buffersrc_add_frame(_in, nullptr) >= 0)
        fetch(samples);
    close();
}

void TempoFilter::fetch(std::vector<qint16>& samples)
{
    while (av_buffersink_get_frame(_out, _frame.get()) >= 0) {
        const auto* data = reinterpret_cast<const qint16*>(_frame->data[0]);
        samples.insert(samples.end(), data, data + qint64{_frame->nb_samples} * _channels);
        av_frame_unref(_frame.get());
    }
}

} // namespace tavlo
