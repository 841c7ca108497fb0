// The batch's lanes: a file whose read is slow holds up none of the files after it when its
// work is handed on with the read still running, results reach the right work, the batch
// thread's order of taking stays the folder's, a file's slot is held until its work ends, and
// what only a file's read holds goes back to the budget when the read ends.

#include "export/BatchLanes.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

// A gate the slow read waits at until the test opens it.
class Gate {
public:
    void open() {
        {
            const std::lock_guard lock(mutex);
            opened = true;
        }
        changed.notify_all();
    }
    bool waitOpen(std::chrono::milliseconds most) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, most, [this] { return opened; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool opened = false;
};

SourceRead readOf(const QString& path) {
    SourceRead read;
    read.decoded.ok = true;
    read.bounds = QRectF(0, 0, path.size(), 1); // tells which file the read was of
    return read;
}

} // namespace

class tst_BatchLanes : public QObject {
    Q_OBJECT

private slots:
    void aSlowReadHoldsUpNoLaterFile() {
        const QStringList files = {"slow", "a", "bb", "ccc"};
        Gate gate;
        std::mutex mutex;
        QStringList written;
        QString slowWork;
        {
            BatchLanes lanes(
                files,
                [&](const QString& path) {
                    if (path == "slow")
                        gate.waitOpen(std::chrono::seconds(20));
                    return readOf(path);
                },
                2, [](const QString&) { return int64_t(0); });
            BatchLane lane;
            std::shared_ptr<LaneRead> slow = lanes.takeRead("slow", lane);
            QVERIFY(!slow->isDone());
            lanes.runAfterRead(slow, std::move(lane), "slow.out", [&](SourceRead read) {
                const std::lock_guard lock(mutex);
                slowWork = QStringLiteral("read of %1 characters").arg(read.bounds.width());
                written.append("slow");
            });
            // The files after it are taken and written while it is still being read.
            for (const QString& path : files.mid(1)) {
                BatchLane next;
                const SourceRead read = lanes.take(path, next);
                QCOMPARE(read.bounds.width(), qreal(path.size()));
                lanes.run(std::move(next), path + ".out", [&, path] {
                    const std::lock_guard lock(mutex);
                    written.append(path);
                });
            }
            QTRY_COMPARE_WITH_TIMEOUT(
                [&] {
                    const std::lock_guard lock(mutex);
                    return written.size();
                }(),
                3, 10000);
            {
                const std::lock_guard lock(mutex);
                QVERIFY(!written.contains("slow"));
            }
            gate.open();
            lanes.drain();
        }
        QCOMPARE(written.size(), 4);
        QCOMPARE(written.last(), QStringLiteral("slow"));
        QCOMPARE(slowWork, QStringLiteral("read of 4 characters"));
    }

    void aReadDoneBeforeItsWorkIsHandedOnIsQueued() {
        const QStringList files = {"one", "three"};
        std::atomic<int> reads{0};
        std::atomic<double> seen{0};
        {
            BatchLanes lanes(files, [&](const QString& path) {
                ++reads;
                return readOf(path);
            });
            BatchLane lane;
            std::shared_ptr<LaneRead> read = lanes.takeRead("one", lane);
            QTRY_VERIFY(read->isDone());
            lanes.runAfterRead(read, std::move(lane), "one.out",
                               [&](SourceRead result) { seen = result.bounds.width(); });
            lanes.drain();
            QCOMPARE(seen.load(), 3.0);
            // A path out of the batch's order is read at once, with no slot.
            BatchLane none;
            std::shared_ptr<LaneRead> other = lanes.takeRead("elsewhere", none);
            QVERIFY(other->isDone());
            QCOMPARE(other->wait().bounds.width(), 9.0);
        }
        QCOMPARE(reads.load(), 3); // "three" was read ahead and given back at the drain
    }

    void aFilesSlotIsHeldUntilItsWorkEnds() {
        // One thread, so two files in flight: while a's work runs, only a and b are read.
        const QStringList files = {"a", "b", "c"};
        Gate gate;
        std::atomic<int> reads{0};
        BatchLanes lanes(
            files,
            [&](const QString& path) {
                ++reads;
                return readOf(path);
            },
            1);
        BatchLane first;
        std::shared_ptr<LaneRead> a = lanes.takeRead("a", first);
        QTRY_VERIFY(a->isDone());
        lanes.runAfterRead(a, std::move(first), "a.out",
                           [&](SourceRead) { gate.waitOpen(std::chrono::seconds(20)); });
        BatchLane second;
        QVERIFY(lanes.take("b", second).decoded.ok);
        QTest::qWait(100);
        QCOMPARE(reads.load(), 2); // c waits for a slot
        gate.open();
        BatchLane third;
        QVERIFY(lanes.take("c", third).decoded.ok); // a's slot, free once its work ended
        QCOMPARE(reads.load(), 3);
        second.release();
        third.release();
        lanes.drain();
    }

    void whatOnlyTheReadHoldsIsGivenBackWhenItEnds() {
        // Two large files that never fit the budget together while being read (a progressive
        // JPEG's coefficients), but do once the first one is read and only its pixels remain.
        const QStringList files = {"L1", "L2"};
        const auto share = [](const QString&) { return BatchMemory::Share(100, 60); };
        Gate gate;
        std::atomic<bool> firstWorkEnded{false};
        // 160: 100 + 100 while both are read do not fit, 40 + 100 do. Were the coefficients
        // kept to the end, L2 would be read only once L1's work gave up its gate after 3 s.
        BatchLanes lanes(files, readOf, 2, share, 160);
        BatchLane first;
        std::shared_ptr<LaneRead> read = lanes.takeRead("L1", first);
        lanes.runAfterRead(read, std::move(first), "L1.out", [&](SourceRead) {
            gate.waitOpen(std::chrono::seconds(3));
            firstWorkEnded = true;
        });
        BatchLane second;
        QVERIFY(lanes.take("L2", second).decoded.ok);
        QVERIFY(!firstWorkEnded); // read beside the first one's drawing and writing
        gate.open();
        second.release();
        lanes.drain();
        QVERIFY(firstWorkEnded);
    }
};

QTEST_GUILESS_MAIN(tst_BatchLanes)
#include "tst_BatchLanes.moc"
