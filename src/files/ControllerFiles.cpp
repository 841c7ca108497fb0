#include "app/Controller.h"

#include "browse/FolderIndex.h"
#include "files/ContainingFolder.h"
#include "files/FileRename.h"
#include "files/FreedesktopTrash.h"
#include "files/RenameDialog.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

// The file actions on the current picture. Moving to the trash and renaming change the folder
// under the viewer's feet, so both end by showing a picture that exists: the next one of the
// folder after a move (the previous one after the last, none in an emptied folder), the file
// itself under its new name after a rename. The thumbnail list is made again from the folder.

namespace {

QString currentSource(const QLineEdit* field) {
    return field ? field->text() : QString();
}

// An error of a file action, in a message box that does not hold up the event loop.
void alert(QWidget* parent, const QString& title, const QString& text) {
    auto* box = new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    box->setObjectName(QStringLiteral("fileActionError"));
    box->button(QMessageBox::Ok)->setText(QApplication::translate("Controller", "OK"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace

void Controller::addFileActions(QMenu* fileMenu) {
    QMainWindow* window = itsMainWindow;
    if (!fileMenu || !window)
        return;

    // File: before the separator above Quit.
    QAction* beforeQuit = nullptr;
    const QList<QAction*> items = fileMenu->actions();
    for (qsizetype i = 0; i < items.size(); ++i)
        if (items[i]->menuRole() == QAction::QuitRole)
            beforeQuit = i > 0 && items[i - 1]->isSeparator() ? items[i - 1] : items[i];
    auto addFileItem = [&](const QString& text, const QKeySequence& key, const char* name) {
        auto* action = new QAction(text, fileMenu);
        action->setObjectName(QLatin1String(name));
        action->setShortcut(key);
        fileMenu->insertAction(beforeQuit, action);
        return action;
    };
    fileMenu->insertSeparator(beforeQuit);
    itsMenuItemShowFolder =
        addFileItem(tr("Open Containing &Folder"), QKeySequence(), "itsMenuItemShowFolder");
    itsMenuItemRename = addFileItem(tr("&Rename…"), QKeySequence(Qt::Key_F2), "itsMenuItemRename");
    itsMenuItemTrash =
        addFileItem(tr("Move to &Trash"), QKeySequence(Qt::Key_Delete), "itsMenuItemTrash");

    // Edit: right after File.
    QMenuBar* bar = window->menuBar();
    const QList<QAction*> menus = bar->actions();
    const qsizetype fileAt = menus.indexOf(fileMenu->menuAction());
    auto* editMenu = new QMenu(tr("&Edit"), bar);
    editMenu->setObjectName(QStringLiteral("editMenu"));
    bar->insertMenu(menus.value(fileAt + 1), editMenu);
    itsMenuItemUndoTrash = editMenu->addAction(tr("&Undo Move to Trash"));
    itsMenuItemUndoTrash->setObjectName(QStringLiteral("itsMenuItemUndoTrash"));
    itsMenuItemUndoTrash->setShortcut(QKeySequence::Undo);
    editMenu->addSeparator();
    itsMenuItemCopy = editMenu->addAction(tr("&Copy"));
    itsMenuItemCopy->setObjectName(QStringLiteral("itsMenuItemCopy"));
    itsMenuItemCopy->setShortcut(QKeySequence::Copy);

    connect(itsMenuItemCopy, &QAction::triggered, this, [this] { copyImage(itsMenuItemCopy); });
    connect(itsMenuItemShowFolder, &QAction::triggered, this,
            [this] { showContainingFolder(itsMenuItemShowFolder); });
    connect(itsMenuItemRename, &QAction::triggered, this,
            [this] { renameImage(itsMenuItemRename); });
    connect(itsMenuItemTrash, &QAction::triggered, this, [this] { moveToTrash(itsMenuItemTrash); });
    connect(itsMenuItemUndoTrash, &QAction::triggered, this,
            [this] { undoMoveToTrash(itsMenuItemUndoTrash); });
    // Every change of the current picture passes through the source field.
    if (itsSrcFileName)
        connect(itsSrcFileName, &QLineEdit::textChanged, this, &Controller::updateFileActions);
    updateFileActions();
}

bool Controller::isFileActionItem(const QAction* item) const {
    return item && (item == itsMenuItemCopy || item == itsMenuItemShowFolder ||
                    item == itsMenuItemRename || item == itsMenuItemTrash ||
                    item == itsMenuItemUndoTrash);
}

bool Controller::fileActionEnabled(const QAction* item) const {
    if (item == itsMenuItemUndoTrash)
        return !trashedFiles.isEmpty();
    return !currentSource(itsSrcFileName).isEmpty();
}

void Controller::updateFileActions() {
    for (QAction* action : {itsMenuItemCopy.data(), itsMenuItemShowFolder.data(),
                            itsMenuItemRename.data(), itsMenuItemTrash.data(),
                            itsMenuItemUndoTrash.data()})
        if (action)
            action->setEnabled(fileActionEnabled(action));
}

void Controller::copyImage(QObject*) {
    const QString path = currentSource(itsSrcFileName);
    if (path.isEmpty() || itsCGImage.isNull()) {
        QApplication::beep();
        return;
    }
    // The picture for editors, the file for file managers (the GNOME and KDE ones read the
    // second list to paste a copy of the file), the path for text.
    auto* data = new QMimeData;
    data->setImageData(itsCGImage);
    const QUrl url = QUrl::fromLocalFile(path);
    data->setUrls({url});
    data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + url.toEncoded());
    data->setText(path);
    QApplication::clipboard()->setMimeData(data);
}

void Controller::showContainingFolder(QObject*) {
    const QString path = currentSource(itsSrcFileName);
    if (path.isEmpty()) {
        QApplication::beep();
        return;
    }
    ContainingFolder::show(path, this);
}

void Controller::renameImage(QObject*) {
    const QString path = currentSource(itsSrcFileName);
    if (path.isEmpty()) {
        QApplication::beep();
        return;
    }
    auto* dialog = new RenameDialog(
        path,
        [this, path](const QString& newName) {
            const FileRename::Result result = FileRename::rename(path, newName);
            if (!result.ok)
                return result.error;
            if (result.newPath != path)
                setSourceFileName(result.newPath, true);
            return QString();
        },
        itsMainWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void Controller::moveToTrash(QObject*) {
    const QString path = currentSource(itsSrcFileName);
    if (path.isEmpty()) {
        QApplication::beep();
        return;
    }
    // The neighbours are found before the folder changes.
    QString next = path;
    QString previous = path;
    const bool hasNext = findWMF(kStepNext, next);
    const bool hasPrevious = findWMF(kStepPrevious, previous);

    const TrashResult result = FreedesktopTrash::moveToTrash(path);
    if (!result.ok) {
        alert(frontWindow(), tr("Move to Trash"), result.error);
        return;
    }
    trashedFiles.append(result.file);
    updateFileActions();
    if (hasNext || hasPrevious) {
        setSourceFileName(hasNext ? next : previous, true);
        return;
    }
    // The folder has no picture left: none is shown, and the list is empty.
    setSourceFileName(QString(), false);
    clearImageList();
    updateFileActions();
}

void Controller::undoMoveToTrash(QObject*) {
    if (trashedFiles.isEmpty()) {
        QApplication::beep();
        return;
    }
    const TrashedFile file = trashedFiles.last();
    const TrashResult result = FreedesktopTrash::restore(file);
    if (!result.ok) {
        // A file that is still in the trash stays on the list, for a try once its name is free.
        if (!QFileInfo::exists(file.trashedPath) && !QFileInfo(file.trashedPath).isSymLink())
            trashedFiles.removeLast();
        updateFileActions();
        alert(frontWindow(), tr("Undo Move to Trash"), result.error);
        return;
    }
    trashedFiles.removeLast();
    updateFileActions();
    setSourceFileName(file.originalPath, true);
}
