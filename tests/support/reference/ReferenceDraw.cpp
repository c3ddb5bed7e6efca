#include "support/reference/ReferenceDraw.h"

#include <numbers>

namespace tavlo::reference {

namespace {

Rgba toRgb(double luma, double blue, double red)
{
    const double y = 1.164 * (luma - 0.0625), u = blue - 0.5, v = red - 0.5;
    return {unit(y + 1.793 * v), unit(y - 0.213 * u - 0.533 * v), unit(y + 2.112 * u), 1};
}

/// Texel loads of a layout of luma and chroma.
Rgba loadYuv(const Input& input, long x, long y)
{
    const long w = input.width;
    const auto yuv = [&](long pitch, long luma, long u, long v) {
        // below a texture its last row goes on
        const auto red = [&](long i) {
            return input.texture.at(int(i % pitch), std::min(int(i / pitch), input.texture.height - 1))[0];
        };
        return toRgb(red(luma), red(u), red(v));
    };
    // The textures have no room for half a chroma row: the last row of an odd height goes with the one before.
    const long row = std::min(y / 2, std::max(input.height / 2 - 1L, 0L));
    const long plane = row * w + x / 2, pair = input.u + 2 * (row * (w / 2) + x / 2);
    // Two pixels in four bytes, by the places of the first luma and of the chroma.
    const auto packed = [&](int luma, int u, int v) {
        const long four = 2 * (y * w + x - x % 2);
        return yuv(2 * w, four + luma + 2 * (x % 2), four + u, four + v);
    };
    switch (input.chroma) {
    case NV12:
        return yuv(w, y * w + x, pair, pair + 1);
    case NV21:
        return yuv(w, y * w + x, pair + 1, pair);
    case YUY2:
        return packed(0, 1, 3);
    case YVYU:
        return packed(0, 3, 1);
    case UYVY:
        return packed(1, 0, 2);
    case VYUY:
        return packed(1, 2, 0);
    default:
        return yuv(w, y * w + x, input.v + plane, input.u + plane);
    }
}

Vector turned(const Input& input, Vector uv) { return {input.mirror ? 1 - uv.x : uv.x, input.flip ? 1 - uv.y : uv.y}; }

/// The colour at a place of the picture; flips and mirrors first.
Rgba load(const Input& input, Vector uv)
{
    const Vector place = turned(input, uv);
    if (shapeOf(input.chroma, 1, 1).channels == 4)
        return input.texture.at(place);
    // the 0.2 would carry the last pixels of a picture that grows out of it
    return loadYuv(input, std::min(long(place.x * input.width + 0.2), input.width - 1L),
                   std::min(long(place.y * input.height + 0.2), input.height - 1L));
}

/// value / width as a share of 0 to 1; with no width, which side of zero the value is on.
double share(double value, double width) { return width == 0 ? (value > 0 ? 1 : 0) : unit(value / width); }

double keyDistance(const Rgba& color, const std::array<float, 2>& key)
{
    const double u = -0.100644 * color[0] - 0.338572 * color[1] + 0.439216 * color[2] + 0.501961;
    const double v = 0.439216 * color[0] - 0.398942 * color[1] - 0.040274 * color[2] + 0.501961;
    return std::hypot(u - key[0], v - key[1]);
}

double luma709(const Rgba& color) { return 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2]; }

void chromaKey(Rgba& color, const Input& input, Vector uv, const tagTavloPresentPictureChromaKey& key)
{
    double sum = keyDistance(color, key.chroma_key);
    for (const int i : {0, 1, 2, 3, 5, 6, 7, 8}) { // the neighbours in three rows
        const Vector step{(i % 3 - 1) / double(input.width), (i / 3 - 1) / double(input.height)};
        sum += keyDistance(input.texture.at(turned(input, uv + step)), key.chroma_key);
    }
    const double base = sum / 9 - key.similarity;
    const double spill = std::pow(share(base, key.spill), 1.5);
    color[3] *= std::pow(share(base, key.smoothness), 1.5);
    const double grey = unit(luma709(color));
    for (std::size_t c = 0; c < 3; ++c)
        color[c] = std::lerp(grey, color[c], spill);
}

void lumaKey(Rgba& color, const tagTavloPresentPictureLumaKey& key)
{
    const double y = luma709(color), softness = key.softness;
    const double white = key.threshold + key.tolerance;
    const double black = key.threshold - key.tolerance;
    if (y >= black && y <= white)
        color[3] = 0;
    else if (y > black - softness && y < black)
        color[3] = 1 - (y - black + softness) / softness;
    else if (y > white && y < white + softness)
        color[3] = (y - white) / softness;
}

/// Turns the colour about the grey axis: v + 2c (q x v) + 2 q x (q x v), with the quaternion (q, c).
void turnHue(Rgba& color, double degrees)
{
    const double half = degrees * std::numbers::pi / 360, s = 0.57735 * std::sin(half), c = std::cos(half);
    const auto cross = [s](const Rgba& v) { return Rgba{s * (v[2] - v[1]), s * (v[0] - v[2]), s * (v[1] - v[0]), 0}; };
    const Rgba once = cross(color);
    color = color + once * (2 * c) + cross(once) * 2;
}

void adjust(Rgba& color, const tagTavloPresentPictureColorAdjust& by)
{
    turnHue(color, by.hue);
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = (color[i] - 0.5) * (by.contrast + 1) + 0.5 + by.brightness;
    const double intensity = 0.2125 * color[0] + 0.7154 * color[1] + 0.0721 * color[2];
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = intensity + (color[i] - intensity) * by.saturation;
}

Rgba shade(const Input& input, Vector uv, const tagTavloPresentPictureFilterParam* process)
{
    Rgba color = load(input, uv);
    if (!process)
        return color;
    if (process->chromaKeyParam.enable)
        chromaKey(color, input, uv, process->chromaKeyParam);
    if (process->lumaKeyParam.enable)
        lumaKey(color, process->lumaKeyParam);
    const auto& kept = process->rectCropParam.cropRect;
    if (process->rectCropParam.enable && (uv.x < kept[0] || uv.x > kept[2] || uv.y < kept[1] || uv.y > kept[3]))
        color[3] = 0;
    if (process->colorAdjustParam.enable)
        adjust(color, process->colorAdjustParam);
    return color;
}

/// Source alpha blending as the pictures' technique has it, alpha included: a * a + b * b. The target keeps 8 bits.
void blend(Rgba& target, const Rgba& color)
{
    // what leaves the shader for an 8-bit target is clamped before it is blended
    const double a = unit(color[3]);
    Rgba mixed{0, 0, 0, a * a + target[3] * target[3]};
    for (std::size_t c = 0; c < 3; ++c)
        mixed[c] = std::lerp(target[c], unit(color[c]), a);
    target = stored(mixed);
}

/// Calls `shader` with every pixel of the target that the picture covers, and its place in the picture.
template <class Shader>
void forCovered(Picture& target, const Placement& where, const Shader& shader)
{
    for (int y = 0; y < target.height; ++y) {
        for (int x = 0; x < target.width; ++x) {
            const Vector uv = where.toPicture({x + 0.5, y + 0.5});
            if (uv.x >= 0 && uv.x <= 1 && uv.y >= 0 && uv.y <= 1)
                shader(target.at(x, y), uv);
        }
    }
}

QSizeF aspectFit(QSizeF source, QSizeF target)
{
    const double aspect = source.width() / source.height();
    const double width = std::min(target.width(), target.height() * aspect);
    return {width, width / aspect};
}

} // namespace

