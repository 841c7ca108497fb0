#pragma once

#include <QSaveFile>
#include <QString>

// Replacing what is at an output path without ever losing it. When the user agrees to replace
// a file, the old one is not removed but moved aside under a hidden name in the same folder;
// once the new file is complete the old one is removed, and when no new file could be written
// it is put back. New files themselves are written through QSaveFile (a temporary file in the
// same folder, synced to the disk and renamed over the target), so they appear only complete.
// Safe to call from any thread.
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

} // namespace SafeReplace
