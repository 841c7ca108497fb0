// Lying headers, bombs and broken structures of BMP, Targa, Windows icon and WebP files.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

#include <algorithm>
#include <cstdint>

using namespace CorpusBytes;

namespace {

// ---------------------------------------------------------------- BMP assembly

struct Bmp {
    qint32 w = 8;
    qint32 h = 8;
    quint16 bpp = 24;
    quint32 compression = 0;
    quint32 coloursUsed = 0;
    quint32 headerSize = 40;
    quint16 planes = 1;
    QByteArray palette; // four bytes an entry
    QByteArray pixels;
    qint64 offBits = -1; // -1: right after the palette
    QByteArray masks;    // BI_BITFIELDS masks, after the header
};

QByteArray bmpFile(const Bmp& m) {
    QByteArray info;
    putLE32(info, 0, m.headerSize);
    putLE32(info, 4, quint32(m.w));
    putLE32(info, 8, quint32(m.h));
    putLE16(info, 12, m.planes);
    putLE16(info, 14, m.bpp);
    putLE32(info, 16, m.compression);
    putLE32(info, 20, quint32(m.pixels.size()));
    putLE32(info, 24, 2835);
    putLE32(info, 28, 2835);
    putLE32(info, 32, m.coloursUsed);
    putLE32(info, 36, 0);
    const quint32 dataAt = 14 + 40 + quint32(m.masks.size() + m.palette.size());
    QByteArray b("BM");
    b += le32(dataAt + quint32(m.pixels.size()));
    b += le32(0);
    b += le32(m.offBits < 0 ? dataAt : quint32(m.offBits));
    return b + info + m.masks + m.palette + m.pixels;
}

QByteArray greyPalette(int entries) {
    QByteArray pal;
    for (int i = 0; i < entries; ++i)
        pal += QByteArray(3, char(i * 255 / std::max(entries - 1, 1))) + '\0';
    return pal;
}

// ---------------------------------------------------------------- Targa assembly

struct Tga {
    quint8 idLength = 0;
    quint8 mapType = 0;
    quint8 type = 2;
    quint16 mapFirst = 0;
    quint16 mapLength = 0;
    quint8 mapBits = 0;
    quint16 w = 8;
    quint16 h = 8;
    quint8 bpp = 24;
    quint8 descriptor = 0x20; // top to bottom
    QByteArray body;          // id, colour map and pixels
};

QByteArray tgaFile(const Tga& t) {
    QByteArray b(18, '\0');
    b[0] = char(t.idLength);
    b[1] = char(t.mapType);
    b[2] = char(t.type);
    putLE16(b, 3, t.mapFirst);
    putLE16(b, 5, t.mapLength);
    b[7] = char(t.mapBits);
    putLE16(b, 12, t.w);
    putLE16(b, 14, t.h);
    b[16] = char(t.bpp);
    b[17] = char(t.descriptor);
    return b + t.body;
}

// ---------------------------------------------------------------- icon assembly

QByteArray icoFile(quint16 type, quint16 count, quint8 w, quint8 h, quint16 bpp, quint32 size,
                   qint64 offset, const QByteArray& payload) {
    QByteArray b = le16(0) + le16(type) + le16(count);
    b += char(w);
    b += char(h);
    b += QByteArray(2, '\0');
    b += le16(1) + le16(bpp) + le32(size) + le32(offset < 0 ? 22 : quint32(offset));
    return b + payload;
}

// The icon form of a BMP: no file header, height doubled for the AND mask.
QByteArray iconDib(qint32 w, qint32 h, quint16 bpp, qsizetype pixelBytes) {
    QByteArray info;
    putLE32(info, 0, 40);
    putLE32(info, 4, quint32(w));
    putLE32(info, 8, quint32(h));
    putLE16(info, 12, 1);
    putLE16(info, 14, bpp);
    putLE32(info, 16, 0);
    return info + randomBytes(pixelBytes, quint32(w) ^ quint32(h));
}

} // namespace

