#include "app/Controller.h"
#include "view/CropMarker.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMouseEvent>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

namespace {

QImage renderView(wmfImageView& view) {
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::green);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

// A picture whose pixels alternate black and white, one by one.
QImage checkerboard(int w, int h) {
    QImage picture(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            picture.setPixel(x, y, (x + y) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    return picture;
}

void sendWheel(QWidget* widget, const QPointF& at, int notches, Qt::KeyboardModifiers mods) {
    QWheelEvent wheel(at, widget->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      mods, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &wheel);
}

void sendMouse(QWidget* widget, QEvent::Type type, const QPointF& at, Qt::MouseButton button,
               Qt::MouseButtons held) {
    QMouseEvent event(type, at, widget->mapTo(widget->window(), at), widget->mapToGlobal(at),
                      button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void drag(QWidget* widget, const QPointF& from, const QPointF& to, Qt::MouseButton button) {
    sendMouse(widget, QEvent::MouseButtonPress, from, button, button);
    sendMouse(widget, QEvent::MouseMove, (from + to) / 2, Qt::NoButton, button);
    sendMouse(widget, QEvent::MouseMove, to, Qt::NoButton, button);
    sendMouse(widget, QEvent::MouseButtonRelease, to, button, Qt::NoButton);
}

bool near(const QPointF& a, const QPointF& b, double tolerance = 0.01) {
    return std::abs(a.x() - b.x()) < tolerance && std::abs(a.y() - b.y()) < tolerance;
}

} // namespace

// Zoom and pan of the main view in the real main window: keys, menu items, wheel, drags.
class tst_ViewZoom : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void opensFitted();
    void keysZoomAndReturnToFit();
    void menuItemsZoom();
    void actualSizeShowsEveryPixel();
    void ctrlWheelZoomsAboutThePointer();
    void wheelScrollsOnlyWhileZoomed();
    void middleDragPans();
    void spaceDragPans();
    void selectionKeepsToThePicture();
    void newPictureOpensFitted();
    void digitsStillTypeIntoTheAngleField();
    void zoomKeepsTheAngle();

private:
    wmfImageView& view() { return *controller->itsWmfView; }
    QString writePicture(const QString& name, const QImage& picture);

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
    QString picturePath;
};

QString tst_ViewZoom::writePicture(const QString& name, const QImage& picture) {
    const QString path = QDir(home->path()).filePath(name);
    if (!picture.save(path))
        return QString();
    return path;
}

void tst_ViewZoom::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    controller = std::make_unique<Controller>();
    controller->skipSplash = true;
    controller->loadMainWindow();
    QVERIFY(controller->itsMainWindow && controller->itsWmfView && controller->itsZoomField);
    controller->itsMainWindow->resize(900, 700);
    controller->itsMainWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsMainWindow));
    picturePath = writePicture("board.png", checkerboard(3000, 2400));
    QVERIFY(!picturePath.isEmpty());
    controller->setSourceFileName(picturePath, false);
    QCOMPARE(controller->itsCGImage.size(), QSize(3000, 2400));
    controller->itsRotateSlider->setValue(0);
    controller->m_rotate = 0;
    view().setFocus();
    QTRY_VERIFY(view().hasFocus());
}

void tst_ViewZoom::cleanup() {
    if (controller && controller->itsMainWindow)
        delete controller->itsMainWindow.data();
    controller.reset();
    home.reset();
}

void tst_ViewZoom::opensFitted() {
    QVERIFY(view().zoomState().isFitted());
    QVERIFY(view().zoomState().zoomPercent() < 100.0);
    QVERIFY(controller->itsZoomField->text().startsWith(QStringLiteral("Fit (")));
}

void tst_ViewZoom::keysZoomAndReturnToFit() {
    const QImage fitted = renderView(view());
    QTest::keyClick(&view(), Qt::Key_1);
    QCOMPARE(view().zoomState().zoomPercent(), 100.0);
    QCOMPARE(controller->itsZoomField->text(), QStringLiteral("100 %"));
    QTest::keyClick(&view(), Qt::Key_Plus);
    const double in = view().zoomState().zoomPercent();
    QVERIFY(in > 100.0);
    QCOMPARE(controller->itsZoomField->text(), QStringLiteral("%1 %").arg(std::lround(in)));
    QTest::keyClick(&view(), Qt::Key_Minus);
    QVERIFY(std::abs(view().zoomState().zoomPercent() - 100.0) < 1e-6);
    QTest::keyClick(&view(), Qt::Key_0);
    QVERIFY(view().zoomState().isFitted());
    // Back to the very drawing the picture opened with.
    QCOMPARE(renderView(view()), fitted);
    // Out from the fitted view: it is the smallest size of a large picture.
    QTest::keyClick(&view(), Qt::Key_Minus);
    QVERIFY(view().zoomState().isFitted());
}

