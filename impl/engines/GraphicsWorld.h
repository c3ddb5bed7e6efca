#pragma once

#include "drawing/TavloGraphicsRes.h"

#include <tavlo/records/EngineRecords.h>

#include "scene/Director.h"
#include "scene/DrawNode.h"
#include "scene/GLView.h"
#include "scene/Layer.h"
#include "scene/Scene.h"

namespace tavlo {

/// The graphics of one engine: device, view, scene, the canvas on which channels stand, and what all drawing shares.
/// Frame thread.
class GraphicsWorld
{
public:
    /// The director and a view on the host's window, or off screen. False, the reason in the log, when it cannot.
    /// \param deviceId       index of the adapter
    /// \param frameRate      frames a second, for the director
    bool createView(const tagTavloWindowInfo& window, int deviceId, const QString& shaderCachePath,
                    const QString& resourcePath, float frameRate);

    /// The store of effects and images.
    bool createResources(const QString& shaderCachePath);

    /// Scene, canvas, and the nodes of frames and marks.
    bool createCanvas();

    /// One frame of the scene. Off screen the canvas is drawn while somebody looks at it, and not for nobody.
    void drawScene();

    /// After all that stands on the canvas has gone.
    void destroyResources();
    void destroyCanvas();

    /// Scene, view and device. Does nothing when there is none.
    void destroyView();

    bool hasDirector() const { return static_cast<bool>(_director); }
    scene::Director* director() const { return _director.get(); }
    scene::GLViewImpl* view() const { return _view.get(); }
    scene::LayerColor* canvas() const { return _canvasLayer.get(); }
    scene::DrawNode* grid() const { return _gridNode.get(); }           ///< the frames around the channels
    scene::DrawNode* highlight() const { return _highlightNode.get(); } ///< the marks of preview and program
    TavloGraphicsRes& resources() { return _graphicsRes; }
    const graphics::DevicePtr& device() const { return _device; }
    const graphics::ContextPtr& context() const { return _context; }

    /// Off screen, the picture of the whole canvas, its top row first; null on a window. It stays up to date for a second
    /// of frames from the last time that somebody asked.
    graphics::TexturePtr canvasPicture();

private:
    scene::RefPtr<scene::Director> _director;
    scene::RefPtr<scene::GLViewImpl> _view;
    scene::RefPtr<scene::LayerColor> _canvasLayer;
    scene::RefPtr<scene::DrawNode> _gridNode;
    scene::RefPtr<scene::DrawNode> _highlightNode;
    graphics::DevicePtr _device;
    graphics::ContextPtr _context;
    TavloGraphicsRes _graphicsRes;
    int _canvasFrames = 0; ///< off screen, for how many frames more the canvas is drawn
};

} // namespace tavlo
