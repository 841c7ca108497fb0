#include "thumbs/ThumbnailQueue.h"

#include "thumbs/ScrollNSImageView.h"
#include "thumbs/ThreadHandOver.h"
#include "thumbs/ThumbnailMaker.h"
#include "thumbs/listImageViewItem.h"

#include <QThread>

#include <algorithm>
#include <functional>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Workers run well below the GUI thread, so that a busy machine takes its time from the
// thumbnails rather than from the window's answers to the user. On Linux a nice value is the
// thread's own.
constexpr int kWorkerNice = 10;

void lowerThisWorker() {
    thread_local const bool lowered = ::setpriority(PRIO_PROCESS, ::gettid(), kWorkerNice) == 0;
    (void)lowered;
}

} // namespace

ThumbnailQueue::ThumbnailQueue(ScrollNSImageView* grid)
    : QObject(grid), mGrid(grid),
      mInbox(new GuiInbox<Result>(
          this, [this](Result& r) { deliver(r.generation, r.index, r.image); })) {
    mPool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
    mPool.setObjectName(QStringLiteral("thumbnail workers"));
}

ThumbnailQueue::~ThumbnailQueue() {
    mEntries.clear();
    mPool.clear();
    mPool.waitForDone();
}

void ThumbnailQueue::add(listImageViewItem* cell) {
    mEntries.push_back(Entry{cell, State::Waiting});
    ++mWaiting;
    pump();
}

void ThumbnailQueue::clear() {
    mEntries.clear();
    mCursor = 0;
    mWaiting = 0;
    mRunningNow = 0;
    ++mGeneration;
}

bool ThumbnailQueue::isBusy() const { return mWaiting > 0 || mRunningNow > 0; }

void ThumbnailQueue::pump() {
    // Two decodes a worker: one running, one ready, so no worker waits for the GUI thread.
    const int limit = 2 * mPool.maxThreadCount();
    while (mRunning < limit) {
        const int index = pickNext();
        if (index < 0)
            break;
        start(index);
    }
}

int ThumbnailQueue::pickNext() {
    int first = 0, last = 0;
    mGrid->visibleCells(&first, &last);
    last = std::min<int>(last, int(mEntries.size()));
    for (int i = first; i < last; ++i)
        if (mEntries[size_t(i)].state == State::Waiting)
            return i;
    while (mCursor < mEntries.size() && mEntries[mCursor].state != State::Waiting)
        ++mCursor;
    return mCursor < mEntries.size() ? int(mCursor) : -1;
}

void ThumbnailQueue::start(int index) {
    Entry& entry = mEntries[size_t(index)];
    entry.state = State::Requested;
    --mWaiting;
    if (!entry.cell) {
        entry.state = State::Done;
        return;
    }
    const QString path = entry.cell->mFilename;
    const int pixels = entry.cell->pixelSide();
    const uint64_t generation = mGeneration;
    ++mRunning;
    ++mRunningNow;
    std::function<void()> task = [this, path, pixels, generation, index] {
        ThreadHandOver::takeOver();
        lowerThisWorker();
        const QImage image =
            ThumbnailMaker::fitToSide(ThumbnailMaker::make(path, pixels), pixels);
        mInbox->put(Result{generation, index, image});
    };
    ThreadHandOver::handOver(); // after the task is built, before a worker can read it
    mPool.start(std::move(task));
}

void ThumbnailQueue::deliver(uint64_t generation, int index, const QImage& image) {
    --mRunning;
    if (generation == mGeneration && size_t(index) < mEntries.size()) {
        --mRunningNow;
        Entry& entry = mEntries[size_t(index)];
        entry.state = State::Done;
        if (entry.cell)
            entry.cell->setImage(image);
    }
    pump();
    if (generation == mGeneration && !isBusy()) {
        // Decoding whole photographs left the workers' heaps large; what is free goes back.
        if (mRunning == 0)
            ::malloc_trim(0);
        emit finished();
    }
}
