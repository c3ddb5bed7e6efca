#pragma once

#include "graphics/Texture.h"
#include "scene/GLProgram.h"
#include "scene/Node.h"

#include <string>

namespace tavlo::scene {

/// What the alpha of a texture means.
enum class TextureAlpha : std::uint8_t
{
    Premultiplied, ///< colour is multiplied by it: files, labels, and whatever was drawn into a target
    Straight,      ///< colour stands for itself
    Ignored,       ///< not read; drawing is a good deal cheaper
    Opaque         ///< 1 everywhere; what fills a target pixel by pixel is copied, which is cheaper still
};

/// A picture. Textures keep their top row first, as all pictures do here. The anchor is the middle. Frame thread.
class Sprite : public Node
{
public:
    /// Empty: draws nothing.
    static RefPtr<Sprite> create(Director& director) { return makeRef<Sprite>(director); }
    static RefPtr<Sprite> createWithTexture(Director& director, graphics::TexturePtr texture);
    explicit Sprite(Director& director);
    std::string_view className() const override { return "Sprite"; }

    /// A file in UTF-8, found through the director's `FileUtils`. False, and the reason in the log, when it is not there
    /// or no picture; the sprite stays as it was.
    bool initWithFile(const std::string& path);

    /// False for null.
    bool initWithTexture(graphics::TexturePtr texture);

    /// Changes the picture and nothing else; a texture of another size shows the rectangle that it showed before, as far
    /// as it goes. On a sprite that has none yet it is `initWithTexture`. Null empties the sprite.
    void setTexture(graphics::TexturePtr texture);
    const graphics::TexturePtr& texture() const { return _texture; }

    /// The part of the texture that is shown, in texels, with y counted from the top row. The content size becomes the
    /// rectangle's, or the one given.
    void setTextureRect(const Rect& texels);
    void setTextureRect(const Rect& texels, Size contentSize);
    const Rect& textureRect() const { return _textureRect; }

    /// Upside down, for a picture that keeps its bottom row first.
    void setFlippedY(bool flipped) { _flippedY = flipped; }
    bool isFlippedY() const { return _flippedY; }
    void setFlippedX(bool flipped) { _flippedX = flipped; }
    bool isFlippedX() const { return _flippedX; }

    void setTextureAlpha(TextureAlpha alpha) { _alpha = alpha; }
    TextureAlpha textureAlpha() const { return _alpha; }

    /// Null: the plain one again.
    void setGLProgramState(RefPtr<GLProgramState> state) { _state = std::move(state); }
    GLProgramState* glProgramState() const { return _state.get(); }

protected:
    void draw(Renderer& renderer, const Affine& transform) override;

private:
    graphics::TexturePtr _texture;
    RefPtr<GLProgramState> _state;
    Rect _textureRect;
    TextureAlpha _alpha = TextureAlpha::Premultiplied;
    bool _flippedX = false;
    bool _flippedY = false;
};

} // namespace tavlo::scene
