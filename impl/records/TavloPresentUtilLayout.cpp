#include <tavlo/TavloPresentUtil.h>

#include <algorithm>
#include <array>

namespace {

struct Grid
{
    int count;
    int rows;
    int columns;
};

constexpr std::array grids{Grid{1, 1, 1}, Grid{4, 2, 2},  Grid{6, 3, 2}, Grid{8, 2, 4},
                           Grid{9, 3, 3}, Grid{10, 2, 5}, Grid{12, 3, 4}};

constexpr Grid narrowTwelve{12, 6, 2};

/// The two monitors on top, the sources in a grid below, a column at the side.
int computeGrid(TavloPresentViewLayoutType type, int count, QSizeF size, tagTavloPresentViewLayoutInfo& info,
                quint32 flags)
{
    const auto width = static_cast<float>(size.width());
    const auto height = static_cast<float>(size.height());
    const float monitorWidth = width * 0.8F * 0.5F;
    const float monitorHeight = monitorWidth / 16.0F * 9.1F; // a little taller than 16:9: room for a label
    const float restHeight = height - monitorHeight;
    const float sideWidth = width - width * 0.8F;

    if (flags & TavloPresentViewLayoutFlagPvm)
        info.pvmRect = {0.0, 0.0, monitorWidth, monitorHeight};
    if (flags & TavloPresentViewLayoutFlagPgm)
        info.pgmRect = {monitorWidth, 0.0, monitorWidth, monitorHeight};

    int rows = 1;
    int columns = 1;
    TavloPresentUtil::prefetchGridNum(count, rows, columns);
    const float columnWidth = (width - sideWidth) / static_cast<float>(columns);
    float paneWidth = columnWidth;
    if (type == TavloPresentViewLayoutTypeNarrow) {
        if (count == narrowTwelve.count) {
            rows = narrowTwelve.rows;
            columns = narrowTwelve.columns;
        }
        paneWidth /= static_cast<float>(columns);
    }
    const float paneHeight = restHeight / static_cast<float>(rows);

    if (flags & TavloPresentViewLayoutFlagPanes) {
        for (int i = 0; i < count; ++i) {
            info.paneRects[static_cast<size_t>(i)] = {static_cast<float>(i % columns) * paneWidth,
                                                      monitorHeight + static_cast<float>(i / columns) * paneHeight,
                                                      paneWidth, paneHeight};
        }
    }
    if (flags & TavloPresentViewLayoutFlagLower)
        info.lowerRect = {columnWidth, monitorHeight, width - sideWidth - columnWidth, restHeight};
    if (flags & TavloPresentViewLayoutFlagSide)
        info.sideRect = {width - sideWidth, 0.0, sideWidth, height};
    return rows;
}

/// Four panes on top, the sources column by column below, and two columns' width for three large panes.
int computeColumns(TavloPresentViewLayoutType type, int count, QSizeF size, tagTavloPresentViewLayoutInfo& info)
{
    const auto width = static_cast<float>(size.width());
    const auto height = static_cast<float>(size.height());
    const float quarter = width * 0.25F;
    const float topHeight = quarter / 16.0F * 9.0F;
    for (size_t i = 0; i < info.topRects.size(); ++i)
        info.topRects[i] = {quarter * static_cast<float>(i), 0.0, quarter, topHeight};

    const int rows = TavloPresentUtil::computePresentViewLayoutInfo_ex_rowNum(type, count);
    const int panes = std::max(0, count - 2); // the last two are large
    const int columns = panes / rows + 2;
    const float paneWidth = width / static_cast<float>(columns);
    const float paneHeight = (height - topHeight) / static_cast<float>(rows);
    for (int i = 0; i < panes; ++i) {
        info.paneRects[static_cast<size_t>(i)] = {static_cast<float>(i / rows) * paneWidth,
                                                  topHeight + static_cast<float>(i % rows) * paneHeight, paneWidth,
                                                  paneHeight};
    }

    const float largeWidth = 2.0F * paneWidth;
    const float largeHeight = (height - topHeight) / 3.0F;
    const auto large = [&](int i) {
        return QRectF(width - largeWidth, topHeight + static_cast<float>(i) * largeHeight, largeWidth, largeHeight);
    };
    info.pvmRect = large(0);
    info.paneRects[static_cast<size_t>(panes)] = large(1);
    info.paneRects[static_cast<size_t>(panes + 1)] = large(2);
    return panes + 1;
}

} // namespace

int TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutType type, int count, QSizeF size,
                                                   tagTavloPresentViewLayoutInfo& info, quint32 flags)
{
    count = std::clamp(count, 0, TavloMixedChannelLimit);
    info.size = size;
    switch (type) {
    case TavloPresentViewLayoutTypeSingle:
        info.pgmRect = {0.0, 0.0, size.width() - 1.0, size.height() - 1.0};
        return 0;
    case TavloPresentViewLayoutTypeColumns:
        return computeColumns(type, count, size, info);
    default:
        return computeGrid(type, count, size, info, flags);
    }
}

int TavloPresentUtil::computePresentViewLayoutInfo_ex_rowNum(TavloPresentViewLayoutType, int count)
{
    switch (count) {
    case 32:
    case 22:
        return 5;
    case 26:
        return 4;
    case 14:
    case 11:
        return 3;
    default:
        return 1;
    }
}

void TavloPresentUtil::prefetchGridNum(int count, int& rows, int& columns)
{
    const auto grid = std::ranges::find(grids, count, &Grid::count);
    rows = grid != grids.end() ? grid->rows : 1;
    columns = grid != grids.end() ? grid->columns : 1;
}

float TavloPresentUtil::getGridLineWidth(QSizeF size)
{
    return std::min(4.0F, static_cast<float>(size.width()) / 240.0F);
}
