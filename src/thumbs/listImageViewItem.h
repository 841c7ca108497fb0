#pragma once

#include <QImage>
#include <QRectF>
#include <QString>
#include <QWidget>

class Controller;

// One 80-point square of the image list: the picture of one file, drawn centred with its longer
// side filling the square, shaded light grey while the mouse button is held on it; releasing
// the button opens the file in the main view without rebuilding the list. A cell whose file
// cannot be read draws nothing, is never shaded, and still opens its path.
class listImageViewItem : public QWidget {
    Q_OBJECT
public:
    explicit listImageViewItem(QWidget* parent = nullptr); // init
    listImageViewItem(const QRectF& frame, QWidget* parent); // initWithFrame

    void setController(Controller* controller);
    // Keeps the path and builds the picture from it; a null path clears the name only.
    void setFileName(const QString& path);
    // Builds the picture from the file: by the grid's workers when the cell is in a grid,
    // else at once.
    void setImagePath(const QString& path);
    // Builds the picture from one in memory: scaled so that its longer side fills the cell at
    // the screen's pixel density. A null image leaves the cell blank.
    void setImage(const QImage& image);

    // The cell's side in device pixels, at the density of the screen it is (or will be) on.
    int pixelSide() const;

    Controller* mController = nullptr; // told when the cell is clicked; not owned
    bool mSelected = false;            // from mouse-down to mouse-up: drives the shading
    QString mFilename;                 // the file the cell stands for; null when none
    QImage small_image;                // the picture, device pixel ratio set; null when none

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};
