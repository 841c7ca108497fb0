#pragma once

#include <QPoint>

// The arithmetic of the image list's grid, without widgets: 80-point cells on a 90-point pitch,
// the first at (10, 10), as many columns as (width + 24) / 90 gives (at least one), and a row
// count rounded to the nearest whole number, not up, so that the last partial row of 7 cells in
// 3 columns lies below the computed height (the clip view's height usually covers it).
namespace ThumbGridLayout {

constexpr int kCellSide = 80;
constexpr int kPitch = 90;
constexpr int kMargin = 10;
constexpr double kWidthSlack = 24.0;

struct Grid {
    int columns = 1;
    long rows = 0;
    double height = 0; // the grid's own height: the rows, or the clip view's when that is taller
};

// Columns across a grid `width` points wide.
int columnsFor(double width);

// Rows of `count` cells in `columns` columns, rounded to the nearest (2.5 gives 3).
long rowsFor(int count, int columns);

// The grid for `count` cells across `width`, at least `clipHeight` high.
Grid gridFor(double width, int count, double clipHeight);

// The origin of cell `index` (0 first) in a grid of `columns` columns.
QPoint cellOrigin(int index, int columns);

// The indices [first, last) of the cells whose rows meet the band from `top` to `bottom`.
void cellsInBand(double top, double bottom, int columns, int count, int* first, int* last);

} // namespace ThumbGridLayout
