#include "channels/TavloPresentVideoBlendLayer.h"

#include <tavlo/TavloEngineEvents.h>

#include <QDebug>

using namespace tavlo;

TavloPresentVideoBlendLayer::~TavloPresentVideoBlendLayer() = default;

bool TavloPresentVideoBlendLayer::createLayer(ITavloPresentEnginePrivate* engine, graphics::DevicePtr device,
                                              graphics::ContextPtr context, const graphics::TextureDesc& desc)
{
    _engine = engine;
    _device = std::move(device);
    _context = std::move(context);
    _desc = desc;
    if (!_painter.create(engine->graphicsRes(), nullptr, _device, _context, desc, engine->renderSize())) {
        qDebug() << "failed to create _renderTargetPainter";
        return false;
    }
    // What is opaque black leaves the picture below as it is, where the file has no picture or none yet.
    _painter.clearColor = {0.0F, 0.0F, 0.0F, 1.0F};
    _painter.clear();
    _deferredContext = _device->createDeferredContext();
    return _deferredContext != nullptr;
}

void TavloPresentVideoBlendLayer::destroyLayer()
{
    closeSource();
    _path.clear();
    _deferredContext.reset();
    _painter.destroy();
    _context.reset();
    _device.reset();
}

void TavloPresentVideoBlendLayer::setPath(const QString& path)
{
    if (!_deferredContext || path == _path)
        return;
    closeSource();
    _path = path;
    if (_path.isEmpty())
        return;
    _engine->notifySink(TavloEventSourceOpened, QVariant(0), QVariant(channelIndex()), openSource(), {}, {});
}

QVariant TavloPresentVideoBlendLayer::openSource()
{
    _painter.clear();
    tagTavloPresentSourceInfo info;
    info.type = TavloPresentSourceTypeMovieList;
    info.moviePathList = {_path};
    SourceSite site;
    site.channel = this;
    site.engine = _engine;
    site.draw = &_painter;
    site.device = _device;
    site.context = _context;
    site.deferredContext = _deferredContext;
    SourcePtr source = TavloPresentSourceUtil::createSource(info, site);
    if (!source) {
        qDebug() << "failed to TavloPresentSourceUtil::createSource";
        return QVariant(0);
    }
    if (!source->openSource(info)) {
        qDebug() << "failed to openSource";
        source->closeSource();
        return QVariant(0);
    }
    _source = std::move(source);
    _source->play(); // nobody else would: an operator chooses the file, not a source
    return forHost(_engine, _source);
}

void TavloPresentVideoBlendLayer::closeSource()
{
    if (!_source)
        return;
    const SourcePtr source = std::move(_source);
    source->stop();
    source->closeSource();
    _engine->notifySink(TavloEventSourceClosed, QVariant(0), QVariant(channelIndex()), forHost(_engine, source), {},
                        {});
}

void TavloPresentVideoBlendLayer::stepFrame(const FrameStamps& stamps)
{
    if (_source)
        _source->drawFrame(_painter, stamps);
}

graphics::TexturePtr TavloPresentVideoBlendLayer::picture() const
{
    return _source ? _painter.targetResource() : graphics::TexturePtr{};
}

int TavloPresentVideoBlendLayer::channelIndex() { return static_cast<int>(TavloPresentChannelIDNone); }

void TavloPresentVideoBlendLayer::renderPicture(quint32 chroma, const graphics::TexturePtr& picture, QSizeF size,
                                                PlaneOffsets planeOffsets, bool clearFirst, bool flip)
{
    _painter.drawPicture(chroma, picture, size, planeOffsets, nullptr, clearFirst, flip, false);
}

void TavloPresentVideoBlendLayer::renderBlendPicture(const TransitionPicture& outgoing,
                                                     const TransitionPicture& incoming, float position, quint32 effect)
{
    _painter.drawTransition(outgoing.texture, outgoing.size, outgoing.flip, incoming.texture, incoming.size,
                            incoming.flip, position, effect);
}
