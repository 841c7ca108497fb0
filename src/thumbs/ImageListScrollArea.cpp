#include "thumbs/ImageListScrollArea.h"

#include "thumbs/ScrollNSImageView.h"

#include <QEvent>
#include <QScrollBar>

namespace {

class ResizeWatcher : public QObject {
public:
    ResizeWatcher(QWidget* window, std::function<void()> resized)
        : QObject(window), mResized(std::move(resized)) {
        window->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        // The window's layout has sized its children by the time the window hears of it.
        if (event->type() == QEvent::Resize && watched == parent())
            mResized();
        return false;
    }

private:
    std::function<void()> mResized;
};

} // namespace

ImageListScrollArea::ImageListScrollArea(QWidget* parent) : QScrollArea(parent) {
    setWidgetResizable(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* grid = new ScrollNSImageView;
    setWidget(grid);
    grid->resize(viewport()->width(), viewport()->height());
    verticalScrollBar()->setSingleStep(30);
}

ScrollNSImageView* ImageListScrollArea::grid() const {
    return qobject_cast<ScrollNSImageView*>(widget());
}

void ImageListScrollArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    if (ScrollNSImageView* view = grid()) {
        if (view->width() != viewport()->width())
            view->resize(viewport()->width(), std::max(view->height(), viewport()->height()));
        view->recalcImageList(true);
    }
}

void watchWindowResize(QWidget* window, std::function<void()> resized) {
    if (window)
        new ResizeWatcher(window, std::move(resized));
}
