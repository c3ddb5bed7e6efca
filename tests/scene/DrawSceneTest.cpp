#include "scene/CustomCommand.h"
#include "scene/DrawNode.h"
#include "scene/FileUtils.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"
#include "scene/Renderer.h"
#include "scene/SceneTest.h"
#include "scene/Sprite.h"
#include "scene/TextureCache.h"
#include "scene/TreePlan.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

using namespace tavlo;
using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

class SceneGL : public SceneTest
{
public:
    void draws(const TreePlan& plan, const Rgba& clear, double tolerance)
    {
        const double alpha = clear[3] > 0 ? clear[3] : 1;
        director->setClearColor({static_cast<float>(clear[0] / alpha), static_cast<float>(clear[1] / alpha),
                                 static_cast<float>(clear[2] / alpha), static_cast<float>(clear[3])});
        root->removeAllChildren();
        root->addChild(makeNodes(*this, plan));
        step();
        EXPECT_TRUE(isLike(shown(), drawReference(plan, viewWidth, viewHeight, clear), tolerance));
    }

    /// A pixel counted from the left bottom, 0 to 255.
    std::array<int, 4> pixel(int x, int y)
    {
        const Image image = shown();
        std::array<int, 4> result{};
        for (std::size_t i = 0; i < 4; ++i)
            result[i] = static_cast<int>(std::lround(image.at(x, image.height - 1 - y)[i] * 255));
        return result;
    }

    const RenderStatistics& statistics() const { return director->renderer().statistics(); }
};

TEST_F(SceneGL, treesOfAllKindsLookAsComputed)
{
    const std::array<Rgba, 3> clears{Rgba{0, 0, 0, 0}, Rgba{0.2, 0.4, 0.6, 1}, Rgba{0.2, 0, 0.4, 0.6}};
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        draws(randomTree(random, 4, viewWidth, viewHeight), clears[seed % clears.size()], 4);
        if (HasFailure())
            return;
    }
}

TEST_F(SceneGL, renderTexturesNestThreeDeep)
{
    using Kind = TreePlan::Kind;
    TreePlan sprite{.kind = Kind::Sprite, .x = 3, .y = 2, .width = 17, .height = 13, .degrees = 10, .picture = 3};
    TreePlan inner{.kind = Kind::RenderTexture, .x = 15, .y = 12, .width = 21, .height = 15, .scaleX = 1.3};
    inner.clear = Rgba{0, 0, 0, 0};
    inner.children = {sprite};
    TreePlan middle{.kind = Kind::RenderTexture, .x = 20, .y = 17, .width = 33, .height = 27, .degrees = 20};
    middle.clear = Rgba{0, 0.5, 0, 0.5};
    middle.opacity = 200;
    middle.children = {inner};
    TreePlan outer{.kind = Kind::RenderTexture, .x = 30, .y = 25, .width = 45, .height = 35, .scaleY = 1.2};
    outer.clear = Rgba{0.3, 0, 0, 1};
    outer.children = {middle};
    draws(outer, {0, 0, 0.2, 1}, 4);
    EXPECT_EQ(statistics().passes, 4U);
}

TEST_F(SceneGL, whatCoversItsTargetIsNeitherClearedNorBlended)
{
    using Kind = TreePlan::Kind;
    const Rgba clear{0.1, 0.3, 0.2, 0.6};
    TreePlan whole{.kind = Kind::Sprite, .width = viewWidth, .height = viewHeight, .picture = 4};
    whole.children = {
        {.kind = Kind::LayerColor, .x = 5, .width = 11, .height = 13, .opacity = 77, .color = {255, 9, 99}}};
    draws(whole, clear, 2);
    EXPECT_EQ(statistics().clears, 0U);
    whole.kind = Kind::LayerColor;
    whole.opacity = 100;
    whole.color = {10, 100, 200};
    draws(whole, clear, 2);
    EXPECT_EQ(statistics().vertices, 4U); // the clear took the colour over
    whole.x = 1;
    draws(whole, clear, 2);
    EXPECT_EQ(statistics().vertices, 8U);
}

