// Transitions in which the picture is bent, crumbled or swirled.
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
float   twistAmount              // radians
float   frequency
float   randomSeed               // 0..1
texture cloudInput
texture noiseInput

[technique Transprocess]
pass quad transition
    variant transitionType=62 texelExact=1 // distortion_BandedSwirl
    variant transitionType=62 texelExact=0
    variant transitionType=63 texelExact=1 // distortion_CircleStretch
    variant transitionType=63 texelExact=0
    variant transitionType=64 texelExact=1 // distortion_CloudReveal
    variant transitionType=64 texelExact=0
    variant transitionType=65 texelExact=1 // distortion_Crumble
    variant transitionType=65 texelExact=0
    variant transitionType=66 texelExact=1 // distortion_Disolve
    variant transitionType=66 texelExact=0
    variant transitionType=67 texelExact=1 // distortion_RadialWiggle
    variant transitionType=67 texelExact=0
    variant transitionType=68 texelExact=1 // distortion_RandomCircleReveal
    variant transitionType=68 texelExact=0
    variant transitionType=69 texelExact=1 // distortion_Ripple
    variant transitionType=69 texelExact=0
    variant transitionType=70 texelExact=1 // distortion_Wave
    variant transitionType=70 texelExact=0
    variant transitionType=71 texelExact=1 // distortion_MagnifySmooth
    variant transitionType=71 texelExact=0
    variant transitionType=72 texelExact=1 // distortion_ApplyTextureMap
    variant transitionType=72 texelExact=0

[common]
const int TavloSwitchEffectKind_distortion_BandedSwirl = 62;
const int TavloSwitchEffectKind_distortion_CircleStretch = 63;
const int TavloSwitchEffectKind_distortion_CloudReveal = 64;
const int TavloSwitchEffectKind_distortion_Crumble = 65;
const int TavloSwitchEffectKind_distortion_Disolve = 66;
const int TavloSwitchEffectKind_distortion_RadialWiggle = 67;
const int TavloSwitchEffectKind_distortion_RandomCircleReveal = 68;
const int TavloSwitchEffectKind_distortion_Ripple = 69;
const int TavloSwitchEffectKind_distortion_Wave = 70;
const int TavloSwitchEffectKind_distortion_MagnifySmooth = 71;
const int TavloSwitchEffectKind_distortion_ApplyTextureMap = 72;

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

bool isInside(vec2 at) { return all(greaterThanEqual(at, vec2(0.0))) && all(lessThanEqual(at, vec2(1.0))); }

float cloudAt(vec2 at) { return textureLod(cloudInput, at, 0.0).r; }

// 0..1 once around
float turnOf(vec2 dir) { return (atan(dir.y, dir.x) + 3.141592) / (2.0 * 3.141592); }

vec4 bandedSwirl(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float angle = atan(dir.y, dir.x) + sin(r * frequency) * twistAmount * p;
    return mix(oldAt(fract(vec2(cos(angle), sin(angle)) * r + centre)), newHere(), p);
}

vec4 circleStretch(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float radius = 0.70710678 * p;
    float e = max(abs(dir.x), abs(dir.y));
    if (r < radius) {
        float toEdge = e * 0.5;
        return newAt(mix(centre, centre + toEdge * dir, r / min(radius, toEdge)));
    }
    vec2 rim = centre + radius * dir;
    return oldAt(mix(centre, centre + e * dir, length(uv - rim) / (e - radius)));
}

vec4 cloudReveal(float p)
{
    float cloud = cloudAt(uv);
    float a = p < 0.5 ? mix(0.0, cloud, p / 0.5) : mix(cloud, 1.0, (p - 0.5) / 0.5);
    return a < 0.5 ? oldHere() : newHere();
}

vec4 crumble(float p)
{
    vec2 place = vec2(uv.x / 5.0, fract(uv.y / 5.0 + min(0.9, randomSeed)));
    vec2 offset = textureLod(cloudInput, place, 0.0).xy * 2.0 - 1.0;
    float q = p > 0.5 ? 2.0 - 2.0 * p : 2.0 * p;
    vec2 at = fract(uv + offset * q);
    return mix(oldAt(at), newAt(at), p);
}

vec4 dissolve(float p)
{
    float noise = textureLod(noiseInput, fract(uv + randomSeed), 0.0).r;
    return noise > p ? oldHere() : newHere();
}

vec4 radialWiggle(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float offset = cloudAt(vec2(turnOf(dir), fract(p / 3.0 + r / 5.0 + randomSeed))) * 2.0 - 1.0;
    float old = 2.0 * offset * min(0.3, p) * r;
    float fresh = 2.0 * offset * min(0.3, 1.0 - p) * r;
    return mix(oldAt(fract(centre + dir * (r + old))), newAt(fract(centre + dir * (r + fresh))), p);
}

vec4 circleReveal(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float radius = 0.70710678 * p + p * cloudAt(vec2(turnOf(dir), fract(randomSeed + p / 5.0)));
    return r < radius ? newHere() : oldHere();
}

vec4 ripple(float p)
{
    float r;
    vec2 dir = directionAt(uv, r);
    float wave = cos(20.0 * r - 10.0 * p) * 0.05;
    return mix(oldAt(centre + dir * (r + p * wave)), newAt(centre + dir * (r + (1.0 - p) * wave)), p);
}

vec4 waved(float p)
{
    vec2 at = uv + vec2(0.1 * p * sin(20.0 * uv.y + 14.0 * p), 0.0);
    return mix(isInside(at) ? oldAt(at) : vec4(0.0), newHere(), p);
}

// A lens that grows to five times and more; it ends softly.
vec4 magnify(float p)
{
    vec2 away = uv - centre;
    float ratio = smoothstep(0.2, 0.64, length(away / vec2(1.0, 1.5)));
    vec4 first = vec4(0.0);
    vec4 last = vec4(0.0);
    if (showsOld(p))
        first = oldAt(mix(centre + away / (1.0 + rising(p, 4.0)), uv, ratio));
    if (showsNew(p))
        last = newAt(mix(centre + away / (1.0 + falling(p, 4.0)), uv, ratio));
    return mix(first, last, phaseMix(p));
}

// One kind of this family has no branch: it shows the old picture until the cut.
vec4 transition(float p)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_distortion_BandedSwirl:
        return bandedSwirl(p);
    case TavloSwitchEffectKind_distortion_CircleStretch:
        return circleStretch(p);
    case TavloSwitchEffectKind_distortion_CloudReveal:
        return cloudReveal(p);
    case TavloSwitchEffectKind_distortion_Crumble:
        return crumble(p);
    case TavloSwitchEffectKind_distortion_Disolve:
        return dissolve(p);
    case TavloSwitchEffectKind_distortion_RadialWiggle:
        return radialWiggle(p);
    case TavloSwitchEffectKind_distortion_RandomCircleReveal:
        return circleReveal(p);
    case TavloSwitchEffectKind_distortion_Ripple:
        return ripple(p);
    case TavloSwitchEffectKind_distortion_Wave:
        return waved(p);
    case TavloSwitchEffectKind_distortion_MagnifySmooth:
        return magnify(p);
    }
    return oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
