// The help book and the web pages of the Help menu.

#include "app/Controller.h"

#include "about/HelpBook.h"
#include "about/HelpWindow.h"
#include "about/WebLinks.h"

#include <QMainWindow>

int16_t Controller::registerMyHelpBook() {
    return HelpBook::registerBook(HelpBook::configuredBookName(), HelpBook::shippedFolder());
}

// With a book name, the front page of that book (nothing shows when the book could not be
// registered); without one, the shipped front page by its own path.
void Controller::displayHelp(QObject*) {
    const QString book = HelpBook::configuredBookName();
    const QString page = QLatin1String(HelpBook::kFrontPage);
    const QUrl url =
        book.isEmpty() ? HelpBook::shippedPage(page) : HelpBook::pageOfBook(book, page);
    if (!url.isEmpty())
        HelpWindow::showPage(itsMainWindow, url);
}

void Controller::visitSite(QObject*) {
    openURL(WebLinks::homePage());
}

void Controller::visitAd(QObject*) {
    openURL(WebLinks::adPage());
}

void Controller::visitSiteSupport(QObject*) {
    openURL(WebLinks::supportPage());
}
