#include "ProbeRunner.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <numeric>

namespace {

// The step a child had started but not finished when it stopped.
QString unfinishedStep(const QStringList& lines) {
    QString current;
    for (const QString& line : lines) {
        if (line.startsWith("step "))
            current = line.mid(5);
        else if (!current.isEmpty() && line.startsWith(current + ": "))
            current.clear();
    }
    return current;
}

ProbeResult judge(const CorpusEntry& entry, QProcess& child, bool timedOut, qint64 ms,
                  int seconds) {
    ProbeResult r;
    r.entry = entry;
    r.suffix = QFileInfo(entry.name).suffix();
    r.elapsedMs = ms;
    r.output = QString::fromLocal8Bit(child.readAllStandardOutput());
    r.errors = QString::fromLocal8Bit(child.readAllStandardError()).right(1500);
    const QStringList lines = r.output.split('\n', Qt::SkipEmptyParts);
    const QString step = unfinishedStep(lines);
    const QString where = step.isEmpty() ? QString() : QString(" in step \"%1\"").arg(step);

    QStringList exceptions;
    bool done = false;
    bool opened = false;
    bool wrote = false;
    for (const QString& line : lines) {
        if (line.contains(": ESCAPED "))
            exceptions << line;
        if (line.startsWith("done "))
            done = true;
        if (line.startsWith("open: opened"))
            opened = true;
        if (line.startsWith("save ") && line.contains(" bytes") && !line.contains(" 0 bytes"))
            wrote = true;
    }

    if (timedOut) {
        r.reason = QString("timeout: one step still running after %1 s%2").arg(seconds).arg(where);
    } else if (child.exitStatus() == QProcess::CrashExit) {
        const int signal = child.exitCode();
        r.reason = QString("crash: signal %1 (%2)%3")
                       .arg(signal)
                       .arg(QString::fromLocal8Bit(strsignal(signal)), where);
    } else if (child.exitCode() != 0) {
        r.reason = QString("exit code %1%2").arg(child.exitCode()).arg(where);
    } else if (!exceptions.isEmpty()) {
        r.reason = "exception escaped: " + exceptions.join("; ");
    } else if (!done) {
        r.reason = "the probe stopped without finishing" + where;
    }
    if (!r.reason.isEmpty()) {
        r.outcome = ProbeResult::Outcome::Failed;
        return r;
    }
    r.outcome = opened ? ProbeResult::Outcome::Opened : ProbeResult::Outcome::Refused;
    r.wroteAfterRefusal = !opened && wrote;
    return r;
}

} // namespace

ProbeRunner::ProbeRunner(QString probe, QString corpus, QString scratch, ProbeLimits limits)
    : probe(std::move(probe)), corpus(std::move(corpus)), scratch(std::move(scratch)),
      limits(limits) {}

QList<ProbeResult> ProbeRunner::run(const QList<CorpusEntry>& entries) {
    QList<ProbeResult> results(entries.size());
    QEventLoop loop;
    qsizetype next = 0;
    int running = 0;
    int finished = 0;

    // The kinds of damage that take long go first, so that the many quick files keep both
    // slots busy until the end instead of one slot waiting for a late giant.
    QList<qsizetype> order(entries.size());
    std::iota(order.begin(), order.end(), 0);
    const QStringList slowFirst = {"sparse-giant", "bomb",         "pdf-image-bomb", "svg-bomb",
                                   "pdf-mediabox", "marker-flood", "lying-header"};
    auto rank = [&](qsizetype i) {
        const qsizetype at = slowFirst.indexOf(entries[i].damage);
        return at < 0 ? slowFirst.size() : at;
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](qsizetype a, qsizetype b) { return rank(a) < rank(b); });

    // Each slot has its own scratch folder, emptied before every file.
    std::function<void(int)> startNext = [&](int slot) {
        if (next >= entries.size()) {
            if (running == 0)
                loop.quit();
            return;
        }
        const qsizetype index = order[next++];
        const QString folder = QString("%1/slot-%2").arg(scratch).arg(slot);
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);

        auto* child = new QProcess;
        auto* clock = new QElapsedTimer;
        auto* timer = new QTimer(child);
        auto timedOut = std::make_shared<bool>(false);
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, child, [child, timedOut] {
            *timedOut = true;
            child->kill();
        });
        // The probe says a line as each step starts and ends: the budget is for one step, so
        // that a file which is slow in each of its many saves is not taken for a hang.
        QObject::connect(child, &QProcess::readyReadStandardOutput, timer,
                         [timer] { timer->start(); });
        QObject::connect(
            child, &QProcess::finished, &loop,
            [&, child, clock, timedOut, index, slot, folder](int, QProcess::ExitStatus) {
                results[index] =
                    judge(entries[index], *child, *timedOut, clock->elapsed(), limits.seconds);
                delete clock;
                child->deleteLater();
                QDir(folder).removeRecursively();
                --running;
                std::fputc(results[index].outcome == ProbeResult::Outcome::Failed ? 'F' : '.',
                           stdout);
                if (++finished % 100 == 0)
                    std::fprintf(stdout, " %d\n", finished);
                std::fflush(stdout);
                startNext(slot);
            });
        QObject::connect(child, &QProcess::errorOccurred, &loop,
                         [child](QProcess::ProcessError error) {
                             if (error == QProcess::FailedToStart)
                                 std::fprintf(stderr, "cannot start the probe: %s\n",
                                              qPrintable(child->errorString()));
                         });
        ++running;
        clock->start();
        child->start(
            probe, {corpus + '/' + entries[index].name, folder, QString::number(limits.memoryMB)});
        timer->start(limits.seconds * 1000);
        if (!child->waitForStarted()) {
            results[index] = judge(entries[index], *child, false, 0, limits.seconds);
            results[index].reason = "the probe did not start: " + child->errorString();
            delete clock;
            child->deleteLater();
            --running;
            QTimer::singleShot(0, &loop, [&startNext, slot] { startNext(slot); });
        }
    };

    for (int slot = 0; slot < limits.jobs; ++slot)
        QTimer::singleShot(0, &loop, [&startNext, slot] { startNext(slot); });
    if (!entries.isEmpty())
        loop.exec();
    std::fputc('\n', stdout);
    return results;
}

