#pragma once

#include "graphics/Device.h"
#include "scene/AutoReleasePool.h"
#include "scene/Geometry.h"
#include "scene/Ref.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tavlo::scene {

class ActionManager;
class EventDispatcher;
class FileUtils;
class FontFinder;
class GLView;
class Renderer;
class Scene;
class TextAtlas;
class TextureCache;

/// The three stamps of a frame.
struct FrameStamp
{
    std::uint64_t time = 0;              ///< as the frame thread counts it
    std::uint64_t frameId = 0;           ///< counts frames
    std::uint64_t clockMicroseconds = 0; ///< what actions run by
};

/// The scene graph of one engine: its view, its running scene and all that serves them. Several live side by side in a
/// process and share nothing.
///
/// Every node is made for one director and keeps it alive; `end` and one more `mainLoop` let go of the scene, without
/// which scene and director hold each other. Frame thread, like everything in this library.
class Director : public Ref
{
public:
    static RefPtr<Director> create();
    Director();
    ~Director() override;

    /// Makes it ready for a view and a scene, also again after `end`.
    bool init();

    /// A folder for compiled shaders, in the local 8 bit encoding; before the first frame. Empty, as made, keeps none.
    void setDataCachePath(std::string path) { _dataCachePath = std::move(path); }
    const std::string& dataCachePath() const { return _dataCachePath; }

    /// What is drawn on. Nodes that hold pictures are made only while there is one.
    void setOpenGLView(RefPtr<GLView> view);
    GLView* openGLView() const { return _view.get(); }

    /// The device and the frame thread's context of the view; null without one.
    graphics::DevicePtr device() const;
    graphics::ContextPtr context() const;

    /// Under the scene. As made: transparent black.
    void setClearColor(const Color4F& color) { _clearColor = color; }

    /// Frames a second, for who wants to know: the caller of `mainLoop` sets the pace.
    void setAnimationInterval(float rate) { _animationInterval = rate; }
    float animationInterval() const { return _animationInterval; }

    /// Whether frames draw the view's own picture. Off, they draw only what the scene draws into textures: for a view that
    /// nobody sees. As made: on.
    void setViewDrawn(bool drawn) { _viewDrawn = drawn; }

    /// Takes the place of the running scene.
    void runWithScene(RefPtr<Scene> scene);
    Scene* runningScene() const { return _scene.get(); }

    /// Whether `mainLoop` steps the actions. As made: not yet.
    void startAnimation() { _animating = true; }
    void stopAnimation() { _animating = false; }

    /// One frame: steps the actions by the view's clock, draws the scene, then clears the auto-release pool. Allocates
    /// nothing once the scene has been drawn as large as it gets.
    void mainLoop();

    /// Draws the scene once more as it stands.
    void redraw();

    /// The next `mainLoop` draws no more: it takes the scene apart and lets go of it and of the view.
    void end() { _ending = true; }

    ActionManager& actionManager() { return *_actions; }
    EventDispatcher& eventDispatcher() { return *_events; }
    FileUtils& fileUtils() { return *_files; }
    FontFinder& fontFinder() { return *_fonts; }
    TextAtlas& textAtlas() { return *_texts; }
    TextureCache& textureCache() { return *_textures; }
    Renderer& renderer() { return *_renderer; }
    AutoReleasePool& autoReleasePool() { return _pool; }

private:
    void drawScene();
    void purge();

    // fixed after construction
    const std::unique_ptr<ActionManager> _actions;
    const std::unique_ptr<EventDispatcher> _events;
    const std::unique_ptr<FileUtils> _files;
    const std::unique_ptr<FontFinder> _fonts;
    const std::unique_ptr<TextAtlas> _texts;
    const std::unique_ptr<TextureCache> _textures;
    const std::unique_ptr<Renderer> _renderer;

    std::string _dataCachePath;
    RefPtr<GLView> _view;
    RefPtr<Scene> _scene;
    AutoReleasePool _pool;
    Color4F _clearColor;
    float _animationInterval = 0;
    bool _viewDrawn = true;
    bool _animating = false;
    bool _ending = false;
};

} // namespace tavlo::scene
