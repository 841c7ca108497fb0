// View > Information in the real main window: the menu item and Ctrl+I, the panel following the
// arrow keys, the map link, and the panel's state kept for the next start.
#include "app/Controller.h"
#include "app/PrefDrawer.h"
#include "view/CameraPictures.h"
#include "view/InformationPanel.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMimeData>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

// Stands in for the web browser: takes the addresses QDesktopServices would open.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened.append(url); }
};

class tst_InformationPanel : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void hiddenAtFirstStart();
    void menuItemShowsAndHides();
    void ctrlIShowsAndHides();
    void ctrlIFromATextField();
    void showsTheCameraData();
    void followsTheArrowKeys();
    void followsAnOpenedFile();
    void followsADrop();
    void showsAFileThatWentAway();
    void hiddenPanelCatchesUpWhenShown();
    void mapLinkOpensTheBrowser();
    void hidingKeepsTheFittedView();
    void shownStateIsKeptForTheNextStart();

private:
    QString pathOf(const QString& name) const { return QDir(home->path()).filePath(name); }
    void startWindow();
    void showPanel();
    QDockWidget& dock() { return *controller->itsInformationDock; }
    InformationPanel& panel() { return *controller->itsInformationPanel; }
    wmfImageView& view() { return *controller->itsWmfView; }

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
};

void tst_InformationPanel::startWindow() {
    controller = std::make_unique<Controller>();
    controller->skipSplash = true;
    controller->loadMainWindow();
    QVERIFY(controller->itsMainWindow && controller->itsWmfView);
    QVERIFY(controller->itsInformationDock && controller->itsInformationPanel);
    QVERIFY(controller->itsMenuItemInformation);
    controller->itsMainWindow->resize(1000, 700);
    controller->itsMainWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsMainWindow));
}

void tst_InformationPanel::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    qputenv("XDG_CONFIG_HOME", QDir(home->path()).filePath(".config").toUtf8());
    QVERIFY(CameraPictures::writeCameraJpeg(pathOf("a.jpg"), 320, 240));
    QVERIFY(CameraPictures::gradient(200, 100).save(pathOf("b.png")));
    QVERIFY(CameraPictures::gradient(90, 60).save(pathOf("c.png")));
    startWindow();
    controller->setSourceFileName(pathOf("a.jpg"), false);
    view().setFocus();
    QTRY_VERIFY(view().hasFocus());
}

void tst_InformationPanel::cleanup() {
    if (controller && controller->itsMainWindow)
        delete controller->itsMainWindow.data();
    controller.reset();
    home.reset();
}

void tst_InformationPanel::showPanel() {
    if (!dock().isVisible())
        controller->itsMenuItemInformation->trigger();
    QVERIFY(dock().isVisible());
}

void tst_InformationPanel::hiddenAtFirstStart() {
    QVERIFY(!dock().isVisible());
    QVERIFY(controller->itsMenuItemInformation->isCheckable());
    QVERIFY(!controller->itsMenuItemInformation->isChecked());
    // Nothing read while hidden.
    QVERIFY(panel().shownPath().isEmpty());
}

void tst_InformationPanel::menuItemShowsAndHides() {
    QAction* item = controller->itsMenuItemInformation;
    QCOMPARE(item->text(), QStringLiteral("&Information"));
    QCOMPARE(item->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_I));
    item->trigger();
    QVERIFY(dock().isVisible());
    QVERIFY(item->isChecked());
    QCOMPARE(controller->itsMainWindow->dockWidgetArea(&dock()), Qt::RightDockWidgetArea);
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    item->trigger();
    QVERIFY(!dock().isVisible());
    QVERIFY(!item->isChecked());
}

void tst_InformationPanel::ctrlIShowsAndHides() {
    QTest::keyClick(&view(), Qt::Key_I, Qt::ControlModifier);
    QVERIFY(dock().isVisible());
    QVERIFY(controller->itsMenuItemInformation->isChecked());
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QTest::keyClick(&view(), Qt::Key_I, Qt::ControlModifier);
    QVERIFY(!dock().isVisible());
    QVERIFY(!controller->itsMenuItemInformation->isChecked());
}

void tst_InformationPanel::ctrlIFromATextField() {
    QLineEdit* angle = controller->itsRotateText;
    angle->setFocus();
    QTRY_VERIFY(angle->hasFocus());
    const QString before = angle->text();
    QTest::keyClick(angle, Qt::Key_I, Qt::ControlModifier);
    QVERIFY(dock().isVisible());
    QCOMPARE(angle->text(), before);
}

void tst_InformationPanel::showsTheCameraData() {
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QCOMPARE(panel().valueOf("Name"), QStringLiteral("a.jpg"));
    QCOMPARE(panel().valueOf("Format"), QStringLiteral("JPEG"));
    QVERIFY(panel().valueOf("Pixels").startsWith(QStringLiteral("320 × 240")));
    QCOMPARE(panel().valueOf("Make"), QStringLiteral("Canon"));
    QCOMPARE(panel().valueOf("Model"), QStringLiteral("Canon EOS 5D Mark IV"));
    QCOMPARE(panel().valueOf("Lens"), QStringLiteral("EF50mm f/1.4 USM"));
    QCOMPARE(panel().valueOf("ISO"), QStringLiteral("400"));
    QCOMPARE(panel().valueOf("Date taken"), QStringLiteral("2024-05-17 14:03:21"));
    QVERIFY(!panel().valueOf("Exposure").isEmpty());
    // The rows are real labels in the panel.
    auto* make = panel().findChild<QLabel*>(QStringLiteral("info:Make"));
    QVERIFY(make);
    QVERIFY(make->isVisible());
    QCOMPARE(make->text(), QStringLiteral("Canon"));
}

