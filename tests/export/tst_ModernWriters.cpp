// The WebP, AVIF, HEIC and JPEG XL writers: each output read back by the format's own command-
// line decoder (dwebp, heif-convert, djxl, to PNG) and by the program's decoder chain, with the
// size, the alpha and the pixels compared within the codec's tolerance; lossless coding of
// sources with alpha; the ICC profile carried; pictures beyond a format's limits refused with
// the file at the output path untouched.

#include "codec/ImageDecoder.h"
#include "codec/ModernWriters.h"
#include "codec/RasterWriters.h"
#include "export/FormatTable.h"

#include <QColorSpace>
#include <QFile>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// A photograph-like picture of odd size: smooth gradients and a few hard-edged blocks.
QImage photo(int width = 301, int height = 203) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, 128 + (x - y) / 4));
    QPainter painter(&image);
    painter.fillRect(20, 20, 60, 40, QColor(220, 30, 30));
    painter.fillRect(150, 100, 80, 60, QColor(30, 60, 200));
    return image;
}

// A drawing with alpha: a half-transparent disc and an opaque square on nothing.
QImage drawing(int width = 160, int height = 120) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(0, 160, 80, 128));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(10, 10, 90, 90);
    painter.fillRect(100, 60, 40, 40, QColor(250, 200, 0));
    return image;
}

