// What the information panel costs per picture: reading a file's header, colour profile and
// camera data (readPictureInformation) against decoding its pixels, which a step through the
// folder does anyway. Prints, for each file given, the median of several runs of each, in
// milliseconds of wall time and of the process's CPU time.

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

#include "codec/ImageDecoder.h"
#include "codec/PictureInformation.h"

#include "FrameTiming.h"

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
        const bench::Timing read = bench::medianTiming(
            9, [&] { (void)readPictureInformation(file); }, bench::CpuClock::Process);
        const bench::Timing decode = bench::medianTiming(
            3, [&] { (void)ImageDecoder::decode(file); }, bench::CpuClock::Process);
        std::printf("%-28s %10.1f %9.2f ms %9.2f ms %9.1f ms %9.1f ms%s\n",
                    qPrintable(QFileInfo(file).fileName().left(28)),
                    info.pixels.width() * double(info.pixels.height()) / 1e6, read.wall, read.cpu,
                    decode.wall, decode.cpu, info.camera.isEmpty() ? "" : "  (camera data)");
    }
    return 0;
}
