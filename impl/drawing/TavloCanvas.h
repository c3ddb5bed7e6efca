#pragma once

#include "drawing/TavloDrawDX11.h"
#include "drawing/TavloGraphicsRes.h"

#include <tavlo/records/GraphicsRecords.h>

#include "graphics/SwapChain.h"

#include <QObject>
#include <QSizeF>
#include <QString>

/// A device, a store of effects and images, and a back buffer to draw on: that of a window, or off screen.
///
/// Empty until `createCanvas` or `createSwapChain`, and again after `destroyCanvas` and after a failure. Both creations
/// and `destroyCanvas` belong to the owner's thread; between them the frame thread draws and presents, and detaches the
/// context (`Context::detach`) before the owner destroys the canvas.
class TavloCanvas : public QObject
{
    Q_OBJECT

public:
    using NativeWindow = tavlo::graphics::NativeWindow;
    using TexturePtr = tavlo::graphics::TexturePtr;

    explicit TavloCanvas(QObject* parent = nullptr);
    ~TavloCanvas() override;

    /// Opens a device of its own. The next thread that draws becomes its frame thread.
    /// \param resFlags   of ITavloGraphicsRes::create
    /// \param deviceId   of `enumGraphicsDevice`; -1 chooses one, which can show the window
    /// \param window     the window system's number: the host's window, or `handle` of a Window of ours; 0: off screen
    /// \param size       of the back buffer, pixels; a window of another size shows it stretched
    /// \param cachePath  folder in which compiled effects are kept; empty: they are not
    bool createCanvas(quint32 resFlags, int deviceId, NativeWindow window, QSizeF size, const QString& cachePath);

    /// The same on a device that exists. Thread of the context, which stays with it.
    bool createSwapChain(quint32 resFlags, tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                         NativeWindow window, QSizeF size, const QString& cachePath);

    /// Lets go of everything. May be called twice.
    void destroyCanvas();

    /// Shows the back buffer, which keeps what it holds, without waiting for the screen. Off screen it hands the work
    /// to the device.
    void present();

    bool isCreated() const { return _renderTargetDraw.isMade(); }

    /// Pixels; -1, -1 before creation.
    QSizeF size() const { return _size; }

    /// What is drawn on. Off screen its top row comes first, and it can be read and drawn from as any picture; a
    /// window's has its bottom row first.
    const TexturePtr& backBuffer() const { return _backBuffer; }

    /// Draws on the back buffer.
    TavloDrawDX11& renderTargetDraw() { return _renderTargetDraw; }

    TavloGraphicsRes& graphicsRes() { return _graphicsRes; }
    const tavlo::graphics::DevicePtr& device() const { return _dxDevice; }
    const tavlo::graphics::ContextPtr& context() const { return _dxContext; }

    /// Of the adapter; without a name on a device that was given.
    const tagTavloGraphicsDevInfo& deviceInfo() const { return _deviceInfo; }

    /// Folder of this build's compiled effects, with its separator; empty without a cache.
    const QString& shaderCachePath() const { return _shaderCachePath; }

private:
    bool createParts(quint32 resFlags, NativeWindow window, const QString& cachePath);

    // fixed from creation to destroyCanvas
    tagTavloGraphicsDevInfo _deviceInfo;
    tavlo::graphics::DevicePtr _dxDevice;
    tavlo::graphics::ContextPtr _dxContext;
    tavlo::graphics::SwapChainPtr _dxgiswapChain; ///< null off screen
    TexturePtr _backBuffer;
    QString _shaderCachePath;
    QSizeF _size{-1, -1};
    TavloGraphicsRes _graphicsRes;

    // frame thread
    TavloDrawDX11 _renderTargetDraw;
    bool _lossTold = false;
};
