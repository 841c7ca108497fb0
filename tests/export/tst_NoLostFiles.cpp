// Nothing the user owns is lost by a conversion, whatever happens: every flow below compares the
// content of the source and destination folders before and after, file by file. A replaced file
// must come back whole when its replacement cannot be written; a file the user did not ask to
// replace must not change at all.

#include "FlowFixture.h"
#include "ModalAnswer.h"

#include "codec/RasterWriters.h"
#include "export/FormatTable.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QMainWindow>
#include <QSignalSpy>
#include <QStatusBar>
#include <QThread>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Name -> content hash of every file in the folder (hidden ones too: nothing may be left behind).
QMap<QString, QByteArray> snapshot(const QString& folder) {
    QMap<QString, QByteArray> hashes;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System);
    while (it.hasNext()) {
        const QString path = it.next();
        hashes.insert(it.fileName(), QCryptographicHash::hash(FlowFixture::readAll(path),
                                                              QCryptographicHash::Sha256));
    }
    return hashes;
}

bool idle(FlowFixture& f) {
    return !f.controller->isBatchRunning() &&
           f.controller->itsConvertAll->text() == QStringLiteral("Convert All");
}

// A picture of noise: it compresses badly, so its PNG is as large as its pixels.
QString makeNoise(FlowFixture& f, const QString& name, int side) {
    QImage image(side, side, QImage::Format_RGB32);
    quint32 state = 12345;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            state = state * 1664525u + 1013904223u;
            image.setPixel(x, y, state | 0xff000000u);
        }
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    const QString path = f.sources.path() + "/" + name;
    image.save(path, "PNG");
    return path;
}

// Limits the size of any file this process writes, for the length of a scope: a write past it
// fails as on a full disk (EFBIG), without the signal that would end the process.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &saved);
        rlimit limit = saved;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &saved); }

private:
    rlimit saved{};
};

// An earlier output the user already has at `path`.
bool writeOld(const QString& path, const QByteArray& bytes) {
    QFile old(path);
    return old.open(QIODevice::WriteOnly) && old.write(bytes) == bytes.size();
}

} // namespace

