#pragma once

#include "TavloCommonModule/ITavloDecklinkOutput.h"
#include "TavloCommonModule/decklink/DecklinkPipeline.h"
#include "shared/Backoff.h"

#include <tavlo/InterfacePtr.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavlo::decklink {

/// Opens the card on a thread of its own, and again whenever it breaks off: whoever writes never waits for it.
class DecklinkOutput final : public Implements<DecklinkOutput, ITavloDecklinkOutput>
{
public:
    ~DecklinkOutput();

    /// False for a mode that no card has; a card that is missing is waited for.
    bool open(quint32 device, const QString& mode, const QString& connection, quint32 reserved) override;

    /// The same with other elements at the end.
    bool open(const QString& mode, Sinks sinks);

    void writeVideo(const quint8* data, int stride, int size, qint64 pts, qint64 dts) override;
    void writeAudio(const quint8* data, int size, qint64 pts, qint64 dts, int flag) override;
    int getWidth() override { return _mode ? _mode->width : 0; }
    int getHeight() override { return _mode ? _mode->height : 0; }
    void close() override;

private:
    void run();
    std::string play(const std::unique_ptr<Pipeline>& pipeline);

    // fixed from open to close
    const Mode* _mode = nullptr;
    Sinks _sinks;
    std::thread _thread;

    // guarded by _lock
    std::mutex _lock;
    std::condition_variable _ends;
    bool _ending = false;
    Pipeline* _pipeline = nullptr; ///< while it plays
    quint64 _leftOut = 0;          ///< pictures that it could not take
};

} // namespace tavlo::decklink
