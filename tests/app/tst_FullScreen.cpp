#include "app/Controller.h"
#include "app/FullScreenWindow.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>

namespace {

QImage renderView(wmfImageView& view) {
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

QImage filled(int w, int h, const QColor& colour) {
    QImage picture(w, h, QImage::Format_RGB32);
    picture.fill(colour);
    return picture;
}

} // namespace

// View > Full Screen and View > Slideshow in the real main window.
class tst_FullScreen : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void f11ShowsThePictureAloneAndEscapeLeaves();
    void menuItemTogglesFullScreen();
    void arrowsStepInFullScreen();
    void zoomKeysWorkInFullScreen();
    void slideshowStepsInFolderOrderAndGoesRound();
    void anyKeyStopsTheSlideshow();
    void slideSecondsAreKept();
    void trashAndUndoWorkInFullScreen();
    void shortcutKeysOnlyStopTheSlideshow();

private:
    void startWindow();
    QString pathOf(const QString& name) const { return QDir(home->path()).filePath(name); }

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
};

void tst_FullScreen::startWindow() {
    controller = std::make_unique<Controller>();
    controller->skipSplash = true;
    controller->loadMainWindow();
    QVERIFY(controller->itsMainWindow && controller->itsWmfView);
    controller->itsMainWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsMainWindow));
}

void tst_FullScreen::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    qputenv("XDG_CONFIG_HOME", QDir(home->path()).filePath(".config").toUtf8());
    qputenv("XDG_DATA_HOME", QDir(home->path()).filePath(".local/share").toUtf8());
    QVERIFY(filled(400, 200, Qt::red).save(pathOf("a.png")));
    QVERIFY(filled(200, 400, Qt::blue).save(pathOf("b.png")));
    QVERIFY(filled(300, 300, Qt::yellow).save(pathOf("c.png")));
    startWindow();
    controller->setSourceFileName(pathOf("a.png"), false);
    controller->itsWmfView->setFocus();
    QTRY_VERIFY(controller->itsWmfView->hasFocus());
}

void tst_FullScreen::cleanup() {
    if (controller && controller->itsFullScreen)
        delete controller->itsFullScreen.data();
    if (controller && controller->itsMainWindow)
        delete controller->itsMainWindow.data();
    controller.reset();
    home.reset();
}

void tst_FullScreen::f11ShowsThePictureAloneAndEscapeLeaves() {
    QTest::keyClick(controller->itsWmfView, Qt::Key_F11);
    QVERIFY(controller->itsFullScreen);
    FullScreenWindow& full = *controller->itsFullScreen;
    QVERIFY(QTest::qWaitForWindowExposed(&full));
    QVERIFY(full.isFullScreen());
    QCOMPARE(controller->activeImageView(), full.view());
    QCOMPARE(full.view()->size(), full.size()); // nothing but the picture
    // The whole window drawn: the picture in the middle on black.
    QImage shot(full.size(), QImage::Format_ARGB32_Premultiplied);
    shot.fill(Qt::green);
    full.render(&shot);
    QCOMPARE(QColor(shot.pixel(shot.width() / 2, shot.height() / 2)), QColor(Qt::red));
    const QPoint corner(2, 2);
    const bool wideScreen = double(shot.width()) / shot.height() > 2.0;
    const QPoint outside = wideScreen ? QPoint(2, shot.height() / 2) : corner;
    QCOMPARE(QColor(shot.pixel(outside)), QColor(Qt::black));
    QTest::keyClick(full.view(), Qt::Key_Escape);
    QTRY_VERIFY(!controller->itsFullScreen);
    QCOMPARE(controller->activeImageView(), controller->itsWmfView.data());
}

void tst_FullScreen::menuItemTogglesFullScreen() {
    QVERIFY(controller->itsMenuItemFullScreen);
    QCOMPARE(controller->itsMenuItemFullScreen->shortcut(), QKeySequence(Qt::Key_F11));
    controller->itsMenuItemFullScreen->trigger();
    QVERIFY(controller->itsFullScreen && controller->itsFullScreen->isFullScreen());
    // F11 again, from the full-screen picture, leaves.
    QTest::keyClick(controller->itsFullScreen->view(), Qt::Key_F11);
    QTRY_VERIFY(!controller->itsFullScreen);
}

void tst_FullScreen::arrowsStepInFullScreen() {
    controller->itsMenuItemFullScreen->trigger();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsFullScreen));
    wmfImageView* view = controller->itsFullScreen->view();
    QCOMPARE(view->wmfPath(), pathOf("a.png"));
    QTest::keyClick(view, Qt::Key_Right);
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("b.png"));
    QCOMPARE(view->wmfPath(), pathOf("b.png"));
    const QImage shot = renderView(*view);
    QCOMPARE(QColor(shot.pixel(view->width() / 2, view->height() / 2)), QColor(Qt::blue));
    QTest::keyClick(view, Qt::Key_Left);
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("a.png"));
}

