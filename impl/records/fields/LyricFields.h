#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/LyricRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloMusicLRCStyle>
{
    using R = tagTavloMusicLRCStyle;
    static void visit(auto& v)
    {
        v.field("preset"_L1, &R::preset);
        v.field("fontName"_L1, &R::fontName);
        v.field("fontSize"_L1, &R::fontSize);
        v.field("noPlayUpColor"_L1, &R::noPlayUpColor);
        v.field("noPlayMidColor"_L1, &R::noPlayMidColor);
        v.field("noPlayDownColor"_L1, &R::noPlayDownColor);
        v.field("playedUpColor"_L1, &R::playedUpColor);
        v.field("playedMidColor"_L1, &R::playedMidColor);
        v.field("playedDownColor"_L1, &R::playedDownColor);
        v.field("shadowColor"_L1, &R::shadowColor);
    }
};

template <>
struct RecordFields<tagTavloRCFileInfo>
{
    using R = tagTavloRCFileInfo;
    static void visit(auto& v) { v.field("title"_L1, &R::title); }
};

} // namespace tavlo
