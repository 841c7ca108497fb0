// Redraw speed of the main view while the rotation slider is dragged: the angle changes on
// every frame and the view repaints a 24-megapixel picture. Prints the median time per frame of
// the view's paint with and without its scaled copy, and of QPainter drawing the full picture
// directly with the same transform.

#include "app/Controller.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

// Reaches the view's private switch of the scaled copy.
class RedrawBenchmark {
public:
    static void setScaledCopy(wmfImageView& view, bool on) { view.displayCacheEnabled = on; }
};

namespace {

QImage syntheticPhoto(int w, int h) {
    // Smooth gradients with fine stripes: a picture with detail that a scaler has to average.
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb((x * 255) / w, (y * 255) / h, ((x ^ y) & 8) ? 220 : 40);
    }
    return image;
}

struct Figures {
    double first = 0;  // ms, the first frame (builds whatever is cached)
    double median = 0; // ms per frame afterwards
    int frames = 0;
};

Figures measure(int frames, const std::function<void(int)>& frame) {
    QElapsedTimer timer;
    timer.start();
    frame(1);
    Figures f;
    f.first = timer.nsecsElapsed() / 1e6;
    std::vector<double> times;
    for (int i = 0; i < frames; ++i) {
        timer.restart();
        frame(2 + i * 7); // a new angle on every frame, as while dragging the slider
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    f.median = times[times.size() / 2];
    f.frames = frames;
    return f;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    const int fastFrames = argc > 1 ? std::max(5, atoi(argv[1])) : 120;
    const int slowFrames = std::max(5, fastFrames / 6);

    Controller controller;
    controller.itsCGImage = syntheticPhoto(6000, 4000);
    controller.itsImgBounds = Rect{0, 0, 4000, 6000};
    wmfImageView view;
    view.resize(850, 600);
    view.mainController = &controller;
    QImage canvas(view.size(), QImage::Format_ARGB32_Premultiplied);

    auto viewFrame = [&](int angle) {
        controller.m_rotate = angle;
        canvas.fill(Qt::gray);
        view.render(&canvas, QPoint(), QRegion(), QWidget::RenderFlags());
    };
    auto directFrame = [&](int angle) {
        canvas.fill(Qt::gray);
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setTransform(rotationAboutCentre(angle, 850.0f, 600.0f));
        const QRectF target =
            fittedPictureRect(controller.itsCGImage.size(), angle, QRectF(0, 0, 850, 600));
        painter.drawImage(target, controller.itsCGImage);
    };

    RedrawBenchmark::setScaledCopy(view, true);
    const Figures cached = measure(fastFrames, viewFrame);
    controller.m_Monochrome = true;
    const Figures grey = measure(fastFrames, viewFrame);
    controller.m_Monochrome = false;
    RedrawBenchmark::setScaledCopy(view, false);
    const Figures uncached = measure(slowFrames, viewFrame);
    const Figures direct = measure(slowFrames, directFrame);

    std::printf("redraw of a 6000 x 4000 picture (24 Mpx) in an 850 x 600 view, angle changing "
                "every frame\n");
    std::printf("%-44s %8s %12s %14s %10s\n", "job", "frames", "first (ms)", "median (ms)",
                "ratio");
    auto row = [&](const char* job, const Figures& f) {
        std::printf("%-44s %8d %12.2f %14.2f %9.1fx\n", job, f.frames, f.first, f.median,
                    direct.median / f.median);
    };
    row("Ormidon view, scaled copy", cached);
    row("Ormidon view, scaled copy, grey tones", grey);
    row("Ormidon view, no scaled copy", uncached);
    row("QPainter drawImage of the full picture", direct);
    std::printf("ratio = direct QPainter median / this median (higher is faster); "
                "frame budget 16 ms\n");
    return 0;
}
