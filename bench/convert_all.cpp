// Runs "Convert All" on a folder without a screen and prints the wall time and the peak
// resident memory: bench_convert_all SOURCE_FOLDER DEST_FOLDER FORMAT_CODE [DPI [ANGLE]]
// The controller gets the few controls the batch reads and updates; the batch itself is the
// program's own, on its worker thread.

#include "app/Controller.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

QString peakMemory() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return QString();
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return QString::fromLatin1(line.mid(6).trimmed());
    return QString();
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: %s SOURCE_FOLDER DEST_FOLDER FORMAT_CODE [DPI [ANGLE]]\n",
                     argv[0]);
        return 2;
    }
    const QString format = args.at(3);
    const QString dpi = args.size() > 4 ? args.at(4) : QStringLiteral("72");
    const int angle = args.size() > 5 ? args.at(5).toInt() : 0;

    Controller controller;
    auto src = std::make_unique<QLineEdit>();
    auto dst = std::make_unique<QLineEdit>();
    auto formats = std::make_unique<QComboBox>();
    auto resolution = std::make_unique<QComboBox>();
    auto button = std::make_unique<QPushButton>(QObject::tr("Convert All"));
    auto menuItem = std::make_unique<QAction>(QObject::tr("Convert All"));
    auto progress = std::make_unique<QProgressBar>();
    resolution->setEditable(true);
    resolution->setCurrentText(dpi);
    formats->addItem(format);
    if (controller.getRealExportIndex(format) < 0) {
        std::fprintf(stderr, "unknown format code '%s'\n", qPrintable(format));
        return 2;
    }

    // Any image of the folder will do: the batch starts from the first one.
    const QStringList files = QDir(args.at(1)).entryList(QDir::Files, QDir::Name);
    if (files.isEmpty()) {
        std::fprintf(stderr, "no files in %s\n", qPrintable(args.at(1)));
        return 2;
    }
    src->setText(QDir(args.at(1)).absoluteFilePath(files.first()));
    dst->setText(QDir(args.at(2)).absolutePath());

    controller.itsSrcFileName = src.get();
    controller.itsDstFileName = dst.get();
    controller.itsFormatCombo = formats.get();
    controller.itsDpiCombo = resolution.get();
    controller.itsConvertAll = button.get();
    controller.itsMenuItemConvAll = menuItem.get();
    controller.itsConvertIndicator = progress.get();
    controller.m_rotate = angle;

    QElapsedTimer clock;
    clock.start();
    controller.convertAll(button.get());
    // Serve the worker's posts from an idle event loop (a busy poll would take a core from it).
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!controller.isBatchRunning() && button->text() == QObject::tr("Convert All"))
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    const qint64 ms = clock.elapsed();
    controller.waitForBatch();

    const int written = QDir(args.at(2)).entryList(QDir::Files).size();
    std::printf("files %d  ms %lld  peak %s\n", written, static_cast<long long>(ms),
                qPrintable(peakMemory()));
    return 0;
}
