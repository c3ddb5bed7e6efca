#pragma once

#include "TavloCommonModule/ITavloDecklinkOutput.h"
#include "TavloCommonModule/ITavloNDIOutput.h"
#include "base/CTempldateHelper.h"
#include "output/ITavloHDMIOutputObject.h"
#include "output/TavloPresentOutputTargetNodeBase.h"
#include "shared/VlcTypes.h"

#include <tavlo/TavloOutputStatistics.h>

#include <memory>

/// A leaf that takes pictures and sound as they are, counts them and hands them to whoever is behind it. It counts them,
/// too, where nobody is.
///
/// The mid node's thread; `getStatistics`: any thread.
class TavloPresentOutputTargetNodeOutputRaw : public TavloPresentOutputTargetNodeBase
{
public:
    explicit TavloPresentOutputTargetNodeOutputRaw(const tagTavloPresentOutputParam& param) : _param(param) {}

    /// False when the one behind it refuses.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) final;
    void destroy() final;

    /// \param picture  lent; null where only the data of one plane is there
    /// \param stride   bytes from row to row
    /// \param date     microseconds
    void onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date);

    /// The block is lent.
    void onAudio(const block_t* block);

    virtual void getStatistics(tagTavloOutputStatistics* statistics) = 0;

protected:
    /// A picture as `onVideo` takes it.
    struct Picture
    {
        const picture_t* picture;
        const quint8* data;
        int stride, size; ///< bytes
        qint64 date;      ///< microseconds
    };

    // The one behind it. False: it refuses the output, or the picture does not count.
    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool writeVideo(const Picture& picture) = 0;
    virtual void writeAudio(const quint8* data, int size, qint64 date) = 0;

    /// Pictures and sound a second, in the four figures' order.
    void writeRates(float& videoFps, float& videoKbps, float& audioFps, float& audioKbps);

    const tagTavloPresentOutputParam _param;
};

/// Sends to the network through NDI. Silent without the library.
class TavloPresentOutputTargetNodeOutputRawNDI final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    explicit TavloPresentOutputTargetNodeOutputRawNDI(const tagTavloPresentOutputParam& param);
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    bool open() override;
    void close() override;
    bool writeVideo(const Picture& picture) override;
    void writeAudio(const quint8* data, int size, qint64 date) override;

    CTempldateHelper<ITavloNDIOutput> _helper;
};

/// Plays on a Decklink card whose mode is as large as the composition; on another one nothing, and nothing counts. Silent
/// without a card.
class TavloPresentOutputTargetNodeOutputRawDecklink final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    explicit TavloPresentOutputTargetNodeOutputRawDecklink(const tagTavloPresentOutputParam& param);
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    bool open() override;
    void close() override;
    bool writeVideo(const Picture& picture) override;
    void writeAudio(const quint8* data, int size, qint64 date) override;

    CTempldateHelper<ITavloDecklinkOutput> _helper;
};

/// Shows on a display of its own. A projection that is switched off only counts; one that refuses, refuses the output.
class TavloPresentOutputTargetNodeOutputRawHDMI final : public TavloPresentOutputTargetNodeOutputRaw
{
public:
    /// \param number  0 to 3
    TavloPresentOutputTargetNodeOutputRawHDMI(const tagTavloPresentOutputParam& param, int number);
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    bool open() override;
    void close() override;
    bool writeVideo(const Picture& picture) override;
    void writeAudio(const quint8* data, int size, qint64 date) override;

    const tagTavloPresentHDMIOutputInfo _hdmiInfo;
    std::unique_ptr<ITavloHDMIOutputObject> _object;
};
