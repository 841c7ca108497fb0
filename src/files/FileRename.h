#pragma once

#include <QString>

// Renaming a file within its folder, as the user types the new name: a name is one path
// component (no slash, not only dots, not empty, not longer than the file system allows), and
// an existing file of that name is never replaced.
namespace FileRename {

// Why `name` cannot be a file's name; empty when it can.
QString problemWith(const QString& name);

struct Result {
    bool ok = false;
    QString newPath; // the file's path after the rename
    QString error;   // a sentence for the user when !ok
};

// Renames the file at `path` to `newName` in the same folder. The same name succeeds without
// touching the file.
Result rename(const QString& path, const QString& newName);

// How many characters of `name` the user means to change first: the name without its suffix
// ("cat" of "cat.jpg"; all of ".hidden" and of "README").
int baseNameLength(const QString& name);

} // namespace FileRename
