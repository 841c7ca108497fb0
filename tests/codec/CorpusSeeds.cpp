// The valid files the corpus damages: written by Qt's writers, by Magick++, by QPdfWriter, or
// assembled here for the formats no library on the machine writes (XCF, MacPaint).

#include "CorpusBytes.h"
#include "HostileCorpus.h"

#include "codec/FormatRegistry.h"
#include "codec/MagickSupport.h"
#include "codec/RasterWriters.h"

#include "DngWriter.h"

#include <Magick++.h>

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QFile>

#include <cstdio>

using namespace CorpusBytes;

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;

// A gradient with a disc and a stroke: something for every encoder to work on, opaque or with
// a transparent corner.
QImage testPicture(bool alpha = false) {
    QImage image(kWidth, kHeight, QImage::Format_ARGB32);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            image.setPixel(x, y, qRgba(x * 4, y * 5, (x + y) * 2, 255));
    QPainter painter(&image);
    painter.setBrush(Qt::yellow);
    painter.drawEllipse(QPoint(40, 20), 12, 10);
    painter.setPen(QPen(Qt::darkRed, 3));
    painter.drawLine(0, kHeight - 1, kWidth - 1, 0);
    if (alpha) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(0, 0, 16, 12, Qt::transparent);
    }
    painter.end();
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    return alpha ? image : image.convertToFormat(QImage::Format_RGB32);
}

QByteArray qtBytes(const QImage& image, const char* format, int quality = -1, int compression = -1,
                   bool progressive = false) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (quality >= 0)
        writer.setQuality(quality);
    if (compression >= 0)
        writer.setCompression(compression);
    writer.setProgressiveScanWrite(progressive);
    if (!writer.write(image)) {
        std::fprintf(stderr, "Qt cannot write %s: %s\n", format, qPrintable(writer.errorString()));
        return {};
    }
    return bytes;
}

QByteArray magickBytes(const QImage& picture, const std::string& coder,
                       Magick::CompressionType compression = Magick::UndefinedCompression) {
    ensureMagickInitialised();
    const QImage argb = picture.convertToFormat(QImage::Format_ARGB32);
    try {
        Magick::Image image(size_t(argb.width()), size_t(argb.height()), "BGRA", Magick::CharPixel,
                            argb.constBits());
        image.quiet(true);
        image.magick(coder);
        image.depth(8);
        if (compression != Magick::UndefinedCompression)
            image.compressType(compression);
        Magick::Blob blob;
        image.write(&blob);
        return QByteArray(static_cast<const char*>(blob.data()), qsizetype(blob.length()));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Magick cannot write %s: %s\n", coder.c_str(), e.what());
        return {};
    }
}

bool magickWrites(const std::string& coder) {
    ensureMagickInitialised();
    try {
        const Magick::CoderInfo info(coder);
        return info.isWritable() &&
               MagickCore::IsRightsAuthorized(MagickCore::CoderPolicyDomain,
                                              MagickCore::WritePolicyRights, coder.c_str());
    } catch (const std::exception&) {
        return false;
    }
}

// QPdfWriter stamps the time and a random document id into the file; both are replaced by
// fixed text of the same length so that the cross-reference offsets stay right.
QByteArray pdfBytes() {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(QSizeF(144, 108), QPageSize::Point));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        writer.setResolution(72);
        QPainter painter(&writer);
        painter.fillRect(QRectF(0, 0, 72, 108), Qt::red);
        painter.drawImage(QRectF(72, 0, 72, 54), testPicture());
        painter.drawText(QPointF(80, 90), "page");
    }
    static const QRegularExpression date("D:\\d{14}[^)]*");
    static const QRegularExpression id("<[0-9a-fA-F]{16,}>");
    QString text = QString::fromLatin1(bytes);
    for (QRegularExpressionMatchIterator it = date.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        text.replace(m.capturedStart(), m.capturedLength(), QString(m.capturedLength(), '0'));
    }
    for (QRegularExpressionMatchIterator it = id.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        text.replace(m.capturedStart() + 1, m.capturedLength() - 2,
                     QString(m.capturedLength() - 2, 'A'));
    }
    return text.toLatin1();
}

