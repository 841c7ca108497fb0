// The raster writers: which encoders exist, every format written and read back by a reader
// that is not the writer, the resolution record, the background at 45 degrees, the content,
// the failures, and the Controller's entry point.

#include "MagickPixels.h"
#include "app/Controller.h"
#include "codec/ImageDecoder.h"
#include "codec/MagickSupport.h"
#include "codec/RasterWriters.h"
#include "export/ExportRenderer.h"
#include "export/FormatTable.h"
#include "view/RotationGeometry.h"

#include <QComboBox>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QtConcurrent/QtConcurrentRun>
#include <QtTest>

#include <Magick++.h>

#include <cmath>
#include <unistd.h>
#include <vector>

#include "MarkedPicture.h"

namespace {

uint32_t code(const QString& text) {
    const QByteArray b = text.toLatin1();
    return (uint32_t(uint8_t(b[0])) << 24) | (uint32_t(uint8_t(b[1])) << 16) |
           (uint32_t(uint8_t(b[2])) << 8) | uint32_t(uint8_t(b[3]));
}

// The export picture of the marked picture at 72 dpi turned by 45 degrees: 791 x 791.
QImage turnedPicture(int format) {
    DecodedImage decoded;
    decoded.ok = true;
    decoded.image = markedPicture();
    decoded.pointSize = QSizeF(640, 480);
    const QRectF q(0, 0, 640, 480);
    return renderExportPicture(decoded, rotatedRectBounds(q, 45), q, format, 45, 1.0f);
}

// Where the centre of the red block lands in the turned picture, by Qt's own rotation.
QPoint turnedRedCentre() {
    const QPointF p = QTransform().rotate(45).map(QPointF(32 - 320, 24 - 240));
    return (p + QPointF(791 / 2.0, 791 / 2.0)).toPoint();
}

struct ReadBack {
    QImage image;    // ARGB32, straight alpha
    double dpiX = 0; // 0 when the file records none
    double dpiY = 0;
};

ReadBack readWithQt(const QString& path, const QByteArray& format) {
    QImageReader reader(path, format);
    ReadBack r;
    r.image = reader.read().convertToFormat(QImage::Format_ARGB32);
    if (!r.image.isNull() && r.image.dotsPerMeterX() > 0) {
        r.dpiX = r.image.dotsPerMeterX() * 0.0254;
        r.dpiY = r.image.dotsPerMeterY() * 0.0254;
    }
    return r;
}

ReadBack readWithMagick(const QString& path, const QString& coder) {
    ensureMagickInitialised();
    ReadBack r;
    try {
        Magick::Image image;
        image.read((coder + QLatin1Char(':') + path).toStdString());
        r.image = magickPixels(image);
        double scale = 1.0;
        if (image.resolutionUnits() == Magick::PixelsPerCentimeterResolution)
            scale = 2.54;
        else if (image.resolutionUnits() != Magick::PixelsPerInchResolution)
            scale = 0.0;
        r.dpiX = image.xResolution() * scale;
        r.dpiY = image.yResolution() * scale;
    } catch (const std::exception& e) {
        qWarning("Magick could not read %s: %s", qPrintable(path), e.what());
    }
    return r;
}

QByteArray contents(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void makeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

class tst_RasterWriters : public QObject {
    Q_OBJECT
private:
    QTemporaryDir dir;

private slots:
    void aFailedAllocationThrowsTheStandardException() {
        // Magick loads every coder, DjVu's library among them, whose own new-handler would turn
        // a failed allocation into an exception no writer expects.
        ensureMagickInitialised();
        bool standard = false;
        try {
            volatile size_t huge = size_t(1) << 60;
            std::vector<unsigned char> buffer(huge);
            QVERIFY(buffer.empty()); // not reached
        } catch (const std::bad_alloc&) {
            standard = true;
        } catch (...) {
        }
        QVERIFY(standard);
    }

    void initTestCase() { QVERIFY(dir.isValid()); }

    void existence_data() {
        QTest::addColumn<QString>("subtype");
        QTest::addColumn<bool>("exists");
        for (const char* c : {"BMPf", "JPEG", "PNGf", "TIFF", "GIF ", "8BPS", ".SGI", "TPIC",
                              "MooV", "PNTG", "qtif", "FLC ", "SWFL"})
            QTest::newRow(c) << QString::fromLatin1(c) << true;
        for (const char* c : {"PICS", "FPix", "qdgx"})
            QTest::newRow(c) << QString::fromLatin1(c) << false;
        QTest::newRow("SGI without the dot") << QStringLiteral("SGI ") << false;
    }
    void existence() {
        QFETCH(QString, subtype);
        QFETCH(bool, exists);
        QCOMPARE(rasterWriterExists(code(subtype)), exists);
        if (exists)
            return;
        // No encoder: a non-zero status and the file the flow made stays as it was.
        const QString path = dir.filePath(QStringLiteral("none.") + subtype);
        makeFile(path, QByteArray());
        QVERIFY(writeRaster(markedPicture(), path, code(subtype), 72) != 0);
        QCOMPARE(contents(path), QByteArray());
    }

    void roundTrip_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("reader"); // Qt's format name or "magick:CODER"
        QTest::addColumn<bool>("resolutionField");
        QTest::addColumn<bool>("transparentCorners");
        QTest::addColumn<int>("tolerance");
        QTest::newRow("BMPf by Qt") << 4 << "bmp" << true << false << 0;
        QTest::newRow("JPEG by Qt") << 7 << "jpeg" << true << false << 24;
        QTest::newRow("PNGf by Qt") << 8 << "png" << true << true << 0;
        QTest::newRow("TIFF by Qt") << 10 << "tiff" << true << true << 0;
        // GIF is the program's own writer: read back by both readers.
        QTest::newRow("GIF by Magick") << 6 << "magick:GIF" << false << true << 40;
        QTest::newRow("GIF by Qt") << 6 << "gif" << false << true << 40;
        QTest::newRow("8BPS by Magick") << 3 << "magick:PSD" << true << true << 2;
        QTest::newRow("SGI by Magick") << 2 << "magick:SGI" << false << true << 2;
        QTest::newRow("TPIC by Magick") << 11 << "magick:TGA" << false << false << 2;
        // Cross-checks of Qt's encoders by the other reader.
        QTest::newRow("JPEG by Magick") << 7 << "magick:JPEG" << true << false << 24;
        QTest::newRow("PNGf by Magick") << 8 << "magick:PNG" << true << true << 2;
        QTest::newRow("TIFF by Magick") << 10 << "magick:TIFF" << true << true << 2;
        QTest::newRow("BMPf by Magick") << 4 << "magick:BMP" << true << false << 2;
    }
    void roundTrip() {
        QFETCH(int, format);
        QFETCH(QString, reader);
        QFETCH(bool, resolutionField);
        QFETCH(bool, transparentCorners);
        QFETCH(int, tolerance);

        const QImage picture = turnedPicture(format);
        QCOMPARE(picture.size(), QSize(791, 791));
        const QString path =
            dir.filePath(QStringLiteral("turned%1.").arg(QTest::currentDataTag()).remove(' ') +
                         QLatin1String(gformats_ns[format]));
        makeFile(path, QByteArray("stale contents to be replaced"));
        QCOMPARE(writeRaster(picture, path, gformats[format], 300.0f), int16_t(0));

        const ReadBack back = reader.startsWith(QLatin1String("magick:"))
                                  ? readWithMagick(path, reader.mid(7))
                                  : readWithQt(path, reader.toLatin1());
        QCOMPARE(back.image.size(), QSize(791, 791));
        if (resolutionField) {
            QCOMPARE(qRound(back.dpiX), 300);
            QCOMPARE(qRound(back.dpiY), 300);
        }
        const QRgb corner = transparentCorners ? qRgba(0, 0, 0, 0) : qRgba(255, 255, 255, 255);
        for (const QPoint p : {QPoint(0, 0), QPoint(790, 0), QPoint(0, 790), QPoint(790, 790)}) {
            const QRgb got = back.image.pixel(p);
            if (transparentCorners)
                QVERIFY2(qAlpha(got) == 0, qPrintable(describe(got)));
            else
                QVERIFY2(near(got, corner, tolerance), qPrintable(describe(got)));
        }
        const QRgb centre = back.image.pixel(395, 395);
        QVERIFY2(near(centre, kBlue, tolerance), qPrintable(describe(centre)));
        const QRgb red = back.image.pixel(turnedRedCentre());
        QVERIFY2(near(red, kRed, tolerance), qPrintable(describe(red)));
    }

    void resolutionOf72IsRecorded() {
        const QString path = dir.filePath(QStringLiteral("seventy-two.PNGf"));
        QCOMPARE(writeRaster(markedPicture(), path, code("PNGf"), 72), int16_t(0));
        QCOMPARE(qRound(readWithQt(path, "png").dpiX), 72);
    }

    void unwritableDestination_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("subtype");
        const QString missing = QStringLiteral("/no-such-folder-here/out.");
        QTest::newRow("missing folder, Qt") << missing + "JPEG"
                                            << "JPEG";
        QTest::newRow("missing folder, Magick") << missing + "GIF "
                                                << "GIF ";
        QTest::newRow("full disk, Qt") << "/dev/full"
                                       << "PNGf";
        QTest::newRow("full disk, Magick") << "/dev/full"
                                           << "TPIC";
        QTest::newRow("full disk, movie") << "/dev/full"
                                          << "MooV";
        QTest::newRow("full disk, own writer") << "/dev/full"
                                               << "FLC ";
        QTest::newRow("empty path") << QString() << "TIFF";
        // Read-only even for root, so that the row means something in any account.
        QTest::newRow("read-only file, Qt") << "/proc/version"
                                            << "BMPf";
        QTest::newRow("read-only file, Magick") << "/proc/version"
                                                << ".SGI";
    }
    void unwritableDestination() {
        QFETCH(QString, path);
        QFETCH(QString, subtype);
        QVERIFY(writeRaster(markedPicture(), path, code(subtype), 72) != 0);
        if (path.startsWith(QLatin1String("/no-such")))
            QVERIFY(!QFile::exists(path));
    }

