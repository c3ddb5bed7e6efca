#include "Sheets.h"

#include "engines/TavloPresentEnginePrivate.h"
#include "support/TestSource.h"

#include <QCoreApplication>
#include <QFile>
#include <QThreadPool>

#include <cstdio>

namespace {

using namespace tavlo;

class Stage final : public TavloPresentEnginePrivate
{
public:
    using TavloPresentEnginePrivate::channels;
};

class Engine final : public TavloPresentEngine
{
public:
    explicit Engine(std::unique_ptr<Stage> stage) : TavloPresentEngine(std::move(stage)) {}

    void send(qulonglong event, const QVariant& a1, const QVariant& a2)
    {
        postEvent(event, a1, a2);
        QCoreApplication::sendPostedEvents(this);
    }
};

} // namespace

bool writeMultiViewSheet(const QDir& folder)
{
    const test::TestSource::Rule rule;
    auto made = std::make_unique<Stage>();
    Stage& stage = *made;
    Engine engine(std::move(made));
    engine.start(nullptr, TavloPresentThreadModeStep);
    tagTavloPresentEngineInfo info;
    info.videoInfo.width = 640;
    info.videoInfo.height = 360;
    info.pgmAudioDevName = info.pvmAudioDevName = QStringLiteral("None");
    tagTavloWindowInfo window;
    window.rect = QRect(0, 0, 1280, 720);
    engine.send(TavloEventCreateEngine, QVariant::fromValue(info), QVariant::fromValue(window));
    tagTavloPresentSourceInfo source;
    source.type = TavloPresentSourceTypeMovieList;
    for (int i = 0; i < static_cast<int>(info.channelCount) - 1; ++i)
        engine.send(TavloEventOpenSource, i, QVariant::fromValue(source));
    const tagTavloPresentPictureMisc misc{QStringLiteral("Studio"), 0xff203040};
    engine.send(TavloEventSetPictureMisc, 7, QVariant::fromValue(misc));
    engine.send(TavloEventSelectChannel, TavloPresentChannelIDPGM, 0);
    engine.send(TavloEventSelectChannel, TavloPresentChannelIDPVM, 5);
    if (TavloPresentChannelPGM* const program = stage.channels().program())
        program->setFader(0.5);
    for (int i = 0; i < 3; ++i)
        engine.doFrameStep();
    const QString path = folder.filePath(QStringLiteral("multiview.png"));
    QFile::remove(path);
    engine.send(TavloEventSaveChannelPicture, TavloPresentChannelIDCanvas, path);
    engine.send(TavloEventDestroyEngine, {}, {});
    engine.stop();
    QThreadPool::globalInstance()->waitForDone(); // which writes it
    if (QFile::exists(path))
        return true;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    return false;
}
