// The link text views: the link they make, the finger cursor over linked text only (and only
// its visible part), the delegate's cursor, the toolkit's link style on an older toolkit, and
// clicks that open the browser.

#include "AboutTestSupport.h"

#include "about/LinkRunTextView.h"
#include "about/LinkTextView.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QtTest>

namespace {

QTextCharFormat formatAt(const QTextDocument* document, int position) {
    QTextCursor cursor(const_cast<QTextDocument*>(document));
    cursor.setPosition(position + 1);
    return cursor.charFormat();
}

struct OwnCursor : LinkCursorDelegate {
    std::optional<QCursor> answer;
    QList<int> indices;
    std::optional<QCursor> cursorForLink(const QUrl&, int index, LinkTextView*) override {
        indices << index;
        return answer;
    }
};

class BadHostView : public LinkTextView {
protected:
    QString hostString() const override { return QStringLiteral("no such host"); }
};

const QString kTwoLinks = QStringLiteral(
    "<p style='white-space: pre'>Plain start <a href='http://first.example/'>first link</a>"
    " plain middle <a href='http://second.example/'>second link</a> plain end</p>");

} // namespace

class tst_LinkTextView : public QObject {
    Q_OBJECT

    // A wide view shown in a window; the window shows its left `shownWidth` pixels only.
    std::unique_ptr<QWidget> window;
    LinkTextView* view = nullptr;

