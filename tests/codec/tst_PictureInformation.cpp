// What the information panel reads of a file: header, metadata blocks, camera data.
#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "codec/PictureInformation.h"
#include "view/CameraPictures.h"

class tst_PictureInformation : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cameraJpeg();
    void pngWithoutExif();
    void tiffWithResolution();
    void turnedJpegGivesUprightPixels();
    void damagedExif();
    void missingFile();
    void notAnImage();

private:
    QString pathOf(const QString& name) const { return QDir(dir->path()).filePath(name); }
    std::unique_ptr<QTemporaryDir> dir;
};

void tst_PictureInformation::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
}

void tst_PictureInformation::cameraJpeg() {
    const QString path = pathOf("camera.jpg");
    QVERIFY(CameraPictures::writeCameraJpeg(path, 320, 240));
    const PictureInformation info = readPictureInformation(path);
    QVERIFY(info.exists);
    QCOMPARE(info.fileName, QStringLiteral("camera.jpg"));
    QCOMPARE(info.fileBytes, QFileInfo(path).size());
    QCOMPARE(info.format, QStringLiteral("JPEG"));
    QCOMPARE(info.pixels, QSize(320, 240));
    QVERIFY(info.hasProfile);
    QCOMPARE(info.colourProfile, QColorSpace(QColorSpace::DisplayP3).description());
    QVERIFY(!info.colourProfile.isEmpty());

    const CameraData& camera = info.camera;
    QCOMPARE(camera.make, QStringLiteral("Canon"));
    QCOMPARE(camera.model, QStringLiteral("Canon EOS 5D Mark IV"));
    QCOMPARE(camera.lens, QStringLiteral("EF50mm f/1.4 USM"));
    QVERIFY(camera.exposureSeconds);
    QCOMPARE(*camera.exposureSeconds, 1.0 / 250.0);
    QVERIFY(camera.fNumber);
    QCOMPARE(*camera.fNumber, 2.8);
    QCOMPARE(camera.iso, std::optional<int>(400));
    QCOMPARE(camera.focalLengthMm, std::optional<double>(50.0));
    QCOMPARE(camera.focalLength35mm, std::optional<int>(75));
    QCOMPARE(camera.taken, QDateTime(QDate(2024, 5, 17), QTime(14, 3, 21)));
    QVERIFY(camera.gps);
    QVERIFY(std::abs(camera.gps->latitude - CameraPictures::kLatitude) < 1e-6);
    QVERIFY(std::abs(camera.gps->longitude - CameraPictures::kLongitude) < 1e-6);
}

void tst_PictureInformation::pngWithoutExif() {
    const QString path = pathOf("plain.png");
    QVERIFY(CameraPictures::gradient(50, 30).save(path));
    const PictureInformation info = readPictureInformation(path);
    QVERIFY(info.exists);
    QCOMPARE(info.format, QStringLiteral("PNG"));
    QCOMPARE(info.pixels, QSize(50, 30));
    QVERIFY(!info.hasProfile);
    QVERIFY(info.colourProfile.isEmpty());
    QVERIFY(info.camera.isEmpty());
}

void tst_PictureInformation::tiffWithResolution() {
    const QString path = pathOf("scan.tif");
    QImage picture = CameraPictures::gradient(60, 40);
    picture.setDotsPerMeterX(qRound(300 / 0.0254));
    picture.setDotsPerMeterY(qRound(150 / 0.0254));
    QVERIFY(picture.save(path, "TIFF"));
    const PictureInformation info = readPictureInformation(path);
    QCOMPARE(info.format, QStringLiteral("TIFF"));
    QCOMPARE(info.pixels, QSize(60, 40));
    QVERIFY(info.dpi);
    QVERIFY(std::abs(info.dpi->x - 300) < 0.1);
    QVERIFY(std::abs(info.dpi->y - 150) < 0.1);
    QVERIFY(info.camera.isEmpty());
}

