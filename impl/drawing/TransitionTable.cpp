#include "drawing/TransitionTable.h"

#include <algorithm>

namespace tavlo {

namespace {

using Row = TransitionRow;
using Pair = std::array<float, 2>;
using enum TransitionTurn;

constexpr Row plain(quint32 kind, const char* name, TransitionTurn turn = None)
{
    Row row;
    row.kind = kind;
    row.name = name;
    row.turn = turn;
    return row;
}

constexpr Row with(Row row, const char* variable, float value)
{
    row.settings[static_cast<std::size_t>(row.settingCount++)] = {variable, 1, {value, 0.0F}};
    return row;
}

constexpr Row with(Row row, const char* variable, Pair value)
{
    row.settings[static_cast<std::size_t>(row.settingCount++)] = {variable, 2, value};
    return row;
}

constexpr Row withImage(Row row, const char* variable, int slot)
{
    row.image = variable;
    row.imageSlot = slot;
    return row;
}

constexpr Row fuzzy(quint32 kind, const char* name) { return with(plain(kind, name), "fuzzyAmount", transitionFuzzy); }

constexpr Row line(quint32 kind, const char* name, Pair origin, Pair normal, Pair offset, TransitionTurn turn = None)
{
    Row row = with(with(fuzzy(kind, name), "lineOrigin", origin), "lineNormal", normal);
    row.turn = turn;
    return with(row, "lineOffset", offset);
}

constexpr Row mask(quint32 kind, const char* name, MaskShape shape, TransitionTurn turn = Swap)
{
    Row row = withImage(plain(kind, name, turn), "trigInput", transitionMaskSlot);
    row.mask = shape;
    return row;
}

constexpr Row glide(quint32 kind, const char* name, Pair way, float push, TransitionTurn turn)
{
    return with(with(plain(kind, name, turn), "slideAmount", way), "slidePush", push);
}

constexpr Row stretch(quint32 kind, const char* name, Pair way)
{
    return with(plain(kind, name), "StretchDirect", way);
}

constexpr Row image(quint32 kind, const char* name, const char* variable, int slot)
{
    return withImage(plain(kind, name), variable, slot);
}

constexpr Row luma(quint32 kind, const char* name)
{
    return image(kind, name, "cloudInput", transitionLumaSlot + static_cast<int>(kind - transitionKind::firstLuma));
}

constexpr Row randomCircles(quint32 kind, const char* name)
{
    Row row = image(kind, name, "cloudInput", 0);
    row.randomSeed = true;
    return row;
}

constexpr Pair left{1, 0}, right{-1, 0}, top{0, 1}, bottom{0, -1};
constexpr Pair topLeft{1, 1}, topRight{-1, 1}, bottomRight{-1, -1}, bottomLeft{1, -1};

constexpr std::array rows{
    line(1, "erase_Left", {1, 0}, {1, 0}, {0, 0}, Invert),
    line(2, "erase_Right", {1, 0}, {1, 0}, {0, 0}, Swap),
    line(3, "erase_Top", {0, 1}, {0, 1}, {0, 0}, Invert),
    line(4, "erase_Bottom", {0, 1}, {0, 1}, {0, 0}, Swap),
    line(5, "erase_TopLeft", {1, 1}, {0.5F, 0.5F}, {0, 0}, Invert),
    line(6, "erase_TopRight", {0, 1}, {-1, 1}, {1, 0}, Invert),
    line(7, "erase_BottomRight", {1, 1}, {1, 1}, {0, 0}, Swap),
    line(8, "erase_BottomLeft", {0, 1}, {-1, 1}, {1, 0}, Swap),
    line(9, "erase_HCenter", {2, 0}, {0, 1}, {1, 1}),
    line(10, "erase_VCenter", {2, 0}, {1, 0}, {1, 1}),
    mask(11, "erase_Box", MaskShape::Box, None),
    mask(12, "erase_Checkerboard", MaskShape::Checkerboard),
    fuzzy(13, "erase_Circle"),
    mask(14, "erase_DiagonalSquares", MaskShape::DiagonalSquares),
    mask(15, "erase_DissolveIn", MaskShape::DissolveIn),
    mask(16, "erase_RandomBars", MaskShape::RandomBars),
    mask(17, "erase_Split", MaskShape::Split),
    plain(18, "erase_VenetianBlinds"),
    image(19, "erase_Blood", "cloudInput", 3),
    mask(20, "erase_Wheel", MaskShape::Wheel),

    plain(22, "fade_Normal"),
    image(23, "fade_Drop", "cloudInput", 0),

    glide(25, "glide_In_Left", left, 0, Invert),
    glide(26, "glide_In_Right", right, 0, Invert),
    glide(27, "glide_In_Top", top, 0, Invert),
    glide(28, "glide_In_Bottom", bottom, 0, Invert),
    glide(29, "glide_In_TopLeft", topLeft, 0, Invert),
    glide(30, "glide_In_TopRight", topRight, 0, Invert),
    glide(31, "glide_In_BottomRight", bottomRight, 0, Invert),
    glide(32, "glide_In_BottomLeft", bottomLeft, 0, Invert),
    glide(33, "glide_Out_Left", left, 0, Swap),
    glide(34, "glide_Out_Right", right, 0, Swap),
    glide(35, "glide_Out_Top", top, 0, Swap),
    glide(36, "glide_Out_Bottom", bottom, 0, Swap),
    glide(37, "glide_Out_TopLeft", topLeft, 0, Swap),
    glide(38, "glide_Out_TopRight", topRight, 0, Swap),
    glide(39, "glide_Out_BottomRight", bottomRight, 0, Swap),
    glide(40, "glide_Out_BottomLeft", bottomLeft, 0, Swap),
    glide(41, "glide_Push_Left", left, 1, Invert),
    glide(42, "glide_Push_Right", right, 1, Invert),
    glide(43, "glide_Push_Top", top, 1, Invert),
    glide(44, "glide_Push_Bottom", bottom, 1, Invert),

    stretch(46, "stretch_Left", {-1, 0}),
    stretch(47, "stretch_Right", {1, 0}),
    stretch(48, "stretch_Top", {0, -1}),
    stretch(49, "stretch_Bottom", {0, 1}),
    stretch(50, "stretch_Center_Inner_AOut", {0, 0}),
    stretch(51, "stretch_Center_Inner_BIn", {0.5F, 0.5F}),

    image(53, "blur_CircularBlur", "trigInput", 2),
    plain(54, "blur_RadialBlur"),
    plain(55, "blur_Pixelate"),
    plain(56, "blur_Directional"),
    plain(57, "blur_GrowablePoissonDisk"),
    plain(58, "blur_Sharpen"),
    plain(59, "blur_Telescopic"),
    plain(60, "blur_Zoom"),

    with(with(plain(62, "distortion_BandedSwirl"), "twistAmount", 0.7853982F), "frequency", 50.0F),
    plain(63, "distortion_CircleStretch"),
    image(64, "distortion_CloudReveal", "cloudInput", 0),
    image(65, "distortion_Crumble", "cloudInput", 0),
    image(66, "distortion_Disolve", "noiseInput", 1),
    image(67, "distortion_RadialWiggle", "cloudInput", 0),
    randomCircles(68, "distortion_RandomCircleReveal"),
    plain(69, "distortion_Ripple"),
    plain(70, "distortion_Wave"),
    plain(71, "distortion_MagnifySmooth"),
    plain(72, "distortion_ApplyTextureMap"),

    plain(74, "color_MostBright"),
    plain(75, "color_BrightExtract"),
    plain(76, "color_InvertColor"),
    plain(77, "color_TransparentAlternatingPixelsMultiplied"),
    plain(78, "color_TransparentAlternatingScanlines"),
    plain(79, "color_ApplyTextureMap"),

    luma(81, "lumas_barndoor-botleft"),
    luma(82, "lumas_barndoor-h"),
    luma(83, "lumas_barndoor-topleft"),
    luma(84, "lumas_barndoor-v"),
    luma(85, "lumas_blinds-h"),
    luma(86, "lumas_box-botleft"),
    luma(87, "lumas_box-botright"),
    luma(88, "lumas_box-topleft"),
    luma(89, "lumas_box-topright"),
    luma(90, "lumas_burst"),
    luma(91, "lumas_checkerboard-small"),
    luma(92, "lumas_circles"),
    luma(93, "lumas_clock"),
    luma(94, "lumas_cloud"),
    luma(95, "lumas_curtain"),
    luma(96, "lumas_fan"),
    luma(97, "lumas_iris"),
    luma(98, "lumas_linear-h"),
    luma(99, "lumas_linear-topleft"),
    luma(100, "lumas_linear-topright"),
    luma(101, "lumas_linear-v"),
    luma(102, "lumas_parallel-zigzag-h"),
    luma(103, "lumas_parallel-zigzag-v"),
    luma(104, "lumas_spiral"),
    luma(105, "lumas_square"),
    luma(106, "lumas_squares"),
    luma(107, "lumas_stripes"),
    luma(108, "lumas_strips-h"),
    luma(109, "lumas_strips-v"),
    luma(110, "lumas_watercolor"),
    luma(111, "lumas_zigzag-h"),
    luma(112, "lumas_zigzag-v"),
};

struct Family
{
    TavloPresentEffectKindCatalog catalog;
    quint32 last; ///< kind; the first is the one behind the gap
};

constexpr std::array families{
    Family{TavloPresentEffectKindCatalogErase, 20},
    Family{TavloPresentEffectKindCatalogFade, 23},
    Family{TavloPresentEffectKindCatalogGlide, 44},
    Family{TavloPresentEffectKindCatalogStretch, 51},
    Family{TavloPresentEffectKindCatalogBlur, 60},
    Family{TavloPresentEffectKindCatalogDistortion, 72},
    Family{TavloPresentEffectKindCatalogColor, 79},
    Family{TavloPresentEffectKindCatalogLumas, transitionKind::lastLuma},
};

/// For each kind its place in `rows`, or -1.
constexpr auto placeOfKind = [] {
    std::array<qint8, transitionKind::lastLuma + 1> places{};
    places.fill(-1);
    for (std::size_t i = 0; i < rows.size(); ++i)
        places[rows[i].kind] = static_cast<qint8>(i);
    return places;
}();

static_assert(std::is_sorted(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.kind < b.kind; }));

} // namespace

std::span<const TransitionRow> transitionRows() { return rows; }

const TransitionRow* findTransition(quint32 kind)
{
    if (kind >= placeOfKind.size() || placeOfKind[kind] < 0)
        return nullptr;
    return &rows[static_cast<std::size_t>(placeOfKind[kind])];
}

const TransitionRow* findTransition(std::string_view name)
{
    const auto* row = std::find_if(rows.begin(), rows.end(), [name](const Row& each) { return each.name == name; });
    return row == rows.end() ? nullptr : row;
}

TavloPresentEffectKindCatalog transitionFamily(quint32 kind)
{
    if (!findTransition(kind))
        return TavloPresentEffectKindCatalogNone;
    const auto* family =
        std::find_if(families.begin(), families.end(), [kind](const Family& each) { return kind <= each.last; });
    return family->catalog;
}

} // namespace tavlo
