#pragma once

// A read-only, backgroundless text view that shows Ormidon's web address as one centred,
// underlined link, and shows the "finger" cursor wherever a link lies under the mouse, only
// there. Clicked links open in the default browser. LinkTextView draws its link white (for the
// about panel's dark picture); LinkRunTextView (its own file) draws links blue and holds the
// scrolling links text.

#include <QCursor>
#include <QList>
#include <QRect>
#include <QTextBrowser>
#include <QTextCharFormat>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <optional>

class LinkTextView;

// Whoever wants other cursors over the links of a view sets itself as the view's delegate. No
// answer (the default) keeps the finger.
class LinkCursorDelegate {
public:
    virtual ~LinkCursorDelegate() = default;
    virtual std::optional<QCursor> cursorForLink(const QUrl& link, int index, LinkTextView* view);
};

class LinkTextView : public QTextBrowser {
    Q_OBJECT
public:
    // One cursor for every view of the class, made on first use and kept for the whole run.
    static QCursor fingerCursor();
    // The address: the scheme prefix and the host, which is both the text shown and the target.
    static const QString iHTTP;
    static const QString iBarURL;

    // The toolkit's version, the way the link style asks for it: 0 on success and the version
    // as 0xMMNNPP. Tests put an older toolkit in its place.
    using SystemVersionQuery = std::function<int16_t(int32_t* version)>;
    static void setSystemVersionQuery(SystemVersionQuery query);
    // From this version on, a view draws links in its own colours; before it, in the
    // toolkit's link style.
    static constexpr int32_t kOwnLinkStyleSince = 0x060000;

    explicit LinkTextView(QWidget* parent = nullptr);

    void awakeFromNib(); // the view made and placed: turns it into the link
    void createLink();

    // Replaces the text with a rich text document; the links keep this view's link style.
    void setAttributedString(const QString& html);

    void setDelegate(LinkCursorDelegate* delegate) { mDelegate = delegate; }
    LinkCursorDelegate* delegate() const { return mDelegate; }

    // The cursor for the link that starts at character `index`: the delegate's, else the finger.
    QCursor cursorForLink(const QUrl& link, int index);

    // The cursor rectangles over the visible parts of linked text, in viewport coordinates.
    struct CursorRect {
        QRect rect;
        QCursor cursor;
    };
    void resetCursorRects();
    const QList<CursorRect>& cursorRects() const { return mCursorRects; }

    // The style links are drawn in when the toolkit allows a view its own (see createLink).
    const std::optional<QTextCharFormat>& linkTextAttributes() const { return mLinkAttributes; }

protected:
    virtual QColor linkColour() const; // white
    virtual QCursor classFingerCursor() const { return fingerCursor(); }
    virtual QString hostString() const { return iBarURL; }
    virtual QString prefixString() const { return iHTTP; }

    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

    static QCursor makeFingerCursor();

private:
    void applyLinkStyle();
    void openLink(const QUrl& link);

    LinkCursorDelegate* mDelegate = nullptr;
    std::optional<QTextCharFormat> mLinkAttributes;
    QList<CursorRect> mCursorRects;
};
