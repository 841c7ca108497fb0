#include "view/CropMarker.h"

#include <QImage>
#include <QPainter>
#include <QTest>
#include <QWidget>

class tst_CropMarker : public QObject {
    Q_OBJECT
private slots:
    void startsIdleAndBlue();
    void rectFromPointsTable_data();
    void rectFromPointsTable();
    void selectingKeepsAnchor();
    void movingKeepsSize();
    void edges_data();
    void edges();
    void clickGivesEmptyRect();
    void badTrackingModeIsLogged();
    void selectedPathIsTheRect();
    void drawsOnePixelFrame();
    void setColour();
};

void tst_CropMarker::startsIdleAndBlue() {
    QWidget view;
    const auto marker = CropMarker::cropMarkerForView(&view);
    QCOMPARE(marker->target, &view);
    QCOMPARE(marker->trackingMode, int32_t(CropMarker::Idle));
    QCOMPARE(marker->selectedRect(), QRectF());
    QCOMPARE(marker->strokeColor, QColor(Qt::blue));
    QCOMPARE(marker->fillColor.rgb(), QColor(Qt::blue).rgb());
    QVERIFY(qAbs(marker->fillColor.alphaF() - 0.2f) < 0.01f);
    QVERIFY(!marker->selecting && !marker->dragging && !marker->resizing);
}

void tst_CropMarker::rectFromPointsTable_data() {
    QTest::addColumn<QPointF>("a");
    QTest::addColumn<QPointF>("b");
    QTest::addColumn<QRectF>("expected");
    QTest::newRow("down right") << QPointF(1, 2) << QPointF(4, 8) << QRectF(1, 2, 3, 6);
    QTest::newRow("up left") << QPointF(4, 8) << QPointF(1, 2) << QRectF(1, 2, 3, 6);
    QTest::newRow("mixed") << QPointF(10, 10) << QPointF(4, 30) << QRectF(4, 10, 6, 20);
    QTest::newRow("same point") << QPointF(7, 7) << QPointF(7, 7) << QRectF(7, 7, 0, 0);
    QTest::newRow("negative") << QPointF(-5, 3) << QPointF(5, -3) << QRectF(-5, -3, 10, 6);
}

void tst_CropMarker::rectFromPointsTable() {
    QFETCH(QPointF, a);
    QFETCH(QPointF, b);
    QFETCH(QRectF, expected);
    QCOMPARE(rectFromPoints(a, b), expected);
}

void tst_CropMarker::selectingKeepsAnchor() {
    CropMarker marker(nullptr);
    marker.mouseDown(QPointF(10, 10));
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Selecting));
    marker.mouseDragged(QPointF(20, 20));
    QCOMPARE(marker.selectedRect(), QRectF(10, 10, 10, 10));
    marker.mouseDragged(QPointF(4, 30));
    QCOMPARE(marker.selectedRect(), QRectF(4, 10, 6, 20));
    QCOMPARE(marker.lastLocation, QPointF(10, 10));
    marker.mouseUp(QPointF(4, 30));
    QCOMPARE(marker.selectedRect(), QRectF(4, 10, 6, 20));
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Idle));
}

void tst_CropMarker::movingKeepsSize() {
    CropMarker marker(nullptr);
    marker.setSelectedRect(QRectF(0, 0, 20, 10));
    marker.mouseDown(QPointF(2, 2));
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Moving));
    marker.mouseDragged(QPointF(7, -1));
    QCOMPARE(marker.selectedRect(), QRectF(5, -3, 20, 10)); // beyond the view's edge too
    QCOMPARE(marker.lastLocation, QPointF(7, -1));
    marker.mouseUp(QPointF(8, -1)); // shifted once more to the release point
    QCOMPARE(marker.selectedRect(), QRectF(6, -3, 20, 10));
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Idle));
}

