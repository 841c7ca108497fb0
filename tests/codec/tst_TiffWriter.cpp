// The TIFF writer, read back by Qt's TIFF reader: every pixel form it takes, odd widths (rows
// with padding), both alpha forms, the resolution and the colour profile, and a device that
// refuses the bytes. The EXIF, XMP and IPTC it carries are read back by libtiff itself and by
// libexiv2; a damaged EXIF block costs the metadata, never the picture.

#include "SampleMetadata.h"
#include "codec/RasterWriters.h"
#include "codec/TiffWriter.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <tiffio.h>

namespace {

QImage randomPicture(int w, int h, QImage::Format format) {
    QImage image(w, h, QImage::Format_ARGB32);
    QRandomGenerator random(3);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = random.generate() | (format == QImage::Format_ARGB32 ||
                                                   format == QImage::Format_ARGB32_Premultiplied
                                               ? 0u
                                               : 0xFF000000u);
    }
    return image.convertToFormat(format);
}

QImage readBack(QByteArray bytes) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "tiff");
    return reader.read();
}

QByteArray encoded(const QImage& picture, float dpi, const ImageMetadata& metadata = {}) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly); // as the output file: libtiff only writes
    if (writeTiff(picture, buffer, dpi, metadata) != 0)
        return QByteArray();
    return bytes;
}

} // namespace

