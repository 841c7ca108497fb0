// The desktop trash on real files in a private HOME: a moved file and its .trashinfo, names
// that collide, putting back byte for byte, and the refusals (a folder that may not change, a
// file that is gone, a name taken meanwhile), plus a file on another file system.

#include "files/FreedesktopTrash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray randomBytes(int size) {
    QByteArray data(size, Qt::Uninitialized);
    for (char& byte : data)
        byte = char(QRandomGenerator::global()->bounded(256));
    return data;
}

bool writeFile(const QString& path, const QByteArray& data) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A folder nobody may change: without write permission, and immutable for root, whom
// permissions don't stop. Undone by the destructor.
class LockedFolder {
public:
    explicit LockedFolder(const QString& path) : path(path) {
        ::chmod(QFile::encodeName(path).constData(), 0555);
        if (::geteuid() == 0)
            immutable = setImmutable(true);
    }
    ~LockedFolder() {
        if (immutable)
            setImmutable(false);
        ::chmod(QFile::encodeName(path).constData(), 0755);
    }
    bool locked() const { return ::geteuid() != 0 || immutable; }

private:
    bool setImmutable(bool on) {
        const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY);
        if (fd < 0)
            return false;
        int flags = 0;
        bool ok = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ok && ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        ::close(fd);
        return ok;
    }
    QString path;
    bool immutable = false;
};

} // namespace

class tst_FreedesktopTrash : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QString pictures;

    QString trash() const { return home.path() + QStringLiteral("/data/Trash"); }
    QString picture(const QString& name) const { return pictures + u'/' + name; }

