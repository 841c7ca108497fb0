#include "app/Controller.h"
#include "view/CropMarker.h"
#include "view/wmfImageView.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

namespace {

const QRgb kBackground = qRgb(0, 255, 0);

bool isRed(QRgb p) {
    return qRed(p) > 200 && qGreen(p) < 60 && qBlue(p) < 60;
}
bool isBlue(QRgb p) {
    return qBlue(p) > 200 && qRed(p) < 60 && qGreen(p) < 60;
}
bool isBackground(QRgb p) {
    return qGreen(p) > 200 && qRed(p) < 60 && qBlue(p) < 60;
}

QImage filled(int w, int h, const QColor& colour) {
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

void setPicture(Controller& controller, const QImage& picture) {
    controller.itsCGImage = picture;
    controller.itsImgBounds = Rect{0, 0, int16_t(picture.height()), int16_t(picture.width())};
}

// The view's own drawing over a plain background, as paintEvent draws it.
QImage renderView(wmfImageView& view) {
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(kBackground);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

// Receives what the view passes on to its window.
class KeyRecorder : public QWidget {
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys << event->key(); }
};

} // namespace

class tst_wmfImageView : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void fitsWideAtZero();
    void fitsWideAtNinety();
    void positiveAngleTurnsClockwise();
    void fullTurnsDrawLikeZero();
    void smallPictureIsEnlarged();
    void degeneratePictureDrawsNothing();
    void noPictureDrawsOwnImage();
    void greyTones();
    void largePictureFromScaledCopy();
    void resizeRefits();
    void arrowKeys_data();
    void arrowKeys();
    void otherKeysReachTheWindow();
    void arrowsWithoutControllerDoNothing();
    void dropOpensFirstFileOnly();
    void dragEnterNeedsUrls();
    void mouseSelects();
    void continuousDragNotifies();
    void markerIsDrawn();
    void pathAndCentre();
    void rotateAboutCentre();

private:
    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<KeyRecorder> window;
    wmfImageView* view = nullptr;
    std::unique_ptr<QLineEdit> source;
};

void tst_wmfImageView::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    folder = std::make_unique<QTemporaryDir>();
    controller = std::make_unique<Controller>();
    window = std::make_unique<KeyRecorder>();
    auto* layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    view = new wmfImageView(window.get());
    layout->addWidget(view);
    view->mainController = controller.get();
    controller->itsWmfView = view;
    source = std::make_unique<QLineEdit>();
    controller->itsSrcFileName = source.get();
    window->resize(300, 300);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QCOMPARE(view->size(), QSize(300, 300));
}

void tst_wmfImageView::cleanup() {
    window.reset();
    view = nullptr;
    source.reset();
    controller.reset();
    folder.reset();
    home.reset();
}

void tst_wmfImageView::fitsWideAtZero() {
    setPicture(*controller, filled(400, 200, Qt::red));
    const QImage shot = renderView(*view);
    for (int x : {0, 150, 299}) {
        QVERIFY(isBackground(shot.pixel(x, 74)));
        QVERIFY(isRed(shot.pixel(x, 75)));
        QVERIFY(isRed(shot.pixel(x, 224)));
        QVERIFY(isBackground(shot.pixel(x, 225)));
    }
}

void tst_wmfImageView::fitsWideAtNinety() {
    setPicture(*controller, filled(400, 200, Qt::red));
    controller->m_rotate = 90;
    const QImage shot = renderView(*view);
    // 150 wide and 300 high, centred: columns 75 to 224.
    for (int y : {1, 150, 298}) {
        QVERIFY(isBackground(shot.pixel(73, y)));
        QVERIFY(isRed(shot.pixel(76, y)));
        QVERIFY(isRed(shot.pixel(223, y)));
        QVERIFY(isBackground(shot.pixel(226, y)));
    }
}

