// View > Information: the side panel with the current picture's file, format and camera data.
#include "app/Controller.h"
#include "app/SettingsFiles.h"
#include "view/InformationPanel.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QMenu>
#include <QScrollArea>

namespace {

const char* const kInformationShownKey = "information/shown";

} // namespace

void Controller::addInformationItem(QMenu* viewMenu) {
    QMainWindow* window = itsMainWindow;
    if (!window)
        return;
    // A dock at the window's right: while it is hidden it takes no room, and the picture is
    // fitted to the same view as without it.
    auto* dock = new QDockWidget(tr("Information"), window);
    dock->setObjectName("itsInformationDock");
    dock->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    auto* scroll = new QScrollArea(dock);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setMinimumWidth(260); // a row's label and a camera's name side by side
    auto* panel = new InformationPanel(scroll);
    panel->setObjectName("itsInformationPanel");
    scroll->setWidget(panel);
    dock->setWidget(scroll);
    window->addDockWidget(Qt::RightDockWidgetArea, dock);
    itsInformationDock = dock;
    itsInformationPanel = panel;

    // The dock's own check item: it follows the dock's close button as well.
    itsMenuItemInformation = dock->toggleViewAction();
    itsMenuItemInformation->setText(tr("&Information"));
    itsMenuItemInformation->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    viewMenu->addAction(itsMenuItemInformation);

    dock->setVisible(viewerSettings().value(kInformationShownKey, false).toBool());
    // Kept as the user leaves it: by the menu item, Ctrl+I or the dock's close button, not by
    // the window going away at the end, which hides the dock with it.
    connect(itsMenuItemInformation, &QAction::toggled, this, [window](bool shown) {
        if (!window->isVisible())
            return;
        QSettings store = viewerSettings();
        store.setValue(kInformationShownKey, shown);
    });
    if (itsWmfView)
        connect(itsWmfView, &wmfImageView::pictureChanged, this, [this] { showInformation(); });
}

void Controller::showInformation() {
    if (itsInformationPanel && itsWmfView)
        itsInformationPanel->showPicture(itsWmfView->wmfPath(), itsCGImage.size());
}
