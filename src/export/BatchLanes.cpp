#include "export/BatchLanes.h"

#include <QFileInfo>
#include <QThread>

#include <exception>
#include <new>

BatchLanes::BatchLanes(QStringList files, Reader reader, int laneCount)
    : files(std::move(files)), reader(std::move(reader)), laneCount(std::max(1, laneCount)),
      freeLanes(this->laneCount) {
    pool.setMaxThreadCount(this->laneCount);
    // A lane's thread lives for the batch: no thread is made and ended per file.
    pool.setExpiryTimeout(-1);
}

BatchLanes::~BatchLanes() {
    drain();
}

int BatchLanes::idealLaneCount() {
    return std::max(1, QThread::idealThreadCount());
}

std::future<SourceRead> BatchLanes::readOnLane(int index) {
    auto task = std::make_shared<std::packaged_task<SourceRead()>>(
        [this, path = files.at(index)] { return reader(path); });
    std::future<SourceRead> result = task->get_future();
    pool.start([task] { (*task)(); });
    return result;
}

void BatchLanes::readAhead(int after) {
    // Never further ahead than the lanes reach: a Stop then leaves at most that many reads
    // unused, and no output is ever made for them.
    for (int i = after; i < files.size() && i < next + laneCount; ++i) {
        if (ahead.count(i))
            continue;
        if (!freeLanes.tryAcquire())
            return;
        ahead.emplace(i, readOnLane(i));
    }
}

SourceRead BatchLanes::take(const QString& path, BatchLane& lane) {
    std::future<SourceRead> read;
    if (next < files.size() && files.at(next) == path) {
        const int index = next++;
        if (auto it = ahead.find(index); it != ahead.end()) {
            read = std::move(it->second);
            ahead.erase(it);
        } else {
            freeLanes.acquire(); // whichever lane frees first
            read = readOnLane(index);
        }
        lane = BatchLane(&freeLanes);
        readAhead(next);
    } else {
        lane = BatchLane();
        try {
            return reader(path);
        } catch (const std::exception&) {
            return SourceRead{};
        }
    }
    try {
        return read.get();
    } catch (const std::exception&) { // std::bad_alloc above all: the file cannot be read
        return SourceRead{};
    }
}

void BatchLanes::finishWritesNamed(const QString& fileName) {
    for (const Write& w : writing)
        if (w.fileName == fileName)
            w.done.wait();
}

void BatchLanes::run(BatchLane lane, const QString& dest, std::function<void()> work) {
    // Finished writes are forgotten, so the table stays as small as the lanes.
    std::erase_if(writing, [](const Write& w) {
        return w.done.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    auto held = std::make_shared<BatchLane>(std::move(lane));
    auto task = std::make_shared<std::packaged_task<void()>>([held, work = std::move(work)] {
        try {
            work();
        } catch (...) {
            // A failed file is reported by the work itself; nothing may end the lane's thread.
        }
        held->release(); // the lane is free before the thread takes up anything else
    });
    writing.push_back({QFileInfo(dest).fileName(), task->get_future().share()});
    pool.start([task] { (*task)(); });
}

void BatchLanes::drain() {
    pool.waitForDone();
    for (auto& [index, read] : ahead)
        read.wait();
    freeLanes.release(int(ahead.size())); // unused reads give their lanes back
    ahead.clear();
    writing.clear();
}
