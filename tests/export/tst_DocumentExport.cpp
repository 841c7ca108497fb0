// The PDF writers and the EPS conversion: the page size at an angle, the picture's place and
// content as poppler renders it back, its full resolution, the EPS header and bounding box, and
// destinations that cannot be written.

#include "app/Controller.h"
#include "export/DocumentExport.h"

#include <QComboBox>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <poppler-qt6.h>

#include <memory>

#include "MarkedPicture.h"

namespace {

struct RenderedPdf {
    int pages = 0;
    QSizeF pageSize; // points
    QImage image;    // the first page at the given resolution
};

RenderedPdf renderPdf(const QString& path, double dpi = 72) {
    RenderedPdf r;
    const std::unique_ptr<Poppler::Document> doc = Poppler::Document::load(path);
    if (!doc || doc->isLocked())
        return r;
    r.pages = doc->numPages();
    if (r.pages < 1)
        return r;
    const std::unique_ptr<Poppler::Page> page = doc->page(0);
    r.pageSize = page->pageSizeF();
    r.image = page->renderToImage(dpi, dpi).convertToFormat(QImage::Format_RGB32);
    return r;
}

QByteArray contents(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray boundingBoxLine(const QByteArray& eps) {
    const qsizetype at = eps.indexOf("%%BoundingBox:");
    if (at < 0)
        return QByteArray();
    return eps.mid(at, eps.indexOf('\n', at) - at).trimmed();
}

} // namespace

class tst_DocumentExport : public QObject {
    Q_OBJECT
private:
    QTemporaryDir dir;
    QString picturePath;

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        picturePath = dir.filePath(QStringLiteral("marked.png"));
        QVERIFY(markedPicture().save(picturePath, "PNG"));
    }

    void pageAndPlacement_data() {
        QTest::addColumn<int>("degrees");
        QTest::addColumn<QSizeF>("page");
        QTest::addColumn<QPoint>("redAt");
        QTest::addColumn<QPoint>("greenAt");
        QTest::newRow("0") << 0 << QSizeF(640, 480) << QPoint(32, 24) << QPoint(608, 456);
        QTest::newRow("90 clockwise")
            << 90 << QSizeF(480, 640) << QPoint(456, 32) << QPoint(24, 608);
        QTest::newRow("-90 counter-clockwise")
            << -90 << QSizeF(480, 640) << QPoint(24, 608) << QPoint(456, 32);
        QTest::newRow("180") << 180 << QSizeF(640, 480) << QPoint(608, 456) << QPoint(32, 24);
        // (640 + 480) x cos 45 = 791.96
        QTest::newRow("45") << 45 << QSizeF(791.96, 791.96) << QPoint(345, 39) << QPoint(447, 752);
    }
    void pageAndPlacement() {
        QFETCH(int, degrees);
        QFETCH(QSizeF, page);
        QFETCH(QPoint, redAt);
        QFETCH(QPoint, greenAt);
        Controller controller;
        controller.m_rotate = degrees;
        const QString path = dir.filePath(QStringLiteral("page%1.pdf").arg(degrees));
        controller.createPDFFile(picturePath, path, QRectF(0, 0, 640, 480));

        const RenderedPdf pdf = renderPdf(path);
        QCOMPARE(pdf.pages, 1);
        QVERIFY2(
            qAbs(pdf.pageSize.width() - page.width()) < 1.0 &&
                qAbs(pdf.pageSize.height() - page.height()) < 1.0,
            qPrintable(
                QStringLiteral("%1 x %2").arg(pdf.pageSize.width()).arg(pdf.pageSize.height())));
        const QPoint centre(pdf.image.width() / 2, pdf.image.height() / 2);
        QVERIFY(near(pdf.image.pixel(centre), kBlue));
        QVERIFY2(near(pdf.image.pixel(redAt), kRed), qPrintable(describe(pdf.image.pixel(redAt))));
        QVERIFY2(near(pdf.image.pixel(greenAt), kGreen),
                 qPrintable(describe(pdf.image.pixel(greenAt))));
        if (degrees == 45) // the corners lie outside the turned picture
            QVERIFY2(near(pdf.image.pixel(2, 2), kWhite),
                     qPrintable(describe(pdf.image.pixel(2, 2))));
    }

    void resolutionSettingIsIrrelevant() {
        Controller controller;
        QComboBox dpiCombo;
        dpiCombo.setEditable(true);
        controller.itsDpiCombo = &dpiCombo;
        controller.m_rotate = 90;
        QByteArray first;
        for (const char* dpi : {"72", "300"}) {
            dpiCombo.setCurrentText(QLatin1String(dpi));
            const QString path = dir.filePath(QStringLiteral("dpi%1.pdf").arg(dpi));
            controller.createPDFFile(picturePath, path, QRectF(0, 0, 640, 480));
            const RenderedPdf pdf = renderPdf(path);
            QCOMPARE(pdf.pageSize, QSizeF(480, 640));
            QCOMPARE(pdf.image.size(), QSize(480, 640));
        }
        controller.itsDpiCombo = nullptr;
    }

