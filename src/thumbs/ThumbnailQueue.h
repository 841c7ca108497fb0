#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <cstdint>
#include <vector>

#include "thumbs/GuiInbox.h"

class listImageViewItem;
class ScrollNSImageView;

// Hands the cells of a grid to a small pool of workers that make their pictures
// (ThumbnailMaker) and gives each picture to its cell on the GUI thread. Cells that are in view
// go first, the others in list order; since the next cell is chosen each time a worker comes
// free, scrolling changes what comes next. Only a few decodes are under way at any time, so
// that clearing the list leaves nothing much to finish.
class ThumbnailQueue : public QObject {
    Q_OBJECT
public:
    explicit ThumbnailQueue(ScrollNSImageView* grid);
    ~ThumbnailQueue() override; // drops what waits and lets the running decodes end

    void add(listImageViewItem* cell);
    void clear(); // forgets every cell; pictures still being made are thrown away
    bool isBusy() const; // a cell still waits for its picture

signals:
    void finished(); // every cell added so far has its picture (or none could be made)

private:
    enum class State : uint8_t { Waiting, Requested, Done };
    struct Entry {
        QPointer<listImageViewItem> cell;
        State state = State::Waiting;
    };

    struct Result {
        uint64_t generation;
        int index;
        QImage image;
    };

    void pump();
    int pickNext();
    void start(int index);
    void deliver(uint64_t generation, int index, const QImage& image);

    ScrollNSImageView* mGrid;
    std::vector<Entry> mEntries;
    size_t mCursor = 0;        // no waiting entry before this one
    int mRunning = 0;          // decodes under way, of any generation
    int mRunningNow = 0;       // decodes under way for the cells of now
    int mWaiting = 0;          // cells not handed to a worker yet
    uint64_t mGeneration = 0;  // bumped by clear(): older results are dropped
    GuiInbox<Result>* mInbox; // pictures on their way from the workers; a child of the queue
    QThreadPool mPool;        // last member: its workers end first
};
