#include "export/FormatTable.h"

uint8_t gformatExport[kFormatCount] = {};

long formatIndexForCode(const QString& code) {
    for (int i = 0; i < kFormatCount; ++i)
        if (code == QLatin1String(gformats_ns[i]))
            return i;
    return -1;
}

QString outputExtension(int index) {
    if (index < 0 || index >= kFormatCount)
        return QString();
    const FormatRow& row = FormatRegistry::outputRow(index);
    return QLatin1String(row.extension ? row.extension : row.code);
}

bool formatKeepsTransparentBackground(int index) {
    return isRasterFormat(index) &&
           FormatRegistry::outputRow(index).keepsTransparency;
}
