#include "about/aboutView.h"

#include <QBitmap>
#include <QPainter>
#include <QRegion>

#include <algorithm>
#include <vector>

namespace {

// One pass of a box blur along rows (horizontal) or columns of an alpha plane.
void boxBlur(std::vector<int>& plane, int width, int height, int radius, bool horizontal) {
    const int length = horizontal ? width : height;
    const int lines = horizontal ? height : width;
    std::vector<int> line(length);
    for (int l = 0; l < lines; ++l) {
        auto at = [&](int i) -> int& {
            return horizontal ? plane[size_t(l) * width + i] : plane[size_t(i) * width + l];
        };
        for (int i = 0; i < length; ++i)
            line[i] = at(i);
        int sum = 0;
        for (int i = -radius; i <= radius; ++i)
            sum += (i >= 0 && i < length) ? line[i] : 0;
        for (int i = 0; i < length; ++i) {
            at(i) = sum / (2 * radius + 1);
            const int out = i - radius;
            const int in = i + radius + 1;
            sum += (in < length ? line[in] : 0) - (out >= 0 ? line[out] : 0);
        }
    }
}

} // namespace

aboutView::aboutView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAutoFillBackground(false);
}

void aboutView::awakeFromNib() {
    mArrowImage = QImage(QStringLiteral(":/splash.png"));
    if (!mArrowImage.isNull())
        mArrowImage = mArrowImage.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    updateShadow();
    if (QWidget* panel = window(); panel && !mArrowImage.isNull())
        panel->setMask(windowShape());
    update();
}

// The shadow follows the picture's outline: its alpha, moved down, blurred and darkened.
void aboutView::updateShadow() {
    mShadow = QImage();
    if (mArrowImage.isNull())
        return;
    const QImage alpha = mArrowImage.convertToFormat(QImage::Format_ARGB32);
    const int w = alpha.width();
    const int h = alpha.height();
    std::vector<int> plane(size_t(w) * h, 0);
    for (int y = 0; y + kShadowOffset < h; ++y) {
        const QRgb* row = reinterpret_cast<const QRgb*>(alpha.constScanLine(y));
        for (int x = 0; x < w; ++x)
            plane[size_t(y + kShadowOffset) * w + x] = qAlpha(row[x]);
    }
    for (int pass = 0; pass < 2; ++pass) {
        boxBlur(plane, w, h, kShadowBlur, true);
        boxBlur(plane, w, h, kShadowBlur, false);
    }
    mShadow = QImage(w, h, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(mShadow.scanLine(y));
        for (int x = 0; x < w; ++x)
            row[x] = qRgba(0, 0, 0, plane[size_t(y) * w + x] * 115 / 255);
    }
}

QRegion aboutView::windowShape() const {
    if (mArrowImage.isNull())
        return QRegion(rect());
    QImage inside(mArrowImage.size(), QImage::Format_MonoLSB);
    inside.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)}); // 1 = inside the window
    inside.fill(0);
    for (int y = 0; y < mArrowImage.height(); ++y) {
        const QRgb* picture = reinterpret_cast<const QRgb*>(mArrowImage.constScanLine(y));
        const QRgb* shadow =
            mShadow.isNull() ? nullptr : reinterpret_cast<const QRgb*>(mShadow.constScanLine(y));
        for (int x = 0; x < mArrowImage.width(); ++x)
            if (qAlpha(picture[x]) > 0 || (shadow && qAlpha(shadow[x]) >= 48))
                inside.setPixel(x, y, 1);
    }
    return QRegion(QBitmap::fromImage(inside));
}

void aboutView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect(), Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (!mShadow.isNull())
        painter.drawImage(0, 0, mShadow);
    if (!mArrowImage.isNull())
        painter.drawImage(0, 0, mArrowImage);
}
