#include "../view/LoadTestImages.h"
#include "JpegCoefficients.h"
#include "TurboJpegEncode.h"
#include "codec/ImageDecoder.h"
#include "codec/JpegTransform.h"

#include <QColorSpace>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTransform>

#include <turbojpeg.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

Q_DECLARE_METATYPE(JpegTurn)

namespace {

// A picture with detail in every block: gradients and noise, so that a block out of place or
// a coefficient turned the wrong way shows in the decoded pixels.
QImage texturedPicture(int width, int height) {
    QImage picture(width, height, QImage::Format_RGB888);
    QRandomGenerator noise(7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y,
                             qRgb((x * 255) / width, (y * 255) / height,
                                  int(noise.bounded(256)) / 2 + ((x + y) % 7) * 18));
    return picture;
}

// Flat squares of 16 pixels, a colour each: every block of every component holds only its
// average, which decodes to exact values whatever the order of the inverse DCT's passes.
QImage blockyPicture(int width, int height) {
    QImage picture(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int bx = x / 16, by = y / 16;
            picture.setPixel(x, y,
                             qRgb((bx * 53 + by * 17) % 256, (bx * 29 + by * 71) % 256,
                                  (bx * by * 37 + 90) % 256));
        }
    return picture;
}

// The stored pixels, as libjpeg-turbo decodes them, without any EXIF turn. The fast (replicating)
// chroma upsampling gives the same value to each pixel of a chroma sample, however turned.
QImage decodeStored(const QByteArray& jpeg, int flags = 0) {
    tjhandle tj = tjInitDecompress();
    int width = 0, height = 0, subsampling = 0, colourspace = 0;
    QImage picture;
    if (tjDecompressHeader3(tj, reinterpret_cast<const unsigned char*>(jpeg.constData()),
                            static_cast<unsigned long>(jpeg.size()), &width, &height, &subsampling,
                            &colourspace) == 0) {
        picture = QImage(width, height, QImage::Format_RGB888);
        if (tjDecompress2(tj, reinterpret_cast<const unsigned char*>(jpeg.constData()),
                          static_cast<unsigned long>(jpeg.size()), picture.bits(), width,
                          int(picture.bytesPerLine()), height, TJPF_RGB, flags) != 0)
            picture = QImage();
    }
    tjDestroy(tj);
    return picture;
}

// The picture turned the way the user asked, pixel by pixel.
QImage turned(const QImage& picture, JpegTurn turn) {
    switch (turn) {
    case JpegTurn::RotateRight:
        return picture.transformed(QTransform().rotate(90));
    case JpegTurn::RotateLeft:
        return picture.transformed(QTransform().rotate(-90));
    case JpegTurn::FlipHorizontal:
        return picture.mirrored(true, false);
    case JpegTurn::FlipVertical:
        return picture.mirrored(false, true);
    }
    return picture;
}

// The coefficients of a JPEG as the user's turn stores them.
JpegCoefficients turned(const JpegCoefficients& coefficients, JpegTurn turn) {
    switch (turn) {
    case JpegTurn::RotateRight:
        return coefficients.transformed(1, false, false);
    case JpegTurn::RotateLeft:
        return coefficients.transformed(-1, false, false);
    case JpegTurn::FlipHorizontal:
        return coefficients.transformed(0, true, false);
    case JpegTurn::FlipVertical:
        return coefficients.transformed(0, false, true);
    }
    return coefficients;
}

using LoadTestImages::largestDifference;

// The number of pixels that differ between two pictures of the same size; -1 for sizes.
int differingPixels(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return -1;
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    int differ = 0;
    for (int row = 0; row < x.height(); ++row)
        for (int column = 0; column < x.width(); ++column)
            differ += x.pixel(column, row) != y.pixel(column, row);
    return differ;
}

using ExivImage = std::unique_ptr<Exiv2::Image>;

ExivImage openExiv(const QString& path) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    ExivImage image(Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString()).release());
#pragma GCC diagnostic pop
    image->readMetadata();
    return image;
}

