#include "view/RotationGeometry.h"

#include <QTest>

#include <cmath>

class tst_RotationGeometry : public QObject {
    Q_OBJECT
private slots:
    void rotatedBounds_data();
    void rotatedBounds();
    void rotatedBoundsKeepsOrigin();
    void rotatedBoundsIsSymmetric();
    void centerRectCentres();
    void rotationTransformTurnsClockwiseOnScreen();
    void rotationAboutCentreKeepsCentre();
    void fitted_data();
    void fitted();
    void fittedDegenerate();
    void turnedPlacementCentresThePicture_data();
    void turnedPlacementCentresThePicture();
    void shownTurnedBox_data();
    void shownTurnedBox();
};

void tst_RotationGeometry::rotatedBounds_data() {
    QTest::addColumn<double>("w");
    QTest::addColumn<double>("h");
    QTest::addColumn<float>("degrees");
    QTest::addColumn<double>("expectW");
    QTest::addColumn<double>("expectH");
    QTest::newRow("0") << 400.0 << 200.0 << 0.0f << 400.0 << 200.0;
    QTest::newRow("90") << 400.0 << 200.0 << 90.0f << 200.0 << 400.0;
    QTest::newRow("180") << 400.0 << 200.0 << 180.0f << 400.0 << 200.0;
    QTest::newRow("45") << 400.0 << 200.0 << 45.0f << 424.264 << 424.264;
    QTest::newRow("30") << 400.0 << 200.0 << 30.0f << 446.410 << 373.205;
    QTest::newRow("-30") << 400.0 << 200.0 << -30.0f << 446.410 << 373.205;
    QTest::newRow("720") << 400.0 << 200.0 << 720.0f << 400.0 << 200.0;
    QTest::newRow("pdf 640x480 at 45") << 640.0 << 480.0 << 45.0f << 791.960 << 791.960;
    QTest::newRow("empty") << 0.0 << 0.0 << 33.0f << 0.0 << 0.0;
}

void tst_RotationGeometry::rotatedBounds() {
    QFETCH(double, w);
    QFETCH(double, h);
    QFETCH(float, degrees);
    QFETCH(double, expectW);
    QFETCH(double, expectH);
    const QRectF r = rotatedRectBounds(QRectF(0, 0, w, h), degrees);
    QVERIFY2(std::fabs(r.width() - expectW) < 1e-3, qPrintable(QString::number(r.width())));
    QVERIFY2(std::fabs(r.height() - expectH) < 1e-3, qPrintable(QString::number(r.height())));
}

void tst_RotationGeometry::rotatedBoundsKeepsOrigin() {
    const QRectF r = rotatedRectBounds(QRectF(13, -7, 400, 200), 45.0f);
    QCOMPARE(r.topLeft(), QPointF(13, -7));
    const QRectF zero = rotatedRectBounds(QRectF(5, 6, 400, 200), 0.0f);
    QCOMPARE(zero, QRectF(5, 6, 400, 200)); // exact at 0 degrees
}

void tst_RotationGeometry::rotatedBoundsIsSymmetric() {
    // The sizes come out of float arithmetic exactly as the fitting code divides by them.
    const QRectF a = rotatedRectBounds(QRectF(0, 0, 400, 200), 30.0f);
    const QRectF b = rotatedRectBounds(QRectF(0, 0, 400, 200), -30.0f);
    QCOMPARE(float(a.width()), float(b.width()));
    QCOMPARE(float(a.height()), float(b.height()));
    // cos 90 degrees is not exactly 0 in floating point: the quarter turn is near, not exact.
    const QRectF q = rotatedRectBounds(QRectF(0, 0, 400, 200), 90.0f);
    QVERIFY(std::fabs(q.width() - 200.0) < 1e-3);
    QVERIFY(std::fabs(q.height() - 400.0) < 1e-3);
}

void tst_RotationGeometry::centerRectCentres() {
    QCOMPARE(centerRect(QRectF(99, 99, 300, 150), QRectF(0, 0, 300, 300)), QRectF(0, 75, 300, 150));
    QCOMPARE(centerRect(QRectF(0, 0, 10, 10), QRectF(100, 200, 30, 50)), QRectF(110, 220, 10, 10));
    // Half units stay as they are (float rounding of small values is exact).
    QCOMPARE(centerRect(QRectF(0, 0, 3, 3), QRectF(0, 0, 10, 10)), QRectF(3.5, 3.5, 3, 3));
}

void tst_RotationGeometry::rotationTransformTurnsClockwiseOnScreen() {
    // y grows downward: a point to the right of the centre goes below it for +90 degrees.
    const QPointF p = rotationTransform(90).map(QPointF(10, 0));
    QVERIFY(std::fabs(p.x()) < 1e-5);
    QVERIFY(std::fabs(p.y() - 10) < 1e-5);
    const QPointF q = rotationTransform(-90).map(QPointF(10, 0));
    QVERIFY(std::fabs(q.y() + 10) < 1e-5);
    QVERIFY(rotationTransform(0).isIdentity());
}

void tst_RotationGeometry::rotationAboutCentreKeepsCentre() {
    const QTransform t = rotationAboutCentre(37, 300, 200);
    const QPointF c = t.map(QPointF(150, 100));
    QVERIFY(std::fabs(c.x() - 150) < 1e-4);
    QVERIFY(std::fabs(c.y() - 100) < 1e-4);
    const QPointF corner = rotationAboutCentre(90, 300, 300).map(QPointF(300, 0));
    QVERIFY(std::fabs(corner.x() - 300) < 1e-4); // top right goes to bottom right
    QVERIFY(std::fabs(corner.y() - 300) < 1e-4);
}

