#pragma once

#include "output/ITavloPresentOutputTargetNode.h"

#include <tavlo/CBitrateCalculater.h>

/// What every node keeps.
class TavloPresentOutputTargetNodeBase : public ITavloPresentOutputTargetNode
{
public:
    TavloPresentOutputTargetNodeBase() = default;
    TavloPresentOutputTargetNodeBase(const TavloPresentOutputTargetNodeBase&) = delete;
    TavloPresentOutputTargetNodeBase& operator=(const TavloPresentOutputTargetNodeBase&) = delete;

    /// Keeps all arguments. Always true.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;

    /// Lets go of device, context and texture.
    void destroy() override;

protected:
    // fixed from create to destroy
    qint32 _index = -1;
    QString _name;
    tagTavloVideoInfo _videoInfo; ///< of the composition; a node that converts names its own chroma
    tagTavloAudioInfo _audioInfo;
    tavlo::graphics::DevicePtr _device;
    tavlo::graphics::ContextPtr _context;
    tavlo::graphics::TexturePtr _texture;
    tavlo::graphics::TextureDesc _textureDesc;

    // any thread
    CBitrateCalculater _videoRate;
    CBitrateCalculater _audioRate;
};
