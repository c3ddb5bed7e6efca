#pragma once

#include "TavloCommonModule/player/InputLocation.h"
#include "TavloCommonModule/player/Segment.h"

#include <atomic>
#include <memory>

namespace tavlo {

/// What is read to be played: a file, a stream, a device. The reading thread's.
///
/// No call takes longer than `patience` without anything from outside (three times that where a stream comes in pieces of
/// some seconds each), and all end soon after the flag is set that interrupts them.
class Input
{
public:
    virtual ~Input() = default;

    /// False, with a log line that names the input and the reason, when it cannot be played.
    /// \param pictures, sound  whether these are wanted at all
    virtual bool open(const InputLocation& location, bool pictures, bool sound) = 0;

    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    /// The next packet of a stream that is played. 0, AVERROR_EOF, or what was wrong.
    virtual int read(AVPacket& packet) = 0;

    virtual bool isVideo(const AVPacket& packet) const = 0;

    /// Goes to the last place at or before that time from which pictures can be decoded.
    /// \param itemTime  microseconds since the beginning
    virtual bool seek(qint64 itemTime) = 0;

    /// Time stamp of the beginning, microseconds.
    virtual qint64 firstStamp() const = 0;

    /// Microseconds; 0 when unknown. A still picture has none.
    virtual qint64 length() const = 0;

    /// One picture and nothing else.
    virtual bool isStill() const = 0;

    /// Whether it comes as it is made, and cannot be read ahead.
    virtual bool isLive() const = 0;

    /// Whether time stamps may jump, as they do in broadcast streams.
    virtual bool stampsMayJump() const = 0;

    /// What is played; null where there is none.
    const std::shared_ptr<const StreamInfo>& video() const { return _video; }
    const std::shared_ptr<const StreamInfo>& audio() const { return _audio; }

protected:
    static constexpr qint64 patience = 10'000'000; ///< microseconds

    std::shared_ptr<const StreamInfo> _video;
    std::shared_ptr<const StreamInfo> _audio;
};

/// The input that reads such a location, not opened yet.
/// \param interrupted  makes every call end; has to outlive the input
std::unique_ptr<Input> makeInput(const InputLocation& location, const std::atomic<bool>& interrupted);

} // namespace tavlo
