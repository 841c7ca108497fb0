#pragma once

#include <QFile>
#include <QSaveFile>
#include <QString>

// Replacing what is at an output path without ever losing it. When the user agrees to replace
// a file, the old one is not removed but moved aside under a hidden name in the same folder;
// once the new file is complete the old one is removed, and when no new file could be written
// it is put back. New files themselves are written to a temporary file in the same folder and
// renamed over the target, so they appear only complete. Where the write replaces something
// the user had (a file with content, or one set aside), the new file is synced to the disk
// before the rename (QSaveFile), so that a crash cannot leave an empty file in its place once the
// old one is gone; a brand-new output is not synced, since a crash then loses nothing the user
// had, and a batch of large outputs would otherwise wait on the disk for each. Safe to call
// from any thread.
namespace SafeReplace {

// Moves what is at `path` (a file, a link itself, or a folder with its contents) aside and
// remembers it for `path`. False, with nothing changed, when it cannot be moved.
bool setAside(const QString& path);

// Settles `path` after its writer ran: when a non-empty file is there, what was set aside for
// it is removed; when not, it is put back over whatever the failed write left. Returns whether
// a non-empty new file is there. Does nothing more for a path with nothing set aside.
bool settle(const QString& path);

// Opens `file` for writing the new content of its path. Refused (false) when what is there is
// not a regular file or a link to one: a device or a pipe would otherwise be replaced by a plain
// file when the new content is renamed over it.
bool openForReplacement(QSaveFile& file);

// Whether writing `path` replaces something the user had: a non-empty file or anything that is
// not a regular file is there, or something was set aside for it. Such a write goes through
// QSaveFile and openForReplacement; any other through a FreshFile.
bool replacesUserContent(const QString& path);

// A new output that nothing of the user's is at stake for: written under a hidden name beside
// `path` and renamed over it by commit(), without waiting for the disk. Discarded when not
// committed.
class FreshFile : public QFile {
public:
    explicit FreshFile(const QString& path);
    ~FreshFile() override;
    FreshFile(const FreshFile&) = delete;
    FreshFile& operator=(const FreshFile&) = delete;

    bool open();   // write only, as a new file; false when the folder cannot take it
    bool commit(); // every byte written and the file in place
    void discard();

private:
    QString target;
};

} // namespace SafeReplace