TEST_F(SceneGL, pixelExactPicturesAreShownExactly)
{
    const Image picture = testPicture(150, 130, 7);
    const RefPtr<RenderTexture> target = RenderTexture::create(*director, 160, 140);
    target->setAutoDraw(true);
    target->setClearFlags(RenderTexture::clearColorBit);
    const RefPtr<Sprite> sprite = Sprite::createWithTexture(*director, upload(picture));
    sprite->setAnchorPoint({0, 0});
    sprite->setPosition(7, 4);
    target->addChild(sprite);
    root->addChild(target);
    step();
    const Image shownPicture = read(target->texture());
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            ASSERT_EQ(shownPicture.at(x + 7, y + 140 - 4 - 130), picture.at(x, y)) << x << ", " << y;
}

TEST_F(SceneGL, aPictureThatFillsItsTargetIsCopied)
{
    Image picture = testPicture(150, 130, 7);
    for (Rgba& pixel : picture.pixels)
        pixel[3] = 1;
    const RefPtr<RenderTexture> target = RenderTexture::create(*director, 150, 130);
    target->setAutoDraw(true);
    target->setClearFlags(RenderTexture::clearColorBit);
    root->addChild(target);
    const graphics::TexturePtr texture = upload(picture);
    RefPtr<Sprite> sprite;
    const auto copies = [&](const std::function<void()>& change) {
        target->removeAllChildren();
        sprite = Sprite::createWithTexture(*director, texture);
        sprite->setAnchorPoint({0, 0});
        sprite->setTextureAlpha(TextureAlpha::Opaque);
        target->addChild(sprite);
        change();
        step();
        return statistics().copies;
    };
    EXPECT_EQ(copies([] {}), 1U);
    EXPECT_EQ(read(target->texture()).pixels, picture.pixels);
    EXPECT_EQ(copies([&] { target->addChild(LayerColor::create(*director, {255, 0, 0, 255}, {10, 20})); }), 1U);
    Image covered = picture;
    for (int y = 110; y < 130; ++y)
        std::fill_n(&covered.at(0, y), 10, Rgba{1, 0, 0, 1});
    EXPECT_EQ(read(target->texture()).pixels, covered.pixels);

    EXPECT_EQ(copies([&] { sprite->setFlippedY(true); }), 0U);
    EXPECT_EQ(read(target->texture()).at(3, 2), picture.at(3, 127));
    EXPECT_EQ(copies([&] { sprite->setOpacity(200); }), 0U);
    EXPECT_EQ(copies([&] { sprite->setPosition(0, 1); }), 0U);
    EXPECT_EQ(copies([&] { sprite->setTextureAlpha(TextureAlpha::Ignored); }), 0U);
    EXPECT_EQ(copies([&] { sprite->setTextureRect({0, 0, 75, 65}, {150, 130}); }), 0U);
    EXPECT_EQ(copies([&] { target->addChild(LayerColor::create(*director, {255, 0, 0, 255}, {9, 9}), -1); }), 0U);
    const auto addTwin = [&] {
        const RefPtr<Sprite> twin = Sprite::createWithTexture(*director, texture);
        twin->setTextureAlpha(TextureAlpha::Opaque);
        target->addChild(twin);
    };
    EXPECT_EQ(copies(addTwin), 0U);
    EXPECT_EQ(read(target->texture()).at(5, 123), picture.at(80, 58)); // the twin's middle is in the left bottom corner
}

