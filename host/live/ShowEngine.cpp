#include "live/ShowEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tavlo::host {
namespace {

constexpr double patience = 8.0; ///< seconds that a show waits for a source without a picture

ITavloPresentSource* sourceOf(const QVariant& pointer)
{
    return reinterpret_cast<ITavloPresentSource*>(static_cast<quintptr>(pointer.toULongLong()));
}

} // namespace

/// Hears what the engine reports. Frame thread.
class ShowEngine::Sink final : public Implements<Sink, ITavloPresentThreadSink>
{
public:
    explicit Sink(ShowEngine& engine) : _engine(engine) {}

    void destroy() override {} // the engine's own
    void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant, QVariant) override
    {
        _engine.hear(event, result, a1, a2);
    }

private:
    ShowEngine& _engine;
};

ShowEngine::ShowEngine(Show show) : _show(std::move(show)), _sink(std::make_unique<Sink>(*this)) {}

ShowEngine::~ShowEngine() = default;

ITavloPresentThreadSink* ShowEngine::hostSink() { return _sink.get(); }

void ShowEngine::open(const tagTavloWindowInfo& window)
{
    setFps(static_cast<float>(_show.framesPerSecond()));
    postEvent(TavloEventCreateEngine, QVariant::fromValue(_show.engine), QVariant::fromValue(window));
}

void ShowEngine::close() { postEvent(TavloEventDestroyEngine); }

LiveFigures ShowEngine::figures() const
{
    const std::scoped_lock lock(_lock);
    return _figures;
}

void ShowEngine::hear(qulonglong event, const QVariant& result, const QVariant& a1, const QVariant& a2)
{
    switch (event) {
    case TavloEventCreateEngine:
        if (result == QVariant(0))
            openSources();
        else
            _failed = true;
        break;
    case TavloEventSourceOpened:
        if (auto source = CountedPtr<ITavloPresentSource>::adopt(sourceOf(a2))) {
            source->play();
            _playing[a1.toInt()] = std::move(source);
        }
        break;
    case TavloEventSourceClosed:
        CountedPtr<ITavloPresentSource>::adopt(sourceOf(a2));
        _playing.erase(a1.toInt());
        break;
    case TavloEventSourcePlaylistEnd:
        if (const auto list = _ended.find(a1.toInt()); list != _ended.end())
            list->second = true;
        break;
    case TavloEventDestroyEngine:
        _phase = Phase::Gone;
        break;
    default:
        break;
    }
}

void ShowEngine::openSources()
{
    postEvent(TavloEventSetAudioMixer, {}, QVariant::fromValue(_show.mixer));
    for (const ShowSource& source : _show.sources) {
        const int channel = source.channel;
        const tagTavloPresentPictureFilterParam& picture = source.picture;
        postEvent(TavloEventSetPictureProcess, channel, QVariant::fromValue(picture.processParam));
        postEvent(TavloEventSetChromaKey, channel, QVariant::fromValue(picture.chromaKeyParam));
        postEvent(TavloEventSetLumaKey, channel, QVariant::fromValue(picture.lumaKeyParam));
        postEvent(TavloEventSetCrop, channel, QVariant::fromValue(picture.rectCropParam));
        postEvent(TavloEventSetColorAdjust, channel, QVariant::fromValue(picture.colorAdjustParam));
        postEvent(TavloEventSetPictureMisc, channel, QVariant::fromValue(picture.miscParam));
        postEvent(TavloEventSetChannelAudioEffect, channel, QVariant::fromValue(source.audioEffect));
        postEvent(TavloEventOpenSource, channel, QVariant::fromValue(source.info));
        if (source.info.type == TavloPresentSourceTypeMovieList && source.info.playbackMode == 0)
            _ended[channel] = false;
    }
    postEvent(TavloEventSelectChannel, TavloPresentChannelIDPGM, _show.sources.front().channel);
    const ShowSource& next = _show.sources.size() > 1 ? _show.sources[1] : _show.sources.front();
    postEvent(TavloEventSelectChannel, TavloPresentChannelIDPVM, next.channel);
    _phase = Phase::Waiting;
}

