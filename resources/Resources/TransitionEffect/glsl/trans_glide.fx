// Transitions in which a picture glides in or out over the other, or pushes it.
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
vec2    slideAmount              // which way; a whole picture each
float   slidePush                // above 0: the old picture is pushed

[technique Transprocess]
pass quad transition
    variant texelExact=1 // directions are numbers of the program, not programs
    variant texelExact=0

[common]
const int TavloSwitchEffectKind_glide_In_Left = 25;
const int TavloSwitchEffectKind_glide_In_Right = 26;
const int TavloSwitchEffectKind_glide_In_Top = 27;
const int TavloSwitchEffectKind_glide_In_Bottom = 28;
const int TavloSwitchEffectKind_glide_In_TopLeft = 29;
const int TavloSwitchEffectKind_glide_In_TopRight = 30;
const int TavloSwitchEffectKind_glide_In_BottomRight = 31;
const int TavloSwitchEffectKind_glide_In_BottomLeft = 32;
const int TavloSwitchEffectKind_glide_Out_Left = 33;
const int TavloSwitchEffectKind_glide_Out_Right = 34;
const int TavloSwitchEffectKind_glide_Out_Top = 35;
const int TavloSwitchEffectKind_glide_Out_Bottom = 36;
const int TavloSwitchEffectKind_glide_Out_TopLeft = 37;
const int TavloSwitchEffectKind_glide_Out_TopRight = 38;
const int TavloSwitchEffectKind_glide_Out_BottomRight = 39;
const int TavloSwitchEffectKind_glide_Out_BottomLeft = 40;
const int TavloSwitchEffectKind_glide_Push_Left = 41;
const int TavloSwitchEffectKind_glide_Push_Right = 42;
const int TavloSwitchEffectKind_glide_Push_Top = 43;
const int TavloSwitchEffectKind_glide_Push_Bottom = 44;

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

vec4 transition(float p)
{
    if (transitionType < TavloSwitchEffectKind_glide_In_Left || transitionType > TavloSwitchEffectKind_glide_Push_Bottom)
        return oldHere();
    vec2 at = uv + slideAmount * p;
    if (isInside(at))
        return newAt(at);
    return slidePush > 0.0 ? oldAt(fract(at)) : oldHere();
}

void main() { color = transitionProgress > 0.0 ? transition(transitionProgress) : oldHere(); }
