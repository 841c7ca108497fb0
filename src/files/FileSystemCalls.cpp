#include "files/FileSystemCalls.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

int renameNoReplace(const QByteArray& from, const QByteArray& to) {
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return -1;
#endif
    struct stat st {};
    if (::lstat(to.constData(), &st) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from.constData(), to.constData());
}

QString systemErrorText(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return QCoreApplication::translate("FileSystemCalls", "you may not change that folder");
    case EROFS:
        return QCoreApplication::translate("FileSystemCalls", "the disk is read-only");
    case ENOENT:
        return QCoreApplication::translate("FileSystemCalls", "the file no longer exists");
    case ENOSPC:
    case EDQUOT:
        return QCoreApplication::translate("FileSystemCalls", "the disk is full");
    default:
        return QString::fromLocal8Bit(std::strerror(error));
    }
}