QByteArray svgBytes() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"64\" height=\"48\" "
           "viewBox=\"0 0 64 48\">\n"
           "  <defs><linearGradient id=\"g\"><stop offset=\"0\" stop-color=\"#f00\"/>"
           "<stop offset=\"1\" stop-color=\"#00f\"/></linearGradient></defs>\n"
           "  <rect width=\"64\" height=\"48\" fill=\"url(#g)\"/>\n"
           "  <circle cx=\"40\" cy=\"20\" r=\"10\" fill=\"yellow\" stroke=\"black\"/>\n"
           "  <path d=\"M0 47 L63 0\" stroke=\"darkred\" stroke-width=\"3\"/>\n"
           "  <text x=\"4\" y=\"44\" font-size=\"8\">svg</text>\n"
           "</svg>\n";
}

// Some writers stamp the time of writing into their files; the stamps are replaced by fixed
// values so that the corpus is the same on every run.
QByteArray withoutClock(const QString& suffix, QByteArray bytes) {
    if (suffix == "pdb" && bytes.size() > 44) {
        bytes.replace(36, 8, QByteArray(8, '\0')); // creation and modification times
    } else if (suffix == "mng" || suffix == "jng") {
        const qsizetype at = bytes.indexOf("tIME");
        if (at >= 4)
            bytes.remove(at - 4, 4 + 4 + qsizetype(getBE32(bytes, at - 4)) + 4);
    } else if (suffix == "dpx" || suffix == "cin") {
        static const QRegularExpression stamp("\\d{4}[:-]\\d\\d[:-]\\d\\d|\\d\\d:\\d\\d:\\d\\d");
        const QString text = QString::fromLatin1(bytes);
        for (QRegularExpressionMatchIterator it = stamp.globalMatch(text); it.hasNext();) {
            const QRegularExpressionMatch m = it.next();
            for (qsizetype i = m.capturedStart(); i < m.capturedEnd(); ++i)
                if (bytes[i] >= '0' && bytes[i] <= '9')
                    bytes[i] = '1';
        }
    }
    return bytes;
}

// Where the header of a Netpbm file ends: after the magic number and `fields` numbers.
qsizetype netpbmHeaderEnd(const QByteArray& b, int fields) {
    qsizetype at = 2;
    for (int i = 0; i < fields; ++i) {
        while (at < b.size() && QChar(b[at]).isSpace())
            ++at;
        while (at < b.size() && !QChar(b[at]).isSpace())
            ++at;
    }
    return at + 1;
}

qsizetype jpegScanStart(const QByteArray& jpeg) {
    const qsizetype sos = jpeg.indexOf("\xFF\xDA");
    return sos < 0 ? 20 : sos + 2 + getBE16(jpeg, sos + 2);
}

} // namespace

