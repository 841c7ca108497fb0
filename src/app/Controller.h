#pragma once

// The application object: owner of the main window and its controls, target of every button,
// combo box and menu command. The class is declared here once; its member functions live in
// the folder of the subsystem they belong to (app/, browse/, view/, export/, thumbs/, about/).

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "app/TPref.h"
#include "files/FreedesktopTrash.h"   // TrashedFile, for the undo list
#include "thumbs/ScrollNSImageView.h" // the outlet itsImageListView is used through QPointer
#include "view/Rect.h"

class QAction;
class QCheckBox;
class QComboBox;
class QDockWidget;
class QFileDialog;
class QLabel;
class QMenu;
class QMenuBar;
class QLineEdit;
class QMainWindow;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QSlider;
class QTabWidget;
class QTextBrowser;
class QThread;
class QThreadPool;
class QTimer;
class QWidget;

class GuiInboxBase;
class FullScreenWindow;
class InformationPanel;
class PrefDrawer;
class QSpinBox;
class wmfImageView;
class DecodeAhead;
struct DecodedImage;
enum class JpegTurn;

// Stop flags shared with the background jobs: the batch conversion and the thumbnail walk.
extern std::atomic<bool> thread_exit;
extern std::atomic<bool> image_thread_exit;

class Controller : public QObject {
    Q_OBJECT
public:
    explicit Controller(QObject* parent = nullptr);
    ~Controller() override;

    // ---------------------------------------------------------------- fields (declaration order)
    TPref itsPref;
    QImage itsCGImage;     // the current raster; null when no picture is shown
    QString savedLoaction; // the source shown before the latest change of source
    Rect itsImgBounds{0, 0, 0, 0};
    QPointer<QWidget> itsAboutWindow;
    QPointer<QMainWindow> itsMainWindow;
    QPointer<wmfImageView> itsWmfView;
    QPointer<QLineEdit> itsSrcFileName;
    QPointer<QLineEdit> itsDstFileName;
    QPointer<QCheckBox> itsBatch;
    QPointer<QCheckBox> itsStripMetadata; // outputs leave out EXIF, XMP and IPTC
    QPointer<QPushButton> itsPrev;
    QPointer<QPushButton> itsNext;
    QPointer<QPushButton> itsConvert;
    QPointer<QPushButton> itsConvertAll;
    QPointer<QComboBox> itsDpiCombo;
    QPointer<QComboBox> itsFormatCombo;
    QPointer<PrefDrawer> itsPrefDrawer;
    QPointer<QSlider> itsRotateSlider;
    QPointer<QLineEdit> itsRotateText;
    QPointer<QLineEdit> itsSizeField;
    int32_t m_rotate = 0;
    bool m_Monochrome = false;
    QPointer<QAction> itsMenuItemConvAll;
    QPointer<QProgressBar> itsConvertIndicator;
    QPointer<QTextBrowser> advTextView;
    QPointer<QScrollArea> advScrollView;
    QPointer<QTimer> scrollingTimer;
    QPointer<ScrollNSImageView> itsImageListView; // the thumbnail grid of the "Image List" tab
    QPointer<QProgressBar> itsImageProgress;
    QPointer<QTabWidget> _tabView;

    // Controls the window builder creates beside the outlets above.
    QPointer<QPushButton> itsOpenButton;
    QPointer<QPushButton> itsDstButton;
    QPointer<QAction> itsMenuItemOpen;
    QPointer<QAction> itsMenuItemConvert;
    QPointer<QAction> itsMenuItemMonochrome;
    QPointer<QAction> itsMenuItemPref;
    // Zoom: the View menu's items and the zoom shown beside the size field.
    QPointer<QAction> itsMenuItemZoomIn;
    QPointer<QAction> itsMenuItemZoomOut;
    QPointer<QAction> itsMenuItemActualSize;
    QPointer<QAction> itsMenuItemFit;
    QPointer<QLabel> itsZoomField;
    // Full screen and slideshow: the View menu's items, the drawer's seconds per picture, and
    // the full-screen window while it is shown.
    QPointer<QAction> itsMenuItemFullScreen;
    QPointer<QAction> itsMenuItemSlideshow;
    QPointer<QSpinBox> itsSlideSeconds;
    QPointer<FullScreenWindow> itsFullScreen;
    // The Image menu: quarter turns and flips, lossless in the file for a JPEG.
    QPointer<QAction> itsMenuItemRotateLeft;
    QPointer<QAction> itsMenuItemRotateRight;
    QPointer<QAction> itsMenuItemFlipHorizontal;
    QPointer<QAction> itsMenuItemFlipVertical;
    bool jpegTurnsConfirmed = false; // the user agreed to JPEG files being rewritten, this session
    // Information: the View menu's item and the side panel it shows.
    QPointer<QAction> itsMenuItemInformation;
    QPointer<QDockWidget> itsInformationDock;
    QPointer<InformationPanel> itsInformationPanel;