void tst_RotationGeometry::fitted_data() {
    QTest::addColumn<QSizeF>("picture");
    QTest::addColumn<int>("degrees");
    QTest::addColumn<QRectF>("area");
    QTest::addColumn<QRectF>("expected");
    QTest::newRow("wide at 0") << QSizeF(400, 200) << 0 << QRectF(0, 0, 300, 300)
                               << QRectF(0, 75, 300, 150);
    QTest::newRow("wide at 90") << QSizeF(400, 200) << 90 << QRectF(0, 0, 300, 300)
                                << QRectF(0, 75, 300, 150);
    QTest::newRow("small enlarged")
        << QSizeF(10, 5) << 0 << QRectF(0, 0, 300, 300) << QRectF(0, 75, 300, 150);
    QTest::newRow("exact fit") << QSizeF(300, 300) << 0 << QRectF(0, 0, 300, 300)
                               << QRectF(0, 0, 300, 300);
    QTest::newRow("document 0") << QSizeF(640, 480) << 0 << QRectF(0, 0, 400, 300)
                                << QRectF(0, 0, 400, 300);
    QTest::newRow("offset area") << QSizeF(400, 200) << 0 << QRectF(10, 20, 300, 300)
                                 << QRectF(10, 95, 300, 150);
}

void tst_RotationGeometry::fitted() {
    QFETCH(QSizeF, picture);
    QFETCH(int, degrees);
    QFETCH(QRectF, area);
    QFETCH(QRectF, expected);
    const QRectF r = fittedPictureRect(picture, degrees, area);
    QVERIFY2(
        std::fabs(r.x() - expected.x()) < 1e-3 && std::fabs(r.y() - expected.y()) < 1e-3 &&
            std::fabs(r.width() - expected.width()) < 1e-3 &&
            std::fabs(r.height() - expected.height()) < 1e-3,
        qPrintable(
            QStringLiteral("%1 %2 %3 %4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height())));
}

void tst_RotationGeometry::fittedDegenerate() {
    QVERIFY(fittedPictureRect(QSizeF(0, 100), 0, QRectF(0, 0, 300, 300)).isEmpty());
    QVERIFY(fittedPictureRect(QSizeF(100, 0), 45, QRectF(0, 0, 300, 300)).isEmpty());
    QVERIFY(fittedPictureRect(QSizeF(-5, 100), 0, QRectF(0, 0, 300, 300)).isEmpty());
    QVERIFY(fittedPictureRect(QSizeF(100, 100), 0, QRectF(0, 0, 0, 0)).isEmpty());
}

QTEST_APPLESS_MAIN(tst_RotationGeometry)
#include "tst_RotationGeometry.moc"

void tst_RotationGeometry::turnedPlacementCentresThePicture_data() {
    QTest::addColumn<int>("degrees");
    QTest::addColumn<QPointF>("corner"); // where the picture's top-left corner lands
    // A 640 x 480 picture in the box of its turned bounds.
    QTest::newRow("0") << 0 << QPointF(0, 0);
    QTest::newRow("90 clockwise") << 90 << QPointF(480, 0);
    QTest::newRow("-90") << -90 << QPointF(0, 640);
    QTest::newRow("180") << 180 << QPointF(640, 480);
}

void tst_RotationGeometry::turnedPlacementCentresThePicture() {
    QFETCH(int, degrees);
    QFETCH(QPointF, corner);
    const QRectF picture(0, 0, 640, 480);
    const QRectF box = rotatedRectBounds(picture, float(degrees));
    const QTransform placement = turnedPlacement(degrees, box, picture);
    const QPointF centre = placement.map(picture.center());
    QVERIFY(qAbs(centre.x() - box.width() / 2) < 0.01 &&
            qAbs(centre.y() - box.height() / 2) < 0.01);
    const QPointF mapped = placement.map(QPointF(0, 0));
    QVERIFY2(qAbs(mapped.x() - corner.x()) < 0.01 && qAbs(mapped.y() - corner.y()) < 0.01,
             qPrintable(QStringLiteral("%1, %2").arg(mapped.x()).arg(mapped.y())));
}

void tst_RotationGeometry::shownTurnedBox_data() {
    QTest::addColumn<int>("degrees");
    QTest::addColumn<QRectF>("expected");
    // 640 x 480 shown in a 400 x 300 view.
    QTest::newRow("0") << 0 << QRectF(0, 0, 400, 300);
    QTest::newRow("90") << 90 << QRectF(87.5, 0, 225, 300);
    QTest::newRow("720") << 720 << QRectF(0, 0, 400, 300);
}

void tst_RotationGeometry::shownTurnedBox() {
    QFETCH(int, degrees);
    QFETCH(QRectF, expected);
    const QRectF box = ::shownTurnedBox(QRectF(0, 0, 640, 480), degrees, QRectF(0, 0, 400, 300));
    QVERIFY2(qAbs(box.x() - expected.x()) < 0.01 && qAbs(box.y() - expected.y()) < 0.01 &&
                 qAbs(box.width() - expected.width()) < 0.01 &&
                 qAbs(box.height() - expected.height()) < 0.01,
             qPrintable(QStringLiteral("%1 %2 %3 %4")
                            .arg(box.x())
                            .arg(box.y())
                            .arg(box.width())
                            .arg(box.height())));
    QVERIFY(::shownTurnedBox(QRectF(0, 0, 0, 480), degrees, QRectF(0, 0, 400, 300)).isEmpty());
}
