#include "app/Controller.h"

#include "browse/FolderIndex.h"
#include "thumbs/GuiInbox.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/ThreadHandOver.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressBar>
#include <QStringList>
#include <QTabWidget>
#include <QThreadPool>

#include <functional>

// The "Image List" tab: a walk over the source's folder on a background thread names the
// pictures, the GUI thread makes a cell for each (the grid's workers then make their pictures),
// and a new walk stops the running one. The walk touches no widget: it sends the names it
// finds to the GUI thread in batches, marked with the walk they belong to, and batches of a
// walk that is no longer the current one are dropped there.

namespace {

// The current walk. A walk goes on while image_thread_exit is clear and it is still the
// current one, so a new walk stops an old one even if the old one never saw the flag set.
std::atomic<uint64_t> currentWalk{0};

bool walkGoesOn(uint64_t walk) {
    return !image_thread_exit.load() && currentWalk.load() == walk;
}

// A batch goes to the GUI thread after this many names or this long, whichever comes first:
// few enough events for a folder of thousands, soon enough for the first cells to show at once.
constexpr int kBatchNames = 64;
constexpr qint64 kBatchMilliseconds = 30;

// Names found by a walk, on their way to the GUI thread.
struct WalkBatch {
    uint64_t walk = 0;
    QStringList names;
    bool last = false;
};
using WalkInbox = GuiInbox<WalkBatch>;

} // namespace

void Controller::threadFillImageList() {
    // Stops the running walk and empties the grid before the new walk starts.
    clearImageList();
    const QString source = itsSrcFileName ? itsSrcFileName->text() : QString();
    if (!imageWalkPool) {
        imageWalkPool = new QThreadPool(this);
        imageWalkPool->setMaxThreadCount(1); // a stopped walk ends within one file
        imageWalkPool->setObjectName(QStringLiteral("image list walk"));
    }
    const uint64_t walk = ++currentWalk;
    image_thread_exit = false;
    updateImageProgress();
    if (!imageWalkInbox)
        imageWalkInbox = new WalkInbox(this, [this](WalkBatch& batch) {
            if (currentWalk.load() != batch.walk)
                return; // a later walk has emptied the grid since
            for (const QString& name : std::as_const(batch.names))
                if (itsImageListView)
                    itsImageListView->addImageView(name);
            if (batch.last)
                image_thread_exit = true;
            // Laid out batch by batch, so that the first cells show while a long walk runs.
            if (itsImageListView)
                itsImageListView->update();
            if (batch.last)
                updateImageProgress();
        });
    std::function<void()> task = [this, source, walk] {
        ThreadHandOver::takeOver();
        fillImageListThread(this, source, walk);
    };
    ThreadHandOver::handOver(); // after the task is built, before the walk's thread can read it
    imageWalkPool->start(std::move(task));
}

void Controller::fillImageListThread(Controller* controller, const QString& source,
                                     uint64_t walk) {
    if (controller)
        controller->fillImageListTable(source, walk);
}

void Controller::fillImageListTable(const QString& source, uint64_t walk) {
    // Runs on the walk's thread: the folder listing is the cached one navigation uses.
    auto* inbox = static_cast<WalkInbox*>(imageWalkInbox);
    auto send = [inbox, walk](QStringList names, bool last) {
        inbox->put(WalkBatch{walk, std::move(names), last});
    };

    QStringList batch;
    QElapsedTimer sinceSent;
    sinceSent.start();
    QString path = source;
    try {
        if (!path.isEmpty() && findFirstWMF(path)) {
            while (walkGoesOn(walk)) {
                batch.append(path);
                if (batch.size() >= kBatchNames || sinceSent.elapsed() >= kBatchMilliseconds) {
                    send(std::exchange(batch, {}), false);
                    sinceSent.restart();
                }
                if (!findWMF(kStepNext, path))
                    break;
            }
        }
    } catch (const std::exception&) {
        // Out of memory while listing: the walk ends with what it found.
    }
    send(batch, true);
}

void Controller::clearImageList() {
    image_thread_exit = true;
    ++currentWalk;
    if (itsImageListView)
        itsImageListView->clear();
    updateImageProgress();
}

void Controller::addImageView(const QString& path) {
    if (!itsImageListView)
        return;
    itsImageListView->addImageView(path);
    if (image_thread_exit.load())
        itsImageListView->update(); // one cell outside a walk shows at its place at once
}

void Controller::tabViewDidSelectTabViewItem(QTabWidget* tabView, int index) {
    if (tabView && tabView->tabText(index) == tr("Image List") && itsImageListView)
        itsImageListView->recalcImageList(true);
}

void Controller::windowDidResize() {
    if (itsImageListView)
        itsImageListView->recalcImageList(true);
}

void Controller::waitForImageList() {
    image_thread_exit = true;
    ++currentWalk;
    if (imageWalkPool) {
        imageWalkPool->waitForDone();
        ThreadHandOver::takeOver();
    }
}

void Controller::updateImageProgress() {
    if (!itsImageProgress)
        return;
    const bool busy = !image_thread_exit.load() ||
                      (itsImageListView && itsImageListView->isLoadingThumbnails());
    if (busy) {
        itsImageProgress->setRange(0, 0); // indeterminate: it spins
        itsImageProgress->setVisible(true);
    } else {
        itsImageProgress->setVisible(false);
        itsImageProgress->setRange(0, 1);
    }
}
