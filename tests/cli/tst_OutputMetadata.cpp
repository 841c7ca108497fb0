// The source's EXIF, XMP and IPTC in converted files, read back by an independent reader (the
// exiv2 command-line tool): orientation reset once the pixels are turned, the chosen resolution
// recorded, everything gone with --strip-metadata, and the colour profile kept beside it all.

#include "ProgramRun.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDir>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

namespace {

using Run = ProgramRun;

// exiv2 -Pkv: one line per tag, its key and its value as stored ("144/1" for 144 dpi).
QMap<QString, QString> exiv2Tags(const QString& file) {
    QProcess process;
    process.start("exiv2", {"-q", "-Pkv", file});
    QMap<QString, QString> tags;
    if (!process.waitForFinished(60000))
        return tags;
    const QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split('\n');
    for (const QString& line : lines) {
        const QStringList words = line.simplified().split(' ');
        if (!words[0].isEmpty())
            tags.insert(words[0], words.mid(1).join(' '));
    }
    return tags;
}

// A stored rational ("14400/100") as a number.
double rationalValue(const QString& text) {
    const QStringList parts = text.split('/');
    if (parts.size() != 2 || parts[1].toDouble() == 0)
        return -1;
    return parts[0].toDouble() / parts[1].toDouble();
}

bool anyKeyStartsWith(const QMap<QString, QString>& tags, const QString& prefix) {
    for (auto it = tags.cbegin(); it != tags.cend(); ++it)
        if (it.key().startsWith(prefix))
            return true;
    return false;
}

} // namespace

class tst_OutputMetadata : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir work;

    Run convert(const QStringList& arguments) {
        return runProgram(QStringList{"--convert"} + arguments, home.path());
    }

    QString sourcePath() const { return work.filePath("camera.jpg"); }

