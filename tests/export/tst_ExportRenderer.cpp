// The off-screen picture of a raster export: its size at a resolution and an angle, its
// background, the direction of the turn, the untouched fast path and the failures.

#include "app/Controller.h"
#include "export/ExportRenderer.h"
#include "export/FormatTable.h"
#include "codec/ImageDecoder.h"
#include "view/RotationGeometry.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>
#include <QtTest>

#include <memory>

#include "MarkedPicture.h"

namespace {

constexpr int kJpeg = 7;
constexpr int kPng = 8;
constexpr int kTarga = 11;

// The rectangles the conversion flow hands to createCGImage for a picture of `size` points.
struct ExportRects {
    QRectF rect;
    QRectF r;
};
ExportRects exportRects(QSizeF size, float dpi, int degrees) {
    const float s = dpi / 72.0f;
    const QRectF q(0, 0, float(size.width()) * s, float(size.height()) * s);
    return {rotatedRectBounds(q, float(degrees)), q};
}

// Watches for message boxes while alive, records the first one's title, text and button
// titles and closes each with its first button.
class AlertWatcher {
public:
    int count = 0;
    QString title;
    QString text;
    QStringList buttons;

    AlertWatcher() {
        timer.setInterval(10);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible() || box->property("seen").toBool())
                return;
            box->setProperty("seen", true);
            if (count++ == 0) {
                title = box->windowTitle();
                text = box->text();
                for (QAbstractButton* b : box->buttons())
                    buttons << b->text();
            }
            if (!box->buttons().isEmpty())
                box->buttons().first()->click();
            else
                box->reject();
        });
        timer.start();
    }

private:
    QTimer timer;
};

} // namespace

class tst_ExportRenderer : public QObject {
    Q_OBJECT
private:
    QTemporaryDir dir;
    QString picturePath;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<QComboBox> dpiCombo;

