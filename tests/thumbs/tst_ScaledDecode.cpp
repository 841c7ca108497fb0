// Decoding at thumbnail size: JPEG scaled while decoding or taken from its EXIF thumbnail when
// that is large enough, PDF and SVG drawn at the size asked, and the decoder's limits kept.

#include "codec/ImageDecoder.h"

#include "ThumbTestFiles.h"

#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

using namespace ThumbTestFiles;

namespace {

QByteArray jpegBytes(QSize size, QColor colour) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 90);
    return bytes;
}

void putU16(QByteArray& b, quint16 v) { b.append(char(v & 0xFF)).append(char(v >> 8)); }
void putU32(QByteArray& b, quint32 v) { putU16(b, quint16(v & 0xFFFF)); putU16(b, quint16(v >> 16)); }
void putEntry(QByteArray& b, quint16 tag, quint16 type, quint32 value) {
    putU16(b, tag);
    putU16(b, type);
    putU32(b, 1);
    if (type == 3) {
        putU16(b, quint16(value));
        putU16(b, 0);
    } else {
        putU32(b, value);
    }
}

// A JPEG of `size` in `colour` whose EXIF block holds `thumbnail` and, unless 1, an orientation.
QByteArray jpegWithExifThumbnail(QSize size, QColor colour, const QByteArray& thumbnail,
                                 int orientation = 1) {
    QByteArray tiff("II*\0", 4);
    putU32(tiff, 8);
    // IFD0 at 8: one entry, the orientation.
    putU16(tiff, 1);
    putEntry(tiff, 0x0112, 3, quint32(orientation));
    putU32(tiff, 26); // IFD1 right after
    // IFD1 at 26: compression 6 (JPEG), offset and length of the thumbnail.
    putU16(tiff, 3);
    putEntry(tiff, 0x0103, 3, 6);
    putEntry(tiff, 0x0201, 4, 68);
    putEntry(tiff, 0x0202, 4, quint32(thumbnail.size()));
    putU32(tiff, 0);
    tiff.append(thumbnail);
    QByteArray app1("\xFF\xE1", 2);
    const quint16 length = quint16(2 + 6 + tiff.size());
    app1.append(char(length >> 8)).append(char(length & 0xFF));
    app1.append(QByteArray("Exif\0\0", 6)).append(tiff);
    QByteArray main = jpegBytes(size, colour);
    return main.left(2) + app1 + main.mid(2);
}

} // namespace

class tst_ScaledDecode : public QObject {
    Q_OBJECT

    QTemporaryDir files;

private slots:
    void aJpegComesAtTheSizeAsked() {
        const QString path = writeBytes(files.path(), "big.jpg", jpegBytes({2000, 1000}, Qt::red));
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(128, 64));
        QVERIFY(near(centreOf(decoded.image), Qt::red));
    }

    void aSmallPictureIsNotEnlarged() {
        const QString path = writePicture(files.path(), "small.png", {60, 30}, Qt::blue);
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(60, 30));
    }

    void aLargeEnoughExifThumbnailIsUsed() {
        const QString path = writeBytes(
            files.path(), "camera.jpg",
            jpegWithExifThumbnail({1600, 1200}, Qt::red, jpegBytes({160, 120}, Qt::green)));
        DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(128, 96));
        QVERIFY(near(centreOf(decoded.image), Qt::green, 20)); // the thumbnail, not the picture
        // Too small for 256: the picture itself, scaled while decoding.
        decoded = ImageDecoder::decodeScaled(path, 256);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(256, 192));
        QVERIFY(near(centreOf(decoded.image), Qt::red, 20));
        // And the whole decode never looks at it.
        QVERIFY(near(centreOf(ImageDecoder::decode(path).image), Qt::red, 20));
    }

    void aThumbnailOfOtherProportionsIsNotUsed() {
        const QString path = writeBytes(
            files.path(), "padded.jpg",
            jpegWithExifThumbnail({1600, 900}, Qt::red, jpegBytes({160, 120}, Qt::green)));
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(128, 72));
        QVERIFY(near(centreOf(decoded.image), Qt::red, 20));
    }

    void aDamagedExifThumbnailFallsBackToThePicture() {
        const QString path = writeBytes(
            files.path(), "damaged.jpg",
            jpegWithExifThumbnail({1600, 1200}, Qt::red, QByteArray(5000, '\xFF')));
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(128, 96));
        QVERIFY(near(centreOf(decoded.image), Qt::red, 20));
        // Cut inside the EXIF block: no thumbnail, no picture, no crash.
        const QByteArray whole = jpegWithExifThumbnail({1600, 1200}, Qt::red,
                                                       jpegBytes({160, 120}, Qt::green));
        const QString cut = writeBytes(files.path(), "cut.jpg", whole.left(60));
        QVERIFY(!ImageDecoder::decodeScaled(cut, 128).ok);
    }

    void theOrientationIsApplied() {
        // Orientation 6: turned a quarter clockwise to be seen upright.
        const QString path = writeBytes(
            files.path(), "turned.jpg",
            jpegWithExifThumbnail({1600, 1200}, Qt::red, jpegBytes({160, 120}, Qt::green), 6));
        DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(96, 128));
        decoded = ImageDecoder::decodeScaled(path, 256);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(192, 256));
    }

    void aPdfPageIsDrawnAtThumbnailSize() {
        const QString path = files.path() + "/page.pdf";
        {
            QPdfWriter writer(path);
            writer.setPageSize(QPageSize(QPageSize::A4));
            QPainter painter(&writer);
            painter.fillRect(painter.window(), Qt::blue);
        }
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QVERIFY2(std::abs(decoded.image.height() - 128) <= 1,
                 qPrintable(QString::number(decoded.image.height())));
        QVERIFY(decoded.image.width() < decoded.image.height());
        QVERIFY(near(centreOf(decoded.image), Qt::blue, 20));
    }

    void anSvgIsDrawnAtThumbnailSize() {
        const QString path = writeBytes(
            files.path(), "shape.svg",
            "<svg xmlns='http://www.w3.org/2000/svg' width='1000' height='500'>"
            "<rect width='1000' height='500' fill='#ff0000'/></svg>");
        const DecodedImage decoded = ImageDecoder::decodeScaled(path, 128);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(128, 64));
        QVERIFY(near(centreOf(decoded.image), Qt::red));
    }

    void aBombIsRefused() {
        // A PNG header that claims 100000 x 100000 pixels.
        QByteArray png("\x89PNG\r\n\x1a\n", 8);
        QByteArray ihdr("IHDR");
        QByteArray body(13, '\0');
        qToBigEndian<quint32>(100000, body.data());
        qToBigEndian<quint32>(100000, body.data() + 4);
        body[8] = 8;
        body[9] = 2;
        ihdr += body;
        QByteArray length(4, '\0');
        qToBigEndian<quint32>(13, length.data());
        png += length + ihdr + QByteArray(4, '\0');
        const QString path = writeBytes(files.path(), "bomb.png", png);
        QVERIFY(!ImageDecoder::decodeScaled(path, 128).ok);
        QVERIFY(!ImageDecoder::decodeScaled(files.path(), 128).ok); // a folder
        QVERIFY(!ImageDecoder::decodeScaled(files.path() + "/none.png", 128).ok);
    }
};

QTEST_MAIN(tst_ScaledDecode)
#include "tst_ScaledDecode.moc"
