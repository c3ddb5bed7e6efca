#include "TavloOutputModule/Target.h"

#include <QDebug>

#include <pthread.h>
#include <utility>

namespace tavlo {

Target::Target(std::string name, const StreamFormat& format, qint64 limit)
    : _name(std::move(name)), _format(format), _queue(limit, format.hasVideo())
{}

void Target::start()
{
    _thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "tavlo-target");
        run();
    });
}

void Target::end()
{
    _limits.endBy.store(std::chrono::steady_clock::now() + patience());
    _queue.end();
}

void Target::join()
{
    if (_thread.joinable())
        _thread.join();
}

void Target::run()
{
    while (const CodedPacketPtr packet = _queue.pop())
        take(packet);
    close();
    setState(State::Off);
}

void Target::countWritten(const CodedPacket& packet)
{
    (packet.video ? videoRate : audioRate).add(packet.block->i_buffer);
    if (packet.video || !_format.hasVideo())
        _written.fetch_add(1, std::memory_order_relaxed);
}

void Target::tell(const std::string& text) const
{
    qDebug().noquote() << "output worker:" << _name.c_str() << text.c_str();
}

void Target::pause(const std::string& failure)
{
    const std::chrono::milliseconds length = _backoff.next();
    _retryAt = std::chrono::steady_clock::now() + length;
    setState(State::Waiting);
    if (_limits.isEnding())
        return tell(failure);
    tell(failure + "; tries again in " + std::to_string(length.count()) + " ms");
}

} // namespace tavlo
