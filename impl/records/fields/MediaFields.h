#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/EngineRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloVideoInfo>
{
    using R = tagTavloVideoInfo;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("sourceWidth"_L1, &R::sourceWidth);
        v.field("sourceHeight"_L1, &R::sourceHeight);
        v.field("progressive"_L1, &R::progressive);
        v.field("width"_L1, &R::width);
        v.field("height"_L1, &R::height);
        v.field("fpsNum"_L1, &R::fpsNum);
        v.field("fpsDen"_L1, &R::fpsDen);
        v.field("chroma"_L1, &R::chroma);
        v.field("moduleValue"_L1, &R::moduleValue);
        v.field("moduleWord"_L1, &R::moduleWord);
    }
};

template <>
struct RecordFields<tagTavloAudioInfo>
{
    using R = tagTavloAudioInfo;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("channels"_L1, &R::channels);
        v.field("sampleRate"_L1, &R::sampleRate);
        v.field("bitsPerSample"_L1, &R::bitsPerSample);
        v.field("audioFourcc"_L1, &R::audioFourcc);
        v.field("moduleWord"_L1, &R::moduleWord);
    }
};

template <>
struct RecordFields<tagTavloMediaFormatInfo>
{
    using R = tagTavloMediaFormatInfo;
    static void visit(auto& v)
    {
        v.field("videoInfo"_L1, &R::videoInfo);
        v.field("audioInfo"_L1, &R::audioInfo);
    }
};

template <>
struct RecordFields<tagTavloPresentEngineInfo>
{
    using R = tagTavloPresentEngineInfo;
    static void visit(auto& v)
    {
        v.field("videoInfo"_L1, &R::videoInfo);
        v.field("audioInfo"_L1, &R::audioInfo);
        v.field("graphicsDeviceId"_L1, &R::graphicsDeviceId);
        v.field("channelCount"_L1, &R::channelCount);
        v.field("pgmCount"_L1, &R::pgmCount);
        v.unsaved(&R::pgmPreviewEach);
        v.field("pgmAudioDevName"_L1, &R::pgmAudioDevName);
        v.field("pvmAudioDevName"_L1, &R::pvmAudioDevName);
        v.field("doubleAudioSampleRateRender"_L1, &R::doubleAudioSampleRateRender);
        v.field("resourcePath"_L1, &R::resourcePath);
        v.field("dataCachePath"_L1, &R::dataCachePath);
    }
};

} // namespace tavlo
