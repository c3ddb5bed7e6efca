#include "sources/TavloPresentSourceMedia.h"

#include "scene/RenderTexture.h"

bool TavloPresentSourceMedia::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSource::openSource(info)) {
        closeSource();
        return false;
    }
    if (_site.renderTexture)
        _site.renderTexture->setAutoDraw(false);
    clearTarget();
    return true;
}

void TavloPresentSourceMedia::closeSource()
{
    if (_site.renderTexture)
        _site.renderTexture->setAutoDraw(false);
    TavloPresentSource::closeSource();
}
