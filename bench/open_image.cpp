// Opening a photograph: Ormidon's decoder chain against a bare libjpeg-turbo decode of the same
// file, and the peak memory of decoding a very large picture against its raster size.
//
//   bench_open_image <24-megapixel.jpg> <100-megapixel.jpg>
//   bench_open_image --make-large <photo.jpg> <out.jpg> <side>   (makes the second input)
//
// (a) median of 7 runs of ImageDecoder::decode (file to a ready RGB32 raster) and of a bare
//     tjDecompress2 to RGBX (file read into memory, then decoded), interleaved in one process;
// (b) peak resident memory (VmHWM) of a fresh child process per case: doing nothing, Ormidon's
//     decode, the bare decode; each against the 4-byte-a-pixel size of the picture.
// libturbojpeg is opened at run time, so the benchmark needs no link-time dependency of its own.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>

#include <dlfcn.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "codec/ImageDecoder.h"

namespace {

struct TurboJpeg {
    void* library = dlopen("libturbojpeg.so.0", RTLD_NOW);
    decltype(&tjInitDecompress) init =
        library ? reinterpret_cast<decltype(init)>(dlsym(library, "tjInitDecompress")) : nullptr;
    decltype(&tjDecompressHeader3) header =
        library ? reinterpret_cast<decltype(header)>(dlsym(library, "tjDecompressHeader3"))
                : nullptr;
    decltype(&tjDecompress2) decompress =
        library ? reinterpret_cast<decltype(decompress)>(dlsym(library, "tjDecompress2")) : nullptr;
    decltype(&tjDestroy) destroy =
        library ? reinterpret_cast<decltype(destroy)>(dlsym(library, "tjDestroy")) : nullptr;
    bool usable() const { return init && header && decompress && destroy; }
};

// Reads the file and decodes it to RGBX; returns the pixel count, 0 on failure.
qint64 bareDecode(const TurboJpeg& tj, const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray data = file.readAll();
    tjhandle handle = tj.init();
    int w = 0, h = 0, subsampling = 0, colourspace = 0;
    auto* jpeg = reinterpret_cast<unsigned char*>(const_cast<char*>(data.constData()));
    qint64 pixels = 0;
    if (tj.header(handle, jpeg, static_cast<unsigned long>(data.size()), &w, &h, &subsampling,
                  &colourspace) == 0) {
        std::vector<unsigned char> rgbx(size_t(w) * size_t(h) * 4);
        if (tj.decompress(handle, jpeg, static_cast<unsigned long>(data.size()), rgbx.data(), w,
                          w * 4, h, TJPF_RGBX, 0) == 0)
            pixels = qint64(w) * h;
    }
    tj.destroy(handle);
    return pixels;
}

qint64 ormidonDecode(const QString& path) {
    const DecodedImage decoded = ImageDecoder::decode(path);
    return decoded.ok ? qint64(decoded.image.width()) * decoded.image.height() : 0;
}

qint64 peakKiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The child of part (b): one case, then its peak memory on standard output.
int peakChild(const QString& which, const QString& path) {
    const TurboJpeg tj;
    qint64 pixels = 0;
    if (which == "ormidon")
        pixels = ormidonDecode(path);
    else if (which == "turbojpeg")
        pixels = tj.usable() ? bareDecode(tj, path) : 0;
    std::printf("%lld %lld\n", static_cast<long long>(peakKiB()), static_cast<long long>(pixels));
    return 0;
}

// Makes the large picture of part (b) from the photograph: tiled to side x side and written as
// a quality-90 JPEG (ImageMagick's policy keeps its pixel cache for this on disk, which is slow).
int makeLarge(const QString& from, const QString& to, int side) {
    const QImage photo = QImage(from).convertToFormat(QImage::Format_RGB32);
    QImage large(side, side, QImage::Format_RGB32);
    if (photo.isNull() || large.isNull())
        return 1;
    for (int y = 0; y < side; ++y) {
        const auto* in = reinterpret_cast<const QRgb*>(photo.constScanLine(y % photo.height()));
        auto* out = reinterpret_cast<QRgb*>(large.scanLine(y));
        for (int x = 0; x < side; ++x)
            out[x] = in[x % photo.width()];
    }
    return large.save(to, "JPEG", 90) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() == 5 && args[1] == "--make-large")
        return makeLarge(args[2], args[3], args[4].toInt());
    if (args.size() == 4 && args[1] == "--peak")
        return peakChild(args[2], args[3]);
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: %s <24-megapixel.jpg> <100-megapixel.jpg>\n", argv[0]);
        return 2;
    }
    const TurboJpeg tj;
    if (!tj.usable()) {
        std::fprintf(stderr, "libturbojpeg.so.0 could not be opened\n");
        return 1;
    }

    // (a) time to a ready raster; one warm-up run of each, then 7 interleaved runs.
    const QString photo = args[1];
    ormidonDecode(photo);
    bareDecode(tj, photo);
    std::vector<double> ours, bare;
    qint64 pixels = 0;
    for (int run = 0; run < 7; ++run) {
        QElapsedTimer timer;
        timer.start();
        pixels = ormidonDecode(photo);
        ours.push_back(timer.nsecsElapsed() / 1e6);
        timer.restart();
        const qint64 barePixels = bareDecode(tj, photo);
        bare.push_back(timer.nsecsElapsed() / 1e6);
        if (!pixels || pixels != barePixels) {
            std::fprintf(stderr, "decode failed\n");
            return 1;
        }
    }
    std::printf("(a) open a %.1f-megapixel JPEG, median of 7 runs\n", pixels / 1e6);
    std::printf("    %-34s %10.1f ms\n", "Ormidon ImageDecoder::decode", median(ours));
    std::printf("    %-34s %10.1f ms\n", "libjpeg-turbo tjDecompress2 RGBX", median(bare));
    std::printf("    %-34s %10.2f x   (target <= 1.30)\n", "ratio", median(ours) / median(bare));

    // (b) peak memory, one fresh process per case.
    const QString big = args[2];
    std::printf("(b) peak resident memory decoding %s\n", qPrintable(big));
    qint64 baseline = 0;
    for (const char* which : {"nothing", "ormidon", "turbojpeg"}) {
        QProcess child;
        child.start(app.applicationFilePath(), {"--peak", which, big});
        if (!child.waitForFinished(600000)) {
            std::fprintf(stderr, "child %s did not finish\n", which);
            return 1;
        }
        const QList<QByteArray> fields = child.readAllStandardOutput().trimmed().split(' ');
        const qint64 peak = fields.value(0).toLongLong(), count = fields.value(1).toLongLong();
        if (std::strcmp(which, "nothing") == 0) {
            baseline = peak;
            std::printf("    %-12s VmHWM %8.1f MB (the program itself)\n", which, peak / 1024.0);
            continue;
        }
        const double raster = count * 4 / 1048576.0;
        std::printf(
            "    %-12s VmHWM %8.1f MB, %.1f megapixels, ARGB size %.1f MB, peak/ARGB %.2f x, "
            "(peak - baseline)/ARGB %.2f x   (target < 1.5)\n",
            which, peak / 1024.0, count / 1e6, raster, raster > 0 ? peak / 1024.0 / raster : 0.0,
            raster > 0 ? (peak - baseline) / 1024.0 / raster : 0.0);
    }
    return 0;
}