    void pictureKeepsItsFullResolution() {
        // 1280 x 960 pixels of one-pixel black and white stripes in a 640 x 480 point box. A
        // picture reduced to the box's 640 points would lose them altogether (all grey or all
        // one colour); at full resolution they come back as stripes of two pixels at 288 dpi.
        QImage fine(1280, 960, QImage::Format_RGB32);
        for (int x = 0; x < fine.width(); ++x) {
            const QRgb c = x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
            for (int y = 0; y < fine.height(); ++y)
                fine.setPixel(x, y, c);
        }
        const QString path = dir.filePath(QStringLiteral("fine.pdf"));
        writePictureAsPdf(fine, QRectF(0, 0, 640, 480), 0, path);
        // Embedded without loss: no JPEG stream in the document.
        QVERIFY(!contents(path).contains("/DCTDecode"));
        const RenderedPdf pdf = renderPdf(path, 288);
        QCOMPARE(pdf.pageSize, QSizeF(640, 480));
        QCOMPARE(pdf.image.size(), QSize(2560, 1920));
        int changes = 0;
        int lowest = 255;
        int highest = 0;
        for (int x = 800; x < 880; ++x) {
            const int v = qGray(pdf.image.pixel(x, 1000));
            lowest = qMin(lowest, v);
            highest = qMax(highest, v);
            if ((v >= 128) != (qGray(pdf.image.pixel(x + 1, 1000)) >= 128))
                ++changes;
        }
        QVERIFY2(changes >= 36 && highest - lowest >= 150,
                 qPrintable(
                     QStringLiteral("%1 changes, %2 to %3").arg(changes).arg(lowest).arg(highest)));
    }

    void currentPicture() {
        Controller controller;
        controller.itsCGImage = markedPicture();
        controller.itsImgBounds = Rect{0, 0, 480, 640};
        controller.m_rotate = 90;
        const QString path = dir.filePath(QStringLiteral("current picture.pdf"));
        controller.createPDFFile(path.toUtf8().constData());
        const RenderedPdf pdf = renderPdf(path);
        QCOMPARE(pdf.pageSize, QSizeF(480, 640));
        QVERIFY(near(pdf.image.pixel(456, 32), kRed));
        QVERIFY(near(pdf.image.pixel(24, 608), kGreen));
        controller.createPDFFile(nullptr); // nothing to do, nothing to crash
    }

    void unreadableSourceGivesBlankPage() {
        Controller controller;
        const QString path = dir.filePath(QStringLiteral("blank.pdf"));
        controller.createPDFFile(dir.filePath(QStringLiteral("absent.png")), path,
                                 QRectF(0, 0, 100, 50));
        const RenderedPdf pdf = renderPdf(path);
        QCOMPARE(pdf.pageSize, QSizeF(100, 50));
        QVERIFY(near(pdf.image.pixel(50, 25), kWhite, 0));
    }

    void unwritableDestination() {
        Controller controller;
        const QString path = QStringLiteral("/no-such-folder-here/out.pdf");
        controller.createPDFFile(picturePath, path, QRectF(0, 0, 640, 480));
        QVERIFY(!QFile::exists(path));
        controller.createPDFFile(path.toUtf8().constData());
        QVERIFY(!QFile::exists(path));
        // A zero page: nothing is made.
        const QString empty = dir.filePath(QStringLiteral("empty.pdf"));
        writePictureAsPdf(markedPicture(), QRectF(), 0, empty);
        QVERIFY(!QFile::exists(empty));
    }

    void eps_data() {
        QTest::addColumn<int>("degrees");
        QTest::addColumn<QByteArray>("box");
        QTest::newRow("0") << 0 << QByteArray("%%BoundingBox: 0 0 640 480");
        QTest::newRow("90") << 90 << QByteArray("%%BoundingBox: 0 0 480 640");
        QTest::newRow("45") << 45 << QByteArray("%%BoundingBox: 0 0 792 792");
    }
    void eps() {
        QFETCH(int, degrees);
        QFETCH(QByteArray, box);
        const QString path = dir.filePath(QStringLiteral("eps%1.pdf").arg(degrees));
        writePictureAsPdf(markedPicture(), QRectF(0, 0, 640, 480), degrees, path);
        const QByteArray eps = pdfToEps(contents(path));
        QVERIFY(eps.startsWith("%!PS-Adobe-3.0 EPSF-3.0"));
        QCOMPARE(boundingBoxLine(eps), box);
        QCOMPARE(eps.count("%%BoundingBox:"), 1);
        // The picture goes along as an image, not as an empty page.
        QVERIFY(eps.contains("image") || eps.contains("Image"));
        QVERIFY(eps.size() > 10000);

        // Drawn by an independent PostScript interpreter where one is installed.
        const QString gs = QStandardPaths::findExecutable(QStringLiteral("gs"));
        if (gs.isEmpty())
            QSKIP("no PostScript interpreter to draw the EPS");
        const QString epsPath = dir.filePath(QStringLiteral("drawn%1.eps").arg(degrees));
        const QString pngPath = dir.filePath(QStringLiteral("drawn%1.png").arg(degrees));
        QFile out(epsPath);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(eps);
        out.close();
        QProcess process;
        process.start(gs, {"-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-dEPSCrop", "-r72",
                           "-sDEVICE=png16m", "-sOutputFile=" + pngPath, epsPath});
        QVERIFY(process.waitForFinished(60000));
        const QImage drawn(pngPath);
        const QList<QByteArray> numbers = box.split(' ');
        QCOMPARE(drawn.size(), QSize(numbers.at(3).toInt(), numbers.at(4).toInt()));
        QVERIFY(near(drawn.pixel(drawn.width() / 2, drawn.height() / 2), kBlue));
        const QPoint red = degrees == 0    ? QPoint(32, 24)
                           : degrees == 90 ? QPoint(456, 32)
                                           : QPoint(345, 39);
        QVERIFY2(near(drawn.pixel(red), kRed), qPrintable(describe(drawn.pixel(red))));
    }

    void epsOfNoDocument() {
        QVERIFY(pdfToEps(QByteArray()).isEmpty());
        QVERIFY(pdfToEps(QByteArray("%PDF-1.4 but nothing more")).isEmpty());
    }
};

QTEST_MAIN(tst_DocumentExport)
#include "tst_DocumentExport.moc"
