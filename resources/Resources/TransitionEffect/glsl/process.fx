// A picture as grey.
effect 1

[variables]
texture sampler0
float   width
float   height
int     flipVert0
int     mirrorHoriz0
float   targetY = -1  // -1: the target keeps its top row first; 1: its bottom row

[technique Transprocess]
pass quad grey

[vertex quad]
in vec3 POSITION;
in vec2 TEXCOORD;
out vec2 uv;

void main()
{
    gl_Position = vec4(POSITION.x, POSITION.y * targetY, 0.0, 1.0);
    uv = TEXCOORD;
}

[fragment grey]
in vec2 uv;
out vec4 color;

void main()
{
    vec2 at = vec2(mirrorHoriz0 != 0 ? 1.0 - uv.x : uv.x, flipVert0 != 0 ? 1.0 - uv.y : uv.y);
    color = vec4(vec3(dot(texture(sampler0, at).rgb, vec3(0.299, 0.587, 0.114))), 1.0);
}
