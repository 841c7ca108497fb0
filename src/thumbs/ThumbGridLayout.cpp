#include "thumbs/ThumbGridLayout.h"

#include <algorithm>
#include <cmath>

namespace ThumbGridLayout {

int columnsFor(double width) {
    int columns = int(width + kWidthSlack) / kPitch;
    if (columns == 0)
        columns = 1;
    // Never true after the division above; kept so the rule reads as the grid has always had it.
    if (columns > 1 && columns * kCellSide + kMargin > width + kWidthSlack)
        --columns;
    return std::max(columns, 1); // a negative width counts as a narrow one
}

long rowsFor(int count, int columns) {
    return std::lround(double(count) / double(std::max(columns, 1)));
}

Grid gridFor(double width, int count, double clipHeight) {
    Grid grid;
    grid.columns = columnsFor(width);
    grid.rows = rowsFor(count, grid.columns);
    grid.height = double(grid.rows * kPitch + kMargin);
    if (clipHeight > grid.height)
        grid.height = clipHeight;
    return grid;
}

QPoint cellOrigin(int index, int columns) {
    columns = std::max(columns, 1);
    return QPoint(kMargin + (index % columns) * kPitch, kMargin + (index / columns) * kPitch);
}

void cellsInBand(double top, double bottom, int columns, int count, int* first, int* last) {
    columns = std::max(columns, 1);
    const long firstRow = std::max(0L, long(std::floor((top - kMargin - kCellSide) / kPitch)) + 1);
    const long lastRow = std::max(0L, long(std::ceil((bottom - kMargin) / kPitch)));
    *first = int(std::min<long>(count, firstRow * columns));
    *last = int(std::min<long>(count, std::max(lastRow, firstRow) * columns));
}

} // namespace ThumbGridLayout
