#include "app/Controller.h"

// The thumbnail grid of the "Image List" tab is filled by a background walk over the folder.
// The grid and its walk come with their own change; until then the list refresh that every
// change of source asks for leaves the tab empty.

void Controller::threadFillImageList() {}

void Controller::clearImageList() {}

void Controller::addImageView(const QString&) {}
