#pragma once

#include "scene/SceneTest.h"

#include <optional>
#include <random>
#include <vector>

namespace tavlo::test {

/// A tree that is both made of nodes and computed on the processor, pixel by pixel, in plain double arithmetic.
struct TreePlan
{
    enum class Kind
    {
        Node,
        LayerColor,
        Sprite,
        DrawNode, ///< a solid rectangle of the size
        Clip,     ///< to the rectangle of the size
        RenderTexture
    };

    Kind kind = Kind::Node;
    double x = 0, y = 0, anchorX = 0, anchorY = 0, width = 0, height = 0;
    double scaleX = 1, scaleY = 1, degrees = 0;
    int zOrder = 0;
    int opacity = 255;
    std::array<int, 3> color{255, 255, 255};
    bool visible = true, flippedY = false, opaque = false;
    unsigned picture = 0;        ///< of a sprite: seed of its texture
    std::optional<Rgba> clear{}; ///< of a render texture: multiplied by alpha
    std::vector<TreePlan> children{};
};

/// A tree of every kind, up to that depth; render textures within render textures as deep.
TreePlan randomTree(std::mt19937& random, int depth, double width, double height, bool upright = true);

/// The nodes of a tree. Textures are those that `SceneTest::upload` makes of the pictures.
scene::RefPtr<scene::Node> makeNodes(SceneTest& test, const TreePlan& plan);

/// What the tree looks like, and which pixels lie so near to an edge that either side would be right.
struct Reference
{
    Image image;
    std::vector<bool> unsure;
};
Reference drawReference(const TreePlan& plan, int width, int height, const Rgba& clear);

/// Fails with the first pixel that is further off than that, 0 to 255.
testing::AssertionResult isLike(const Image& image, const Reference& reference, double tolerance);

} // namespace tavlo::test
