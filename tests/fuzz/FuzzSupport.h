#pragma once

// Shared by the fuzz harnesses: quiet Qt messages and a check that stops the run.

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace FuzzSupport {

// Hostile input makes Qt and the libraries warn on nearly every run; printing each warning
// would slow the fuzzer down many times over. Fatal messages still abort.
inline void quietQtMessages() {
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) {
            std::fprintf(stderr, "%s\n", qPrintable(text));
            std::abort();
        }
    });
}

// A broken promise of the code under test is a finding like a crash: libFuzzer keeps the input.
inline void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "fuzz check failed: %s\n", what);
        std::abort();
    }
}

} // namespace FuzzSupport
