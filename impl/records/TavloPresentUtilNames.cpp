#include <tavlo/TavloPresentUtil.h>

namespace {

constexpr TavloPresentChannelID writtenSources = 12; // names of sources beyond were never saved by any project
constexpr TavloPresentChannelID readSources = 64;

} // namespace

QString TavloPresentUtil::toPathString(TavloPresentChannelID channelId)
{
    if (channelId < writtenSources)
        return QStringLiteral("TCH-S-%1").arg(channelId);
    if (channelId == TavloPresentChannelIDPVM)
        return QStringLiteral("PVM");
    if (channelId == TavloPresentChannelIDPGM)
        return QStringLiteral("PGM");
    return {};
}

TavloPresentChannelID TavloPresentUtil::fromPathString(const QString& text)
{
    const QString prefix = QStringLiteral("TCH-");
    if (!text.startsWith(prefix))
        return TavloPresentChannelIDNone;
    const QString name = QString(text).remove(prefix);
    for (TavloPresentChannelID i = 0; i < readSources; ++i) {
        if (name == QStringLiteral("S-%1").arg(i))
            return i;
    }
    return 0;
}
