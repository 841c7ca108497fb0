// Fills the "Image List" tab of the real main window (offscreen) for a folder and prints what a
// user would feel: when the first picture showed, when the first screenful was complete, when
// the whole list was, the longest time the GUI thread went without returning to its event loop,
// and the memory of the filled list.
//
//   bench_image_list FOLDER      (XDG_CACHE_HOME decides whether the cache is cold or warm)
// Prints one line: first_ms screen_ms all_ms gap_ms rss_mb list_mb decodes cells shown_ms
// (times from the choice of the folder's first picture; shown_ms is when the main view had
// loaded that picture and the list's walk began)

#include "app/Controller.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/ThumbnailMaker.h"
#include "thumbs/listImageViewItem.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QProgressBar>
#include <QTabWidget>
#include <QTimer>

#include <cstdio>

namespace {

double residentMB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_image_list FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    if (names.isEmpty())
        return 2;

    Controller c;
    c.skipSplash = true;
    c.loadMainWindow();
    c.window()->resize(900, 700);
    c.window()->show();
    c._tabView->setCurrentIndex(1);
    c.itsBatch->setChecked(true);
    c.itsPref.isBatch = 1;
    QCoreApplication::processEvents();
    const double before = residentMB();
    const uint64_t decodesBefore = ThumbnailMaker::decodeCount();

    ScrollNSImageView* grid = c.itsImageListView;
    QElapsedTimer clock;
    qint64 first = -1, screen = -1, all = -1, last = 0, gap = 0, shown = 0;
    constexpr int kTick = 2;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(kTick);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        gap = std::max(gap, now - last - kTick);
        last = now;
        const QList<listImageViewItem*>& cells = grid->cells();
        if (first < 0)
            for (const listImageViewItem* cell : cells)
                if (!cell->small_image.isNull()) {
                    first = now;
                    break;
                }
        if (screen < 0 && !cells.isEmpty()) {
            int a = 0, b = 0;
            grid->visibleCells(&a, &b);
            bool done = b > a;
            for (int i = a; done && i < b; ++i)
                done = !cells.at(i)->small_image.isNull();
            if (done)
                screen = now;
        }
        if (all < 0 && image_thread_exit && !grid->isLoadingThumbnails() &&
            !c.itsImageProgress->isVisible() && !cells.isEmpty()) {
            all = now;
            QCoreApplication::quit();
        }
    });
    QTimer::singleShot(0, [&] {
        clock.start();
        tick.start();
        c.setSourceFileName(folder.filePath(names.first()), true);
        // Loading the chosen picture into the main view is not the list's work, nor its gap.
        last = shown = clock.elapsed();
    });
    QTimer::singleShot(600'000, [] { QCoreApplication::exit(1); });
    const int status = app.exec();
    const double after = residentMB();
    std::printf("%lld %lld %lld %lld %.1f %.1f %llu %d %lld\n", (long long)first,
                (long long)screen, (long long)all, (long long)gap, after, after - before,
                (unsigned long long)(ThumbnailMaker::decodeCount() - decodesBefore),
                int(grid->getCount()), (long long)shown);
    return status;
}
