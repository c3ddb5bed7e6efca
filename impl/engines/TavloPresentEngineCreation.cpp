// How the main engine comes and goes.

#include "drawing/ShaderCache.h"
#include "engines/TavloPresentEnginePrivate.h"

#include <tavlo/TavloPresentUtil.h>

#include <QCoreApplication>
#include <QDebug>
#include <QStandardPaths>

using namespace tavlo;

namespace {

constexpr auto context = "TavloPresentEnginePrivate";

QString translated(const char* text) { return QCoreApplication::translate(context, text); }

/// Without a folder of the host's it is the user's.
QString cacheRoot(const QString& dataCachePath)
{
    return dataCachePath.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::CacheLocation) : dataCachePath;
}

float directorRate(const tagTavloVideoInfo& video)
{
    return static_cast<float>(video.fpsNum) / static_cast<float>(video.fpsDen);
}

} // namespace

bool TavloPresentEnginePrivate::beginStep(const QString& progress)
{
    qDebug().noquote() << progress;
    notifySink(TavloEventCreateProgress, QVariant(0), QVariant(progress), {}, {}, {});
    return true;
}

std::vector<EngineStep> TavloPresentEnginePrivate::creationSteps(const tagTavloPresentEngineInfo& engine,
                                                                 const tagTavloWindowInfo& window)
{
    const QString sourceText = translated("Create source-%1 channel ...");
    std::vector<EngineStep> steps{
        {translated("Init d3d api ..."), [=, this] { return chooseDevice(engine.graphicsDeviceId); }},
        {translated("Init render data ..."), [=, this] { return takeRecords(engine, window); }},
        {translated("Init resource path ..."), [this] { return findResources(); }},
        {translated("Check shader path ..."),
         [this] {
             _shaderCachePath = prepareShaderCache(cacheRoot(_engineInfo.dataCachePath));
             return true;
         }},
        {translated("Set OpenGL ContextAttrs ..."),
         [this] {
             // Whole frames a second: 29 for 30000/1001, so that no frame is ever shown twice for want of a new one.
             _thread->setFps(static_cast<float>(_engineInfo.videoInfo.fpsNum / _engineInfo.videoInfo.fpsDen));
             return true;
         }},
        {translated("Create draw director ..."),
         [this] {
             return _world.createView(_windowInfo, _graphicsDevice.id, _shaderCachePath, _engineInfo.resourcePath,
                                      directorRate(_engineInfo.videoInfo));
         }},
        {translated("Create d3d resource ..."), [this] { return _world.createResources(_shaderCachePath); }},
        {translated("Create canvas layer ..."), [this] { return _world.createCanvas(); }},
        {translated("Create PGM channel ..."), [this] { return createProgram(); }},
        {translated("Create PVM channel ..."), [this] { return createPreview(); }},
    };
    for (int i = 0; i < static_cast<int>(engine.channelCount); ++i)
        steps.push_back({sourceText.arg(i + 1), [this, i] { return createSource(i); }});
    steps.push_back({translated("Update window placement ..."), [this] {
                         layOut();
                         markHighlightDirty();
                         return true;
                     }});
    return steps;
}

bool TavloPresentEnginePrivate::createEngine(const tagTavloPresentEngineInfo& engine, const tagTavloWindowInfo& window)
{
    if (_world.hasDirector()) {
        qDebug() << "the engine is created already";
        return false;
    }
    if (!checkRecords(engine, window))
        return false;
    return runSteps(creationSteps(engine, window), [this](const QString& progress) { return beginStep(progress); });
}

bool TavloPresentEnginePrivate::checkRecords(const tagTavloPresentEngineInfo& engine,
                                             const tagTavloWindowInfo& window) const
{
    constexpr quint32 channelLimit = 64;
    const tagTavloVideoInfo& video = engine.videoInfo;
    QString wrong;
    if (video.width <= 0 || video.height <= 0)
        wrong = QStringLiteral("videoInfo: no frame of %1 x %2").arg(video.width).arg(video.height);
    else if (video.fpsNum <= 0 || video.fpsDen <= 0)
        wrong = QStringLiteral("videoInfo: no frame rate of %1/%2").arg(video.fpsNum).arg(video.fpsDen);
    else if (engine.channelCount > channelLimit)
        wrong = QStringLiteral("channelCount: %1 is above %2").arg(engine.channelCount).arg(channelLimit);
    else if (window.rect.isEmpty())
        wrong = QStringLiteral("rect: the window is empty");
    if (!wrong.isEmpty())
        qDebug().noquote() << wrong;
    return wrong.isEmpty();
}

bool TavloPresentEnginePrivate::chooseDevice(int deviceId)
{
    QList<tagTavloGraphicsDevInfo> devices = TavloPresentUtil::enumGraphicsDevice();
    _graphicsDevice = TavloPresentUtil::getWorkGraphicsDeviceInfo(deviceId, devices);
    if (_graphicsDevice.name.isEmpty()) {
        qDebug() << "no graphics device";
        return false;
    }
    qDebug() << "TavloPresentEnginePrivate:: use graphics card: " << _graphicsDevice.name
             << " , interop type: " << _graphicsDevice.interopType;
    return true;
}

