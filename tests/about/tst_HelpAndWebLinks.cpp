// The help book, the help window and its pages, and the three web pages of the Help menu,
// with every URL the program asks to open caught instead of opened.

#include "AboutTestSupport.h"

#include "about/HelpBook.h"
#include "about/HelpWindow.h"
#include "app/Controller.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

class tst_HelpAndWebLinks : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    std::unique_ptr<Controller> controller;

    QAction* helpMenuItem(const QString& text) const {
        for (QAction* menu : controller->window()->menuBar()->actions())
            if (menu->menu())
                for (QAction* item : menu->menu()->actions())
                    if (item->text() == text)
                        return item;
        return nullptr;
    }

private slots:
    void initTestCase() {
        initProgramResources();
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
    }

    void init() {
        HelpBook::forgetBooks();
        HelpBook::setConfiguredBookName(QLatin1String(HelpBook::kBookName));
        controller = std::make_unique<Controller>();
        controller->skipSplash = true;
        controller->loadMainWindow();
        controller->stopScrollingAnimation();
    }

    void cleanup() { controller.reset(); }

    void webPagesOfTheSite() {
        QCOMPARE(WebLinks::homePage(), QUrl("http://www.ormidon.org"));
        QCOMPARE(WebLinks::adPage(), QUrl("http://www.ormidon.org/mac.htm"));
        QCOMPARE(WebLinks::supportPage(),
                 QUrl("http://www.ormidon.org/support.aspx?id=" + QString(WebLinks::kSupportId)));
        QCOMPARE(WebLinks::onSite(QUrl("/mac.htm")), WebLinks::adPage());
        QCOMPARE(WebLinks::onSite(QUrl("https://other.example/x")),
                 QUrl("https://other.example/x"));
    }

    void eachWebActionOpensExactlyOnePageAndChangesNothing() {
        controller->applicationDidFinishLaunching();
        const QString title = controller->window()->windowTitle();
        const QString source = controller->itsSrcFileName->text();
        const TPref pref = controller->itsPref;
        const int32_t angle = controller->m_rotate;
        const QStringList homeFiles = QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden);

        const QList<std::pair<void (Controller::*)(QObject*), QUrl>> actions = {
            {&Controller::visitSite, WebLinks::homePage()},
            {&Controller::visitAd, WebLinks::adPage()},
            {&Controller::visitSiteSupport, WebLinks::supportPage()}};
        for (const auto& [action, page] : actions) {
            CapturedUrls opened;
            (controller.get()->*action)(nullptr);
            QCOMPARE(opened.urls, QList<QUrl>{page});
            QCOMPARE(controller->window()->windowTitle(), title);
            QCOMPARE(controller->itsSrcFileName->text(), source);
            QCOMPARE(controller->itsPref.dpi, pref.dpi);
            QCOMPARE(controller->itsPref.exportFormat, pref.exportFormat);
            QCOMPARE(controller->itsPref.destPath, pref.destPath);
            QCOMPARE(controller->m_rotate, angle);
            QCOMPARE(QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden), homeFiles);
            QVERIFY(!HelpWindow::shared() || !HelpWindow::shared()->isVisible());
        }
    }

    void helpMenuItemsReachTheActions() {
        const QList<std::pair<QString, QUrl>> items = {
            {tr("Ormidon &Web Site"), WebLinks::homePage()},
            {tr("&More from the Makers of Ormidon"), WebLinks::adPage()},
            {tr("Ormidon &Support"), WebLinks::supportPage()}};
        for (const auto& [text, page] : items) {
            CapturedUrls opened;
            QAction* item = helpMenuItem(text);
            QVERIFY2(item, qPrintable(text));
            item->trigger();
            QCOMPARE(opened.urls, QList<QUrl>{page});
        }
        QAction* help = helpMenuItem(tr("Ormidon Help"));
        QVERIFY(help);
        QCOMPARE(help->shortcut(), QKeySequence(QKeySequence::HelpContents));
        controller->registerMyHelpBook();
        help->trigger();
        QVERIFY(HelpWindow::shared() && HelpWindow::shared()->isVisible());
        QCOMPARE(HelpWindow::shared()->source(), QUrl("qrc:/help/main.htm"));
    }

    void registeringTheShippedBook() {
        QCOMPARE(controller->registerMyHelpBook(), int16_t(0));
        QCOMPARE(HelpBook::pageOfBook(HelpBook::kBookName, "main.htm"), QUrl("qrc:/help/main.htm"));
        QCOMPARE(HelpBook::registerBook("Elsewhere", home.path() + "/nothing"),
                 HelpBook::kFileNotFound);
        QVERIFY(HelpBook::pageOfBook("Elsewhere", "main.htm").isEmpty());
    }

    void withABookNameHelpOpensThatBooksFrontPage() {
        // The book registered from another folder: help opens its main.htm, never the
        // shipped page by path.
        QTemporaryDir book;
        QFile page(book.path() + "/main.htm");
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.write("<html><head><title>Elsewhere</title></head><body>Other book</body></html>");
        page.close();
        QCOMPARE(HelpBook::registerBook(HelpBook::kBookName, book.path()), int16_t(0));
        controller->displayHelp(nullptr);
        QVERIFY(HelpWindow::shared());
        QCOMPARE(HelpWindow::shared()->source(), QUrl::fromLocalFile(book.path() + "/main.htm"));
        QVERIFY(HelpWindow::shared()->browser()->toPlainText().contains("Other book"));
        controller->displayHelp(nullptr); // and again: still that book
        QCOMPARE(HelpWindow::shared()->source(), QUrl::fromLocalFile(book.path() + "/main.htm"));
    }

    void unregisteredBookFailsSilently() {
        HelpBook::forgetBooks();
        controller->displayHelp(nullptr);
        QVERIFY(!HelpWindow::shared() || !HelpWindow::shared()->isVisible());
    }

    void withoutABookNameHelpOpensTheShippedPage() {
        HelpBook::setConfiguredBookName(QString());
        controller->displayHelp(nullptr);
        QVERIFY(HelpWindow::shared() && HelpWindow::shared()->isVisible());
        QCOMPARE(HelpWindow::shared()->source(), QUrl("qrc:/help/main.htm"));
        QCOMPARE(HelpWindow::shared()->windowTitle(), QString("Ormidon Help: Ormidon Help"));
    }

    // Every page is reachable from the front page, every link between pages leads to a page
    // that exists, and web links name the real site.
    void helpPagesAreCompleteAndTheirLinksWork() {
        const QStringList pages = QDir(":/help").entryList({"*.htm"});
        const QStringList files = QDir(":/help").entryList(QDir::Files); // pages, style sheet
        for (const QString& topic : {"main.htm", "opening.htm", "navigating.htm", "rotating.htm",
                                     "converting.htm", "formats.htm", "preferences.htm"})
            QVERIFY2(pages.contains(topic), qPrintable(topic));
        const QRegularExpression href(QStringLiteral("href=\"([^\"]+)\""));
        for (const QString& name : pages) {
            QFile file(":/help/" + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            QVERIFY2(text.size() > 600, qPrintable(name));
            for (const auto& match : href.globalMatch(text)) {
                const QString target = match.captured(1);
                const QUrl link(target);
                if (target.startsWith("http"))
                    QVERIFY2(target.startsWith("http://{site}/"), qPrintable(target));
                else
                    QVERIFY2(files.contains(link.path()), qPrintable(name + ": " + link.path()));
            }
        }
        QFile prefs(":/help/preferences.htm");
        QVERIFY(prefs.open(QIODevice::ReadOnly));
        QVERIFY(prefs.readAll().contains("~/Library/Preferences/zel.pref"));
    }

    void helpWindowFollowsPagesAndSendsTheWebToTheBrowser() {
        CapturedUrls opened;
        controller->registerMyHelpBook();
        controller->displayHelp(nullptr);
        HelpWindow* window = HelpWindow::shared();
        QVERIFY(window);
        QTextBrowser* browser = window->browser();
        emit browser->anchorClicked(QUrl("converting.htm"));
        QCOMPARE(window->source(), QUrl("qrc:/help/converting.htm"));
        QVERIFY(browser->toPlainText().contains("Convert All"));
        QVERIFY(opened.urls.isEmpty());
        browser->backward();
        QCOMPARE(window->source(), QUrl("qrc:/help/main.htm"));
        // The front page's link to the web site, with the site's name filled in.
        QVERIFY(!browser->toHtml().contains("{site}"));
        emit browser->anchorClicked(QUrl("http://www.ormidon.org/"));
        QCOMPARE(opened.urls, QList<QUrl>{QUrl("http://www.ormidon.org/")});
        QCOMPARE(window->source(), QUrl("qrc:/help/main.htm"));
    }
};

QTEST_MAIN(tst_HelpAndWebLinks)
#include "tst_HelpAndWebLinks.moc"
