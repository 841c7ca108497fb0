#include "thumbs/ScrollNSImageView.h"

#include "thumbs/ThumbGridLayout.h"
#include "thumbs/ThumbnailQueue.h"
#include "thumbs/listImageViewItem.h"

#include <algorithm>
#include <utility>

using namespace ThumbGridLayout;

ScrollNSImageView::ScrollNSImageView(QWidget* parent)
    : QWidget(parent), savedRect(0, 0, 0, 0), mQueue(new ThumbnailQueue(this)) {
    connect(mQueue, &ThumbnailQueue::finished, this, &ScrollNSImageView::thumbnailsLoaded);
}

ScrollNSImageView::~ScrollNSImageView() {
    // The workers end before the cells they work for go.
    delete mQueue;
    mQueue = nullptr;
}

void ScrollNSImageView::addImageView(const QString& path) {
    auto* cell = new listImageViewItem(QRectF(0, 0, kCellSide, kCellSide), this);
    mCells.append(cell);
    cell->setFileName(path);
    cell->setController(mController);
    cell->show();
}

void ScrollNSImageView::requestThumbnail(listImageViewItem* cell) {
    if (mQueue)
        mQueue->add(cell);
}

void ScrollNSImageView::clear() {
    mQueue->clear();
    // A cell may be clearing the list from its own mouse handler (a click that opens a file
    // that cannot be read): cells go at once from the grid and the screen, and are freed when
    // control is back in the event loop.
    const QList<listImageViewItem*> cells = std::exchange(mCells, {});
    for (listImageViewItem* cell : cells) {
        if (!cell)
            break;
        cell->hide();
        cell->mController = nullptr;
        cell->deleteLater();
    }
    QWidget::update();
}

void ScrollNSImageView::update() {
    recalcImageList(false);
    QWidget::update();
}

void ScrollNSImageView::recalcImageList(bool onlyIfChanged) {
    const QRectF current = frame();
    const bool changed = current != savedRect;
    if (changed)
        savedRect = current;
    if (onlyIfChanged && !changed)
        return;
    const int count = int(mCells.size());
    if (count > 0) {
        const double clipHeight = parentWidget() ? parentWidget()->height() : 0.0;
        const Grid grid = gridFor(savedRect.width(), count, clipHeight);
        savedRect.setHeight(grid.height);
        mColumns = grid.columns;
        resize(int(savedRect.width()), int(savedRect.height()));
        int placed = 0;
        for (listImageViewItem* cell : std::as_const(mCells)) {
            if (!cell)
                continue; // skipped without taking a place
            cell->setGeometry(QRect(cellOrigin(placed++, grid.columns), QSize(kCellSide, kCellSide)));
            cell->QWidget::update();
        }
    }
    if (parentWidget())
        parentWidget()->update();
}

int32_t ScrollNSImageView::getCount() const { return int32_t(mCells.size()); }

bool ScrollNSImageView::isLoadingThumbnails() const { return mQueue && mQueue->isBusy(); }

void ScrollNSImageView::visibleCells(int* first, int* last) const {
    *first = *last = 0;
    if (!isVisible() || !parentWidget())
        return;
    // The band of the grid that its clip view shows (the scroll area moves the grid up).
    const double top = std::max(0, -y());
    const double bottom = std::min(height(), parentWidget()->height() - y());
    if (bottom <= top)
        return;
    cellsInBand(top, bottom, mColumns, int(mCells.size()), first, last);
}
