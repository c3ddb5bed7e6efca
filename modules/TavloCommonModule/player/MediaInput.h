#pragma once

#include "TavloCommonModule/player/Input.h"

namespace tavlo {

/// What FFmpeg reads: files, streams, most devices.
class MediaInput final : public Input
{
public:
    explicit MediaInput(const std::atomic<bool>& interrupted) : _interrupted(interrupted) {}
    ~MediaInput() override { MediaInput::close(); }
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    bool open(const InputLocation& location, bool pictures, bool sound) override;
    void close() override;
    bool isOpen() const override { return _context != nullptr; }
    int read(AVPacket& packet) override;
    bool isVideo(const AVPacket& packet) const override { return packet.stream_index == _videoIndex; }
    bool seek(qint64 itemTime) override;
    qint64 firstStamp() const override;
    qint64 length() const override;
    bool isStill() const override { return _isStill; }
    bool isLive() const override;
    bool stampsMayJump() const override;

private:
    struct CloseContext
    {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };

    int openContext(const InputLocation& location);
    int readFrame(AVPacket& packet);
    static bool isRegular(const InputLocation& location);
    void chooseStreams(bool pictures, bool sound);
    std::shared_ptr<const StreamInfo> describe(int index) const;
    void armDeadline();
    bool isOver() const;

    const std::atomic<bool>& _interrupted;
    qint64 _deadline = 0; ///< monotonic microseconds
    std::unique_ptr<AVFormatContext, CloseContext> _context;
    InputLocation::Pace _pace = InputLocation::Pace::File;
    bool _isCamera = false;
    bool _inPieces = false; ///< of some seconds each, and nothing between them
    int _videoIndex = -1;
    int _audioIndex = -1;
    bool _isStill = false;
};

} // namespace tavlo
