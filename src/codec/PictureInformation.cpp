#include "codec/PictureInformation.h"

#include <QColorSpace>
#include <QFile>
#include <QFileInfo>

#include "codec/EmbeddedMetadata.h"
#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"

namespace {

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

// The name users know the file's format by, as the decoder chain reads it.
QString formatName(const QString& path, const ImageDecoder::PictureHeader& header) {
    if (header.own != OwnReader::None)
        return ownReaderFormatName(header.own, path);
    if (!header.qtFormat.isEmpty())
        return qtFormatName(header.qtFormat);
    if (header.pdf)
        return QStringLiteral("PDF");
    // What Magick reads: named after its coder for the suffix; its size comes from the decode.
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QByteArray coder = FormatRegistry::magickCoderForSuffix(suffix);
    return coder.isEmpty() ? suffix.toUpper() : QString::fromLatin1(coder);
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

    // The header only: QuickTime Image and FLIC, whose size would take a decode, give none.
    const ImageDecoder::PictureHeader header = ImageDecoder::readHeader(path);
    information.format = formatName(path, header);
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
