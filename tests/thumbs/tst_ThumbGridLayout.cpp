// The grid's arithmetic without widgets: columns, rows, height and cell origins.

#include "thumbs/ThumbGridLayout.h"

#include <QtTest>

using namespace ThumbGridLayout;

class tst_ThumbGridLayout : public QObject {
    Q_OBJECT

private slots:
    void columns_data() {
        QTest::addColumn<double>("width");
        QTest::addColumn<int>("columns");
        QTest::newRow("300 wide: (300 + 24) / 90") << 300.0 << 3;
        QTest::newRow("60 wide: 0 becomes 1") << 60.0 << 1;
        QTest::newRow("0 wide") << 0.0 << 1;
        QTest::newRow("65 wide: 89 / 90") << 65.0 << 1;
        QTest::newRow("66 wide: 90 / 90") << 66.0 << 1;
        QTest::newRow("156 wide: 180 / 90") << 156.0 << 2;
        QTest::newRow("155.9 wide: fraction dropped") << 155.9 << 1;
        QTest::newRow("800 wide") << 800.0 << 9;
    }
    void columns() {
        QFETCH(double, width);
        QFETCH(int, columns);
        QCOMPARE(columnsFor(width), columns);
    }

    void grid_data() {
        QTest::addColumn<double>("width");
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("clip");
        QTest::addColumn<int>("columns");
        QTest::addColumn<long>("rows");
        QTest::addColumn<double>("height");
        QTest::newRow("5 cells, 2 columns: 2.5 rounds to 3") << 156.0 << 5 << 0.0 << 2 << 3L << 280.0;
        QTest::newRow("7 cells, 3 columns: 2.33 rounds to 2") << 300.0 << 7 << 0.0 << 3 << 2L << 190.0;
        QTest::newRow("1 cell in 3 columns: 0.33 rounds to 0") << 300.0 << 1 << 0.0 << 3 << 0L << 10.0;
        QTest::newRow("2 cells in 3 columns") << 300.0 << 2 << 0.0 << 3 << 1L << 100.0;
        QTest::newRow("taller clip view wins") << 300.0 << 7 << 400.0 << 3 << 2L << 400.0;
        QTest::newRow("shorter clip view loses") << 300.0 << 7 << 150.0 << 3 << 2L << 190.0;
        QTest::newRow("1000 cells, 9 columns") << 800.0 << 1000 << 0.0 << 9 << 111L << 10000.0;
    }
    void grid() {
        QFETCH(double, width);
        QFETCH(int, count);
        QFETCH(double, clip);
        QFETCH(int, columns);
        QFETCH(long, rows);
        QFETCH(double, height);
        const Grid g = gridFor(width, count, clip);
        QCOMPARE(g.columns, columns);
        QCOMPARE(g.rows, rows);
        QCOMPARE(g.height, height);
    }

    void origins_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QPoint>("origin");
        QTest::newRow("first") << 0 << 3 << QPoint(10, 10);
        QTest::newRow("second") << 1 << 3 << QPoint(100, 10);
        QTest::newRow("third") << 2 << 3 << QPoint(190, 10);
        QTest::newRow("fourth starts row 2") << 3 << 3 << QPoint(10, 100);
        QTest::newRow("seventh of 3 columns") << 6 << 3 << QPoint(10, 190);
        QTest::newRow("one column") << 4 << 1 << QPoint(10, 370);
    }
    void origins() {
        QFETCH(int, index);
        QFETCH(int, columns);
        QFETCH(QPoint, origin);
        QCOMPARE(cellOrigin(index, columns), origin);
    }

    void band_data() {
        QTest::addColumn<double>("top");
        QTest::addColumn<double>("bottom");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        // 3 columns; row r spans y = 10 + 90r to 90 + 90r.
        QTest::newRow("top screen of 2 rows") << 0.0 << 180.0 << 30 << 0 << 6;
        QTest::newRow("row 0 just out of view") << 90.0 << 180.0 << 30 << 3 << 6;
        QTest::newRow("row 0 just in view") << 89.0 << 180.0 << 30 << 0 << 6;
        QTest::newRow("band past the end") << 850.0 << 1200.0 << 30 << 27 << 30;
        QTest::newRow("nothing") << 0.0 << 5.0 << 30 << 0 << 0;
    }
    void band() {
        QFETCH(double, top);
        QFETCH(double, bottom);
        QFETCH(int, count);
        QFETCH(int, first);
        QFETCH(int, last);
        int a = -1, b = -1;
        cellsInBand(top, bottom, 3, count, &a, &b);
        QCOMPARE(a, first);
        QCOMPARE(b, last);
    }
};

QTEST_APPLESS_MAIN(tst_ThumbGridLayout)
#include "tst_ThumbGridLayout.moc"
