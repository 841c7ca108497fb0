// Fills the "Image List" tab of the real main window (offscreen) for a folder and prints what a
// user would feel: when the first picture showed, when the first screenful was complete, when
// the whole list was, the longest time the GUI thread went without returning to its event loop,
// and the memory of the filled list.
//
//   bench_image_list FOLDER      (XDG_CACHE_HOME decides whether the cache is cold or warm)
// Prints one line: first_ms screen_ms all_ms gap_ms rss_mb list_mb decodes cells shown_ms
// idle_gap_ms busiest_ms (the most CPU time the GUI thread used between two loop iterations)
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
#include <ctime>

namespace {

// CPU time the calling thread has used, in milliseconds.
double threadCpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

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
    qint64 first = -1, screen = -1, all = -1, last = 0, gap = 0, shown = 0, gapAt = 0;
    // After the fill, the loop idles as long again (up to 5 s) with the same timer: the gaps
    // it sees then are the machine's, not the list's, and tell how much of the gap is noise.
    qint64 idleGap = 0;
    // The GUI thread's own CPU time within the longest gap: what of it was the program's work
    // rather than waiting for a core of this shared machine.
    double lastCpu = 0, gapCpu = 0, busiest = 0;
    constexpr int kTick = 2;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(kTick);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        if (all >= 0) {
            idleGap = std::max(idleGap, now - last - kTick);
            last = now;
            if (now - all >= std::min<qint64>(all, 5000))
                QCoreApplication::quit();
            return;
        }
        const double cpu = threadCpuMs();
        busiest = std::max(busiest, cpu - lastCpu);
        if (now - last - kTick > gap) {
            gap = now - last - kTick;
            gapAt = now;
            gapCpu = cpu - lastCpu;
        }
        last = now;
        lastCpu = cpu;
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
        }
    });
    QTimer::singleShot(0, [&] {
        clock.start();
        tick.start();
        c.setSourceFileName(folder.filePath(names.first()), true);
        // Loading the chosen picture into the main view is not the list's work, nor its gap.
        last = shown = clock.elapsed();
        lastCpu = threadCpuMs();
    });
    QTimer::singleShot(600'000, [] { QCoreApplication::exit(1); });
    const int status = app.exec();
    const double after = residentMB(); // after the idle time: the filled list at rest
    if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
        std::fprintf(stderr, "longest gap ended at %lld ms, GUI thread busy %.1f ms of it\n",
                     (long long)gapAt, gapCpu);
    std::printf("%lld %lld %lld %lld %.1f %.1f %llu %d %lld %lld %.0f\n", (long long)first,
                (long long)screen, (long long)all, (long long)gap, after, after - before,
                (unsigned long long)(ThumbnailMaker::decodeCount() - decodesBefore),
                int(grid->getCount()), (long long)shown, (long long)idleGap, busiest);
    return status;
}
