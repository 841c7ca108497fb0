// "Convert All" into the modern formats, in the real window: a folder of a JPEG photograph, a
// PNG drawing with alpha and a camera RAW (DNG) file converted to AVIF and to JPEG XL, each
// output read back by the format's own command-line decoder; the drawing comes out losslessly.

#include "codec/RasterWriters.h"
#include "export/FormatTable.h"

#include <QComboBox>
#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QtTest>

#include "DngWriter.h"
#include "FlowFixture.h"

namespace {

QImage decodedByTool(const QString& tool, const QString& path, const QString& png) {
    if (QStandardPaths::findExecutable(tool).isEmpty())
        return {};
    QProcess process;
    process.start(tool, {path, png});
    if (!process.waitForFinished(120'000) || process.exitCode() != 0)
        return {};
    return QImage(png).convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class tst_ModernBatch : public QObject {
    Q_OBJECT

private slots:
    void convertAllToModernFormats_data() {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("tool");
        QTest::newRow("AVIF") << "AVIF" << "heif-convert";
        QTest::newRow("JXL ") << "JXL " << "djxl";
    }
    void convertAllToModernFormats() {
        QFETCH(QString, code);
        QFETCH(QString, tool);
        if (!rasterWriterExists(rasterSubtype(int(formatIndexForCode(code)))))
            QSKIP("no encoder for this format here");
        FlowFixture f;
        const QString photo = f.makeImage("a.jpg", 80, 60);
        QImage drawing(50, 40, QImage::Format_ARGB32);
        drawing.fill(Qt::transparent);
        QPainter(&drawing).fillRect(10, 10, 20, 20, QColor(255, 0, 0, 128));
        drawing.setDotsPerMeterX(2835); // 72 dpi: one pixel a point
        drawing.setDotsPerMeterY(2835);
        QVERIFY(drawing.save(f.sources.path() + "/b.png"));
        QImage scene(64, 48, QImage::Format_RGB32);
        scene.fill(QColor(200, 20, 20));
        QVERIFY(DngWriter::write(f.sources.path() + "/c.dng", {scene, 6, {}}));

        f.open(photo);
        QVERIFY(f.selectFormat(code));
        f.controller->itsConvertAll->click();
        QTRY_VERIFY_WITH_TIMEOUT(f.controller->itsConvertAll->text() == "Convert All" &&
                                     !f.controller->isBatchRunning(),
                                 60'000);
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files).size(), 3);

        const QImage a = decodedByTool(tool, f.outPath("a." + code), f.home.path() + "/a.png");
        QCOMPARE(a.size(), QSize(80, 60));
        QVERIFY(qAlpha(a.pixel(70, 50)) == 255);
        QVERIFY(qBlue(a.pixel(70, 50)) > 200 && qRed(a.pixel(70, 50)) < 50);

        const QImage b = decodedByTool(tool, f.outPath("b." + code), f.home.path() + "/b.png");
        QCOMPARE(b.size(), QSize(50, 40));
        QVERIFY(b.hasAlphaChannel());
        QCOMPARE(qAlpha(b.pixel(2, 2)), 0);
        QCOMPARE(qAlpha(b.pixel(20, 20)), 128); // lossless: the alpha exactly
        QVERIFY(qAbs(qRed(b.pixel(20, 20)) - 255) <= 2);

        // The RAW file, demosaiced and turned upright by its orientation.
        const QImage c = decodedByTool(tool, f.outPath("c." + code), f.home.path() + "/c.png");
        QCOMPARE(c.size(), QSize(48, 64));
        const QRgb middle = c.pixel(24, 32);
        QVERIFY(qRed(middle) > qGreen(middle) + 40 && qRed(middle) > qBlue(middle) + 40);
    }
};

QTEST_MAIN(tst_ModernBatch)
#include "tst_ModernBatch.moc"