QString exifText(const QString& path, const char* key) {
    const ExivImage image = openExiv(path);
    const auto found = image->exifData().findKey(Exiv2::ExifKey(key));
    return found == image->exifData().end() ? QString() : QString::fromStdString(found->toString());
}

// A camera's metadata on the file at `path`: maker, place, orientation, pixel size, a thumbnail,
// an XMP packet and a colour profile.
void addCameraMetadata(const QString& path, int orientation, const QSize& size,
                       const QByteArray& thumbnail) {
    const ExivImage image = openExiv(path);
    Exiv2::ExifData& exif = image->exifData();
    exif["Exif.Image.Make"] = std::string("Testmaker");
    exif["Exif.Image.Model"] = std::string("Box 1");
    exif["Exif.Image.Orientation"] = uint16_t(orientation);
    exif["Exif.Photo.PixelXDimension"] = uint32_t(size.width());
    exif["Exif.Photo.PixelYDimension"] = uint32_t(size.height());
    exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("N");
    Exiv2::URationalValue latitude;
    latitude.read("48/1 8/1 3000/100");
    exif["Exif.GPSInfo.GPSLatitude"] = latitude;
    if (!thumbnail.isEmpty())
        Exiv2::ExifThumb(exif).setJpegThumbnail(
            reinterpret_cast<const Exiv2::byte*>(thumbnail.constData()), long(thumbnail.size()));
    image->xmpData()["Xmp.dc.creator"] = std::string("A. Photographer");
    const QByteArray icc = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    Exiv2::DataBuf profile(reinterpret_cast<const Exiv2::byte*>(icc.constData()), long(icc.size()));
    image->setIccProfile(profile);
    image->writeMetadata();
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class tst_JpegTransform : public QObject {
    Q_OBJECT
private slots:
    void init();
    void turnsAreLosslessPixelForPixel_data();
    void turnsAreLosslessPixelForPixel();
    void exifOrientationIsPartOfTheTurn();
    void metadataAndProfileAreKept();
    void damagedFilesAreRefusedUntouched_data();
    void damagedFilesAreRefusedUntouched();
    void otherFormatsAreNotJpeg();
    void partialEdgeBlocksAreTrimmedOnlyWhenAllowed();
    void readOnlyFileOrFolderIsLeftAlone();
    void permissionsAreKept();

private:
    QString pathOf(const QString& name) const { return dir->filePath(name); }
    std::unique_ptr<QTemporaryDir> dir;
};

void tst_JpegTransform::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
}

void tst_JpegTransform::turnsAreLosslessPixelForPixel_data() {
    QTest::addColumn<int>("subsampling");
    QTest::addColumn<bool>("progressive");
    QTest::addColumn<JpegTurn>("turn");
    const std::pair<const char*, JpegTurn> turns[] = {{"right", JpegTurn::RotateRight},
                                                      {"left", JpegTurn::RotateLeft},
                                                      {"flip horizontal", JpegTurn::FlipHorizontal},
                                                      {"flip vertical", JpegTurn::FlipVertical}};
    for (const auto& [name, turn] : turns) {
        QTest::addRow("4:2:0 %s", name) << int(TJSAMP_420) << false << turn;
        QTest::addRow("4:4:4 %s", name) << int(TJSAMP_444) << false << turn;
        QTest::addRow("4:2:2 %s", name) << int(TJSAMP_422) << false << turn;
        QTest::addRow("grey %s", name) << int(TJSAMP_GRAY) << false << turn;
        QTest::addRow("progressive 4:2:0 %s", name) << int(TJSAMP_420) << true << turn;
    }
}

