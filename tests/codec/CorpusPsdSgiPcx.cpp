// Lying headers, bombs and broken structures of Photoshop, SGI and PCX files: the formats read
// by Magick only, whose readers trust their headers the most.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

#include <algorithm>

using namespace CorpusBytes;

namespace {

// ---------------------------------------------------------------- Photoshop assembly

struct Psd {
    quint16 version = 1;
    quint16 channels = 3;
    quint32 w = 8;
    quint32 h = 8;
    quint16 depth = 8;
    quint16 mode = 3; // RGB
    QByteArray colourData;
    QByteArray resources;
    QByteArray layers; // the layer and mask section's body
    quint16 compression = 0;
    QByteArray image;
    qint64 colourLength = -1; // -1: the true lengths
    qint64 resourcesLength = -1;
    qint64 layersLength = -1;
};

QByteArray psdFile(const Psd& p) {
    QByteArray b("8BPS");
    b += be16(p.version) + QByteArray(6, '\0') + be16(p.channels) + be32(p.h) + be32(p.w) +
         be16(p.depth) + be16(p.mode);
    auto section = [&](const QByteArray& body, qint64 length) {
        b += be32(length < 0 ? quint32(body.size()) : quint32(length));
        b += body;
    };
    section(p.colourData, p.colourLength);
    section(p.resources, p.resourcesLength);
    section(p.layers, p.layersLength);
    b += be16(p.compression);
    return b + p.image;
}

// Run-length image data: a table of byte counts, one a row and channel, then the runs.
QByteArray psdRle(quint32 rows, quint16 channels, const QByteArray& rowData, quint16 count) {
    QByteArray b;
    for (quint32 i = 0; i < rows * channels; ++i)
        b += be16(count);
    return b + rowData;
}

// A layer section with one layer of the given bounds and channel count, no pixel data.
QByteArray psdLayerSection(qint16 layerCount, qint32 top, qint32 left, qint32 bottom, qint32 right,
                           quint16 channels) {
    QByteArray record = be32(quint32(top)) + be32(quint32(left)) + be32(quint32(bottom)) +
                        be32(quint32(right)) + be16(channels);
    for (quint16 c = 0; c < std::min<quint16>(channels, 4); ++c)
        record += be16(c) + be32(2);
    record += "8BIMnorm";
    record += QByteArray("\xFF\0\0\0", 4);
    record += be32(12) + be32(0) + be32(0) + QByteArray("\x03lay", 4);
    QByteArray info = be16(quint16(layerCount)) + record + QByteArray(8, '\0');
    return be32(quint32(info.size())) + info + be32(0);
}

// ---------------------------------------------------------------- SGI assembly

struct Sgi {
    quint8 storage = 0; // 1: run-length
    quint8 bpc = 1;
    quint16 dimension = 3;
    quint16 w = 8;
    quint16 h = 8;
    quint16 z = 3;
    QByteArray body;
};

QByteArray sgiFile(const Sgi& s) {
    QByteArray b(512, '\0');
    putBE16(b, 0, 474);
    b[2] = char(s.storage);
    b[3] = char(s.bpc);
    putBE16(b, 4, s.dimension);
    putBE16(b, 6, s.w);
    putBE16(b, 8, s.h);
    putBE16(b, 10, s.z);
    putBE32(b, 16, 255); // maximum sample
    return b + s.body;
}

// Offset and length tables (every row pointing at the same run) and the run.
QByteArray sgiRle(quint32 rows, quint32 offset, quint32 length, const QByteArray& runs) {
    QByteArray b;
    for (quint32 i = 0; i < rows; ++i)
        b += be32(offset);
    for (quint32 i = 0; i < rows; ++i)
        b += be32(length);
    return b + runs;
}

// ---------------------------------------------------------------- PCX assembly

struct Pcx {
    quint8 version = 5;
    quint8 encoding = 1;
    quint8 bpp = 8;
    quint16 xmin = 0;
    quint16 ymin = 0;
    quint16 xmax = 7;
    quint16 ymax = 7;
    quint8 planes = 3;
    quint16 bytesPerLine = 8;
    QByteArray body;
};

QByteArray pcxFile(const Pcx& p) {
    QByteArray b(128, '\0');
    b[0] = 10;
    b[1] = char(p.version);
    b[2] = char(p.encoding);
    b[3] = char(p.bpp);
    putLE16(b, 4, p.xmin);
    putLE16(b, 6, p.ymin);
    putLE16(b, 8, p.xmax);
    putLE16(b, 10, p.ymax);
    putLE16(b, 12, 72);
    putLE16(b, 14, 72);
    b[65] = char(p.planes);
    putLE16(b, 66, p.bytesPerLine);
    putLE16(b, 68, 1);
    return b + p.body;
}

} // namespace

