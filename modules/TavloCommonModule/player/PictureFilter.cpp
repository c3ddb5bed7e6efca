#include "TavloCommonModule/player/PictureFilter.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <QDebug>
#include <QStringList>

#include <array>

namespace tavlo {
namespace {

/// Clockwise, by quarter turns.
constexpr std::array turns{"", "transpose=clock", "hflip,vflip", "transpose=cclock"};

QString graphText(const AVFrame& frame, bool deinterlaces, bool all, int quarterTurns, bool mirrored)
{
    QStringList filters;
    filters << QStringLiteral("buffer@in=video_size=%1x%2:pix_fmt=%3:time_base=1/1000000:pixel_aspect=%4/%5")
                   .arg(frame.width)
                   .arg(frame.height)
                   .arg(frame.format)
                   .arg(frame.sample_aspect_ratio.num)
                   .arg(std::max(frame.sample_aspect_ratio.den, 1));
    if (deinterlaces)
        filters << QStringLiteral("bwdif=mode=send_frame:deint=%1")
                       .arg(all ? QLatin1String("all") : QLatin1String("interlaced"));
    if (quarterTurns != 0)
        filters << QString::fromLatin1(turns[static_cast<size_t>(quarterTurns)]);
    if (mirrored)
        filters << QStringLiteral("hflip");
    filters << QStringLiteral("buffersink@out");
    return filters.join(u',');
}

} // namespace

void PictureFilter::begin(const StreamInfo& stream)
{
    forget();
    _quarterTurns = stream.quarterTurns;
    _mirrored = stream.mirrored;
    _deinterlaces = false;
}

bool PictureFilter::process(AVFrame& frame, qint64 stamp, const Take& take)
{
    if (!needsGraph(frame))
        return take(frame, stamp);
    if (frame.width != _width || frame.height != _height || frame.format != _format)
        forget();
    frame.pts = stamp;
    if (!_graph && !_unfit)
        _unfit = !build(frame);
    if (!_graph || av_buffersrc_add_frame_flags(_in, &frame, AV_BUFFERSRC_FLAG_KEEP_REF | AV_BUFFERSRC_FLAG_PUSH) < 0)
        return take(frame, stamp); // as it is, rather than not at all
    return fetch(take);
}

bool PictureFilter::changes(const AVFrame& frame) const
{
    return _deinterlaces || _mode == 2 || (_mode == 1 && frame.interlaced_frame) || _quarterTurns != 0 || _mirrored;
}

bool PictureFilter::drain(const Take& take)
{
    if (!_graph)
        return true;
    const bool wanted = av_buffersrc_add_frame_flags(_in, nullptr, 0) < 0 || fetch(take);
    _graph.reset();
    return wanted;
}

bool PictureFilter::needsGraph(const AVFrame& frame)
{
    const bool deinterlaces = _mode == 2 || (_mode == 1 && frame.interlaced_frame);
    if (deinterlaces && !_deinterlaces) {
        _deinterlaces = true;
        forget();
    }
    return _deinterlaces || _quarterTurns != 0 || _mirrored;
}

void PictureFilter::forget()
{
    _graph.reset();
    _unfit = false;
}

bool PictureFilter::build(const AVFrame& frame)
{
    _width = frame.width;
    _height = frame.height;
    _format = frame.format;
    if (!_filtered)
        _filtered.reset(av_frame_alloc());
    _graph.reset(avfilter_graph_alloc());
    if (!_graph || !_filtered)
        return false;
    _graph->nb_threads = 1;
    AVFilterInOut* in = nullptr;
    AVFilterInOut* out = nullptr;
    const QByteArray text = graphText(frame, _deinterlaces, _mode == 2, _quarterTurns, _mirrored).toLatin1();
    int result = avfilter_graph_parse2(_graph.get(), text.constData(), &in, &out);
    avfilter_inout_free(&in);
    avfilter_inout_free(&out);
    if (result >= 0)
        result = avfilter_graph_config(_graph.get(), nullptr);
    if (result < 0) {
        qDebug().noquote() << "player: pictures stay as they are:" << text << "-" << ffmpegError(result);
        _graph.reset();
        return false;
    }
    _in = avfilter_graph_get_filter(_graph.get(), "buffer@in"); // by name: the graph has scalers of its own as well
    _out = avfilter_graph_get_filter(_graph.get(), "buffersink@out");
    return true;
}

bool PictureFilter::fetch(const Take& take)
{
    bool wanted = true;
    while (wanted && av_buffersink_get_frame(_out, _filtered.get()) >= 0) {
        const qint64 stamp = av_rescale_q(_filtered->pts, av_buffersink_get_time_base(_out), microsecondBase);
        wanted = take(*_filtered, stamp);
        av_frame_unref(_filtered.get());
    }
    return wanted;
}

} // namespace tavlo
