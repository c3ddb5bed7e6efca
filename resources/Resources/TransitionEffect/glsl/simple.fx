// The picture process: loads a picture in its own layout, keys, crops and adjusts it.
effect 1

[variables]
texture sampler0
texture sampler1
texture maskInput
int     samplerChroma                 // four-character code; 1094862674 ("RGBA") for all that are no YUV layout
float   width                         // of the picture, texels
float   height
float   width_d2
float   width_d2_i
float   input_width_i_d2
int     int_width
int     int_input_width
int     int_u_plane_offset            // texels from the first one
int     int_v_plane_offset
float   alphaMask = 1
int     useMask
int     useColor
vec4    fillColor
int     flipVert0
int     flipVert1
int     mirrorHoriz0
int     mirrorHoriz1
vec4    cropRect = 0 0 1 1            // left, top, right, bottom
int     doColorAdjust
float   Hue                           // degrees
float   Brightness
float   Contrast
float   Saturation = 1
int     doChromaKey
vec2    chroma_key                    // U, V of the key colour
float   similarity
float   smoothness
float   spill
vec2    pixel_size                    // of one texel, parts of the picture
int     doLumaKey
float   lumaKey_white
float   lumaKey_black
float   lumaKey_softness
vec4    clearedColor                  // what the target holds, for the pass without blending
float   targetY = -1                  // -1: the target keeps its top row first; 1: its bottom row

// Over what the target holds. No picture of a YUV layout is drawn so in a show: what is opaque goes by `opaque`, and what
// is cut or keyed begins on a cleared target.
[technique Transprocess]
pass quad blended
    blend color src_alpha inv_src_alpha
    blend alpha src_alpha dst_alpha
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=1 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=0 doLumaKey=1 useMask=0 useColor=0 // RGBA

// The same over a target that was just cleared, which costs a third: the colour is known, so the shader blends.
pass quad replaced
    variant samplerChroma=808596553 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // I420
    variant samplerChroma=808596553 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // I420
    variant samplerChroma=842094169 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YV12
    variant samplerChroma=842094169 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YV12
    variant samplerChroma=842094158 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // NV12
    variant samplerChroma=842094158 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // NV12
    variant samplerChroma=825382478 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // NV21
    variant samplerChroma=825382478 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // NV21
    variant samplerChroma=844715353 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YUY2
    variant samplerChroma=844715353 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YUY2
    variant samplerChroma=1431918169 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YVYU
    variant samplerChroma=1431918169 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // YVYU
    variant samplerChroma=1498831189 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // UYVY
    variant samplerChroma=1498831189 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // UYVY
    variant samplerChroma=1498765654 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // VYUY
    variant samplerChroma=1498765654 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // VYUY
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=1 doChromaKey=0 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=1 doLumaKey=0 useMask=0 useColor=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=0 doChromaKey=0 doLumaKey=1 useMask=0 useColor=0 // RGBA

// A picture that is neither transparent nor cut nor keyed: nothing to blend.
pass quad opaque
    variant samplerChroma=808596553 doColorAdjust=0 // I420
    variant samplerChroma=808596553 doColorAdjust=1 // I420
    variant samplerChroma=842094169 doColorAdjust=0 // YV12
    variant samplerChroma=842094169 doColorAdjust=1 // YV12
    variant samplerChroma=842094158 doColorAdjust=0 // NV12
    variant samplerChroma=842094158 doColorAdjust=1 // NV12
    variant samplerChroma=825382478 doColorAdjust=0 // NV21
    variant samplerChroma=825382478 doColorAdjust=1 // NV21
    variant samplerChroma=844715353 doColorAdjust=0 // YUY2
    variant samplerChroma=844715353 doColorAdjust=1 // YUY2
    variant samplerChroma=1431918169 doColorAdjust=0 // YVYU
    variant samplerChroma=1431918169 doColorAdjust=1 // YVYU
    variant samplerChroma=1498831189 doColorAdjust=0 // UYVY
    variant samplerChroma=1498831189 doColorAdjust=1 // UYVY
    variant samplerChroma=1498765654 doColorAdjust=0 // VYUY
    variant samplerChroma=1498765654 doColorAdjust=1 // VYUY
    variant samplerChroma=1094862674 doColorAdjust=0 // RGBA
    variant samplerChroma=1094862674 doColorAdjust=1 // RGBA

[common]
const int VLC_CODEC_I420 = 808596553;
const int VLC_CODEC_YV12 = 842094169;
const int VLC_CODEC_NV12 = 842094158;
const int VLC_CODEC_NV21 = 825382478;
const int VLC_CODEC_YUY2 = 844715353;
const int VLC_CODEC_YVYU = 1431918169;
const int VLC_CODEC_UYVY = 1498831189;
const int VLC_CODEC_VYUY = 1498765654;

// A pixel's centre falls between two numbers; this keeps rounding from taking the neighbour.
const float PRECISION_OFFSET = 0.2;