namespace HostileCorpus {

// ---------------------------------------------------------------- Photoshop

void addPsdDamage(CorpusWriter& w) {
    const QByteArray raw = randomBytes(8 * 8 * 3, 81);
    auto add = [&](const QString& damage, const QString& label, const Psd& p) {
        w.add(damage, label, "psd", psdFile(p));
    };
    add("valid", "psd-hand-made-8x8", Psd{.image = raw});
    const QByteArray run("\x81\0", 2); // 128 zeros
    add("bomb", "psd-rle-bomb-30000x30000",
        Psd{.w = 30000, .h = 30000, .compression = 1, .image = psdRle(30000, 3, run, 2)});
    add("bomb", "psd-rle-bomb-11000x11000",
        Psd{.w = 11000, .h = 11000, .compression = 1, .image = psdRle(11000, 3, run, 2)});
    add("bomb", "psd-raw-bomb-16000x16000", Psd{.w = 16000, .h = 16000, .image = raw});
    add("bomb", "psd-zip-bomb-11000x11000",
        Psd{.w = 11000,
            .h = 11000,
            .compression = 2,
            .image = zlibStream(QByteArray(8 << 20, '\0'))});
    add("lying-header", "psd-claims-300000x300000", Psd{.w = 300000, .h = 300000, .image = raw});
    add("lying-header", "psb-claims-300000x300000",
        Psd{.version = 2, .w = 300000, .h = 300000, .image = raw});
    add("lying-header", "psd-claims-0x0", Psd{.w = 0, .h = 0, .image = raw});
    add("lying-header", "psd-channels-0", Psd{.channels = 0, .image = raw});
    add("lying-header", "psd-channels-57", Psd{.channels = 57, .image = raw});
    add("lying-header", "psd-depth-0", Psd{.depth = 0, .image = raw});
    add("lying-header", "psd-depth-7", Psd{.depth = 7, .image = raw});
    add("lying-header", "psd-depth-64", Psd{.depth = 64, .image = raw});
    add("lying-header", "psd-mode-99", Psd{.mode = 99, .image = raw});
    add("lying-header", "psd-version-3", Psd{.version = 3, .image = raw});
    // Colour data: missing for an indexed picture, claiming four gigabytes.
    add("palette", "psd-indexed-no-palette", Psd{.channels = 1, .mode = 2, .image = raw});
    add("palette", "psd-indexed-palette-short",
        Psd{.channels = 1, .mode = 2, .colourData = QByteArray(30, '\x40'), .image = raw});
    add("palette", "psd-colour-data-4gb",
        Psd{.mode = 2,
            .colourData = QByteArray(16, '\x40'),
            .image = raw,
            .colourLength = 0xFFFFFFFF});
    add("broken-structure", "psd-resources-4gb",
        Psd{.resources = "8BIM" + be16(1005) + QByteArray(2, '\0') + be32(0x7FFFFFFF),
            .image = raw,
            .resourcesLength = 0xFFFFFFFF});
    add("broken-structure", "psd-resource-past-end",
        Psd{.resources =
                "8BIM" + be16(1039) + QByteArray(2, '\0') + be32(0x7FFFFFFF) + randomBytes(64, 82),
            .image = raw});
    add("broken-structure", "psd-layers-length-past-end",
        Psd{.layers = QByteArray(16, '\0'), .image = raw, .layersLength = 0xFFFFFFF0});
    // Layers: a count of -32768, bounds of 2^31, 65535 channels, a layer of 11000 square.
    add("broken-structure", "psd-layer-count-min",
        Psd{.layers = psdLayerSection(-32768, 0, 0, 8, 8, 3), .image = raw});
    add("broken-structure", "psd-layer-bounds-2g",
        Psd{.layers = psdLayerSection(1, -0x7FFFFFFF, -0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 3),
            .image = raw});
    add("broken-structure", "psd-layer-65535-channels",
        Psd{.layers = psdLayerSection(1, 0, 0, 8, 8, 65535), .image = raw});
    add("bomb", "psd-layer-11000x11000",
        Psd{.layers = psdLayerSection(1, 0, 0, 11000, 11000, 3), .image = raw});
    add("broken-structure", "psd-layer-inverted-bounds",
        Psd{.layers = psdLayerSection(1, 8, 8, 0, 0, 3), .image = raw});
    // Run-length data whose counts or runs overrun.
    add("broken-structure", "psd-rle-counts-past-end",
        Psd{.compression = 1, .image = psdRle(8, 3, run, 0xFFFF)});
    add("broken-structure", "psd-rle-runs-past-row",
        Psd{.compression = 1,
            .image = psdRle(8, 3, QByteArray("\x81\x11\x81\x22", 4).repeated(24), 4)});
    add("broken-structure", "psd-compression-3-garbage",
        Psd{.compression = 3, .image = randomBytes(200, 83)});
    add("broken-structure", "psd-compression-9", Psd{.compression = 9, .image = raw});
}

// ---------------------------------------------------------------- SGI

void addSgiDamage(CorpusWriter& w) {
    const QByteArray raw = randomBytes(8 * 8 * 3, 91);
    const QByteArray runs("\x7F\x10\x7F\x20\x00", 5); // two runs of 127, then the end
    auto add = [&](const QString& damage, const QString& label, const Sgi& s) {
        w.add(damage, label, "sgi", sgiFile(s));
    };
    add("valid", "sgi-hand-made-8x8", Sgi{.body = raw});
    add("lying-header", "sgi-claims-65535x65535", Sgi{.w = 65535, .h = 65535, .body = raw});
    add("bomb", "sgi-raw-bomb-16000x16000", Sgi{.w = 16000, .h = 16000, .body = raw});
    add("bomb", "sgi-rle-bomb-11000x11000",
        Sgi{.storage = 1,
            .w = 11000,
            .h = 11000,
            .z = 1,
            .body = sgiRle(11000, 512 + 11000 * 8, 5, runs)});
    add("lying-header", "sgi-claims-0x0", Sgi{.w = 0, .h = 0, .body = raw});
    add("lying-header", "sgi-z-0", Sgi{.z = 0, .body = raw});
    add("lying-header", "sgi-z-65535", Sgi{.z = 65535, .body = raw});
    add("lying-header", "sgi-bpc-0", Sgi{.bpc = 0, .body = raw});
    add("lying-header", "sgi-bpc-3", Sgi{.bpc = 3, .body = raw});
    add("lying-header", "sgi-dimension-9", Sgi{.dimension = 9, .body = raw});
    add("lying-header", "sgi-storage-2", Sgi{.storage = 2, .body = raw});
    add("broken-structure", "sgi-rle-offsets-past-end",
        Sgi{.storage = 1, .body = sgiRle(24, 0x7FFFFFF0, 5, runs)});
    add("broken-structure", "sgi-rle-lengths-4gb",
        Sgi{.storage = 1, .body = sgiRle(24, 512 + 24 * 8, 0xFFFFFFFF, runs)});
    add("broken-structure", "sgi-rle-runs-past-row",
        Sgi{.storage = 1, .body = sgiRle(24, 512 + 24 * 8, 5, runs)});
    add("broken-structure", "sgi-rle-offset-into-table",
        Sgi{.storage = 1, .body = sgiRle(24, 512, 200, runs)});
    add("broken-structure", "sgi-rle-16-bit-odd",
        Sgi{.storage = 1, .bpc = 2, .body = sgiRle(24, 512 + 24 * 8, 5, runs)});
}

// ---------------------------------------------------------------- PCX

void addPcxDamage(CorpusWriter& w) {
    const QByteArray raw = randomBytes(8 * 8 * 3, 101);
    const QByteArray palette = QByteArray(1, '\x0C') + randomBytes(768, 102);
    auto add = [&](const QString& damage, const QString& label, const Pcx& p) {
        w.add(damage, label, "pcx", pcxFile(p));
    };
    add("valid", "pcx-hand-made-8x8", Pcx{.encoding = 0, .body = raw});
    add("lying-header", "pcx-claims-65536-wide",
        Pcx{.xmax = 65535, .bytesPerLine = 65535, .body = raw});
    add("lying-header", "pcx-xmin-past-xmax", Pcx{.xmin = 100, .xmax = 7, .body = raw});
    add("lying-header", "pcx-ymin-past-ymax", Pcx{.ymin = 65535, .ymax = 0, .body = raw});
    add("bomb", "pcx-rle-bomb-11000x11000",
        Pcx{.xmax = 10999,
            .ymax = 10999,
            .bytesPerLine = 11000,
            .body = QByteArray("\xFF\x10", 2).repeated(100)});
    add("bomb", "pcx-rle-bomb-16000x16000",
        Pcx{.xmax = 15999, .ymax = 15999, .bytesPerLine = 16000, .body = raw});
    add("lying-header", "pcx-bytes-per-line-0", Pcx{.bytesPerLine = 0, .body = raw});
    add("lying-header", "pcx-bytes-per-line-65535", Pcx{.bytesPerLine = 65535, .body = raw});
    add("lying-header", "pcx-planes-0", Pcx{.planes = 0, .body = raw});
    add("lying-header", "pcx-planes-255", Pcx{.planes = 255, .body = raw});
    add("lying-header", "pcx-bpp-0", Pcx{.bpp = 0, .body = raw});
    add("lying-header", "pcx-bpp-7", Pcx{.bpp = 7, .body = raw});
    add("lying-header", "pcx-bpp-32", Pcx{.bpp = 32, .body = raw});
    add("lying-header", "pcx-version-99", Pcx{.version = 99, .body = raw});
    add("palette", "pcx-8-bit-palette-missing", Pcx{.planes = 1, .body = raw.left(64)});
    add("palette", "pcx-8-bit-palette-cut",
        Pcx{.encoding = 0, .planes = 1, .body = raw.left(64) + palette.left(100)});
    add("palette", "pcx-8-bit-palette-marker-only",
        Pcx{.encoding = 0, .planes = 1, .body = raw.left(64) + '\x0C'});
    add("broken-structure", "pcx-rle-run-past-end",
        Pcx{.body = QByteArray("\xFF\x10", 2).repeated(40)});
    add("broken-structure", "pcx-encoding-7", Pcx{.encoding = 7, .body = raw});
}

} // namespace HostileCorpus
