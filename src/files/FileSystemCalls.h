#pragma once

#include <QByteArray>
#include <QString>

// rename(2) that never replaces what is already at `to`: 0, or -1 with errno set (EEXIST when
// the name is taken). RENAME_NOREPLACE closes the gap between a check and the rename; on a file
// system without it the check is made just before.
int renameNoReplace(const QByteArray& from, const QByteArray& to);

// Why a system call failed (`error` is its errno), in words a user can act on.
QString systemErrorText(int error);
