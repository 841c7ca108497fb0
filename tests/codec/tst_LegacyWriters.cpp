// The writers of the older formats, each read back by a reader that shares no code with it:
// ffprobe and ffmpeg for the movie, FLC and SWF, ImageMagick for MacPaint, and for the
// QuickTime image the program's own reader checked against Qt's decode of the JPEG payload.

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include "LegacyReadBack.h"
#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"
#include "codec/MagickSupport.h"
#include "codec/PaletteQuantiser.h"
#include "codec/RasterWriters.h"
#include "codec/legacy/LegacyWriters.h"

using namespace LegacyReadBack;

namespace {

uint32_t code(const char* c) {
    return (uint32_t(uint8_t(c[0])) << 24) | (uint32_t(uint8_t(c[1])) << 16) |
           (uint32_t(uint8_t(c[2])) << 8) | uint32_t(uint8_t(c[3]));
}

// A picture with smooth ramps, hard edges and a few flat colours, at an odd size.
QImage testPicture(int w = 161, int h = 97) {
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            image.setPixel(x, y, qRgb(x * 255 / w, y * 255 / h, (x + y) * 255 / (w + h)));
    QPainter p(&image);
    p.fillRect(10, 10, 40, 30, Qt::red);
    p.fillRect(w - 50, h - 40, 40, 30, QColor(20, 200, 60));
    p.setPen(Qt::black);
    p.drawLine(0, h - 1, w - 1, 0);
    return image;
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

// The picture the palette writer stores: the quantiser's indices looked up in its palette.
QImage fromPalette(const QuantisedPicture& q) {
    QImage out(q.width, q.height, QImage::Format_RGB32);
    for (int y = 0; y < q.height; ++y)
        for (int x = 0; x < q.width; ++x)
            out.setPixel(
                x, y, q.palette[q.indices[size_t(y) * size_t(q.width) + size_t(x)]] | 0xFF000000u);
    return out;
}

// Whether FFmpeg's libraries are mapped into this process.
bool ffmpegLoaded() {
    return contents("/proc/self/maps").contains("libavformat");
}

} // namespace

class tst_LegacyWriters : public QObject {
    Q_OBJECT
private:
    QTemporaryDir dir;
    QString path(const QString& name) const { return dir.filePath(name); }

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        ensureMagickInitialised();
    }

    // Runs first: FFmpeg is loaded by the first movie or FLC, never by the other formats or by
    // asking which writers exist.
    void ffmpegIsLoadedOnlyForItsFormats() {
        QVERIFY(!ffmpegLoaded());
        QVERIFY(rasterWriterExists(code("MooV")));
        QCOMPARE(writeRaster(testPicture(), path("first.qtif"), code("qtif"), 72), int16_t(0));
        QVERIFY(ImageDecoder::decode(path("first.qtif")).ok);
        QVERIFY(!ffmpegLoaded());
        QCOMPARE(writeRaster(testPicture(), path("first.MooV"), code("MooV"), 72), int16_t(0));
        QVERIFY(ffmpegLoaded());
    }

    void everyWriterExists() {
        for (const char* c : {"MooV", "PNTG", "qtif", "FLC ", "SWFL"})
            QVERIFY2(rasterWriterExists(code(c)), c);
        for (const char* c : {"PICS", "FPix", "qdgx"})
            QVERIFY2(!rasterWriterExists(code(c)), c);
    }

    void movieIsOnePngFrameInMov() {
        const QImage picture = testPicture();
        const QString out = path("a.MooV");
        QCOMPARE(writeRaster(picture, out, code("MooV"), 72), int16_t(0));
        const QString info = probe(out);
        QVERIFY2(info.contains("codec_name=png"), qPrintable(info));
        QVERIFY2(info.contains("width=161") && info.contains("height=97"), qPrintable(info));
        QVERIFY2(info.contains("format_name=mov"), qPrintable(info));
        const QImage back = firstFrame(out, picture.size());
        QVERIFY(!back.isNull());
        QCOMPARE(largestDifference(back, picture), 0);
    }

    void paintIsTheDitheredPage() {
        const QImage picture = testPicture();
        const QString out = path("a.PNTG");
        QCOMPARE(writeRaster(picture, out, code("PNTG"), 72), int16_t(0));
        const QByteArray bytes = contents(out);
        // A MacBinary II wrapper (type and creator), then the document's own 512-byte header.
        QVERIFY(bytes.size() > 640);
        QCOMPARE(bytes.size() % 128, 0);
        QCOMPARE(bytes.mid(65, 8), QByteArray("PNTGMPNT"));
        QCOMPARE(bytes.mid(2, bytes.at(1)), QByteArray("a"));
        QCOMPARE(qFromBigEndian<quint32>(bytes.constData() + 128), quint32(2));
        const QImage back = magickMacPaint(out);
        QCOMPARE(back.size(), QSize(576, 720));
        const QImage page = LegacyWriters::paintPage(picture);
        QCOMPARE(largestDifference(back, page), 0);
        // Dithered: both black and white in the picture's ramps, white around it.
        QCOMPARE(page.pixelIndex(0, 0), 0);
        QCOMPARE(page.pixelIndex(575, 719), 0);
        int black = 0;
        for (int y = 312; y < 408; ++y)
            for (int x = 208; x < 368; ++x)
                black += page.pixelIndex(x, y);
        QVERIFY(black > 1000 && black < 160 * 96 - 1000);
    }

