#include "support/reference/ReferenceDraw.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavlo::reference {

namespace {

double unit(double value) { return std::clamp(value, 0.0, 1.0); }

/// Below a texture its last row goes on.
double redAt(const Picture& texture, long position, long pitch)
{
    const auto x = static_cast<int>(position % pitch);
    const auto y = static_cast<int>(position / pitch);
    return texture.at(x, std::min(y, texture.height - 1))[0];
}

/// The textures have no room for half a chroma row: the last row of an odd height goes with the one before.
long chromaRow(const Input& input, long y) { return std::min(y / 2, std::max(input.height / 2 - 1L, 0L)); }

struct Yuv
{
    double y, u, v;
};

Yuv loadPlanar(const Input& input, long x, long y)
{
    const long w = input.width;
    const long chroma = chromaRow(input, y) * w + x / 2;
    return {redAt(input.texture, y * w + x, w), redAt(input.texture, input.v + chroma, w),
            redAt(input.texture, input.u + chroma, w)};
}

Yuv loadHalfPlanar(const Input& input, long x, long y)
{
    const long w = input.width;
    const long chroma = input.u + 2 * (chromaRow(input, y) * (w / 2) + x / 2);
    return {redAt(input.texture, y * w + x, w), redAt(input.texture, chroma, w), redAt(input.texture, chroma + 1, w)};
}

/// Luma first in each pair: Y U Y V.
Yuv loadLumaFirst(const Input& input, long x, long y)
{
    const long w = 2L * input.width;
    const long at = y * w + 2 * x;
    const long second = x % 2 == 0 ? at + 1 : at - 1;
    return {redAt(input.texture, at, w), redAt(input.texture, second, w), redAt(input.texture, second + 2, w)};
}

/// Chroma first in each pair: U Y V Y.
Yuv loadChromaFirst(const Input& input, long x, long y)
{
    const long w = 2L * input.width;
    const long at = y * w + 2 * x;
    const long second = x % 2 == 0 ? at : at - 2;
    return {redAt(input.texture, at + 1, w), redAt(input.texture, second, w), redAt(input.texture, second + 2, w)};
}

Yuv exchanged(const Yuv& yuv) { return {yuv.y, yuv.v, yuv.u}; }

Rgba toRgb(const Yuv& yuv)
{
    const double y = 1.164 * (yuv.y - 0.0625), u = yuv.u - 0.5, v = yuv.v - 0.5;
    return {unit(y + 1.793 * v), unit(y - 0.213 * u - 0.533 * v), unit(y + 2.112 * u), 1};
}

/// Between the four nearest texels; beyond the edge its texels go on.
Rgba sample(const Picture& texture, double u, double v)
{
    const double x = u * texture.width - 0.5, y = v * texture.height - 0.5;
    const double left = std::floor(x), top = std::floor(y);
    const auto texel = [&texture](double column, double row) {
        return texture.at(std::clamp(static_cast<int>(column), 0, texture.width - 1),
                          std::clamp(static_cast<int>(row), 0, texture.height - 1));
    };
    Rgba result;
    for (std::size_t c = 0; c < 4; ++c) {
        const double upper = std::lerp(texel(left, top)[c], texel(left + 1, top)[c], x - left);
        const double lower = std::lerp(texel(left, top + 1)[c], texel(left + 1, top + 1)[c], x - left);
        result[c] = std::lerp(upper, lower, y - top);
    }
    return result;
}

QPointF turned(const Input& input, double u, double v) { return {input.mirror ? 1 - u : u, input.flip ? 1 - v : v}; }

/// value / width as a share of 0 to 1; with no width, which side of zero the value is on.
double share(double value, double width) { return width == 0 ? (value > 0 ? 1 : 0) : unit(value / width); }

double keyDistance(const Rgba& color, const std::array<float, 2>& key)
{
    const double u = -0.100644 * color[0] - 0.338572 * color[1] + 0.439216 * color[2] + 0.501961;
    const double v = 0.439216 * color[0] - 0.398942 * color[1] - 0.040274 * color[2] + 0.501961;
    return std::hypot(u - key[0], v - key[1]);
}

double luma709(const Rgba& color) { return 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2]; }

