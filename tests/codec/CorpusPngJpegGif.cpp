// Lying headers, bombs and broken structures of PNG, JPEG and GIF files.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

#include <QColorSpace>

using namespace CorpusBytes;

namespace {

// ---------------------------------------------------------------- GIF assembly

// Codes of `width` bits, least significant bit first, cut into sub-blocks of 255 bytes at most.
class LzwPacker {
public:
    void put(quint32 code, int width) {
        acc |= quint64(code) << bits;
        bits += width;
        while (bits >= 8) {
            data += char(acc & 0xFF);
            acc >>= 8;
            bits -= 8;
        }
    }
    QByteArray blocks() {
        if (bits > 0)
            data += char(acc & 0xFF);
        bits = 0;
        QByteArray out;
        for (qsizetype at = 0; at < data.size(); at += 255) {
            const QByteArray part = data.mid(at, 255);
            out += char(part.size());
            out += part;
        }
        return out + QByteArray(1, '\0');
    }

private:
    QByteArray data;
    quint64 acc = 0;
    int bits = 0;
};

// An LZW stream of the given pixel values that never grows its table: a clear code before the
// table would need a wider code. `end` false leaves out the end-of-information code.
QByteArray lzwPixels(const QByteArray& pixels, int minCode = 8, bool end = true) {
    const int width = minCode + 1;
    const quint32 clear = 1u << minCode;
    LzwPacker p;
    p.put(clear, width);
    int sinceClear = 0;
    for (char px : pixels) {
        if (sinceClear == int(clear) - 4) {
            p.put(clear, width);
            sinceClear = 0;
        }
        p.put(quint32(uchar(px)) & (clear - 1), width);
        ++sinceClear;
    }
    if (end)
        p.put(clear + 1, width);
    return p.blocks();
}

QByteArray gifPalette(int entries) {
    QByteArray pal;
    for (int i = 0; i < entries; ++i)
        pal += QByteArray(1, char(i * 37)) + char(i * 91) + char(255 - i * 13);
    return pal;
}

// A GIF with a global palette of 2^(paletteBits) entries (none when 0), one image of
// imgW x imgH at (left, top) and the given LZW data.
QByteArray gifFile(quint16 screenW, quint16 screenH, quint16 imgW, quint16 imgH, int paletteBits,
                   quint8 minCode, const QByteArray& lzw, quint16 left = 0, quint16 top = 0,
                   const QByteArray& beforeImage = {}) {
    QByteArray b("GIF89a");
    b += le16(screenW) + le16(screenH);
    b += char(paletteBits ? 0x80 | 0x70 | (paletteBits - 1) : 0x70);
    b += QByteArray(2, '\0');
    if (paletteBits)
        b += gifPalette(1 << paletteBits);
    b += beforeImage;
    b += ',';
    b += le16(left) + le16(top) + le16(imgW) + le16(imgH);
    b += '\0';
    b += char(minCode);
    b += lzw;
    b += ';';
    return b;
}

QByteArray ramp(int n) {
    QByteArray px(n, '\0');
    for (int i = 0; i < n; ++i)
        px[i] = char(i & 0xFF);
    return px;
}

// ---------------------------------------------------------------- JPEG helpers

QByteArray jpegSegment(quint8 marker, const QByteArray& body) {
    return QByteArray("\xFF", 1) + char(marker) + be16(quint16(body.size() + 2)) + body;
}

// The file with `extra` put right after its start-of-image marker.
QByteArray jpegInsert(const QByteArray& jpeg, const QByteArray& extra) {
    return jpeg.left(2) + extra + jpeg.mid(2);
}

QByteArray exifSegment(const QByteArray& tiff) {
    return jpegSegment(0xE1, QByteArray("Exif\0\0", 6) + tiff);
}

} // namespace

