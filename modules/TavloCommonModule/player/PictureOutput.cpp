#include "TavloCommonModule/player/PictureOutput.h"

#include "TavloCommonModule/player/GraphicsMemory.h"

#include <QDebug>

#include <utility>

namespace tavlo {

PictureOutput::Outcome PictureOutput::show(const AVFrame& frame, AVRational frameRate, qint64 date)
{
    if (frame.width <= 0 || frame.height <= 0)
        return Outcome::Unfit;
    begin(frame, frameRate);
    if (_inPlace)
        return showInPlace(frame, date);
    if (!_pool)
        return Outcome::Unfit;
    const std::unique_ptr<picture_t, ReleasePicture> picture(picture_pool_Get(_pool.get()));
    if (!picture)
        return Outcome::NoPicture;
    if (!_writer.write(frame, *picture))
        return Outcome::Unfit;
    handOver(frame, *picture, date);
    return Outcome::Shown;
}

PictureOutput::Outcome PictureOutput::showInPlace(const AVFrame& frame, qint64 date)
{
    const std::unique_ptr<picture_t, ReleasePicture> picture(pictureInGraphicsMemory(frame));
    if (!picture)
        return Outcome::NoPicture;
    handOver(frame, *picture, date);
    return Outcome::Shown;
}

void PictureOutput::handOver(const AVFrame& frame, picture_t& picture, qint64 date)
{
    picture.date = date;
    picture.b_progressive = !frame.interlaced_frame;
    picture.b_top_field_first = frame.top_field_first != 0;
    _sink.OnMediaSourcePlayerDoVideoSample(0, &picture);
}

bool PictureOutput::takesFromGraphicsMemory(const AVFrame& frame, AVRational frameRate)
{
    if (_fetchesAll)
        return false;
    begin(frame, frameRate);
    _fetchesAll = !_inPlace;
    return _inPlace;
}

/// Announces a format that is not the one before.
void PictureOutput::begin(const AVFrame& frame, AVRational frameRate)
{
    const FrameFormat format{frame.width, frame.height, frame.format, frame.color_range};
    if (_announced && format == _format)
        return;
    close();
    _format = format;
    open(frame, frameRate);
}

void PictureOutput::close()
{
    _pool.reset();
    _inPlace = false;
    if (std::exchange(_announced, false))
        _sink.OnMediaSourcePlayerDoVideoStop();
}

void PictureOutput::open(const AVFrame& frame, AVRational frameRate)
{
    tagTavloVideoInfo info = describe(frame, frameRate);
    _announced = true;
    _sink.OnMediaSourcePlayerDoVideoStart(info.chroma, info);
    if (isInGraphicsMemory(frame)) {
        _inPlace = info.chroma == chromaInGraphicsMemory;
        return; // what is fetched from there is announced as what it then is
    }
    if (!PictureWriter::canWrite(info.chroma)) {
        qDebug() << "player: the sink asks for a picture layout that there is none of:" << Qt::hex << info.chroma;
        return;
    }
    _writer.setChroma(info.chroma);
    quint32 count = 0;
    _pool.reset(_sink.OnMediaSourcePlayerDoVideoSamplePool(&count));
    if (!_pool)
        _pool.reset(ownPool(info));
}

/// \return `width` and `height` with square pixels
tagTavloVideoInfo PictureOutput::describe(const AVFrame& frame, AVRational frameRate) const
{
    tagTavloVideoInfo info = _wanted;
    info.sourceWidth = frame.width;
    info.sourceHeight = frame.height;
    info.width = frame.width;
    info.height = frame.height;
    if (const AVRational aspect = frame.sample_aspect_ratio; aspect.num > 0 && aspect.den > 0)
        info.width = static_cast<qint32>(
            std::clamp<qint64>(av_rescale(frame.width, aspect.num, aspect.den), 1, qint64{frame.width} * 8));
    if (frameRate.num > 0 && frameRate.den > 0) {
        info.fpsNum = frameRate.num;
        info.fpsDen = frameRate.den;
    }
    info.progressive = !frame.interlaced_frame;
    const bool asked = _wanted.chroma != 0 && PictureWriter::canWrite(_wanted.chroma);
    info.chroma = isInGraphicsMemory(frame) ? chromaInGraphicsMemory
                  : asked                   ? _wanted.chroma
                                            : PictureWriter::naturalChroma(frame);
    return info;
}

picture_pool_t* PictureOutput::ownPool(const tagTavloVideoInfo& info) const
{
    video_format_t format;
    const auto width = static_cast<int>(info.sourceWidth);
    const auto height = static_cast<int>(info.sourceHeight);
    video_format_Setup(&format, info.chroma, width, height, width, height, 1, 1);
    return picture_pool_NewFromFormat(&format, ownPictures);
}

} // namespace tavlo
