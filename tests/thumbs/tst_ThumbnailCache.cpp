// The shared thumbnail cache as other desktop programs see it: where entries go, what they
// record, when they are trusted, rebuilt or never made, and that an entry someone else wrote is
// used without decoding the picture.

#include "thumbs/ThumbnailCache.h"
#include "thumbs/ThumbnailMaker.h"

#include "ThumbTestFiles.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <sys/stat.h>

using namespace ThumbTestFiles;

class tst_ThumbnailCache : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;
    QString cache;

    static QString md5Name(const QString& path) {
        const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
        return QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) +
               ".png";
    }
    QString normalEntry(const QString& path) const { return cache + "/normal/" + md5Name(path); }

    static int modeOf(const QString& path) {
        struct stat st {};
        return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? int(st.st_mode & 0777) : -1;
    }

    static QString textOf(const QString& png, const char* key) {
        return QImage(png, "png").text(QString::fromLatin1(key));
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && files.isValid());
        cache = home.path() + "/cache/thumbnails";
        QDir(home.path() + "/cache").removeRecursively();
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CACHE_HOME", (home.path() + "/cache").toUtf8());
    }

    void theRootFollowsXdgCacheHome() {
        QCOMPARE(ThumbnailCache::root(), cache);
        qputenv("XDG_CACHE_HOME", "relative/cache"); // not absolute: ignored
        QCOMPARE(ThumbnailCache::root(), home.path() + "/.cache/thumbnails");
        qunsetenv("XDG_CACHE_HOME");
        QCOMPARE(ThumbnailCache::root(), home.path() + "/.cache/thumbnails");
    }

    void aThumbnailIsStoredAsTheStandardSays() {
        const QString path = writePicture(files.path(), "photo one.png", {640, 480}, Qt::red);
        QVERIFY(setModified(path, 1'600'000'000));
        const QImage image = ThumbnailMaker::make(path, 80);
        QCOMPARE(image.size(), QSize(128, 96));
        const QString entry = normalEntry(path);
        QVERIFY2(QFile::exists(entry), qPrintable(entry));
        QCOMPARE(textOf(entry, "Thumb::URI"), QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
        QVERIFY(textOf(entry, "Thumb::URI").contains("photo%20one.png"));
        QCOMPARE(textOf(entry, "Thumb::MTime"), QStringLiteral("1600000000"));
        QCOMPARE(modeOf(entry), 0600);
        QCOMPARE(modeOf(cache), 0700);
        QCOMPARE(modeOf(cache + "/normal"), 0700);
        QVERIFY(near(centreOf(QImage(entry)), Qt::red));
        // Written whole: nothing but the entry in the folder.
        QCOMPARE(QDir(cache + "/normal").entryList(QDir::Files), QStringList{md5Name(path)});
    }

    void aDenseScreenUsesTheLargeFolder() {
        const QString path = writePicture(files.path(), "big.png", {1000, 500}, Qt::blue);
        const QImage image = ThumbnailMaker::make(path, 160);
        QCOMPARE(image.size(), QSize(256, 128));
        QVERIFY(QFile::exists(cache + "/large/" + md5Name(path)));
        QVERIFY(!QFile::exists(normalEntry(path)));
    }

    void aSecondRequestDecodesNothing() {
        const QString path = writePicture(files.path(), "again.png", {300, 300}, Qt::green);
        const uint64_t before = ThumbnailMaker::decodeCount();
        QVERIFY(!ThumbnailMaker::make(path, 80).isNull());
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 1);
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::green));
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 1);
    }

    void aStaleEntryIsRebuilt() {
        const QString path = writePicture(files.path(), "stale.png", {300, 200}, Qt::yellow);
        QVERIFY(setModified(path, 1'500'000'000));
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::yellow));
        // The picture changes; its modification time with it.
        QVERIFY(!writePicture(files.path(), "stale.png", {300, 200}, Qt::magenta).isEmpty());
        QVERIFY(setModified(path, 1'500'000'100));
        const uint64_t before = ThumbnailMaker::decodeCount();
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::magenta));
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 1);
        QCOMPARE(textOf(normalEntry(path), "Thumb::MTime"), QStringLiteral("1500000100"));
        QVERIFY(near(centreOf(QImage(normalEntry(path))), Qt::magenta));
    }

    void anEntryAnotherProgramWroteIsUsed() {
        const QString path = writePicture(files.path(), "theirs.png", {400, 300}, Qt::black);
        QVERIFY(setModified(path, 1'650'000'000));
        // A file manager's entry: a different picture than the file holds, so that its use shows.
        QVERIFY(QDir().mkpath(cache + "/normal"));
        QImage theirs(128, 96, QImage::Format_ARGB32);
        theirs.fill(Qt::cyan);
        theirs.setText("Thumb::URI", QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
        theirs.setText("Thumb::MTime", "1650000000");
        theirs.setText("Software", "Some File Manager");
        QVERIFY(theirs.save(normalEntry(path), "png"));
        const uint64_t before = ThumbnailMaker::decodeCount();
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::cyan));
        QCOMPARE(ThumbnailMaker::decodeCount(), before);
    }

    void anEntryForAnotherFileOrWithoutATimeIsNotTrusted() {
        const QString path = writePicture(files.path(), "mine.png", {400, 300}, Qt::darkRed);
        QVERIFY(setModified(path, 1'650'000'000));
        QVERIFY(QDir().mkpath(cache + "/normal"));
        QImage wrong(128, 96, QImage::Format_RGB32);
        wrong.fill(Qt::cyan);
        wrong.setText("Thumb::URI", "file:///somewhere/else.png");
        wrong.setText("Thumb::MTime", "1650000000");
        QVERIFY(wrong.save(normalEntry(path), "png"));
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::darkRed));
        QImage noTime(128, 96, QImage::Format_RGB32);
        noTime.fill(Qt::cyan);
        noTime.setText("Thumb::URI", QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
        QVERIFY(noTime.save(normalEntry(path), "png")); // no Thumb::MTime
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::darkRed));
    }

    void aFailureIsRememberedUntilTheFileChanges() {
        const QString path = writeBytes(files.path(), "broken.png", "\x89PNG\r\n\x1a\nnothing more");
        QVERIFY(setModified(path, 1'400'000'000));
        uint64_t before = ThumbnailMaker::decodeCount();
        QVERIFY(ThumbnailMaker::make(path, 80).isNull());
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 1);
        const QString fail = cache + "/fail/ormidon-" ORMIDON_VERSION "/" + md5Name(path);
        QVERIFY2(QFile::exists(fail), qPrintable(fail));
        QCOMPARE(modeOf(fail), 0600);
        QCOMPARE(modeOf(cache + "/fail"), 0700);
        QCOMPARE(textOf(fail, "Thumb::MTime"), QStringLiteral("1400000000"));
        QVERIFY(!QFile::exists(normalEntry(path)));
        // Not tried again while it is the same file.
        QVERIFY(ThumbnailMaker::make(path, 80).isNull());
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 1);
        // Once it is a picture, it is.
        QVERIFY(!writePicture(files.path(), "broken.png", {200, 100}, Qt::blue, "PNG").isEmpty());
        QVERIFY(setModified(path, 1'400'000'050));
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::blue));
        QCOMPARE(ThumbnailMaker::decodeCount(), before + 2);
    }

    void filesInsideTheCacheAreNeverCached() {
        QVERIFY(QDir().mkpath(cache + "/normal"));
        const QString inside = writePicture(cache + "/normal", "0123.png", {128, 128}, Qt::red);
        QVERIFY(ThumbnailCache::isInsideCache(inside));
        QVERIFY(!ThumbnailMaker::make(inside, 80).isNull());
        QCOMPARE(QDir(cache + "/normal").entryList(QDir::Files), QStringList{"0123.png"});
        QVERIFY(!QDir(cache + "/fail").exists());
        // Nor through a link into it.
        QVERIFY(QFile::link(cache, files.path() + "/link"));
        QVERIFY(ThumbnailCache::isInsideCache(files.path() + "/link/normal/0123.png"));
        QVERIFY(!ThumbnailCache::isInsideCache(files.path() + "/other.png"));
    }

    void anUnwritableCacheStillGivesPictures() {
        QVERIFY(QDir().mkpath(home.path() + "/cache"));
        QFile blocker(cache); // a file where the folder should be
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const QString path = writePicture(files.path(), "nocache.png", {300, 300}, Qt::red);
        QVERIFY(near(centreOf(ThumbnailMaker::make(path, 80)), Qt::red));
    }
};

QTEST_MAIN(tst_ThumbnailCache)
#include "tst_ThumbnailCache.moc"
