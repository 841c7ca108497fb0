// Where the keyboard is in the real main window: the main view takes it at launch and each
// time a picture opens (open panel, drop, hand-over, Previous/Next), so the arrow keys step
// through the folder; the tab bar keeps its keys once the user gives it the keyboard; Tab and
// Shift+Tab still walk the controls. Keys are sent to the window, as the system sends them, and
// reach whichever control has the keyboard.

#include "app/Controller.h"
#include "app/Launch.h"
#include "app/PrefDrawer.h"
#include "view/wmfImageView.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QMainWindow>
#include <QMimeData>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <memory>

class tst_WindowKeyboard : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir pictures;
    std::unique_ptr<Controller> c;

    QString picture(const QString& name) const { return pictures.path() + u'/' + name; }
    QString title() const { return c->window()->windowTitle(); }
    QWindow* handle() const { return c->window()->windowHandle(); }
    QWidget* focus() const { return QApplication::focusWidget(); }
    QWidget* view() const { return c->itsWmfView; }

    // Launches as the program does, with the files named on the command line.
    void launch(const QStringList& files) {
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        launchController(*c, files);
        // The drawer with the destination field slides open at start-up.
        QTRY_COMPARE(c->itsPrefDrawer->state(), PrefDrawer::Open);
        QVERIFY(QTest::qWaitForWindowActive(c->window()));
    }

    // The user clicks into a field: the keyboard leaves the view.
    void clickInto(QWidget* widget) {
        QTest::mouseClick(widget, Qt::LeftButton);
        QCOMPARE(focus(), widget);
    }

    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(handle(), key, modifiers);
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && pictures.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        QDir(home.path() + "/Library/Preferences").removeRecursively();
        for (const char* name : {"a.png", "b.png", "c.png"}) {
            QImage image(40, 30, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            QVERIFY(image.save(picture(name)));
        }
    }

    void cleanup() {
        if (c && c->window())
            c->closeController();
        c.reset();
    }

    void rightRightAfterLaunchShowsTheNextImage() {
        launch({picture("a.png")});
        QCOMPARE(title(), QStringLiteral("Ormidon: a.png"));
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Right);
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        QCOMPARE(c->_tabView->currentIndex(), 0); // the "Image" tab stays
        pressKey(Qt::Key_Down);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
        pressKey(Qt::Key_Up);
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        pressKey(Qt::Key_Left);
        QCOMPARE(title(), QStringLiteral("Ormidon: a.png"));
    }

    void rightAfterLaunchWithTheSavedSource() {
        QDir().mkpath(home.path() + "/Library/Preferences");
        QFile pref(home.path() + "/Library/Preferences/zel.pref");
        QVERIFY(pref.open(QIODevice::WriteOnly));
        pref.write(
            QStringLiteral("{\n    srcLocation = \"%1\";\n}\n").arg(picture("b.png")).toUtf8());
        pref.close();
        launch({});
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Right);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
    }

    void launchWithNothingToShowStillGivesTheViewTheKeyboard() {
        launch({});
        QCOMPARE(focus(), view());
    }

    void openPanelGivesTheViewTheKeyboard() {
        launch({picture("a.png")});
        clickInto(c->itsRotateText);
        c->openImage(c->itsOpenButton);
        auto* panel = c->window()->findChild<QFileDialog*>();
        QVERIFY(panel);
        QTRY_VERIFY(panel->isVisible());
        panel->selectFile(picture("b.png"));
        QMetaObject::invokeMethod(panel, "accept");
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        QTRY_COMPARE(focus(), view());
        pressKey(Qt::Key_Right);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
    }

    void dropGivesTheViewTheKeyboard() {
        launch({picture("a.png")});
        clickInto(c->itsDstFileName);
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(picture("c.png"))});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton,
                              Qt::NoModifier);
        QApplication::sendEvent(view(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view(), &drop);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Left);
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
    }

    void handOverGivesTheViewTheKeyboard() {
        launch({picture("a.png")});
        clickInto(c->itsRotateText);
        openHandedOverFiles(*c, {picture("b.png")});
        QCOMPARE(c->itsSrcFileName->text(), picture("b.png")); // the title stays as it was
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Right);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
    }

    void previousAndNextButtonsGiveTheViewTheKeyboard() {
        launch({picture("a.png")});
        QTest::mouseClick(c->itsNext, Qt::LeftButton);
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Right);
        QCOMPARE(title(), QStringLiteral("Ormidon: c.png"));
        QTest::mouseClick(c->itsPrev, Qt::LeftButton);
        QCOMPARE(title(), QStringLiteral("Ormidon: b.png"));
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Left);
        QCOMPARE(title(), QStringLiteral("Ormidon: a.png"));
    }

    void theTabBarKeepsItsKeysOnceFocused() {
        launch({picture("a.png")});
        QTabBar* tabs = c->_tabView->tabBar();
        tabs->setFocus(Qt::TabFocusReason);
        QCOMPARE(focus(), tabs);
        pressKey(Qt::Key_Right);
        QCOMPARE(c->_tabView->currentIndex(), 1); // "Image List"
        QCOMPARE(title(), QStringLiteral("Ormidon: a.png"));
        pressKey(Qt::Key_Left);
        QCOMPARE(c->_tabView->currentIndex(), 0);
    }

    void tabAndShiftTabStillWalkTheControls() {
        launch({picture("a.png")});
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Tab);
        QWidget* next = focus();
        QVERIFY(next && next != view());
        pressKey(Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(focus(), view());
        pressKey(Qt::Key_Backtab, Qt::ShiftModifier);
        QVERIFY(focus() != view());
    }

    void anImageOpenedWhileTheListIsShownLeavesTheKeyboard() {
        launch({picture("a.png")});
        c->_tabView->setCurrentIndex(1);
        clickInto(c->itsDstFileName);
        openHandedOverFiles(*c, {picture("b.png")});
        QCOMPARE(c->itsSrcFileName->text(), picture("b.png"));
        QCOMPARE(focus(), static_cast<QWidget*>(c->itsDstFileName));
    }
};

QTEST_MAIN(tst_WindowKeyboard)
#include "tst_WindowKeyboard.moc"
