// The image filters: each a short sequence of the same building blocks.
effect 1

[variables]
texture sampler0
texture sampler1                 // the picture below, for ScreenBlend
texture maskInput
texture curve
texture grey1Frame               // what these five hold, each filter says
texture grey2Frame
texture grey3Frame
texture grey4Frame
texture grey5Frame
int     doBlendMethod            // the filter; any other number shows the picture as it is
int     flipVert0
int     flipVert1
int     mirrorHoriz0
int     mirrorHoriz1
vec2    singleStepOffset         // of one texel, parts of the picture
float   strength = 1
float   scaleDY = 0.5
vec4    clearedColor             // what the target holds
float   targetY = -1             // -1: the target keeps its top row first; 1: its bottom row

[technique Transprocess]
pass quad filtered
    variant doBlendMethod=1      // FAIRYTALE
    variant doBlendMethod=2      // SUNRISE
    variant doBlendMethod=3      // SUNSET
    variant doBlendMethod=4      // HEALTHY
    variant doBlendMethod=5      // SWEETS
    variant doBlendMethod=6      // ROMANCE
    variant doBlendMethod=7      // WARM
    variant doBlendMethod=8      // ANTIQUE
    variant doBlendMethod=9      // CALM
    variant doBlendMethod=10     // LATTE
    variant doBlendMethod=11     // COOL
    variant doBlendMethod=12     // CRAYON
    variant doBlendMethod=13     // SKETCH
    variant doBlendMethod=14     // AMARO
    variant doBlendMethod=15     // BRANNAN
    variant doBlendMethod=16     // BROOKLYN
    variant doBlendMethod=17     // EARLYBIRD
    variant doBlendMethod=18     // HUDSON
    variant doBlendMethod=19     // INKWELL
    variant doBlendMethod=20     // TOASTER2
    variant doBlendMethod=21     // DY
    variant doBlendMethod=22     // ScreenBlend

[vertex quad]
in vec3 POSITION;
in vec2 TEXCOORD;
out vec2 uv;

void main()
{
    gl_Position = vec4(POSITION.x, POSITION.y * targetY, 0.0, 1.0);
    uv = TEXCOORD;
}

[fragment filtered]
in vec2 uv;
out vec4 color;

const int FAIRYTALE = 1;
const int SUNRISE = 2;
const int SUNSET = 3;
const int HEALTHY = 4;
const int SWEETS = 5;
const int ROMANCE = 6;
const int WARM = 7;
const int ANTIQUE = 8;
const int CALM = 9;
const int LATTE = 10;
const int COOL = 11;
const int CRAYON = 12;
const int SKETCH = 13;
const int AMARO = 14;
const int BRANNAN = 15;
const int BROOKLYN = 16;
const int EARLYBIRD = 17;
const int HUDSON = 18;
const int INKWELL = 19;
const int TOASTER2 = 20;
const int DY = 21;
const int SCREEN_BLEND = 22;

const vec3 LUMA = vec3(0.299, 0.587, 0.114);

// --- what is read

vec2 turned(vec2 at)
{
    return vec2(mirrorHoriz0 != 0 ? 1.0 - at.x : at.x, flipVert0 != 0 ? 1.0 - at.y : at.y);
}

vec4 sourceAt(vec2 at) { return textureLod(sampler0, turned(at), 0.0); }
vec4 below() { return textureLod(sampler1, turned(uv), 0.0); }

// A light that lies on the picture, and a weight for each pixel.
vec3 light(sampler2D image) { return textureLod(image, uv, 0.0).rgb; }
float weight(sampler2D mask) { return textureLod(mask, uv, 0.0).r; }

// Each channel through its own channel of a table's row.
vec3 level(vec3 c, sampler2D table, float row)
{
    return vec3(textureLod(table, vec2(c.r, row), 0.0).r,
                textureLod(table, vec2(c.g, row), 0.0).g,
                textureLod(table, vec2(c.b, row), 0.0).b);
}

// A colour for one value.
vec3 tone(float value, sampler2D table) { return textureLod(table, vec2(value, 0.0), 0.0).rgb; }

