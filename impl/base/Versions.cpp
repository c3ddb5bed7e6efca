#include <tavlo/TavloPresentUtil.h>

extern "C" {
#include <libavutil/avutil.h>
}

QList<std::pair<QString, QString>> TavloPresentUtil::libraryVersions()
{
    return {{QStringLiteral("tavlo"), QStringLiteral(TAVLO_VERSION)},
            {QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("FFmpeg"), QString::fromLatin1(av_version_info())}};
}