// How a picture's bytes lie in its texture.
struct Memory
{
    vec2 texel; // the size of one, parts of the texture
    vec2 u;     // where the second component begins, column and row
    vec2 v;     // and the third one
};

// The byte at a place counted on from the start of a row, be it beyond the row's end: rows follow one another. Sampling
// in a texel's middle gives what a texel load would, for half of its cost on a software renderer.
float byteAt(vec2 place, float rowTexels, Memory memory)
{
    float rows = floor((place.x + 0.5) / rowTexels);
    place += rows * vec2(-rowTexels, 1.0);
    return textureLod(sampler0, (place + 0.5) * memory.texel, 0.0).r;
}

float lumaAt(vec2 pixel, Memory memory) { return textureLod(sampler0, (pixel + 0.5) * memory.texel, 0.0).r; }

// A picture of odd height has a last row without a chroma row of its own in the texture: it takes that above.
float chromaRow(float y) { return min(floor(y * 0.5), max(floor(height * 0.5) - 1.0, 0.0)); }

vec3 planar(vec2 pixel, Memory memory)
{
    vec2 chroma = vec2(floor(pixel.x * 0.5), chromaRow(pixel.y));
    return vec3(lumaAt(pixel, memory), byteAt(memory.v + chroma, width, memory), byteAt(memory.u + chroma, width, memory));
}

// The rows of an odd width are a byte shorter than those of the texture.
vec3 semiPlanar(vec2 pixel, Memory memory)
{
    float row = chromaRow(pixel.y);
    float shorter = width - 2.0 * floor(width * 0.5);
    vec2 first = memory.u + vec2(2.0 * floor(pixel.x * 0.5) - row * shorter, row);
    return vec3(lumaAt(pixel, memory), byteAt(first, width, memory), byteAt(first + vec2(1.0, 0.0), width, memory));
}

// Luma at the even bytes, the other two at the odd ones.
vec3 lumaFirst(vec2 pixel, Memory memory)
{
    vec2 luma = vec2(2.0 * pixel.x, pixel.y);
    vec2 second = vec2(4.0 * floor(pixel.x * 0.5) + 1.0, pixel.y);
    return vec3(lumaAt(luma, memory), lumaAt(second, memory), byteAt(second + vec2(2.0, 0.0), 2.0 * width, memory));
}

// The other two at the even bytes, luma at the odd ones.
vec3 lumaSecond(vec2 pixel, Memory memory)
{
    vec2 luma = vec2(2.0 * pixel.x + 1.0, pixel.y);
    vec2 second = vec2(4.0 * floor(pixel.x * 0.5), pixel.y);
    return vec3(lumaAt(luma, memory), lumaAt(second, memory), byteAt(second + vec2(2.0, 0.0), 2.0 * width, memory));
}

// BT.709, limited range.
vec4 fromYuv(vec3 yuv)
{
    vec3 c = yuv - vec3(0.0625, 0.5, 0.5);
    vec3 rgb = vec3(1.164 * c.x + 1.793 * c.z,
                    1.164 * c.x - 0.213 * c.y - 0.533 * c.z,
                    1.164 * c.x + 2.112 * c.y);
    return vec4(clamp(rgb, 0.0, 1.0), 1.0);
}

vec4 loadPixel(vec2 at, Memory memory)
{
    // Enlarged, the last pixels would reach beyond the last texel.
    vec2 size = vec2(width, height);
    vec2 pixel = min(floor(at * size + PRECISION_OFFSET), size - 1.0);
    switch (samplerChroma) {
    case VLC_CODEC_I420:
    case VLC_CODEC_YV12:
        return fromYuv(planar(pixel, memory));
    case VLC_CODEC_NV12:
        return fromYuv(semiPlanar(pixel, memory));
    case VLC_CODEC_NV21:
        return fromYuv(semiPlanar(pixel, memory).xzy);
    case VLC_CODEC_YUY2:
        return fromYuv(lumaFirst(pixel, memory));
    case VLC_CODEC_YVYU:
        return fromYuv(lumaFirst(pixel, memory).xzy);
    case VLC_CODEC_UYVY:
        return fromYuv(lumaSecond(pixel, memory));
    case VLC_CODEC_VYUY:
        return fromYuv(lumaSecond(pixel, memory).xzy);
    default:
        return textureLod(sampler0, at, 0.0);
    }
}

float keyDistance(vec3 rgb)
{
    vec2 chroma = vec2(dot(rgb, vec3(-0.100644, -0.338572, 0.439216)), dot(rgb, vec3(0.439216, -0.398942, -0.040274)));
    return distance(chroma_key, chroma + 0.501961);
}

float keyDistanceAt(vec2 at) { return keyDistance(textureLod(sampler0, at, 0.0).rgb); }

// A ramp from 0 at the base to 1 at the width; a width of 0 is a hard edge.
float keyRamp(float base, float rampWidth)
{
    float part = rampWidth == 0.0 ? step(0.0, base) : clamp(base / rampWidth, 0.0, 1.0);
    return part * sqrt(part);
}

