#include "about/WebLinks.h"

#include <QDesktopServices>

namespace WebLinks {

namespace {

QUrl pageOnSite(const QString& pathAndQuery) {
    return QUrl(QLatin1String(kSchemePrefix) + QLatin1String(kSiteHost) + pathAndQuery,
                QUrl::StrictMode);
}

} // namespace

QUrl homePage() {
    return pageOnSite(QString());
}

QUrl adPage() {
    return pageOnSite(QStringLiteral("/mac.htm"));
}

QUrl supportPage() {
    return pageOnSite(QStringLiteral("/support.aspx?id=") + QLatin1String(kSupportId));
}

QUrl onSite(const QUrl& link) {
    return link.isRelative() ? homePage().resolved(link) : link;
}

QString withSiteNames(QString text) {
    return text.replace(QLatin1String("{site}"), QLatin1String(kSiteHost))
        .replace(QLatin1String("{support}"), QLatin1String(kSupportId));
}

} // namespace WebLinks

namespace {

UrlOpener& currentOpener() {
    static UrlOpener opener;
    return opener;
}

} // namespace

bool openURL(const QUrl& url) {
    if (!url.isValid())
        return false;
    if (currentOpener())
        return currentOpener()(url);
    // The test suites run with ORMIDON_TEST set: a test that forgot its own opener must not
    // start a browser on the machine that runs it.
    if (qEnvironmentVariableIsSet("ORMIDON_TEST"))
        return false;
    return QDesktopServices::openUrl(url);
}

void setUrlOpener(UrlOpener opener) {
    currentOpener() = std::move(opener);
}
