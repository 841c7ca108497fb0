#include "view/SelectionExtensions.h"

#include <QTest>

class tst_SelectionExtensions : public QObject {
    Q_OBJECT
private slots:
    void emptyIsNotClosed();
    void openPath();
    void closedPathStaysTheSame();
    void emptyPathGetsClosed();
    void curveEndingAtStart();
};

void tst_SelectionExtensions::emptyIsNotClosed() {
    QVERIFY(!isClosed(QPainterPath()));
}

void tst_SelectionExtensions::openPath() {
    QPainterPath open;
    open.moveTo(0, 0);
    open.lineTo(10, 0);
    open.lineTo(10, 10);
    QVERIFY(!isClosed(open));
    const QPainterPath closed = closedPath(open);
    QVERIFY(isClosed(closed));
    QVERIFY(closed != open);
    QCOMPARE(closed.elementCount(), open.elementCount() + 1);
    QCOMPARE(QPointF(closed.elementAt(closed.elementCount() - 1)), QPointF(0, 0));
    QVERIFY(!isClosed(open)); // the original is left as it was
}

void tst_SelectionExtensions::closedPathStaysTheSame() {
    QPainterPath path;
    path.addRect(1, 2, 3, 4);
    QVERIFY(isClosed(path));
    QCOMPARE(closedPath(path), path);
    QPainterPath triangle;
    triangle.moveTo(0, 0);
    triangle.lineTo(5, 0);
    triangle.lineTo(0, 5);
    triangle.closeSubpath();
    QVERIFY(isClosed(triangle));
    QCOMPARE(closedPath(triangle).elementCount(), triangle.elementCount());
}

void tst_SelectionExtensions::emptyPathGetsClosed() {
    const QPainterPath empty;
    const QPainterPath closed = closedPath(empty);
    QVERIFY(isClosed(closed));
    QCOMPARE(closed.elementCount(), 1);
    QCOMPARE(empty.elementCount(), 0);
}

void tst_SelectionExtensions::curveEndingAtStart() {
    QPainterPath path;
    path.moveTo(0, 0);
    path.cubicTo(10, 0, 10, 10, 5, 5);
    QVERIFY(!isClosed(path));
    path.cubicTo(2, 2, 1, 1, 0, 0);
    QVERIFY(isClosed(path));
}

QTEST_APPLESS_MAIN(tst_SelectionExtensions)
#include "tst_SelectionExtensions.moc"
