// The program's command line: real pictures in a folder, converted by the real executable in a
// process of its own with no display, and the outputs read back.

#include "ProgramRun.h"
#include "codec/ImageDecoder.h"
#include "codec/MagickSupport.h"
#include "view/RotationGeometry.h"

#include <Magick++.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Run = ProgramRun;

// Two colours side by side: red on the left, blue on the right.
QImage halves(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    // 72 dpi: one point a pixel, so the outputs' sizes at 72 dpi are the sources' own.
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    painter.fillRect(width / 2, 0, width - width / 2, height, Qt::blue);
    return image;
}

bool near(QRgb a, QColor b, int tolerance = 40) {
    return qAbs(qRed(a) - b.red()) <= tolerance && qAbs(qGreen(a) - b.green()) <= tolerance &&
           qAbs(qBlue(a) - b.blue()) <= tolerance;
}

} // namespace

class tst_CommandLine : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir sources;

    Run run(const QStringList& arguments) { return runProgram(arguments, home.path()); }

    QString source(const QString& name) const { return sources.filePath(name); }

private slots:
    void initTestCase() {
        QVERIFY(home.isValid() && sources.isValid());
        QVERIFY(halves(40, 20).save(source("a.png")));
        QVERIFY(halves(60, 30).save(source("b.jpg"), "JPEG", 95));
        QVERIFY(halves(24, 12).save(source("c.bmp")));
        // A TIFF written by Magick++, read by the program's decoder chain.
        ensureMagickInitialised();
        const QImage tiffPixels = halves(32, 16).convertToFormat(QImage::Format_RGB888);
        Magick::Image tiff(32, 16, "RGB", Magick::CharPixel, tiffPixels.constBits());
        tiff.write(source("d.tif").toStdString());
        QVERIFY(QFile::exists(source("d.tif")));
    }

    void convertsFolderToPngAndJpeg() {
        for (const QString code : {QStringLiteral("PNGf"), QStringLiteral("JPEG")}) {
            QTemporaryDir out;
            const Run r = run({"--convert", code, "--dest", out.path(), sources.path()});
            QCOMPARE(r.exitCode, 0);
            QVERIFY2(r.err.isEmpty(), qPrintable(r.err));
            QVERIFY2(r.out.contains("4 of 4"), qPrintable(r.out));
            const QList<std::pair<QString, QSize>> expected = {
                {"a", {40, 20}}, {"b", {60, 30}}, {"c", {24, 12}}, {"d", {32, 16}}};
            for (const auto& [name, size] : expected) {
                const QString path = out.filePath(name + "." + code);
                QImageReader reader(path);
                QCOMPARE(reader.format(), code == "PNGf" ? QByteArray("png") : QByteArray("jpeg"));
                const QImage image = reader.read();
                QVERIFY2(!image.isNull(), qPrintable(path));
                QCOMPARE(image.size(), size);
                QVERIFY(near(image.pixel(2, size.height() / 2), Qt::red));
                QVERIFY(near(image.pixel(size.width() - 3, size.height() / 2), Qt::blue));
            }
            // And one output read back by Magick++ as well.
            Magick::Image back;
            back.read(out.filePath("a." + code).toStdString());
            QCOMPARE(int(back.columns()), 40);
            QCOMPARE(int(back.rows()), 20);
            const Magick::ColorRGB left = back.pixelColor(2, 10);
            QVERIFY(left.red() > 0.8 && left.blue() < 0.2);
            // Progress lines in folder order, when the output is not a terminal.
            const qsizetype first = r.out.indexOf("1/4 a.png");
            QVERIFY2(first >= 0, qPrintable(r.out));
            QVERIFY(r.out.indexOf("4/4 d.tif") > first);
        }
    }

    void convertsFolderToWebp() {
        // A modern format from the table, by its code as typed ("webp" is "WEBP").
        QTemporaryDir out;
        const Run r = run({"--convert", "webp", "--dest", out.path(), sources.path()});
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.out.contains("4 of 4"), qPrintable(r.out));
        const QList<std::pair<QString, QSize>> expected = {
            {"a", {40, 20}}, {"b", {60, 30}}, {"c", {24, 12}}, {"d", {32, 16}}};
        for (const auto& [name, size] : expected) {
            // Read back by Qt's WebP plugin, not by the libwebp calls that wrote it.
            QImageReader reader(out.filePath(name + ".WEBP"), "webp");
            const QImage image = reader.read();
            QVERIFY2(!image.isNull(), qPrintable(name));
            QCOMPARE(image.size(), size);
            QVERIFY(near(image.pixel(2, size.height() / 2), Qt::red));
            QVERIFY(near(image.pixel(size.width() - 3, size.height() / 2), Qt::blue));
        }
    }

    void convertsToAnOlderFormatByItsCode() {
        // "flc" names "FLC ": the outputs keep the code's blank, and FFmpeg reads them.
        QTemporaryDir out;
        const Run r = run({"--convert", "flc", "--dest", out.path(), source("a.png")});
        QCOMPARE(r.exitCode, 0);
        const QString path = out.filePath("a.FLC ");
        QVERIFY(QFile::exists(path));
        QProcess probe;
        probe.start("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-frames:v", "1", "-f",
                               "rawvideo", "-pix_fmt", "rgb24", "-"});
        QVERIFY(probe.waitForFinished(60000));
        const QByteArray rgb = probe.readAllStandardOutput();
        QCOMPARE(rgb.size(), qsizetype(40 * 20 * 3));
        const auto at = [&](int x, int y) {
            const auto* p = reinterpret_cast<const uchar*>(rgb.constData()) + (y * 40 + x) * 3;
            return qRgb(p[0], p[1], p[2]);
        };
        QVERIFY(near(at(2, 10), Qt::red));
        QVERIFY(near(at(37, 10), Qt::blue));
    }

    void acceptsAFormatBySuffix() {
        // Typed as the files are known: "png" is "PNGf", "tif" is "TIFF", "psd" is "8BPS".
        const QList<std::pair<QString, QString>> typed = {
            {"png", "a.PNGf"}, {"TIF", "a.TIFF"}, {"psd", "a.8BPS"}, {"jpg", "a.JPEG"}};
        for (const auto& [word, name] : typed) {
            QTemporaryDir out;
            const Run r = run({"--convert", word, "--dest", out.path(), source("a.png")});
            QVERIFY2(r.exitCode == 0, qPrintable(word + ": " + r.err));
            const QImage image = ImageDecoder::decode(out.filePath(name)).image;
            QVERIFY2(!image.isNull(), qPrintable(name));
            QCOMPARE(image.size(), QSize(40, 20));
            QVERIFY(near(image.pixel(2, 10), Qt::red));
        }
    }

    void resolutionAndAngleChangeTheSize() {
        QTemporaryDir out;
        const Run r =
            run({"--convert", "PNGf", "--dpi", "144", "--dest", out.path(), source("a.png")});
        QCOMPARE(r.exitCode, 0);
        QCOMPARE(QImage(out.filePath("a.PNGf")).size(), QSize(80, 40));

        QTemporaryDir turned;
        const Run t =
            run({"--convert", "PNGf", "--angle", "90", "--dest", turned.path(), source("a.png")});
        QCOMPARE(t.exitCode, 0);
        const QImage image(turned.filePath("a.PNGf"));
        QCOMPARE(image.size(), QSize(20, 40));

        // Any angle: the picture's box is the turned rectangle's bounds, as in the window.
        QTemporaryDir slanted;
        const Run s =
            run({"--convert", "PNGf", "--angle", "30", "--dest", slanted.path(), source("a.png")});
        QCOMPARE(s.exitCode, 0);
        const QRectF box = rotatedRectBounds(QRectF(0, 0, 40, 20), 30.0f);
        const QSize size = QImage(slanted.filePath("a.PNGf")).size();
        QVERIFY2(qAbs(size.width() - box.width()) <= 1.0 &&
                     qAbs(size.height() - box.height()) <= 1.0,
                 qPrintable(QStringLiteral("%1x%2").arg(size.width()).arg(size.height())));
    }

    void existingOutputsAreKeptOrReplaced() {
        QTemporaryDir out;
        QFile old(out.filePath("a.PNGf"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old contents");
        old.close();

        // Never a question: kept by default and with --skip, and the run says so.
        for (const QStringList& extra : {QStringList(), QStringList{"--skip"}}) {
            const Run r = run(QStringList{"--convert", "PNGf", "--dest", out.path()} + extra +
                              QStringList{source("a.png"), source("c.bmp")});
            QCOMPARE(r.exitCode, 3);
            QVERIFY2(r.out.contains("1 kept"), qPrintable(r.out));
            QFile f(out.filePath("a.PNGf"));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), QByteArray("old contents"));
            QCOMPARE(QImage(out.filePath("c.PNGf")).size(), QSize(24, 12));
            QFile::remove(out.filePath("c.PNGf"));
        }

        const Run r =
            run({"--convert", "PNGf", "--overwrite", "--dest", out.path(), source("a.png")});
        QCOMPARE(r.exitCode, 0);
        QCOMPARE(QImage(out.filePath("a.PNGf")).size(), QSize(40, 20));
        // Nothing set aside is left behind.
        QCOMPARE(QDir(out.path()).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList{"a.PNGf"});
    }

    void badFilesFailAndTheOthersAreWritten() {
        QTemporaryDir out;
        QTemporaryDir mixed;
        QVERIFY(QFile::copy(source("a.png"), mixed.filePath("a.png")));
        QFile text(mixed.filePath("notes.txt"));
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("not a picture\n");
        text.close();
        // A file that claims to be a PNG but holds nothing of one.
        QFile fake(mixed.filePath("broken.png"));
        QVERIFY(fake.open(QIODevice::WriteOnly));
        fake.write("\x89PNG\r\n\x1a\n garbage");
        fake.close();

        const Run r = run({"--convert", "JPEG", "--dest", out.path(), mixed.filePath("notes.txt"),
                           mixed.filePath("missing.png"), mixed.filePath("broken.png"),
                           mixed.filePath("a.png"), source("b.jpg")});
        QCOMPARE(r.exitCode, 1);
        QVERIFY2(r.err.contains("notes.txt"), qPrintable(r.err));
        QVERIFY2(r.err.contains("missing.png"), qPrintable(r.err));
        QVERIFY2(r.err.contains("broken"), qPrintable(r.err));
        // One line of the program's own per failed file (a library may add its own complaint).
        QVERIFY2(
            r.err.count(QRegularExpression("^ormidon: ", QRegularExpression::MultilineOption)) == 3,
            qPrintable(r.err));
        QCOMPARE(QImage(out.filePath("a.JPEG")).size(), QSize(40, 20));
        QCOMPARE(QImage(out.filePath("b.JPEG")).size(), QSize(60, 30));
        QVERIFY(!QFile::exists(out.filePath("notes.JPEG")));
    }

    void badArgumentsAreUsageErrors() {
        QTemporaryDir out;
        const QList<QStringList> cases = {
            {"--convert", "NOPE", "--dest", out.path(), source("a.png")},
            {"--convert", "PNGf", "--dpi", "zero", "--dest", out.path(), source("a.png")},
            {"--convert", "PNGf", "--angle", "x", "--dest", out.path(), source("a.png")},
            {"--convert", "PNGf", "--overwrite", "--skip", "--dest", out.path(), source("a.png")},
            {"--convert", "PNGf", "--dest", out.path()},
            {"--convert"},
            {"--convert", "PNGf", "--no-such-option", source("a.png")},
            {"--dpi", "144", source("a.png")},
        };
        for (const QStringList& arguments : cases) {
            const Run r = run(arguments);
            QVERIFY2(r.exitCode == 2, qPrintable(arguments.join(' ') + " -> " +
                                                 QString::number(r.exitCode) + " " + r.err));
            QVERIFY2(!r.err.isEmpty(), qPrintable(arguments.join(' ')));
        }
        QVERIFY(QDir(out.path()).isEmpty());
    }

    void listsTheFormats() {
        const Run r = run({"--list-formats"});
        QCOMPARE(r.exitCode, 0);
        // Every one of the output codes, one a line: the nineteen and the modern four.
        QCOMPARE(r.out.count(
                     QRegularExpression("^  \"....\"  \\.", QRegularExpression::MultilineOption)),
                 23);
        QVERIFY(r.out.contains("\"WEBP\"  .WEBP\n"));
        QVERIFY(r.out.contains("\"JXL \"  .JXL \n"));
        QVERIFY(r.out.contains("Reads:"));
        QVERIFY(r.out.contains(" png"));
        QVERIFY(r.out.contains(" jpg"));
    }

    void helpAndVersion() {
        const Run help = run({"--help"});
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.out.contains("--convert"));
        QVERIFY(help.out.contains("--list-formats"));
        QVERIFY(help.out.contains("Exit codes"));
        const Run version = run({"--version"});
        QCOMPARE(version.exitCode, 0);
        QVERIFY(version.out.contains(ORMIDON_VERSION));
    }
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
