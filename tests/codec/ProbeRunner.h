#pragma once

// Runs the probe on every file of the corpus, a few children at a time, each under a time
// and memory limit, and sorts what each child did into opened, refused or failed.

#include "HostileCorpus.h"

#include <QList>
#include <QString>
#include <QStringList>

struct ProbeResult {
    CorpusEntry entry;
    QString suffix;
    enum class Outcome { Opened, Refused, Failed } outcome = Outcome::Failed;
    QString reason; // why it failed: a signal, a timeout, an exit code, an exception
    qint64 elapsedMs = 0;
    bool wroteAfterRefusal = false; // refused to open, yet some conversion wrote bytes
    QString output;                 // the child's own lines
    QString errors;                 // the end of what it wrote on stderr
};

struct ProbeLimits {
    int jobs = 2;
    int seconds = 60; // for any one step of a probe: longer is taken for a hang
    int memoryMB = 4096;
};

class ProbeRunner {
public:
    ProbeRunner(QString probe, QString corpus, QString scratch, ProbeLimits limits);
    // Runs them all, printing a dot a file; returns the results in the order of `entries`.
    QList<ProbeResult> run(const QList<CorpusEntry>& entries);

    // The table of outcomes by suffix, the failures with their reasons, the slowest files.
    static QString report(const QList<ProbeResult>& results, qint64 elapsedMs);

private:
    QString probe;
    QString corpus;
    QString scratch;
    ProbeLimits limits;
};
