#include "scene/text/TextBounds.h"

#include "scene/text/AlphaBlur.h"

#include <algorithm>
#include <cmath>

namespace tavlo::scene {

namespace {

constexpr qreal emptyBorder = 2; // pixels, on both sides together, which a picture has for filtering

} // namespace

float bounded(float value, float low, float high) { return value > low ? std::min(value, high) : low; }

QMarginsF reachOf(const TextStyle& style)
{
    const bool outlined = style.outlineColor.a > 0 && style.outlineSize > 0;
    const float outline = outlined ? style.outlineSize : 0;
    const qreal around = static_cast<qreal>(outline + blurReach(outlined ? style.outlineBlur / 2 : 0));
    if (style.shadowColor.a == 0)
        return {around, around, around, around};
    const qreal shadow = static_cast<qreal>(outline + blurReach(style.shadowBlur / 2));
    const qreal right = static_cast<qreal>(style.shadowOffset.x), down = -static_cast<qreal>(style.shadowOffset.y);
    const auto reach = [=](qreal shift) { return std::max(around, shadow + std::max(shift, 0.0)); }; // made, then moved
    return {reach(-right), reach(-down), reach(right), reach(down)};
}

QSize boundedPicture(QSize size)
{
    const int height = std::min(size.height(), tallestText);
    return {std::min({size.width(), longestText, mostTextPixels / std::max(height, 1)}), height};
}

QSizeF boundedText(QSizeF size, const TextStyle& style)
{
    const QMarginsF reach = reachOf(style);
    const qreal beside = std::ceil(reach.left()) + std::ceil(reach.right()) + emptyBorder;
    const qreal above = std::ceil(reach.top()) + std::ceil(reach.bottom()) + emptyBorder;
    const qreal height = std::min(size.height(), tallestText - above);
    return {std::min({size.width(), longestText - beside, std::floor(mostTextPixels / (height + above)) - beside}),
            height};
}

} // namespace tavlo::scene
