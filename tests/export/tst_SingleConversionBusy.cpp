// "Convert image" on a large picture in the real main window: the window goes on painting and
// its timers run while the picture is decoded, drawn and encoded, under the wait cursor; the
// overwrite question still comes first and with the normal cursor, and the output is whole.

#include "FlowFixture.h"

#include "view/wmfImageView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QStatusBar>

namespace {

// Counts the paint events of a widget.
class PaintCounter : public QObject {
public:
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

// What a timer of interval 0 (one tick per pass of the event loop) saw during a conversion.
struct LoopWatch {
    int ticks = 0;
    int waitCursorTicks = 0;
    int otherCursorTicks = 0;
    qint64 longestGapMs = 0;
};

// A picture large enough that its PNG encode takes a while, with a marked corner.
QString makeLargePicture(FlowFixture& f, const QString& name, int w, int h) {
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb(x * 7 ^ y, (x + y * 3) & 0xff, (x * y) & 0xff); // poorly compressible
    }
    QPainter(&image).fillRect(0, 0, 64, 64, Qt::yellow);
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    const QString path = f.sources.path() + "/" + name;
    return image.save(path, "PNG", 100) ? path : QString();
}

} // namespace

class tst_SingleConversionBusy : public QObject {
    Q_OBJECT

private slots:
    void theWindowPaintsUnderTheWaitCursorWhileConverting() {
        FlowFixture f;
        QVERIFY(QTest::qWaitForWindowExposed(f.controller->itsMainWindow));
        const QString source = makeLargePicture(f, "big.png", 3000, 2000);
        QVERIFY(!source.isEmpty());
        f.open(source);
        QVERIFY(f.selectFormat("PNGf"));

        PaintCounter counter;
        f.controller->itsWmfView->installEventFilter(&counter);
        LoopWatch watch;
        QElapsedTimer clock;
        QTimer timer;
        timer.setInterval(0);
        connect(&timer, &QTimer::timeout, [&] {
            ++watch.ticks;
            watch.longestGapMs = std::max(watch.longestGapMs, clock.restart());
            const QCursor* cursor = QGuiApplication::overrideCursor();
            if (cursor && cursor->shape() == Qt::WaitCursor)
                ++watch.waitCursorTicks;
            else
                ++watch.otherCursorTicks;
            f.controller->itsWmfView->update(); // something to repaint
        });

        QVERIFY(!QGuiApplication::overrideCursor());
        counter.paints = 0;
        clock.start();
        timer.start();
        f.controller->convert(nullptr);
        timer.stop();

        // The loop ran during the conversion, always under the wait cursor, and painted.
        QVERIFY(watch.ticks > 0);
        QCOMPARE(watch.otherCursorTicks, 0);
        QCOMPARE(watch.waitCursorTicks, watch.ticks);
        QVERIFY(counter.paints > 0);
        QVERIFY(!QGuiApplication::overrideCursor()); // and it is gone afterwards
        qInfo("%d passes of the event loop, longest gap %lld ms", watch.ticks, watch.longestGapMs);

        QImageReader reader(f.outPath("big.PNGf"), "png");
        const QImage written = reader.read();
        QVERIFY2(!written.isNull(), qPrintable(reader.errorString()));
        QCOMPARE(written.size(), QSize(3000, 2000));
        QCOMPARE(written.pixelColor(10, 10), QColor(Qt::yellow));
        QCOMPARE(written.pixelColor(2999, 1999), QImage(source).pixelColor(2999, 1999));
    }

    // The overwrite question comes before the work, with the normal cursor, and a Yes replaces
    // the old file only once the new one is complete.
    void theQuestionComesWithTheNormalCursor() {
        FlowFixture f;
        const QString source = makeLargePicture(f, "big.png", 1200, 900);
        f.open(source);
        QVERIFY(f.selectFormat("PNGf"));
        QFile old(f.outPath("big.PNGf"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old picture");
        old.close();

        int questions = 0;
        bool cursorDuringQuestion = true;
        QTimer answer;
        answer.setInterval(10);
        connect(&answer, &QTimer::timeout, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible() || box->property("answered").toBool())
                return;
            box->setProperty("answered", true);
            ++questions;
            cursorDuringQuestion = QGuiApplication::overrideCursor() != nullptr;
            for (QAbstractButton* b : box->buttons())
                if (b->text() == "Yes")
                    b->click();
        });
        answer.start();
        f.controller->convert(nullptr);
        answer.stop();

        QCOMPARE(questions, 1);
        QVERIFY(!cursorDuringQuestion);
        QVERIFY(!QGuiApplication::overrideCursor());
        QCOMPARE(FlowFixture::readBackSize(f.outPath("big.PNGf")), QSize(1200, 900));
        // Nothing of the old file is left beside the new one.
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList({"big.PNGf"}));
    }

    // An output that cannot be written is named on the status line by the time the command
    // returns, as when the work ran on the GUI thread.
    void aFailureIsReportedWhenTheCommandReturns() {
        FlowFixture f;
        const QString source = f.makeImage("cat.jpg");
        f.open(source);
        QVERIFY(f.selectFormat("PNGf"));
        f.writeBytes("cat.jpg", "no longer a picture"); // spoilt after it was opened
        f.controller->convert(nullptr);
        QCOMPARE(f.controller->itsMainWindow->statusBar()->currentMessage(),
                 QStringLiteral("cat.PNGf was not written: cat.jpg could not be read"));
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(tst_SingleConversionBusy)
#include "tst_SingleConversionBusy.moc"
