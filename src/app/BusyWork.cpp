#include "app/BusyWork.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QThread>

#include <atomic>
#include <exception>
#include <memory>

ScopedWaitCursor::ScopedWaitCursor(QWidget* window) : watched(window) {
    if (watched)
        watched->installEventFilter(this);
    show();
}

ScopedWaitCursor::~ScopedWaitCursor() {
    if (watched)
        watched->removeEventFilter(this);
    hide();
}

bool ScopedWaitCursor::eventFilter(QObject* object, QEvent* event) {
    if (object == watched) {
        if (event->type() == QEvent::WindowBlocked)
            hide();
        else if (event->type() == QEvent::WindowUnblocked)
            show();
    }
    return false;
}

void ScopedWaitCursor::show() {
    if (!shown && qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        shown = true;
    }
}

void ScopedWaitCursor::hide() {
    if (shown) {
        QGuiApplication::restoreOverrideCursor();
        shown = false;
    }
}

void runWhileBusy(QWidget* window, const std::function<void()>& work) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || QThread::currentThread() != app->thread()) {
        work();
        return;
    }

    const ScopedWaitCursor busy(window);
    std::exception_ptr failure;
    auto done = std::make_shared<std::atomic<bool>>(false);
    std::unique_ptr<QThread> worker(QThread::create([&work, &failure] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    }));
    worker->setObjectName(QStringLiteral("Convert"));
    // The end of the work is posted like everything else the work posts, so it wakes the wait
    // below after the work's last post has been served.
    QObject::connect(worker.get(), &QThread::finished, app, [done] { *done = true; });
    worker->start();
    if (!worker->isRunning() && !worker->isFinished()) {
        work(); // no thread to be had: the work holds the window, as it must be done all the same
        return;
    }
    while (!*done)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                        QEventLoop::WaitForMoreEvents);
    worker->wait();
    // The user's input kept back meanwhile is still queued, and the window system's source of
    // events only looks at its queue when woken: wake the loop, so that it is handled next.
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->wakeUp();
    if (failure)
        std::rethrow_exception(failure);
}
