#include "app/Controller.h"

// The about splash, the help book and the scrolling links text come with their own change;
// start-up and shutdown already call them in their places.

void Controller::runAbout(QObject*) {}

void Controller::registerMyHelpBook() {}

void Controller::loadTextToScroll() {}

void Controller::setScrollAmount(float) {}

void Controller::startScrollingAnimation() {}

void Controller::stopScrollingAnimation() {}