bool TavloPresentEnginePrivate::takeRecords(const tagTavloPresentEngineInfo& engine, const tagTavloWindowInfo& window)
{
    _engineInfo = engine;
    _windowInfo = window;
    _renderSize = QSizeF(engine.videoInfo.width, engine.videoInfo.height);
    _blankImage = QImage(engine.videoInfo.width, engine.videoInfo.height, QImage::Format_ARGB32);
    _blankImage.fill(0); // a null image stays one
    _gridLineWidth = static_cast<int>(TavloPresentUtil::getGridLineWidth(window.rect.size()));
    if (_blankImage.isNull())
        qDebug() << "videoInfo: no memory for a frame of" << _renderSize;
    return !_blankImage.isNull();
}

bool TavloPresentEnginePrivate::findResources()
{
    if (_fontList.isEmpty())
        _fontList = systemFonts() +
                    (_engineInfo.resourcePath.isEmpty() ? QList<FontFile>{} : folderFonts(_engineInfo.resourcePath));
    return true;
}

ChannelSite TavloPresentEnginePrivate::channelSite(int channelId, const QString& name, quint32 flags)
{
    return {this, channelId, _world.director(), _world.view(), _world.canvas(), _world.device(), _world.context(),
            name, flags};
}

bool TavloPresentEnginePrivate::createProgram()
{
    const int id = static_cast<int>(TavloPresentChannelIDPGM);
    if (!_channels.addProgram(channelSite(id, QStringLiteral("PGM"), ChannelMakesOutput), _renderSize)) {
        qDebug() << "failed to create pgm channel";
        return false;
    }
    _pgm = _channels.program();
    return true;
}

bool TavloPresentEnginePrivate::createPreview()
{
    const int id = static_cast<int>(TavloPresentChannelIDPVM);
    if (!_channels.addPreview(channelSite(id, QStringLiteral("PVM"), 0), _renderSize)) {
        qDebug() << "failed to create pvm channel";
        return false;
    }
    _channels.preview()->setAudioMixer(_audioMixerParam);
    _pvm = _channels.preview();
    return true;
}

// An engine goes on with the channels that could be made: none comes behind one that failed.
bool TavloPresentEnginePrivate::createSource(int index)
{
    const bool allBefore = static_cast<int>(_channels.sources().size()) == index &&
                           (index == 0 || _channels.sources().back()->renderTexture());
    if (allBefore && !_channels.addSource(channelSite(index, QString::number(index + 1), 0), _renderSize))
        qDebug() << "failed to create source channel";
    return true;
}

void TavloPresentEnginePrivate::updateWindow(const tagTavloWindowInfo& window)
{
    if (!_world.view() || (window.layoutType == _windowInfo.layoutType && window.rect == _windowInfo.rect))
        return;
    const tagTavloWindowInfo before = _windowInfo;
    _windowInfo.layoutType = window.layoutType;
    _windowInfo.rect = window.rect;
    if (!layOut())
        _windowInfo = before;
}

bool TavloPresentEnginePrivate::layOut()
{
    constexpr quint32 everything = 65535;
    const QRect& rect = _windowInfo.rect;
    const QSizeF size = rect.size();
    if (!_world.view()->setWindowPlacement({static_cast<float>(rect.x()), static_cast<float>(rect.y()),
                                            static_cast<float>(rect.width()), static_cast<float>(rect.height())}))
        return false;
    TavloPresentUtil::computePresentViewLayoutInfo(_windowInfo.layoutType, static_cast<int>(_engineInfo.channelCount),
                                                   size, _layoutInfo, everything);
    if (!_world.grid())
        return true;
    const QRectF area(QPointF(), size);
    _world.grid()->clear();
    const auto place = [&](TavloPresentChannel* channel, const QRectF& pane) {
        if (channel)
            channel->setViewRect(_world.grid(), _gridLineWidth, pane, area);
    };
    place(_channels.preview(), _layoutInfo.pvmRect);
    place(_channels.program(), _layoutInfo.pgmRect);
    for (std::size_t i = 0; i < _channels.sources().size() && i < _layoutInfo.paneRects.size(); ++i)
        place(_channels.sources()[i], _layoutInfo.paneRects[i]);
    return true;
}

void TavloPresentEnginePrivate::announceDestruction(const QString& progress)
{
    notifySink(TavloEventDestroyProgress, QVariant(0), QVariant(progress), {}, {}, {});
}

// Channels go while device and store are there, the scene after the channels, the view last. Each step takes what it
// finds: an engine that was built in part goes the same way.
void TavloPresentEnginePrivate::destroyEngine()
{
    announceDestruction(QStringLiteral("Destroy all channel ..."));
    _pvm = nullptr;
    _pgm = nullptr;
    _channels.destroy();
    announceDestruction(QStringLiteral("Destroy d3d resource ..."));
    _world.destroyResources();
    _world.destroyCanvas();
    announceDestruction(QStringLiteral("Destroy canvas director ..."));
    _world.destroyView();
    announceDestruction(QStringLiteral("Terminate d3d api ..."));
    _highlightDirty = 0;
    _windowInfo = {};
    _renderSize = QSizeF(-1.0, -1.0);
}
