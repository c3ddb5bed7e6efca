#include "scene/Label.h"

#include "scene/Renderer.h"
#include "scene/text/TextBounds.h"
#include "scene/text/TextPicture.h"

#include <cmath>
#include <utility>

namespace tavlo::scene {

namespace {

constexpr std::uint64_t framesBetweenTries = 25; // what the device refuses costs a whole painting
constexpr float unmoved = 1.0F / 256;            // pixels: what rounding may make of a place

} // namespace

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

void Label::setSystemFontSize(float pixels)
{
    setStyle(&TextStyle::fontSize, bounded(pixels, smallestFont, largestFont));
}

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

void Label::setDimensions(Size pixels)
{
    setStyle(&TextStyle::dimensions, {bounded(pixels.width, 0, longestText), bounded(pixels.height, 0, tallestText)});
}

void Label::markTextDirty()
{
    _measureDirty = true;
    _rasterDirty = true;
    _nextTry = 0;
    markTransformDirty();
}

Size Label::contentSize() const
{
    if (_measureDirty)
        _measured = _picture->shape(_string, _style);
    _measureDirty = false;
    return _measured;
}

void Label::draw(Renderer& renderer, const Affine& transform)
{
    const Color4B tint = premultiplied(displayedColor(), displayedOpacity());
    if (tint.a == 0)
        return;
    if (_rasterDirty && renderer.frame() >= _nextTry)
        raster(renderer.frame());
    Affine place = transform;
    if (takePlace(transform) && transform.isTranslation()) {
        place.tx = std::round(transform.tx);
        place.ty = std::round(transform.ty);
    }
    _picture->draw(renderer, place, tint);
}

void Label::raster(std::uint64_t frame)
{
    contentSize(); // shapes the words
    _rasterDirty = !_picture->raster(_style);
    if (_rasterDirty)
        _nextTry = frame + framesBetweenTries;
    else
        ++_rasterCount;
}

// What rests is the anchor: words of another width around it have not moved.
bool Label::takePlace(const Affine& transform)
{
    const Size size = contentSize();
    const Vec2 anchor = ignoresAnchorForPosition() ? Vec2{} : anchorPoint();
    const Vec2 place = transform({anchor.x * size.width, anchor.y * size.height});
    const Affine now{transform.a, transform.b, transform.c, transform.d, place.x, place.y};
    const Affine last = std::exchange(_lastPlace, now);
    const bool moved = now.a != last.a || now.b != last.b || now.c != last.c || now.d != last.d ||
                       length(place - Vec2{last.tx, last.ty}) > unmoved;
    return !std::exchange(_drawn, true) || !moved;
}

} // namespace tavlo::scene
