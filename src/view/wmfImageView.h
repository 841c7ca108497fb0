#pragma once

#include <QByteArray>
#include <QImage>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QWidget>

#include "view/PictureLevels.h"
#include "view/ZoomGeometry.h"

#include <memory>

class Controller;
class CropMarker;
class QPainter;

// The large view of the main window. It draws the controller's current picture fitted to the
// whole view, centred and turned by the controller's angle; it takes the arrow keys for the
// previous and next image, opens a file dropped on it, and tracks a rubber-band selection.
class wmfImageView : public QWidget {
    Q_OBJECT
public:
    explicit wmfImageView(QWidget* parent = nullptr);
    ~wmfImageView() override;

    Controller* mainController = nullptr;
    std::unique_ptr<CropMarker> selectionMarker;
    QString path; // the file shown; empty when none

    void awakeFromNib();                      // gives the view its selection marker
    void setWmfPath(const QString& newPath);  // the path alone (a document export borrows it)
    void showPicture(const QString& newPath); // a new picture: its path, fitted, announced
    const QString& wmfPath() const { return path; }
    void clear();
    void setSelectionMarker(std::unique_ptr<CropMarker> marker);
    void takeSelectionColorFrom(const QColor& color);
    void setImage(const QImage& image); // the view's own image, drawn only with no picture
    // A scaled copy of `picture` made ahead of time for the view at its present size
    // (makeDisplayCopy), drawn instead of making it at the first paint.
    void adoptDisplayCopy(const QImage& picture, const QImage& copy);
    void selectionChanged();
    void postSelectionChangedNotification();
    bool isContinuous() const { return continuous; }
    void setContinuous(bool on) { continuous = on; }

    static QRectF centerRect(const QRectF& r, const QRectF& onRect);

    // Draws the picture fitted into `area` (as paintEvent does with the whole view).
    void drawRect(QPainter& painter, const QRectF& area);
    void rotate(QPainter& painter, int degrees);

    // The view's drawing of `rect` as a one-page document of rect's size in points.
    QByteArray dataWithPDFInsideRect(const QRectF& rect);
    QByteArray dataWithEPSInsideRect(const QRectF& rect);

    // Grey tones of the picture on screen, made once per picture and flag change.
    void monochromeImage();
    void killMonochromeImage();

    // Zoom and pan. Every picture opens fitted; the zoom shows picture pixels from the fitted
    // size up to 3200 %, and the selection keeps to the picture while zoomed.
    const ZoomGeometry& zoomState(); // brought up to date with the picture, angle and size
    void zoomIn();
    void zoomOut();
    void zoomToActualSize();
    void zoomToFit();
    QString zoomText(); // what the window shows of the zoom: "Fit (25 %)", "400 %"

signals:
    // Another picture is shown (showPicture).
    void pictureChanged(wmfImageView* view);
    // The zoom changed (or the fitted size did, with the window's size or the picture).
    void zoomChanged(wmfImageView* view);
    // "ImageSelectionChanged": the rubber-band selection changed; ask selectionMarker for it.
    void ImageSelectionChanged(wmfImageView* view);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    friend class RedrawBenchmark; // switches the scaled copy off to measure what it saves

    // Grey tones are a way of looking at the picture on screen; a document made of the view's
    // drawing (the EPS export) always shows the colours of the file.
    enum class Tones { AsOnScreen, Colour };

    // The picture as it is drawn: greyed while the controller's grey flag is on (on screen
    // only), and replaced by the scaled copy when it is much larger than the view.
    QImage displaySource(const QImage& picture, Tones tones);
    const QImage& greyVersion(const QImage& shown);
    void drawPicture(QPainter& painter, const QRectF& area, Tones tones);
    void drawOwnImage(QPainter& painter, const QRectF& area, Tones tones);

    // Zoomed drawing and the pan's mouse handling (wmfImageViewZoom.cpp).
    QSizeF shownPictureSize() const; // the picture's size as the fitted drawing takes it
    void syncZoom();
    void drawZoomed(QPainter& painter, const QImage& picture, Tones tones);
    bool startPan(QMouseEvent* event);
    bool continuePan(QMouseEvent* event);
    bool endPan(QMouseEvent* event);
    bool handleSpaceKey(QKeyEvent* event, bool pressed);
    void updatePanCursor();
    QPointF markerPoint(const QMouseEvent* event) const; // the selection keeps fitted coordinates

    ZoomGeometry zoom;
    PictureLevels levels;
    QString shownZoomText;
    bool spaceHeld = false;
    bool panning = false;
    QPointF panLast;

    QImage ownImage;
    bool continuous = false;
    bool displayCacheEnabled = true;
    struct DisplayCache; // the scaled (and greyed) copy drawn when the picture is much larger
    std::unique_ptr<DisplayCache> cache;
};
