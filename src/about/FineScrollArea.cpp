#include "about/FineScrollArea.h"

#include <QScrollBar>

#include <algorithm>
#include <cmath>

FineScrollArea::FineScrollArea(QWidget* parent) : QScrollArea(parent) {
    for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()}) {
        connect(bar, &QScrollBar::valueChanged, this, [this] { followScrollBars(); });
        connect(bar, &QScrollBar::rangeChanged, this, [this] { followScrollBars(); });
    }
}

QRectF FineScrollArea::documentVisibleRect() const {
    return QRectF(mOrigin, QSizeF(viewport()->size()));
}

void FineScrollArea::scrollPoint(QPointF point) {
    const QScrollBar* h = horizontalScrollBar();
    const QScrollBar* v = verticalScrollBar();
    mOrigin.setX(std::clamp<qreal>(point.x(), h->minimum(), h->maximum()));
    mOrigin.setY(std::clamp<qreal>(point.y(), v->minimum(), v->maximum()));
    horizontalScrollBar()->setValue(int(std::lround(mOrigin.x())));
    verticalScrollBar()->setValue(int(std::lround(mOrigin.y())));
}

// The bars hold whole pixels; the exact origin stays as long as it rounds to what they show.
void FineScrollArea::followScrollBars() {
    const QScrollBar* h = horizontalScrollBar();
    const QScrollBar* v = verticalScrollBar();
    if (std::lround(mOrigin.x()) != h->value() || mOrigin.x() > h->maximum())
        mOrigin.setX(h->value());
    if (std::lround(mOrigin.y()) != v->value() || mOrigin.y() > v->maximum())
        mOrigin.setY(v->value());
}
