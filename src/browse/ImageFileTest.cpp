#include "browse/ImageFileTest.h"

#include "codec/ImageDecoder.h"

const QStringList& imageFileTypes() {
    // Built once, on first use, from whichever thread gets there first.
    static const QStringList types = [] {
        const QStringList lower = ImageDecoder::readableSuffixes();
        QStringList all;
        all.reserve(lower.size() * 2);
        for (const QString& suffix : lower)
            all.append(suffix.toLower());
        for (const QString& suffix : lower)
            all.append(suffix.toUpper());
        all.removeDuplicates();
        return all;
    }();
    return types;
}

bool IsImageFile(const QString& path, const QStringList& types) {
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
    const QStringView extension = QStringView(path).mid(dot + 1, end - dot - 1);
    for (const QString& type : types) {
        if (extension == type) // exact: photo.Jpg matches neither jpg nor JPG
            return true;
    }
    return false;
}
