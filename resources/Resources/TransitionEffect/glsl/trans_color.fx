// Transitions that change colours on the way.
effect 1

[variables]
texture sampler0                 // the picture that the shader calls old
texture sampler1                 // the one that it calls new
vec2    samplerSize0             // pixels
vec2    samplerSize1
float   transitionProgress       // 0..1
int     transitionType
float   targetY = -1             // -1: the target keeps its top row first; 1: its bottom row
int     texelExact               // 1: both pictures have the target's size and order of rows

[technique Transprocess]
pass quad transition
    variant transitionType=74 texelExact=1 // color_MostBright
    variant transitionType=74 texelExact=0
    variant transitionType=75 texelExact=1 // color_BrightExtract
    variant transitionType=75 texelExact=0
    variant transitionType=76 texelExact=1 // color_InvertColor
    variant transitionType=76 texelExact=0
    variant transitionType=77 texelExact=1 // color_TransparentAlternatingPixelsMultiplied
    variant transitionType=77 texelExact=0
    variant transitionType=78 texelExact=1 // color_TransparentAlternatingScanlines
    variant transitionType=78 texelExact=0
    variant transitionType=79 texelExact=1 // color_ApplyTextureMap
    variant transitionType=79 texelExact=0

[common]
const int TavloSwitchEffectKind_color_MostBright = 74;
const int TavloSwitchEffectKind_color_BrightExtract = 75;
const int TavloSwitchEffectKind_color_InvertColor = 76;
const int TavloSwitchEffectKind_color_TransparentAlternatingPixelsMultiplied = 77;
const int TavloSwitchEffectKind_color_TransparentAlternatingScanlines = 78;
const int TavloSwitchEffectKind_color_ApplyTextureMap = 79;

[vertex quad]
in vec3 POSITION;
in vec2 TEXCOORD;
out vec2 uv;
void main() { gl_Position = vec4(POSITION.x, POSITION.y * targetY, 0.0, 1.0); uv = TEXCOORD; }

[fragment transition]
in vec2 uv;
out vec4 color;

vec4 oldAt(vec2 at) { return textureLod(sampler0, at, 0.0); }
vec4 newAt(vec2 at) { return textureLod(sampler1, at, 0.0); }

// The pictures where they stand: one texel load instead of four where the sizes allow it.
vec4 oldHere() { return texelExact != 0 ? texelFetch(sampler0, ivec2(gl_FragCoord.xy), 0) : oldAt(uv); }
vec4 newHere() { return texelExact != 0 ? texelFetch(sampler1, ivec2(gl_FragCoord.xy), 0) : newAt(uv); }

// First the old picture is treated more and more, at last the new one less and less; around the middle they cross.
float phaseMix(float p) { return clamp((p - 0.4) / 0.2, 0.0, 1.0); }
float rising(float p, float amount) { return amount * (p / 0.5); }
float falling(float p, float amount) { return amount * (1.0 - (p - 0.4) / 0.6); }
bool showsOld(float p) { return p <= 0.6; }
bool showsNew(float p) { return p >= 0.4; }

vec4 mostBright(float p)
{
    vec4 kept = vec4(0.0);
    float brightest = 1.0;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 3; ++x) {
            vec4 c = oldAt(uv + (vec2(x, y) - 1.0) * 0.01 * p);
            float brightness = dot(c.rgb, vec3(1.0, 1.1, 0.9));
            if (brightness > brightest) {
                brightest = brightness;
                kept = c;
            }
        }
    }
    return mix(kept, newHere(), p);
}

// Straight alpha for the threshold, premultiplied again behind it. An amount of 1 leaves nothing.
vec4 brightPart(vec4 c, float amount)
{
    if (c.a <= 0.0)
        return vec4(0.0);
    float span = amount == 1.0 ? 1e-6 : 1.0 - amount;
    return vec4(clamp((c.rgb / c.a - amount) / span, 0.0, 1.0) * c.a, c.a);
}

vec4 whereWhole(vec4 c, float s)
{
    float d = round(s) - s;
    return d * d < 0.1 ? c : vec4(0.0);
}

vec4 displaced(sampler2D picture, float amount)
{
    vec2 offset = textureLod(picture, fract(uv), 0.0).xy * amount - amount * 0.125;
    return textureLod(picture, fract(uv + offset), 0.0);
}

vec4 treated(sampler2D picture, vec4 here, float amount)
{
    vec2 scaled = uv * (2048.0 - amount) * 0.5;
    switch (transitionType) {
    case TavloSwitchEffectKind_color_BrightExtract:
        return brightPart(here, amount);
    case TavloSwitchEffectKind_color_InvertColor:
        return vec4(here.a - here.rgb, here.a);
    case TavloSwitchEffectKind_color_TransparentAlternatingPixelsMultiplied:
        return whereWhole(here, scaled.x * scaled.y);
    case TavloSwitchEffectKind_color_TransparentAlternatingScanlines:
        return whereWhole(here, scaled.y);
    }
    return displaced(picture, amount);
}

vec4 phased(float p, float amount)
{
    vec4 first = vec4(0.0);
    vec4 last = vec4(0.0);
    if (showsOld(p))
        first = treated(sampler0, oldHere(), rising(p, amount));
    if (showsNew(p))
        last = treated(sampler1, newHere(), falling(p, amount));
    return mix(first, last, phaseMix(p));
}

vec4 transition(float p)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_color_MostBright:
        return mostBright(p);
    case TavloSwitchEffectKind_color_BrightExtract:
    case TavloSwitchEffectKind_color_InvertColor:
        return phased(p, 1.0);
    case TavloSwitchEffectKind_color_TransparentAlternatingPixelsMultiplied:
    case TavloSwitchEffectKind_color_TransparentAlternatingScanlines:
        return phased(p, 2048.0);
    case TavloSwitchEffectKind_color_ApplyTextureMap:
        return phased(p, 5.0);
    }
    return oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