// Each channel through its own channel of a map: what lies on top to the right, the picture's own value down.
vec3 mapped(vec3 top, vec3 c, sampler2D map)
{
    return vec3(textureLod(map, vec2(top.r, c.r), 0.0).r,
                textureLod(map, vec2(top.g, c.g), 0.0).g,
                textureLod(map, vec2(top.b, c.b), 0.0).b);
}

// --- building blocks, on colours 0..1

float luma(vec3 c) { return dot(c, LUMA); }

vec3 overlay(vec3 base, vec3 top)
{
    vec3 product = 2.0 * base * top;
    return mix(product, 2.0 * (base + top) - product - 1.0, greaterThanEqual(base, vec3(0.5)));
}

vec3 overlayBlack(vec3 base) { return max(2.0 * base - 1.0, 0.0); }
vec3 exclusion(vec3 a, vec3 b) { return a + b - 2.0 * a * b; }
vec3 multiply(vec3 a, vec3 b) { return a * b * 1.01; }
vec3 screen(vec3 a, vec3 b) { return 1.0 - (1.0 - a) * (1.0 - b); }

vec3 adjust(vec3 c, float brightness, float contrast, float saturation)
{
    c *= brightness + 1.0;
    c = mix(vec3(luma(c)), c, saturation + 1.0);
    return mix(vec3(0.5), c, contrast + 1.0);
}

vec3 vibrance(vec3 c, float amount)
{
    float most = max(c.r, max(c.g, c.b));
    float mean = (c.r + c.g + c.b) / 3.0;
    return mix(c, vec3(most), (most - mean) * -amount);
}

float hue(vec3 c)
{
    vec4 p = c.g < c.b ? vec4(c.bg, -1.0, 2.0 / 3.0) : vec4(c.gb, 0.0, -1.0 / 3.0);
    vec4 q = c.r < p.x ? vec4(p.xyw, c.r) : vec4(c.r, p.yzx);
    float chroma = q.x - min(q.w, q.y);
    return abs(q.z + (q.w - q.y) / (6.0 * chroma + 1.0e-10));
}

// The saturation of hue, saturation and value, multiplied: a way towards the grey of the largest channel.
vec3 saturated(vec3 c, float factor) { return mix(vec3(max(c.r, max(c.g, c.b))), c, factor); }

// --- the filters

// A tile of the colour cube: red goes right and green down in it. The image holds red and blue exchanged.
vec3 fairyTile(float number, vec2 redGreen)
{
    float row = floor(number / 8.0);
    vec2 tile = vec2(number - 8.0 * row, row);
    return textureLod(maskInput, tile * 0.125 + 0.5 / 512.0 + (0.125 - 1.0 / 512.0) * redGreen, 0.0).bgr;
}

vec3 fairytale(vec3 c)
{
    float blue = c.b * 63.0;
    return mix(fairyTile(floor(blue), c.rg), fairyTile(ceil(blue), c.rg), fract(blue));
}

vec3 sunrise(vec3 c)
{
    c = mix(c, overlayBlack(c), 0.1019 * weight(grey1Frame));
    c = mix(c, exclusion(c, vec3(0.098, 0.0, 0.1843)), 0.6);
    c = mix(c, level(c, curve, 0.0), weight(grey2Frame));
    c = mix(c, level(c, curve, 1.0), weight(grey3Frame));
    c = overlay(c, vec3(0.6117));
    return mix(c, exclusion(c, vec3(0.113725, 0.0039, 0.0)), 0.3);
}

vec3 sunset(vec3 c)
{
    c = mix(c, level(c, curve, 0.0), weight(grey2Frame));
    c = vec3(textureLod(curve, vec2(c.r, 0.0), 0.0).a,
             textureLod(curve, vec2(c.g, 0.0), 0.0).a,
             textureLod(curve, vec2(c.b, 0.0), 0.0).a);
    c = mix(c, exclusion(c, vec3(0.08627, 0.03529, 0.15294)), 0.6784);
    c = overlay(c, vec3(0.6431, 0.5882, 0.5803));
    return mix(c, overlayBlack(c), 0.549 * weight(grey1Frame));
}

