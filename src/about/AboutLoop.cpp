#include "about/AboutLoop.h"

#include "about/AboutPanel.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

AboutLoop* runningLoop = nullptr;

double monotonicSeconds() {
    static QElapsedTimer clock;
    if (!clock.isValid())
        clock.start();
    return clock.nsecsElapsed() / 1e9;
}

} // namespace

AboutLoop::Timing& AboutLoop::timing() {
    static Timing shared;
    return shared;
}

AboutLoop::AboutLoop(AboutPanel* panel) : mPanel(panel) {}

AboutLoop::~AboutLoop() {
    if (runningLoop == this)
        runningLoop = nullptr;
}

AboutLoop* AboutLoop::current() {
    return runningLoop;
}

double AboutLoop::now() const {
    const Timing& t = timing();
    return t.now ? t.now() : monotonicSeconds();
}

void AboutLoop::run() {
    if (!mPanel)
        return;
    AboutLoop* outer = runningLoop;
    runningLoop = this;
    // Input is watched from before the panel shows: showing it may already deliver events.
    qApp->installEventFilter(this);

    // Centred on the screen of the main window, or the primary screen.
    QWidget* over = mPanel->parentWidget() ? mPanel->parentWidget()->window() : nullptr;
    QScreen* screen = over && over->screen() ? over->screen() : QGuiApplication::primaryScreen();
    if (screen)
        mPanel->move(screen->availableGeometry().center() - mPanel->rect().center());
    mPanel->show();
    mPanel->raise();
    mPanel->activateWindow();

    bool idleClockRuns = false;
    double idleStart = 0.0;
    while (mPanel && !mDismissed) {
        QCoreApplication::processEvents(); // one turn of the modal session
        if (!mEventCame && !mDismissed && mPanel) {
            QEventLoop wait;
            mWait = &wait;
            QTimer::singleShot(timing().waitMilliseconds, &wait, &QEventLoop::quit);
            wait.exec();
            mWait = nullptr;
        }
        if (mDismissed || !mPanel)
            break;
        if (mEventCame) { // a click in the strip, already on its way to the panel
            mEventCame = false;
            continue;
        }
        ++mEmptyWaits;
        const double t = now();
        if (!idleClockRuns) {
            idleStart = t;
            idleClockRuns = true;
        } else if (t - idleStart > kIdleSeconds) {
            break;
        }
    }

    qApp->removeEventFilter(this);
    if (mPanel)
        mPanel->hide();
    runningLoop = outer;
}

void AboutLoop::wake() {
    mEventCame = true;
    if (mWait)
        mWait->quit();
}

bool AboutLoop::belongsToPanel(QObject* object) const {
    if (!mPanel || !object)
        return false;
    if (auto* widget = qobject_cast<QWidget*>(object))
        return widget->window() == mPanel;
    if (auto* window = qobject_cast<QWindow*>(object))
        return window == mPanel->windowHandle();
    return false;
}

bool AboutLoop::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* press = static_cast<QMouseEvent*>(event);
        if (press->button() != Qt::LeftButton)
            return !belongsToPanel(watched); // other buttons reach the panel only
        // The same press again, handed on from its window to a widget or up to a parent: it
        // keeps its time stamp. (Its address tells nothing: the next press may be made at the
        // same place on the stack.)
        if (press->timestamp() != 0 && press->timestamp() == mLastTimestamp)
            return false;
        mLastTimestamp = press->timestamp();
        const QPointF inPanel =
            mPanel ? QPointF(mPanel->mapFromGlobal(press->globalPosition())) : QPointF();
        if (belongsToPanel(watched) && mPanel->inActiveStrip(inPanel)) {
            ++mClicksHandedOn;
            wake();
            return false;
        }
        mDismissed = true;
        wake();
        return true;
    }
    case QEvent::KeyPress: // keys have no place: always outside the strip
        mDismissed = true;
        wake();
        return true;
    case QEvent::ShortcutOverride: // no menu shortcut fires under the panel
        event->accept();
        return true;
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyRelease:
        return !belongsToPanel(watched);
    default:
        return false;
    }
}
