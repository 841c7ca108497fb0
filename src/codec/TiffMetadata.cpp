#include "codec/TiffMetadata.h"

#include "codec/FileStructures.h"

#include <QBuffer>
#include <QIODevice>
#include <QtEndian>

#include <cstring>
#include <vector>

namespace {

// Bytes of one value of each TIFF field type (1 BYTE ... 12 DOUBLE, 13 IFD); 0 for the others.
int typeSize(uint16_t type) {
    static constexpr int sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < std::size(sizes) ? sizes[type] : 0;
}

constexpr uint16_t kRational = 5;
constexpr uint16_t kSignedRational = 10;

// One entry of the EXIF block's first directory, with its values' bytes.
struct Entry {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;
    uint32_t field = 0; // the value itself, or its offset in the block
    QByteArray bytes;
};

// The block's first directory: a little-endian TIFF (libtiff writes the file little-endian
// around it) whose entries' values lie inside the block. Empty for anything else; entries of
// unknown types, or whose values would lie outside the block, are left out.
std::vector<Entry> firstDirectory(const QByteArray& block) {
    if (!block.startsWith("II"))
        return {};
    QBuffer device;
    device.setData(block);
    device.open(QIODevice::ReadOnly);
    const FileStructures::TiffReader reader(device);
    if (!reader.valid())
        return {};
    std::vector<Entry> entries;
    for (const FileStructures::TiffEntry& raw : reader.directory(reader.firstDirectory())) {
        Entry entry{raw.tag, raw.type, raw.count, raw.field, {}};
        const quint64 size = quint64(raw.count) * quint64(typeSize(raw.type));
        if (size == 0)
            continue;
        if (size <= 4) {
            const quint32 inPlace = qToLittleEndian(raw.field);
            entry.bytes = QByteArray(reinterpret_cast<const char*>(&inPlace), qsizetype(size));
        } else if (quint64(raw.field) + size <= quint64(block.size())) {
            entry.bytes = block.mid(qsizetype(raw.field), qsizetype(size));
        } else {
            continue;
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

// The offset of a sub-directory the entry points at, when it points inside the block.
quint64 pointedDirectory(const Entry& entry, const QByteArray& block) {
    if (entry.count != 1 || (entry.type != 4 && entry.type != 13))
        return 0;
    return entry.field >= 8 && quint64(entry.field) + 2 <= quint64(block.size()) ? entry.field : 0;
}

// The entry's values as the native array libtiff takes for a field whose values are
// `elementSize` bytes each: the block's own numbers, or its rationals as floats or doubles.
std::vector<uchar> nativeValues(const Entry& entry, int elementSize) {
    const int size = typeSize(entry.type);
    std::vector<uchar> out(size_t(entry.count) * size_t(elementSize));
    const bool rational = entry.type == kRational || entry.type == kSignedRational;
    for (uint32_t i = 0; i < entry.count; ++i) {
        const auto* in =
            reinterpret_cast<const uchar*>(entry.bytes.constData()) + size_t(i) * size_t(size);
        uchar* to = out.data() + size_t(i) * size_t(elementSize);
        if (rational) {
            const double numerator = entry.type == kRational
                                         ? double(qFromLittleEndian<quint32>(in))
                                         : double(qFromLittleEndian<qint32>(in));
            const double denominator = entry.type == kRational
                                           ? double(qFromLittleEndian<quint32>(in + 4))
                                           : double(qFromLittleEndian<qint32>(in + 4));
            const double value = denominator != 0 ? numerator / denominator : 0.0;
            if (elementSize == 4) {
                const float single = float(value);
                std::memcpy(to, &single, 4);
            } else {
                std::memcpy(to, &value, 8);
            }
        } else if (size == 2) {
            const quint16 v = qFromLittleEndian<quint16>(in);
            std::memcpy(to, &v, 2);
        } else if (size == 4) {
            const quint32 v = qFromLittleEndian<quint32>(in);
            std::memcpy(to, &v, 4);
        } else if (size == 8) {
            const quint64 v = qFromLittleEndian<quint64>(in);
            std::memcpy(to, &v, 8);
        } else {
            *to = *in;
        }
    }
    return out;
}

// A tag libtiff does not know (a rating, a title for the file manager's properties, a
// printer's settings): registered for this file as it stands in the block, then set.
bool setUnknownField(TIFF* tiff, const Entry& entry) {
    static char name[] = "CarriedExifTag";
    TIFFFieldInfo info{
        entry.tag, TIFF_VARIABLE2, TIFF_VARIABLE2, TIFFDataType(entry.type), FIELD_CUSTOM, 1, 1,
        name};
    if (TIFFMergeFieldInfo(tiff, &info, 1) != 0)
        return false;
    const TIFFField* field = TIFFFindField(tiff, entry.tag, TIFFDataType(entry.type));
    if (!field)
        return false;
    const int elementSize = TIFFFieldSetGetSize(field);
    const bool rational = entry.type == kRational || entry.type == kSignedRational;
    if (elementSize != typeSize(entry.type) &&
        !(rational && (elementSize == 4 || elementSize == 8)))
        return true; // a form libtiff would not take as it stands: left out
    const std::vector<uchar> values = nativeValues(entry, elementSize);
    return TIFFSetField(tiff, entry.tag, entry.count, values.data()) != 0;
}

// One entry of the block's first directory on libtiff's directory. Of the tags libtiff knows,
// the texts (the camera, the author, the date) are set; its numeric tags describe the picture's
// layout, which the writer records itself, and are left out.
bool setEntry(TIFF* tiff, const Entry& entry) {
    const TIFFField* known = TIFFFindField(tiff, entry.tag, TIFF_ANY);
    if (!known)
        return setUnknownField(tiff, entry);
    if (entry.tag == TIFFTAG_ORIENTATION) // upright pixels: 1, top left
        return TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != 0;
    if (TIFFFieldDataType(known) != TIFF_ASCII || entry.type != 2 || TIFFFieldPassCount(known) ||
        entry.tag == TIFFTAG_INKNAMES)
        return true;
    return TIFFSetField(tiff, entry.tag, entry.bytes.toStdString().c_str()) != 0; // to the NUL
}

} // namespace

namespace TiffMetadata {

bool placeExifBlock(QIODevice& file, const ImageMetadata& metadata) {
    if (firstDirectory(metadata.exif).empty())
        return true; // no block that setFields would point into
    return file.write(metadata.exif) == metadata.exif.size() && file.seek(0);
}

bool setFields(TIFF* tiff, const ImageMetadata& metadata) {
    // Empty, as for placeExifBlock, when the block is not one to place.
    for (const Entry& entry : firstDirectory(metadata.exif)) {
        bool ok = true;
        if (entry.tag == TIFFTAG_EXIFIFD || entry.tag == TIFFTAG_GPSIFD) {
            if (const quint64 offset = pointedDirectory(entry, metadata.exif))
                ok = TIFFSetField(tiff, entry.tag, uint64_t(offset)) != 0;
        } else if (entry.tag == TIFFTAG_XRESOLUTION || entry.tag == TIFFTAG_YRESOLUTION ||
                   entry.tag == TIFFTAG_RESOLUTIONUNIT || entry.tag == TIFFTAG_XMLPACKET ||
                   entry.tag == TIFFTAG_RICHTIFFIPTC || entry.tag == TIFFTAG_ICCPROFILE) {
            // recorded by the writer, or carried below
        } else {
            ok = setEntry(tiff, entry);
        }
        if (!ok)
            return false;
    }
    if (!metadata.xmp.isEmpty() &&
        !TIFFSetField(tiff, TIFFTAG_XMLPACKET, uint32_t(metadata.xmp.size()),
                      metadata.xmp.constData()))
        return false;
    if (!metadata.iptc.isEmpty() &&
        !TIFFSetField(tiff, TIFFTAG_RICHTIFFIPTC, uint32_t(metadata.iptc.size()),
                      metadata.iptc.constData()))
        return false;
    return true;
}

} // namespace TiffMetadata
