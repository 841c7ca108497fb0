#include "view/RotationGeometry.h"
#include "view/ZoomGeometry.h"

#include <QTest>

#include <cmath>

namespace {

bool near(const QPointF& a, const QPointF& b, double tolerance = 1e-3) {
    return std::abs(a.x() - b.x()) < tolerance && std::abs(a.y() - b.y()) < tolerance;
}

bool sameTransform(const QTransform& a, const QTransform& b, double tolerance = 1e-3) {
    for (const QPointF p : {QPointF(0, 0), QPointF(4000, 0), QPointF(0, 3000), QPointF(4000, 3000)})
        if (!near(a.map(p), b.map(p), tolerance))
            return false;
    return true;
}

// Where the fitted view draws a picture pixel: the fitted rectangle, turned about the centre.
QTransform fittedDrawing(const QSizeF& picture, int degrees, const QSizeF& view) {
    const QRectF target = fittedPictureRect(picture, degrees, QRectF(QPointF(), view));
    const double s = target.width() / picture.width();
    return QTransform::fromScale(s, s) * QTransform::fromTranslate(target.x(), target.y()) *
           rotationAboutCentre(degrees, float(view.width()), float(view.height()));
}

} // namespace

class tst_ZoomGeometry : public QObject {
    Q_OBJECT
private slots:
    void startsFittedLikeTheView_data();
    void startsFittedLikeTheView();
    void zoomKeepsThePointUnderThePointer_data();
    void zoomKeepsThePointUnderThePointer();
    void limits();
    void smallPictureGoesDownToActualSize();
    void fitActualRoundTrip_data();
    void fitActualRoundTrip();
    void actualSizeIsOneDevicePixel();
    void panStopsAtTheEdges();
    void fittedRectanglesFollowTheZoom();
    void visiblePartOnly();
    void resizeKeepsFittedOrZoom();
};

void tst_ZoomGeometry::startsFittedLikeTheView_data() {
    QTest::addColumn<int>("degrees");
    for (int d : {0, 30, 90, -45, 180, 270})
        QTest::addRow("%d", d) << d;
}

void tst_ZoomGeometry::startsFittedLikeTheView() {
    QFETCH(int, degrees);
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), degrees, QSizeF(800, 600), 1.0);
    QVERIFY(zoom.isFitted());
    QVERIFY(sameTransform(zoom.pictureToView(), fittedDrawing({4000, 3000}, degrees, {800, 600})));
}

void tst_ZoomGeometry::zoomKeepsThePointUnderThePointer_data() {
    QTest::addColumn<int>("degrees");
    QTest::addColumn<QPointF>("pointer");
    QTest::addColumn<double>("steps");
    QTest::addRow("upright") << 0 << QPointF(300, 200) << 3.0;
    QTest::addRow("turned 30") << 30 << QPointF(500, 350) << 2.0;
    QTest::addRow("quarter") << 90 << QPointF(420, 100) << 5.0;
    QTest::addRow("back out") << -60 << QPointF(250, 400) << -1.5;
}

void tst_ZoomGeometry::zoomKeepsThePointUnderThePointer() {
    QFETCH(int, degrees);
    QFETCH(QPointF, pointer);
    QFETCH(double, steps);
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), degrees, QSizeF(800, 600), 1.0);
    // Zoomed in far enough that the picture covers the view, so no edge stops the pan.
    zoom.zoomAbout(0.5, QPointF(400, 300));
    QVERIFY(!zoom.isFitted());
    const QPointF under = zoom.pictureToView().inverted().map(pointer);
    const double before = zoom.scale();
    zoom.zoomBySteps(steps, pointer);
    QVERIFY(std::abs(zoom.scale() - before * std::pow(ZoomGeometry::kStepFactor, steps)) < 1e-9);
    QVERIFY2(near(zoom.pictureToView().map(under), pointer),
             qPrintable(QStringLiteral("moved to %1,%2")
                            .arg(zoom.pictureToView().map(under).x())
                            .arg(zoom.pictureToView().map(under).y())));
}

void tst_ZoomGeometry::limits() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), 0, QSizeF(800, 600), 1.0);
    QCOMPARE(zoom.fitScale(), 0.2);
    zoom.zoomBySteps(-3); // nothing below the fitted size
    QVERIFY(zoom.isFitted());
    zoom.zoomBySteps(1000);
    QCOMPARE(zoom.scale(), 32.0);
    QCOMPARE(zoom.zoomPercent(), 3200.0);
    // Back down: the fitted size is a stop on the way.
    zoom.zoomAbout(0.01, QPointF(10, 10));
    QVERIFY(zoom.isFitted());
    QCOMPARE(zoom.pan(), QPointF());
}