private slots:
    void init() {
        QVERIFY(home.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
        QDir(home.path() + "/data").removeRecursively();
        pictures = home.path() + QStringLiteral("/Pictures");
        QDir(pictures).removeRecursively();
        QVERIFY(QDir().mkpath(pictures));
    }

    void theHomeTrashFollowsXdgDataHome() {
        QCOMPARE(FreedesktopTrash::homeTrash(), trash());
        qputenv("XDG_DATA_HOME", "");
        QCOMPARE(FreedesktopTrash::homeTrash(), home.path() + "/.local/share/Trash");
        qputenv("XDG_DATA_HOME", "relative/not/allowed");
        QCOMPARE(FreedesktopTrash::homeTrash(), home.path() + "/.local/share/Trash");
    }

    void movesTheFileAndWritesItsInfo() {
        const QString name = QStringLiteral("Summer 100% ü#1.jpg");
        const QByteArray bytes = randomBytes(5000);
        QVERIFY(writeFile(picture(name), bytes));
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);

        const TrashResult result = FreedesktopTrash::moveToTrash(picture(name));
        QVERIFY2(result.ok, qPrintable(result.error));
        QVERIFY(!QFileInfo::exists(picture(name)));
        QCOMPARE(result.file.originalPath, picture(name));
        QCOMPARE(result.file.trashedPath, trash() + "/files/" + name);
        QCOMPARE(result.file.infoPath, trash() + "/info/" + name + ".trashinfo");
        QCOMPARE(readFile(result.file.trashedPath), bytes);

        const QByteArray info = readFile(result.file.infoPath);
        const QList<QByteArray> lines = info.split('\n');
        QCOMPARE(lines.value(0), QByteArray("[Trash Info]"));
        QVERIFY(lines.value(1).startsWith("Path="));
        const QByteArray encoded = lines.value(1).mid(5);
        QVERIFY2(!encoded.contains(' ') && !encoded.contains('%' + QByteArray("%")),
                 encoded.constData());
        QVERIFY(encoded.contains("%25") && encoded.contains("%23") && encoded.contains("%20"));
        QCOMPARE(QFile::decodeName(QByteArray::fromPercentEncoding(encoded)), picture(name));
        QVERIFY(lines.value(2).startsWith("DeletionDate="));
        const QDateTime deleted =
            QDateTime::fromString(QString::fromLatin1(lines.value(2).mid(13)), Qt::ISODate);
        QVERIFY(deleted.isValid());
        QVERIFY(deleted >= before && deleted <= QDateTime::currentDateTime().addSecs(1));
        QFileInfo infoFile(result.file.infoPath);
        QCOMPARE(infoFile.permissions() & (QFile::ReadOther | QFile::WriteOther),
                 QFile::Permissions());
    }

    void collidingNamesGetUniqueOnes() {
        QStringList trashed;
        for (int round = 0; round < 3; ++round) {
            QVERIFY(writeFile(picture("cat.png"), QByteArray::number(round)));
            const TrashResult result = FreedesktopTrash::moveToTrash(picture("cat.png"));
            QVERIFY2(result.ok, qPrintable(result.error));
            trashed.append(QFileInfo(result.file.trashedPath).fileName());
            QCOMPARE(readFile(result.file.trashedPath), QByteArray::number(round));
            QVERIFY(QFileInfo::exists(result.file.infoPath));
        }
        QCOMPARE(trashed, QStringList({"cat.png", "cat (2).png", "cat (3).png"}));
        // A file left in files/ without its info file still holds its name.
        QVERIFY(writeFile(trash() + "/files/dog", "orphan"));
        QVERIFY(writeFile(picture("dog"), "mine"));
        const TrashResult dog = FreedesktopTrash::moveToTrash(picture("dog"));
        QVERIFY2(dog.ok, qPrintable(dog.error));
        QCOMPARE(QFileInfo(dog.file.trashedPath).fileName(), QStringLiteral("dog (2)"));
        QCOMPARE(readFile(trash() + "/files/dog"), QByteArray("orphan"));
    }

    void restoreIsByteIdentical() {
        const QByteArray bytes = randomBytes(300000);
        QVERIFY(writeFile(picture("big.raw"), bytes));
        QVERIFY(QFile::setPermissions(picture("big.raw"), QFile::ReadOwner | QFile::WriteOwner));
        const TrashResult moved = FreedesktopTrash::moveToTrash(picture("big.raw"));
        QVERIFY2(moved.ok, qPrintable(moved.error));
        const TrashResult back = FreedesktopTrash::restore(moved.file);
        QVERIFY2(back.ok, qPrintable(back.error));
        QCOMPARE(readFile(picture("big.raw")), bytes);
        QCOMPARE(QFile::permissions(picture("big.raw")),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
        QVERIFY(!QFileInfo::exists(moved.file.trashedPath));
        QVERIFY(!QFileInfo::exists(moved.file.infoPath));
    }

    void restoreRefusesAnOccupiedName() {
        QVERIFY(writeFile(picture("a.png"), "old"));
        const TrashResult moved = FreedesktopTrash::moveToTrash(picture("a.png"));
        QVERIFY(moved.ok);
        QVERIFY(writeFile(picture("a.png"), "new"));
        const TrashResult back = FreedesktopTrash::restore(moved.file);
        QVERIFY(!back.ok);
        QVERIFY2(back.error.contains("a.png"), qPrintable(back.error));
        QCOMPARE(readFile(picture("a.png")), QByteArray("new")); // nothing replaced
        QCOMPARE(readFile(moved.file.trashedPath), QByteArray("old"));
        QVERIFY(QFileInfo::exists(moved.file.infoPath)); // still shown in the trash
    }

    void restoreRefusesWhenTheTrashedFileIsGone() {
        QVERIFY(writeFile(picture("b.png"), "x"));
        const TrashResult moved = FreedesktopTrash::moveToTrash(picture("b.png"));
        QVERIFY(moved.ok);
        QVERIFY(QFile::remove(moved.file.trashedPath)); // emptied from the file manager
        const TrashResult back = FreedesktopTrash::restore(moved.file);
        QVERIFY(!back.ok);
        QVERIFY(!back.error.isEmpty());
        QVERIFY(!QFileInfo::exists(picture("b.png")));
    }

    void restoreRefusesWhenTheFolderIsGone() {
        QVERIFY(QDir().mkpath(pictures + "/sub"));
        QVERIFY(writeFile(pictures + "/sub/c.png", "x"));
        const TrashResult moved = FreedesktopTrash::moveToTrash(pictures + "/sub/c.png");
        QVERIFY(moved.ok);
        QVERIFY(QDir(pictures + "/sub").removeRecursively());
        const TrashResult back = FreedesktopTrash::restore(moved.file);
        QVERIFY(!back.ok);
        QVERIFY(QFileInfo::exists(moved.file.trashedPath));
    }

    void aMissingFileIsRefused() {
        const TrashResult result = FreedesktopTrash::moveToTrash(picture("never.png"));
        QVERIFY(!result.ok);
        QVERIFY2(result.error.contains("never.png"), qPrintable(result.error));
        QVERIFY(QDir(trash() + "/info").isEmpty());
    }

    void aFolderIsRefused() {
        QVERIFY(QDir().mkpath(pictures + "/album"));
        const TrashResult result = FreedesktopTrash::moveToTrash(pictures + "/album");
        QVERIFY(!result.ok);
        QVERIFY(QFileInfo(pictures + "/album").isDir());
    }

    void anUnwritableFolderIsRefusedAndLeavesNoInfo() {
        QVERIFY(writeFile(picture("locked.png"), "keep"));
        LockedFolder lock(pictures);
        if (!lock.locked())
            QSKIP("this file system cannot make a folder immutable for root");
        const TrashResult result = FreedesktopTrash::moveToTrash(picture("locked.png"));
        QVERIFY(!result.ok);
        QVERIFY2(result.error.contains("locked.png"), qPrintable(result.error));
        QCOMPARE(readFile(picture("locked.png")), QByteArray("keep"));
        QVERIFY(QDir(trash() + "/info").isEmpty());
        QVERIFY(QDir(trash() + "/files").isEmpty());
    }

    void aTrashThatCannotBeMadeIsRefused() {
        QVERIFY(writeFile(picture("d.png"), "keep"));
        QVERIFY(QDir().mkpath(home.path() + "/data"));
        LockedFolder lock(home.path() + "/data");
        if (!lock.locked())
            QSKIP("this file system cannot make a folder immutable for root");
        const TrashResult result = FreedesktopTrash::moveToTrash(picture("d.png"));
        QVERIFY(!result.ok);
        QCOMPARE(readFile(picture("d.png")), QByteArray("keep"));
    }

    // The move itself fails after the info file was made (the trash's files folder cannot take
    // it): the info file goes again and the picture stays where it was.
    void aFailedMoveLeavesNoInfo() {
        QVERIFY(writeFile(picture("e.png"), "keep"));
        QVERIFY(writeFile(picture("f.png"), "first"));
        QVERIFY(FreedesktopTrash::moveToTrash(picture("f.png")).ok); // makes the trash
        LockedFolder lock(trash() + "/files");
        if (!lock.locked())
            QSKIP("this file system cannot make a folder immutable for root");
        const TrashResult result = FreedesktopTrash::moveToTrash(picture("e.png"));
        QVERIFY(!result.ok);
        QCOMPARE(readFile(picture("e.png")), QByteArray("keep"));
        QCOMPARE(QDir(trash() + "/info").entryList(QDir::Files), QStringList{"f.png.trashinfo"});
    }

    // A file on another file system (a memory disk here) goes to that file system's own trash
    // at its top folder, and the info file records its path from there.
    void anotherFileSystemHasItsOwnTrash() {
        struct stat shm {
        }, mine{};
        if (::stat("/dev/shm", &shm) != 0 || ::stat(QFile::encodeName(home.path()), &mine) != 0 ||
            shm.st_dev == mine.st_dev || ::access("/dev/shm", W_OK) != 0)
            QSKIP("no writable memory disk beside the home folder's file system");
        QTemporaryDir there(QStringLiteral("/dev/shm/ormidon-trash-XXXXXX"));
        QVERIFY(there.isValid());
        const QString path = there.path() + "/far.png";
        QVERIFY(writeFile(path, "far"));
        const TrashResult moved = FreedesktopTrash::moveToTrash(path);
        QVERIFY2(moved.ok, qPrintable(moved.error));
        const QString own = QStringLiteral("/dev/shm/.Trash-%1").arg(::getuid());
        const bool shared = moved.file.trashedPath.startsWith("/dev/shm/.Trash/");
        QVERIFY2(moved.file.trashedPath.startsWith(own + "/files/") || shared,
                 qPrintable(moved.file.trashedPath));
        QVERIFY(QDir(trash() + "/files").isEmpty() || !QDir(trash()).exists());
        const QByteArray info = readFile(moved.file.infoPath);
        const QByteArray relative = QFile::encodeName(path.mid(QStringLiteral("/dev/shm/").size()));
        QVERIFY2(info.contains("\nPath=" + QUrl::toPercentEncoding(relative, "/") + '\n'),
                 info.constData());
        const TrashResult back = FreedesktopTrash::restore(moved.file);
        QVERIFY2(back.ok, qPrintable(back.error));
        QCOMPARE(readFile(path), QByteArray("far"));
        if (!shared) { // what this test made, if nothing else is in it
            QDir().rmdir(own + "/files");
            QDir().rmdir(own + "/info");
            QDir().rmdir(own);
        }
    }
};

QTEST_GUILESS_MAIN(tst_FreedesktopTrash)
#include "tst_FreedesktopTrash.moc"
