#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/VideoFilterRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloVideoProcessDrawText>
{
    using R = tagTavloVideoProcessDrawText;
    static void visit(auto& v)
    {
        v.field("uuid"_L1, &R::uuid);
        v.field("enable"_L1, &R::enable);
        v.field("text"_L1, &R::text);
        v.field("pos"_L1, &R::pos);
        v.field("fontName"_L1, &R::fontName);
        v.field("fontSize"_L1, &R::fontSize);
        v.field("fontColor"_L1, &R::fontColor);
        v.field("shadowColor"_L1, &R::shadowColor);
        v.field("shadowDistance"_L1, &R::shadowDistance);
        v.field("outlineColor"_L1, &R::outlineColor);
        v.field("outlineSize"_L1, &R::outlineSize);
    }
};

template <>
struct RecordFields<tagTavloVideoProcessLogo>
{
    using R = tagTavloVideoProcessLogo;
    static void visit(auto& v)
    {
        v.field("uuid"_L1, &R::uuid);
        v.field("enable"_L1, &R::enable);
        v.field("path"_L1, &R::path);
        v.field("pos"_L1, &R::pos);
    }
};

template <>
struct RecordFields<tagTavloVideoProcess3dTrans>
{
    using R = tagTavloVideoProcess3dTrans;
    static void visit(auto& v)
    {
        v.field("mode"_L1, &R::mode);
        v.field("value"_L1, &R::value);
    }
};

template <>
struct RecordFields<tagTavloVideoEffectParam>
{
    using R = tagTavloVideoEffectParam;
    static void visit(auto& v)
    {
        v.field("drawText"_L1, &R::drawText);
        v.field("logo"_L1, &R::logo);
        v.field("trans"_L1, &R::trans);
    }
};

} // namespace tavlo
