#pragma once

#include "output/LossRow.h"
#include "output/Nv12Pass.h"
#include "output/OutputConversion.h"
#include "output/OutputEvent.h"
#include "output/PictureConverter.h"
#include "output/TavloPresentOutputTargetNodeBase.h"

#include <tavlo/TavloOutputStatistics.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// The bridge from the committing thread to everything slow: a pool of buffers, a queue and a thread.
///
/// A commit copies into a free buffer and posts it; without one the picture or block is dropped and counted. The
/// node's thread brings pictures into memory, in one of three ways, fixed by `create`:
///  - graphics: the composed texture becomes NV12 on the graphics processor, and that comes to memory;
///  - memory ("cpu mode"): the texture comes to memory as it is, libswscale does the rest;
///  - no device: pictures come in memory, libswscale does the rest.
///
/// The pool is made when the first output starts and stays to the end.
class TavloPresentOutputTargetNodeProcessMemConvert : public TavloPresentOutputTargetNodeBase
{
public:
    static constexpr int pictureCount = 4;
    static constexpr int blockCount = 128;
    static constexpr int blockBytes = 8192; ///< to begin with; a block grows to what is committed

    /// \param sourceFormat  what the graphics processor is to make of the composition; other than NV12 it cannot
    /// \param targetChroma  what the subclass wants
    TavloPresentOutputTargetNodeProcessMemConvert(quint32 sourceFormat, quint32 targetChroma,
                                                  tavlo::OutputConversion conversion);
    ~TavloPresentOutputTargetNodeProcessMemConvert() override;

    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;

    /// Has the thread end behind everything that was posted, and takes nothing more. Owner's thread.
    void end();

    /// Ends, and returns when the thread has ended. Owner's thread.
    void destroy() override;

    /// Committing thread, as the target's operations of the same names.
    void commitVideoData(picture_t* picture);
    /// \return false when the picture was dropped
    bool commitVideoData(const tavlo::graphics::TexturePtr& texture, qint64 timestamp);
    void commitAudioData(const void* data, int size, qint64 timestamp);

    /// Hands the event to the thread; behind `destroy` it is lost. Any thread but the node's own.
    /// \param wait  returns when the event is done
    void post(tavlo::OutputEvent event, bool wait);

    /// Any thread.
    virtual void getStatistics(tagTavloOutputStatistics* statistics);

protected:
    // The thread's begin, its work and its end. A subclass calls this class's own.
    virtual void onThreadBegin() {}
    virtual void onThreadEvent(tavlo::OutputEvent& event);
    virtual void onThreadEnd();

    /// Node's thread. The picture is lent. \param flip  its last row comes first
    virtual void onHandle_video(picture_t* picture, bool flip) = 0;
    /// Node's thread. The block is lent.
    virtual void onHandle_audio(block_t* block) = 0;

    /// Whether commits are of use. Committing thread.
    virtual bool needVideo() const = 0;
    virtual bool needAudio() const = 0;

    /// Of a picture that was committed and goes nowhere: nothing could be done with it, or nobody wants it any more.
    void countDropped() { _droppedPictures.fetch_add(1, std::memory_order_relaxed); }
    void countLate() { _latePictures.fetch_add(1, std::memory_order_relaxed); }

    /// Makes the pool, if it is not there yet. Node's thread, before the first picture is wanted.
    void preparePool();

    /// A picture in `_videoInfo.chroma`, for the subclass's use; null when there was no memory. Node's thread.
    picture_t* targetPicture() const { return _targetPicture.get(); }

    // node's thread
    tavlo::PictureConverter _converter; ///< from what comes to `_videoInfo.chroma`; closed when these are the same

private:
    void chooseWay();
    bool useGraphics();
    tavlo::graphics::TextureDesc stagingDesc() const;
    void makeTextures();
    void run();
    void joinThread();
    bool takeEvents(std::vector<tavlo::OutputEvent>& events);
    void handleTexture(tavlo::OutputEvent& event);
    bool copyToStaging(tavlo::graphics::Texture& staging, const tavlo::graphics::TexturePtr& texture);

    // fixed by construction
    const quint32 _sourceFormat;
    const quint32 _targetChroma;
    const tavlo::OutputConversion _conversion;

    // fixed from create to destroy
    std::unique_ptr<tavlo::Nv12Pass> _nv12Pass; ///< used on the frame thread; its presence is the graphics way
    quint32 _sourceChroma = 0;                  ///< of what the thread finds in memory
    std::thread _thread;

    // committing thread
    tavlo::LossRow _lostPictures, _lostBlocks;

    // node's thread
    bool _poolMade = false;
    tavlo::PicturePtr _handlePayloadPicture; ///< has no memory of its own: stands for a mapped texture
    tavlo::PicturePtr _targetPicture;

    // guarded by _poolLock
    std::mutex _poolLock;
    std::vector<tavlo::graphics::TexturePtr> _freeTextures;
    std::vector<tavlo::PicturePtr> _freePictures;
    std::vector<tavlo::BlockPtr> _freeBlocks;

    // guarded by _eventQueueLock
    std::mutex _eventQueueLock;
    std::condition_variable _eventArrived;
    std::vector<tavlo::OutputEvent> _eventQueue;
    std::condition_variable _threadEnded;
    bool _running = false;
    bool _hasEnded = false;

    // any thread
    std::atomic<quint64> _committedPictures{0};
    std::atomic<quint64> _droppedPictures{0};
    std::atomic<quint64> _latePictures{0};
    std::atomic<quint64> _droppedBlocks{0};
};
