// "Convert All" reads, draws and encodes several files at once; everything the user sees still
// comes in folder order: the overwrite questions, the progress bar, the format of each file,
// and Stop. A file that cannot be drawn (it records a resolution that asks for a giant picture)
// is skipped and named at the end instead of stopping the batch at an alert. Every output is
// read back by a reader of its own and its pixels checked.

#include "FlowFixture.h"
#include "MagickPixels.h"
#include "MarkedPicture.h"
#include "ModalAnswer.h"

#include <QMessageBox>
#include <QStatusBar>
#include <QThread>

#include <Magick++.h>

#include <atomic>
#include <mutex>

namespace {

bool idle(const FlowFixture& f) {
    return f.controller->itsConvertAll->text() == "Convert All" && !f.controller->isBatchRunning();
}

// A picture of w x h: blue with a yellow top-left quarter, JPEG at 72 dpi by default. Sizes vary
// between the files of a test so that their reads and encodes take different times.
QString makePicture(FlowFixture& f, const QString& name, int w, int h,
                    const char* format = "JPEG") {
    return f.makeImage(name, w, h, format);
}

// The colours of makeImage's picture where the read-back should show them.
void checkPixels(const QImage& image, int w, int h, int tolerance, const QString& what) {
    QCOMPARE(image.size(), QSize(w, h));
    const QRgb yellow = qRgb(255, 255, 0);
    const QRgb blue = qRgb(0, 0, 255);
    QVERIFY2(near(image.pixel(w / 8, h / 8), yellow, tolerance),
             qPrintable(what + " top-left " + describe(image.pixel(w / 8, h / 8))));
    QVERIFY2(near(image.pixel(w * 3 / 4, h * 3 / 4), blue, tolerance),
             qPrintable(what + " bottom-right " + describe(image.pixel(w * 3 / 4, h * 3 / 4))));
}

// Magick's reading, independent of Qt's readers and of the program's decoder chain.
QImage readWithMagick(const QString& path, const char* coder) {
    Magick::Image image;
    image.read(std::string(coder) + ":" + path.toStdString());
    return magickPixels(image);
}

// Rewrites the JFIF density of a JPEG written by Qt (APP0 right after the start marker) to
// `dpi` dots per inch, and nothing else.
void setJfifDensity(const QString& path, int dpi) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    QVERIFY(bytes.mid(6, 5) == QByteArray("JFIF\0", 5));
    bytes[13] = 1; // dots per inch
    bytes[14] = char(dpi >> 8);
    bytes[15] = char(dpi & 0xff);
    bytes[16] = char(dpi >> 8);
    bytes[17] = char(dpi & 0xff);
    file.seek(0);
    file.write(bytes);
}

} // namespace

class tst_ParallelBatch : public QObject {
    Q_OBJECT

private slots:

    void initTestCase() { Magick::InitializeMagick(nullptr); }

    void overwriteQuestionsAndProgressInFolderOrder() {
        FlowFixture f;
        // A large first file: the small ones after it are read and encoded while it still is.
        const QStringList names{"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg", "f.jpg"};
        const QList<QSize> sizes{{2400, 1800}, {64, 48},    {900, 600},
                                 {32, 24},     {1200, 900}, {48, 36}};
        for (int i = 0; i < names.size(); ++i)
            makePicture(f, names[i], sizes[i].width(), sizes[i].height());
        for (const QString& n : names) {
            QFile old(f.outPath(QFileInfo(n).completeBaseName() + ".PNGf"));
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write("old picture");
        }
        f.open(f.sources.path() + "/c.jpg");
        QVERIFY(f.selectFormat("PNGf"));

        std::mutex m;
        QStringList started;
        QList<int> positions;
        QObject::connect(
            f.controller.get(), &Controller::batchFileStarted, f.controller.get(),
            [&](const QString& path, int pos) {
                const std::lock_guard lock(m);
                started << QFileInfo(path).fileName();
                positions << pos;
            },
            Qt::DirectConnection);
        QList<int> progress;
        QObject::connect(f.controller->itsConvertIndicator, &QProgressBar::valueChanged,
                         [&](int v) {
                             if (v > 0)
                                 progress << v;
                         });
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes", "Yes", "Yes", "Yes", "Yes", "Yes"}, seen);

        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 30000);