vec4 chromaKeyed(vec4 pixel, vec2 at)
{
    vec2 right = vec2(pixel_size.x, 0.0);
    vec2 down = vec2(0.0, pixel_size.y);
    float sum = keyDistance(pixel.rgb)
        + keyDistanceAt(at - down - right) + keyDistanceAt(at - down) + keyDistanceAt(at - down + right)
        + keyDistanceAt(at - right) + keyDistanceAt(at + right)
        + keyDistanceAt(at + down - right) + keyDistanceAt(at + down) + keyDistanceAt(at + down + right);
    float base = sum / 9.0 - similarity;
    float kept = keyRamp(base, spill);
    float grey = clamp(dot(pixel.rgb, vec3(0.2126, 0.7152, 0.0722)), 0.0, 1.0);
    return vec4(mix(vec3(grey), pixel.rgb, kept), pixel.a * keyRamp(base, smoothness));
}

vec4 lumaKeyed(vec4 pixel)
{
    float luma = dot(pixel.rgb, vec3(0.2126, 0.7152, 0.0722));
    if (luma >= lumaKey_black && luma <= lumaKey_white)
        pixel.a = 0.0;
    else if (luma > lumaKey_black - lumaKey_softness && luma < lumaKey_black)
        pixel.a = 1.0 - (luma - lumaKey_black + lumaKey_softness) / lumaKey_softness;
    else if (luma > lumaKey_white && luma < lumaKey_white + lumaKey_softness)
        pixel.a = (luma - lumaKey_white) / lumaKey_softness;
    return pixel;
}

// Rotation about the grey axis, as a quaternion's.
vec3 hueRotated(vec3 rgb)
{
    float halfAngle = radians(Hue) * 0.5;
    vec3 axis = vec3(0.57735) * sin(halfAngle);
    return rgb + 2.0 * cross(axis, cross(axis, rgb) + cos(halfAngle) * rgb);
}

vec3 adjusted(vec3 rgb)
{
    rgb = hueRotated(rgb);
    rgb = (rgb - 0.5) * (Contrast + 1.0) + 0.5;
    rgb += Brightness;
    float intensity = dot(rgb, vec3(0.2125, 0.7154, 0.0721));
    return mix(vec3(intensity), rgb, Saturation);
}

// at: in the drawn picture; turned: the same place in the picture as it is stored
vec4 processed(vec2 at, vec2 turned, Memory memory)
{
    if (useColor != 0)
        return fillColor;
    vec4 pixel = loadPixel(turned, memory);
    if (useMask != 0)
        pixel.a *= texture(maskInput, at).r;
    if (doChromaKey != 0)
        pixel = chromaKeyed(pixel, turned);
    if (doLumaKey != 0)
        pixel = lumaKeyed(pixel);
    pixel.a *= alphaMask;
    if (at.x < cropRect.x || at.x > cropRect.z || at.y < cropRect.y || at.y > cropRect.w)
        pixel.a = 0.0;
    if (doColorAdjust != 0)
        pixel.rgb = adjusted(pixel.rgb);
    return pixel;
}

[vertex quad]
in vec3 POSITION;
in vec2 TEXCOORD;
out vec2 uv;
out vec2 turned;
flat out vec2 texel;
flat out vec4 planes;

vec2 placeOf(int offset)
{
    int rowTexels = max(int_input_width, 1);
    return vec2(offset % rowTexels, offset / rowTexels);
}

void main()
{
    gl_Position = vec4(POSITION.x, POSITION.y * targetY, 0.0, 1.0);
    uv = TEXCOORD;
    turned = vec2(mirrorHoriz0 != 0 ? 1.0 - uv.x : uv.x, flipVert0 != 0 ? 1.0 - uv.y : uv.y);
    texel = 1.0 / vec2(textureSize(sampler0, 0));
    planes = vec4(placeOf(int_u_plane_offset), placeOf(int_v_plane_offset));
}

[fragment blended]
in vec2 uv;
in vec2 turned;
flat in vec2 texel;
flat in vec4 planes;
out vec4 color;

void main() { color = processed(uv, turned, Memory(texel, planes.xy, planes.zw)); }

[fragment replaced]
in vec2 uv;
in vec2 turned;
flat in vec2 texel;
flat in vec4 planes;
out vec4 color;

void main()
{
    vec4 pixel = clamp(processed(uv, turned, Memory(texel, planes.xy, planes.zw)), 0.0, 1.0);
    color = vec4(pixel.rgb * pixel.a + clearedColor.rgb * (1.0 - pixel.a),
                 pixel.a * pixel.a + clearedColor.a * clearedColor.a);
}

[fragment opaque]
in vec2 turned;
flat in vec2 texel;
flat in vec4 planes;
out vec4 color;

void main()
{
    vec3 rgb = loadPixel(turned, Memory(texel, planes.xy, planes.zw)).rgb;
    color = vec4(doColorAdjust != 0 ? adjusted(rgb) : rgb, 1.0);
}
