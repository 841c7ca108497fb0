// The grid view as a real widget: where it puts its cells, how tall it grows, when it lays out
// again, and the scroll area that keeps it as wide as the visible part.

#include "thumbs/ImageListScrollArea.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/listImageViewItem.h"

#include "ThumbTestFiles.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace ThumbTestFiles;

class tst_ScrollNSImageView : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;
    QString picture;

    // A grid `width` wide inside a clip view `clipHeight` high, with `count` cells.
    struct Setup {
        std::unique_ptr<QWidget> clip;
        ScrollNSImageView* grid = nullptr;
    };
    Setup gridWith(int width, int count, int clipHeight = 50) {
        Setup s;
        s.clip = std::make_unique<QWidget>();
        s.clip->resize(width, clipHeight);
        s.grid = new ScrollNSImageView(s.clip.get());
        s.grid->resize(width, 20);
        for (int i = 0; i < count; ++i)
            s.grid->addImageView(picture);
        return s;
    }

    static QList<QPoint> origins(const ScrollNSImageView* grid) {
        QList<QPoint> list;
        for (const listImageViewItem* cell : grid->cells())
            list.append(cell->pos());
        return list;
    }

private slots:
    void initTestCase() {
        QVERIFY(home.isValid() && files.isValid());
        qputenv("XDG_CACHE_HOME", (home.path() + "/.cache").toUtf8());
        picture = writePicture(files.path(), "p.png", {160, 120}, Qt::darkGreen);
    }

    void aNewGridIsEmpty() {
        ScrollNSImageView grid;
        QCOMPARE(grid.savedRect, QRectF(0, 0, 0, 0));
        QCOMPARE(grid.getCount(), 0);
        QVERIFY(grid.isFlipped());
    }

    void addingCellsDoesNoLayout() {
        Setup s = gridWith(300, 3);
        QCOMPARE(s.grid->getCount(), 3);
        for (const listImageViewItem* cell : s.grid->cells())
            QCOMPARE(cell->geometry(), QRect(0, 0, 80, 80));
    }

    void threeColumnsAt300() {
        Setup s = gridWith(300, 3);
        s.grid->update();
        QCOMPARE(origins(s.grid), (QList<QPoint>{{10, 10}, {100, 10}, {190, 10}}));
        for (const listImageViewItem* cell : s.grid->cells())
            QCOMPARE(cell->size(), QSize(80, 80));
    }

    void oneColumnAt60() {
        Setup s = gridWith(60, 3);
        s.grid->update();
        QCOMPARE(origins(s.grid), (QList<QPoint>{{10, 10}, {10, 100}, {10, 190}}));
    }

    void fiveCellsInTwoColumns() {
        Setup s = gridWith(156, 5);
        s.grid->update();
        QCOMPARE(s.grid->height(), 280);
        QCOMPARE(s.grid->width(), 156);
        QCOMPARE(origins(s.grid).last(), QPoint(10, 190));
    }

    void sevenCellsInThreeColumns() {
        Setup s = gridWith(300, 7);
        s.grid->update();
        QCOMPARE(s.grid->height(), 190);
        // The seventh lies below the computed height: the rows were rounded, not counted up.
        QCOMPARE(origins(s.grid).last(), QPoint(10, 190));
        QVERIFY(!s.grid->rect().contains(s.grid->cells().last()->geometry()));
    }

    void aTallerClipViewSetsTheHeight() {
        Setup s = gridWith(300, 7, 500);
        s.grid->update();
        QCOMPARE(s.grid->height(), 500);
        for (const listImageViewItem* cell : s.grid->cells())
            QVERIFY(s.grid->rect().contains(cell->geometry())); // no cell leaves the frame
    }

    void noCellsLeaveTheFrameSizeAsItIs() {
        Setup s = gridWith(300, 0, 500);
        s.grid->update();
        QCOMPARE(s.grid->size(), QSize(300, 20));
        QCOMPARE(s.grid->savedRect, QRectF(0, 0, 300, 20));
    }

    void aSecondConditionalLayoutMovesNothing() {
        Setup s = gridWith(300, 5);
        s.grid->recalcImageList(true); // the frame changed since creation: laid out
        QCOMPARE(origins(s.grid).at(4), QPoint(100, 100));
        // Moved by hand; a conditional layout with an unchanged frame leaves it there.
        s.grid->cells().at(4)->move(0, 0);
        s.grid->recalcImageList(true);
        QCOMPARE(s.grid->cells().at(4)->pos(), QPoint(0, 0));
        // A forced one puts it back.
        s.grid->recalcImageList(false);
        QCOMPARE(s.grid->cells().at(4)->pos(), QPoint(100, 100));
        // A change of frame lays out again: at 156 wide, 2 columns.
        s.grid->resize(156, s.grid->height());
        s.grid->recalcImageList(true);
        QCOMPARE(origins(s.grid).at(4), QPoint(10, 190));
    }

    void clearRemovesEveryCell() {
        Setup s = gridWith(300, 4);
        QList<QPointer<listImageViewItem>> cells;
        for (listImageViewItem* cell : s.grid->cells())
            cells.append(cell);
        s.grid->clear();
        QCOMPARE(s.grid->getCount(), 0);
        QTRY_VERIFY(std::all_of(cells.begin(), cells.end(), [](auto& c) { return c.isNull(); }));
        QVERIFY(s.grid->findChildren<listImageViewItem*>().isEmpty());
    }

    void theScrollAreaKeepsTheGridAsWideAsTheView() {
        ImageListScrollArea area;
        area.resize(400, 300);
        area.show();
        QVERIFY(QTest::qWaitForWindowExposed(&area));
        ScrollNSImageView* grid = area.grid();
        for (int i = 0; i < 40; ++i)
            grid->addImageView(picture);
        grid->update();
        QCOMPARE(grid->width(), area.viewport()->width());
        const int columns = (area.viewport()->width() + 24) / 90;
        QCOMPARE(grid->cells().at(columns)->pos(), QPoint(10, 100));
        QVERIFY(grid->height() > area.viewport()->height()); // it scrolls
        QVERIFY(area.verticalScrollBar()->maximum() > 0);
        // Narrower: the grid follows and lays out again on its own.
        area.resize(250, 300);
        QTRY_COMPARE(grid->width(), area.viewport()->width());
        const int fewer = (area.viewport()->width() + 24) / 90;
        QCOMPARE(grid->cells().at(fewer)->pos(), QPoint(10, 100));
        // Scrolling moves the grid in its view, which is no change of its frame.
        const QRectF before = grid->savedRect;
        area.verticalScrollBar()->setValue(200);
        grid->recalcImageList(true);
        QCOMPARE(grid->savedRect, before);
    }

    void cellsInViewAreDecodedFirst() {
        ImageListScrollArea area;
        area.resize(400, 300);
        area.show();
        QVERIFY(QTest::qWaitForWindowExposed(&area));
        ScrollNSImageView* grid = area.grid();
        constexpr int kCells = 300;
        for (int i = 0; i < kCells; ++i)
            grid->addImageView(picture);
        grid->update();
        area.verticalScrollBar()->setValue(area.verticalScrollBar()->maximum());
        int first = -1, last = -1;
        grid->visibleCells(&first, &last);
        QVERIFY(first > kCells / 2 && last == kCells);
        auto hasPicture = [grid](int i) { return !grid->cells().at(i)->small_image.isNull(); };
        auto inViewDone = [&] {
            for (int i = first; i < last; ++i)
                if (!hasPicture(i))
                    return false;
            return true;
        };
        QElapsedTimer timer;
        timer.start();
        while (!inViewDone() && timer.elapsed() < 60'000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        QVERIFY(inViewDone());
        int done = 0;
        for (int i = 0; i < kCells; ++i)
            done += hasPicture(i) ? 1 : 0;
        // The cells in view came before the hundreds above them.
        QVERIFY2(done < kCells / 2, qPrintable(QString::number(done)));
        QTRY_VERIFY_WITH_TIMEOUT(!grid->isLoadingThumbnails(), 60'000);
        for (int i = 0; i < kCells; ++i)
            QVERIFY(hasPicture(i));
    }
};

QTEST_MAIN(tst_ScrollNSImageView)
#include "tst_ScrollNSImageView.moc"
