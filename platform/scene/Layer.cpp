#include "scene/Layer.h"

#include "scene/GLView.h"
#include "scene/Renderer.h"

namespace tavlo::scene {

Layer::Layer(Director& director) : Node(director)
{
    setAnchorPoint({0.5F, 0.5F});
    setIgnoreAnchorPointForPosition(true);
    if (const GLView* const view = director.openGLView())
        setContentSize(view->frameSize());
}

LayerColor::LayerColor(Director& director, Color4B color) : Layer(director)
{
    setColor({color.r, color.g, color.b});
    setOpacity(color.a);
    setCascadeColorEnabled(false);
    setCascadeOpacityEnabled(false);
}

RefPtr<LayerColor> LayerColor::create(Director& director, Color4B color)
{
    return makeRef<LayerColor>(director, color);
}

RefPtr<LayerColor> LayerColor::create(Director& director, Color4B color, Size size)
{
    RefPtr<LayerColor> layer = create(director, color);
    layer->setContentSize(size);
    return layer;
}

void LayerColor::setContentSize(Size size)
{
    _coversTarget = false;
    Layer::setContentSize(size);
}

void LayerColor::draw(Renderer& renderer, const Affine& transform)
{
    const Color4B tint = premultiplied(displayedColor(), displayedOpacity());
    const Size size = _coversTarget ? renderer.targetSize() : contentSize();
    renderer.drawQuad(_coversTarget ? Affine{} : transform, {0, 0, size.width, size.height}, {}, tint, {nullptr});
}

} // namespace tavlo::scene
