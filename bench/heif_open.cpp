// Opening a HEIC photograph: Ormidon's decoder chain (file to a ready RGB32 raster) against a
// bare libheif decode of the same file to interleaved RGB, interleaved in one process, median
// of 7 runs each, wall and processor milliseconds.
//
//   bench_heif_open <photo.heic>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <libheif/heif.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include "codec/ImageDecoder.h"

namespace {

double cpuMs() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

// The least a program that shows the picture must do with libheif alone.
bool bareDecode(const QByteArray& path, int* width) {
    heif_context* context = heif_context_alloc();
    heif_image_handle* handle = nullptr;
    heif_image* image = nullptr;
    bool ok = heif_context_read_from_file(context, path.constData(), nullptr).code == heif_error_Ok &&
              heif_context_get_primary_image_handle(context, &handle).code == heif_error_Ok &&
              heif_decode_image(handle, &image, heif_colorspace_RGB, heif_chroma_interleaved_RGB,
                                nullptr)
                      .code == heif_error_Ok;
    if (ok)
        *width = heif_image_get_width(image, heif_channel_interleaved);
    heif_image_release(image);
    heif_image_handle_release(handle);
    heif_context_free(context);
    return ok;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_heif_open <photo.heic>\n");
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    std::vector<double> oursWall, oursCpu, bareWall, bareCpu;
    int width = 0;
    QSize size;
    for (int run = 0; run < 7; ++run) {
        QElapsedTimer clock;
        double cpu = cpuMs();
        clock.start();
        const DecodedImage decoded = ImageDecoder::decode(path);
        oursWall.push_back(clock.nsecsElapsed() / 1e6);
        oursCpu.push_back(cpuMs() - cpu);
        if (!decoded.ok) {
            std::fprintf(stderr, "Ormidon could not read %s\n", argv[1]);
            return 1;
        }
        size = decoded.image.size();

        cpu = cpuMs();
        clock.restart();
        if (!bareDecode(QFile::encodeName(path), &width)) {
            std::fprintf(stderr, "libheif could not read %s\n", argv[1]);
            return 1;
        }
        bareWall.push_back(clock.nsecsElapsed() / 1e6);
        bareCpu.push_back(cpuMs() - cpu);
    }
    const double ours = median(oursWall), bare = median(bareWall);
    std::printf("%d x %d pixels (%.1f MP), median of 7\n", size.width(), size.height(),
                size.width() * double(size.height()) / 1e6);
    std::printf("  %-24s %9s %9s\n", "", "wall ms", "cpu ms");
    std::printf("  %-24s %9.0f %9.0f\n", "Ormidon decode", ours, median(oursCpu));
    std::printf("  %-24s %9.0f %9.0f\n", "bare libheif decode", bare, median(bareCpu));
    std::printf("  -> Ormidon / bare libheif: %.2f (target 1.3: %s)\n", ours / bare,
                ours / bare <= 1.3 ? "met" : "NOT met");
    return width == size.width() ? 0 : 1;
}
