// Output naming, the overwrite question and the destination folder, on a bare controller whose
// destination field is a line edit of the test's own.

#include "app/Controller.h"
#include "export/FormatTable.h"

#include "ModalAnswer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class tst_Destination : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir work;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<QLineEdit> dstField;
    QPointer<QMainWindow> window; // owned by the controller

    static void writeFile(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    static QByteArray readFile(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
    }

private slots:
    void initTestCase() {
        QVERIFY(home.isValid());
        QVERIFY(work.isValid());
        qputenv("HOME", home.path().toLocal8Bit());
        qunsetenv("XDG_CONFIG_HOME");
    }

    void init() {
        controller = std::make_unique<Controller>();
        dstField = std::make_unique<QLineEdit>();
        window = new QMainWindow;
        controller->itsDstFileName = dstField.get();
        controller->itsMainWindow = window;
    }

    void cleanup() {
        controller.reset();
        dstField.reset();
    }

    void exportIndex_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<long>("index");
        QTest::newRow("PICS is the first entry") << "PICS" << 1L;
        QTest::newRow("EPS with blank") << "EPS " << 18L;
        QTest::newRow("EPS without blank") << "EPS" << -1L;
        QTest::newRow("PDF") << "PDF " << 17L;
        QTest::newRow("MooV") << "MooV" << 0L;
        QTest::newRow("JPEG") << "JPEG" << 7L;
        QTest::newRow("lower case") << "jpeg" << -1L;
        QTest::newRow("SGI") << "SGI " << 2L;
        QTest::newRow("SWFL") << "SWFL" << 16L;
        QTest::newRow("empty") << "" << -1L;
    }
    void exportIndex() {
        QFETCH(QString, value);
        QFETCH(long, index);
        QCOMPARE(controller->getRealExportIndex(value), index);
    }

    void naming_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("JPEG") << "/Users/ann/Pictures/cat.wmf"
                              << "JPEG"
                              << "cat.JPEG";
        QTest::newRow("GIF keeps its blank") << "/Users/ann/Pictures/cat.wmf"
                                             << "GIF "
                                             << "cat.GIF ";
        QTest::newRow("PDF") << "/Users/ann/Pictures/cat.wmf"
                             << "PDF "
                             << "cat.pdf";
        QTest::newRow("EPS") << "/Users/ann/Pictures/cat.wmf"
                             << "EPS "
                             << "cat.eps";
        QTest::newRow("PNG") << "/Users/ann/Pictures/cat.wmf"
                             << "PNGf"
                             << "cat.PNGf";
        QTest::newRow("SGI shows its code") << "/x/cat.png"
                                            << "SGI "
                                            << "cat.SGI ";
        QTest::newRow("no extension") << "/Users/ann/notes"
                                      << "TIFF"
                                      << "notes.TIFF";
        QTest::newRow("only the last extension") << "/x/a.b.wmf"
                                                 << "PNGf"
                                                 << "a.b.PNGf";
        QTest::newRow("hidden file") << "/x/.hidden"
                                     << "JPEG"
                                     << ".hidden.JPEG";
    }
    void naming() {
        QFETCH(QString, source);
        QFETCH(QString, code);
        QFETCH(QString, name);
        dstField->setText(work.path());
        const long index = controller->getRealExportIndex(code);
        QVERIFY(index >= 0);
        const QString path = controller->findDestination(source, int(index), 0);
        QCOMPARE(path, work.path() + "/" + name);
        // An empty file is left there for the writer, even if nothing is ever written.
        QFileInfo info(path);
        QVERIFY(info.isFile());
        QCOMPARE(info.size(), 0);
        QVERIFY(QFile::remove(path));
    }

    void destinationWithTrailingSlash() {
        dstField->setText(work.path() + "/");
        QCOMPARE(controller->findDestination("/x/cat.png", 7, 0), work.path() + "/cat.JPEG");
        QFile::remove(work.path() + "/cat.JPEG");
    }

    void overwriteYesReplaces() {
        dstField->setText(work.path());
        const QString path = work.path() + "/cat.JPEG";
        writeFile(path, "old picture");
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        QCOMPARE(controller->findDestination("/Users/ann/Pictures/cat.wmf", 7, 0), path);
        QCOMPARE(seen->count, 1);
        QCOMPARE(seen->text,
                 QString("The file cat.JPEG already exists. Do you want to replace it?"));
        QCOMPARE(seen->buttons, QStringList({"Yes", "Skip"}));
        QCOMPARE(seen->parent, window.data());
        QCOMPARE(QFileInfo(path).size(), 0);
        QFile::remove(path);
    }

    void overwriteSkipKeeps() {
        dstField->setText(work.path());
        const QString path = work.path() + "/cat.GIF ";
        writeFile(path, "old picture");
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Skip"}, seen);
        QCOMPARE(controller->findDestination("/a/cat.png", 6, 0), QString());
        QCOMPARE(seen->count, 1);
        QCOMPARE(seen->text,
                 QString("The file cat.GIF  already exists. Do you want to replace it?"));
        QCOMPARE(readFile(path), QByteArray("old picture"));
        QFile::remove(path);
    }

    void overwriteFolderYesRemovesContents() {
        dstField->setText(work.path());
        const QString path = work.path() + "/cat.pdf";
        QVERIFY(QDir().mkpath(path + "/inner"));
        writeFile(path + "/inner/keep.txt", "x");
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        QCOMPARE(controller->findDestination("/a/cat.png", 17, 0), path);
        QCOMPARE(seen->count, 1);
        QVERIFY(QFileInfo(path).isFile());
        QVERIFY(!QFile::exists(path + "/inner/keep.txt"));
        QFile::remove(path);
    }

    void overwriteFolderSkipKeepsContents() {
        dstField->setText(work.path());
        const QString path = work.path() + "/cat.eps";
        QVERIFY(QDir().mkpath(path));
        writeFile(path + "/keep.txt", "x");
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Skip"}, seen);
        QCOMPARE(controller->findDestination("/a/cat.png", 18, 0), QString());
        QCOMPARE(seen->count, 1);
        QCOMPARE(readFile(path + "/keep.txt"), QByteArray("x"));
        QDir(path).removeRecursively();
    }

    void overwriteLinkRemovesOnlyTheLink() {
        dstField->setText(work.path());
        QTemporaryDir target;
        writeFile(target.path() + "/precious.txt", "mine");
        const QString path = work.path() + "/cat.TIFF";
        QVERIFY(QFile::link(target.path(), path));
        auto seen = std::make_shared<SeenQuestion>();
        answerQuestions({"Yes"}, seen);
        QCOMPARE(controller->findDestination("/a/cat.png", 10, 0), path);
        QCOMPARE(seen->count, 1);
        QCOMPARE(readFile(target.path() + "/precious.txt"), QByteArray("mine"));
        QFileInfo info(path);
        QVERIFY(info.isFile() && !info.isSymLink());
        QFile::remove(path);
    }

    void emptySourceWithoutViewGivesNameFromNothing() {
        dstField->setText(work.path());
        const QString path = controller->findDestination(QString(), 7, 0);
        QCOMPARE(path, work.path() + "/.JPEG");
        QFile::remove(path);
    }

    void missingDestinationReturnsPathWithoutFile() {
        dstField->setText(work.path() + "/missing");
        const QString path = controller->findDestination("/a/cat.png", 7, 0);
        QCOMPARE(path, work.path() + "/missing/cat.JPEG");
        QVERIFY(!QFile::exists(path));
    }

    void createsMissingFolders() {
        const QString root = work.path() + "/x";
        dstField->setText(root + "/a/b/c");
        controller->checkDestination();
        QVERIFY(QFileInfo(root).isDir());
        QVERIFY(QFileInfo(root + "/a").isDir());
        QVERIFY(QFileInfo(root + "/a/b").isDir());
        QVERIFY(QFileInfo(root + "/a/b/c").isDir());
        QCOMPARE(dstField->text(), root + "/a/b/c");
        QDir(root).removeRecursively();
    }

    void emptyDestinationBecomesDesktop() {
        const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        QVERIFY(desktop.startsWith(home.path()));
        QDir(desktop).removeRecursively();
        dstField->clear();
        controller->checkDestination();
        QCOMPARE(dstField->text(), desktop);
        // The folders of the new text are settled by the next call.
        QVERIFY(!QFileInfo::exists(desktop));
        controller->checkDestination();
        QVERIFY(QFileInfo(desktop).isDir());
    }

    void destinationUnderAFile() {
        const QString file = work.path() + "/plain.txt";
        writeFile(file, "content");
        dstField->setText(file + "/sub/deeper");
        controller->checkDestination();
        QCOMPARE(readFile(file), QByteArray("content"));
        const QString path = controller->findDestination("/a/cat.png", 7, 0);
        QCOMPARE(path, file + "/sub/deeper/cat.JPEG");
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(readFile(file), QByteArray("content"));
        QFile::remove(file);
    }

    void readOnlyDestination() {
        // /proc takes no new files or folders, whoever runs the test.
        dstField->setText("/proc/ormidon-test/out");
        controller->checkDestination();
        QVERIFY(!QFileInfo::exists("/proc/ormidon-test"));
        const QString path = controller->findDestination("/a/cat.png", 7, 0);
        QCOMPARE(path, QString("/proc/ormidon-test/out/cat.JPEG"));
        QVERIFY(!QFileInfo::exists(path));
    }

    void noDestinationField() {
        controller->itsDstFileName = nullptr;
        controller->checkDestination();
        // Without a field the name is formed relative to nothing; nothing crashes.
        const QString path = controller->findDestination("/a/zz-ormidon-none.png", 7, 0);
        QCOMPARE(path, QString("zz-ormidon-none.JPEG"));
        QFile::remove(path);
    }
};

QTEST_MAIN(tst_Destination)
#include "tst_Destination.moc"
