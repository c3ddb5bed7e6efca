#include "engines/TavloPresentEnginePrivate.h"

#include "engines/ChannelEvents.h"

#include "drawing/SavedPicture.h"

#include <QColor>
#include <QDebug>

using namespace tavlo;

TavloPresentEnginePrivate::TavloPresentEnginePrivate() : _events(eventRows()) {}

TavloPresentEnginePrivate::~TavloPresentEnginePrivate() = default;

std::vector<EventRow> TavloPresentEnginePrivate::eventRows()
{
    const QVariant done(0);
    std::vector<EventRow> rows{
        {TavloEventCreateEngine,
         [this, done](EventArguments args) -> std::optional<QVariant> {
             const bool made =
                 createEngine(payload<tagTavloPresentEngineInfo>(args.a1), payload<tagTavloWindowInfo>(args.a2));
             return made ? std::optional(done) : std::nullopt;
         }},
        {TavloEventDestroyEngine,
         [this, done](EventArguments) -> std::optional<QVariant> {
             destroyEngine();
             return done;
         }},
        {TavloEventUpdateWindow,
         [this, done](EventArguments args) -> std::optional<QVariant> {
             if (payload<int>(args.a1) == 0)
                 updateWindow(payload<tagTavloWindowInfo>(args.a2));
             markHighlightDirty();
             return done;
         }},
        {TavloEventSetAudioMixer,
         [this, done](EventArguments args) -> std::optional<QVariant> {
             _audioMixerParam = payload<tagTavloPresentAudioMixerParam>(args.a2);
             if (_channels.program())
                 _channels.program()->setAudioMixer(_audioMixerParam);
             if (_channels.preview())
                 _channels.preview()->setAudioMixer(_audioMixerParam);
             return done;
         }},
        {TavloEventSaveChannelPicture,
         [this, done](EventArguments args) -> std::optional<QVariant> {
             saveChannelPicture(payload<int>(args.a1), payload<QString>(args.a2), payload<QSize>(args.a3));
             return done;
         }},
    };
    for (auto shared : {channelEventRows(_channels), sourceEventRows(_channels), outputEventRows(_channels),
                        switchEventRows(_channels, [this] { markHighlightDirty(); }), itemEventRows(_channels)})
        rows.insert(rows.end(), shared.begin(), shared.end());
    return rows;
}

QVariant TavloPresentEnginePrivate::onThreadEvent(qulonglong event, QVariant& a1, QVariant& a2, QVariant& a3,
                                                  QVariant& a4)
{
    return _events.dispatch(event, {a1, a2, a3, a4});
}

void TavloPresentEnginePrivate::getOutputStatistics(tagTavloOutputStatistics& statistics)
{
    outputStatistics(0, statistics);
}

void TavloPresentEnginePrivate::outputStatistics(int index, tagTavloOutputStatistics& statistics)
{
    if (_channels.program() && _channels.program()->outputTarget())
        _channels.program()->outputTarget()->getStatistics(index, &statistics);
}

QString TavloPresentEnginePrivate::findFont(QString name) { return tavlo::findFont(_fontList, name); }

ITavloPresentChannelSource* TavloPresentEnginePrivate::sourceChannel(int index) { return _channels.source(index); }

void TavloPresentEnginePrivate::channelColor(QColor& color, int channelId)
{
    if (channelId == static_cast<int>(TavloPresentChannelIDPVM))
        color = QColor(0, 240, 0);
    else if (channelId == static_cast<int>(TavloPresentChannelIDPGM))
        color = QColor(232, 32, 32);
    else
        color = QColor(255, 255, 255);
}

void TavloPresentEnginePrivate::channelUsage(int channelId, quint8& flags)
{
    if (_channels.preview() && _channels.preview()->overlayShows(channelId))
        flags |= 1;
    if (_channels.program() && _channels.program()->overlayShows(channelId))
        flags |= 2;
}

quint64 TavloPresentEnginePrivate::channelPicture(int channelId, bool& flippedY, QSizeF& size, quint64& shaderView)
{
    flippedY = false; // every picture that leaves here keeps its top row first
    const TavloPresentChannelRich* const channel = _channels.find(channelId);
    graphics::TexturePtr texture;
    if (channel)
        texture = channel->targetTexture();
    else if (channelId == static_cast<int>(TavloPresentChannelIDCanvas))
        texture = _world.canvasPicture();
    if (!texture)
        return 0;
    size = QSizeF(texture->desc().width, texture->desc().height);
    shaderView = static_cast<quint64>(reinterpret_cast<quintptr>(texture.get()));
    return shaderView;
}