namespace HostileCorpus {

// ---------------------------------------------------------------- BMP

void addBmpDamage(CorpusWriter& w) {
    const QByteArray pixels8x8 = randomBytes(8 * 24, 41);
    auto add = [&](const QString& damage, const QString& label, const Bmp& m) {
        w.add(damage, label, "bmp", bmpFile(m));
    };
    add("valid", "bmp-hand-made-8x8", Bmp{.pixels = pixels8x8});
    add("lying-header", "bmp-claims-100000x100000",
        Bmp{.w = 100000, .h = 100000, .pixels = pixels8x8});
    add("lying-header", "bmp-claims-65535x65535", Bmp{.w = 65535, .h = 65535, .pixels = pixels8x8});
    add("bomb", "bmp-bomb-16000x16000", Bmp{.w = 16000, .h = 16000, .pixels = pixels8x8});
    add("bomb", "bmp-bomb-16000x-16000-top-down",
        Bmp{.w = 16000, .h = -16000, .pixels = pixels8x8});
    add("lying-header", "bmp-claims-0x0", Bmp{.w = 0, .h = 0, .pixels = pixels8x8});
    add("lying-header", "bmp-negative-width", Bmp{.w = -64, .h = 48, .pixels = pixels8x8});
    add("lying-header", "bmp-height-int-min", Bmp{.w = 8, .h = INT32_MIN, .pixels = pixels8x8});
    add("lying-header", "bmp-bpp-0", Bmp{.bpp = 0, .pixels = pixels8x8});
    add("lying-header", "bmp-bpp-64", Bmp{.bpp = 64, .pixels = pixels8x8});
    add("lying-header", "bmp-planes-0", Bmp{.planes = 0, .pixels = pixels8x8});
    add("lying-header", "bmp-header-size-4gb", Bmp{.headerSize = 0xFFFFFFFF, .pixels = pixels8x8});
    add("lying-header", "bmp-os2-header-size", Bmp{.headerSize = 12, .pixels = pixels8x8});
    add("lying-header", "bmp-offset-past-end", Bmp{.pixels = pixels8x8, .offBits = 0x7FFFFFF0});
    add("lying-header", "bmp-offset-0", Bmp{.pixels = pixels8x8, .offBits = 0});

    // Palettes: indices past two entries, a count of four billion or a hundred thousand.
    const QByteArray indices(64, '\xFF');
    add("palette", "bmp-index-out-of-range",
        Bmp{.bpp = 8, .coloursUsed = 2, .palette = greyPalette(2), .pixels = indices});
    add("palette", "bmp-colours-used-4gb",
        Bmp{.bpp = 8, .coloursUsed = 0xFFFFFFFF, .palette = greyPalette(256), .pixels = indices});
    add("palette", "bmp-colours-used-100000",
        Bmp{.bpp = 8, .coloursUsed = 100000, .palette = greyPalette(16), .pixels = indices});
    add("palette", "bmp-palette-missing", Bmp{.bpp = 8, .coloursUsed = 256, .pixels = indices});
    add("palette", "bmp-4bit-index-out-of-range",
        Bmp{.bpp = 4,
            .coloursUsed = 3,
            .palette = greyPalette(3),
            .pixels = QByteArray(32, '\xFF')});

    // Run-length data: ending at once on a giant, jumping outside, running past the row.
    const QByteArray endOfBitmap("\0\x01", 2);
    add("bomb", "bmp-rle8-bomb-16000x16000",
        Bmp{.w = 16000,
            .h = 16000,
            .bpp = 8,
            .compression = 1,
            .coloursUsed = 256,
            .palette = greyPalette(256),
            .pixels = QByteArray("\x05\x10", 2) + endOfBitmap});
    add("broken-structure", "bmp-rle8-delta-outside",
        Bmp{.bpp = 8,
            .compression = 1,
            .coloursUsed = 256,
            .palette = greyPalette(256),
            .pixels = QByteArray("\0\x02\xFF\xFF\0\x02\xFF\xFF\x05\x10", 10) + endOfBitmap});
    add("broken-structure", "bmp-rle8-run-past-row",
        Bmp{.bpp = 8,
            .compression = 1,
            .coloursUsed = 256,
            .palette = greyPalette(256),
            .pixels = QByteArray("\xFF\x10\xFF\x10\xFF\x10\0\xFF", 8) + randomBytes(255, 42)});
    add("broken-structure", "bmp-rle4-run-past-row",
        Bmp{.bpp = 4,
            .compression = 2,
            .coloursUsed = 16,
            .palette = greyPalette(16),
            .pixels = QByteArray("\xFF\x12\xFF\x12\0\xFF", 6) + randomBytes(128, 43)});
    add("broken-structure", "bmp-rle8-on-24-bit",
        Bmp{.compression = 1, .pixels = QByteArray("\x05\x10", 2) + endOfBitmap});
    // Bit-field masks that are empty, overlapping or all ones.
    add("broken-structure", "bmp-bitfields-zero",
        Bmp{.bpp = 32,
            .compression = 3,
            .pixels = randomBytes(256, 44),
            .masks = QByteArray(12, '\0')});
    add("broken-structure", "bmp-bitfields-all-ones",
        Bmp{.bpp = 16,
            .compression = 3,
            .pixels = randomBytes(128, 45),
            .masks = QByteArray(12, '\xFF')});
    add("broken-structure", "bmp-compression-99", Bmp{.compression = 99, .pixels = pixels8x8});
}

// ---------------------------------------------------------------- Targa

void addTgaDamage(CorpusWriter& w) {
    const QByteArray tiny = randomBytes(64, 51);
    auto add = [&](const QString& damage, const QString& label, const Tga& t) {
        w.add(damage, label, "tga", tgaFile(t));
    };
    add("valid", "tga-hand-made-8x8", Tga{.body = randomBytes(8 * 8 * 3, 52)});
    add("bomb", "tga-bomb-16000x16000", Tga{.w = 16000, .h = 16000, .body = tiny});
    add("bomb", "tga-rle-bomb-65535x65535", Tga{.type = 10, .w = 65535, .h = 65535, .body = tiny});
    add("bomb", "tga-rle-bomb-11000x11000", Tga{.type = 10, .w = 11000, .h = 11000, .body = tiny});
    add("lying-header", "tga-claims-0x0", Tga{.w = 0, .h = 0, .body = tiny});
    add("lying-header", "tga-bpp-0", Tga{.bpp = 0, .body = tiny});
    add("lying-header", "tga-bpp-64", Tga{.bpp = 64, .body = tiny});
    add("lying-header", "tga-type-99", Tga{.type = 99, .body = tiny});
    add("lying-header", "tga-id-length-past-end", Tga{.idLength = 255, .body = tiny.left(10)});
    add("lying-header", "tga-alpha-bits-15", Tga{.bpp = 32, .descriptor = 0x2F, .body = tiny});
    // Colour maps: 65535 entries and no data, entries of 0 or 64 bits, indices past the map.
    add("palette", "tga-map-65535-entries-missing",
        Tga{.mapType = 1, .type = 1, .mapLength = 65535, .mapBits = 24, .bpp = 8, .body = tiny});
    add("palette", "tga-map-entry-bits-0",
        Tga{.mapType = 1, .type = 1, .mapLength = 16, .mapBits = 0, .bpp = 8, .body = tiny});
    add("palette", "tga-map-entry-bits-64",
        Tga{.mapType = 1, .type = 1, .mapLength = 16, .mapBits = 64, .bpp = 8, .body = tiny});
    add("palette", "tga-index-out-of-range",
        Tga{.mapType = 1,
            .type = 1,
            .mapLength = 2,
            .mapBits = 24,
            .bpp = 8,
            .body = QByteArray(6, '\x7F') + QByteArray(64, '\xFF')});
    add("palette", "tga-map-first-past-length",
        Tga{.mapType = 1,
            .type = 1,
            .mapFirst = 65000,
            .mapLength = 4,
            .mapBits = 24,
            .bpp = 8,
            .body = QByteArray(12, '\x7F') + QByteArray(64, '\x02')});
    add("palette", "tga-rle-mapped-index-out-of-range",
        Tga{.mapType = 1,
            .type = 9,
            .mapLength = 2,
            .mapBits = 24,
            .bpp = 8,
            .body = QByteArray(6, '\x7F') + QByteArray("\xBF\xFF\xBF\xFE", 4)});
    // Run-length packets that run past the last row.
    add("broken-structure", "tga-rle-runs-past-end",
        Tga{.type = 10, .body = QByteArray("\xFF\x01\x02\x03", 4).repeated(10)});
    add("broken-structure", "tga-rle-raw-packet-past-end",
        Tga{.type = 10, .body = QByteArray("\x7F", 1) + randomBytes(128 * 3 - 50, 53)});
    add("broken-structure", "tga-bottom-up-right-to-left",
        Tga{.descriptor = 0x10, .body = randomBytes(8 * 8 * 3, 54)});
}

// ---------------------------------------------------------------- icons

void addIcoDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& ico = seed.bytes;
    QByteArray count = ico;
    putLE16(count, 4, 65535);
    w.add("lying-header", "ico-65535-entries", "ico", count);
    QByteArray offset = ico;
    putLE32(offset, 18, 0x7FFFFFF0);
    w.add("lying-header", "ico-entry-offset-past-end", "ico", offset);
    QByteArray size = ico;
    putLE32(size, 14, 0xFFFFFFFF);
    w.add("lying-header", "ico-entry-size-4gb", "ico", size);
    QByteArray zero = ico;
    putLE32(zero, 14, 0);
    w.add("lying-header", "ico-entry-size-0", "ico", zero);
    QByteArray type = ico;
    putLE16(type, 2, 3);
    w.add("lying-header", "ico-type-3", "ico", type);

