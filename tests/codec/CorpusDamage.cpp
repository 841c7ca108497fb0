// The corpus folder and its manifest, the damage every format gets (cuts, flips, zeroed
// blocks), files that are no images at all, and the order in which everything is made.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

#include "codec/ImageDecoder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace CorpusBytes;

// ---------------------------------------------------------------- the folder

CorpusWriter::CorpusWriter(const QString& folder) : folder(folder) {
    QDir().mkpath(folder);
}

QString CorpusWriter::nextPath(const QString& damage, const QString& label, const QString& suffix) {
    static const QRegularExpression unsafe("[^a-z0-9.-]+");
    QString clean = label.toLower();
    clean.replace(unsafe, "-");
    const QString name =
        QString("%1-%2.%3").arg(made.size() + 1, 4, 10, QChar('0')).arg(clean, suffix);
    made.append({name, damage});
    return folder + '/' + name;
}

void CorpusWriter::add(const QString& damage, const QString& label, const QString& suffix,
                       const QByteArray& bytes) {
    const QString path = nextPath(damage, label, suffix);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        problems << "cannot write " + path;
}

void CorpusWriter::addSymlink(const QString& damage, const QString& label, const QString& suffix,
                              const QString& target) {
    const QString path = nextPath(damage, label, suffix);
    // No target: the link names itself, a loop.
    const QString to = target.isEmpty() ? QFileInfo(path).fileName() : target;
    if (::symlink(QFile::encodeName(to).constData(), QFile::encodeName(path).constData()))
        problems << "cannot link " + path;
}

void CorpusWriter::addSparse(const QString& damage, const QString& label, const QString& suffix,
                             qint64 size, const QByteArray& head) {
    const QString path = nextPath(damage, label, suffix);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(head) != head.size() || !file.flush() ||
        ::ftruncate(file.handle(), size) != 0)
        problems << "cannot make sparse " + path;
}

void CorpusWriter::addFifo(const QString& damage, const QString& label, const QString& suffix) {
    const QString path = nextPath(damage, label, suffix);
    if (::mkfifo(QFile::encodeName(path).constData(), 0600))
        problems << "cannot make fifo " + path;
}

void CorpusWriter::addFolder(const QString& damage, const QString& label, const QString& suffix) {
    const QString path = nextPath(damage, label, suffix);
    if (!QDir().mkpath(path + "/inside.png"))
        problems << "cannot make folder " + path;
}

bool CorpusWriter::writeManifest(const QString& path) const {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    for (const CorpusEntry& e : made)
        file.write((e.name + '\t' + e.damage + '\n').toUtf8());
    return file.error() == QFileDevice::NoError;
}

