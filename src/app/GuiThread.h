#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

#include <type_traits>

// Runs f on the GUI thread and returns its result. Called on the GUI thread it simply runs f;
// called from a worker it posts f to the GUI thread and waits for the answer, which keeps the
// worker's steps in order (a question to the user, a control read at the moment of the call).
template <class F> auto onGuiThread(F&& f) -> std::invoke_result_t<F> {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || QThread::currentThread() == app->thread())
        return f();
    using R = std::invoke_result_t<F>;
    if constexpr (std::is_void_v<R>) {
        QMetaObject::invokeMethod(app, std::forward<F>(f), Qt::BlockingQueuedConnection);
    } else {
        R result{};
        QMetaObject::invokeMethod(
            app, [&result, &f] { result = f(); }, Qt::BlockingQueuedConnection);
        return result;
    }
}