private slots:
    // A camera picture stored sideways (orientation 6: turn 90 degrees clockwise to show it),
    // with a place, a camera, a creator and keywords, in Display P3.
    void initTestCase() {
        QVERIFY(home.isValid() && work.isValid());
        QImage stored(80, 40, QImage::Format_RGB32);
        stored.fill(QColor(64, 160, 64));
        stored.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
        QVERIFY(stored.save(sourcePath(), "jpeg", 95));
        auto image = Exiv2::ImageFactory::open(sourcePath().toStdString());
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        exif["Exif.Image.Make"] = "Testcam";
        exif["Exif.Image.Model"] = "T-1";
        exif["Exif.Image.Orientation"] = uint16_t(6);
        exif["Exif.Image.XResolution"] = Exiv2::URational(300, 1);
        exif["Exif.Image.YResolution"] = Exiv2::URational(300, 1);
        exif["Exif.Image.ResolutionUnit"] = uint16_t(2);
        exif["Exif.Photo.DateTimeOriginal"] = "2024:05:01 10:20:30";
        exif["Exif.Photo.PixelXDimension"] = uint32_t(80);
        exif["Exif.Photo.PixelYDimension"] = uint32_t(40);
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        exif["Exif.GPSInfo.GPSLatitude"] = "48/1 51/1 24/1";
        exif["Exif.GPSInfo.GPSLongitudeRef"] = "E";
        exif["Exif.GPSInfo.GPSLongitude"] = "2/1 21/1 3/1";
        image->xmpData()["Xmp.dc.creator"] = "Ada Photographer";
        image->xmpData()["Xmp.tiff.Orientation"] = "6";
        image->iptcData()["Iptc.Application2.Keywords"] = "harbour";
        image->writeMetadata();

        const QMap<QString, QString> tags = exiv2Tags(sourcePath());
        QCOMPARE(tags.value("Exif.Image.Orientation"), QString("6"));
        QVERIFY(tags.contains("Exif.GPSInfo.GPSLatitude"));
    }

    void keptAndAdapted_data() {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("JPEG") << "JPEG" << "JPEG";
        QTest::newRow("PNG") << "PNGf" << "PNGf";
        QTest::newRow("TIFF") << "TIFF" << "TIFF";
    }

    void keptAndAdapted() {
        QFETCH(QString, code);
        QFETCH(QString, suffix);
        const QString dest = work.filePath("kept-" + code);
        const Run run = convert({code, "--dpi", "144", "--dest", dest, sourcePath()});
        QCOMPARE(run.exitCode, 0);
        const QString out = dest + "/camera." + suffix;
        QVERIFY(QFileInfo::exists(out));

        const QMap<QString, QString> tags = exiv2Tags(out);
        // Turned upright when decoded, so no reader turns it again.
        QCOMPARE(tags.value("Exif.Image.Orientation"), QString("1"));
        QCOMPARE(tags.value("Xmp.tiff.Orientation"), QString("1"));
        // Drawn at 144 dpi: twice the pixels, and 144 recorded.
        QCOMPARE(rationalValue(tags.value("Exif.Image.XResolution")), 144.0);
        QCOMPARE(rationalValue(tags.value("Exif.Image.YResolution")), 144.0);
        QCOMPARE(tags.value("Exif.Image.ResolutionUnit"), QString("2")); // inches
        QImageReader reader(out);
        reader.setAutoTransform(false);
        const QSize size = reader.size();
        QVERIFY2(size.height() > size.width(), "the sideways picture is stored upright");
        QCOMPARE(tags.value("Exif.Photo.PixelXDimension"), QString::number(size.width()));
        QCOMPARE(tags.value("Exif.Photo.PixelYDimension"), QString::number(size.height()));
        // What describes the picture stays.
        QCOMPARE(tags.value("Exif.Image.Make"), QString("Testcam"));
        QCOMPARE(tags.value("Exif.Photo.DateTimeOriginal"), QString("2024:05:01 10:20:30"));
        QVERIFY(tags.contains("Exif.GPSInfo.GPSLatitude"));
        QCOMPARE(tags.value("Xmp.dc.creator"), QString("Ada Photographer"));
        QCOMPARE(tags.value("Iptc.Application2.Keywords"), QString("harbour"));
        // And the colour profile written by the encoder survives the metadata's writing.
        QImage read;
        QVERIFY(reader.read(&read));
        QCOMPARE(read.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    }

    void stripped_data() { keptAndAdapted_data(); }

    void stripped() {
        QFETCH(QString, code);
        QFETCH(QString, suffix);
        const QString dest = work.filePath("stripped-" + code);
        const Run run =
            convert({code, "--strip-metadata", "--dest", dest, sourcePath()});
        QCOMPARE(run.exitCode, 0);
        const QString out = dest + "/camera." + suffix;
        const QMap<QString, QString> tags = exiv2Tags(out);
        QVERIFY(!anyKeyStartsWith(tags, "Exif.GPSInfo"));
        QVERIFY(!tags.contains("Exif.Image.Make"));
        QVERIFY(!tags.contains("Exif.Photo.DateTimeOriginal"));
        QVERIFY(!anyKeyStartsWith(tags, "Xmp."));
        QVERIFY(!anyKeyStartsWith(tags, "Iptc."));
        // The picture itself is all there, upright, in its colours.
        QImage read(out);
        QVERIFY(!read.isNull());
        QVERIFY(read.height() > read.width());
        QCOMPARE(read.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    }

    // Formats that hold no metadata are written as before.
    void formatsWithoutMetadata() {
        const QString dest = work.filePath("bmp");
        QCOMPARE(convert({"BMPf", "--dest", dest, sourcePath()}).exitCode, 0);
        QVERIFY(!QImage(dest + "/camera.BMPf").isNull());
    }

    // A damaged EXIF block (its directory claims thousands of entries past the block's end)
    // and an XMP packet that is no XML: the picture converts, without them.
    void damagedBlocks() {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::red);
        QByteArray jpeg;
        {
            QBuffer buffer(&jpeg);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(image.save(&buffer, "jpeg"));
        }
        QByteArray tiff("II*\0\x08\0\0\0", 8);
        tiff += QByteArray("\xff\xff", 2); // 65535 entries
        tiff += QByteArray(60, '\x11');
        QByteArray app1 = QByteArray("Exif\0\0", 6) + tiff;
        QByteArray segment("\xFF\xE1");
        segment += char((app1.size() + 2) >> 8);
        segment += char((app1.size() + 2) & 0xFF);
        QByteArray xmp = QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + "<x:xmpmeta <<<&&&";
        QByteArray xmpSegment("\xFF\xE1");
        xmpSegment += char((xmp.size() + 2) >> 8);
        xmpSegment += char((xmp.size() + 2) & 0xFF);
        const QByteArray damaged =
            jpeg.left(2) + segment + app1 + xmpSegment + xmp + jpeg.mid(2);
        const QString file = work.filePath("damaged.jpg");
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(damaged);
        out.close();

        const QString dest = work.filePath("damaged");
        for (const QString code : {"JPEG", "PNGf", "TIFF"}) {
            const Run run = convert({code, "--dest", dest, file});
            QCOMPARE(run.exitCode, 0);
            QVERIFY(!QImage(dest + "/damaged." + code).isNull());
        }
    }
};

QTEST_GUILESS_MAIN(tst_OutputMetadata)
#include "tst_OutputMetadata.moc"