QString ProbeRunner::report(const QList<ProbeResult>& results, qint64 elapsedMs) {
    struct Counts {
        int opened = 0, refused = 0, failed = 0, wrote = 0;
        qint64 ms = 0;
    };
    QMap<QString, Counts> bySuffix;
    QMap<QString, Counts> byDamage;
    Counts total;
    for (const ProbeResult& r : results) {
        for (Counts* c : {&bySuffix[r.suffix], &byDamage[r.entry.damage], &total}) {
            if (r.outcome == ProbeResult::Outcome::Opened)
                ++c->opened;
            else if (r.outcome == ProbeResult::Outcome::Refused)
                ++c->refused;
            else
                ++c->failed;
            if (r.wroteAfterRefusal)
                ++c->wrote;
            c->ms += r.elapsedMs;
        }
    }
    auto row = [](const QString& name, const Counts& c) {
        return QString("%1 %2 %3 %4 %5 %6 %7\n")
            .arg(name, -18)
            .arg(c.opened + c.refused + c.failed, 6)
            .arg(c.opened, 7)
            .arg(c.refused, 8)
            .arg(c.failed, 7)
            .arg(c.wrote, 16)
            .arg(c.ms / 1000.0, 9, 'f', 1);
    };
    const QString header = QString("%1 %2 %3 %4 %5 %6 %7\n")
                               .arg("", -18)
                               .arg("files", 6)
                               .arg("opened", 7)
                               .arg("refused", 8)
                               .arg("failed", 7)
                               .arg("wrote-if-refused", 16)
                               .arg("seconds", 9);
    QString text = QString("Hostile corpus: %1 files in %2 s\n\nBy suffix\n")
                       .arg(results.size())
                       .arg(elapsedMs / 1000.0, 0, 'f', 1);
    text += header;
    for (auto it = bySuffix.cbegin(); it != bySuffix.cend(); ++it)
        text += row(it.key(), it.value());
    text += row("all", total);
    text += "\nBy kind of damage\n" + header;
    for (auto it = byDamage.cbegin(); it != byDamage.cend(); ++it)
        text += row(it.key(), it.value());

    text += "\nFailures\n";
    for (const ProbeResult& r : results)
        if (r.outcome == ProbeResult::Outcome::Failed)
            text += QString("  %1 [%2]: %3\n").arg(r.entry.name, r.entry.damage, r.reason);

    QList<const ProbeResult*> slowest;
    for (const ProbeResult& r : results)
        slowest << &r;
    std::sort(slowest.begin(), slowest.end(), [](const ProbeResult* a, const ProbeResult* b) {
        return a->elapsedMs > b->elapsedMs;
    });
    text += "\nSlowest files\n";
    for (qsizetype i = 0; i < std::min<qsizetype>(15, slowest.size()); ++i)
        text += QString("  %1 ms  %2 [%3]\n")
                    .arg(slowest[i]->elapsedMs, 6)
                    .arg(slowest[i]->entry.name, slowest[i]->entry.damage);
    return text;
}
