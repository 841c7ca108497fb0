#pragma once

#include <QWidget>

class QPropertyAnimation;

// A panel that slides out of the main window's side, holding the conversion settings. Like a
// drawer it is closed, opening, open or closing; open() and close() start the slide and the
// state settles when the slide ends.
class PrefDrawer : public QWidget {
    Q_OBJECT
public:
    enum State { Closed = 0, Opening = 1, Open = 2, Closing = 3 };

    explicit PrefDrawer(QWidget* parent = nullptr);

    State state() const { return drawerState; }
    void open();
    void close();
    void setSlideDuration(int milliseconds);

signals:
    void stateChanged(int state);

private:
    void slideTo(State moving, State settled, int width);
    int openWidth() const;

    State drawerState = Closed;
    QPropertyAnimation* slide = nullptr;
};
