#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/PlaySession.h"

#include <tavlo/InterfacePtr.h>

#include <memory>
#include <mutex>

/// The player on FFmpeg: files and lists, network streams, capture devices.
class TavloSourcePlayer final : public tavlo::Implements<TavloSourcePlayer, ITavloSourcePlayer>
{
public:
    ~TavloSourcePlayer() { stop(); }

    void setSink(ITavloSourcePlayerSink* sink) override;
    void play(tagTavloSourcePlayerInfo* info, tagTavloMediaFormatInfo* wanted, qint64 reserved) override;
    void stop() override;
    void pause() override;
    void transportA(qint64, qint64) override {}
    void transportB(qint64, qint64) override {}
    float rate() override;
    void setRate(float rate) override;
    void transportC(qint64, qint64) override {}
    void length(qint64* milliseconds) override;
    void time(qint64* milliseconds) override;
    void setTime(qint64 milliseconds) override;
    void position(qint64* milliseconds) override;
    void setPosition(qint64 milliseconds) override;
    qint32 state() override;
    qint32 itemCount() override;
    qint32 itemIndex() override;
    void reservedA() override {}
    void reservedB() override {}
    ICloudTourControl* cloudTourControl() override;
    void losses(quint64* late, quint64* dropped) override;

private:
    using SessionPtr = std::shared_ptr<tavlo::PlaySession>;

    SessionPtr session() const;

    std::mutex _controlLock; ///< taken before _sessionLock, held while threads begin and end

    // guarded by _controlLock
    ITavloSourcePlayerSink* _sink = nullptr;
    float _rate = 1.0F;

    mutable std::mutex _sessionLock;

    // guarded by _sessionLock
    SessionPtr _session; ///< null before the first play; stays after it is stopped, for what it says of itself
};
