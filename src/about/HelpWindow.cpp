#include "about/HelpWindow.h"

#include "about/WebLinks.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QShortcut>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QPointer<HelpWindow>& sharedWindow() {
    static QPointer<HelpWindow> window;
    return window;
}

// Help pages name the web site as "{site}"; the browser shows them with the real names.
class HelpBrowser : public QTextBrowser {
public:
    using QTextBrowser::QTextBrowser;
    QVariant loadResource(int type, const QUrl& name) override {
        QVariant resource = QTextBrowser::loadResource(type, name);
        if (type == QTextDocument::HtmlResource) {
            const QString text = resource.typeId() == QMetaType::QByteArray
                                     ? QString::fromUtf8(resource.toByteArray())
                                     : resource.toString();
            resource = WebLinks::withSiteNames(text);
        }
        return resource;
    }
};

bool isHelpPage(const QUrl& url) {
    return url.scheme() == QLatin1String("qrc") || url.isLocalFile();
}

} // namespace

HelpWindow* HelpWindow::shared() {
    return sharedWindow();
}

HelpWindow* HelpWindow::showPage(QWidget* owner, const QUrl& page) {
    if (!sharedWindow())
        sharedWindow() = new HelpWindow(owner);
    HelpWindow* window = sharedWindow();
    if (window->mContents.isEmpty())
        window->mContents = page;
    window->mBrowser->setSource(page);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

HelpWindow::HelpWindow(QWidget* owner) : QWidget(owner, Qt::Window) {
    setObjectName(QStringLiteral("helpWindow"));
    setWindowTitle(tr("Ormidon Help"));
    setAttribute(Qt::WA_DeleteOnClose, !owner);
    resize(720, 620);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    auto* bar = new QHBoxLayout;
    mBack = new QToolButton(this);
    mBack->setText(tr("◀ Back"));
    mForward = new QToolButton(this);
    mForward->setText(tr("Forward ▶"));
    auto* contents = new QToolButton(this);
    contents->setText(tr("Contents"));
    bar->addWidget(mBack);
    bar->addWidget(mForward);
    bar->addWidget(contents);
    bar->addStretch();
    column->addLayout(bar);

    mBrowser = new HelpBrowser(this);
    mBrowser->setObjectName(QStringLiteral("helpBrowser"));
    mBrowser->setOpenLinks(false); // pages of the help follow here, the web goes to the browser
    column->addWidget(mBrowser, 1);

    mBack->setEnabled(false);
    mForward->setEnabled(false);
    connect(mBrowser, &QTextBrowser::backwardAvailable, mBack, &QWidget::setEnabled);
    connect(mBrowser, &QTextBrowser::forwardAvailable, mForward, &QWidget::setEnabled);
    connect(mBack, &QToolButton::clicked, mBrowser, &QTextBrowser::backward);
    connect(mForward, &QToolButton::clicked, mBrowser, &QTextBrowser::forward);
    connect(contents, &QToolButton::clicked, this, [this] { mBrowser->setSource(mContents); });
    connect(mBrowser, &QTextBrowser::anchorClicked, this, &HelpWindow::follow);
    connect(mBrowser, &QTextBrowser::sourceChanged, this, [this] {
        const QString title = mBrowser->documentTitle();
        setWindowTitle(title.isEmpty() ? tr("Ormidon Help") : tr("Ormidon Help: %1").arg(title));
    });
    auto* close = new QShortcut(QKeySequence::Close, this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);
}

QUrl HelpWindow::source() const {
    return mBrowser->source();
}

void HelpWindow::follow(const QUrl& link) {
    const QUrl target = mBrowser->source().resolved(link);
    if (isHelpPage(target))
        mBrowser->setSource(target);
    else
        openURL(target);
}
