#include "app/FullScreenWindow.h"

#include "app/Controller.h"
#include "browse/FolderIndex.h"
#include "view/wmfImageView.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QVBoxLayout>

FullScreenWindow::FullScreenWindow(Controller* owner)
    : QWidget(nullptr, Qt::Window), controller(owner) {
    setObjectName(QStringLiteral("itsFullScreen"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(owner && owner->itsMainWindow ? owner->itsMainWindow->windowTitle()
                                                 : QStringLiteral("Ormidon"));
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    pictureView = new wmfImageView(this);
    pictureView->setObjectName(QStringLiteral("itsFullScreenView"));
    pictureView->mainController = owner;
    layout->addWidget(pictureView);
    if (owner && owner->itsWmfView) {
        pictureView->showPicture(owner->itsWmfView->wmfPath());
        connect(owner->itsWmfView, &wmfImageView::pictureChanged, this,
                &FullScreenWindow::followPicture);
        // The picture's own keys (the zoom's) work here as in the window.
        pictureView->addActions(owner->itsWmfView->actions());
    }
    pictureView->installEventFilter(this);
    slideTimer.setObjectName(QStringLiteral("slideTimer"));
    connect(&slideTimer, &QTimer::timeout, this, &FullScreenWindow::showNextSlide);
    setFocusProxy(pictureView);
}

void FullScreenWindow::startSlideshow(int seconds) {
    slideTimer.start(std::max(1, seconds) * 1000);
}

void FullScreenWindow::showNextSlide() {
    if (!controller || !controller->itsSrcFileName)
        return;
    QString path = controller->itsSrcFileName->text();
    // On from the last picture to the first: a slideshow goes round until it is stopped.
    if (controller->findWMF(kStepNext, path) || controller->findFirstWMF(path))
        controller->setSourceFileName(path, false);
}

void FullScreenWindow::followPicture() {
    if (controller && controller->itsWmfView)
        pictureView->showPicture(controller->itsWmfView->wmfPath());
    pictureView->update();
}

void FullScreenWindow::leave() {
    slideTimer.stop();
    close();
}

bool FullScreenWindow::eventFilter(QObject* object, QEvent* event) {
    // Any key or click ends a slideshow (the key does nothing else), and with it full screen.
    // A key that is some item's shortcut is claimed first, so that it arrives as a key press.
    if (object == pictureView && isSlideshowRunning() &&
        event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (object == pictureView && isSlideshowRunning() &&
        (event->type() == QEvent::KeyPress || event->type() == QEvent::MouseButtonPress)) {
        leave();
        return true;
    }
    return QWidget::eventFilter(object, event);
}

void FullScreenWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_F11) {
        leave();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FullScreenWindow::closeEvent(QCloseEvent* event) {
    slideTimer.stop();
    if (controller && controller->itsMainWindow) {
        controller->itsMainWindow->activateWindow();
        controller->focusImageView();
    }
    QWidget::closeEvent(event);
}
