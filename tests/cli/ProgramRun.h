#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// The real program run as a user runs it from a terminal: no display of any kind and no
// platform chosen for it (it picks its own), with `home` as its home and runtime folder.
struct ProgramRun {
    int exitCode = -1; // -1: it crashed or did not end within two minutes
    QString out;
    QString err;
};

inline ProgramRun runProgram(const QStringList& arguments, const QString& home) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("DISPLAY");
    env.remove("WAYLAND_DISPLAY");
    env.remove("QT_QPA_PLATFORM");
    env.insert("HOME", home);
    env.insert("XDG_RUNTIME_DIR", home);
    env.remove("XDG_CONFIG_HOME");
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(ORMIDON_PROGRAM), arguments);
    ProgramRun result;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(process.readAllStandardError());
    return result;
}
