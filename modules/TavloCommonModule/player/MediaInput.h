#pragma once

#include "TavloCommonModule/player/InputLocation.h"
#include "TavloCommonModule/player/Segment.h"

#include <atomic>
#include <memory>

namespace tavlo {

/// One opened input: a file, a stream or a device. The reading thread's, but for `interrupt`.
///
/// No call takes longer than `patience` without a byte from outside, and all end soon after the flag is set.
class MediaInput
{
public:
    /// \param interrupted  makes every call end; has to outlive the input
    explicit MediaInput(const std::atomic<bool>& interrupted) : _interrupted(interrupted) {}
    ~MediaInput() { close(); }
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    /// False, with a log line that names the input and the reason, when it cannot be played.
    /// \param pictures, sound  whether these are wanted at all
    bool open(const InputLocation& location, bool pictures, bool sound);

    void close();
    bool isOpen() const { return _context != nullptr; }

    /// The next packet of a stream that is played. 0, AVERROR_EOF, or what was wrong.
    int read(AVPacket& packet);

    /// Goes to the last place at or before that time from which pictures can be decoded.
    /// \param itemTime  microseconds since the beginning
    bool seek(qint64 itemTime);

    bool isVideo(const AVPacket& packet) const { return packet.stream_index == _videoIndex; }

    const std::shared_ptr<const StreamInfo>& video() const { return _video; }
    const std::shared_ptr<const StreamInfo>& audio() const { return _audio; }

    /// Time stamp of the beginning, microseconds.
    qint64 firstStamp() const;

    /// Microseconds; 0 when unknown. A still picture has none.
    qint64 length() const;

    /// One picture and nothing else.
    bool isStill() const { return _isStill; }

    /// Whether it comes as it is made, and cannot be read ahead.
    bool isLive() const;

    /// Whether time stamps may jump, as they do in broadcast streams.
    bool stampsMayJump() const;

private:
    static constexpr qint64 patience = 10'000'000; ///< microseconds

    struct CloseContext
    {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };

    int openContext(const InputLocation& location);
    static bool isRegular(const InputLocation& location);
    void chooseStreams(bool pictures, bool sound);
    std::shared_ptr<const StreamInfo> describe(int index) const;
    void armDeadline();

    const std::atomic<bool>& _interrupted;
    qint64 _deadline = 0; ///< monotonic microseconds
    std::unique_ptr<AVFormatContext, CloseContext> _context;
    InputLocation::Pace _pace = InputLocation::Pace::File;
    int _videoIndex = -1;
    int _audioIndex = -1;
    std::shared_ptr<const StreamInfo> _video;
    std::shared_ptr<const StreamInfo> _audio;
    bool _isStill = false;
};

} // namespace tavlo
