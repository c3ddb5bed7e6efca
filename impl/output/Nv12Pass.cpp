#include "output/Nv12Pass.h"

#include <QDebug>

#include <array>
#include <cstring>
#include <span>

using namespace tavlo::graphics;

namespace tavlo {

namespace {

constexpr const char* vertexSource = R"(#version 300 es
in vec2 POSITION;
void main() { gl_Position = vec4(POSITION, 0.0, 1.0); }
)";

// `part`: size of the picture, and the first row of this part in the target. `flip`: the source keeps its last row first.
constexpr const char* commonSource = R"(#version 300 es
precision highp float;
precision highp int;
uniform highp sampler2D picture;
uniform ivec3 part;
uniform int flip;
out vec4 texel;

vec3 pixel(int x, int y)
{
    ivec2 at = min(ivec2(x, y), part.xy - 1);
    if (flip != 0)
        at.y = part.y - 1 - at.y;
    return texelFetch(picture, at, 0).rgb;
}
)";

// Rec. ITU-R BT.709, item 3.2 and 3.4: Y = 0.2126 R + 0.7152 G + 0.0722 B, 16..235 of 255.
constexpr const char* lumaSource = R"(
float luma(int x, int y)
{
    return dot(pixel(x, y), vec3(0.2126, 0.7152, 0.0722)) * (219.0 / 255.0) + 16.0 / 255.0;
}

void main()
{
    int x = int(gl_FragCoord.x) * 4;
    int y = int(gl_FragCoord.y) - part.z;
    texel = vec4(luma(x, y), luma(x + 1, y), luma(x + 2, y), luma(x + 3, y));
}
)";

// The same, items 3.3 and 3.4: Cb = (B - Y) / 1.8556, Cr = (R - Y) / 1.5748, 16..240 of 255 around 128.
constexpr const char* chromaSource = R"(
vec2 chroma(int x, int y)
{
    vec3 mean = (pixel(x, y) + pixel(x + 1, y) + pixel(x, y + 1) + pixel(x + 1, y + 1)) * 0.25;
    float y709 = dot(mean, vec3(0.2126, 0.7152, 0.0722));
    return (mean.br - y709) / vec2(1.8556, 1.5748) * (224.0 / 255.0) + 128.0 / 255.0;
}

void main()
{
    int x = int(gl_FragCoord.x) * 4;
    int y = (int(gl_FragCoord.y) - part.z) * 2;
    texel = vec4(chroma(x, y), chroma(x + 2, y));
}
)";

int chromaRows(int height) { return (height + 1) / 2; }

void setInts(Context& context, Program& program, const char* name, std::span<const qint32> values)
{
    for (const Uniform& uniform : program.uniforms())
        if (uniform.name == name)
            context.setUniform(program, uniform, std::as_bytes(values));
}

} // namespace

TextureDesc Nv12Pass::packedDesc(int width, int height, Usage usage)
{
    return {static_cast<quint32>((width + 3) / 4), static_cast<quint32>(height + chromaRows(height)),
            Format::R8G8B8A8_UNORM, usage, usage == Usage::Default};
}

std::unique_ptr<Nv12Pass> Nv12Pass::create(const DevicePtr& device, int width, int height, Rows rows)
{
    constexpr std::array<float, 8> corners{-1, -1, 1, -1, -1, 1, 1, 1};
    std::unique_ptr<Nv12Pass> pass(new Nv12Pass);
    pass->_width = width;
    pass->_height = height;
    pass->_rows = rows;
    pass->_packed = device->createTexture(packedDesc(width, height, Usage::Default));
    pass->_vertices =
        device->createBuffer({sizeof(corners), BufferKind::Vertex, false}, std::as_bytes(std::span(corners)));
    pass->_layout = std::make_shared<const InputLayout>(InputLayout{{Semantic::Position, Format::R32G32_FLOAT, 0}});
    const bool made = pass->_packed && pass->_vertices && pass->makeProgram(*device, lumaSource, pass->_luma) &&
                      pass->makeProgram(*device, chromaSource, pass->_chroma);
    return made ? std::move(pass) : nullptr;
}

bool Nv12Pass::makeProgram(Device& device, const char* body, ProgramPtr& program)
{
    std::string messages;
    program = device.createProgram(vertexSource, std::string(commonSource) + body, messages);
    if (!program)
        qDebug() << "Nv12Pass::create:" << messages.c_str();
    return program != nullptr;
}

TexturePtr Nv12Pass::convert(Context& context, const TexturePtr& source)
{
    const TexturePtr savedTarget = context.renderTarget();
    const TexturePtr savedDepth = context.depthTarget();
    const std::shared_ptr<const InputLayout> savedLayout = context.inputLayout();
    context.setRenderTarget(_packed);
    context.setInputLayout(_layout);
    context.setVertexBuffer(_vertices, 2 * sizeof(float), 0);
    context.setTopology(Topology::TriangleStrip);
    context.setBlendState({});
    context.setDepthState({});
    context.setScissor({});
    const bool drawn = drawPart(context, _luma, source, 0, _height) &&
                       drawPart(context, _chroma, source, _height, chromaRows(_height));
    context.clearState();
    context.setRenderTarget(savedTarget, savedDepth);
    context.setInputLayout(savedLayout);
    return drawn ? _packed : nullptr;
}

bool Nv12Pass::drawPart(Context& context, const ProgramPtr& program, const TexturePtr& source, int firstRow,
                        int rowCount)
{
    context.setViewport({0, firstRow, static_cast<qint32>(_packed->desc().width), rowCount});
    context.setProgram(program);
    setInts(context, *program, "part", std::array{_width, _height, firstRow});
    setInts(context, *program, "flip", std::array{_rows == Rows::BottomFirst ? 1 : 0});
    for (const Uniform& uniform : program->uniforms())
        if (uniform.type == UniformType::Texture)
            context.setTexture(uniform.textureUnit, source, Sampler::NearestClamp);
    return context.draw(4, 0);
}

} // namespace tavlo
