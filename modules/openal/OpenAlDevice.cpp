#include "openal/OpenAlDevice.h"

#include <AL/alext.h>

#include <QDebug>
#include <QString>

#include <algorithm>
#include <array>
#include <cstring>

namespace tavlo {

namespace {

/// The calls that give each thread a current context of its own; an extension that OpenAL Soft has had from its first
/// releases.
struct ThreadContext
{
    PFNALCSETTHREADCONTEXTPROC set = nullptr;
    PFNALCGETTHREADCONTEXTPROC get = nullptr;
};

const ThreadContext& threadContext()
{
    static const ThreadContext calls = [] {
        const auto address = [](const char* name) { return alcGetProcAddress(nullptr, name); };
        ThreadContext found;
        found.set = reinterpret_cast<PFNALCSETTHREADCONTEXTPROC>(address("alcSetThreadContext"));
        found.get = reinterpret_cast<PFNALCGETTHREADCONTEXTPROC>(address("alcGetThreadContext"));
        return found;
    }();
    return calls;
}

/// The loopback calls, null where the library lacks them.
struct Loopback
{
    LPALCLOOPBACKOPENDEVICESOFT open = nullptr;
    LPALCISRENDERFORMATSUPPORTEDSOFT isSupported = nullptr;
    LPALCRENDERSAMPLESSOFT render = nullptr;
};

const Loopback& loopback()
{
    static const Loopback calls = [] {
        Loopback found;
        if (!alcIsExtensionPresent(nullptr, "ALC_SOFT_loopback"))
            return found;
        const auto address = [](const char* name) { return alcGetProcAddress(nullptr, name); };
        found.open = reinterpret_cast<LPALCLOOPBACKOPENDEVICESOFT>(address("alcLoopbackOpenDeviceSOFT"));
        found.isSupported =
            reinterpret_cast<LPALCISRENDERFORMATSUPPORTEDSOFT>(address("alcIsRenderFormatSupportedSOFT"));
        found.render = reinterpret_cast<LPALCRENDERSAMPLESSOFT>(address("alcRenderSamplesSOFT"));
        return found;
    }();
    return calls;
}

/// 0 where there is none.
ALCenum loopbackChannels(int channels)
{
    switch (channels) {
    case 1:
        return ALC_MONO_SOFT;
    case 2:
        return ALC_STEREO_SOFT;
    case 4:
        return ALC_QUAD_SOFT;
    case 6:
        return ALC_5POINT1_SOFT;
    case 7:
        return ALC_6POINT1_SOFT;
    case 8:
        return ALC_7POINT1_SOFT;
    default:
        return 0;
    }
}

} // namespace

OpenAlDevice::OpenAlDevice() = default;

OpenAlDevice::~OpenAlDevice() = default;

QStringList OpenAlDevice::names()
{
    if (!alcIsExtensionPresent(nullptr, "ALC_ENUMERATE_ALL_EXT"))
        return {};
    QStringList found;
    const ALCchar* name = alcGetString(nullptr, ALC_ALL_DEVICES_SPECIFIER); // one behind the other, the last is empty
    for (; name && *name; name += std::strlen(name) + 1)
        found.append(QString::fromUtf8(name));
    const auto chosen = found.indexOf(QString::fromUtf8(alcGetString(nullptr, ALC_DEFAULT_ALL_DEVICES_SPECIFIER)));
    if (chosen > 0)
        found.move(chosen, 0);
    return found;
}

bool OpenAlDevice::open(const QString& name, int rate)
{
    close();
    const bool isDefault = name.isEmpty() || name == QLatin1String("Auto");
    _device.reset(alcOpenDevice(isDefault ? nullptr : name.toUtf8().constData()));
    if (!_device || !threadContext().set || !threadContext().get) {
        qDebug().noquote() << QStringLiteral("no sound device \"%1\"").arg(isDefault ? QStringLiteral("Auto") : name);
        close();
        return false;
    }
    const std::array<ALCint, 3> attributes{ALC_FREQUENCY, rate, 0};
    if (!makeContext(attributes.data())) {
        qDebug().noquote() << QStringLiteral("the sound device \"%1\" cannot be used: error %2")
                                  .arg(name, QString::number(alcGetError(_device.get()), 16));
        close();
    }
    return isOpen();
}

bool OpenAlDevice::openLoopback(int channels, int rate)
{
    close();
    const ALCenum layout = loopbackChannels(channels);
    if (!loopback().open || !threadContext().set || !threadContext().get || layout == 0) {
        qDebug() << "no sound mix of channels" << channels;
        return false;
    }
    _device.reset(loopback().open(nullptr));
    if (_device && loopback().isSupported(_device.get(), rate, layout, ALC_FLOAT_SOFT)) {
        // What is mixed is not to be spatial: no head, no limiter.
        const std::array<ALCint, 11> attributes{ALC_FREQUENCY,
                                                rate,
                                                ALC_FORMAT_CHANNELS_SOFT,
                                                layout,
                                                ALC_FORMAT_TYPE_SOFT,
                                                ALC_FLOAT_SOFT,
                                                ALC_HRTF_SOFT,
                                                ALC_FALSE,
                                                ALC_OUTPUT_LIMITER_SOFT,
                                                ALC_FALSE,
                                                0};
        makeContext(attributes.data());
    }
    if (!isOpen()) {
        qDebug() << "no sound mix of channels, rate" << channels << rate;
        close();
    }
    return isOpen();
}

bool OpenAlDevice::makeContext(const ALCint* attributes)
{
    _context.reset(alcCreateContext(_device.get(), attributes));
    return isOpen();
}

void OpenAlDevice::render(float* samples, int frames) const { loopback().render(_device.get(), samples, frames); }

void OpenAlDevice::close()
{
    _context.reset();
    _device.reset();
}

bool OpenAlDevice::isConnected() const
{
    if (!_device)
        return false;
    if (!alcIsExtensionPresent(_device.get(), "ALC_EXT_disconnect"))
        return true;
    return value(ALC_CONNECTED, 1) != 0;
}

int OpenAlDevice::rate() const { return value(ALC_FREQUENCY, 0); }

int OpenAlDevice::updateFrames() const { return rate() / std::max(value(ALC_REFRESH, 1), 1); }

ALCint OpenAlDevice::value(ALCenum what, ALCint fallback) const
{
    ALCint found = fallback;
    if (_device)
        alcGetIntegerv(_device.get(), what, 1, &found);
    return found;
}

OpenAlDevice::Scope::Scope(const OpenAlDevice& device) : _before(threadContext().get())
{
    threadContext().set(device._context.get());
}

OpenAlDevice::Scope::~Scope() { threadContext().set(_before); }

} // namespace tavlo
