#include "scene/TreePlan.h"

#include "scene/ClippingRectangleNode.h"
#include "scene/DrawNode.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"
#include "scene/Sprite.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavlo::test {

using namespace scene;
using Kind = TreePlan::Kind;

namespace {

constexpr int pictureWidth = 9, pictureHeight = 7;
constexpr double nearEdge = 0.03; // pixels

struct Point
{
    double x, y;
};

// From the parent's pixels back into the node's, one undone step after the other.
Point toNode(const TreePlan& node, Point p)
{
    const bool standsAtCorner = node.kind == Kind::LayerColor;
    const Point pivot{node.anchorX * node.width, node.anchorY * node.height};
    p = {p.x - node.x - (standsAtCorner ? pivot.x : 0), p.y - node.y - (standsAtCorner ? pivot.y : 0)};
    const double angle = node.degrees * std::numbers::pi / 180; // turned back: against the clock
    p = {p.x * std::cos(angle) - p.y * std::sin(angle), p.x * std::sin(angle) + p.y * std::cos(angle)};
    return {p.x / node.scaleX + pivot.x, p.y / node.scaleY + pivot.y};
}

Point down(const std::vector<const TreePlan*>& chain, Point p)
{
    for (const TreePlan* node : chain)
        p = toNode(*node, p);
    return p;
}

Rgba texel(const Image& picture, int x, int y)
{
    return picture.at(std::clamp(x, 0, picture.width - 1), std::clamp(y, 0, picture.height - 1));
}

// u, v from the left top, 0 to 1.
Rgba sample(const Image& picture, double u, double v)
{
    const double x = u * picture.width - 0.5, y = v * picture.height - 0.5;
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    const double right = x - left, below = y - top;
    Rgba result{};
    for (std::size_t i = 0; i < 4; ++i)
        result[i] =
            (texel(picture, left, top)[i] * (1 - right) + texel(picture, left + 1, top)[i] * right) * (1 - below) +
            (texel(picture, left, top + 1)[i] * (1 - right) + texel(picture, left + 1, top + 1)[i] * right) * below;
    return result;
}

class Painter
{
public:
    Painter(int width, int height, const Rgba& clear)
        : _result{{width, height, std::vector<Rgba>(static_cast<std::size_t>(width * height), clear)},
                  std::vector<bool>(static_cast<std::size_t>(width * height))}
    {}

    void visit(const TreePlan& node, std::array<double, 3> color, double opacity)
    {
        if (!node.visible)
            return;
        const double ownOpacity = opacity * node.opacity / 255;
        std::array<double, 3> ownColor{};
        for (std::size_t i = 0; i < 3; ++i)
            ownColor[i] = color[i] * node.color[i] / 255;
        const bool keepsItsOwn = node.kind == Kind::LayerColor;
        _chain.push_back(&node);
        if (node.kind == Kind::RenderTexture) {
            paint(node, ownColor, ownOpacity, inside(node));
        } else {
            std::vector<const TreePlan*> children;
            for (const TreePlan& child : node.children)
                children.push_back(&child);
            std::ranges::stable_sort(children, {}, &TreePlan::zOrder);
            const auto first = std::ranges::find_if(children, [](const auto* child) { return child->zOrder >= 0; });
            const auto visitChild = [&](const TreePlan* child) {
                visit(*child, keepsItsOwn ? std::array<double, 3>{1, 1, 1} : ownColor, keepsItsOwn ? 1 : ownOpacity);
            };
            if (node.kind == Kind::Clip)
                _clips.push_back(_chain);
            std::for_each(children.begin(), first, visitChild);
            if (node.kind == Kind::Sprite)
                paint(node, ownColor, ownOpacity, {testPicture(pictureWidth, pictureHeight, node.picture), {}});
            else if (node.kind == Kind::LayerColor || node.kind == Kind::DrawNode)
                paint(node, ownColor, ownOpacity, {{1, 1, {{1, 1, 1, 1}}}, {}});
            std::for_each(first, children.end(), visitChild);
            if (node.kind == Kind::Clip)
                _clips.pop_back();
        }
        _chain.pop_back();
    }

    Reference take() { return std::move(_result); }

private:
    static Reference inside(const TreePlan& node)
    {
        TreePlan all;
        all.children = node.children;
        return drawReference(all, static_cast<int>(node.width), static_cast<int>(node.height), *node.clear);
    }

