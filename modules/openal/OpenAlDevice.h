#pragma once

#include <AL/al.h>
#include <AL/alc.h>

#include <QStringList>

#include <memory>

namespace tavlo {

/// A device with a context of its own: one that plays, or one that mixes into memory. Any number of them stand side by
/// side: a context is made current for a thread and a scope, never for the process.
class OpenAlDevice
{
public:
    OpenAlDevice();
    ~OpenAlDevice();
    OpenAlDevice(const OpenAlDevice&) = delete;
    OpenAlDevice& operator=(const OpenAlDevice&) = delete;

    /// The devices that `open` finds, the default one first.
    static QStringList names();

    /// False, with a log line that names the device, when it is missing. \param name empty or "Auto" is the default
    bool open(const QString& name, int rate);

    /// A device that plays nowhere: `render` takes out what its sources add up to. False, with a log line, when the
    /// library cannot do so. \param channels 1, 2, 4, 6, 7 or 8
    bool openLoopback(int channels, int rate);

    /// The next frames of a loopback device, interleaved floats, 1.0 is full scale.
    void render(float* samples, int frames) const;

    void close();

    bool isOpen() const { return _context != nullptr; }

    /// False once the device has been unplugged.
    bool isConnected() const;

    /// Hz, at which it plays.
    int rate() const;

    /// How many frames it takes at once.
    int updateFrames() const;

    /// The context is the calling thread's own as long as this lives.
    class Scope
    {
    public:
        explicit Scope(const OpenAlDevice& device);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        ALCcontext* _before;
    };

private:
    bool makeContext(const ALCint* attributes);
    ALCint value(ALCenum what, ALCint fallback) const;

    struct CloseDevice
    {
        void operator()(ALCdevice* device) const { alcCloseDevice(device); }
    };
    struct DestroyContext
    {
        void operator()(ALCcontext* context) const { alcDestroyContext(context); }
    };

    std::unique_ptr<ALCdevice, CloseDevice> _device;
    std::unique_ptr<ALCcontext, DestroyContext> _context;
};

} // namespace tavlo
