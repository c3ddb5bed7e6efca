#pragma once

#include "TavloOutputModule/HttpServer.h"

#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

namespace tavlo {

/// Brings a stream's bytes to any number of viewers, each with a queue of his own: one who is slow loses his own data,
/// up to the next place at which he can go on.
///
/// A viewer who comes begins with the last such place, so that he need not wait for it. Any thread.
class LiveFeed final : public HttpResource
{
public:
    struct Chunk
    {
        QByteArray bytes;
        qint64 time = 0;    ///< microseconds
        bool key = false;   ///< a viewer can begin here
        bool counts = true; ///< as one that is lost: pictures, or sound where there are none
    };

    /// How much may wait for a viewer.
    struct Limit
    {
        qint64 span = std::numeric_limits<qint64>::max();  ///< microseconds from the first to the last
        size_t count = std::numeric_limits<size_t>::max(); ///< chunks
    };

    /// \param type  of the content, as HTTP names it
    LiveFeed(std::string type, Limit limit);
    ~LiveFeed() override;

    /// What every viewer gets first. Before the first chunk.
    void setHeader(QByteArray header);

    void push(Chunk chunk);

    /// Throws away what is kept for those who come.
    void forget();

    /// Viewers get what waits for them, and then the end. Returns when they have it, or at that time.
    void end(std::chrono::steady_clock::time_point latest);

    size_t viewers() const;
    quint64 dropped() const; ///< chunks that count and that viewers lost, all together

    HttpReply get(const std::string& step) override;

private:
    using ChunkPtr = std::shared_ptr<const Chunk>;
    class Viewer;
    struct State;

    const std::string _type;
    const std::shared_ptr<State> _state; ///< viewers may outlive the feed
};

} // namespace tavlo
