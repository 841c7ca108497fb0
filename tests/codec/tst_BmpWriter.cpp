// The BMP writer, read back by Qt's BMP reader and by Magick++: every pixel form it takes, widths
// whose rows need padding, grey pictures as 8-bit palette files, pictures with transparency
// (handed to Qt's writer), the resolution, a device that refuses the bytes, and the
// whole path through writeRaster.

#include "MagickPixels.h"
#include "codec/BmpWriter.h"
#include "codec/FormatRegistry.h"
#include "codec/RasterWriters.h"

#include <Magick++.h>

#include <QBuffer>
#include <QImageReader>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QImage randomPicture(int w, int h, QImage::Format format, bool transparent = false) {
    QImage image(w, h, QImage::Format_ARGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = (random.generate() & 0x00FFFFFFu) |
                      (transparent ? (x % 2 ? 0x80000000u : 0xFF000000u) : 0xFF000000u);
    }
    return image.convertToFormat(format);
}

QByteArray encoded(const QImage& picture, float dpi) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (writeBmp(picture, buffer, dpi) != 0)
        return QByteArray();
    return bytes;
}

QImage readWithQt(QByteArray bytes) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer, "bmp").read();
}

// The pixels as Magick++ reads them, as ARGB32.
QImage readWithMagick(const QByteArray& bytes) {
    Magick::Blob blob(bytes.constData(), size_t(bytes.size()));
    Magick::Image image;
    image.read(blob);
    return magickPixels(image);
}

uint16_t word(const QByteArray& bytes, int at) {
    return uint16_t(uchar(bytes[at]) | uchar(bytes[at + 1]) << 8);
}
uint32_t dword(const QByteArray& bytes, int at) {
    return uint32_t(word(bytes, at)) | uint32_t(word(bytes, at + 2)) << 16;
}

} // namespace

class TestBmpWriter : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Magick::InitializeMagick(nullptr); }

    void opaqueFormsReadBackTheSame_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("bits");
        QTest::newRow("RGB888, padded rows") << int(QImage::Format_RGB888) << 101 << 24;
        QTest::newRow("RGB32") << int(QImage::Format_RGB32) << 64 << 24;
        QTest::newRow("opaque ARGB32") << int(QImage::Format_ARGB32) << 30 << 24;
        QTest::newRow("grey, padded rows") << int(QImage::Format_Grayscale8) << 37 << 8;
        QTest::newRow("other forms are converted") << int(QImage::Format_RGB16) << 33 << 24;
    }
    void opaqueFormsReadBackTheSame() {
        QFETCH(int, format);
        QFETCH(int, width);
        QFETCH(int, bits);
        const QImage picture = randomPicture(width, 23, QImage::Format(format));
        const QByteArray bytes = encoded(picture, 300);
        QVERIFY(!bytes.isEmpty());
        QCOMPARE(bytes.left(2), QByteArray("BM"));
        QCOMPARE(int(word(bytes, 28)), bits);
        QCOMPARE(dword(bytes, 2), uint32_t(bytes.size())); // the size the header tells
        QCOMPARE(dword(bytes, 38), uint32_t(11811));       // 300 dpi in pixels per metre

        const QImage expected = picture.convertToFormat(QImage::Format_RGB32);
        const QImage qt = readWithQt(bytes);
        QCOMPARE(qt.size(), picture.size());
        QCOMPARE(qt.convertToFormat(QImage::Format_RGB32), expected);
        QCOMPARE(qt.dotsPerMeterX(), 11811);
        const QImage magick = readWithMagick(bytes);
        QCOMPARE(magick.size(), picture.size());
        QCOMPARE(magick.convertToFormat(QImage::Format_RGB32), expected);
    }

    void transparentPicturesGetTheirStraightColours() {
        const QImage picture = randomPicture(20, 10, QImage::Format_ARGB32, true);
        const QByteArray bytes = encoded(picture, 72);
        QVERIFY(!bytes.isEmpty());
        const QImage qt = readWithQt(bytes);
        QCOMPARE(qt.size(), picture.size());
        QCOMPARE(qt.convertToFormat(QImage::Format_RGB32),
                 picture.convertToFormat(QImage::Format_RGB32));
    }

    void refusedBytesAreAWriteFailure() {
        QBuffer closed; // never opened: every write fails
        QCOMPARE(writeBmp(randomPicture(8, 8, QImage::Format_RGB888), closed, 72), kWriteFailed);
    }

    void writeRasterUsesItForBmpFiles() {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.bmp");
        const QImage picture = randomPicture(45, 17, QImage::Format_RGB888);
        QCOMPARE(writeRaster(picture, path, fourCharCode("BMPf"), 72, {}, {}), int16_t(0));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QCOMPARE(int(word(bytes, 28)), 24);
        QCOMPARE(readWithMagick(bytes).convertToFormat(QImage::Format_RGB32),
                 picture.convertToFormat(QImage::Format_RGB32));
    }
};

QTEST_GUILESS_MAIN(TestBmpWriter)
#include "tst_BmpWriter.moc"