TEST_F(SceneGL, neighboursShareOneDraw)
{
    const graphics::TexturePtr first = upload(testPicture(5, 5, 1)), second = upload(testPicture(5, 5, 2));
    const auto add = [&](const graphics::TexturePtr& texture) {
        const RefPtr<Sprite> sprite = Sprite::createWithTexture(*director, texture);
        sprite->setPosition(20, 20);
        root->addChild(sprite);
    };
    for (int i = 0; i < 20000; ++i) // more corners than one draw can count
        add(first);
    step();
    EXPECT_EQ(statistics().drawCalls, 2U);
    EXPECT_EQ(statistics().vertices, 80000U);
    root->removeAllChildren();
    add(first);
    add(second);
    add(second);
    add(first);
    step();
    EXPECT_EQ(statistics().drawCalls, 3U);
    root->children()[1]->setPosition(-500, 0); // beside the target
    root->children()[2]->setOpacity(0);
    step();
    EXPECT_EQ(statistics().drawCalls, 1U);
}

TEST_F(SceneGL, orderFollowsZThenArrival)
{
    const auto add = [this](Color3B color, int z) {
        const RefPtr<LayerColor> layer = LayerColor::create(*director, {color.r, color.g, color.b, 255}, {9, 9});
        root->addChild(layer, z);
        return layer;
    };
    const auto red = add({255, 0, 0}, 5), green = add({0, 255, 0}, 5), blue = add({0, 0, 255}, -1);
    step();
    EXPECT_EQ(pixel(4, 4), (std::array{0, 255, 0, 255}));
    red->setZOrder(5); // behind the others of its order
    step();
    EXPECT_EQ(pixel(4, 4), (std::array{255, 0, 0, 255}));
    blue->setZOrder(6);
    step();
    EXPECT_EQ(pixel(4, 4), (std::array{0, 0, 255, 255}));
    EXPECT_EQ(root->children().front(), green);
}

TEST_F(SceneGL, outlinesLieInsideAndShrinkWithoutGaps)
{
    const RefPtr<DrawNode> node = DrawNode::create(*director);
    const Color4F color{1, 0, 0, 1};
    for (int i = 0; i < 3; ++i) {
        const auto by = static_cast<float>(i);
        node->drawRect({10 + by, 30 - by}, {40 - by, 30 - by}, {40 - by, 10 + by}, {10 + by, 10 + by}, color);
    }
    root->addChild(node);
    step();
    const Image image = shown();
    for (int y = 0; y < viewHeight; ++y)
        for (int x = 0; x < viewWidth; ++x) {
            const auto within = [&](int by) { return x >= 10 + by && x < 40 - by && y >= 10 + by && y < 30 - by; };
            EXPECT_EQ(image.at(x, viewHeight - 1 - y)[0], within(0) && !within(3) ? 1 : 0) << x << ", " << y;
        }
    node->clear();
    node->drawDot({20, 20}, 6.5F, {0, 1, 0, 0.5F});
    node->setLineWidth(4);
    node->drawLine({30, 5}, {50, 5}, color);
    step();
    int dot = 0, line = 0;
    for (const Rgba& found : shown().pixels) {
        dot += std::abs(found[1] - 0.5) < 0.01 && std::abs(found[3] - 0.5) < 0.01;
        line += found[0] == 1;
    }
    EXPECT_NEAR(dot, 6.5 * 6.5 * 3.14159, 10);
    EXPECT_EQ(line, 20 * 4);
}

TEST_F(SceneGL, aRenderTextureWithoutAutoDrawIsLeftAlone)
{
    const RefPtr<RenderTexture> target = RenderTexture::create(*director, 20, 16);
    target->addChild(LayerColor::create(*director, {255, 255, 255, 255}));
    target->setPosition(30, 20);
    root->addChild(target);
    view->context()->clearRenderTarget(target->texture(), {0, 0.2F, 1, 1}); // somebody else's picture
    step();
    EXPECT_EQ(pixel(30, 20), (std::array{0, 51, 255, 255}));
    target->setAutoDraw(true);
    step();
    EXPECT_EQ(pixel(30, 20), (std::array{255, 255, 255, 255}));
    const LogCapture log;
    EXPECT_FALSE(RenderTexture::create(*director, 0, 5));
    EXPECT_EQ(log.count("a render texture needs a view and a size"), 1);
}

