// Fuzzes the header resolution readers: every reader over the same bytes in memory.

#include "codec/HeaderReaders.h"

#include <QBuffer>
#include <QByteArray>

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

using FuzzSupport::check;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    FuzzSupport::quietQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const auto reader : {HeaderReaders::pngDpi, HeaderReaders::jpegDpi, HeaderReaders::bmpDpi,
                              HeaderReaders::tiffDpi}) {
        QBuffer buffer(&bytes);
        check(buffer.open(QIODevice::ReadOnly), "a buffer opens");
        buffer.seek(size / 2); // readers seek on their own, from wherever the device stands
        if (const std::optional<Dpi> dpi = reader(buffer))
            check(std::isfinite(dpi->x) && std::isfinite(dpi->y), "a resolution is a number");
    }
    return 0;
}