    void paintFitsALargePictureOnThePage() {
        QImage picture(1200, 600, QImage::Format_RGB32);
        picture.fill(Qt::black);
        const QImage page = LegacyWriters::paintPage(picture);
        // 1200 x 600 fits as 576 x 288, centred: black from row 216 to 503, white above.
        QCOMPARE(page.pixelIndex(300, 210), 0);
        QCOMPARE(page.pixelIndex(300, 220), 1);
        QCOMPARE(page.pixelIndex(0, 360), 1);
        QCOMPARE(page.pixelIndex(575, 500), 1);
        QCOMPARE(page.pixelIndex(300, 510), 0);
    }

    void quickTimeImageHoldsTheJpeg() {
        const QImage picture = testPicture();
        const QString out = path("a.qtif");
        QCOMPARE(writeRaster(picture, out, code("qtif"), 300), int16_t(0));
        const QByteArray bytes = contents(out);
        QCOMPARE(bytes.mid(4, 4), QByteArray("idsc"));
        QCOMPARE(bytes.mid(12, 4), QByteArray("jpeg"));
        const qsizetype idat = bytes.indexOf("idat");
        QVERIFY(idat > 0);
        const quint32 dataSize = qFromBigEndian<quint32>(bytes.constData() + idat - 4) - 8;
        QCOMPARE(qsizetype(idat + 4 + dataSize), bytes.size());
        const QImage payload = QImage::fromData(bytes.mid(idat + 4), "JPEG");
        QCOMPARE(payload.size(), picture.size());
        QVERIFY(meanDifference(payload, picture) < 4.0);
        // FFmpeg has no reader of the atoms, but its MJPEG probe finds the stream inside and
        // decodes it as Qt does, within the two decoders' chroma upsampling and colour rounding.
        const QImage ffmpeg = firstFrame(out, picture.size());
        QVERIFY(!ffmpeg.isNull());
        QVERIFY(meanDifference(ffmpeg, payload) < 3.0);
        // The program's reader gives the payload's picture, at the recorded 300 dpi.
        const DecodedImage read = ImageDecoder::decode(out);
        QVERIFY(read.ok);
        QCOMPARE(largestDifference(read.image, payload), 0);
        QCOMPARE(read.pointSize.toSize(), QSize(qRound(161 * 72 / 300.0), qRound(97 * 72 / 300.0)));
    }

    void flicIsThePalettePicture() {
        const QImage picture = testPicture();
        const QString out = path("a.FLC ");
        QCOMPARE(writeRaster(picture, out, code("FLC "), 72), int16_t(0));
        const QByteArray bytes = contents(out);
        QCOMPARE(qFromLittleEndian<quint16>(bytes.constData() + 4), quint16(0xAF12));
        QCOMPARE(qFromLittleEndian<quint32>(bytes.constData()), quint32(bytes.size()));
        const QString info = probe(out);
        QVERIFY2(info.contains("codec_name=flic") && info.contains("width=161"), qPrintable(info));
        const QImage back = firstFrame(out, picture.size());
        QVERIFY(!back.isNull());
        QCOMPARE(largestDifference(back, fromPalette(quantise(picture, 256))), 0);
        QVERIFY(meanDifference(back, picture) < 6.0);
        // The decoder chain reads it too, its name's trailing blank and all.
        const DecodedImage read = ImageDecoder::decode(out);
        QVERIFY(read.ok);
        QCOMPARE(largestDifference(read.image, back), 0);
    }

    void swfIsTheLosslessBitmap() {
        const QImage picture = testPicture();
        const QString out = path("a.SWFL");
        QCOMPARE(writeRaster(picture, out, code("SWFL"), 72), int16_t(0));
        QCOMPARE(contents(out).left(3), QByteArray("FWS"));
        const QString info = probe(out);
        QVERIFY2(info.contains("width=161") && info.contains("height=97"), qPrintable(info));
        const QImage back = firstFrame(out, picture.size());
        QVERIFY(!back.isNull());
        QCOMPARE(largestDifference(back, picture), 0);
    }

