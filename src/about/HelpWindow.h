#pragma once

// The window Ormidon's help pages show in: the page, with Back, Forward and Contents. Pages
// of the help follow each other here; links to the web site open in the default browser.

#include <QUrl>
#include <QWidget>

class QTextBrowser;
class QToolButton;

class HelpWindow : public QWidget {
    Q_OBJECT
public:
    // Shows the page in the help window, which it makes on first use as a window of `owner`
    // (owned by it). Returns the window.
    static HelpWindow* showPage(QWidget* owner, const QUrl& page);
    // The help window, when one was made and still exists.
    static HelpWindow* shared();

    QUrl source() const;
    QTextBrowser* browser() const { return mBrowser; }

private:
    explicit HelpWindow(QWidget* owner);
    void follow(const QUrl& link);

    QTextBrowser* mBrowser = nullptr;
    QToolButton* mBack = nullptr;
    QToolButton* mForward = nullptr;
    QUrl mContents;
};