/// A sprite that sets the uniforms of a shared state right before its quad.
class MaskedSprite : public Sprite
{
public:
    MaskedSprite(Director& scene, RefPtr<GLProgramState> state, float useMask, graphics::TexturePtr mask)
        : Sprite(scene)
    {
        setGLProgramState(state);
        _command.func = [this, state, useMask, mask = std::move(mask)] {
            EXPECT_TRUE(state->setUniformTexture("inputImageTexture", texture()));
            EXPECT_TRUE(state->setUniformTexture("maskImageTexture", mask));
            EXPECT_TRUE(state->setUniformFloat("useMask", useMask));
            EXPECT_TRUE(state->setUniformFloat("opacity", static_cast<float>(displayedOpacity()) / 255));
        };
    }

protected:
    void draw(Renderer& renderer, const Affine& transform) override
    {
        renderer.addCommand(_command);
        Sprite::draw(renderer, transform);
    }

private:
    CustomCommand _command;
};

TEST_F(SceneGL, aSharedProgramStateTakesEachSpritesValues)
{
    const auto state = GLProgramState::getOrCreateWithGLProgramName(*director, GLProgram::SHADER_NAME_TavloLOGO);
    ASSERT_TRUE(state);
    EXPECT_EQ(state, GLProgramState::getOrCreateWithGLProgramName(*director, GLProgram::SHADER_NAME_TavloLOGO));
    const Image picture{1, 1, {Rgba{0.8, 0.4, 0.2, 1}}};
    const graphics::TexturePtr mask = upload({1, 1, {Rgba{0, 0, 0, 0.6}}});
    for (int i = 0; i < 2; ++i) {
        const auto sprite = makeRef<MaskedSprite>(*director, state, static_cast<float>(i), mask);
        sprite->initWithTexture(upload(picture));
        sprite->setContentSize({10, 10});
        sprite->setPosition(static_cast<float>(10 + 20 * i), 10);
        sprite->setOpacity(i == 0 ? 51 : 255);
        root->addChild(sprite);
    }
    step();
    EXPECT_EQ(pixel(10, 10), (std::array{41, 20, 10, 51}));
    EXPECT_EQ(pixel(30, 10), (std::array{122, 61, 31, 153}));

    // What a state never sets is zero, whatever another one of the program has set before.
    root->removeAllChildren();
    const auto program = GLProgram::createWithFragmentSource(
        *director, "uniform float level; uniform sampler2D picture;"
                   "void main() { color = vec4(level, texture(picture, uv).gb, 1.0); }");
    for (int i = 0; i < 2; ++i) {
        const auto sprite = Sprite::createWithTexture(*director, upload(picture));
        sprite->setGLProgramState(GLProgramState::create(program));
        sprite->setTextureRect({0, 0, 1, 1}, {10, 10});
        sprite->setPosition(static_cast<float>(10 + 20 * i), 10);
        if (i == 0) {
            EXPECT_TRUE(sprite->glProgramState()->setUniformFloat("level", 1));
        }
        root->addChild(sprite);
    }
    step();
    EXPECT_EQ(pixel(10, 10), (std::array{255, 102, 51, 255}));
    EXPECT_EQ(pixel(30, 10), (std::array{0, 102, 51, 255}));

    const LogCapture log;
    EXPECT_FALSE(state->setUniformFloat("noSuchUniform", 1));
    EXPECT_FALSE(state->setUniformFloat("maskImageTexture", 1)); // not of that type
    EXPECT_FALSE(GLProgramState::getOrCreateWithGLProgramName(*director, "none"));
    EXPECT_FALSE(GLProgram::createWithFragmentSource(*director, "void main() { color = nonsense; }"));
    EXPECT_EQ(log.count("failed to compile a shader of the scene"), 1);
}

/// The process's folder, until the end of the test.
class CurrentFolder
{
public:
    explicit CurrentFolder(const QString& folder) { QDir::setCurrent(folder); }
    ~CurrentFolder() { QDir::setCurrent(_before); }

private:
    const QString _before = QDir::currentPath();
};

