#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/ShowRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagPresentItemAnimationInfo>
{
    using R = tagPresentItemAnimationInfo;
    static void visit(auto& v)
    {
        v.field("type"_L1, &R::type);
        v.field("delay"_L1, &R::delay);
        v.field("duration"_L1, &R::duration);
        v.field("count"_L1, &R::count);
    }
};

template <>
struct RecordFields<tagTavloShowDisplayItemInfo>
{
    using R = tagTavloShowDisplayItemInfo;
    static void visit(auto& v)
    {
        v.field("scale"_L1, &R::scale);
        v.field("offset"_L1, &R::offset);
        v.field("rotation"_L1, &R::rotation);
        v.field("alpha"_L1, &R::alpha);
        v.field("finalRect"_L1, &R::finalRect);
    }
};

template <>
struct RecordFields<tagTavloShowTextStyle>
{
    using R = tagTavloShowTextStyle;
    static void visit(auto& v)
    {
        v.field("fillType"_L1, &R::fillType);
        v.field("solidColor"_L1, &R::solidColor);
        v.field("gradientBeginColor"_L1, &R::gradientBeginColor);
        v.field("gradientEndColor"_L1, &R::gradientEndColor);
        v.field("texPath"_L1, &R::texPath);
        v.field("shadowColor"_L1, &R::shadowColor);
        v.field("shadowDistance"_L1, &R::shadowDistance);
        v.field("shadowBlur"_L1, &R::shadowBlur);
        v.field("outlineColor"_L1, &R::outlineColor);
        v.field("outlineSize"_L1, &R::outlineSize);
        v.field("outlineBlur"_L1, &R::outlineBlur);
        v.field("preset"_L1, &R::preset);
    }
};

template <>
struct RecordFields<tagTavloShowTextInfo>
{
    using R = tagTavloShowTextInfo;
    static void visit(auto& v)
    {
        v.field("uuid"_L1, &R::uuid);
        v.field("text"_L1, &R::text);
        v.field("timeFormat"_L1, &R::timeFormat);
        v.field("rect"_L1, &R::rect);
        v.field("hAlignment"_L1, &R::hAlignment);
        v.field("vAlignment"_L1, &R::vAlignment);
        v.field("scrollEndPos"_L1, &R::scrollEndPos);
        v.field("scrollTime"_L1, &R::scrollTime);
        v.field("styleValid"_L1, &R::styleValid);
        v.field("fontName"_L1, &R::fontName);
        v.field("fontSize"_L1, &R::fontSize);
        v.field("enterAniInfo"_L1, &R::enterAniInfo);
        v.field("exitAniInfo"_L1, &R::exitAniInfo);
        v.field("style"_L1, &R::style);
    }
};

template <>
struct RecordFields<tagTavloShowLogoInfo>
{
    using R = tagTavloShowLogoInfo;
    static void visit(auto& v)
    {
        v.field("uuid"_L1, &R::uuid);
        v.field("path"_L1, &R::path);
        v.field("displayInfo"_L1, &R::displayInfo);
        v.field("enterAniInfo"_L1, &R::enterAniInfo);
        v.field("exitAniInfo"_L1, &R::exitAniInfo);
    }
};

template <>
struct RecordFields<tagTavloShowLayoutElement>
{
    using R = tagTavloShowLayoutElement;
    static void visit(auto& v)
    {
        v.field("drawableId"_L1, &R::drawableId);
        v.field("audioEnable"_L1, &R::audioEnable);
        v.field("aspectMode"_L1, &R::aspectMode);
        v.field("displayInfo"_L1, &R::displayInfo);
    }
};

template <>
struct RecordFields<tagTavloShowLayoutInfo>
{
    using R = tagTavloShowLayoutInfo;
    static void visit(auto& v)
    {
        v.numbered("text_"_L1, &R::text);
        v.numbered("logo_"_L1, &R::logo);
        v.numbered("element_"_L1, &R::element);
        v.numbered("bgImage_"_L1, &R::bgImage);
        v.field("background"_L1, &R::background);
    }
};

template <>
struct RecordFields<tagTavloShowPresentTimelineInfo>
{
    using R = tagTavloShowPresentTimelineInfo;
    static void visit(auto& v)
    {
        v.field("name"_L1, &R::name);
        v.field("desc"_L1, &R::desc);
        v.field("valid"_L1, &R::valid);
        v.field("startFrameIndex"_L1, &R::startFrameIndex);
        v.field("endFrameIndex"_L1, &R::endFrameIndex);
        v.field("loop"_L1, &R::loop);
    }
};

template <>
struct RecordFields<tagTavloShowViewportCamera>
{
    using R = tagTavloShowViewportCamera;
    static void visit(auto& v)
    {
        v.field("name"_L1, &R::name);
        v.field("desc"_L1, &R::desc);
        v.list("timelines"_L1, &R::timelines);
    }
};

template <>
struct RecordFields<tagTavloShowObjectProperty>
{
    using R = tagTavloShowObjectProperty;
    static void visit(auto& v)
    {
        v.field("name"_L1, &R::name);
        v.field("enableEdit"_L1, &R::enableEdit);
        v.field("desc"_L1, &R::desc);
        v.field("countdownTextFormat"_L1, &R::countdownTextFormat);
        v.field("valueList"_L1, &R::valueList);
        v.field("textInfo"_L1, &R::textInfo);
    }
};

template <>
struct RecordFields<tagTavloShowComponentProperties>
{
    using R = tagTavloShowComponentProperties;
    static void visit(auto& v)
    {
        v.list("textProperties"_L1, &R::textProperties);
        v.list("imageProperties"_L1, &R::imageProperties);
        v.list("videoProperties"_L1, &R::videoProperties);
        v.list("actionProperties"_L1, &R::actionProperties);
        v.list("countdownProperties"_L1, &R::countdownProperties);
    }
};

template <>
struct RecordFields<tagTavloShowPresentInfo>
{
    using R = tagTavloShowPresentInfo;
    static void visit(auto& v)
    {
        v.field("uuid"_L1, &R::uuid);
        v.field("resRootPath"_L1, &R::resRootPath);
        v.field("resName"_L1, &R::resName);
        v.field("resDesignWidth"_L1, &R::resDesignWidth);
        v.field("resDesignHeight"_L1, &R::resDesignHeight);
        v.field("width"_L1, &R::width);
        v.field("height"_L1, &R::height);
        v.field("displayMode"_L1, &R::displayMode);
        v.field("displayInfo"_L1, &R::displayInfo);
        v.readOnly("durationMode"_L1, &R::durationMode); // old projects carry it; a saved one comes back with 0
        v.field("positionFaceKandmarkIndex"_L1, &R::positionFaceKandmarkIndex);
        v.field("scaleFaceKandmarkIndex0"_L1, &R::scaleFaceKandmarkIndex0);
        v.field("scaleFaceKandmarkIndex1"_L1, &R::scaleFaceKandmarkIndex1);
        v.field("durationTime"_L1, &R::durationTime);
    }
};

template <>
struct RecordFields<tagTavloShowComponentInfo>
{
    using R = tagTavloShowComponentInfo;
    static void visit(auto& v)
    {
        v.field("name"_L1, &R::name);
        v.field("desc"_L1, &R::desc);
        v.field("presentInfo"_L1, &R::presentInfo);
        v.field("properties"_L1, &R::properties);
        v.field("enterTimeline"_L1, &R::enterTimeline);
        v.field("exitTimeline"_L1, &R::exitTimeline);
        v.list("cameraList"_L1, &R::cameraList);
    }
};

} // namespace tavlo