void chromaKey(Rgba& color, const Input& input, double u, double v, const tagTavloPresentPictureChromaKey& key)
{
    double sum = keyDistance(color, key.chroma_key);
    for (int down = -1; down <= 1; ++down) {
        for (int right = -1; right <= 1; ++right) {
            if (down == 0 && right == 0)
                continue;
            const QPointF place = turned(input, u + right / double(input.width), v + down / double(input.height));
            sum += keyDistance(sample(input.texture, place.x(), place.y()), key.chroma_key);
        }
    }
    const double base = sum / 9 - static_cast<double>(key.similarity);
    const double spill = std::pow(share(base, static_cast<double>(key.spill)), 1.5);
    color[3] *= std::pow(share(base, static_cast<double>(key.smoothness)), 1.5);
    const double grey = unit(luma709(color));
    for (std::size_t c = 0; c < 3; ++c)
        color[c] = std::lerp(grey, color[c], spill);
}

void lumaKey(Rgba& color, const tagTavloPresentPictureLumaKey& key)
{
    const double y = luma709(color), softness = static_cast<double>(key.softness);
    const double white = static_cast<double>(key.threshold + key.tolerance);
    const double black = static_cast<double>(key.threshold - key.tolerance);
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
    const auto cross = [s](const std::array<double, 3>& v) {
        return std::array<double, 3>{s * (v[2] - v[1]), s * (v[0] - v[2]), s * (v[1] - v[0])};
    };
    const auto once = cross({color[0], color[1], color[2]});
    const auto twice = cross(once);
    for (std::size_t i = 0; i < 3; ++i)
        color[i] += 2 * c * once[i] + 2 * twice[i];
}

void adjust(Rgba& color, const tagTavloPresentPictureColorAdjust& by)
{
    turnHue(color, static_cast<double>(by.hue));
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = (color[i] - 0.5) * (static_cast<double>(by.contrast) + 1) + 0.5 + static_cast<double>(by.brightness);
    const double intensity = 0.2125 * color[0] + 0.7154 * color[1] + 0.0721 * color[2];
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = intensity + (color[i] - intensity) * static_cast<double>(by.saturation);
}

bool isCut(double u, double v, const std::array<float, 4>& rect)
{
    return u < static_cast<double>(rect[0]) || u > static_cast<double>(rect[2]) || v < static_cast<double>(rect[1]) ||
           v > static_cast<double>(rect[3]);
}

Rgba shade(const Input& input, double u, double v, const tagTavloPresentPictureFilterParam* process)
{
    Rgba color = load(input, u, v);
    if (!process)
        return color;
    if (process->chromaKeyParam.enable)
        chromaKey(color, input, u, v, process->chromaKeyParam);
    if (process->lumaKeyParam.enable)
        lumaKey(color, process->lumaKeyParam);
    if (process->rectCropParam.enable && isCut(u, v, process->rectCropParam.cropRect))
        color[3] = 0;
    if (process->colorAdjustParam.enable)
        adjust(color, process->colorAdjustParam);
    return color;
}

/// Source alpha blending as the pictures' technique has it, alpha included: a * a + b * b. The target keeps 8 bits.
void blend(Rgba& target, const Rgba& color)
{
    // what leaves the shader for an 8-bit target is clamped before it is blended
    const Rgba source{unit(color[0]), unit(color[1]), unit(color[2]), unit(color[3])};
    const double a = source[3];
    Rgba mixed{0, 0, 0, a * a + target[3] * target[3]};
    for (std::size_t c = 0; c < 3; ++c)
        mixed[c] = source[c] * a + target[c] * (1 - a);
    target = stored(mixed);
}