void tst_InformationPanel::followsTheArrowKeys() {
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QTest::keyClick(&view(), Qt::Key_Right);
    QCOMPARE(view().wmfPath(), pathOf("b.png"));
    QTRY_COMPARE(panel().shownPath(), pathOf("b.png"));
    QCOMPARE(panel().valueOf("Format"), QStringLiteral("PNG"));
    QVERIFY(panel().valueOf("Pixels").startsWith(QStringLiteral("200 × 100")));
    QVERIFY(panel().valueOf("Make").isEmpty()); // no camera rows for a file without EXIF
    QVERIFY(panel().mapLink().isEmpty());
    QVERIFY(!panel().findChild<QLabel*>(QStringLiteral("info:Make")));
    QTest::keyClick(&view(), Qt::Key_Right);
    QTRY_COMPARE(panel().shownPath(), pathOf("c.png"));
    QTest::keyClick(&view(), Qt::Key_Left);
    QTest::keyClick(&view(), Qt::Key_Left);
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QCOMPARE(panel().valueOf("Make"), QStringLiteral("Canon"));
}

void tst_InformationPanel::followsAnOpenedFile() {
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    controller->setSourceFileName(pathOf("c.png"), false);
    QTRY_COMPARE(panel().shownPath(), pathOf("c.png"));
    QVERIFY(panel().valueOf("Pixels").startsWith(QStringLiteral("90 × 60")));
}

void tst_InformationPanel::followsADrop() {
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(pathOf("b.png"))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view(), &drop);
    QTRY_COMPARE(panel().shownPath(), pathOf("b.png"));
    QCOMPARE(panel().valueOf("Format"), QStringLiteral("PNG"));
}

void tst_InformationPanel::showsAFileThatWentAway() {
    // The picture stays on screen after its file is removed by another program; the panel,
    // shown afterwards, says so instead of showing stale or no rows.
    QVERIFY(QFile::remove(pathOf("a.jpg")));
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    QCOMPARE(panel().valueOf("Name"), QStringLiteral("a.jpg"));
    QCOMPARE(panel().valueOf("File"), QStringLiteral("The file cannot be found."));
    QVERIFY(panel().valueOf("Make").isEmpty());
}

void tst_InformationPanel::hiddenPanelCatchesUpWhenShown() {
    QTest::keyClick(&view(), Qt::Key_Right);
    QTest::keyClick(&view(), Qt::Key_Right);
    QCOMPARE(view().wmfPath(), pathOf("c.png"));
    QVERIFY(panel().shownPath().isEmpty());
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("c.png"));
}

void tst_InformationPanel::mapLinkOpensTheBrowser() {
    UrlCatcher browser;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &browser, "open");
    showPanel();
    QTRY_COMPARE(panel().shownPath(), pathOf("a.jpg"));
    const QUrl expected(QStringLiteral("https://www.openstreetmap.org/?mlat=-33.85690"
                                       "&mlon=-151.21510#map=15/-33.85690/-151.21510"));
    QCOMPARE(panel().mapLink(), expected);
    auto* place = panel().findChild<QLabel*>(QStringLiteral("info:Location"));
    QVERIFY(place);
    QVERIFY(place->text().contains(QStringLiteral("33.85690° S, 151.21510° W")));
    // A click on the place, as the user would.
    dock().resize(dock().width(), 600);
    QTRY_VERIFY(place->isVisible() && place->width() > 0);
    QTest::mouseClick(place, Qt::LeftButton, Qt::NoModifier, QPoint(8, place->height() / 2));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(browser.opened, QList<QUrl>{expected});
}

void tst_InformationPanel::hidingKeepsTheFittedView() {
    // The preferences drawer slides open at start: the view's size is settled once it is open.
    QTRY_COMPARE(controller->itsPrefDrawer->state(), PrefDrawer::Open);
    QTest::qWait(50);
    const QSize alone = view().size();
    QVERIFY(view().zoomState().isFitted());
    const double fitScale = view().zoomState().fitScale();
    showPanel();
    QTRY_VERIFY(view().width() < alone.width()); // the panel takes room beside the picture
    QVERIFY(dock().width() >= 240);              // room for its rows
    controller->itsMenuItemInformation->trigger();
    QTRY_COMPARE(view().size(), alone);
    QVERIFY(view().zoomState().isFitted());
    QCOMPARE(view().zoomState().fitScale(), fitScale); // the picture as large as before
}

void tst_InformationPanel::shownStateIsKeptForTheNextStart() {
    showPanel();
    {
        QSettings stored(QDir(home->path()).filePath(".config/Ormidon/viewer.ini"),
                         QSettings::IniFormat);
        QCOMPARE(stored.value("information/shown").toBool(), true);
    }
    delete controller->itsMainWindow.data();
    controller.reset();
    startWindow();
    QVERIFY(dock().isVisible());
    QVERIFY(controller->itsMenuItemInformation->isChecked());
    controller->itsMenuItemInformation->trigger();
    delete controller->itsMainWindow.data();
    controller.reset();
    startWindow();
    QVERIFY(!dock().isVisible());
}

QTEST_MAIN(tst_InformationPanel)
#include "tst_InformationPanel.moc"
