#include "app/Controller.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool isRed(QRgb p) {
    return qRed(p) > 200 && qGreen(p) < 60 && qBlue(p) < 60;
}

QImage renderView(wmfImageView& view) {
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::green);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

} // namespace

// The view, the slider, the angle field and the grey-tone command in the real main window.
class tst_ViewInWindow : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void sliderTurnsThePicture();
    void typedAngleLeavesSlider();
    void greyToneCommand();

private:
    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
    QString picturePath;
};

void tst_ViewInWindow::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    controller = std::make_unique<Controller>();
    controller->skipSplash = true;
    controller->loadMainWindow();
    QVERIFY(controller->itsMainWindow && controller->itsWmfView);
    QVERIFY(controller->itsRotateSlider && controller->itsRotateText);
    controller->itsMainWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsMainWindow));
    picturePath = QDir(home->path()).filePath("wide.png");
    QImage picture(400, 200, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(picture.save(picturePath));
    controller->setSourceFileName(picturePath, false);
    QCOMPARE(controller->itsCGImage.size(), QSize(400, 200));
    controller->itsRotateSlider->setValue(0);
    controller->m_rotate = 0;
}

void tst_ViewInWindow::cleanup() {
    if (controller && controller->itsMainWindow)
        delete controller->itsMainWindow.data();
    controller.reset();
    home.reset();
}

void tst_ViewInWindow::sliderTurnsThePicture() {
    wmfImageView& view = *controller->itsWmfView;
    QSlider& slider = *controller->itsRotateSlider;
    slider.setFocus();
    QTest::keyClick(&slider, Qt::Key_PageUp); // one page step
    QCOMPARE(controller->m_rotate, slider.value());
    QVERIFY(controller->m_rotate != 0);
    QCOMPARE(controller->itsRotateText->text(), QString::number(slider.value()));
    slider.setValue(90);
    QCOMPARE(controller->m_rotate, 90);
    // Turned a quarter: the picture is now taller than wide, centred in the view.
    const QImage shot = renderView(view);
    const QPoint c(view.width() / 2, view.height() / 2);
    QVERIFY(isRed(shot.pixel(c)));
    int top = c.y(), left = c.x();
    while (top > 0 && isRed(shot.pixel(c.x(), top - 1)))
        --top;
    while (left > 0 && isRed(shot.pixel(left - 1, c.y())))
        --left;
    QVERIFY2(
        (c.y() - top) > (c.x() - left),
        qPrintable(
            QStringLiteral("half height %1, half width %2").arg(c.y() - top).arg(c.x() - left)));
}

void tst_ViewInWindow::typedAngleLeavesSlider() {
    QSlider& slider = *controller->itsRotateSlider;
    slider.setValue(20);
    QLineEdit& field = *controller->itsRotateText;
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, "45");
    QTest::keyClick(&field, Qt::Key_Return);
    QCOMPARE(controller->m_rotate, 45);
    QCOMPARE(slider.value(), 20);
    field.selectAll();
    QTest::keyClicks(&field, "abc");
    QTest::keyClick(&field, Qt::Key_Return);
    QCOMPARE(controller->m_rotate, 0);
}

void tst_ViewInWindow::greyToneCommand() {
    wmfImageView& view = *controller->itsWmfView;
    QAction& item = *controller->itsMenuItemMonochrome;
    item.trigger();
    QVERIFY(controller->m_Monochrome);
    const QPoint c(view.width() / 2, view.height() / 2);
    QCOMPARE(renderView(view).pixel(c), qRgb(76, 76, 76));
    item.trigger();
    QVERIFY(!controller->m_Monochrome);
    QCOMPARE(renderView(view).pixel(c), qRgb(255, 0, 0));
}

QTEST_MAIN(tst_ViewInWindow)
#include "tst_ViewInWindow.moc"
