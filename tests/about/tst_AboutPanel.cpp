// The about panel: its window, picture, shape and version line, and its modal loop driven by
// synthetic clicks and keys on a clock the test runs (one test only waits in real time).

#include "AboutTestSupport.h"

#include "about/AboutLoop.h"
#include "about/AboutPanel.h"
#include "about/LinkTextView.h"
#include "about/VersionTextField.h"
#include "about/aboutView.h"
#include "app/Controller.h"

#include <QAction>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

// A point of the panel given as the picture was drawn: origin at the lower left.
QPoint lowerLeft(const QWidget* panel, int x, int y) {
    return QPoint(x, panel->height() - y);
}

// Counts the presses that reach a widget.
struct PressCounter : QObject {
    int presses = 0;
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress)
            ++presses;
        return false;
    }
};

} // namespace

class tst_AboutPanel : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    std::unique_ptr<Controller> controller;
    AboutPanel* panel = nullptr;

    // Runs the panel's loop; `during` runs once inside it, from the event loop.
    void runAbout(std::function<void()> during = {}) {
        if (during)
            QTimer::singleShot(0, controller.get(), during);
        controller->runAbout(nullptr);
    }

    void clickWindowAt(QPoint point) {
        QTest::mouseClick(panel->windowHandle(), Qt::LeftButton, {}, point);
    }