class TestTiffWriter : public QObject {
    Q_OBJECT

private slots:
    void everyFormReadsBackTheSame_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("width");
        QTest::newRow("RGB888, padded rows") << int(QImage::Format_RGB888) << 101;
        QTest::newRow("RGB32") << int(QImage::Format_RGB32) << 64;
        QTest::newRow("grey, padded rows") << int(QImage::Format_Grayscale8) << 37;
        QTest::newRow("straight alpha") << int(QImage::Format_ARGB32) << 50;
        QTest::newRow("premultiplied alpha") << int(QImage::Format_ARGB32_Premultiplied) << 50;
        QTest::newRow("other forms are converted") << int(QImage::Format_RGB16) << 33;
    }
    void everyFormReadsBackTheSame() {
        QFETCH(int, format);
        QFETCH(int, width);
        // Tall enough for several strips of 256 KB.
        const QImage picture = randomPicture(width, 3000, QImage::Format(format));
        const QByteArray bytes = encoded(picture, 300.0f);
        QVERIFY(!bytes.isEmpty());
        const QImage back = readBack(bytes);
        QCOMPARE(back.size(), picture.size());
        QCOMPARE(qRound(back.dotsPerMeterX() * 0.0254), 300);
        QCOMPARE(qRound(back.dotsPerMeterY() * 0.0254), 300);
        if (format == QImage::Format_Grayscale8) {
            QCOMPARE(back.convertToFormat(QImage::Format_Grayscale8), picture);
            return;
        }
        // Compared as straight ARGB: colours under a low alpha are known only to within the
        // rounding of a premultiplication (of the picture's, or of Qt's reader).
        const QImage want = picture.convertToFormat(QImage::Format_ARGB32);
        const QImage got = back.convertToFormat(QImage::Format_ARGB32);
        const bool alpha = picture.hasAlphaChannel();
        for (int y = 0; y < want.height(); ++y)
            for (int x = 0; x < want.width(); ++x) {
                const QRgb a = want.pixel(x, y);
                const QRgb b = got.pixel(x, y);
                QCOMPARE(qAlpha(b), qAlpha(a));
                if (qAlpha(a) == 0)
                    continue;
                const int allowed = alpha && qAlpha(a) < 255 ? 255 / qAlpha(a) + 1 : 0;
                QVERIFY2(std::abs(qRed(a) - qRed(b)) <= allowed &&
                             std::abs(qGreen(a) - qGreen(b)) <= allowed &&
                             std::abs(qBlue(a) - qBlue(b)) <= allowed,
                         qPrintable(QStringLiteral("%1,%2: %3 for %4")
                                        .arg(x)
                                        .arg(y)
                                        .arg(b, 8, 16)
                                        .arg(a, 8, 16)));
            }
    }

    void opaquePictureWithAlphaFormIsWrittenOpaque() {
        // A scaled, unturned photograph: drawn on a premultiplied bitmap, every pixel opaque.
        const QImage picture = randomPicture(30, 20, QImage::Format_RGB32)
                                   .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        const QImage back = readBack(encoded(picture, 72.0f));
        QVERIFY(!back.isNull());
        QVERIFY(!back.hasAlphaChannel()); // three samples a pixel, no extra one
        QCOMPARE(back.convertToFormat(QImage::Format_RGB32),
                 picture.convertToFormat(QImage::Format_RGB32));
        // A picture that does use its alpha keeps it.
        QVERIFY(readBack(encoded(randomPicture(30, 20, QImage::Format_ARGB32_Premultiplied), 72.0f))
                    .hasAlphaChannel());
    }

    void colourProfileIsKept() {
        QImage picture = randomPicture(20, 10, QImage::Format_RGB888);
        picture.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
        const QImage back = readBack(encoded(picture, 72.0f));
        QVERIFY(back.colorSpace().isValid());
        QCOMPARE(back.colorSpace().primaries(), QColorSpace::Primaries::AdobeRgb);
    }

    void metadataIsStreamedIntoTheFile() {
        const QImage picture = randomPicture(61, 2000, QImage::Format_RGB888);
        const QByteArray bytes = encoded(picture, 150.0f, cameraMetadata());
        QVERIFY(!bytes.isEmpty());
        QCOMPARE(readBack(bytes).convertToFormat(QImage::Format_RGB888), picture);

        // libtiff finds the EXIF and GPS directories where the first directory points.
        QTemporaryDir dir;
        const QString path = dir.filePath("camera.tif");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        TIFF* tiff = TIFFOpen(path.toLocal8Bit().constData(), "r");
        QVERIFY(tiff);
        char* make = nullptr;
        QVERIFY(TIFFGetField(tiff, TIFFTAG_MAKE, &make));
        QCOMPARE(QString(make), QString("Testcam"));
        uint32_t width = 0;
        QVERIFY(TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width));
        QCOMPARE(int(width), 61);
        toff_t exifOffset = 0;
        QVERIFY(TIFFGetField(tiff, TIFFTAG_EXIFIFD, &exifOffset));
        QVERIFY(TIFFReadEXIFDirectory(tiff, exifOffset));
        char* taken = nullptr;
        QVERIFY(TIFFGetField(tiff, EXIFTAG_DATETIMEORIGINAL, &taken));
        QCOMPARE(QString(taken), QString("2024:05:01 10:20:30"));
        TIFFClose(tiff);

        // libexiv2 reads every block, the tags libtiff does not know included; the orientation
        // and the resolution are the writer's.
        QString missing;
        QVERIFY2(carriesCameraMetadata(bytes, &missing), qPrintable(missing));
        const Exiv2::ExifData exif = exivRead(bytes)->exifData();
        QCOMPARE(exivValue(exif, "Exif.Image.Orientation"), QString("1"));
        QCOMPARE(exivValue(exif, "Exif.Image.XResolution"), QString("150/1"));
    }

    void damagedExifBlockCostsOnlyTheMetadata_data() {
        QTest::addColumn<QByteArray>("block");
        const QByteArray good = cameraMetadata().exif;
        QTest::newRow("truncated") << good.left(good.size() / 2);
        QTest::newRow("big-endian header") << QByteArray("MM\0*\0\0\0\x08", 8) + good.mid(8);
        QByteArray farDirectory = good;
        farDirectory[4] = '\xff';
        farDirectory[7] = '\x7f';
        QTest::newRow("directory past the end") << farDirectory;
        QByteArray manyEntries("II*\0\x08\0\0\0\xff\xff", 10);
        manyEntries += QByteArray(40, '\x11');
        QTest::newRow("65535 entries") << manyEntries;
        QByteArray farValues = good;
        for (int i = 10; i + 12 <= 10 + 12 * 4; i += 12) // the entries' values point far away
            farValues.replace(i + 8, 4, QByteArray("\xf0\xff\xff\x7f", 4));
        QTest::newRow("values past the end") << farValues;
        QTest::newRow("noise") << QByteArray(300, '\x5a');
    }
    void damagedExifBlockCostsOnlyTheMetadata() {
        QFETCH(QByteArray, block);
        ImageMetadata metadata;
        metadata.exif = block;
        const QImage picture = randomPicture(33, 20, QImage::Format_RGB888);
        const QImage back = readBack(encoded(picture, 72.0f, metadata));
        QCOMPARE(back.convertToFormat(QImage::Format_RGB888), picture);
    }

    void refusedBytesAreAFailure() {
        QByteArray bytes;
        QBuffer readOnly(&bytes);
        readOnly.open(QIODevice::ReadOnly);
        QVERIFY(writeTiff(randomPicture(40, 40, QImage::Format_RGB888), readOnly, 72.0f) != 0);
    }
};

QTEST_MAIN(TestTiffWriter)
#include "tst_TiffWriter.moc"
