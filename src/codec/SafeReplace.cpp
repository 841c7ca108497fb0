#include "codec/SafeReplace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRandomGenerator>

#include <cstdio>
#include <mutex>

namespace SafeReplace {

namespace {

std::mutex mutex;
QHash<QString, QString>& asideOf() {
    static QHash<QString, QString> map; // output path -> where its previous content waits
    return map;
}

QString hiddenNameBeside(const QString& path, const QString& kind = QStringLiteral("previous")) {
    const QFileInfo info(path);
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString candidate = info.dir().filePath(
            QStringLiteral(".%1.ormidon-%2-%3")
                .arg(info.fileName(), kind)
                .arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0')));
        if (!QFileInfo::exists(candidate) && !QFileInfo(candidate).isSymLink())
            return candidate;
    }
    return QString();
}

// rename(2) moves files, links and folders alike, within one folder and without copying.
bool move(const QString& from, const QString& to) {
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

void removeWhatever(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        QDir(path).removeRecursively();
    else
        QFile::remove(path);
}

} // namespace

bool setAside(const QString& path) {
    const QString aside = hiddenNameBeside(path);
    if (aside.isEmpty() || !move(path, aside))
        return false;
    const std::lock_guard lock(mutex);
    asideOf().insert(path, aside);
    return true;
}

bool settle(const QString& path) {
    const QFileInfo now(path);
    const bool written = now.isFile() && !now.isSymLink() && now.size() > 0;
    QString aside;
    {
        const std::lock_guard lock(mutex);
        aside = asideOf().take(path);
    }
    if (aside.isEmpty())
        return written;
    if (written) {
        removeWhatever(aside);
    } else {
        // A folder does not replace a file by rename(2); the empty file goes first.
        if (QFileInfo(aside).isDir() && !QFileInfo(aside).isSymLink())
            QFile::remove(path);
        move(aside, path);
    }
    return written;
}

bool openForReplacement(QSaveFile& file) {
    const QFileInfo target(file.fileName());
    if (target.exists() && !target.isFile())
        return false;
    if (!target.exists() && target.isSymLink())
        return false; // a dangling link: where it leads is no place the user chose
    return file.open(QIODevice::WriteOnly);
}

bool replacesUserContent(const QString& path) {
    {
        const std::lock_guard lock(mutex);
        if (asideOf().contains(path))
            return true;
    }
    const QFileInfo info(path);
    if (info.isSymLink())
        return true; // where it leads is the user's: QSaveFile writes there, as before
    return info.exists() && !(info.isFile() && info.size() == 0);
}

FreshFile::FreshFile(const QString& path) : target(path) {}

FreshFile::~FreshFile() {
    discard();
}

bool FreshFile::open() {
    const QString name = hiddenNameBeside(target, QStringLiteral("new"));
    if (name.isEmpty())
        return false;
    setFileName(name);
    return QFile::open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

bool FreshFile::commit() {
    if (!isOpen())
        return false;
    const bool written = flush() && error() == QFileDevice::NoError;
    close();
    if (!written || error() != QFileDevice::NoError || !move(fileName(), target)) {
        discard();
        return false;
    }
    setFileName(QString()); // in place: nothing left to discard
    return true;
}

void FreshFile::discard() {
    if (fileName().isEmpty())
        return;
    close();
    QFile::remove(fileName());
    setFileName(QString());
}

} // namespace SafeReplace
