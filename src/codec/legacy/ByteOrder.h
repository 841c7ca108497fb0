#pragma once

#include <QByteArray>

#include <cstdint>

// Appending whole numbers to a byte buffer in a fixed byte order, for the writers of formats
// born on big-endian machines (MacPaint, QuickTime) and on little-endian ones (FLC, SWF).
struct BigEndianBytes {
    QByteArray& out;
    void u8(uint32_t v) { out.append(char(uint8_t(v))); }
    void u16(uint32_t v) {
        u8(v >> 8);
        u8(v);
    }
    void u32(uint32_t v) {
        u16(v >> 16);
        u16(v);
    }
    void zeros(int count) { out.append(count, '\0'); }
    void bytes(const QByteArray& b) { out.append(b); }
};

struct LittleEndianBytes {
    QByteArray& out;
    void u8(uint32_t v) { out.append(char(uint8_t(v))); }
    void u16(uint32_t v) {
        u8(v);
        u8(v >> 8);
    }
    void u32(uint32_t v) {
        u16(v);
        u16(v >> 16);
    }
    void zeros(int count) { out.append(count, '\0'); }
    void bytes(const QByteArray& b) { out.append(b); }
};

// Overwrites four bytes at `at`, for sizes known only once what they measure is written.
inline void patchBigEndian32(QByteArray& out, qsizetype at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out[at + i] = char(uint8_t(v >> (24 - 8 * i)));
}
inline void patchLittleEndian32(QByteArray& out, qsizetype at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out[at + i] = char(uint8_t(v >> (8 * i)));
}
