#pragma once

#include "graphics/Device.h"
#include "scene/RenderPass.h"

#include <array>
#include <string>
#include <string_view>

namespace tavlo::scene {

/// A program of the scene and what the renderer sets of it.
struct SceneProgram
{
    SceneProgram() = default;
    explicit SceneProgram(graphics::ProgramPtr compiled);

    graphics::ProgramPtr program;
    const graphics::Uniform* toClip = nullptr;     ///< scale and offset from pixels to the device's coordinates
    const graphics::Uniform* background = nullptr; ///< the colour beneath; null where the program has none
    int pictureUnit = -1;                          ///< of the quad's texture; -1 where the program has none
};

/// Compiles a fragment shader without a head with the scene's vertex shader, see `GLProgram`, or takes it from the cache.
/// Null, with the messages in the log, when the driver refuses it.
/// \param cacheFolder  as `Director::setDataCachePath` takes it
graphics::ProgramPtr compileSceneProgram(graphics::Device& device, std::string_view fragmentSource,
                                         const std::string& cacheFolder);

/// The plain programs on one device. Frame thread.
class PlainPrograms
{
public:
    /// False, and the reason in the log, when the driver refuses one.
    bool create(graphics::Device& device, const std::string& cacheFolder);
    void release() { _programs = {}; }

    const SceneProgram& get(PlainProgram program, BatchBlend blend) const;

private:
    std::array<SceneProgram, plainProgramCount * 2> _programs; ///< each, then as it lays itself over a colour
};

} // namespace tavlo::scene
