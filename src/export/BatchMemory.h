#pragma once

#include <QString>

#include <condition_variable>
#include <cstdint>
#include <mutex>

// What the batch's files may hold in memory together. Two large photographs in flight at once
// (one decoding, one encoding) would hold more than a converter taking one file at a time;
// a file whose pictures would take the batch over its budget waits until the files before it
// are written, unless nothing else is in flight. Smaller files still overlap freely, and a
// small file may join a large one for a little more than the budget.
class BatchMemory {
public:
    // Two 18-megapixel photographs as 32-bit pixels.
    static constexpr int64_t kDefaultBudget = int64_t(144) << 20;

    explicit BatchMemory(int64_t budget = kDefaultBudget) : budget(budget) {}

    bool tryHold(int64_t bytes); // held when within the budget or when nothing else is
    void hold(int64_t bytes);    // waits until it can be held
    void release(int64_t bytes);

    // What a file holds: `bytes` at most at once, of which `whileReading` only until its read
    // has ended (a progressive JPEG's coefficients). A plain number is a share held throughout.
    struct Share {
        Share(int64_t bytes = 0, int64_t whileReading = 0)
            : bytes(bytes), whileReading(whileReading) {}
        int64_t bytes;
        int64_t whileReading;
    };

    // The most a file holds at once, from its header alone: its picture (as 32-bit pixels, or
    // as the 24-bit colour or 8-bit grey a JPEG recording 72 dpi or none is decoded into when
    // it is written as decoded: `asDecoded`), every coefficient of a progressive JPEG (its decoder
    // keeps them until its last scan), and what the encoder of `subtype` (the output format's)
    // holds beyond the picture. 0 when the header tells no size. The coefficients are gone once
    // the file is read: the share's `whileReading`.
    static Share estimate(const QString& path, uint32_t subtype = 0, bool asDecoded = false);

private:
    // Within the budget, or nothing else in flight, or a small file (an eighth of the budget at
    // most) joining while the total stays within a quarter over it. Called with the mutex held.
    bool fits(int64_t bytes) const;

    const int64_t budget;
    std::mutex mutex;
    std::condition_variable freed;
    int64_t held = 0;
};