void tst_ViewZoom::menuItemsZoom() {
    QVERIFY(controller->itsMenuItemActualSize && controller->itsMenuItemFit);
    QVERIFY(controller->itsMenuItemZoomIn && controller->itsMenuItemZoomOut);
    for (QAction* item :
         {controller->itsMenuItemZoomIn.data(), controller->itsMenuItemZoomOut.data(),
          controller->itsMenuItemActualSize.data(), controller->itsMenuItemFit.data()})
        QVERIFY(!item->shortcut().isEmpty());
    controller->itsMenuItemActualSize->trigger();
    QCOMPARE(view().zoomState().zoomPercent(), 100.0);
    controller->itsMenuItemZoomIn->trigger();
    controller->itsMenuItemZoomIn->trigger();
    QVERIFY(std::abs(view().zoomState().zoomPercent() -
                     100.0 * ZoomGeometry::kStepFactor * ZoomGeometry::kStepFactor) < 1e-6);
    controller->itsMenuItemZoomOut->trigger();
    QVERIFY(view().zoomState().zoomPercent() > 100.0);
    controller->itsMenuItemFit->trigger();
    QVERIFY(view().zoomState().isFitted());
    // The wheel's limit: 3200 %.
    for (int i = 0; i < 60; ++i)
        controller->itsMenuItemZoomIn->trigger();
    QCOMPARE(view().zoomState().zoomPercent(), 3200.0);
}

