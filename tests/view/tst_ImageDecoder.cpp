// The decoder chain: formats, pixel formats, sizes in points and bad input.

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QSet>
#include <QTemporaryDir>
#include <QtConcurrent>
#include <QtTest>

#include <sys/stat.h>

#include "LoadTestImages.h"
#include "codec/ImageDecoder.h"

using namespace LoadTestImages;

namespace {

qint64 peakResidentKiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

bool near(QColor a, QColor b, int tolerance = 12) {
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance;
}

QByteArray jpegOf(QSize size, Qt::GlobalColor colour) {
    QImage source(size, QImage::Format_RGB32);
    source.fill(colour);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    source.save(&buffer, "JPEG");
    return jpeg;
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile out(path);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size();
}

} // namespace

class tst_ImageDecoder : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString file(const QString& name) const { return dir.filePath(name); }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void readableSuffixes() {
        const QStringList suffixes = ImageDecoder::readableSuffixes();
        QCOMPARE(QSet<QString>(suffixes.begin(), suffixes.end()).size(), suffixes.size());
        for (const QString& s : suffixes)
            QCOMPARE(s, s.toLower());
        for (const char* expected : {"jpg", "jpeg", "png", "tif", "tiff", "bmp", "gif", "webp",
                                     "svg", "psd", "xcf", "pict", "pcx", "sgi", "pdf"})
            QVERIFY2(suffixes.contains(QLatin1String(expected)), expected);
        for (const char* refused : {"ps", "eps", "txt", "png24", "xc", "label", "rgb", ""})
            QVERIFY2(!suffixes.contains(QLatin1String(refused)), refused);
    }

    void opaqueRgbPng() {
        const QString path = file("rgb.png");
        QVERIFY(twoTone(64, 32, Qt::red, Qt::blue).save(path));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.format(), QImage::Format_RGB32);
        QCOMPARE(d.image.size(), QSize(64, 32));
        QCOMPARE(d.pointSize, QSizeF(64, 32));
        QCOMPARE(d.image.pixelColor(1, 1), QColor(Qt::red));
        QCOMPARE(d.image.pixelColor(62, 30), QColor(Qt::blue));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(64, 32));
    }

    void rgbaPngKeepsAlpha() {
        const QString path = file("rgba.png");
        QImage source(20, 10, QImage::Format_ARGB32);
        source.fill(QColor(255, 0, 0, 128));
        source.setPixelColor(0, 0, QColor(0, 0, 255, 0));
        QVERIFY(source.save(path));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.format(), QImage::Format_ARGB32_Premultiplied);
        QVERIFY(d.image.hasAlphaChannel());
        QCOMPARE(d.image.pixelColor(0, 0).alpha(), 0);
        QVERIFY(qAbs(d.image.pixelColor(5, 5).alpha() - 128) <= 1);
        QVERIFY(qAbs(d.image.pixelColor(5, 5).red() - 255) <= 2);
    }

    void greyPng() {
        const QString path = file("grey.png");
        QImage source(16, 16, QImage::Format_Grayscale8);
        source.fill(QColor(100, 100, 100));
        QVERIFY(source.save(path));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.format(), QImage::Format_Grayscale8);
        QCOMPARE(qGray(d.image.pixel(3, 3)), 100);
    }

    void sixteenBitPng() {
        const QString path = file("deep.png");
        QImage source(16, 8, QImage::Format_RGBX64);
        source.fill(QColor::fromRgba64(qRgba64(65535, 32768, 0, 65535)));
        QVERIFY(source.save(path));
        QCOMPARE(QImage(path).depth(), 64); // really 16 bits a sample on disk
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.format(), QImage::Format_RGB32);
        QVERIFY(near(d.image.pixelColor(2, 2), QColor(255, 128, 0), 1));
    }

    void dpiGivesPoints() {
        const QString path = file("300dpi.png");
        QImage source(1003, 1000, QImage::Format_RGB32);
        source.fill(Qt::white);
        source.setDotsPerMeterX(11811); // 300 dpi
        source.setDotsPerMeterY(11811);
        QVERIFY(source.save(path));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(1003, 1000));
        QVERIFY(qAbs(d.pointSize.width() - 1003 * 72.0 / 300) < 0.01);
        QVERIFY(qAbs(d.pointSize.height() - 1000 * 72.0 / 300) < 0.01);
        const QSizeF measured = ImageDecoder::measure(path);
        QVERIFY(qAbs(measured.width() - d.pointSize.width()) < 1e-9);
        QVERIFY(qAbs(measured.height() - d.pointSize.height()) < 1e-9);
    }

    void recordedResolution_data() {
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<int>("dotsPerMetre");
        QTest::addColumn<double>("dpi"); // what the size in points is computed from
        for (const QByteArray format : {QByteArray("png"), QByteArray("tiff"), QByteArray("bmp")}) {
            QTest::addRow("%s 300 dpi", format.constData()) << format << 11811 << 300.0;
            // 96 dpi is also what a new QImage holds: it must still count as recorded.
            QTest::addRow("%s 96 dpi", format.constData()) << format << 3780 << 96.0;
            QTest::addRow("%s 72 dpi", format.constData()) << format << 2835 << 72.0;
        }
    }

    // Measuring reads the resolution from the file's header, and decoding gives the same size.
    void recordedResolution() {
        QFETCH(QByteArray, format);
        QFETCH(int, dotsPerMetre);
        QFETCH(double, dpi);
        const QString path = file("resolution." + QString::fromLatin1(format));
        QImage source(600, 300, QImage::Format_RGB32);
        source.fill(Qt::darkGreen);
        source.setDotsPerMeterX(dotsPerMetre);
        source.setDotsPerMeterY(dotsPerMetre);
        QVERIFY(source.save(path, format.constData()));
        const QSizeF expected(600 * 72.0 / dpi, 300 * 72.0 / dpi);
        const QSizeF measured = ImageDecoder::measure(path);
        QVERIFY2(
            qAbs(measured.width() - expected.width()) < 0.01 &&
                qAbs(measured.height() - expected.height()) < 0.01,
            qPrintable(QStringLiteral("%1 x %2").arg(measured.width()).arg(measured.height())));
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.pointSize, measured);
    }

    void jpegDensity_data() {
        QTest::addColumn<int>("dpi");
        QTest::addColumn<QSizeF>("points");
        QTest::newRow("72 dpi") << 72 << QSizeF(144, 72);
        QTest::newRow("144 dpi") << 144 << QSizeF(72, 36);
        QTest::newRow("96 dpi") << 96 << QSizeF(108, 54);
    }
    void jpegDensity() {
        QFETCH(int, dpi);
        QFETCH(QSizeF, points);
        const QString path = file(QStringLiteral("density%1.jpg").arg(dpi));
        QImage source(144, 72, QImage::Format_RGB32);
        source.fill(Qt::green);
        source.setDotsPerMeterX(qRound(dpi / 0.0254));
        source.setDotsPerMeterY(qRound(dpi / 0.0254));
        QVERIFY(source.save(path));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QVERIFY2(qAbs(d.pointSize.width() - points.width()) < 0.1,
                 qPrintable(QString::number(d.pointSize.width())));
        QVERIFY(qAbs(d.pointSize.height() - points.height()) < 0.1);
        const QSizeF measured = ImageDecoder::measure(path);
        QVERIFY(qAbs(measured.width() - d.pointSize.width()) < 1e-9);
    }

    // A camera's JPEG records its resolution in EXIF only (no JFIF density): 300 dpi there.
    void exifResolution_data() {
        QTest::addColumn<int>("jfifUnit");
        QTest::newRow("no JFIF segment") << -1;
        QTest::newRow("JFIF aspect ratio only") << 0;
    }
    void exifResolution() {
        QFETCH(int, jfifUnit);
        const QByteArray jpeg = jpegOf(QSize(300, 150), Qt::cyan);
        // Qt writes SOI, then a JFIF APP0 of 16 bytes: replace it.
        QVERIFY(jpeg.mid(6, 4) == "JFIF");
        const int app0Length = (uchar(jpeg[4]) << 8) | uchar(jpeg[5]);
        QByteArray rest = jpeg.mid(4 + app0Length);
        // A big-endian TIFF header and one directory: XResolution, YResolution (300/1 each,
        // stored after the directory) and ResolutionUnit inch.
        QByteArray tiff("MM\0\x2a\0\0\0\x08", 8);
        auto u16 = [&tiff](int v) { tiff.append(char(v >> 8)).append(char(v & 0xff)); };
        auto u32 = [&](quint32 v) {
            u16(int(v >> 16));
            u16(int(v & 0xffff));
        };
        u16(3);
        u16(282);
        u16(5);
        u32(1);
        u32(8 + 2 + 3 * 12 + 4);
        u16(283);
        u16(5);
        u32(1);
        u32(8 + 2 + 3 * 12 + 4 + 8);
        u16(296);
        u16(3);
        u32(1);
        u16(2);
        u16(0);
        u32(0);
        u32(300);
        u32(1);
        u32(300);
        u32(1);
        const QByteArray body = QByteArray("Exif\0\0", 6) + tiff;
        QByteArray app1("\xff\xe1", 2);
        app1.append(char((body.size() + 2) >> 8)).append(char((body.size() + 2) & 0xff));
        app1 += body;
        QByteArray app0;
        if (jfifUnit >= 0) {
            app0 = QByteArray("\xff\xe0\0\x10JFIF\0\x01\x01", 11);
            app0.append(char(jfifUnit)).append(QByteArray("\0\x01\0\x01\0\0", 6));
        }
        const QString path = file(QStringLiteral("exif%1.jpg").arg(jfifUnit));
        QVERIFY(writeFile(path, QByteArray("\xff\xd8", 2) + app0 + app1 + rest));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(300, 150));
        QVERIFY2(qAbs(d.pointSize.width() - 72) < 0.1,
                 qPrintable(QString::number(d.pointSize.width())));
        QVERIFY(qAbs(ImageDecoder::measure(path).height() - 36) < 0.1);
    }

    // A few kilobytes holding tens of thousands of comment segments: refused at once instead of
    // being parsed segment by segment.
    void jpegWithAbsurdlyManySegments() {
        const QByteArray jpeg = jpegOf(QSize(32, 32), Qt::red);
        QByteArray bomb("\xff\xd8", 2);
        for (int i = 0; i < 50000; ++i)
            bomb.append(QByteArray("\xff\xfe\0\x03x", 5));
        bomb += jpeg.mid(2);
        const QString path = file("comments.jpg");
        QVERIFY(writeFile(path, bomb));
        QVERIFY(!ImageDecoder::decode(path).ok);
        QVERIFY(ImageDecoder::measure(path).isEmpty());
        // A handful of comments is nothing unusual.
        QByteArray fine("\xff\xd8", 2);
        for (int i = 0; i < 20; ++i)
            fine.append(QByteArray("\xff\xfe\0\x03x", 5));
        fine += jpeg.mid(2);
        const QString finePath = file("some-comments.jpg");
        QVERIFY(writeFile(finePath, fine));
        QVERIFY(ImageDecoder::decode(finePath).ok);
    }

    // A tiny PDF whose page draws an image claiming 100000 x 100000 pixels is refused instead
    // of keeping poppler's scaler busy for minutes.
    void pdfWithAGiantImageIsRefused() {
        const QByteArray content = "q 100 0 0 100 0 0 cm /Im0 Do Q";
        const QByteArray pdf =
            "%PDF-1.4\n"
            "1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n"
            "2 0 obj << /Type /Pages /Kids [3 0 R] /Count 1 >> endobj\n"
            "3 0 obj << /Type /Page /Parent 2 0 R /MediaBox [0 0 100 100] /Contents 4 0 R "
            "/Resources << /XObject << /Im0 5 0 R >> >> >> endobj\n"
            "4 0 obj << /Length " +
            QByteArray::number(content.size()) + " >>\nstream\n" + content +
            "\nendstream endobj\n"
            "5 0 obj << /Type /XObject /Subtype /Image /Width 100000 /Height 100000 "
            "/ColorSpace /DeviceGray /BitsPerComponent 8 /Length 4 >>\nstream\nabcd\n"
            "endstream endobj\ntrailer << /Root 1 0 R >>\n%%EOF\n";
        const QString path = file("giant-image.pdf");
        QVERIFY(writeFile(path, pdf));
        QVERIFY(!ImageDecoder::decode(path).ok);
    }

    // Large files that a decoder would read to their end before giving up are refused from
    // their first and last bytes: a PICT whose drawing never starts, a PDF whose
    // cross-reference table would have to be rebuilt from a scan of the whole file.
    void largeFilesWithoutAStructureAreRefusedAtOnce() {
        const QString pict = file("zeros.pict");
        const QString pdf = file("no-trailer.pdf");
        QFile zeros(pict);
        QVERIFY(zeros.open(QIODevice::WriteOnly) && zeros.resize(qint64(1) << 30));
        zeros.close();
        QFile headed(pdf);
        QVERIFY(headed.open(QIODevice::WriteOnly) && headed.write("%PDF-1.4\n") == 9 &&
                headed.resize(qint64(1) << 30));
        headed.close();
        for (const QString& path : {pict, pdf}) {
            QVERIFY(!ImageDecoder::decode(path).ok);
            QVERIFY(ImageDecoder::measure(path).isEmpty());
        }
    }

    // A large PDF whose trailer leads to its table opens, however much it carries.
    void largePdfWithItsTableOpens() {
        const QString small = file("small.pdf");
        QVERIFY(writePdf(small, 200, 100));
        QFile in(small);
        QVERIFY(in.open(QIODevice::ReadOnly));
        const QByteArray pdf = in.readAll();
        const qsizetype at = pdf.lastIndexOf("startxref");
        QVERIFY(at > 0);
        const QByteArray ending = pdf.mid(at);
        const QString path = file("large.pdf");
        QVERIFY(writeFile(path, pdf + "%" + QByteArray(80 * 1024 * 1024, ' ') + "\n" + ending));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QVERIFY(qAbs(d.pointSize.width() - 200) < 1);
    }

    // A page as large as a building is drawn at a resolution that keeps its raster reasonable.
    void anEnormousPageIsDrawnWithinThePixelBudget() {
        const QString path = file("enormous.pdf");
        QVERIFY(writePdf(path, 14400, 14400));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QVERIFY(qAbs(d.pointSize.width() - 14400) < 1);
        QVERIFY(qint64(d.image.width()) * d.image.height() <= 64'000'000);
    }

    void exifOrientation() {
        QByteArray jpeg;
        {
            QBuffer buffer(&jpeg);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(twoTone(40, 20, Qt::red, Qt::blue).save(&buffer, "JPEG", 95));
        }
        const QString path = file("turned.jpg");
        QVERIFY(writeBytes(path,
                           withExifOrientation(jpeg, 6))); // stored turned a quarter anticlockwise
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(20, 40));
        QCOMPARE(d.pointSize, QSizeF(20, 40));
        QVERIFY(near(d.image.pixelColor(10, 5), Qt::red, 40)); // the left half is now on top
        QVERIFY(near(d.image.pixelColor(10, 35), Qt::blue, 40));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(20, 40));
    }

    void cmykJpeg() {
        const QString path = file("cmyk.jpg");
        QVERIFY(writeWithMagick(path, "JPEG", 32, 16, "red", true));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(32, 16));
        QVERIFY2(near(d.image.pixelColor(16, 8), Qt::red, 30),
                 qPrintable(d.image.pixelColor(16, 8).name()));
    }

    void magickFormats_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("coder");
        QTest::newRow("psd") << "layers.psd"
                             << "PSD";
        QTest::newRow("pcx") << "old.pcx"
                             << "PCX";
        QTest::newRow("sgi") << "iris.sgi"
                             << "SGI";
        QTest::newRow("pict") << "drawing.pict"
                              << "PICT";
        QTest::newRow("psd without suffix") << "layers"
                                            << "PSD";
    }
    void magickFormats() {
        QFETCH(QString, name);
        QFETCH(QString, coder);
        const QString path = file(name);
        QVERIFY(writeWithMagick(path, coder.toStdString(), 48, 24, "#00ff00"));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(48, 24));
        QCOMPARE(d.pointSize, QSizeF(48, 24));
        QVERIFY(near(d.image.pixelColor(20, 10), QColor(0, 255, 0), 2));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(48, 24));
    }

    void pdfFirstPage() {
        const QString path = file("page.pdf");
        QVERIFY(writePdf(path, 200, 100));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QVERIFY(qAbs(d.pointSize.width() - 200) < 0.5);
        QVERIFY(qAbs(d.pointSize.height() - 100) < 0.5);
        QVERIFY(d.image.width() >= 400); // rendered above screen resolution, sharp when exported
        QVERIFY(near(d.image.pixelColor(d.image.width() / 4, d.image.height() / 2), Qt::red, 10));
        QVERIFY(
            near(d.image.pixelColor(d.image.width() * 3 / 4, d.image.height() / 2), Qt::white, 10));
        QVERIFY(qAbs(ImageDecoder::measure(path).width() - 200) < 0.5);
    }

    void unicodeName() {
        const QString path = file(QStringLiteral("été photo 写真 1.png"));
        QVERIFY(twoTone(30, 20, Qt::red, Qt::blue).save(path));
        QVERIFY(ImageDecoder::decode(path).ok);
        QCOMPARE(ImageDecoder::measure(path), QSizeF(30, 20));
        const QString psd = file(QStringLiteral("calque [0] é 写真.psd"));
        QVERIFY(writeWithMagick(psd, "PSD", 10, 10, "blue"));
        QVERIFY(ImageDecoder::decode(psd).ok);
    }

    void badInput_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("zero-byte png") << "empty.png" << QByteArray();
        QTest::newRow("text named jpg")
            << "notes.jpg" << QByteArray("This is not a picture.\n").repeated(40);
        QTest::newRow("text named psd") << "notes.psd" << QByteArray("hello\n").repeated(40);
        QTest::newRow("garbage pdf") << "broken.pdf" << QByteArray("%PDF-1.4\nnothing here\n");
        QTest::newRow("postscript named eps")
            << "drawing.eps"
            << QByteArray("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 10 10\nshowpage\n");
        QTest::newRow("missing") << "" << QByteArray();
    }
    void badInput() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const QString path = name.isEmpty() ? file("does-not-exist.png") : file(name);
        if (!name.isEmpty())
            QVERIFY(writeBytes(path, bytes));
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(!d.ok);
        QVERIFY(d.image.isNull());
        QVERIFY(ImageDecoder::measure(path).isEmpty());
    }

    void truncatedJpeg() {
        QByteArray jpeg;
        {
            QBuffer buffer(&jpeg);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(twoTone(400, 300, Qt::red, Qt::blue).save(&buffer, "JPEG", 90));
        }
        const QString path = file("cut.jpg");
        QVERIFY(writeBytes(path, jpeg.left(jpeg.size() / 2)));
        // The readable top half is kept, as viewers do with a partly downloaded photograph.
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(d.ok);
        QCOMPARE(d.image.size(), QSize(400, 300));
        QVERIFY(near(d.image.pixelColor(10, 2), Qt::red, 40));
        QVERIFY(writeBytes(path, jpeg.left(200))); // not even the header survives
        QVERIFY(!ImageDecoder::decode(path).ok);
    }

    void declaredGiantIsRefused() {
        const QString path = file("giant.png");
        QVERIFY(writeBytes(path, pngDeclaring(100000, 100000)));
        const qint64 before = peakResidentKiB();
        QElapsedTimer timer;
        timer.start();
        const DecodedImage d = ImageDecoder::decode(path);
        QVERIFY(!d.ok);
        QVERIFY(ImageDecoder::measure(path).isEmpty());
        QVERIFY(timer.elapsed() < 10000);
        QVERIFY2(peakResidentKiB() - before < 100 * 1024,
                 "a buffer was allocated for the declared size");
        // Within the limits the same hand-made header is measured from its header.
        QVERIFY(writeBytes(path, pngDeclaring(4, 4)));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(4, 4));
    }

    void threadsDecodeTogether() {
        const QString png = file("shared.png");
        const QString psd = file("shared.psd");
        QVERIFY(twoTone(300, 200, Qt::red, Qt::blue).save(png));
        QVERIFY(writeWithMagick(psd, "PSD", 120, 80, "red"));
        QStringList paths;
        for (int i = 0; i < 16; ++i)
            paths << (i % 2 ? png : psd);
        const QList<bool> results = QtConcurrent::blockingMapped(paths, [](const QString& path) {
            const DecodedImage d = ImageDecoder::decode(path);
            return d.ok && ImageDecoder::measure(path) == d.pointSize;
        });
        QCOMPARE(results.count(true), 16);
    }

    void nonRegularFilesAreRefused() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("folder.png"));
        const QByteArray fifo = QFile::encodeName(dir.path() + "/pipe.png");
        QCOMPARE(mkfifo(fifo.constData(), 0600), 0);
        for (const QString& path : {QString(), dir.path() + "/folder.png",
                                    QString::fromLocal8Bit(fifo), QString("/dev/zero")}) {
            QVERIFY2(!ImageDecoder::decode(path).ok, qPrintable(path));
            QVERIFY2(ImageDecoder::measure(path).isEmpty(), qPrintable(path));
        }
    }
};

QTEST_MAIN(tst_ImageDecoder)
#include "tst_ImageDecoder.moc"
