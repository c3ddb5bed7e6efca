#pragma once

#include <tavlo/TavloEngineEvents.h>
#include <tavlo/TavloPresentChannelID.h>
#include <tavlo/TavloPresentOutputType.h>
#include <tavlo/records/AudioRecords.h>
#include <tavlo/records/EngineRecords.h>
#include <tavlo/records/OutputRecords.h>
#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/SourceRecords.h>

#include <QVariant>

#include <array>
#include <optional>
#include <vector>

namespace tavlo::host {

/// What stands on one source channel.
struct ShowSource
{
    int channel = 0;
    tagTavloPresentSourceInfo info;
    tagTavloPresentPictureFilterParam picture;
    tagTavloAudioEffectParam audioEffect;
};

struct ShowOutput
{
    int index = 0; ///< 0 to 3
    TavloPresentOutputType type = TavloPresentOutputTypeRecord;
    tagTavloPresentOutputParam param;
};

/// Something that the engine is told at a time of the show.
struct Cue
{
    double time = 0.0; ///< seconds from the show's first frame
    qulonglong event = 0;
    std::array<QVariant, 4> arguments;
};

/// Takes the channels in turn, as long as the show runs.
struct Rotation
{
    double every = 5.0; ///< seconds between takes
    int channels = 0;   ///< how many take part, from 0 on
    tagTavloPresentTransitionEffectParam effect;
};

/// Everything that a run needs: what an engine is made with, what is opened on it, and what happens when.
struct Show
{
    tagTavloPresentEngineInfo engine;
    double seconds = 0.0; ///< 0: until it is told to end, or nothing plays any more
    std::vector<ShowSource> sources;
    tagTavloPresentAudioMixerParam mixer;
    std::vector<ShowOutput> outputs;
    std::vector<Cue> cues; ///< in order of their times
    std::optional<Rotation> rotation;

    double framesPerSecond() const { return double(engine.videoInfo.fpsNum) / engine.videoInfo.fpsDen; }
};

/// Whether an output can be of that type: one number among them is none.
constexpr bool isOutputType(int type) { return type >= 0 && type < TavloPresentOutputTypeCount && type != 4; }

/// Whether pictures are coded for an output of that type.
constexpr bool isCoded(TavloPresentOutputType type)
{
    return type == TavloPresentOutputTypeRecord || type == TavloPresentOutputTypeNet;
}

/// Why no engine can be made for the show's pictures, or none of its outputs can take them; empty where all is well.
QString pictureFault(const Show& show);

/// Why this build opens nothing for such a source; empty for one that it opens.
QString sourceFault(const tagTavloPresentSourceInfo& info);

} // namespace tavlo::host
