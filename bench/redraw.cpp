// Redraw speed of the main view while the rotation slider is dragged: the angle changes on
// every frame and the view repaints a 24-megapixel picture. Prints the median time per frame of
// the view's paint with and without its scaled copy, and of QPainter drawing the full picture
// directly with the same transform.

#include "FrameTiming.h"
#include "app/Controller.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstdio>

// Reaches the view's private switch of the scaled copy.
class RedrawBenchmark {
public:
    static void setScaledCopy(wmfImageView& view, bool on) { view.displayCacheEnabled = on; }
};

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    const int fastFrames = argc > 1 ? std::max(5, atoi(argv[1])) : 120;
    const int slowFrames = std::max(5, fastFrames / 6);

    Controller controller;
    controller.itsCGImage = bench::syntheticPhoto(6000, 4000);
    controller.itsImgBounds = Rect{0, 0, 4000, 6000};
    wmfImageView view;
    view.resize(850, 600);
    view.mainController = &controller;
    QImage canvas(view.size(), QImage::Format_ARGB32_Premultiplied);

    // A new angle on every frame, as while dragging the slider.
    auto angleOf = [](int frame) { return 1 + frame * 7; };
    auto viewFrame = [&](int frame) {
        controller.m_rotate = angleOf(frame);
        canvas.fill(Qt::gray);
        view.render(&canvas, QPoint(), QRegion(), QWidget::RenderFlags());
    };
    auto directFrame = [&](int frame) {
        const int angle = angleOf(frame);
        canvas.fill(Qt::gray);
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setTransform(rotationAboutCentre(angle, 850.0f, 600.0f));
        const QRectF target =
            fittedPictureRect(controller.itsCGImage.size(), angle, QRectF(0, 0, 850, 600));
        painter.drawImage(target, controller.itsCGImage);
    };

    RedrawBenchmark::setScaledCopy(view, true);
    const bench::FrameFigures cached = bench::measureFrames(fastFrames, viewFrame);
    controller.m_Monochrome = true;
    const bench::FrameFigures grey = bench::measureFrames(fastFrames, viewFrame);
    controller.m_Monochrome = false;
    RedrawBenchmark::setScaledCopy(view, false);
    const bench::FrameFigures uncached = bench::measureFrames(slowFrames, viewFrame);
    const bench::FrameFigures direct = bench::measureFrames(slowFrames, directFrame);

    std::printf("redraw of a 6000 x 4000 picture (24 Mpx) in an 850 x 600 view, angle changing "
                "every frame\n");
    std::printf("%-44s %8s %12s %14s %10s\n", "job", "frames", "first (ms)", "median (ms)",
                "ratio");
    auto row = [&](const char* job, const bench::FrameFigures& f) {
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
