#pragma once

#include <QByteArray>
#include <QString>

// Lossless quarter turns and flips of JPEG files: the compressed blocks are rearranged by
// libjpeg-turbo's transform, never decoded to pixels and encoded again, so nothing of the
// picture's quality is lost however often it is turned.
//
// The turn applies to the picture as it is shown: a file whose EXIF orientation asks for a turn
// (a camera held upright) gets that turn and the user's one in a single transform, and its
// orientation becomes 1. Every marker of the source is kept (EXIF, XMP, IPTC, the colour
// profile, comments); the EXIF pixel size follows the new size, and the EXIF thumbnail is turned
// with the picture.
//
// JPEG stores its picture in blocks of 8 or 16 pixels a side (the MCU). A block at the right or
// bottom edge that is only partly filled cannot be moved losslessly to the left or top edge, so
// a turn that would put one there either is refused or, when the caller allows it, drops those
// few edge pixels (trim).

enum class JpegTurn { RotateLeft, RotateRight, FlipHorizontal, FlipVertical };

namespace JpegTransform {

enum class Outcome {
    Done,       // turned; for a file, the new file is in place
    NeedsTrim,  // nothing done: the turn drops the edge pixels trimmedColumns/trimmedRows
    NotJpeg,    // the bytes are no JPEG
    Damaged,    // truncated or damaged: a lossless turn would keep the damage or lose more
    TooLarge,   // larger than the decoders accept
    Unreadable, // the file could not be read
    ReadOnly,   // the file or its folder cannot be written: nothing changed
    WriteFailed // the new file could not be completed (a full disk): the old one is kept
};

struct Result {
    Outcome outcome = Outcome::NotJpeg;
    // The edge pixels of the source (in its stored orientation) that a trim drops, or dropped.
    int trimmedColumns = 0;
    int trimmedRows = 0;
    bool ok() const { return outcome == Outcome::Done; }
};

// Whether `bytes` start like a JPEG file (the start-of-image marker and another marker).
bool looksLikeJpeg(const QByteArray& bytes);
// Whether the file at `path` starts like a JPEG, whatever its name.
bool isJpegFile(const QString& path);

// `jpeg` turned as the user asked, into `turned`. With allowTrim false a turn that would drop
// edge pixels gives NeedsTrim and leaves `turned` empty.
Result turnBytes(const QByteArray& jpeg, JpegTurn turn, bool allowTrim, QByteArray& turned);

// Rewrites the JPEG file at `path` turned: through a temporary file in the same folder, synced
// and renamed over the file, with the file's permissions. On any outcome but Done the file is
// as it was.
Result turnFile(const QString& path, JpegTurn turn, bool allowTrim);

} // namespace JpegTransform