    // Distance to the edge of the node's rectangle in its own pixels, positive inside.
    static double depthIn(const TreePlan& node, Point p)
    {
        const Point middle{node.kind == Kind::RenderTexture ? node.width / 2 : 0,
                           node.kind == Kind::RenderTexture ? node.height / 2 : 0};
        return std::min({p.x + middle.x, p.y + middle.y, node.width - p.x - middle.x, node.height - p.y - middle.y});
    }

    void paint(const TreePlan& node, const std::array<double, 3>& color, double opacity, const Reference& picture)
    {
        for (int row = 0; row < _result.image.height; ++row)
            for (int column = 0; column < _result.image.width; ++column)
                paintPixel(node, color, opacity, picture, column, row);
    }

    void paintPixel(const TreePlan& node, const std::array<double, 3>& color, double opacity, const Reference& picture,
                    int column, int row)
    {
        const Point pixel{column + 0.5, _result.image.height - row - 0.5};
        double depth = depthIn(node, down(_chain, pixel));
        for (const auto& clip : _clips)
            depth = std::min(depth, depthIn(*clip.back(), down(clip, pixel)));
        const auto index = static_cast<std::size_t>(row * _result.image.width + column);
        if (std::abs(depth) < nearEdge)
            _result.unsure[index] = true;
        if (depth <= 0)
            return;
        const Point p = down(_chain, pixel);
        const bool centred = node.kind == Kind::RenderTexture;
        const double u = (p.x + (centred ? node.width / 2 : 0)) / node.width;
        const double up = (p.y + (centred ? node.height / 2 : 0)) / node.height;
        const double v = node.flippedY ? up : 1 - up;
        if (!picture.unsure.empty() && isUnsure(picture, u, v))
            _result.unsure[index] = true;
        Rgba source = sample(picture.image, u, v);
        if (node.opaque)
            source[3] = 1;
        Rgba& target = _result.image.at(column, row);
        const double cover = source[3] * opacity;
        for (std::size_t i = 0; i < 3; ++i)
            target[i] = source[i] * color[i] * opacity + target[i] * (1 - cover);
        target[3] = cover + target[3] * (1 - cover);
    }

    // Whether a sample takes in a texel that is not sure itself.
    static bool isUnsure(const Reference& picture, double u, double v)
    {
        const int left = static_cast<int>(std::floor(u * picture.image.width - 0.5));
        const int top = static_cast<int>(std::floor(v * picture.image.height - 0.5));
        for (int y = std::max(top, 0); y <= std::min(top + 1, picture.image.height - 1); ++y)
            for (int x = std::max(left, 0); x <= std::min(left + 1, picture.image.width - 1); ++x)
                if (picture.unsure[static_cast<std::size_t>(y * picture.image.width + x)])
                    return true;
        return false;
    }

    Reference _result;
    std::vector<const TreePlan*> _chain;
    std::vector<std::vector<const TreePlan*>> _clips;
};

float toFloat(double value) { return static_cast<float>(value); }

RefPtr<Node> makeBare(SceneTest& test, const TreePlan& plan)
{
    Director& director = *test.director;
    const Size size{toFloat(plan.width), toFloat(plan.height)};
    switch (plan.kind) {
    case Kind::Node:
        break;
    case Kind::LayerColor:
        return LayerColor::create(director, {255, 255, 255, 255}, size);
    case Kind::Sprite: {
        RefPtr<Sprite> sprite =
            Sprite::createWithTexture(director, test.upload(testPicture(pictureWidth, pictureHeight, plan.picture)));
        sprite->setContentSize(size);
        sprite->setFlippedY(plan.flippedY);
        sprite->setTextureAlpha(plan.opaque ? TextureAlpha::Ignored : TextureAlpha::Premultiplied);
        return sprite;
    }
    case Kind::DrawNode: {
        RefPtr<DrawNode> node = DrawNode::create(director);
        node->drawSolidRect({0, 0}, {size.width, size.height}, {1, 1, 1, 1});
        return node;
    }
    case Kind::Clip: {
        RefPtr<ClippingRectangleNode> node = ClippingRectangleNode::create(director);
        node->setClippingRegion({0, 0, size.width, size.height});
        return node;
    }
    case Kind::RenderTexture: {
        RefPtr<RenderTexture> node =
            RenderTexture::create(director, static_cast<int>(plan.width), static_cast<int>(plan.height));
        const Rgba& clear = *plan.clear;
        const double alpha = clear[3] > 0 ? clear[3] : 1;
        node->sprite().setFlippedY(plan.flippedY);
        node->setAutoDraw(true);
        node->setClearFlags(RenderTexture::clearColorBit);
        node->setClearColor(
            {toFloat(clear[0] / alpha), toFloat(clear[1] / alpha), toFloat(clear[2] / alpha), toFloat(clear[3])});
        return node;
    }
    }
    return Node::create(director);
}

} // namespace

