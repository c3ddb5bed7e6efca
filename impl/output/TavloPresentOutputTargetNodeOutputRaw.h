#pragma once

#include "TavloCommonModule/ITavloDecklinkOutput.h"
#include "TavloCommonModule/ITavloNDIOutput.h"
#include "base/CTempldateHelper.h"
#include "output/ITavloHDMIOutputObject.h"
#include "output/TavloPresentOutputTargetNodeBase.h"
#include "shared/VlcTypes.h"

#include <tavlo/TavloOutputStatistics.h>

#include <memory>

/// A leaf that takes pictures and sound as they are. This class counts them, and so do the others where nobody is
/// there to take them.
///
/// The mid node's thread; `getStatistics`: any thread.
class TavloPresentOutputTargetNodeOutputRaw : public TavloPresentOutputTargetNodeBase
{
public:
    explicit TavloPresentOutputTargetNodeOutputRaw(const tagTavloPresentOutputParam& param) : _param(param) {}

    /// \param picture  lent; null where only the data of one plane is there
    /// \param stride   bytes from row to row
    /// \param date     microseconds
    virtual void onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date);

    /// The block is lent.
    virtual void onAudio(const block_t* block);

    virtual void getStatistics(tagTavloOutputStatistics*) {}

protected:
    /// Pictures and sound a second, in the four figures' order.
    void writeRates(float& videoFps, float& videoKbps, float& audioFps, float& audioKbps);

    const tagTavloPresentOutputParam _param;
};

/// Sends to the network through NDI.
class TavloPresentOutputTargetNodeOutputRawNDI final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    explicit TavloPresentOutputTargetNodeOutputRawNDI(const tagTavloPresentOutputParam& param);

    /// True even without the library: the leaf is silent then.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;
    void destroy() override;
    void onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date) override;
    void onAudio(const block_t* block) override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    CTempldateHelper<ITavloNDIOutput> _helper;
};

/// Plays on a Decklink card whose mode is as large as the composition; on another one nothing, and nothing counts.
class TavloPresentOutputTargetNodeOutputRawDecklink final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    explicit TavloPresentOutputTargetNodeOutputRawDecklink(const tagTavloPresentOutputParam& param);

    /// True even without the card: the leaf is silent then.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;
    void destroy() override;
    void onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date) override;
    void onAudio(const block_t* block) override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    CTempldateHelper<ITavloDecklinkOutput> _helper;
};

/// Shows on a display of its own.
class TavloPresentOutputTargetNodeOutputRawHDMI final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    /// \param number  0 to 3
    TavloPresentOutputTargetNodeOutputRawHDMI(const tagTavloPresentOutputParam& param, int number);

    /// False when the projection refuses. A projection that is switched off only counts.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;
    void destroy() override;
    void onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date) override;
    void onAudio(const block_t* block) override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    const tagTavloPresentHDMIOutputInfo _hdmiInfo;
    std::unique_ptr<ITavloHDMIOutputObject> _object;
};
