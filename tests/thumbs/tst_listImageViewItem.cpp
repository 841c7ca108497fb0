// One cell of the image list as a real widget: its picture's size and place, the shade while
// pressed, and the controller told on release.

#include "app/Controller.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/listImageViewItem.h"

#include "ThumbTestFiles.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace ThumbTestFiles;

class tst_listImageViewItem : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;

    // A cell on its own, as the grid creates it, with its file set.
    std::unique_ptr<listImageViewItem> cellFor(const QString& path) {
        auto cell = std::make_unique<listImageViewItem>(QRectF(0, 0, 80, 80), nullptr);
        cell->setFileName(path);
        return cell;
    }

    // What the cell itself draws, over transparency (no window background).
    static QImage drawn(QWidget* widget) {
        QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        widget->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    }

private slots:
    void initTestCase() {
        QVERIFY(home.isValid() && files.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        qputenv("XDG_CACHE_HOME", (home.path() + "/.cache").toUtf8());
    }

    void aWidePictureFillsTheWidth() {
        // 800 x 400: scale 0.1, an 80 x 40 picture at (0, 20).
        const QString path = writePicture(files.path(), "wide.png", {800, 400}, Qt::red);
        auto cell = cellFor(path);
        QCOMPARE(cell->small_image.deviceIndependentSize(), QSizeF(80, 40));
        const QImage shot = drawn(cell.get());
        QCOMPARE(shot.size(), QSize(80, 80));
        QVERIFY(near(shot.pixelColor(40, 20), Qt::red));
        QVERIFY(near(shot.pixelColor(0, 59), Qt::red));
        QCOMPARE(shot.pixelColor(40, 19).alpha(), 0); // above the picture: nothing
        QCOMPARE(shot.pixelColor(40, 60).alpha(), 0); // below it: nothing
    }

    void aSmallTallPictureIsEnlarged() {
        // 30 x 60: scale 4/3, a 40 x 80 picture at (20, 0).
        const QString path = writePicture(files.path(), "tall.png", {30, 60}, Qt::green);
        auto cell = cellFor(path);
        QCOMPARE(cell->small_image.deviceIndependentSize(), QSizeF(40, 80));
        const QImage shot = drawn(cell.get());
        QVERIFY(near(shot.pixelColor(20, 0), Qt::green));
        QVERIFY(near(shot.pixelColor(59, 79), Qt::green));
        QCOMPARE(shot.pixelColor(19, 40).alpha(), 0);
        QCOMPARE(shot.pixelColor(60, 40).alpha(), 0);
    }

    void theCellIsSharpOnADenseScreen() {
        const QString path = writePicture(files.path(), "dense.png", {800, 800}, Qt::blue);
        auto cell = cellFor(path);
        cell->setImage(QImage(path));
        const qreal ratio = cell->devicePixelRatioF();
        if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR"))
            QCOMPARE(ratio, qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
        QCOMPARE(cell->small_image.devicePixelRatio(), ratio);
        QCOMPARE(cell->small_image.width(), qCeil(80 * ratio));
        QCOMPARE(cell->small_image.deviceIndependentSize(), QSizeF(80, 80));
        // Made from the cache folder whose pictures are large enough for this density.
        const QString folder = ratio > 1.6 ? "/large" : "/normal";
        QCOMPARE(QDir(home.path() + "/.cache/thumbnails" + folder).entryList(QDir::Files).size() > 0,
                 true);
        // Drawn at full device resolution: the picture's edge is sharp, one device pixel wide.
        const QImage shot = cell->grab().toImage();
        QCOMPARE(shot.size(), QSize(qCeil(80 * ratio), qCeil(80 * ratio)));
    }

    void pressingShadesUntilRelease() {
        const QString path = writePicture(files.path(), "black.png", {200, 200}, Qt::black);
        auto cell = cellFor(path);
        cell->show();
        QVERIFY(QTest::qWaitForWindowExposed(cell.get()));
        QCOMPARE(centreOf(drawn(cell.get())), QColor(Qt::black));
        QTest::mousePress(cell.get(), Qt::LeftButton, {}, QPoint(40, 40));
        QVERIFY(cell->mSelected);
        // Light grey (0.8) at half opacity over black: 0.4 of full.
        const QColor shaded = centreOf(drawn(cell.get()));
        QVERIFY2(near(shaded, QColor::fromRgbF(0.4f, 0.4f, 0.4f), 3),
                 qPrintable(shaded.name()));
        // Released outside the cell: the shade goes all the same.
        QTest::mouseRelease(cell.get(), Qt::LeftButton, {}, QPoint(200, 200));
        QVERIFY(!cell->mSelected);
        QCOMPARE(centreOf(drawn(cell.get())), QColor(Qt::black));
    }

    void anUnreadableFileGivesABlankCell() {
        const QString path = writeBytes(files.path(), "broken.png", "\x89PNG\r\n\x1a\n garbage");
        auto cell = cellFor(path);
        QVERIFY(cell->small_image.isNull());
        QCOMPARE(cell->mFilename, path);
        cell->show();
        QVERIFY(QTest::qWaitForWindowExposed(cell.get()));
        QTest::mousePress(cell.get(), Qt::LeftButton, {}, QPoint(40, 40));
        QCOMPARE(centreOf(drawn(cell.get())).alpha(), 0); // pressed, and still not shaded
        QTest::mouseRelease(cell.get(), Qt::LeftButton, {}, QPoint(40, 40));
    }

    void aNullNameClearsTheNameOnly() {
        const QString path = writePicture(files.path(), "kept.png", {100, 50}, Qt::cyan);
        auto cell = cellFor(path);
        const QImage before = cell->small_image;
        cell->setFileName(QString());
        QVERIFY(cell->mFilename.isNull());
        QCOMPARE(cell->small_image, before);
    }

    void releaseOpensTheFileWithoutRebuildingTheList() {
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        c.window()->resize(800, 600);
        c.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c.window()));
        const QString a = writePicture(files.path(), "open-a.png", {120, 90}, Qt::red);
        const QString b = writePicture(files.path(), "open-b.png", {120, 90}, Qt::blue);
        c.setSourceFileName(a, true); // fill-list box off: one cell for a
        ScrollNSImageView* grid = c.itsImageListView;
        QCOMPARE(grid->getCount(), 1);
        grid->addImageView(b); // a second cell, by hand
        listImageViewItem* cellB = grid->cells().at(1);
        QCOMPARE(cellB->mController, &c);
        QTest::mouseClick(cellB, Qt::LeftButton, {}, QPoint(40, 40));
        QCOMPARE(c.itsSrcFileName->text(), b);
        QCOMPARE(c.window()->windowTitle(), QStringLiteral("Ormidon: open-b.png"));
        // The list is as it was: the same two cells, not rebuilt.
        QCOMPARE(grid->getCount(), 2);
        QCOMPARE(grid->cells().at(1), cellB);
    }

    void anUnreadableCellStillOpensItsPath() {
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        c.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c.window()));
        const QString bad = writeBytes(files.path(), "bad.jpg", "not a jpeg at all");
        c.itsImageListView->addImageView(bad);
        listImageViewItem* cell = c.itsImageListView->cells().at(0);
        QTRY_VERIFY(!c.itsImageListView->isLoadingThumbnails());
        QVERIFY(cell->small_image.isNull());
        QTest::mouseClick(cell, Qt::LeftButton, {}, QPoint(40, 40));
        // The controller got the path: the title names it before the load fails.
        QCOMPARE(c.window()->windowTitle(), QStringLiteral("Ormidon: bad.jpg"));
    }
};

QTEST_MAIN(tst_listImageViewItem)
#include "tst_listImageViewItem.moc"
