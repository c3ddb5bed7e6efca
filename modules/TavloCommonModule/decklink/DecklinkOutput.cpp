#include "TavloCommonModule/decklink/DecklinkOutput.h"

#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <pthread.h>
#include <utility>

namespace tavlo::decklink {

namespace {

using namespace std::chrono;

constexpr seconds steadyTime{10}; // a card that played as long is a good one

} // namespace

DecklinkOutput::~DecklinkOutput() { DecklinkOutput::close(); }

bool DecklinkOutput::open(quint32 device, const QString& mode, const QString& connection, quint32)
{
    if (connection != QLatin1String("SDI"))
        qDebug() << "Decklink: a card plays on all of its connectors, not just on" << connection;
    const std::string number = " device-number=" + std::to_string(device);
    return open(mode, {"decklinkvideosink" + number + " mode=" + mode.toStdString(), "decklinkaudiosink" + number, {}});
}

bool DecklinkOutput::open(const QString& mode, Sinks sinks)
{
    close();
    _mode = findMode(mode);
    if (!_mode) {
        qDebug() << "Decklink: no card has the mode" << mode;
        return false;
    }
    _sinks = std::move(sinks);
    _thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "tavlo-decklink");
        run();
    });
    return true;
}

void DecklinkOutput::close()
{
    if (_thread.joinable()) {
        {
            const std::lock_guard guard(_lock);
            _ending = true;
            if (_pipeline)
                _pipeline->interrupt();
        }
        _ends.notify_all();
        _thread.join();
    }
    _ending = false;
    _mode = nullptr;
}

void DecklinkOutput::run()
{
    Backoff backoff;
    for (;;) {
        const auto begin = steady_clock::now();
        std::string error;
        if (const auto pipeline = Pipeline::open(*_mode, _sinks, error))
            error = play(pipeline);
        if (steady_clock::now() - begin > steadyTime)
            backoff.reset();
        std::unique_lock guard(_lock);
        if (_ending)
            return;
        const milliseconds pause = backoff.next();
        qDebug().noquote() << "Decklink:" << _sinks.video.c_str() << "does not play:" << error.c_str()
                           << "; tries again in" << pause.count() << "ms";
        if (_ends.wait_for(guard, pause, [this] { return _ending; }))
            return;
    }
}

/// Until it breaks off; tells why.
std::string DecklinkOutput::play(const std::unique_ptr<Pipeline>& pipeline)
{
    {
        const std::lock_guard guard(_lock);
        if (_ending)
            return {};
        _pipeline = pipeline.get();
    }
    qDebug().noquote() << "Decklink:" << _sinks.video.c_str() << "plays";
    std::string error = pipeline->waitForEnd();
    const std::lock_guard guard(_lock);
    _pipeline = nullptr;
    if (const quint64 leftOut = std::exchange(_leftOut, 0))
        qDebug() << "Decklink: the card took too long for" << leftOut << "pictures";
    return error;
}

void DecklinkOutput::writeVideo(const quint8* data, int stride, int, qint64 pts, qint64)
{
    const std::lock_guard guard(_lock);
    if (_pipeline && !_pipeline->writeVideo(data, stride, pts))
        ++_leftOut;
}

void DecklinkOutput::writeAudio(const quint8* data, int size, qint64 pts, qint64, int)
{
    const std::lock_guard guard(_lock);
    if (_pipeline)
        _pipeline->writeAudio(data, size, pts);
}

} // namespace tavlo::decklink

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloDecklinkOutput(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<tavlo::decklink::DecklinkOutput>(id, version);
}
