#include "app/Controller.h"
#include "app/DesktopDialogs.h"

#include "browse/FolderIndex.h"
#include "browse/ImageFileTest.h"
#include "browse/ImageWalk.h"
#include "view/wmfImageView.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

// How the current source changes: the open and destination panels, the two source-setting
// operations every path into the program goes through, and previous/next stepping over the
// image files of the source's folder.

namespace {

void setEnabled(QPushButton* button, bool on) {
    if (button)
        button->setEnabled(on);
}

// The folder a panel opens in: the one holding `path`, or the home folder when there is none.
QString startFolderFor(const QString& path) {
    if (path.isEmpty())
        return QDir::homePath();
    const QString folder = QFileInfo(path).path();
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

QString readableTypeName(const std::exception& e) {
    const char* mangled = typeid(e).name();
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    return QString::fromUtf8(status == 0 && demangled ? demangled.get() : mangled);
}

// A panel lives as long as it is shown: it reports to `done` once, then goes away.
template <class Done> void showPanel(QFileDialog* panel, Done done) {
    panel->setAttribute(Qt::WA_DeleteOnClose, false);
    panel->setWindowModality(Qt::WindowModal);
    QObject::connect(panel, &QDialog::finished, panel, [panel, done](int result) {
        done(panel, result);
        panel->deleteLater();
    });
    panel->open();
}

} // namespace

void Controller::openImage(QObject*) {
    const QString source = itsSrcFileName ? itsSrcFileName->text() : QString();
    QStringList patterns;
    for (const QString& type : imageFileTypes().all())
        patterns.append(QStringLiteral("*.") + type);
    auto* panel = new QFileDialog(itsMainWindow, tr("Select Image File"), startFolderFor(source),
                                  tr("Images (%1)").arg(patterns.join(u' ')));
    panel->setObjectName(QStringLiteral("openImagePanel"));
    panel->setOption(QFileDialog::DontUseNativeDialog, useWidgetDialogs());
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setAcceptMode(QFileDialog::AcceptOpen);
    // The readable types are listed in both letter cases and matched exactly, as navigation does.
    panel->setFilter(panel->filter() | QDir::CaseSensitive);
    showPanel(panel,
              [this](QFileDialog* p, int result) { openImagePanelDidEnd(p, result, nullptr); });
}

void Controller::openImagePanelDidEnd(QFileDialog* panel, int returnCode, void*) {
    if (!panel || returnCode != QDialog::Accepted)
        return;
    const QStringList chosen = panel->selectedFiles();
    if (chosen.isEmpty())
        return;
    savedLoaction = QString(QLatin1String(""));
    setSourceFileName(chosen.first(), true);
    setEnabled(itsPrev, true);
    setEnabled(itsNext, true);
}

void Controller::selectDst(QObject*) {
    const QString destination = itsDstFileName ? itsDstFileName->text() : QString();
    auto* panel = new QFileDialog(itsMainWindow, tr("Select Destination"),
                                  destination.isEmpty() ? QDir::homePath() : destination);
    panel->setObjectName(QStringLiteral("selectDstPanel"));
    panel->setOption(QFileDialog::DontUseNativeDialog, useWidgetDialogs());
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setOption(QFileDialog::ReadOnly, false); // the user may create a folder here
    panel->setAcceptMode(QFileDialog::AcceptOpen);
    panel->setLabelText(QFileDialog::Accept, tr("Choose"));
    showPanel(panel,
              [this](QFileDialog* p, int result) { selectDstPanelDidEnd(p, result, nullptr); });
}

void Controller::selectDstPanelDidEnd(QFileDialog* panel, int returnCode, void*) {
    if (!panel || returnCode != QDialog::Accepted)
        return;
    const QStringList chosen = panel->selectedFiles();
    if (chosen.isEmpty() || !itsDstFileName)
        return;
    itsDstFileName->setText(chosen.first());
}

void Controller::setSourceFileName(const QString& path, bool listUpdate) {
    // The title names the file before it is loaded, so a file that fails still names it.
    if (itsMainWindow)
        itsMainWindow->setWindowTitle(tr("Ormidon: ") +
                                      (path.isEmpty() ? QString() : QFileInfo(path).fileName()));

    const QString previous = itsSrcFileName ? itsSrcFileName->text() : QString();
    focusImageView();
    if (imageViewUpdate(path)) {
        setEnabled(itsPrev, true);
        setEnabled(itsNext, true);
        setEnabled(itsConvert, true);
        setEnabled(itsConvertAll, true);
        savedLoaction = previous;
        setSourceLocationName(path, listUpdate);
        return;
    }

    if (!previous.isEmpty())
        savedLoaction = previous;
    setSourceLocationName(QString(), true);
    // Nothing of the previous picture may stay on screen: the view draws the controller's
    // raster, so that goes too.
    itsCGImage = QImage();
    if (itsWmfView) {
        itsWmfView->clear();
        itsWmfView->setImage(QImage());
    }
    if (itsSizeField)
        itsSizeField->setText(QString());
    setEnabled(itsConvert, false);
    setEnabled(itsConvertAll, false);
}

void Controller::setSourceLocationName(const QString& path, bool listUpdate) {
    if (itsSrcFileName)
        itsSrcFileName->setText(path);
    if (!listUpdate)
        return;
    if (itsBatch && itsBatch->isChecked()) {
        threadFillImageList();
        return;
    }
    try {
        clearImageList();
        addImageView(itsSrcFileName ? itsSrcFileName->text() : path);
    } catch (const std::exception& e) {
        QMessageBox alert(QMessageBox::Warning, readableTypeName(e), QString::fromUtf8(e.what()),
                          QMessageBox::Ok, itsMainWindow);
        alert.button(QMessageBox::Ok)->setText(tr("OK"));
        alert.exec();
    }
}

void Controller::setSourceFolderName(const QString& folder) {
    setSourceLocationName(folder, true);
    itsCGImage = QImage();
    if (itsWmfView) {
        itsWmfView->setImage(QImage());
        itsWmfView->update();
    }
    selectWMF(kStepFirst);
}

void Controller::selectWMF(int32_t step) {
    QString path = itsSrcFileName ? itsSrcFileName->text() : QString();
    if (findWMF(step, path))
        setSourceFileName(path, false); // stepping leaves the thumbnail list as it is
    else
        QApplication::beep();
}

bool Controller::findWMF(int32_t step, QString& file) const {
    return findImageFile(step, file, imageFileTypes());
}

bool Controller::findFirstWMF(QString& file) const {
    return findFirstImageFile(file, imageFileTypes());
}

bool Controller::IsImageFile(const QString& path) const {
    if (path.isEmpty())
        return false;
    return ::IsImageFile(path, imageFileTypes());
}
