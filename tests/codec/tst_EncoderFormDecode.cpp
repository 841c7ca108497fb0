// Whole JPEGs decoded for an encoder (ImageDecoder::Layout::Encoding, read by TurboJPEG into
// 24-bit RGB) against the same files decoded for drawing by Qt's reader: the same pixels, the
// same turn, the same colour space; CMYK, damaged and lying files keep the result they had.

#include "codec/ImageDecoder.h"
#include "codec/TurboJpegDecoder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <turbojpeg.h>

#include <cstdlib>

#include "../view/LoadTestImages.h"
#include "TurboJpegEncode.h"

namespace {

using ImageDecoder::Colours;
using ImageDecoder::Layout;

// Gradients, edges and noise: every DCT and upsampling detail shows in it.
QImage photograph(int w, int h) {
    QImage image(w, h, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int noise = int(random.bounded(40));
            line[x] = qRgb((x * 255 / w + noise) % 256, (y * 255 / h) ^ (noise * 3),
                           ((x / 9 + y / 7) % 2) ? 230 - noise : 20 + noise);
        }
    }
    QPainter painter(&image);
    painter.setPen(QPen(Qt::red, 3));
    painter.drawEllipse(QRect(w / 5, h / 5, w / 2, h / 2));
    painter.end();
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    return image;
}

QByteArray qtJpeg(const QImage& image, bool progressive = false) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(90);
    writer.setProgressiveScanWrite(progressive);
    writer.write(image);
    return bytes;
}

using LoadTestImages::largestDifference;

} // namespace

