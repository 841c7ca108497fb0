#include "app/Controller.h"

std::atomic<bool> thread_exit{false};
std::atomic<bool> image_thread_exit{false};

Controller::Controller(QObject* parent) : QObject(parent) {}

Controller::~Controller() = default;
