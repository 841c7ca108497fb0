#pragma once

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

// The desktop's trash, as every Linux file manager keeps it: a moved file goes into the trash's
// files/ folder under a name unique there, beside an info/<name>.trashinfo that records where it
// came from (Path, percent-encoded) and when (DeletionDate), so that the file manager can show
// and restore it. A file in the home folder's file system goes to $XDG_DATA_HOME/Trash (or
// ~/.local/share/Trash); a file on another file system goes to that file system's own trash at
// its top folder ($topdir/.Trash/$uid when the administrator made a sticky .Trash there, else
// $topdir/.Trash-$uid), and when neither can be made the move is refused. A file is never copied
// and deleted, and never removed: it is only renamed, within one file system.
//
// Plain file-system work on the calling thread; no widget.

// One file in the trash: enough to put it back.
struct TrashedFile {
    QString originalPath; // where it was, absolute
    QString trashedPath;  // <trash>/files/<name>
    QString infoPath;     // <trash>/info/<name>.trashinfo
};

struct TrashResult {
    bool ok = false;
    TrashedFile file;
    QString error; // a sentence for the user when !ok
};

class FreedesktopTrash {
    Q_DECLARE_TR_FUNCTIONS(FreedesktopTrash)

public:
    // The home trash: $XDG_DATA_HOME/Trash, or $HOME/.local/share/Trash.
    static QString homeTrash();

    // Moves the file at `path` into the trash that serves its file system.
    static TrashResult moveToTrash(const QString& path);

    // Puts a trashed file back where it was and removes its .trashinfo. Refuses, leaving both in
    // the trash, when something now has the original name or the original folder is gone.
    static TrashResult restore(const TrashedFile& file);

    // The text of a .trashinfo for `recordedPath` (absolute, or relative to a top folder).
    static QByteArray infoText(const QString& recordedPath, const QDateTime& deletedAt);
};