void TavloPresentEnginePrivate::saveChannelPicture(int channelId, const QString& path, QSize size)
{
    if (TavloPresentChannelRich* const channel = _channels.find(channelId)) {
        channel->savePicture(path, size);
    } else if (channelId == static_cast<int>(TavloPresentChannelIDCanvas) && _world.view()) {
        const graphics::TexturePtr canvas = _world.canvasPicture(); // asked for, though nothing may be saved
        if (!path.isEmpty())
            savePicture(*_world.device(), *_world.context(), canvas ? canvas : _world.view()->backBuffer(), path, size,
                        !canvas);
    }
}

scene::RenderTexture* TavloPresentEnginePrivate::channelTarget(int channelId, quint64* shaderView, QSizeF* size)
{
    const TavloPresentChannelRich* const channel = _channels.find(channelId);
    if (!channel || !channel->renderTexture())
        return nullptr;
    if (shaderView)
        *shaderView = static_cast<quint64>(reinterpret_cast<quintptr>(channel->targetTexture().get()));
    if (size)
        *size = channel->channelSize();
    return channel->renderTexture();
}

void TavloPresentEnginePrivate::notifySink(qulonglong event, QVariant a0, QVariant a1, QVariant a2, QVariant a3,
                                           QVariant a4)
{
    if (ITavloPresentThreadSink* const sink = _thread ? _thread->sink() : nullptr)
        sink->onEvent(event, a0, a1, a2, a3, a4);
}

bool TavloPresentEnginePrivate::hasSink() { return _thread && _thread->sink(); }

void TavloPresentEnginePrivate::postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4)
{
    if (_thread)
        _thread->postEvent(event, a1, a2, a3, a4);
}

bool TavloPresentEnginePrivate::showsChannel(int shown, int channelId) const
{
    TavloPresentChannelSource* const source = _channels.source(shown);
    return shown == channelId || (source && source->containsChannel(channelId));
}

bool TavloPresentEnginePrivate::isOnProgram(int channelId)
{
    return _channels.program() && showsChannel(_channels.program()->programChannel(), channelId);
}

bool TavloPresentEnginePrivate::isOnNext(int channelId)
{
    return _channels.program() && showsChannel(_channels.program()->nextChannel(), channelId);
}

void TavloPresentEnginePrivate::sourceStateChanged(int channelId, int state, int index, int count)
{
    if (state == TavloPresentSourceStateEnded && index == count - 1)
        postEvent(TavloEventSourcePlaylistEnd, QVariant(channelId), {}, {}, {});
}

// The way of the sound, on the threads of sources and mixer

void TavloPresentEnginePrivate::pushAudio(ITavloPresentChannelSource* source, int channelId, int index, block_t* block,
                                          const tagTavloAudioInfo& format)
{
    block_t* const processed = source ? source->processAudio(block, format) : block;
    if (!processed)
        return;
    if (TavloPresentChannelPGM* const program = _pgm)
        program->pushAudio(channelId, index, processed, format);
    if (TavloPresentChannelPVM* const preview = _pvm)
        preview->pushAudio(channelId, index, processed, format);
}

void TavloPresentEnginePrivate::audioFlush(int channelId, bool now)
{
    if (TavloPresentChannelPGM* const program = _pgm)
        program->audioFlush(channelId, now);
}

int TavloPresentEnginePrivate::audioTime(int channelId, qint64& microseconds)
{
    microseconds = 0;
    TavloPresentChannelPGM* const program = _pgm;
    return program ? program->audioTime(channelId, microseconds) : -1;
}

void TavloPresentEnginePrivate::audioPause(int channelId, qint64 date)
{
    if (TavloPresentChannelPGM* const program = _pgm)
        program->audioPause(channelId, date);
}

void TavloPresentEnginePrivate::audioResume(int channelId, qint64 date)
{
    if (TavloPresentChannelPGM* const program = _pgm)
        program->audioResume(channelId, date);
}

void TavloPresentEnginePrivate::updatePGMLevel(int, const void* samples, quint32 length,
                                               const tagTavloAudioInfo& format)
{
    if (TavloPresentChannelPGM* const program = _pgm)
        program->updateLevel(samples, length, format);
}