namespace HostileCorpus {

// ---------------------------------------------------------------- PNG

void addPngDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& png = seed.bytes;
    const struct {
        quint32 w, h;
        const char* label;
    } sizes[] = {{16000, 16000, "16000x16000"},       {65535, 65535, "65535x65535"},
                 {100000, 100000, "100000x100000"},   {0, 0, "0x0"},
                 {0x80000000u, 64, "negative-width"}, {64, 0xFFFFFFF0u, "negative-height"},
                 {1, 0x7FFFFFFF, "1x2147483647"},     {300000000, 1, "300000000x1"}};
    for (const auto& s : sizes)
        w.add("lying-header", QString("png-claims-%1").arg(s.label), "png",
              pngWithSize(png, s.w, s.h));
    QByteArray badCrc = pngWithSize(png, 16000, 16000);
    putBE32(badCrc, 29, 0xDEADBEEF);
    w.add("lying-header", "png-16000x16000-bad-crc", "png", badCrc);

    // Bombs: a header of hundreds of megapixels over a few kilobytes of deflated zeros.
    const QByteArray zeros8M = zlibStream(QByteArray(8 << 20, '\0'));
    w.add("bomb", "png-bomb-16000x16000-rgb", "png", pngFile(16000, 16000, 2, zeros8M));
    w.add("bomb", "png-bomb-30000x10000-rgba", "png", pngFile(30000, 10000, 6, zeros8M));
    w.add("bomb", "png-bomb-10000x10000-rgb", "png", pngFile(10000, 10000, 2, zeros8M));
    w.add("bomb", "png-bomb-65535x65535", "png", pngFile(65535, 65535, 2, zeros8M));
    // A whole 8000 x 8000 picture of zeros in about 190 kilobytes.
    w.add("bomb", "png-bomb-8000x8000-complete", "png",
          pngFile(8000, 8000, 0, zlibStream(QByteArray(8000 * 8001, '\0'))));
    // Text that inflates to 64 MB.
    w.add(
        "bomb", "png-ztxt-64mb", "png",
        png.left(33) +
            pngChunk("zTXt", QByteArray("Comment\0\0", 9) + zlibStream(QByteArray(64 << 20, ' '))) +
            png.mid(33));

    // Palettes: too short for the pixels, absent, enormous, on a picture that has none.
    QByteArray indices(32 * (1 + 32), '\xFF'); // every pixel index 255, filter byte 255 too
    for (int row = 0; row < 32; ++row)
        indices[row * 33] = '\0';
    const QByteArray plte2 = pngChunk("PLTE", QByteArray("\0\0\0\xFF\xFF\xFF", 6));
    w.add("palette", "png-index-out-of-range", "png",
          pngFile(32, 32, 3, zlibStream(indices), plte2));
    w.add("palette", "png-indexed-without-palette", "png", pngFile(32, 32, 3, zlibStream(indices)));
    QByteArray hugePlte = be32(0x7FFFFFF0) + "PLTE" + QByteArray(64, '\x10');
    w.add("palette", "png-palette-length-2gb", "png",
          pngFile(32, 32, 3, zlibStream(indices), hugePlte));
    w.add("palette", "png-palette-1000-entries", "png",
          pngFile(32, 32, 3, zlibStream(indices), pngChunk("PLTE", QByteArray(3000, '\x40'))));
    w.add(
        "palette", "png-trns-longer-than-palette", "png",
        pngFile(32, 32, 3, zlibStream(indices), plte2 + pngChunk("tRNS", QByteArray(300, '\x80'))));

