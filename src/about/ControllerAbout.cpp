// The about panel, shown as a splash at launch and from Help > About.

#include "app/Controller.h"

#include "about/AboutLoop.h"
#include "about/AboutPanel.h"

void Controller::runAbout(QObject*) {
    auto* panel = qobject_cast<AboutPanel*>(itsAboutWindow.data());
    if (!panel)
        return;
    AboutLoop loop(panel);
    loop.run();
}

void Controller::changeTransparencyAbout(float alpha) {
    if (!itsAboutWindow)
        return;
    itsAboutWindow->setWindowOpacity(alpha);
    itsAboutWindow->repaint();
}
