#include "cli/ConvertRun.h"

#include "app/Controller.h"
#include "browse/FolderIndex.h"
#include "cli/CommandLine.h"
#include "export/FormatTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

#include <cstdio>
#include <mutex>
#include <unistd.h>

namespace {

// The run's output: progress on stdout, redrawn in place on a terminal and one line per file
// otherwise; failures on stderr. Called from the batch's threads.
class Progress {
public:
    explicit Progress(int total) : total(total), inPlace(isatty(STDOUT_FILENO) != 0) {}

    void started(const QString& path, int position) {
        const std::lock_guard lock(mutex);
        line = QStringLiteral("%1/%2 %3").arg(position).arg(total).arg(QFileInfo(path).fileName());
        draw();
    }

    void failed(const QString& message) {
        const std::lock_guard lock(mutex);
        ++failures;
        if (inPlace)
            std::fputs("\r\033[K", stdout), std::fflush(stdout);
        std::fprintf(stderr, "ormidon: %s\n", qPrintable(message));
        std::fflush(stderr);
        if (inPlace)
            draw();
    }

    void kept() {
        const std::lock_guard lock(mutex);
        ++keptCount;
    }

    void finish() {
        if (inPlace && !line.isEmpty())
            std::fputs("\r\033[K", stdout);
        std::fflush(stdout);
    }

    int failures = 0;
    int keptCount = 0;

private:
    void draw() {
        if (inPlace)
            std::printf("\r\033[K%s", qPrintable(line));
        else
            std::printf("%s\n", qPrintable(line));
        std::fflush(stdout);
    }

    const int total;
    const bool inPlace;
    std::mutex mutex;
    QString line;
};

// The images the paths name: a file as it is, a folder as every image of it in folder order.
// A missing path or a file that is no image is reported and counted as failed.
QStringList imagesOf(const Controller& controller, const QStringList& paths, Progress& progress) {
    QStringList files;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        const QString absolute = info.absoluteFilePath();
        if (!info.exists()) {
            progress.failed(
                QCoreApplication::translate("CommandLine", "%1: no such file or folder").arg(path));
        } else if (info.isDir()) {
            const QStringList names = folderFileList(absolute);
            if (!names.isEmpty())
                files += controller.folderImages(QDir(absolute).filePath(names.first()));
        } else if (!controller.IsImageFile(absolute)) {
            progress.failed(
                QCoreApplication::translate("CommandLine", "%1: not an image Ormidon reads")
                    .arg(path));
        } else {
            files << absolute;
        }
    }
    return files;
}

} // namespace

int runConversion(const ConvertRequest& request) {
    QElapsedTimer clock;
    clock.start();

    Controller controller; // no window: the settings come from the request
    controller.unattended = Controller::UnattendedConversion{
        request.dpi, request.degrees, request.destFolder, request.overwrite,
        request.stripMetadata};

    Progress listing(0);
    const QStringList files = imagesOf(controller, request.paths, listing);
    Progress progress(int(files.size()));
    progress.failures = listing.failures;

    QObject::connect(
        &controller, &Controller::batchFileStarted, &controller,
        [&progress](const QString& path, int position) { progress.started(path, position); },
        Qt::DirectConnection);
    QObject::connect(
        &controller, &Controller::conversionFailed, &controller,
        [&progress](const QString& destPath, const QString& reason) {
            progress.failed(QCoreApplication::translate("CommandLine", "%1 was not written: %2")
                                .arg(destPath, reason));
        },
        Qt::DirectConnection);
    QObject::connect(
        &controller, &Controller::conversionSkipped, &controller,
        [&progress](const QString&, const QString&) { progress.kept(); }, Qt::DirectConnection);

    if (!files.isEmpty()) {
        // The batch runs beside the event loop, which serves what it asks of this thread.
        thread_exit = false;
        const long format = request.format;
        QThread* batch = QThread::create([&controller, &files, format] {
            controller.convertFiles(files, [format] { return format; });
        });
        QObject::connect(batch, &QThread::finished, QCoreApplication::instance(),
                         &QCoreApplication::quit, Qt::QueuedConnection);
        batch->start();
        QCoreApplication::exec();
        batch->wait();
        delete batch;
    }
    progress.finish();

    const int failedInBatch = progress.failures - listing.failures;
    const int written = int(files.size()) - failedInBatch - progress.keptCount;
    const double seconds = double(clock.elapsed()) / 1000.0;
    std::printf("%d of %d file(s) written as \"%s\" in %.2f s (%.1f files/s)", written,
                int(files.size()) + listing.failures, gformats_ns[request.format], seconds,
                seconds > 0 ? written / seconds : 0.0);
    if (progress.keptCount > 0)
        std::printf(", %d kept (already there)", progress.keptCount);
    if (progress.failures > 0)
        std::printf(", %d failed", progress.failures);
    std::printf("\n");
    std::fflush(stdout);

    if (progress.failures > 0)
        return kExitSomeFailed;
    return progress.keptCount > 0 ? kExitSomeKept : kExitAllWritten;
}