Rgba stored(const Rgba& color)
{
    Rgba result;
    for (std::size_t c = 0; c < 4; ++c)
        result[c] = std::floor(unit(color[c]) * 255 + 0.5) / 255;
    return result;
}

Shape shapeOf(std::uint32_t chroma, int width, int height)
{
    const auto luma = static_cast<std::uint32_t>(width * height);
    switch (chroma) {
    case I420:
    case YV12:
        return {width, height + height / 2 * 2, 1, luma, luma + luma / 2};
    case NV12:
    case NV21:
        return {width, height + height / 2, 1, luma, 0};
    case YUY2:
    case YVYU:
    case UYVY:
    case VYUY:
        return {2 * width, height, 1, 0, 0};
    default:
        return {width, height, 4, 0, 0};
    }
}

Input plain(const Picture& picture, bool flip, bool mirror)
{
    return {RV32, picture, picture.width, picture.height, 0, 0, flip, mirror};
}

Vector Placement::toPicture(Vector target) const
{
    const Vector right = topRight - topLeft, down = bottomLeft - topLeft, at = target - topLeft;
    const double area = right.x * down.y - right.y * down.x;
    if (area == 0)
        return {-1, -1};
    return {(at.x * down.y - at.y * down.x) / area, (right.x * at.y - right.y * at.x) / area};
}