private slots:
    void initTestCase() {
        initProgramResources();
        QCoreApplication::setApplicationVersion(ORMIDON_VERSION);
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
    }

    void init() {
        controller = std::make_unique<Controller>();
        controller->skipSplash = true;
        controller->loadMainWindow();
        controller->stopScrollingAnimation();
        controller->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
        panel = qobject_cast<AboutPanel*>(controller->itsAboutWindow.data());
        QVERIFY(panel);
    }

    void cleanup() {
        AboutLoop::timing() = AboutLoop::Timing();
        controller.reset();
    }

    void panelIsAlwaysBorderlessAndKeepsItsContentRect() {
        const Qt::WindowFlags asked = Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                                      Qt::WindowMinMaxButtonsHint;
        AboutPanel other(QRect(30, 40, 300, 200), asked);
        QCOMPARE(other.geometry(), QRect(30, 40, 300, 200));
        QVERIFY(other.windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(!other.windowFlags().testFlag(Qt::WindowTitleHint));
        QVERIFY(!other.windowFlags().testFlag(Qt::WindowCloseButtonHint));
        QCOMPARE(other.windowFlags(), AboutPanel::kStyle);
        QVERIFY(other.testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(other.windowOpacity(), 1.0);
        QVERIFY(other.canBecomeKeyWindow());
        QVERIFY(panel->windowFlags().testFlag(Qt::FramelessWindowHint));
    }

    void panelIsShapedByThePicturesTransparency() {
        const QImage splash(":/splash.png");
        QVERIFY(!splash.isNull());
        QVERIFY(splash.hasAlphaChannel());
        QCOMPARE(panel->size(), splash.size());
        aboutView* view = panel->contentView();
        QCOMPARE(view->arrowImage().size(), splash.size());
        // Corners of the picture are clear, its middle is solid.
        QCOMPARE(qAlpha(splash.pixel(0, splash.height() - 1)), 0);
        QCOMPARE(qAlpha(splash.pixel(splash.width() - 1, 0)), 0);
        QCOMPARE(qAlpha(splash.pixel(250, 160)), 255);
        // The window takes that shape, with the darker part of the shadow under the card.
        const QRegion shape = panel->mask();
        QVERIFY(!shape.isEmpty());
        QVERIFY(shape.contains(QPoint(250, 160)));
        QVERIFY(!shape.contains(QPoint(0, splash.height() - 1)));
        QVERIFY(!shape.contains(QPoint(splash.width() - 1, 0)));
        QVERIFY(shape.contains(QPoint(250, 302)));  // shadow just under the card
        QVERIFY(!shape.contains(QPoint(250, 318))); // clear below the shadow
        QCOMPARE(qAlpha(view->shadowImage().pixel(250, 302)) > 0, true);
        QCOMPARE(qAlpha(view->shadowImage().pixel(250, 20)) > 0, true); // hidden under the card
        // Drawn: the picture over its shadow, clear where neither is.
        QImage drawn(panel->size(), QImage::Format_ARGB32_Premultiplied);
        drawn.fill(Qt::transparent);
        view->render(&drawn, QPoint(), QRegion(), QWidget::DrawWindowBackground);
        QCOMPARE(drawn.pixel(250, 160), splash.pixel(250, 160));
        QVERIFY(qAlpha(drawn.pixel(250, 303)) > 0);
        QCOMPARE(qAlpha(drawn.pixel(0, splash.height() - 1)), 0);
    }

    void versionLineShowsTheBuildsVersion() {
        QCOMPARE(panel->versionField()->text(), QString("version " ORMIDON_VERSION));
        QCOMPARE(VersionTextField::versionText(), QString("version " ORMIDON_VERSION));
        QCoreApplication::setApplicationVersion(QString());
        QCOMPARE(VersionTextField::versionText(), QString("version last"));
        QCoreApplication::setApplicationVersion(ORMIDON_VERSION);
    }

    void webAddressFillsTheActiveStrip() {
        QCOMPARE(panel->activeStripRect(),
                 QRect(141, panel->height() - 205, 221, 20)); // origin 141, 185 from the lower left
        QCOMPARE(panel->linkView()->geometry(), panel->activeStripRect());
        QCOMPARE(panel->linkView()->toPlainText(), QString(WebLinks::kSiteHost));
        QVERIFY(panel->inActiveStrip(lowerLeft(panel, 150, 190)));
        QVERIFY(panel->inActiveStrip(lowerLeft(panel, 141, 186)));
        QVERIFY(!panel->inActiveStrip(lowerLeft(panel, 140, 190)));
        QVERIFY(!panel->inActiveStrip(lowerLeft(panel, 362, 190)));
        QVERIFY(!panel->inActiveStrip(lowerLeft(panel, 150, 184)));
        QVERIFY(!panel->inActiveStrip(lowerLeft(panel, 150, 206)));
        QVERIFY(!panel->inActiveStrip(lowerLeft(panel, 100, 100)));
    }

    void clickOutsideTheStripClosesAtOnce() {
        FakeAboutClock clock(1.0);
        bool shownCentred = false;
        int waits = -1;
        runAbout([&] {
            shownCentred = panel->isVisible() && panel->geometry().center() ==
                                                     panel->screen()->availableGeometry().center();
            waits = AboutLoop::current()->emptyWaits();
            clickWindowAt(lowerLeft(panel, 100, 100));
        });
        QVERIFY(shownCentred);
        QCOMPARE(waits, 0);
        QVERIFY(!panel->isVisible());
    }

    void clickInsideTheStripReachesThePanelWhichStays() {
        CapturedUrls opened;
        PressCounter counter;
        panel->linkView()->viewport()->installEventFilter(&counter);
        int handedOn = 0;
        bool stillShown = false;
        // After the first empty wait: a click at (150, 190) on plain strip, then one on the
        // address itself; then the panel is left alone.
        FakeAboutClock clock(1.0, [&](int waits) {
            if (waits == 1)
                QTimer::singleShot(0, [&] { clickWindowAt(lowerLeft(panel, 150, 190)); });
            if (waits == 2) {
                stillShown = panel->isVisible();
                QTimer::singleShot(0, [&] {
                    clickWindowAt(panel->activeStripRect().center());
                    handedOn = AboutLoop::current()->clicksHandedOn();
                });
            }
        });
        runAbout();
        QVERIFY(stillShown);
        QCOMPARE(handedOn, 2);
        QCOMPARE(counter.presses, 2);
        QCOMPARE(opened.urls, QList<QUrl>{WebLinks::homePage()});
        QVERIFY(!panel->isVisible());
    }

    void clickOutsideAfterClicksInsideStillClosesAtOnce() {
        int lastWait = 0;
        FakeAboutClock clock(1.0, [&](int n) {
            lastWait = n;
            if (n == 1)
                QTimer::singleShot(0, [&] {
                    clickWindowAt(lowerLeft(panel, 150, 190));
                    clickWindowAt(lowerLeft(panel, 300, 190));
                    clickWindowAt(lowerLeft(panel, 100, 100));
                });
        });
        runAbout();
        QCOMPARE(lastWait, 1);
        QVERIFY(!panel->isVisible());
    }

    void untouchedPanelClosesAtTheFirstWaitAfterMoreThanThreeIdleSeconds() {
        int waits = 0;
        {
            // Exactly one second a wait: the clock starts at wait 1, waits 2 to 4 are 1, 2 and
            // 3 seconds after it, not more than 3; wait 5 closes.
            FakeAboutClock clock(1.0, [&](int n) { waits = n; });
            runAbout();
            QCOMPARE(waits, 5);
            QVERIFY(!panel->isVisible());
        }
        {
            // A little more than a second a wait: wait 4 is already more than 3 seconds on.
            FakeAboutClock clock(1.001, [&](int n) { waits = n; });
            runAbout();
            QCOMPARE(waits, 4);
        }
    }

    void clicksInsideTheStripKeepTheSchedule() {
        int lastWait = 0;
        int clicks = 0;
        FakeAboutClock clock(1.0, [&](int n) {
            lastWait = n;
            if (n <= 4)
                QTimer::singleShot(0, [&] {
                    clickWindowAt(lowerLeft(panel, 150, 190));
                    ++clicks;
                });
        });
        runAbout();
        QCOMPARE(clicks, 4);
        QCOMPARE(lastWait, 5); // the same close as untouched
        QVERIFY(!panel->isVisible());
    }

    void keyPressClosesAndReachesNoOtherWindow() {
        FakeAboutClock clock(1.0);
        QLineEdit* angle = controller->itsRotateText;
        const QString before = angle->text();
        angle->setFocus();
        int waits = -1;
        runAbout([&] {
            QTest::keyClick(controller->window()->windowHandle(), Qt::Key_5);
            waits = AboutLoop::current()->emptyWaits();
        });
        QCOMPARE(waits, 0);
        QVERIFY(!panel->isVisible());
        QCOMPARE(angle->text(), before);
        // A key on the panel itself closes it too.
        runAbout([&] { QTest::keyClick(panel->windowHandle(), Qt::Key_Space); });
        QVERIFY(!panel->isVisible());
    }

    void clickOnTheMainWindowClosesAndDoesNotReachIt() {
        FakeAboutClock clock(1.0);
        controller->itsRotateText->setText("7");
        QSignalSpy edits(controller->itsRotateText.data(), &QLineEdit::cursorPositionChanged);
        runAbout([&] {
            QWidget* field = controller->itsRotateText;
            QTest::mouseClick(controller->window()->windowHandle(), Qt::LeftButton, {},
                              field->mapTo(controller->window(), QPoint(2, 2)));
        });
        QVERIFY(!panel->isVisible());
        QCOMPARE(edits.count(), 0);
    }

    void panelLeftAloneStaysAboutFiveSeconds() { // the one test on the real clock
        QElapsedTimer shown;
        shown.start();
        runAbout();
        const qint64 ms = shown.elapsed();
        QVERIFY2(ms >= 3900 && ms <= 6500, qPrintable(QString::number(ms)));
        QVERIFY(!panel->isVisible());
    }

    void aboutMenuItemShowsThePanelAgain() {
        FakeAboutClock clock(1.0);
        QAction* about = nullptr;
        for (QAction* menu : controller->window()->menuBar()->actions())
            for (QAction* item : menu->menu()->actions())
                if (item->text() == tr("&About Ormidon"))
                    about = item;
        QVERIFY(about);
        for (int time = 0; time < 2; ++time) {
            bool shown = false;
            QTimer::singleShot(0, [&] {
                shown = panel->isVisible();
                QTest::keyClick(panel->windowHandle(), Qt::Key_Escape);
            });
            about->trigger();
            QVERIFY(shown);
            QVERIFY(!panel->isVisible());
        }
    }

    void fileHandedOverAtLaunchOpensRightAfterTheSplash() {
        FakeAboutClock clock(1.0);
        QTemporaryDir pictures;
        QImage picture(80, 60, QImage::Format_RGB32);
        picture.fill(Qt::darkMagenta);
        const QString path = pictures.path() + "/handed.png";
        QVERIFY(picture.save(path));
        controller->skipSplash = false;
        bool splashShown = false;
        QTimer::singleShot(0, [&] {
            splashShown = panel->isVisible();
            QTest::keyClick(panel->windowHandle(), Qt::Key_Return);
        });
        controller->applicationWillFinishLaunching();
        QVERIFY(splashShown);
        QVERIFY(!panel->isVisible());
        QVERIFY(controller->application(nullptr, path));
        controller->applicationDidFinishLaunching();
        QCOMPARE(controller->window()->windowTitle(), QString("Ormidon: handed.png"));
    }

    void noSplashSkipsThePanel() {
        controller->skipSplash = true;
        QElapsedTimer timer;
        timer.start();
        bool shown = false;
        QTimer::singleShot(0, [&] { shown = panel->isVisible(); });
        controller->applicationWillFinishLaunching();
        QCoreApplication::processEvents();
        QVERIFY(!shown);
        QVERIFY(timer.elapsed() < 900);
    }

    void changeTransparencySetsTheAlpha() {
        controller->changeTransparencyAbout(0.5f);
        QVERIFY(qAbs(panel->windowOpacity() - 0.5) < 0.01); // kept in eight bits
        controller->changeTransparencyAbout(1.0f);
        QCOMPARE(panel->windowOpacity(), 1.0);
    }

    void withoutAPanelRunAboutDoesNothing() {
        delete controller->itsAboutWindow.data();
        QVERIFY(!controller->itsAboutWindow);
        QElapsedTimer timer;
        timer.start();
        controller->runAbout(nullptr);
        QVERIFY(timer.elapsed() < 900);
    }

    void missingPictureLeavesAClearPanel() {
        cleanupProgramResources();
        std::unique_ptr<AboutPanel> bare(AboutPanel::load(nullptr));
        initProgramResources();
        QVERIFY(bare->contentView()->arrowImage().isNull());
        QVERIFY(bare->mask().isEmpty()); // not shaped: nothing to shape it by
        QImage drawn(bare->size(), QImage::Format_ARGB32_Premultiplied);
        drawn.fill(Qt::transparent);
        bare->contentView()->render(&drawn, QPoint(), QRegion(bare->contentView()->rect()),
                                    QWidget::DrawWindowBackground);
        QCOMPARE(qAlpha(drawn.pixel(20, 20)), 0);
        QCOMPARE(bare->versionField()->text(), QString("version " ORMIDON_VERSION));
    }
};

QTEST_MAIN(tst_AboutPanel)
#include "tst_AboutPanel.moc"
