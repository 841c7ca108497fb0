// How a writer's output reaches its path: a brand-new output (nothing there, or the empty file
// the naming step made) through a hidden file renamed into place, unsynced; anything the user
// had through the synced replacement, which keeps the old file's permissions. Neither leaves a
// hidden file behind, written or failed.

#include "codec/FormatRegistry.h"
#include "codec/RasterWriters.h"
#include "codec/SafeReplace.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

QImage picture() {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(qRgb(200, 30, 90));
    return image;
}

QStringList everythingIn(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

void makeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

mode_t defaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

mode_t modeOf(const QString& path) {
    struct stat st {};
    stat(QFile::encodeName(path).constData(), &st);
    return st.st_mode & 0777;
}

} // namespace

class tst_FreshOutputs : public QObject {
    Q_OBJECT

private slots:
    void whatCountsAsTheUsers() {
        QTemporaryDir dir;
        const QString none = dir.filePath("none.png");
        const QString empty = dir.filePath("empty.png");
        const QString full = dir.filePath("full.png");
        const QString link = dir.filePath("link.png");
        const QString folder = dir.filePath("folder.png");
        makeFile(empty, {});
        makeFile(full, "content");
        QVERIFY(QFile::link(full, link));
        QVERIFY(QDir(dir.path()).mkdir("folder.png"));
        QVERIFY(!SafeReplace::replacesUserContent(none));
        QVERIFY(!SafeReplace::replacesUserContent(empty));
        QVERIFY(SafeReplace::replacesUserContent(full));
        QVERIFY(SafeReplace::replacesUserContent(link));
        QVERIFY(SafeReplace::replacesUserContent(folder));

        // What was set aside for a path counts, though the path itself is empty now.
        QVERIFY(SafeReplace::setAside(full));
        makeFile(full, {});
        QVERIFY(SafeReplace::replacesUserContent(full));
        QVERIFY(!SafeReplace::settle(full)); // nothing written: the old content comes back
        QVERIFY(!SafeReplace::replacesUserContent(none));
    }

    void newOutputs_data() {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<bool>("placeholder");
        for (const char* code : {"PNGf", "JPEG", "TIFF", "GIF "}) {
            QTest::newRow(QByteArray(code).append(" new").constData()) << QByteArray(code) << false;
            QTest::newRow(QByteArray(code).append(" over the empty file").constData())
                << QByteArray(code) << true;
        }
    }
    void newOutputs() {
        QFETCH(QByteArray, code);
        QFETCH(bool, placeholder);
        QTemporaryDir dir;
        const QString path = dir.filePath("out");
        if (placeholder)
            makeFile(path, {});
        const uint32_t subtype =
            fourCharCode(*reinterpret_cast<const char(*)[5]>(code.constData()));
        QCOMPARE(writeRaster(picture(), path, subtype, 72.0f), int16_t(0));
        QCOMPARE(everythingIn(dir.path()), QStringList{"out"});
        QCOMPARE(modeOf(path), defaultMode());
        const QImage back = QImageReader(path).read();
        QCOMPARE(back.size(), QSize(40, 30));
    }

    void replacingKeepsThePermissions() {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.png");
        makeFile(path, "an older picture");
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
        QCOMPARE(writeRaster(picture(), path, fourCharCode("PNGf"), 72.0f), int16_t(0));
        QCOMPARE(everythingIn(dir.path()), QStringList{"out.png"});
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(QImageReader(path).read().size(), QSize(40, 30));
    }

    void aRefusedPictureLeavesNothingBehind() {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.gif");
        makeFile(path, {});
        // Wider than a GIF can record.
        const QImage wide(70000, 1, QImage::Format_RGB32);
        QVERIFY(writeRaster(wide, path, fourCharCode("GIF "), 72.0f) != 0);
        QCOMPARE(everythingIn(dir.path()), QStringList{"out.gif"});
        QCOMPARE(QFileInfo(path).size(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_FreshOutputs)
#include "tst_FreshOutputs.moc"
