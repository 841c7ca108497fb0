#include "about/LinkTextView.h"

#include "about/WebLinks.h"

#include <QMouseEvent>
#include <QPixmap>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>

#include <QAbstractTextDocumentLayout>

#include <algorithm>
#include <cmath>

const QString LinkTextView::iHTTP = QLatin1String(WebLinks::kSchemePrefix);
const QString LinkTextView::iBarURL = QLatin1String(WebLinks::kSiteHost);

std::optional<QCursor> LinkCursorDelegate::cursorForLink(const QUrl&, int, LinkTextView*) {
    return std::nullopt;
}

namespace {

// The toolkit's own version, 6.4.2 as 0x060402.
int16_t toolkitVersion(int32_t* version) {
    const QStringList parts = QString::fromLatin1(qVersion()).split(u'.');
    if (parts.size() < 2)
        return -1;
    int32_t value = 0;
    for (int i = 0; i < 3; ++i)
        value = (value << 8) | (i < parts.size() ? (parts[i].toInt() & 0xff) : 0);
    *version = value;
    return 0;
}

LinkTextView::SystemVersionQuery& versionQuery() {
    static LinkTextView::SystemVersionQuery query = toolkitVersion;
    return query;
}

// One run of text under the same link: characters [start, end) of the document.
struct LinkRun {
    QString href;
    int start = 0;
    int end = 0;
};

QList<LinkRun> linkRuns(const QTextDocument* document) {
    QList<LinkRun> runs;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QTextCharFormat format = fragment.charFormat();
            const QString href = format.isAnchor() ? format.anchorHref() : QString();
            if (href.isEmpty())
                continue;
            if (!runs.isEmpty() && runs.last().href == href &&
                runs.last().end == fragment.position())
                runs.last().end = fragment.position() + fragment.length();
            else
                runs.append({href, fragment.position(), fragment.position() + fragment.length()});
        }
    }
    return runs;
}

} // namespace

void LinkTextView::setSystemVersionQuery(SystemVersionQuery query) {
    versionQuery() = query ? std::move(query) : SystemVersionQuery(toolkitVersion);
}

QCursor LinkTextView::makeFingerCursor() {
    const QPixmap finger(QStringLiteral(":/finger.png"));
    if (finger.isNull())
        return QCursor(Qt::ArrowCursor); // no picture, no finger: the plain pointer
    return QCursor(finger, 0, 0);
}

QCursor LinkTextView::fingerCursor() {
    static const QCursor* cursor = new QCursor(makeFingerCursor()); // kept for the whole run
    return *cursor;
}

LinkTextView::LinkTextView(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setMouseTracking(true);
    connect(this, &QTextBrowser::anchorClicked, this, &LinkTextView::openLink);
}

void LinkTextView::awakeFromNib() {
    createLink();
}

QColor LinkTextView::linkColour() const {
    return Qt::white;
}

void LinkTextView::createLink() {
    const QString host = hostString();

    // Read-only, no background, the host as centred white text.
    setReadOnly(true);
    setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::transparent);
    setPalette(colours);
    setPlainText(host);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    QTextBlockFormat centred;
    centred.setAlignment(Qt::AlignHCenter);
    all.mergeBlockFormat(centred);
    QTextCharFormat white;
    white.setForeground(QColor(Qt::white));
    all.mergeCharFormat(white);

    const QUrl url(prefixString() + host, QUrl::StrictMode);
    if (url.isValid() && !url.host().isEmpty()) {
        QTextCharFormat link;
        link.setForeground(linkColour());
        link.setFontUnderline(true);
        link.setUnderlineColor(Qt::white);
        mLinkAttributes.reset();
        int32_t version = 0;
        if (versionQuery()(&version) == 0 && version >= kOwnLinkStyleSince)
            mLinkAttributes = link; // links keep these colours instead of the toolkit's
        link.setAnchor(true);
        link.setAnchorHref(url.toString());
        QTextCursor hostRange(document());
        hostRange.setPosition(0);
        hostRange.setPosition(int(host.size()), QTextCursor::KeepAnchor);
        hostRange.mergeCharFormat(link);
        applyLinkStyle();
    }
    resetCursorRects();
}

void LinkTextView::setAttributedString(const QString& html) {
    setHtml(html);
    applyLinkStyle();
    resetCursorRects();
}

// Every run of linked text gets the view's link style, or the toolkit's where the view has
// none of its own.
void LinkTextView::applyLinkStyle() {
    QTextCharFormat style;
    if (mLinkAttributes) {
        style = *mLinkAttributes;
    } else {
        style.setForeground(palette().color(QPalette::Link));
        style.setFontUnderline(true);
        style.setUnderlineColor(QColor());
    }
    for (const LinkRun& run : linkRuns(document())) {
        QTextCursor range(document());
        range.setPosition(run.start);
        range.setPosition(run.end, QTextCursor::KeepAnchor);
        range.mergeCharFormat(style);
    }
}

QCursor LinkTextView::cursorForLink(const QUrl& link, int index) {
    if (mDelegate)
        if (std::optional<QCursor> cursor = mDelegate->cursorForLink(link, index, this))
            return *cursor;
    return classFingerCursor();
}

void LinkTextView::resetCursorRects() {
    mCursorRects.clear();
    const QRect visible = viewport()->visibleRegion().boundingRect();
    if (visible.isEmpty())
        return;
    const QPointF offset(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
    QAbstractTextDocumentLayout* layout = document()->documentLayout();
    for (const LinkRun& run : linkRuns(document())) {
        const QCursor cursor = cursorForLink(QUrl(run.href), run.start);
        for (QTextBlock block = document()->findBlock(run.start);
             block.isValid() && block.position() < run.end; block = block.next()) {
            const QTextLayout* lines = block.layout();
            const QPointF blockOrigin = layout->blockBoundingRect(block).topLeft() + offset;
            for (int i = 0; i < lines->lineCount(); ++i) {
                const QTextLine line = lines->lineAt(i);
                const int lineStart = block.position() + line.textStart();
                const int from = std::max(run.start, lineStart);
                const int to = std::min(run.end, lineStart + line.textLength());
                if (from >= to)
                    continue;
                const qreal x1 = line.cursorToX(from - block.position());
                const qreal x2 = line.cursorToX(to - block.position());
                const QRectF piece(blockOrigin.x() + std::min(x1, x2), blockOrigin.y() + line.y(),
                                   std::abs(x2 - x1), line.height());
                const QRect shown = piece.toAlignedRect() & visible;
                if (!shown.isEmpty())
                    mCursorRects.append({shown, cursor});
            }
        }
    }
}

void LinkTextView::mouseMoveEvent(QMouseEvent* event) {
    QTextBrowser::mouseMoveEvent(event);
    resetCursorRects();
    const QPoint at = event->position().toPoint();
    for (const CursorRect& piece : std::as_const(mCursorRects)) {
        if (piece.rect.contains(at)) {
            viewport()->setCursor(piece.cursor);
            return;
        }
    }
    viewport()->setCursor(Qt::ArrowCursor);
}

void LinkTextView::resizeEvent(QResizeEvent* event) {
    QTextBrowser::resizeEvent(event);
    resetCursorRects();
}

void LinkTextView::scrollContentsBy(int dx, int dy) {
    QTextBrowser::scrollContentsBy(dx, dy);
    resetCursorRects();
}

void LinkTextView::openLink(const QUrl& link) {
    openURL(WebLinks::onSite(link));
}
