// Transitions in which one picture melts into the other.
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
float   randomSeed
texture cloudInput

[technique Transprocess]
pass quad transition
    variant transitionType=22 texelExact=1 // fade_Normal
    variant transitionType=22 texelExact=0
    variant transitionType=23 texelExact=1 // fade_Drop
    variant transitionType=23 texelExact=0

[common]
const int TavloSwitchEffectKind_fade_Normal = 22;
const int TavloSwitchEffectKind_fade_Drop = 23;

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

bool isInside(vec2 at) { return all(greaterThanEqual(at, vec2(0.0))) && all(lessThanEqual(at, vec2(1.0))); }

vec4 dropped(float p)
{
    float way = -textureLod(cloudInput, vec2(uv.x / 5.0, randomSeed), 0.0).r;
    vec2 at = vec2(uv.x, uv.y + way * p);
    vec4 c1 = isInside(at) ? oldAt(at) : vec4(0.0);
    vec4 c2 = newHere();
    return c1.a <= 0.0 ? c2 : mix(c1, c2, p);
}

vec4 transition(float p)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_fade_Normal:
        return mix(oldHere(), newHere(), p);
    case TavloSwitchEffectKind_fade_Drop:
        return dropped(p);
    }
    return oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
