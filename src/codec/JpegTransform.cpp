#include "codec/JpegTransform.h"

#include "codec/DecodeLimits.h"
#include "codec/FileStructures.h"
#include "codec/JpegTurnMetadata.h"
#include "codec/SafeReplace.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <optional>

#include <unistd.h>

#include <turbojpeg.h>

namespace {

// The eight ways of turning and mirroring a picture, as what they do to a point (x, y) about the
// picture's centre, y growing downwards: (x, y) -> (a x + b y, c x + d y).
struct Turn {
    int a, b, c, d;
    bool operator==(const Turn&) const = default;
    // This turn after `first`.
    Turn after(const Turn& first) const {
        return {a * first.a + b * first.c, a * first.b + b * first.d, c * first.a + d * first.c,
                c * first.b + d * first.d};
    }
    bool swapsSides() const { return a == 0; }
};

// libjpeg-turbo's transforms, indexed by TJXOP_*.
constexpr std::array<Turn, TJ_NUMXOP> kTransforms = {{
    {1, 0, 0, 1},   // TJXOP_NONE
    {-1, 0, 0, 1},  // TJXOP_HFLIP
    {1, 0, 0, -1},  // TJXOP_VFLIP
    {0, 1, 1, 0},   // TJXOP_TRANSPOSE: across the top-left to bottom-right diagonal
    {0, -1, -1, 0}, // TJXOP_TRANSVERSE: across the other diagonal
    {0, -1, 1, 0},  // TJXOP_ROT90: a quarter turn clockwise
    {-1, 0, 0, -1}, // TJXOP_ROT180
    {0, 1, -1, 0},  // TJXOP_ROT270
}};

// What the EXIF orientation (1 to 8) asks of the stored picture to show it upright.
constexpr std::array<int, 9> kOrientationTransform = {
    TJXOP_NONE,      TJXOP_NONE,  TJXOP_HFLIP,      TJXOP_ROT180, TJXOP_VFLIP,
    TJXOP_TRANSPOSE, TJXOP_ROT90, TJXOP_TRANSVERSE, TJXOP_ROT270};

int userTransform(JpegTurn turn) {
    switch (turn) {
    case JpegTurn::RotateLeft:
        return TJXOP_ROT270;
    case JpegTurn::RotateRight:
        return TJXOP_ROT90;
    case JpegTurn::FlipHorizontal:
        return TJXOP_HFLIP;
    case JpegTurn::FlipVertical:
        return TJXOP_VFLIP;
    }
    return TJXOP_NONE;
}

// The one transform that shows the stored picture as the user asked: the orientation the file
// records first, then the user's turn.
int combinedTransform(int orientation, JpegTurn turn) {
    const Turn shown = kTransforms[size_t(kOrientationTransform[size_t(orientation)])];
    const Turn wanted = kTransforms[size_t(userTransform(turn))].after(shown);
    for (size_t op = 0; op < kTransforms.size(); ++op)
        if (kTransforms[op] == wanted)
            return int(op);
    return TJXOP_NONE; // unreachable: the eight form a group
}

// The edge pixels a transform cannot move losslessly: a partial block at the right edge moves to
// the left one under a horizontal flip or a left turn, a partial block at the bottom to the top
// under a vertical flip or a right turn.
void partialEdges(int op, const FileStructures::JpegFrame& frame, int& columns, int& rows) {
    const bool movesRightEdge =
        op == TJXOP_HFLIP || op == TJXOP_ROT270 || op == TJXOP_TRANSVERSE || op == TJXOP_ROT180;
    const bool movesBottomEdge =
        op == TJXOP_VFLIP || op == TJXOP_ROT90 || op == TJXOP_TRANSVERSE || op == TJXOP_ROT180;
    // The block a transform moves whole: 8 pixels for a grey picture, else 8 times the largest
    // sampling factor of the components.
    int blockWidth = 8, blockHeight = 8;
    if (frame.components.size() > 1) {
        for (const FileStructures::JpegFrame::Component& c : frame.components) {
            blockWidth = std::max(blockWidth, 8 * c.horizontal);
            blockHeight = std::max(blockHeight, 8 * c.vertical);
        }
    }
    columns = movesRightEdge ? frame.width % blockWidth : 0;
    rows = movesBottomEdge ? frame.height % blockHeight : 0;
}

struct TjHandle {
    tjhandle handle = tjInitTransform();
    ~TjHandle() {
        if (handle)
            tjDestroy(handle);
    }
};

// One transform through libjpeg-turbo. Any warning (a truncated or damaged stream) fails it:
// libjpeg would otherwise fill the missing blocks with grey and carry on.
bool transform(const QByteArray& jpeg, int op, int options, QByteArray& out) {
    TjHandle tj;
    if (!tj.handle)
        return false;
    tjtransform how{};
    how.op = op;
    how.options = options;
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const int failed =
        tjTransform(tj.handle, reinterpret_cast<const unsigned char*>(jpeg.constData()),
                    static_cast<unsigned long>(jpeg.size()), 1, &buffer, &size, &how,
                    TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS);
    if (failed == 0 && buffer && size > 0)
        out = QByteArray(reinterpret_cast<const char*>(buffer), qsizetype(size));
    tjFree(buffer);
    return failed == 0 && !out.isEmpty();
}

// The EXIF thumbnail gets the picture's transform; its few edge pixels may go.
QByteArray turnThumbnail(const QByteArray& thumbnail, int op) {
    QByteArray out;
    if (!JpegTransform::looksLikeJpeg(thumbnail) ||
        !transform(thumbnail, op, TJXOPT_TRIM | TJXOPT_COPYNONE, out))
        return {};
    return out;
}

// Whether the user may change `info`. A file or folder its owner marked read-only is left
// alone even by a user whom the system would let write it (root).
bool writable(const QFileInfo& info) {
    if (!info.isWritable())
        return false;
    return info.ownerId() != uint(geteuid()) || info.permissions().testFlag(QFile::WriteOwner);
}

// Whether a new file can be put in place of `path`: the file itself and its folder writable.
bool canReplace(const QString& path) {
    const QFileInfo file(QFileInfo(path).canonicalFilePath());
    return writable(file) && writable(QFileInfo(file.absolutePath()));
}

} // namespace

