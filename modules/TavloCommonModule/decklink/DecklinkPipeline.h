#pragma once

#include "TavloCommonModule/decklink/ClockBridge.h"
#include "TavloCommonModule/decklink/DecklinkMode.h"

#include <functional>
#include <memory>
#include <string>

namespace tavlo::decklink {

/// What stands at the end of a pipeline.
struct Sinks
{
    // elements of GStreamer, with their settings
    std::string video, audio;

    /// Microseconds on the sinks' clock; none: the pipeline's own.
    std::function<qint64()> now;
};

/// Plays pictures and sound on a card through GStreamer: pictures are repeated and left out as the mode's rate takes it.
class Pipeline
{
public:
    /// Plays from now on. Null, the reason in `error`, when the card or GStreamer's element for it refuses.
    static std::unique_ptr<Pipeline> open(const Mode& mode, const Sinks& sinks, std::string& error);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /// Copies a picture in UYVY of the mode's size. Never waits. \param stride  bytes \param time  microseconds
    /// \return false when it was left out, as too many wait. One thread, the same as for sound.
    bool writeVideo(const quint8* data, int stride, qint64 time);

    /// Copies samples, 16 bits, two channels, 48 kHz; those in front of the first picture are left out. Never waits.
    bool writeAudio(const quint8* data, int size, qint64 time);

    /// Waits until it breaks off, and tells why, or until `interrupt`; then it tells nothing. Any thread, once.
    std::string waitForEnd();
    void interrupt(); ///< Any thread.

private:
    class Gst;

    Pipeline(const Mode& mode, std::unique_ptr<Gst> gst, std::function<qint64()> now);

    const Mode _mode;
    const std::unique_ptr<Gst> _gst;
    const std::function<qint64()> _now;
    ClockBridge _clocks; ///< the writing thread's
};

} // namespace tavlo::decklink
