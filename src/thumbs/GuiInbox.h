#pragma once

#include <QObject>

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

// Carries results from worker threads to the GUI thread: a worker puts an item in and the GUI
// thread is asked, by a queued call that carries nothing, to take out everything that has
// come. The items cross under a lock of the program's own, which ThreadSanitizer can follow
// (it cannot see into Qt's event queue, whose objects a queued lambda would travel in).
class GuiInboxBase : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

protected:
    void ring(); // any thread: asks the GUI thread to empty the inbox
    Q_INVOKABLE virtual void empty() = 0;
};

template <class Item> class GuiInbox : public GuiInboxBase {
public:
    // `take` runs on the GUI thread for each item, in the order the items were put in.
    GuiInbox(QObject* parent, std::function<void(Item&)> take)
        : GuiInboxBase(parent), mTake(std::move(take)) {}

    ~GuiInbox() override {
        // Under the lock, so that what the last put() left is freed after it, as seen by
        // ThreadSanitizer too.
        const std::lock_guard<std::mutex> lock(mMutex);
        mItems.clear();
    }

    // Any thread.
    void put(Item item) {
        // The call is posted under the lock too, so that the inbox is not freed under it.
        const std::lock_guard<std::mutex> lock(mMutex);
        const bool first = mItems.empty();
        mItems.push_back(std::move(item));
        if (first)
            ring();
    }

protected:
    void empty() override {
        std::vector<Item> items;
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            items.swap(mItems);
        }
        for (Item& item : items)
            mTake(item);
    }

private:
    std::function<void(Item&)> mTake;
    std::mutex mMutex;
    std::vector<Item> mItems;
};
