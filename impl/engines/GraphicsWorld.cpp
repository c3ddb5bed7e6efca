#include "engines/GraphicsWorld.h"

#include "channels/ChannelSite.h"

#include "scene/FileUtils.h"
#include "scene/Renderer.h"

#include <QDebug>

#include <algorithm>

namespace tavlo {

namespace {

constexpr scene::Color4B canvasColor{40, 40, 40, 255};
constexpr int canvasFramesForAsking = 25;

} // namespace

bool GraphicsWorld::createView(const tagTavloWindowInfo& window, int deviceId, const QString& shaderCachePath,
                               const QString& resourcePath, float frameRate)
{
    _director = scene::Director::create();
    _director->setDataCachePath(shaderCachePath.toStdString());
    const scene::Rect rect{static_cast<float>(window.rect.x()), static_cast<float>(window.rect.y()),
                           static_cast<float>(window.rect.width()), static_cast<float>(window.rect.height())};
    _view = scene::GLViewImpl::createWithRect({}, rect, deviceId, window.window);
    if (!_view || !_director->init()) {
        qDebug() << "failed to create the view";
        return false;
    }
    _director->setOpenGLView(_view);
    _director->setClearColor({});
    _director->setAnimationInterval(frameRate);
    if (!resourcePath.isEmpty()) {
        _director->fileUtils().addSearchPath(resourcePath.toStdString());
        _director->fileUtils().addSearchPath((resourcePath + QStringLiteral("/Common/Font/")).toStdString());
    }
    _device = _view->device();
    _context = _view->context();
    return true;
}

bool GraphicsWorld::createResources(const QString& shaderCachePath)
{
    const bool made = _graphicsRes.create(0, _device, _context, shaderCachePath + QStringLiteral("shader/"));
    if (!made)
        qDebug() << "failed to create d3d res";
    return made;
}

bool GraphicsWorld::createCanvas()
{
    _director->renderer().prepare(); // now, and not in the first frame
    const scene::RefPtr<scene::Scene> scene = scene::Scene::createWithSize(*_director, _view->frameSize());
    _canvasLayer = scene::LayerColor::create(*_director, canvasColor);
    scene->addChild(_canvasLayer);
    _director->runWithScene(scene);
    _director->startAnimation();
    _gridNode = scene::DrawNode::create(*_director);
    _canvasLayer->addChild(_gridNode, CanvasOrderMarks);
    _highlightNode = scene::DrawNode::create(*_director);
    _canvasLayer->addChild(_highlightNode, CanvasOrderHighlight);
    return true;
}

void GraphicsWorld::drawScene()
{
    _director->setViewDrawn(_view->isBottomRowFirst() || _canvasFrames > 0);
    _canvasFrames = std::max(0, _canvasFrames - 1);
    _director->mainLoop();
}

void GraphicsWorld::destroyResources() { _graphicsRes.destroyRes(); }

void GraphicsWorld::destroyCanvas()
{
    for (auto* const node : {&_gridNode, &_highlightNode}) {
        if (*node)
            (*node)->removeFromParent();
        node->reset();
    }
    _canvasLayer.reset();
}

void GraphicsWorld::destroyView()
{
    if (_director) {
        _director->end();
        _director->autoReleasePool().clear();
        _director->mainLoop();
        _director.reset();
    }
    _canvasFrames = 0;
    _view.reset();
    _context.reset();
    _device.reset();
}

graphics::TexturePtr GraphicsWorld::canvasPicture()
{
    if (!_view || _view->isBottomRowFirst())
        return {};
    if (_canvasFrames == 0) {
        _director->setViewDrawn(true);
        _director->redraw();
    }
    _canvasFrames = canvasFramesForAsking;
    return _view->backBuffer();
}

} // namespace tavlo
