#include "TavloAudioPortModule/OpenAlDevice.h"

#include <AL/alext.h>

#include <QDebug>
#include <QString>

#include <array>

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

} // namespace

OpenAlDevice::OpenAlDevice() = default;

OpenAlDevice::~OpenAlDevice() = default;

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
    _context.reset(alcCreateContext(_device.get(), attributes.data()));
    if (!_context) {
        qDebug().noquote() << QStringLiteral("the sound device \"%1\" cannot be used: error %2")
                                  .arg(name, QString::number(alcGetError(_device.get()), 16));
        close();
    }
    return isOpen();
}

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
    ALCint connected = 1;
    alcGetIntegerv(_device.get(), ALC_CONNECTED, 1, &connected);
    return connected != 0;
}

OpenAlDevice::Scope::Scope(const OpenAlDevice& device) : _before(threadContext().get())
{
    threadContext().set(device._context.get());
}

OpenAlDevice::Scope::~Scope() { threadContext().set(_before); }

} // namespace tavlo
