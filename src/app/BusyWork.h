#pragma once

#include <functional>

class QWidget;

// Runs `work` on a thread of its own while the GUI thread waits for it with the wait cursor
// over `window`: meanwhile the window repaints, timers run, and what the work posts to the GUI
// thread (a control read, the overwrite question, an alert) is served at once and in order. The
// user's own input (keys, clicks, closing the window) waits in the queue until the work is done,
// so it reaches the controls in the order it was given, after the command that was running.
// While a modal box blocks the window (the work's question), the normal cursor comes back.
// Returns when the work has ended; an exception it throws is thrown again here. Called off the
// GUI thread, or with no application, it simply runs the work.
void runWhileBusy(QWidget* window, const std::function<void()>& work);
