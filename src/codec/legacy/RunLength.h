#pragma once

#include <QByteArray>

// The two byte-run codes of the older picture formats. Both code a run of up to 128 equal
// bytes or up to 128 bytes taken as they are behind one signed count byte; they differ in the
// sign that means "repeat".

// PackBits (MacPaint rows): n >= 0 copies n + 1 bytes, n < 0 repeats the next byte 1 - n times.
QByteArray packBits(const uchar* bytes, int length);

// The FLC BYTE_RUN line: n > 0 repeats the next byte n times, n < 0 copies -n bytes.
QByteArray flicByteRun(const uchar* bytes, int length);
