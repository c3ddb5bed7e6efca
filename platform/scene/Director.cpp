#include "scene/Director.h"

#include "scene/ActionManager.h"
#include "scene/EventDispatcher.h"
#include "scene/FileUtils.h"
#include "scene/GLView.h"
#include "scene/Renderer.h"
#include "scene/Scene.h"
#include "scene/TextureCache.h"
#include "scene/text/FontFinder.h"
#include "scene/text/TextAtlas.h"

namespace tavlo::scene {

RefPtr<Director> Director::create() { return makeRef<Director>(); }

Director::Director()
    : _actions(std::make_unique<ActionManager>()), _events(std::make_unique<EventDispatcher>()),
      _files(std::make_unique<FileUtils>()), _fonts(std::make_unique<FontFinder>()),
      _texts(std::make_unique<TextAtlas>(*this)), _textures(std::make_unique<TextureCache>(*this)),
      _renderer(std::make_unique<Renderer>(*this))
{}

Director::~Director() { setOpenGLView(nullptr); }

bool Director::init()
{
    _ending = false;
    return true;
}

void Director::setOpenGLView(RefPtr<GLView> view)
{
    if (_view == view)
        return;
    if (_view)
        _view->cancelTouches();
    if (_view)
        _view->_director = nullptr;
    _view = std::move(view);
    if (_view)
        _view->_director = this;
}

graphics::DevicePtr Director::device() const { return _view ? _view->device() : nullptr; }
graphics::ContextPtr Director::context() const { return _view ? _view->context() : nullptr; }

void Director::runWithScene(RefPtr<Scene> scene)
{
    if (_scene)
        _scene->cleanUp();
    _scene = std::move(scene);
}

void Director::mainLoop()
{
    const RefPtr<Director> self(this); // what the scene and the pool let go of may hold the last reference
    if (_ending) {
        purge();
    } else if (_view) {
        if (_animating)
            _actions->stepTo(_view->frameStamp().clockMicroseconds);
        drawScene();
    }
    _pool.clear();
}

void Director::redraw()
{
    if (_view)
        drawScene();
}

void Director::drawScene()
{
    if (!_view->backBuffer())
        return;
    _renderer->beginFrame();
    _renderer->beginTarget(_view->backBuffer(), _view->isBottomRowFirst(), _clearColor);
    if (_scene)
        _scene->visit(*_renderer, {});
    if (_viewDrawn)
        _renderer->endTarget();
    else
        _renderer->dropTarget();
    _renderer->endFrame();
    _events->setDrawnFrame(_renderer->frame());
}

void Director::purge()
{
    _ending = false;
    _animating = false;
    runWithScene(nullptr);
    _actions->stopEverything();
    _events->removeAllEventListeners();
    _pool.clear();
    _texts->clear();
    _renderer->releaseResources();
    setOpenGLView(nullptr);
}

} // namespace tavlo::scene
