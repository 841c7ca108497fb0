#pragma once

#include <functional>

// Test hook: when set, the batch thread calls it at the start of every file, after the
// progress bar shows the file's number and before the file is converted. Tests use it to slow
// a batch down so that a Stop lands in the middle of it. Set it only while no batch runs.
inline std::function<void()> batchFileHook;
