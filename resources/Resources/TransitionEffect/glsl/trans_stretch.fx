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

// Where the picture that shows here is read, and whether it is the new one. One place for all directions: each picture is
// then sampled once, where a renderer that runs both sides of a branch would sample it for every direction.
struct Shown
{
    vec2 at;
    bool isNew;
};

// Two pictures beside each other, both squeezed; the new one leads where the direction is negative.
Shown beside(float p)
{
    bool alongY = StretchDirect.x == 0.0;
    bool newFirst = StretchDirect.x + StretchDirect.y < 0.0;
    float border = newFirst ? p : 1.0 - p;
    float place = alongY ? uv.y : uv.x;
    bool first = place < border;
    float squeezed = first ? place / border : (place - border) / (1.0 - border);
    return Shown(alongY ? vec2(uv.x, squeezed) : vec2(squeezed, uv.y), first == newFirst);
}

// A picture scaled to a box in the middle, the other one around it: the new one grows, or the old one shrinks.
Shown inMiddle(float p)
{
    bool newGrows = StretchDirect == vec2(0.0);
    float size = newGrows ? p : 1.0 - p;
    vec2 at = (uv - 0.5) / size + 0.5;
    bool inside = at.x > 0.0 && at.x < 1.0 && at.y > 0.0 && at.y < 1.0;
    return Shown(inside ? at : uv, inside == newGrows);
}

vec4 transition(float p)
{
    bool toMiddle = StretchDirect.x == StretchDirect.y;
    Shown shown = beside(p);
    if (toMiddle)
        shown = inMiddle(p);
    vec4 old = oldAt(shown.at);
    return shown.isNew ? newAt(shown.at) : old;
}

void main()
{
    bool stretches = transitionType >= TavloSwitchEffectKind_stretch_Left &&
                     transitionType <= TavloSwitchEffectKind_stretch_Center_Inner_BIn;
    color = stretches && transitionProgress > 0.0 ? transition(transitionProgress) : oldAt(uv);
}
