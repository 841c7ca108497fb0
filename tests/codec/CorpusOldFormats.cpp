// Damaged XCF, PICT, MacPaint, Netpbm, XPM and XBM files: old formats whose readers were
// written for files from one program and trust them.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

using namespace CorpusBytes;

namespace {

// Offsets in the file xcfFile makes (one layer named "layer", one property before it).
constexpr qsizetype kXcfLayerPointer = 43;
constexpr qsizetype kXcfLayerNameLength = 67;
constexpr qsizetype kXcfHierarchyBpp = 113;
constexpr qsizetype kXcfLevelPointer = 117;
constexpr qsizetype kXcfFirstTile = 133;

QByteArray patched32(QByteArray b, qsizetype at, quint32 value) {
    putBE32(b, at, value);
    return b;
}

QByteArray xpm(const QByteArray& values, const QList<QByteArray>& colours,
               const QList<QByteArray>& rows) {
    QByteArray b = "/* XPM */\nstatic char *x[] = {\n\"" + values + "\",\n";
    for (const QByteArray& c : colours)
        b += "\"" + c + "\",\n";
    for (const QByteArray& r : rows)
        b += "\"" + r + "\",\n";
    return b + "};\n";
}

QByteArray xbm(const QByteArray& w, const QByteArray& h, const QByteArray& bits) {
    return "#define x_width " + w + "\n#define x_height " + h + "\nstatic char x_bits[] = {\n" +
           bits + "};\n";
}

} // namespace

namespace HostileCorpus {

// ---------------------------------------------------------------- XCF

void addXcfDamage(CorpusWriter& w) {
    const QByteArray good = xcfFile(8, 8, 8, 8, 3);
    auto add = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "xcf", bytes);
    };
    add("valid", "xcf-hand-made-8x8", good);
    add("lying-header", "xcf-claims-100000x100000", xcfFile(100000, 100000, 8, 8, 3));
    add("lying-header", "xcf-claims-0x0", xcfFile(0, 0, 8, 8, 3));
    add("lying-header", "xcf-layer-65535-in-8", xcfFile(8, 8, 65535, 65535, 3));
    add("bomb", "xcf-bomb-11000x11000", xcfFile(11000, 11000, 11000, 11000, 4));
    add("bomb", "xcf-bomb-16000x16000", xcfFile(16000, 16000, 16000, 16000, 3));
    add("lying-header", "xcf-bpp-0", patched32(good, kXcfHierarchyBpp, 0));
    add("lying-header", "xcf-bpp-255", patched32(good, kXcfHierarchyBpp, 255));
    add("broken-structure", "xcf-layer-pointer-to-header", patched32(good, kXcfLayerPointer, 4));
    add("broken-structure", "xcf-layer-pointer-past-end",
        patched32(good, kXcfLayerPointer, 0x7FFFFFF0));
    add("broken-structure", "xcf-layer-name-4gb", patched32(good, kXcfLayerNameLength, 0xFFFFFFFF));
    add("broken-structure", "xcf-level-loop", patched32(good, kXcfLevelPointer, 105));
    add("broken-structure", "xcf-tile-past-end", patched32(good, kXcfFirstTile, 0x7FFFFFF0));
    QByteArray colormap = good.left(26) + be32(1) + be32(0xFFFFFFFF) + be32(0x7FFFFFFF);
    add("palette", "xcf-colormap-4gb", colormap + good.mid(26));
    QByteArray version = good;
    version.replace(9, 4, "v099");
    add("lying-header", "xcf-version-99", version);
    add("broken-structure", "xcf-properties-endless",
        good.left(26) + (be32(21) + be32(4) + be32(0)).repeated(20000));
}

// ---------------------------------------------------------------- PICT

void addPictDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& pict = seed.bytes;
    auto frame = [&](quint16 top, quint16 left, quint16 bottom, quint16 right) {
        QByteArray b = pict;
        putBE16(b, 514, top);
        putBE16(b, 516, left);
        putBE16(b, 518, bottom);
        putBE16(b, 520, right);
        return b;
    };
    w.add("lying-header", "pict-frame-32767-square", "pict", frame(0, 0, 32767, 32767));
    w.add("bomb", "pict-frame-11000-square", "pict", frame(0, 0, 11000, 11000));
    w.add("lying-header", "pict-frame-inverted", "pict", frame(100, 100, 0, 0));
    w.add("lying-header", "pict-frame-65535-wide", "pict", frame(0, 0x8000, 8, 0x7FFF));
    w.add("lying-header", "pict-frame-empty", "pict", frame(0, 0, 0, 0));
    // The pixel map's own bounds: the first bounds rectangle after a direct-bits or
    // pack-bits opcode.
    for (const char* op : {"\x00\x9A", "\x00\x98", "\x00\x99", "\x00\x9B"}) {
        const qsizetype at = pict.indexOf(QByteArray(op, 2), 512 + 10);
        if (at < 0)
            continue;
        // Opcode, base address (direct bits only), row bytes, then the bounds.
        const qsizetype bounds = at + 2 + (op[1] == '\x9A' || op[1] == '\x9B' ? 4 : 0) + 2;
        QByteArray big = pict;
        putBE16(big, bounds + 4, 30000);
        putBE16(big, bounds + 6, 30000);
        w.add("lying-header", "pict-pixmap-bounds-30000", "pict", big);
        QByteArray rows = pict;
        putBE16(rows, bounds - 2, 0xBFFF); // row bytes far past the width
        w.add("broken-structure", "pict-row-bytes-16k", "pict", rows);
        break;
    }
    const QByteArray head = pict.left(512 + 10) + QByteArray("\x00\x11\x02\xFF", 4);
    w.add("chunk-flood", "pict-100000-nops", "pict",
          head + QByteArray(200000, '\0') + QByteArray("\x00\xFF", 2));
    w.add("broken-structure", "pict-long-comment-past-end", "pict",
          head + QByteArray("\x00\xA1\x00\x01\xFF\xFF", 6) + randomBytes(100, 111));
    w.add("broken-structure", "pict-unknown-opcode-2gb", "pict",
          head + QByteArray("\x82\x00", 2) + be32(0x7FFFFFF0) + randomBytes(100, 112));
    w.add("broken-structure", "pict-version-1-garbage", "pict",
          pict.left(512 + 10) + QByteArray("\x11\x01", 2) + randomBytes(400, 113));
    w.add("broken-structure", "pict-region-4gb", "pict",
          head + QByteArray("\x00\x01\xFF\xFF", 4) + randomBytes(64, 114));
    w.add("broken-structure", "pict-random-opcodes", "pict", head + randomBytes(8000, 115));
}

// ---------------------------------------------------------------- MacPaint

void addMacPaintDamage(CorpusWriter& w) {
    const QByteArray good = macPaintFile(0x33);
    w.add("truncation", "mac-header-only", "mac", good.left(512));
    w.add("truncation", "mac-ten-rows", "mac", good.left(512 + 10 * 8));
    // Literal runs of 128 bytes cross the 72-byte rows; repeat runs of 128 too.
    w.add("broken-structure", "mac-literal-runs-past-row", "mac",
          good.left(512) + (QByteArray(1, '\x7F') + randomBytes(128, 121)).repeated(500));
    w.add("broken-structure", "mac-repeat-runs-past-row", "mac",
          good.left(512) + QByteArray("\x81\xAA", 2).repeated(800));
    w.add("broken-structure", "mac-all-no-op-runs", "mac",
          good.left(512) + QByteArray(100000, '\x80'));
    w.add("broken-structure", "mac-random-runs", "mac", good.left(512) + randomBytes(60000, 122));
    QByteArray version = good;
    putBE32(version, 0, 0xFFFFFFFF);
    w.add("lying-header", "mac-version-4g", "mac", version);
    // A MacBinary wrapper in front, with a data length that lies.
    QByteArray binary(128, '\0');
    binary[1] = 5;
    binary.replace(2, 5, "paint");
    binary.replace(65, 8, "PNTGMPNT");
    putBE32(binary, 83, 0x7FFFFFFF);
    w.add("lying-header", "mac-macbinary-length-2gb", "mac", binary + good);
    w.add("lying-header", "pntg-macbinary-length-2gb", "pntg", binary + good);
}

// ---------------------------------------------------------------- Netpbm

