// "Convert All" on the real main window: the worker walks the source's folder, the controls
// follow it on the GUI thread, Stop ends the batch after the current file, and the overwrite
// question is answered from the worker without a deadlock.

#include "FlowFixture.h"
#include "ModalAnswer.h"

#include "app/GuiThread.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QProcess>
#include <QThread>

#include <atomic>

// Runs `onEachFile` on the batch thread at the start of every file, as the batch announces it:
// the tests slow a batch down so that a Stop lands in the middle of it.
template <typename F> void slowBatch(FlowFixture& f, F onEachFile) {
    QObject::connect(f.controller.get(), &Controller::batchFileStarted, f.controller.get(),
                     onEachFile, Qt::DirectConnection);
}

class tst_BatchConversion : public QObject {
    Q_OBJECT

    // Every value the progress bar takes, with the maximum it had at that moment.
    struct ProgressLog {
        QList<QPair<int, int>> values;
        void watch(QProgressBar* bar) {
            QObject::connect(bar, &QProgressBar::valueChanged, bar, [this, bar](int v) {
                values.append({v, bar->maximum()});
            });
        }
    };

    static bool idle(const FlowFixture& f) {
        return f.controller->itsConvertAll->text() == "Convert All" &&
               !f.controller->isBatchRunning();
    }

private slots:

