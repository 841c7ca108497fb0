#include "export/FormatTable.h"

const char* const gformats_ns[kFormatCount] = {
    "MooV", "PICS", "SGI ", "8BPS", "BMPf", "FPix", "GIF ", "JPEG", "PNGf", "PNTG",
    "TIFF", "TPIC", "qdgx", "qtif", "PICS", "FLC ", "SWFL", "PDF ", "EPS "};

// Entry 2 shows "SGI " but its encoder is looked up as '.SGI'; entry 14 repeats entry 1.
const uint32_t gformats[kLastRasterFormat + 1] = {
    fourCharCode("MooV"), fourCharCode("PICS"), fourCharCode(".SGI"), fourCharCode("8BPS"),
    fourCharCode("BMPf"), fourCharCode("FPix"), fourCharCode("GIF "), fourCharCode("JPEG"),
    fourCharCode("PNGf"), fourCharCode("PNTG"), fourCharCode("TIFF"), fourCharCode("TPIC"),
    fourCharCode("qdgx"), fourCharCode("qtif"), fourCharCode("PICS"), fourCharCode("FLC "),
    fourCharCode("SWFL")};

uint8_t gformatExport[kFormatCount] = {};

long formatIndexForCode(const QString& code) {
    for (int i = 0; i < kFormatCount; ++i)
        if (code == QLatin1String(gformats_ns[i]))
            return i;
    return -1;
}

QString outputExtension(int index) {
    if (index == kPdfFormat)
        return QStringLiteral("pdf");
    if (index == kEpsFormat)
        return QStringLiteral("eps");
    if (index < 0 || index >= kFormatCount)
        return QString();
    return QLatin1String(gformats_ns[index]);
}

bool formatKeepsTransparentBackground(int index) {
    switch (index) {
    case 2: case 3: case 6: case 8: case 9: case 10: case 13:
        return true;
    default:
        return false;
    }
}