TEST_F(SceneGL, spritesTakeFilesAndParts)
{
    const QTemporaryDir folder, elsewhere;
    QImage image(4, 2, QImage::Format_ARGB32);
    ASSERT_TRUE(image.scaled(9, 9).save(elsewhere.filePath(QStringLiteral("p.png"))));
    const CurrentFolder current(elsewhere.path()); // whose file is not meant
    image.fill(QColor(200, 100, 50, 255));
    image.setPixelColor(3, 0, QColor(0, 0, 255, 128));
    ASSERT_TRUE(image.save(folder.filePath(QStringLiteral("p.png"))));
    director->fileUtils().addSearchPath("/nowhere");
    director->fileUtils().addSearchPath(folder.path().toStdString());
    const RefPtr<Sprite> sprite = Sprite::create(*director), other = Sprite::create(*director);
    ASSERT_TRUE(sprite->initWithFile("p.png"));
    ASSERT_TRUE(other->initWithFile(folder.filePath(QStringLiteral("p.png")).toStdString()));
    EXPECT_EQ(sprite->texture(), other->texture());
    EXPECT_EQ(sprite->contentSize(), (Size{4, 2}));
    sprite->setTextureRect({3, 0, 1, 1}, {8, 8}); // the upper right texel alone
    sprite->setPosition(20, 20);
    root->addChild(sprite);
    step();
    EXPECT_EQ(pixel(20, 20), (std::array{0, 0, 128, 128}));

    sprite->setTexture(upload({1, 1, {Rgba{0, 0, 1, 128 / 255.0}}}));
    sprite->setTextureRect({0, 0, 1, 1}, {8, 8});
    sprite->setTextureAlpha(TextureAlpha::Straight);
    step();
    EXPECT_EQ(pixel(20, 20), (std::array{0, 0, 128, 128}));

    const LogCapture log;
    EXPECT_FALSE(other->initWithFile("missing.png"));
    EXPECT_EQ(log.count("no such file: missing.png"), 1);
    EXPECT_EQ(other->contentSize(), (Size{4, 2}));
}

TEST_F(SceneGL, texturesOfImagesChangeInPlace)
{
    QImage image(6, 6, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(255, 0, 0));
    TextureCache& cache = director->textureCache();
    graphics::TexturePtr texture = cache.createTexture(image);
    ASSERT_TRUE(texture);
    const graphics::TexturePtr before = texture;
    const RefPtr<Sprite> sprite = Sprite::createWithTexture(*director, texture);
    sprite->setPosition(20, 20);
    root->addChild(sprite);
    step();
    EXPECT_EQ(pixel(20, 20), (std::array{255, 0, 0, 255}));
    image.fill(QColor(0, 255, 0));
    EXPECT_TRUE(cache.updateTexture(texture, image));
    EXPECT_EQ(texture, before);
    step();
    EXPECT_EQ(pixel(20, 20), (std::array{0, 255, 0, 255}));
    EXPECT_FALSE(cache.updateTexture(texture, {}));
}

TEST_F(SceneGL, aViewOfAnotherSizeShowsTheSameScene)
{
    root->addChild(LayerColor::create(*director, {40, 40, 40, 255}));
    ASSERT_TRUE(view->setWindowPlacement({5, 6, 31, 23}));
    const auto tooLarge = static_cast<float>(view->device()->maxTextureSize() + 1);
    for (const float wrong : {0.0F, -3.0F, tooLarge, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        EXPECT_FALSE(view->setFrameSize(wrong, 9)) << wrong;
        EXPECT_FALSE(view->setWindowPlacement({1, 1, 9, wrong})) << wrong;
    }
    EXPECT_EQ(view->frameSize(), (Size{31, 23}));
    step();
    const Image image = shown();
    EXPECT_EQ(image.width, 31);
    EXPECT_EQ(image.height, 23);
    EXPECT_NEAR(image.at(30, 0)[1] * 255, 40, 0.5);
}

} // namespace
