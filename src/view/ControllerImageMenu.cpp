// The Image menu: quarter turns and flips of the current picture. A JPEG file is rewritten
// losslessly (after the user agreed once in the session); any other picture turns on screen
// through the angle control, its file untouched.
#include "app/BusyWork.h"
#include "app/Controller.h"
#include "codec/JpegTransform.h"
#include "thumbs/ThumbnailCache.h"
#include "thumbs/listImageViewItem.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>

namespace {

// An angle as the slider holds it: in (-180, 180].
int normalisedAngle(int degrees) {
    int angle = ((degrees % 360) + 360) % 360;
    return angle > 180 ? angle - 360 : angle;
}

bool isRotation(JpegTurn turn) {
    return turn == JpegTurn::RotateLeft || turn == JpegTurn::RotateRight;
}

// Asks a question with the action's own button and Cancel; whether the action was chosen.
bool ask(QWidget* window, const char* objectName, const QString& text, const QString& informative,
         const QString& action) {
    QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), text,
                    QMessageBox::NoButton, window);
    box.setObjectName(QLatin1String(objectName));
    box.setInformativeText(informative);
    QPushButton* go = box.addButton(action, QMessageBox::AcceptRole);
    QPushButton* cancel = box.addButton(Controller::tr("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(go);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

// A picture's thumbnails are made anew from the rewritten file: the cache's stamp counts whole
// seconds, and a turn within the second of the last change would otherwise find the old one.
void forgetThumbnails(const QString& path) {
    const ThumbnailCache::Source source = ThumbnailCache::describe(path);
    if (!source.valid)
        return;
    for (auto flavour : {ThumbnailCache::Flavour::Normal, ThumbnailCache::Flavour::Large})
        QFile::remove(ThumbnailCache::entryPath(source, flavour));
    QFile::remove(ThumbnailCache::failurePath(source));
}

// What a trim drops, as the question names it.
QString trimmedEdgeText(const JpegTransform::Result& result) {
    const int columns = result.trimmedColumns, rows = result.trimmedRows;
    if (columns > 0 && rows > 0)
        return Controller::tr("the last %1 pixel columns and %2 pixel rows").arg(columns).arg(rows);
    if (columns == 1)
        return Controller::tr("the last pixel column");
    if (columns > 1)
        return Controller::tr("the last %1 pixel columns").arg(columns);
    if (rows == 1)
        return Controller::tr("the last pixel row");
    return Controller::tr("the last %1 pixel rows").arg(rows);
}

// Why a file was not turned, for the alert.
QString failureReason(JpegTransform::Outcome outcome) {
    switch (outcome) {
    case JpegTransform::Outcome::ReadOnly:
        return Controller::tr("The file or its folder cannot be written.");
    case JpegTransform::Outcome::WriteFailed:
        return Controller::tr("The new file could not be written (is the disk full?).");
    case JpegTransform::Outcome::TooLarge:
        return Controller::tr("The picture is larger than Ormidon can handle.");
    case JpegTransform::Outcome::Unreadable:
        return Controller::tr("The file cannot be read.");
    default:
        return Controller::tr(
            "The file is damaged or is not a JPEG that can be turned losslessly.");
    }
}

} // namespace

void Controller::addImageMenu(QMenuBar* menuBar) {
    QMenu* menu = menuBar->addMenu(tr("&Image"));
    menu->setObjectName(QStringLiteral("imageMenu"));
    auto item = [this, menu](const QString& text, const char* name, JpegTurn turn) {
        QAction* action = menu->addAction(text);
        action->setObjectName(QLatin1String(name));
        connect(action, &QAction::triggered, this, [this, turn] { turnPicture(turn); });
        return action;
    };
    itsMenuItemRotateLeft = item(tr("Rotate &Left"), "itsMenuItemRotateLeft", JpegTurn::RotateLeft);
    itsMenuItemRotateLeft->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    itsMenuItemRotateRight =
        item(tr("Rotate &Right"), "itsMenuItemRotateRight", JpegTurn::RotateRight);
    itsMenuItemRotateRight->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    menu->addSeparator();
    itsMenuItemFlipHorizontal =
        item(tr("Flip &Horizontal"), "itsMenuItemFlipHorizontal", JpegTurn::FlipHorizontal);
    itsMenuItemFlipVertical =
        item(tr("Flip &Vertical"), "itsMenuItemFlipVertical", JpegTurn::FlipVertical);
    connect(menu, &QMenu::aboutToShow, this, &Controller::validateMenuItems);
    if (itsWmfView)
        connect(itsWmfView, &wmfImageView::pictureChanged, this, &Controller::updateImageMenu);
    updateImageMenu();
}

bool Controller::isImageMenuItem(const QAction* item) const {
    return item && (item == itsMenuItemRotateLeft || item == itsMenuItemRotateRight ||
                    item == itsMenuItemFlipHorizontal || item == itsMenuItemFlipVertical);
}

bool Controller::imageMenuItemEnabled(const QAction* item) const {
    // Rotations work on every picture; a flip only on a JPEG, whose file it rewrites (the angle
    // control turns, it does not mirror).
    if (item == itsMenuItemRotateLeft || item == itsMenuItemRotateRight)
        return !itsCGImage.isNull();
    return !itsCGImage.isNull() && shownIsJpeg;
}

void Controller::updateImageMenu() {
    const QString path = itsWmfView ? itsWmfView->wmfPath() : QString();
    shownIsJpeg = !path.isEmpty() && JpegTransform::isJpegFile(path);
    for (QAction* item : {itsMenuItemRotateLeft.data(), itsMenuItemRotateRight.data(),
                          itsMenuItemFlipHorizontal.data(), itsMenuItemFlipVertical.data()})
        if (item)
            item->setEnabled(imageMenuItemEnabled(item));
}

void Controller::turnPicture(JpegTurn turn) {
    const QString path = itsWmfView ? itsWmfView->wmfPath() : QString();
    if (itsCGImage.isNull() || path.isEmpty()) {
        QApplication::beep();
        return;
    }
    if (!JpegTransform::isJpegFile(path)) {
        if (!isRotation(turn)) {
            QApplication::beep();
            return;
        }
        const int angle = normalisedAngle(m_rotate + (turn == JpegTurn::RotateRight ? 90 : -90));
        if (itsRotateSlider)
            itsRotateSlider->setValue(angle);
        m_rotate = angle; // also when the slider was already there and a typed angle differed
        if (itsRotateText)
            itsRotateText->setText(QString::number(angle));
        if (itsWmfView)
            itsWmfView->update();
        if (wmfImageView* active = activeImageView())
            active->update();
        return;
    }

    QWidget* window = itsMainWindow;
    if (!jpegTurnsConfirmed) {
        const bool rotation = isRotation(turn);
        if (!ask(window, "jpegTurnQuestion",
                 rotation ? tr("Rotate the JPEG file itself? This rewrites the file losslessly.")
                          : tr("Flip the JPEG file itself? This rewrites the file losslessly."),
                 tr("The picture keeps its full quality and its camera data; the file on disk "
                    "changes."),
                 rotation ? tr("Rotate") : tr("Flip")))
            return;
        jpegTurnsConfirmed = true;
    }

    JpegTransform::Result result;
    runWhileBusy(window, [&] { result = JpegTransform::turnFile(path, turn, false); });
    if (result.outcome == JpegTransform::Outcome::NeedsTrim) {
        const QString lost = trimmedEdgeText(result);
        if (!ask(window, "jpegTrimQuestion",
                 tr("This picture cannot be turned losslessly without losing %1.").arg(lost),
                 tr("JPEG stores pictures in blocks of 8 or 16 pixels; the partial blocks at this "
                    "picture's edge cannot move to the opposite edge. The rest stays untouched."),
                 tr("Trim and Turn")))
            return;
        runWhileBusy(window, [&] { result = JpegTransform::turnFile(path, turn, true); });
    }

    if (!result.ok()) {
        const QString reason = failureReason(result.outcome);
        QMessageBox alert(QMessageBox::Warning, QApplication::applicationDisplayName(),
                          tr("“%1” was not turned.").arg(QFileInfo(path).fileName()),
                          QMessageBox::Ok, window);
        alert.setObjectName(QStringLiteral("jpegTurnFailed"));
        alert.button(QMessageBox::Ok)->setText(tr("OK"));
        alert.setInformativeText(reason + u' ' + tr("The file is unchanged."));
        alert.exec();
        return;
    }

    forgetThumbnails(path);
    imageViewUpdate(path);
    if (itsImageListView)
        for (listImageViewItem* cell : itsImageListView->cells())
            if (cell->mFilename == path)
                cell->setImagePath(path);
}