void addNetpbmDamage(CorpusWriter& w) {
    const QByteArray tiny = randomBytes(100, 131);
    const struct {
        const char* suffix;
        const char* damage;
        const char* label;
        QByteArray header;
    } files[] = {
        {"ppm", "bomb", "ppm-bomb-16000x16000", "P6\n16000 16000\n255\n"},
        {"ppm", "lying-header", "ppm-claims-100000x100000", "P6\n100000 100000\n255\n"},
        {"pgm", "lying-header", "pgm-claims-65535x65535-16-bit", "P5\n65535 65535\n65535\n"},
        {"ppm", "lying-header", "ppm-claims-0x0", "P6\n0 0\n255\n"},
        {"ppm", "lying-header", "ppm-claims-negative", "P6\n-8 -8\n255\n"},
        {"ppm", "lying-header", "ppm-claims-overflowing-digits",
         "P6\n99999999999999999999 8\n255\n"},
        {"ppm", "lying-header", "ppm-maxval-0", "P6\n8 8\n0\n"},
        {"ppm", "lying-header", "ppm-maxval-70000", "P6\n8 8\n70000\n"},
        {"pbm", "bomb", "pbm-bomb-2147483647x1", "P4\n2147483647 1\n"},
        {"pbm", "bomb", "pbm-bomb-60000x60000", "P4\n60000 60000\n"},
        {"pgm", "broken-structure", "pgm-ascii-huge-values", "P2\n4 4\n255\n99999999999 -5 x "},
        {"ppm", "broken-structure", "ppm-ascii-cut", "P3\n8 8\n255\n1 2 3 4"},
        {"pbm", "broken-structure", "pbm-ascii-digits-2", "P1\n8 8\n2 2 2 2 2 2 2 2 2"},
        {"pgm", "broken-structure", "pgm-header-not-numbers", "P5\nwide tall\ndeep\n"},
        {"ppm", "broken-structure", "ppm-magic-only", "P6"},
    };
    for (const auto& f : files)
        w.add(f.damage, f.label, f.suffix, f.header + tiny);
    w.add("chunk-flood", "pgm-comment-flood", "pgm",
          "P5\n" + QByteArray("# comment\n").repeated(30000) + "8 8\n255\n" + tiny);
    w.add("chunk-flood", "ppm-whitespace-flood", "ppm",
          "P6" + QByteArray(300000, ' ') + "8 8 255\n" + tiny);
    w.add("lying-header", "pam-claims-16000x16000", "pam",
          "P7\nWIDTH 16000\nHEIGHT 16000\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" +
              tiny);
    w.add("lying-header", "pam-depth-0", "pam",
          "P7\nWIDTH 8\nHEIGHT 8\nDEPTH 0\nMAXVAL 255\nENDHDR\n" + tiny);
}

// ---------------------------------------------------------------- XPM, XBM

void addXpmXbmDamage(CorpusWriter& w) {
    const QList<QByteArray> twoColours = {"a c #000000", "b c #FFFFFF"};
    auto add = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "xpm", bytes);
    };
    add("bomb", "xpm-bomb-16000x16000", xpm("16000 16000 2 1", twoColours, {"abab"}));
    add("lying-header", "xpm-claims-100000x100000", xpm("100000 100000 2 1", twoColours, {"ab"}));
    add("lying-header", "xpm-claims-0x0", xpm("0 0 2 1", twoColours, {}));
    add("lying-header", "xpm-claims-negative", xpm("-4 -4 2 1", twoColours, {"abab"}));
    add("palette", "xpm-100000-colours", xpm("4 1 100000 1", twoColours, {"abab"}));
    add("palette", "xpm-undefined-pixels", xpm("4 2 2 1", twoColours, {"zzzz", "yyyy"}));
    add("palette", "xpm-colours-missing", xpm("4 2 2 1", {}, {"abab", "baba"}));
    add("palette", "xpm-chars-per-pixel-0", xpm("4 2 2 0", twoColours, {"abab", "baba"}));
    add("palette", "xpm-chars-per-pixel-100", xpm("4 2 2 100", twoColours, {"abab", "baba"}));
    add("palette", "xpm-bad-colour-names",
        xpm("4 1 2 1", {"a c #GGGGGGGGGGGGGGGGGGGGG", "b c nosuchcolour"}, {"abab"}));
    add("broken-structure", "xpm-rows-short", xpm("64 4 2 1", twoColours, {"a", "b"}));
    QList<QByteArray> manyColours;
    for (int i = 0; i < 5000; ++i)
        manyColours << QByteArray::number(i).rightJustified(4, '0') + " c #123456";
    add("palette", "xpm-5000-colours-4-chars",
        xpm("4 1 5000 4", manyColours, {"0001000200030004"}));

    auto addXbm = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "xbm", bytes);
    };
    addXbm("bomb", "xbm-bomb-16000x16000", xbm("16000", "16000", "0x00, 0xFF,"));
    addXbm("lying-header", "xbm-claims-100000x100000", xbm("100000", "100000", "0x00,"));
    addXbm("lying-header", "xbm-claims-negative", xbm("-8", "-8", "0x00,"));
    addXbm("lying-header", "xbm-claims-0x0", xbm("0", "0", "0x00,"));
    addXbm("broken-structure", "xbm-hex-overflow", xbm("8", "2", "0xFFFFFFFFFFFF, 0x1G, zz,"));
    addXbm("broken-structure", "xbm-no-bits", "#define x_width 8\n#define x_height 8\n");
}

} // namespace HostileCorpus