void tst_FullScreen::zoomKeysWorkInFullScreen() {
    controller->itsMenuItemFullScreen->trigger();
    wmfImageView* view = controller->itsFullScreen->view();
    view->setFocus();
    QTRY_VERIFY(view->hasFocus());
    QTest::keyClick(view, Qt::Key_1);
    QCOMPARE(view->zoomState().zoomPercent(), 100.0);
    QVERIFY(controller->itsWmfView->zoomState().isFitted()); // the window's view is left as it was
    QTest::keyClick(view, Qt::Key_0);
    QVERIFY(view->zoomState().isFitted());
}

void tst_FullScreen::slideshowStepsInFolderOrderAndGoesRound() {
    QVERIFY(controller->itsSlideSeconds && controller->itsMenuItemSlideshow);
    QCOMPARE(controller->itsSlideSeconds->value(), 4);
    controller->setSourceFileName(pathOf("b.png"), false);
    controller->itsSlideSeconds->setValue(1);
    controller->itsMenuItemSlideshow->trigger();
    QVERIFY(controller->itsFullScreen && controller->itsFullScreen->isSlideshowRunning());
    QCOMPARE(controller->itsFullScreen->slideshowTimer().interval(), 1000);
    QTRY_COMPARE_WITH_TIMEOUT(controller->itsSrcFileName->text(), pathOf("c.png"), 3000);
    // From the last picture round to the first.
    QTRY_COMPARE_WITH_TIMEOUT(controller->itsSrcFileName->text(), pathOf("a.png"), 3000);
    QCOMPARE(controller->itsFullScreen->view()->wmfPath(), pathOf("a.png"));
}

void tst_FullScreen::anyKeyStopsTheSlideshow() {
    controller->itsSlideSeconds->setValue(1);
    controller->itsMenuItemSlideshow->trigger();
    QVERIFY(controller->itsFullScreen->isSlideshowRunning());
    // A key that means nothing else, and an arrow: both only stop.
    QTest::keyClick(controller->itsFullScreen->view(), Qt::Key_Right);
    QTRY_VERIFY(!controller->itsFullScreen);
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("a.png"));
    controller->itsMenuItemSlideshow->trigger();
    QTest::keyClick(controller->itsFullScreen->view(), Qt::Key_Q);
    QTRY_VERIFY(!controller->itsFullScreen);
    QTest::qWait(1300);
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("a.png")); // no step after the stop
}

void tst_FullScreen::slideSecondsAreKept() {
    controller->itsSlideSeconds->setValue(9);
    delete controller->itsMainWindow.data();
    controller.reset();
    startWindow();
    QCOMPARE(controller->itsSlideSeconds->value(), 9);
}


void tst_FullScreen::trashAndUndoWorkInFullScreen() {
    controller->itsMenuItemFullScreen->trigger();
    wmfImageView* view = controller->itsFullScreen->view();
    view->setFocus();
    QTRY_VERIFY(view->hasFocus());
    QTest::keyClick(view, Qt::Key_Delete);
    QVERIFY(!QFile::exists(pathOf("a.png")));
    QVERIFY(QFile::exists(pathOf(".local/share/Trash/files/a.png")));
    QVERIFY(QFile::exists(pathOf(".local/share/Trash/info/a.png.trashinfo")));
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("b.png"));
    QTRY_COMPARE(view->wmfPath(), pathOf("b.png")); // full screen follows
    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(QFile::exists(pathOf("a.png")));
    QCOMPARE(controller->itsSrcFileName->text(), pathOf("a.png"));
    QVERIFY(controller->itsFullScreen); // still full screen
}

void tst_FullScreen::shortcutKeysOnlyStopTheSlideshow() {
    controller->itsSlideSeconds->setValue(60);
    controller->itsMenuItemSlideshow->trigger();
    QVERIFY(controller->itsFullScreen->isSlideshowRunning());
    QTest::keyClick(controller->itsFullScreen->view(), Qt::Key_Delete);
    QTRY_VERIFY(!controller->itsFullScreen);
    QVERIFY(QFile::exists(pathOf("a.png"))); // stopped, not trashed
    controller->itsMenuItemSlideshow->trigger();
    QTest::keyClick(controller->itsFullScreen->view(), Qt::Key_1); // the zoom's key
    QTRY_VERIFY(!controller->itsFullScreen);
    QVERIFY(controller->itsWmfView->zoomState().isFitted());
}
QTEST_MAIN(tst_FullScreen)
#include "tst_FullScreen.moc"
