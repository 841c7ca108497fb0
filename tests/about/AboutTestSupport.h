#pragma once

// What the tests of the about subsystem share: the program's resources, and the URLs the
// program asks to open, caught instead of starting a browser.

#include "about/AboutLoop.h"
#include "about/WebLinks.h"

#include <QCoreApplication>
#include <QList>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>

// The mouse moved over a point of the widget, as the window system reports it.
inline void hover(QWidget* widget, QPoint point) {
    QMouseEvent move(QEvent::MouseMove, QPointF(point), QPointF(widget->mapToGlobal(point)),
                     Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &move);
}

inline void initProgramResources() {
    Q_INIT_RESOURCE(resources);
}
inline void cleanupProgramResources() {
    Q_CLEANUP_RESOURCE(resources);
}

struct CapturedUrls {
    QList<QUrl> urls;
    CapturedUrls() {
        setUrlOpener([this](const QUrl& url) {
            urls << url;
            return true;
        });
    }
    ~CapturedUrls() { setUrlOpener({}); }
    CapturedUrls(const CapturedUrls&) = delete;
    CapturedUrls& operator=(const CapturedUrls&) = delete;
};

// The about loop on a clock of its own: each wait lasts a millisecond of real time and counts
// `step` seconds on the loop's clock. `onEmptyWait` runs after each empty wait, with its number.
struct FakeAboutClock {
    explicit FakeAboutClock(double step, std::function<void(int)> onEmptyWait = {}) {
        AboutLoop::timing().waitMilliseconds = 1;
        AboutLoop::timing().now = [step, onEmptyWait] {
            AboutLoop* loop = AboutLoop::current();
            const int waits = loop ? loop->emptyWaits() : 0;
            if (onEmptyWait)
                onEmptyWait(waits);
            return waits * step;
        };
    }
    ~FakeAboutClock() { AboutLoop::timing() = AboutLoop::Timing(); }
    FakeAboutClock(const FakeAboutClock&) = delete;
    FakeAboutClock& operator=(const FakeAboutClock&) = delete;
};