    QImage render(float dpi, int degrees, int format) {
        dpiCombo->setCurrentText(QString::number(dpi));
        controller->m_rotate = degrees;
        const ExportRects rects = exportRects(QSizeF(640, 480), dpi, degrees);
        return controller->createCGImage(picturePath, rects.rect, rects.r, format);
    }

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        picturePath = dir.filePath(QStringLiteral("marked.png"));
        QVERIFY(markedPicture().save(picturePath, "PNG"));
        controller = std::make_unique<Controller>();
        dpiCombo = std::make_unique<QComboBox>();
        dpiCombo->setEditable(true);
        controller->itsDpiCombo = dpiCombo.get();
    }

    void size_data() {
        QTest::addColumn<float>("dpi");
        QTest::addColumn<int>("degrees");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("72 dpi") << 72.0f << 0 << QSize(640, 480);
        QTest::newRow("144 dpi") << 144.0f << 0 << QSize(1280, 960);
        QTest::newRow("150 dpi truncates 999.99994") << 150.0f << 0 << QSize(1333, 999);
        QTest::newRow("90 degrees") << 72.0f << 90 << QSize(480, 640);
        QTest::newRow("30 degrees") << 72.0f << 30 << QSize(794, 735);
        QTest::newRow("45 degrees") << 72.0f << 45 << QSize(791, 791);
        QTest::newRow("-90 degrees") << 72.0f << -90 << QSize(480, 640);
        QTest::newRow("90 degrees at 144 dpi") << 144.0f << 90 << QSize(960, 1280);
    }
    void size() {
        QFETCH(float, dpi);
        QFETCH(int, degrees);
        QFETCH(QSize, expected);
        const QImage picture = render(dpi, degrees, kJpeg);
        QCOMPARE(picture.size(), expected);
    }

    void resolutionScalesContent() {
        const QImage picture = render(144, 0, kJpeg);
        QCOMPARE(picture.format(), QImage::Format_ARGB32_Premultiplied);
        // The red block is 64 x 48 points: 128 x 96 pixels at 144 dpi.
        QVERIFY(near(picture.pixel(120, 90), kRed));
        QVERIFY(near(picture.pixel(140, 110), kBlue));
        QVERIFY(near(picture.pixel(1279 - 120, 959 - 90), kGreen));
    }

    void turnDirection_data() {
        QTest::addColumn<int>("degrees");
        QTest::addColumn<QPoint>("redAt");
        QTest::addColumn<QPoint>("greenAt");
        // A positive angle turns clockwise: the top-left corner goes to the top-right.
        QTest::newRow("90 clockwise") << 90 << QPoint(456, 32) << QPoint(24, 608);
        QTest::newRow("-90 counter-clockwise") << -90 << QPoint(24, 608) << QPoint(456, 32);
        QTest::newRow("180") << 180 << QPoint(608, 456) << QPoint(32, 24);
        QTest::newRow("270 is -90") << 270 << QPoint(24, 608) << QPoint(456, 32);
    }
    void turnDirection() {
        QFETCH(int, degrees);
        QFETCH(QPoint, redAt);
        QFETCH(QPoint, greenAt);
        const QImage picture = render(72, degrees, kPng);
        QVERIFY2(near(picture.pixel(redAt), kRed), qPrintable(describe(picture.pixel(redAt))));
        QVERIFY2(near(picture.pixel(greenAt), kGreen),
                 qPrintable(describe(picture.pixel(greenAt))));
    }

    void cornersAt45_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<QRgb>("corner");
        QTest::newRow("JPEG white") << kJpeg << qRgba(255, 255, 255, 255);
        QTest::newRow("PNGf transparent") << kPng << qRgba(0, 0, 0, 0);
        QTest::newRow("TPIC white") << kTarga << qRgba(255, 255, 255, 255);
        QTest::newRow("TIFF transparent") << 10 << qRgba(0, 0, 0, 0);
    }
    void cornersAt45() {
        QFETCH(int, format);
        QFETCH(QRgb, corner);
        const QImage picture = render(72, 45, format);
        QCOMPARE(picture.size(), QSize(791, 791));
        for (const QPoint p : {QPoint(0, 0), QPoint(790, 0), QPoint(0, 790), QPoint(790, 790)})
            QVERIFY2(picture.pixel(p) == corner, qPrintable(describe(picture.pixel(p))));
        QVERIFY(near(picture.pixel(395, 395), kBlue));
    }

    void fastPathSharesThePicture() {
        DecodedImage decoded;
        decoded.ok = true;
        decoded.image = markedPicture();
        decoded.pointSize = QSizeF(640, 480);
        const QImage result = renderExportPicture(decoded, QRectF(0, 0, 640, 480),
                                                  QRectF(0, 0, 640, 480), kJpeg, 0, 1);
        QCOMPARE(result.constBits(), decoded.image.constBits());
        // A picture of 300 dpi (fewer points than pixels) is drawn, not shared.
        decoded.pointSize = QSizeF(153.6, 115.2);
        const QImage drawn = renderExportPicture(decoded, QRectF(0, 0, 153.6, 115.2),
                                                 QRectF(0, 0, 153.6, 115.2), kJpeg, 0, 1);
        QCOMPARE(drawn.size(), QSize(153, 115));
        QVERIFY(drawn.constBits() != decoded.image.constBits());
    }

    void alphaOverWhiteForFilledFormats() {
        DecodedImage decoded;
        decoded.ok = true;
        decoded.image = QImage(20, 10, QImage::Format_ARGB32);
        decoded.image.fill(Qt::transparent);
        decoded.image.setPixel(5, 5, qRgba(255, 0, 0, 255));
        decoded.pointSize = QSizeF(20, 10);
        const QRectF box(0, 0, 20, 10);
        const QImage filled = renderExportPicture(decoded, box, box, kJpeg, 0, 1);
        QCOMPARE(filled.pixel(0, 0), qRgba(255, 255, 255, 255));
        QCOMPARE(filled.pixel(5, 5), qRgba(255, 0, 0, 255));
        const QImage kept = renderExportPicture(decoded, box, box, kPng, 0, 1);
        QCOMPARE(qAlpha(kept.pixel(0, 0)), 0);
        QCOMPARE(kept.pixel(5, 5), qRgba(255, 0, 0, 255));
    }

    void emptySizeIsSilentNull_data() {
        QTest::addColumn<QString>("dpiText");
        QTest::addColumn<QString>("source");
        QTest::newRow("resolution 0") << QStringLiteral("0") << QStringLiteral("marked.png");
        QTest::newRow("no number") << QStringLiteral("abc") << QStringLiteral("marked.png");
        QTest::newRow("unreadable source") << QStringLiteral("72") << QStringLiteral("none.png");
    }
    void emptySizeIsSilentNull() {
        QFETCH(QString, dpiText);
        QFETCH(QString, source);
        dpiCombo->setCurrentText(dpiText);
        controller->m_rotate = 0;
        const QString path = dir.filePath(source);
        const float dpi = dpiText.toFloat();
        const QSizeF bounds = QFileInfo::exists(path) ? QSizeF(640, 480) : QSizeF(0, 0);
        const ExportRects rects = exportRects(bounds, dpi, 0);
        AlertWatcher alerts;
        QVERIFY(controller->createCGImage(path, rects.rect, rects.r, kJpeg).isNull());
        QCOMPARE(alerts.count, 0);
    }

    void undecodableFileGivesBlankPicture() {
        // A file that looks readable by its size but whose pixels cannot be decoded: the
        // bitmap is made and stays background.
        const QString path = dir.filePath(QStringLiteral("broken.png"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a picture at all");
        file.close();
        dpiCombo->setCurrentText(QStringLiteral("72"));
        controller->m_rotate = 0;
        const QImage picture =
            controller->createCGImage(path, QRectF(0, 0, 30, 20), QRectF(0, 0, 30, 20), kJpeg);
        QCOMPARE(picture.size(), QSize(30, 20));
        QCOMPARE(picture.pixel(15, 10), qRgba(255, 255, 255, 255));
    }

    void tooLargeBitmapShowsAlert() {
        dpiCombo->setCurrentText(QStringLiteral("72"));
        controller->m_rotate = 0;
        AlertWatcher alerts;
        const QRectF huge(0, 0, 70000, 70000);
        QVERIFY(controller->createCGImage(picturePath, huge, huge, kJpeg).isNull());
        QCOMPARE(alerts.count, 1);
        QCOMPARE(alerts.buttons, QStringList{QStringLiteral("OK")});
        QVERIFY(!alerts.title.isEmpty());
        QVERIFY(alerts.text.contains(QStringLiteral("70000")));
    }

    void readsSettingsFromWorkerThread() {
        dpiCombo->setCurrentText(QStringLiteral("144"));
        controller->m_rotate = 90;
        const ExportRects rects = exportRects(QSizeF(640, 480), 144, 90);
        QFuture<QImage> future = QtConcurrent::run([this, rects] {
            return controller->createCGImage(picturePath, rects.rect, rects.r, kPng);
        });
        QTRY_VERIFY_WITH_TIMEOUT(future.isFinished(), 20000);
        const QImage picture = future.result();
        QCOMPARE(picture.size(), QSize(960, 1280));
        QVERIFY(near(picture.pixel(960 - 40, 40), kRed));
    }

    void greyToneDisplayHasNoEffect() {
        controller->m_Monochrome = true;
        const QImage picture = render(72, 0, kPng);
        controller->m_Monochrome = false;
        QVERIFY2(near(picture.pixel(32, 24), kRed), qPrintable(describe(picture.pixel(32, 24))));
        QVERIFY(near(picture.pixel(320, 240), kBlue));
    }

    void missingResolutionListMeans72() {
        Controller bare;
        const QRectF box(0, 0, 640, 480);
        const QImage picture = bare.createCGImage(picturePath, box, box, kJpeg);
        QCOMPARE(picture.size(), QSize(640, 480));
        QVERIFY(near(picture.pixel(630, 470), kGreen));
    }

    void cleanupTestCase() {
        controller->itsDpiCombo = nullptr;
        controller.reset();
    }
};

QTEST_MAIN(tst_ExportRenderer)
#include "tst_ExportRenderer.moc"
