#include "app/PrefDrawer.h"

#include <QPropertyAnimation>

PrefDrawer::PrefDrawer(QWidget* parent) : QWidget(parent) {
    setObjectName("itsPrefDrawer");
    setMaximumWidth(0);
    setVisible(false);
    slide = new QPropertyAnimation(this, "maximumWidth", this);
    slide->setDuration(180);
    slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(slide, &QPropertyAnimation::finished, this, [this] {
        const State settled = drawerState == Opening ? Open : Closed;
        drawerState = settled;
        if (settled == Closed)
            setVisible(false);
        emit stateChanged(drawerState);
    });
}

void PrefDrawer::setSlideDuration(int milliseconds) { slide->setDuration(milliseconds); }

// Wide enough for its labels, never so wide that it crowds the picture.
int PrefDrawer::openWidth() const { return qBound(minimumSizeHint().width(), 280, 320); }

void PrefDrawer::open() {
    if (drawerState == Open || drawerState == Opening)
        return;
    setVisible(true);
    slideTo(Opening, Open, openWidth());
}

void PrefDrawer::close() {
    if (drawerState == Closed || drawerState == Closing)
        return;
    slideTo(Closing, Closed, 0);
}

void PrefDrawer::slideTo(State moving, State settled, int width) {
    slide->stop();
    drawerState = moving;
    emit stateChanged(drawerState);
    if (slide->duration() <= 0) {
        setMaximumWidth(width);
        drawerState = settled;
        if (settled == Closed)
            setVisible(false);
        emit stateChanged(drawerState);
        return;
    }
    slide->setStartValue(maximumWidth());
    slide->setEndValue(width);
    slide->start();
}
