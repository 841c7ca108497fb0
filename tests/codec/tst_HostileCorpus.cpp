// Every flow of the program on every file of the hostile corpus: each file is opened in the
// view, measured and converted to every offered format by a child process under a 4 GB address
// space and a time limit. A crash, an abort, a hang or an escaped exception on any file fails
// the test, which names every such file, its kind of damage and what happened.
//
// Knobs for a developer chasing one case (environment variables):
//   ORMIDON_CORPUS_ONLY     a regular expression; only the files whose names match are run
//   ORMIDON_CORPUS_JOBS     children at a time (2)
//   ORMIDON_CORPUS_SECONDS  time limit of one step of a file (60): a 16000 x 16000 picture
//                           quantised to GIF takes over 20 s on a quiet machine
//   ORMIDON_CORPUS_KEEP     a folder to make the corpus in and leave behind

#include "ProbeRunner.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>

namespace {

int knob(const char* name, int fallback) {
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok && value > 0 ? value : fallback;
}

QList<CorpusEntry> readManifest(const QString& path) {
    QList<CorpusEntry> entries;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return entries;
    while (!file.atEnd()) {
        const QStringList fields = QString::fromUtf8(file.readLine()).trimmed().split('\t');
        if (fields.size() == 2)
            entries.append({fields[0], fields[1]});
    }
    return entries;
}

} // namespace

class tst_HostileCorpus : public QObject {
    Q_OBJECT

    QTemporaryDir temporary;
    QString corpus;
    QList<CorpusEntry> entries;

private slots:
    void initTestCase() {
        QVERIFY(temporary.isValid());
        const QString keep = qEnvironmentVariable("ORMIDON_CORPUS_KEEP");
        corpus = keep.isEmpty() ? temporary.path() + "/corpus" : keep;
        const QString manifest = temporary.path() + "/manifest.tsv";
        QProcess generator;
        generator.setProcessChannelMode(QProcess::ForwardedChannels);
        generator.start(CORPUS_GENERATE, {corpus, manifest});
        QVERIFY2(generator.waitForFinished(300'000), "the corpus generator did not finish");
        QCOMPARE(generator.exitStatus(), QProcess::NormalExit);
        QCOMPARE(generator.exitCode(), 0);
        entries = readManifest(manifest);
        QVERIFY2(entries.size() >= 500, qPrintable(QString::number(entries.size())));
    }

    // The corpus covers what it claims to: every kind of damage asked for, and more than one
    // file for every format the program reads.
    void corpusCoversEveryFormat() {
        QSet<QString> damages;
        QMap<QString, int> suffixes;
        for (const CorpusEntry& e : entries) {
            damages.insert(e.damage);
            ++suffixes[QFileInfo(e.name).suffix()];
        }
        for (const char* d :
             {"truncation", "bit-flip", "zeroed-block", "lying-header", "bomb", "palette",
              "svg-bomb", "pdf-xref", "pdf-mediabox", "pdf-image-bomb", "marker-flood",
              "tiff-private-tag", "tiff-ifd", "tiff-strips", "empty-file", "plain-text",
              "suffix-mismatch", "special-file", "sparse-giant"})
            QVERIFY2(damages.contains(d), d);
        for (const char* s : {"png", "jpg", "gif", "bmp", "tif", "tiff", "webp", "tga",
                              "ico", "psd", "sgi", "pcx", "xcf", "pict", "mac",  "pntg",
                              "pbm", "pgm", "ppm", "xpm", "xbm", "svg",  "svgz", "pdf"})
            QVERIFY2(suffixes.value(s) >= 3, s);
    }

    void everyFlowSurvivesEveryFile() {
        QList<CorpusEntry> chosen = entries;
        const QString only = qEnvironmentVariable("ORMIDON_CORPUS_ONLY");
        if (!only.isEmpty()) {
            const QRegularExpression pattern(only);
            chosen.removeIf(
                [&](const CorpusEntry& e) { return !pattern.match(e.name).hasMatch(); });
        }
        ProbeLimits limits;
        limits.jobs = knob("ORMIDON_CORPUS_JOBS", 2);
        limits.seconds = knob("ORMIDON_CORPUS_SECONDS", 60);
        limits.memoryMB = 4096;
        const QString scratch = temporary.path() + "/scratch";
        QDir().mkpath(scratch);

        QElapsedTimer clock;
        clock.start();
        ProbeRunner runner(CORPUS_PROBE, corpus, scratch, limits);
        const QList<ProbeResult> results = runner.run(chosen);
        const QString report = ProbeRunner::report(results, clock.elapsed());
        std::printf("%s\n", qPrintable(report));
        std::fflush(stdout);

        // The whole story, children's lines included, next to the test for a closer look.
        QFile saved(QDir::current().filePath("hostile-corpus-report.txt"));
        if (saved.open(QIODevice::WriteOnly | QIODevice::Text)) {
            saved.write(report.toUtf8());
            saved.write("\nEvery file\n");
            static const char* const outcomes[] = {"opened", "refused", "FAILED"};
            for (const ProbeResult& r : results)
                saved.write(QString("  %1 ms  %2  %3 [%4]\n")
                                .arg(r.elapsedMs, 6)
                                .arg(outcomes[int(r.outcome)], -7)
                                .arg(r.entry.name, r.entry.damage)
                                .toUtf8());
            for (const ProbeResult& r : results) {
                if (r.outcome != ProbeResult::Outcome::Failed)
                    continue;
                saved.write(QString("\n==== %1 [%2]: %3\n%4\n---- stderr\n%5\n")
                                .arg(r.entry.name, r.entry.damage, r.reason, r.output, r.errors)
                                .toUtf8());
            }
        }

        // The probe must really open what is valid: a probe that refused everything would
        // pass everything.
        QStringList unopened;
        for (const ProbeResult& r : results)
            if (r.entry.damage == "valid" && r.outcome == ProbeResult::Outcome::Refused &&
                QStringList({"png", "jpg", "gif", "bmp", "tif", "tiff", "webp", "tga",
                             "ico", "psd", "sgi", "pcx", "xcf", "pict", "mac",  "pntg",
                             "ppm", "pgm", "pbm", "xpm", "xbm", "svg",  "svgz", "pdf"})
                    .contains(r.suffix))
                unopened << r.entry.name;

        QStringList failures;
        for (const ProbeResult& r : results)
            if (r.outcome == ProbeResult::Outcome::Failed)
                failures << QString("%1 [%2]: %3").arg(r.entry.name, r.entry.damage, r.reason);
        QVERIFY2(unopened.isEmpty(), qPrintable("valid files refused: " + unopened.join(", ")));
        QVERIFY2(failures.isEmpty(), qPrintable(QString("%1 of %2 files crashed, hung or threw:\n")
                                                    .arg(failures.size())
                                                    .arg(results.size()) +
                                                failures.join('\n')));
    }
};

// The one test function runs for minutes, past QtTest's default watchdog of five.
int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QTEST_FUNCTION_TIMEOUT"))
        qputenv("QTEST_FUNCTION_TIMEOUT", "1800000");
    QCoreApplication app(argc, argv);
    tst_HostileCorpus test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_HostileCorpus.moc"
