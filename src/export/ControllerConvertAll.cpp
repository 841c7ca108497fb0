// "Convert All": the source's folder converted on a worker thread, the button turned into
// "Stop" meanwhile. The worker reads and updates the controls only through blocking posts to
// the GUI thread, so every step happens in order.

#include "app/Controller.h"
#include "app/GuiThread.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QThread>

namespace {

const QString& stopTitle() {
    static const QString title = QObject::tr("Stop");
    return title;
}

const QString& convertAllTitle() {
    static const QString title = QObject::tr("Convert All");
    return title;
}

} // namespace

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

    // The images of the folder as it is now, in folder order: outputs written into the same
    // folder during the batch are never among them.
    const QStringList files = folderImages(current);

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
        convertFiles(files, [this] {
            // Read now: a change of format during the batch applies from this file on.
            return onGuiThread([this] {
                return itsFormatCombo ? getRealExportIndex(itsFormatCombo->currentText()) : -1L;
            });
        });

        onGuiThread([this] {
            if (!itsConvertIndicator)
                return;
            itsConvertIndicator->setVisible(false);
            itsConvertIndicator->setValue(0);
        });
    }

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
