#include "cli/CommandLine.h"

#include "cli/ConvertRun.h"
#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"
#include "codec/RasterWriters.h"
#include "export/FormatTable.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {

void printErr(const QString& text) {
    std::fputs(qPrintable(text + QLatin1Char('\n')), stderr);
}

// The table index of a code as typed: exactly, else without its trailing blanks and in any
// case ("gif" is "GIF "), else by a file suffix the format is known under ("png" is "PNGf",
// "tif" is "TIFF", "psd" is "8BPS"). The first entry wins, as in the window's list. -1 when
// none matches.
long formatForTypedCode(const QString& typed) {
    const long exact = formatIndexForCode(typed);
    if (exact >= 0)
        return exact;
    const QString word = typed.trimmed();
    for (int i = 0; i < kFormatCount; ++i)
        if (QString::fromLatin1(gformats_ns[i]).trimmed().compare(word, Qt::CaseInsensitive) == 0)
            return i;
    for (int i = 0; i < kFormatCount; ++i) {
        const FormatRow& row = FormatRegistry::outputRow(i);
        if (QString::fromLatin1(row.suffixes).split(QLatin1Char(' ')).contains(word.toLower()))
            return i;
    }
    return -1;
}

bool formatIsWritable(int index) {
    if (index == kEpsFormat)
        return false; // drawn by the window's view: there is none here
    return !isRasterFormat(index) || rasterWriterExists(rasterSubtype(index));
}

int listFormats() {
    QStringList suffixes = ImageDecoder::readableSuffixes();
    suffixes.sort();
    std::printf("Reads: %s\n", qPrintable(suffixes.join(QLatin1Char(' '))));
    std::printf("Writes (code, extension):\n");
    for (int i = 0; i < kFormatCount; ++i) {
        const char* note = "";
        if (i == kEpsFormat)
            note = "  (from the window only)";
        else if (!formatIsWritable(i))
            note = "  (no encoder on this system)";
        std::printf("  \"%s\"  .%s%s\n", gformats_ns[i], qPrintable(outputExtension(i)), note);
    }
    return kExitAllWritten;
}

// The libraries' warnings (a decoder's complaint about a damaged file) stay off the terminal:
// each failed file gets its one line from the run itself.
void quietWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg || qEnvironmentVariableIsSet("ORMIDON_DEBUG"))
        std::fputs(qPrintable(qFormatLogMessage(type, context, message) + QLatin1Char('\n')),
                   stderr);
}

} // namespace

int usageError(const QString& message) {
    printErr(QStringLiteral("ormidon: %1").arg(message));
    printErr(
        QCoreApplication::translate("CommandLine", "Try 'ormidon --help' for more information."));
    return kExitUsage;
}

void CommandLineOptions::addTo(QCommandLineParser& parser) const {
    parser.addOptions({convert, dpi, angle, dest, overwrite, skip, stripMetadata, listFormats});
}

QString commandLineExitHelp() {
    return QCoreApplication::translate(
        "CommandLine",
        "Exit codes of --convert: 0 every file was written; 1 some file could not be read or "
        "written; 2 wrong arguments, nothing converted; 3 nothing failed but some outputs "
        "already existed and were kept.");
}

int runCommandLine(const QCommandLineParser& parser, const CommandLineOptions& options) {
    qInstallMessageHandler(quietWarnings);
    if (parser.isSet(options.listFormats)) {
        if (parser.isSet(options.convert))
            return usageError(QCoreApplication::translate("CommandLine",
                                                          "--list-formats and --convert go alone"));
        return listFormats();
    }

    ConvertRequest request;
    const QString code = parser.value(options.convert);
    request.format = formatForTypedCode(code);
    if (request.format < 0)
        return usageError(QCoreApplication::translate(
                              "CommandLine", "unknown format code \"%1\" (see --list-formats)")
                              .arg(code));
    if (!formatIsWritable(int(request.format)))
        return usageError(QCoreApplication::translate(
                              "CommandLine", "\"%1\" cannot be written here (see --list-formats)")
                              .arg(code));

    if (parser.isSet(options.dpi)) {
        bool ok = false;
        request.dpi = parser.value(options.dpi).toFloat(&ok);
        if (!ok || !(request.dpi >= 1.0f) || request.dpi > 10000.0f)
            return usageError(
                QCoreApplication::translate("CommandLine", "--dpi needs a number from 1 to 10000"));
    }
    if (parser.isSet(options.angle)) {
        bool ok = false;
        request.degrees = parser.value(options.angle).toInt(&ok);
        if (!ok || request.degrees < -360 || request.degrees > 360)
            return usageError(QCoreApplication::translate(
                "CommandLine", "--angle needs a whole number from -360 to 360"));
    }
    if (parser.isSet(options.overwrite) && parser.isSet(options.skip))
        return usageError(QCoreApplication::translate("CommandLine",
                                                      "--overwrite and --skip exclude each other"));
    request.overwrite = parser.isSet(options.overwrite);
    request.stripMetadata = parser.isSet(options.stripMetadata);

    const QString dest =
        parser.isSet(options.dest) ? parser.value(options.dest) : QDir::currentPath();
    if (dest.isEmpty() || !QDir().mkpath(dest) || !QFileInfo(dest).isDir())
        return usageError(
            QCoreApplication::translate("CommandLine", "cannot use %1 as the destination folder")
                .arg(dest));
    request.destFolder = QFileInfo(dest).absoluteFilePath();

    request.paths = parser.positionalArguments();
    if (request.paths.isEmpty())
        return usageError(QCoreApplication::translate(
            "CommandLine", "--convert needs at least one file or folder"));
    return runConversion(request);
}
