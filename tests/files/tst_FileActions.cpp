// The file actions in the real main window, through their keys and menu items: Ctrl+C copies
// the picture and its file, Delete moves the file to the trash of a private HOME and shows the
// next picture (the previous after the last, none in an emptied folder) with the image list
// following, Ctrl+Z puts it back byte for byte, F2 renames through the dialog and refuses what
// it must; text fields keep their own Copy, Undo and Delete.

#include "app/Controller.h"
#include "files/RenameDialog.h"
#include "thumbs/listImageViewItem.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QImage>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class tst_FileActions : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir pictures;
    std::unique_ptr<Controller> c;

    QString picture(const QString& name) const { return pictures.path() + u'/' + name; }
    QString trash() const { return home.path() + QStringLiteral("/data/Trash"); }
    QString shown() const { return c->itsSrcFileName->text(); }

    static QByteArray bytesOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(c->window()->windowHandle(), key, modifiers);
    }

    // The message box a refused action shows, dismissed; its text.
    QString takeError(const char* name) {
        QMessageBox* box = nullptr;
        [&] {
            QTRY_VERIFY((box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())));
        }();
        if (!box)
            return QString();
        [&] { QCOMPARE(box->objectName(), QString::fromLatin1(name)); }();
        const QString text = box->text();
        const QPointer<QMessageBox> shown(box);
        box->button(QMessageBox::Ok)->click();
        [&] { QTRY_VERIFY(!shown); }(); // closed and gone
        // The offscreen platform has no window manager to hand the keyboard back.
        if (!QApplication::activeModalWidget()) {
            c->window()->activateWindow();
            [&] { QVERIFY(QTest::qWaitForWindowActive(c->window())); }();
        }
        return text;
    }

    RenameDialog* openRename() {
        pressKey(Qt::Key_F2);
        RenameDialog* dialog = nullptr;
        [&] {
            QTRY_VERIFY((dialog = qobject_cast<RenameDialog*>(QApplication::activeModalWidget())));
        }();
        return dialog;
    }

    QStringList listed() const {
        QStringList names;
        for (const listImageViewItem* cell : c->itsImageListView->cells())
            names.append(QFileInfo(cell->mFilename).fileName());
        return names;
    }

