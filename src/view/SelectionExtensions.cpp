#include "view/SelectionExtensions.h"

bool isClosed(const QPainterPath& path) {
    const int count = path.elementCount();
    if (count == 0)
        return false;
    int start = count - 1;
    while (start > 0 && path.elementAt(start).type != QPainterPath::MoveToElement)
        --start;
    const QPainterPath::Element first = path.elementAt(start);
    const QPainterPath::Element last = path.elementAt(count - 1);
    return QPointF(first) == QPointF(last);
}

QPainterPath closedPath(const QPainterPath& path) {
    if (isClosed(path))
        return path;
    QPainterPath copy = path;
    if (copy.elementCount() == 0)
        copy.moveTo(0, 0);
    else
        copy.closeSubpath();
    return copy;
}
