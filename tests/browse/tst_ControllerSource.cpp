// Changing the current source in the real main window: the open and destination panels, a
// successful and a failed load, and previous/next stepping with the window's own buttons.

#include "app/Controller.h"
#include "view/wmfImageView.h"

#include "BrowseTestFiles.h"

#include <QAbstractButton>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace BrowseTestFiles;

class tst_ControllerSource : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir files;
    std::unique_ptr<Controller> c;

    QString text(QLineEdit* field) const {
        return field ? field->text() : QStringLiteral("<none>");
    }

    // The panel the controller shows as a sheet on its main window.
    QFileDialog* panel() const { return c->window()->findChild<QFileDialog*>(); }

    void click(QPushButton* button) {
        QVERIFY(button);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // The colour in the middle of the main view, as drawn right now.
    QColor viewCentre() const {
        const QImage shot = c->itsWmfView->grab().toImage();
        return shot.pixelColor(shot.width() / 2, shot.height() / 2);
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && files.isValid());
        QDir(home.path()).removeRecursively();
        QDir().mkpath(home.path());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        QDir(files.path()).removeRecursively();
        QDir().mkpath(files.path());
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        QVERIFY(c->window());
        c->window()->resize(800, 600);
        c->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c->window()));
    }

    void cleanup() { c.reset(); }

    void aLoadedImageBecomesTheSource() {
        const QString a = writeImage(files.path(), "a.png");
        const QString b = writeImage(files.path(), "b.png");
        QVERIFY(!c->itsPrev->isEnabled() && !c->itsConvert->isEnabled());
        c->setSourceFileName(a, true);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: a.png"));
        QCOMPARE(text(c->itsSrcFileName), a);
        QCOMPARE(c->savedLoaction, QString());
        for (QPushButton* button :
             {c->itsPrev.data(), c->itsNext.data(), c->itsConvert.data(), c->itsConvertAll.data()})
            QVERIFY(button->isEnabled());
        QVERIFY(!c->getCGImage().isNull());
        c->setSourceFileName(b, false);
        QCOMPARE(c->savedLoaction, a); // the source shown before
        QCOMPARE(text(c->itsSrcFileName), b);
    }

    void aFailedLoadNamesTheFileAndEmptiesTheView() {
        const QString a = writeImage(files.path(), "a.png");
        const QString broken = writeText(files.path(), "broken.png");
        c->setSourceFileName(a, true);
        QTRY_COMPARE(viewCentre(), QColor(Qt::darkYellow));
        c->setSourceFileName(broken, true);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: broken.png"));
        QCOMPARE(text(c->itsSrcFileName), QString());
        QCOMPARE(text(c->itsSizeField), QString());
        QCOMPARE(c->savedLoaction, a);
        QVERIFY(c->getCGImage().isNull());
        QTRY_VERIFY(viewCentre() != QColor(Qt::darkYellow));
        QVERIFY(!c->itsConvert->isEnabled());
        QVERIFY(!c->itsConvertAll->isEnabled());
        QVERIFY(c->itsPrev->isEnabled() && c->itsNext->isEnabled()); // kept as they were

        // A second failure keeps the source shown before the first.
        c->setSourceFileName(files.path() + "/missing.png", true);
        QCOMPARE(c->savedLoaction, a);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: missing.png"));
    }

    void noPathTitlesTheWindowAlone() {
        c->setSourceFileName(QString(), true);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: "));
        QCOMPARE(text(c->itsSrcFileName), QString());
    }

    void namesWithSpacesAccentsAndCjk() {
        const QString name = QStringLiteral("été 写真 no 1.png");
        const QString path = writeImage(files.path(), name);
        QVERIFY(!path.isEmpty());
        c->setSourceFileName(path, true);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: ") + name);
        QCOMPARE(text(c->itsSrcFileName), path);
    }

    void previousAndNextStepOverImagesOnly() {
        const QString a = writeImage(files.path(), "a.jpg", "JPEG");
        writeText(files.path(), "b-notes.txt");
        const QString c2 = writeImage(files.path(), "c.png");
        makeFolder(files.path(), "d.png");
        c->setSourceFileName(a, true);
        click(c->itsNext);
        QCOMPARE(text(c->itsSrcFileName), c2);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: c.png"));
        QCOMPARE(c->savedLoaction, a);
        click(c->itsNext); // past the last image: a beep and no change
        QCOMPARE(text(c->itsSrcFileName), c2);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: c.png"));
        QCOMPARE(c->savedLoaction, a);
        click(c->itsPrev);
        QCOMPARE(text(c->itsSrcFileName), a);
        click(c->itsPrev);
        QCOMPARE(text(c->itsSrcFileName), a);
    }

    void steppingFromADeletedSourceChangesNothing() {
        writeImage(files.path(), "a.png");
        const QString b = writeImage(files.path(), "b.png");
        writeImage(files.path(), "c.png");
        c->setSourceFileName(b, true);
        QVERIFY(QFile::remove(b));
        c->selectWMF(102);
        c->selectWMF(101);
        QCOMPARE(text(c->itsSrcFileName), b);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: b.png"));
        QCOMPARE(c->savedLoaction, QString());
    }

    void steppingWithNoSourceChangesNothing() {
        c->selectWMF(102);
        c->selectWMF(101);
        QCOMPARE(text(c->itsSrcFileName), QString());
        QVERIFY(c->getCGImage().isNull());
    }

    void aFolderAsSourceShowsNothing() {
        const QString a = writeImage(files.path(), "a.png");
        c->setSourceFileName(a, true);
        c->setSourceFolderName(files.path());
        QCOMPARE(text(c->itsSrcFileName), files.path());
        QVERIFY(c->getCGImage().isNull());
    }

    void theOpenPanelOpensTheChosenFile() {
        const QString sub = makeFolder(files.path(), "in here");
        const QString a = writeImage(sub, "a.png");
        const QString b = writeImage(sub, "b.png");
        c->setSourceFileName(a, true);
        c->itsPrev->setEnabled(false);
        c->itsNext->setEnabled(false);
        c->savedLoaction = QStringLiteral("/somewhere/else.png");

        click(c->itsOpenButton); // the window's own open button
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Select Image File"));
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFile);
        // The test platform has no desktop: Qt's own dialog, which the test can drive.
        QVERIFY(dialog->testOption(QFileDialog::DontUseNativeDialog));
        QCOMPARE(QDir(dialog->directory()).canonicalPath(), QDir(sub).canonicalPath());
        const QString filter = dialog->nameFilters().join(u' ');
        QVERIFY(filter.contains("*.png") && filter.contains("*.PNG") && filter.contains("*.jpg"));
        QVERIFY(!filter.contains("*.txt"));
        QVERIFY(!filter.contains("*.Png"));

        dialog->selectFile(b);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(text(c->itsSrcFileName), b);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: b.png"));
        // Emptied before the new file is shown, then the shown one is remembered.
        QCOMPARE(c->savedLoaction, a);
        QVERIFY(c->itsPrev->isEnabled() && c->itsNext->isEnabled());
        QTRY_VERIFY(!panel());
    }

    void theOpenPanelEmptiesTheRememberedSourceBeforeShowing() {
        const QString b = writeImage(files.path(), "b.png");
        c->savedLoaction = QStringLiteral("/somewhere/else.png");
        c->openImage(nullptr);
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        dialog->selectFile(b);
        QMetaObject::invokeMethod(dialog, "accept");
        // No source was shown before, so nothing is remembered: the old value is gone.
        QCOMPARE(c->savedLoaction, QString());
        QCOMPARE(text(c->itsSrcFileName), b);
    }

    void aFailedOpenStillEnablesStepping() {
        const QString broken = writeText(files.path(), "broken.png");
        c->openImage(nullptr);
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        // With no source the panel starts in the home folder.
        QCOMPARE(QDir(dialog->directory()).canonicalPath(), QDir(home.path()).canonicalPath());
        dialog->selectFile(broken);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: broken.png"));
        QVERIFY(c->itsPrev->isEnabled() && c->itsNext->isEnabled());
        QVERIFY(!c->itsConvert->isEnabled());
    }

    void cancellingTheOpenPanelChangesNothing() {
        const QString a = writeImage(files.path(), "a.png");
        const QString b = writeImage(files.path(), "b.png");
        c->setSourceFileName(a, true);
        c->savedLoaction = QStringLiteral("/kept.png");
        c->openImage(nullptr);
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        dialog->selectFile(b);
        dialog->reject();
        QCOMPARE(c->savedLoaction, QStringLiteral("/kept.png"));
        QCOMPARE(text(c->itsSrcFileName), a);
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: a.png"));
        QTRY_VERIFY(!panel());
    }

    void theDestinationPanelChoosesAFolder() {
        const QString start = makeFolder(files.path(), "start");
        const QString chosen = makeFolder(files.path(), "chosen one");
        writeImage(files.path(), "file.png");
        c->itsDstFileName->setText(start);
        const QString source = text(c->itsSrcFileName);

        c->selectDst(nullptr);
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Select Destination"));
        QCOMPARE(dialog->labelText(QFileDialog::Accept), QStringLiteral("Choose"));
        const auto* box = dialog->findChild<QDialogButtonBox*>();
        QVERIFY(box);
        QVERIFY(box->button(QDialogButtonBox::Open));
        QCOMPARE(box->button(QDialogButtonBox::Open)->text(), QStringLiteral("Choose"));
        QCOMPARE(dialog->fileMode(), QFileDialog::Directory);
        QVERIFY(dialog->testOption(QFileDialog::ShowDirsOnly));
        QVERIFY(!dialog->testOption(QFileDialog::ReadOnly));
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QCOMPARE(QDir(dialog->directory()).canonicalPath(), QDir(start).canonicalPath());

        dialog->selectFile(chosen);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(QDir(text(c->itsDstFileName)).canonicalPath(), QDir(chosen).canonicalPath());
        QCOMPARE(text(c->itsSrcFileName), source);
        QTRY_VERIFY(!panel());
    }

    void cancellingTheDestinationPanelKeepsTheFolder() {
        const QString start = makeFolder(files.path(), "start");
        const QString other = makeFolder(files.path(), "other");
        c->itsDstFileName->setText(start);
        c->selectDst(nullptr);
        QFileDialog* dialog = panel();
        QVERIFY(dialog);
        dialog->selectFile(other);
        dialog->reject();
        QCOMPARE(text(c->itsDstFileName), start);
    }
};

QTEST_MAIN(tst_ControllerSource)
#include "tst_ControllerSource.moc"
