#pragma once

#include <QStringList>

// Starts Ormidon: the single-instance hand-over, the main window, the launch order
// (window, splash, files named on the command line, the saved source) and the event loop.
int runApplication(int argc, char** argv);

class Controller;

// The launch order on a controller that is set up (its splash switch set): the main window is
// built and shown, the splash runs, the files named at launch open, then the saved source.
void launchController(Controller& controller, const QStringList& files);

// Files handed over by a later launch: each opens in turn, and the window comes to the front
// with that launch's activation token.
void openHandedOverFiles(Controller& controller, const QStringList& paths,
                         const QByteArray& activationToken = {});
