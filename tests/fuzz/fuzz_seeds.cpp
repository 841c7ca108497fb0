// Writes the fuzzers' starting inputs: small valid files of every kind each harness reads.
//   fuzz_seeds FOLDER  ->  FOLDER/{PropertyList,FolderIndex,HeaderReaders,ImageDecoder}/...

#include "codec/ImageDecoder.h"

#include <Magick++.h>

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QtEndian>

#include <cstdio>

namespace {

QDir root;

bool put(const QString& harness, const QString& name, const QByteArray& bytes) {
    root.mkpath(harness);
    QFile file(root.filePath(harness + u'/' + name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A small picture with colours, transparency and a resolution, so that every field is used.
QImage picture() {
    QImage image(7, 5, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(0, 0, 4, 5, Qt::red);
    painter.fillRect(4, 0, 3, 3, QColor(0, 0, 255, 128));
    painter.end();
    image.setDotsPerMeterX(11811); // 300 dpi
    image.setDotsPerMeterY(5906);  // 150 dpi
    return image;
}

QByteArray viaQt(const QImage& image, const QByteArray& format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    return writer.write(image) ? bytes : QByteArray();
}

QByteArray viaMagick(const QImage& image, const QString& coder) {
    try {
        const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
        Magick::Image magick(argb.width(), argb.height(), "BGRA", Magick::CharPixel,
                             argb.constBits());
        magick.magick(coder.toUpper().toStdString());
        Magick::Blob blob;
        magick.write(&blob);
        return QByteArray(static_cast<const char*>(blob.data()), qsizetype(blob.length()));
    } catch (const std::exception&) {
        return {};
    }
}

// A JPEG header whose only resolution is in its EXIF block: 240 x 120 dots per centimetre.
QByteArray jpegWithExifResolution() {
    QByteArray tiff("II*\0\x08\0\0\0", 8);
    auto u16 = [&](quint16 v) { tiff.append(char(v & 0xFF)).append(char(v >> 8)); };
    auto u32 = [&](quint32 v) { u16(quint16(v & 0xFFFF)), u16(quint16(v >> 16)); };
    u16(3);
    u16(282), u16(5), u32(1), u32(50);
    u16(283), u16(5), u32(1), u32(58);
    u16(296), u16(3), u32(1), u32(3);
    u32(0);
    u32(240), u32(1), u32(120), u32(1);
    QByteArray app1 = QByteArray("Exif\0\0", 6) + tiff;
    QByteArray jpeg("\xFF\xD8\xFF\xE1", 4);
    jpeg.append(char((app1.size() + 2) >> 8)).append(char((app1.size() + 2) & 0xFF));
    return jpeg + app1 + QByteArray("\xFF\xD9", 2);
}

const char kPdf[] = "%PDF-1.4\n"
                    "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                    "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
                    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 20 10]/Contents 4 0 R>>endobj\n"
                    "4 0 obj<</Length 22>>stream\n1 0 0 rg 0 0 10 10 re f\nendstream endobj\n"
                    "trailer<</Root 1 0 R>>\n%%EOF\n";

const char kSvg[] = "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='4'>"
                    "<rect width='4' height='4' fill='red'/><text y='4'>a</text></svg>";

void propertyLists() {
    put("PropertyList", "prefs",
        "{\n    angle = -30;\n    dpi = 300;\n    dstLocation = "
        "\"/home/ana/Desktop\";\n    expformat = \"GIF \";\n}\n");
    put("PropertyList", "kinds",
        "// comment\n{ a = (1, \"two\", <0fA9>, {b = c;},); /* c */ "
        "d = 'x\\ty\\U00e9\\101\\n'; }");
    put("PropertyList", "bare", "a = b; c = \"d\";");
}

void folders() {
    put("FolderIndex", "plain", QByteArray("\0img10.png\nimg2.png\na.jpg\nB.tif", 31));
    put("FolderIndex", "links",
        "\x1F"
        "a\nb\nc");
    put("FolderIndex", "bytes", "\x20\xFF\xFE.png\n\xC3\xA9t\xC3\xA9.jpg\n\xEF\xBF\xBD\nx y");
}

void headers(const QImage& image) {
    for (const char* format : {"png", "jpeg", "bmp", "tiff"})
        put("HeaderReaders", format, viaQt(image, format));
    put("HeaderReaders", "exif", jpegWithExifResolution());
}

// One file of every readable suffix that Qt or Magick can write here, behind the byte that
// makes the harness give it that suffix.
int images(const QImage& image) {
    const QStringList suffixes = ImageDecoder::readableSuffixes();
    if (suffixes.size() > 256)
        return 0;
    const QList<QByteArray> qtWrites = QImageWriter::supportedImageFormats();
    int written = 0;
    for (int i = 0; i < suffixes.size(); ++i) {
        const QString& suffix = suffixes.at(i);
        QByteArray bytes;
        if (suffix == u"pdf")
            bytes = kPdf;
        else if (suffix == u"svg")
            bytes = kSvg;
        else if (qtWrites.contains(suffix.toLatin1()))
            bytes = viaQt(image, suffix.toLatin1());
        if (bytes.isEmpty())
            bytes = viaMagick(image, suffix);
        if (!bytes.isEmpty() && put("ImageDecoder", suffix, char(i) + bytes))
            ++written;
    }
    return written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    root = QDir(QString::fromLocal8Bit(argv[1]));
    root.mkpath(QStringLiteral("."));
    const QImage image = picture();
    propertyLists();
    folders();
    headers(image);
    std::printf("%d image seeds\n", images(image));
    return 0;
}
