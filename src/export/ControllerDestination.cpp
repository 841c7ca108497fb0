// Output naming, the overwrite question and the destination folder.

#include "app/Controller.h"
#include "app/GuiThread.h"
#include "codec/SafeReplace.h"
#include "export/FormatTable.h"
#include "view/wmfImageView.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace {

// The last path component without its last extension: a.b.wmf gives a.b, notes stays notes,
// and a leading dot (.hidden) is part of the name, not an extension.
QString baseName(const QString& source) {
    QString path = source;
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > 0)
        name.truncate(dot);
    return name;
}

} // namespace

QString outputFileName(const QString& source, int index) {
    return baseName(source) + QLatin1Char('.') + outputExtension(index);
}

namespace {

// `folder` joined with `name` by one slash; an empty folder gives the name alone.
QString appendComponent(const QString& folder, const QString& name) {
    if (folder.isEmpty())
        return name;
    if (folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder + QLatin1Char('/') + name;
}

// Asks whether to replace what is at the output path; true only for "Yes". Closing the
// question any other way keeps the old file.
bool askReplace(QWidget* parent, const QString& name) {
    QMessageBox box(parent);
    box.setWindowTitle(QObject::tr("Ormidon"));
    box.setIcon(QMessageBox::Warning);
    box.setText(QObject::tr("The file %1 already exists. Do you want to replace it?").arg(name));
    // One role for both keeps them in the order they were added, whatever the desktop's
    // button order; Escape and closing the box mean Skip.
    QPushButton* yes = box.addButton(QObject::tr("Yes"), QMessageBox::ActionRole);
    QPushButton* skip = box.addButton(QObject::tr("Skip"), QMessageBox::ActionRole);
    box.setDefaultButton(skip);
    box.setEscapeButton(skip);
    box.exec();
    return box.clickedButton() == yes;
}

} // namespace

long Controller::getRealExportIndex(const QString& value) const {
    return formatIndexForCode(value);
}

namespace {

// The empty file the writers expect. Made only where nothing is: an old file that could not be
// moved aside is never emptied here (the writers replace it whole). False when something is.
bool makeEmptyOutput(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    file.close();
    return true;
}

} // namespace

QString Controller::outputPath(const QString& source, int format) const {
    QString src = source;
    if (src.isEmpty() && itsWmfView)
        src = itsWmfView->wmfPath();
    const QString folder = unattended       ? unattended->destFolder
                           : itsDstFileName ? itsDstFileName->text()
                                            : QString();
    return appendComponent(folder, outputFileName(src, format));
}

QString Controller::findDestination(const QString& source, int format, int /*index*/) {
    // The field's text and the question belong to the GUI thread; the batch thread waits here
    // for the answer, so questions come one at a time and in the order of the files.
    return onGuiThread([&]() -> QString {
        const QString path = outputPath(source, format);
        const QFileInfo existing(path);
        if (existing.exists() || existing.isSymLink()) {
            const QString name = existing.fileName();
            const bool replace =
                unattended ? unattended->overwrite : askReplace(itsMainWindow, name);
            if (!replace)
                return QString();
            // Replaced, not destroyed: what is there (a folder with its contents, a file, a
            // link) waits under a hidden name until the new file is complete, and comes back
            // if none can be written.
            SafeReplace::setAside(path);
        }
        makeEmptyOutput(path);
        return path;
    });
}

QString Controller::claimFreeDestination(const QString& source, int format) {
    return onGuiThread([&]() -> QString {
        const QString path = outputPath(source, format);
        return makeEmptyOutput(path) ? path : QString();
    });
}

void Controller::checkDestination() {
    if (!itsDstFileName)
        return;
    const QString text = itsDstFileName->text();

    if (text.isEmpty()) {
        QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        if (desktop.isEmpty())
            desktop = QDir::homePath() + QStringLiteral("/Desktop");
        itsDstFileName->setText(desktop);
    }

    // Walk the text read on entry: a field that was just filled is settled on the next call.
    // Each missing prefix is created in order; a prefix that is a file makes mkdir fail and is
    // left as it is.
    QString prefix;
    const QStringList parts = text.split(QLatin1Char('/'));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString& part = parts.at(i);
        if (i == 0 && part.isEmpty()) {
            prefix = QStringLiteral("/");
            continue;
        }
        if (part.isEmpty())
            continue;
        prefix = appendComponent(prefix, part);
        if (!QFileInfo(prefix).isDir())
            QDir().mkdir(prefix);
    }
}
