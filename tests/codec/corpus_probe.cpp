// Runs the user's flows on one file, in a process of its own under a memory limit:
//   corpus_probe FILE SCRATCH_FOLDER MEMORY_MB
// It opens the file in the view, measures it and converts it to every format the format list
// offers, printing one line a step. A crash, an abort or a hang of this process is the
// program's failure on that file; so is an exception that reaches the probe, which it reports
// as a line starting with "ESCAPED" before going on.

#include "app/Controller.h"
#include "codec/MagickSupport.h"
#include "export/FormatTable.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sys/resource.h>
#include <typeinfo>

namespace {

bool escaped = false;

void say(const QString& line) {
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

// Runs one step, announcing it first so that a crash names the step it happened in.
template <class F> void step(const QString& name, F&& run) {
    say("step " + name);
    QElapsedTimer clock;
    clock.start();
    QString outcome;
    try {
        outcome = run();
    } catch (const std::exception& e) {
        escaped = true;
        outcome = QString("ESCAPED %1 (%2)")
                      .arg(QString::fromLocal8Bit(e.what()), QString::fromLatin1(typeid(e).name()));
    } catch (...) {
        escaped = true;
        outcome = "ESCAPED an exception of unknown type";
    }
    say(QString("%1: %2 [%3 ms]").arg(name, outcome).arg(clock.elapsed()));
    // Let the view paint what it was given and any posted work run.
    QCoreApplication::processEvents();
}

// Answers every modal box at once, so that nothing waits for a user: the first button of a
// message box (OK on an alert; Yes, which must not be needed, on a question) or a rejection.
void closeModalBoxes() {
    auto* timer = new QTimer(qApp);
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, timer, [] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal->property("probeClosed").toBool())
            return;
        modal->setProperty("probeClosed", true);
        if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            say(QString("alert: %1: %2").arg(box->windowTitle(), box->text()));
            const QList<QAbstractButton*> buttons = box->buttons();
            if (!buttons.isEmpty()) {
                buttons.first()->click();
                return;
            }
        } else {
            say(QString("alert: a %1").arg(modal->metaObject()->className()));
        }
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->reject();
        else
            modal->close();
    });
    timer->start();
}

QString sizeText(QSizeF s) {
    return QString("%1x%2").arg(s.width()).arg(s.height());
}

// The files of the output folder and their sizes.
QMap<QString, qint64> outputs(const QString& folder) {
    QMap<QString, qint64> files;
    for (const QFileInfo& info : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden))
        files.insert(info.fileName(), info.size());
    return files;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s FILE SCRATCH_FOLDER MEMORY_MB\n", argv[0]);
        return 2;
    }
    const QString file = QString::fromLocal8Bit(argv[1]);
    const QString scratch = QString::fromLocal8Bit(argv[2]);
    const rlim_t megabytes = std::strtoul(argv[3], nullptr, 10);

    // The limit comes first, before any library has reserved anything; no core files.
    const rlimit memory{megabytes << 20, megabytes << 20};
    const rlimit core{0, 0};
    if (setrlimit(RLIMIT_AS, &memory) != 0 || setrlimit(RLIMIT_CORE, &core) != 0) {
        std::perror("setrlimit");
        return 2;
    }

    const QString home = scratch + "/home";
    const QString out = scratch + "/out";
    QDir().mkpath(home);
    QDir().mkpath(out);
    qputenv("HOME", QFile::encodeName(home));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home));
    QFile::setPermissions(home,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qunsetenv("XDG_CONFIG_HOME");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    Q_INIT_RESOURCE(resources); // the resources live in the static core library
    QApplication app(argc, argv);
    ensureMagickInitialised(); // as the program does at launch
    closeModalBoxes();

    say("file " + file);
    Controller controller;
    controller.skipSplash = true;
    controller.decodeAheadEnabled = false; // one file per probe: its neighbours are probed alone
    controller.loadMainWindow();
    controller.itsMainWindow->show();
    controller.itsDstFileName->setText(out);

    bool opened = false;
    step("open", [&] {
        opened = controller.imageViewUpdate(file);
        return opened
                   ? QString("opened %1")
                         .arg(controller.itsSizeField ? controller.itsSizeField->text() : QString())
                   : QString("refused");
    });
    step("bounds", [&] {
        const QRectF bounds = controller.getImageBounds(file);
        return bounds.isEmpty() ? QString("empty") : sizeText(bounds.size());
    });

    QList<int> formats;
    for (int i = 0; i <= kLastRasterFormat; ++i)
        if (gformatExport[i])
            formats << i;
    formats << kPdfFormat << kEpsFormat;
    for (int format : formats) {
        step(QString("save %1").arg(QString::fromLatin1(gformats_ns[format]).trimmed()), [&] {
            const QMap<QString, qint64> before = outputs(out);
            controller.saveImage(file, format);
            QStringList written;
            const QMap<QString, qint64> after = outputs(out);
            for (auto it = after.cbegin(); it != after.cend(); ++it)
                if (!before.contains(it.key()) || before.value(it.key()) != it.value())
                    written << QString("%1 %2 bytes").arg(it.key()).arg(it.value());
            // Outputs can be large; only their sizes matter here.
            for (auto it = after.cbegin(); it != after.cend(); ++it)
                QFile::remove(out + '/' + it.key());
            return written.isEmpty() ? QString("nothing written") : written.join(", ");
        });
    }

    say(QString("done %1%2").arg(opened ? "opened" : "refused", escaped ? " escaped" : ""));
    return 0;
}
