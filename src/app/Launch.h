#pragma once

// Starts Ormidon: the single-instance hand-over, the main window, the launch order
// (window, splash, files named on the command line, the saved source) and the event loop.
int runApplication(int argc, char** argv);
