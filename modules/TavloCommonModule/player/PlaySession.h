#pragma once

#include "TavloCommonModule/player/PlayContext.h"

#include <memory>

namespace tavlo {

class AudioLine;
class CameraControl;
class VideoLine;

/// One play, from `play` to `stop`: its reading threads and the threads of its streams. Any thread; `stop` once.
class PlaySession
{
public:
    PlaySession(ITavloSourcePlayerSink& sink, const tagTavloSourcePlayerInfo& info,
                const tagTavloMediaFormatInfo& wanted);
    ~PlaySession();
    PlaySession(const PlaySession&) = delete;
    PlaySession& operator=(const PlaySession&) = delete;

    /// The sink is not called afterwards. What reads from outside the process is told to end, and left to it.
    void stop();

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
    void startReader(bool second);

    const std::shared_ptr<PlayContext> _context;
    std::unique_ptr<VideoLine> _video;
    std::unique_ptr<AudioLine> _audio;
    std::unique_ptr<CameraControl> _camera;
    std::atomic<qint64> _soughtTime{0}; ///< milliseconds, until the place is reached
};

} // namespace tavlo
