// Image-by-image stepping over a folder: non-images are skipped, folders never reached, and
// the first image of a folder is found from any of its files.

#include "app/Controller.h"
#include "browse/ImageWalk.h"

#include "BrowseTestFiles.h"

#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>
#include <unistd.h>

using namespace BrowseTestFiles;

class tst_ImageWalk : public QObject {
    Q_OBJECT

    const QStringList types{"jpg", "png"};

private slots:
    void skipsFilesThatAreNoImages() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.jpg", "JPEG");
        const QString notes = writeText(dir.path(), "b-notes.txt");
        const QString c = writeImage(dir.path(), "c.png");
        QString path = a;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, c);
        QVERIFY(!findImageFile(102, path, types));
        QCOMPARE(path, c);
        QVERIFY(findImageFile(101, path, types));
        QCOMPARE(path, a);
        // From a non-image the walk goes on in the step's direction.
        path = notes;
        QVERIFY(findImageFile(101, path, types));
        QCOMPARE(path, a);
    }

    // Links that lead nowhere and names that are not valid text neither stop the walk nor are
    // reached: every image after them still is, in both directions.
    void badEntriesAreSkippedAndTheWalkGoesOn() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.png");
        QVERIFY(QFile::link(dir.path() + "/nowhere.png", dir.path() + "/b-dangling.png"));
        QVERIFY(::symlink("c-loop.png", QFile::encodeName(dir.path() + "/c-loop.png")) == 0);
        const QByteArray invalid = QFile::encodeName(dir.path()) + QByteArray("/d-\xff\xfe.png");
        FILE* f = ::fopen(invalid.constData(), "w");
        QVERIFY(f);
        ::fclose(f);
        const QString e = writeImage(dir.path(), "e.png");

        QString path = a;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, e);
        QVERIFY(findImageFile(101, path, types));
        QCOMPARE(path, a);
        // From a dangling link the walk goes on as from any other entry.
        path = dir.path() + "/b-dangling.png";
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, e);
        path = dir.path() + "/c-loop.png";
        QVERIFY(findImageFile(101, path, types));
        QCOMPARE(path, a);
        path = dir.path() + "/b-dangling.png";
        QVERIFY(findFirstImageFile(path, types));
        QCOMPARE(path, a);
    }

    void aFailedWalkEndsOnTheLastEntryReached() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.png");
        writeText(dir.path(), "b.txt");
        const QString c = writeText(dir.path(), "c.txt");
        QString path = a;
        QVERIFY(!findImageFile(102, path, types));
        QCOMPARE(path, c);
    }

    void upperCaseExtensionIsSkippedWhenOnlyLowerCaseIsListed() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.jpg", "JPEG");
        writeImage(dir.path(), "photo.JPG", "JPEG");
        const QString z = writeImage(dir.path(), "z.png");
        QString path = a;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, z);
        QVERIFY(findImageFile(101, path, types));
        QCOMPARE(path, a);
    }

    void foldersNamedLikeImagesAreNeverReached() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.png");
        makeFolder(dir.path(), "b.png");
        const QString c = writeImage(dir.path(), "c.png");
        QString path = a;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, c);
    }

    void firstImageFromAnyFileOfTheFolder() {
        QTemporaryDir dir;
        QStringList all;
        all << writeText(dir.path(), "1.txt") << writeText(dir.path(), "2.txt");
        const QString image = writeImage(dir.path(), "3.png");
        all << image << writeText(dir.path(), "4.txt");
        for (const QString& start : all) {
            QString path = start;
            QVERIFY(findFirstImageFile(path, types));
            QCOMPARE(path, image);
        }
    }

    void noFirstImageInAFolderWithoutImages() {
        QTemporaryDir dir;
        const QString start = writeText(dir.path(), "a.txt");
        writeText(dir.path(), "b.txt");
        makeFolder(dir.path(), "c.png");
        QString path = start;
        QVERIFY(!findFirstImageFile(path, types));
    }

    void firstAndLastStopOnANonImage() {
        QTemporaryDir dir;
        const QString a = writeText(dir.path(), "a.txt");
        const QString b = writeImage(dir.path(), "b.png");
        writeText(dir.path(), "c.txt");
        QString path = b;
        QVERIFY(!findImageFile(0, path, types)); // must not spin on a.txt forever
        QCOMPARE(path, a);
        path = a;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, b);
    }

    void thousandsOfNonImagesInARow() {
        QTemporaryDir dir;
        const QString first = writeImage(dir.path(), "a.png");
        for (int i = 0; i < 1500; ++i)
            writeText(dir.path(), QStringLiteral("b%1.txt").arg(i));
        const QString last = writeImage(dir.path(), "c.png");
        QString path = first;
        QVERIFY(findImageFile(102, path, types));
        QCOMPARE(path, last);
    }

    void theControllerWalksWithTheReadableTypes() {
        QTemporaryDir dir;
        const QString a = writeImage(dir.path(), "a.png");
        writeImage(dir.path(), "b.Png"); // mixed case: no image
        writeText(dir.path(), "c.txt");
        const QString d = writeImage(dir.path(), "d.JPG", "JPEG");
        const Controller controller;
        QString path = a;
        QVERIFY(controller.findWMF(102, path));
        QCOMPARE(path, d);
        path = dir.path() + "/c.txt";
        QVERIFY(controller.findFirstWMF(path));
        QCOMPARE(path, a);
    }
};

QTEST_GUILESS_MAIN(tst_ImageWalk)
#include "tst_ImageWalk.moc"