class TestEncoderFormDecode : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        if (!LoadTestImages::writeBytes(path, bytes))
            return QString();
        return path;
    }

    // Decodes `path` both ways and checks that they agree: the same success, size, point size
    // and colour space, and pixels within one level.
    void compareBothWays(const QString& path, QImage::Format expected) {
        const DecodedImage drawing = ImageDecoder::decode(path, Colours::Source, Layout::Drawing);
        const DecodedImage encoding = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QCOMPARE(encoding.ok, drawing.ok);
        if (!drawing.ok)
            return;
        QCOMPARE(encoding.image.format(), expected);
        QCOMPARE(encoding.image.size(), drawing.image.size());
        QCOMPARE(encoding.pointSize, drawing.pointSize);
        QCOMPARE(encoding.image.colorSpace(), drawing.image.colorSpace());
        QVERIFY2(largestDifference(encoding.image, drawing.image) <= 1,
                 qPrintable(QString::number(largestDifference(encoding.image, drawing.image))));
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void samePixelsAsQtsReader_data() {
        QTest::addColumn<QByteArray>("bytes");
        const QImage picture = photograph(203, 131); // odd sides: partial MCUs on both edges
        QTest::newRow("Qt 4:2:0") << qtJpeg(picture);
        QTest::newRow("progressive") << qtJpeg(picture, true);
        QTest::newRow("4:4:4") << turboJpeg(picture, TJPF_BGRX, TJSAMP_444);
        QTest::newRow("4:2:2") << turboJpeg(picture, TJPF_BGRX, TJSAMP_422);
        QTest::newRow("4:4:0") << turboJpeg(picture, TJPF_BGRX, TJSAMP_440);
        QTest::newRow("4:1:1") << turboJpeg(picture, TJPF_BGRX, TJSAMP_411);
    }
    void samePixelsAsQtsReader() {
        QFETCH(QByteArray, bytes);
        QVERIFY(!bytes.isEmpty());
        const QString path = write(QStringLiteral("photo.jpg"), bytes);
        QVERIFY(!TurboJpegDecoder::decode(path).isNull());
        compareBothWays(path, QImage::Format_RGB888);
    }

    void recordedResolutionGivesTheDrawingForm() {
        // Exported at 72 dpi a 300-dpi photograph is scaled, so drawn: it comes in 32 bits, with
        // no 24-bit copy beside the drawing.
        QImage picture = photograph(90, 60);
        picture.setDotsPerMeterX(11811);
        picture.setDotsPerMeterY(11811);
        const QString path = write(QStringLiteral("dense.jpg"), qtJpeg(picture));
        const DecodedImage encoding = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QVERIFY(encoding.ok);
        QCOMPARE(encoding.image.format(), QImage::Format_RGB32);
        QCOMPARE(encoding.pointSize, QSizeF(90 * 72.0 / 300, 60 * 72.0 / 300));
        const DecodedImage drawing = ImageDecoder::decode(path, Colours::Source, Layout::Drawing);
        QCOMPARE(encoding.image, drawing.image);
    }

    void everyOrientationTurnsTheSame_data() {
        QTest::addColumn<int>("orientation");
        for (int o = 1; o <= 8; ++o)
            QTest::newRow(qPrintable(QStringLiteral("orientation %1").arg(o))) << o;
    }
    void everyOrientationTurnsTheSame() {
        QFETCH(int, orientation);
        const QByteArray jpeg =
            LoadTestImages::withExifOrientation(qtJpeg(photograph(96, 40)), quint16(orientation));
        const QString path = write(QStringLiteral("turned%1.jpg").arg(orientation), jpeg);
        compareBothWays(path, QImage::Format_RGB888);
        const DecodedImage decoded = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QCOMPARE(decoded.image.width(), orientation >= 5 ? 40 : 96);
    }

    void embeddedProfileIsKept() {
        QImage picture = photograph(64, 48);
        picture.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
        const QString path = write(QStringLiteral("p3.jpg"), qtJpeg(picture));
        const DecodedImage decoded = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.format(), QImage::Format_RGB888);
        QVERIFY(decoded.image.colorSpace().isValid());
        QCOMPARE(decoded.image.colorSpace().primaries(), QColorSpace::Primaries::DciP3D65);
        compareBothWays(path, QImage::Format_RGB888);
        // Converted for the screen, the 24-bit picture gives the colours Qt's reader gives.
        const DecodedImage shown = ImageDecoder::decode(path, Colours::Display, Layout::Drawing);
        const DecodedImage shownPacked =
            ImageDecoder::decode(path, Colours::Display, Layout::Encoding);
        QVERIFY(largestDifference(shown.image, shownPacked.image) <= 1);
    }

    void greyStaysGrey() {
        const QImage grey = photograph(77, 51).convertToFormat(QImage::Format_Grayscale8);
        const QString path = write(QStringLiteral("grey.jpg"), qtJpeg(grey));
        compareBothWays(path, QImage::Format_Grayscale8);
    }

    void cmykGoesToQtsReader() {
        // TurboJPEG writes 4-channel pixels as an Adobe YCCK JPEG.
        const QByteArray bytes = turboJpeg(photograph(40, 30), TJPF_CMYK, TJSAMP_444);
        QVERIFY(!bytes.isEmpty());
        const QString path = write(QStringLiteral("cmyk.jpg"), bytes);
        QVERIFY(TurboJpegDecoder::decode(path).isNull());
        const DecodedImage drawing = ImageDecoder::decode(path, Colours::Source, Layout::Drawing);
        QVERIFY(drawing.ok);
        compareBothWays(path, drawing.image.format());
    }

    void truncatedFileDecodesAsBefore() {
        const QByteArray whole = qtJpeg(photograph(160, 120));
        const QString path = write(QStringLiteral("cut.jpg"), whole.left(whole.size() * 3 / 5));
        QVERIFY(TurboJpegDecoder::decode(path).isNull());
        const DecodedImage drawing = ImageDecoder::decode(path, Colours::Source, Layout::Drawing);
        const DecodedImage encoding = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QVERIFY(drawing.ok); // Qt's reader gives the rows it has
        QVERIFY(encoding.ok);
        QCOMPARE(encoding.image, drawing.image);
    }

    void damagedScanDecodesAsBefore() {
        QByteArray bytes = qtJpeg(photograph(160, 120));
        for (qsizetype i = bytes.size() / 2; i < bytes.size() / 2 + 40; ++i)
            bytes[i] = char(0xFF); // markers in the middle of the entropy-coded data
        const QString path = write(QStringLiteral("damaged.jpg"), bytes);
        QVERIFY(TurboJpegDecoder::decode(path).isNull());
        const DecodedImage drawing = ImageDecoder::decode(path, Colours::Source, Layout::Drawing);
        const DecodedImage encoding = ImageDecoder::decode(path, Colours::Source, Layout::Encoding);
        QVERIFY(drawing.ok); // Qt's reader gives what it can make of the scan
        QVERIFY(encoding.ok);
        QVERIFY(largestDifference(encoding.image, drawing.image) <= 1);
    }

    void hugeHeaderIsRefusedBeforeAnyBuffer() {
        QByteArray bytes = qtJpeg(photograph(32, 32));
        const qsizetype sof = bytes.indexOf(QByteArray("\xFF\xC0", 2));
        QVERIFY(sof > 0);
        // Height and width: 60000 x 60000, 3.6 gigapixels in a file of a few hundred bytes.
        bytes[sof + 5] = char(0xEA);
        bytes[sof + 6] = char(0x60);
        bytes[sof + 7] = char(0xEA);
        bytes[sof + 8] = char(0x60);
        const QString path = write(QStringLiteral("huge.jpg"), bytes);
        QVERIFY(TurboJpegDecoder::decode(path).isNull());
        QVERIFY(!ImageDecoder::decode(path, Colours::Source, Layout::Encoding).ok);
    }

    void notAJpegIsNotMine() {
        QCOMPARE(TurboJpegDecoder::decode(dir.filePath(QStringLiteral("missing.jpg"))).isNull(),
                 true);
        const QString text = write(QStringLiteral("text.jpg"), QByteArray("not a picture"));
        QVERIFY(TurboJpegDecoder::decode(text).isNull());
        QVERIFY(!ImageDecoder::decode(text, Colours::Source, Layout::Encoding).ok);
        // Other formats decoded for encoding keep their usual form.
        const QString png = dir.filePath(QStringLiteral("photo.png"));
        QVERIFY(photograph(20, 10).save(png));
        QCOMPARE(ImageDecoder::decode(png, Colours::Source, Layout::Encoding).image.format(),
                 QImage::Format_RGB32);
    }
};

QTEST_MAIN(TestEncoderFormDecode)
#include "tst_EncoderFormDecode.moc"
