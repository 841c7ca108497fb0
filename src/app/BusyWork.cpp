#include "app/BusyWork.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPointer>
#include <QThread>
#include <QWidget>

#include <atomic>
#include <exception>
#include <memory>

namespace {

// The wait cursor for the length of a piece of work, lifted while a modal box blocks the
// window (the user has to answer it) and put back when the box goes.
class BusyCursor : public QObject {
public:
    explicit BusyCursor(QWidget* window) : watched(window) {
        if (watched)
            watched->installEventFilter(this);
        show();
    }
    ~BusyCursor() override {
        if (watched)
            watched->removeEventFilter(this);
        hide();
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (object == watched) {
            if (event->type() == QEvent::WindowBlocked)
                hide();
            else if (event->type() == QEvent::WindowUnblocked)
                show();
        }
        return false;
    }

private:
    void show() {
        if (!shown && qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            QGuiApplication::setOverrideCursor(Qt::WaitCursor);
            shown = true;
        }
    }
    void hide() {
        if (shown) {
            QGuiApplication::restoreOverrideCursor();
            shown = false;
        }
    }
    QPointer<QWidget> watched;
    bool shown = false;
};

} // namespace

void runWhileBusy(QWidget* window, const std::function<void()>& work) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || QThread::currentThread() != app->thread()) {
        work();
        return;
    }

    const BusyCursor busy(window);
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
    if (failure)
        std::rethrow_exception(failure);
}
