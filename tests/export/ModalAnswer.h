#pragma once

// Answers the next modal question box the program shows: a timer watches for the active modal
// widget, records its text and the titles of its buttons in their order, and clicks the button
// with the given title. The box may be opened by the GUI thread itself or posted there by a
// worker; either way the answer is given from inside the box's own event loop.

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <memory>

struct SeenQuestion {
    int count = 0;       // boxes answered so far
    QString text;        // text of the latest box
    QStringList texts;   // the text of every box answered, in the order they came
    QStringList names;   // the object name of every box answered, in the same order
    QStringList buttons; // its buttons' titles, in the order they were added
    QWidget* parent = nullptr;
};

// Answers the next boxes with `answers`, the first box with the first title and so on,
// recording what was seen in `seen`. Returns the watching timer; it stops by itself after the
// last answer.
inline QTimer* answerQuestions(const QStringList& answers, std::shared_ptr<SeenQuestion> seen) {
    auto* timer = new QTimer(qApp);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answers, seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible() || box->property("ormidonAnswered").toBool())
            return;
        box->setProperty("ormidonAnswered", true);
        seen->text = box->text();
        seen->texts << box->text();
        seen->names << box->objectName();
        seen->buttons.clear();
        const QString answer = answers.value(seen->count);
        QAbstractButton* chosen = nullptr;
        for (QAbstractButton* b : box->buttons()) {
            seen->buttons << b->text();
            if (b->text() == answer)
                chosen = b;
        }
        seen->parent = box->parentWidget();
        ++seen->count;
        if (chosen)
            chosen->click();
        else
            box->reject();
        if (seen->count >= answers.size())
            timer->deleteLater();
    });
    timer->start();
    return timer;
}

// answerQuestions for the length of a scope: a box that comes after it ends is not answered.
class ScopedAnswers {
public:
    explicit ScopedAnswers(const QStringList& answers)
        : seen(std::make_shared<SeenQuestion>()), timer(answerQuestions(answers, seen)) {}
    ~ScopedAnswers() {
        if (timer)
            timer->deleteLater();
    }
    ScopedAnswers(const ScopedAnswers&) = delete;
    ScopedAnswers& operator=(const ScopedAnswers&) = delete;

    const std::shared_ptr<SeenQuestion> seen;

private:
    QPointer<QTimer> timer;
};