void tst_JpegTransform::turnsAreLosslessPixelForPixel() {
    QFETCH(int, subsampling);
    QFETCH(bool, progressive);
    QFETCH(JpegTurn, turn);
    for (const QImage& picture : {blockyPicture(96, 64), texturedPicture(96, 64)}) {
        const QByteArray source = turboJpeg(picture, TJPF_RGB, subsampling, progressive);
        QVERIFY(!source.isEmpty());
        const QString path = pathOf("photo.jpg");
        QVERIFY(writeAll(path, source));

        const JpegTransform::Result result = JpegTransform::turnFile(path, turn, false);
        QCOMPARE(result.outcome, JpegTransform::Outcome::Done);
        const QByteArray written = readAll(path);
        QVERIFY(written != source);
        // What the file stores is the source's blocks, moved and turned, not one value changed.
        QVERIFY(JpegCoefficients::read(written) == turned(JpegCoefficients::read(source), turn));
        // Decoded: the source's pixels turned. Flat blocks decode to exact values; detailed ones
        // differ only by the rounding of the inverse DCT, whose row and column passes swap with
        // the axes: one level in Y, Cb and Cr each, at most three in a colour channel.
        const QImage expected = turned(decodeStored(source, TJFLAG_FASTUPSAMPLE), turn);
        const QImage actual = decodeStored(written, TJFLAG_FASTUPSAMPLE);
        QVERIFY(!actual.isNull());
        QCOMPARE(actual.size(), expected.size());
        if (picture.pixel(0, 0) == picture.pixel(15, 15))
            QCOMPARE(differingPixels(actual, expected), 0);
        else
            QVERIFY2(largestDifference(actual, expected) <= 3,
                     qPrintable(QString::number(largestDifference(actual, expected))));
        // A progressive file stays progressive (start of frame 0xC2), a baseline one baseline.
        QCOMPARE(written.contains(QByteArray("\xff\xc2", 2)), progressive);
    }
}

void tst_JpegTransform::exifOrientationIsPartOfTheTurn() {
    // Stored sideways, shown upright by orientation 6 (a quarter turn clockwise). Flat 4:4:4
    // blocks decode to the same values in any decoder, so what is shown compares exactly.
    const QByteArray source = turboJpeg(blockyPicture(96, 64), TJPF_RGB, TJSAMP_444);
    const QString path = pathOf("upright.jpg");
    QVERIFY(writeAll(path, source));
    addCameraMetadata(path, 6, QSize(96, 64), {});
    const QImage shownBefore = ImageDecoder::decode(path).image;
    QCOMPARE(shownBefore.size(), QSize(64, 96));

    QVERIFY(JpegTransform::turnFile(path, JpegTurn::RotateRight, false).ok());
    QCOMPARE(exifText(path, "Exif.Image.Orientation"), QStringLiteral("1"));
    // What the user sees is what they saw, a quarter turn further clockwise...
    const QImage shownAfter = ImageDecoder::decode(path).image;
    QCOMPARE(shownAfter.size(), QSize(96, 64));
    QCOMPARE(differingPixels(shownAfter, turned(shownBefore, JpegTurn::RotateRight)), 0);
    // ...and the file stores the source's blocks turned by half a turn, losslessly.
    QVERIFY(JpegCoefficients::read(readAll(path)) ==
            JpegCoefficients::read(source).transformed(0, true, true));

    // A flip of a file whose orientation turns it: mirrored as shown, not as stored.
    const QString flipped = pathOf("flipped.jpg");
    QVERIFY(writeAll(flipped, source));
    addCameraMetadata(flipped, 6, QSize(96, 64), {});
    QVERIFY(JpegTransform::turnFile(flipped, JpegTurn::FlipHorizontal, false).ok());
    QCOMPARE(differingPixels(ImageDecoder::decode(flipped).image,
                             turned(shownBefore, JpegTurn::FlipHorizontal)),
             0);
}