RefPtr<Node> makeNodes(SceneTest& test, const TreePlan& plan)
{
    RefPtr<Node> node = makeBare(test, plan);
    node->setPosition(toFloat(plan.x), toFloat(plan.y));
    node->setAnchorPoint({toFloat(plan.anchorX), toFloat(plan.anchorY)});
    if (plan.kind != Kind::RenderTexture)
        node->setContentSize({toFloat(plan.width), toFloat(plan.height)});
    node->setScale(toFloat(plan.scaleX), toFloat(plan.scaleY));
    node->setRotation(toFloat(plan.degrees));
    node->setOpacity(static_cast<std::uint8_t>(plan.opacity));
    node->setColor({static_cast<std::uint8_t>(plan.color[0]), static_cast<std::uint8_t>(plan.color[1]),
                    static_cast<std::uint8_t>(plan.color[2])});
    node->setVisible(plan.visible);
    for (const TreePlan& child : plan.children)
        node->addChild(makeNodes(test, child), child.zOrder);
    return node;
}

Reference drawReference(const TreePlan& plan, int width, int height, const Rgba& clear)
{
    Painter painter(width, height, clear);
    painter.visit(plan, {1, 1, 1}, 1);
    return painter.take();
}

testing::AssertionResult isLike(const Image& image, const Reference& reference, double tolerance)
{
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            for (std::size_t i = 0; i < 4; ++i) {
                const double wanted = reference.image.at(x, y)[i] * 255, found = image.at(x, y)[i] * 255;
                if (!reference.unsure[static_cast<std::size_t>(y * image.width + x)] &&
                    std::abs(wanted - found) > tolerance)
                    return testing::AssertionFailure() << "column " << x << ", row " << y << ", channel " << i
                                                       << ": wanted " << wanted << ", found " << found;
            }
    return testing::AssertionSuccess();
}

TreePlan randomTree(std::mt19937& random, int depth, double width, double height, bool upright)
{
    const auto number = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    const auto whole = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    TreePlan plan;
    do {
        plan.kind = static_cast<Kind>(whole(depth > 0 ? 0 : 1, depth > 0 ? 5 : 3));
    } while (plan.kind == Kind::Clip && !upright); // a clip turned is that of the upright rectangle around it
    plan.width = std::floor(number(width / 4, width));
    plan.height = std::floor(number(height / 4, height));
    plan.x = number(0, width / 2);
    plan.y = number(0, height / 2);
    plan.scaleX = number(0.6, 1.4);
    plan.scaleY = number(0.6, 1.4);
    plan.zOrder = whole(-1, 2);
    plan.opacity = whole(0, 2) == 0 ? 255 : whole(90, 255);
    plan.color = {whole(100, 255), whole(100, 255), whole(100, 255)};
    plan.visible = whole(0, 8) != 0;
    plan.flippedY = (plan.kind == Kind::Sprite || plan.kind == Kind::RenderTexture) && whole(0, 1) == 1;
    plan.opaque = plan.kind == Kind::Sprite && whole(0, 3) == 0;
    plan.picture = static_cast<unsigned>(whole(1, 2));
    if (plan.kind == Kind::RenderTexture) {
        const double alpha = whole(0, 2) / 2.0;
        plan.clear = Rgba{std::round(alpha * 0.4 * 255) / 255, 0, std::round(alpha * 0.8 * 255) / 255,
                          std::round(alpha * 255) / 255};
        plan.x = number(width / 3, width / 2); // its middle
        plan.y = number(height / 3, height / 2);
        plan.width = std::max(plan.width, 8.0);
        plan.height = std::max(plan.height, 8.0);
    } else {
        plan.anchorX = number(0, 1);
        plan.anchorY = number(0, 1);
    }
    if (plan.kind != Kind::Clip)
        plan.degrees = whole(0, 1) == 0 ? 0 : number(-170, 170);
    const bool within = plan.kind == Kind::RenderTexture || (upright && plan.degrees == 0);
    for (int child = whole(1, 3); depth > 0 && child > 0; --child)
        plan.children.push_back(
            randomTree(random, depth - 1, std::max(plan.width, 12.0), std::max(plan.height, 12.0), within));
    return plan;
}

} // namespace tavlo::test
