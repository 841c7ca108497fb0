#pragma once

// The picture the export suites convert, and the colour checks made on what comes back.

#include <QImage>
#include <QString>
#include <QtGlobal>

const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kWhite = qRgb(255, 255, 255);

// 640 x 480 at 72 dpi (one pixel is one point), blue, with a red block at the top-left corner
// and a green one at the bottom-right.
inline QImage markedPicture() {
    QImage image(640, 480, QImage::Format_RGB32);
    image.fill(kBlue);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            image.setPixel(x, y, kRed);
            image.setPixel(639 - x, 479 - y, kGreen);
        }
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    return image;
}

// Colours compared channel by channel, alpha included, within a tolerance for lossy encoders.
inline bool near(QRgb a, QRgb b, int tolerance = 8) {
    return qAbs(qRed(a) - qRed(b)) <= tolerance && qAbs(qGreen(a) - qGreen(b)) <= tolerance &&
           qAbs(qBlue(a) - qBlue(b)) <= tolerance && qAbs(qAlpha(a) - qAlpha(b)) <= tolerance;
}

inline QString describe(QRgb c) {
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(qRed(c))
        .arg(qGreen(c))
        .arg(qBlue(c))
        .arg(qAlpha(c));
}
