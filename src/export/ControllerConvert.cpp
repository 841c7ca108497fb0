// The single and the batch conversion: one routine per file (saveImage) settles the output
// path, checks the source and hands it to the raster, PDF or EPS writer. "Convert All" walks
// the source's folder on a worker thread; the worker reads and updates the controls only
// through blocking posts to the GUI thread, so every step happens in order.

#include "app/BusyWork.h"
#include "app/Controller.h"
#include "app/GuiThread.h"
#include "app/TextNumbers.h"
#include "browse/FolderIndex.h"
#include "browse/ImageWalk.h"
#include "codec/RasterWriters.h"
#include "codec/SafeReplace.h"
#include "export/ConversionJob.h"
#include "export/FormatTable.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QStatusBar>
#include <QThread>

#include <QFileInfo>

#include <functional>
#include <future>
#include <system_error>
#include <tuple>
#include <vector>

namespace {

// The batch's encoders: while the batch thread decodes and renders file N+1, the pictures of
// the files before it are encoded here, two at a time (the slow encoders, PNG above all, run
// one file per core). At most two pictures wait or encode, so memory stays at three pictures.
// An output path that is still being written is finished first, so the later file wins as it
// would one file at a time. The batch thread drains them before it restores the controls, so a
// Stop never leaves an encode running and never starts a further file.
class PendingEncode {
public:
    ~PendingEncode() { drain(); }
    void submit(const QString& dest, std::function<void()> job) {
        for (Job& j : jobs)
            if (j.dest == dest)
                finish(j);
        std::erase_if(jobs, [](const Job& j) { return !j.done.valid(); });
        if (jobs.size() >= kSlots) {
            finish(jobs.front());
            jobs.erase(jobs.begin());
        }
        try {
            jobs.push_back({dest, std::async(std::launch::async, job)});
        } catch (const std::system_error&) {
            job(); // no thread to be had: encode here
        }
    }
    void drain() {
        for (Job& j : jobs)
            finish(j);
        jobs.clear();
    }

private:
    static constexpr size_t kSlots = 2;
    struct Job {
        QString dest;
        std::future<void> done;
    };
    // A failed encode is as silent as in a single conversion.
    static void finish(Job& j) {
        if (!j.done.valid())
            return;
        try {
            j.done.get();
        } catch (...) {
        }
    }
    std::vector<Job> jobs;
};

// Set on the batch thread for the length of the batch; a single conversion encodes at once.
thread_local PendingEncode* batchEncoder = nullptr;

const QString& stopTitle() {
    static const QString title = QObject::tr("Stop");
    return title;
}

const QString& convertAllTitle() {
    static const QString title = QObject::tr("Convert All");
    return title;
}

// The EPS (or, for "PDF ", the PDF) rendering of what the main view shows: the picture on
// screen, fitted into the view and turned, under the source's name. GUI thread only.
void writeViewDocument(Controller& c, const QString& source, const QString& dest,
                       const QRectF& bounds, long format) {
    wmfImageView* view = c.itsWmfView;
    if (!view)
        return;
    const QString kept = view->wmfPath();
    if (!source.isEmpty())
        view->setWmfPath(source);

    const QRectF area = shownTurnedBox(bounds, c.getRotation(), QRectF(view->rect()));
    QByteArray bytes;
    if (!area.isEmpty())
        bytes = format == kEpsFormat ? view->dataWithEPSInsideRect(area)
                                     : view->dataWithPDFInsideRect(area);
    if (!bytes.isEmpty() && !dest.isEmpty()) {
        QSaveFile file(dest); // appears only complete
        if (SafeReplace::openForReplacement(file) && file.write(bytes) == bytes.size())
            file.commit();
    }

    if (!source.isEmpty())
        view->setWmfPath(kept);
}

} // namespace

void Controller::convert(QObject* /*sender*/) {
    checkDestination();
    if (!itsFormatCombo || itsFormatCombo->currentIndex() < 0)
        return;
    const long format = getRealExportIndex(itsFormatCombo->currentText());
    if (format < 0)
        return;
    const QString shown = itsWmfView ? itsWmfView->wmfPath() : QString();
    if (format == kEpsFormat) {
        // The EPS is the view's own drawing of the picture it shows: made in one go here, so
        // that nothing opened meanwhile can slip into it.
        const ScopedWaitCursor busy(itsMainWindow);
        saveImage(shown, format);
        return;
    }
    // The picture shown now is the one converted and named, whatever opens meanwhile. Its
    // decode, drawing and encode run beside the window, which keeps painting under the wait
    // cursor; the question and any alert still come on the GUI thread, in the same order.
    runWhileBusy(itsMainWindow, [this, &shown, format] { saveImage(shown, format); });
}

