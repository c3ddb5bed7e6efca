#pragma once

#include "scene/Node.h"

namespace tavlo::scene {

/// The root of a tree, which a director runs. Its left bottom is the target's. Frame thread.
class Scene : public Node
{
public:
    static RefPtr<Scene> createWithSize(Director& director, Size size);
    explicit Scene(Director& director) : Node(director) {}
    std::string_view className() const override { return "Scene"; }
};

} // namespace tavlo::scene
