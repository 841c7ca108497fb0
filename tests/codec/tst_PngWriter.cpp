// The PNG writer: pictures of every pixel form the renderer and the decoders hand it, written
// and read back by Qt's reader and by Magick's (libpng), pixel for pixel; the stream checked by
// zlib on its own; the resolution, the colour profile and the texts; pictures whose rows span
// several bands or one band each; the EXIF, XMP and IPTC chunks read back by libexiv2 and
// Magick; a device that fails.

#include "MagickPixels.h"
#include "SampleMetadata.h"
#include "codec/MagickSupport.h"
#include "codec/PngWriter.h"
#include "codec/RasterWriters.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QtEndian>
#include <QtTest>

#include <Magick++.h>
#include <zlib.h>

#include <random>

namespace {

// Noise over gradients: compresses like a photograph, and every filter gets chosen somewhere.
QImage photoLike(int w, int h, QImage::Format format, bool varyAlpha = false) {
    QImage image(w, h, QImage::Format_ARGB32);
    std::mt19937 random(7);
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int noise = int(random() % 9);
            const int alpha = varyAlpha ? (x * 7 + y * 3) % 256 : 255;
            row[x] =
                qRgba((x + noise) & 255, (y * 2 + noise) & 255, ((x ^ y) + noise) & 255, alpha);
        }
    }
    return image.convertToFormat(format);
}

QByteArray encode(const QImage& picture, float dpi = 72.0f, int16_t* status = nullptr,
                  const ImageMetadata& metadata = {}) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const int16_t s = writePng(picture, buffer, dpi, metadata);
    if (status)
        *status = s;
    return bytes;
}

QImage readWithQt(QByteArray bytes) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "png");
    return reader.read();
}

// Read by Magick's PNG coder, which is libpng: every CRC, the zlib stream and its Adler-32
// are checked by a reader that is not ours. ARGB32, straight alpha.
QImage readWithMagick(const QByteArray& bytes, double* dpi = nullptr) {
    ensureMagickInitialised();
    Magick::Blob blob(bytes.constData(), size_t(bytes.size()));
    Magick::Image image;
    image.read(blob);
    const QImage out = magickPixels(image);
    if (dpi)
        *dpi = image.xResolution() *
               (image.resolutionUnits() == Magick::PixelsPerCentimeterResolution ? 2.54 : 1.0);
    return out;
}

struct Chunk {
    QByteArray type;
    QByteArray data;
};

QList<Chunk> chunksOf(const QByteArray& png) {
    QList<Chunk> chunks;
    for (qsizetype at = 8; at + 12 <= png.size();) {
        const auto length = qFromBigEndian<quint32>(png.constData() + at);
        chunks.append({png.mid(at + 4, 4), png.mid(at + 8, length)});
        at += 12 + qsizetype(length);
    }
    return chunks;
}

// The IDAT chunks' stream inflated by zlib in one go: it must end exactly there, Adler-32 right.
QByteArray inflatedIdat(const QByteArray& png, qsizetype expected) {
    QByteArray stream;
    for (const Chunk& c : chunksOf(png))
        if (c.type == "IDAT")
            stream += c.data;
    QByteArray out(expected + 16, '\0');
    uLongf length = uLongf(out.size());
    const int status =
        uncompress(reinterpret_cast<Bytef*>(out.data()), &length,
                   reinterpret_cast<const Bytef*>(stream.constData()), uLong(stream.size()));
    return status == Z_OK ? out.left(qsizetype(length)) : QByteArray();
}

int colourTypeOf(const QByteArray& png) {
    return png.size() > 25 ? uint8_t(png.at(25)) : -1;
}

// A device that takes `room` bytes and then fails, as a full disk does.
class FullDevice : public QIODevice {
public:
    explicit FullDevice(qint64 room) : room(room) { open(QIODevice::WriteOnly); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 length) override {
        if (length > room)
            return -1;
        room -= length;
        return length;
    }

private:
    qint64 room;
};

} // namespace

class tst_PngWriter : public QObject {
    Q_OBJECT

private slots:
    void opaquePicturesBecomeRgb_data() {
        QTest::addColumn<int>("format");
        QTest::newRow("RGB32") << int(QImage::Format_RGB32);
        QTest::newRow("opaque ARGB32") << int(QImage::Format_ARGB32);
        QTest::newRow("opaque premultiplied") << int(QImage::Format_ARGB32_Premultiplied);
        QTest::newRow("RGB888") << int(QImage::Format_RGB888);
        QTest::newRow("RGB16, converted") << int(QImage::Format_RGB16);
    }
    void opaquePicturesBecomeRgb() {
        QFETCH(int, format);
        // 1500 x 1000: 4.5 MB of filtered rows, three bands.
        const QImage picture = photoLike(1500, 1000, QImage::Format(format));
        int16_t status = -100;
        const QByteArray png = encode(picture, 72.0f, &status);
        QCOMPARE(status, int16_t(0));
        QCOMPARE(colourTypeOf(png), 2);
        QCOMPARE(inflatedIdat(png, 1000 * (1 + 1500 * 3)).size(), 1000 * (1 + 1500 * 3));
        const QImage expected = picture.convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(readWithQt(png).convertToFormat(QImage::Format_ARGB32), expected);
        QCOMPARE(readWithMagick(png), expected);
    }

