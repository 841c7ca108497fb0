#pragma once

#include <QList>
#include <QRectF>
#include <QString>
#include <QWidget>

#include <cstdint>

class Controller;
class ThumbnailQueue;
class listImageViewItem;

// The document of the "Image List" tab's scroll area: the cells of the folder's pictures in the
// order they were added, laid out left to right and top to bottom on a 90-point pitch (see
// ThumbGridLayout), its own height grown to hold the rows so that the scroll area scrolls
// them. Layout is done only when asked (update, recalcImageList) and, when asked
// conditionally, only if the frame changed since the last one. The cells' pictures are made by
// a pool of workers, cells in view first.
class ScrollNSImageView : public QWidget {
    Q_OBJECT
public:
    explicit ScrollNSImageView(QWidget* parent = nullptr); // initWithFrame, savedRect all zero
    ~ScrollNSImageView() override;

    bool isFlipped() const { return true; } // y grows downwards: the first row is at the top

    void addImageView(const QString& path); // a new last cell, not laid out yet
    void clear();                           // removes every cell
    void update();                          // a forced layout, then a redraw
    void recalcImageList(bool onlyIfChanged);
    int32_t getCount() const;

    const QList<listImageViewItem*>& cells() const { return mCells; }
    // Whether some cell still waits for its picture.
    bool isLoadingThumbnails() const;
    // The indices [first, last) of the cells in rows that are in view now; empty when the
    // grid is not shown.
    void visibleCells(int* first, int* last) const;
    // Called by a cell of this grid that wants its picture.
    void requestThumbnail(listImageViewItem* cell);

    Controller* mController = nullptr; // handed to every cell; not owned
    QRectF savedRect;                  // the frame of the last layout

signals:
    void thumbnailsLoaded(); // every cell has its picture, or knows it has none

private:
    // The frame: where the scroll area scrolled the grid is not part of it.
    QRectF frame() const { return QRectF(0, 0, width(), height()); }

    QList<listImageViewItem*> mCells;
    ThumbnailQueue* mQueue;
    int mColumns = 1; // of the last layout
};
