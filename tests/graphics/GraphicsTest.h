#pragma once

#include "graphics/Device.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tavlo::test {

/// A device and its immediate context, made anew for each test; the parameter chooses the way of pictures.
class GraphicsTest : public testing::Test
{
public:
    explicit GraphicsTest(graphics::Transfer transfer = graphics::Transfer::Best)
        : device(graphics::Device::create({.adapter = -1, .transfer = transfer}))
    {}

    void SetUp() override;

    graphics::TexturePtr makeTexture(graphics::Format format, std::uint32_t width, std::uint32_t height,
                                     graphics::Usage usage = graphics::Usage::Default, bool renderTarget = false);
    graphics::TexturePtr makeTarget(std::uint32_t width, std::uint32_t height);

    graphics::DevicePtr device;
    graphics::ContextPtr context; ///< the immediate one
};

/// For suites that run once for each way.
inline const auto everyTransfer =
    testing::Values(graphics::Transfer::Best, graphics::Transfer::KeptBuffers, graphics::Transfer::MappedBuffers);
std::string transferName(const testing::TestParamInfo<graphics::Transfer>& info);

/// Rows of bytes without gaps that differ from texel to texel and from channel to channel.
std::vector<std::uint8_t> pattern(std::uint32_t rowBytes, std::uint32_t rows, std::uint32_t seed);

/// Writes packed rows into a dynamic texture.
bool write(graphics::Context& context, const graphics::TexturePtr& texture, std::span<const std::uint8_t> packed);

/// The texture's rows without gaps, through a staging texture; empty on failure.
std::vector<std::uint8_t> readBack(graphics::Device& device, graphics::Context& context,
                                   const graphics::TexturePtr& texture);

/// Draws a quad over the whole target with shaders of the test. Texture coordinate 0, 0 lies at the target's last
/// memory row, as the engine draws.
class Quad
{
public:
    /// `fragmentBody` gives the statements that set `color` from `uv` and the texture `picture`.
    Quad(graphics::Device& device, const std::string& fragmentBody);

    bool draw(graphics::Context& context, const graphics::TexturePtr& target, const graphics::TexturePtr& picture,
              graphics::Sampler sampler = graphics::Sampler::NearestClamp,
              const graphics::TexturePtr& depth = nullptr) const;

    graphics::ProgramPtr program;
    std::string messages;

private:
    graphics::BufferPtr _vertices, _indices;
    std::shared_ptr<const graphics::InputLayout> _layout;
};

} // namespace tavlo::test