void tst_wmfImageView::positiveAngleTurnsClockwise() {
    QImage picture = filled(400, 200, Qt::red);
    QPainter(&picture).fillRect(200, 0, 200, 200, Qt::blue); // right half blue
    setPicture(*controller, picture);
    controller->m_rotate = 90;
    QImage shot = renderView(*view);
    QVERIFY(isRed(shot.pixel(150, 40)));   // the left half went up
    QVERIFY(isBlue(shot.pixel(150, 260))); // the right half went down
    controller->m_rotate = -90;
    shot = renderView(*view);
    QVERIFY(isBlue(shot.pixel(150, 40)));
    QVERIFY(isRed(shot.pixel(150, 260)));
}

void tst_wmfImageView::fullTurnsDrawLikeZero() {
    setPicture(*controller, filled(400, 200, Qt::red));
    controller->m_rotate = 720;
    const QImage shot = renderView(*view);
    QVERIFY(isBackground(shot.pixel(150, 72)));
    QVERIFY(isRed(shot.pixel(150, 77)));
    QVERIFY(isRed(shot.pixel(150, 222)));
    QVERIFY(isBackground(shot.pixel(150, 227)));
}

void tst_wmfImageView::smallPictureIsEnlarged() {
    setPicture(*controller, filled(10, 5, Qt::red));
    const QImage shot = renderView(*view);
    QVERIFY(isRed(shot.pixel(0, 75)));
    QVERIFY(isRed(shot.pixel(299, 224)));
    QVERIFY(isBackground(shot.pixel(150, 74)));
    QVERIFY(isBackground(shot.pixel(150, 225)));
}

