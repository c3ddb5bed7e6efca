#pragma once

#include <tavlo/Export.h>
#include <tavlo/TavloPresentThread.h>

#include <memory>

class IUnknownEx;
class TavloPresentEnginePrivate;
struct tagTavloOutputStatistics;
struct tagTavloPresentAudioLevel;

/// The main engine: source channels, a preview, a program, and the outputs of the program.
///
/// The host starts it, posts TavloEventCreateEngine and then everything else it wants as events, and posts
/// TavloEventDestroyEngine before it stops it: what lies on the graphics device belongs to the frame thread.
class TAVLO_EXPORT TavloPresentEngine : public TavloPresentThread
{
public:
    TavloPresentEngine();
    ~TavloPresentEngine() override;

    void start(ITavloPresentThreadSink* sink, TavloPresentThreadMode mode) override;
    void stop() override;

    /// A scene file, as TavloEventEnterPresent takes it, which ends it. Null, with a line in the log, while the engine
    /// cannot read scene files. Any thread.
    static IUnknownEx* createFlatBuffersSerialize(QString& rootPath, QString& fileName);

    /// The meters, written by the sound's threads while the host reads them. Any thread.
    virtual tagTavloPresentAudioLevel& getAudioLevel();

    /// The figures of the program's first output; without a program the record stays as it is. Frame thread.
    virtual void getOutputStatistics(tagTavloOutputStatistics& statistics);

    /// The same of any output. Frame thread. \param index  0 to 3; others leave the record as it is
    void getOutputStatistics(int index, tagTavloOutputStatistics& statistics);

protected:
    /// For engines that go about it in another way.
    explicit TavloPresentEngine(std::unique_ptr<TavloPresentEnginePrivate> implementation);

    void onThreadBegin() override;
    bool onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds) override;
    void onThreadEnd() override;
    QVariant onThreadEvent(qulonglong event, QVariant& a1, QVariant& a2, QVariant& a3, QVariant& a4) override;

private:
    const std::unique_ptr<TavloPresentEnginePrivate> _private;
};
