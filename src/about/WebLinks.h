#pragma once

// Ormidon's web site and the one way the program opens a web page: every link of the about
// panel, the links text, the help pages and the Help menu goes through openURL, so that the
// host and the support identifier are written here and nowhere else.

#include <QString>
#include <QUrl>

#include <functional>

namespace WebLinks {

inline constexpr char kSchemePrefix[] = "http://";
inline constexpr char kSiteHost[] = "www.ormidon.org";
inline constexpr char kSupportId[] = "ormidon-linux";

QUrl homePage();    // the site's front page
QUrl adPage();      // "/mac.htm", the page about the maker's other programs
QUrl supportPage(); // "/support.aspx?id=" + the support identifier

// Relative links ("/mac.htm") are taken as pages of the site.
QUrl onSite(const QUrl& link);

// Replaces "{site}" with the host and "{support}" with the support identifier, so that texts
// shipped with the program name the site without writing it down a second time.
QString withSiteNames(QString text);

} // namespace WebLinks

// Hands the URL to the desktop's default browser (or to the opener tests put in its place);
// false when the URL is invalid or the desktop refused it. Nothing is reported to the user.
bool openURL(const QUrl& url);

// Tests replace the desktop with their own opener; an empty function restores the desktop.
using UrlOpener = std::function<bool(const QUrl&)>;
void setUrlOpener(UrlOpener opener);
