// The scrolling links text under the main window's controls: the shipped "links" document,
// moved up and down by a repeating 80-millisecond timer.

#include "app/Controller.h"

#include "about/FineScrollArea.h"
#include "about/LinkRunTextView.h"
#include "about/ScrollStep.h"
#include "about/WebLinks.h"

#include <QFile>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTimer>

namespace {

constexpr int kScrollTickMilliseconds = 80;

} // namespace

QString Controller::textToScroll() const {
    QFile links(QStringLiteral(":/links.html"));
    if (!links.open(QIODevice::ReadOnly))
        return QString();
    return WebLinks::withSiteNames(QString::fromUtf8(links.readAll()));
}

void Controller::loadTextToScroll() {
    if (!advTextView)
        return;
    const QString text = textToScroll();
    if (auto* links = qobject_cast<LinkTextView*>(advTextView.data()))
        links->setAttributedString(text);
    else
        advTextView->setHtml(text);
}

void Controller::setScrollAmount(float amount) {
    if (auto* area = qobject_cast<FineScrollArea*>(advScrollView.data()))
        area->scrollPoint(QPointF(0.0, amount));
    else if (advScrollView)
        advScrollView->verticalScrollBar()->setValue(int(amount));
}

void Controller::scrollOneUnit() {
    if (!advScrollView)
        return;
    float y = float(advScrollView->verticalScrollBar()->value());
    if (auto* area = qobject_cast<FineScrollArea*>(advScrollView.data()))
        y = float(area->documentVisibleRect().top());
    setScrollAmount(nextScrollAmount(y));
}

void Controller::startScrollingAnimation() {
    if (scrollingTimer)
        return;
    auto* timer = new QTimer(this);
    timer->setObjectName(QStringLiteral("scrollingTimer"));
    timer->setInterval(kScrollTickMilliseconds);
    connect(timer, &QTimer::timeout, this, &Controller::scrollOneUnit);
    timer->start();
    scrollingTimer = timer;
}

void Controller::stopScrollingAnimation() {
    delete scrollingTimer.data();
    scrollingTimer = nullptr;
}
