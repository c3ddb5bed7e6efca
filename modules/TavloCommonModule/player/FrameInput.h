#pragma once

#include "TavloCommonModule/player/Input.h"
#include "TavloCommonModule/player/WallStamps.h"

namespace tavlo {

/// An input that brings pictures and sound as they are, with nothing to decode: a card, a sender on the network. Either
/// may begin, change its format and pause when it likes. What it brings is stamped with the wall clock.
class FrameInput : public Input
{
public:
    bool open(const InputLocation& location, bool pictures, bool sound) final;
    void close() final;
    bool isOpen() const final { return _video || _audio; }
    int read(AVPacket& packet) final;
    bool isVideo(const AVPacket& packet) const final { return packet.stream_index == videoIndex; }
    bool seek(qint64) final { return false; }
    qint64 firstStamp() const final { return 0; }
    qint64 length() const final { return 0; }
    bool isStill() const final { return false; }
    bool isLive() const final { return true; }
    bool stampsMayJump() const final { return true; }

protected:
    static constexpr qint64 slice = 100'000; ///< microseconds that a call of `fetch` waits at most

    /// What came: one buffer of pictures or sound.
    struct Arrival
    {
        FramePtr frame; ///< `pts` is of the sender's own clock, microseconds; `pkt_duration` is set
        bool isVideo = false;
        AVRational frameRate{0, 1}; ///< of pictures
    };

    explicit FrameInput(const std::atomic<bool>& interrupted) : _interrupted(interrupted) {}

    /// \return what was wrong; empty when frames may come from now on
    virtual QString connect(const InputLocation& location, bool pictures, bool sound) = 0;

    /// Also when there is no connection.
    virtual void disconnect() = 0;

    /// The next one. 0, AVERROR(EAGAIN) when there is none in a `slice`, or why none comes any more.
    virtual int fetch(Arrival& arrival) = 0;

    const std::atomic<bool>& _interrupted;

private:
    static constexpr int videoIndex = 0;

    int awaitFirst();
    int await(Arrival& arrival);

    bool _pictures = false;
    bool _sound = false;
    WallStamps _stamps;
    Arrival _first; ///< that was taken to know it; no frame once it is read
};

} // namespace tavlo
