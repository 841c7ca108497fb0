// The batch's memory budget: the estimate of what a file's decoding holds, read from its
// header (progressive JPEGs hold their coefficients too), the budget's admission rule, and the
// lanes keeping the files in flight within it while still overlapping small files.

#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"
#include "export/BatchLanes.h"
#include "export/BatchMemory.h"

#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

// Recording `dpi` (72: one pixel a point, the picture is written as decoded).
QString writeJpeg(const QTemporaryDir& dir, const QString& name, QSize size, bool progressive,
                  int dpi = 72) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(30, 140, 220));
    image.setDotsPerMeterX(qRound(dpi / 0.0254));
    image.setDotsPerMeterY(qRound(dpi / 0.0254));
    const QString path = dir.filePath(name);
    QImageWriter writer(path, "jpeg");
    writer.setProgressiveScanWrite(progressive);
    return writer.write(image) ? path : QString();
}

} // namespace

class tst_BatchMemory : public QObject {
    Q_OBJECT

private slots:
    void estimateFromTheHeader() {
        QTemporaryDir dir;
        const QString baseline = writeJpeg(dir, "baseline.jpg", QSize(300, 200), false);
        const QString progressive = writeJpeg(dir, "progressive.jpg", QSize(300, 200), true);
        QVERIFY(!baseline.isEmpty() && !progressive.isEmpty());
        QCOMPARE(BatchMemory::estimate(baseline).bytes, int64_t(300 * 200 * 4));
        // Qt writes 4:2:0: the coefficients of 38 x 25 luma blocks and twice 19 x 13 chroma
        // blocks, 64 values of 2 bytes each, stay until the last scan.
        const int64_t coefficients = (38 * 25 + 2 * 19 * 13) * 64 * 2;
        QCOMPARE(BatchMemory::estimate(progressive).bytes, int64_t(300 * 200 * 4) + coefficients);
        // Those go when the file is read; the pixels stay through its drawing and writing.
        QCOMPARE(BatchMemory::estimate(progressive).whileReading, coefficients);
        QCOMPARE(BatchMemory::estimate(baseline).whileReading, int64_t(0));
        // Written as decoded, a colour JPEG comes as 24-bit pixels, a grey one as 8-bit.
        QCOMPARE(BatchMemory::estimate(baseline, 0, true).bytes, int64_t(300 * 200 * 3));
        QCOMPARE(BatchMemory::estimate(progressive, 0, true).bytes,
                 int64_t(300 * 200 * 3) + coefficients);
        // One that records another resolution is scaled, so drawn from 32-bit pixels.
        const QString dense = writeJpeg(dir, "dense.jpg", QSize(300, 200), false, 300);
        QVERIFY(!dense.isEmpty());
        QCOMPARE(BatchMemory::estimate(dense, 0, true).bytes, int64_t(300 * 200 * 4));
        QImage grey(64, 48, QImage::Format_Grayscale8);
        grey.fill(128);
        grey.setDotsPerMeterX(2835);
        grey.setDotsPerMeterY(2835);
        QVERIFY(grey.save(dir.filePath("grey.jpg")));
        QCOMPARE(BatchMemory::estimate(dir.filePath("grey.jpg"), 0, true).bytes, int64_t(64 * 48));
        // Written as GIF, the encoder's indices and dithering copy come on top.
        QCOMPARE(BatchMemory::estimate(baseline, fourCharCode("GIF ")).bytes,
                 int64_t(300 * 200 * 4) + gifWorkingSet(300 * 200));
        QCOMPARE(gifWorkingSet(300 * 200), int64_t(300 * 200 * 17));
        QCOMPARE(gifWorkingSet(5000 * 1000), int64_t(5000 * 1000)); // dithered row by row

        QImage png(100, 50, QImage::Format_ARGB32);
        png.fill(Qt::transparent);
        QVERIFY(png.save(dir.filePath("picture.png")));
        QCOMPARE(BatchMemory::estimate(dir.filePath("picture.png")).bytes, int64_t(100 * 50 * 4));

        // No size to tell: nothing held for it.
        QFile junk(dir.filePath("junk.jpg"));
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("\xff\xd8\xff\xe0\x00\x01 not a JPEG after all");
        junk.close();
        QCOMPARE(BatchMemory::estimate(junk.fileName()).bytes, int64_t(0));
        QCOMPARE(BatchMemory::estimate(dir.filePath("missing.jpg")).bytes, int64_t(0));
    }

    void admission() {
        BatchMemory memory(150);
        QVERIFY(memory.tryHold(100));
        QVERIFY(!memory.tryHold(100)); // both would pass the budget
        QVERIFY(memory.tryHold(50));
        memory.release(150);
        QVERIFY(memory.tryHold(400)); // alone, however large
        QVERIFY(!memory.tryHold(1));  // and nothing joins what is far over the budget
        memory.release(400);

        // A small file (an eighth of the budget at most) may join a large one while the two
        // stay within a quarter over the budget; a larger one may not.
        BatchMemory roomy(160);
        QVERIFY(roomy.tryHold(170));
        QVERIFY(!roomy.tryHold(21));
        QVERIFY(roomy.tryHold(20));
        QVERIFY(!roomy.tryHold(20)); // 210 would pass 200
        roomy.release(190);

        // hold() waits for a release.
        QVERIFY(memory.tryHold(100));
        std::atomic<bool> held{false};
        std::thread waiter([&] {
            memory.hold(100);
            held = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        QVERIFY(!held);
        memory.release(100);
        waiter.join();
        QVERIFY(held);
        memory.release(100);
    }

    void lanesStayWithinTheBudget() {
        // Four large files and four small ones; two of the large ones never fit together.
        const QStringList files = {"L1", "s1", "L2", "s2", "L3", "s3", "s4", "L4"};
        const auto bytes = [](const QString& path) -> int64_t {
            return path.startsWith('L') ? 100 : 10;
        };
        std::mutex mutex;
        int64_t inFlight = 0;
        int64_t most = 0;
        int smallOverlaps = 0;
        int inFlightFiles = 0;
        const auto begin = [&](const QString& path) {
            const std::lock_guard lock(mutex);
            inFlight += bytes(path);
            ++inFlightFiles;
            most = std::max(most, inFlight);
            if (inFlightFiles > 1 && !path.startsWith('L'))
                ++smallOverlaps;
        };
        const auto end = [&](const QString& path) {
            const std::lock_guard lock(mutex);
            inFlight -= bytes(path);
            --inFlightFiles;
        };
        std::vector<QString> done;
        {
            BatchLanes lanes(
                files,
                [&](const QString& path) {
                    begin(path);
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
                    SourceRead read;
                    read.decoded.ok = true;
                    return read;
                },
                2, bytes, 150);
            for (const QString& path : files) {
                BatchLane lane;
                const SourceRead read = lanes.take(path, lane);
                QVERIFY(read.decoded.ok);
                lanes.run(std::move(lane), path, [&, path] {
                    std::this_thread::sleep_for(std::chrono::milliseconds(30));
                    end(path);
                    const std::lock_guard lock(mutex);
                    done.push_back(path);
                });
            }
            lanes.drain();
        }
        QCOMPARE(int(done.size()), int(files.size()));
        QVERIFY2(most <= 150, qPrintable(QString::number(most)));
        QVERIFY(smallOverlaps > 0); // small files still share the lanes
    }
};

QTEST_GUILESS_MAIN(tst_BatchMemory)
#include "tst_BatchMemory.moc"
