#include "codec/FormatRegistry.h"

#include <QString>

namespace FormatRegistry {

namespace {

QStringList words(const char* list) {
    return list ? QString::fromLatin1(list).split(u' ', Qt::SkipEmptyParts) : QStringList();
}

} // namespace

const FormatRow* rowForMagickCoder(QByteArrayView coder) {
    const QString name = QString::fromLatin1(coder);
    for (const FormatRow& row : kRows)
        if (words(row.magickCoders).contains(name))
            return &row;
    return nullptr;
}

const FormatRow* rowForSubtype(uint32_t subtype) {
    if (subtype == 0)
        return nullptr;
    for (const FormatRow& row : kRows)
        if (row.subtype == subtype)
            return &row;
    return nullptr;
}

const FormatRow* rowForQtReader(QByteArrayView name) {
    for (const FormatRow& row : kRows)
        if (row.qtReader && name == QByteArrayView(row.qtReader))
            return &row;
    return nullptr;
}

const FormatRow* rowWithOwnReaderForSuffix(const QString& suffix) {
    for (const FormatRow& row : kRows)
        if (row.ownReader && words(row.suffixes).contains(suffix))
            return &row;
    return nullptr;
}

QStringList ownReaderSuffixes() {
    QStringList suffixes;
    for (const FormatRow& row : kRows)
        if (row.ownReader)
            suffixes += words(row.suffixes);
    return suffixes;
}

QStringList suffixesOfMagickCoder(QByteArrayView coder) {
    if (const FormatRow* row = rowForMagickCoder(coder))
        return words(row->suffixes);
    return {QString::fromLatin1(coder).toLower()};
}

QByteArray magickCoderForSuffix(const QString& suffix) {
    for (const FormatRow& row : kRows) {
        const QStringList coders = words(row.magickCoders);
        if (!coders.isEmpty() && words(row.suffixes).contains(suffix))
            return coders.first().toLatin1();
    }
    return {};
}

} // namespace FormatRegistry
