// The main window's interface: every control with its name, tag and action, laid out once.
// The controller's start-up (awakeFromNib) then gives the controls their initial state, and the
// controls are wired to their actions only after that, so that the initial values set by the
// start-up don't read as user actions.

#include "about/AboutPanel.h"
#include "about/FineScrollArea.h"
#include "about/LinkRunTextView.h"
#include "app/Controller.h"
#include "app/MenuShortcutPriority.h"
#include "app/PrefDrawer.h"
#include "thumbs/ImageListScrollArea.h"
#include "thumbs/ScrollNSImageView.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

template <class W> W* named(W* widget, const char* name, int tag = -1) {
    widget->setObjectName(QLatin1String(name));
    if (tag >= 0)
        widget->setProperty("tag", tag);
    return widget;
}

QLineEdit* readOnlyField(QWidget* parent, const char* name) {
    auto* field = named(new QLineEdit(parent), name);
    field->setReadOnly(true);
    field->setFocusPolicy(Qt::ClickFocus);
    return field;
}

} // namespace

void Controller::loadMainWindow() {
    auto* window = new QMainWindow;
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    itsMainWindow = window;
    auto* central = new QWidget(window);
    window->setCentralWidget(central);
    auto* columns = new QHBoxLayout(central);
    columns->setContentsMargins(8, 8, 8, 8);

    // The main column: the tab view with the picture and the image list, then the controls.
    auto* mainColumn = new QVBoxLayout;
    columns->addLayout(mainColumn, 1);

    _tabView = named(new QTabWidget(central), "_tabView");
    auto* view = named(new wmfImageView(_tabView), "itsWmfView");
    view->mainController = this;
    itsWmfView = view;
    _tabView->addTab(view, tr("Image"));

    auto* listPage = new QWidget(_tabView);
    auto* listLayout = new QVBoxLayout(listPage);
    listLayout->setContentsMargins(0, 0, 0, 0);
    auto* listScroll = named(new ImageListScrollArea(listPage), "itsImageListScroll");
    itsImageListView = named(listScroll->grid(), "itsImageListView");
    itsImageListView->mController = this;
    itsImageProgress = named(new QProgressBar(listPage), "itsImageProgress");
    itsImageProgress->setTextVisible(false);
    itsImageProgress->setMaximumHeight(8);
    itsImageProgress->setVisible(false);
    listLayout->addWidget(listScroll, 1);
    listLayout->addWidget(itsImageProgress);
    _tabView->addTab(listPage, tr("Image List"));
    mainColumn->addWidget(_tabView, 1);

    auto* sourceRow = new QHBoxLayout;
    sourceRow->addWidget(new QLabel(tr("Source:"), central));
    itsSrcFileName = readOnlyField(central, "itsSrcFileName");
    itsSrcFileName->setPlaceholderText(tr("No image"));
    sourceRow->addWidget(itsSrcFileName, 1);
    itsOpenButton = named(new QPushButton(tr("Open…"), central), "itsOpenButton");
    sourceRow->addWidget(itsOpenButton);
    mainColumn->addLayout(sourceRow);

    auto* controlRow = new QHBoxLayout;
    itsPrev = named(new QPushButton(tr("◀ Previous"), central), "itsPrev", 101);
    itsNext = named(new QPushButton(tr("Next ▶"), central), "itsNext", 102);
    controlRow->addWidget(itsPrev);
    controlRow->addWidget(itsNext);
    controlRow->addSpacing(12);
    controlRow->addWidget(new QLabel(tr("Angle:"), central));
    itsRotateSlider = named(new QSlider(Qt::Horizontal, central), "itsRotateSlider");
    itsRotateSlider->setRange(-180, 180);
    itsRotateSlider->setPageStep(15);
    itsRotateSlider->setTickPosition(QSlider::TicksBelow);
    itsRotateSlider->setTickInterval(45);
    controlRow->addWidget(itsRotateSlider, 1);
    itsRotateText = named(new QLineEdit(central), "itsRotateText", 103);
    itsRotateText->setMaximumWidth(64);
    itsRotateText->setAlignment(Qt::AlignRight);
    controlRow->addWidget(itsRotateText);
    controlRow->addSpacing(12);
    itsSizeField = readOnlyField(central, "itsSizeField");
    itsSizeField->setMaximumWidth(120);
    itsSizeField->setAlignment(Qt::AlignCenter);
    controlRow->addWidget(itsSizeField);
    mainColumn->addLayout(controlRow);

    auto* convertRow = new QHBoxLayout;
    itsConvertIndicator = named(new QProgressBar(central), "itsConvertIndicator");
    itsConvertIndicator->setFormat(tr("%v of %m"));
    convertRow->addWidget(itsConvertIndicator, 1);
    convertRow->addStretch();
    // The zoom, under the size and beside the buttons, in room the row has to spare.
    itsZoomField = named(new QLabel(central), "itsZoomField");
    convertRow->addWidget(itsZoomField);
    convertRow->addSpacing(12);
    itsConvert = named(new QPushButton(tr("Convert"), central), "itsConvert", 100);
    itsConvertAll = named(new QPushButton(tr("Convert All"), central), "itsConvertAll");
    itsConvert->setDefault(false);
    // A click converts and leaves the keyboard with the picture, so the arrow keys go on
    // stepping through the folder; Tab still reaches the buttons.
    itsConvert->setFocusPolicy(Qt::TabFocus);
    itsConvertAll->setFocusPolicy(Qt::TabFocus);
    convertRow->addWidget(itsConvert);
    convertRow->addWidget(itsConvertAll);
    mainColumn->addLayout(convertRow);

    advScrollView = named(new FineScrollArea(central), "advScrollView");
    advScrollView->setWidgetResizable(true);
    advScrollView->setFixedHeight(44);
    advScrollView->setFrameShape(QFrame::NoFrame);
    advScrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    advScrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* links = named(new LinkRunTextView(advScrollView), "advTextView");
    links->awakeFromNib();
    advTextView = links;
    advTextView->setFrameShape(QFrame::NoFrame);
    advTextView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    advTextView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    advScrollView->setWidget(advTextView);
    mainColumn->addWidget(advScrollView);

    // The preferences drawer at the window's right edge.
    auto* drawer = new PrefDrawer(central);
    itsPrefDrawer = drawer;
    auto* form = new QFormLayout(drawer);
    itsDstFileName = named(new QLineEdit(drawer), "itsDstFileName");
    itsDstButton = named(new QPushButton(tr("Choose…"), drawer), "itsDstButton");
    auto* dstRow = new QHBoxLayout;
    dstRow->addWidget(itsDstFileName, 1);
    dstRow->addWidget(itsDstButton);
    form->addRow(tr("Destination:"), dstRow);
    itsDpiCombo = named(new QComboBox(drawer), "itsDpiCombo", 6);
    itsDpiCombo->setEditable(true);
    itsDpiCombo->setInsertPolicy(QComboBox::NoInsert);
    itsDpiCombo->addItems({"72", "150", "300", "600"});
    form->addRow(tr("Resolution (dpi):"), itsDpiCombo);
    itsFormatCombo = named(new QComboBox(drawer), "itsFormatCombo", 7);
    form->addRow(tr("Format:"), itsFormatCombo);
    itsBatch = named(new QCheckBox(tr("Fill the image list from the whole folder"), drawer),
                     "itsBatch", 8);
    form->addRow(itsBatch);
    itsStripMetadata = named(new QCheckBox(tr("Leave out metadata (camera, date, place)"), drawer),
                             "itsStripMetadata");
    itsStripMetadata->setToolTip(tr("Converted files keep no EXIF, XMP or IPTC of their source: "
                                    "for pictures shared with others"));
    form->addRow(itsStripMetadata);
    itsSlideSeconds = named(new QSpinBox(drawer), "itsSlideSeconds");
    itsSlideSeconds->setRange(1, 3600);
    // Its value comes from the viewer settings when the View menu is built.
    itsSlideSeconds->setSuffix(tr(" s per picture"));
    form->addRow(tr("Slideshow:"), itsSlideSeconds);
    drawer->setMinimumWidth(0);
    columns->addWidget(drawer);

    // The about panel, shown as a splash at launch and from Help > About.
    itsAboutWindow = AboutPanel::load(window);

    // Menus.
    QMenu* fileMenu = window->menuBar()->addMenu(tr("&File"));
    itsMenuItemOpen = fileMenu->addAction(tr("&Open…"));
    itsMenuItemOpen->setShortcut(QKeySequence::Open);
    QAction* chooseDst = fileMenu->addAction(tr("Choose &Destination…"));
    fileMenu->addSeparator();
    itsMenuItemConvert = fileMenu->addAction(tr("&Convert Image"));
    itsMenuItemConvert->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    itsMenuItemConvAll = fileMenu->addAction(tr("Convert All"));
    itsMenuItemConvAll->setObjectName("itsMenuItemConvAll");
    itsMenuItemConvAll->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    fileMenu->addSeparator();
    QAction* quit = fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);

    QMenu* viewMenu = window->menuBar()->addMenu(tr("&View"));
    itsMenuItemMonochrome = viewMenu->addAction(tr("&Grey Tones"));
    itsMenuItemMonochrome->setCheckable(true);
    itsMenuItemMonochrome->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_G));
    itsMenuItemPref = viewMenu->addAction(tr("&Preferences Drawer"));
    itsMenuItemPref->setCheckable(true);
    itsMenuItemPref->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    viewMenu->addSeparator();
    addZoomItems(viewMenu);
    viewMenu->addSeparator();
    addFullScreenItems(viewMenu);
    viewMenu->addSeparator();
    addInformationItem(viewMenu);
    addImageMenu(window->menuBar());

    QMenu* helpMenu = window->menuBar()->addMenu(tr("&Help"));
    QAction* help = helpMenu->addAction(tr("Ormidon Help"));
    help->setShortcut(QKeySequence::HelpContents);
    helpMenu->addSeparator();
    QAction* site = helpMenu->addAction(tr("Ormidon &Web Site"));
    QAction* ad = helpMenu->addAction(tr("&More from the Makers of Ormidon"));
    QAction* support = helpMenu->addAction(tr("Ormidon &Support"));
    helpMenu->addSeparator();
    QAction* about = helpMenu->addAction(tr("&About Ormidon"));
    about->setMenuRole(QAction::AboutRole);
    addFileActions(fileMenu); // copy, containing folder, rename, trash, and the Edit menu

    // Check marks follow the controller's state each time a menu opens.
    for (QMenu* menu : {fileMenu, viewMenu, helpMenu})
        connect(menu, &QMenu::aboutToShow, this, &Controller::validateMenuItems);
    // The menu shortcuts work wherever the keyboard is, a text field included.
    new MenuShortcutPriority(window);

    awakeFromNib();

    // Actions, wired once the start-up has set the initial values.
    auto dispatch = [this](QObject* control) { return [this, control] { smthChanged(control); }; };
    connect(itsDpiCombo, &QComboBox::currentTextChanged, this, dispatch(itsDpiCombo));
    connect(itsFormatCombo, &QComboBox::currentIndexChanged, this, dispatch(itsFormatCombo));
    connect(itsBatch, &QCheckBox::clicked, this, dispatch(itsBatch));
    connect(itsConvert, &QPushButton::clicked, this, dispatch(itsConvert));
    connect(itsPrev, &QPushButton::clicked, this, dispatch(itsPrev));
    connect(itsNext, &QPushButton::clicked, this, dispatch(itsNext));
    connect(itsConvertAll, &QPushButton::clicked, this, [this] { convertAll(itsConvertAll); });
    connect(itsRotateSlider, &QSlider::valueChanged, this, [this] { slideRotate(itsRotateSlider); });
    connect(itsRotateText, &QLineEdit::editingFinished, this,
            [this] { controlTextDidEndEditing(itsRotateText); });
    connect(itsOpenButton, &QPushButton::clicked, this, [this] { openImage(itsOpenButton); });
    connect(itsDstButton, &QPushButton::clicked, this, [this] { selectDst(itsDstButton); });

    connect(itsMenuItemOpen, &QAction::triggered, this, [this] { openImage(itsMenuItemOpen); });
    connect(chooseDst, &QAction::triggered, this, [this, chooseDst] { selectDst(chooseDst); });
    connect(itsMenuItemConvert, &QAction::triggered, this,
            [this] { convert(itsMenuItemConvert); });
    connect(itsMenuItemConvAll, &QAction::triggered, this,
            [this] { convertAll(itsMenuItemConvAll); });
    connect(quit, &QAction::triggered, window, &QWidget::close);
    connect(itsMenuItemMonochrome, &QAction::triggered, this,
            [this] { monohrome(itsMenuItemMonochrome); });
    connect(itsMenuItemPref, &QAction::triggered, this, [this] { showPref(itsMenuItemPref); });
    connect(help, &QAction::triggered, this, [this, help] { displayHelp(help); });
    connect(site, &QAction::triggered, this, [this, site] { visitSite(site); });
    connect(ad, &QAction::triggered, this, [this, ad] { visitAd(ad); });
    connect(support, &QAction::triggered, this, [this, support] { visitSiteSupport(support); });
    connect(about, &QAction::triggered, this, [this, about] { runAbout(about); });

    // The image list re-lays out when its tab is shown and when the window changes size.
    connect(_tabView, &QTabWidget::currentChanged, this,
            [this](int index) { tabViewDidSelectTabViewItem(_tabView, index); });
    watchWindowResize(window, [this] { windowDidResize(); });
    connect(itsImageListView, &ScrollNSImageView::thumbnailsLoaded, this,
            &Controller::updateImageProgress);
}
