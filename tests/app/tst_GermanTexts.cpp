// The window in a German session: Ormidon's own texts from its German translation, and Qt's
// standard dialog buttons from Qt's. The test runs with LANG=de_DE.UTF-8 and LANGUAGE=de.

#include "about/HelpBook.h"
#include "app/Controller.h"
#include "app/Translations.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

class tst_GermanTexts : public QObject {
    Q_OBJECT
    QTemporaryDir home;

    static QStringList menuTitles(QMainWindow* window) {
        QStringList titles;
        for (QAction* action : window->menuBar()->actions())
            titles << action->text();
        return titles;
    }

private slots:
    void initTestCase() {
        Q_INIT_RESOURCE(resources); // the pictures and pages live in the static core library
        QVERIFY(home.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        QCOMPARE(QLocale().language(), QLocale::German);
        installTranslations(qApp);
    }

    void menusAndButtonsAreGerman() {
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        QMainWindow* window = c.window();
        QVERIFY(window);
        QCOMPARE(menuTitles(window),
                 QStringList({"&Datei", "&Bearbeiten", "&Ansicht", "&Bild", "&Hilfe"}));
        QCOMPARE(c.itsMenuItemRotateRight->text(), QStringLiteral("Nach &rechts drehen"));
        QCOMPARE(c.itsMenuItemConvAll->text(), QStringLiteral("Alle umwandeln"));
        QCOMPARE(c.itsConvert->text(), QStringLiteral("Umwandeln"));
        QCOMPARE(c.itsConvertAll->text(), QStringLiteral("Alle umwandeln"));
        QCOMPARE(c._tabView->tabText(1), QStringLiteral("Bilderliste"));
        QCOMPARE(c.itsSrcFileName->placeholderText(), QStringLiteral("Kein Bild"));
        QCOMPARE(c.itsMenuItemTrash->text(), QStringLiteral("In den &Papierkorb verschieben"));
    }

    // The links text under the controls and the help pages come in German too.
    void linksAndHelpAreGerman() {
        Controller c;
        QVERIFY(c.textToScroll().contains("Fragen Sie den Ormidon-Support"));
        QVERIFY(!c.textToScroll().contains("{site}"));
        QFile page(HelpBook::shippedFolder() + "/converting.htm");
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(page.readAll());
        QVERIFY(text.contains("<h1>Umwandeln</h1>"));
        QVERIFY(text.contains("Alle umwandeln"));
    }

    // Qt's own texts: the standard buttons of a dialog.
    void standardButtonsAreGerman() {
        QDialogButtonBox box(QDialogButtonBox::Cancel | QDialogButtonBox::Yes |
                             QDialogButtonBox::No);
        QCOMPARE(box.button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Abbrechen"));
        QCOMPARE(box.button(QDialogButtonBox::Yes)->text(), QStringLiteral("&Ja"));
        QCOMPARE(box.button(QDialogButtonBox::No)->text(), QStringLiteral("&Nein"));
    }

    // The overwrite question's own buttons.
    void theQuestionIsGerman() {
        QCOMPARE(QObject::tr("The file %1 already exists. Do you want to replace it?").arg("a.png"),
                 QStringLiteral("Die Datei a.png existiert bereits. Möchten Sie sie ersetzen?"));
        QCOMPARE(QObject::tr("Skip"), QStringLiteral("Überspringen"));
    }
};

QTEST_MAIN(tst_GermanTexts)
#include "tst_GermanTexts.moc"