    void transparentPartsBecomeWhite() {
        QImage picture(40, 30, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter(&picture).fillRect(0, 0, 20, 30, Qt::blue);
        const QString out = path("alpha.MooV");
        QCOMPARE(writeRaster(picture, out, code("MooV"), 72), int16_t(0));
        const QImage back = firstFrame(out, picture.size());
        QCOMPARE(back.pixel(5, 5), qRgb(0, 0, 255));
        QCOMPARE(back.pixel(35, 5), qRgb(255, 255, 255));
    }

    void tooLargeIsRefusedAndTheFileStays_data() {
        QTest::addColumn<QString>("format");
        for (const char* c : {"MooV", "qtif", "FLC ", "SWFL"})
            QTest::newRow(c) << QString::fromLatin1(c);
    }
    void tooLargeIsRefusedAndTheFileStays() {
        QFETCH(QString, format);
        // Wider than the formats' 16-bit sizes hold: refused, never scaled.
        QImage picture(70000, 2, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        const QString out = path("wide." + format);
        makeFile(out, "the previous output");
        QCOMPARE(writeRaster(picture, out, code(format.toLatin1().constData()), 72),
                 kEncoderFailed);
        QCOMPARE(contents(out), QByteArray("the previous output"));
    }

    void anUnwritableFolderLeavesNothing_data() { tooLargeIsRefusedAndTheFileStays_data(); }
    void anUnwritableFolderLeavesNothing() {
        QFETCH(QString, format);
        const QString out = path("missing-folder/a." + format);
        QVERIFY(writeRaster(testPicture(), out, code(format.toLatin1().constData()), 72) != 0);
        QVERIFY(!QFile::exists(out));
    }

    void readableTypesHaveTheNewReaders() {
        const QStringList suffixes = ImageDecoder::readableSuffixes();
        for (const char* s : {"flc", "fli", "qtif", "qti", "mac", "pntg"})
            QVERIFY2(suffixes.contains(QLatin1String(s)), s);
    }

    void damagedFilesAreRefused_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("keep");
        for (const char* c : {"qtif", "FLC ", "PNTG"}) {
            QTest::newRow(QByteArray(c) + " header only") << QString::fromLatin1(c) << 40;
            QTest::newRow(QByteArray(c) + " half") << QString::fromLatin1(c) << -2;
            QTest::newRow(QByteArray(c) + " scrambled") << QString::fromLatin1(c) << -3;
        }
    }
    void damagedFilesAreRefused() {
        QFETCH(QString, format);
        QFETCH(int, keep);
        const QString good = path("good." + format);
        QCOMPARE(writeRaster(testPicture(), good, code(format.toLatin1().constData()), 72),
                 int16_t(0));
        QByteArray bytes = contents(good);
        if (keep > 0) {
            bytes.truncate(keep);
        } else if (keep == -2) {
            bytes.truncate(bytes.size() / 2);
        } else {
            for (qsizetype i = 8; i < bytes.size(); i += 7)
                bytes[i] = char(bytes[i] ^ 0x5A);
        }
        const QString bad = path("bad." + format.trimmed().toLower());
        makeFile(bad, bytes);
        // A clear result, never a crash or a hang: refused, or a picture of the right kind.
        const DecodedImage read = ImageDecoder::decode(bad);
        if (read.ok)
            QVERIFY(!read.image.isNull());
        ImageDecoder::measure(bad);
        ImageDecoder::decodeScaled(bad, 64);
    }

    void aLyingFlicSizeIsRefusedBeforeDecoding() {
        const QString good = path("lie.FLC ");
        QCOMPARE(writeRaster(testPicture(), good, code("FLC "), 72), int16_t(0));
        QByteArray bytes = contents(good);
        qToLittleEndian<quint16>(65535, bytes.data() + 8);
        qToLittleEndian<quint16>(65535, bytes.data() + 10);
        const QString bad = path("lie.flc");
        makeFile(bad, bytes);
        QVERIFY(!ImageDecoder::decode(bad).ok);
    }

    void aLyingQuickTimeImageIsRefused() {
        const QString good = path("lie.qtif");
        QCOMPARE(writeRaster(testPicture(), good, code("qtif"), 72), int16_t(0));
        const QByteArray bytes = contents(good);
        const qsizetype idat = bytes.indexOf("idat") - 4;
        // A data atom that runs past the end of the file.
        QByteArray pastEnd = bytes;
        qToBigEndian<quint32>(0xFFFFFFF0u, pastEnd.data() + idat);
        makeFile(path("past-end.qtif"), pastEnd);
        QVERIFY(!ImageDecoder::decode(path("past-end.qtif")).ok);
        // A description of 65535 x 65535 pixels: beyond the limits, refused before decoding.
        QByteArray huge = bytes;
        qToBigEndian<quint16>(65535, huge.data() + 8 + 32);
        qToBigEndian<quint16>(65535, huge.data() + 8 + 34);
        makeFile(path("huge.qtif"), huge);
        QVERIFY(!ImageDecoder::decode(path("huge.qtif")).ok);
        // A payload that is not the codec the description names.
        QByteArray png = bytes;
        png.replace(12, 4, "png ");
        makeFile(path("png.qtif"), png);
        QVERIFY(!ImageDecoder::decode(path("png.qtif")).ok);
    }
};

QTEST_MAIN(tst_LegacyWriters)
#include "tst_LegacyWriters.moc"
