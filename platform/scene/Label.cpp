#include "scene/Label.h"

#include "scene/Renderer.h"
#include "scene/text/TextPicture.h"

#include <cmath>

namespace tavlo::scene {

Label::Label(Director& director) : Node(director), _picture(std::make_unique<TextPicture>(director))
{
    setAnchorPoint({0.5F, 0.5F});
}

Label::~Label() = default;

RefPtr<Label> Label::createWithSystemFont(Director& director, std::string_view text, std::string_view font, float size,
                                          Size dimensions)
{
    RefPtr<Label> label = makeRef<Label>(director);
    label->setString(text);
    label->setSystemFontName(font);
    label->setSystemFontSize(size);
    label->setDimensions(dimensions);
    return label;
}

void Label::setString(std::string_view utf8)
{
    if (_string == utf8)
        return;
    _string = utf8;
    markTextDirty();
}

void Label::setSystemFontName(std::string_view family)
{
    if (_style.fontFamily != family)
        setStyle(&TextStyle::fontFamily, std::string(family));
}

void Label::setSystemFontSize(float pixels) { setStyle(&TextStyle::fontSize, pixels); }
void Label::enableBold() { setStyle(&TextStyle::bold, true); }

void Label::setTextColor(Color4B color)
{
    setStyle(&TextStyle::fill, TextFill::Solid);
    setStyle(&TextStyle::fillColor, color);
}

void Label::setAlignment(TextHAlignment horizontal, TextVAlignment vertical)
{
    setStyle(&TextStyle::hAlignment, horizontal);
    setStyle(&TextStyle::vAlignment, vertical);
}

void Label::setDimensions(Size pixels) { setStyle(&TextStyle::dimensions, pixels); }

void Label::markTextDirty()
{
    _measureDirty = true;
    _rasterDirty = true;
    markTransformDirty();
}

Size Label::contentSize() const
{
    if (_measureDirty)
        _measured = _picture->measure(_string, _style);
    _measureDirty = false;
    return _measured;
}

void Label::draw(Renderer& renderer, const Affine& transform)
{
    const Color4B tint = premultiplied(displayedColor(), displayedOpacity());
    if (tint.a == 0)
        return;
    if (_rasterDirty) {
        _picture->raster(_string, _style);
        ++_rasterCount;
        _rasterDirty = false;
    }
    Affine place = transform;
    const bool rests = !_drawn || transform == _lastTransform;
    if (rests && transform.isTranslation()) {
        place.tx = std::round(transform.tx);
        place.ty = std::round(transform.ty);
    }
    _lastTransform = transform;
    _drawn = true;
    _picture->draw(renderer, place, tint);
}

} // namespace tavlo::scene
