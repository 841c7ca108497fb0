#include "about/HelpBook.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace HelpBook {

namespace {

const QString kShippedFolder = QStringLiteral(":/help");

QString& bookName() {
    static QString name = QLatin1String(kBookName);
    return name;
}

QHash<QString, QString>& registeredBooks() {
    static QHash<QString, QString> books;
    return books;
}

// Pages compiled in are read from their resource path; others from files.
QUrl urlOfFile(const QString& path) {
    if (path.startsWith(u':'))
        return QUrl(QStringLiteral("qrc") + path);
    return QUrl::fromLocalFile(path);
}

} // namespace

QString configuredBookName() {
    return bookName();
}

void setConfiguredBookName(const QString& name) {
    bookName() = name;
}

QString shippedFolder() {
    return QFileInfo::exists(kShippedFolder + u'/' + QLatin1String(kFrontPage)) ? kShippedFolder
                                                                                : QString();
}

int16_t registerBook(const QString& name, const QString& folder) {
    if (folder.isEmpty() || !QFileInfo::exists(folder + u'/' + QLatin1String(kFrontPage)))
        return kFileNotFound;
    registeredBooks().insert(name, folder);
    return 0;
}

QUrl pageOfBook(const QString& name, const QString& page) {
    const auto book = registeredBooks().constFind(name);
    if (book == registeredBooks().constEnd())
        return QUrl();
    return urlOfFile(*book + u'/' + page);
}

QUrl shippedPage(const QString& page) {
    return urlOfFile(kShippedFolder + u'/' + page);
}

void forgetBooks() {
    registeredBooks().clear();
}

} // namespace HelpBook
