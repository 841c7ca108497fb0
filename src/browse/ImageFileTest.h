#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

// The extensions of image files, in lower and in upper case (jpg, JPG, png, PNG, ...), compared
// exactly: photo.Jpg is no image. A set may name a second, larger list that is asked only for
// extensions the first lacks: the program's set knows Qt's, the PDF reader's and its own
// readers' extensions at once, and Magick's only when it must, because listing those loads
// every one of Magick's coder modules (some 14 MB and 50 ms). A folder of JPEGs converted from
// the command line never loads them.
class ImageFileTypes {
public:
    // Exactly these extensions.
    ImageFileTypes(QStringList types) : first(std::move(types)) {}
    ImageFileTypes(QStringList first, const QStringList& (*more)())
        : first(std::move(first)), more(more) {}

    bool contains(QStringView extension) const;
    QStringList all() const; // the second list's too

private:
    QStringList first;
    const QStringList& (*more)() = nullptr;
};

// Every extension the decoder chain reads.
const ImageFileTypes& imageFileTypes();

// True when the path's extension (text after the last "." of the last component) is one of
// `types`. No look at the file itself: a folder named x.png counts.
bool IsImageFile(const QString& path, const ImageFileTypes& types);
inline bool IsImageFile(const QString& path) {
    return IsImageFile(path, imageFileTypes());
}
