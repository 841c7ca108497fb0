#include "files/FreedesktopTrash.h"
#include "files/FileSystemCalls.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray local(const QString& path) {
    return QFile::encodeName(path);
}

TrashResult failure(const QString& error) {
    TrashResult result;
    result.error = error;
    return result;
}

bool isOwnDirectory(const QByteArray& path) {
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid();
}

// A folder only its owner can enter, made when missing; an existing one must be a real folder.
bool ensurePrivateDir(const QString& path) {
    const QByteArray bytes = local(path);
    if (::mkdir(bytes.constData(), 0700) == 0)
        return true;
    struct stat st {};
    return errno == EEXIST && ::lstat(bytes.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool ensureTrashFolders(const QString& trash) {
    return ensurePrivateDir(trash) && ensurePrivateDir(trash + QStringLiteral("/files")) &&
           ensurePrivateDir(trash + QStringLiteral("/info"));
}

dev_t deviceOf(const QByteArray& path, bool* ok) {
    struct stat st {};
    *ok = ::stat(path.constData(), &st) == 0;
    return st.st_dev;
}

// The device of `path`, or of its nearest folder that exists (the trash may not be made yet).
dev_t deviceOfNearest(QString path) {
    for (;;) {
        bool ok = false;
        const dev_t device = deviceOf(local(path), &ok);
        if (ok || path == QStringLiteral("/") || path.isEmpty())
            return device;
        path = QFileInfo(path).path();
    }
}

// A trash folder of this user's, made when missing: it must be the user's own real folder before
// anything is made inside it.
bool isUsableTrash(const QString& trash) {
    return ensurePrivateDir(trash) && isOwnDirectory(local(trash)) && ensureTrashFolders(trash);
}

// The top folder of the file system that holds `folder` (canonical): the highest folder above
// it on the same device.
QString topFolderOf(const QString& folder, dev_t device) {
    QString top = folder;
    while (top != QStringLiteral("/")) {
        QString parent = QFileInfo(top).path();
        bool ok = false;
        if (deviceOf(local(parent), &ok) != device || !ok)
            break;
        top = parent;
    }
    return top;
}

// The trash of the file system whose top folder is `top`, made when missing; empty when the
// user may have none there. An administrator's $top/.Trash counts only when it is a real
// folder with the sticky bit, so that nobody can swap another user's trash in.
QString topFolderTrash(const QString& top) {
    const QString uid = QString::number(::getuid());
    const QString base = top == QStringLiteral("/") ? QString() : top;
    struct stat st {};
    const QByteArray shared = local(base + QStringLiteral("/.Trash"));
    if (::lstat(shared.constData(), &st) == 0 && S_ISDIR(st.st_mode) && (st.st_mode & S_ISVTX)) {
        const QString mine = base + QStringLiteral("/.Trash/") + uid;
        if (isUsableTrash(mine))
            return mine;
    }
    const QString own = base + QStringLiteral("/.Trash-") + uid;
    if (isUsableTrash(own))
        return own;
    return QString();
}

// "photo.jpg", then "photo (2).jpg", "photo (3).jpg", ...
QString candidateName(const QString& name, int attempt) {
    if (attempt == 1)
        return name;
    const int dot = name.lastIndexOf(u'.');
    const QString counter = QStringLiteral(" (%1)").arg(attempt);
    if (dot <= 0)
        return name + counter;
    return name.left(dot) + counter + name.mid(dot);
}

bool writeAll(int fd, const QByteArray& data) {
    qsizetype done = 0;
    while (done < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + done, size_t(data.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += n;
    }
    return true;
}

} // namespace

QString FreedesktopTrash::homeTrash() {
    QString data = QString::fromLocal8Bit(qgetenv("XDG_DATA_HOME"));
    if (data.isEmpty() || !QDir::isAbsolutePath(data))
        data = QDir::homePath() + QStringLiteral("/.local/share");
    return data + QStringLiteral("/Trash");
}

QByteArray FreedesktopTrash::infoText(const QString& recordedPath, const QDateTime& deletedAt) {
    return QByteArrayLiteral("[Trash Info]\nPath=") +
           QUrl::toPercentEncoding(local(recordedPath), "/") +
           QByteArrayLiteral("\nDeletionDate=") +
           deletedAt.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() + '\n';
}

TrashResult FreedesktopTrash::moveToTrash(const QString& path) {
    const QFileInfo info(path);
    const QString name = info.fileName();
    const QString shown = name.isEmpty() ? path : name;
    auto refuse = [&shown](const QString& why) {
        return failure(
            FreedesktopTrash::tr("“%1” could not be moved to the trash: %2.").arg(shown, why));
    };

    struct stat st {};
    if (name.isEmpty() || ::lstat(local(path).constData(), &st) != 0)
        return refuse(systemErrorText(ENOENT));
    if (S_ISDIR(st.st_mode))
        return refuse(FreedesktopTrash::tr("it is a folder"));

    // Where it lives, without symbolic links, so that the top folder is found by name.
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (folder.isEmpty())
        return refuse(systemErrorText(ENOENT));
    const QString original = folder == QStringLiteral("/") ? u'/' + name : folder + u'/' + name;

    // The home trash serves the file system it is on; any other file system has its own.
    QString trash = homeTrash();
    QString recorded = original;
    if (deviceOfNearest(trash) == st.st_dev) {
        if (!QDir().mkpath(QFileInfo(trash).path()) || !ensureTrashFolders(trash))
            return refuse(FreedesktopTrash::tr("the trash folder “%1” cannot be made").arg(trash));
    } else {
        const QString top = topFolderOf(folder, st.st_dev); // the file is on its folder's disk
        trash = topFolderTrash(top);
        if (trash.isEmpty())
            return refuse(
                FreedesktopTrash::tr("its disk has no trash, and none can be made there"));
        recorded = top == QStringLiteral("/") ? original.mid(1) : original.mid(top.size() + 1);
    }

    const QByteArray text = infoText(recorded, QDateTime::currentDateTime());
    for (int attempt = 1; attempt < 10000; ++attempt) {
        const QString candidate = candidateName(name, attempt);
        TrashedFile moved{original, trash + QStringLiteral("/files/") + candidate,
                          trash + QStringLiteral("/info/") + candidate +
                              QStringLiteral(".trashinfo")};
        // The info file is made first and exclusively: it reserves the name.
        const QByteArray infoBytes = local(moved.infoPath);
        const int fd = ::open(infoBytes.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return refuse(systemErrorText(errno));
        }
        const bool written = writeAll(fd, text);
        const int writeError = errno;
        ::close(fd);
        if (!written) {
            ::unlink(infoBytes.constData());
            return refuse(systemErrorText(writeError));
        }
        if (renameNoReplace(local(path), local(moved.trashedPath)) == 0) {
            TrashResult result;
            result.ok = true;
            result.file = moved;
            return result;
        }
        const int renameError = errno;
        ::unlink(infoBytes.constData());
        if (renameError == EEXIST)
            continue; // a file without its info file holds the name: the next one
        return refuse(systemErrorText(renameError));
    }
    return refuse(FreedesktopTrash::tr("the trash holds too many files of that name"));
}

TrashResult FreedesktopTrash::restore(const TrashedFile& file) {
    const QString name = QFileInfo(file.originalPath).fileName();
    auto refuse = [&name](const QString& why) {
        return failure(FreedesktopTrash::tr("“%1” could not be put back: %2.").arg(name, why));
    };
    struct stat st {};
    if (::lstat(local(file.trashedPath).constData(), &st) != 0)
        return refuse(FreedesktopTrash::tr("it is no longer in the trash"));
    const QString folder = QFileInfo(file.originalPath).path();
    if (!QFileInfo(folder).isDir())
        return refuse(FreedesktopTrash::tr("its folder “%1” no longer exists").arg(folder));
    if (renameNoReplace(local(file.trashedPath), local(file.originalPath)) != 0) {
        if (errno == EEXIST)
            return refuse(
                FreedesktopTrash::tr("something else is now named so in “%1”").arg(folder));
        return refuse(systemErrorText(errno));
    }
    ::unlink(local(file.infoPath).constData());
    TrashResult result;
    result.ok = true;
    result.file = file;
    return result;
}
