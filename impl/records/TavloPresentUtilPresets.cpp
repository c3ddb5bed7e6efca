#include <tavlo/TavloPresentUtil.h>

#include <tavlo/records/LyricRecords.h>
#include <tavlo/records/ShowRecords.h>

#include <QColor>

#include <array>

namespace {

constexpr quint32 white = 0xFFFFFFFF;
constexpr quint32 black = 0xFF000000;
constexpr quint32 red = 0xFFFF0000;
constexpr quint32 green = 0xFF00FF00;
constexpr quint32 blue = 0xFF0000FF;
constexpr quint32 yellow = 0xFFFFFF00;
constexpr quint32 gray = 0xFFA0A0A4;

constexpr std::array solidColors{white, black, red, green, blue};

enum FillType : quint32
{
    FillSolid = 0,
    FillGradient = 1,
    FillTexture = 2
};

struct Gradient
{
    quint32 begin;
    quint32 end;
};

constexpr std::array gradients{Gradient{black, white}, Gradient{white, black}, Gradient{red, white},
                               Gradient{green, white}, Gradient{blue, white},  Gradient{yellow, white}};

void fillSolid(tagTavloShowTextStyle& style, quint32 color)
{
    style.fillType = FillSolid;
    style.solidColor = color;
}

void setShadow(tagTavloShowTextStyle& style, quint32 color)
{
    style.shadowColor = color;
    style.shadowDistance = {2, -2};
    style.shadowBlur = 2.0F;
}

void setOutlineWidth(tagTavloShowTextStyle& style, quint32 size)
{
    style.outlineSize = size;
    style.outlineBlur = 2.0F;
}

/// Upper, middle and lower colour of a line's vertical run.
struct LyricColors
{
    std::array<quint32, 3> noPlay;
    std::array<quint32, 3> played;
};

constexpr std::array lyricPresets{
    LyricColors{{0xFFFFFFFF, 0xFFE8EEF8, 0xFFC4D2EA}, {0xFF8FC7FF, 0xFF2F86F0, 0xFF0A4DB4}}, // 1 white to blue
    LyricColors{{0xFFFFFFFF, 0xFFF4EAEA, 0xFFE0C6C6}, {0xFFFF9A8F, 0xFFF0382F, 0xFFA80C0A}}, // 2 white to red
    LyricColors{{0xFFFFFFFF, 0xFFEAF4EA, 0xFFC6E0C8}, {0xFF9CF08F, 0xFF35C22C, 0xFF0A7A12}}, // 3 white to green
    LyricColors{{0xFFFFFFFF, 0xFFF6F2E4, 0xFFE2D8B8}, {0xFFFFE68A, 0xFFF8BE1C, 0xFFB87E00}}, // 4 white to gold
    LyricColors{{0xFFFFFFFF, 0xFFF2EAF6, 0xFFD8C6E4}, {0xFFE2A0FF, 0xFFA83CE8, 0xFF6410A0}}, // 5 white to violet
    LyricColors{{0xFF9AD0FF, 0xFF3C90F4, 0xFF1058BC}, {0xFFFFF2A8, 0xFFFFD43A, 0xFFC89400}}, // 6 blue to gold
    LyricColors{{0xFFB8F4F0, 0xFF4CD0C8, 0xFF128A84}, {0xFFFFC8A0, 0xFFFF8430, 0xFFC04E08}}, // 7 teal to orange
    LyricColors{{0xFFFFD8E8, 0xFFFF8CB8, 0xFFD04880}, {0xFFFFFFFF, 0xFFF4F4F8, 0xFFD0D4E0}}, // 8 pink to white
    LyricColors{{0xFFE8E8E8, 0xFFB4B4B8, 0xFF80808A}, {0xFFFFFFFF, 0xFFF8F8FC, 0xFFE0E4F0}}, // 9 grey to white
    LyricColors{{0xFFFFF6C8, 0xFFFFE470, 0xFFD8AC20}, {0xFFFF9080, 0xFFE83428, 0xFF980804}}, // 10 yellow to red
    LyricColors{{0xFFC8FFD0, 0xFF6CE884, 0xFF20A044}, {0xFFA0B4FF, 0xFF4460F0, 0xFF1424A8}}, // 11 green to indigo
};

} // namespace

void TavloPresentUtil::loadTextStylePreset(quint32 preset, tagTavloShowTextStyle& style)
{
    if (preset < 1 || preset > 30)
        return;
    const quint32 group = (preset - 1) / 5; // five presets for the five solid colours
    const quint32 member = (preset - 1) % 5;
    if (group == 0) {
        fillSolid(style, solidColors[member]);
        style.shadowColor = 0;
        style.outlineColor = 0;
    } else if (group == 1) {
        fillSolid(style, solidColors[member]);
        setShadow(style, gray);
    } else if (group == 2) {
        fillSolid(style, solidColors[member]);
        setShadow(style, gray);
        style.outlineColor = solidColors[member] == black ? white : black;
        setOutlineWidth(style, 2);
    } else if (group == 3) {
        style.fillType = FillSolid;
        setShadow(style, 0);
        style.outlineColor = solidColors[member];
        setOutlineWidth(style, 12);
    } else {
        if (preset <= 26) {
            style.fillType = FillGradient;
            style.gradientBeginColor = gradients[preset - 21].begin;
            style.gradientEndColor = gradients[preset - 21].end;
        } else {
            style.fillType = FillTexture;
            style.texPath = QStringLiteral("VT%1.tga").arg(preset - 26, 3, 10, QLatin1Char('0'));
        }
        setShadow(style, 0);
        setOutlineWidth(style, 12);
    }
}

void TavloPresentUtil::loadMusicLRCStylePresent(quint32 preset, tagTavloMusicLRCStyle& style)
{
    if (preset < 1 || preset > lyricPresets.size())
        return;
    const LyricColors& colors = lyricPresets[preset - 1];
    style.noPlayUpColor = colors.noPlay[0];
    style.noPlayMidColor = colors.noPlay[1];
    style.noPlayDownColor = colors.noPlay[2];
    style.playedUpColor = colors.played[0];
    style.playedMidColor = colors.played[1];
    style.playedDownColor = colors.played[2];
}