    void alphaIsKeptStraight() {
        const QImage straight = photoLike(700, 900, QImage::Format_ARGB32, true);
        const QByteArray png = encode(straight);
        QCOMPARE(colourTypeOf(png), 6);
        QCOMPARE(readWithMagick(png), straight);
        QCOMPARE(readWithQt(png).convertToFormat(QImage::Format_ARGB32), straight);

        // From premultiplied pixels, the straight values Qt itself gives for them.
        const QImage premultiplied = straight.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        const QByteArray png2 = encode(premultiplied);
        QCOMPARE(colourTypeOf(png2), 6);
        const QImage back = readWithMagick(png2);
        for (int y = 0; y < back.height(); y += 7)
            for (int x = 0; x < back.width(); x += 5) {
                const QRgb want = qUnpremultiply(premultiplied.pixel(x, y));
                QCOMPARE(back.pixel(x, y), qAlpha(want) ? want : qRgba(0, 0, 0, 0));
            }
    }

    void transparentCornersOfATurnedPicture() {
        QImage picture(300, 200, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        for (int y = 50; y < 150; ++y)
            for (int x = 100; x < 200; ++x)
                picture.setPixel(x, y, qRgb(10, 200, 30));
        const QImage back = readWithMagick(encode(picture));
        QCOMPARE(qAlpha(back.pixel(0, 0)), 0);
        QCOMPARE(back.pixel(150, 100), qRgb(10, 200, 30));
    }

    void greyStaysGrey() {
        const QImage grey = photoLike(333, 444, QImage::Format_Grayscale8);
        const QByteArray png = encode(grey);
        QCOMPARE(colourTypeOf(png), 0);
        const QImage back = readWithQt(png);
        QCOMPARE(back.format(), QImage::Format_Grayscale8);
        QCOMPARE(back, grey);
        QCOMPARE(readWithMagick(png), grey.convertToFormat(QImage::Format_ARGB32));
    }

    void oddShapes_data() {
        QTest::addColumn<QSize>("size");
        QTest::newRow("one pixel") << QSize(1, 1);
        QTest::newRow("one column") << QSize(1, 5000);
        // Rows longer than a band: each band holds one row.
        QTest::newRow("rows wider than a band") << QSize(800000, 3);
    }
    void oddShapes() {
        QFETCH(QSize, size);
        const QImage picture = photoLike(size.width(), size.height(), QImage::Format_RGB32);
        const QByteArray png = encode(picture);
        const qsizetype filtered = qsizetype(size.height()) * (1 + size.width() * 3);
        QCOMPARE(inflatedIdat(png, filtered).size(), filtered);
        const QImage expected = picture.convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(readWithQt(png).convertToFormat(QImage::Format_ARGB32), expected);
        if (size.width() <= 16000) // Magick's policy caps the width
            QCOMPARE(readWithMagick(png), expected);
    }

    void resolutionProfileAndTexts() {
        QImage picture = photoLike(64, 48, QImage::Format_RGB32);
        picture.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
        picture.setText(QStringLiteral("Description"), QStringLiteral("Bäume am See"));
        const QByteArray png = encode(picture, 150.0f);
        double dpi = 0;
        readWithMagick(png, &dpi);
        QVERIFY2(std::abs(dpi - 150.0) < 0.1, qPrintable(QString::number(dpi)));
        const QImage back = readWithQt(png);
        QCOMPARE(back.dotsPerMeterX(), 5906);
        QCOMPARE(back.dotsPerMeterY(), 5906);
        QVERIFY(back.colorSpace().isValid());
        QCOMPARE(back.colorSpace().primaries(), QColorSpace::Primaries::AdobeRgb);
        QCOMPARE(back.text(QStringLiteral("Description")), QStringLiteral("Bäume am See"));
    }

    void noResolutionGivenKeepsThePictures() {
        QImage picture = photoLike(20, 20, QImage::Format_RGB32);
        picture.setDotsPerMeterX(11811); // 300 dpi
        picture.setDotsPerMeterY(11811);
        QCOMPARE(readWithQt(encode(picture, 0.0f)).dotsPerMeterX(), 11811);
    }

    void metadataChunks() {
        const QImage picture = photoLike(300, 200, QImage::Format_RGB888);
        const QByteArray png = encode(picture, 72.0f, nullptr, cameraMetadata());
        QCOMPARE(readWithMagick(png), picture.convertToFormat(QImage::Format_ARGB32));
        QString missing;
        QVERIFY2(carriesCameraMetadata(png, &missing), qPrintable(missing));
        // ImageMagick's reader finds the EXIF and IPTC profiles in their raw-profile chunks.
        ensureMagickInitialised();
        Magick::Image image;
        image.read(Magick::Blob(png.constData(), size_t(png.size())));
        QCOMPARE(QString::fromStdString(image.attribute("exif:Make")), QString("Testcam"));
        QVERIFY(image.iptcProfile().length() > 0);
    }

    void failuresAreReported() {
        QCOMPARE(encode(QImage()).size(), 0);
        int16_t status = 0;
        encode(QImage(), 72.0f, &status);
        QCOMPARE(status, kNoPicture);
        const QImage picture = photoLike(400, 300, QImage::Format_RGB32);
        for (const qint64 room : {0, 20, 100, 5000}) {
            FullDevice full(room);
            QCOMPARE(writePng(picture, full, 72.0f), kWriteFailed);
        }
    }
};

QTEST_GUILESS_MAIN(tst_PngWriter)
#include "tst_PngWriter.moc"
