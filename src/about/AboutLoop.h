#pragma once

// The about panel's modal loop. It waits up to one second at a time for a left click or a
// key press: a click inside the panel's active strip goes on to the panel and the loop goes
// on; any other click or key press closes the panel at once. The first empty wait starts an
// idle clock, and the first empty wait after more than three further seconds closes the panel,
// so that a panel left alone stays about five seconds. Clicks in the strip don't reset the
// clock. While the loop runs, the other windows get no input.

#include <QObject>
#include <QPointer>

#include <functional>

class AboutPanel;
class QEventLoop;

class AboutLoop : public QObject {
    Q_OBJECT
public:
    // The loop's timing: the length of one wait, and the clock in seconds (empty: a monotonic
    // clock). Tests shorten the wait and run the clock themselves.
    struct Timing {
        int waitMilliseconds = 1000;
        std::function<double()> now;
    };
    static Timing& timing();
    static constexpr double kIdleSeconds = 3.0;

    explicit AboutLoop(AboutPanel* panel);
    ~AboutLoop() override;

    // Shows the panel centred, blocks until it is dismissed or timed out, and hides it.
    void run();

    // The loop that is running now, if any (tests look at it from inside).
    static AboutLoop* current();
    int emptyWaits() const { return mEmptyWaits; }
    int clicksHandedOn() const { return mClicksHandedOn; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool belongsToPanel(QObject* object) const;
    void wake();
    double now() const;

    QPointer<AboutPanel> mPanel;
    QEventLoop* mWait = nullptr;
    bool mEventCame = false;
    bool mDismissed = false;
    int mEmptyWaits = 0;
    int mClicksHandedOn = 0;
    // The last press seen: a window hands its press on to a widget, and it counts once.
    quint64 mLastTimestamp = 0;
};