namespace {

// A file written by the program's own writer of a modern format, read back as bytes; empty
// when the machine has no encoder for it.
QByteArray modernBytes(const QImage& image, const char (&code)[5]) {
    QTemporaryDir dir;
    const QString path = dir.filePath("seed");
    if (writeRaster(image, path, fourCharCode(code), 72.0f) != 0)
        return {};
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A camera RAW file: a DNG with the picture as its colour filter array.
QByteArray dngBytes(const QImage& image) {
    QTemporaryDir dir;
    const QString path = dir.filePath("seed.dng");
    if (!DngWriter::write(path, {image.copy(0, 0, image.width() & ~1, image.height() & ~1), 6, {}}))
        return {};
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

namespace HostileCorpus {

QByteArray xcfFile(quint32 w, quint32 h, quint32 layerW, quint32 layerH, quint32 bpp) {
    // Version 0: header, image properties, one layer pointer, no channel, then the layer, its
    // hierarchy, its level and the tiles (64 x 64, run-length coded one channel after the
    // other).
    QByteArray b("gimp xcf file\0", 14);
    b += be32(w) + be32(h) + be32(0);           // RGB image
    b += be32(17) + be32(1) + QByteArray(1, 1); // compression: run-length
    b += be32(0) + be32(0);                     // end of properties
    const qsizetype layerPointer = b.size();
    b += be32(0) + be32(0); // the layer pointer (filled below), end of layers
    b += be32(0);           // end of channels
    putBE32(b, layerPointer, quint32(b.size()));
    b += be32(layerW) + be32(layerH) + be32(bpp == 4 ? 1 : 0); // RGB or RGBA layer
    b += be32(6) + QByteArray("layer\0", 6);
    b += be32(8) + be32(4) + be32(1); // visible
    b += be32(0) + be32(0);           // end of properties
    b += be32(quint32(b.size()) + 8); // the hierarchy follows
    b += be32(0);                     // no mask
    b += be32(layerW) + be32(layerH) + be32(bpp);
    b += be32(quint32(b.size()) + 8) + be32(0); // one level
    b += be32(layerW) + be32(layerH);
    // A giant layer keeps only its first tiles: the rest of it is a lie.
    const quint64 tilesX = (quint64(layerW) + 63) / 64;
    const quint64 tilesY = (quint64(layerH) + 63) / 64;
    const quint64 tiles = std::min<quint64>(tilesX * tilesY, 30000);
    const qsizetype firstPointer = b.size();
    b += QByteArray(4 * qsizetype(tiles) + 4, '\0');
    for (quint64 t = 0; t < tiles && b.size() < 250'000; ++t) {
        putBE32(b, firstPointer + 4 * qsizetype(t), quint32(b.size()));
        const quint64 tw = std::min<quint64>(64, layerW - (t % tilesX) * 64);
        const quint64 th = std::min<quint64>(64, layerH - (t / tilesX) * 64);
        for (quint32 channel = 0; channel < bpp; ++channel) {
            const char value = char((channel * 60 + t * 13) & 0xFF);
            for (quint64 left = tw * th; left > 0;) {
                const quint64 run = std::min<quint64>(127, left);
                b += char(run - 1); // the next byte, run times
                b += value;
                left -= run;
            }
        }
    }
    return b;
}

QByteArray macPaintFile(quint8 fill) {
    // 512 bytes of header (version, 38 patterns, padding), then 720 rows of 72 bytes, each
    // packed as runs: a stripe pattern of four runs of 18 bytes a row.
    QByteArray b(512, '\0');
    b[3] = 2;
    for (int row = 0; row < 720; ++row) {
        for (int run = 0; run < 4; ++run) {
            b += char(uchar(257 - 18)); // repeat the next byte 18 times
            b += char(((row / 8 + run) % 2) ? fill : ~fill);
        }
    }
    return b;
}

QList<Seed> primarySeeds() {
    const QImage rgb = testPicture();
    const QImage rgba = testPicture(true);
    const QImage indexed = rgb.convertToFormat(QImage::Format_Indexed8, Qt::ThresholdDither);

    QList<Seed> seeds;
    auto add = [&](const QString& suffix, const QString& label, const QByteArray& bytes,
                   qsizetype headerEnd, bool full = true) {
        seeds.append(
            {suffix, label, bytes, headerEnd, full ? Seed::Depth::Full : Seed::Depth::Some});
    };
    add("png", "png-rgb", qtBytes(rgb, "png"), 33);
    add("png", "png-rgba", qtBytes(rgba, "png"), 33, false);
    add("png", "png-indexed", qtBytes(indexed, "png"), 33, false);
    const QByteArray jpeg = qtBytes(rgb, "jpeg", 75);
    add("jpg", "jpg-baseline", jpeg, jpegScanStart(jpeg));
    const QByteArray progressive = qtBytes(rgb, "jpeg", 75, -1, true);
    add("jpg", "jpg-progressive", progressive, jpegScanStart(progressive), false);
    add("gif", "gif", magickBytes(rgba, "GIF"), 13 + 3 * 256 + 10);
    add("bmp", "bmp-rgb", qtBytes(rgb, "bmp"), 54);
    add("bmp", "bmp-indexed", qtBytes(indexed, "bmp"), 54 + 4 * 256, false);
    add("tif", "tif", qtBytes(rgb, "tiff", -1, 0), 8);
    add("tif", "tif-lzw", qtBytes(rgba, "tiff", -1, 1), 8, false);
    add("tiff", "tiff-hand-made", tiffFile(tiffBasicFields(8, 8, 3, 192), randomBytes(192, 7)), 8,
        false);
    add("webp", "webp", qtBytes(rgb, "webp", 80), 30);
    add("webp", "webp-lossless", qtBytes(rgba, "webp", 100), 30, false);
    add("tga", "tga", magickBytes(rgb, "TGA"), 18);
    add("tga", "tga-rle", magickBytes(rgba, "TGA", Magick::RLECompression), 18, false);
    add("ico", "ico", qtBytes(rgba, "ico"), 22);
    add("psd", "psd", magickBytes(rgba, "PSD"), 26 + 12);
    add("sgi", "sgi", magickBytes(rgb, "SGI"), 512);
    add("sgi", "sgi-rle", magickBytes(rgba, "SGI", Magick::RLECompression), 512, false);
    add("pcx", "pcx", magickBytes(rgb, "PCX"), 128);
    add("xcf", "xcf", xcfFile(64, 48, 64, 48, 3), 26);
    add("pict", "pict", magickBytes(rgb, "PICT"), 512 + 10 + 30);
    add("mac", "mac", macPaintFile(0x55), 512);
    add("pntg", "pntg", macPaintFile(0x0F), 512, false);
    const QByteArray pbm = qtBytes(rgb, "pbm");
    add("pbm", "pbm", pbm, netpbmHeaderEnd(pbm, 2));
    const QByteArray pgm = qtBytes(rgb, "pgm");
    add("pgm", "pgm", pgm, netpbmHeaderEnd(pgm, 3));
    const QByteArray ppm = qtBytes(rgb, "ppm");
    add("ppm", "ppm", ppm, netpbmHeaderEnd(ppm, 3));
    const QByteArray xpm = qtBytes(indexed, "xpm");
    add("xpm", "xpm", xpm, xpm.indexOf("\",\n") + 3);
    const QByteArray xbm = qtBytes(rgb, "xbm");
    add("xbm", "xbm", xbm, xbm.indexOf('{') + 1);
    const QByteArray svg = svgBytes();
    add("svg", "svg", svg, svg.indexOf('>', svg.indexOf("<svg")) + 1);
    add("svgz", "svgz", gzipStream(svg), 10);
    add("pdf", "pdf", pdfBytes(), 15);
    // The formats with readers of their own: HEIF boxes end their header near 300 bytes, a JPEG
    // XL code stream's near 16, a DNG's first directory at 8.
    for (const auto& [suffix, bytes] :
         {std::pair<QString, QByteArray>{"avif", modernBytes(rgba, "AVIF")},
          {"heic", modernBytes(rgb, "HEIC")},
          {"jxl", modernBytes(rgba, "JXL ")}})
        if (!bytes.isEmpty())
            add(suffix, suffix, bytes, std::min<qsizetype>(300, bytes.size() / 2), false);
    const QByteArray dng = dngBytes(rgb);
    add("dng", "dng", dng, 8);
    add("nef", "nef-dng", dng, 8, false);
    return seeds;
}

// The bytes the program's own writer makes of the picture, for the formats only it writes
// (QuickTime image, FLC); empty when the suffix has no such writer.
QByteArray ownWriterBytes(const QImage& picture, const QString& suffix) {
    const FormatRow* row = nullptr;
    for (const FormatRow& candidate : FormatRegistry::kRows)
        if (candidate.encoder == Encoder::Legacy &&
            QString::fromLatin1(candidate.suffixes).split(' ').contains(suffix))
            row = &candidate;
    if (!row || !rasterWriterExists(row->subtype))
        return {};
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("seed"));
    if (writeRaster(picture, path, row->subtype, 72) != 0)
        return {};
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<Seed> otherSeeds(const QStringList& readableSuffixes, const QStringList& covered) {
    const QImage rgb = testPicture();
    const QList<QByteArray> qtFormats = QImageWriter::supportedImageFormats();
    QList<Seed> seeds;
    for (const QString& suffix : readableSuffixes) {
        if (covered.contains(suffix))
            continue;
        QByteArray bytes;
        if (qtFormats.contains(suffix.toLatin1())) {
            bytes = qtBytes(rgb, suffix.toLatin1().constData());
        } else if (const QByteArray own = ownWriterBytes(rgb, suffix); !own.isEmpty()) {
            bytes = own;
        } else {
            QByteArray coder = FormatRegistry::magickCoderForSuffix(suffix);
            if (coder.isEmpty())
                coder = suffix.toUpper().toLatin1();
            if (magickWrites(coder.toStdString()))
                bytes = magickBytes(rgb, coder.toStdString());
        }
        bytes = withoutClock(suffix, bytes);
        // Formats no writer here makes still get their text and mismatch files; a writer
        // that makes megabytes of a small picture (fixed-size formats) is left out.
        if (bytes.isEmpty() || bytes.size() > 512 * 1024)
            continue;
        seeds.append({suffix, suffix, bytes, 16, Seed::Depth::Few});
    }
    return seeds;
}

} // namespace HostileCorpus
