#pragma once

#include "scene/Node.h"

namespace tavlo::scene {

/// A node that stands with its left bottom at its position; its anchor, the middle at first, is only the pivot of scale
/// and rotation. As made it has the view's size. Frame thread.
class Layer : public Node
{
public:
    static RefPtr<Layer> create(Director& director) { return makeRef<Layer>(director); }
    explicit Layer(Director& director);
    std::string_view className() const override { return "Layer"; }
};

/// A filled rectangle. Its colour and opacity are its own: children do not take them over.
class LayerColor : public Layer
{
public:
    /// Covers the whole target that it is drawn into, whatever size that has, until it is given a size.
    static RefPtr<LayerColor> create(Director& director, Color4B color);
    static RefPtr<LayerColor> create(Director& director, Color4B color, Size size);
    LayerColor(Director& director, Color4B color);
    std::string_view className() const override { return "LayerColor"; }

    void setContentSize(Size size) override;

protected:
    void draw(Renderer& renderer, const Affine& transform) override;

private:
    bool _coversTarget = true;
};

} // namespace tavlo::scene
