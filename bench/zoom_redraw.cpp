// Redraw speed of the main view while the user zooms and pans a 24-megapixel picture: Ctrl+wheel
// from the fitted size up to 3200 % and back, and the wheel scrolling at 100 %, at 25 % and at
// 100 % turned by 30 degrees. Prints the median time per frame of the view's paint beside
// QPainter drawing the whole picture with the same transform on every frame.

#include "FrameTiming.h"
#include "app/Controller.h"
#include "view/wmfImageView.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cstdio>

namespace {

void wheel(wmfImageView& view, const QPointF& at, int notches, Qt::KeyboardModifiers mods) {
    QWheelEvent event(at, at, QPoint(), QPoint(0, notches * 120), Qt::NoButton, mods,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &event);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(10, atoi(argv[1])) : 120;

    Controller controller;
    controller.itsCGImage = bench::syntheticPhoto(6000, 4000);
    controller.itsImgBounds = Rect{0, 0, 4000, 6000};
    wmfImageView view;
    view.resize(850, 600);
    view.mainController = &controller;
    view.setWmfPath(QStringLiteral("synthetic"));
    QImage canvas(view.size(), QImage::Format_ARGB32_Premultiplied);
    auto paint = [&] {
        canvas.fill(Qt::gray);
        view.render(&canvas, QPoint(), QRegion(), QWidget::RenderFlags());
    };
    const QPointF pointer(300, 250);

    // Ctrl+wheel up from the fitted size to 3200 % (about 30 notches), then back down.
    auto zoomFrame = [&](int i) {
        const int phase = i % 60;
        wheel(view, pointer, phase < 30 ? 1 : -1, Qt::ControlModifier);
        paint();
    };
    // The wheel scrolling a zoomed picture: down, and back up at the bottom edge.
    auto panFrame = [&](int i) {
        wheel(view, pointer, (i / 25) % 2 ? 1 : -1, Qt::NoModifier);
        paint();
    };
    // The same transform drawn by QPainter from the whole picture, as a plain widget would.
    auto directFrame = [&](int i) {
        wheel(view, pointer, (i / 25) % 2 ? 1 : -1, Qt::NoModifier);
        canvas.fill(Qt::gray);
        QPainter painter(&canvas);
        painter.setTransform(view.zoomState().pictureToView());
        painter.setRenderHint(QPainter::SmoothPixmapTransform,
                              view.zoomState().zoomPercent() < 100);
        painter.drawImage(QPointF(0, 0), controller.itsCGImage);
    };

    std::printf("zooming and panning a 6000 x 4000 picture (24 Mpx) in an 850 x 600 view\n");
    std::printf("%-52s %7s %11s %12s %10s\n", "job", "frames", "first (ms)", "median (ms)",
                "worst (ms)");
    auto row = [](const char* job, const bench::FrameFigures& f) {
        std::printf("%-52s %7d %11.2f %12.2f %10.2f\n", job, f.frames, f.first, f.median, f.worst);
    };

    row("Ormidon: Ctrl+wheel fit -> 3200 % -> fit", bench::measureFrames(frames, zoomFrame));
    view.zoomToActualSize();
    row("Ormidon: wheel scroll at 100 %", bench::measureFrames(frames, panFrame));
    row("QPainter, whole picture, same transform, 100 %",
        bench::measureFrames(std::max(10, frames / 6), directFrame));
    view.zoomToFit();
    view.zoomIn();
    view.zoomIn(); // from 14 % to 20 %: drawn from the quarter-size copy
    row("Ormidon: wheel scroll at 20 % (reduced copy)", bench::measureFrames(frames, panFrame));
    row("QPainter, whole picture, same transform, 20 %",
        bench::measureFrames(std::max(10, frames / 6), directFrame));
    controller.m_rotate = 30;
    view.zoomToActualSize();
    row("Ormidon: wheel scroll at 100 %, turned 30 degrees", bench::measureFrames(frames, panFrame));
    row("QPainter, whole picture, same transform, 30 deg",
        bench::measureFrames(std::max(10, frames / 6), directFrame));
    controller.m_Monochrome = true;
    row("Ormidon: wheel scroll at 100 %, turned, grey tones", bench::measureFrames(frames, panFrame));
    std::printf("frame budget 16 ms; the first frame of a zoom below 50 %% makes the reduced "
                "copies once per picture\n");
    return 0;
}
