// Fuzzes the decoder chain through its entry points, with real files: the first byte picks the
// file's suffix among the readable ones (some formats are known by their suffix alone), the rest
// is the file. Each input is measured and decoded.

#include "codec/DecodeLimits.h"
#include "codec/ImageDecoder.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "FuzzSupport.h"

using FuzzSupport::check;

namespace {

std::unique_ptr<QTemporaryDir> folder;
QStringList suffixes;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    FuzzSupport::quietQtMessages();
    // SVG and PDF pages draw text, which needs a platform; none needs a screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Magick's worker threads would only compete with the fuzzer for the cores.
    qputenv("MAGICK_THREAD_LIMIT", "1");
    // Never destroyed: libFuzzer leaves by exit(), and by the time a static destructor ran,
    // Qt's own globals would already be gone.
    static QGuiApplication* const app = new QGuiApplication(*argc, *argv);
    Q_UNUSED(app);
    folder = std::make_unique<QTemporaryDir>();
    check(folder->isValid(), "a private temporary folder");
    suffixes = ImageDecoder::readableSuffixes();
    check(!suffixes.isEmpty(), "some suffixes are readable");
    std::atexit([] { folder.reset(); }); // libFuzzer leaves by exit(), not through main
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const QString path =
        folder->filePath(QStringLiteral("input.") + suffixes.at(data[0] % suffixes.size()));
    {
        QFile file(path);
        check(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the input file opens");
        check(file.write(reinterpret_cast<const char*>(data + 1), qint64(size - 1)) ==
                  qint64(size - 1),
              "the input file is written");
    }
    ImageDecoder::measure(path);
    const DecodedImage decoded = ImageDecoder::decode(path);
    if (decoded.ok) {
        check(!decoded.image.isNull(), "a decoded picture has pixels");
        check(decoded.image.width() <= DecodeLimits::kMaxSide &&
                  decoded.image.height() <= DecodeLimits::kMaxSide,
              "a decoded picture is within the limits");
    }
    QFile::remove(path);
    return 0;
}
