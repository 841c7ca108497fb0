#pragma once

#include <QString>
#include <QStringList>

// The readable types: every extension the decoder chain can read, in lower and in upper case
// (jpg, JPG, png, PNG, ...). Compared exactly: photo.Jpg is no image.
const QStringList& imageFileTypes();

// True when the path's extension (text after the last "." of the last component) equals one of
// `types` exactly. No look at the file itself: a folder named x.png counts.
bool IsImageFile(const QString& path, const QStringList& types);
inline bool IsImageFile(const QString& path) {
    return IsImageFile(path, imageFileTypes());
}
