// The third link of the decoder chain: poppler for PDF documents, first page only.

#include <poppler-qt6.h>

#include <QFile>

#include <QByteArrayView>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <cctype>
#include <cmath>
#include <memory>

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"

namespace {

// The page is rendered at 150 dpi: sharp on screen and in exports up to that resolution, while
// an A4 page stays near 9 megapixels. Larger pages get a lower resolution within the limits.
constexpr double kRenderDpi = 150.0;

// A page is a drawing, not a photograph: past this many pixels a sharper raster shows nothing
// more on screen and costs seconds and gigabytes (a page with an enormous media box).
constexpr double kMaxPagePixels = 64'000'000;

// Time a page may take to draw before its drawing is given up: what filling its raster takes
// on a slow machine (about 60 ns a pixel: two seconds for a page of 32 megapixels), plus one
// second for its content. Checked by poppler between drawing operators.
constexpr std::chrono::milliseconds kRenderBudgetBase{1000};
constexpr double kRenderNanosecondsPerPixel = 60.0;

// Files up to this size may have their cross-reference table rebuilt (see repairAffordable);
// the table's place is looked for within the last kilobyte, as poppler does.
constexpr qint64 kRepairableBytes = 64 * 1024 * 1024;
constexpr qint64 kTrailerReach = 1024;

std::chrono::nanoseconds renderBudget(double pixels) {
    return kRenderBudgetBase +
           std::chrono::nanoseconds(qint64(pixels * kRenderNanosecondsPerPixel));
}

// How far around an image dictionary's /Subtype /Image its /Width and /Height are looked for.
constexpr qsizetype kDictionaryReach = 2048;

// The whole number after `key` in `dict` (the first occurrence), or -1.
qint64 numberAfter(QByteArrayView dict, QByteArrayView key) {
    const qsizetype at = dict.indexOf(key);
    if (at < 0)
        return -1;
    qsizetype i = at + key.size();
    while (i < dict.size() && (dict[i] == ' ' || dict[i] == '\n' || dict[i] == '\r'))
        ++i;
    qint64 value = -1;
    for (; i < dict.size() && dict[i] >= '0' && dict[i] <= '9'; ++i) {
        value = (value < 0 ? 0 : value) * 10 + (dict[i] - '0');
        if (value > (qint64(1) << 40))
            break;
    }
    return value;
}

// Whether the file holds an image whose dictionary claims more pixels than any decoder may
// make. Poppler would scale every row of such an image (minutes for a 3 KB file) and cannot be
// interrupted inside one image. Image dictionaries are plain text even in compressed files:
// a stream object never sits inside an object stream.
bool claimsGiantImage(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > DecodeLimits::kMaxFileBytes)
        return true;
    const uchar* mapped = file.map(0, file.size());
    if (!mapped)
        return false;
    const QByteArrayView bytes(reinterpret_cast<const char*>(mapped), file.size());
    for (qsizetype at = bytes.indexOf("/Image"); at >= 0; at = bytes.indexOf("/Image", at + 1)) {
        const qsizetype from = std::max<qsizetype>(0, at - kDictionaryReach);
        const QByteArrayView dict =
            bytes.sliced(from, std::min<qsizetype>(bytes.size() - from, 2 * kDictionaryReach));
        const qint64 w = numberAfter(dict, "/Width"), h = numberAfter(dict, "/Height");
        if (w > 0 && h > 0 && !DecoderBackends::withinLimits(w, h))
            return true;
    }
    return false;
}

// Whether poppler can find the file's cross-reference table where its trailer says. Where it
// cannot, poppler rebuilds the table by reading the whole file, which repairs a cut-off
// download in moments but takes minutes for a file of a gigabyte: past a size, such a file is
// refused.
bool repairAffordable(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (file.size() <= kRepairableBytes)
        return true;
    if (!file.seek(file.size() - kTrailerReach))
        return false;
    const QByteArray tail = file.read(kTrailerReach);
    const qsizetype at = tail.lastIndexOf("startxref");
    if (at < 0)
        return false;
    qsizetype digit = at + 9;
    while (digit < tail.size() && std::isspace(uchar(tail[digit])))
        ++digit;
    qint64 offset = 0;
    qsizetype end = digit;
    for (; end < tail.size() && end < digit + 18 && std::isdigit(uchar(tail[end])); ++end)
        offset = offset * 10 + (tail[end] - '0');
    if (end == digit || offset >= file.size() || !file.seek(offset))
        return false;
    const QByteArray there = file.read(32);
    // A classic table, or a cross-reference stream: "12 0 obj".
    return there.startsWith("xref") || QByteArrayView(there).contains(" obj");
}