    // Broken structure.
    QByteArray badDepth = png;
    badDepth[24] = 3; // bit depth 3
    putBE32(badDepth, 29, crc32(badDepth.mid(12, 17)));
    w.add("broken-structure", "png-bit-depth-3", "png", badDepth);
    QByteArray badColour = png;
    badColour[25] = 7;
    putBE32(badColour, 29, crc32(badColour.mid(12, 17)));
    w.add("broken-structure", "png-colour-type-7", "png", badColour);
    w.add("broken-structure", "png-bad-zlib-header", "png",
          pngFile(64, 48, 2, QByteArray("\x78\xFF", 2) + randomBytes(500, 11)));
    w.add("broken-structure", "png-no-iend", "png", png.left(png.lastIndexOf("IEND") - 4));
    w.add("broken-structure", "png-chunk-length-4gb", "png",
          png.left(33) + be32(0xFFFFFFFF) + "tEXt" + QByteArray(32, 'x'));
    QByteArray texts;
    for (int i = 0; i < 20000; ++i)
        texts += pngChunk("tEXt", QByteArray("k\0v", 3));
    w.add("chunk-flood", "png-20000-text-chunks", "png", png.left(33) + texts + png.mid(33));
    // The picture data cut into one-byte IDAT chunks.
    const QByteArray idat = zlibStream(QByteArray(48 * (1 + 64 * 3), '\x20'));
    QByteArray tiny;
    for (char c : idat)
        tiny += pngChunk("IDAT", QByteArray(1, c));
    QByteArray ihdr(13, '\0');
    putBE32(ihdr, 0, 64);
    putBE32(ihdr, 4, 48);
    ihdr[8] = 8;
    ihdr[9] = 2;
    w.add("chunk-flood", "png-one-byte-idat-chunks", "png",
          QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", ihdr) + tiny +
              pngChunk("IEND", {}));
    w.add("broken-structure", "png-icc-garbage", "png",
          png.left(33) +
              pngChunk("iCCP", QByteArray("p\0\0", 3) + zlibStream(randomBytes(4000, 12))) +
              png.mid(33));
}

// ---------------------------------------------------------------- JPEG

void addJpegDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& jpeg = seed.bytes;
    // The classic: a few hundred bytes whose frame claims 16000 x 16000.
    w.add("bomb", "jpg-bomb-16000x16000", "jpg", jpegWithSize(jpeg, 16000, 16000));
    w.add("bomb", "jpg-bomb-12000x12000", "jpg", jpegWithSize(jpeg, 12000, 12000));
    w.add("lying-header", "jpg-claims-65535x65535", "jpg", jpegWithSize(jpeg, 65535, 65535));
    w.add("lying-header", "jpg-claims-0x0", "jpg", jpegWithSize(jpeg, 0, 0));
    w.add("lying-header", "jpg-claims-65535x1", "jpg", jpegWithSize(jpeg, 65535, 1));
    w.add("lying-header", "jpg-claims-1x65535", "jpg", jpegWithSize(jpeg, 1, 65535));
    w.add("lying-header", "jpg-claims-64x0", "jpg", jpegWithSize(jpeg, 64, 0));

    // Marker floods before the frame.
    w.add("marker-flood", "jpg-50000-com-segments", "jpg",
          jpegInsert(jpeg, jpegSegment(0xFE, {}).repeated(50000)));
    w.add("marker-flood", "jpg-50000-app15-segments", "jpg",
          jpegInsert(jpeg, jpegSegment(0xEF, "x").repeated(50000)));
    w.add("marker-flood", "jpg-300k-fill-bytes", "jpg",
          jpegInsert(jpeg, QByteArray(300000, '\xFF') + jpegSegment(0xFE, "after fill")));
    // A DQT table repeated thousands of times: every copy is parsed.
    const qsizetype dqt = jpeg.indexOf("\xFF\xDB");
    if (dqt > 0) {
        const QByteArray table = jpeg.mid(dqt, 2 + getBE16(jpeg, dqt + 2));
        w.add("marker-flood", "jpg-20000-quant-tables", "jpg",
              jpegInsert(jpeg, table.repeated(20000)));
    }

    // EXIF that loops, claims more entries than there are bytes, or points outside.
    QByteArray loop("II*\0\x08\0\0\0", 8);
    loop += le16(1) + le16(0x0112) + le16(3) + le32(1) + le16(6) + le16(0);
    loop += le32(8); // the next directory is this one
    w.add("broken-metadata", "jpg-exif-ifd-loop", "jpg", jpegInsert(jpeg, exifSegment(loop)));
    QByteArray many("II*\0\x08\0\0\0", 8);
    many += le16(0xFFFF) + QByteArray(120, '\x01');
    w.add("broken-metadata", "jpg-exif-65535-entries", "jpg", jpegInsert(jpeg, exifSegment(many)));
    QByteArray outside("MM\0*\x7F\xFF\xFF\xF0", 8);
    w.add("broken-metadata", "jpg-exif-ifd-past-end", "jpg",
          jpegInsert(jpeg, exifSegment(outside)));
    QByteArray bigCount("II*\0\x08\0\0\0", 8);
    bigCount += le16(1) + le16(0x010F) + le16(2) + le32(0x7FFFFFFF) + le32(26) + le32(0);
    w.add("broken-metadata", "jpg-exif-string-2gb", "jpg", jpegInsert(jpeg, exifSegment(bigCount)));
    // An ICC profile split over chunks that do not add up, and one of random bytes.
    const QByteArray icc("ICC_PROFILE\0", 12);
    w.add("broken-metadata", "jpg-icc-chunk-3-of-2", "jpg",
          jpegInsert(jpeg, jpegSegment(0xE2, icc + "\x03\x02" + randomBytes(200, 21))));
    QByteArray iccHeader = randomBytes(60000, 22);
    putBE32(iccHeader, 0, 60000);
    putBE32(iccHeader, 128, 0xFFFFFFFF); // tag count
    w.add("broken-metadata", "jpg-icc-random", "jpg",
          jpegInsert(jpeg, jpegSegment(0xE2, icc + "\x01\x01" + iccHeader)));
    // An XMP packet that is no XML, and Photoshop resources whose IPTC block claims 2 GB: the
    // conversions copy metadata into their outputs and must survive both.
    w.add("broken-metadata", "jpg-xmp-not-xml", "jpg",
          jpegInsert(jpeg, jpegSegment(0xE1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) +
                                                 "<x:xmpmeta><rdf:RDF <<&&" + randomBytes(3000, 23))));
    QByteArray resources("Photoshop 3.0\0" "8BIM\x04\x04\0\0", 22);
    resources += QByteArray("\x7F\xFF\xFF\xF0", 4) + QByteArray("\x1C\x02\x19\xFF\xFF", 5);
    w.add("broken-metadata", "jpg-iptc-claims-2gb", "jpg",
          jpegInsert(jpeg, jpegSegment(0xED, resources)));
    // A profile that claims to describe CMYK pixels in front of an RGB picture.
    QByteArray cmyk = QColorSpace(QColorSpace::SRgb).iccProfile();
    if (cmyk.size() > 20)
        cmyk.replace(16, 4, "CMYK");
    w.add("broken-metadata", "jpg-icc-cmyk-on-rgb", "jpg",
          jpegInsert(jpeg, jpegSegment(0xE2, icc + "\x01\x01" + cmyk)));

    // Frame and table damage.
    const qsizetype sof = jpegSofOffset(jpeg);
    if (sof > 0) {
        QByteArray comps = jpeg;
        comps[sof + 9] = char(255); // component count
        w.add("broken-structure", "jpg-255-components", "jpg", comps);
        QByteArray sampling = jpeg;
        sampling[sof + 11] = char(0x00); // sampling factors of the first component
        w.add("broken-structure", "jpg-sampling-0", "jpg", sampling);
        QByteArray precision = jpeg;
        precision[sof + 4] = char(16); // 16-bit samples in a baseline frame
        w.add("broken-structure", "jpg-precision-16", "jpg", precision);
    }
    const qsizetype dht = jpeg.indexOf("\xFF\xC4");
    if (dht > 0) {
        QByteArray counts = jpeg;
        for (int i = 0; i < 16; ++i)
            counts[dht + 5 + i] = char(0xFF); // 4080 codes in one table
        w.add("broken-structure", "jpg-huffman-counts-overflow", "jpg", counts);
    }
    w.add("broken-structure", "jpg-no-eoi-random-scan", "jpg",
          jpeg.left(seed.headerEnd) + randomBytes(20000, 23));
    w.add("broken-structure", "jpg-two-frames", "jpg", jpeg.left(seed.headerEnd) + jpeg.mid(2));
}

// ---------------------------------------------------------------- GIF

