// "Convert image" and the per-file routine behind both conversions, on the real main window:
// real pictures converted, written and read back.

#include "FlowFixture.h"
#include "ModalAnswer.h"

#include "export/FormatTable.h"
#include "view/wmfImageView.h"

#include <QRegularExpression>

class tst_ConversionFlow : public QObject {
    Q_OBJECT

private slots:
    void convertWritesFormat_data() {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("dpi");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("readFormat");
        QTest::addColumn<QSize>("source");
        QTest::addColumn<QSize>("size");
        QTest::newRow("JPEG 72") << "JPEG"
                                 << "72"
                                 << "cat.JPEG" << QByteArray("jpeg") << QSize(64, 48)
                                 << QSize(64, 48);
        QTest::newRow("PNG 144") << "PNGf"
                                 << "144"
                                 << "cat.PNGf" << QByteArray("png") << QSize(64, 48)
                                 << QSize(128, 96);
        // 480 x 150/72 in single precision is 999.99994, which truncates to 999.
        QTest::newRow("TIFF 150") << "TIFF"
                                  << "150"
                                  << "cat.TIFF" << QByteArray("tiff") << QSize(640, 480)
                                  << QSize(1333, 999);
        QTest::newRow("BMP 36") << "BMPf"
                                << "36"
                                << "cat.BMPf" << QByteArray("bmp") << QSize(64, 48)
                                << QSize(32, 24);
    }
    void convertWritesFormat() {
        QFETCH(QString, code);
        QFETCH(QString, dpi);
        QFETCH(QString, name);
        QFETCH(QByteArray, readFormat);
        QFETCH(QSize, source);
        QFETCH(QSize, size);
        FlowFixture f;
        f.open(f.makeImage("cat.jpg", source.width(), source.height()));
        QVERIFY(f.selectFormat(code));
        f.setDpi(dpi);
        f.controller->convert(nullptr);
        QImageReader reader(f.outPath(name), readFormat);
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
        QCOMPARE(image.size(), size);
        // The yellow quarter sits top left.
        QVERIFY(qAbs(qRed(image.pixel(2, 2)) - 255) < 24);
        QVERIFY(qBlue(image.pixel(image.width() - 3, image.height() - 3)) > 200);
    }