bool pastDeadline(const QVariant& deadline) {
    return std::chrono::steady_clock::now().time_since_epoch().count() > deadline.toLongLong();
}

// The document's first page, or null. A page about to be drawn (`drawing`) is also refused when
// an image of the file claims more pixels than may be decoded.
std::unique_ptr<Poppler::Page> firstPage(const QString& path,
                                         std::unique_ptr<Poppler::Document>& document,
                                         bool drawing) {
    if (!repairAffordable(path) || (drawing && claimsGiantImage(path)))
        return nullptr;
    document = Poppler::Document::load(path);
    if (!document || document->isLocked() || document->numPages() < 1)
        return nullptr;
    return document->page(0);
}

double renderDpiFor(QSizeF points) {
    double dpi = kRenderDpi;
    const double longest = std::max(points.width(), points.height());
    if (longest * dpi / 72.0 > DecodeLimits::kMaxSide)
        dpi = DecodeLimits::kMaxSide * 72.0 / longest;
    const double area = points.width() * points.height() * (dpi / 72.0) * (dpi / 72.0);
    const double budget = std::min(double(DecodeLimits::kMaxPixels), kMaxPagePixels);
    if (area > budget)
        dpi *= std::sqrt(budget / area);
    return dpi;
}

} // namespace

namespace DecoderBackends {

bool looksLikePdf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // The header may follow some junk bytes; readers look within the first kilobyte.
    return file.read(1024).contains("%PDF-");
}

namespace {

// The first page drawn at the resolution `dpiFor` picks for its size in points, within the
// time budget of its pixel count.
template <class DpiFor> DecodedImage renderFirstPage(const QString& path, DpiFor dpiFor) {
    DecodedImage result;
    std::unique_ptr<Poppler::Document> document;
    const std::unique_ptr<Poppler::Page> page = firstPage(path, document, true);
    if (!page)
        return result;
    const QSizeF points = page->pageSizeF();
    if (points.isEmpty())
        return result;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    document->setPaperColor(Qt::white);
    const double dpi = dpiFor(points);
    const double pixels = points.width() * points.height() * (dpi / 72.0) * (dpi / 72.0);
    const auto deadline = std::chrono::steady_clock::now() + renderBudget(pixels);
    QImage pageImage = page->renderToImage(
        dpi, dpi, -1, -1, -1, -1, Poppler::Page::Rotate0, nullptr, nullptr, pastDeadline,
        QVariant::fromValue(qint64(deadline.time_since_epoch().count())));
    if (std::chrono::steady_clock::now() > deadline)
        return result; // given up half drawn: no picture rather than a partial one
    if (pageImage.isNull())
        return result;
    // A page is paper: opaque.
    result.image = pageImage.convertToFormat(QImage::Format_RGB32);
    result.pointSize = points;
    result.ok = !result.image.isNull();
    return result;
}

} // namespace

DecodedImage pdfDecode(const QString& path) {
    return renderFirstPage(path, renderDpiFor);
}

DecodedImage pdfDecodeScaled(const QString& path, int maxSide) {
    return renderFirstPage(path, [maxSide](QSizeF points) {
        // Never sharper than the whole-page render: a tiny page is not blown up to giant dpi.
        const double fit = maxSide * 72.0 / std::max(points.width(), points.height());
        return std::min(fit, renderDpiFor(points));
    });
}

QSizeF pdfMeasure(const QString& path) {
    std::unique_ptr<Poppler::Document> document;
    const std::unique_ptr<Poppler::Page> page = firstPage(path, document, false);
    return page ? page->pageSizeF() : QSizeF();
}

} // namespace DecoderBackends