void tst_ViewZoom::actualSizeShowsEveryPixel() {
    QTest::keyClick(&view(), Qt::Key_1);
    const QImage shot = renderView(view());
    const QTransform toView = view().zoomState().pictureToView();
    const QPoint origin = toView.map(QPointF(0, 0)).toPoint();
    // Across the middle of the view each screen pixel is one picture pixel, unblended.
    int checked = 0;
    for (int y = 100; y < shot.height() - 100; y += 37)
        for (int x = 100; x < shot.width() - 100; ++x) {
            const QPoint picturePixel(x - origin.x(), y - origin.y());
            const bool white = (picturePixel.x() + picturePixel.y()) % 2 != 0;
            QCOMPARE(shot.pixel(x, y), white ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
            ++checked;
        }
    QVERIFY(checked > 1000);
}

void tst_ViewZoom::ctrlWheelZoomsAboutThePointer() {
    const QPointF pointer(180, 140);
    sendWheel(&view(), pointer, 6, Qt::ControlModifier);
    QVERIFY(!view().zoomState().isFitted());
    // Once the picture covers the view, the pixel under the pointer stays under it.
    const QPointF under = view().zoomState().pictureToView().inverted().map(pointer);
    sendWheel(&view(), pointer, 2, Qt::ControlModifier);
    QVERIFY(near(view().zoomState().pictureToView().map(under), pointer));
    sendWheel(&view(), pointer, -20, Qt::ControlModifier);
    QVERIFY(view().zoomState().isFitted());
}

void tst_ViewZoom::wheelScrollsOnlyWhileZoomed() {
    const QPointF centre = QRectF(view().rect()).center();
    sendWheel(&view(), centre, -1, Qt::NoModifier);
    QVERIFY(view().zoomState().isFitted());
    QCOMPARE(view().zoomState().pan(), QPointF());
    QTest::keyClick(&view(), Qt::Key_1);
    sendWheel(&view(), centre, -2, Qt::NoModifier);
    QCOMPARE(view().zoomState().pan(), QPointF(0, -120)); // down: the picture moves up
    sendWheel(&view(), centre, 1, Qt::ShiftModifier);
    QCOMPARE(view().zoomState().pan(), QPointF(60, -120));
}

void tst_ViewZoom::middleDragPans() {
    QTest::keyClick(&view(), Qt::Key_1);
    const QRectF before = controller->itsWmfView->selectionMarker->selectedRect();
    drag(&view(), QPointF(300, 300), QPointF(250, 280), Qt::MiddleButton);
    QCOMPARE(view().zoomState().pan(), QPointF(-50, -20));
    QCOMPARE(view().selectionMarker->selectedRect(), before); // no selection made
}

void tst_ViewZoom::spaceDragPans() {
    QTest::keyClick(&view(), Qt::Key_1);
    QTest::keyPress(&view(), Qt::Key_Space);
    drag(&view(), QPointF(300, 300), QPointF(340, 310), Qt::LeftButton);
    QTest::keyRelease(&view(), Qt::Key_Space);
    QCOMPARE(view().zoomState().pan(), QPointF(40, 10));
    QVERIFY(view().selectionMarker->selectedRect().isEmpty());
    // Without Space the left button selects again.
    drag(&view(), QPointF(100, 100), QPointF(160, 140), Qt::LeftButton);
    QVERIFY(!view().selectionMarker->selectedRect().isEmpty());
    QCOMPARE(view().zoomState().pan(), QPointF(40, 10));
}

void tst_ViewZoom::selectionKeepsToThePicture() {
    QTest::keyClick(&view(), Qt::Key_1);
    drag(&view(), QPointF(100, 120), QPointF(220, 180), Qt::LeftButton);
    const QTransform zoomed = view().zoomState().pictureToView();
    const QPointF cornerPixel = zoomed.inverted().map(QPointF(100, 120));
    // Kept in the fitted view's coordinates: over the same picture pixel there.
    QTest::keyClick(&view(), Qt::Key_0);
    const QRectF fittedRect = view().selectionMarker->selectedRect();
    QVERIFY(near(view().zoomState().pictureToView().map(cornerPixel), fittedRect.topLeft()));
    // And drawn over it when zoomed again and panned.
    QTest::keyClick(&view(), Qt::Key_1);
    drag(&view(), QPointF(300, 300), QPointF(310, 290), Qt::MiddleButton);
    const QPointF drawnAt = view().zoomState().fromFitted(fittedRect.topLeft());
    QVERIFY(near(drawnAt, view().zoomState().pictureToView().map(cornerPixel)));
    const QImage shot = renderView(view());
    const QPoint corner = drawnAt.toPoint();
    QCOMPARE(QColor(shot.pixel(corner + QPoint(1, 0))),
             QColor(view().selectionMarker->strokeColor));
}

void tst_ViewZoom::newPictureOpensFitted() {
    const QString second = writePicture("second.png", checkerboard(300, 200));
    QTest::keyClick(&view(), Qt::Key_1);
    QVERIFY(!view().zoomState().isFitted());
    controller->setSourceFileName(second, false);
    QVERIFY(view().zoomState().isFitted());
    QVERIFY(controller->itsZoomField->text().startsWith(QStringLiteral("Fit (")));
    // The arrow keys still step through the folder while zoomed.
    view().setFocus();
    QTest::keyClick(&view(), Qt::Key_1);
    QTest::keyClick(&view(), Qt::Key_Left);
    QCOMPARE(controller->itsSrcFileName->text(), picturePath);
    QVERIFY(view().zoomState().isFitted());
}

void tst_ViewZoom::digitsStillTypeIntoTheAngleField() {
    QLineEdit& angle = *controller->itsRotateText;
    angle.setFocus();
    QTRY_VERIFY(angle.hasFocus());
    angle.clear();
    QTest::keyClicks(&angle, QStringLiteral("10-"));
    QCOMPARE(angle.text(), QStringLiteral("10-"));
    QVERIFY(view().zoomState().isFitted());
}

void tst_ViewZoom::zoomKeepsTheAngle() {
    controller->itsRotateSlider->setValue(30);
    QCOMPARE(controller->m_rotate, 30);
    QTest::keyClick(&view(), Qt::Key_1);
    QCOMPARE(view().zoomState().zoomPercent(), 100.0);
    // A quarter of the way along the picture's diagonal, turned with it.
    const QTransform t = view().zoomState().pictureToView();
    const QLineF edge(t.map(QPointF(0, 0)), t.map(QPointF(100, 0)));
    QVERIFY(std::abs(edge.angle() - 330.0) < 0.01); // clockwise on screen
    QVERIFY(std::abs(edge.length() - 100.0) < 0.01);
    QTest::keyClick(&view(), Qt::Key_0);
    QVERIFY(view().zoomState().isFitted());
}

QTEST_MAIN(tst_ViewZoom)
#include "tst_ViewZoom.moc"
