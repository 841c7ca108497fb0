#pragma once

// What the benchmarks share: a synthetic 24-megapixel photograph, the timing of a run of frames
// (the first frame apart, since it builds whatever the view caches), and the wall and CPU time of
// a job with the median of several runs.

#include <QElapsedTimer>
#include <QImage>

#include <algorithm>
#include <ctime>
#include <functional>
#include <vector>

namespace bench {

// Smooth gradients with fine stripes: a picture with detail that a scaler has to average.
inline QImage syntheticPhoto(int w, int h) {
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb((x * 255) / w, (y * 255) / h, ((x ^ y) & 8) ? 220 : 40);
    }
    return image;
}

struct FrameFigures {
    double first = 0;  // ms, the first frame
    double median = 0; // ms per frame afterwards
    double worst = 0;  // ms, the slowest frame afterwards
    int frames = 0;
};

// Runs frame(0) once, then frame(1) .. frame(frames), timing each.
inline FrameFigures measureFrames(int frames, const std::function<void(int)>& frame) {
    QElapsedTimer timer;
    timer.start();
    frame(0);
    FrameFigures f;
    f.first = timer.nsecsElapsed() / 1e6;
    std::vector<double> times;
    for (int i = 1; i <= frames; ++i) {
        timer.restart();
        frame(i);
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    f.median = times[times.size() / 2];
    f.worst = times.back();
    f.frames = frames;
    return f;
}

// Whose CPU time a timing counts: the calling thread's (what a job costs the GUI thread,
// whatever else the machine runs meanwhile) or the whole process's (its other threads included).
enum class CpuClock { Thread, Process };

inline double cpuMs(CpuClock clock) {
    timespec t{};
    clock_gettime(clock == CpuClock::Thread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_PROCESS_CPUTIME_ID,
                  &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

// The middle value (the upper of the two middle ones for an even count); 0 for none.
inline double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Timing {
    double wall = 0; // ms
    double cpu = 0;  // ms
};

inline Timing timeOnce(const std::function<void()>& job, CpuClock clock) {
    QElapsedTimer timer;
    const double cpu = cpuMs(clock);
    timer.start();
    job();
    return {timer.nsecsElapsed() / 1e6, cpuMs(clock) - cpu};
}

// The median wall time and the median CPU time of `runs` runs of the job.
inline Timing medianTiming(int runs, const std::function<void()>& job, CpuClock clock) {
    std::vector<double> wall, cpu;
    for (int i = 0; i < runs; ++i) {
        const Timing t = timeOnce(job, clock);
        wall.push_back(t.wall);
        cpu.push_back(t.cpu);
    }
    return {median(wall), median(cpu)};
}

} // namespace bench
