// Time from the arrow key to the picture drawn, stepping through a folder of large JPEGs in the
// real main window (offscreen platform): with the neighbours decoded ahead, and with every step
// decoding its own picture. Between steps the benchmark waits as a user looking at each picture
// would, until the background decode is done. It also splits one step without decode-ahead into
// its parts (decode, scaled copy, grey tones, drawing), and decodes the same file with Qt's bare
// JPEG reader, which is what a viewer that decodes on demand pays at each step.
// Usage: bench_step_latency FOLDER [steps]

#include "app/Controller.h"
#include "codec/ImageDecoder.h"
#include "view/DecodeAhead.h"
#include "view/DisplayCopy.h"
#include "view/GreyTone.h"
#include "view/wmfImageView.h"

#include "FrameTiming.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImageReader>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using bench::median;
using bench::Timing;

Timing timeOnce(const std::function<void()>& job) {
    return bench::timeOnce(job, bench::CpuClock::Thread);
}

Timing medianOf3(const std::function<void()>& job) {
    return bench::medianTiming(3, job, bench::CpuClock::Thread);
}

struct Run {
    std::vector<double> steps; // ms from the key press to the picture drawn
    std::vector<double> cpu;   // ms of the GUI thread's CPU time for the same
    int fromCache = 0;
};

// Lets the queued look-around start and waits for the background decode, as a user looking at
// the picture for a moment would; or, with `pauseMs` of 0 or more, only that long, as with an
// arrow key held down.
void lookAtPicture(Controller& controller, int pauseMs) {
    QCoreApplication::processEvents();
    if (pauseMs >= 0) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < pauseMs)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        return;
    }
    if (DecodeAhead* ahead = controller.decodeAheadCache())
        ahead->waitUntilIdle(60000);
    QCoreApplication::processEvents();
}

Run stepThrough(Controller& controller, const QString& first, int steps, bool ahead,
                int pauseMs = -1) {
    controller.decodeAheadEnabled = ahead;
    controller.setSourceFileName(first, true);
    wmfImageView* view = controller.itsWmfView;
    view->repaint();
    Run run;
    for (int i = 0; i < steps; ++i) {
        lookAtPicture(controller, pauseMs);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier);
        const Timing t = timeOnce([&] {
            QApplication::sendEvent(view, &press);
            view->repaint(); // the picture drawn, now
        });
        run.steps.push_back(t.wall);
        run.cpu.push_back(t.cpu);
        QApplication::sendEvent(view, &release);
        if (ahead && controller.decodeAheadCache() &&
            controller.decodeAheadCache()->lastTakenSource() != DecodeAhead::Source::Decoded)
            ++run.fromCache;
    }
    return run;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [steps]\n", argv[0]);
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const int steps = argc > 2 ? std::max(1, atoi(argv[2])) : 10;
    const QStringList names = folder.entryList({"*.jpg"}, QDir::Files, QDir::Name);
    if (names.size() < steps + 1) {
        std::fprintf(stderr, "the folder needs %d JPEG files\n", steps + 1);
        return 2;
    }
    const QString first = folder.filePath(names.first());

    Controller controller;
    controller.skipSplash = true;
    controller.loadMainWindow();
    controller.window()->resize(1280, 800);
    controller.window()->show();
    QCoreApplication::processEvents();
    const QSize viewSize = controller.itsWmfView->size();

    // Where the time of a step goes without decode-ahead, on the first file.
    const QImage probe = ImageDecoder::decode(first).image;
    const Timing decode = medianOf3([&] { ImageDecoder::decode(first); });
    const Timing qtReader = medianOf3([&] { QImageReader(first).read(); });
    QImage copy;
    const Timing copyTime =
        medianOf3([&] { copy = makeDisplayCopy(probe, QSizeF(viewSize), 1.0); });
    const Timing grey = medianOf3([&] { greyToneDisplayImage(copy.isNull() ? probe : copy); });
    QImage canvas(viewSize, QImage::Format_ARGB32_Premultiplied);
    const Timing draw = medianOf3([&] {
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(QPointF(), QSizeF(viewSize)), copy.isNull() ? probe : copy);
    });

    // Twice each, in turn, so that neither mode has the disk cache to itself.
    Run withAhead, without;
    for (int round = 0; round < 2; ++round) {
        for (const bool ahead : {false, true}) {
            const Run run = stepThrough(controller, first, steps, ahead);
            Run& into = ahead ? withAhead : without;
            into.steps.insert(into.steps.end(), run.steps.begin(), run.steps.end());
            into.cpu.insert(into.cpu.end(), run.cpu.begin(), run.cpu.end());
            into.fromCache += run.fromCache;
        }
    }

    // The key held down: a step every 100 ms, faster than a picture decodes.
    const Run held = stepThrough(controller, first, steps, true, 100);

    std::printf("%d steps through %dx%d JPEGs in a %dx%d view (twice each)\n", steps, probe.width(),
                probe.height(), viewSize.width(), viewSize.height());
    std::printf("%-50s %12s %10s %14s\n", "job", "median (ms)", "max (ms)", "CPU med (ms)");
    auto row = [](const char* job, const Run& r) {
        std::printf("%-50s %12.1f %10.1f %14.1f\n", job, median(r.steps),
                    r.steps.empty() ? 0.0 : *std::max_element(r.steps.begin(), r.steps.end()),
                    median(r.cpu));
    };
    auto part = [](const char* job, const Timing& t) {
        std::printf("%-50s %12.1f %10s %14.1f\n", job, t.wall, "", t.cpu);
    };
    row("step, key to picture drawn, decoded ahead", withAhead);
    row("step, key to picture drawn, no decode-ahead", without);
    row("step 100 ms after the last, decoded ahead", held);
    part("  of which: decode (ImageDecoder, median of 3)", decode);
    part("  of which: scaled copy for the view", copyTime);
    part("  of which: drawing the copy", draw);
    part("  grey tones of the copy (when on)", grey);
    part("bare Qt JPEG decode (QImageReader) of one file", qtReader);
    std::printf("steps served from the cache: %d of %d; ratio no-ahead / ahead: %.0fx wall, "
                "%.0fx CPU\n",
                withAhead.fromCache, int(withAhead.steps.size()),
                median(without.steps) / std::max(0.01, median(withAhead.steps)),
                median(without.cpu) / std::max(0.01, median(withAhead.cpu)));
    return 0;
}
