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

double msSince(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double timeOnce(const std::function<void()>& job) {
    QElapsedTimer timer;
    timer.start();
    job();
    return msSince(timer);
}

struct Run {
    std::vector<double> steps; // ms from the key press to the picture drawn
    int fromCache = 0;
};

// Lets the queued look-around start and waits for the background decode, as a user looking at
// the picture for a moment would.
void lookAtPicture(Controller& controller) {
    QCoreApplication::processEvents();
    if (DecodeAhead* ahead = controller.decodeAheadCache())
        ahead->waitUntilIdle(60000);
    QCoreApplication::processEvents();
}

Run stepThrough(Controller& controller, const QString& first, int steps, bool ahead) {
    controller.decodeAheadEnabled = ahead;
    controller.setSourceFileName(first, true);
    wmfImageView* view = controller.itsWmfView;
    view->repaint();
    Run run;
    for (int i = 0; i < steps; ++i) {
        lookAtPicture(controller);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier);
        QElapsedTimer timer;
        timer.start();
        QApplication::sendEvent(view, &press);
        view->repaint(); // the picture drawn, now
        run.steps.push_back(msSince(timer));
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
    const double decodeMs = median({timeOnce([&] { ImageDecoder::decode(first); }),
                                    timeOnce([&] { ImageDecoder::decode(first); }),
                                    timeOnce([&] { ImageDecoder::decode(first); })});
    const double qtReaderMs = median({timeOnce([&] { QImageReader(first).read(); }),
                                      timeOnce([&] { QImageReader(first).read(); }),
                                      timeOnce([&] { QImageReader(first).read(); })});
    QImage copy;
    const double copyMs = timeOnce([&] { copy = makeDisplayCopy(probe, QSizeF(viewSize), 1.0); });
    const double greyMs = timeOnce([&] { greyToneDisplayImage(copy.isNull() ? probe : copy); });
    QImage canvas(viewSize, QImage::Format_ARGB32_Premultiplied);
    const double drawMs = timeOnce([&] {
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(QPointF(), QSizeF(viewSize)), copy.isNull() ? probe : copy);
    });

    // Twice each, in turn, so that neither mode has the disk cache to itself.
    std::vector<double> withAhead, without;
    int fromCache = 0;
    for (int round = 0; round < 2; ++round) {
        const Run off = stepThrough(controller, first, steps, false);
        without.insert(without.end(), off.steps.begin(), off.steps.end());
        const Run on = stepThrough(controller, first, steps, true);
        withAhead.insert(withAhead.end(), on.steps.begin(), on.steps.end());
        fromCache += on.fromCache;
    }

    std::printf("%d steps through %dx%d JPEGs in a %dx%d view (twice each)\n", steps,
                probe.width(), probe.height(), viewSize.width(), viewSize.height());
    std::printf("%-52s %12s %12s\n", "job", "median (ms)", "max (ms)");
    auto row = [](const char* job, const std::vector<double>& v) {
        std::printf("%-52s %12.1f %12.1f\n", job, median(v),
                    v.empty() ? 0.0 : *std::max_element(v.begin(), v.end()));
    };
    row("step, key to picture drawn, decoded ahead", withAhead);
    row("step, key to picture drawn, no decode-ahead", without);
    std::printf("%-52s %12.1f\n", "  of which: decode (ImageDecoder)", decodeMs);
    std::printf("%-52s %12.1f\n", "  of which: scaled copy for the view", copyMs);
    std::printf("%-52s %12.1f\n", "  of which: drawing the copy", drawMs);
    std::printf("%-52s %12.1f\n", "  grey tones of the copy (when on)", greyMs);
    std::printf("%-52s %12.1f\n", "bare Qt JPEG decode (QImageReader) of one file", qtReaderMs);
    std::printf("steps served from the cache: %d of %d; ratio no-ahead / ahead: %.1fx\n",
                fromCache, int(withAhead.size()), median(without) / std::max(0.01, median(withAhead)));
    return 0;
}
