// The readers of the modern formats and camera RAW in the decoder chain: DNG files made here
// demosaiced with their colours and orientation, their embedded preview used for thumbnails,
// the other RAW suffixes handed to libraw, HEIC/AVIF/JPEG XL/WebP read by their own decoders,
// and damaged, truncated and lying files refused without a crash or a hang.

#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"
#include "codec/ModernDecoders.h"
#include "codec/RasterWriters.h"

#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

#include "DngWriter.h"

namespace {

// Red on the left half, blue on the right.
QImage redBlue(int width = 96, int height = 64) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, QColor(200, 20, 20));
    painter.fillRect(width / 2, 0, width - width / 2, height, QColor(20, 20, 200));
    return image;
}

bool reddish(QRgb c) {
    return qRed(c) > qGreen(c) + 40 && qRed(c) > qBlue(c) + 40;
}
bool bluish(QRgb c) {
    return qBlue(c) > qGreen(c) + 40 && qBlue(c) > qRed(c) + 40;
}
bool greenish(QRgb c) {
    return qGreen(c) > qRed(c) + 40 && qGreen(c) > qBlue(c) + 40;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void save(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

uint32_t subtype(const char (&code)[5]) {
    return fourCharCode(code);
}

} // namespace

class tst_ModernDecoders : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

private slots:
    void readableSuffixesComeFromTheRegistry() {
        const QStringList readable = ImageDecoder::readableSuffixes();
        for (const char* s : {"webp", "avif", "heic", "heif", "jxl", "dng", "cr2", "cr3", "nef",
                              "arw", "orf", "raf", "rw2"})
            QVERIFY2(readable.contains(QLatin1String(s)), s);
        QVERIFY(FormatRegistry::ownReaderSuffixes().contains("rw2"));
        QCOMPARE(FormatRegistry::ownReaderForSuffix("nef"), OwnReader::Raw);
        QCOMPARE(FormatRegistry::ownReaderForSuffix("avif"), OwnReader::Heif);
        QCOMPARE(FormatRegistry::ownReaderForSuffix("jpg"), OwnReader::None);
    }

    void dngIsDemosaicedWithItsColours() {
        const QString path = dir.filePath("plain.dng");
        QVERIFY(DngWriter::write(path, {redBlue(), 1, {}}));
        QCOMPARE(ModernDecoders::readerFor(path), OwnReader::Raw);
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(96, 64));
        QCOMPARE(decoded.pointSize, QSizeF(96, 64));
        QVERIFY(reddish(decoded.image.pixel(20, 32)));
        QVERIFY(bluish(decoded.image.pixel(76, 32)));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(96, 64));
    }

    void cameraOrientationIsApplied() {
        // Orientation 6: the camera was turned a quarter clockwise; the left of the sensor is
        // the top of the picture.
        const QString path = dir.filePath("turned.dng");
        QVERIFY(DngWriter::write(path, {redBlue(), 6, {}}));
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(64, 96));
        QVERIFY(reddish(decoded.image.pixel(32, 20)));
        QVERIFY(bluish(decoded.image.pixel(32, 76)));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(64, 96));
        const DecodedImage thumb = ImageDecoder::decodeScaled(path, 32);
        QVERIFY(thumb.ok);
        QVERIFY(thumb.image.height() > thumb.image.width());
    }

    void thumbnailsComeFromTheEmbeddedPreview() {
        // The preview is green, the raw red and blue: which one a thumbnail shows tells where
        // it came from. Qt's TIFF reader would show the preview for the whole picture too.
        QImage preview(48, 32, QImage::Format_RGB32);
        preview.fill(QColor(20, 200, 20));
        const QString path = dir.filePath("preview.dng");
        QVERIFY(DngWriter::write(path, {redBlue(), 1, preview}));
        const DecodedImage thumb = ImageDecoder::decodeScaled(path, 24);
        QVERIFY(thumb.ok);
        QCOMPARE(thumb.image.size(), QSize(24, 16));
        QVERIFY(greenish(thumb.image.pixel(12, 8)));
        const DecodedImage full = ImageDecoder::decode(path);
        QVERIFY(full.ok);
        QCOMPARE(full.image.size(), QSize(96, 64));
        QVERIFY(reddish(full.image.pixel(20, 32)));
    }

    void otherRawSuffixesGoToLibraw_data() {
        QTest::addColumn<QString>("suffix");
        for (const char* s : {"cr2", "cr3", "nef", "arw", "orf", "raf", "rw2", "DNG", "NEF"})
            QTest::newRow(s) << QString::fromLatin1(s);
    }
    void otherRawSuffixesGoToLibraw() {
        QFETCH(QString, suffix);
        QImage preview(48, 32, QImage::Format_RGB32);
        preview.fill(QColor(20, 200, 20));
        const QString path = dir.filePath("camera." + suffix);
        QVERIFY(DngWriter::write(path, {redBlue(), 1, preview}));
        QCOMPARE(ModernDecoders::readerFor(path), OwnReader::Raw);
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(96, 64)); // the raw, not the 48 x 32 preview
        QVERIFY(reddish(decoded.image.pixel(20, 32)));
    }

    void modernFilesAreRecognisedByContent_data() {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<int>("reader");
        QTest::newRow("AVIF") << QByteArray("AVIF") << int(OwnReader::Heif);
        QTest::newRow("HEIC") << QByteArray("HEIC") << int(OwnReader::Heif);
        QTest::newRow("JXL ") << QByteArray("JXL ") << int(OwnReader::Jxl);
        QTest::newRow("WEBP") << QByteArray("WEBP") << int(OwnReader::None); // Qt's reader
    }
    void modernFilesAreRecognisedByContent() {
        QFETCH(QByteArray, code);
        QFETCH(int, reader);
        const uint32_t type = fourCharCode(*reinterpret_cast<const char(*)[5]>(code.constData()));
        if (!rasterWriterExists(type))
            QSKIP("no encoder for this format here");
        // Named .jpg: the content decides.
        const QString path = dir.filePath("misnamed-" + code.trimmed() + ".jpg");
        QVERIFY(writeRaster(redBlue(), path, type, 72.0f) == 0);
        QCOMPARE(int(ModernDecoders::readerFor(path)), reader);
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(96, 64));
        QVERIFY(reddish(decoded.image.pixel(20, 32)));
        const DecodedImage thumb = ImageDecoder::decodeScaled(path, 48);
        QVERIFY(thumb.ok);
        QCOMPARE(thumb.image.size(), QSize(48, 32));
    }

    void damagedFilesAreRefused_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        const QString dng = dir.filePath("whole.dng");
        DngWriter::write(dng, {redBlue(256, 192), 1, {}});
        const QByteArray raw = contents(dng);
        QTest::newRow("dng half") << QString("half.dng") << raw.left(raw.size() / 2);
        QTest::newRow("dng header") << QString("header.dng") << raw.left(200);
        QTest::newRow("nef noise") << QString("noise.nef") << QByteArray(4096, '\x5a');
        QTest::newRow("cr3 empty") << QString("empty.cr3") << QByteArray();
        QTest::newRow("rw2 text") << QString("text.rw2") << QByteArray("not a picture at all\n");
        for (const char* c : {"AVIF", "HEIC", "JXL ", "WEBP"}) {
            const QByteArray code(c);
            const uint32_t type = fourCharCode(*reinterpret_cast<const char(*)[5]>(c));
            if (!rasterWriterExists(type))
                continue;
            const QString path = dir.filePath("whole." + code.trimmed());
            writeRaster(redBlue(256, 192), path, type, 72.0f);
            const QByteArray whole = contents(path);
            const QString name = QString::fromLatin1(code.trimmed().toLower());
            QTest::newRow(code + " half") << "half." + name << whole.left(whole.size() / 2);
            QTest::newRow(code + " 40 bytes") << "short." + name << whole.left(40);
            QByteArray flipped = whole;
            for (qsizetype i = whole.size() / 3; i < whole.size(); i += 7)
                flipped[i] = char(~flipped[i]);
            QTest::newRow(code + " scrambled") << "scrambled." + name << flipped;
            // A header that claims a picture of 60000 x 60000.
            QByteArray lying = whole;
            const qsizetype ispe = lying.indexOf("ispe");
            if (ispe > 0) {
                const char big[8] = {0, 0, char(0xea), char(0x60), 0, 0, char(0xea), char(0x60)};
                lying.replace(ispe + 8, 8, QByteArray(big, 8));
                QTest::newRow(code + " lying size") << "lying." + name << lying;
            }
        }
    }
    void damagedFilesAreRefused() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const QString path = dir.filePath(name);
        save(path, bytes);
        QElapsedTimer clock;
        clock.start();
        const DecodedImage decoded = ImageDecoder::decode(path);
        const DecodedImage thumb = ImageDecoder::decodeScaled(path, 64);
        const QSizeF size = ImageDecoder::measure(path);
        // A scrambled tail may still give a picture of the declared size (the codecs conceal
        // errors); it never gives anything else.
        if (decoded.ok)
            QCOMPARE(decoded.image.size(), QSize(256, 192));
        else
            QVERIFY(decoded.image.isNull());
        if (!name.startsWith("scrambled")) {
            QVERIFY(!decoded.ok);
            QVERIFY(!thumb.ok);
        }
        if (name.startsWith("lying") || name.startsWith("noise") ||
            name.startsWith("empty") || name.startsWith("text"))
            QVERIFY(size.isEmpty());
        QVERIFY2(clock.elapsed() < 30'000, "a damaged file held the decoder too long");
    }
};

QTEST_MAIN(tst_ModernDecoders)
#include "tst_ModernDecoders.moc"
