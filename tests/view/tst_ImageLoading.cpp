// The controller's current picture: imageViewUpdate, getImageBounds, drawing a file at its
// own size, and the raster record helpers.

#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <cstring>

#include "LoadTestImages.h"
#include "app/Controller.h"
#include "view/ImageDrawing.h"
#include "view/wmfImageView.h"

using namespace LoadTestImages;

namespace {

// A controller with the three outlets loading talks to, as real widgets.
struct Rig {
    Controller controller;
    QLineEdit sizeField;
    wmfImageView view;
    Rig() {
        controller.itsSizeField = &sizeField;
        controller.itsWmfView = &view;
        view.mainController = &controller;
        view.resize(320, 240);
    }
};

bool boundsAre(const Rect& r, int top, int left, int bottom, int right) {
    return r.top == top && r.left == left && r.bottom == bottom && r.right == right;
}

} // namespace

class tst_ImageLoading : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    QTemporaryDir home;
    QString file(const QString& name) const { return dir.filePath(name); }

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        QVERIFY(home.isValid());
        qputenv("HOME", home.path().toLocal8Bit());
    }

    void loads640x480() {
        const QString path = file("vga.png");
        QVERIFY(twoTone(640, 480, Qt::red, Qt::blue).save(path));
        Rig rig;
        QVERIFY(rig.controller.imageViewUpdate(path));
        QCOMPARE(rig.sizeField.text(), QStringLiteral("640 * 480"));
        QVERIFY(boundsAre(rig.controller.itsImgBounds, 0, 0, 480, 640));
        QCOMPARE(rig.controller.getCGImage().size(), QSize(640, 480));
        QCOMPARE(rig.view.wmfPath(), path);
    }

    void roundedTextTruncatedBounds_data() {
        QTest::addColumn<int>("w");
        QTest::addColumn<int>("h");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("right");
        QTest::addColumn<int>("bottom");
        // 300 dpi: 1003 px = 240.72 pt, 1002 px = 240.48 pt, 1000 px = 240.0 pt
        QTest::newRow("rounds up, truncates") << 1003 << 1000 << "241 * 240" << 240 << 240;
        QTest::newRow("rounds down") << 1002 << 1003 << "240 * 241" << 240 << 240;
        QTest::newRow("small") << 10 << 5 << "2 * 1" << 2 << 1; // 2.4 x 1.2 points
    }
    void roundedTextTruncatedBounds() {
        QFETCH(int, w);
        QFETCH(int, h);
        QFETCH(QString, text);
        QFETCH(int, right);
        QFETCH(int, bottom);
        const QString path = file(QStringLiteral("dpi%1x%2.png").arg(w).arg(h));
        QImage source(w, h, QImage::Format_RGB32);
        source.fill(Qt::gray);
        source.setDotsPerMeterX(11811);
        source.setDotsPerMeterY(11811);
        QVERIFY(source.save(path));
        Rig rig;
        QVERIFY(rig.controller.imageViewUpdate(path));
        QCOMPARE(rig.sizeField.text(), text);
        QVERIFY(boundsAre(rig.controller.itsImgBounds, 0, 0, bottom, right));
        QCOMPARE(rig.controller.getCGImage().size(), QSize(w, h)); // the raster keeps every pixel
        const QRectF bounds = rig.controller.getImageBounds(path);
        QCOMPARE(bounds.topLeft(), QPointF(0, 0));
        QVERIFY(qAbs(bounds.width() - w * 72.0 / 300) < 0.01);
    }

    void secondLoadReplacesFirst() {
        const QString first = file("first.png");
        const QString second = file("second.png");
        QVERIFY(twoTone(40, 30, Qt::red, Qt::red).save(first));
        QVERIFY(twoTone(50, 20, Qt::blue, Qt::blue).save(second));
        Rig rig;
        QVERIFY(rig.controller.imageViewUpdate(first));
        const qint64 firstKey = rig.controller.getCGImage().cacheKey();
        QVERIFY(rig.controller.imageViewUpdate(second));
        QVERIFY(rig.controller.getCGImage().cacheKey() != firstKey);
        QCOMPARE(rig.controller.getCGImage().size(), QSize(50, 20));
        QCOMPARE(rig.controller.getCGImage().pixelColor(5, 5), QColor(Qt::blue));
        QCOMPARE(rig.sizeField.text(), QStringLiteral("50 * 20"));
        QCOMPARE(rig.view.wmfPath(), second);
    }

    void unreadableAfterGoodKeepsPicture_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text") << QByteArray("not a picture at all\n");
        QTest::newRow("zero bytes") << QByteArray();
    }
    void unreadableAfterGoodKeepsPicture() {
        QFETCH(QByteArray, bytes);
        const QString good = file("good.png");
        const QString bad = file("bad.png");
        QVERIFY(twoTone(64, 48, Qt::red, Qt::blue).save(good));
        QVERIFY(writeBytes(bad, bytes));
        Rig rig;
        QVERIFY(rig.controller.imageViewUpdate(good));
        const qint64 key = rig.controller.getCGImage().cacheKey();
        QVERIFY(!rig.controller.imageViewUpdate(bad));
        QCOMPARE(rig.controller.getCGImage().cacheKey(), key);
        QCOMPARE(rig.sizeField.text(), QStringLiteral("64 * 48"));
        QCOMPARE(rig.view.wmfPath(), good);
        QVERIFY(boundsAre(rig.controller.itsImgBounds, 0, 0, 0, 0));
        QCOMPARE(rig.controller.getImageBounds(bad), QRectF(0, 0, 0, 0));
    }

    void alphaKeptOpaqueStaysOpaque() {
        const QString rgba = file("clear.png");
        const QString rgb = file("solid.png");
        QImage transparent(8, 8, QImage::Format_ARGB32);
        transparent.fill(QColor(0, 255, 0, 64));
        QVERIFY(transparent.save(rgba));
        QVERIFY(twoTone(8, 8, Qt::green, Qt::green).save(rgb));
        Rig rig;
        QVERIFY(rig.controller.imageViewUpdate(rgba));
        QVERIFY(rig.controller.getCGImage().hasAlphaChannel());
        QVERIFY(qAbs(rig.controller.getCGImage().pixelColor(3, 3).alpha() - 64) <= 1);
        QVERIFY(rig.controller.imageViewUpdate(rgb));
        QVERIFY(!rig.controller.getCGImage().hasAlphaChannel());
        QCOMPARE(rig.controller.getCGImage().pixelColor(3, 3).alpha(), 255);
    }

    void bareControllerWithoutOutlets() {
        const QString path = file("bare.png");
        QVERIFY(twoTone(12, 10, Qt::red, Qt::blue).save(path));
        Controller controller;
        QVERIFY(controller.imageViewUpdate(path));
        QVERIFY(boundsAre(controller.itsImgBounds, 0, 0, 10, 12));
        QVERIFY(!controller.imageViewUpdate(file("missing.png")));
        QCOMPARE(controller.getCGImage().size(), QSize(12, 10));
    }

    void getImageBoundsChangesNothing() {
        const QString path = file("measured.png");
        QVERIFY(twoTone(640, 480, Qt::red, Qt::blue).save(path));
        Rig rig;
        QCOMPARE(rig.controller.getImageBounds(path), QRectF(0, 0, 640, 480));
        QVERIFY(rig.controller.getCGImage().isNull());
        QVERIFY(rig.sizeField.text().isEmpty());
        QVERIFY(rig.view.wmfPath().isEmpty());
    }

    void realMainWindow() {
        const QString path = file(QStringLiteral("fenêtre 画像.png"));
        QVERIFY(twoTone(200, 100, Qt::red, Qt::blue).save(path));
        Controller controller;
        controller.skipSplash = true;
        controller.loadMainWindow();
        QVERIFY(controller.itsSizeField);
        QVERIFY(controller.itsWmfView);
        QVERIFY(controller.imageViewUpdate(path));
        QCOMPARE(controller.itsSizeField->text(), QStringLiteral("200 * 100"));
        QCOMPARE(controller.itsWmfView->wmfPath(), path);
        QVERIFY(boundsAre(controller.itsImgBounds, 0, 0, 100, 200));
    }

    void drawsAtNaturalSizeClipped() {
        const QString path = file("big.png");
        QVERIFY(twoTone(100, 100, Qt::red, Qt::blue).save(path));
        QImage target(40, 40, QImage::Format_ARGB32_Premultiplied);
        target.fill(Qt::white);
        {
            QPainter painter(&target);
            drawCGImageFromWMF(&painter, path, nullptr);
        }
        // Nothing is scaled: only the top-left 40 x 40 points (all red) are drawn.
        QCOMPARE(target.pixelColor(0, 0), QColor(Qt::red));
        QCOMPARE(target.pixelColor(39, 39), QColor(Qt::red));
        QImage shifted(40, 40, QImage::Format_ARGB32_Premultiplied);
        shifted.fill(Qt::white);
        {
            QPainter painter(&shifted);
            painter.translate(-30, 0); // the caller's transform places the picture
            drawCGImageFromWMF(&painter, path, nullptr);
        }
        QCOMPARE(shifted.pixelColor(5, 5), QColor(Qt::red));
        QCOMPARE(shifted.pixelColor(35, 5), QColor(Qt::blue));
    }

    void drawsNothingForUnreadable() {
        const QString path = file("junk.png");
        QVERIFY(writeBytes(path, "junk"));
        QImage target(10, 10, QImage::Format_ARGB32_Premultiplied);
        target.fill(Qt::white);
        QPainter painter(&target);
        drawCGImageFromWMF(&painter, path, nullptr);
        painter.end();
        QCOMPARE(target.pixelColor(5, 5), QColor(Qt::white));
    }

    void bitmapRecord() {
        QImage rgb(5, 3, QImage::Format_RGB32);
        BitmapStruct record;
        getBitmapBmp(&rgb, &record);
        QCOMPARE(record.width, 5.0f);
        QCOMPARE(record.height, 3.0f);
        QCOMPARE(record.bitsPerPixel, 32u);
        QCOMPARE(record.bitsPerSample, 8u);
        QCOMPARE(record.bytesPerRow, 20u);
        QCOMPARE(record.data, rgb.bits());
        QCOMPARE(record.rep, &rgb);
        BitmapStruct untouched;
        getBitmapBmp(nullptr, &untouched);
        QCOMPARE(untouched.width, 0.0f);
        releaseBitmap(nullptr);
        releaseBitmap(&untouched);
    }

    void getBitmapReadsFile() {
        const QString path = file("record.png");
        QVERIFY(twoTone(7, 4, Qt::red, Qt::blue).save(path));
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {"--get-bitmap", path});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitCode(), 3);
        QCOMPARE(child.readAllStandardOutput().trimmed(), QByteArray("7 x 4, 32 bits"));
    }

    void getBitmapExitsOnUnreadable() {
        const QString path = file("unreadable.png");
        QVERIFY(writeBytes(path, "junk"));
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {"--get-bitmap", path});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(child.readAllStandardOutput(), QByteArray("cannot read from file\n"));
    }
};

int main(int argc, char** argv) {
    // The child process of the getBitmap tests: reads one file and reports the record.
    if (argc == 3 && std::strcmp(argv[1], "--get-bitmap") == 0) {
        BitmapStruct record;
        getBitmap(argv[2], &record);
        std::printf("%g x %g, %u bits\n", record.width, record.height, record.bitsPerPixel);
        releaseBitmap(&record);
        return record.rep == nullptr ? 3 : 4;
    }
    QApplication app(argc, argv);
    tst_ImageLoading test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ImageLoading.moc"
