#include "TavloCommonModule/ndi/NdiOutput.h"

#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <utility>

namespace tavlo::ndi {

namespace {

constexpr int progressive = 1;

constexpr qint64 timecodeOf(qint64 microseconds) { return microseconds * 10; }

} // namespace

NdiOutput::~NdiOutput() { NdiOutput::close(); }

bool NdiOutput::open(const QString& sourceName, const tagTavloMediaFormatInfo& formatInfo)
{
    close();
    _library = Library::get();
    if (!_library)
        return false;
    const QByteArray name = sourceName.toUtf8();
    const SenderSettings settings{name.constData(), nullptr, false, false}; // the frame thread gives the pace
    _format = formatInfo;
    _sender = _library->createSender(&settings);
    if (!_sender)
        qDebug() << "NDI: no source of the name" << sourceName << "can be made";
    return _sender != nullptr;
}

void NdiOutput::close()
{
    if (Sender sender = std::exchange(_sender, nullptr))
        _library->destroySender(sender);
}

void NdiOutput::writeVideo(const quint8* data, int stride, int, qint64 pts, qint64)
{
    if (!_sender)
        return;
    const tagTavloVideoInfo& info = _format.videoInfo;
    const VideoFrame frame{info.width,  info.height,     tavloFourcc("UYVY"),
                           info.fpsNum, info.fpsDen,     0,
                           progressive, timecodeOf(pts), data,
                           stride,      nullptr,         0};
    _library->sendVideo(_sender, &frame);
}

void NdiOutput::writeAudio(const quint8* data, int size, qint64 pts, qint64)
{
    const tagTavloAudioInfo& info = _format.audioInfo;
    if (!_sender || info.bitsPerSample != 16 || info.channels < 1)
        return;
    const AudioFrame frame{info.sampleRate,
                           info.channels,
                           size / (2 * info.channels),
                           timecodeOf(pts),
                           0,
                           reinterpret_cast<const qint16*>(data)};
    _library->sendAudio(_sender, &frame);
}

} // namespace tavlo::ndi

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloNDIOutput(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<tavlo::ndi::NdiOutput>(id, version);
}
