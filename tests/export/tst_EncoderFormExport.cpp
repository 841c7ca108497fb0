// A JPEG photograph decoded for encoding (24-bit RGB) goes through the renderer and every raster
// writer: untouched at 72 dpi and angle 0, drawn like its 32-bit twin when turned, and written
// into exactly the file the same pixels in 32 bits give.

#include "codec/ImageDecoder.h"
#include "codec/RasterWriters.h"
#include "export/ExportRenderer.h"
#include "export/FormatTable.h"
#include "view/RotationGeometry.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using ImageDecoder::Colours;
using ImageDecoder::Layout;

QString writePhotograph(const QString& path, int w, int h) {
    QImage image(w, h, QImage::Format_RGB32);
    QRandomGenerator random(11);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb(x * 255 / w, y * 255 / h, int(random.bounded(256)));
    }
    image.setDotsPerMeterX(2835); // 72 dpi: the picture is written as its pixels are
    image.setDotsPerMeterY(2835);
    QImageWriter writer(path, "jpeg");
    writer.setQuality(85);
    return writer.write(image) ? path : QString();
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestEncoderFormExport : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    QString source;
    DecodedImage packed; // decoded for encoding
    DecodedImage wide;   // the same pixels in 32 bits

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        source = writePhotograph(dir.filePath(QStringLiteral("photo.jpg")), 157, 93);
        QVERIFY(!source.isEmpty());
        packed = ImageDecoder::decode(source, Colours::Source, Layout::Encoding);
        QVERIFY(packed.ok);
        QCOMPARE(packed.image.format(), QImage::Format_RGB888);
        wide = packed;
        wide.image = packed.image.convertToFormat(QImage::Format_RGB32);
    }

    void untouchedAtItsOwnSize() {
        const QRectF rect(QPointF(0, 0), packed.pointSize);
        const QImage out = renderExportPicture(packed, rect, rect, 8, 0, 1.0f);
        QCOMPARE(out.format(), QImage::Format_RGB888);
        QCOMPARE(out.cacheKey(), packed.image.cacheKey()); // no copy made
    }

    void turnedAndScaledLikeThe32BitTwin() {
        const float scale = 150.0f / 72.0f;
        const QRectF q(0, 0, packed.pointSize.width() * scale, packed.pointSize.height() * scale);
        const QRectF r = rotatedRectBounds(q, 30.0f);
        const QImage fromPacked = renderExportPicture(packed, r, q, 8, 30, scale);
        const QImage fromWide = renderExportPicture(wide, r, q, 8, 30, scale);
        QVERIFY(!fromPacked.isNull());
        QCOMPARE(fromPacked, fromWide);
    }

    void everyWriterWritesTheSameFile_data() {
        QTest::addColumn<int>("format");
        for (int index = 0; index < kFormatCount; ++index) {
            if (!isRasterFormat(index) || !rasterWriterExists(rasterSubtype(index)))
                continue;
            QTest::newRow(gformats_ns[index]) << index;
        }
    }
    void everyWriterWritesTheSameFile() {
        QFETCH(int, format);
        const uint32_t subtype = rasterSubtype(format);
        const QString suffix = outputExtension(format).trimmed();
        const QString fromPacked = dir.filePath(QStringLiteral("packed.") + suffix);
        const QString fromWide = dir.filePath(QStringLiteral("wide.") + suffix);
        QCOMPARE(writeRaster(packed.image, fromPacked, subtype, 72.0f), int16_t(0));
        QCOMPARE(writeRaster(wide.image, fromWide, subtype, 72.0f), int16_t(0));
        const QByteArray a = contents(fromPacked);
        QVERIFY(!a.isEmpty());
        if (a != contents(fromWide)) {
            // Encoders that stamp a time or run threads may differ in bytes: then the pictures
            // read back must still be the same.
            const DecodedImage x = ImageDecoder::decode(fromPacked);
            const DecodedImage y = ImageDecoder::decode(fromWide);
            QVERIFY(x.ok && y.ok);
            QCOMPARE(x.image.convertToFormat(QImage::Format_RGB32),
                     y.image.convertToFormat(QImage::Format_RGB32));
        }
    }
};

QTEST_MAIN(TestEncoderFormExport)
#include "tst_EncoderFormExport.moc"
