#include "drawing/PictureQuad.h"

#include <tavlo/records/ShowRecords.h>

#include <cmath>
#include <numbers>

namespace tavlo {

namespace {

/// A rectangle in pixels around the target's middle, y up.
struct Edges
{
    float x0, y0, x1, y1;
};

Edges centred(float width, float height) { return {-width / 2, -height / 2, width / 2, height / 2}; }

Edges fitted(QSizeF source, QSizeF target)
{
    const auto targetWidth = static_cast<float>(target.width());
    const auto targetHeight = static_cast<float>(target.height());
    if (source.isEmpty())
        return centred(targetWidth, targetHeight);
    const auto aspect = static_cast<float>(source.width()) / static_cast<float>(source.height());
    float width = targetWidth;
    float height = targetHeight;
    if (source.height() > source.width()) {
        width = aspect * targetHeight;
        if (width > targetWidth) {
            height = targetHeight / (width / targetWidth);
            width = height * aspect;
        }
    } else {
        height = targetWidth / aspect;
        if (height > targetHeight) {
            width = targetWidth / (height / targetHeight);
            height = width / aspect;
        }
    }
    return centred(width, height);
}

Edges placed(const tagTavloShowDisplayItemInfo& placement, int fitMode, QSizeF source, QSizeF target)
{
    const auto width = static_cast<float>(target.width());
    const auto height = static_cast<float>(target.height());
    const QRectF& fixed = placement.finalRect;
    if (fixed.width() > 0.0 && fixed.height() > 0.0) {
        const float x0 = static_cast<float>(fixed.x()) - width / 2;
        const float y0 = -(static_cast<float>(fixed.y() + fixed.height()) - height / 2);
        return {x0, y0, x0 + static_cast<float>(fixed.width()), y0 + static_cast<float>(fixed.height())};
    }
    Edges edges = fitMode == FitModeStretch ? centred(width, height)
                  : fitMode == FitModeOwnSize
                      ? centred(static_cast<float>(source.width()), static_cast<float>(source.height()))
                      : fitted(source, target);
    const auto scaleX = static_cast<float>(placement.scale.x());
    const auto scaleY = static_cast<float>(placement.scale.y());
    const float moveX = width * static_cast<float>(placement.offset.x());
    const float moveY = height * static_cast<float>(placement.offset.y());
    return {edges.x0 * scaleX + moveX, edges.y0 * scaleY - moveY, edges.x1 * scaleX + moveX, edges.y1 * scaleY - moveY};
}

Quad corners(const Edges& edges)
{
    Quad quad = fullQuad;
    quad[0].x = quad[3].x = edges.x0;
    quad[1].x = quad[2].x = edges.x1;
    quad[0].y = quad[1].y = edges.y0;
    quad[2].y = quad[3].y = edges.y1;
    return quad;
}

void rotate(Quad& quad, float degrees, float pivotX, float pivotY)
{
    const float angle = degrees * std::numbers::pi_v<float> / 180.0F;
    const float sine = std::sin(angle);
    const float cosine = std::cos(angle);
    for (QuadVertex& vertex : quad) {
        const float dx = vertex.x - pivotX;
        const float dy = vertex.y - pivotY;
        vertex.x = dx * cosine - dy * sine + pivotX;
        vertex.y = dx * sine + dy * cosine + pivotY;
    }
}

Quad toDevice(Quad quad, QSizeF target)
{
    for (QuadVertex& vertex : quad) {
        vertex.x = vertex.x / static_cast<float>(target.width()) * 2;
        vertex.y = vertex.y / static_cast<float>(target.height()) * 2;
    }
    return quad;
}

} // namespace

Quad fitQuad(QSizeF source, QSizeF target) { return toDevice(corners(fitted(source, target)), target); }

Quad placedQuad(const tagTavloShowDisplayItemInfo& placement, int fitMode, QSizeF source, QSizeF target)
{
    const Edges edges = placed(placement, fitMode, source, target);
    Quad quad = corners(edges);
    if (placement.rotation != 0.0F)
        rotate(quad, placement.rotation, edges.x0, (edges.y0 + edges.y1) / 2);
    return toDevice(quad, target);
}

} // namespace tavlo
