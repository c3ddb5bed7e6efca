#pragma once

#include <tavlo/TavloPictureFilters.h>

#include <array>
#include <span>

namespace tavlo {

/// How a filter reads an image of the store.
enum class FilterReading : quint8
{
    Texels, ///< at its texels, at half the cost: exact for tables, and as good for weights and lights, which are smooth
    Smooth  ///< between its texels too: a table of so few values that steps would show
};

/// An image of the store that a filter reads.
struct FilterInput
{
    const char* variable = nullptr; ///< of the effect
    int slot = -1;
    FilterReading reading = FilterReading::Smooth;
};

/// How one filter is drawn.
struct FilterRow
{
    TavloPresentPictureFilterType type = TavloPresentPictureFilterType_NONE;
    const char* name = nullptr;
    std::array<FilterInput, 5> inputs{}; ///< those with a variable
    float strength = 0;                  ///< "strength"; 0: not set
    float scale = 0;                     ///< "scaleDY"; 0: not set, and the picture is read at its pixels
};

/// All filters in ascending order; what draws the picture as it is has no row. Any thread.
std::span<const FilterRow> filterRows();

/// The row of a number, or null.
const FilterRow* findFilter(quint32 type);

} // namespace tavlo