namespace HostileCorpus {

// ---------------------------------------------------------------- generic damage

void addGenericDamage(CorpusWriter& w, const Seed& seed) {
    const QByteArray& b = seed.bytes;
    const qsizetype n = b.size();
    const qsizetype head = std::min(seed.headerEnd, n - 1);
    const quint32 base = crc32(seed.label.toUtf8()); // one fixed seed per seed file
    w.add("valid", seed.label, seed.suffix, b);

    QList<qsizetype> cuts;
    switch (seed.depth) {
    case Seed::Depth::Full:
        cuts = {1, 8, head - 1, head, head + 8, n / 4, n / 2, 3 * n / 4, n - 1};
        break;
    case Seed::Depth::Some:
        cuts = {head, n / 2, n - 1};
        break;
    case Seed::Depth::Few:
        cuts = {n / 2};
        break;
    }
    QSet<qsizetype> done;
    for (qsizetype cut : cuts) {
        if (cut < 1 || cut >= n || done.contains(cut))
            continue;
        done.insert(cut);
        w.add("truncation", QString("%1-cut-at-%2").arg(seed.label).arg(cut), seed.suffix,
              truncated(b, cut));
    }

    if (seed.depth == Seed::Depth::Full) {
        // One flip in the header, a few and many past the signature.
        w.add("bit-flip", seed.label + "-flip-1-header", seed.suffix,
              bitFlipped(b.left(head), 1, base + 1, 4) + b.mid(head));
        w.add("bit-flip", seed.label + "-flip-8", seed.suffix, bitFlipped(b, 8, base + 2, 4));
        w.add("bit-flip", seed.label + "-flip-64", seed.suffix, bitFlipped(b, 64, base + 3, 4));
        w.add("zeroed-block", seed.label + "-zero-header", seed.suffix,
              zeroed(b, 4, std::max<qsizetype>(head - 4, 4)));
        w.add("zeroed-block", seed.label + "-zero-middle", seed.suffix,
              zeroed(b, n / 2, std::max<qsizetype>(n / 8, 16)));
        // Random bytes after a valid header: a body that decodes into anything.
        w.add("random-body", seed.label + "-random-body", seed.suffix,
              b.left(head) + randomBytes(n - head, base + 4));
    } else {
        w.add("bit-flip", seed.label + "-flip-16", seed.suffix, bitFlipped(b, 16, base + 5, 4));
    }
}

// ---------------------------------------------------------------- not images

void addNotImages(CorpusWriter& w, const QStringList& suffixes) {
    const QByteArray text =
        QByteArray("Shopping list\n- bread\n- milk\n- 16000x16000 eggs\n").repeated(20);
    for (const QString& suffix : suffixes)
        w.add("plain-text", "text", suffix, text);
}

void addMismatches(CorpusWriter& w, const QList<Seed>& seeds) {
    auto bytesOf = [&](const QString& label) {
        for (const Seed& s : seeds)
            if (s.label == label)
                return s.bytes;
        return QByteArray();
    };
    const struct {
        const char* from;
        const char* as;
    } pairs[] = {{"png-rgb", "jpg"}, {"pdf", "png"},          {"jpg-baseline", "psd"},
                 {"gif", "tga"},     {"svg", "png"},          {"tif", "jpg"},
                 {"psd", "pdf"},     {"png-rgb", "svg"},      {"mac", "pict"},
                 {"pdf", "svg"},     {"bmp-rgb", "ico"},      {"jpg-baseline", "mac"},
                 {"png-rgb", "xcf"}, {"jpg-baseline", "pdf"}, {"sgi", "tga"},
                 {"pcx", "pbm"},     {"xpm", "xbm"},          {"svgz", "svg"},
                 {"webp", "gif"},    {"tga", "pict"},         {"pict", "mac"},
                 {"ico", "tif"},     {"xcf", "psd"},          {"tif", "pdf"}};
    for (const auto& p : pairs) {
        const QByteArray bytes = bytesOf(p.from);
        if (bytes.isEmpty())
            continue;
        w.add("suffix-mismatch", QString("%1-named-%2").arg(p.from, p.as), p.as, bytes);
    }
}

void addSpecialFiles(CorpusWriter& w) {
    for (const char* suffix : {"png", "jpg", "pdf", "tga", "mac"})
        w.addSymlink("special-file", "link-to-dev-zero", suffix, "/dev/zero");
    w.addSymlink("special-file", "link-to-dev-urandom", "svg", "/dev/urandom");
    w.addSymlink("special-file", "dangling-link", "png", "/nonexistent/picture.png");
    w.addSymlink("special-file", "link-to-itself", "gif", QString());
    w.addFifo("special-file", "fifo", "png");
    w.addFifo("special-file", "fifo", "tga");
    w.addFolder("special-file", "folder", "png");

    // Sparse giants: past the size of any picture the program takes, and just below it.
    const qint64 threeGB = qint64(3) << 30;
    const qint64 almostTwoGB = (qint64(2) << 30) - 4096;
    QByteArray psdHead("8BPS\0\x01\0\0\0\0\0\0\0\x03", 14);
    putBE32(psdHead, 14, 30000);
    putBE32(psdHead, 18, 30000);
    psdHead += QByteArray("\0\x08\0\x03", 4);
    w.addSparse("sparse-giant", "sparse-3gb", "psd", threeGB, psdHead);
    w.addSparse("sparse-giant", "sparse-3gb", "png", threeGB,
                pngFile(16000, 16000, 2, zlibStream(QByteArray(4096, '\0'))).chopped(12));
    QByteArray tgaHead(18, '\0');
    tgaHead[2] = 2; // uncompressed true colour
    putLE16(tgaHead, 12, 16000);
    putLE16(tgaHead, 14, 16000);
    tgaHead[16] = 24;
    w.addSparse("sparse-giant", "sparse-almost-2gb", "tga", almostTwoGB, tgaHead);
    w.addSparse("sparse-giant", "sparse-almost-2gb", "mac", almostTwoGB, QByteArray(4, '\0'));
    w.addSparse("sparse-giant", "sparse-almost-2gb", "pict", almostTwoGB, QByteArray(512, '\0'));
    w.addSparse("sparse-giant", "sparse-1gb", "svg", qint64(1) << 30,
                "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"10\" height=\"10\">");
    w.addSparse("sparse-giant", "sparse-1gb", "pdf", qint64(1) << 30, "%PDF-1.4\n");
}

// ---------------------------------------------------------------- everything, in order

bool generate(const QString& folder, const QString& manifest) {
    CorpusWriter w(folder);
    const QList<Seed> seeds = primarySeeds();
    auto seed = [&](const QString& label) {
        for (const Seed& s : seeds)
            if (s.label == label)
                return s;
        std::fprintf(stderr, "no seed %s\n", qPrintable(label));
        return Seed{};
    };

    QStringList covered;
    for (const Seed& s : seeds) {
        if (s.bytes.isEmpty()) {
            std::fprintf(stderr, "seed %s could not be made\n", qPrintable(s.label));
            continue;
        }
        addGenericDamage(w, s);
        if (!covered.contains(s.suffix))
            covered << s.suffix;
    }

    addPngDamage(w, seed("png-rgb"));
    addJpegDamage(w, seed("jpg-baseline"));
    addGifDamage(w);
    addBmpDamage(w);
    addTiffDamage(w);
    addWebpDamage(w, seed("webp"));
    addTgaDamage(w);
    addIcoDamage(w, seed("ico"));
    addPsdDamage(w);
    addSgiDamage(w);
    addPcxDamage(w);
    addXcfDamage(w);
    addPictDamage(w, seed("pict"));
    addMacPaintDamage(w);
    addNetpbmDamage(w);
    addXpmXbmDamage(w);
    addSvgDamage(w);
    addPdfDamage(w, seed("pdf"));

    const QStringList readable = ImageDecoder::readableSuffixes();
    for (const Seed& s : otherSeeds(readable, covered))
        addGenericDamage(w, s);
    addNotImages(w, readable);
    for (const QString& suffix : covered)
        w.add("empty-file", "empty", suffix, QByteArray());
    addMismatches(w, seeds);
    addSpecialFiles(w);

    for (const QString& problem : w.errors())
        std::fprintf(stderr, "%s\n", qPrintable(problem));
    if (!w.writeManifest(manifest)) {
        std::fprintf(stderr, "cannot write the manifest %s\n", qPrintable(manifest));
        return false;
    }
    std::printf("%d files\n", int(w.entries().size()));
    return w.errors().isEmpty();
}

} // namespace HostileCorpus