class tst_NoLostFiles : public QObject {
    Q_OBJECT

private slots:
    // photo.TIFF converted to TIFF into its own folder: the output is the source itself. Yes
    // gives the converted picture, never an empty file.
    void theOutputIsTheSourceItself() {
        FlowFixture f;
        const QString photo = f.makeImage("photo.TIFF", 64, 48, "TIFF");
        f.controller->itsDstFileName->setText(f.sources.path());
        f.open(photo);
        QVERIFY(f.selectFormat("TIFF"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        f.controller->itsConvert->click();
        QCOMPARE(seen->count, 1);
        QCOMPARE(FlowFixture::readBackSize(photo), QSize(64, 48));
        QVERIFY(QFileInfo(photo).size() > 0);
        QCOMPARE(snapshot(f.sources.path()).keys(), QStringList{"photo.TIFF"});
    }

    // Convert All into the source folder converts what was there when it started: no question
    // about its own outputs, the sources untouched.
    void aBatchIntoTheSourceFolderNeverMeetsItsOutputs() {
        FlowFixture f;
        for (const QString& n : {"a.png", "b.png", "c.png"})
            f.makeImage(n, 40, 30, "PNG");
        const auto before = snapshot(f.sources.path());
        f.controller->itsDstFileName->setText(f.sources.path());
        f.open(f.sources.path() + "/a.png");
        QVERIFY(f.selectFormat("PNGf"));
        auto seen = std::make_shared<SeenQuestion>();
        QTimer* watcher = answerQuestions({"Yes", "Yes", "Yes"}, seen);
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        QCOMPARE(seen->count, 0);
        delete watcher;
        const auto after = snapshot(f.sources.path());
        for (auto it = before.cbegin(); it != before.cend(); ++it)
            QCOMPARE(after.value(it.key()), it.value());
        QCOMPARE(after.size(), 6);
        for (const QString& n : {"a.PNGf", "b.PNGf", "c.PNGf"})
            QCOMPARE(FlowFixture::readBackSize(f.sources.path() + "/" + n), QSize(40, 30));
    }

    // A write that fails after Yes (here: past the file-size limit, as on a full disk) puts the
    // previous file back as it was, and the user reads why on the status line.
    void aFailedWriteAfterYesPutsThePreviousFileBack() {
        FlowFixture f;
        const QString noise = makeNoise(f, "noise.png", 400);
        QVERIFY(writeOld(f.outPath("noise.PNGf"), QByteArray(2000, 'o')));
        const auto sourcesBefore = snapshot(f.sources.path());
        const auto outBefore = snapshot(f.out.path());
        f.open(noise);
        QVERIFY(f.selectFormat("PNGf"));
        QSignalSpy failed(f.controller.get(), &Controller::conversionFailed);
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        {
            const FileSizeLimit limit(64 * 1024);
            f.controller->itsConvert->click();
        }
        QCOMPARE(seen->count, 1);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(snapshot(f.out.path()), outBefore);
        QCOMPARE(snapshot(f.sources.path()), sourcesBefore);
        QVERIFY(f.controller->itsMainWindow->statusBar()->currentMessage().contains("noise.PNGf"));
    }

    // The same for the older formats' writers: each writes through the same save file.
    void aFailedOlderFormatWritePutsThePreviousFileBack_data() {
        QTest::addColumn<QString>("format");
        for (const char* c : {"MooV", "PNTG", "qtif", "FLC ", "SWFL"})
            QTest::newRow(c) << QString::fromLatin1(c);
    }
    void aFailedOlderFormatWritePutsThePreviousFileBack() {
        QFETCH(QString, format);
        FlowFixture f;
        const QString noise = makeNoise(f, "noise.png", 400);
        const QString output = f.outPath("noise." + format);
        QVERIFY(writeOld(output, QByteArray(2000, 'o')));
        const auto outBefore = snapshot(f.out.path());
        f.open(noise);
        QVERIFY(f.selectFormat(format));
        QSignalSpy failed(f.controller.get(), &Controller::conversionFailed);
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        {
            const FileSizeLimit limit(16 * 1024); // every one of them writes more for noise
            f.controller->itsConvert->click();
        }
        QCOMPARE(seen->count, 1);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(snapshot(f.out.path()), outBefore);
        // And without the limit the same writer replaces it.
        QImage picture(400, 400, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        const int16_t status = writeRaster(picture, output, gformats[formatIndexForCode(format)], 72);
        QCOMPARE(status, int16_t(0));
        QVERIFY(snapshot(f.out.path()) != outBefore);
    }

    // The same in a batch: the failure does not stop it, and the end summary names the file.
    void aBatchGoesOnPastAFailedWrite() {
        FlowFixture f;
        makeNoise(f, "a-noise.png", 400);
        f.makeImage("b.png", 40, 30, "PNG");
        QVERIFY(writeOld(f.outPath("a-noise.PNGf"), "previous"));
        const QByteArray previous =
            QCryptographicHash::hash("previous", QCryptographicHash::Sha256);
        f.open(f.sources.path() + "/b.png");
        QVERIFY(f.selectFormat("PNGf"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        {
            const FileSizeLimit limit(64 * 1024);
            f.controller->itsConvertAll->click();
            QTRY_VERIFY(idle(f));
        }
        QCOMPARE(snapshot(f.out.path()).value("a-noise.PNGf"), previous);
        QCOMPARE(FlowFixture::readBackSize(f.outPath("b.PNGf")), QSize(40, 30));
        QCOMPARE(snapshot(f.out.path()).size(), 2);
        const QString summary = f.controller->itsMainWindow->statusBar()->currentMessage();
        QVERIFY2(summary.contains("a-noise.PNGf"), qPrintable(summary));
    }

    // Yes to replacing the output of a source that cannot be decoded: nothing is drawn, and
    // the previous output comes back.
    void anUnreadableSourceLeavesThePreviousOutput() {
        FlowFixture f;
        const QString broken =
            f.writeBytes("broken.png", QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(100, '\0'));
        QVERIFY(writeOld(f.outPath("broken.JPEG"), "previous picture"));
        const auto outBefore = snapshot(f.out.path());
        QVERIFY(f.selectFormat("JPEG"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        f.controller->saveImage(broken, formatIndexForCode("JPEG"));
        QCOMPARE(seen->count, 1);
        QCOMPARE(snapshot(f.out.path()), outBefore);
    }

    // A folder at the output name goes, with its contents, only once the new file is there.
    void aFolderAtTheOutputNameIsReplacedOnlyByACompleteFile() {
        FlowFixture f;
        const QString a = f.makeImage("a.jpg");
        QVERIFY(QDir().mkpath(f.outPath("a.JPEG")));
        QFile inside(f.outPath("a.JPEG/kept.txt"));
        QVERIFY(inside.open(QIODevice::WriteOnly));
        inside.close();
        f.open(a);
        QVERIFY(f.selectFormat("JPEG"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        f.controller->itsConvert->click();
        QCOMPARE(FlowFixture::readBackSize(f.outPath("a.JPEG")), QSize(64, 48));
        QCOMPARE(
            QDir(f.out.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{"a.JPEG"});
    }

    void skipChangesNothing() {
        FlowFixture f;
        const QString a = f.makeImage("a.jpg");
        QVERIFY(writeOld(f.outPath("a.JPEG"), "keep me"));
        const auto sourcesBefore = snapshot(f.sources.path());
        const auto outBefore = snapshot(f.out.path());
        f.open(a);
        QVERIFY(f.selectFormat("JPEG"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Skip"}, seen);
        f.controller->itsConvert->click();
        QCOMPARE(seen->count, 1);
        QCOMPARE(snapshot(f.out.path()), outBefore);
        QCOMPARE(snapshot(f.sources.path()), sourcesBefore);
    }

    // Stop during a batch: the outputs of files not reached, and the sources, stay as they were.
    void stopLeavesTheRestAsItWas() {
        FlowFixture f;
        for (const QString& n : {"1.jpg", "2.jpg", "3.jpg", "4.jpg"})
            f.makeImage(n);
        QVERIFY(writeOld(f.outPath("4.JPEG"), "untouched"));
        const auto sourcesBefore = snapshot(f.sources.path());
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        QObject::connect(
            f.controller.get(), &Controller::batchFileStarted, f.controller.get(),
            [] { QThread::msleep(300); }, Qt::DirectConnection);
        f.controller->itsConvertAll->click();
        QTRY_COMPARE(f.controller->itsConvertIndicator->value(), 2);
        f.controller->itsConvertAll->click(); // "Stop"
        QTRY_VERIFY(idle(f));
        QCOMPARE(snapshot(f.sources.path()), sourcesBefore);
        QCOMPARE(FlowFixture::readAll(f.outPath("4.JPEG")), QByteArray("untouched"));
        QVERIFY(!QFile::exists(f.outPath("3.JPEG")));
    }

    // A read-only destination: nothing there changes and nothing is left behind.
    void aReadOnlyDestinationChangesNothing() {
        if (geteuid() == 0)
            QSKIP("folder permissions do not bind root; the file-size limit case runs instead");
        FlowFixture f;
        const QString a = f.makeImage("a.jpg");
        QVERIFY(writeOld(f.outPath("a.JPEG"), "keep me"));
        const auto outBefore = snapshot(f.out.path());
        QFile::setPermissions(f.out.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        f.open(a);
        QVERIFY(f.selectFormat("JPEG"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        f.controller->itsConvert->click();
        QFile::setPermissions(f.out.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ExeOwner);
        QCOMPARE(snapshot(f.out.path()), outBefore);
    }

    // Converting after an open that failed makes no empty output.
    void noOutputAfterAFailedOpen() {
        FlowFixture f;
        const QString broken = f.writeBytes("broken.png", "not a picture");
        f.open(broken);
        QVERIFY(f.selectFormat("JPEG"));
        f.controller->convert(nullptr);
        QCOMPARE(snapshot(f.out.path()).size(), 0);
    }
};

QTEST_MAIN(tst_NoLostFiles)
#include "tst_NoLostFiles.moc"
