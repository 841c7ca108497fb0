// Renaming within a folder: which names are refused, which part of a name is selected first,
// and that an existing file is never replaced.

#include "files/FileRename.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class tst_FileRename : public QObject {
    Q_OBJECT

    static bool write(const QString& path, const QByteArray& data) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void names_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("plain") << "beach.jpg" << true;
        QTest::newRow("spaces and accents") << "Été à la plage 2.jpg" << true;
        QTest::newRow("hidden") << ".beach.jpg" << true;
        QTest::newRow("dots inside") << "a..b" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("blank") << "   " << false;
        QTest::newRow("slash") << "a/b.jpg" << false;
        QTest::newRow("leading slash") << "/etc" << false;
        QTest::newRow("dot") << "." << false;
        QTest::newRow("dot dot") << ".." << false;
        QTest::newRow("dots") << "...." << false;
        QTest::newRow("null") << QString("a") + QChar(0) + "b" << false;
        QTest::newRow("256 bytes") << QString(256, u'x') << false;
        QTest::newRow("255 bytes") << QString(255, u'x') << true;
    }
    void names() {
        QFETCH(QString, name);
        QFETCH(bool, allowed);
        QCOMPARE(FileRename::problemWith(name).isEmpty(), allowed);
    }

    void baseNameLength_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("length");
        QTest::newRow("suffix") << "cat.jpg" << 3;
        QTest::newRow("two suffixes") << "cat.tar.gz" << 7;
        QTest::newRow("no suffix") << "README" << 6;
        QTest::newRow("hidden") << ".hidden" << 7;
    }
    void baseNameLength() {
        QFETCH(QString, name);
        QFETCH(int, length);
        QCOMPARE(FileRename::baseNameLength(name), length);
    }

    void renamesAndNeverReplaces() {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString a = dir.filePath("a.png"), b = dir.filePath("b.png");
        QVERIFY(write(a, "A"));
        QVERIFY(write(b, "B"));
        FileRename::Result result = FileRename::rename(a, "b.png");
        QVERIFY(!result.ok);
        QVERIFY2(result.error.contains("b.png"), qPrintable(result.error));
        QCOMPARE(read(a), QByteArray("A"));
        QCOMPARE(read(b), QByteArray("B"));

        result = FileRename::rename(a, "c.png");
        QVERIFY2(result.ok, qPrintable(result.error));
        QCOMPARE(result.newPath, dir.filePath("c.png"));
        QVERIFY(!QFile::exists(a));
        QCOMPARE(read(dir.filePath("c.png")), QByteArray("A"));

        result = FileRename::rename(dir.filePath("c.png"), "c.png"); // the same name
        QVERIFY(result.ok);
        QCOMPARE(read(dir.filePath("c.png")), QByteArray("A"));

        result = FileRename::rename(dir.filePath("gone.png"), "d.png");
        QVERIFY(!result.ok);
        QVERIFY(!QFile::exists(dir.filePath("d.png")));
    }
};

QTEST_GUILESS_MAIN(tst_FileRename)
#include "tst_FileRename.moc"