// The format's own decoder, to PNG; a null image when it is missing or fails.
QImage readWithTool(const QByteArray& code, const QString& path, const QString& png) {
    QString tool;
    QStringList args;
    if (code == "WEBP") {
        tool = "dwebp";
        args = {path, "-o", png};
    } else if (code == "JXL ") {
        tool = "djxl";
        args = {path, png};
    } else {
        tool = "heif-convert";
        args = {path, png};
    }
    if (QStandardPaths::findExecutable(tool).isEmpty())
        return {};
    QProcess process;
    process.start(tool, args);
    if (!process.waitForFinished(120'000) || process.exitCode() != 0)
        return {};
    return QImage(png).convertToFormat(QImage::Format_ARGB32);
}

struct Difference {
    double meanColour = 0; // mean absolute difference a sample, over the visible pixels
    int maxAlpha = 0;      // largest difference of alpha
};

Difference compare(const QImage& a, const QImage& b) {
    const QImage x = a.convertToFormat(QImage::Format_ARGB32);
    const QImage y = b.convertToFormat(QImage::Format_ARGB32);
    Difference d;
    double sum = 0;
    qint64 count = 0;
    for (int row = 0; row < x.height(); ++row)
        for (int col = 0; col < x.width(); ++col) {
            const QRgb p = x.pixel(col, row), q = y.pixel(col, row);
            d.maxAlpha = std::max(d.maxAlpha, std::abs(qAlpha(p) - qAlpha(q)));
            if (qAlpha(p) < 255)
                continue; // the colour under a translucent pixel is rounded by the premultiply
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
                   std::abs(qBlue(p) - qBlue(q));
            count += 3;
        }
    d.meanColour = count ? sum / count : 0;
    return d;
}

uint32_t subtypeOf(const QByteArray& code) {
    return rasterSubtype(int(formatIndexForCode(QString::fromLatin1(code))));
}

void skipWithoutEncoder(const QByteArray& code) {
    if (!rasterWriterExists(subtypeOf(code)))
        QSKIP(qPrintable("no encoder for " + code + " on this machine"));
}

} // namespace

class tst_ModernWriters : public QObject {
    Q_OBJECT

private slots:
    void tableKeepsItsFirstNineteenEntries() {
        QCOMPARE(kFormatCount, 23);
        QCOMPARE(QByteArray(gformats_ns[18]), QByteArray("EPS "));
        QCOMPARE(QByteArray(gformats_ns[19]), QByteArray("WEBP"));
        QCOMPARE(QByteArray(gformats_ns[20]), QByteArray("AVIF"));
        QCOMPARE(QByteArray(gformats_ns[21]), QByteArray("HEIC"));
        QCOMPARE(QByteArray(gformats_ns[22]), QByteArray("JXL "));
        QCOMPARE(outputExtension(22), QString("JXL "));
        for (int i = 19; i < kFormatCount; ++i) {
            QVERIFY(isRasterFormat(i));
            QVERIFY(formatKeepsTransparentBackground(i));
        }
        QVERIFY(!isRasterFormat(kPdfFormat) && !isRasterFormat(kEpsFormat));
        // WebP and JPEG XL are linked in; the HEIF encoders are plugins of libheif.
        QVERIFY(rasterWriterExists(subtypeOf("WEBP")));
        QVERIFY(rasterWriterExists(subtypeOf("JXL ")));
    }

    void lossyPhotoReadsBack_data() {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<double>("tolerance"); // mean absolute error a sample, of 255
        QTest::newRow("WEBP") << QByteArray("WEBP") << 4.0;
        QTest::newRow("AVIF") << QByteArray("AVIF") << 4.0;
        QTest::newRow("HEIC") << QByteArray("HEIC") << 4.0;
        QTest::newRow("JXL ") << QByteArray("JXL ") << 4.0;
    }
    void lossyPhotoReadsBack() {
        QFETCH(QByteArray, code);
        QFETCH(double, tolerance);
        skipWithoutEncoder(code);
        QTemporaryDir dir;
        const QString path = dir.filePath("photo." + code);
        const QImage source = photo();
        QCOMPARE(writeRaster(source, path, subtypeOf(code), 300.0f), int16_t(0));

        const QImage tool = readWithTool(code, path, dir.filePath("tool.png"));
        QVERIFY2(!tool.isNull(), "the format's own decoder could not read the output");
        QCOMPARE(tool.size(), source.size());
        const Difference byTool = compare(source, tool);
        QVERIFY2(byTool.meanColour <= tolerance, qPrintable(QString::number(byTool.meanColour)));
        QCOMPARE(byTool.maxAlpha, 0); // opaque stays opaque
        // A lossy coding: not every pixel is kept.
        QVERIFY(byTool.meanColour > 0.0);

        const DecodedImage ours = ImageDecoder::decode(path);
        QVERIFY(ours.ok);
        QCOMPARE(ours.image.size(), source.size());
        QVERIFY(!ours.image.hasAlphaChannel());
        QVERIFY(compare(source, ours.image).meanColour <= tolerance);
        QCOMPARE(ImageDecoder::measure(path), QSizeF(source.size()));
    }

    void sourceWithAlphaIsLossless_data() {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<double>("tolerance");
        QTest::newRow("WEBP") << QByteArray("WEBP") << 0.0;
        // libheif 1.15 codes RGB through its identity-matrix 4:4:4 path: alpha is exact, a
        // colour sample may move by one level where the conversion rounds.
        QTest::newRow("AVIF") << QByteArray("AVIF") << 1.0;
        QTest::newRow("HEIC") << QByteArray("HEIC") << 1.0;
        QTest::newRow("JXL ") << QByteArray("JXL ") << 0.0;
    }
    void sourceWithAlphaIsLossless() {
        QFETCH(QByteArray, code);
        QFETCH(double, tolerance);
        skipWithoutEncoder(code);
        QTemporaryDir dir;
        const QString path = dir.filePath("drawing." + code);
        const QImage source = drawing();
        SourceTraits traits;
        traits.hasAlpha = true;
        QCOMPARE(writeRaster(source, path, subtypeOf(code), 72.0f, {}, traits), int16_t(0));
        const QImage tool = readWithTool(code, path, dir.filePath("tool.png"));
        QVERIFY(!tool.isNull());
        QCOMPARE(tool.size(), source.size());
        QVERIFY(tool.hasAlphaChannel());
        const Difference d = compare(source, tool);
        QVERIFY2(d.meanColour <= tolerance, qPrintable(QString::number(d.meanColour)));
        QCOMPARE(d.maxAlpha, 0);
        QCOMPARE(tool.pixelColor(5, 5).alpha(), 0);
        QCOMPARE(tool.pixelColor(55, 55).alpha(), 128);

        const DecodedImage ours = ImageDecoder::decode(path);
        QVERIFY(ours.ok);
        QVERIFY(ours.image.hasAlphaChannel());
        QCOMPARE(compare(source, ours.image).maxAlpha, 0);
    }

    void lossyAlphaIsKept_data() { lossyPhotoReadsBack_data(); }
    void lossyAlphaIsKept() {
        // A photograph turned on a transparent canvas: lossy coding, alpha kept.
        QFETCH(QByteArray, code);
        skipWithoutEncoder(code);
        QTemporaryDir dir;
        const QString path = dir.filePath("turned." + code);
        QImage source(200, 150, QImage::Format_ARGB32_Premultiplied);
        source.fill(Qt::transparent);
        {
            QPainter painter(&source);
            painter.drawImage(QRect(40, 30, 120, 90), photo(120, 90));
        }
        QCOMPARE(writeRaster(source, path, subtypeOf(code), 72.0f), int16_t(0));
        const QImage tool = readWithTool(code, path, dir.filePath("tool.png"));
        QVERIFY(!tool.isNull());
        QVERIFY(tool.hasAlphaChannel());
        QVERIFY(qAlpha(tool.pixel(5, 5)) <= 8);
        QVERIFY(qAlpha(tool.pixel(100, 75)) >= 247);
        QVERIFY(compare(source, tool).meanColour <= 6.0);
    }

    void iccProfileIsCarried_data() { lossyPhotoReadsBack_data(); }
    void iccProfileIsCarried() {
        QFETCH(QByteArray, code);
        skipWithoutEncoder(code);
        QTemporaryDir dir;
        const QString path = dir.filePath("p3." + code);
        QImage source = photo(64, 48);
        source.setColorSpace(QColorSpace::DisplayP3);
        QCOMPARE(writeRaster(source, path, subtypeOf(code), 72.0f), int16_t(0));
        // In the file's own colours: the view's decode converts them to sRGB.
        const DecodedImage ours = ImageDecoder::decode(path, ImageDecoder::Colours::Source);
        QVERIFY(ours.ok);
        const QColorSpace read = ours.image.colorSpace();
        QVERIFY(read.isValid());
        QCOMPARE(read.primaries(), QColorSpace::Primaries::DciP3D65);
    }

    void tooLargeIsRefusedAndTheFileStays_data() {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QSize>("size");
        QTest::newRow("WEBP") << QByteArray("WEBP") << QSize(16384, 2);
        QTest::newRow("AVIF") << QByteArray("AVIF") << QSize(2, 16385);
        QTest::newRow("HEIC") << QByteArray("HEIC") << QSize(16889, 2);
        QTest::newRow("JXL ") << QByteArray("JXL ") << QSize((1 << 18) + 1, 1);
    }
    void tooLargeIsRefusedAndTheFileStays() {
        QFETCH(QByteArray, code);
        QFETCH(QSize, size);
        skipWithoutEncoder(code);
        QTemporaryDir dir;
        const QString path = dir.filePath("big." + code);
        {
            QFile old(path);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write("the previous file");
        }
        QImage big(size, QImage::Format_RGB32);
        big.fill(Qt::gray);
        QCOMPARE(writeRaster(big, path, subtypeOf(code), 72.0f), kTooLargeForFormat);
        QFile old(path);
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("the previous file"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 1); // no temporary left
        QVERIFY(!writeFailureReason(kTooLargeForFormat).isEmpty());
    }

    void encodingDefaults() {
        const QImage opaque = photo(8, 8);
        QCOMPARE(modernEncodingFor(opaque, subtypeOf("WEBP"), false).quality, kWebpQuality);
        QCOMPARE(modernEncodingFor(opaque, subtypeOf("AVIF"), false).quality, kAvifQuality);
        QCOMPARE(modernEncodingFor(opaque, subtypeOf("HEIC"), false).quality, kHeicQuality);
        QVERIFY(!modernEncodingFor(opaque, subtypeOf("WEBP"), false).lossless);
        QVERIFY(modernEncodingFor(opaque, subtypeOf("WEBP"), true).lossless);
        QVERIFY(modernEncodingFor(opaque, subtypeOf("JXL "), false).icc.isEmpty());
        QImage p3 = opaque;
        p3.setColorSpace(QColorSpace::DisplayP3);
        QCOMPARE(modernEncodingFor(p3, subtypeOf("JXL "), false).icc,
                 QColorSpace(QColorSpace::DisplayP3).iccProfile());
    }
};

QTEST_MAIN(tst_ModernWriters)
#include "tst_ModernWriters.moc"
