#pragma once

#include <QString>

class QObject;

// Shows the folder that holds a file in the desktop's file manager. The file managers of the
// Linux desktops answer org.freedesktop.FileManager1's ShowItems on the session bus and open
// the folder with the file selected; when none answers (no session bus, no such service, an
// error), the folder alone opens through the desktop's default handler for folders.
namespace ContainingFolder {

// Returns at once; the file manager's answer arrives on the event loop, as long as `context`
// lives. `startupId` lets the file manager's window come to the front (may be empty).
void show(const QString& filePath, QObject* context, const QString& startupId = QString());

// The D-Bus names of the file manager service.
inline constexpr const char* kService = "org.freedesktop.FileManager1";
inline constexpr const char* kPath = "/org/freedesktop/FileManager1";
inline constexpr const char* kInterface = "org.freedesktop.FileManager1";

} // namespace ContainingFolder