namespace {

// Takes the file's snapshot: the settings now, and the source's pixels and bounds, read before
// the output path is settled: the output may be the source itself, and a Yes moves it aside.
ConversionJob startJob(Controller& c, const QString& src, QRectF& bounds) {
    ConversionJob job;
    job.source = src;
    std::tie(job.dpi, job.degrees) = onGuiThread([&c] {
        const float resolution =
            c.itsDpiCombo ? leadingFloatValue(c.itsDpiCombo->currentText()) : 72.0f;
        return std::pair<float, int>(resolution, c.getRotation());
    });
    bounds = QRectF(0, 0, 0, 0);
    if (!c.IsImageFile(src))
        return job;
    try {
        job.decoded = ImageDecoder::decode(src);
    } catch (const std::bad_alloc&) {
        job.decoded = DecodedImage{};
    }
    // Pixels that cannot be decoded have no size to convert at: nothing is drawn for them,
    // whatever their header claims.
    if (job.decoded.ok) {
        bounds = c.getImageBounds(src);
        if (bounds.isEmpty())
            bounds = QRectF(QPointF(0, 0), job.decoded.pointSize);
    }
    return job;
}

} // namespace

void Controller::saveImage(const QString& source, long format) {
    if (format < 0 || format >= kFormatCount)
        return;

    QString src = source;
    if (src.isEmpty())
        src = onGuiThread([this] { return itsWmfView ? itsWmfView->wmfPath() : QString(); });
    // No picture is shown (none was opened, or the last open failed): there is nothing to
    // convert, and no output is made for nothing.
    if (src.isEmpty())
        return;

    QRectF bounds;
    ConversionJob job = startJob(*this, src, bounds);
    const ScopedConversionJob current(job);

    // The question and the empty output file come before anything is drawn or written.
    const QString dest = findDestination(source, int(format), 0);
    if (dest.isEmpty())
        return; // Skip: the old file stays and nothing is drawn for it
    if (!IsImageFile(src)) {
        SafeReplace::settle(dest); // a replaced file comes back; nothing was written
        return;
    }
    if (!job.decoded.ok) {
        finishOutput(dest, tr("%1 could not be read").arg(QFileInfo(src).fileName()));
        return;
    }

    if (format == kPdfFormat) {
        createPDFFile(src, dest, bounds);
        finishOutput(dest, tr("the PDF could not be written"));
        return;
    }
    if (format == kEpsFormat) {
        onGuiThread([&] { writeViewDocument(*this, src, dest, bounds, format); });
        finishOutput(dest, tr("the EPS could not be written"));
        return;
    }

    const float s = job.dpi / 72.0f;
    const QRectF q(0, 0, float(bounds.width()) * s, float(bounds.height()) * s);
    const QRectF r = rotatedRectBounds(q, float(job.degrees));
    QImage picture = createCGImage(src, r, q, int(format));
    job.decoded = DecodedImage{}; // the source's pixels go before the encoder's buffers come
    if (picture.isNull()) {
        finishOutput(dest, tr("the picture could not be drawn"));
        return;
    }
    recordResolution(picture, job.dpi); // the one owner now: no copy of the pixels
    auto write = [this, picture = std::move(picture), dest, format, settings = job] {
        const ScopedConversionJob encoding(settings);
        const int16_t status = convertAndSave(picture, dest, int(format));
        if (status == kOutOfMemory)
            showOutOfMemory();
        finishOutput(dest, writeFailureReason(status));
    };
    if (batchEncoder)
        batchEncoder->submit(dest, std::move(write));
    else
        write();
}

void Controller::finishOutput(const QString& destPath, const QString& reason) {
    if (SafeReplace::settle(destPath))
        return;
    const QString name = QFileInfo(destPath).fileName();
    emit conversionFailed(destPath, reason);
    QMetaObject::invokeMethod(this, [this, name, reason] {
        const QString line = tr("%1 was not written: %2").arg(name, reason);
        if (isBatchRunning())
            batchFailures.append(line);
        if (itsMainWindow)
            itsMainWindow->statusBar()->showMessage(line);
    });
}

