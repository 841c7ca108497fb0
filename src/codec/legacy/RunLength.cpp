#include "codec/legacy/RunLength.h"

namespace {

// The length of the run of equal bytes that starts at `i`, at most 128.
int runAt(const uchar* bytes, int length, int i) {
    int run = 1;
    while (i + run < length && run < 128 && bytes[i + run] == bytes[i])
        ++run;
    return run;
}

// Cuts the bytes into runs (three or more equal bytes, where a run saves room) and literal
// stretches, and hands each to `repeat(count, byte)` or `literal(start, count)`.
template <typename Repeat, typename Literal>
void cutIntoRuns(const uchar* bytes, int length, Repeat repeat, Literal literal) {
    int i = 0;
    while (i < length) {
        const int run = runAt(bytes, length, i);
        if (run >= 3) {
            repeat(run, bytes[i]);
            i += run;
            continue;
        }
        // A literal stretch ends where a run of three begins, or after 128 bytes.
        int start = i;
        int count = 0;
        while (i < length && count < 128 && runAt(bytes, length, i) < 3) {
            ++i;
            ++count;
        }
        literal(start, count);
    }
}

} // namespace

QByteArray packBits(const uchar* bytes, int length) {
    QByteArray out;
    cutIntoRuns(
        bytes, length,
        [&](int count, uchar byte) {
            out.append(char(1 - count));
            out.append(char(byte));
        },
        [&](int start, int count) {
            out.append(char(count - 1));
            out.append(reinterpret_cast<const char*>(bytes + start), count);
        });
    return out;
}

QByteArray flicByteRun(const uchar* bytes, int length) {
    QByteArray out;
    cutIntoRuns(
        bytes, length,
        [&](int count, uchar byte) {
            // A count byte is signed: a run of 128 is split so that its count stays positive.
            while (count > 0) {
                const int part = count > 127 ? 127 : count;
                out.append(char(part));
                out.append(char(byte));
                count -= part;
            }
        },
        [&](int start, int count) {
            out.append(char(-count));
            out.append(reinterpret_cast<const char*>(bytes + start), count);
        });
    return out;
}
