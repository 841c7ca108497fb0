#include "app/Controller.h"
#include "view/wmfImageView.h"

#include <QLineEdit>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Counts the view's repaints, so that a missing redraw request fails the test.
class CountingView : public wmfImageView {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override {
        ++paints;
        wmfImageView::paintEvent(event);
    }
};

} // namespace

class tst_ControllerRotation : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void pictRectWithoutPicture();
    void pictRectWithPicture();
    void sliderSetsAngleAndField();
    void typedAngle_data();
    void typedAngle();
    void otherFieldsAreIgnored();
    void typedThenSlid();
    void monochromeToggles();

private:
    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<CountingView> view;
    std::unique_ptr<QSlider> slider;
    std::unique_ptr<QLineEdit> field;
};

void tst_ControllerRotation::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    controller = std::make_unique<Controller>();
    view = std::make_unique<CountingView>();
    view->resize(100, 100);
    view->mainController = controller.get();
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    slider = std::make_unique<QSlider>(Qt::Horizontal);
    slider->setRange(-180, 180);
    field = std::make_unique<QLineEdit>();
    field->setProperty("tag", 103);
    controller->itsWmfView = view.get();
    controller->itsRotateSlider = slider.get();
    controller->itsRotateText = field.get();
}

void tst_ControllerRotation::cleanup() {
    field.reset();
    slider.reset();
    view.reset();
    controller.reset();
    home.reset();
}

void tst_ControllerRotation::pictRectWithoutPicture() {
    controller->itsImgBounds = Rect{0, 0, 20, 30};
    Rect r{1, 2, 3, 4};
    QVERIFY(!controller->getPictRect(&r));
    QCOMPARE(r.top, int16_t(1));
    QCOMPARE(r.left, int16_t(2));
    QCOMPARE(r.bottom, int16_t(3));
    QCOMPARE(r.right, int16_t(4));
    QVERIFY(!controller->getPictRect(nullptr));
}

void tst_ControllerRotation::pictRectWithPicture() {
    controller->itsCGImage = QImage(30, 20, QImage::Format_ARGB32_Premultiplied);
    controller->itsImgBounds = Rect{0, 0, 20, 30};
    Rect r{1, 2, 3, 4};
    QVERIFY(controller->getPictRect(&r));
    QCOMPARE(r.top, int16_t(0));
    QCOMPARE(r.left, int16_t(0));
    QCOMPARE(r.bottom, int16_t(20));
    QCOMPARE(r.right, int16_t(30));
}

void tst_ControllerRotation::sliderSetsAngleAndField() {
    const int before = view->paints;
    slider->setValue(-45);
    controller->slideRotate(slider.get());
    QCOMPARE(controller->m_rotate, -45);
    QCOMPARE(controller->getRotation(), -45);
    QCOMPARE(field->text(), QStringLiteral("-45"));
    QTRY_VERIFY(view->paints > before);
}

void tst_ControllerRotation::typedAngle_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("angle");
    QTest::newRow("plain") << "45" << 45;
    QTest::newRow("full turns") << "720" << 720;
    QTest::newRow("negative") << "-30" << -30;
    QTest::newRow("plus sign") << "+15" << 15;
    QTest::newRow("letters") << "abc" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("fraction cut") << "12.9" << 12;
    QTest::newRow("negative fraction") << "-12.9" << -12;
    QTest::newRow("trailing text") << "30deg" << 30;
    QTest::newRow("leading blanks") << "  7" << 7;
    QTest::newRow("huge") << "99999999999999999999" << std::numeric_limits<int32_t>::max();
    QTest::newRow("huge negative")
        << "-99999999999999999999" << std::numeric_limits<int32_t>::min();
    QTest::newRow("int max") << "2147483647" << std::numeric_limits<int32_t>::max();
    QTest::newRow("int min") << "-2147483648" << std::numeric_limits<int32_t>::min();
    QTest::newRow("sign only") << "-" << 0;
}

void tst_ControllerRotation::typedAngle() {
    QFETCH(QString, text);
    QFETCH(int, angle);
    controller->m_rotate = 3;
    slider->setValue(10);
    const int before = view->paints;
    field->setText(text);
    controller->controlTextDidEndEditing(field.get());
    QCOMPARE(controller->m_rotate, angle);
    QCOMPARE(slider->value(), 10); // the slider stays where it was
    QTRY_VERIFY(view->paints > before);
}

void tst_ControllerRotation::otherFieldsAreIgnored() {
    QLineEdit other;
    other.setProperty("tag", 6);
    other.setText("90");
    controller->m_rotate = 5;
    controller->controlTextDidEndEditing(&other);
    QLineEdit untagged;
    untagged.setText("90");
    controller->controlTextDidEndEditing(&untagged);
    controller->controlTextDidEndEditing(nullptr);
    QCOMPARE(controller->m_rotate, 5);
}

void tst_ControllerRotation::typedThenSlid() {
    slider->setValue(20);
    controller->slideRotate(slider.get());
    field->setText("45");
    controller->controlTextDidEndEditing(field.get());
    QCOMPARE(controller->m_rotate, 45);
    QCOMPARE(slider->value(), 20);
    slider->setValue(-10);
    controller->slideRotate(slider.get());
    QCOMPARE(controller->m_rotate, -10);
    QCOMPARE(field->text(), QStringLiteral("-10"));
}

void tst_ControllerRotation::monochromeToggles() {
    QVERIFY(!controller->m_Monochrome);
    QAction item;
    item.setCheckable(true);
    controller->itsMenuItemMonochrome = &item;
    int before = view->paints;
    controller->monohrome(nullptr);
    QVERIFY(controller->m_Monochrome);
    controller->validateMenuItem(&item);
    QVERIFY(item.isChecked());
    QTRY_VERIFY(view->paints > before);
    before = view->paints;
    controller->monohrome(&item);
    QVERIFY(!controller->m_Monochrome);
    controller->validateMenuItem(&item);
    QVERIFY(!item.isChecked());
    QTRY_VERIFY(view->paints > before);
}

QTEST_MAIN(tst_ControllerRotation)
#include "tst_ControllerRotation.moc"
