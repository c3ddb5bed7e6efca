// Transitions in which the pictures are squeezed and spread.
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
vec2    StretchDirect            // which way; 0 0 from the middle, 0.5 0.5 towards it

[technique Transprocess]
pass quad transition
    variant transitionType=46 texelExact=1 // stretch_Left
    variant transitionType=46 texelExact=0
    variant transitionType=47 texelExact=1 // stretch_Right
    variant transitionType=47 texelExact=0
    variant transitionType=48 texelExact=1 // stretch_Top
    variant transitionType=48 texelExact=0
    variant transitionType=49 texelExact=1 // stretch_Bottom
    variant transitionType=49 texelExact=0
    variant transitionType=50 texelExact=1 // stretch_Center_Inner_AOut
    variant transitionType=50 texelExact=0
    variant transitionType=51 texelExact=1 // stretch_Center_Inner_BIn
    variant transitionType=51 texelExact=0

[common]
const int TavloSwitchEffectKind_stretch_Left = 46;
const int TavloSwitchEffectKind_stretch_Right = 47;
const int TavloSwitchEffectKind_stretch_Top = 48;
const int TavloSwitchEffectKind_stretch_Bottom = 49;
const int TavloSwitchEffectKind_stretch_Center_Inner_AOut = 50;
const int TavloSwitchEffectKind_stretch_Center_Inner_BIn = 51;

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

// Two pictures beside each other, both squeezed; `place` runs across them and the first ends at `border`.
vec4 beside(bool newFirst, bool alongY, float border)
{
    float place = alongY ? uv.y : uv.x;
    bool first = place < border;
    float squeezed = first ? place / border : (place - border) / (1.0 - border);
    vec2 at = alongY ? vec2(uv.x, squeezed) : vec2(squeezed, uv.y);
    return first == newFirst ? newAt(at) : oldAt(at);
}

bool isInBox(float size, out vec2 at)
{
    float low = 0.5 - size * 0.5;
    float high = 0.5 + size * 0.5;
    at = (uv - vec2(low)) / size;
    return uv.x > low && uv.x < high && uv.y > low && uv.y < high;
}

vec4 transition(float p)
{
    if (transitionType < TavloSwitchEffectKind_stretch_Left ||
        transitionType > TavloSwitchEffectKind_stretch_Center_Inner_BIn)
        return oldHere();
    vec2 at;
    if (StretchDirect == vec2(-1.0, 0.0))
        return beside(true, false, p);
    if (StretchDirect == vec2(1.0, 0.0))
        return beside(false, false, 1.0 - p);
    if (StretchDirect == vec2(0.0, -1.0))
        return beside(true, true, p);
    if (StretchDirect == vec2(0.0, 1.0))
        return beside(false, true, 1.0 - p);
    if (StretchDirect == vec2(0.0))
        return isInBox(p, at) ? newAt(at) : oldHere();
    return isInBox(1.0 - p, at) ? oldAt(at) : newHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
