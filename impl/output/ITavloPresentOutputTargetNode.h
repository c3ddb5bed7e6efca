#pragma once

#include "graphics/Device.h"

#include <tavlo/records/MediaFormat.h>

#include <QString>

/// A part of the way from a composed picture to a target.
///
/// Made unborn, brought up by `create` and taken down by `destroy`, which its parent calls before it deletes the node.
class ITavloPresentOutputTargetNode
{
public:
    virtual ~ITavloPresentOutputTargetNode() = default;

    /// \param index    number of the node's channel, for logs and names
    /// \param device   of the composition; null where pictures come in memory
    /// \param context  the immediate context
    /// \param texture  the one into which the composition is drawn
    /// \return whether the node can be used
    virtual bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                        const tagTavloAudioInfo& audioInfo, tavlo::graphics::DevicePtr device,
                        tavlo::graphics::ContextPtr context, tavlo::graphics::TexturePtr texture,
                        const tavlo::graphics::TextureDesc& textureDesc) = 0;

    virtual void destroy() = 0;
};
