// Controller: where the keyboard goes when a picture is opened.

#include "app/Controller.h"
#include "view/wmfImageView.h"

#include <QTabWidget>

// The arrow keys step through the folder from the main view, so each newly opened picture (and
// the start-up) gives the view the keyboard, wherever it was: otherwise the first Right after
// launch would go to the tab bar, and after a click on Next to the button. While the image list
// is shown the keyboard stays where it is. Before the window is active this only marks the
// view as the window's focus widget, which takes the keyboard once the window is activated.
void Controller::focusImageView() {
    if (!itsWmfView)
        return;
    if (_tabView && _tabView->currentWidget() != itsWmfView.data())
        return;
    itsWmfView->setFocus(Qt::OtherFocusReason);
}
