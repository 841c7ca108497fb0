// TIFF files that lie about their size, hide bombs, loop, point past their end or carry tags
// no reader knows. All are assembled here field by field.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

using namespace CorpusBytes;

namespace {

constexpr quint16 kPrivateTag = 65000;

// The basic fields of an 8 x 8 RGB picture with one field replaced or added.
QList<TiffField> with(QList<TiffField> fields, const TiffField& field) {
    for (TiffField& f : fields)
        if (f.tag == field.tag) {
            f = field;
            return fields;
        }
    fields.append(field);
    return fields;
}

QList<TiffField> without(QList<TiffField> fields, quint16 tag) {
    fields.removeIf([tag](const TiffField& f) { return f.tag == tag; });
    return fields;
}

const QByteArray& pixels() {
    static const QByteArray bytes = randomBytes(8 * 8 * 3, 71);
    return bytes;
}

QList<TiffField> basic() {
    return tiffBasicFields(8, 8, 3, 192);
}

QByteArray sized(quint32 w, quint32 h, const QByteArray& strip, QList<TiffField> extra = {}) {
    QList<TiffField> fields = tiffBasicFields(w, h, 3, quint32(strip.size()));
    for (const TiffField& f : extra)
        fields = with(fields, f);
    return tiffFile(fields, strip);
}

} // namespace