namespace JpegTransform {

bool looksLikeJpeg(const QByteArray& bytes) {
    return bytes.size() >= 4 && uint8_t(bytes[0]) == 0xff && uint8_t(bytes[1]) == 0xd8 &&
           uint8_t(bytes[2]) == 0xff;
}

bool isJpegFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && looksLikeJpeg(file.read(4));
}

Result turnBytes(const QByteArray& jpeg, JpegTurn turn, bool allowTrim, QByteArray& turned) {
    turned.clear();
    Result result;
    if (!looksLikeJpeg(jpeg))
        return result;
    QBuffer device;
    device.setData(jpeg);
    device.open(QIODevice::ReadOnly);
    const std::optional<FileStructures::JpegFrame> frame =
        FileStructures::jpegFrame(device, FileStructures::kMaxJpegSegments);
    if (!frame || frame->components.isEmpty()) {
        result.outcome = Outcome::Damaged;
        return result;
    }
    const int width = frame->width, height = frame->height;
    if (width <= 0 || height <= 0 || width > DecodeLimits::kMaxSide ||
        height > DecodeLimits::kMaxSide || int64_t(width) * height > DecodeLimits::kMaxPixels) {
        result.outcome = Outcome::TooLarge;
        return result;
    }

    const int op = combinedTransform(JpegTurnMetadata::orientation(jpeg), turn);
    partialEdges(op, *frame, result.trimmedColumns, result.trimmedRows);
    const bool trims = result.trimmedColumns > 0 || result.trimmedRows > 0;
    int options = trims ? TJXOPT_TRIM : TJXOPT_PERFECT; // markers are copied (no COPYNONE)
    if (frame->progressive)
        options |= TJXOPT_PROGRESSIVE;
    // Damage is found before the question of the edges is asked: the transform reads every block.
    QByteArray out;
    if (!transform(jpeg, op, options, out)) {
        result.outcome = Outcome::Damaged;
        return result;
    }
    if (trims && !allowTrim) {
        result.outcome = Outcome::NeedsTrim;
        return result;
    }

    const bool swaps = kTransforms[size_t(op)].swapsSides();
    const int newWidth =
        (swaps ? height : width) - (swaps ? result.trimmedRows : result.trimmedColumns);
    const int newHeight =
        (swaps ? width : height) - (swaps ? result.trimmedColumns : result.trimmedRows);
    if (!JpegTurnMetadata::settle(out, newWidth, newHeight, [op](const QByteArray& thumb) {
            return turnThumbnail(thumb, op);
        })) {
        result.outcome = Outcome::Damaged; // metadata that cannot be rewritten would turn it twice
        return result;
    }
    turned = std::move(out);
    result.outcome = Outcome::Done;
    return result;
}

Result turnFile(const QString& path, JpegTurn turn, bool allowTrim) {
    Result result;
    QFile source(path);
    if (!source.open(QIODevice::ReadOnly)) {
        result.outcome = Outcome::Unreadable;
        return result;
    }
    if (source.size() > DecodeLimits::kMaxFileBytes) {
        result.outcome = Outcome::TooLarge;
        return result;
    }
    const QByteArray bytes = source.readAll();
    source.close();
    if (bytes.isEmpty()) {
        result.outcome = Outcome::Unreadable;
        return result;
    }
    QByteArray turned;
    result = turnBytes(bytes, turn, allowTrim, turned);
    if (!result.ok())
        return result;
    if (!canReplace(path)) {
        result.outcome = Outcome::ReadOnly;
        return result;
    }
    // The new file is written beside the old one, synced and renamed over it, and takes its
    // permissions; a link is followed, so the picture it leads to is the one turned.
    QSaveFile target(QFileInfo(path).canonicalFilePath());
    if (!SafeReplace::openForReplacement(target)) {
        result.outcome = Outcome::ReadOnly;
        return result;
    }
    if (target.write(turned) != turned.size() || !target.commit()) {
        target.cancelWriting();
        result.outcome = Outcome::WriteFailed;
        return result;
    }
    return result;
}

} // namespace JpegTransform
