// The single and the batch conversion: one routine per file (saveImage) settles the output
// path, checks the source and hands it to the raster, PDF or EPS writer. "Convert All" walks
// the source's folder on a worker thread; the worker reads and updates the controls only
// through blocking posts to the GUI thread, so every step happens in order.

#include "app/Controller.h"
#include "app/GuiThread.h"
#include "app/TextNumbers.h"
#include "browse/FolderIndex.h"
#include "export/BatchHook.h"
#include "export/FormatTable.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>

#include <functional>
#include <future>
#include <system_error>
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
        QFile file(dest);
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
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
    saveImage(QString(), format);
}

void Controller::saveImage(const QString& source, long format) {
    if (format < 0 || format >= kFormatCount)
        return;

    // The question and the empty output file come before anything else is looked at.
    const QString dest = findDestination(source, int(format), 0);

    QString src = source;
    if (src.isEmpty())
        src = onGuiThread([this] { return itsWmfView ? itsWmfView->wmfPath() : QString(); });
    if (!IsImageFile(src))
        return;
    // Skip: the old file stays and nothing is drawn for it.
    if (dest.isEmpty())
        return;

    const QRectF bounds = getImageBounds(src);

    if (format == kPdfFormat) {
        createPDFFile(src, dest, bounds);
        return;
    }
    if (format == kEpsFormat) {
        onGuiThread([&] { writeViewDocument(*this, src, dest, bounds, format); });
        return;
    }

    const auto [dpi, angle] = onGuiThread([this] {
        const float resolution =
            itsDpiCombo ? leadingFloatValue(itsDpiCombo->currentText()) : 72.0f;
        return std::pair<float, int32_t>(resolution, getRotation());
    });
    const float s = dpi / 72.0f;
    const QRectF q(0, 0, float(bounds.width()) * s, float(bounds.height()) * s);
    const QRectF r = rotatedRectBounds(q, float(angle));
    const QImage picture = createCGImage(src, r, q, int(format));
    if (picture.isNull())
        return;
    if (batchEncoder)
        batchEncoder->submit(
            dest, [this, picture, dest, format] { convertAndSave(picture, dest, int(format)); });
    else
        convertAndSave(picture, dest, int(format));
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

    if (findFirstWMF(current)) {
        QString probe = current;
        int count = 1;
        while (findWMF(kStepNext, probe))
            ++count;

        onGuiThread([this, count] {
            if (!itsConvertIndicator)
                return;
            itsConvertIndicator->setMaximum(count);
            itsConvertIndicator->setValue(0);
            itsConvertIndicator->setVisible(true);
        });

        int pos = 1;
        while (!thread_exit) {
            onGuiThread([this, pos] {
                if (!itsConvertIndicator)
                    return;
                itsConvertIndicator->setValue(pos);
                itsConvertIndicator->repaint();
            });
            if (batchFileHook)
                batchFileHook();

            // Read now: a change of format during the batch applies from this file on.
            const long format = onGuiThread([this] {
                return itsFormatCombo ? getRealExportIndex(itsFormatCombo->currentText()) : -1L;
            });
            saveImage(current, format);

            if (!findWMF(kStepNext, current))
                break;
            ++pos;
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
