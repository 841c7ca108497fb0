#pragma once

// What the redraw benchmarks share: a synthetic 24-megapixel photograph and the timing of a
// run of frames (the first frame apart, since it builds whatever the view caches).

#include <QElapsedTimer>
#include <QImage>

#include <algorithm>
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

} // namespace bench