    void folderAndReadOnlyFile() {
        QVERIFY(writeRaster(markedPicture(), dir.path(), code("BMPf"), 72) != 0);
        if (geteuid() == 0)
            QSKIP("read-only files are writable for root");
        const QString path = dir.filePath(QStringLiteral("locked.TIFF"));
        makeFile(path, QByteArray("keep"));
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));
        QVERIFY(writeRaster(markedPicture(), path, code("TIFF"), 72) != 0);
        QVERIFY(writeRaster(markedPicture(), path, code("8BPS"), 72) != 0);
        QCOMPARE(contents(path), QByteArray("keep"));
    }

    void refusedByMagickPolicy_data() {
        QTest::addColumn<QString>("subtype");
        QTest::newRow("8BPS") << QStringLiteral("8BPS");
        QTest::newRow("TPIC") << QStringLiteral("TPIC");
    }
    void refusedByMagickPolicy() {
        // Wider than the system policy lets Magick make: a failure status, the file untouched.
        QFETCH(QString, subtype);
        QImage wide(17000, 2, QImage::Format_ARGB32_Premultiplied);
        wide.fill(Qt::red);
        const QString path = dir.filePath(QStringLiteral("wide.") + subtype);
        makeFile(path, QByteArray("keep"));
        QVERIFY(writeRaster(wide, path, code(subtype), 72) != 0);
        QCOMPARE(contents(path), QByteArray("keep"));
    }

    void nullPictureFails() {
        const QString path = dir.filePath(QStringLiteral("null.PNGf"));
        QVERIFY(writeRaster(QImage(), path, code("PNGf"), 72) != 0);
        QVERIFY(writeRaster(QImage(), path, code("GIF "), 72) != 0);
    }

    void workerThreads() {
        const QImage picture = markedPicture();
        const QString a = dir.filePath(QStringLiteral("worker.JPEG"));
        const QString b = dir.filePath(QStringLiteral("worker.GIF "));
        QFuture<int16_t> fa =
            QtConcurrent::run([=] { return writeRaster(picture, a, code("JPEG"), 150); });
        QFuture<int16_t> fb =
            QtConcurrent::run([=] { return writeRaster(picture, b, code("GIF "), 150); });
        QCOMPARE(fa.result(), int16_t(0));
        QCOMPARE(fb.result(), int16_t(0));
        QCOMPARE(qRound(readWithQt(a, "jpeg").dpiX), 150);
        const QImage gif = readWithMagick(b, QStringLiteral("GIF")).image;
        QCOMPARE(gif.size(), QSize(640, 480));
        QVERIFY(near(gif.pixel(10, 10), kRed, 40));
    }

    // The Controller's entry point: the table index, the Skip answer, the resolution list.
    void convertAndSave() {
        Controller controller;
        QComboBox dpiCombo;
        dpiCombo.setEditable(true);
        dpiCombo.setCurrentText(QStringLiteral("300"));
        const QImage picture = markedPicture();

        // No resolution list: 72 dpi.
        const QString plain = dir.filePath(QStringLiteral("plain.JPEG"));
        makeFile(plain, QByteArray());
        QCOMPARE(controller.convertAndSave(picture, plain, 7), int16_t(0));
        QCOMPARE(qRound(readWithQt(plain, "jpeg").dpiX), 72);

        controller.itsDpiCombo = &dpiCombo;
        const QString jpeg = dir.filePath(QStringLiteral("flow.JPEG"));
        makeFile(jpeg, QByteArray());
        QCOMPARE(controller.convertAndSave(picture, jpeg, 7), int16_t(0));
        const ReadBack back = readWithQt(jpeg, "jpeg");
        QCOMPARE(back.image.size(), QSize(640, 480));
        QCOMPARE(qRound(back.dpiX), 300);

        // PDF and EPS: the path's status, nothing written.
        const QString pdf = dir.filePath(QStringLiteral("flow.pdf"));
        makeFile(pdf, QByteArray());
        QCOMPARE(controller.convertAndSave(picture, pdf, 17), int16_t(0));
        QCOMPARE(contents(pdf), QByteArray());
        QVERIFY(controller.convertAndSave(picture, dir.filePath("absent.eps"), 18) != 0);
        QVERIFY(!QFile::exists(dir.filePath("absent.eps")));

        // Skip: no path, nothing written; a path without its empty file: nothing written.
        QVERIFY(controller.convertAndSave(picture, QString(), 8) != 0);
        QVERIFY(controller.convertAndSave(picture, dir.filePath("unmade.PNGf"), 8) != 0);
        QVERIFY(!QFile::exists(dir.filePath("unmade.PNGf")));

        // A format without encoder, and an index out of the table.
        const QString movie = dir.filePath(QStringLiteral("flow.PICS"));
        makeFile(movie, QByteArray());
        QVERIFY(controller.convertAndSave(picture, movie, 1) != 0);
        QCOMPARE(contents(movie), QByteArray());
        QVERIFY(controller.convertAndSave(picture, movie, -1) != 0);
        controller.itsDpiCombo = nullptr;
    }
};

QTEST_MAIN(tst_RasterWriters)
#include "tst_RasterWriters.moc"
