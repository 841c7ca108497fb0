// Embedded ICC profiles: the screen, thumbnails and the EXIF thumbnail show sRGB; outputs keep
// the source's profile where their format holds one and get sRGB pixels where it cannot.

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtTest>

#include "ColourReference.h"
#include "codec/ColourProfiles.h"
#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"
#include "codec/RasterWriters.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

namespace {

// A mid-saturation Display P3 green, inside sRGB's gamut, so that no channel clips.
const QColor kP3Colour(64, 160, 64);
const QColor kP3Other(150, 90, 60);

QByteArray p3Profile() {
    return QColorSpace(QColorSpace::DisplayP3).iccProfile();
}

QImage p3Picture(QSize size, QColor colour) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    return image;
}

QColor centre(const QImage& image) {
    return QColor(image.pixel(image.width() / 2, image.height() / 2));
}

} // namespace

class tst_ColourProfiles : public QObject {
    Q_OBJECT

private slots:
    void init();
    void referenceIsNoIdentity();
    void screenShowsSrgb_data();
    void screenShowsSrgb();
    void thumbnailShowsSrgb();
    void exifThumbnailInPictureColours();
    void magickPictureWithProfile();
    void outputsKeepProfile_data();
    void outputsKeepProfile();
    void outputsWithoutProfileGetSrgb_data();
    void outputsWithoutProfileGetSrgb();
    void damagedProfiles_data();
    void damagedProfiles();

private:
    std::unique_ptr<QTemporaryDir> dir;
    QString path(const QString& name) const { return dir->filePath(name); }
};

void tst_ColourProfiles::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
}

// The test colour is one whose sRGB value differs from its P3 value, so that a picture shown
// without conversion fails the tests below.
void tst_ColourProfiles::referenceIsNoIdentity() {
    const QColor expected = srgbOf(p3Profile(), kP3Colour);
    QVERIFY2(!near(expected, kP3Colour, 8), qPrintable(expected.name()));
}

void tst_ColourProfiles::screenShowsSrgb_data() {
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("JPEG") << QByteArray("jpeg") << 2;
    QTest::newRow("PNG iCCP") << QByteArray("png") << 2;
    QTest::newRow("TIFF") << QByteArray("tiff") << 2;
    QTest::newRow("WebP") << QByteArray("webp") << 2;
}

void tst_ColourProfiles::screenShowsSrgb() {
    QFETCH(QByteArray, format);
    QFETCH(int, tolerance);
    const QString file = path("p3." + format);
    QImageWriter writer(file, format);
    writer.setQuality(100);
    QVERIFY(writer.write(p3Picture(QSize(64, 48), kP3Colour)));

    const DecodedImage shown = ImageDecoder::decode(file);
    QVERIFY(shown.ok);
    const QColor expected = srgbOf(p3Profile(), kP3Colour);
    QVERIFY2(near(centre(shown.image), expected, tolerance),
             qPrintable(centre(shown.image).name() + " != " + expected.name()));

    // For an export the file's own pixels and colour space stay.
    const DecodedImage source = ImageDecoder::decode(file, ImageDecoder::Colours::Source);
    QVERIFY(source.ok);
    QCOMPARE(source.image.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    QVERIFY(near(centre(source.image), kP3Colour, tolerance));
}

void tst_ColourProfiles::thumbnailShowsSrgb() {
    const QString file = path("big.png");
    QVERIFY(p3Picture(QSize(600, 400), kP3Colour).save(file));
    const DecodedImage thumb = ImageDecoder::decodeScaled(file, 64);
    QVERIFY(thumb.ok);
    QCOMPARE(thumb.image.width(), 64);
    QVERIFY(near(centre(thumb.image), srgbOf(p3Profile(), kP3Colour), 2));
}

// A camera's JPEG: a P3 picture with a small thumbnail in its EXIF block, in another colour so
// that the test knows which of the two it sees.
void tst_ColourProfiles::exifThumbnailInPictureColours() {
    const QString file = path("camera.jpg");
    QImageWriter writer(file, "jpeg");
    writer.setQuality(100);
    QVERIFY(writer.write(p3Picture(QSize(1200, 800), kP3Colour)));

    QByteArray thumbBytes;
    {
        QBuffer buffer(&thumbBytes);
        QVERIFY(buffer.open(QIODevice::WriteOnly));
        QImage thumb(240, 160, QImage::Format_RGB32); // no profile of its own, as cameras do
        thumb.fill(kP3Other);
        QImageWriter thumbWriter(&buffer, "jpeg");
        thumbWriter.setQuality(100);
        QVERIFY(thumbWriter.write(thumb));
    }
    auto image = Exiv2::ImageFactory::open(file.toStdString());
    image->readMetadata();
    Exiv2::ExifThumb(image->exifData())
        .setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>(thumbBytes.constData()),
                          long(thumbBytes.size()));
    image->writeMetadata();

    const DecodedImage thumb = ImageDecoder::decodeScaled(file, 128);
    QVERIFY(thumb.ok);
    QCOMPARE(thumb.image.size(), QSize(128, 85));
    const QColor expected = srgbOf(p3Profile(), kP3Other);
    QVERIFY2(near(centre(thumb.image), expected, 3),
             qPrintable(centre(thumb.image).name() + " != " + expected.name()));
}

