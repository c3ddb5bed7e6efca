#pragma once

#include "output/OutputConversion.h"
#include "output/TavloPresentOutputTargetNodeBase.h"

#include <tavlo/TavloOutputStatistics.h>
#include <tavlo/TavloPresentOutputType.h>

#include <QVariant>

#include <array>
#include <memory>

class TavloPresentOutputTargetNodeProcessMemConvert;
struct picture_t;

/// Root of a channel's outputs: brings composed pictures and mixed sound to four outputs, each of which may record,
/// stream, and feed NDI, a Decklink card and four displays at once.
///
/// The committing thread waits for nothing: a picture or block that finds no free buffer is dropped and counted.
/// Failures of an output stay with it and show in the log and the statistics.
///
/// Owner's thread: `create` and `destroy`, with no other call under way. All other operations: any thread, the
/// committing ones one at a time; textures are committed on the frame thread.
class TavloPresentOutputTarget final : public TavloPresentOutputTargetNodeBase
{
public:
    /// \param conversion  how textures come into memory, and which row they keep first
    explicit TavloPresentOutputTarget(tavlo::OutputConversion conversion = {});
    ~TavloPresentOutputTarget() override;

    /// Brings up the eight nodes, each with a thread. True even when some could not be made; the log tells which.
    /// Without a device the target takes pictures in memory, in the chroma of `videoInfo`.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;

    /// Ends every output, what is on its way written first, and all threads. May be called twice.
    void destroy() override;

    /// A picture in memory, its date in microseconds. It is copied. For targets without a device.
    void commitVideoData(picture_t* picture);

    /// The composed texture: the one of `create`, or one of its size and format. Frame thread.
    /// \param timestamp  microseconds, on the clock of the sound's
    void commitVideoData(const tavlo::graphics::TexturePtr& texture, qint64 timestamp);

    /// Interleaved samples in the format of `audioInfo`. They are copied.
    /// \param size       bytes
    /// \param timestamp  of the first sample, microseconds
    void commitAudioData(const void* data, int size, qint64 timestamp);

    /// Asks for the start of an output and returns at once. Does nothing for a number that is none.
    /// \param index  0 to 3
    /// \param type   a TavloPresentOutputType
    /// \param param  a tagTavloPresentOutputParam
    void startOutput(const QVariant& index, const QVariant& type, const QVariant& param);

    /// Asks for the end of an output. \param wait  returns when it has ended
    void stopOutput(const QVariant& index, const QVariant& type, bool wait);

    /// Adds the figures of an output's parts. \param index  0 to 3; others leave the record as it is
    void getStatistics(int index, tagTavloOutputStatistics* statistics);

private:
    static constexpr int columns = 3; ///< 0 stays empty, 1 encodes, 2 hands on raw pictures
    using MidNode = TavloPresentOutputTargetNodeProcessMemConvert;

    template <class Function>
    void forEachNode(Function function);

    /// The node that an output belongs to; null, told in the log if `tell` is set, where there is none.
    MidNode* receiver(const QVariant& index, const QVariant& type, bool tell);

    const tavlo::OutputConversion _conversion;

    // fixed from create to destroy
    std::array<std::array<std::unique_ptr<MidNode>, columns>, TavloPresentOutputIndexCount> _midNodes;
};
