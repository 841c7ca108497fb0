// The one test for an image file: an exact, case-sensitive match of the extension against the
// readable types, and the readable types themselves.

#include "app/Controller.h"
#include "browse/ImageFileTest.h"

#include <QtConcurrent>
#include <QtTest>

namespace {

bool magickModulesLoaded() {
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/coders/");
}

} // namespace

class tst_ImageFileTest : public QObject {
    Q_OBJECT

private slots:
    // Runs first, before anything in this process has loaded Magick: the extensions Qt and the
    // program's own readers know are answered without Magick's coder modules; another
    // extension loads them, and Magick's formats are images too.
    void magickIsAskedOnlyForTheOtherExtensions() {
        QVERIFY(!magickModulesLoaded());
        for (const char* path : {"/p/a.jpg", "/p/a.PNG", "/p/a.pdf", "/p/a.webp", "/p/a.heic"})
            QVERIFY2(IsImageFile(QLatin1String(path)), path);
        QVERIFY(!magickModulesLoaded());
        QVERIFY(IsImageFile(QStringLiteral("/p/a.miff")));
        QVERIFY(magickModulesLoaded());
        QVERIFY(!IsImageFile(QStringLiteral("/p/notes.txt2")));
    }

    void matchesTheExtensionExactly_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QStringList>("types");
        QTest::addColumn<bool>("image");

        const QStringList jpgOnly{"jpg"};
        const QStringList pair{"png", "PNG", "jpg", "JPG"};
        QTest::newRow("listed lower case") << "/p/photo.jpg" << jpgOnly << true;
        QTest::newRow("upper case against lower-case list") << "/p/photo.JPG" << jpgOnly << false;
        QTest::newRow("mixed case against both cases") << "/p/photo.Jpg" << pair << false;
        QTest::newRow("upper case listed") << "/p/photo.JPG" << pair << true;
        QTest::newRow("no extension") << "/p/photo" << pair << false;
        QTest::newRow("dot in the folder only") << "/p.png/photo" << pair << false;
        QTest::newRow("last dot decides") << "/p/photo.png.txt" << pair << false;
        QTest::newRow("double extension") << "/p/archive.txt.png" << pair << true;
        QTest::newRow("hidden file named by type") << "/p/.png" << pair << true;
        QTest::newRow("hidden image") << "/p/.cover.jpg" << pair << true;
        QTest::newRow("trailing dot") << "/p/photo." << pair << false;
        QTest::newRow("folder named x.png") << "/p/x.png/" << pair << true;
        QTest::newRow("bare name") << "photo.png" << pair << true;
        QTest::newRow("empty") << "" << pair << false;
        QTest::newRow("empty list") << "/p/photo.png" << QStringList{} << false;
        QTest::newRow("accents and CJK") << QStringLiteral("/p/été 写真.png") << pair << true;
        QTest::newRow("longer extension") << "/p/photo.jpgx" << pair << false;
        QTest::newRow("shorter extension") << "/p/photo.jp" << pair << false;
    }
    void matchesTheExtensionExactly() {
        QFETCH(QString, path);
        QFETCH(QStringList, types);
        QFETCH(bool, image);
        QCOMPARE(IsImageFile(path, types), image);
    }

    void readableTypesComeInBothCasesOnly() {
        const QStringList types = imageFileTypes().all();
        for (const char* common : {"jpg", "JPG", "jpeg", "JPEG", "png", "PNG", "gif", "GIF"})
            QVERIFY2(types.contains(QLatin1String(common)), common);
        for (const QString& type : types) {
            QVERIFY2(type == type.toLower() || type == type.toUpper(), qPrintable(type));
            QVERIFY2(types.contains(type.toLower()) && types.contains(type.toUpper()),
                     qPrintable(type));
        }
        QStringList copy = types;
        QCOMPARE(copy.removeDuplicates(), 0);
    }

    void theRealListRefusesMixedCase_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("image");
        QTest::newRow("photo.jpg") << "/p/photo.jpg" << true;
        QTest::newRow("photo.JPG") << "/p/photo.JPG" << true;
        QTest::newRow("photo.Jpg") << "/p/photo.Jpg" << false;
        QTest::newRow("photo.pNg") << "/p/photo.pNg" << false;
        QTest::newRow("notes.txt") << "/p/notes.txt" << false;
    }
    void theRealListRefusesMixedCase() {
        QFETCH(QString, path);
        QFETCH(bool, image);
        QCOMPARE(IsImageFile(path), image);
        const Controller controller;
        QCOMPARE(controller.IsImageFile(path), image);
    }

    void theControllerSaysNoToNoPath() {
        const Controller controller;
        QVERIFY(!controller.IsImageFile(QString()));
        QVERIFY(!controller.IsImageFile(QLatin1String("")));
    }

    void theListIsTheSameFromEveryThread() {
        const QList<QStringList> seen = QtConcurrent::blockingMapped(
            QList<int>{0, 1, 2, 3, 4, 5}, [](int) { return imageFileTypes().all(); });
        for (const QStringList& types : seen)
            QCOMPARE(types, imageFileTypes().all());
    }
};

QTEST_GUILESS_MAIN(tst_ImageFileTest)
#include "tst_ImageFileTest.moc"