    const QByteArray bigPng = pngFile(65535, 65535, 6, zlibStream(QByteArray(1 << 20, '\0')));
    w.add("bomb", "ico-png-65535x65535", "ico",
          icoFile(1, 1, 0, 0, 32, quint32(bigPng.size()), -1, bigPng));
    const QByteArray png16k = pngFile(16000, 16000, 6, zlibStream(QByteArray(4 << 20, '\0')));
    w.add("bomb", "ico-png-16000x16000", "ico",
          icoFile(1, 1, 0, 0, 32, quint32(png16k.size()), -1, png16k));
    const QByteArray tallDib = iconDib(16, 200000, 32, 2048);
    w.add("lying-header", "ico-dib-height-200000", "ico",
          icoFile(1, 1, 16, 16, 32, quint32(tallDib.size()), -1, tallDib));
    const QByteArray wideDib = iconDib(100000, 32, 32, 2048);
    w.add("lying-header", "ico-dib-width-100000", "ico",
          icoFile(1, 1, 0, 16, 32, quint32(wideDib.size()), -1, wideDib));
    const QByteArray negative = iconDib(-16, -32, 32, 2048);
    w.add("lying-header", "ico-dib-negative-size", "ico",
          icoFile(1, 1, 16, 16, 32, quint32(negative.size()), -1, negative));
    const QByteArray deep = iconDib(16, 32, 64, 2048);
    w.add("lying-header", "ico-dib-bpp-64", "ico",
          icoFile(1, 1, 16, 16, 64, quint32(deep.size()), -1, deep));
    const QByteArray paletted = iconDib(16, 32, 8, 64);
    w.add("palette", "ico-dib-palette-missing", "ico",
          icoFile(1, 1, 16, 16, 8, quint32(paletted.size()), -1, paletted));
    QByteArray cursor = ico;
    putLE16(cursor, 2, 2);
    putLE16(cursor, 10, 0xFFFF); // hot spot
    putLE16(cursor, 12, 0xFFFF);
    w.add("lying-header", "cur-hot-spot-outside", "cur", cursor);
}

