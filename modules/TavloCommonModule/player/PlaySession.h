#pragma once

#include "TavloCommonModule/player/PlayContext.h"

#include <QList>

#include <future>
#include <memory>
#include <vector>

namespace tavlo {

class AudioLine;
class CameraControl;
class VideoLine;

/// One play, from `play` to `stop`: its reading threads and the threads of its streams. Any thread; `stop` once.
class PlaySession
{
public:
    /// \param before  the reading threads of the play before, whose device may have to be let go first
    PlaySession(ITavloSourcePlayerSink& sink, const tagTavloSourcePlayerInfo& info,
                const tagTavloMediaFormatInfo& wanted, QList<std::shared_future<void>> before);
    ~PlaySession();
    PlaySession(const PlaySession&) = delete;
    PlaySession& operator=(const PlaySession&) = delete;

    /// The sink is not called afterwards. A reading thread that hangs in the system is left to itself.
    void stop();

    /// What is left of the reading threads.
    const QList<std::shared_future<void>>& readers() const { return _readers; }

    const tagTavloSourcePlayerInfo& info() const { return _context->info; }
    void setPaused(bool paused);
    bool isPaused() const { return _context->paused; }
    void setRate(float rate);
    float rate() const { return static_cast<float>(_context->clock.rate()); }

    // Milliseconds.
    qint64 length() const;
    qint64 time() const;
    void setTime(qint64 milliseconds);

    quint64 latePictures() const { return _context->latePictures; }
    quint64 droppedPictures() const { return _context->picturesWithoutPool + _context->unfitPictures; }

    /// Null where nothing can be moved, and after `stop`.
    CameraControl* camera() const;

    bool isLive() const;
    TavloSourcePlayerState state() const { return _context->progress.state(); }
    int itemCount() const { return static_cast<int>(_context->plan.entries.size()); }
    int itemIndex() const { return _context->progress.item(); }

private:
    void startReader(bool second, const QList<std::shared_future<void>>& before);

    const std::shared_ptr<PlayContext> _context;
    std::unique_ptr<VideoLine> _video;
    std::unique_ptr<AudioLine> _audio;
    std::unique_ptr<CameraControl> _camera;
    QList<std::shared_future<void>> _readers;
    std::atomic<qint64> _soughtTime{0}; ///< milliseconds, until the place is reached
};

} // namespace tavlo