/// Calls `shader` with every pixel of the target that the picture covers, and its place in the picture.
template <class Shader>
void forCovered(Picture& target, const Placement& where, const Shader& shader)
{
    for (int y = 0; y < target.height; ++y) {
        for (int x = 0; x < target.width; ++x) {
            const QPointF uv = where.toPicture({x + 0.5, y + 0.5});
            if (uv.x() >= 0 && uv.x() <= 1 && uv.y() >= 0 && uv.y() <= 1)
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

Picture::Picture(int columns, int rows, Rgba fill)
    : width(columns), height(rows), texels(static_cast<std::size_t>(columns * rows), fill)
{}

Picture::Picture(int columns, int rows, int channels, std::span<const std::uint8_t> bytes)
    : Picture(columns, rows, Rgba{0, 0, 0, 1})
{
    const auto step = static_cast<std::size_t>(channels);
    for (std::size_t i = 0; i < texels.size() * step; ++i)
        texels[i / step][i % step] = bytes[i] / 255.0;
}

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

Rgba load(const Input& input, double u, double v)
{
    const QPointF place = turned(input, u, v);
    // the 0.2 would carry the last pixels of a picture that grows out of it
    const long x = std::min(static_cast<long>(place.x() * input.width + 0.2), input.width - 1L);
    const long y = std::min(static_cast<long>(place.y() * input.height + 0.2), input.height - 1L);
    switch (input.chroma) {
    case I420:
    case YV12:
        return toRgb(loadPlanar(input, x, y));
    case NV12:
        return toRgb(loadHalfPlanar(input, x, y));
    case NV21:
        return toRgb(exchanged(loadHalfPlanar(input, x, y)));
    case YUY2:
        return toRgb(loadLumaFirst(input, x, y));
    case YVYU:
        return toRgb(exchanged(loadLumaFirst(input, x, y)));
    case UYVY:
        return toRgb(loadChromaFirst(input, x, y));
    case VYUY:
        return toRgb(exchanged(loadChromaFirst(input, x, y)));
    default:
        return sample(input.texture, place.x(), place.y());
    }
}

QPointF Placement::toPicture(QPointF target) const
{
    const QPointF right = topRight - topLeft, down = bottomLeft - topLeft, at = target - topLeft;
    const double area = right.x() * down.y() - right.y() * down.x();
    if (area == 0)
        return {-1, -1};
    return {(at.x() * down.y() - at.y() * down.x()) / area, (right.x() * at.y() - right.y() * at.x()) / area};
}

double Placement::distanceToEdge(QPointF target) const
{
    const QPointF right = topRight - topLeft, down = bottomLeft - topLeft, uv = toPicture(target);
    const double width = std::hypot(right.x(), right.y()), height = std::hypot(down.x(), down.y());
    return std::min({std::abs(uv.x()) * width, std::abs(1 - uv.x()) * width, std::abs(uv.y()) * height,
                     std::abs(1 - uv.y()) * height});
}

Placement fitted(QSizeF source, QSizeF target) { return placed({{1, 1}, {0, 0}, 0, 1, {}}, 0, source, target); }

Placement placed(const tagTavloShowDisplayItemInfo& record, int fitMode, QSizeF source, QSizeF target)
{
    // around the target's middle, y upwards
    double x0, x1, y0, y1;
    if (record.finalRect.width() > 0 && record.finalRect.height() > 0) {
        x0 = record.finalRect.x() - target.width() / 2;
        x1 = x0 + record.finalRect.width();
        y0 = -(record.finalRect.y() + record.finalRect.height() - target.height() / 2);
        y1 = y0 + record.finalRect.height();
    } else {
        const QSizeF base = fitMode == 1 ? target : fitMode == 2 ? source : aspectFit(source, target);
        const double right = target.width() * record.offset.x(), down = target.height() * record.offset.y();
        x0 = -base.width() / 2 * record.scale.x() + right;
        x1 = base.width() / 2 * record.scale.x() + right;
        y0 = -base.height() / 2 * record.scale.y() - down;
        y1 = base.height() / 2 * record.scale.y() - down;
    }
    const double angle = static_cast<double>(record.rotation) * std::numbers::pi / 180;
    const QPointF pivot(x0, (y0 + y1) / 2);
    const auto corner = [&](double x, double y) {
        const double dx = x - pivot.x(), dy = y - pivot.y();
        const double turnedX = dx * std::cos(angle) - dy * std::sin(angle) + pivot.x();
        const double turnedY = dx * std::sin(angle) + dy * std::cos(angle) + pivot.y();
        return QPointF(target.width() / 2 + turnedX, target.height() / 2 - turnedY);
    };
    return {corner(x0, y1), corner(x1, y1), corner(x0, y0)};
}

void draw(Picture& target, const Input& input, const Placement& where, const tagTavloPresentPictureFilterParam* process)
{
    forCovered(target, where, [&](Rgba& pixel, QPointF uv) { blend(pixel, shade(input, uv.x(), uv.y(), process)); });
}

void drawGray(Picture& target, const Picture& picture, const Rgba& clear)
{
    target = Picture(target.width, target.height, stored(clear));
    forCovered(target, fitted(picture.size(), target.size()), [&](Rgba& pixel, QPointF uv) {
        const Rgba color = sample(picture, uv.x(), uv.y());
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

    const auto next = [&](const tagTavloPresentPictureFilterParam& key) {
        Picture keyed = clear;
        draw(keyed, plain(result), whole, &key);
        result = keyed;
    };
    if (process.chromaKeyParam.enable) {
        pass = {};
        pass.chromaKeyParam = process.chromaKeyParam;
        next(pass);
    }
    if (process.lumaKeyParam.enable) {
        pass = {};
        pass.lumaKeyParam = process.lumaKeyParam;
        next(pass);
    }
    return result;
}

} // namespace tavlo::reference
