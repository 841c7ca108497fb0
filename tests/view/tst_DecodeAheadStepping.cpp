// Stepping with the arrow keys in the real main window while the neighbours are decoded ahead:
// the next picture comes from the cache, a file rewritten on disk is shown as it is now, an
// undecodable file is refused as before, and everything a step shows (title, size field, angle,
// grey tones, the drawing itself) is the same as with decode-ahead switched off.

#include "app/Controller.h"
#include "codec/ImageDecoder.h"
#include "view/DecodeAhead.h"
#include "view/wmfImageView.h"

#include <QDateTime>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Source = DecodeAhead::Source;

QString writePicture(const QString& folder, const QString& name, QColor colour,
                     QSize size = QSize(400, 300)) {
    QImage image(size, QImage::Format_RGB32);
    image.setDotsPerMeterX(2835); // 72 dpi: the size in points is the size in pixels
    image.setDotsPerMeterY(2835);
    image.fill(colour);
    // Stripes, so that a scaled drawing shows whether it was made from the same pixels.
    for (int y = 0; y < size.height(); y += 7)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, 128));
    const QString path = folder + u'/' + name;
    return image.save(path, "JPEG", 90) ? path : QString();
}

// What a step shows, to compare with decode-ahead on and off.
struct Shown {
    QString title, sizeText, viewPath;
    int angle = 0;
    bool convertEnabled = false;
    QImage picture, drawing;
    bool operator==(const Shown&) const = default;
};

} // namespace

