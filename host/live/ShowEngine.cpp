#include "live/ShowEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tavlo::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto patience = 8s;        ///< that a show waits for a source without a picture
constexpr auto recordPatience = 75s; ///< that it waits for the end of a recording: a file gets a minute
constexpr auto streamPatience = 15s; ///< and of a stream

ITavloPresentSource* sourceOf(const QVariant& pointer)
{
    return reinterpret_cast<ITavloPresentSource*>(static_cast<quintptr>(pointer.toULongLong()));
}

/// The outputs that code something, from the start or by a cue. The others keep no account.
std::vector<OutputFigures> codedOutputs(const Show& show)
{
    std::vector<OutputFigures> outputs;
    for (int index = 0; index < TavloPresentOutputIndexCount; ++index) {
        OutputFigures figures;
        figures.index = index;
        for (const ShowOutput& output : show.outputs) {
            figures.records |= output.index == index && output.type == TavloPresentOutputTypeRecord;
            figures.streams |= output.index == index && output.type == TavloPresentOutputTypeNet;
        }
        const bool isCued = std::ranges::any_of(show.cues, [index](const Cue& cue) {
            return cue.event == TavloEventStartOutput && cue.arguments[0].toInt() == index &&
                   isCoded(static_cast<TavloPresentOutputType>(cue.arguments[1].toInt()));
        });
        if (figures.records || figures.streams || isCued)
            outputs.push_back(figures);
    }
    return outputs;
}

/// States and rates of what has ended are those of its last moment.
void keepRates(const tagTavloOutputStatistics& last, tagTavloOutputStatistics& ended)
{
    ended.recordState = last.recordState;
    ended.netState = last.netState;
    ended.recordRatePair1 = last.recordRatePair1;
    ended.recordRatePair2 = last.recordRatePair2;
    ended.netRatePair1 = last.netRatePair1;
    ended.netRatePair2 = last.netRatePair2;
    ended.workerTotal = std::max(ended.workerTotal, last.workerTotal);
}

/// Whether everything that an output coded is accounted for, so that its figures are the last.
bool isAccounted(const OutputFigures& now, const OutputFigures& atEnd)
{
    const tagTavloOutputStatistics& s = now.statistics;
    const bool isCoded = s.committedPictures + s.repeatedPictures ==
                         s.droppedPictures + s.latePictures + s.encoderDropped + s.skippedPictures + s.codedPictures;
    // What a cue has begun got a part of the coded pictures.
    const auto isWritten = [&s](bool gotAll, quint32 before, quint32 state, quint64 sum) {
        constexpr quint32 off = tagTavloOutputStatistics::Off;
        return before == off || (state == off && (!gotAll || sum >= s.codedPictures));
    };
    return isCoded &&
           isWritten(now.records, atEnd.statistics.recordState, s.recordState, s.recordWritten + s.recordDropped) &&
           isWritten(now.streams, atEnd.statistics.netState, s.netState, s.netWritten + s.netDropped);
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

ShowEngine::ShowEngine(Show show)
    : _show(std::move(show)), _outputs(codedOutputs(_show)), _sink(std::make_unique<Sink>(*this))
{}

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
    _since = Clock::now();
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
    const auto begun = Clock::now();
    const bool result = TavloPresentEngine::onThreadStep(time, frameId, clockMicroseconds);
    const std::chrono::duration<float, std::milli> taken = Clock::now() - begun;
    if (_stepTimes && _phase == Phase::Rolling && _stepTimes->size() < _stepTimes->capacity())
        _stepTimes->push_back(taken.count());
    const double fps = _show.framesPerSecond();
    if (_phase == Phase::Waiting) {
        if (_endAsked)
            end();
        else if (arePicturesThere() || Clock::now() - _since > patience)
            begin();
    } else if (_phase == Phase::Rolling) {
        ++_frames;
        if (_frames % static_cast<quint64>(std::max(1.0, std::round(fps))) == 0) {
            measure();
            askForMultiView();
        }
        const double elapsed = showTime();
        const bool outOfTime = _show.seconds > 0 && elapsed * fps >= std::round(_show.seconds * fps);
        const bool allPlayed = _ended.size() == _show.sources.size() &&
                               std::ranges::all_of(_ended, [](const auto& entry) { return entry.second; });
        if (_endAsked || outOfTime || allPlayed)
            end();
        else
            postCues(elapsed);
    } else if (_phase == Phase::Ending) {
        awaitOutputs();
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
    askForMultiView();
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
    const bool rolled = _phase == Phase::Rolling;
    for (const ShowOutput& output : _show.outputs)
        postEvent(TavloEventStopOutput, output.index, output.type);
    for (const OutputFigures& output : _outputs) { // cues may have begun them as well
        postEvent(TavloEventStopOutput, output.index, TavloPresentOutputTypeRecord);
        postEvent(TavloEventStopOutput, output.index, TavloPresentOutputTypeNet);
    }
    _since = Clock::now();
    _phase = rolled && !_outputs.empty() ? Phase::Ending : Phase::Over;
}

/// The outputs end on threads of their own; their figures are complete when each picture stands in one of the accounts.
void ShowEngine::awaitOutputs()
{
    std::vector<OutputFigures> outputs = measureOutputs();
    const std::scoped_lock lock(_lock);
    bool records = false, accounted = true;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const OutputFigures& atEnd = _figures.outputs[i];
        records = records || atEnd.statistics.recordState != tagTavloOutputStatistics::Off;
        accounted = accounted && isAccounted(outputs[i], atEnd); // before it is given the old states
        keepRates(atEnd.statistics, outputs[i].statistics);
        outputs[i].missedFrames = atEnd.missedFrames;
    }
    const bool tooLong = Clock::now() - _since > (records ? recordPatience : streamPatience);
    if (!accounted && !tooLong)
        return;
    _figures.outputs = std::move(outputs);
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
        item.statistics.name = withoutSecrets(item.statistics.name);
        if (item.statistics.width != 0 || item.statistics.audioSampleRate != 0)
            _seen.insert(channel);
        item.wasThere = _seen.contains(channel);
    }
    figures.outputs = measureOutputs();
    for (OutputFigures& output : figures.outputs) {
        if (output.records || output.streams) // each frame of theirs was committed as it was stepped
            output.missedFrames = _frames - std::min(_frames, output.statistics.committedPictures);
    }
    const std::scoped_lock lock(_lock);
    _figures = std::move(figures);
}

std::vector<OutputFigures> ShowEngine::measureOutputs()
{
    std::vector<OutputFigures> outputs = _outputs;
    for (OutputFigures& output : outputs)
        getOutputStatistics(output.index, output.statistics);
    return outputs;
}

void ShowEngine::askForMultiView()
{
    if (_drawsMultiView)
        postEvent(TavloEventSaveChannelPicture, TavloPresentChannelIDCanvas, QString());
}

} // namespace tavlo::host
