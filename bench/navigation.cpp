// Previous/next stepping over a large folder: the first (cold) listing, then the median time
// of one image-to-image step forwards over the whole folder and backwards again.
//
//   bench_navigation FOLDER
//
// FOLDER holds the images among other files and sub-folders (navigation.sh makes one).

#include "browse/FolderIndex.h"
#include "browse/ImageFileTest.h"
#include "browse/ImageWalk.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

struct Figures {
    double median = 0, p95 = 0, max = 0;
    size_t steps = 0;
};

Figures summarise(std::vector<double> ms) {
    Figures f;
    f.steps = ms.size();
    if (ms.empty())
        return f;
    std::sort(ms.begin(), ms.end());
    f.median = ms[ms.size() / 2];
    f.p95 = ms[std::min(ms.size() - 1, ms.size() * 95 / 100)];
    f.max = ms.back();
    return f;
}

double elapsedMs(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

// Steps image by image from `path` until the walk ends; one figure per successful step.
std::vector<double> walk(QString path, int32_t step, const QStringList& types) {
    std::vector<double> ms;
    for (;;) {
        QElapsedTimer timer;
        timer.start();
        const bool ok = findImageFile(step, path, types);
        const double t = elapsedMs(timer);
        if (!ok)
            break;
        ms.push_back(t);
    }
    return ms;
}

void printRow(const char* job, const Figures& f) {
    std::printf("%-34s %7zu %10.4f %10.4f %10.4f\n", job, f.steps, f.median, f.p95, f.max);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const QString folder = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const QStringList types = imageFileTypes();

    // Any entry of the folder will do as the starting point of the first listing.
    const QStringList probe = QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    if (probe.isEmpty()) {
        std::fprintf(stderr, "%s holds no files\n", qPrintable(folder));
        return 1;
    }
    QString first = folder + u'/' + probe.first();
    QElapsedTimer timer;
    timer.start();
    const bool found = findFirstImageFile(first, types);
    const double cold = elapsedMs(timer);
    if (!found) {
        std::fprintf(stderr, "%s holds no image\n", qPrintable(folder));
        return 1;
    }

    // A folder changed a moment ago is listed again on every call until it has been still
    // for a moment; wait for that so the walks measure the kept listing.
    QElapsedTimer settle;
    settle.start();
    while ((folderFileList(folder), !folderListingIsKept(folder)) && settle.elapsed() < 5000)
        QThread::msleep(20);

    const qsizetype entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size();
    const qsizetype files = folderFileList(folder).size();
    std::vector<double> forward = walk(first, kStepNext, types);
    QString last = first;
    while (findImageFile(kStepNext, last, types)) {
    }
    // `last` now holds the final entry; step back to the last image before walking backwards.
    if (!IsImageFile(last, types))
        findImageFile(kStepPrevious, last, types);
    std::vector<double> backward = walk(last, kStepPrevious, types);

    std::printf("folder: %lld entries, %lld files (folders left out), %zu images\n",
                static_cast<long long>(entries), static_cast<long long>(files), forward.size() + 1);
    std::printf("%-34s %7s %10s %10s %10s\n", "job", "steps", "median ms", "p95 ms", "max ms");
    std::printf("%-34s %7d %10.4f %10s %10s\n", "first listing (cold), first image", 1, cold, "-",
                "-");
    printRow("next image (kept listing)", summarise(forward));
    printRow("previous image (kept listing)", summarise(backward));
    return 0;
}
