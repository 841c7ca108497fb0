// The folder file index: stepping first, last, previous and next over a folder's files, the
// order of the listing, and the kept listing staying true to the folder.

#include "browse/FolderIndex.h"

#include "BrowseTestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtConcurrent>
#include <QtTest>

#include <atomic>

#include <sys/stat.h>
#include <unistd.h>

using namespace BrowseTestFiles;

class tst_FolderIndex : public QObject {
    Q_OBJECT

    // A fresh folder per test: a.png, b.png and a sub-folder, listed in that order.
    QString twoImagesAndAFolder(QTemporaryDir& dir) {
        writeImage(dir.path(), "a.png");
        writeImage(dir.path(), "b.png");
        makeFolder(dir.path(), "sub");
        return dir.path();
    }

private slots:
    void stepsOverFilesAndNeverOntoFolders_data() {
        QTest::addColumn<QString>("start");
        QTest::addColumn<int>("step");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("reached");

        QTest::newRow("next from the last file") << "b.png" << 102 << false << "b.png";
        QTest::newRow("previous from the last file") << "b.png" << 101 << true << "a.png";
        QTest::newRow("last from the last file") << "b.png" << 1 << true << "b.png";
        QTest::newRow("first from the last file") << "b.png" << 0 << true << "a.png";
        QTest::newRow("next from the first file") << "a.png" << 102 << true << "b.png";
        QTest::newRow("previous from the first file") << "a.png" << 101 << false << "a.png";
        QTest::newRow("first from the first file") << "a.png" << 0 << true << "a.png";
        QTest::newRow("unknown code 5") << "a.png" << 5 << false << "a.png";
        QTest::newRow("unknown code -1") << "a.png" << -1 << false << "a.png";
        QTest::newRow("unknown code 100") << "a.png" << 100 << false << "a.png";
        QTest::newRow("unknown code 103") << "b.png" << 103 << false << "b.png";
    }
    void stepsOverFilesAndNeverOntoFolders() {
        QFETCH(QString, start);
        QFETCH(int, step);
        QFETCH(bool, ok);
        QFETCH(QString, reached);
        QTemporaryDir dir;
        const QString folder = twoImagesAndAFolder(dir);
        QString path = folder + u'/' + start;
        QCOMPARE(goToFile(step, path), ok);
        QCOMPARE(path, folder + u'/' + reached);
    }

    void theOnlyFileIsItsOwnFirstAndLast() {
        QTemporaryDir dir;
        const QString only = writeImage(dir.path(), "only.png");
        for (int step : {0, 1}) {
            QString path = only;
            QVERIFY(goToFile(step, path));
            QCOMPARE(path, only);
        }
        for (int step : {101, 102}) {
            QString path = only;
            QVERIFY(!goToFile(step, path));
            QCOMPARE(path, only);
        }
    }

