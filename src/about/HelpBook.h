#pragma once

// Ormidon's help: a book of HTML pages compiled into the program (and installed beside it for
// reading outside it), registered at start-up under its name and shown in the help window.

#include <QString>
#include <QUrl>

#include <cstdint>

namespace HelpBook {

inline constexpr char kBookName[] = "Ormidon Help";
inline constexpr char kFrontPage[] = "main.htm";
inline constexpr int16_t kFileNotFound = -43;

// The name the program gives its help book; tests take it away to see help open without one.
QString configuredBookName();
void setConfiguredBookName(const QString& name);

// The folder of the shipped pages (":/help"), or empty when the program has none.
QString shippedFolder();

// Registers the book's folder under the name: 0, or kFileNotFound when the folder has no front
// page.
int16_t registerBook(const QString& name, const QString& folder);
// The page of a registered book; an empty URL when the book is not registered.
QUrl pageOfBook(const QString& name, const QString& page);
// The shipped page by its own path, no book involved.
QUrl shippedPage(const QString& page);
void forgetBooks(); // tests start from no registered book

} // namespace HelpBook
