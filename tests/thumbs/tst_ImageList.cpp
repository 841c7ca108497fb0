// The "Image List" tab of the real main window: filled from the source's folder on a background
// walk, restarted by a new choice, served from the thumbnail cache the second time, and kept in
// step with the fill-list box, the tab and the window's size.

#include "app/Controller.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/ThumbnailMaker.h"
#include "thumbs/listImageViewItem.h"

#include "ThumbTestFiles.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QScrollArea>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace ThumbTestFiles;

class tst_ImageList : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;
    std::unique_ptr<Controller> c;

    ScrollNSImageView* grid() const { return c->itsImageListView; }

    QStringList cellNames() const {
        QStringList names;
        for (const listImageViewItem* cell : grid()->cells())
            names.append(QFileInfo(cell->mFilename).fileName());
        return names;
    }

    void setFillList(bool on) {
        if (c->itsBatch->isChecked() != on)
            QTest::mouseClick(c->itsBatch, Qt::LeftButton, {}, QPoint(4, c->itsBatch->height() / 2));
        QCOMPARE(c->itsBatch->isChecked(), on);
        QCOMPARE(c->itsPref.isBatch, on ? 1 : 0);
    }

    // Waits until the walk has ended and every cell has its picture (or has none).
    bool settled(int timeout = 60'000) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < timeout) {
            if (image_thread_exit && !grid()->isLoadingThumbnails() &&
                !c->itsImageProgress->isVisible())
                return true;
            QTest::qWait(10);
        }
        return false;
    }

    QString folderOf(const QString& name) {
        const QString path = files.path() + u'/' + name;
        QDir().mkpath(path);
        return path;
    }

    QStringList fillFolder(const QString& folder, int count, QColor colour) {
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths.append(writePicture(folder, QStringLiteral("pic%1.png").arg(i), {96, 64}, colour));
        return paths;
    }

    void selectListTab() {
        c->_tabView->setCurrentIndex(1);
        QCOMPARE(c->_tabView->tabText(1), QStringLiteral("Image List"));
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && files.isValid());
        QDir(home.path()).removeRecursively();
        QDir().mkpath(home.path());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        qputenv("XDG_CACHE_HOME", (home.path() + "/.cache").toUtf8());
        QDir(files.path()).removeRecursively();
        QDir().mkpath(files.path());
        openWindow();
    }

    void openWindow() {
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        c->window()->resize(800, 600);
        c->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c->window()));
    }

    void cleanup() { c.reset(); }

    void theWholeFolderFillsFromItsFirstImage() {
        const QString folder = folderOf("walk");
        writePicture(folder, "img10.png", {100, 50}, Qt::red);
        writePicture(folder, "img2.png", {100, 50}, Qt::green);
        const QString current = writePicture(folder, "b.png", {100, 50}, Qt::blue);
        writePicture(folder, "a.png", {50, 100}, Qt::yellow);
        writeBytes(folder, "notes.txt", "not a picture");
        QDir().mkpath(folder + "/sub.png");
        setFillList(true);
        selectListTab();
        c->setSourceFileName(current, true);
        QVERIFY(c->itsImageProgress->isVisible()); // spinning while the walk runs
        QCOMPARE(c->itsImageProgress->maximum(), 0);
        QVERIFY(settled());
        // From the folder's first image, in folder order, not from the current one.
        QCOMPARE(cellNames(), (QStringList{"a.png", "b.png", "img2.png", "img10.png"}));
        QVERIFY(!c->itsImageProgress->isVisible());
        // Laid out on the grid, each with its picture.
        const int columns = (grid()->width() + 24) / 90;
        QVERIFY(columns >= 4);
        QCOMPARE(grid()->cells().at(3)->pos(), QPoint(280, 10));
        for (const listImageViewItem* cell : grid()->cells())
            QVERIFY(!cell->small_image.isNull());
        const QImage shot = grid()->cells().at(3)->grab().toImage();
        QVERIFY(near(centreOf(shot), Qt::red));
    }

    void withTheBoxOffTheListHoldsTheCurrentImage() {
        const QString folder = folderOf("single");
        fillFolder(folder, 5, Qt::blue);
        setFillList(false);
        c->setSourceFileName(folder + "/pic3.png", true);
        QVERIFY(settled());
        QCOMPARE(cellNames(), QStringList{"pic3.png"});
        QCOMPARE(grid()->cells().at(0)->pos(), QPoint(10, 10));
        // Stepping to the next picture leaves the list as it is.
        c->selectWMF(102);
        QCOMPARE(c->itsSrcFileName->text(), folder + "/pic4.png");
        QCOMPARE(cellNames(), QStringList{"pic3.png"});
    }

    void aNewFolderStopsTheRunningWalk() {
        const QString big = folderOf("three hundred");
        const QStringList bigFiles = fillFolder(big, 300, Qt::red);
        const QString small = folderOf("five");
        const QStringList smallFiles = fillFolder(small, 5, Qt::green);
        setFillList(true);
        selectListTab();
        // Restarted at once, then after the first cells came, then again on the big folder.
        c->setSourceFileName(bigFiles.at(150), true);
        c->setSourceFileName(smallFiles.at(2), true);
        QCOMPARE(grid()->getCount(), 0); // emptied before the new walk
        QVERIFY(settled());
        QCOMPARE(cellNames(), (QStringList{"pic0.png", "pic1.png", "pic2.png", "pic3.png", "pic4.png"}));
        c->setSourceFileName(bigFiles.at(10), true);
        QTRY_VERIFY(grid()->getCount() > 0);
        c->setSourceFileName(smallFiles.at(0), true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 5);
        for (const listImageViewItem* cell : grid()->cells())
            QVERIFY2(cell->mFilename.startsWith(small + '/'), qPrintable(cell->mFilename));
        // No cell of the big folder is left anywhere once the event loop has run.
        QTRY_COMPARE(grid()->findChildren<listImageViewItem*>().size(), 5);
        // The big folder in full, when left to finish.
        c->setSourceFileName(bigFiles.at(0), true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 300);
        QTRY_COMPARE(grid()->findChildren<listImageViewItem*>().size(), 300);
        for (const listImageViewItem* cell : grid()->cells())
            QVERIFY(cell->mFilename.startsWith(big + '/'));
    }

    void manyRestartsInARow() {
        const QString a = folderOf("a");
        const QStringList aFiles = fillFolder(a, 300, Qt::red);
        const QString b = folderOf("b");
        const QStringList bFiles = fillFolder(b, 40, Qt::blue);
        setFillList(true);
        selectListTab();
        for (int i = 0; i < 20; ++i) {
            c->setSourceFileName(i % 2 ? bFiles.at(i) : aFiles.at(i), true);
            QTest::qWait(i % 5); // some restarts at once, some while cells arrive
        }
        c->setSourceFileName(bFiles.at(0), true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 40);
        QTRY_COMPARE(grid()->findChildren<listImageViewItem*>().size(), 40);
        for (const listImageViewItem* cell : grid()->cells())
            QVERIFY(cell->mFilename.startsWith(b + '/'));
    }

    void aSecondFillDecodesNothing() {
        const QString folder = folderOf("cached");
        const QStringList paths = fillFolder(folder, 30, Qt::darkGreen);
        setFillList(true);
        selectListTab();
        c->setSourceFileName(paths.at(0), true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 30);
        const uint64_t decoded = ThumbnailMaker::decodeCount();
        // Another window, as after a restart of the program: the cache is on disk.
        c.reset();
        openWindow();
        setFillList(true);
        selectListTab();
        c->setSourceFileName(paths.at(7), true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 30);
        QCOMPARE(ThumbnailMaker::decodeCount(), decoded);
        for (const listImageViewItem* cell : grid()->cells())
            QVERIFY(near(centreOf(cell->small_image), Qt::darkGreen));
    }

    void theBoxToggledMidWalk() {
        const QString folder = folderOf("toggled");
        const QStringList paths = fillFolder(folder, 200, Qt::magenta);
        setFillList(true);
        selectListTab();
        c->setSourceFileName(paths.at(5), true);
        // Off while the walk and the decodes run: the walk goes on to the end of the folder;
        // the box decides the next refresh of the list.
        setFillList(false);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 200);
        // The next choice of image follows the box: just that image.
        c->setSourceFileName(paths.at(9), true);
        QVERIFY(settled());
        QCOMPARE(cellNames(), QStringList{"pic9.png"});
        // On again mid-walk-less list, then a walk that a choice with the box off stops.
        setFillList(true);
        c->setSourceFileName(paths.at(0), true);
        QVERIFY(!image_thread_exit);
        setFillList(false);
        c->setSourceFileName(paths.at(1), true);
        QVERIFY(settled());
        QCOMPARE(cellNames(), QStringList{"pic1.png"});
        QTRY_COMPARE(grid()->findChildren<listImageViewItem*>().size(), 1);
    }

    void anUnreadableSourceEndsWithAnEmptyListAndNoSpinner() {
        const QString folder = folderOf("bad");
        const QString bad = writeBytes(folder, "bad.png", "no picture");
        setFillList(true);
        c->setSourceFileName(bad, true);
        QVERIFY(settled());
        QCOMPARE(grid()->getCount(), 0);
        QVERIFY(!c->itsImageProgress->isVisible());
    }

    void theTabAndTheWindowSizeLayOutAgain() {
        const QString folder = folderOf("layout");
        const QStringList paths = fillFolder(folder, 20, Qt::gray);
        setFillList(true);
        c->setSourceFileName(paths.at(0), true); // filled while the Image tab is in front
        QVERIFY(settled());
        selectListTab();
        QTRY_COMPARE(grid()->width(), grid()->parentWidget()->width());
        int columns = (grid()->width() + 24) / 90;
        QCOMPARE(grid()->cells().at(columns)->pos(), QPoint(10, 100));
        QCOMPARE(grid()->savedRect.width(), double(grid()->width()));
        // Narrower window: fewer columns, laid out again.
        c->window()->resize(500, 600);
        QTRY_VERIFY(grid()->width() < 400);
        columns = (grid()->width() + 24) / 90;
        QTRY_COMPARE(grid()->cells().at(columns)->pos(), QPoint(10, 100));
        // Selecting the tab again with nothing changed moves nothing.
        grid()->cells().at(0)->move(3, 3);
        c->_tabView->setCurrentIndex(0);
        selectListTab();
        QCOMPARE(grid()->cells().at(0)->pos(), QPoint(3, 3));
        c->windowDidResize();
        QCOMPARE(grid()->cells().at(0)->pos(), QPoint(3, 3));
    }

    void closingTheWindowMidWalkEndsCleanly() {
        const QString folder = folderOf("closing");
        const QStringList paths = fillFolder(folder, 300, Qt::red);
        setFillList(true);
        selectListTab();
        c->setSourceFileName(paths.at(0), true);
        QTest::qWait(5);
        c.reset(); // waits for the walk and the decoders
        QVERIFY(image_thread_exit);
    }
};

QTEST_MAIN(tst_ImageList)
#include "tst_ImageList.moc"
