#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/PictureRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloPresentPictureProcess>
{
    using R = tagTavloPresentPictureProcess;
    static void visit(auto& v)
    {
        v.field("vFlip"_L1, &R::vFlip);
        v.field("hMirror"_L1, &R::hMirror);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureChromaKey>
{
    using R = tagTavloPresentPictureChromaKey;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("color"_L1, &R::color);
        v.field("similarity"_L1, &R::similarity);
        v.field("smoothness"_L1, &R::smoothness);
        v.field("spill"_L1, &R::spill);
        v.numbered("chroma_key_"_L1, &R::chroma_key);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureLumaKey>
{
    using R = tagTavloPresentPictureLumaKey;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("threshold"_L1, &R::threshold);
        v.field("tolerance"_L1, &R::tolerance);
        v.field("softness"_L1, &R::softness);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureCrop>
{
    using R = tagTavloPresentPictureCrop;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.numbered("cropRect_"_L1, &R::cropRect);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureColorAdjust>
{
    using R = tagTavloPresentPictureColorAdjust;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("contrast"_L1, &R::contrast);
        v.field("brightness"_L1, &R::brightness);
        v.field("hue"_L1, &R::hue);
        v.field("saturation"_L1, &R::saturation);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureMisc>
{
    using R = tagTavloPresentPictureMisc;
    static void visit(auto& v)
    {
        v.field("name"_L1, &R::name);
        v.field("backgroundColor"_L1, &R::backgroundColor);
    }
};

template <>
struct RecordFields<tagTavloPresentPictureFilterParam>
{
    using R = tagTavloPresentPictureFilterParam;
    static void visit(auto& v)
    {
        v.field("processParam"_L1, &R::processParam);
        v.field("chromaKeyParam"_L1, &R::chromaKeyParam);
        v.field("lumaKeyParam"_L1, &R::lumaKeyParam);
        v.field("rectCropParam"_L1, &R::rectCropParam);
        v.field("colorAdjustParam"_L1, &R::colorAdjustParam);
        v.field("miscParam"_L1, &R::miscParam);
    }
};

} // namespace tavlo
