// The third link of the decoder chain: poppler for PDF documents, first page only.

#include <poppler-qt6.h>

#include <QFile>

#include <cmath>
#include <memory>

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"

namespace {

// The page is rendered at 150 dpi: sharp on screen and in exports up to that resolution, while
// an A4 page stays near 9 megapixels. Larger pages get a lower resolution within the limits.
constexpr double kRenderDpi = 150.0;

std::unique_ptr<Poppler::Page> firstPage(const QString& path,
                                         std::unique_ptr<Poppler::Document>& document) {
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
    if (area > double(DecodeLimits::kMaxPixels))
        dpi *= std::sqrt(double(DecodeLimits::kMaxPixels) / area);
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

DecodedImage pdfDecode(const QString& path) {
    DecodedImage result;
    std::unique_ptr<Poppler::Document> document;
    const std::unique_ptr<Poppler::Page> page = firstPage(path, document);
    if (!page)
        return result;
    const QSizeF points = page->pageSizeF();
    if (points.isEmpty())
        return result;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    document->setPaperColor(Qt::white);
    const double dpi = renderDpiFor(points);
    QImage pageImage = page->renderToImage(dpi, dpi);
    if (pageImage.isNull())
        return result;
    // A page is paper: opaque.
    result.image = pageImage.convertToFormat(QImage::Format_RGB32);
    result.pointSize = points;
    result.ok = !result.image.isNull();
    return result;
}

QSizeF pdfMeasure(const QString& path) {
    std::unique_ptr<Poppler::Document> document;
    const std::unique_ptr<Poppler::Page> page = firstPage(path, document);
    return page ? page->pageSizeF() : QSizeF();
}

} // namespace DecoderBackends