void tst_ZoomGeometry::smallPictureGoesDownToActualSize() {
    // A 20 x 10 icon fitted into 800 x 600 is shown at 4000 %; 100 % is below that.
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(20, 10), 0, QSizeF(800, 600), 1.0);
    QCOMPARE(zoom.fitScale(), 40.0);
    QCOMPARE(zoom.largestScale(), 40.0);
    QCOMPARE(zoom.smallestScale(), 1.0);
    zoom.actualSize();
    QVERIFY(!zoom.isFitted());
    QCOMPARE(zoom.zoomPercent(), 100.0);
    QCOMPARE(zoom.pictureToView().map(QPointF(0, 0)), QPointF(390, 295)); // centred
    zoom.zoomBySteps(100);
    QVERIFY(zoom.isFitted());
}

void tst_ZoomGeometry::fitActualRoundTrip_data() {
    QTest::addColumn<int>("degrees");
    QTest::addColumn<double>("ratio");
    for (int d : {0, 17, 90, 135, -90, 180})
        for (double r : {1.0, 2.0})
            QTest::addRow("%d deg at %g", d, r) << d << r;
}

void tst_ZoomGeometry::fitActualRoundTrip() {
    QFETCH(int, degrees);
    QFETCH(double, ratio);
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), degrees, QSizeF(800, 600), ratio);
    const QTransform fitted = zoom.pictureToView();
    zoom.actualSize();
    QCOMPARE(zoom.zoomPercent(), 100.0);
    const QTransform actual = zoom.pictureToView();
    // The picture's centre stays at the view's centre.
    QVERIFY(near(actual.map(QPointF(2000, 1500)), QPointF(400, 300)));
    zoom.fit();
    QVERIFY(zoom.isFitted());
    QVERIFY(sameTransform(zoom.pictureToView(), fitted));
    QVERIFY(sameTransform(zoom.pictureToView(), fittedDrawing({4000, 3000}, degrees, {800, 600})));
    zoom.actualSize();
    QVERIFY(sameTransform(zoom.pictureToView(), actual));
}

void tst_ZoomGeometry::actualSizeIsOneDevicePixel() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), 0, QSizeF(800, 600), 2.0);
    zoom.actualSize();
    // Two picture pixels per view unit: one per device pixel on a screen of ratio 2.
    const QTransform t = zoom.pictureToView();
    QVERIFY(near(t.map(QPointF(2, 0)) - t.map(QPointF(0, 0)), QPointF(1, 0), 1e-9));
}

void tst_ZoomGeometry::panStopsAtTheEdges() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), 0, QSizeF(800, 600), 1.0);
    zoom.actualSize();
    zoom.panBy(QPointF(1e6, -1e6));
    // The picture's left edge at the view's left, its bottom edge at the view's bottom.
    QVERIFY(near(zoom.pictureToView().map(QPointF(0, 3000)), QPointF(0, 600)));
    zoom.panBy(QPointF(-100, 40));
    QVERIFY(near(zoom.pictureToView().map(QPointF(0, 3000)), QPointF(-100, 640)));
    zoom.fit();
    zoom.panBy(QPointF(50, 50)); // fitted: nothing to pan
    QCOMPARE(zoom.pan(), QPointF());
}

void tst_ZoomGeometry::fittedRectanglesFollowTheZoom() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), 90, QSizeF(800, 600), 1.0);
    const QTransform fitted = zoom.pictureToView();
    const QPointF pixel(1234, 567);
    const QPointF inFitted = fitted.map(pixel);
    zoom.zoomAbout(0.7, QPointF(100, 500));
    zoom.panBy(QPointF(30, -20));
    // A point of the fitted view stays on the same picture pixel.
    QVERIFY(near(zoom.fromFitted(inFitted), zoom.pictureToView().map(pixel)));
    QVERIFY(near(zoom.toFitted(zoom.pictureToView().map(pixel)), inFitted));
}

void tst_ZoomGeometry::visiblePartOnly() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(6000, 4000), 0, QSizeF(800, 600), 1.0);
    QCOMPARE(zoom.visiblePictureRect(), QRect(0, 0, 6000, 4000));
    zoom.actualSize();
    const QRect seen = zoom.visiblePictureRect();
    QVERIFY(seen.contains(QRect(2600, 1700, 800, 600)));
    QVERIFY(seen.width() <= 804 && seen.height() <= 604);
}

void tst_ZoomGeometry::resizeKeepsFittedOrZoom() {
    ZoomGeometry zoom;
    zoom.setFrame(QSizeF(4000, 3000), 0, QSizeF(800, 600), 1.0);
    zoom.setFrame(QSizeF(4000, 3000), 0, QSizeF(400, 300), 1.0);
    QVERIFY(zoom.isFitted());
    QCOMPARE(zoom.fitScale(), 0.1);
    zoom.actualSize();
    zoom.setFrame(QSizeF(4000, 3000), 45, QSizeF(1000, 700), 1.0);
    QVERIFY(!zoom.isFitted());
    QCOMPARE(zoom.scale(), 1.0);
}

QTEST_GUILESS_MAIN(tst_ZoomGeometry)
#include "tst_ZoomGeometry.moc"