    void showView(LinkTextView* made, int shownWidth = 900) {
        window = std::make_unique<QWidget>();
        window->resize(shownWidth, 80);
        made->setParent(window.get());
        made->setGeometry(0, 0, 900, 80);
        view = made;
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    // The left and right ends of characters [from, to) in the first line, in the viewport.
    QPair<qreal, qreal> spanOf(int from, int to) const {
        const QTextBlock block = view->document()->firstBlock();
        const QTextLine line = block.layout()->lineAt(0);
        const qreal x0 = view->document()->documentLayout()->blockBoundingRect(block).left();
        return {x0 + line.cursorToX(from), x0 + line.cursorToX(to)};
    }

private slots:
    void initTestCase() { initProgramResources(); }
    void cleanup() {
        window.reset();
        LinkTextView::setSystemVersionQuery({});
    }

    void fingerCursorIsMadeOnceFromTheFingerPicture() {
        const QCursor finger = LinkTextView::fingerCursor();
        QCOMPARE(finger.shape(), Qt::BitmapCursor);
        QCOMPARE(finger.hotSpot(), QPoint(0, 0));
        QCOMPARE(finger.pixmap().size(), QSize(32, 32));
        QVERIFY(finger.pixmap().hasAlphaChannel());
        QCOMPARE(LinkTextView::fingerCursor().pixmap().cacheKey(), finger.pixmap().cacheKey());
        QCOMPARE(LinkRunTextView::fingerCursor().pixmap().cacheKey(),
                 LinkRunTextView::fingerCursor().pixmap().cacheKey());
        // The fingertip is at the hot spot: the picture's top left corner is drawn.
        const QImage picture = finger.pixmap().toImage();
        QVERIFY(qAlpha(picture.pixel(1, 1)) > 0);
        QCOMPARE(qAlpha(picture.pixel(31, 0)), 0);
    }

    void createLinkMakesOneCentredUnderlinedWhiteLink() {
        showView(new LinkTextView);
        view->awakeFromNib();
        const QString host = QLatin1String(WebLinks::kSiteHost);
        QCOMPARE(view->toPlainText(), host);
        QCOMPARE(LinkTextView::iBarURL, host);
        QCOMPARE(LinkTextView::iHTTP, QString("http://"));
        QVERIFY(view->isReadOnly());
        QCOMPARE(view->document()->firstBlock().blockFormat().alignment() &
                     Qt::AlignHorizontal_Mask,
                 Qt::AlignHCenter);
        const QTextCharFormat link = formatAt(view->document(), 0);
        QVERIFY(link.isAnchor());
        QCOMPARE(QUrl(link.anchorHref()), WebLinks::homePage());
        QCOMPARE(link.foreground().color(), QColor(Qt::white));
        QVERIFY(link.fontUnderline());
        QCOMPARE(link.underlineColor(), QColor(Qt::white));
        QVERIFY(view->linkTextAttributes().has_value());
        QVERIFY(!view->viewport()->autoFillBackground());
        QCOMPARE(view->cursorRects().size(), 1);
    }

    void runViewMakesItBlue() {
        showView(new LinkRunTextView);
        view->awakeFromNib();
        QCOMPARE(LinkRunTextView::maimURL, QString(WebLinks::kSiteHost));
        QCOMPARE(LinkRunTextView::http, QString("http://"));
        const QTextCharFormat link = formatAt(view->document(), 0);
        QCOMPARE(link.foreground().color(), QColor(Qt::blue));
        QCOMPARE(link.underlineColor(), QColor(Qt::white));
    }

    void onlyVisibleParts_ofLinkedRunsGetTheFinger() {
        showView(new LinkTextView);
        view->awakeFromNib();
        view->setAttributedString(kTwoLinks);
        const QString text = view->toPlainText();
        const int first = int(text.indexOf("first link"));
        const int second = int(text.indexOf("second link"));
        const auto firstSpan = spanOf(first, first + 10);
        const auto secondSpan = spanOf(second, second + 11);
        const auto check = [&](int rightEdge) {
            const auto& rects = view->cursorRects();
            QCOMPARE(rects.size(), 2);
            QVERIFY(qAbs(rects[0].rect.left() - firstSpan.first) <= 1);
            QVERIFY(qAbs(rects[0].rect.right() + 1 - firstSpan.second) <= 1);
            QVERIFY(qAbs(rects[1].rect.left() - secondSpan.first) <= 1);
            QVERIFY(qAbs(rects[1].rect.right() + 1 - rightEdge) <= 1);
            for (const auto& piece : rects)
                QCOMPARE(piece.cursor.pixmap().cacheKey(),
                         LinkTextView::fingerCursor().pixmap().cacheKey());
            // Plain text before and between the links has no rectangle.
            const auto middle = spanOf(first + 11, second - 1);
            for (qreal x : {spanOf(0, 5).second, (middle.first + middle.second) / 2})
                for (const auto& piece : rects)
                    QVERIFY(!piece.rect.contains(QPoint(int(x), piece.rect.center().y())));
        };
        view->resetCursorRects();
        check(int(std::ceil(secondSpan.second)));

        // The window cut through the second link: only its shown part gets the finger.
        const int cut = int((secondSpan.first + secondSpan.second) / 2);
        window->resize(cut, 80);
        QTRY_COMPARE(view->viewport()->visibleRegion().boundingRect().width(), cut);
        view->resetCursorRects();
        check(cut);

        // Cut before the second link: it has no rectangle at all.
        const int before = int(firstSpan.second) + 4;
        window->resize(before, 80);
        QTRY_COMPARE(view->viewport()->visibleRegion().boundingRect().width(), before);
        view->resetCursorRects();
        QCOMPARE(view->cursorRects().size(), 1);
    }

    void cursorFollowsTheMouse() {
        showView(new LinkTextView);
        view->awakeFromNib();
        view->setAttributedString(kTwoLinks);
        const QString text = view->toPlainText();
        const int first = int(text.indexOf("first link"));
        const auto span = spanOf(first, first + 10);
        const int y = view->cursorRects().first().rect.center().y();
        hover(view->viewport(), QPoint(int((span.first + span.second) / 2), y));
        QCOMPARE(view->viewport()->cursor().pixmap().cacheKey(),
                 LinkTextView::fingerCursor().pixmap().cacheKey());
        hover(view->viewport(), QPoint(int(spanOf(0, 3).second), y));
        QCOMPARE(view->viewport()->cursor().shape(), Qt::ArrowCursor);
        hover(view->viewport(), QPoint(int(span.first) + 2, y));
        QCOMPARE(view->viewport()->cursor().shape(), Qt::BitmapCursor);
    }

    void delegateCursorOverridesTheFingerButNilDoesNot() {
        showView(new LinkTextView);
        view->awakeFromNib();
        view->setAttributedString(kTwoLinks);
        OwnCursor delegate;
        delegate.answer = QCursor(Qt::CrossCursor);
        view->setDelegate(&delegate);
        view->resetCursorRects();
        QCOMPARE(view->cursorRects().size(), 2);
        for (const auto& piece : view->cursorRects())
            QCOMPARE(piece.cursor.shape(), Qt::CrossCursor);
        const QString text = view->toPlainText();
        QCOMPARE(delegate.indices,
                 QList<int>({int(text.indexOf("first link")), int(text.indexOf("second link"))}));
        const QPoint onLink = view->cursorRects().first().rect.center();
        hover(view->viewport(), onLink);
        QCOMPARE(view->viewport()->cursor().shape(), Qt::CrossCursor);

        delegate.answer.reset(); // answers nil: the finger again
        QCOMPARE(view->cursorForLink(QUrl("http://first.example/"), 0).pixmap().cacheKey(),
                 LinkTextView::fingerCursor().pixmap().cacheKey());
        hover(view->viewport(), onLink + QPoint(1, 0));
        QCOMPARE(view->viewport()->cursor().shape(), Qt::BitmapCursor);
        view->setDelegate(nullptr);
    }

    void olderToolkitStillMakesTheLinkInItsOwnStyle() {
        for (bool fails : {false, true}) {
            LinkTextView::setSystemVersionQuery([fails](int32_t* version) -> int16_t {
                *version = 0x050f02;
                return fails ? -5550 : 0;
            });
            showView(new LinkTextView);
            view->awakeFromNib();
            const QTextCharFormat link = formatAt(view->document(), 0);
            QVERIFY(link.isAnchor());
            QCOMPARE(QUrl(link.anchorHref()), WebLinks::homePage());
            QVERIFY(!view->linkTextAttributes().has_value());
            QCOMPARE(link.foreground().color(), view->palette().color(QPalette::Link));
            QVERIFY(link.fontUnderline());
            QCOMPARE(view->cursorRects().size(), 1);
        }
    }

    void hostThatFormsNoUrlLeavesPlainWhiteText() {
        showView(new BadHostView);
        view->awakeFromNib();
        QCOMPARE(view->toPlainText(), QString("no such host"));
        const QTextCharFormat plain = formatAt(view->document(), 0);
        QVERIFY(!plain.isAnchor());
        QCOMPARE(plain.foreground().color(), QColor(Qt::white));
        QVERIFY(!plain.fontUnderline());
        QCOMPARE(view->document()->firstBlock().blockFormat().alignment() &
                     Qt::AlignHorizontal_Mask,
                 Qt::AlignHCenter);
        QVERIFY(view->cursorRects().isEmpty());
    }

    void clickOnTheLinkOpensTheSite() {
        CapturedUrls opened;
        showView(new LinkTextView);
        view->awakeFromNib();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->cursorRects().first().rect.center());
        QCOMPARE(opened.urls, QList<QUrl>{WebLinks::homePage()});
        // A click beside it opens nothing.
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(3, 3));
        QCOMPARE(opened.urls.size(), 1);
    }
};

QTEST_MAIN(tst_LinkTextView)
#include "tst_LinkTextView.moc"
