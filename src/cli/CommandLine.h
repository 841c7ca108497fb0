#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>

// The command line without a window: "--convert CODE PATH..." converts files and folders on the
// window's own engine (decoder chain, renderer, writers, naming and folder order), and
// "--list-formats" prints what Ormidon reads and writes.

// Exit codes of a command-line run.
enum CommandLineExit : int {
    kExitAllWritten = 0, // every file was written
    kExitSomeFailed = 1, // at least one file could not be read or written
    kExitUsage = 2,      // the arguments were wrong; nothing was converted
    kExitSomeKept = 3,   // nothing failed, but some outputs already existed and were kept
};

// The options of the command-line run, added to the program's parser.
struct CommandLineOptions {
    QCommandLineOption convert{
        "convert", QCoreApplication::translate("CommandLine", "Convert PATHs to the format CODE."),
        "CODE"};
    QCommandLineOption dpi{
        "dpi", QCoreApplication::translate("CommandLine", "Resolution of the output (default 72)."),
        "N"};
    QCommandLineOption angle{
        "angle", QCoreApplication::translate("CommandLine", "Turn the picture by N degrees."), "N"};
    QCommandLineOption dest{
        "dest",
        QCoreApplication::translate("CommandLine",
                                    "Folder the outputs go to (default: the current folder)."),
        "DIR"};
    QCommandLineOption overwrite{
        "overwrite", QCoreApplication::translate("CommandLine", "Replace existing outputs.")};
    QCommandLineOption skip{
        "skip", QCoreApplication::translate("CommandLine", "Keep existing outputs (the default).")};
    QCommandLineOption stripMetadata{
        "strip-metadata",
        QCoreApplication::translate(
            "CommandLine", "Leave the sources' EXIF, XMP and IPTC (camera, date, place) out.")};
    QCommandLineOption listFormats{
        "list-formats",
        QCoreApplication::translate("CommandLine", "List the formats read and written.")};

    void addTo(QCommandLineParser& parser) const;
};

// The text on exit codes shown at the end of --help.
QString commandLineExitHelp();

// Prints a wrong argument's message and the pointer to --help on stderr; returns kExitUsage.
int usageError(const QString& message);

// Runs the command-line job the parsed arguments ask for and returns its exit code.
int runCommandLine(const QCommandLineParser& parser, const CommandLineOptions& options);
