#include "app/Controller.h"

#include <QMainWindow>

std::atomic<bool> thread_exit{false};
std::atomic<bool> image_thread_exit{false};

Controller::Controller(QObject* parent) : QObject(parent) {}

// The main window has no parent widget; the controller owns it.
Controller::~Controller() {
    waitForBatch();
    waitForImageList();
    delete itsMainWindow.data();
}

QMainWindow* Controller::window() const { return itsMainWindow; }
