#pragma once

// A scroll area whose visible document origin is a real number, so that the links text can
// move by half a unit a tick: the widget sits at the nearest whole pixel, and the exact origin
// is kept beside it. Scrolling by other means (the wheel) moves the exact origin along.

#include <QRectF>
#include <QScrollArea>

class FineScrollArea : public QScrollArea {
    Q_OBJECT
public:
    explicit FineScrollArea(QWidget* parent = nullptr);

    // The part of the document that shows, in document coordinates.
    QRectF documentVisibleRect() const;
    // Puts the document point at the top left of the visible area, within the document.
    void scrollPoint(QPointF point);

private:
    void followScrollBars();
    QPointF mOrigin;
};
