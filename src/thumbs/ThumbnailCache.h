#pragma once

#include <QImage>
#include <QString>

// The thumbnail cache every desktop program shares ($XDG_CACHE_HOME/thumbnails): PNG files named
// by the MD5 of the picture's file URI, in "normal" (up to 128 pixels) and "large" (up to 256)
// folders, each stamped with the URI and the picture's modification time (Thumb::URI,
// Thumb::MTime) so that a picture changed since is thumbnailed again. Entries are written whole
// (temporary file, then rename), readable by the user only, in folders only the user may enter.
// A picture that could not be thumbnailed is remembered under fail/ormidon-<version>/, so that
// it is not decoded again until it changes.
namespace ThumbnailCache {

enum class Flavour { Normal, Large };

// The largest side of the flavour's pictures: 128 or 256.
int sideOf(Flavour flavour);

// The flavour whose pictures are large enough for `pixels` on the longer side (large past 128).
Flavour flavourFor(int pixels);

// $XDG_CACHE_HOME/thumbnails, or ~/.cache/thumbnails when that is not set to an absolute path.
QString root();

// What the cache knows a picture by: its absolute path, file URI and modification time.
struct Source {
    QString path;
    QByteArray uri;
    qint64 mtime = 0;
    qint64 size = 0;
    bool valid = false; // a regular file that could be looked at
};

Source describe(const QString& path);

// The file of the picture's entry in the flavour's folder, and of its failure entry.
QString entryPath(const Source& source, Flavour flavour);
QString failurePath(const Source& source);

// Pictures inside the cache are never thumbnailed into it.
bool isInsideCache(const QString& path);

// The picture's entry when it is there and current (same URI, same modification time, within
// the flavour's size); a null image otherwise.
QImage read(const Source& source, Flavour flavour);

// Stores `thumbnail` (already no larger than the flavour's side) as the picture's entry.
bool write(const Source& source, Flavour flavour, const QImage& thumbnail);

// Whether this program failed on the picture as it is now, and records such a failure.
bool hasFailed(const Source& source);
bool writeFailure(const Source& source);

} // namespace ThumbnailCache
