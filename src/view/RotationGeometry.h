#pragma once

#include <QRectF>
#include <QTransform>

// The geometry of turning and fitting a picture, in single-precision float arithmetic so that
// the sizes come out as the truncations below expect (640 x 480 at 150 dpi is 1333 x 999).

// Bounding box of a rectangle of r's size turned by `degrees`, at r's origin.
QRectF rotatedRectBounds(const QRectF& r, float degrees);

// A rectangle of r's size centred on `on` (r's origin ignored).
QRectF centerRect(const QRectF& r, const QRectF& on);

// The rotation by -degrees (clockwise on screen for a positive angle), rounded to float.
QTransform rotationTransform(int degrees);

// The turn about the centre of a box of the given size: translate to the centre, rotate,
// translate back. The main view, the export renderer and the PDF writer all place the picture
// this way.
QTransform rotationAboutCentre(int degrees, float width, float height);

// The placement of a picture in the box of its turned bounds (an export bitmap, a PDF page):
// the picture's rectangle is moved so that its centre is the box's centre, then turned about
// that centre. Both rectangles are in the box's units.
QTransform turnedPlacement(int degrees, const QRectF& box, const QRectF& picture);

// The box in which the main view shows a picture turned by `degrees`: its turned bounding box
// scaled to fit `view` (the smaller ratio; the height ratio on a tie) and centred on it.
QRectF shownTurnedBox(const QRectF& picture, int degrees, const QRectF& view);

// Where the main view shows a picture of `pictureSize` turned by `degrees` inside `area`:
// scaled to fit (up or down, aspect kept) and centred. The rectangle is the unturned picture's
// place; the turn about the view's centre is applied on top of it.
QRectF fittedPictureRect(const QSizeF& pictureSize, int degrees, const QRectF& area);
