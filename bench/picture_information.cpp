// What the information panel costs per picture: reading a file's header, colour profile and
// camera data (readPictureInformation) against decoding its pixels, which a step through the
// folder does anyway. Prints, for each file given, the median of several runs of each, in
// milliseconds of wall time and of the process's CPU time.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include "codec/ImageDecoder.h"
#include "codec/PictureInformation.h"

namespace {

double cpuMs() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

struct Timing {
    double wall;
    double cpu;
};

template <class F> Timing median(int runs, F&& job) {
    std::vector<double> walls, cpus;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        const double cpu0 = cpuMs();
        clock.start();
        job();
        walls.push_back(clock.nsecsElapsed() / 1e6);
        cpus.push_back(cpuMs() - cpu0);
    }
    std::sort(walls.begin(), walls.end());
    std::sort(cpus.begin(), cpus.end());
    return {walls[walls.size() / 2], cpus[cpus.size() / 2]};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList files = app.arguments().mid(1);
    if (files.isEmpty()) {
        std::fprintf(stderr, "usage: bench_picture_information FILE...\n");
        return 2;
    }
    std::printf("%-28s %10s %12s %12s %12s %12s\n", "file", "megapixels", "info wall", "info cpu",
                "decode wall", "decode cpu");
    for (const QString& file : files) {
        const PictureInformation info = readPictureInformation(file);
        const Timing read = median(9, [&] { (void)readPictureInformation(file); });
        const Timing decode = median(3, [&] { (void)ImageDecoder::decode(file); });
        std::printf("%-28s %10.1f %9.2f ms %9.2f ms %9.1f ms %9.1f ms%s\n",
                    qPrintable(QFileInfo(file).fileName().left(28)),
                    info.pixels.width() * double(info.pixels.height()) / 1e6, read.wall, read.cpu,
                    decode.wall, decode.cpu, info.camera.isEmpty() ? "" : "  (camera data)");
    }
    return 0;
}