void Controller::convertAll(QObject* /*sender*/) {
    checkDestination();
    if (!itsConvertAll)
        return;
    const QString title = itsConvertAll->text();
    thread_exit = true;

    if (title == stopTitle()) {
        // Stopping: the worker finishes the file it is on and then restores the button.
        itsConvertAll->setEnabled(false);
        return;
    }

    // A worker that has restored the controls may still be returning; it posts nothing more.
    if (batchThread) {
        batchThread->wait();
        delete batchThread;
        batchThread = nullptr;
    }

    thread_exit = false;
    if (itsConvertAll->isCheckable())
        itsConvertAll->toggle();
    itsConvertAll->setText(stopTitle());
    if (itsMenuItemConvAll)
        itsMenuItemConvAll->setText(stopTitle());
    itsConvertAll->repaint();
    if (itsConvertIndicator)
        itsConvertIndicator->setVisible(true);

    batchThread = QThread::create([this] { convertAllThread(this); });
    batchThread->setObjectName(QStringLiteral("Convert All"));
    batchThread->start();

    // The worker shows the bar once it has counted the files.
    if (itsConvertIndicator) {
        itsConvertIndicator->setVisible(false);
        itsConvertIndicator->update();
    }
}

void Controller::convertAllThread(Controller* controller) {
    if (controller)
        controller->convertAllThread();
}

void Controller::convertAllThread() {
    QString current =
        onGuiThread([this] { return itsSrcFileName ? itsSrcFileName->text() : QString(); });

    PendingEncode encoder;
    batchEncoder = &encoder;

    // The images of the folder as it is now, in folder order: outputs written into the same
    // folder during the batch are never among them.
    QStringList files;
    if (findFirstWMF(current)) {
        files.append(current);
        while (findWMF(kStepNext, current))
            files.append(current);
    }

    if (!files.isEmpty()) {
        const int count = int(files.size());
        onGuiThread([this, count] {
            batchFailures.clear();
            if (!itsConvertIndicator)
                return;
            itsConvertIndicator->setMaximum(count);
            itsConvertIndicator->setValue(0);
            itsConvertIndicator->setVisible(true);
        });

        for (int pos = 1; pos <= count && !thread_exit; ++pos) {
            onGuiThread([this, pos] {
                if (!itsConvertIndicator)
                    return;
                itsConvertIndicator->setValue(pos);
                itsConvertIndicator->repaint();
            });
            emit batchFileStarted(files.at(pos - 1), pos);

            // Read now: a change of format during the batch applies from this file on.
            const long format = onGuiThread([this] {
                return itsFormatCombo ? getRealExportIndex(itsFormatCombo->currentText()) : -1L;
            });
            saveImage(files.at(pos - 1), format);
        }
        encoder.drain();

        onGuiThread([this] {
            if (!itsConvertIndicator)
                return;
            itsConvertIndicator->setVisible(false);
            itsConvertIndicator->setValue(0);
        });
    }

    encoder.drain();
    batchEncoder = nullptr;

    onGuiThread([this] {
        if (itsConvertAll) {
            itsConvertAll->setEnabled(true);
            if (itsConvertAll->isCheckable())
                itsConvertAll->setChecked(false);
            itsConvertAll->setText(convertAllTitle());
        }
        if (itsMenuItemConvAll)
            itsMenuItemConvAll->setText(convertAllTitle());
        if (itsConvertIndicator) {
            itsConvertIndicator->repaint();
            itsConvertIndicator->update();
        }
        // The batch's end summary: every output that could not be written, and why.
        if (!batchFailures.isEmpty() && itsMainWindow)
            itsMainWindow->statusBar()->showMessage(
                tr("Convert All: %n file(s) not written. %1", nullptr, int(batchFailures.size()))
                    .arg(batchFailures.join(QStringLiteral("; "))));
    });
}

bool Controller::isBatchRunning() const {
    return batchThread && batchThread->isRunning();
}

void Controller::waitForBatch() {
    if (!batchThread)
        return;
    thread_exit = true;
    // The worker may be waiting on a blocking post (a control read, an overwrite question):
    // keep serving the GUI thread's events until it has finished its file.
    while (!batchThread->wait(QDeadlineTimer(20)))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    delete batchThread;
    batchThread = nullptr;
}
