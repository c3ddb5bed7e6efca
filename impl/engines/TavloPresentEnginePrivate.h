#pragma once

#include "base/FontList.h"
#include "engines/ChannelSet.h"
#include "engines/EngineSteps.h"
#include "engines/GraphicsWorld.h"
#include "frame/EventTable.h"
#include "frame/ITavloPresentEnginePrivate.h"

#include <tavlo/TavloPresentEngine.h>
#include <tavlo/records/EngineRecords.h>
#include <tavlo/records/GraphicsRecords.h>

/// What the main engine is made of: its graphics, its channels, its events and its frame. Frame thread, where nothing
/// else is said.
class TavloPresentEnginePrivate
    : public tavlo::Implements<TavloPresentEnginePrivate, ITavloPresentEnginePrivate, ITavloPresentEnginePrivate2>
{
public:
    TavloPresentEnginePrivate();
    virtual ~TavloPresentEnginePrivate();
    TavloPresentEnginePrivate(const TavloPresentEnginePrivate&) = delete;
    TavloPresentEnginePrivate& operator=(const TavloPresentEnginePrivate&) = delete;

    /// The engine that this belongs to, before it starts.
    void setThread(TavloPresentEngine* thread) { _thread = thread; }

    virtual void getOutputStatistics(tagTavloOutputStatistics& statistics);
    virtual void onThreadBegin() {}
    virtual bool onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds);
    virtual void onThreadEnd() {}
    virtual QVariant onThreadEvent(qulonglong event, QVariant& a1, QVariant& a2, QVariant& a3, QVariant& a4);

    /// The figures of one of the program's outputs; without a program the record stays as it is. Frame thread.
    void outputStatistics(int index, tagTavloOutputStatistics& statistics);

    // ITavloPresentEnginePrivate
    void destroy() override {} // the engine's own
    tagTavloPresentEngineInfo& engineInfo() override { return _engineInfo; }
    QSizeF& renderSize() override { return _renderSize; }
    QImage& blankImage() override { return _blankImage; }
    QString findFont(QString name) override;
    tagTavloPresentAudioLevel& audioLevel() override { return _audioLevel; }
    tagTavloPresentAudioMixerParam& audioMixerParam() override { return _audioMixerParam; }
    ITavloPresentChannelSource* sourceChannel(int index) override;
    float gridLineWidth() override { return static_cast<float>(_gridLineWidth); }
    QString& shaderCachePath() override { return _shaderCachePath; }
    ITavloGraphicsRes* graphicsRes() override { return &_world.resources(); }
    void* reserved() override { return nullptr; }
    int labelFontSize() override { return 12; }
    void channelColor(QColor& color, int channelId) override;
    int programChannelId() override { return static_cast<int>(TavloPresentChannelIDPGM); }
    void channelUsage(int channelId, quint8& flags) override;
    quint64 channelPicture(int channelId, bool& flippedY, QSizeF& size, quint64& shaderView) override;
    void releaseChannelPicture(int, quint64) override {}
    void notifySink(qulonglong event, QVariant a0, QVariant a1, QVariant a2, QVariant a3, QVariant a4) override;
    void postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4) override;
    void markHighlightDirty() override { ++_highlightDirty; }
    bool isOnProgram(int channelId) override;
    bool isOnNext(int channelId) override;
    void pushAudio(ITavloPresentChannelSource* source, int channelId, int index, block_t* block,
                   const tagTavloAudioInfo& format) override;
    void audioFlush(int channelId, bool now) override;
    int audioTime(int channelId, qint64& microseconds) override;
    void audioPause(int channelId, qint64 date) override;
    void audioResume(int channelId, qint64 date) override;
    void sourceStateChanged(int channelId, int state, int index, int count) override;
    void updatePGMLevel(int channelId, const void* samples, quint32 length, const tagTavloAudioInfo& format) override;
    bool hasSink() override;

    // ITavloPresentEnginePrivate2
    tavlo::scene::RenderTexture* channelTarget(int channelId, quint64* shaderView, QSizeF* size) override;
    void channelContextMenu(int, quint32, qint64) override {}

protected:
    /// Tells log and host of a step of creation. False keeps it from running.
    virtual bool beginStep(const QString& progress);

    tavlo::ChannelSet& channels() { return _channels; }
    tavlo::GraphicsWorld& world() { return _world; }

private:
    /// A channel's picture, or with TavloPresentChannelIDCanvas, off screen, that of the whole canvas.
    void saveChannelPicture(int channelId, const QString& path, QSize size);

    std::vector<tavlo::EventRow> eventRows();

    // Creation, a function for each step
    std::vector<tavlo::EngineStep> creationSteps(const tagTavloPresentEngineInfo& engine,
                                                 const tagTavloWindowInfo& window);
    bool createEngine(const tagTavloPresentEngineInfo& engine, const tagTavloWindowInfo& window);
    bool chooseDevice(int deviceId);
    bool checkRecords(const tagTavloPresentEngineInfo& engine, const tagTavloWindowInfo& window) const;
    bool takeRecords(const tagTavloPresentEngineInfo& engine, const tagTavloWindowInfo& window);
    bool findResources();
    bool createProgram();
    bool createPreview();
    bool createSource(int index);
    tavlo::ChannelSite channelSite(int channelId, const QString& name, quint32 flags);

    void destroyEngine();
    void announceDestruction(const QString& progress);

    void updateWindow(const tagTavloWindowInfo& window);
    bool layOut(); ///< false, and nothing changes, when the view refuses the window's rectangle

    bool showsChannel(int shown, int channelId) const;
    void drawHighlight();
    void drawMark(int channelId, int width, const tavlo::scene::Color4F& color);

    TavloPresentEngine* _thread = nullptr; ///< fixed after construction

    tavlo::EventTable _events;
    tagTavloGraphicsDevInfo _graphicsDevice; ///< without a name while there is none
    tagTavloPresentEngineInfo _engineInfo;   ///< fixed from creation on
    tagTavloWindowInfo _windowInfo;          ///< current placement
    int _gridLineWidth = 0;                  ///< pixels
    QSizeF _renderSize{-1.0, -1.0};          ///< the frame, pixels
    QImage _blankImage;
    QList<tavlo::FontFile> _fontList;
    QString _shaderCachePath;
    tagTavloPresentViewLayoutInfo _layoutInfo;
    int _highlightDirty = 0; ///< how often the marks were asked for since they were drawn

    tagTavloPresentAudioLevel _audioLevel;           ///< field by field atomic: written on the sound's threads
    tagTavloPresentAudioMixerParam _audioMixerParam; ///< frame thread; the channels have copies of their own

    tavlo::GraphicsWorld _world;
    tavlo::ChannelSet _channels;

    // any thread: what the sound's threads reach; null before creation and from the begin of destruction on
    std::atomic<TavloPresentChannelPVM*> _pvm = nullptr;
    std::atomic<TavloPresentChannelPGM*> _pgm = nullptr;
};