bool ShowEngine::arePicturesThere()
{
    for (auto& [channel, source] : _playing) {
        if (source->getStatistics()->width != 0)
            _seen.insert(channel);
    }
    return std::ranges::all_of(_show.sources, [this](const ShowSource& source) {
        const auto list = _ended.find(source.channel);
        return _seen.contains(source.channel) || (list != _ended.end() && list->second);
    });
}

bool ShowEngine::onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds)
{
    const auto begun = std::chrono::steady_clock::now();
    const bool result = TavloPresentEngine::onThreadStep(time, frameId, clockMicroseconds);
    const std::chrono::duration<float, std::milli> taken = std::chrono::steady_clock::now() - begun;
    if (_stepTimes && _phase == Phase::Rolling && _stepTimes->size() < _stepTimes->capacity())
        _stepTimes->push_back(taken.count());
    const double fps = _show.framesPerSecond();
    if (_phase == Phase::Waiting) {
        ++_waited;
        if (_endAsked)
            end();
        else if (arePicturesThere() || static_cast<double>(_waited) > patience * fps)
            begin();
    } else if (_phase == Phase::Rolling) {
        ++_frames;
        if (_frames % static_cast<quint64>(std::max(1.0, std::round(fps))) == 0)
            measure();
        const double elapsed = showTime();
        const bool outOfTime = _show.seconds > 0 && elapsed * fps >= std::round(_show.seconds * fps);
        const bool allPlayed = _ended.size() == _show.sources.size() &&
                               std::ranges::all_of(_ended, [](const auto& entry) { return entry.second; });
        if (_endAsked || outOfTime || allPlayed)
            end();
        else
            postCues(elapsed);
    }
    return result;
}

/// Seconds: frames that were never stepped have their time as well, so that a show is as long as it is on a busy machine.
double ShowEngine::showTime() const
{
    return static_cast<double>(_frames + missedFrames() - _missedBefore) / _show.framesPerSecond();
}

void ShowEngine::begin()
{
    _missedBefore = missedFrames();
    for (const ShowOutput& output : _show.outputs)
        postEvent(TavloEventStartOutput, output.index, output.type, QVariant::fromValue(output.param));
    postCues(0.0);
    _phase = Phase::Rolling;
}

/// Everything whose time has come with the next frame.
void ShowEngine::postCues(double until)
{
    const double tolerance = 0.001 / _show.framesPerSecond();
    for (; _nextCue < _show.cues.size() && _show.cues[_nextCue].time <= until + tolerance; ++_nextCue) {
        const Cue& cue = _show.cues[_nextCue];
        postEvent(cue.event, cue.arguments[0], cue.arguments[1], cue.arguments[2], cue.arguments[3]);
    }
    const auto& rotation = _show.rotation;
    if (rotation && rotation->channels > 1 && static_cast<double>(_takes + 1) * rotation->every <= until + tolerance) {
        ++_takes;
        const auto channel = static_cast<quint32>(_takes % static_cast<quint64>(rotation->channels));
        postEvent(TavloEventTransition, {}, channel, QVariant::fromValue(rotation->effect));
    }
}

void ShowEngine::end()
{
    measure();
    if (!_snapshot.isEmpty())
        postEvent(TavloEventSaveChannelPicture, TavloPresentChannelIDCanvas, _snapshot);
    if (_phase == Phase::Rolling) {
        for (const ShowOutput& output : _show.outputs)
            postEvent(TavloEventStopOutput, output.index, output.type);
    }
    _phase = Phase::Over;
}

void ShowEngine::measure()
{
    LiveFigures figures;
    figures.frames = _frames;
    figures.missedFrames = missedFrames() - _missedBefore;
    figures.fps = getCalFps();
    for (auto& [channel, source] : _playing) {
        SourceFigures& item = figures.sources.emplace_back();
        item.channel = channel;
        item.isPlaying = source->getState() == TavloPresentSourceStatePlaying;
        source->getLength(item.length);
        item.statistics = *source->getStatistics();
        if (item.statistics.width != 0 || item.statistics.audioSampleRate != 0)
            _seen.insert(channel);
        item.wasThere = _seen.contains(channel);
    }
    getOutputStatistics(figures.output);
    const std::scoped_lock lock(_lock);
    _figures = std::move(figures);
}

} // namespace tavlo::host
