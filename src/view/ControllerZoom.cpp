// The View menu's zoom items and the zoom field beside the picture's size.
#include "app/Controller.h"
#include "app/FullScreenWindow.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>

namespace {

// The keys act while the picture has the keyboard (as it has after every open), so that the
// same digits and signs still type into the angle field.
QAction* pictureAction(QMenu* menu, wmfImageView* view, const QString& text,
                       const QList<QKeySequence>& keys) {
    QAction* action = menu->addAction(text);
    action->setShortcuts(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    view->addAction(action);
    return action;
}

} // namespace

void Controller::addZoomItems(QMenu* viewMenu) {
    wmfImageView* view = itsWmfView;
    if (!view)
        return;
    itsMenuItemZoomIn = pictureAction(viewMenu, view, tr("Zoom &In"),
                                      {QKeySequence(Qt::Key_Plus), QKeySequence(Qt::Key_Equal),
                                       QKeySequence(Qt::CTRL | Qt::Key_Plus),
                                       QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    itsMenuItemZoomOut =
        pictureAction(viewMenu, view, tr("Zoom &Out"),
                      {QKeySequence(Qt::Key_Minus), QKeySequence(Qt::CTRL | Qt::Key_Minus)});
    itsMenuItemActualSize =
        pictureAction(viewMenu, view, tr("&Actual Size"),
                      {QKeySequence(Qt::Key_1), QKeySequence(Qt::CTRL | Qt::Key_1)});
    itsMenuItemFit = pictureAction(viewMenu, view, tr("&Fit"),
                                   {QKeySequence(Qt::Key_0), QKeySequence(Qt::CTRL | Qt::Key_0)});
    connect(itsMenuItemZoomIn, &QAction::triggered, this, [this] { activeImageView()->zoomIn(); });
    connect(itsMenuItemZoomOut, &QAction::triggered, this,
            [this] { activeImageView()->zoomOut(); });
    connect(itsMenuItemActualSize, &QAction::triggered, this,
            [this] { activeImageView()->zoomToActualSize(); });
    connect(itsMenuItemFit, &QAction::triggered, this, [this] { activeImageView()->zoomToFit(); });
    connect(view, &wmfImageView::zoomChanged, this, &Controller::showZoom);
}

wmfImageView* Controller::activeImageView() const {
    if (itsFullScreen && itsFullScreen->isVisible())
        return itsFullScreen->view();
    return itsWmfView;
}

void Controller::showZoom() {
    if (itsZoomField && itsWmfView)
        itsZoomField->setText(itsWmfView->zoomText());
}