void tst_wmfImageView::degeneratePictureDrawsNothing() {
    controller->itsCGImage = filled(40, 20, Qt::red);
    controller->itsImgBounds = Rect{0, 0, 20, 0}; // no width
    QImage shot = renderView(*view);
    QVERIFY(isBackground(shot.pixel(150, 150)));
    controller->itsImgBounds = Rect{0, 0, 0, 0};
    controller->m_rotate = 45;
    shot = renderView(*view);
    QVERIFY(isBackground(shot.pixel(150, 150)));
    setPicture(*controller, filled(40, 20, Qt::red));
    QImage canvas(10, 10, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(kBackground);
    QPainter painter(&canvas);
    view->drawRect(painter, QRectF()); // no area to fit into
    view->drawRect(painter, QRectF(0, 0, 0, 10));
    painter.end();
    QCOMPARE(canvas.pixel(5, 5), kBackground);
}

void tst_wmfImageView::noPictureDrawsOwnImage() {
    view->setImage(filled(100, 50, Qt::blue));
    QImage shot = renderView(*view);
    QVERIFY(isBlue(shot.pixel(100, 125))); // at its own size, centred
    QVERIFY(isBlue(shot.pixel(199, 174)));
    QVERIFY(isBackground(shot.pixel(99, 125)));
    QVERIFY(isBackground(shot.pixel(150, 175)));
    setPicture(*controller, filled(400, 200, Qt::red)); // the controller's picture comes first
    shot = renderView(*view);
    QVERIFY(isRed(shot.pixel(100, 125)));
    view->mainController = nullptr;
    shot = renderView(*view);
    QVERIFY(isBlue(shot.pixel(150, 150)));
}

void tst_wmfImageView::greyTones() {
    setPicture(*controller, filled(400, 200, Qt::red));
    controller->m_Monochrome = true;
    QImage shot = renderView(*view);
    QCOMPARE(shot.pixel(150, 150), qRgb(76, 76, 76));
    view->monochromeImage(); // already made for this picture: nothing changes
    view->killMonochromeImage();
    shot = renderView(*view);
    QCOMPARE(shot.pixel(150, 150), qRgb(76, 76, 76));
    controller->m_Monochrome = false;
    shot = renderView(*view);
    QCOMPARE(shot.pixel(150, 150), qRgb(255, 0, 0));
    setPicture(*controller, filled(400, 200, Qt::green)); // a new picture is greyed anew
    controller->m_Monochrome = true;
    shot = renderView(*view);
    QCOMPARE(shot.pixel(150, 150), qRgb(150, 150, 150));
}

void tst_wmfImageView::largePictureFromScaledCopy() {
    // Far larger than the view: drawn from the scaled copy, rebuilt when the picture changes.
    setPicture(*controller, filled(3000, 1500, Qt::red));
    QImage shot = renderView(*view);
    QVERIFY(isBackground(shot.pixel(150, 73)));
    QVERIFY(isRed(shot.pixel(150, 76)));
    QVERIFY(isRed(shot.pixel(150, 223)));
    QVERIFY(isBackground(shot.pixel(150, 226)));
    setPicture(*controller, filled(3000, 1500, Qt::blue));
    shot = renderView(*view);
    QVERIFY(isBlue(shot.pixel(150, 150)));
    controller->m_Monochrome = true;
    shot = renderView(*view);
    QCOMPARE(shot.pixel(150, 150), qRgb(29, 29, 29));
    controller->m_Monochrome = false;
    controller->m_rotate = 90;
    shot = renderView(*view);
    QVERIFY(isBlue(shot.pixel(150, 150)));
    QVERIFY(isBackground(shot.pixel(73, 150)));
    QVERIFY(isBlue(shot.pixel(76, 150)));
}

void tst_wmfImageView::resizeRefits() {
    setPicture(*controller, filled(4000, 2000, Qt::red));
    renderView(*view);
    window->resize(600, 600);
    QTRY_COMPARE(view->size(), QSize(600, 600));
    const QImage shot = renderView(*view);
    QVERIFY(isBackground(shot.pixel(300, 148)));
    QVERIFY(isRed(shot.pixel(300, 152)));
    QVERIFY(isRed(shot.pixel(300, 447)));
    QVERIFY(isBackground(shot.pixel(300, 451)));
}

void tst_wmfImageView::arrowKeys_data() {
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("left") << int(Qt::Key_Left) << "a.png";
    QTest::newRow("up") << int(Qt::Key_Up) << "a.png";
    QTest::newRow("right") << int(Qt::Key_Right) << "c.png";
    QTest::newRow("down") << int(Qt::Key_Down) << "c.png";
}

void tst_wmfImageView::arrowKeys() {
    QFETCH(int, key);
    QFETCH(QString, expected);
    const QDir dir(folder->path());
    for (const QString& name : {"a.png", "b.png", "c.png"})
        QVERIFY(filled(8, 4, Qt::red).save(dir.filePath(name)));
    source->setText(dir.filePath("b.png"));
    view->setFocus();
    QTest::keyClick(view, Qt::Key(key));
    QCOMPARE(source->text(), dir.filePath(expected));
    QCOMPARE(controller->itsCGImage.size(), QSize(8, 4));
    QVERIFY(window->keys.isEmpty()); // the view keeps the arrows
}

void tst_wmfImageView::otherKeysReachTheWindow() {
    source->setText(QString());
    QTest::keyClick(view, Qt::Key_A);
    QTest::keyClick(view, Qt::Key_M, Qt::ControlModifier);
    QCOMPARE(window->keys.value(0), int(Qt::Key_A));
    QVERIFY(window->keys.contains(Qt::Key_M)); // after the Control key itself
}

void tst_wmfImageView::arrowsWithoutControllerDoNothing() {
    view->mainController = nullptr;
    QTest::keyClick(view, Qt::Key_Left);
    QTest::keyClick(view, Qt::Key_Down);
    QVERIFY(window->keys.isEmpty());
    QTest::keyClick(view, Qt::Key_Space);
    QCOMPARE(window->keys, QList<int>{Qt::Key_Space});
}

void tst_wmfImageView::dropOpensFirstFileOnly() {
    const QDir dir(folder->path());
    QVERIFY(filled(11, 7, Qt::red).save(dir.filePath("first.png")));
    QVERIFY(filled(13, 9, Qt::red).save(dir.filePath("second.png")));
    QVERIFY(filled(15, 3, Qt::red).save(dir.filePath("third.png")));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(dir.filePath("first.png")),
                  QUrl::fromLocalFile(dir.filePath("second.png")),
                  QUrl::fromLocalFile(dir.filePath("third.png"))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &drop);
    QCOMPARE(source->text(), dir.filePath("first.png"));
    QCOMPARE(controller->itsCGImage.size(), QSize(11, 7));
    QCOMPARE(view->wmfPath(), dir.filePath("first.png"));
}