    void convertPdf() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        QVERIFY(f.selectFormat("PDF "));
        f.controller->convert(nullptr);
        QVERIFY(FlowFixture::readAll(f.outPath("cat.pdf")).startsWith("%PDF"));
    }

    void convertEpsHoldsPictureOnScreen() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        QVERIFY(f.selectFormat("EPS "));
        const QString shown = f.controller->itsWmfView->wmfPath();
        f.controller->convert(nullptr);
        const QByteArray eps = FlowFixture::readAll(f.outPath("cat.eps"));
        QVERIFY(eps.startsWith("%!PS-Adobe"));
        QVERIFY(eps.contains("EPSF"));
        QCOMPARE(f.controller->itsWmfView->wmfPath(), shown);
    }

    // The EPS holds the picture at the size the view shows it: a 640 x 480 picture in a 400 x 300
    // view fills it at angle 0; turned by 90 it is fitted to the height, 225 x 300.
    void epsSizeFollowsTheView_data() {
        QTest::addColumn<int>("angle");
        QTest::addColumn<QSize>("points");
        QTest::newRow("0") << 0 << QSize(400, 300);
        QTest::newRow("90") << 90 << QSize(225, 300);
    }
    void epsSizeFollowsTheView() {
        QFETCH(int, angle);
        QFETCH(QSize, points);
        FlowFixture f;
        f.open(f.makeImage("cat.jpg", 640, 480));
        f.controller->itsWmfView->setFixedSize(400, 300);
        QTRY_COMPARE(f.controller->itsWmfView->size(), QSize(400, 300));
        f.controller->m_rotate = angle;
        QVERIFY(f.selectFormat("EPS "));
        f.controller->convert(nullptr);
        const QByteArray eps = FlowFixture::readAll(f.outPath("cat.eps"));
        const QRegularExpression box("%%BoundingBox: *(-?\\d+) +(-?\\d+) +(-?\\d+) +(-?\\d+)");
        const QRegularExpressionMatch m = box.match(QString::fromLatin1(eps));
        QVERIFY2(m.hasMatch(), eps.left(200).constData());
        const int w = m.captured(3).toInt() - m.captured(1).toInt();
        const int h = m.captured(4).toInt() - m.captured(2).toInt();
        QVERIFY2(qAbs(w - points.width()) <= 1 && qAbs(h - points.height()) <= 1,
                 qPrintable(QString("%1 x %2").arg(w).arg(h)));
    }

    void convertAsksBeforeReplacing_data() {
        QTest::addColumn<QString>("answer");
        QTest::newRow("Yes") << "Yes";
        QTest::newRow("Skip") << "Skip";
    }
    void convertAsksBeforeReplacing() {
        QFETCH(QString, answer);
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        QVERIFY(f.selectFormat("JPEG"));
        QFile old(f.outPath("cat.JPEG"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old picture");
        old.close();
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({answer}, seen);
        f.controller->convert(nullptr);
        QCOMPARE(seen->count, 1);
        QCOMPARE(seen->text,
                 QString("The file cat.JPEG already exists. Do you want to replace it?"));
        QCOMPARE(seen->buttons, QStringList({"Yes", "Skip"}));
        QCOMPARE(seen->parent, f.controller->itsMainWindow.data());
        if (answer == "Yes")
            QCOMPARE(FlowFixture::readBackSize(f.outPath("cat.JPEG")), QSize(64, 48));
        else
            QCOMPARE(FlowFixture::readAll(f.outPath("cat.JPEG")), QByteArray("old picture"));
    }

    void unknownFormatConvertsNothing() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        f.controller->itsFormatCombo->setCurrentIndex(-1);
        f.controller->convert(nullptr);
        QVERIFY(QDir(f.out.path()).isEmpty());
        f.controller->saveImage(f.sources.path() + "/cat.jpg", -1);
        QVERIFY(QDir(f.out.path()).isEmpty());
    }

    void notAnImageLeavesEmptyFile() {
        FlowFixture f;
        const QString text = f.writeBytes("notes.txt", "just words");
        f.controller->saveImage(text, formatIndexForCode("JPEG"));
        QVERIFY(QFileInfo(f.outPath("notes.JPEG")).isFile());
        QCOMPARE(QFileInfo(f.outPath("notes.JPEG")).size(), 0);
        QCOMPARE(FlowFixture::readAll(text), QByteArray("just words"));
    }

    void unreadableImageLeavesEmptyFile_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("garbage") << QByteArray("this is no picture at all");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("truncated png") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    }
    void unreadableImageLeavesEmptyFile() {
        QFETCH(QByteArray, bytes);
        FlowFixture f;
        const QString bad = f.writeBytes("bad.png", bytes);
        auto seen = std::make_shared<SeenQuestion>();
        QPointer<QTimer> answering = answerQuestions({"OK"}, seen);
        f.controller->saveImage(bad, formatIndexForCode("PNGf"));
        delete answering;
        QCOMPARE(QFileInfo(f.outPath("bad.PNGf")).size(), 0);
        QCOMPARE(FlowFixture::readAll(bad), bytes);
    }

    void extremeResolutions_data() {
        QTest::addColumn<QString>("dpi");
        QTest::addColumn<bool>("empty");
        QTest::newRow("zero") << "0" << true;
        QTest::newRow("huge") << "100000" << true;
        QTest::newRow("words") << "many" << true;
        // Turned inside out: a blank picture of the size, nothing worse.
        QTest::newRow("negative") << "-72" << false;
    }
    void extremeResolutions() {
        QFETCH(QString, dpi);
        QFETCH(bool, empty);
        FlowFixture f;
        f.open(f.makeImage("cat.jpg", 640, 480));
        QVERIFY(f.selectFormat("PNGf"));
        f.setDpi(dpi);
        // A refused giant bitmap may bring up the renderer's alert; answer it.
        auto seen = std::make_shared<SeenQuestion>();
        QPointer<QTimer> answering = answerQuestions({"OK"}, seen);
        f.controller->convert(nullptr);
        delete answering;
        QVERIFY(QFileInfo(f.outPath("cat.PNGf")).isFile());
        if (empty)
            QCOMPARE(QFileInfo(f.outPath("cat.PNGf")).size(), 0);
        QVERIFY(seen->count <= 1);
    }

    void rotationTurnsTheOutput() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        f.controller->m_rotate = 90;
        QVERIFY(f.selectFormat("PNGf"));
        f.controller->convert(nullptr);
        QCOMPARE(FlowFixture::readBackSize(f.outPath("cat.PNGf")), QSize(48, 64));
    }

    void convertSettlesMissingDestination() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        QVERIFY(f.selectFormat("JPEG"));
        f.controller->itsDstFileName->setText(f.out.path() + "/a/b/c");
        f.controller->convert(nullptr);
        QCOMPARE(FlowFixture::readBackSize(f.outPath("a/b/c/cat.JPEG")), QSize(64, 48));
    }

    void destinationUnderAFileLosesNothing() {
        FlowFixture f;
        f.open(f.makeImage("cat.jpg"));
        QVERIFY(f.selectFormat("JPEG"));
        const QString file = f.outPath("plain.txt");
        QFile plain(file);
        QVERIFY(plain.open(QIODevice::WriteOnly));
        plain.write("mine");
        plain.close();
        f.controller->itsDstFileName->setText(file + "/sub");
        f.controller->convert(nullptr);
        QCOMPARE(FlowFixture::readAll(file), QByteArray("mine"));
        QCOMPARE(FlowFixture::readBackSize(f.sources.path() + "/cat.jpg"), QSize(64, 48));
    }
};

QTEST_MAIN(tst_ConversionFlow)
#include "tst_ConversionFlow.moc"
