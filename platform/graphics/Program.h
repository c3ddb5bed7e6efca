#pragma once

#include "graphics/State.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavlo::graphics {

enum class UniformType : std::uint8_t
{
    Float,
    Vec2,
    Vec3,
    Vec4,
    Int,
    IVec2,
    IVec3,
    IVec4,
    Mat4,
    Texture
};

/// Bytes of one element: 4 for each component, 4 for a texture.
std::uint32_t uniformBytes(UniformType type);

/// A uniform that the shaders really use.
struct Uniform
{
    std::string name; ///< of an array: without the index
    UniformType type = UniformType::Float;
    std::uint32_t count = 1;       ///< elements of the array
    std::int32_t location = -1;    ///< what `Context::setUniform` takes
    std::int32_t textureUnit = -1; ///< textures only: what `Context::setTexture` takes
};

/// A vertex and a fragment shader, linked. Inputs are bound by name: see `semanticName`.
///
/// Uniform values are the program's own, whatever context sets them: one thread at a time draws with a program.
class Program
{
public:
    struct Impl;

    /// For the device alone.
    explicit Program(std::unique_ptr<Impl> impl);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    const std::vector<Uniform>& uniforms() const;

    /// What the vertex shader reads.
    const std::vector<Semantic>& inputs() const;

    /// The driver's compiled form, which only a device of the same `driverIdentity` takes back. Empty when the driver
    /// gives none. A thread that may use the device.
    std::vector<std::byte> binary() const;

    Impl& impl() { return *_impl; }
    const Impl& impl() const { return *_impl; }

private:
    const std::unique_ptr<Impl> _impl;
};

using ProgramPtr = std::shared_ptr<Program>;

} // namespace tavlo::graphics