// Photoshop files go through Magick: its profile is read there.
void tst_ColourProfiles::magickPictureWithProfile() {
    const QString file = path("p3.psd");
    QFile(file).open(QIODevice::WriteOnly);
    QCOMPARE(writeRaster(p3Picture(QSize(40, 30), kP3Colour), file, fourCharCode("8BPS"), 72), 0);
    const DecodedImage source = ImageDecoder::decode(file, ImageDecoder::Colours::Source);
    QVERIFY(source.ok);
    QCOMPARE(source.image.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    const DecodedImage shown = ImageDecoder::decode(file);
    QVERIFY(shown.ok);
    QVERIFY(near(centre(shown.image), srgbOf(p3Profile(), kP3Colour), 2));
}

void tst_ColourProfiles::outputsKeepProfile_data() {
    QTest::addColumn<uint32_t>("subtype");
    QTest::addColumn<QString>("name");
    QTest::newRow("JPEG") << fourCharCode("JPEG") << "out.jpg";
    QTest::newRow("PNG") << fourCharCode("PNGf") << "out.png";
    QTest::newRow("TIFF") << fourCharCode("TIFF") << "out.tif";
    QTest::newRow("Photoshop") << fourCharCode("8BPS") << "out.psd";
}

void tst_ColourProfiles::outputsKeepProfile() {
    QFETCH(uint32_t, subtype);
    QFETCH(QString, name);
    const QString out = path(name);
    QVERIFY(QFile(out).open(QIODevice::WriteOnly));
    QCOMPARE(writeRaster(p3Picture(QSize(32, 24), kP3Colour), out, subtype, 72), 0);
    const DecodedImage written = ImageDecoder::decode(out, ImageDecoder::Colours::Source);
    QVERIFY(written.ok);
    QCOMPARE(written.image.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    QVERIFY(near(centre(written.image), kP3Colour, 2));
}

void tst_ColourProfiles::outputsWithoutProfileGetSrgb_data() {
    QTest::addColumn<uint32_t>("subtype");
    QTest::addColumn<QString>("name");
    QTest::newRow("BMP") << fourCharCode("BMPf") << "out.bmp";
    QTest::newRow("Targa") << fourCharCode("TPIC") << "out.tga";
    QTest::newRow("SGI") << fourCharCode(".SGI") << "out.sgi";
    QTest::newRow("GIF") << fourCharCode("GIF ") << "out.gif";
}

void tst_ColourProfiles::outputsWithoutProfileGetSrgb() {
    QFETCH(uint32_t, subtype);
    QFETCH(QString, name);
    const QString out = path(name);
    QVERIFY(QFile(out).open(QIODevice::WriteOnly));
    QCOMPARE(writeRaster(p3Picture(QSize(32, 24), kP3Colour), out, subtype, 72), 0);
    const DecodedImage written = ImageDecoder::decode(out, ImageDecoder::Colours::Source);
    QVERIFY(written.ok);
    QVERIFY(!ColourProfiles::needsConversion(written.image));
    // GIF's palette may move a colour by a step or two.
    QVERIFY2(near(centre(written.image), srgbOf(p3Profile(), kP3Colour), 4),
             qPrintable(centre(written.image).name()));
}

// JPEGs whose profile segments are damaged, lying or huge still open, without their profile.
void tst_ColourProfiles::damagedProfiles_data() {
    QTest::addColumn<QByteArray>("segments");
    const QByteArray marker("ICC_PROFILE\0", 12);
    auto app2 = [&](int sequence, int count, const QByteArray& body) {
        QByteArray payload = marker + char(sequence) + char(count) + body;
        QByteArray segment("\xFF\xE2");
        segment += char((payload.size() + 2) >> 8);
        segment += char((payload.size() + 2) & 0xFF);
        return segment + payload;
    };
    const QByteArray profile = p3Profile();
    QTest::newRow("garbage") << app2(1, 1, QByteArray(500, '\x5a'));
    QTest::newRow("sequence 0") << app2(0, 1, profile);
    QTest::newRow("sequence past count") << app2(3, 2, profile);
    QTest::newRow("missing chunk") << app2(1, 2, profile.left(300));
    QTest::newRow("repeated chunk") << app2(1, 2, profile.left(300)) + app2(1, 2, profile.mid(300));
    QTest::newRow("size field lies") << app2(1, 1, [&] {
        QByteArray lying = profile;
        lying[0] = '\x7f'; // a profile that says it is 2 GB long
        return lying;
    }());
    QTest::newRow("truncated") << app2(1, 1, profile.left(100));
    QByteArray many;
    for (int i = 1; i <= 255; ++i)
        many += app2(i, 255, QByteArray(65000, char(i)));
    QTest::newRow("255 chunks of noise") << many;
}

void tst_ColourProfiles::damagedProfiles() {
    QFETCH(QByteArray, segments);
    QByteArray plain;
    {
        QBuffer buffer(&plain);
        QVERIFY(buffer.open(QIODevice::WriteOnly));
        QImage image(16, 16, QImage::Format_RGB32);
        image.fill(kP3Colour);
        QVERIFY(QImageWriter(&buffer, "jpeg").write(image));
    }
    const QByteArray damaged = plain.left(2) + segments + plain.mid(2);
    const QString file = path("damaged.jpg");
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(damaged);
    out.close();

    QBuffer device;
    device.setData(damaged);
    QVERIFY(device.open(QIODevice::ReadOnly));
    const QByteArray found = ColourProfiles::jpegIccProfile(device);
    QVERIFY(found.size() <= ColourProfiles::kMaxProfileBytes);
    QVERIFY(!QColorSpace::fromIccProfile(found).isValid());

    const DecodedImage shown = ImageDecoder::decode(file);
    QVERIFY(shown.ok);
    QCOMPARE(shown.image.size(), QSize(16, 16));
    QVERIFY(ImageDecoder::decodeScaled(file, 8).ok);
}

QTEST_GUILESS_MAIN(tst_ColourProfiles)
#include "tst_ColourProfiles.moc"
