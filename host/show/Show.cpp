#include "show/Show.h"

#include <tavlo/TavloPresentUtil.h>

#include <algorithm>

namespace tavlo::host {
namespace {

constexpr quint32 channelLimit = 64; ///< source channels of an engine
constexpr int pictureLimit = 16384;  ///< pixels

bool isCodedEvent(const Cue& cue)
{
    return cue.event == TavloEventStartOutput && isCoded(static_cast<TavloPresentOutputType>(cue.arguments[1].toInt()));
}

} // namespace

QString pictureFault(const Show& show)
{
    const tagTavloVideoInfo& video = show.engine.videoInfo;
    const QString size = QStringLiteral("%1x%2").arg(video.width).arg(video.height);
    if (video.width < 16 || video.height < 16 || video.width > pictureLimit || video.height > pictureLimit)
        return QStringLiteral("no pictures are made of %1").arg(size);
    if (video.fpsNum < 1 || video.fpsDen < 1 || video.fpsNum % video.fpsDen != 0)
        return QStringLiteral("%1/%2 is no whole number of frames a second").arg(video.fpsNum).arg(video.fpsDen);
    if (show.engine.channelCount < 1 || show.engine.channelCount > channelLimit)
        return QStringLiteral("an engine has 1 to %1 channels, not %2").arg(channelLimit).arg(show.engine.channelCount);
    const bool isOdd = video.width % 2 != 0 || video.height % 2 != 0;
    const bool isCodedAnywhere =
        std::ranges::any_of(show.outputs, [](const ShowOutput& output) { return isCoded(output.type); }) ||
        std::ranges::any_of(show.cues, isCodedEvent);
    if (isOdd && isCodedAnywhere)
        return QStringLiteral("%1 cannot be recorded or streamed: width and height have to be even").arg(size);
    return {};
}

QString sourceFault(const tagTavloPresentSourceInfo& info)
{
    switch (info.type) {
    case TavloPresentSourceTypeMovieList:
        return info.moviePathList.isEmpty() ? QStringLiteral("opens nothing") : QString();
    case TavloPresentSourceTypeDevice:
    case TavloPresentSourceTypeDecklink:
    case TavloPresentSourceTypeHikvision:
    case TavloPresentSourceTypeMW:
    case TavloPresentSourceTypeURL: {
        tagTavloPresentSourceInfo record = info;
        return TavloPresentUtil::isEmptySource(record) ? QStringLiteral("opens nothing") : QString();
    }
    case TavloPresentSourceTypeNone:
        return QStringLiteral("opens nothing");
    default:
        return QStringLiteral("this build makes no source of type %1").arg(info.type);
    }
}

} // namespace tavlo::host