void addGifDamage(CorpusWriter& w) {
    const QByteArray small = lzwPixels(ramp(64));
    w.add("valid", "gif-hand-made-8x8", "gif", gifFile(8, 8, 8, 8, 8, 8, small));
    w.add("bomb", "gif-bomb-65535x65535", "gif",
          gifFile(65535, 65535, 65535, 65535, 8, 8, lzwPixels(ramp(200))));
    w.add("bomb", "gif-bomb-16000x16000", "gif",
          gifFile(16000, 16000, 16000, 16000, 8, 8, lzwPixels(ramp(200))));
    w.add("bomb", "gif-bomb-10000x10000-no-end", "gif",
          gifFile(10000, 10000, 10000, 10000, 8, 8, lzwPixels(ramp(5000), 8, false)));
    w.add("lying-header", "gif-screen-0x0", "gif", gifFile(0, 0, 8, 8, 8, 8, small));
    w.add("lying-header", "gif-image-0x0", "gif", gifFile(8, 8, 0, 0, 8, 8, small));
    w.add("lying-header", "gif-image-outside-screen", "gif",
          gifFile(10, 10, 8, 8, 8, 8, small, 65000, 65000));
    w.add("lying-header", "gif-image-larger-than-screen", "gif",
          gifFile(4, 4, 65535, 2, 8, 8, small));
    // Indices far past a palette of two colours, and no palette at all.
    w.add("palette", "gif-index-out-of-range", "gif",
          gifFile(16, 16, 16, 16, 1, 8, lzwPixels(ramp(256))));
    w.add("palette", "gif-no-palette", "gif", gifFile(16, 16, 16, 16, 0, 8, lzwPixels(ramp(256))));
    QByteArray cutPalette = gifFile(8, 8, 8, 8, 8, 8, small);
    w.add("palette", "gif-palette-cut", "gif", cutPalette.left(13 + 100));
    // LZW streams that no encoder makes.
    w.add("broken-structure", "gif-min-code-12", "gif", gifFile(8, 8, 8, 8, 8, 12, small));
    w.add("broken-structure", "gif-min-code-0", "gif", gifFile(8, 8, 8, 8, 8, 0, small));
    LzwPacker undefined;
    undefined.put(256, 9);
    for (int i = 0; i < 100; ++i)
        undefined.put(511 - i, 9); // codes the table never defined
    w.add("broken-structure", "gif-undefined-codes", "gif",
          gifFile(8, 8, 8, 8, 8, 8, undefined.blocks()));
    w.add("broken-structure", "gif-random-lzw", "gif",
          gifFile(64, 64, 64, 64, 8, 8, QByteArray("\xFF", 1) + randomBytes(255, 31) + '\0'));
    w.add("broken-structure", "gif-sub-block-past-end", "gif",
          gifFile(8, 8, 8, 8, 8, 8, QByteArray("\xFF\x01\x02", 3)).chopped(1));
    // Thousands of frames and of extension blocks.
    QByteArray frames = gifFile(4, 4, 4, 4, 1, 2, lzwPixels(QByteArray(16, '\1'), 2));
    const qsizetype imageAt = 13 + 6;
    const QByteArray frame = frames.mid(imageAt, frames.size() - imageAt - 1);
    w.add("chunk-flood", "gif-10000-frames", "gif",
          frames.left(imageAt) + frame.repeated(10000) + ';');
    const QByteArray comment = QByteArray("\x21\xFE\x03", 3) + "abc" + QByteArray(1, '\0');
    w.add("chunk-flood", "gif-30000-comments", "gif",
          gifFile(8, 8, 8, 8, 8, 8, small, 0, 0, comment.repeated(30000)));
    const QByteArray badLoop("\x21\xFF\x0bNETSCAPE2.0\x7F\x01\xFF\xFF\0", 19);
    w.add("broken-structure", "gif-bad-loop-extension", "gif",
          gifFile(8, 8, 8, 8, 8, 8, small, 0, 0, badLoop));
}

} // namespace HostileCorpus