void tst_wmfImageView::dragEnterNeedsUrls() {
    QMimeData text;
    text.setText("not a file");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &enter);
    QVERIFY(!enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &drop);
    QVERIFY(source->text().isEmpty());
    QVERIFY(controller->itsCGImage.isNull());
}

void tst_wmfImageView::mouseSelects() {
    QSignalSpy spy(view, &wmfImageView::ImageSelectionChanged);
    QVERIFY(!view->isContinuous());
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(view, QPoint(20, 25));
    QTest::mouseMove(view, QPoint(4, 30));
    QCOMPARE(spy.count(), 0); // not continuous: drags don't notify
    QCOMPARE(view->selectionMarker->selectedRect(), QRectF(4, 10, 6, 20));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(4, 30));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<wmfImageView*>(), view);
    QCOMPARE(view->selectionMarker->selectedRect(), QRectF(4, 10, 6, 20));
    QCOMPARE(view->selectionMarker->trackingMode, int32_t(CropMarker::Idle));
    // A press inside moves the rectangle.
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(5, 12));
    QTest::mouseMove(view, QPoint(10, 9));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(10, 9));
    QCOMPARE(view->selectionMarker->selectedRect(), QRectF(9, 7, 6, 20));
    QCOMPARE(spy.count(), 2);
}

void tst_wmfImageView::continuousDragNotifies() {
    view->setContinuous(true);
    QSignalSpy spy(view, &wmfImageView::ImageSelectionChanged);
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseMove(view, QPoint(60, 60));
    QTest::mouseMove(view, QPoint(70, 70));
    QCOMPARE(spy.count(), 2);
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(70, 70));
    QCOMPARE(spy.count(), 3);
}

void tst_wmfImageView::markerIsDrawn() {
    setPicture(*controller, filled(400, 200, Qt::red));
    controller->m_rotate = 30; // the marker is not turned with the picture
    view->selectionMarker->setSelectedRect(QRectF(100, 100, 50, 40));
    QImage shot = renderView(*view);
    QCOMPARE(shot.pixel(100, 100), qRgb(0, 0, 255));
    QCOMPARE(shot.pixel(149, 139), qRgb(0, 0, 255));
    QVERIFY(isRed(shot.pixel(120, 120)));
    view->takeSelectionColorFrom(QColor(Qt::yellow));
    shot = renderView(*view);
    QCOMPARE(shot.pixel(100, 100), qRgb(255, 255, 0));
}

void tst_wmfImageView::pathAndCentre() {
    view->setWmfPath("/tmp/x.png");
    QCOMPARE(view->wmfPath(), QStringLiteral("/tmp/x.png"));
    view->setWmfPath(QString());
    QVERIFY(view->wmfPath().isNull());
    view->setWmfPath("/tmp/y.png");
    view->clear();
    QVERIFY(view->wmfPath().isNull());
    QCOMPARE(wmfImageView::centerRect(QRectF(5, 5, 300, 150), QRectF(0, 0, 300, 300)),
             QRectF(0, 75, 300, 150));
}

void tst_wmfImageView::rotateAboutCentre() {
    QImage canvas(300, 300, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&canvas);
    view->rotate(painter, 0);
    QVERIFY(painter.transform().isIdentity());
    view->rotate(painter, 90);
    const QTransform t = painter.transform();
    const QPointF centre = t.map(QPointF(150, 150));
    QVERIFY(qAbs(centre.x() - 150) < 1e-3 && qAbs(centre.y() - 150) < 1e-3);
    // Counter-clockwise on screen for a positive angle: right of the centre goes above it.
    const QPointF right = t.map(QPointF(250, 150));
    QVERIFY(qAbs(right.x() - 150) < 1e-3);
    QVERIFY(qAbs(right.y() - 50) < 1e-3);
}

QTEST_MAIN(tst_wmfImageView)
#include "tst_wmfImageView.moc"
