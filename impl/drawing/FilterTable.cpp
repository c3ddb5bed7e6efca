#include "drawing/FilterTable.h"

namespace tavlo {

namespace {

constexpr const char* mask = "maskInput";
constexpr std::array grey{"", "grey1Frame", "grey2Frame", "grey3Frame", "grey4Frame", "grey5Frame"};

constexpr FilterInput table(const char* variable, int slot) { return {variable, slot, FilterReading::Texels}; }
constexpr FilterInput cube(const char* variable, int slot) { return {variable, slot, FilterReading::Smooth}; }
constexpr FilterInput curve(int slot) { return table("curve", slot); }

/// The slots stand in GraphicsImages.cpp.
constexpr std::array<FilterRow, 22> rows{{
    {TavloPresentPictureFilterType_FAIRYTALE, "FAIRYTALE", {cube(mask, 22)}},
    {TavloPresentPictureFilterType_SUNRISE,
     "SUNRISE",
     {curve(38), table(grey[1], 6), table(grey[2], 7), table(grey[3], 35)}},
    {TavloPresentPictureFilterType_SUNSET, "SUNSET", {curve(39), table(grey[1], 28), table(grey[2], 29)}},
    {TavloPresentPictureFilterType_HEALTHY, "HEALTHY", {curve(40), table(mask, 16)}},
    {TavloPresentPictureFilterType_SWEETS, "SWEETS", {curve(41), table(mask, 29)}},
    {TavloPresentPictureFilterType_ROMANCE, "ROMANCE", {curve(42)}},
    {TavloPresentPictureFilterType_WARM, "WARM", {curve(43), table(grey[1], 8), table(grey[2], 37)}},
    {TavloPresentPictureFilterType_ANTIQUE, "ANTIQUE", {curve(44)}},
    {TavloPresentPictureFilterType_CALM, "CALM", {curve(45), table(grey[1], 16), table(grey[2], 17)}},
    {TavloPresentPictureFilterType_LATTE, "LATTE", {curve(46)}},
    {TavloPresentPictureFilterType_COOL, "COOL", {curve(47)}},
    {TavloPresentPictureFilterType_CRAYON, "CRAYON", {}, 0.5F},
    {TavloPresentPictureFilterType_SKETCH, "SKETCH", {}, 0.5F},
    {TavloPresentPictureFilterType_AMARO, "AMARO", {table(grey[1], 9), table(grey[2], 27), table(grey[3], 5)}, 1.0F},
    {TavloPresentPictureFilterType_BRANNAN,
     "BRANNAN",
     {table(grey[1], 12), table(grey[2], 9), table(grey[3], 10), table(grey[4], 11), table(grey[5], 13)},
     1.0F},
    {TavloPresentPictureFilterType_BROOKLYN,
     "BROOKLYN",
     {table(grey[1], 14), table(grey[2], 23), table(grey[3], 15)},
     1.0F},
    {TavloPresentPictureFilterType_EARLYBIRD,
     "EARLYBIRD",
     {table(grey[1], 19), table(grey[2], 21), table(grey[3], 36), table(grey[4], 18), table(grey[5], 20)}},
    {TavloPresentPictureFilterType_HUDSON,
     "HUDSON",
     {table(grey[1], 24), table(grey[2], 27), table(grey[3], 25)},
     1.0F},
    {TavloPresentPictureFilterType_INKWELL, "INKWELL", {table(grey[1], 26)}},
    {TavloPresentPictureFilterType_TOASTER2,
     "TOASTER2",
     {table(grey[1], 32), table(grey[2], 34), table(grey[3], 31), table(grey[4], 33), table(grey[5], 30)}},
    {TavloPresentPictureFilterType_DY, "DY", {}, 0, 0.5F},
    {TavloPresentPictureFilterType_ScreenBlend, "ScreenBlend", {}},
}};

constexpr bool inOrder()
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].type != i + 1)
            return false;
    }
    return true;
}
static_assert(inOrder());

} // namespace

std::span<const FilterRow> filterRows() { return rows; }

const FilterRow* findFilter(quint32 type) { return type >= 1 && type <= rows.size() ? &rows[type - 1] : nullptr; }

} // namespace tavlo
