#include "Sheets.h"

#include "scene/Action.h"
#include "scene/ClippingRectangleNode.h"
#include "scene/DrawNode.h"
#include "scene/GLView.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"
#include "scene/Scene.h"
#include "scene/Sprite.h"
#include "scene/TavloCLabel.h"
#include "scene/TextureCache.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/ShowRecords.h>

#include <QImage>
#include <QPainter>

#include <cstdio>

namespace {

using namespace tavlo;
using namespace tavlo::scene;

constexpr float width = 1280, height = 1040;
constexpr int presets = 30;

Color4B colorOf(quint32 argb)
{
    return {static_cast<std::uint8_t>(argb >> 16), static_cast<std::uint8_t>(argb >> 8),
            static_cast<std::uint8_t>(argb), static_cast<std::uint8_t>(argb >> 24)};
}

/// As the record tells; a picture to fill with that is not there leaves the fill white.
void applyStyle(TavloCLabel& label, const tagTavloShowTextStyle& style)
{
    if (style.fillType == 1)
        label.setFillGradient(colorOf(style.gradientBeginColor), colorOf(style.gradientEndColor));
    else if (style.fillType == 2)
        label.setFillTexture(style.texPath.toStdString());
    else
        label.setFillColor(colorOf(style.solidColor));
    label.setShadow(colorOf(style.shadowColor),
                    {static_cast<float>(style.shadowDistance.x()), static_cast<float>(style.shadowDistance.y())},
                    style.shadowBlur);
    label.setOutline(colorOf(style.outlineColor), static_cast<float>(style.outlineSize), style.outlineBlur);
}

/// A picture with an up, a left and soft edges.
QImage makePicture()
{
    QImage image(120, 80, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient slope(0, 0, 0, 80);
    slope.setColorAt(0, QColor(250, 190, 60));
    slope.setColorAt(1, QColor(190, 40, 90));
    painter.setBrush(slope);
    painter.setPen(QPen(Qt::white, 3));
    painter.drawRoundedRect(QRectF(4, 4, 112, 72), 16, 16);
    painter.setFont(QFont(QStringLiteral("Sans"), 30));
    painter.drawText(QRectF(0, 0, 120, 80), Qt::AlignCenter, QStringLiteral("L↑"));
    return image;
}

class SceneSheet
{
public:
    bool make()
    {
        if (!_view)
            return false;
        _director->setOpenGLView(_view);
        _director->startAnimation();
        _scene = Scene::createWithSize(*_director, _view->frameSize());
        _director->runWithScene(_scene);
        _scene->addChild(LayerColor::create(*_director, {70, 90, 110, 255}));
        addStyles();
        addScripts();
        addSprites();
        addMarks();
        addNested();
        addCrawl();
        return true;
    }

    ~SceneSheet()
    {
        _scene.reset();
        _director->end();
        _director->mainLoop();
    }

    QImage draw()
    {
        for (const std::uint64_t clock : {0ULL, 6'000'000ULL}) { // the crawl is on its way
            _view->beginFrame(0, 0, clock);
            _director->mainLoop();
            _view->endFrame();
        }
        return read(_view->backBuffer());
    }

private:
    RefPtr<TavloCLabel> addText(Node& parent, const char* text, float size, Vec2 place)
    {
        RefPtr<TavloCLabel> label = TavloCLabel::createWithTTF(*_director, {{}, size}, text);
        label->setPosition(place);
        parent.addChild(label);
        return label;
    }

    void addStyles()
    {
        for (int i = 0; i < presets; ++i) {
            const Vec2 place{110 + static_cast<float>(i % 6) * 212, height - 50 - static_cast<float>(i / 6) * 96};
            tagTavloShowTextStyle style;
            TavloPresentUtil::loadTextStylePreset(static_cast<quint32>(i + 1), style);
            const std::string name = "Ägypt " + std::to_string(i + 1);
            applyStyle(*addText(*_scene, name.c_str(), 44, place), style);
        }
    }

    void addScripts()
    {
        const char* const samples[]{"Русский Ελληνικά", "שלום עולם 2024 abc", "مرحبا بالعالم 123", "中文 日本語 한국어",
                                    "fi ﬁ Ä é 😀 🎥"};
        float y = height - 540;
        for (const char* sample : samples) {
            addText(*_scene, sample, 26, {160, y})->setOutline({0, 0, 0, 255}, 2, 0);
            y -= 38;
        }
        const auto lines = addText(*_scene, "several lines\nstand in\nthe middle", 24, {430, height - 610});
        lines->setAlignment(TextHAlignment::Center, TextVAlignment::Center);
        lines->setDimensions({220, 140});
        const RefPtr<DrawNode> room = DrawNode::create(*_director);
        room->drawRect({320, height - 680}, {540, height - 540}, {1, 1, 1, 0.5F});
        _scene->addChild(room);
    }

    void addSprites()
    {
        const graphics::TexturePtr picture = _director->textureCache().createTexture(makePicture());
        for (int i = 0; i < 6; ++i) {
            const RefPtr<Sprite> sprite = Sprite::createWithTexture(*_director, picture);
            sprite->setPosition(620 + static_cast<float>(i) * 118, height - 580);
            sprite->setRotation(static_cast<float>(i) * 15);
            sprite->setOpacity(static_cast<std::uint8_t>(255 - i * 40));
            if (i == 3)
                sprite->setColor({120, 255, 120});
            sprite->setFlippedY(i == 5);
            _scene->addChild(sprite, i % 2);
        }
    }

    void addMarks()
    {
        const RefPtr<DrawNode> marks = DrawNode::create(*_director, 2);
        for (int i = 0; i < 4; ++i) {
            const float by = static_cast<float>(i) * 8;
            marks->drawRect({570 + by, height - 790 + by}, {760 - by, height - 660 - by},
                            {1, static_cast<float>(i) / 4, 0.2F, 1});
        }
        marks->drawSolidRect({640, height - 740}, {690, height - 710}, {0, 1, 0, 0.4F});
        for (int i = 0; i < 8; ++i)
            marks->drawDot({790 + static_cast<float>(i) * 20, height - 700}, static_cast<float>(i + 2), {1, 1, 1, 1});
        marks->drawLine({780, height - 780}, {940, height - 720}, {0.4F, 0.8F, 1, 1});
        _scene->addChild(marks);
    }

    /// A picture in a picture in a picture.
    void addNested()
    {
        RefPtr<Node> inside = addCard();
        for (int depth = 0; depth < 3; ++depth) {
            const RefPtr<RenderTexture> texture = RenderTexture::create(*_director, 280, 160);
            texture->setAutoDraw(true);
            texture->setClearFlags(RenderTexture::clearColorBit);
            texture->setClearColor({0.2F * static_cast<float>(depth), 0.1F, 0.3F, 1});
            texture->addChild(inside);
            const std::string name = "depth " + std::to_string(depth);
            addText(*texture, name.c_str(), 20, {50, 145});
            texture->setPosition(150, 75);
            texture->setScale(0.8F);
            texture->setRotation(4);
            inside = texture;
        }
        inside->setPosition(1120, height - 725);
        inside->setScale(1);
        inside->setRotation(0);
        _scene->addChild(inside);
    }

    RefPtr<Node> addCard()
    {
        const RefPtr<Sprite> card =
            Sprite::createWithTexture(*_director, _director->textureCache().createTexture(makePicture()));
        card->setPosition(140, 70);
        return card;
    }

    void addCrawl()
    {
        const RefPtr<ClippingRectangleNode> clip = ClippingRectangleNode::create(*_director);
        clip->setClippingRegion({100, 30, width - 200, 90});
        _scene->addChild(clip);
        clip->addChild(LayerColor::create(*_director, {0, 0, 0, 130}, {width, height}));
        const auto crawl = addText(*clip,
                                   "A crawl passes behind its window, and is drawn no further than its edges: "
                                   "what is beyond them is never drawn at all. ",
                                   48, {width + 600, 75});
        crawl->setShadow({0, 0, 0, 255}, {3, -3}, 4);
        crawl->runAction(MoveTo::create(12, {-600, 75}));
    }

    QImage read(const graphics::TexturePtr& target)
    {
        graphics::TextureDesc desc = target->desc();
        desc.usage = graphics::Usage::Staging;
        desc.renderTarget = false;
        const graphics::TexturePtr staging = _view->device()->createTexture(desc);
        if (!staging || !_view->context()->copyResource(*staging, target))
            return {};
        const auto mapped = staging->mapRead();
        if (!mapped)
            return {};
        QImage image = QImage(reinterpret_cast<const uchar*>(mapped->data), static_cast<int>(desc.width),
                              static_cast<int>(desc.height), mapped->rowPitch, QImage::Format_RGBX8888)
                           .copy();
        staging->unmapRead();
        return image;
    }

    const RefPtr<Director> _director = Director::create();
    const RefPtr<GLViewImpl> _view = GLViewImpl::createWithRect({}, {0, 0, width, height}, -1);
    RefPtr<Scene> _scene;
};

} // namespace

bool writeSceneSheet(const QDir& folder)
{
    SceneSheet sheet;
    if (!sheet.make()) {
        std::fprintf(stderr, "no device to draw on\n");
        return false;
    }
    return sheet.draw().save(folder.filePath(QStringLiteral("scene.png")));
}