// ---------------------------------------------------------------- WebP

void addWebpDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& webp = seed.bytes;
    const qsizetype vp8 = webp.indexOf("VP8 ");
    if (vp8 >= 0) {
        // Chunk header (8), frame tag (3), start code (3), then 14-bit width and height.
        const qsizetype dims = vp8 + 8 + 6;
        auto sized = [&](quint16 width, quint16 height) {
            QByteArray b = webp;
            putLE16(b, dims, width & 0x3FFF);
            putLE16(b, dims + 2, height & 0x3FFF);
            return b;
        };
        w.add("lying-header", "webp-claims-16383x16383", "webp", sized(16383, 16383));
        w.add("lying-header", "webp-claims-0x0", "webp", sized(0, 0));
        w.add("lying-header", "webp-claims-16383x1", "webp", sized(16383, 1));
        QByteArray partition = webp;
        putLE32(partition, vp8 + 8, 0xFFFFFF); // first partition of 8 MB
        w.add("lying-header", "webp-partition-size-huge", "webp", partition);
        // An extended header whose canvas is 16777216 square around the small frame.
        QByteArray vp8x("VP8X", 4);
        vp8x += le32(10);
        vp8x += QByteArray(4, '\0');
        vp8x += QByteArray("\xFF\xFF\xFF\xFF\xFF\xFF", 6);
        const QByteArray body = "WEBP" + vp8x + webp.mid(12);
        w.add("lying-header", "webp-canvas-16777216-square", "webp",
              "RIFF" + le32(quint32(body.size())) + body);
        QByteArray icc("VP8X", 4);
        icc += le32(10) + QByteArray("\x20\0\0\0", 4) + QByteArray("\x3F\0\0\x2F\0\0", 6);
        icc += "ICCP" + le32(4000) + randomBytes(4000, 61);
        const QByteArray withIcc = "WEBP" + icc + webp.mid(12);
        w.add("broken-metadata", "webp-icc-random", "webp",
              "RIFF" + le32(quint32(withIcc.size())) + withIcc);
        QByteArray anim("VP8X", 4);
        anim += le32(10) + QByteArray("\x02\0\0\0", 4) + QByteArray("\x3F\0\0\x2F\0\0", 6);
        anim += "ANIM" + le32(6) + QByteArray(6, '\0');
        anim += "ANMF" + le32(0x7FFFFFF0) + QByteArray(16, '\x01');
        const QByteArray animated = "WEBP" + anim;
        w.add("broken-structure", "webp-animation-frame-2gb", "webp",
              "RIFF" + le32(quint32(animated.size())) + animated);
    }
    QByteArray riff = webp;
    putLE32(riff, 4, 0xFFFFFFFF);
    w.add("lying-header", "webp-riff-size-4gb", "webp", riff);
    QByteArray chunk = webp;
    putLE32(chunk, 16, 0x7FFFFFFF);
    w.add("lying-header", "webp-chunk-size-2gb", "webp", chunk);
    // A lossless header claiming 16384 x 16384 over a few random bytes.
    QByteArray lossless("\x2F", 1);
    lossless += le32(0x3FFF | (quint32(0x3FFF) << 14));
    lossless += randomBytes(64, 62);
    const QByteArray vp8l = "WEBPVP8L" + le32(quint32(lossless.size())) + lossless;
    w.add("bomb", "webp-lossless-16384x16384", "webp", "RIFF" + le32(quint32(vp8l.size())) + vp8l);
}

} // namespace HostileCorpus