void tst_CropMarker::edges_data() {
    QTest::addColumn<QPointF>("press");
    QTest::addColumn<int>("mode");
    // Rectangle x 10..30, y 20..40: the low edges belong to it, the high edges don't.
    QTest::newRow("left edge") << QPointF(10, 25) << int(CropMarker::Moving);
    QTest::newRow("low y edge") << QPointF(15, 20) << int(CropMarker::Moving);
    QTest::newRow("right edge") << QPointF(30, 25) << int(CropMarker::Selecting);
    QTest::newRow("high y edge") << QPointF(15, 40) << int(CropMarker::Selecting);
    QTest::newRow("inside") << QPointF(29.5, 39.5) << int(CropMarker::Moving);
    QTest::newRow("outside") << QPointF(0, 0) << int(CropMarker::Selecting);
}

void tst_CropMarker::edges() {
    QFETCH(QPointF, press);
    QFETCH(int, mode);
    CropMarker marker(nullptr);
    marker.setSelectedRect(QRectF(10, 20, 20, 20));
    marker.mouseDown(press);
    QCOMPARE(marker.trackingMode, int32_t(mode));
    QCOMPARE(marker.lastLocation, press);
}

void tst_CropMarker::clickGivesEmptyRect() {
    CropMarker marker(nullptr);
    marker.setSelectedRect(QRectF(0, 0, 100, 100));
    marker.mouseDown(QPointF(150, 150));
    marker.mouseUp(QPointF(150, 150));
    QCOMPARE(marker.selectedRect(), QRectF(150, 150, 0, 0));
    marker.mouseDown(QPointF(150, 150)); // an empty rectangle holds no point
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Selecting));
    QVERIFY(!markerRectContains(QRectF(5, 5, 0, 10), QPointF(5, 6)));
}

void tst_CropMarker::badTrackingModeIsLogged() {
    CropMarker marker(nullptr);
    marker.setSelectedRect(QRectF(1, 2, 3, 4));
    QTest::ignoreMessage(QtWarningMsg, "Bad tracking mode in [CropMarker mouseDragged]");
    marker.mouseDragged(QPointF(50, 50));
    QTest::ignoreMessage(QtWarningMsg, "Bad tracking mode in [CropMarker mouseUp]");
    marker.mouseUp(QPointF(50, 50));
    QCOMPARE(marker.selectedRect(), QRectF(1, 2, 3, 4));
    QCOMPARE(marker.trackingMode, int32_t(CropMarker::Idle));
}

void tst_CropMarker::selectedPathIsTheRect() {
    CropMarker marker(nullptr);
    marker.setSelectedRectOrigin(QPointF(3, 4));
    marker.setSelectedRectSize(QSizeF(5, 6));
    QCOMPARE(marker.selectedRect(), QRectF(3, 4, 5, 6));
    QCOMPARE(marker.selectedPath().boundingRect(), QRectF(3, 4, 5, 6));
    marker.moveSelectedRectBy(QSizeF(-3, 1));
    QCOMPARE(marker.selectedRect(), QRectF(0, 5, 5, 6));
}

void tst_CropMarker::drawsOnePixelFrame() {
    CropMarker marker(nullptr);
    marker.setSelectedRect(QRectF(10, 10, 20, 20));
    QImage image(50, 50, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        marker.drawCropMarker(painter);
    }
    const QRgb blue = qRgb(0, 0, 255);
    QCOMPARE(image.pixel(10, 10), blue);
    QCOMPARE(image.pixel(29, 29), blue);
    QCOMPARE(image.pixel(20, 10), blue);
    QCOMPARE(image.pixel(10, 20), blue);
    QCOMPARE(image.pixel(29, 20), blue);
    QCOMPARE(image.pixel(20, 29), blue);
    QCOMPARE(image.pixel(11, 11), qRgb(255, 255, 255)); // one pixel wide, not filled
    QCOMPARE(image.pixel(30, 30), qRgb(255, 255, 255));
    QCOMPARE(image.pixel(9, 9), qRgb(255, 255, 255));
}

void tst_CropMarker::setColour() {
    CropMarker marker(nullptr);
    marker.setColor(QColor(Qt::red));
    QCOMPARE(marker.strokeColor, QColor(Qt::red));
    QCOMPARE(marker.fillColor.red(), 255);
    QVERIFY(qAbs(marker.fillColor.alphaF() - 0.2f) < 0.01f);
}

QTEST_MAIN(tst_CropMarker)
#include "tst_CropMarker.moc"