    // ---------------------------------------------------------------- app/: start-up, shutdown
    void loadMainWindow(); // builds the window and its controls, then awakeFromNib()
    void awakeFromNib();
    void applicationWillFinishLaunching();
    bool application(QObject* app, const QString& openFile); // a file handed over by the system
    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    void closeController();
    QMainWindow* window() const;
    QWidget* frontWindow() const; // the full-screen window while it is shown, else window()
    const QImage& getCGImage() const { return itsCGImage; }

    // ---------------------------------------------------------------- app/: controls and menus
    void smthChanged(QObject* sender);
    void showPref(QObject* sender);
    bool validateMenuItem(QAction* item);
    void validateMenuItems(); // runs validateMenuItem over every menu item, before a menu shows

    // ---------------------------------------------------------------- app/: preferences file
    static QString prefFilePath();
    bool readPrefFile();
    void writePrefFile();

    // ---------------------------------------------------------------- browse/: source selection
    void openImage(QObject* sender);
    void openImagePanelDidEnd(QFileDialog* panel, int returnCode, void* contextInfo);
    void selectDst(QObject* sender);
    void selectDstPanelDidEnd(QFileDialog* panel, int returnCode, void* contextInfo);
    void setSourceFileName(const QString& path, bool listUpdate);
    void setSourceLocationName(const QString& path, bool listUpdate);
    void setSourceFolderName(const QString& folder);
    void selectWMF(int32_t step);
    bool findWMF(int32_t step, QString& file) const;
    bool findFirstWMF(QString& file) const;
    bool IsImageFile(const QString& path) const;

    // ---------------------------------------------------------------- view/: loading, rotation
    bool imageViewUpdate(const QString& path);
    QRectF getImageBounds(const QString& path) const;
    int32_t getRotation() const { return m_rotate; }
    bool getPictRect(Rect* rect) const;
    void slideRotate(QObject* sender);
    void controlTextDidEndEditing(QObject* object);
    void monohrome(QObject* sender);
    void focusImageView(); // the main view takes the keyboard for the arrow keys
    // ---------------------------------------------------------------- view/: zoom
    void addZoomItems(QMenu* viewMenu);    // Zoom In, Zoom Out, Actual Size, Fit, and their keys
    void showZoom();                       // the zoom field follows the main view
    wmfImageView* activeImageView() const; // the full-screen view while shown, else the main one
    // ---------------------------------------------------------------- app/: full screen
    void addFullScreenItems(QMenu* viewMenu);
    void fullScreen(QObject* sender); // toggles
    void slideshow(QObject* sender);  // full screen, stepping every itsSlideSeconds seconds
    // ---------------------------------------------------------------- view/: the Image menu
    void addImageMenu(QMenuBar* menuBar); // Rotate Left/Right, Flip Horizontal/Vertical
    void turnPicture(JpegTurn turn);      // the JPEG file losslessly, any other picture on screen
    bool isImageMenuItem(const QAction* item) const;
    bool imageMenuItemEnabled(const QAction* item) const;
    void updateImageMenu();   // on every new picture: whether it is a JPEG, and the items' state
    bool shownIsJpeg = false; // the shown picture's file is a JPEG (by its content)

    // ---------------------------------------------------------------- files/: file actions
    // On the current picture: copy to the clipboard, show in the file manager, rename, move to
    // the trash, and undo the moves to the trash made while the program runs.
    void addFileActions(QMenu* fileMenu); // its items, and an Edit menu after the File menu
    void copyImage(QObject* sender);
    void showContainingFolder(QObject* sender);
    void renameImage(QObject* sender);
    void moveToTrash(QObject* sender);
    void undoMoveToTrash(QObject* sender);
    bool isFileActionItem(const QAction* item) const;
    bool fileActionEnabled(const QAction* item) const; // a picture shown; undo: one to undo
    void updateFileActions();
    QPointer<QAction> itsMenuItemCopy;
    QPointer<QAction> itsMenuItemShowFolder;
    QPointer<QAction> itsMenuItemRename;
    QPointer<QAction> itsMenuItemTrash;
    QPointer<QAction> itsMenuItemUndoTrash;
    QList<TrashedFile> trashedFiles; // moved to the trash by this run, the latest last
    // ---------------------------------------------------------------- view/: decode-ahead
    // The picture to show at `path`: decoded ahead when it was, else decoded now; a scaled copy
    // made ahead for the view goes to the view.
    DecodedImage decodeForView(const QString& path);
    // Once the picture at `path` is shown, its neighbours are decoded in the background.
    void decodeAround(const QString& path);
    DecodeAhead* decodeAheadCache() const { return decodeAhead.get(); } // null before any step
    bool decodeAheadEnabled = true; // off: every step decodes its picture itself
    // ---------------------------------------------------------------- view/: information panel
    void addInformationItem(QMenu* viewMenu); // View > Information (Ctrl+I) and its dock
    void showInformation();                   // the panel follows the picture shown

