#include "view/PictureLevels.h"

#include <algorithm>

const QImage& PictureLevels::levelFor(const QImage& picture, double deviceScale,
                                      double* levelScale) {
    if (madeOf != picture.cacheKey()) {
        levels.clear();
        madeOf = picture.cacheKey();
    }
    double factor = 1.0;
    const QImage* chosen = &picture;
    for (size_t i = 0; factor / 2.0 >= deviceScale; ++i) {
        if (i == levels.size()) {
            const QImage& from = i == 0 ? picture : levels[i - 1];
            if (from.width() < 2 || from.height() < 2)
                break;
            // Each level from the one above: a box filter of two by two is all halving needs.
            QImage half = from.scaled(std::max(1, from.width() / 2), std::max(1, from.height() / 2),
                                      Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            if (half.isNull())
                break; // out of memory: draw from the larger copy
            if (half.hasAlphaChannel() && half.format() != QImage::Format_ARGB32_Premultiplied)
                half.convertTo(QImage::Format_ARGB32_Premultiplied);
            levels.push_back(std::move(half));
        }
        chosen = &levels[i];
        factor = double(chosen->width()) / picture.width();
    }
    if (levelScale)
        *levelScale = factor;
    return *chosen;
}

void PictureLevels::clear() {
    levels.clear();
    madeOf = 0;
}
