#pragma once

#include <QScrollArea>

#include <functional>

class ScrollNSImageView;

// The scroll area of the "Image List" tab: its document, the grid, is always as wide as the
// visible part, while the grid's own layout sets its height. The vertical scroll bar is always
// there, so that its coming and going cannot change the width the grid lays out for.
class ImageListScrollArea : public QScrollArea {
    Q_OBJECT
public:
    explicit ImageListScrollArea(QWidget* parent = nullptr);

    ScrollNSImageView* grid() const;

protected:
    void resizeEvent(QResizeEvent* event) override; // also sent when the viewport changes size
};

// Calls `resized` after each change of size of `window` (the main window's resize hook).
void watchWindowResize(QWidget* window, std::function<void()> resized);
