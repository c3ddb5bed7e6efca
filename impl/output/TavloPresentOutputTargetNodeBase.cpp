#include "output/TavloPresentOutputTargetNodeBase.h"

#include <utility>

using namespace tavlo::graphics;

bool TavloPresentOutputTargetNodeBase::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                                              const tagTavloAudioInfo& audioInfo, DevicePtr device, ContextPtr context,
                                              TexturePtr texture, const TextureDesc& textureDesc)
{
    _index = index;
    _name = name;
    _videoInfo = videoInfo;
    _audioInfo = audioInfo;
    _device = std::move(device);
    _context = std::move(context);
    _texture = std::move(texture);
    _textureDesc = textureDesc;
    return true;
}

void TavloPresentOutputTargetNodeBase::destroy()
{
    _device.reset();
    _context.reset();
    _texture.reset();
}
