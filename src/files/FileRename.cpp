#include "files/FileRename.h"
#include "files/FileSystemCalls.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <sys/stat.h>

QString FileRename::problemWith(const QString& name) {
    if (name.trimmed().isEmpty())
        return QCoreApplication::translate("FileRename", "A name cannot be empty.");
    if (name.contains(u'/'))
        return QCoreApplication::translate("FileRename", "A name cannot contain “/”.");
    if (name.contains(QChar(0)))
        return QCoreApplication::translate("FileRename", "A name cannot contain a null character.");
    if (name.count(u'.') == name.size())
        return QCoreApplication::translate("FileRename", "A name cannot be only dots.");
    if (QFile::encodeName(name).size() > NAME_MAX)
        return QCoreApplication::translate("FileRename", "The name is too long.");
    return QString();
}

FileRename::Result FileRename::rename(const QString& path, const QString& newName) {
    Result result;
    const QFileInfo info(path);
    const QString oldName = info.fileName();
    if (const QString problem = problemWith(newName); !problem.isEmpty()) {
        result.error = problem;
        return result;
    }
    const QString folder = info.path();
    result.newPath = folder == QStringLiteral("/") ? u'/' + newName : folder + u'/' + newName;
    struct stat st {};
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0) {
        result.error = QCoreApplication::translate("FileRename", "“%1” could not be renamed: %2.")
                           .arg(oldName, systemErrorText(errno));
        return result;
    }
    if (newName == oldName) {
        result.ok = true;
        return result;
    }
    if (renameNoReplace(QFile::encodeName(path), QFile::encodeName(result.newPath)) != 0) {
        result.error =
            errno == EEXIST
                ? QCoreApplication::translate("FileRename",
                                              "A file named “%1” already exists in this folder.")
                      .arg(newName)
                : QCoreApplication::translate("FileRename", "“%1” could not be renamed: %2.")
                      .arg(oldName, systemErrorText(errno));
        return result;
    }
    result.ok = true;
    return result;
}

int FileRename::baseNameLength(const QString& name) {
    const int dot = int(name.lastIndexOf(u'.'));
    return dot > 0 ? dot : int(name.size());
}