namespace HostileCorpus {

QByteArray tiffWithPrivateTag() {
    return tiffFile(with(basic(), {kPrivateTag, kTiffUndefined, 16, randomBytes(16, 72)}),
                    pixels());
}

QByteArray tiffWithBrokenStrips() {
    QList<TiffField> fields = with(basic(), tiffLong(279, {0x7FFFFFFF}));
    fields = with(fields, tiffLong(273, {0x7FFFFF00}));
    return tiffFile(fields, pixels().left(40));
}

void addTiffDamage(CorpusWriter& w) {
    auto add = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "tif", bytes);
    };

    // Tags of no standard: the valid picture must still open.
    add("tiff-private-tag", "tif-private-tag", tiffWithPrivateTag());
    add("tiff-private-tag", "tif-private-tag-count-4g-past-end",
        tiffFile(with(basic(), {kPrivateTag, kTiffUndefined, 0xFFFFFFFF, le32(0x7FFFFFF0)}),
                 pixels()));
    add("tiff-private-tag", "tif-private-tag-type-99",
        tiffFile(with(basic(), {kPrivateTag, 99, 4, randomBytes(4, 73)}), pixels()));
    QList<TiffField> many = basic();
    for (quint16 tag = 50000; tag < 50800; ++tag)
        many.append({tag, kTiffLong, 1, le32(tag)});
    add("tiff-private-tag", "tif-800-private-tags", tiffFile(many, pixels()));
    add("tiff-private-tag", "tif-private-ascii-unterminated",
        tiffFile(with(basic(), {kPrivateTag, kTiffAscii, 64, QByteArray(64, 'A')}), pixels()));

    // Lying sizes and bombs.
    add("lying-header", "tif-claims-100000x100000", sized(100000, 100000, pixels()));
    add("lying-header", "tif-claims-65535x65535", sized(65535, 65535, pixels()));
    add("lying-header", "tif-claims-0x0", sized(0, 0, pixels()));
    add("lying-header", "tif-claims-width-4g", sized(0xFFFFFFFF, 8, pixels()));
    add("bomb", "tif-bomb-16000x16000-raw", sized(16000, 16000, pixels()));
    const QByteArray zeros = zlibStream(QByteArray(8 << 20, '\0'));
    add("bomb", "tif-bomb-30000x10000-deflate", sized(30000, 10000, zeros, {tiffShort(259, {8})}));
    add("bomb", "tif-bomb-16000x16000-deflate", sized(16000, 16000, zeros, {tiffShort(259, {8})}));
    add("bomb", "tif-bomb-12000x12000-packbits",
        sized(12000, 12000, QByteArray("\x81\0", 2).repeated(2000), {tiffShort(259, {32773})}));

    // Directories: past the end, at zero, at the header, looping, cut short.
    const QByteArray good = tiffFile(basic(), pixels());
    QByteArray past = good;
    putLE32(past, 4, 0x7FFFFFF0);
    add("tiff-ifd", "tif-ifd-past-end", past);
    QByteArray zero = good;
    putLE32(zero, 4, 0);
    add("tiff-ifd", "tif-ifd-at-0", zero);
    QByteArray header = good;
    putLE32(header, 4, 4);
    add("tiff-ifd", "tif-ifd-at-header", header);
    QByteArray odd = good;
    putLE32(odd, 4, 9);
    add("tiff-ifd", "tif-ifd-misaligned", odd);
    add("tiff-ifd", "tif-next-ifd-loop", tiffFile(basic(), pixels(), 8));
    QByteArray count = good;
    putLE16(count, 8, 0xFFFF);
    add("tiff-ifd", "tif-ifd-65535-entries", count);
    add("tiff-ifd", "tif-ifd-cut", good.left(8 + 2 + 12 * 5));
    add("tiff-ifd", "tif-exif-ifd-loop", tiffFile(with(basic(), tiffLong(34665, {8})), pixels()));
    add("tiff-ifd", "tif-exif-ifd-past-end",
        tiffFile(with(basic(), tiffLong(34665, {0x7FFFFFF0})), pixels()));
    add("tiff-ifd", "tif-sub-ifds-loop",
        tiffFile(with(basic(), tiffLong(330, {8, 8, 8, 8})), pixels()));
    add("tiff-ifd", "tif-tags-unsorted", tiffFile(basic(), pixels(), 0, false));
    QList<TiffField> twice = basic();
    twice.append(tiffLong(256, {65535}));
    add("tiff-ifd", "tif-width-twice", tiffFile(twice, pixels()));
    QByteArray order = good;
    order[0] = 'M';
    order[1] = 'M';
    add("tiff-ifd", "tif-wrong-byte-order", order);
    QByteArray big("II+\0\x08\0\0\0", 8);
    big += le32(0xFFFFFFF0) + le32(0x7FFFFFFF) + randomBytes(200, 74);
    add("tiff-ifd", "tif-bigtiff-offsets-past-end", big);

    // Strips: counts and offsets past the end, too many, too few, rows per strip of zero.
    add("tiff-strips", "tif-strip-counts-past-end", tiffWithBrokenStrips());
    add("tiff-strips", "tif-strip-count-4g",
        tiffFile(with(basic(), tiffLong(279, {0xFFFFFFFF})), pixels()));
    add("tiff-strips", "tif-strip-offset-past-end",
        tiffFile(with(basic(), tiffLong(273, {0x7FFFFFF0})), pixels()));
    add("tiff-strips", "tif-rows-per-strip-0",
        tiffFile(with(basic(), tiffLong(278, {0})), pixels()));
    QList<quint32> offsets(20000, 16);
    QList<quint32> counts(20000, 64);
    QList<TiffField> strips = with(basic(), tiffLong(273, offsets));
    strips = with(strips, tiffLong(279, counts));
    strips = with(strips, tiffLong(278, {1}));
    add("tiff-strips", "tif-20000-strips-for-8-rows", tiffFile(strips, pixels()));
    add("tiff-strips", "tif-offsets-without-counts", tiffFile(without(basic(), 279), pixels()));
    add("tiff-strips", "tif-no-strips", tiffFile(without(without(basic(), 279), 273), {}));

    // Samples, colour and compression that make no sense together.
    add("broken-structure", "tif-bits-0",
        tiffFile(with(basic(), tiffShort(258, {0, 0, 0})), pixels()));
    add("broken-structure", "tif-bits-64",
        tiffFile(with(basic(), tiffShort(258, {64, 64, 64})), pixels()));
    add("broken-structure", "tif-bits-3",
        tiffFile(with(basic(), tiffShort(258, {3, 3, 3})), pixels()));
    add("broken-structure", "tif-samples-0",
        tiffFile(with(basic(), tiffShort(277, {0})), pixels()));
    add("broken-structure", "tif-samples-65535",
        tiffFile(with(basic(), tiffShort(277, {65535})), pixels()));
    add("broken-structure", "tif-extra-samples-1000",
        tiffFile(with(basic(), tiffShort(338, QList<quint16>(1000, 2))), pixels()));
    add("broken-structure", "tif-compression-65535",
        tiffFile(with(basic(), tiffShort(259, {65535})), pixels()));
    add("broken-structure", "tif-jpeg-garbage",
        tiffFile(with(basic(), tiffShort(259, {7})), randomBytes(192, 75)));
    add("broken-structure", "tif-old-jpeg-garbage",
        tiffFile(with(with(basic(), tiffShort(259, {6})), tiffLong(513, {8})),
                 randomBytes(192, 76)));
    add("broken-structure", "tif-lzw-garbage",
        tiffFile(with(basic(), tiffShort(259, {5})), randomBytes(192, 77)));
    add("broken-structure", "tif-deflate-garbage",
        tiffFile(with(basic(), tiffShort(259, {8})), randomBytes(192, 78)));
    add("broken-structure", "tif-planar-separate-one-strip",
        tiffFile(with(basic(), tiffShort(284, {2})), pixels()));
    // Tiles of no width, and of a width that is no multiple of 16, over strip data.
    QList<TiffField> tiles = without(without(basic(), 273), 279);
    tiles.append(tiffLong(322, {0}));
    tiles.append(tiffLong(323, {0}));
    tiles.append(tiffLong(324, {0}));
    tiles.append(tiffLong(325, {192}));
    add("broken-structure", "tif-tiles-0x0", tiffFile(tiles, pixels()));
    QList<TiffField> oddTiles = without(without(basic(), 273), 279);
    oddTiles.append(tiffLong(322, {3}));
    oddTiles.append(tiffLong(323, {3}));
    oddTiles.append(tiffLong(324, {16}));
    oddTiles.append(tiffLong(325, {192}));
    add("broken-structure", "tif-tiles-3x3", tiffFile(oddTiles, pixels()));

    // Palettes: none for a palette picture, too short, indices past it.
    QList<TiffField> paletted = tiffBasicFields(8, 8, 1, 64);
    paletted = with(paletted, tiffShort(262, {3}));
    add("palette", "tif-palette-missing", tiffFile(paletted, QByteArray(64, '\xFF')));
    add("palette", "tif-palette-too-short",
        tiffFile(with(paletted, tiffShort(320, QList<quint16>(6, 0x8000))),
                 QByteArray(64, '\xFF')));
    QList<TiffField> fourBit = with(paletted, tiffShort(258, {4}));
    fourBit = with(fourBit, tiffShort(320, QList<quint16>(3 * 16, 0x4000)));
    add("palette", "tif-palette-16-bits-8", tiffFile(fourBit, QByteArray(64, '\xFF')));

    // Metadata: an ICC profile of random bytes, XMP that claims two gigabytes.
    add("broken-metadata", "tif-icc-random",
        tiffFile(with(basic(), {34675, kTiffUndefined, 3000, randomBytes(3000, 79)}), pixels()));
    add("broken-metadata", "tif-xmp-count-2g",
        tiffFile(with(basic(), {700, kTiffByte, 0x7FFFFFFF, le32(300)}), pixels()));
    add("broken-metadata", "tif-resolution-zero-over-zero",
        tiffFile(with(basic(), tiffRational(282, 0, 0)), pixels()));
}

} // namespace HostileCorpus
