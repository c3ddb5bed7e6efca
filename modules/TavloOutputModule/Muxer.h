#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct AVFormatContext;

namespace tavlo {

/// One file or connection of libavformat. One thread; only `Limits` is read by others' leave.
class Muxer
{
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Target
    {
        std::string format; ///< libavformat's name
        std::string url;    ///< or a path
        std::vector<std::pair<std::string, std::string>> options;
        QByteArray* bytes = nullptr;                ///< what is written is appended here and goes nowhere else; lent
        std::chrono::milliseconds patience{10'000}; ///< for one call that makes no headway
        bool waitsForPeer = false;                  ///< nobody may be there for long, which is no failure
        std::function<void()> prepare{};            ///< comes before each opening
    };

    /// When calls have to give up whatever they do. Lent by the caller; any thread may change it.
    struct Limits
    {
        std::atomic<Time> endBy{Time::max()};

        bool isEnding() const { return endBy.load() != Time::max(); }
    };

    /// Null, the reason in `error`, when it cannot be opened or refuses the streams. No reason: nobody came for whom it
    /// waits.
    static std::unique_ptr<Muxer> open(const Target& target, const StreamFormat& format, const Limits& limits,
                                       std::string& error);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    /// Leaves out what is older than the origin: sound that comes late.
    /// \param origin  the dts that becomes time 0, microseconds
    /// \return false, the reason in `error`, when the file or connection is lost
    bool write(const CodedPacket& packet, qint64 origin, std::string& error);

    /// How the streams of RTP that these write can be received (SDP).
    static std::string sessionDescription(const std::vector<std::unique_ptr<Muxer>>& muxers);

    /// Writes what belongs to the end. False when that could not be written.
    bool finish(std::string& error);

private:
    struct FreeContext
    {
        void operator()(AVFormatContext* context) const;
    };

    Muxer(const Limits& limits, std::chrono::milliseconds patience) : _limits(limits), _patience(patience) {}

    bool addStreams(const StreamFormat& format);
    bool openOutput(const Target& target, std::string& error);
    bool openBytes(QByteArray* bytes);
    bool isOverdue() const;
    void beginCall() { _callEnds = std::chrono::steady_clock::now() + _patience; }
    bool succeeded(int result, std::string& error) const;

    const Limits& _limits;
    const std::chrono::milliseconds _patience;
    Time _callEnds{};
    std::unique_ptr<AVFormatContext, FreeContext> _context;
    int _videoIndex = -1, _audioIndex = -1;
    bool _repeatsHeaders = false; ///< so that decoding can begin with every key picture
    bool _begun = false;
};

} // namespace tavlo
