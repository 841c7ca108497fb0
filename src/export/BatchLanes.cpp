#include "export/BatchLanes.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>

#include <exception>
#include <new>

BatchLanes::BatchLanes(QStringList files, Reader reader, int laneCount, Estimator estimate,
                       int64_t memoryBudget)
    : files(std::move(files)), reader(std::move(reader)), fileSlots(2 * std::max(1, laneCount)),
      freeSlots(fileSlots), estimate(std::move(estimate)), memory(memoryBudget) {
    for (int i = 0; i < fileSlots / 2; ++i)
        threads.emplace_back([this] { serve(); });
}

BatchLanes::~BatchLanes() {
    drain();
    {
        const std::lock_guard lock(queueMutex);
        closing = true;
    }
    queued.notify_all();
    for (std::thread& t : threads)
        t.join();
}

void BatchLanes::serve() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(queueMutex);
            queued.wait(lock, [this] { return closing || !queue.empty(); });
            if (queue.empty())
                return; // closing, and nothing left to do
            task = std::move(queue.front());
            queue.pop_front();
            ++running;
        }
        task();
        task = nullptr; // what the task holds goes before the lane counts as idle
        {
            const std::lock_guard lock(queueMutex);
            --running;
        }
        idle.notify_all();
    }
}

void BatchLanes::start(std::function<void()> task) {
    {
        const std::lock_guard lock(queueMutex);
        queue.push_back(std::move(task));
    }
    queued.notify_one();
}

int BatchLanes::idealLaneCount() {
    return std::max(1, QThread::idealThreadCount());
}

bool LaneRead::isDone() const {
    const std::lock_guard lock(mutex);
    return result.has_value();
}

SourceRead LaneRead::wait() {
    std::unique_lock lock(mutex);
    finished.wait(lock, [this] { return result.has_value(); });
    SourceRead read = std::move(*result);
    result = SourceRead{}; // taken: a second wait gets nothing
    return read;
}

SourceRead BatchLanes::readNow(const QString& path) const {
    try {
        return reader(path);
    } catch (...) { // std::bad_alloc above all: the file cannot be read
        return SourceRead{};
    }
}

std::shared_ptr<LaneRead> BatchLanes::readOnLane(int index) {
    auto read = std::make_shared<LaneRead>();
    const int64_t readingOnly = shareOf(index).whileReading;
    start([this, read, readingOnly, path = files.at(index)] {
        SourceRead result = readNow(path);
        if (readingOnly > 0)
            memory.release(readingOnly); // what only the decoder held is gone
        std::function<void(SourceRead)> then;
        {
            const std::lock_guard lock(read->mutex);
            if (!read->then) {
                read->result = std::move(result);
                read->finished.notify_all();
                return;
            }
            then = std::move(read->then);
        }
        then(std::move(result)); // the file's drawing and writing, on this lane
    });
    return read;
}

BatchMemory::Share BatchLanes::shareOf(int index) {
    auto it = estimates.find(index);
    if (it == estimates.end())
        it = estimates.emplace(index, estimate ? estimate(files.at(index)) : BatchMemory::Share())
                 .first;
    return it->second;
}

int64_t BatchLanes::afterRead(int index) {
    const BatchMemory::Share share = shareOf(index);
    return share.bytes - share.whileReading;
}

void BatchLanes::readAhead(int after) {
    // Never further ahead than the files in flight reach: a Stop then leaves at most that many
    // reads unused, and no output is ever made for them.
    for (int i = after; i < files.size() && i < next + fileSlots; ++i) {
        if (ahead.count(i))
            continue;
        if (!freeSlots.try_acquire())
            return;
        if (!memory.tryHold(shareOf(i).bytes)) {
            freeSlots.release();
            return;
        }
        ahead.emplace(i, readOnLane(i));
    }
}

std::shared_ptr<LaneRead> BatchLanes::takeRead(const QString& path, BatchLane& lane) {
    if (next >= files.size() || files.at(next) != path) {
        lane = BatchLane();
        auto read = std::make_shared<LaneRead>();
        read->result = readNow(path);
        return read;
    }
    const int index = next++;
    std::shared_ptr<LaneRead> read;
    if (auto it = ahead.find(index); it != ahead.end()) {
        read = std::move(it->second);
        ahead.erase(it);
    } else {
        freeSlots.acquire();               // whichever file in flight frees its slot first
        memory.hold(shareOf(index).bytes); // and the memory of the files in flight, if need be
        read = readOnLane(index);
    }
    lane = BatchLane(&freeSlots, &memory, afterRead(index));
    estimates.erase(index);
    readAhead(next);
    return read;
}

SourceRead BatchLanes::take(const QString& path, BatchLane& lane) {
    return takeRead(path, lane)->wait();
}

void BatchLanes::finishWritesNamed(const QString& fileName) {
    for (const Write& w : writing)
        if (w.fileName == fileName)
            w.done.wait();
}

std::shared_ptr<std::packaged_task<void(SourceRead)>>
BatchLanes::writeTask(BatchLane lane, const QString& dest, std::function<void(SourceRead)> work) {
    // Finished writes are forgotten, so the table stays as small as the files in flight.
    std::erase_if(writing, [](const Write& w) {
        return w.done.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    auto held = std::make_shared<BatchLane>(std::move(lane));
    auto task = std::make_shared<std::packaged_task<void(SourceRead)>>(
        [held, work = std::move(work)](SourceRead read) {
            try {
                work(std::move(read));
            } catch (...) {
                // A failed file is reported by the work itself; nothing may end the lane's thread.
            }
            held->release(); // the slot is free before the thread takes up anything else
        });
    writing.push_back({QFileInfo(dest).fileName(), task->get_future().share()});
    return task;
}

void BatchLanes::run(BatchLane lane, const QString& dest, std::function<void()> work) {
    auto task = writeTask(std::move(lane), dest, [work = std::move(work)](SourceRead) { work(); });
    start([task] { (*task)(SourceRead{}); });
}

void BatchLanes::runAfterRead(std::shared_ptr<LaneRead> read, BatchLane lane, const QString& dest,
                              std::function<void(SourceRead)> work) {
    auto task = writeTask(std::move(lane), dest, std::move(work));
    std::unique_lock lock(read->mutex);
    if (!read->result) {
        read->then = [task](SourceRead result) { (*task)(std::move(result)); };
        return;
    }
    SourceRead result = std::move(*read->result);
    read->result = SourceRead{};
    lock.unlock();
    start([task, result = std::move(result)]() mutable { (*task)(std::move(result)); });
}

void BatchLanes::drain() {
    {
        std::unique_lock lock(queueMutex);
        idle.wait(lock, [this] { return queue.empty() && running == 0; });
    }
    for (auto& [index, read] : ahead) {
        read->wait();
        memory.release(afterRead(index)); // unused reads give their memory and slots back
    }
    freeSlots.release(std::ptrdiff_t(ahead.size()));
    ahead.clear();
    estimates.clear();
    writing.clear();
}
