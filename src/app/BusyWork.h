#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>

// The wait cursor for the lifetime of the object, lifted while a modal box blocks `window` (the
// user has to answer it) and put back when the box goes. GUI thread only.
class ScopedWaitCursor : public QObject {
public:
    explicit ScopedWaitCursor(QWidget* window);
    ~ScopedWaitCursor() override;
    ScopedWaitCursor(const ScopedWaitCursor&) = delete;
    ScopedWaitCursor& operator=(const ScopedWaitCursor&) = delete;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void show();
    void hide();
    QPointer<QWidget> watched;
    bool shown = false;
};

// Runs `work` on a thread of its own while the GUI thread waits for it with the wait cursor
// over `window`: meanwhile the window repaints, timers run, and what the work posts to the GUI
// thread (a control read, the overwrite question, an alert) is served at once and in order. The
// user's own input (keys, clicks, closing the window) waits in the queue until the work is done,
// so it reaches the controls in the order it was given, after the command that was running.
// While a modal box blocks the window (the work's question), the normal cursor comes back.
// Returns when the work has ended; an exception it throws is thrown again here. Called off the
// GUI thread, or with no application, it simply runs the work.
void runWhileBusy(QWidget* window, const std::function<void()>& work);
