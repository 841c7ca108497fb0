// Start-up and shutdown of the controller, in the order the application runs them.

#include "app/Controller.h"
#include "app/PrefDrawer.h"
#include "app/WindowFrame.h"
#include "export/FormatTable.h"
#include "codec/RasterWriters.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSlider>

namespace {

const QString kFrameName = QStringLiteral("Kestrane");

// The format list offers every table entry whose writer exists, plus PDF and EPS, in table
// order; the saved code is selected, or the first item when its writer is missing.
void fillFormatList(QComboBox* combo, const QString& savedCode) {
    int itemCount = 0;
    int selection = 0;
    for (int i = 0; i < kFormatCount; ++i) {
        gformatExport[i] = 0;
        if (isRasterFormat(i)) {
            if (!rasterWriterExists(rasterSubtype(i)))
                continue;
            gformatExport[i] = 1;
        }
        const QString code = QLatin1String(gformats_ns[i]);
        if (code == savedCode)
            selection = itemCount;
        if (combo) {
            ++itemCount;
            combo->addItem(code);
        }
    }
    if (combo)
        combo->setCurrentIndex(selection);
}

// The resolution list holds 72, 150, 300 and 600; any other value is shown as text.
void showResolution(QComboBox* combo, float dpi) {
    int index = -1;
    const float items[] = {72.0f, 150.0f, 300.0f, 600.0f};
    for (int i = 0; i < 4; ++i)
        if (dpi == items[i])
            index = i;
    combo->setCurrentIndex(index);
    if (index < 0)
        combo->setEditText(QString::asprintf("%.2f", dpi));
}

// First launch: 850 by 680 at the top left of the screen (where the window system lets the
// program choose), never smaller than 640 by 480.
void setDefaultFrame(QMainWindow* window) {
    setFirstFrame(window, 850, 680);
    window->setMinimumSize(640, 480);
}

} // namespace

void Controller::awakeFromNib() {
    savedLoaction = QString();
    m_rotate = 0;
    m_Monochrome = false;
    itsCGImage = QImage();

    readPrefFile();

    fillFormatList(itsFormatCombo, itsPref.exportFormat);
    if (itsDpiCombo)
        showResolution(itsDpiCombo, itsPref.dpi);

    if (itsPrefDrawer)
        itsPrefDrawer->open();

    if (itsPrev)
        itsPrev->setToolTip(tr("Choose Previous image"));
    if (itsNext)
        itsNext->setToolTip(tr("Choose Next image"));
    if (itsConvert)
        itsConvert->setToolTip(tr("Convert image"));
    if (itsConvertAll)
        itsConvertAll->setToolTip(tr("Convert All the images from current folder"));
    if (itsRotateSlider)
        itsRotateSlider->setToolTip(tr("Rotate Image"));
    if (itsRotateText)
        itsRotateText->setToolTip(tr("Set Up Rotation Angle"));

    // A restored frame keeps whatever size the user gave it; only a first launch gets the
    // minimum size.
    if (itsMainWindow && !restoreWindowFrame(itsMainWindow, kFrameName))
        setDefaultFrame(itsMainWindow);

    for (QPushButton* button : {itsPrev.data(), itsNext.data(), itsConvert.data(),
                                itsConvertAll.data()})
        if (button)
            button->setEnabled(false);

    if (itsConvertIndicator)
        itsConvertIndicator->setVisible(false);

    checkDestination();

    loadTextToScroll();
    setScrollAmount(0.0f);
    startScrollingAnimation();
}

void Controller::applicationWillFinishLaunching() {
    if (!skipSplash)
        runAbout(this);
}

bool Controller::application(QObject*, const QString& openFile) {
    if (!imageViewUpdate(openFile))
        return false;
    focusImageView();
    savedLoaction = itsSrcFileName ? itsSrcFileName->text() : QString();
    setSourceLocationName(openFile, true);
    return true;
}

void Controller::applicationDidFinishLaunching() {
    registerMyHelpBook();
    // A file handed over at launch stays the one shown; otherwise the image that was current
    // when the program last quit comes back.
    // A copy: setSourceFileName rewrites savedLoaction while it works.
    const QString launched = itsSrcFileName ? itsSrcFileName->text() : QString();
    const QString reopened = launched.isEmpty() ? savedLoaction : launched;
    setSourceFileName(reopened, true);
}

void Controller::applicationWillTerminate() {
    waitForBatch();
    if (itsMainWindow)
        saveWindowFrame(itsMainWindow, kFrameName);
    closeController();
}

void Controller::closeController() {
    writePrefFile();
    itsCGImage = QImage();
    stopScrollingAnimation();
}