private slots:
    void init() {
        QVERIFY(home.isValid() && pictures.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
        qputenv("XDG_CACHE_HOME", (home.path() + "/.cache").toUtf8());
        QDir(trash()).removeRecursively();
        for (const QString& name : QDir(pictures.path()).entryList(QDir::Files))
            QFile::remove(picture(name));
        int shade = 40;
        for (const char* name : {"a.png", "b.png", "c.png"}) {
            QImage image(60 + shade / 10, 30, QImage::Format_RGB32);
            image.fill(QColor(shade, 100, 200 - shade));
            shade += 60;
            QVERIFY(image.save(picture(name)));
        }
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        c->window()->resize(900, 700);
        c->window()->show();
        QVERIFY(QTest::qWaitForWindowActive(c->window()));
        c->setSourceFileName(picture("b.png"), true);
        QCOMPARE(shown(), picture("b.png"));
    }

    void cleanup() {
        if (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
        c.reset();
    }

    void theItemsAreInTheFileAndEditMenus() {
        QMenuBar* bar = c->window()->menuBar();
        QStringList titles;
        for (QAction* menu : bar->actions())
            titles.append(menu->text());
        QCOMPARE(titles.mid(0, 3), QStringList({"&File", "&Edit", "&View"}));
        QMenu* file = bar->actions().at(0)->menu();
        QMenu* edit = bar->actions().at(1)->menu();
        QVERIFY(file->actions().contains(c->itsMenuItemShowFolder.data()));
        QVERIFY(file->actions().contains(c->itsMenuItemRename.data()));
        QVERIFY(file->actions().contains(c->itsMenuItemTrash.data()));
        QCOMPARE(file->actions().last()->menuRole(), QAction::QuitRole); // Quit stays last
        QVERIFY(edit->actions().contains(c->itsMenuItemCopy.data()));
        QVERIFY(edit->actions().contains(c->itsMenuItemUndoTrash.data()));
        QCOMPARE(c->itsMenuItemCopy->shortcut(), QKeySequence(QKeySequence::Copy));
        QCOMPARE(c->itsMenuItemUndoTrash->shortcut(), QKeySequence(QKeySequence::Undo));
        QCOMPARE(c->itsMenuItemTrash->shortcut(), QKeySequence(Qt::Key_Delete));
        QCOMPARE(c->itsMenuItemRename->shortcut(), QKeySequence(Qt::Key_F2));
        QVERIFY(!c->itsMenuItemUndoTrash->isEnabled()); // nothing moved yet
    }

    void withoutAPictureTheActionsAreOff() {
        c->setSourceFileName(picture("missing.png"), false);
        QVERIFY(shown().isEmpty());
        // Opening a menu checks every item again; the file actions stay off.
        c->validateMenuItems();
        QVERIFY(!c->itsMenuItemUndoTrash->isEnabled());
        QVERIFY(!c->itsMenuItemCopy->isEnabled());
        QVERIFY(!c->itsMenuItemTrash->isEnabled());
        QVERIFY(!c->itsMenuItemRename->isEnabled());
        QVERIFY(!c->itsMenuItemShowFolder->isEnabled());
        pressKey(Qt::Key_Delete);
        QCOMPARE(QDir(pictures.path()).entryList(QDir::Files).size(), 3);
    }

    void ctrlCCopiesThePictureAndItsFile() {
        QApplication::clipboard()->clear();
        pressKey(Qt::Key_C, Qt::ControlModifier);
        const QMimeData* data = QApplication::clipboard()->mimeData();
        QVERIFY(data);
        const QImage image = qvariant_cast<QImage>(data->imageData());
        QCOMPARE(image.size(), QImage(picture("b.png")).size());
        QCOMPARE(image.pixelColor(5, 5), QImage(picture("b.png")).pixelColor(5, 5));
        QCOMPARE(data->urls(), QList<QUrl>{QUrl::fromLocalFile(picture("b.png"))});
        QCOMPARE(data->data("x-special/gnome-copied-files"),
                 "copy\n" + QUrl::fromLocalFile(picture("b.png")).toEncoded());
    }

    void theEditMenuCopies() {
        QApplication::clipboard()->clear();
        c->itsMenuItemCopy->trigger();
        QVERIFY(QApplication::clipboard()->mimeData()->hasImage());
    }

    // A field with a selection copies its text; without one, Ctrl+C is the picture's.
    void aFieldWithASelectionKeepsItsCopy() {
        QTest::mouseClick(c->itsRotateText, Qt::LeftButton);
        QCOMPARE(QApplication::focusWidget(), c->itsRotateText.data());
        c->itsRotateText->setText(QStringLiteral("270"));
        c->itsRotateText->selectAll();
        QApplication::clipboard()->clear();
        pressKey(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("270"));
        QVERIFY(!QApplication::clipboard()->mimeData()->hasImage());
        c->itsRotateText->deselect();
        pressKey(Qt::Key_C, Qt::ControlModifier);
        QVERIFY(QApplication::clipboard()->mimeData()->hasImage());
        QCOMPARE(QApplication::focusWidget(), c->itsRotateText.data());
    }

    // Delete and Ctrl+Z edit the text of a field that has the keyboard.
    void aFieldKeepsDeleteAndUndo() {
        QTest::mouseClick(c->itsRotateText, Qt::LeftButton);
        c->itsRotateText->setText(QStringLiteral("45"));
        c->itsRotateText->setCursorPosition(0);
        pressKey(Qt::Key_Delete);
        QCOMPARE(c->itsRotateText->text(), QStringLiteral("5"));
        QVERIFY(QFile::exists(picture("b.png")));
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(c->itsRotateText->text(), QStringLiteral("45"));
    }

    void deleteTrashesAndShowsTheNextPicture() {
        const QByteArray bytes = bytesOf(picture("b.png"));
        pressKey(Qt::Key_Delete);
        QVERIFY(!QFile::exists(picture("b.png")));
        QCOMPARE(bytesOf(trash() + "/files/b.png"), bytes);
        const QByteArray info = bytesOf(trash() + "/info/b.png.trashinfo");
        QVERIFY2(info.contains(
                     "\nPath=" + QUrl::toPercentEncoding(QFile::encodeName(picture("b.png")), "/") +
                     '\n'),
                 info.constData());
        QCOMPARE(shown(), picture("c.png"));
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: c.png"));
        QCOMPARE(c->getCGImage().size(), QImage(picture("c.png")).size());
        QVERIFY(c->itsMenuItemUndoTrash->isEnabled());

        // The last picture of the folder: the previous one comes.
        pressKey(Qt::Key_Delete);
        QCOMPARE(shown(), picture("a.png"));
        pressKey(Qt::Key_Delete);
        QVERIFY(shown().isEmpty());
        QVERIFY(c->getCGImage().isNull());
        QVERIFY(c->itsImageListView->cells().isEmpty());
        QVERIFY(QDir(pictures.path()).entryList(QDir::Files).isEmpty());
        QCOMPARE(QDir(trash() + "/info").entryList(QDir::Files).size(), 3);

        // Ctrl+Z brings them back one by one, the latest first, each shown.
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(shown(), picture("a.png"));
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(shown(), picture("b.png"));
        QCOMPARE(bytesOf(picture("b.png")), bytes);
        QVERIFY(QDir(trash() + "/info").entryList(QDir::Files).isEmpty());
        QVERIFY(QDir(trash() + "/files").entryList(QDir::Files).isEmpty());
        QVERIFY(!c->itsMenuItemUndoTrash->isEnabled());
    }

    void theMenuItemsTrashAndUndo() {
        c->itsMenuItemTrash->trigger();
        QVERIFY(!QFile::exists(picture("b.png")));
        c->itsMenuItemUndoTrash->trigger();
        QVERIFY(QFile::exists(picture("b.png")));
    }

    void theImageListFollows() {
        QTest::mouseClick(c->itsBatch, Qt::LeftButton, {}, QPoint(4, c->itsBatch->height() / 2));
        QVERIFY(c->itsBatch->isChecked());
        c->setSourceFileName(picture("b.png"), true);
        QTRY_COMPARE(listed(), QStringList({"a.png", "b.png", "c.png"}));
        pressKey(Qt::Key_Delete);
        QTRY_COMPARE(listed(), QStringList({"a.png", "c.png"}));
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QTRY_COMPARE(listed(), QStringList({"a.png", "b.png", "c.png"}));
    }

    void undoRefusesWhenTheNameIsTaken() {
        pressKey(Qt::Key_Delete);
        QFile taken(picture("b.png"));
        QVERIFY(taken.open(QIODevice::WriteOnly));
        taken.write("new");
        taken.close();
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(takeError("fileActionError").contains("b.png"));
        QCOMPARE(bytesOf(picture("b.png")), QByteArray("new"));
        QVERIFY(QFile::exists(trash() + "/files/b.png"));
        QVERIFY(c->itsMenuItemUndoTrash->isEnabled()); // once the name is free, it works
        QVERIFY(QFile::remove(picture("b.png")));
        pressKey(Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(QImage(picture("b.png")).width() > 0);
    }

    void f2RenamesWithTheBaseNameSelected() {
        RenameDialog* dialog = openRename();
        QVERIFY(dialog);
        QCOMPARE(dialog->nameField()->text(), QStringLiteral("b.png"));
        QCOMPARE(dialog->nameField()->selectedText(), QStringLiteral("b"));
        QCOMPARE(QApplication::focusWidget(), dialog->nameField());
        QTest::keyClicks(dialog->nameField(), "beach");
        QTest::keyClick(dialog->nameField(), Qt::Key_Return);
        QTRY_VERIFY(!dialog->isVisible());
        QVERIFY(!QFile::exists(picture("b.png")));
        QVERIFY(QFile::exists(picture("beach.png")));
        QCOMPARE(shown(), picture("beach.png"));
        QCOMPARE(c->window()->windowTitle(), QStringLiteral("Ormidon: beach.png"));
    }

    void theMenuItemRenames() {
        c->itsMenuItemRename->trigger();
        auto* dialog = qobject_cast<RenameDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->reject();
    }

    void renameRefusesBadNames_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("existing") << "c.png";
        QTest::newRow("empty") << "";
        QTest::newRow("slash") << "x/y.png";
        QTest::newRow("dots") << "..";
    }
    void renameRefusesBadNames() {
        QFETCH(QString, name);
        const QByteArray before = bytesOf(picture("c.png"));
        RenameDialog* dialog = openRename();
        QVERIFY(dialog);
        dialog->nameField()->setText(name);
        QTest::keyClick(dialog->nameField(), Qt::Key_Return);
        QVERIFY(!takeError("renameError").isEmpty());
        QVERIFY(dialog->isVisible()); // another try
        dialog->reject();
        QCOMPARE(bytesOf(picture("c.png")), before);
        QVERIFY(QFile::exists(picture("b.png")));
        QCOMPARE(shown(), picture("b.png"));
        QCOMPARE(QDir(pictures.path()).entryList(QDir::Files).size(), 3);
    }
};

QTEST_MAIN(tst_FileActions)
#include "tst_FileActions.moc"
