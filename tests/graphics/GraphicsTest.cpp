#include "graphics/GraphicsTest.h"

#include <array>
#include <cstring>

namespace tavlo::test {

std::string transferName(const testing::TestParamInfo<graphics::Transfer>& info)
{
    switch (info.param) {
    case graphics::Transfer::Best:
        return "Best";
    case graphics::Transfer::KeptBuffers:
        return "KeptBuffers";
    case graphics::Transfer::MappedBuffers:
        break;
    }
    return "MappedBuffers";
}

using namespace graphics;

void GraphicsTest::SetUp()
{
    ASSERT_TRUE(device);
    context = device->immediateContext();
    ASSERT_TRUE(context->attach());
}

TexturePtr GraphicsTest::makeTexture(Format format, std::uint32_t width, std::uint32_t height, Usage usage,
                                     bool renderTarget)
{
    return device->createTexture({width, height, format, usage, renderTarget});
}

TexturePtr GraphicsTest::makeTarget(std::uint32_t width, std::uint32_t height)
{
    return makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Default, true);
}

std::vector<std::uint8_t> pattern(std::uint32_t rowBytes, std::uint32_t rows, std::uint32_t seed)
{
    std::vector<std::uint8_t> bytes(std::size_t{rowBytes} * rows);
    std::uint32_t state = seed * 2654435761U + 1;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

bool write(Context& context, const TexturePtr& texture, std::span<const std::uint8_t> packed)
{
    const auto mapped = context.map(*texture, MapMode::WriteDiscard);
    if (!mapped)
        return false;
    const std::size_t rows = formatRows(texture->desc().format, texture->desc().height);
    const std::size_t rowBytes = packed.size() / rows;
    for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(mapped->data + row * mapped->rowPitch, packed.data() + row * rowBytes, rowBytes);
    context.unmap(texture);
    return true;
}

std::vector<std::uint8_t> readBack(Device& device, Context& context, const TexturePtr& texture)
{
    TextureDesc desc = texture->desc();
    desc.usage = Usage::Staging;
    desc.renderTarget = false;
    const TexturePtr staging = device.createTexture(desc);
    if (!staging || !context.copyResource(*staging, texture))
        return {};
    const auto mapped = staging->mapRead();
    if (!mapped)
        return {};
    const std::size_t rows = formatRows(desc.format, desc.height);
    const std::size_t rowBytes = std::size_t{desc.width} * formatBytes(desc.format);
    std::vector<std::uint8_t> packed(rows * rowBytes);
    for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(packed.data() + row * rowBytes, mapped->data + row * mapped->rowPitch, rowBytes);
    staging->unmapRead();
    return packed;
}

Quad::Quad(Device& device, const std::string& fragmentBody)
{
    const std::string vertex = "#version 300 es\n"
                               "in vec3 POSITION;\nin vec2 TEXCOORD;\nout vec2 uv;\n"
                               "void main() { gl_Position = vec4(POSITION, 1.0); uv = TEXCOORD; }\n";
    const std::string fragment = "#version 300 es\nprecision highp float;\nprecision highp sampler2D;\n"
                                 "uniform sampler2D picture;\nin vec2 uv;\nout vec4 color;\n"
                                 "void main() { " +
                                 fragmentBody + " }\n";
    program = device.createProgram(vertex, fragment, messages);
    constexpr std::array<float, 20> corners{-1, -1, 0, 0, 1, 1, -1, 0, 1, 1, 1, 1, 0, 1, 0, -1, 1, 0, 0, 0};
    constexpr std::array<std::uint16_t, 6> order{3, 1, 0, 2, 1, 3};
    _vertices = device.createBuffer({sizeof corners, BufferKind::Vertex, false}, std::as_bytes(std::span(corners)));
    _indices = device.createBuffer({sizeof order, BufferKind::Index, false}, std::as_bytes(std::span(order)));
    _layout = std::make_shared<InputLayout>(
        InputLayout{{Semantic::Position, Format::R32G32B32_FLOAT, 0}, {Semantic::TexCoord, Format::R32G32_FLOAT, 12}});
}

bool Quad::draw(Context& context, const TexturePtr& target, const TexturePtr& picture, Sampler sampler,
                const TexturePtr& depth) const
{
    context.setRenderTarget(target, depth);
    context.setViewport({0, 0, static_cast<int>(target->desc().width), static_cast<int>(target->desc().height)});
    context.setProgram(program);
    context.setTexture(0, picture, sampler);
    context.setInputLayout(_layout);
    context.setVertexBuffer(_vertices, 20, 0);
    context.setIndexBuffer(_indices);
    return context.drawIndexed(6, 0);
}

} // namespace tavlo::test