double Placement::distanceToEdge(Vector target) const
{
    const Vector uv = toPicture(target);
    return std::min(std::min(std::abs(uv.x), std::abs(1 - uv.x)) * length(topRight - topLeft),
                    std::min(std::abs(uv.y), std::abs(1 - uv.y)) * length(bottomLeft - topLeft));
}

Placement fitted(QSizeF source, QSizeF target) { return placed({{1, 1}, {0, 0}, 0, 1, {}}, 0, source, target); }

Placement placed(const tagTavloShowDisplayItemInfo& record, int fitMode, QSizeF source, QSizeF target)
{
    // around the target's middle, y downwards
    const QRectF& final = record.finalRect;
    Vector middle{final.x() + final.width() / 2 - target.width() / 2,
                  final.y() + final.height() / 2 - target.height() / 2};
    Vector half{final.width() / 2, final.height() / 2};
    if (final.width() <= 0 || final.height() <= 0) {
        const QSizeF base = fitMode == 1 ? target : fitMode == 2 ? source : aspectFit(source, target);
        middle = {target.width() * record.offset.x(), target.height() * record.offset.y()};
        half = {base.width() / 2 * record.scale.x(), base.height() / 2 * record.scale.y()};
    }
    const double angle = record.rotation * std::numbers::pi / 180;
    const auto corner = [&](double right, double down) { // of the middle of the left edge, about which it turns
        return Vector{target.width() / 2 + middle.x - half.x + right * std::cos(angle) + down * std::sin(angle),
                      target.height() / 2 + middle.y - right * std::sin(angle) + down * std::cos(angle)};
    };
    return {corner(0, -half.y), corner(2 * half.x, -half.y), corner(0, half.y)};
}

void draw(Picture& target, const Input& input, const Placement& where, const tagTavloPresentPictureFilterParam* process)
{
    forCovered(target, where, [&](Rgba& pixel, Vector uv) { blend(pixel, shade(input, uv, process)); });
}

void drawGray(Picture& target, const Picture& picture, const Rgba& clear)
{
    target = Picture(target.width, target.height, stored(clear));
    forCovered(target, fitted(picture.size(), target.size()), [&](Rgba& pixel, Vector uv) {
        const Rgba color = picture.at(uv);
        const double grey = 0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2];
        pixel = stored({grey, grey, grey, 1});
    });
}

Picture drawKeyedSource(const Picture& target, const Input& input, const tagTavloPresentPictureFilterParam& process,
                        bool clearFirst)
{
    const Picture clear(target.width, target.height);
    const Placement whole = fitted(target.size(), target.size());

    Input source = input;
    source.flip = input.flip != (process.processParam.vFlip != 0);
    source.mirror = process.processParam.hMirror != 0;
    tagTavloPresentPictureFilterParam pass;
    pass.rectCropParam = process.rectCropParam;
    pass.colorAdjustParam = process.colorAdjustParam;
    Picture result = clearFirst || process.rectCropParam.enable ? clear : target;
    draw(result, source, fitted({double(source.width), double(source.height)}, target.size()), &pass);

    const auto next = [&](bool enabled, auto part) {
        if (!enabled)
            return;
        pass = {};
        pass.*part = process.*part;
        Picture keyed = clear;
        draw(keyed, plain(result), whole, &pass);
        result = keyed;
    };
    next(process.chromaKeyParam.enable, &tagTavloPresentPictureFilterParam::chromaKeyParam);
    next(process.lumaKeyParam.enable, &tagTavloPresentPictureFilterParam::lumaKeyParam);
    return result;
}

} // namespace tavlo::reference
