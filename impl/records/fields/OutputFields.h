#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/OutputRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloPresentHDMIOutputInfo>
{
    using R = tagTavloPresentHDMIOutputInfo;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("videoDevName"_L1, &R::videoDevName);
        v.field("videoRegion"_L1, &R::videoRegion);
        v.field("audioDevName"_L1, &R::audioDevName);
        v.field("pictureChannel"_L1, &R::pictureChannel);
    }
};

template <>
struct RecordFields<tagTavloPresentOutputParam>
{
    using R = tagTavloPresentOutputParam;
    static void visit(auto& v)
    {
        v.field("programName"_L1, &R::programName);
        v.field("videoCodec"_L1, &R::videoCodec);
        v.field("videoOption"_L1, &R::videoOption);
        v.field("encodeImpl"_L1, &R::encodeImpl);
        v.numbered("videoSettings_"_L1, &R::videoSettings);
        v.field("videoBitrate"_L1, &R::videoBitrate);
        v.numbered("rateSettings_"_L1, &R::rateSettings);
        v.field("rateFactor"_L1, &R::rateFactor);
        v.field("bufferSetting"_L1, &R::bufferSetting);
        v.field("videoOption2"_L1, &R::videoOption2);
        v.field("videoOption3"_L1, &R::videoOption3);
        v.numbered("encoderSettings_"_L1, &R::encoderSettings);
        v.field("audioBitrate"_L1, &R::audioBitrate);
        v.numbered("audioSettings_"_L1, &R::audioSettings);
        v.field("outputFlag"_L1, &R::outputFlag);
        v.field("recordEnabled"_L1, &R::recordEnabled);
        v.field("recordDir"_L1, &R::recordDir);
        v.field("recordName"_L1, &R::recordName);
        v.field("recordTimeFormat"_L1, &R::recordTimeFormat);
        v.field("recordPeriod"_L1, &R::recordPeriod);
        v.field("recordMode"_L1, &R::recordMode);
        v.field("recordFlag"_L1, &R::recordFlag);
        v.field("httpEnabled"_L1, &R::httpEnabled);
        v.field("httpPort"_L1, &R::httpPort);
        v.numbered("httpPaths_"_L1, &R::httpPaths);
        v.field("httpOption"_L1, &R::httpOption);
        v.field("multicastEnabled"_L1, &R::multicastEnabled);
        v.field("multicastAddress"_L1, &R::multicastAddress);
        v.field("multicastPort"_L1, &R::multicastPort);
        v.field("multicastTtl"_L1, &R::multicastTtl);
        v.field("multicastInterface"_L1, &R::multicastInterface);
        v.field("multicastPacketSize"_L1, &R::multicastPacketSize);
        v.field("hlsEnabled"_L1, &R::hlsEnabled);
        v.field("hlsSegmentSeconds"_L1, &R::hlsSegmentSeconds);
        v.field("hlsSegmentCount"_L1, &R::hlsSegmentCount);
        v.field("hlsFlag"_L1, &R::hlsFlag);
        v.field("hlsDir"_L1, &R::hlsDir);
        v.field("hlsPath"_L1, &R::hlsPath);
        v.field("hlsOption"_L1, &R::hlsOption);
        v.field("hlsFlag2"_L1, &R::hlsFlag2);
        v.field("hlsOption2"_L1, &R::hlsOption2);
        v.field("hlsOption3"_L1, &R::hlsOption3);
        v.field("rtmp1Enabled"_L1, &R::rtmp1Enabled);
        v.field("rtmp1Url"_L1, &R::rtmp1Url);
        v.field("rtmp1Option1"_L1, &R::rtmp1Option1);
        v.field("rtmp1Option2"_L1, &R::rtmp1Option2);
        v.field("rtmp1Mode"_L1, &R::rtmp1Mode);
        v.field("rtmp2Enabled"_L1, &R::rtmp2Enabled);
        v.field("rtmp2Url"_L1, &R::rtmp2Url);
        v.field("rtmp2Option1"_L1, &R::rtmp2Option1);
        v.field("rtmp2Option2"_L1, &R::rtmp2Option2);
        v.field("rtmp2Mode"_L1, &R::rtmp2Mode);
        v.field("pushEnabled"_L1, &R::pushEnabled);
        v.field("pushPath"_L1, &R::pushPath);
        v.field("push2Enabled"_L1, &R::push2Enabled);
        v.field("push2Option"_L1, &R::push2Option);
        v.numbered("push2Paths_"_L1, &R::push2Paths);
        v.field("rtspEnabled"_L1, &R::rtspEnabled);
        v.field("rtspPort"_L1, &R::rtspPort);
        v.field("rtspPath"_L1, &R::rtspPath);
        v.field("decklinkEnabled"_L1, &R::decklinkEnabled);
        v.field("decklinkFlag"_L1, &R::decklinkFlag);
        v.field("decklinkDevice"_L1, &R::decklinkDevice);
        v.field("decklinkMode"_L1, &R::decklinkMode);
        v.field("decklinkConnection"_L1, &R::decklinkConnection);
        v.field("tsRecordEnabled"_L1, &R::tsRecordEnabled);
        v.field("tsRecordSegmentSeconds"_L1, &R::tsRecordSegmentSeconds);
        v.field("tsRecordKeepSeconds"_L1, &R::tsRecordKeepSeconds);
        v.field("tsRecordFlag"_L1, &R::tsRecordFlag);
        v.field("tsRecordDir"_L1, &R::tsRecordDir);
        v.field("tsRecordOption"_L1, &R::tsRecordOption);
        v.field("peerEnabled"_L1, &R::peerEnabled);
        v.field("peerAddress"_L1, &R::peerAddress);
        v.field("peerPath"_L1, &R::peerPath);
        v.field("peerPort"_L1, &R::peerPort);
        v.field("peerMode"_L1, &R::peerMode);
        v.field("peerOption"_L1, &R::peerOption);
        v.field("relayEnabled"_L1, &R::relayEnabled);
        v.field("relayAddress"_L1, &R::relayAddress);
        v.field("relayBufferCount"_L1, &R::relayBufferCount);
        v.field("relayWidth"_L1, &R::relayWidth);
        v.field("relayOption"_L1, &R::relayOption);
        v.field("relayFlag"_L1, &R::relayFlag);
        v.field("relayFlag2"_L1, &R::relayFlag2);
        v.field("relayOption2"_L1, &R::relayOption2);
        v.field("ndiEnabled"_L1, &R::ndiEnabled);
        v.field("ndiName"_L1, &R::ndiName);
        v.field("ndiOption"_L1, &R::ndiOption);
        v.field("extEnabled"_L1, &R::extEnabled);
        v.field("extOption1"_L1, &R::extOption1);
        v.field("extOption2"_L1, &R::extOption2);
        v.numbered("extRange_"_L1, &R::extRange);
        v.field("extOption3"_L1, &R::extOption3);
        v.field("sdpEnabled"_L1, &R::sdpEnabled);
        v.field("sdpPort"_L1, &R::sdpPort);
        v.field("sdpPath"_L1, &R::sdpPath);
        v.field("sdpOption"_L1, &R::sdpOption);
        v.numbered("hdmi_"_L1, &R::hdmi);
    }
};

} // namespace tavlo
