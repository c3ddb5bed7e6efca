#pragma once

#include "drawing/ITavloGraphicsRes.h"
#include "drawing/PictureQuad.h"

#include <QSizeF>

#include <initializer_list>
#include <string_view>

namespace tavlo {

/// One draw of a quad through an effect, from binding its target to leaving the context as it was found.
///
/// The variables are those of the effect, set by name. One that cannot be set is told in the log, and the draw goes on.
class EffectDraw
{
public:
    /// Binds the target and the viewport. There is no depth: no effect tests or writes any, and a software renderer would
    /// have to draw what is covered, too.
    EffectDraw(graphics::Context& context, ITavloGraphicsRes& resources, int effectIndex, graphics::TexturePtr target);

    /// Lets go of the inputs, clears the context's state and binds again what was bound before.
    ~EffectDraw();
    EffectDraw(const EffectDraw&) = delete;
    EffectDraw& operator=(const EffectDraw&) = delete;

    void setFloat(std::string_view name, float value);
    void setVector(std::string_view name, std::initializer_list<float> values);
    void setInt(std::string_view name, int value);

    /// \param exact  the picture is drawn texel by texel: no filter is needed, which is much cheaper
    void setPicture(std::string_view name, graphics::TexturePtr picture, bool exact = false);

    void setTexture(std::string_view name, graphics::TexturePtr texture, graphics::Sampler sampler);

    /// Sets the pass up and draws two triangles of four vertices of the buffer.
    void draw(std::uint32_t pass, const graphics::BufferPtr& vertices, const graphics::BufferPtr& indices);

    /// The same with the pass that the context has been set up for.
    void drawApplied(const graphics::BufferPtr& vertices, const graphics::BufferPtr& indices);

private:
    graphics::Context& _context;
    effects::Effect& _effect;
    const effects::EffectTechnique& _technique;
    const std::shared_ptr<const graphics::InputLayout>& _layout;
    graphics::TexturePtr _savedTarget;
    graphics::TexturePtr _savedDepth;
    std::shared_ptr<const graphics::InputLayout> _savedLayout;
};

} // namespace tavlo
