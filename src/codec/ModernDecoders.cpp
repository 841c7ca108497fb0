#include "codec/ModernDecoders.h"

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/legacy/LegacyReaders.h"

#include <QFile>
#include <QFileInfo>

#include <jxl/decode.h>
#include <libheif/heif.h>

#include <algorithm>

namespace ModernDecoders {

OwnReader readerFor(const QString& path) {
    // A trailing blank, as in the program's own "FLC " outputs, does not count.
    const OwnReader bySuffix =
        FormatRegistry::ownReaderForSuffix(QFileInfo(path).suffix().trimmed().toLower());
    if (bySuffix == OwnReader::Raw || bySuffix == OwnReader::QuickTimeImage ||
        bySuffix == OwnReader::Flic)
        return bySuffix;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return OwnReader::None;
    const QByteArray head = file.read(64);
    const auto* bytes = reinterpret_cast<const uint8_t*>(head.constData());
    const auto size = size_t(head.size());
    if (size >= 12 && heif_check_filetype(bytes, int(size)) == heif_filetype_yes_supported)
        return OwnReader::Heif;
    const JxlSignature jxl = JxlSignatureCheck(bytes, size);
    if (jxl == JXL_SIG_CODESTREAM || jxl == JXL_SIG_CONTAINER)
        return OwnReader::Jxl;
    return OwnReader::None;
}

DecodedImage decode(const QString& path, OwnReader reader, int maxSide) {
    if (QFileInfo(path).size() > DecodeLimits::kMaxFileBytes)
        return DecodedImage{};
    DecodedImage result;
    switch (reader) {
    case OwnReader::Heif:
        result = heifDecode(path, maxSide);
        break;
    case OwnReader::Jxl:
        result = jxlDecode(path, true);
        break;
    case OwnReader::Raw:
        return rawDecode(path, maxSide); // fits its own preview
    case OwnReader::QuickTimeImage:
        result = LegacyReaders::quickTimeImagePicture(path);
        break;
    case OwnReader::Flic:
        result = LegacyReaders::flicPicture(path);
        break;
    case OwnReader::None:
        return DecodedImage{};
    }
    if (result.ok && maxSide > 0) {
        if (result.image.width() > maxSide || result.image.height() > maxSide)
            result.image = DecoderBackends::normalised(result.image.scaled(
                maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        result.pointSize = QSizeF();
    }
    return result;
}

QSizeF measure(const QString& path, OwnReader reader) {
    switch (reader) {
    case OwnReader::Heif:
        return heifMeasure(path);
    case OwnReader::Jxl:
        return jxlDecode(path, false).pointSize;
    case OwnReader::Raw:
        return rawMeasure(path);
    case OwnReader::QuickTimeImage:
        return LegacyReaders::quickTimeImagePicture(path).pointSize;
    case OwnReader::Flic:
        return LegacyReaders::flicPicture(path).pointSize;
    case OwnReader::None:
        break;
    }
    return QSizeF();
}

} // namespace ModernDecoders
