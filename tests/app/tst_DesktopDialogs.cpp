// Which file dialog the panels get: the desktop's own, or Qt's widget dialog where there is no
// desktop to ask.

#include "app/DesktopDialogs.h"

#include <QtTest>

class tst_DesktopDialogs : public QObject {
    Q_OBJECT

private slots:
    void theTestPlatformGetsTheWidgetDialog() {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen"));
        QVERIFY(useWidgetDialogs());
    }

    // A platform theme the user chose, and runs without a desktop, keep their dialogs.
    void portalIsAskedForOnlyOnADesktopWithoutAChosenTheme() {
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("QT_QPA_PLATFORMTHEME");
        QVERIFY(!preferPortalDialogs());
        QVERIFY(!qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME"));

        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("QT_QPA_PLATFORMTHEME", "gtk3");
        QVERIFY(!preferPortalDialogs());
        QCOMPARE(qgetenv("QT_QPA_PLATFORMTHEME"), QByteArray("gtk3"));

        qunsetenv("QT_QPA_PLATFORMTHEME");
        qputenv("ORMIDON_WIDGET_DIALOGS", "1");
        QVERIFY(!preferPortalDialogs());
        QVERIFY(!qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME"));
        qunsetenv("ORMIDON_WIDGET_DIALOGS");

        // On a desktop with the portal and Qt's portal theme installed, the portal is asked for.
        const bool portal =
            QFileInfo::exists(
                "/usr/share/dbus-1/services/org.freedesktop.portal.Desktop.service") &&
            !QDir(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platformthemes")
                 .entryList({"*xdgdesktopportal*"}, QDir::Files)
                 .isEmpty();
        QCOMPARE(preferPortalDialogs(), portal);
        QCOMPARE(qgetenv("QT_QPA_PLATFORMTHEME"),
                 portal ? QByteArray("xdgdesktopportal") : QByteArray());
        qunsetenv("QT_QPA_PLATFORMTHEME");
        qputenv("QT_QPA_PLATFORM", platform);
    }

    void theEnvironmentForcesTheWidgetDialog() {
        qputenv("ORMIDON_WIDGET_DIALOGS", "1");
        QVERIFY(useWidgetDialogs());
        qunsetenv("ORMIDON_WIDGET_DIALOGS");
    }
};

QTEST_MAIN(tst_DesktopDialogs)
#include "tst_DesktopDialogs.moc"