        QCOMPARE(started, names);
        QCOMPARE(positions, (QList<int>{1, 2, 3, 4, 5, 6}));
        QCOMPARE(progress, (QList<int>{1, 2, 3, 4, 5, 6}));
        QStringList expected;
        for (const QString& n : names)
            expected << QStringLiteral(
                            "The file %1.PNGf already exists. Do you want to replace it?")
                            .arg(QFileInfo(n).completeBaseName());
        QCOMPARE(seen->texts, expected);
        for (int i = 0; i < names.size(); ++i) {
            const QString out = f.outPath(QFileInfo(names[i]).completeBaseName() + ".PNGf");
            checkPixels(QImageReader(out, "png").read(), sizes[i].width(), sizes[i].height(), 6,
                        out);
        }
        // Nothing but the outputs: no file set aside, no half-written temporary file.
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files | QDir::Hidden).size(), names.size());
    }

    void formatChangeAppliesFromTheNextFileNotStarted() {
        FlowFixture f;
        const QStringList names{"1.jpg", "2.jpg", "3.jpg", "4.jpg", "5.jpg"};
        for (const QString& n : names)
            makePicture(f, n, 320, 240);
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        // The batch thread waits at the start of file 3, whose pixels are read ahead by then.
        std::atomic<bool> release{false};
        std::atomic<int> started{0};
        QObject::connect(
            f.controller.get(), &Controller::batchFileStarted, f.controller.get(),
            [&] {
                if (++started == 3)
                    while (!release)
                        QThread::msleep(5);
            },
            Qt::DirectConnection);
        f.controller->itsConvertAll->click();
        QTRY_COMPARE(started.load(), 3);
        QVERIFY(f.selectFormat("TIFF"));
        release = true;
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 20000);
        for (const QString& n : {"1.JPEG", "2.JPEG"})
            checkPixels(QImageReader(f.outPath(n), "jpeg").read(), 320, 240, 24, n);
        for (const QString& n : {"3.TIFF", "4.TIFF", "5.TIFF"})
            checkPixels(readWithMagick(f.outPath(n), "TIFF"), 320, 240, 2, n);
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files | QDir::Hidden).size(), 5);
    }

    void stopStartsNoFurtherFileAndLeavesNoPartialOutput() {
        FlowFixture f;
        const QStringList names{"1.jpg", "2.jpg", "3.jpg", "4.jpg", "5.jpg", "6.jpg"};
        for (const QString& n : names)
            makePicture(f, n, 1600, 1200);
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("PNGf"));
        std::atomic<int> started{0};
        QObject::connect(
            f.controller.get(), &Controller::batchFileStarted, f.controller.get(),
            [&] { ++started; }, Qt::DirectConnection);
        // Stop is clicked from the GUI thread as soon as the second file has started.
        QObject::connect(f.controller->itsConvertIndicator, &QProgressBar::valueChanged,
                         f.controller.get(), [&](int v) {
                             if (v == 2 && f.controller->itsConvertAll->text() == "Stop" &&
                                 f.controller->itsConvertAll->isEnabled())
                                 f.controller->itsConvertAll->click();
                         });
        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 30000);
        QCOMPARE(started.load(), 2);
        // The files started are complete; no later one has any trace, not even a temporary file.
        const QStringList left = QDir(f.out.path()).entryList(QDir::Files | QDir::Hidden);
        QCOMPARE(left, (QStringList{"1.PNGf", "2.PNGf"}));
        for (const QString& n : left)
            checkPixels(readWithMagick(f.outPath(n), "PNG"), 1600, 1200, 2, n);
    }

    void absurdResolutionIsSkippedAndReported() {
        FlowFixture f;
        makePicture(f, "a.jpg", 64, 48);
        // 320 x 200 pixels at 1 dpi: 23040 x 14400 points, beyond what may be drawn.
        const QString giant = makePicture(f, "b.jpg", 320, 200);
        setJfifDensity(giant, 1);
        makePicture(f, "c.jpg", 80, 60);
        f.open(f.sources.path() + "/a.jpg");
        QVERIFY(f.selectFormat("PNGf"));
        // No box may come up: any would be recorded here (and dismissed).
        auto seen = std::make_shared<SeenQuestion>();
        QTimer* watcher = answerQuestions({"OK"}, seen);

        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 20000);
        QCOMPARE(seen->count, 0);
        delete watcher;

        checkPixels(QImageReader(f.outPath("a.PNGf"), "png").read(), 64, 48, 6, "a");
        checkPixels(QImageReader(f.outPath("c.PNGf"), "png").read(), 80, 60, 6, "c");
        QVERIFY(!QFile::exists(f.outPath("b.PNGf"))); // no empty file left for it
        const QString summary = f.controller->itsMainWindow->statusBar()->currentMessage();
        QVERIFY2(summary.startsWith("Convert All: 1 file(s) not written."), qPrintable(summary));
        QVERIFY2(summary.contains("b.PNGf"), qPrintable(summary));
        QVERIFY2(summary.contains("23040 x 14400"), qPrintable(summary));
    }

    void absurdResolutionKeepsItsAlertInASingleConversion() {
        FlowFixture f;
        const QString giant = makePicture(f, "b.jpg", 320, 200);
        setJfifDensity(giant, 1);
        f.open(giant);
        QVERIFY(f.selectFormat("PNGf"));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"OK"}, seen);
        f.controller->convert(nullptr);
        QTRY_COMPARE(seen->count, 1);
        QVERIFY2(seen->text.contains("23040 x 14400"), qPrintable(seen->text));
    }

    void everyOfferedRasterFormatReadsBack_data() {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("coder"); // Magick's name, for the independent read-back
        QTest::addColumn<int>("tolerance");
        // One row a line.
        // clang-format off
        QTest::newRow("JPEG") << "JPEG" << "JPEG" << 24;
        QTest::newRow("PNGf") << "PNGf" << "PNG" << 0;
        QTest::newRow("TIFF") << "TIFF" << "TIFF" << 0;
        QTest::newRow("BMPf") << "BMPf" << "BMP" << 0;
        QTest::newRow("GIF ") << "GIF " << "GIF" << 8;
        QTest::newRow("8BPS") << "8BPS" << "PSD" << 0;
        QTest::newRow("SGI ") << "SGI " << "SGI" << 0;
        QTest::newRow("TPIC") << "TPIC" << "TGA" << 0;
        // clang-format on
    }
    void everyOfferedRasterFormatReadsBack() {
        QFETCH(QString, code);
        QFETCH(QString, coder);
        QFETCH(int, tolerance);
        FlowFixture f;
        const QList<QSize> sizes{{640, 480}, {96, 72}, {333, 222}, {1000, 700}};
        for (int i = 0; i < sizes.size(); ++i)
            makePicture(f, QStringLiteral("p%1.png").arg(i), sizes[i].width(), sizes[i].height(),
                        "PNG");
        f.open(f.sources.path() + "/p0.png");
        if (!f.selectFormat(code))
            QSKIP("not offered on this machine");
        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 20000);
        const QString ext = f.controller->itsFormatCombo->currentText();
        for (int i = 0; i < sizes.size(); ++i) {
            const QString out = f.outPath(QStringLiteral("p%1.").arg(i) + ext);
            checkPixels(readWithMagick(out, coder.toLatin1().constData()), sizes[i].width(),
                        sizes[i].height(), tolerance, out);
        }
    }

    void turnedGifKeepsItsTransparentCorners() {
        FlowFixture f;
        makePicture(f, "t.jpg", 400, 300);
        f.open(f.sources.path() + "/t.jpg");
        QVERIFY(f.selectFormat("GIF "));
        f.controller->m_rotate = 30;
        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(idle(f), 20000);
        const QImage gif = QImageReader(f.outPath("t.GIF "), "gif").read();
        QCOMPARE(gif.size(), QSize(496, 459));
        QCOMPARE(qAlpha(gif.pixel(0, 0)), 0);
        QCOMPARE(qAlpha(gif.pixel(495, 458)), 0);
        // The source's point (300, 225), in the blue, turned 30 degrees clockwise about the centre.
        const QRgb blue = gif.pixel(248 + 49, 229 + 115);
        QVERIFY2(near(blue, qRgb(0, 0, 255), 8), qPrintable(describe(blue)));
    }
};

QTEST_MAIN(tst_ParallelBatch)
#include "tst_ParallelBatch.moc"
