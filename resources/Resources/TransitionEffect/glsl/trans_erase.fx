// Transitions in which an edge, or a painted mask, uncovers the new picture.
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
float   fuzzyAmount              // half the soft edge
vec2    lineOrigin               // where the edge begins; x = 2: opens from the middle
vec2    lineNormal
vec2    lineOffset               // where the edge ends
float   randomSeed
texture trigInput                // the mask: white where the old picture stays
texture cloudInput

[technique Transprocess]
pass quad transition
    variant transitionType=1 texelExact=1 // erase_Left
    variant transitionType=1 texelExact=0
    variant transitionType=2 texelExact=1 // erase_Right
    variant transitionType=2 texelExact=0
    variant transitionType=3 texelExact=1 // erase_Top
    variant transitionType=3 texelExact=0
    variant transitionType=4 texelExact=1 // erase_Bottom
    variant transitionType=4 texelExact=0
    variant transitionType=5 texelExact=1 // erase_TopLeft
    variant transitionType=5 texelExact=0
    variant transitionType=6 texelExact=1 // erase_TopRight
    variant transitionType=6 texelExact=0
    variant transitionType=7 texelExact=1 // erase_BottomRight
    variant transitionType=7 texelExact=0
    variant transitionType=8 texelExact=1 // erase_BottomLeft
    variant transitionType=8 texelExact=0
    variant transitionType=9 texelExact=1 // erase_HCenter
    variant transitionType=9 texelExact=0
    variant transitionType=10 texelExact=1 // erase_VCenter
    variant transitionType=10 texelExact=0
    variant transitionType=11 texelExact=1 // erase_Box
    variant transitionType=11 texelExact=0
    variant transitionType=12 texelExact=1 // erase_Checkerboard
    variant transitionType=12 texelExact=0
    variant transitionType=13 texelExact=1 // erase_Circle
    variant transitionType=13 texelExact=0
    variant transitionType=14 texelExact=1 // erase_DiagonalSquares
    variant transitionType=14 texelExact=0
    variant transitionType=15 texelExact=1 // erase_DissolveIn
    variant transitionType=15 texelExact=0
    variant transitionType=16 texelExact=1 // erase_RandomBars
    variant transitionType=16 texelExact=0
    variant transitionType=17 texelExact=1 // erase_Split
    variant transitionType=17 texelExact=0
    variant transitionType=18 texelExact=1 // erase_VenetianBlinds
    variant transitionType=18 texelExact=0
    variant transitionType=19 texelExact=1 // erase_Blood
    variant transitionType=19 texelExact=0
    variant transitionType=20 texelExact=1 // erase_Wheel
    variant transitionType=20 texelExact=0

[common]
const int TavloSwitchEffectKind_erase_Left = 1;
const int TavloSwitchEffectKind_erase_Right = 2;
const int TavloSwitchEffectKind_erase_Top = 3;
const int TavloSwitchEffectKind_erase_Bottom = 4;
const int TavloSwitchEffectKind_erase_TopLeft = 5;
const int TavloSwitchEffectKind_erase_TopRight = 6;
const int TavloSwitchEffectKind_erase_BottomRight = 7;
const int TavloSwitchEffectKind_erase_BottomLeft = 8;
const int TavloSwitchEffectKind_erase_HCenter = 9;
const int TavloSwitchEffectKind_erase_VCenter = 10;
const int TavloSwitchEffectKind_erase_Box = 11;
const int TavloSwitchEffectKind_erase_Checkerboard = 12;
const int TavloSwitchEffectKind_erase_Circle = 13;
const int TavloSwitchEffectKind_erase_DiagonalSquares = 14;
const int TavloSwitchEffectKind_erase_DissolveIn = 15;
const int TavloSwitchEffectKind_erase_RandomBars = 16;
const int TavloSwitchEffectKind_erase_Split = 17;
const int TavloSwitchEffectKind_erase_VenetianBlinds = 18;
const int TavloSwitchEffectKind_erase_Blood = 19;
const int TavloSwitchEffectKind_erase_Wheel = 20;

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

float edge(float d) { return clamp((d + fuzzyAmount) / (2.0 * fuzzyAmount), 0.0, 1.0); }

vec4 lineReveal(float p)
{
    float t = edge(dot(normalize(lineNormal), uv - mix(lineOrigin, lineOffset, p)));
    return mix(newHere(), oldHere(), t);
}

// Two edges run from the middle line apart.
vec4 openFromMiddle(float p)
{
    bool vertical = lineNormal.y == 1.0 && lineNormal.x == 0.0;
    bool far = (vertical ? uv.y : uv.x) > 0.5;
    float origin = far ? 0.5 + p * 0.5 : 0.5 - p * 0.5;
    float t = edge(dot(normalize(lineNormal), uv - vec2(origin)));
    return mix(newHere(), oldHere(), far ? t : 1.0 - t);
}

vec4 maskReveal() { return mix(newHere(), oldHere(), textureLod(trigInput, uv, 0.0).r); }

vec4 circleReveal(float p)
{
    float radius = -fuzzyAmount + p * (0.70710678 + 2.0 * fuzzyAmount);
    return mix(newHere(), oldHere(), edge(length(uv - vec2(0.5)) - radius));
}

vec4 blinds(float p) { return fract(5.0 * uv.y) < p ? newHere() : oldHere(); }

vec4 blood(float p)
{
    float way = min(p + p * textureLod(cloudInput, vec2(uv.x, randomSeed), 0.0).r, 1.0);
    vec2 at = vec2(uv.x, uv.y - way);
    return at.y > 0.0 ? oldAt(at) : newAt(fract(at));
}

vec4 transition(float p)
{
    switch (transitionType) {
    case TavloSwitchEffectKind_erase_Left:
    case TavloSwitchEffectKind_erase_Right:
    case TavloSwitchEffectKind_erase_Top:
    case TavloSwitchEffectKind_erase_Bottom:
    case TavloSwitchEffectKind_erase_TopLeft:
    case TavloSwitchEffectKind_erase_TopRight:
    case TavloSwitchEffectKind_erase_BottomRight:
    case TavloSwitchEffectKind_erase_BottomLeft:
        return lineReveal(p);
    case TavloSwitchEffectKind_erase_HCenter:
    case TavloSwitchEffectKind_erase_VCenter:
        return openFromMiddle(p);
    case TavloSwitchEffectKind_erase_Box:
    case TavloSwitchEffectKind_erase_Checkerboard:
    case TavloSwitchEffectKind_erase_DiagonalSquares:
    case TavloSwitchEffectKind_erase_DissolveIn:
    case TavloSwitchEffectKind_erase_RandomBars:
    case TavloSwitchEffectKind_erase_Split:
    case TavloSwitchEffectKind_erase_Wheel:
        return maskReveal();
    case TavloSwitchEffectKind_erase_Circle:
        return circleReveal(p);
    case TavloSwitchEffectKind_erase_VenetianBlinds:
        return blinds(p);
    case TavloSwitchEffectKind_erase_Blood:
        return blood(p);
    }
    return oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