void tst_JpegTransform::metadataAndProfileAreKept() {
    const QByteArray thumbnail = turboJpeg(blockyPicture(32, 16), TJPF_RGB, TJSAMP_420);
    const QString path = pathOf("camera.jpg");
    QVERIFY(writeAll(path, turboJpeg(texturedPicture(96, 64), TJPF_RGB, TJSAMP_420)));
    addCameraMetadata(path, 1, QSize(96, 64), thumbnail);
    const QByteArray icc = QColorSpace(QColorSpace::DisplayP3).iccProfile();

    QVERIFY(JpegTransform::turnFile(path, JpegTurn::RotateLeft, false).ok());
    QCOMPARE(exifText(path, "Exif.Image.Make"), QStringLiteral("Testmaker"));
    QCOMPARE(exifText(path, "Exif.Image.Model"), QStringLiteral("Box 1"));
    QCOMPARE(exifText(path, "Exif.GPSInfo.GPSLatitudeRef"), QStringLiteral("N"));
    QCOMPARE(exifText(path, "Exif.GPSInfo.GPSLatitude"), QStringLiteral("48/1 8/1 3000/100"));
    QCOMPARE(exifText(path, "Exif.Image.Orientation"), QStringLiteral("1"));
    // The recorded pixel size is the turned one.
    QCOMPARE(exifText(path, "Exif.Photo.PixelXDimension"), QStringLiteral("64"));
    QCOMPARE(exifText(path, "Exif.Photo.PixelYDimension"), QStringLiteral("96"));
    const ExivImage image = openExiv(path);
    QCOMPARE(QString::fromStdString(image->xmpData()["Xmp.dc.creator"].toString()),
             QStringLiteral("A. Photographer"));
    // The colour profile, byte for byte, and as Qt reads it.
    QVERIFY(image->iccProfileDefined());
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(image->iccProfile()->pData_),
                        qsizetype(image->iccProfile()->size_)),
             icc);
    QCOMPARE(QImage(path).colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    // The EXIF thumbnail turned with the picture.
    const Exiv2::DataBuf stored = Exiv2::ExifThumbC(image->exifData()).copy();
    const QImage thumbAfter = decodeStored(
        QByteArray(reinterpret_cast<const char*>(stored.pData_), qsizetype(stored.size_)));
    QCOMPARE(thumbAfter.size(), QSize(16, 32));
    QVERIFY(JpegCoefficients::read(QByteArray(reinterpret_cast<const char*>(stored.pData_),
                                              qsizetype(stored.size_))) ==
            turned(JpegCoefficients::read(thumbnail), JpegTurn::RotateLeft));
}

void tst_JpegTransform::damagedFilesAreRefusedUntouched_data() {
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray good = turboJpeg(texturedPicture(96, 64), TJPF_RGB, TJSAMP_420);
    const QByteArray progressive = turboJpeg(texturedPicture(96, 64), TJPF_RGB, TJSAMP_420, true);
    QTest::newRow("truncated") << good.left(good.size() / 2);
    QTest::newRow("truncated progressive") << progressive.left(progressive.size() * 2 / 3);
    QTest::newRow("header only") << good.left(300);
    QByteArray scrambled = good;
    for (qsizetype at = scrambled.size() / 2; at < scrambled.size() / 2 + 40; ++at)
        scrambled[at] = char(0xff); // markers in the middle of the entropy-coded data
    QTest::newRow("damaged data") << scrambled;
    QByteArray huge = good;
    const qsizetype frame = huge.indexOf(QByteArray("\xff\xc0", 2));
    QVERIFY(frame > 0);
    huge[frame + 5] = char(0xff); // height 65280
    huge[frame + 7] = char(0xff); // width 65280 (and more pixels than any decoder accepts)
    QTest::newRow("lying size") << huge;
}

void tst_JpegTransform::damagedFilesAreRefusedUntouched() {
    QFETCH(QByteArray, bytes);
    const QString path = pathOf("damaged.jpg");
    QVERIFY(writeAll(path, bytes));
    for (JpegTurn turn : {JpegTurn::RotateRight, JpegTurn::FlipVertical}) {
        const JpegTransform::Result result = JpegTransform::turnFile(path, turn, true);
        QVERIFY(!result.ok());
        QVERIFY(result.outcome == JpegTransform::Outcome::Damaged ||
                result.outcome == JpegTransform::Outcome::TooLarge);
        QCOMPARE(readAll(path), bytes);
    }
    QCOMPARE(QDir(dir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"damaged.jpg"});
}

