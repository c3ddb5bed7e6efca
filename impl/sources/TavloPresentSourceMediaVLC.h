#pragma once

#include "TavloCUDAUtil/ITavloVideoCUDAResource.h"
#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "base/CTempldateHelper.h"
#include "sources/PicturePool.h"
#include "sources/TavloPresentSourceMedia.h"

#include <array>
#include <atomic>
#include <mutex>

using CTavloSourcePlayerHelper = CTempldateHelper<ITavloSourcePlayer>;
using CTavloVideoCUDAResourceHelper = CTempldateHelper<ITavloVideoCUDAResource>;

/// Base of all sources that a player plays.
///
/// The player writes decoded pictures into textures in place and reports them; the frame thread draws the oldest that
/// waits. Two may wait: a decoder that is a moment early loses nothing. Neither waits for the other. The player's
/// threads call what ITavloSourcePlayerSink lists.
class TavloPresentSourceMediaVLC : public TavloPresentSourceMedia, public ITavloSourcePlayerSink
{
    Q_OBJECT

public:
    explicit TavloPresentSourceMediaVLC(const tavlo::SourceSite& site);

    bool openSource(const tagTavloPresentSourceInfo& info) override;
    void closeSource() override;
    void drawFrame(TavloDrawDX11& draw, const tavlo::FrameStamps& stamps) override;

    // IUnknownEx
    bool isValid() override { return TavloPresentSourceMedia::isValid(); }
    void destroy() override { TavloPresentSourceMedia::destroy(); }
    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;

    // ITavloPresentSource: the player's
    void play() override;
    void stop() override;
    void pause() override;
    void transportA(qint64 value) override;
    void transportB(qint64 value) override;
    float getRate() override;
    void setRate(float rate) override;
    void transportC(qint64 value) override;
    void getLength(qint64& milliseconds) override;
    void getTime(qint64& milliseconds) override;
    void setTime(qint64 milliseconds) override;
    void getPosition(qint64& position) override;
    void setPosition(qint64 position) override;
    quint32 getState() override;
    tagTavloPresentSourceStatisticsItem* getStatistics() override;
    quint32 getItemCount() override;
    quint32 getItemIndex() override;
    ICloudTourControl* getCloudTourControl() override;

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

protected:
    ~TavloPresentSourceMediaVLC() override;

    /// The player, or null when its module is missing.
    ITavloSourcePlayer* player() const { return _playerHelper.get(); }

    /// Whether pictures may stay in graphics memory on their way; fixed from openSource on.
    bool keepsGraphicsMemory() const { return _cudaResource.get() != nullptr; }

    /// The name for people. Any thread.
    void setName(const QString& name);

    tagTavloSourcePlayerInfo _playerInfo; ///< what is played; fixed from openSource on

private:
    /// A picture on its way to the frame thread, and the writing that shows it.
    struct Waiting
    {
        picture_t* picture = nullptr;
        tavlo::graphics::CommandListPtr commandList;
    };

    /// What the player's threads tell for the statistics.
    struct Told
    {
        QString name;
        quint32 width = 0, height = 0; ///< pixels; 0 while no pictures come
        float frameRate = 0.0F;        ///< pictures a second
        quint32 audioSampleRate = 0;   ///< samples a second
    };

    static constexpr std::size_t waitingLimit = 2;

    void createCudaResource();
    void drawFromGraphicsMemory();
    void process(picture_t& picture, tavlo::PooledPicture& pooled);
    bool takesPicture();
    Waiting takeWaiting();
    void leaveOutOverdue(qint64 now);
    void forgetWaiting();

    CTavloSourcePlayerHelper _playerHelper;

    // frame thread writes, under _pictureMutex; any thread reads under it
    CTavloVideoCUDAResourceHelper _cudaResource;
    tavlo::graphics::TexturePtr _cudaTexture;       ///< frame thread: brightness, behind it chroma in pairs
    tavlo::graphics::TexturePtr _formerCudaTexture; ///< frame thread
    std::atomic<bool> _inGraphicsMemory = false;    ///< the pictures of now
    std::atomic<qint64> _graphicsMemoryDate = 0;    ///< of the newest, microseconds

    Told _told; ///< guarded by _mediaLock

    // player's video thread
    tavlo::PicturePool _picturePool;
    tavlo::KeyLoop _keyLoop;
    tavlo::PictureLayout _layout;
    video_format_t _videoFormat{};
    quint64 _unwantedTold = 0;
    std::atomic<quint64> _unwanted = 0; ///< pictures that came while others still waited for a frame

    // guarded by _pictureMutex
    std::mutex _pictureMutex;
    std::array<Waiting, waitingLimit> _waiting; ///< the oldest first
    std::size_t _waitingCount = 0;
};
