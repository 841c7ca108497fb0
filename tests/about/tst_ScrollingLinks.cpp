// The scrolling links text: the turning rule on its own, then the motion on the main window's
// real scroll area, the timer, and the shipped "links" document.

#include "AboutTestSupport.h"

#include "about/FineScrollArea.h"
#include "about/LinkRunTextView.h"
#include "about/ScrollStep.h"
#include "app/Controller.h"

#include <QMainWindow>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTimer>
#include <QtTest>

#include <cmath>

class tst_ScrollingLinks : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    std::unique_ptr<Controller> controller;

    FineScrollArea* area() const {
        return qobject_cast<FineScrollArea*>(controller->advScrollView.data());
    }
    LinkRunTextView* links() const {
        return qobject_cast<LinkRunTextView*>(controller->advTextView.data());
    }
    qreal shownY() const { return area()->documentVisibleRect().top(); }

private slots:
    void initTestCase() {
        initProgramResources();
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
    }

    void init() {
        sign = 1.0f;
        controller = std::make_unique<Controller>();
        controller->skipSplash = true;
        controller->loadMainWindow();
        controller->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
        QVERIFY(area() && links());
    }

    void cleanup() { controller.reset(); }

    void turningRule() {
        sign = 1.0f;
        QCOMPARE(nextScrollAmount(0.0f), 0.5f);
        QCOMPARE(nextScrollAmount(39.5f), 40.0f);
        QCOMPARE(nextScrollAmount(40.0f), 39.0f); // turned back at 40, a whole unit a tick
        QCOMPARE(sign, -2.0f);
        QCOMPARE(nextScrollAmount(1.0f), 0.0f);
        QCOMPARE(nextScrollAmount(0.0f), 0.5f); // turned forward at 0
        QCOMPARE(sign, 1.0f);
        // Both thresholds are tested before the step: a step may pass them by one step.
        QCOMPARE(nextScrollAmount(39.75f), 40.25f);
        QCOMPARE(nextScrollAmount(40.25f), 39.25f);
        QCOMPARE(nextScrollAmount(0.5f), -0.5f);
        QCOMPARE(nextScrollAmount(-0.5f), 0.0f);
        QCOMPARE(sign, 1.0f);
    }

    void shippedDocumentIsLongEnoughToTurn() {
        const QString text = links()->toPlainText();
        QVERIFY(text.contains(QLatin1String(WebLinks::kSiteHost)));
        QVERIFY(!controller->textToScroll().contains("{site}"));
        QVERIFY(!controller->textToScroll().contains("{support}"));
        // The area shows 44 pixels; the document goes at least 40 further.
        QVERIFY2(area()->verticalScrollBar()->maximum() >= 41,
                 qPrintable(QString::number(area()->verticalScrollBar()->maximum())));
        QCOMPARE(links()->height(),
                 area()->viewport()->height() + area()->verticalScrollBar()->maximum());
    }

    void positionsOnTheRealScrollArea() {
        controller->stopScrollingAnimation();
        sign = 1.0f;
        controller->setScrollAmount(0.0f);
        QCOMPARE(shownY(), 0.0);
        QList<qreal> expected;
        for (int i = 1; i <= 80; ++i)
            expected << 0.5 * i; // 0.5, 1.0, ... 40.0
        for (int i = 39; i >= 0; --i)
            expected << i; // 39.0, 38.0, ... 0.0
        for (int i = 1; i <= 4; ++i)
            expected << 0.5 * i; // and forward again
        for (int tick = 0; tick < expected.size(); ++tick) {
            controller->scrollOneUnit();
            QCOMPARE(shownY(), expected[tick]);
            // The document really moved: the bar and the view are at the nearest whole pixel.
            const int pixel = int(std::lround(expected[tick]));
            QCOMPARE(area()->verticalScrollBar()->value(), pixel);
            QCOMPARE(links()->y(), -pixel);
        }
    }

    void scrollAreaClampsAStepPastTheTop() {
        controller->stopScrollingAnimation();
        controller->setScrollAmount(0.5f);
        sign = -2.0f;
        controller->scrollOneUnit(); // 0.5 - 1.0: clamped to 0
        QCOMPARE(shownY(), 0.0);
        QCOMPARE(sign, -2.0f);
        controller->scrollOneUnit(); // at the top: forward again
        QCOMPARE(sign, 1.0f);
        QCOMPARE(shownY(), 0.5);
        controller->setScrollAmount(-1.0f);
        QCOMPARE(shownY(), 0.0);
        controller->setScrollAmount(1e6f);
        QCOMPARE(shownY(), qreal(area()->verticalScrollBar()->maximum()));
    }

    void startingTwiceLeavesOneTimerAndStopClearsIt() {
        QTimer* first = controller->scrollingTimer; // started when the window was loaded
        QVERIFY(first && first->isActive());
        QCOMPARE(first->interval(), 80);
        controller->startScrollingAnimation();
        QCOMPARE(controller->scrollingTimer.data(), first);
        QCOMPARE(controller->findChildren<QTimer*>("scrollingTimer").size(), 1);
        controller->stopScrollingAnimation();
        QVERIFY(!controller->scrollingTimer);
        QCOMPARE(controller->findChildren<QTimer*>("scrollingTimer").size(), 0);
        // sign keeps its value across a stop and a start; the new timer is another one.
        sign = -2.0f;
        controller->startScrollingAnimation();
        QVERIFY(controller->scrollingTimer && controller->scrollingTimer->isActive());
        QCOMPARE(sign, -2.0f);
        QCOMPARE(controller->findChildren<QTimer*>("scrollingTimer").size(), 1);
    }

    void timerMovesTheTextEvery80Milliseconds() {
        controller->stopScrollingAnimation();
        sign = 1.0f;
        controller->setScrollAmount(0.0f);
        controller->startScrollingAnimation();
        QTRY_VERIFY_WITH_TIMEOUT(shownY() >= 2.0, 3000);
        controller->stopScrollingAnimation();
        const qreal stopped = shownY();
        QTest::qWait(250);
        QCOMPARE(shownY(), stopped);
    }

    void linksAreBlueAndUnderlined() {
        int linkRuns = 0;
        for (QTextBlock block = links()->document()->begin(); block.isValid(); block = block.next())
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextCharFormat format = it.fragment().charFormat();
                if (!format.isAnchor() || format.anchorHref().isEmpty())
                    continue;
                ++linkRuns;
                QCOMPARE(format.foreground().color(), QColor(Qt::blue));
                QVERIFY(format.fontUnderline());
                QVERIFY(!format.anchorHref().contains('{'));
            }
        QVERIFY(linkRuns >= 3);
    }

    void clickedLinkOpensInTheBrowser() {
        CapturedUrls opened;
        controller->stopScrollingAnimation();
        controller->setScrollAmount(0.0f);
        links()->resetCursorRects();
        QVERIFY(!links()->cursorRects().isEmpty());
        const QPoint onLink = links()->cursorRects().first().rect.center();
        QTest::mouseClick(links()->viewport(), Qt::LeftButton, {}, onLink);
        QCOMPARE(opened.urls.size(), 1);
        QCOMPARE(opened.urls.first().host(), QString(WebLinks::kSiteHost));
    }

    void fingerOverLinksArrowOverPlainText() {
        controller->stopScrollingAnimation();
        controller->setScrollAmount(0.0f);
        links()->resetCursorRects();
        QVERIFY(!links()->cursorRects().isEmpty());
        const QRect link = links()->cursorRects().first().rect;
        hover(links()->viewport(), link.center());
        QCOMPARE(links()->viewport()->cursor().shape(), Qt::BitmapCursor);
        QCOMPARE(links()->viewport()->cursor().pixmap().cacheKey(),
                 LinkRunTextView::fingerCursor().pixmap().cacheKey());
        // Left of the first line's link lies its plain text.
        hover(links()->viewport(), QPoint(link.left() - 8, link.center().y()));
        QCOMPARE(links()->viewport()->cursor().shape(), Qt::ArrowCursor);
    }

    void missingLinksDocumentGivesEmptyTextThatStays() {
        cleanupProgramResources();
        controller->loadTextToScroll();
        initProgramResources();
        QVERIFY(controller->textToScroll().size() > 0);
        QVERIFY(links()->toPlainText().isEmpty());
        controller->stopScrollingAnimation();
        sign = 1.0f;
        controller->setScrollAmount(0.0f);
        controller->startScrollingAnimation();
        QTest::qWait(400); // five ticks: nothing to scroll
        QVERIFY(controller->scrollingTimer && controller->scrollingTimer->isActive());
        QCOMPARE(shownY(), 0.0);
        QCOMPARE(sign, 1.0f);
    }
};

QTEST_MAIN(tst_ScrollingLinks)
#include "tst_ScrollingLinks.moc"