    // ---------------------------------------------------------------- export/: naming
    long getRealExportIndex(const QString& value) const;
    QString findDestination(const QString& source, int format, int index);
    // The empty output file at the output path of `source` when nothing is there yet; an empty
    // string, with nothing asked or made, when something is.
    QString claimFreeDestination(const QString& source, int format);
    void checkDestination();

    // ---------------------------------------------------------------- export/: writers, flow
    QImage createCGImage(const QString& source, const QRectF& rect, const QRectF& r, int format);
    int16_t convertAndSave(const QImage& picture, const QString& destPath, int format);
    void createPDFFile(const QString& source, const QString& toFile, const QRectF& bounds);
    void createPDFFile(const char* utf8Path);
    void convert(QObject* sender);
    void convertAll(QObject* sender);
    static void convertAllThread(Controller* controller);
    void convertAllThread();
    void saveImage(const QString& source, long format);
    // The batch itself, on the calling thread: every file of `files` in order, in the format
    // `formatNow` gives as each starts, read ahead and written on the batch's lanes. Returns
    // once every file started is written; `thread_exit` stops it between files.
    void convertFiles(const QStringList& files, const std::function<long()>& formatNow);
    // The images of the folder that holds `anyPath`, in folder order.
    QStringList folderImages(const QString& anyPath) const;
    bool isBatchRunning() const;
    void waitForBatch();    // lets a running batch finish its file and stop (shutdown)
    void showOutOfMemory(); // the renderer's "Out of memory" alert, for a writer that ran out
    // Settles an output after its writer ran (see SafeReplace) and, when nothing new could be
    // written, tells the user without stopping anything: status line and batch summary.
    void finishOutput(const QString& destPath, const QString& reason);

    // ---------------------------------------------------------------- thumbs/: image list
    void threadFillImageList();
    static void fillImageListThread(Controller* controller, const QString& source, uint64_t walk);
    void fillImageListTable(const QString& source, uint64_t walk);
    void clearImageList();
    void addImageView(const QString& path);
    void tabViewDidSelectTabViewItem(QTabWidget* tabView, int index);
    void windowDidResize();
    void waitForImageList(); // stops the walk and lets it end (shutdown)

    // ---------------------------------------------------------------- about/
    void runAbout(QObject* sender);
    int16_t registerMyHelpBook(); // 0, or -43 when the help pages are missing
    void loadTextToScroll();
    void setScrollAmount(float amount);
    void startScrollingAnimation();
    void stopScrollingAnimation();

    // ---------------------------------------------------------------- about/: panel, links, help
    void changeTransparencyAbout(float alpha);
    QString textToScroll() const; // the shipped "links" document; empty when it is missing
    void scrollOneUnit();         // one tick of the links text's motion
    void displayHelp(QObject* sender);
    void visitSite(QObject* sender);
    void visitAd(QObject* sender);
    void visitSiteSupport(QObject* sender);

    // A conversion run without a window (the command line): the resolution, angle and
    // destination folder it uses instead of the controls, and the standing answer to the
    // overwrite question. Nothing is asked and no alert is shown while it is set.
    struct UnattendedConversion {
        float dpi = 72.0f;
        int degrees = 0;
        QString destFolder;
        bool overwrite = false;
        bool stripMetadata = false;
    };
    std::optional<UnattendedConversion> unattended;

    // Off by default; the test switch --no-splash and the test suites turn it on.
    bool skipSplash = false;

signals:
    // From the batch thread, at the start of each file, after the progress bar shows its
    // number and before it is converted.
    void batchFileStarted(const QString& path, int position);
    // From the batch thread: the output of `source` already existed and was kept.
    void conversionSkipped(const QString& source, const QString& destPath);
    // From the thread that wrote (or failed to write) `destPath`: nothing new is there.
    void conversionFailed(const QString& destPath, const QString& reason);

private:
    // Where the output of `source` in `format` goes: the destination folder (the field's text,
    // or the command line's) and the output's name. GUI thread.
    QString outputPath(const QString& source, int format) const;
    QThread* batchThread = nullptr;
    QThreadPool* imageWalkPool = nullptr;   // the image list's walk: one at a time
    GuiInboxBase* imageWalkInbox = nullptr; // the names it finds, on their way to this thread
    void updateImageProgress();             // spins while the list fills
    QStringList batchFailures; // GUI thread: outputs of the running batch that were not written
    std::shared_ptr<DecodeAhead> decodeAhead; // the neighbours of the picture shown
};
