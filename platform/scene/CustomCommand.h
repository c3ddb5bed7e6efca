#pragma once

#include <functional>

namespace tavlo::scene {

/// Something to be done between the draws of a frame: right before what is added after it, when everything added before
/// it has been drawn. The node that adds it keeps it until the frame is over.
///
/// `func` may set uniforms and textures of program states; it leaves tree, target and context alone. Frame thread.
class CustomCommand
{
public:
    std::function<void()> func;
};

} // namespace tavlo::scene
