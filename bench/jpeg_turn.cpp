// Turning a JPEG file losslessly, as Image > Rotate Right does it: the file read, transformed,
// its metadata settled, written beside itself, synced and renamed over itself.
//
//   bench_jpeg_turn <photo.jpg> [runs]
//
// Turns a copy of the photograph right `runs` times (default 8, a multiple of 4 brings the
// copy back to where it started) and prints the median wall and CPU (user + system) time of one
// turn, and the copy's size before and after, which a lossless turn keeps within a few bytes.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "codec/JpegTransform.h"

namespace {

double cpuMilliseconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_jpeg_turn <photo.jpg> [runs]\n");
        return 2;
    }
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 8;
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("photo.jpg"));
    if (!QFile::copy(QString::fromLocal8Bit(argv[1]), copy)) {
        std::fprintf(stderr, "cannot copy %s\n", argv[1]);
        return 1;
    }
    const qint64 sizeBefore = QFileInfo(copy).size();
    std::vector<double> wall, cpu;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        const double cpuStart = cpuMilliseconds();
        timer.start();
        const JpegTransform::Result result =
            JpegTransform::turnFile(copy, JpegTurn::RotateRight, false);
        wall.push_back(timer.nsecsElapsed() / 1e6);
        cpu.push_back(cpuMilliseconds() - cpuStart);
        if (!result.ok()) {
            std::fprintf(stderr, "turn %d failed (outcome %d)\n", run, int(result.outcome));
            return 1;
        }
    }
    std::printf("Ormidon lossless turn: median %.0f ms wall, %.0f ms CPU (%d turns); "
                "%lld bytes before, %lld after\n",
                median(wall), median(cpu), runs, static_cast<long long>(sizeBefore),
                static_cast<long long>(QFileInfo(copy).size()));
    return 0;
}