void tst_JpegTransform::otherFormatsAreNotJpeg() {
    const QString path = pathOf("picture.jpg"); // a PNG whatever its name says
    QVERIFY(texturedPicture(32, 32).save(path, "PNG"));
    const QByteArray before = readAll(path);
    QVERIFY(!JpegTransform::isJpegFile(path));
    QCOMPARE(JpegTransform::turnFile(path, JpegTurn::RotateRight, true).outcome,
             JpegTransform::Outcome::NotJpeg);
    QCOMPARE(readAll(path), before);
    QCOMPARE(JpegTransform::turnFile(pathOf("missing.jpg"), JpegTurn::RotateRight, true).outcome,
             JpegTransform::Outcome::Unreadable);
}

void tst_JpegTransform::partialEdgeBlocksAreTrimmedOnlyWhenAllowed() {
    // 4:2:0 blocks are 16 x 16: 70 x 45 leaves 6 columns and 13 rows in partial blocks.
    const QByteArray source = turboJpeg(blockyPicture(70, 45), TJPF_RGB, TJSAMP_420);
    const QString path = pathOf("odd.jpg");
    QVERIFY(writeAll(path, source));

    JpegTransform::Result result = JpegTransform::turnFile(path, JpegTurn::RotateRight, false);
    QCOMPARE(result.outcome, JpegTransform::Outcome::NeedsTrim);
    QCOMPARE(result.trimmedRows, 13); // the bottom rows would go to the left edge
    QCOMPARE(result.trimmedColumns, 0);
    QCOMPARE(readAll(path), source);

    result = JpegTransform::turnFile(path, JpegTurn::FlipHorizontal, false);
    QCOMPARE(result.outcome, JpegTransform::Outcome::NeedsTrim);
    QCOMPARE(result.trimmedColumns, 6);
    QCOMPARE(readAll(path), source);

    result = JpegTransform::turnFile(path, JpegTurn::RotateRight, true);
    QCOMPARE(result.outcome, JpegTransform::Outcome::Done);
    const QImage after = decodeStored(readAll(path), TJFLAG_FASTUPSAMPLE);
    QCOMPARE(after.size(), QSize(32, 70));
    QCOMPARE(
        differingPixels(after, turned(decodeStored(source, TJFLAG_FASTUPSAMPLE).copy(0, 0, 70, 32),
                                      JpegTurn::RotateRight)),
        0);
}

void tst_JpegTransform::readOnlyFileOrFolderIsLeftAlone() {
    const QByteArray source = turboJpeg(texturedPicture(64, 64), TJPF_RGB, TJSAMP_444);
    const QString path = pathOf("kept.jpg");
    QVERIFY(writeAll(path, source));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    QCOMPARE(JpegTransform::turnFile(path, JpegTurn::RotateRight, false).outcome,
             JpegTransform::Outcome::ReadOnly);
    QCOMPARE(readAll(path), source);

    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    const QFile::Permissions folderWas = QFile::permissions(dir->path());
    QVERIFY(QFile::setPermissions(dir->path(), QFile::ReadOwner | QFile::ExeOwner));
    const JpegTransform::Outcome outcome =
        JpegTransform::turnFile(path, JpegTurn::RotateRight, false).outcome;
    QVERIFY(QFile::setPermissions(dir->path(), folderWas));
    QCOMPARE(outcome, JpegTransform::Outcome::ReadOnly);
    QCOMPARE(readAll(path), source);
    QCOMPARE(QDir(dir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"kept.jpg"});
}

void tst_JpegTransform::permissionsAreKept() {
    const QString path = pathOf("shared.jpg");
    QVERIFY(writeAll(path, turboJpeg(texturedPicture(64, 64), TJPF_RGB, TJSAMP_444)));
    const QFile::Permissions mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser |
                                    QFile::WriteUser | QFile::ReadGroup;
    QVERIFY(QFile::setPermissions(path, mode));
    QVERIFY(JpegTransform::turnFile(path, JpegTurn::RotateLeft, false).ok());
    QCOMPARE(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
             mode & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser));
}

QTEST_MAIN(tst_JpegTransform)
#include "tst_JpegTransform.moc"