class tst_DecodeAheadStepping : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;
    std::unique_ptr<Controller> c;

    void press(Qt::Key key) { QTest::keyClick(c->itsWmfView, key); }

    Shown shown() const {
        Shown s;
        s.title = c->window()->windowTitle();
        s.sizeText = c->itsSizeField->text();
        s.viewPath = c->itsWmfView->wmfPath();
        s.angle = c->getRotation();
        s.convertEnabled = c->itsConvert->isEnabled();
        s.picture = c->getCGImage();
        s.drawing = c->itsWmfView->grab().toImage();
        return s;
    }

    bool settled() const {
        QCoreApplication::processEvents(); // the look around is queued behind the repaint
        DecodeAhead* ahead = c->decodeAheadCache();
        return ahead && ahead->waitUntilIdle(20000);
    }

    // Three steps to the right from `first`, the angle at 30 and grey tones on from the second.
    void walk(const QString& first, bool ahead, QList<Shown>& steps) {
        c->decodeAheadEnabled = ahead;
        c->m_Monochrome = false;
        c->setSourceFileName(first, true);
        c->m_rotate = 30;
        for (int i = 0; i < 3; ++i) {
            QTest::qWait(50); // the window settles (the image list) alike in both walks
            if (ahead)
                QVERIFY2(settled(), "decode-ahead did not settle");
            if (i == 1)
                c->m_Monochrome = true;
            press(Qt::Key_Right);
            steps.append(shown());
            // The two pictures are served decoded ahead; the undecodable file is read again.
            if (ahead)
                QCOMPARE(c->decodeAheadCache()->lastTakenSource(),
                         i < 2 ? Source::Cache : Source::Decoded);
        }
    }

    void openWindow() {
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        c->window()->resize(800, 600);
        c->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c->window()));
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && files.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        QDir(files.path()).removeRecursively();
        QDir().mkpath(files.path());
        openWindow();
    }

    void cleanup() { c.reset(); }

    void theNextPictureComesFromTheCache() {
        const QString a = writePicture(files.path(), "a.jpg", Qt::red);
        const QString b = writePicture(files.path(), "b.jpg", Qt::green);
        writePicture(files.path(), "c.jpg", Qt::blue);
        c->setSourceFileName(a, true);
        QVERIFY(settled());
        QVERIFY(c->decodeAheadCache()->heldPaths().contains(b));

        press(Qt::Key_Right);
        QCOMPARE(c->decodeAheadCache()->lastTakenSource(), Source::Cache);
        QCOMPARE(c->itsWmfView->wmfPath(), b);
        QCOMPARE(c->itsSrcFileName->text(), b);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: b.jpg"));
        QCOMPARE(c->itsSizeField->text(), QStringLiteral("400 * 300"));
        QCOMPARE(c->getCGImage(), ImageDecoder::decode(b).image);

        // And back: the picture stepped from is still held.
        QVERIFY(settled());
        press(Qt::Key_Left);
        QCOMPARE(c->decodeAheadCache()->lastTakenSource(), Source::Cache);
        QCOMPARE(c->itsWmfView->wmfPath(), a);
    }

    void aRewrittenNeighbourIsShownAsItIsNow() {
        const QString a = writePicture(files.path(), "a.jpg", Qt::red);
        const QString b = writePicture(files.path(), "b.jpg", Qt::green);
        c->setSourceFileName(a, true);
        QVERIFY(settled());
        QVERIFY(c->decodeAheadCache()->heldPaths().contains(b));
        QVERIFY(!writePicture(files.path(), "b.jpg", Qt::yellow, QSize(300, 200)).isEmpty());
        QFile file(b);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(5),
                                 QFileDevice::FileModificationTime));
        file.close();

        press(Qt::Key_Right);
        QCOMPARE(c->decodeAheadCache()->lastTakenSource(), Source::Decoded);
        QCOMPARE(c->itsSizeField->text(), QStringLiteral("300 * 200"));
        QCOMPARE(c->getCGImage(), ImageDecoder::decode(b).image);
    }

    void aStepShowsTheSameWithAndWithoutDecodeAhead() {
        const QString a = writePicture(files.path(), "a.jpg", Qt::red);
        writePicture(files.path(), "b.jpg", Qt::green, QSize(2400, 1600)); // drawn from a copy
        writePicture(files.path(), "c.jpg", Qt::blue, QSize(1200, 2000));
        QFile junk(files.path() + "/d.jpg");
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("\xff\xd8\xff\xe0 no picture follows");
        junk.close();

        // In one window, first without, then with decode-ahead; the view keeps one size, which
        // the window's layout would otherwise change by a pixel with the texts beside it.
        c->itsWmfView->setFixedSize(480, 400);
        QList<Shown> with, without;
        walk(a, false, without);
        QVERIFY(!QTest::currentTestFailed());
        QVERIFY(!c->decodeAheadCache()); // switched off: nothing is decoded in the background
        walk(a, true, with);
        QVERIFY(!QTest::currentTestFailed());
        QVERIFY(c->decodeAheadCache());
        QVERIFY(c->decodeAheadCache()->backgroundDecodes() >= 2);

        QCOMPARE(with.size(), 3);
        QCOMPARE(without.size(), 3);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(with[i].title, without[i].title);
            QCOMPARE(with[i].sizeText, without[i].sizeText);
            QCOMPARE(with[i].viewPath, without[i].viewPath);
            QCOMPARE(with[i].angle, without[i].angle);
            QCOMPARE(with[i].convertEnabled, without[i].convertEnabled);
            QCOMPARE(with[i].picture, without[i].picture);
            QCOMPARE(with[i].drawing, without[i].drawing);
        }
        QCOMPARE(with[0].sizeText, QStringLiteral("2400 * 1600"));
        QCOMPARE(with[1].sizeText, QStringLiteral("1200 * 2000"));
        // The undecodable file: named in the title, nothing shown, no size.
        QCOMPARE(with[2].title, QStringLiteral("Ormidon: d.jpg"));
        QVERIFY(with[2].picture.isNull());
        QVERIFY(with[2].sizeText.isEmpty());
        QVERIFY(!with[2].convertEnabled);
    }
};

QTEST_MAIN(tst_DecodeAheadStepping)
#include "tst_DecodeAheadStepping.moc"