    void aPathNamingAFolderNeverSteps_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain folder") << "sub";
        QTest::newRow("folder named like an image") << "x.png";
    }
    void aPathNamingAFolderNeverSteps() {
        QFETCH(QString, name);
        QTemporaryDir dir;
        twoImagesAndAFolder(dir);
        const QString folder = makeFolder(dir.path(), name);
        for (int step : {0, 1, 101, 102}) {
            QString path = folder;
            QVERIFY2(!goToFile(step, path), qPrintable(QString::number(step)));
            QCOMPARE(path, folder);
        }
        QVERIFY(!folderFileList(dir.path()).contains(name));
    }

    void aDeletedFileNeverSteps() {
        QTemporaryDir dir;
        const QString folder = twoImagesAndAFolder(dir);
        const QString gone = writeImage(folder, "aa.png");
        QString probe = gone;
        QVERIFY(goToFile(102, probe)); // listed while it exists
        QCOMPARE(probe, folder + "/b.png");
        QVERIFY(QFile::remove(gone));
        for (int step : {0, 1, 101, 102}) {
            QString path = gone;
            QVERIFY(!goToFile(step, path));
            QCOMPARE(path, gone);
        }
    }

    void pathsSpelledDifferentlyFromTheListingFail_data() {
        QTest::addColumn<QString>("spelling");
        QTest::newRow("empty") << "";
        QTest::newRow("bare file name") << "a.png";
        QTest::newRow("trailing separator") << "%1/a.png/";
        QTest::newRow("other letter case") << "%1/A.png";
        QTest::newRow("doubled separator") << "%1//a.png";
        QTest::newRow("nothing there") << "%1/zzz.png";
    }
    void pathsSpelledDifferentlyFromTheListingFail() {
        QFETCH(QString, spelling);
        QTemporaryDir dir;
        const QString folder = twoImagesAndAFolder(dir);
        const QString start = spelling.contains("%1") ? spelling.arg(folder) : spelling;
        for (int step : {0, 1, 101, 102}) {
            QString path = start;
            QVERIFY(!goToFile(step, path));
            QCOMPARE(path, start);
        }
    }

    void listsInNaturalNameOrderKeepingHiddenFiles() {
        QTemporaryDir dir;
        // Written out of order on purpose: the directory gives them back in any order.
        for (const char* name : {"img10.png", "img2.png", "img1.png", ".hidden.png", "img20.png",
                                 "notes.txt", "img3.jpg"})
            QVERIFY(!writeImage(dir.path(), name).isEmpty());
        makeFolder(dir.path(), "img4");
        makeFolder(dir.path(), ".config");
        const QStringList expected{".hidden.png", "img1.png",  "img2.png", "img3.jpg",
                                   "img10.png",   "img20.png", "notes.txt"};
        QCOMPARE(folderFileList(dir.path()), expected);
        // Stepping follows the same order.
        QString path = dir.path() + "/img3.jpg";
        QVERIFY(goToFile(102, path));
        QCOMPARE(path, dir.path() + "/img10.png");
        QVERIFY(goToFile(0, path));
        QCOMPARE(path, dir.path() + "/.hidden.png");
        QVERIFY(goToFile(1, path));
        QCOMPARE(path, dir.path() + "/notes.txt");
    }

    void linksCountAsWhatTheyPointTo() {
        QTemporaryDir dir;
        const QString target = writeImage(dir.path(), "b.png");
        const QString sub = makeFolder(dir.path(), "d");
        QVERIFY(QFile::link(target, dir.path() + "/c.png"));
        QVERIFY(QFile::link(sub, dir.path() + "/e.png"));
        QCOMPARE(folderFileList(dir.path()), (QStringList{"b.png", "c.png"}));
    }

    void namesWithSpacesAccentsAndCjkStep() {
        QTemporaryDir dir;
        const QString first = writeImage(dir.path(), QStringLiteral("a first photo.png"));
        const QString second = writeImage(dir.path(), QStringLiteral("été à la mer.png"));
        const QString third = writeImage(dir.path(), QStringLiteral("写真 三.png"));
        QVERIFY(!first.isEmpty() && !second.isEmpty() && !third.isEmpty());
        QString path = first;
        QVERIFY(goToFile(102, path));
        QCOMPARE(path, second);
        QVERIFY(goToFile(102, path));
        QCOMPARE(path, third);
        QVERIFY(!goToFile(102, path));
        QVERIFY(goToFile(101, path));
        QCOMPARE(path, second);
    }

    void anUnreadableFolderGivesNothing() {
        QTemporaryDir dir;
        const QString folder = makeFolder(dir.path(), "locked");
        const QString file = writeImage(folder, "a.png");
        writeImage(folder, "b.png");
        // Search permission stays, so the file itself is still there to see; only the listing
        // is refused.
        QVERIFY(::chmod(QFile::encodeName(dir.path()).constData(), 0755) == 0);
        QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0311) == 0);
        // The super-user reads any folder: take the identity of an ordinary user meanwhile.
        const bool root = ::geteuid() == 0;
        if (root)
            QVERIFY(::seteuid(65534) == 0);
        struct stat st {};
        const bool fileVisible = ::stat(QFile::encodeName(file).constData(), &st) == 0;
        QString path = file;
        const bool stepped = goToFile(0, path);
        const QStringList listed = folderFileList(folder);
        if (root)
            QVERIFY(::seteuid(0) == 0);
        ::chmod(QFile::encodeName(folder).constData(), 0755);
        QVERIFY(fileVisible);
        QVERIFY(!stepped);
        QCOMPARE(path, file);
        QVERIFY(listed.isEmpty());
        QCOMPARE(folderFileList(folder).size(), 2);
    }

    void theKeptListingFollowsAddedAndRemovedFiles() {
        QTemporaryDir dir;
        const QString folder = dir.path();
        const QString a = writeImage(folder, "a.png");
        writeImage(folder, "c.png");
        // A listing is kept once the folder has been still for a moment.
        QTRY_VERIFY((folderFileList(folder), folderListingIsKept(folder)));

        const QString b = writeImage(folder, "b.png");
        QCOMPARE(folderFileList(folder), (QStringList{"a.png", "b.png", "c.png"}));
        QString path = a;
        QVERIFY(goToFile(102, path));
        QCOMPARE(path, b);

        QTRY_VERIFY((folderFileList(folder), folderListingIsKept(folder)));
        QVERIFY(QFile::remove(b));
        path = a;
        QVERIFY(goToFile(102, path));
        QCOMPARE(path, folder + "/c.png");

        QTRY_VERIFY((folderFileList(folder), folderListingIsKept(folder)));
        QVERIFY(QFile::rename(a, folder + "/d.png"));
        QCOMPARE(folderFileList(folder), (QStringList{"c.png", "d.png"}));
        path = a;
        QVERIFY(!goToFile(0, path));
    }

    void threadsWalkingTogetherSeeOneOrder() {
        QTemporaryDir dir;
        for (int i = 0; i < 300; ++i)
            writeText(dir.path(), QStringLiteral("f%1.txt").arg(i));
        const QStringList expected = folderFileList(dir.path());
        QCOMPARE(expected.size(), 300);
        auto walk = [&](int) {
            QStringList seen;
            QString path = dir.path() + u'/' + expected.first();
            do
                seen.append(path.mid(dir.path().size() + 1));
            while (goToFile(102, path));
            return seen;
        };
        const QList<QStringList> walks = QtConcurrent::blockingMapped(QList<int>{0, 1, 2, 3}, walk);
        for (const QStringList& seen : walks)
            QCOMPARE(seen, expected);
    }

    void walkingWhileTheFolderChanges() {
        QTemporaryDir dir;
        for (int i = 0; i < 100; ++i)
            writeText(dir.path(), QStringLiteral("f%1.txt").arg(i));
        const QString first = dir.path() + "/f0.txt";
        std::atomic<bool> done{false};
        // One job adds and removes files while the others walk the folder end to end.
        auto job = [&](int which) {
            int steps = 0;
            if (which == 0) {
                for (int round = 0; round < 200; ++round) {
                    const QString extra =
                        writeText(dir.path(), QStringLiteral("f%1x.txt").arg(round));
                    QFile::remove(extra);
                }
                done = true;
                return steps;
            }
            while (!done) {
                QString path = first;
                while (goToFile(102, path)) {
                    ++steps;
                    if (!path.startsWith(dir.path() + "/f") || !path.endsWith(".txt"))
                        return -1;
                }
                if (folderFileList(dir.path()).size() < 100)
                    return -1;
            }
            return steps;
        };
        const QList<int> steps = QtConcurrent::blockingMapped(QList<int>{0, 1, 2}, job);
        QVERIFY(!steps.contains(-1));
        QCOMPARE(folderFileList(dir.path()).size(), 100);
    }
};

QTEST_GUILESS_MAIN(tst_FolderIndex)
#include "tst_FolderIndex.moc"
