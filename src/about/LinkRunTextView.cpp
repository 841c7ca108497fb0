#include "about/LinkRunTextView.h"

#include "about/WebLinks.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>

#include <cmath>

const QString LinkRunTextView::http = QLatin1String(WebLinks::kSchemePrefix);
const QString LinkRunTextView::maimURL = QLatin1String(WebLinks::kSiteHost);

QCursor LinkRunTextView::fingerCursor() {
    static const QCursor* cursor = new QCursor(makeFingerCursor()); // kept for the whole run
    return *cursor;
}

LinkRunTextView::LinkRunTextView(QWidget* parent) : LinkTextView(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    // The view grows with its document; the scroll area it sits in hears of it at once.
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            [this] {
                setMinimumHeight(documentHeight());
                setMaximumHeight(documentHeight());
                updateGeometry();
                for (QWidget* up = parentWidget(); up; up = up->parentWidget())
                    if (qobject_cast<QScrollArea*>(up)) {
                        QCoreApplication::postEvent(up, new QEvent(QEvent::LayoutRequest));
                        break;
                    }
            });
}

QColor LinkRunTextView::linkColour() const {
    return Qt::blue;
}

int LinkRunTextView::documentHeight() const {
    return int(std::ceil(document()->size().height())) + 2 * frameWidth();
}

QSize LinkRunTextView::sizeHint() const {
    return {LinkTextView::sizeHint().width(), documentHeight()};
}

QSize LinkRunTextView::minimumSizeHint() const {
    return {0, documentHeight()};
}
