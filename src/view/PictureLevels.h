#pragma once

#include <QImage>

#include <vector>

// Halved copies of a picture (a mip chain), made on demand, so that a zoomed-out view of a very
// large picture draws a few hundred thousand pixels instead of tens of millions each frame.
class PictureLevels {
public:
    // The copy to draw `picture` from at `deviceScale` device pixels per picture pixel: the
    // smallest one that still has at least one pixel per device pixel. `levelScale` receives
    // its size relative to the picture (1, 1/2, 1/4, ...).
    const QImage& levelFor(const QImage& picture, double deviceScale, double* levelScale);
    void clear();

private:
    qint64 madeOf = 0;          // cacheKey of the picture the levels were made from
    std::vector<QImage> levels; // levels[0] is half the picture, levels[1] a quarter, ...
};
