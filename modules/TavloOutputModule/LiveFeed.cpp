#include "TavloOutputModule/LiveFeed.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <utility>

namespace tavlo {

namespace {

constexpr qsizetype mostKept = 32 << 20; // bytes for those who come

} // namespace

struct LiveFeed::State
{
    explicit State(Limit givenLimit) : limit(givenLimit) {}

    const Limit limit;

    // guarded by lock
    std::mutex lock;
    std::condition_variable left;
    QByteArray header;
    std::vector<ChunkPtr> recent; ///< from the last key chunk on
    qsizetype recentBytes = 0;
    std::vector<Viewer*> viewers;
    quint64 dropped = 0;
    bool ended = false;
};

/// All of it is guarded by the feed's lock.
class LiveFeed::Viewer final : public HttpStream
{
public:
    explicit Viewer(std::shared_ptr<State> state);
    ~Viewer() override;

    qint64 read(char* to, size_t size, HttpConnection& connection) override;
    void push(const ChunkPtr& chunk);
    void wake();

private:
    bool isTooMuch() const;
    void dropToKey();

    const std::shared_ptr<State> _state;
    QByteArray _sending; ///< of which so many bytes have gone
    qsizetype _sent = 0;
    std::deque<ChunkPtr> _waiting;
    bool _needsKey = false;              ///< what comes is of no use before the next key chunk
    HttpConnection* _sleeping = nullptr; ///< the server's; to be woken when something comes
};

LiveFeed::Viewer::Viewer(std::shared_ptr<State> state) : _state(std::move(state))
{
    const std::lock_guard guard(_state->lock);
    _sending = _state->header;
    _waiting.assign(_state->recent.begin(), _state->recent.end());
    _needsKey = _state->recent.empty();
    _state->viewers.push_back(this);
}

LiveFeed::Viewer::~Viewer()
{
    const std::lock_guard guard(_state->lock);
    std::erase(_state->viewers, this);
    _state->left.notify_all();
}

qint64 LiveFeed::Viewer::read(char* to, size_t size, HttpConnection& connection)
{
    const std::lock_guard guard(_state->lock);
    if (_sent == _sending.size()) {
        if (_waiting.empty() && _state->ended)
            return -1;
        if (_waiting.empty()) {
            connection.sleep();
            _sleeping = &connection;
            return 0;
        }
        _sending = _waiting.front()->bytes;
        _sent = 0;
        _waiting.pop_front();
    }
    const qsizetype count = std::min(static_cast<qsizetype>(size), _sending.size() - _sent);
    std::memcpy(to, _sending.constData() + _sent, static_cast<size_t>(count));
    _sent += count;
    return count;
}

void LiveFeed::Viewer::push(const ChunkPtr& chunk)
{
    _needsKey = _needsKey && !chunk->key;
    if (_needsKey) {
        _state->dropped += chunk->counts;
        return;
    }
    _waiting.push_back(chunk);
    if (isTooMuch())
        dropToKey();
    wake();
}

void LiveFeed::Viewer::wake()
{
    if (HttpConnection* const sleeping = std::exchange(_sleeping, nullptr))
        sleeping->wake();
}

bool LiveFeed::Viewer::isTooMuch() const
{
    return _waiting.size() > _state->limit.count || _waiting.back()->time - _waiting.front()->time > _state->limit.span;
}

/// The oldest, up to the next key chunk.
void LiveFeed::Viewer::dropToKey()
{
    const auto end =
        std::find_if(_waiting.begin() + 1, _waiting.end(), [](const ChunkPtr& chunk) { return chunk->key; });
    _needsKey = end == _waiting.end();
    _state->dropped +=
        static_cast<quint64>(std::count_if(_waiting.begin(), end, [](const ChunkPtr& chunk) { return chunk->counts; }));
    _waiting.erase(_waiting.begin(), end);
}

LiveFeed::LiveFeed(std::string type, Limit limit) : _type(std::move(type)), _state(std::make_shared<State>(limit)) {}

LiveFeed::~LiveFeed() { LiveFeed::end({}); }

void LiveFeed::setHeader(QByteArray header)
{
    const std::lock_guard guard(_state->lock);
    _state->header = std::move(header);
}

void LiveFeed::push(Chunk chunk)
{
    const auto shared = std::make_shared<const Chunk>(std::move(chunk));
    const std::lock_guard guard(_state->lock);
    if (shared->key) {
        _state->recent.clear();
        _state->recentBytes = 0;
    }
    _state->recentBytes += shared->bytes.size();
    if ((shared->key || !_state->recent.empty()) && _state->recentBytes <= mostKept)
        _state->recent.push_back(shared);
    else
        _state->recent.clear();
    for (Viewer* viewer : _state->viewers)
        viewer->push(shared);
}

void LiveFeed::forget()
{
    const std::lock_guard guard(_state->lock);
    _state->recent.clear();
}

void LiveFeed::end(std::chrono::steady_clock::time_point latest)
{
    std::unique_lock guard(_state->lock);
    _state->ended = true;
    for (Viewer* viewer : _state->viewers)
        viewer->wake();
    _state->left.wait_until(guard, latest, [this] { return _state->viewers.empty(); });
}

size_t LiveFeed::viewers() const
{
    const std::lock_guard guard(_state->lock);
    return _state->viewers.size();
}

quint64 LiveFeed::dropped() const
{
    const std::lock_guard guard(_state->lock);
    return _state->dropped;
}

HttpReply LiveFeed::get(const std::string& step)
{
    if (!step.empty())
        return {};
    return {.type = _type, .body = {}, .file = {}, .stream = std::make_unique<Viewer>(_state)};
}

} // namespace tavlo
