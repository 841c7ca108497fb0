#pragma once

// The hostile corpus: damaged, lying and malicious image files of every format the program
// reads, made from valid files written here by real encoders (or assembled by hand where no
// encoder exists), then cut, flipped, zeroed and rewritten. Every file is made the same way on
// every run; only the sparse giants are large, and they cost no disk.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// One file of the corpus: its name in the corpus folder and the kind of damage it carries.
struct CorpusEntry {
    QString name;
    QString damage;
};

// Writes the files into one folder, numbering them in the order they are made.
class CorpusWriter {
public:
    explicit CorpusWriter(const QString& folder);

    // `label` tells the file apart within its class; the name becomes "NNNN-label.suffix".
    void add(const QString& damage, const QString& label, const QString& suffix,
             const QByteArray& bytes);
    // An empty target makes a link to itself.
    void addSymlink(const QString& damage, const QString& label, const QString& suffix,
                    const QString& target);
    // A file of `size` bytes holding `head` and then a hole: no disk is spent on the rest.
    void addSparse(const QString& damage, const QString& label, const QString& suffix, qint64 size,
                   const QByteArray& head);
    void addFifo(const QString& damage, const QString& label, const QString& suffix);
    void addFolder(const QString& damage, const QString& label, const QString& suffix);

    const QList<CorpusEntry>& entries() const { return made; }
    const QStringList& errors() const { return problems; }
    bool writeManifest(const QString& path) const;

private:
    QString nextPath(const QString& damage, const QString& label, const QString& suffix);

    QString folder;
    QList<CorpusEntry> made;
    QStringList problems;
};

// A valid file to damage: the suffix it is named with, a label, its bytes and where its
// header ends (truncations are made in and just past the header as well as in the body).
struct Seed {
    QString suffix;
    QString label;
    QByteArray bytes;
    qsizetype headerEnd = 16;
    // How much generic damage: the whole set, a few cuts and flips, or one cut and one flip.
    enum class Depth { Full, Some, Few } depth = Depth::Full;
};

namespace HostileCorpus {

// The formats with hand-made lying headers and bombs, and the generic damage applied to the
// seeds of every readable suffix.
QList<Seed> primarySeeds();
QList<Seed> otherSeeds(const QStringList& readableSuffixes, const QStringList& covered);

// The generic damage: truncations, bit flips, zeroed blocks.
void addGenericDamage(CorpusWriter& w, const Seed& seed);
// Empty files, text, content of one format under the suffix of another, special files.
void addNotImages(CorpusWriter& w, const QStringList& suffixes);
void addMismatches(CorpusWriter& w, const QList<Seed>& seeds);
void addSpecialFiles(CorpusWriter& w);

// Format by format: lying headers, bombs, palettes, broken structures.
void addPngDamage(CorpusWriter& w, const Seed& seed);
void addJpegDamage(CorpusWriter& w, const Seed& seed);
void addGifDamage(CorpusWriter& w);
void addBmpDamage(CorpusWriter& w);
void addWebpDamage(CorpusWriter& w, const Seed& seed);
void addTgaDamage(CorpusWriter& w);
void addIcoDamage(CorpusWriter& w, const Seed& seed);
void addTiffDamage(CorpusWriter& w);
void addPsdDamage(CorpusWriter& w);
void addSgiDamage(CorpusWriter& w);
void addPcxDamage(CorpusWriter& w);
void addXcfDamage(CorpusWriter& w);
void addPictDamage(CorpusWriter& w, const Seed& seed);
void addMacPaintDamage(CorpusWriter& w);
void addNetpbmDamage(CorpusWriter& w);
void addXpmXbmDamage(CorpusWriter& w);
void addSvgDamage(CorpusWriter& w);
void addPdfDamage(CorpusWriter& w, const Seed& seed);

// Hand-assembled files that both the corpus and the focused tests use.
QByteArray xcfFile(quint32 w, quint32 h, quint32 layerW, quint32 layerH, quint32 bpp);
QByteArray macPaintFile(quint8 fill);
QByteArray tiffWithPrivateTag();   // a valid 8 x 8 RGB TIFF carrying tag 65000
QByteArray tiffWithBrokenStrips(); // its strip offsets and counts point past the end

// Makes every file and the manifest ("name<TAB>damage" lines). Returns false and says why on
// stderr when a file could not be made.
bool generate(const QString& folder, const QString& manifest);

} // namespace HostileCorpus
