#include "export/DocumentExport.h"

#include "codec/SafeReplace.h"
#include "view/RotationGeometry.h"

#include <QBuffer>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <poppler-qt6.h>

#include <cmath>
#include <memory>

namespace {

// The page's size in whole points, as PostScript's bounding box wants it: a fraction of a point
// still needs its point.
QSize pageSizeInPoints(const QSizeF& size) {
    return QSize(int(std::ceil(size.width() - 1e-3)), int(std::ceil(size.height() - 1e-3)));
}

// Makes the %%BoundingBox comment of the EPS header name the page, whatever the converter chose.
QByteArray withBoundingBox(QByteArray eps, const QSize& page) {
    const QByteArray wanted = "%%BoundingBox: 0 0 " + QByteArray::number(page.width()) + ' ' +
                              QByteArray::number(page.height());
    const QByteArray key = "%%BoundingBox:";
    const qsizetype at = eps.indexOf(key);
    if (at < 0) {
        // No box at all: put it right after the first line (the "%!PS-Adobe" line).
        const qsizetype eol = eps.indexOf('\n');
        if (eol >= 0)
            eps.insert(eol + 1, wanted + '\n');
        return eps;
    }
    qsizetype end = eps.indexOf('\n', at);
    if (end < 0)
        end = eps.size();
    qsizetype lineEnd = end;
    if (lineEnd > at && eps.at(lineEnd - 1) == '\r')
        --lineEnd;
    if (eps.mid(at, lineEnd - at) != wanted)
        eps.replace(at, lineEnd - at, wanted);
    return eps;
}

} // namespace

bool writePictureAsPdf(const QImage& picture, const QRectF& bounds, int degrees,
                       const QString& outputPath) {
    const QRectF page = rotatedRectBounds(bounds, float(degrees));
    if (!(page.width() > 0) || !(page.height() > 0) || outputPath.isEmpty())
        return false;

    // Written beside the output and renamed over it when complete, so that a failure (a full
    // disk, too little memory for the page's compressed picture) leaves the output as it was.
    QSaveFile file(outputPath);
    if (!SafeReplace::openForReplacement(file))
        return false; // the file cannot be made: nothing is drawn or written
    {
        QPdfWriter writer(&file);
        writer.setCreator(QStringLiteral("Ormidon"));
        writer.setResolution(72); // one drawing unit is one point
        const QPageSize pageSize(page.size(), QPageSize::Point, QString(), QPageSize::ExactMatch);
        writer.setPageLayout(QPageLayout(pageSize, QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                         QPageLayout::Point));

        QPainter painter;
        if (!painter.begin(&writer))
            return false;
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        // The picture goes in as it is: compressed without loss, never re-encoded as JPEG.
        painter.setRenderHint(QPainter::LosslessImageRendering);
        // Turned always, also at angle 0: the picture's centre goes to the page's centre
        // and the picture turns about it, clockwise for a positive angle.
        painter.setTransform(turnedPlacement(degrees, page, bounds));
        if (!picture.isNull())
            painter.drawImage(bounds, picture); // embedded with all its pixels
        if (!painter.end())
            return false;
    }
    return file.commit();
}

QByteArray pdfToEps(const QByteArray& pdf) {
    if (pdf.isEmpty())
        return QByteArray();
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(pdf);
    if (!document || document->isLocked() || document->numPages() < 1)
        return QByteArray();
    const std::unique_ptr<Poppler::Page> page = document->page(0);
    if (!page)
        return QByteArray();
    const QSize box = pageSizeInPoints(page->pageSizeF());
    if (box.isEmpty())
        return QByteArray();

    QByteArray eps;
    QBuffer buffer(&eps);
    if (!buffer.open(QIODevice::WriteOnly))
        return QByteArray();
    const std::unique_ptr<Poppler::PSConverter> converter = document->psConverter();
    converter->setOutputDevice(&buffer);
    converter->setPageList({1});
    converter->setPaperWidth(box.width());
    converter->setPaperHeight(box.height());
    converter->setPSOptions(Poppler::PSConverter::PrintToEPS);
    if (!converter->convert())
        return QByteArray();
    buffer.close();
    if (!eps.startsWith("%!PS-Adobe"))
        return QByteArray();
    return withBoundingBox(eps, box);
}