void tst_PictureInformation::turnedJpegGivesUprightPixels() {
    const QString path = pathOf("turned.jpg");
    QVERIFY(CameraPictures::writeCameraJpeg(path, 320, 240));
    auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    image->readMetadata();
    image->exifData()["Exif.Image.Orientation"] = uint16_t(6); // held upright: turn 90°
    image->writeMetadata();
    QCOMPARE(readPictureInformation(path).pixels, QSize(240, 320));
}

void tst_PictureInformation::damagedExif() {
    // A JPEG whose EXIF block points its first directory far beyond its end and holds garbage.
    const QString good = pathOf("good.jpg");
    QVERIFY(CameraPictures::gradient(40, 20).save(good, "JPEG"));
    QFile in(good);
    QVERIFY(in.open(QIODevice::ReadOnly));
    const QByteArray jpeg = in.readAll();
    QByteArray payload("Exif\0\0II*\0\xf0\xff\xff\x7f", 14);
    for (int i = 0; i < 200; ++i)
        payload.append(char((i * 37) ^ 0xa5));
    QByteArray segment("\xff\xe1", 2);
    const int length = payload.size() + 2;
    segment.append(char(length >> 8)).append(char(length & 0xff)).append(payload);
    const QString path = pathOf("damaged.jpg");
    QFile out(path);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(jpeg.left(2) + segment + jpeg.mid(2));
    out.close();

    const PictureInformation info = readPictureInformation(path);
    QVERIFY(info.exists);
    QCOMPARE(info.format, QStringLiteral("JPEG"));
    QCOMPARE(info.pixels, QSize(40, 20));
    QVERIFY(info.camera.isEmpty());

    // A camera block cut off in the middle gives what it still holds, or nothing, never a crash.
    const QString camera = pathOf("cut.jpg");
    QVERIFY(CameraPictures::writeCameraJpeg(camera, 320, 240));
    QFile whole(camera);
    QVERIFY(whole.open(QIODevice::ReadWrite));
    const QByteArray bytes = whole.readAll();
    // The EXIF segment keeps its first half only, its length told to match: the picture's own
    // segments follow it intact.
    const qsizetype app1 = bytes.indexOf(QByteArray("\xff\xe1", 2));
    QVERIFY(app1 >= 2);
    QVERIFY(bytes.mid(app1 + 4, 6) == QByteArray("Exif\0\0", 6));
    const int exifLength = (uchar(bytes[app1 + 2]) << 8) | uchar(bytes[app1 + 3]);
    const int kept = exifLength / 2;
    QVERIFY(kept > 16);
    QByteArray cut = bytes.left(app1 + 2);
    cut.append(char(kept >> 8)).append(char(kept & 0xff));
    cut.append(bytes.mid(app1 + 4, kept - 2));
    cut.append(bytes.mid(app1 + 2 + exifLength));
    whole.resize(0);
    whole.seek(0);
    whole.write(cut);
    whole.close();
    const PictureInformation damaged = readPictureInformation(camera);
    QVERIFY(damaged.exists);
    QCOMPARE(damaged.format, QStringLiteral("JPEG"));
    QCOMPARE(damaged.pixels, QSize(320, 240));
}

void tst_PictureInformation::missingFile() {
    const PictureInformation info = readPictureInformation(pathOf("gone.jpg"));
    QVERIFY(!info.exists);
    QVERIFY(info.format.isEmpty());
    QVERIFY(info.camera.isEmpty());
    QVERIFY(!readPictureInformation(QString()).exists);
    QVERIFY(!readPictureInformation(dir->path()).exists); // a folder is no picture
}

void tst_PictureInformation::notAnImage() {
    const QString path = pathOf("notes.jpg");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("these are words, not a picture\n");
    file.close();
    const PictureInformation info = readPictureInformation(path);
    QVERIFY(info.exists);
    QCOMPARE(info.fileBytes, qint64(31));
    QVERIFY(info.pixels.isEmpty());
    QVERIFY(info.camera.isEmpty());
}

QTEST_GUILESS_MAIN(tst_PictureInformation)
#include "tst_PictureInformation.moc"
