#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

class Controller;
class wmfImageView;

// The picture alone on black, over the whole screen. It holds a view of its own on the
// controller's current picture (drawn, turned and zoomed as in the window; the arrow keys still
// step through the folder); Escape or F11 leaves. As a slideshow it steps to the next picture
// of the folder every few seconds, from the last back to the first, until any key or click.
class FullScreenWindow : public QWidget {
    Q_OBJECT
public:
    explicit FullScreenWindow(Controller* controller);

    wmfImageView* view() const { return pictureView; }
    void startSlideshow(int seconds);
    bool isSlideshowRunning() const { return slideTimer.isActive(); }
    const QTimer& slideshowTimer() const { return slideTimer; }
    void leave(); // closes the window and gives the keyboard back to the main window

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void showNextSlide();
    void followPicture(); // the controller opened another picture

    QPointer<Controller> controller;
    wmfImageView* pictureView = nullptr;
    QTimer slideTimer;
};
