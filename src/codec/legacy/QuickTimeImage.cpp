#include "codec/legacy/QuickTimeImage.h"

#include <QIODevice>
#include <QtEndian>

namespace QuickTimeImage {

namespace {

bool readAtomHeader(QIODevice& file, quint64* size, uint32_t* type) {
    uchar head[8];
    if (file.read(reinterpret_cast<char*>(head), 8) != 8)
        return false;
    *size = qFromBigEndian<quint32>(head);
    *type = qFromBigEndian<quint32>(head + 4);
    if (*size == 1) { // a 64-bit size follows
        uchar wide[8];
        if (file.read(reinterpret_cast<char*>(wide), 8) != 8)
            return false;
        *size = qFromBigEndian<quint64>(wide);
        return *size >= 16 ? (*size -= 8, true) : false; // counted from after the long size
    }
    return *size >= 8;
}

} // namespace

bool looksLikeQuickTimeImage(QIODevice& file) {
    const QByteArray head = file.peek(8);
    if (head.size() < 8)
        return false;
    const uint32_t type = qFromBigEndian<quint32>(head.constData() + 4);
    return type == kDescriptionAtom || type == kDataAtom;
}

Contents read(QIODevice& file, qint64 maxData) {
    Contents out;
    bool described = false;
    bool haveData = false;
    // A file holds a handful of atoms; more than that is no QuickTime image of ours to walk.
    for (int atoms = 0; atoms < 64 && !(described && haveData); ++atoms) {
        const qint64 start = file.pos();
        quint64 size = 0;
        uint32_t type = 0;
        if (!readAtomHeader(file, &size, &type))
            break;
        const qint64 body = file.pos();
        const quint64 bodySize = size - quint64(body - start);
        if (bodySize > quint64(file.size() - body))
            return {}; // runs past the end of the file
        if (type == kDescriptionAtom) {
            const QByteArray d = file.read(qint64(bodySize));
            if (d.size() < kDescriptionSize)
                return {};
            const auto* p = reinterpret_cast<const uchar*>(d.constData());
            out.codec = qFromBigEndian<quint32>(p + 4);
            out.width = qFromBigEndian<quint16>(p + 32);
            out.height = qFromBigEndian<quint16>(p + 34);
            out.dpiX = qFromBigEndian<quint32>(p + 36) / 65536.0;
            out.dpiY = qFromBigEndian<quint32>(p + 40) / 65536.0;
            described = true;
        } else if (type == kDataAtom) {
            if (bodySize > quint64(maxData))
                return {};
            out.data = file.read(qint64(bodySize));
            if (quint64(out.data.size()) != bodySize)
                return {};
            haveData = true;
        }
        if (!file.seek(body + qint64(bodySize)))
            break;
    }
    out.ok = described && haveData && out.width > 0 && out.height > 0;
    return out;
}

} // namespace QuickTimeImage
