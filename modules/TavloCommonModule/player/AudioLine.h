#pragma once

#include "TavloCommonModule/player/AudioConverter.h"
#include "TavloCommonModule/player/StreamLine.h"

#include "shared/VlcTypes.h"

#include <vector>

namespace tavlo {

/// The thread of the sound: one unbroken run of blocks in one format, over all entries of a list. Each block is handed
/// over some time before it is to be heard.
class AudioLine final : public StreamLine
{
public:
    explicit AudioLine(PlayContext& context);

private:
    static constexpr int blocksPerSecond = 50;
    static constexpr qint64 longestLead = 100'000; ///< microseconds
    static constexpr qint64 lateLimit = 100'000;   ///< microseconds

    const std::shared_ptr<const StreamInfo>& streamOf(const Segment& segment) const override { return segment.audio; }
    void begin(bool anew) override;
    bool take(AVFrame& frame, qint64 stamp) override;
    void endSegment() override;
    void endAll() override;
    void finish() override;

    void placeAt(qint64 timeline);
    void addSilence(qint64 microsecondsOfIt);
    void dropInFront(qint64 microsecondsOfIt);
    void followRate();
    bool handOver(bool all);
    bool handOverBlock(size_t frames);
    bool keepTime(qint64 timeline);
    void sendBlock(size_t frames, qint64 timeline);
    void noteHeard(qint64 timelineEnd);
    qint64 lead() const;
    qint64 durationOf(double frames) const; ///< microseconds at rate 1

    const int _channels;
    const int _rate;
    tagTavloAudioInfo _format;
    AudioConverter _converter;
    TempoFilter _tempo;
    double _tempoRate = 1.0;
    bool _announced = false;
    bool _placed = false;         ///< `_inTimeline` says where the next sample stands
    double _inTimeline = 0.0;     ///< microseconds, of the next sample that is decoded
    qint64 _toDrop = 0;           ///< frames of what comes in that have been played already
    std::vector<qint16> _decoded; ///< of one frame
    std::vector<qint16> _ready;   ///< to be handed over, from `_readyBegin` on
    size_t _readyBegin = 0;       ///< samples
    double _readyTimeline = 0.0;  ///< microseconds, of the first
    bool _edge = false;           ///< the next frame is the first of its segment
    block_t _block{};

    // what the sink says of what it played
    bool _counts = false;      ///< the two below are valid
    qint64 _playedAtFirst = 0; ///< microseconds, when nothing was handed over yet
    qint64 _lastPlayed = 0;
    qint64 _handedOver = 0; ///< microseconds since then
};

} // namespace tavlo
