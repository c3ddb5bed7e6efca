#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/SourceRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloPresentSourceInfo>
{
    using R = tagTavloPresentSourceInfo;
    static void visit(auto& v)
    {
        v.field("type"_L1, &R::type);
        v.field("moviePathList"_L1, &R::moviePathList);
        v.field("imagePathList"_L1, &R::imagePathList);
        v.field("videoDeviceName"_L1, &R::videoDeviceName);
        v.field("videoDeviceDisplayName"_L1, &R::videoDeviceDisplayName);
        v.field("videoDeviceInputNode"_L1, &R::videoDeviceInputNode);
        v.field("videoDeviceProgressive"_L1, &R::videoDeviceProgressive);
        v.field("videoStandard"_L1, &R::videoStandard);
        v.field("audioDeviceName"_L1, &R::audioDeviceName);
        v.field("audioDeviceDisplayName"_L1, &R::audioDeviceDisplayName);
        v.field("decklinkDevId"_L1, &R::decklinkDevId);
        v.field("decklinkDevName"_L1, &R::decklinkDevName);
        v.field("decklinkDisplayModeName"_L1, &R::decklinkDisplayModeName);
        v.field("decklinkVideoInputSignal"_L1, &R::decklinkVideoInputSignal);
        v.field("decklinkAudioInputSignal"_L1, &R::decklinkAudioInputSignal);
        v.field("hkDevAddr"_L1, &R::hkDevAddr);
        v.field("hkDevPort"_L1, &R::hkDevPort);
        v.field("hkDevUser"_L1, &R::hkDevUser);
        v.field("hkDevPasswd"_L1, &R::hkDevPasswd);
        v.field("hkDevChannel"_L1, &R::hkDevChannel);
        v.field("mwDevName"_L1, &R::mwDevName);
        v.field("mwAudioDevName"_L1, &R::mwAudioDevName);
        v.field("url"_L1, &R::url);
        v.field("urlCaching"_L1, &R::urlCaching);
        v.field("webUrl"_L1, &R::webUrl);
        v.field("songPath"_L1, &R::songPath);
        v.field("songGrcInfo"_L1, &R::songGrcInfo);
        v.field("songOutputDev"_L1, &R::songOutputDev);
        v.field("timeShiftID"_L1, &R::timeShiftID);
        v.field("timeShiftCachePath"_L1, &R::timeShiftCachePath);
        v.field("timeShiftCacheSec"_L1, &R::timeShiftCacheSec);
        v.field("timeShiftVideoEncodeImpl"_L1, &R::timeShiftVideoEncodeImpl);
        v.field("stageInfo"_L1, &R::stageInfo);
        v.field("layoutInfo"_L1, &R::layoutInfo);
        v.field("playbackMode"_L1, &R::playbackMode);
        v.field("playbackEndShowChannel"_L1, &R::playbackEndShowChannel);
        v.field("PGMInOutAction"_L1, &R::PGMInOutAction);
        v.field("HWDecode"_L1, &R::HWDecode);
        v.field("autoDetectDeviceSignal"_L1, &R::autoDetectDeviceSignal);
        v.field("deinterlaceMode"_L1, &R::deinterlaceMode);
        v.field("audioChannelProcessType"_L1, &R::audioChannelProcessType);
        v.field("enableCUDAAccelerate"_L1, &R::enableCUDAAccelerate);
        v.field("formatInfo"_L1, &R::formatInfo);
        v.unsaved(&R::irtmpParam);
        v.unsaved(&R::stageSerialize);
    }
};

} // namespace tavlo
