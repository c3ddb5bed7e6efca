// Transitions in which sharpness is lost and found again.
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
texture trigInput                // sine in red, cosine in green, arctangent in blue

[technique Transprocess]
pass quad transition
    variant transitionType=53 texelExact=1 // blur_CircularBlur
    variant transitionType=53 texelExact=0
    variant transitionType=54 texelExact=1 // blur_RadialBlur
    variant transitionType=54 texelExact=0
    variant transitionType=55 texelExact=1 // blur_Pixelate
    variant transitionType=55 texelExact=0
    variant transitionType=56 texelExact=1 // blur_Directional
    variant transitionType=56 texelExact=0
    variant transitionType=57 texelExact=1 // blur_GrowablePoissonDisk
    variant transitionType=57 texelExact=0
    variant transitionType=58 texelExact=1 // blur_Sharpen
    variant transitionType=58 texelExact=0
    variant transitionType=59 texelExact=1 // blur_Telescopic
    variant transitionType=59 texelExact=0
    variant transitionType=60 texelExact=1 // blur_Zoom
    variant transitionType=60 texelExact=0

[common]
const int TavloSwitchEffectKind_blur_CircularBlur = 53;
const int TavloSwitchEffectKind_blur_RadialBlur = 54;
const int TavloSwitchEffectKind_blur_Pixelate = 55;
const int TavloSwitchEffectKind_blur_Directional = 56;
const int TavloSwitchEffectKind_blur_GrowablePoissonDisk = 57;
const int TavloSwitchEffectKind_blur_Sharpen = 58;
const int TavloSwitchEffectKind_blur_Telescopic = 59;
const int TavloSwitchEffectKind_blur_Zoom = 60;

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

const vec2 centre = vec2(0.5);

// The way from the centre as a direction and a length. The centre itself lies in no direction: it takes the right one.
vec2 directionAt(vec2 at, out float r)
{
    vec2 away = at - centre;
    r = length(away);
    return r > 0.0 ? away / r : vec2(1.0, 0.0);
}

// First the old picture is treated more and more, at last the new one less and less; around the middle they cross.
float phaseMix(float p) { return clamp((p - 0.4) / 0.2, 0.0, 1.0); }
float rising(float p, float amount) { return amount * (p / 0.5); }
float falling(float p, float amount) { return amount * (1.0 - (p - 0.4) / 0.6); }
bool showsOld(float p) { return p <= 0.6; }
bool showsNew(float p) { return p >= 0.4; }

vec4 circularBlur(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float angle = textureLod(trigInput, (dir + 1.0) / 2.0, 0.0).b;
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 7; ++i) {
        vec2 turned = textureLod(trigInput, vec2(fract(angle - float(i) * 0.005 * p - 0.5)), 0.0).xy * 2.0 - 1.0;
        sum += oldAt(turned * r + centre);
    }
    return mix(sum / 7.0, newHere(), p);
}

vec4 radialBlur(float p)
{
    vec2 stride = (uv - centre) * 0.02 * p;
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 24; ++i)
        sum += oldAt(uv - stride * float(i));
    return mix(sum / 24.0, newHere(), p);
}

vec4 pixelate(float p)
{
    float sp = p < 0.5 ? 1.0 - 2.0 * p : 2.0 * (p - 0.5);
    float pixels = 5.0 + 1000.0 * sp * sp;
    vec2 at = round(uv * pixels) / pixels;
    return mix(oldAt(at), newAt(at), phaseMix(p));
}

vec4 directional(sampler2D picture, float amount)
{
    float angle = 60.0 * 0.0174533;
    vec2 stride = vec2(cos(angle), sin(angle)) * amount;
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 16; ++i)
        sum += textureLod(picture, uv - stride * float(i), 0.0);
    return sum / 16.0;
}

const vec2 poisson[12] = vec2[12](
    vec2(-0.326212, -0.40581), vec2(-0.840144, -0.07358), vec2(-0.695914, 0.457137), vec2(-0.203345, 0.620716),
    vec2(0.96234, -0.194983), vec2(0.473434, -0.480026), vec2(0.519456, 0.767022), vec2(0.185461, -0.893124),
    vec2(0.507431, 0.064425), vec2(0.89642, 0.412458), vec2(-0.32194, -0.932615), vec2(-0.791559, -0.59771));

vec4 poissonDisk(sampler2D picture, float amount)
{
    vec4 sum = textureLod(picture, uv, 0.0);
    for (int i = 0; i < 12; ++i)
        sum += textureLod(picture, uv + poisson[i] / 400.0 * amount, 0.0);
    return sum / 13.0;
}

vec4 sharpened(sampler2D picture, float amount)
{
    vec2 offset = 1.0 / vec2(800.0, 600.0);
    vec4 here = textureLod(picture, uv, 0.0);
    here.rgb += textureLod(picture, uv - offset, 0.0).rgb * amount;
    here.rgb -= textureLod(picture, uv + offset, 0.0).rgb * amount;
    return here;
}

vec4 telescopic(sampler2D picture, float amount)
{
    vec2 away = uv - centre;
    float f = dot(away, away) * dot(away, away);
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 17; ++i)
        sum += textureLod(picture, away * (1.0 - f * amount * float(i) / 30.0) + centre, 0.0);
    return sum / 17.0;
}

vec4 zoomed(sampler2D picture, float amount)
{
    vec2 focus = vec2(0.9, 0.6);
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 15; ++i)
        sum += textureLod(picture, (uv - focus) * (1.0 + amount * float(i) / 14.0) + focus, 0.0);
    return sum / 15.0;
}

vec4 treated(sampler2D picture, float amount)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_blur_Directional:
        return directional(picture, amount);
    case TavloSwitchEffectKind_blur_GrowablePoissonDisk:
        return poissonDisk(picture, amount);
    case TavloSwitchEffectKind_blur_Sharpen:
        return sharpened(picture, amount);
    case TavloSwitchEffectKind_blur_Telescopic:
        return telescopic(picture, amount);
    }
    return zoomed(picture, amount);
}

vec4 phased(float p, float amount)
{
    vec4 first = vec4(0.0);
    vec4 last = vec4(0.0);
    if (showsOld(p))
        first = treated(sampler0, rising(p, amount));
    if (showsNew(p))
        last = treated(sampler1, falling(p, amount));
    return mix(first, last, phaseMix(p));
}

vec4 transition(float p)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_blur_CircularBlur:
        return circularBlur(p);
    case TavloSwitchEffectKind_blur_RadialBlur:
        return radialBlur(p);
    case TavloSwitchEffectKind_blur_Pixelate:
        return pixelate(p);
    case TavloSwitchEffectKind_blur_Directional:
        return phased(p, 0.01);
    case TavloSwitchEffectKind_blur_GrowablePoissonDisk:
        return phased(p, 10.0);
    case TavloSwitchEffectKind_blur_Sharpen:
        return phased(p, 2.0);
    case TavloSwitchEffectKind_blur_Telescopic:
        return phased(p, 3.0);
    case TavloSwitchEffectKind_blur_Zoom:
        return phased(p, 0.2);
    }
    return oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
