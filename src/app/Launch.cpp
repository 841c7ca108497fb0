#include "app/Launch.h"

#include "app/Controller.h"
#include "app/DesktopDialogs.h"
#include "app/SingleInstance.h"
#include "app/Translations.h"
#include "app/WindowActivation.h"
#include "cli/CommandLine.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <QMainWindow>

namespace {

QStringList absolutePaths(const QStringList& arguments) {
    QStringList paths;
    for (const QString& argument : arguments)
        paths << QFileInfo(argument).absoluteFilePath();
    return paths;
}

} // namespace

void launchController(Controller& controller, const QStringList& files) {
    controller.loadMainWindow();
    controller.window()->show();
    controller.applicationWillFinishLaunching();
    for (const QString& file : files)
        controller.application(QCoreApplication::instance(), file);
    controller.applicationDidFinishLaunching();
}

void openHandedOverFiles(Controller& controller, const QStringList& paths,
                         const QByteArray& activationToken) {
    for (const QString& path : paths)
        controller.application(QCoreApplication::instance(), path);
    if (QMainWindow* window = controller.window())
        activateWithToken(window, activationToken);
}

int runApplication(int argc, char** argv) {
    Q_INIT_RESOURCE(resources); // the resources live in the static core library
    // The arguments are read before the application exists: a conversion from the command
    // line, the help, the version and a wrong argument need no display and open no window.
    QCommandLineParser parser;
    parser.setApplicationDescription(QApplication::tr("Image viewer and converter") +
                                     QLatin1Char('\n') + commandLineExitHelp());
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const CommandLineOptions conversion;
    conversion.addTo(parser);
    const QCommandLineOption noSplash("no-splash",
                                      QApplication::tr("Start without the about splash."));
    const QCommandLineOption newInstance(
        "new-instance", QApplication::tr("Start a new window even when Ormidon is running."));
    parser.addOption(noSplash);
    parser.addOption(newInstance);
    parser.addPositionalArgument(
        "files", QApplication::tr("Image files to open; with --convert, files and folders."),
        "[files...]");
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const bool parsed = parser.parse(arguments);
    const bool commandLineRun =
        parsed && (parser.isSet(conversion.convert) || parser.isSet(conversion.listFormats));
    QString mistake = parsed ? QString() : parser.errorText();
    if (parsed && !commandLineRun) {
        for (const QCommandLineOption* convertOnly :
             {&conversion.dpi, &conversion.angle, &conversion.dest, &conversion.overwrite,
              &conversion.skip})
            if (parser.isSet(*convertOnly))
                mistake = QStringLiteral("--%1 goes with --convert")
                              .arg(convertOnly->names().constFirst());
    }
    if (commandLineRun || !mistake.isEmpty() || parser.isSet(help) || parser.isSet(version))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    const bool portalAsked = preferPortalDialogs();
    // The platform plugin takes the launch token out of the environment as it starts.
    const QByteArray activationToken = launchActivationToken();
    QApplication app(argc, argv);
    if (portalAsked)
        qunsetenv("QT_QPA_PLATFORMTHEME"); // read; programs started from here choose their own
    QApplication::setApplicationName("Ormidon");
    QApplication::setApplicationVersion(ORMIDON_VERSION);
    QApplication::setDesktopFileName("org.ormidon.Ormidon"); // the desktop entry, Wayland app_id
    QApplication::setWindowIcon(QIcon(":/ormidon.svg"));
    installTranslations(&app);

    if (!mistake.isEmpty())
        return usageError(mistake);
    if (parser.isSet(help))
        parser.showHelp(0);
    if (parser.isSet(version))
        parser.showVersion();
    // Magick's coder modules are loaded by the first file or format that needs them.
    if (commandLineRun)
        return runCommandLine(parser, conversion);
    const QStringList files = absolutePaths(parser.positionalArguments());

    SingleInstance instance(SingleInstance::defaultServerName());
    if (!parser.isSet(newInstance)) {
        if (instance.handOver(files, activationToken))
            return 0;
        instance.listen();
    }

    Controller controller;
    controller.skipSplash = parser.isSet(noSplash);
    launchController(controller, files);

    QObject::connect(&instance, &SingleInstance::filesReceived, &controller,
                     [&controller](const QStringList& paths, const QByteArray& token) {
                         openHandedOverFiles(controller, paths, token);
                     });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &controller,
                     [&controller] { controller.applicationWillTerminate(); });
    return app.exec();
}
