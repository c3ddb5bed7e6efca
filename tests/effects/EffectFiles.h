#pragma once

#include <string>

namespace tavlo::test {

/// Two sources, mixed, tinted and blended as a channel's picture is. Line 16 is the mixing.
inline const std::string mixEffect = R"(// a comment first
effect 1
[variables]
float   amount = 0.25
vec4    tint = 1 1 1 1
int     channel      // -1: all
vec2    unread = 3 4
float   weights[3]
texture first nearest
texture second
[technique Transprocess]
pass quad mixed
    blend color src_alpha inv_src_alpha
    blend alpha src_alpha dst_alpha
[common]
vec4 mixOf(vec4 a, vec4 b) { return mix(a, b, amount) * tint; }
[vertex quad]
in vec3 POSITION;
in vec2 TEXCOORD;
out vec2 uv;
void main() { gl_Position = vec4(POSITION.xy, 0.0, 1.0); uv = TEXCOORD; }
[fragment mixed]
in vec2 uv;
out vec4 color;
void main() {
    color = mixOf(texture(first, uv), texture(second, uv)) + vec4(weights[1], 0.0, 0.0, 0.0);
    if (channel >= 0) color = vec4(vec3(color[channel]), color.a);
}
)";

inline std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    return text.replace(text.find(what), what.size(), with);
}

} // namespace tavlo::test
