#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "base/CTempldateHelper.h"
#include "support/HeldTime.h"

#include <tavlo/InterfacePtr.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

struct picture_pool_t;
struct video_format_t;

namespace tavlo::test {

/// Takes what a player makes, as a source does it: a pool of pictures whose planes lie one behind the other in memory of
/// just the size of a texture, and a sound device that plays what it is given.
class PlayerSink final : public Implements<PlayerSink, ITavloSourcePlayerSink>
{
public:
    struct Picture
    {
        int number;   ///< -1 when it shows none
        qint64 date;  ///< microseconds
        qint64 heard; ///< sound frames that had been heard when it came
    };
    struct Block
    {
        qint64 date;
        int frames;
        int second; ///< that its tone belongs to
    };
    struct State
    {
        int state;
        int index;
        friend bool operator==(const State&, const State&) = default;
    };

    PlayerSink() = default;
    ~PlayerSink() = default;

    // Set before playing.
    HeldTime* heldTime = nullptr;  ///< that it is played on, rather than the system's
    bool hasDevice = false;        ///< tells when sound is heard
    qint64 deviceLatency = 60'000; ///< microseconds that it holds back
    double deviceSpeed = 1.0;      ///< of its clock
    std::vector<quint32> layouts;  ///< that it takes; all when empty, else NV12 in place of others
    bool hasPool = true;
    bool readsPictures = true; ///< their numbers and content

    // Set before playing; on the player's thread.
    std::function<void(int number)> onPicture;
    std::function<void(picture_t&)> onSample; ///< before it is looked at
    std::function<void()> onVideoStop;
    std::function<picture_pool_t*(const video_format_t&)> makePool; ///< rather than the sink's own

    /// Waits until the condition holds, which is looked at after each call of the player. False after so long that something must hang.
    bool waitFor(const std::function<bool()>& condition);

    /// Waits for so many pictures in all.
    bool waitForPictures(size_t count);

    /// Waits for a state report, at or after the place of the reports.
    bool waitForState(State state, size_t from = 0);

    /// So far, while it plays.
    size_t pictureCount();
    size_t stateCount();

    // Read inside a condition of `waitFor`, or after the player was stopped.
    std::vector<Picture> pictures;
    std::vector<Block> blocks;
    std::vector<State> states;
    tagTavloVideoInfo videoInfo;
    int videoStarts = 0, videoStops = 0, audioStarts = 0, audioStops = 0, flushes = 0, pauses = 0, resumes = 0;
    qint64 soundFrames = 0;
    std::vector<quint8> lastPicture; ///< plane by plane, rows without padding

    std::vector<int> numbers() const;

    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;

    // ITavloSourcePlayerSink
    void OnMediaSourcePlayerDoVideoStart(quint32 chroma, tagTavloVideoInfo& videoInfo) override;
    void OnMediaSourcePlayerDoVideoStop() override;
    void OnMediaSourcePlayerDoAudioStart(tagTavloAudioInfo& audioInfo) override;
    void OnMediaSourcePlayerDoAudioStop() override;
    picture_pool_t* OnMediaSourcePlayerDoVideoSamplePool(quint32* count) override;
    void OnMediaSourcePlayerDoVideoSample(quint32 tag, picture_t* picture) override;
    block_t* OnMediaSourcePlayerDoAudioSample(quint32 tag, block_t* block, tagTavloAudioInfo& audioInfo) override;
    void OnMediaSourcePlayerDoAudioFlush(bool discard) override;
    qint32 OnMediaSourcePlayerDoAudioTime(qint64* time) override;
    void OnMediaSourcePlayerDoAudioPause(qint64 time) override;
    void OnMediaSourcePlayerDoAudioResume(qint64 time) override;
    void OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count) override;

private:
    qint64 now() const;
    qint64 queuedFrames();
    template <class Change>
    void update(Change change); ///< under the lock

    std::mutex _lock;
    std::condition_variable _changed;
    tagTavloAudioInfo _audioInfo;
    double _queued = 0.0; ///< frames that the device has not played
    qint64 _queuedAt = 0; ///< microseconds
};

/// Whether it comes about before something must hang.
bool waitUntil(const std::function<bool()>& condition);

/// Whether no thread of a player reads any more, soon or a little later.
bool readersEnd();

/// A player with a sink, made by the module. With the last one the reading threads end, which `stop` doesn't wait for.
class PlayerStage
{
public:
    PlayerStage();
    ~PlayerStage();

    /// Has time wait for so many pictures and so many seconds of sound, and hurry where nothing is to be done.
    void holdTime(int pictures = INT_MAX, double soundSeconds = 1e9);

    /// Plays files or addresses.
    void play(const QStringList& paths, bool loop = false);

    /// Plays a list to its end in held time, which waits for so much, and stops. \return whether it came to that
    bool playToEnd(const QStringList& paths, int pictures = INT_MAX, double soundSeconds = 1e9);

    /// Milliseconds of the entry.
    qint64 place() const;
    qint64 length() const;

    tagTavloSourcePlayerInfo info;
    tagTavloMediaFormatInfo wanted; ///< sizes and layouts as the input has them, unless changed
    HeldTime time;                  ///< once `holdTime` was called
    PlayerSink sink;
    ITavloSourcePlayer* player = nullptr;

private:
    CTempldateHelper<ITavloSourcePlayer> _module{"TavloCommonModule", "CreateTavloSourcePlayer"};
};

} // namespace tavlo::test
