#include "codec/PictureInformation.h"

#include <QColorSpace>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include "codec/DecoderBackends.h"
#include "codec/FormatRegistry.h"
#include "codec/MagickSupport.h"
#include "codec/ModernDecoders.h"

namespace {

struct Header {
    QString format;
    QSize pixels;
    std::optional<Dpi> dpi;
};

// HEIC and AVIF share one reader; the brand of the file's "ftyp" box tells them apart.
QString heifFormatName(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("HEIF");
    const QByteArray start = file.read(12);
    if (start.size() == 12 && start.mid(4, 4) == "ftyp") {
        const QByteArray brand = start.mid(8, 4);
        if (brand == "avif" || brand == "avis")
            return QStringLiteral("AVIF");
        if (brand.startsWith("hei") || brand.startsWith("hev") || brand == "mif1")
            return QStringLiteral("HEIC");
    }
    return QStringLiteral("HEIF");
}

QString ownReaderFormatName(OwnReader reader, const QString& path) {
    switch (reader) {
    case OwnReader::Heif:
        return heifFormatName(path);
    case OwnReader::Jxl:
        return QStringLiteral("JPEG XL");
    case OwnReader::Raw:
        return QStringLiteral("Camera RAW (%1)").arg(QFileInfo(path).suffix().toUpper());
    case OwnReader::QuickTimeImage:
        return QStringLiteral("QuickTime Image");
    case OwnReader::Flic:
        return QStringLiteral("FLIC");
    case OwnReader::None:
        break;
    }
    return {};
}

// The names users know Qt's readers' formats by.
QString qtFormatName(const QByteArray& reader) {
    if (reader == "jpeg")
        return QStringLiteral("JPEG");
    if (reader == "webp")
        return QStringLiteral("WebP");
    if (reader == "svg" || reader == "svgz")
        return QStringLiteral("SVG");
    return QString::fromLatin1(reader).toUpper();
}

// Through the readers of the decoder chain, in its order, asking each only for its header.
Header readHeader(const QString& path) {
    Header header;
    if (const OwnReader own = ModernDecoders::readerFor(path); own != OwnReader::None) {
        header.format = ownReaderFormatName(own, path);
        // These formats record no resolution of their own: their size in points is in pixels.
        header.pixels = ModernDecoders::measure(path, own).toSize();
        return header;
    }
    useOwnTiffHandlers();
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (reader.canRead()) {
        const QByteArray format = reader.format();
        header.format = qtFormatName(format);
        const FormatRow* row = FormatRegistry::rowForQtReader(format);
        QFile file(path);
        if (row && row->headerCheck && (!file.open(QIODevice::ReadOnly) || !row->headerCheck(file)))
            return header; // a header too costly to parse: its name is all it gives
        const QSize declared = reader.size();
        if (declared.isValid()) {
            const QSize stored(std::abs(declared.width()), std::abs(declared.height()));
            header.pixels =
                reader.transformation().testFlag(QImageIOHandler::TransformationRotate90)
                    ? stored.transposed()
                    : stored;
        }
        if (row && row->headerDpi && (file.isOpen() || file.open(QIODevice::ReadOnly)))
            header.dpi = row->headerDpi(file);
        return header;
    }
    if (DecoderBackends::looksLikePdf(path)) {
        header.format = QStringLiteral("PDF");
        return header;
    }
    // What Magick reads: named after its coder for the suffix; its size comes from the decode.
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QByteArray coder = FormatRegistry::magickCoderForSuffix(suffix);
    header.format = coder.isEmpty() ? suffix.toUpper() : QString::fromLatin1(coder);
    return header;
}

} // namespace

PictureInformation readPictureInformation(const QString& path) {
    PictureInformation information;
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile())
        return information;
    information.exists = true;
    information.fileName = info.fileName();
    information.fileBytes = info.size();
    if (!info.isReadable())
        return information;

    const Header header = readHeader(path);
    information.format = header.format;
    information.pixels = header.pixels;
    information.dpi = header.dpi;

    EmbeddedMetadata embedded = readEmbeddedMetadata(path);
    information.camera = std::move(embedded.camera);
    if (!information.dpi)
        information.dpi = embedded.dpi;
    if (!embedded.iccProfile.isEmpty()) {
        information.hasProfile = true;
        const QColorSpace space = QColorSpace::fromIccProfile(embedded.iccProfile);
        if (space.isValid())
            information.colourProfile = space.description();
    }
    return information;
}
