#include "view/GreyTone.h"

#include <QTest>

#include <cmath>

class tst_GreyTone : public QObject {
    Q_OBJECT
private slots:
    void rule_data();
    void rule();
    void alphaIsTruncated();
    void sameAsTheFormula();
    void rasterLayout();
    void rasterOfEmptyImage();
    void displayImage();
};

void tst_GreyTone::rule_data() {
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<int>("grey");
    QTest::addColumn<int>("alpha");
    QTest::newRow("white") << QColor(255, 255, 255) << 255 << 255;
    QTest::newRow("black") << QColor(0, 0, 0) << 0 << 255;
    QTest::newRow("red 76.245") << QColor(255, 0, 0) << 76 << 255;
    QTest::newRow("green 149.685") << QColor(0, 255, 0) << 150 << 255;
    QTest::newRow("blue 29.07") << QColor(0, 0, 255) << 29 << 255;
    QTest::newRow("half alpha") << QColor(255, 255, 255, 127) << 255 << 127;
    QTest::newRow("transparent red") << QColor(255, 0, 0, 0) << 76 << 0;
}

void tst_GreyTone::rule() {
    QFETCH(QColor, colour);
    QFETCH(int, grey);
    QFETCH(int, alpha);
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(colour);
    const GreyToneRaster raster = monochromeRaster(image);
    QCOMPARE(raster.width, 3);
    QCOMPARE(raster.height, 2);
    QCOMPARE(raster.bytes.size(), 3 * 2 * 2);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(int(uint8_t(raster.bytes[i * 2])), grey);
        QCOMPARE(int(uint8_t(raster.bytes[i * 2 + 1])), alpha);
    }
    // The same from the premultiplied picture the loader makes.
    const GreyToneRaster fromPremultiplied =
        monochromeRaster(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    if (alpha == 255)
        QCOMPARE(fromPremultiplied.bytes, raster.bytes);
}

void tst_GreyTone::alphaIsTruncated() {
    QCOMPARE(int(greyAlphaOf(0.5)), 127); // 127.5 truncated
    QCOMPARE(int(greyAlphaOf(1.0)), 255);
    QCOMPARE(int(greyAlphaOf(0.0)), 0);
    // While a grey of 127.5 rounds to even, i.e. 128.
    QCOMPARE(int(std::rint(127.5)), 128);
    QCOMPARE(int(greyToneOf(qRgb(128, 128, 128))), 128);
}

void tst_GreyTone::sameAsTheFormula() {
    // The rule written out per pixel, over a lattice of colours including every tie.
    int checked = 0;
    for (int r = 0; r < 256; r += 3)
        for (int g = 0; g < 256; g += 5)
            for (int b = 0; b < 256; b += 1) {
                const double rr = r / 255.0, gg = g / 255.0, bb = b / 255.0;
                const long expected =
                    long(std::rint((rr * 0.299 + gg * 0.587 + bb * 0.114) * 255.0));
                if (greyToneOf(qRgb(r, g, b)) != expected)
                    QFAIL(qPrintable(QStringLiteral("%1 %2 %3").arg(r).arg(g).arg(b)));
                ++checked;
            }
    QVERIFY(checked > 100000);
}

void tst_GreyTone::rasterLayout() {
    // Rows from the top down, each exactly 2 x width bytes: a red top row over a blue one.
    QImage image(5, 2, QImage::Format_RGB32);
    image.fill(Qt::blue);
    for (int x = 0; x < 5; ++x)
        image.setPixel(x, 0, qRgb(255, 0, 0));
    image.setPixel(4, 1, qRgb(0, 255, 0));
    const GreyToneRaster raster = monochromeRaster(image);
    QCOMPARE(raster.bytes.size(), 20);
    QCOMPARE(int(uint8_t(raster.bytes[0])), 76);
    QCOMPARE(int(uint8_t(raster.bytes[8])), 76);
    QCOMPARE(int(uint8_t(raster.bytes[10])), 29);
    QCOMPARE(int(uint8_t(raster.bytes[18])), 150);
    QCOMPARE(int(uint8_t(raster.bytes[19])), 255);
}

void tst_GreyTone::rasterOfEmptyImage() {
    const GreyToneRaster raster = monochromeRaster(QImage());
    QCOMPARE(raster.width, 0);
    QVERIFY(raster.bytes.isEmpty());
    QVERIFY(greyToneDisplayImage(raster).isNull());
    QVERIFY(greyToneDisplayImage(QImage()).isNull());
    GreyToneRaster lying{10, 10, QByteArray(5, 0)}; // fewer bytes than it claims
    QVERIFY(greyToneDisplayImage(lying).isNull());
}

void tst_GreyTone::displayImage() {
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(0, 255, 0, 255));
    image.setPixel(1, 0, qRgba(255, 255, 255, 127));
    const QImage grey = greyToneDisplayImage(image);
    QCOMPARE(grey.format(), QImage::Format_ARGB32_Premultiplied);
    QCOMPARE(grey.size(), QSize(2, 1));
    QCOMPARE(grey.pixel(0, 0), qRgba(150, 150, 150, 255));
    QCOMPARE(qAlpha(grey.pixel(1, 0)), 127);
    const QRgb stored = reinterpret_cast<const QRgb*>(grey.constScanLine(0))[1];
    QCOMPARE(stored, qPremultiply(qRgba(255, 255, 255, 127)));
    // Row by row or through the whole raster: the same picture.
    QCOMPARE(greyToneDisplayImage(monochromeRaster(image)), grey);
    const QImage fromPremultiplied =
        greyToneDisplayImage(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    QCOMPARE(fromPremultiplied.pixel(0, 0), grey.pixel(0, 0));
    QCOMPARE(qAlpha(fromPremultiplied.pixel(1, 0)), 127);
}

QTEST_APPLESS_MAIN(tst_GreyTone)
#include "tst_GreyTone.moc"
