#pragma once

#include "drawing/KeyLoop.h"
#include "drawing/TavloDrawDX11.h"
#include "drawing/TransitionDraw.h"

#include <tavlo/IUnknownEx.h>

struct block_t;
struct tagTavloAudioInfo;
struct tagTavloShowComponentInfo;

/// What a source holds of the channel, or of the blend layer, that it plays on. Frame thread, where nothing else is
/// said.
class ITavloPresentChannelSource : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x58a2e7b4, 0x1d93, 0x4f6a, 0x8e, 0x77, 0xc0,
                                                  0x15,       0x2f,   0x9a,   0x64, 0x01};

    /// The channel's id; 65535 for a blend layer. Any thread.
    virtual int channelIndex() = 0;

    /// Whether the id is this channel's own, or of one that its source shows. Any thread.
    virtual bool containsChannel(int channelId) = 0;

    virtual const tavlo::graphics::TextureDesc& targetDesc() = 0;

    /// Whether a key is all that the channel would do to the source's pictures, and which. Who has done it to a picture
    /// hands that over as `chromaProcessed`. Any thread.
    virtual bool loneKey(tavlo::LoneKey&) { return false; }

    /// A new picture of the source: it goes through the channel's picture process onto the channel's target.
    /// \param chroma        four-character code of the picture's layout
    /// \param picture       null draws a transparent picture
    /// \param size          of the picture, pixels
    /// \param planeOffsets  of a planar picture
    /// \param clearFirst    the target is cleared; so it is with a cropped picture
    /// \param flip          the picture's first row is its bottom one
    virtual void renderPicture(quint32 chroma, const tavlo::graphics::TexturePtr& picture, QSizeF size,
                               tavlo::PlaneOffsets planeOffsets, bool clearFirst, bool flip) = 0;

    /// A transition between two pictures of the source, drawn onto the channel's target.
    /// \param position  0 to 1 \param effect  number of the transition
    virtual void renderBlendPicture(const tavlo::TransitionPicture& outgoing, const tavlo::TransitionPicture& incoming,
                                    float position, quint32 effect) = 0;

    /// The channel's sound filters, in place. The source's audio thread.
    /// \return the block to go on with
    virtual block_t* processAudio(block_t* block, const tagTavloAudioInfo& format) = 0;

    /// A mouse message for the source, as a window would get it.
    /// \param message   512 a move, 513 and 514 a press and a release
    /// \param position  y << 16 | x, pixels of the frame, top first
    virtual void channelMouseEvent(quint32 message, quint64 flags, qint64 position) = 0;

    /// Components of a stage source, shown on its channel.
    /// \param serialize  the component's scene, lent; may be null
    virtual void enterComponent(const tagTavloShowComponentInfo& info, IUnknownEx* serialize) = 0;
    virtual void exitComponent(const QString& id) = 0;
    virtual void updateComponent(const tagTavloShowComponentInfo& info) = 0;

protected:
    ~ITavloPresentChannelSource() = default;
};
