#include "app/DesktopDialogs.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QStandardPaths>

namespace {

bool widgetDialogsForced() {
    return qEnvironmentVariableIntValue("ORMIDON_WIDGET_DIALOGS") != 0;
}

bool portalServiceInstalled() {
    const QStringList dataFolders =
        QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString& folder : dataFolders)
        if (QFileInfo::exists(folder + "/dbus-1/services/org.freedesktop.portal.Desktop.service"))
            return true;
    return false;
}

bool portalThemeInstalled() {
    const QDir themes(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platformthemes");
    return !themes.entryList({"*xdgdesktopportal*"}, QDir::Files).isEmpty();
}

} // namespace

bool preferPortalDialogs() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (widgetDialogsForced() || platform == "offscreen" || platform == "minimal")
        return false;
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME"))
        return false; // the user's own choice of theme, and so of dialog
    if (!portalServiceInstalled() || !portalThemeInstalled())
        return false;
    qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
    return true;
}

bool useWidgetDialogs() {
    const QString platform = QGuiApplication::platformName();
    return widgetDialogsForced() || platform == QLatin1String("offscreen") ||
           platform == QLatin1String("minimal");
}
