// View > Full Screen and View > Slideshow, and the drawer's seconds per slide.
#include "app/Controller.h"
#include "app/FullScreenWindow.h"
#include "app/SettingsFiles.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QScreen>
#include <QSpinBox>

namespace {

constexpr int kDefaultSlideSeconds = 4;
const char* const kSlideSecondsKey = "slideshow/seconds";

} // namespace

void Controller::addFullScreenItems(QMenu* viewMenu) {
    itsMenuItemFullScreen = viewMenu->addAction(tr("F&ull Screen"));
    itsMenuItemFullScreen->setShortcut(QKeySequence(Qt::Key_F11));
    itsMenuItemSlideshow = viewMenu->addAction(tr("&Slideshow"));
    itsMenuItemSlideshow->setShortcut(QKeySequence(Qt::Key_F5));
    connect(itsMenuItemFullScreen, &QAction::triggered, this,
            [this] { fullScreen(itsMenuItemFullScreen); });
    connect(itsMenuItemSlideshow, &QAction::triggered, this,
            [this] { slideshow(itsMenuItemSlideshow); });
    if (itsSlideSeconds) {
        itsSlideSeconds->setValue(
            viewerSettings().value(kSlideSecondsKey, kDefaultSlideSeconds).toInt());
        connect(itsSlideSeconds, &QSpinBox::valueChanged, this, [](int seconds) {
            QSettings store = viewerSettings();
            store.setValue(kSlideSecondsKey, seconds);
        });
    }
}

QWidget* Controller::frontWindow() const {
    if (itsFullScreen)
        return itsFullScreen;
    return window();
}

void Controller::fullScreen(QObject* /*sender*/) {
    if (itsFullScreen) {
        itsFullScreen->leave();
        return;
    }
    if (!itsMainWindow)
        return;
    auto* shown = new FullScreenWindow(this); // deletes itself when closed
    itsFullScreen = shown;
    // The file actions that need no dialog work on the picture shown full screen too.
    for (QAction* action : {itsMenuItemCopy.data(), itsMenuItemTrash.data(),
                            itsMenuItemUndoTrash.data()}) {
        if (action)
            shown->view()->addAction(action);
    }
    // On the screen the window is on, covering it even where no window manager takes the
    // full-screen request.
    QScreen* screen = itsMainWindow->screen();
    shown->setScreen(screen);
    if (screen)
        shown->setGeometry(screen->geometry());
    shown->showFullScreen();
    shown->activateWindow();
    shown->view()->setFocus(Qt::OtherFocusReason);
}

void Controller::slideshow(QObject* sender) {
    if (!itsFullScreen)
        fullScreen(sender);
    if (itsFullScreen)
        itsFullScreen->startSlideshow(itsSlideSeconds ? itsSlideSeconds->value()
                                                      : kDefaultSlideSeconds);
}
