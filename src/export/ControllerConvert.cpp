// The single and the batch conversion: one routine per file (saveImage) settles the output
// path, checks the source and hands it to the raster, PDF or EPS writer; convertFiles runs a
// list of files through it with reading ahead on the batch lanes. The "Convert All" button's
// flow is in ControllerConvertAll.cpp.

#include "app/BusyWork.h"
#include "app/Controller.h"
#include "app/GuiThread.h"
#include "app/TextNumbers.h"
#include "browse/FolderIndex.h"
#include "browse/ImageWalk.h"
#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"
#include "codec/RasterWriters.h"
#include "codec/SafeReplace.h"
#include "export/BatchLanes.h"
#include "export/ConversionJob.h"
#include "export/ExportRenderer.h"
#include "export/FormatTable.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QMainWindow>
#include <QProgressBar>
#include <QSaveFile>
#include <QStatusBar>
#include <QThread>

#include <atomic>
#include <malloc.h>
#include <mutex>
#include <tuple>
#include <vector>

namespace {

// Set on the batch thread for the length of the batch: the batch's files are read ahead and
// drawn and encoded on its lanes. A single conversion does everything on its own thread.
thread_local BatchLanes* batchLanes = nullptr;

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

// Whether the last file started was converted at 72 dpi and angle 0, where the decoded picture
// is written as it is. A batch reads its files ahead, before their settings are taken: it
// decodes them in the encoders' pixel form when the file before went that way. A wrong guess
// (the settings changed meanwhile) costs a conversion, never a different result.
std::atomic<bool> lastFileAsDecoded{true};

// The source's pixels and bounds. Pixels that cannot be decoded have no size to convert at:
// nothing is drawn for them, whatever their header claims. Runs on any thread.
SourceRead readSource(Controller& c, const QString& src, bool asDecoded) {
    SourceRead read;
    if (!c.IsImageFile(src))
        return read;
    try {
        // An output keeps the source's colours and says which they are (see RasterWriters.h).
        // A picture that is drawn (scaled, turned) is decoded in the form it is drawn from:
        // no second copy of it is made while the drawing is allocated.
        read.decoded = ImageDecoder::decode(src, ImageDecoder::Colours::Source,
                                            asDecoded ? ImageDecoder::Layout::Encoding
                                                      : ImageDecoder::Layout::Drawing);
    } catch (const std::bad_alloc&) {
        read.decoded = DecodedImage{};
    }
    if (read.decoded.ok) {
        read.bounds = c.getImageBounds(src);
        if (read.bounds.isEmpty())
            read.bounds = QRectF(QPointF(0, 0), read.decoded.pointSize);
    }
    return read;
}

// A batch's file that cannot be drawn: the empty file at its output path is the one the naming
// step made for it and goes; what a Yes moved aside comes back, and the batch's summary names
// the file with `reason`.
void skipOutput(Controller& c, const QString& destPath, const QString& reason) {
    const QFileInfo placeholder(destPath);
    if (placeholder.isFile() && !placeholder.isSymLink() && placeholder.size() == 0)
        QFile::remove(destPath);
    c.finishOutput(destPath, reason);
}

// Takes the file's snapshot of the settings now, and starts its read: in a batch, the pixels
// may have been read ahead, and `lane` then holds the file's lane. The read is not waited for.
ConversionJob startJob(Controller& c, const QString& src, BatchLane& lane,
                       std::shared_ptr<LaneRead>& read) {
    ConversionJob job;
    job.source = src;
    job.inBatch = batchLanes != nullptr;
    if (c.unattended)
        std::tie(job.dpi, job.degrees, job.stripMetadata) =
            std::tuple(c.unattended->dpi, c.unattended->degrees, c.unattended->stripMetadata);
    else
        std::tie(job.dpi, job.degrees, job.stripMetadata) = onGuiThread([&c] {
            const float resolution =
                c.itsDpiCombo ? leadingFloatValue(c.itsDpiCombo->currentText()) : 72.0f;
            const bool strip = c.itsStripMetadata && c.itsStripMetadata->isChecked();
            return std::tuple<float, int, bool>(resolution, c.getRotation(), strip);
        });
    lastFileAsDecoded = writtenAsDecoded(job.dpi, job.degrees);
    if (batchLanes)
        read = batchLanes->takeRead(src, lane);
    return job;
}

// The source's pixels and, for an output that carries it, its metadata into `job`, and its
// bounds in points (empty when it cannot be read). Done before the output path is settled when
// that path may be the source itself, which a Yes moves aside.
void completeJob(ConversionJob& job, SourceRead read, long format, QRectF& bounds) {
    job.decoded = std::move(read.decoded);
    const FormatRow* row = FormatRegistry::rowForSubtype(rasterSubtype(int(format)));
    if (job.decoded.ok && !job.stripMetadata && row && row->holdsMetadata)
        job.metadata = MetadataCarrier::read(job.source);
    bounds = job.decoded.ok ? read.bounds : QRectF(0, 0, 0, 0);
}

// Draws the picture of `job` at its resolution and angle and writes it to `dest` in `format`
// (a raster format); a failure is reported for `dest`. Runs on a lane in a batch.
void drawAndWrite(Controller& c, ConversionJob& job, const QString& dest, const QRectF& bounds,
                  long format) {
    const float s = job.dpi / 72.0f;
    const QRectF q(0, 0, float(bounds.width()) * s, float(bounds.height()) * s);
    const QRectF r = rotatedRectBounds(q, float(job.degrees));
    const ScopedConversionJob drawing(job);
    if (job.inBatch)
        encodeOnThisThreadOnly(); // the lanes keep the cores busy already
    QImage picture = c.createCGImage(job.source, r, q, int(format));
    job.sourceHasAlpha = job.decoded.image.hasAlphaChannel();
    job.decoded = DecodedImage{}; // the source's pixels go before the encoder's buffers come
    if (picture.isNull()) {
        if (job.inBatch && !job.failure.isEmpty()) {
            skipOutput(c, dest, job.failure);
            return;
        }
        c.finishOutput(dest, Controller::tr("the picture could not be drawn"));
        return;
    }
    // The one owner now: the resolution and the encoder's pixel form cost no copy.
    recordResolution(picture, job.dpi);
    if (isRasterFormat(int(format)))
        prepareForEncoder(picture, rasterSubtype(int(format)));
    const int16_t status = c.convertAndSave(picture, dest, int(format));
    picture = QImage();
    if (status == kOutOfMemory && !job.inBatch)
        c.showOutOfMemory();
    c.finishOutput(dest, writeFailureReason(status));
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

    BatchLane lane;
    std::shared_ptr<LaneRead> read;
    ConversionJob job = startJob(*this, src, lane, read);
    const ScopedConversionJob current(job);

    // A batch's file still being read whose output path is free (so that nothing is asked and
    // nothing is moved aside, the source least of all) goes on without waiting: its lane draws
    // and writes it once it is read, while this thread takes up the next files.
    if (read && !read->isDone() && isRasterFormat(int(format)) && IsImageFile(src)) {
        const QString dest = claimFreeDestination(src, int(format));
        if (!dest.isEmpty()) {
            batchLanes->runAfterRead(
                std::move(read), std::move(lane), dest,
                [this, job = std::move(job), dest, format](SourceRead sourceRead) mutable {
                    QRectF bounds;
                    completeJob(job, std::move(sourceRead), format, bounds);
                    if (!job.decoded.ok) {
                        finishOutput(
                            dest, tr("%1 could not be read").arg(QFileInfo(job.source).fileName()));
                        return;
                    }
                    drawAndWrite(*this, job, dest, bounds, format);
                });
            return;
        }
    }
    QRectF bounds;
    completeJob(job, read ? read->wait() : readSource(*this, src, lastFileAsDecoded), format,
                bounds);

    // The question and the empty output file come before anything is drawn or written. An
    // earlier file of the batch still writing the same name finishes first, so the question
    // sees it complete.
    if (batchLanes)
        batchLanes->finishWritesNamed(outputFileName(src, int(format)));
    const QString dest = findDestination(source, int(format), 0);
    if (dest.isEmpty()) {
        emit conversionSkipped(src, outputFileName(src, int(format)));
        return; // Skip: the old file stays and nothing is drawn for it
    }
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

    if (batchLanes)
        batchLanes->run(std::move(lane), dest,
                        [this, job = std::move(job), dest, bounds, format]() mutable {
                            drawAndWrite(*this, job, dest, bounds, format);
                        });
    else
        drawAndWrite(*this, job, dest, bounds, format);
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

QStringList Controller::folderImages(const QString& anyPath) const {
    QStringList files;
    QString current = anyPath;
    if (findFirstWMF(current)) {
        files.append(current);
        while (findWMF(kStepNext, current))
            files.append(current);
    }
    return files;
}

void Controller::convertFiles(const QStringList& files, const std::function<long()>& formatNow) {
    // A batch makes and frees pictures of tens of megabytes by the dozen, on several threads.
    // glibc would serve those below its sliding mmap threshold (up to 32 MB) from per-thread
    // heaps that keep them after they are freed; with the threshold fixed at 1 MB every picture
    // is mapped on its own and goes back to the system when freed.
    static std::once_flag mapLargeBlocks;
    std::call_once(mapLargeBlocks, [] { mallopt(M_MMAP_THRESHOLD, 1 << 20); });

    // A file's share of the batch's memory depends on the format it is written in: the one
    // chosen when it is read.
    const auto estimate = [&formatNow](const QString& path) {
        return BatchMemory::estimate(path, rasterSubtype(int(formatNow())), lastFileAsDecoded);
    };
    BatchLanes lanes(
        files, [this](const QString& path) { return readSource(*this, path, lastFileAsDecoded); },
        BatchLanes::idealLaneCount(), estimate);
    batchLanes = &lanes;
    const int count = int(files.size());
    for (int pos = 1; pos <= count && !thread_exit; ++pos) {
        onGuiThread([this, pos] {
            if (!itsConvertIndicator)
                return;
            itsConvertIndicator->setValue(pos);
            itsConvertIndicator->repaint();
        });
        emit batchFileStarted(files.at(pos - 1), pos);
        saveImage(files.at(pos - 1), formatNow());
    }
    // Every file started is written before the batch returns; none further starts.
    lanes.drain();
    batchLanes = nullptr;
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