// Skin, which is what has these hues, loses a little of its colour and gains light.
vec3 healthy(vec3 c)
{
    float at = hue(c);
    float beside = max(max(0.125 - at, at - 0.208), 0.0);
    c = saturated(c, 1.0 - 0.06 * clamp(1.0 - beside / 0.0833, 0.0, 1.0));
    c = mix(c, screen(c, c), 0.275);
    c = mix(c, overlay(c, vec3(1.0, 0.61176, 0.25098)), 0.04);
    c = mix(c, multiply(c, vec3(weight(maskInput))), 0.262);
    c = vec3(tone(c.r, curve).r, tone(c.g, curve).r, tone(c.b, curve).r);
    return vec3(tone(c.r, curve).g, tone(c.g, curve).g, tone(c.b, curve).g);
}

vec3 sweets(vec3 c)
{
    c = adjust(c, 0.12, 0.0, 0.05);
    c = vibrance(level(c, curve, 0.0), 0.5);
    return mix(c, overlayBlack(c), 1.0 - weight(maskInput));
}

vec3 romance(vec3 c)
{
    c = level(adjust(c, 0.04, -0.08, -0.10), curve, 0.0);
    c = mix(c, screen(c, c), 0.15);
    return mix(c, overlay(c, vec3(0.98, 0.62, 0.68)), 0.18);
}

vec3 warm(vec3 c)
{
    c = level(c, curve, 0.0);
    c = mix(c, level(c, curve, 1.0), 0.6 * weight(grey1Frame));
    return mix(c, screen(c, light(grey2Frame)), 0.5);
}

vec3 antique(vec3 c)
{
    c = level(c, curve, 0.0);
    c = mix(c, vec3(luma(c)), 0.45);
    c = mix(c, overlay(c, vec3(0.62, 0.53, 0.39)), 0.5);
    return level(c, curve, 1.0);
}

vec3 calm(vec3 c)
{
    c = adjust(level(c, curve, 0.0), 0.0, -0.06, -0.15);
    c = mix(c, level(c, curve, 0.5), weight(grey1Frame));
    return mix(c, level(c, curve, 1.0), 0.6 * weight(grey2Frame));
}

vec3 latte(vec3 c)
{
    c = level(c, curve, 0.0);
    c = mix(c, vec3(luma(c)), 0.35);
    c = mix(c, multiply(c, vec3(0.96, 0.87, 0.76)), 0.5);
    return level(c, curve, 1.0);
}

vec3 cool(vec3 c)
{
    return level(level(adjust(c, 0.02, 0.0, -0.12), curve, 0.0), curve, 1.0);
}

vec3 neighbour(float x, float y) { return sourceAt(uv + vec2(x, y) * singleStepOffset).rgb; }

// Wax over paper: the colour rubbed to its neighbours' mean and made strong, dark lines where the luma turns.
vec3 crayon(vec3 c)
{
    vec3 topLeft = neighbour(-1.0, -1.0), top = neighbour(0.0, -1.0), topRight = neighbour(1.0, -1.0);
    vec3 left = neighbour(-1.0, 0.0), right = neighbour(1.0, 0.0);
    vec3 lowLeft = neighbour(-1.0, 1.0), low = neighbour(0.0, 1.0), lowRight = neighbour(1.0, 1.0);
    vec2 slope = vec2(luma(topRight - topLeft + 2.0 * (right - left) + lowRight - lowLeft),
                      luma(lowLeft - topLeft + 2.0 * (low - top) + lowRight - topRight));
    float line = clamp(length(slope) * 3.2 * strength - 0.08, 0.0, 1.0);
    vec3 mean = (topLeft + top + topRight + left + c + right + lowLeft + low + lowRight) / 9.0;
    return clamp(adjust(mean, 0.12, 0.05, 0.45), 0.0, 1.0) * (1.0 - 0.85 * line);
}

// Pencil: the luma divided by the lightest of its neighbours leaves white paper and dark lines.
vec3 sketch(vec3 c)
{
    float own = luma(c);
    vec4 straight = vec4(luma(neighbour(0.0, -1.0)), luma(neighbour(-1.0, 0.0)),
                         luma(neighbour(1.0, 0.0)), luma(neighbour(0.0, 1.0)));
    vec4 slanted = vec4(luma(neighbour(-1.0, -1.0)), luma(neighbour(1.0, -1.0)),
                        luma(neighbour(-1.0, 1.0)), luma(neighbour(1.0, 1.0)));
    vec4 most = max(straight, slanted);
    float lightest = max(max(max(most.x, most.y), max(most.z, most.w)), own);
    float mean = (own + dot(straight + slanted, vec4(1.0))) / 9.0;
    float line = pow((own + 0.05) / (lightest + 0.05), 5.0 * strength);
    return vec3(line * (0.72 + 0.28 * min(mean * 1.5, 1.0)));
}

