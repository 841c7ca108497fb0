#pragma once

#include <QRectF>
#include <QStringList>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <thread>
#include <vector>

#include "codec/ImageDecoder.h"
#include "export/BatchMemory.h"

// What a batch reads of one source before its output path is settled: the pixels and the
// bounds in points (empty when the pixels cannot be read).
struct SourceRead {
    DecodedImage decoded;
    QRectF bounds;
};

// A file's read on a lane, shared by the batch thread and the lane that reads it. Its result is
// taken once: by wait(), or by the work BatchLanes::runAfterRead hands it to.
class LaneRead {
public:
    bool isDone() const;
    SourceRead wait(); // the read's result, once it is there

private:
    friend class BatchLanes;
    mutable std::mutex mutex;
    std::condition_variable finished;
    std::optional<SourceRead> result;
    std::function<void(SourceRead)> then; // set while the read runs: the lane goes on with it
};

// A file's slot among the batch's files in flight, held from the moment its source is read
// until its output is written. Moving it hands the slot on; letting it go frees the slot for the
// next file.
using SlotCount = std::counting_semaphore<>;

class BatchLane {
public:
    BatchLane() = default;
    BatchLane(SlotCount* inFlight, BatchMemory* memory, int64_t bytes)
        : inFlight(inFlight), memory(memory), bytes(bytes) {}
    BatchLane(BatchLane&& other) noexcept
        : inFlight(std::exchange(other.inFlight, nullptr)),
          memory(std::exchange(other.memory, nullptr)), bytes(std::exchange(other.bytes, 0)) {}
    BatchLane& operator=(BatchLane&& other) noexcept {
        if (this != &other) {
            release();
            inFlight = std::exchange(other.inFlight, nullptr);
            memory = std::exchange(other.memory, nullptr);
            bytes = std::exchange(other.bytes, 0);
        }
        return *this;
    }
    BatchLane(const BatchLane&) = delete;
    BatchLane& operator=(const BatchLane&) = delete;
    ~BatchLane() { release(); }
    void release() {
        if (memory)
            memory->release(bytes);
        if (inFlight)
            inFlight->release();
        inFlight = nullptr;
        memory = nullptr;
        bytes = 0;
    }

private:
    SlotCount* inFlight = nullptr;
    BatchMemory* memory = nullptr; // where the file's share of the batch's memory is held
    int64_t bytes = 0;
};

// The lanes of "Convert All": one thread per core, and twice as many files in flight. A file
// takes a slot when its source is read (ahead of the batch thread, while slots are free) and
// keeps it through drawing and encoding; a file too large to share the batch's memory budget
// with the files in flight waits for them (see BatchMemory.h). While one thread decodes a large
// photograph, the other reads the small files after it ahead instead of waiting for the batch
// thread to take the large one. The batch thread still takes the files one by one in folder
// order (progress, format, overwrite question); only the reading ahead and the drawing and
// encoding overlap.
class BatchLanes {
public:
    using Reader = std::function<SourceRead(const QString& path)>;
    using Estimator = std::function<BatchMemory::Share(const QString& path)>; // BatchMemory.h

    BatchLanes(
        QStringList files, Reader reader, int laneCount = idealLaneCount(),
        Estimator estimate = [](const QString& path) { return BatchMemory::estimate(path); },
        int64_t memoryBudget = BatchMemory::kDefaultBudget);
    ~BatchLanes(); // waits for every lane
    BatchLanes(const BatchLanes&) = delete;
    BatchLanes& operator=(const BatchLanes&) = delete;

    static int idealLaneCount();

    // The read of `path`, the batch's next file: read ahead on a lane already, or started now
    // once a file slot is free; never waited for here. The files after it are read ahead while
    // slots are free. `lane` receives the slot the file holds. A path out of the batch's order
    // is read here, slotless, and comes back done.
    std::shared_ptr<LaneRead> takeRead(const QString& path, BatchLane& lane);
    // The same, waiting for the read's result.
    SourceRead take(const QString& path, BatchLane& lane);

    // Waits for the writes still running whose output is named `fileName` (in any folder): the
    // overwrite question for that name then sees the earlier file complete, as it would one
    // file at a time.
    void finishWritesNamed(const QString& fileName);

    // Runs `work` (drawing and encoding of the file) on a lane; the file's slot is freed when done.
    void run(BatchLane lane, const QString& dest, std::function<void()> work);
    // Runs `work` with the result of `read`, not yet waited for: on the lane reading it, as soon
    // as it is read, or queued when it is read already. The batch thread goes on to the next
    // file meanwhile, so one large file being read holds up none of the files after it.
    void runAfterRead(std::shared_ptr<LaneRead> read, BatchLane lane, const QString& dest,
                      std::function<void(SourceRead)> work);

    // Waits until every lane is idle: nothing is read, drawn or written any more.
    void drain();

private:
    SourceRead readNow(const QString& path) const;   // the reader's result; empty if it throws
    std::shared_ptr<LaneRead> readOnLane(int index); // gives back the share's whileReading
    // The file's task, registered as a write of `dest` until it ends; the slot goes when it ends.
    std::shared_ptr<std::packaged_task<void(SourceRead)>>
    writeTask(BatchLane lane, const QString& dest, std::function<void(SourceRead)> work);
    BatchMemory::Share shareOf(int index); // the file's estimate, made once
    int64_t afterRead(int index);          // what the file holds once it is read
    void readAhead(int after);
    void start(std::function<void()> task); // on the lanes' threads, in the order given
    void serve();                           // the body of each lane's thread

    const QStringList files;
    const Reader reader;
    const int fileSlots; // files in flight: read ahead, or drawn and encoded (twice the threads)
    SlotCount freeSlots;
    const Estimator estimate;
    BatchMemory memory;
    std::map<int, BatchMemory::Share> estimates;
    // The lanes' threads live for the batch. A task is queued only by a file that holds a slot,
    // so the queue never holds more tasks than there are files in flight.
    std::mutex queueMutex;
    std::condition_variable queued;
    std::deque<std::function<void()>> queue;
    int running = 0; // tasks taken from the queue and not yet finished
    std::condition_variable idle;
    bool closing = false;
    std::vector<std::thread> threads;
    int next = 0; // index of the file the batch thread takes next
    std::map<int, std::shared_ptr<LaneRead>> ahead;
    struct Write {
        QString fileName; // the output's name, without its folder
        std::shared_future<void> done;
    };
    std::vector<Write> writing;
};
