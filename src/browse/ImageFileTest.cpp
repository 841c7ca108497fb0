#include "browse/ImageFileTest.h"

#include "codec/ImageDecoder.h"

namespace {

// Each suffix in lower and in upper case, each once.
QStringList inBothCases(const QStringList& suffixes) {
    QStringList all;
    all.reserve(suffixes.size() * 2);
    for (const QString& suffix : suffixes)
        all.append(suffix.toLower());
    for (const QString& suffix : suffixes)
        all.append(suffix.toUpper());
    all.removeDuplicates();
    return all;
}

const QStringList& everyType() {
    static const QStringList types = inBothCases(ImageDecoder::readableSuffixes());
    return types;
}

} // namespace

bool ImageFileTypes::contains(QStringView extension) const {
    for (const QString& type : first)
        if (extension == type)
            return true;
    if (!more)
        return false;
    for (const QString& type : more())
        if (extension == type)
            return true;
    return false;
}

QStringList ImageFileTypes::all() const {
    if (!more)
        return first;
    QStringList both = first + more();
    both.removeDuplicates();
    return both;
}

const ImageFileTypes& imageFileTypes() {
    // Built once, on first use, from whichever thread gets there first.
    static const ImageFileTypes types(inBothCases(ImageDecoder::suffixesReadWithoutMagick()),
                                      everyType);
    return types;
}

bool IsImageFile(const QString& path, const ImageFileTypes& types) {
    if (path.isEmpty())
        return false;
    // The last component, trailing separators aside ("x.png/" is still x.png).
    qsizetype end = path.size();
    while (end > 0 && path.at(end - 1) == u'/')
        --end;
    const qsizetype slash = end > 0 ? path.lastIndexOf(u'/', end - 1) : -1;
    const qsizetype dot = end > 0 ? path.lastIndexOf(u'.', end - 1) : -1;
    if (dot <= slash)
        return false; // no extension
    return types.contains(QStringView(path).mid(dot + 1, end - dot - 1));
}