    void convertsEveryImageOfTheFolder() {
        FlowFixture f;
        f.makeImage("a.jpg");
        const QString b = f.makeImage("b.jpg", 80, 60);
        f.makeImage("c.jpg", 40, 30);
        f.writeBytes("readme.txt", "not a picture");
        f.open(b); // the batch starts from the first image, not the current one
        QVERIFY(f.selectFormat("PNGf"));
        ProgressLog log;
        log.watch(f.controller->itsConvertIndicator);

        QVERIFY(f.controller->itsConvertAll->isEnabled());
        f.controller->itsConvertAll->click();
        QCOMPARE(f.controller->itsConvertAll->text(), QString("Stop"));
        QCOMPARE(f.controller->itsMenuItemConvAll->text(), QString("Stop"));
        QTRY_VERIFY(idle(f));
        QCOMPARE(f.controller->itsMenuItemConvAll->text(), QString("Convert All"));
        QVERIFY(f.controller->itsConvertAll->isEnabled());
        QVERIFY(!f.controller->itsConvertIndicator->isVisible());

        QCOMPARE(FlowFixture::readBackSize(f.outPath("a.PNGf")), QSize(64, 48));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("b.PNGf")), QSize(80, 60));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("c.PNGf")), QSize(40, 30));
        QVERIFY(!QFile::exists(f.outPath("readme.PNGf")));
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files).size(), 3);

        QList<QPair<int, int>> counted;
        for (const auto& v : log.values)
            if (v.first > 0)
                counted << v;
        QCOMPARE(counted, (QList<QPair<int, int>>{{1, 3}, {2, 3}, {3, 3}}));
        QCOMPARE(log.values.last().first, 0);
    }

    void stopFinishesTheCurrentFileOnly() {
        FlowFixture f;
        QStringList names{"1.jpg", "2.jpg", "3.jpg", "4.jpg", "5.jpg"};
        for (const QString& n : names)
            f.makeImage(n);
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        std::atomic<int> started{0};
        slowBatch(f, [&started] {
            ++started;
            QThread::msleep(400);
        });

        f.controller->itsConvertAll->click();
        QTRY_COMPARE(f.controller->itsConvertIndicator->value(), 2);
        f.controller->itsConvertAll->click(); // "Stop"
        QVERIFY(!f.controller->itsConvertAll->isEnabled());
        QCOMPARE(f.controller->itsConvertAll->text(), QString("Stop"));
        QTRY_VERIFY(idle(f));
        QVERIFY(f.controller->itsConvertAll->isEnabled());
        QCOMPARE(started.load(), 2);
        QCOMPARE(FlowFixture::readBackSize(f.outPath("1.JPEG")), QSize(64, 48));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("2.JPEG")), QSize(64, 48));
        QVERIFY(!QFile::exists(f.outPath("3.JPEG")));
        QVERIFY(!QFile::exists(f.outPath("4.JPEG")));
    }

    void menuItemStartsAndStops() {
        FlowFixture f;
        for (const QString& n : {"1.jpg", "2.jpg", "3.jpg"})
            f.makeImage(n);
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        slowBatch(f, [] { QThread::msleep(300); });
        f.controller->itsMenuItemConvAll->trigger();
        QCOMPARE(f.controller->itsMenuItemConvAll->text(), QString("Stop"));
        QTRY_COMPARE(f.controller->itsConvertIndicator->value(), 1);
        f.controller->itsMenuItemConvAll->trigger();
        QTRY_VERIFY(idle(f));
        QVERIFY(QFile::exists(f.outPath("1.JPEG")));
        QVERIFY(!QFile::exists(f.outPath("2.JPEG")));
    }

    void overwriteQuestionsFromTheWorker() {
        FlowFixture f;
        for (const QString& n : {"a.jpg", "b.jpg", "c.jpg"})
            f.makeImage(n);
        f.open(f.sources.path() + "/c.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        for (const QString& n : {"a.JPEG", "b.JPEG"}) {
            QFile old(f.outPath(n));
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write("old picture");
        }
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes", "Skip"}, seen);
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        QCOMPARE(seen->count, 2);
        QCOMPARE(seen->text, QString("The file b.JPEG already exists. Do you want to replace it?"));
        QCOMPARE(seen->buttons, QStringList({"Yes", "Skip"}));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("a.JPEG")), QSize(64, 48));
        QCOMPARE(FlowFixture::readAll(f.outPath("b.JPEG")), QByteArray("old picture"));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("c.JPEG")), QSize(64, 48));
    }

    void formatChangeAppliesFromTheNextFile() {
        FlowFixture f;
        for (const QString& n : {"a.jpg", "b.jpg", "c.jpg"})
            f.makeImage(n);
        f.open(f.sources.path() + "/a.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        // The worker waits here before reading the format of file 2.
        std::atomic<bool> release{false};
        std::atomic<int> started{0};
        slowBatch(f, [&] {
            if (++started == 2)
                while (!release)
                    QThread::msleep(5);
        });
        f.controller->itsConvertAll->click();
        QTRY_COMPARE(started.load(), 2);
        // File 1 is encoded on a lane of its own and may still be on its way to the disk.
        QTRY_VERIFY(QFileInfo(f.outPath("a.JPEG")).size() > 0);
        QVERIFY(f.selectFormat("PNGf"));
        release = true;
        QTRY_VERIFY(idle(f));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("b.PNGf")), QSize(64, 48));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("c.PNGf")), QSize(64, 48));
        QVERIFY(!QFile::exists(f.outPath("a.PNGf")));
        QVERIFY(!QFile::exists(f.outPath("b.JPEG")));
    }

    void singleImageFolder() {
        FlowFixture f;
        f.open(f.makeImage("only.jpg"));
        f.writeBytes("notes.txt", "words");
        QVERIFY(f.selectFormat("TIFF"));
        ProgressLog log;
        log.watch(f.controller->itsConvertIndicator);
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files), QStringList{"only.TIFF"});
        QCOMPARE(FlowFixture::readBackSize(f.outPath("only.TIFF")), QSize(64, 48));
        QVERIFY(log.values.contains(QPair<int, int>(1, 1)));
    }

    void unreadableFilesDoNotStopTheBatch() {
        FlowFixture f;
        f.makeImage("a.jpg");
        f.writeBytes("b.jpg", "no picture here");
        f.makeImage("c.jpg");
        f.open(f.sources.path() + "/a.jpg");
        QVERIFY(f.selectFormat("PNGf"));
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        QCOMPARE(FlowFixture::readBackSize(f.outPath("a.PNGf")), QSize(64, 48));
        QCOMPARE(QFileInfo(f.outPath("b.PNGf")).size(), 0);
        QCOMPARE(FlowFixture::readBackSize(f.outPath("c.PNGf")), QSize(64, 48));
    }

    void batchToAnOlderFormat() {
        // Convert All offers the older formats through the same table: a movie a file.
        FlowFixture f;
        f.makeImage("a.jpg");
        f.makeImage("b.jpg", 80, 60);
        f.open(f.sources.path() + "/a.jpg");
        QVERIFY(f.selectFormat("MooV"));
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        QCOMPARE(QDir(f.out.path()).entryList(QDir::Files), QStringList({"a.MooV", "b.MooV"}));
        for (const auto& [name, size] : {std::pair{"a.MooV", "width=64\nheight=48"},
                                         std::pair{"b.MooV", "width=80\nheight=60"}}) {
            QProcess probe;
            probe.start("ffprobe",
                        {"-v", "error", "-show_entries", "stream=codec_name,width,height", "-of",
                         "default=nw=1", f.outPath(name)});
            QVERIFY(probe.waitForFinished(60000));
            const QString info = QString::fromUtf8(probe.readAllStandardOutput());
            QVERIFY2(info.contains("codec_name=png") && info.contains(size), qPrintable(info));
        }
    }

    void epsBatchWritesOneFilePerSource() {
        FlowFixture f;
        for (const QString& n : {"a.jpg", "b.jpg", "c.jpg"})
            f.makeImage(n);
        f.open(f.sources.path() + "/b.jpg");
        QVERIFY(f.selectFormat("EPS "));
        f.controller->itsConvertAll->click();
        QTRY_VERIFY(idle(f));
        for (const QString& n : {"a.eps", "b.eps", "c.eps"})
            QVERIFY2(FlowFixture::readAll(f.outPath(n)).startsWith("%!PS-Adobe"), qPrintable(n));
        QCOMPARE(f.controller->itsWmfView->wmfPath(), f.sources.path() + "/b.jpg");
    }

    void waitForBatchStopsARunningBatch() {
        FlowFixture f;
        for (const QString& n : {"1.jpg", "2.jpg", "3.jpg", "4.jpg"})
            f.makeImage(n);
        f.open(f.sources.path() + "/1.jpg");
        QVERIFY(f.selectFormat("JPEG"));
        slowBatch(f, [] { QThread::msleep(200); });
        f.controller->itsConvertAll->click();
        QTRY_COMPARE(f.controller->itsConvertIndicator->value(), 1);
        QVERIFY(f.controller->isBatchRunning());
        f.controller->waitForBatch();
        QVERIFY(!f.controller->isBatchRunning());
        QVERIFY(QFile::exists(f.outPath("1.JPEG")));
        QVERIFY(!QFile::exists(f.outPath("2.JPEG")));
        QCOMPARE(f.controller->itsConvertAll->text(), QString("Convert All"));
    }

    void destroyingTheControllerDuringABatch() {
        auto f = std::make_unique<FlowFixture>();
        for (const QString& n : {"1.jpg", "2.jpg", "3.jpg"})
            f->makeImage(n);
        f->open(f->sources.path() + "/1.jpg");
        QVERIFY(f->selectFormat("JPEG"));
        slowBatch(*f, [] { QThread::msleep(200); });
        f->controller->itsConvertAll->click();
        QTRY_COMPARE(f->controller->itsConvertIndicator->value(), 1);
        const QString out = f->out.path();
        f->controller.reset(); // waits for the file in hand, converts no further one
        QVERIFY(QFile::exists(out + "/1.JPEG"));
        QVERIFY(!QFile::exists(out + "/2.JPEG"));
    }
};

QTEST_MAIN(tst_BatchConversion)
#include "tst_BatchConversion.moc"