// Amaro and hudson: a light, its map, a tone.
vec3 lit(vec3 c)
{
    vec3 look = level(mapped(light(grey1Frame), c, grey2Frame), grey3Frame, 0.0);
    return mix(c, look, strength);
}

vec3 brannan(vec3 c)
{
    vec3 look = overlay(level(c, grey1Frame, 0.0), light(grey2Frame));
    look = level(look, grey3Frame, 0.0);
    look = mix(look, tone(luma(look), grey4Frame), 0.5);
    return mix(c, level(look, grey5Frame, 0.0), strength);
}

vec3 brooklyn(vec3 c)
{
    vec3 look = level(c, grey1Frame, 0.0);
    look = mapped(vec3(luma(look)), look, grey2Frame);
    return mix(c, level(look, grey3Frame, 0.0), strength);
}

vec3 earlybird(vec3 c)
{
    vec2 away = uv - 0.5;
    float distanceSquared = 2.0 * dot(away, away); // 1 at a corner
    c = level(c, grey1Frame, 0.0);
    c = mix(c, vec3(luma(c)), 0.4);
    c = mapped(vec3(luma(c)), c, grey2Frame);
    vec3 spilled = level(c, grey4Frame, 0.0);
    c = mapped(vec3(distanceSquared), c, grey3Frame);
    c = mix(c, spilled, clamp(1.0 - 2.5 * distanceSquared, 0.0, 1.0));
    return level(c, grey5Frame, 0.0);
}

vec3 toaster2(vec3 c)
{
    c = mapped(light(grey1Frame), c, grey2Frame);
    c = level(c, grey3Frame, 0.0);
    c = mapped(vec3(luma(c)), c, grey4Frame);
    return level(c, grey5Frame, 0.0);
}

// A zoom whose colours part: green where it belongs, blue and red further out.
vec4 dy()
{
    vec2 at = (scaleDY - 1.0) * 0.5 + uv / scaleDY;
    vec4 first = sourceAt(at);
    float blue = sourceAt(at - 0.05 * (scaleDY - 1.0)).b;
    float red = sourceAt(at - 0.1 * (scaleDY - 1.0)).r;
    return vec4(red, first.g, blue, first.a);
}

vec3 looked(vec3 c)
{
    switch (doBlendMethod) {
    case FAIRYTALE: return fairytale(c);
    case SUNRISE: return sunrise(c);
    case SUNSET: return sunset(c);
    case HEALTHY: return healthy(c);
    case SWEETS: return sweets(c);
    case ROMANCE: return romance(c);
    case WARM: return warm(c);
    case ANTIQUE: return antique(c);
    case CALM: return calm(c);
    case LATTE: return latte(c);
    case COOL: return cool(c);
    case CRAYON: return crayon(c);
    case SKETCH: return sketch(c);
    case AMARO:
    case HUDSON: return lit(c);
    case BRANNAN: return brannan(c);
    case BROOKLYN: return brooklyn(c);
    case EARLYBIRD: return earlybird(c);
    case INKWELL: return vec3(tone(luma(c), grey1Frame).r);
    case TOASTER2: return toaster2(c);
    }
    return c;
}

vec4 blendPixel()
{
    if (doBlendMethod == DY)
        return dy();
    vec4 pixel = sourceAt(uv);
    if (doBlendMethod == SCREEN_BLEND)
        return vec4(screen(pixel.rgb, below().rgb), below().a);
    bool opaque = doBlendMethod == SUNRISE || doBlendMethod == SUNSET;
    return vec4(looked(pixel.rgb), opaque ? 1.0 : pixel.a);
}

// Over the cleared target: the colour is known, so the shader blends.
void main()
{
    vec4 pixel = clamp(blendPixel(), 0.0, 1.0);
    color = vec4(pixel.rgb * pixel.a + clearedColor.rgb * (1.0 - pixel.a),
                 pixel.a * pixel.a + clearedColor.a * clearedColor.a);
}
