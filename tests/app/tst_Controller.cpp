// The main window as the controller builds it: initial state, the saved frame, the drawer,
// the tagged-control dispatcher, menu check marks and the launch order.

#include "app/Controller.h"
#include "app/PrefDrawer.h"
#include "codec/RasterWriters.h"
#include "export/FormatTable.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

class tst_Controller : public QObject {
    Q_OBJECT

    QTemporaryDir home;

    void writePrefs(const QByteArray& text) {
        QDir().mkpath(home.path() + "/Library/Preferences");
        QFile file(home.path() + "/Library/Preferences/zel.pref");
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    }

    QString writePng(const QString& folder, const QString& name, QSize size = {64, 48}) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        image.setDotsPerMeterX(2835); // 72 dpi, so that points equal pixels
        image.setDotsPerMeterY(2835);
        const QString path = folder + "/" + name;
        if (!image.save(path, "PNG"))
            return QString();
        return path;
    }

private slots:
    void init() {
        QVERIFY(home.isValid());
        QDir(home.path()).removeRecursively();
        QDir().mkpath(home.path());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        qputenv("XDG_DESKTOP_DIR", (home.path() + "/Desktop").toUtf8());
    }

    // Runs first. A launch that meets no picture of Magick's loads none of Magick's 122 coder
    // modules but those of the three formats it writes (the format list asks about them), and
    // a PNG shown next loads no more.
    void aLaunchLoadsOnlyTheCodersItAsksAbout() {
        const auto coderModules = [] {
            QFile maps(QStringLiteral("/proc/self/maps"));
            if (!maps.open(QIODevice::ReadOnly))
                return -1;
            QSet<QByteArray> modules;
            for (const QByteArray& line : maps.readAll().split('\n'))
                if (line.contains("/coders/"))
                    modules.insert(line.mid(line.lastIndexOf('/')));
            return int(modules.size());
        };
        QCOMPARE(coderModules(), 0);
        {
            Controller c;
            c.skipSplash = true;
            c.loadMainWindow();
            c.applicationWillFinishLaunching();
            c.applicationDidFinishLaunching();
            QVERIFY(c.itsFormatCombo->findText(QStringLiteral("SGI ")) >= 0);
            QTemporaryDir folder;
            c.setSourceFileName(writePng(folder.path(), QStringLiteral("a.png")), true);
            QTRY_COMPARE(c.window()->windowTitle(), QString("Ormidon: a.png"));
        }
        QVERIFY2(coderModules() <= 3, qPrintable(QString::number(coderModules())));
    }

    void firstLaunchShowsEveryControlInItsInitialState() {
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        QMainWindow* window = c.window();
        QVERIFY(window);
        QCOMPARE(window->size(), QSize(850, 680));
        QCOMPARE(window->minimumSize(), QSize(640, 480));

        // Every outlet is connected to a real control.
        QVERIFY(c.itsWmfView && c.itsSrcFileName && c.itsDstFileName && c.itsBatch);
        QVERIFY(c.itsPrev && c.itsNext && c.itsConvert && c.itsConvertAll);
        QVERIFY(c.itsDpiCombo && c.itsFormatCombo && c.itsPrefDrawer);
        QVERIFY(c.itsRotateSlider && c.itsRotateText && c.itsSizeField);
        QVERIFY(c.itsMenuItemConvAll && c.itsConvertIndicator && c.advTextView);
        QVERIFY(c.advScrollView && c.itsImageListView && c.itsImageProgress && c._tabView);
        QCOMPARE(c._tabView->tabText(1), QString("Image List"));

        QCOMPARE(c.itsPrev->toolTip(), QString("Choose Previous image"));
        QCOMPARE(c.itsNext->toolTip(), QString("Choose Next image"));
        QCOMPARE(c.itsConvert->toolTip(), QString("Convert image"));
        QCOMPARE(c.itsConvertAll->toolTip(), QString("Convert All the images from current folder"));
        QCOMPARE(c.itsRotateSlider->toolTip(), QString("Rotate Image"));
        QCOMPARE(c.itsRotateText->toolTip(), QString("Set Up Rotation Angle"));

        QCOMPARE(c.itsDpiCombo->property("tag").toInt(), 6);
        QCOMPARE(c.itsFormatCombo->property("tag").toInt(), 7);
        QCOMPARE(c.itsBatch->property("tag").toInt(), 8);
        QCOMPARE(c.itsConvert->property("tag").toInt(), 100);
        QCOMPARE(c.itsPrev->property("tag").toInt(), 101);
        QCOMPARE(c.itsNext->property("tag").toInt(), 102);
        QCOMPARE(c.itsRotateText->property("tag").toInt(), 103);

        QStringList dpiItems;
        for (int i = 0; i < c.itsDpiCombo->count(); ++i)
            dpiItems << c.itsDpiCombo->itemText(i);
        QCOMPARE(dpiItems, QStringList({"72", "150", "300", "600"}));
        QVERIFY(c.itsDpiCombo->isEditable());
        QCOMPARE(c.itsDpiCombo->currentIndex(), 0);
        QCOMPARE(c.itsPref.dpi, 72.0f);

        for (QPushButton* b :
             {c.itsPrev.data(), c.itsNext.data(), c.itsConvert.data(), c.itsConvertAll.data()})
            QVERIFY(!b->isEnabled());
        QVERIFY(c.itsConvertIndicator->isHidden());
        QCOMPARE(c.itsRotateSlider->value(), 0);
        QCOMPARE(c.itsRotateText->text(), QString("0"));
        QVERIFY(c.itsRotateSlider->minimum() <= -180 && c.itsRotateSlider->maximum() >= 180);
        QVERIFY(c.itsPrefDrawer->state() == PrefDrawer::Opening ||
                c.itsPrefDrawer->state() == PrefDrawer::Open);

        c.applicationWillFinishLaunching();
        c.applicationDidFinishLaunching();
        QCOMPARE(window->windowTitle(), QString("Ormidon: "));
    }

    void formatListOffersAvailableWritersInTableOrder() {
        Controller c;
        c.loadMainWindow();
        QStringList expected;
        for (int i = 0; i < kFormatCount; ++i) {
            const bool offered = !isRasterFormat(i) || rasterWriterExists(rasterSubtype(i));
            QCOMPARE(bool(gformatExport[i]), isRasterFormat(i) && offered);
            if (offered)
                expected << QLatin1String(gformats_ns[i]);
        }
        QStringList items;
        for (int i = 0; i < c.itsFormatCombo->count(); ++i)
            items << c.itsFormatCombo->itemText(i);
        QCOMPARE(items, expected);
        // PDF and EPS, then the modern formats whose encoders this machine has.
        const qsizetype pdf = items.indexOf("PDF ");
        QVERIFY(pdf >= 0);
        QCOMPARE(items.at(pdf + 1), QString("EPS "));
        QCOMPARE(items.mid(pdf + 2), expected.mid(pdf + 2));
        for (const QString& code : items.mid(pdf + 2))
            QVERIFY(formatIndexForCode(code) >= kFirstModernFormat);
        const QString expectedSelection =
            rasterWriterExists(fourCharCode("TIFF")) ? QString("TIFF") : items.first();
        QCOMPARE(c.itsFormatCombo->currentText(), expectedSelection);
    }

    void savedFormatIsSelected() {
        writePrefs("{ expformat = \"GIF \"; }");
        Controller c;
        c.loadMainWindow();
        if (!rasterWriterExists(fourCharCode("GIF ")))
            QSKIP("no GIF writer on this machine");
        QCOMPARE(c.itsFormatCombo->currentText(), QString("GIF "));
    }

    void savedFormatWithoutWriterSelectsFirstItem() {
        writePrefs("{ expformat = MooV; }");
        Controller c;
        c.loadMainWindow();
        QCOMPARE(c.itsFormatCombo->currentIndex(), 0);
    }

    void unlistedResolutionShowsAsText_data() {
        QTest::addColumn<QByteArray>("saved");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("index");
        QTest::newRow("150.5") << QByteArray("150.50") << "150.50" << -1;
        QTest::newRow("96") << QByteArray("96.00") << "96.00" << -1;
        QTest::newRow("300") << QByteArray("300.00") << "300" << 2;
        QTest::newRow("600") << QByteArray("600") << "600" << 3;
    }

    void unlistedResolutionShowsAsText() {
        QFETCH(QByteArray, saved);
        QFETCH(QString, text);
        QFETCH(int, index);
        writePrefs("{ dpi = \"" + saved + "\"; }");
        Controller c;
        c.loadMainWindow();
        QCOMPARE(c.itsDpiCombo->currentIndex(), index);
        QCOMPARE(c.itsDpiCombo->currentText(), text);
    }

    void savedFrameIsRestoredWithoutMinimumSize() {
        {
            Controller c;
            c.loadMainWindow();
            c.window()->resize(700, 500);
            c.applicationWillTerminate();
        }
        Controller c;
        c.loadMainWindow();
        QCOMPARE(c.window()->size(), QSize(700, 500));
        QCOMPARE(c.window()->minimumSize(), QSize(0, 0));
    }

    void drawerToggleFollowsItsFourStates() {
        Controller c;
        c.loadMainWindow();
        PrefDrawer* drawer = c.itsPrefDrawer;
        drawer->setSlideDuration(60'000); // keep each slide under way while the test looks
        QCOMPARE(drawer->state(), PrefDrawer::Opening);
        c.showPref(nullptr); // opening -> closing
        QCOMPARE(drawer->state(), PrefDrawer::Closing);
        c.showPref(nullptr); // closing -> opening again
        QCOMPARE(drawer->state(), PrefDrawer::Opening);

        drawer->setSlideDuration(0);
        c.showPref(nullptr);
        QCOMPARE(drawer->state(), PrefDrawer::Closed);
        QVERIFY(drawer->isHidden());
        c.validateMenuItems();
        QVERIFY(!c.itsMenuItemPref->isChecked());
        c.showPref(nullptr);
        QCOMPARE(drawer->state(), PrefDrawer::Open);
        c.validateMenuItems();
        QVERIFY(c.itsMenuItemPref->isChecked());
    }

    void slidingDrawerSettlesOpen() {
        Controller c;
        c.loadMainWindow();
        c.window()->show();
        QTRY_COMPARE(c.itsPrefDrawer->state(), PrefDrawer::Open);
        QTRY_VERIFY(c.itsPrefDrawer->width() > 100);
    }

    void menuCheckMarkFollowsGreyTones() {
        Controller c;
        c.loadMainWindow();
        c.validateMenuItems();
        QVERIFY(!c.itsMenuItemMonochrome->isChecked());
        c.m_Monochrome = true;
        QVERIFY(c.validateMenuItem(c.itsMenuItemMonochrome));
        QVERIFY(c.itsMenuItemMonochrome->isChecked());
        // Items of other actions keep their check mark and stay enabled.
        c.itsMenuItemConvAll->setCheckable(true);
        c.itsMenuItemConvAll->setChecked(true);
        QVERIFY(c.validateMenuItem(c.itsMenuItemConvAll));
        QVERIFY(c.itsMenuItemConvAll->isChecked());
    }

    void dispatcherHandlesEveryTag() {
        QTemporaryDir pictures;
        const QString first = writePng(pictures.path(), "a.png");
        const QString second = writePng(pictures.path(), "b.png");
        Controller c;
        c.loadMainWindow();

        c.itsDpiCombo->setEditText("300");
        c.smthChanged(c.itsDpiCombo);
        QCOMPARE(c.itsPref.dpi, 300.0f);
        c.itsDpiCombo->setEditText("abc");
        c.smthChanged(c.itsDpiCombo);
        QCOMPARE(c.itsPref.dpi, 0.0f);
        c.itsDpiCombo->setEditText("96.5 dpi");
        c.smthChanged(c.itsDpiCombo);
        QCOMPARE(c.itsPref.dpi, 96.5f);

        c.itsFormatCombo->setCurrentIndex(c.itsFormatCombo->findText("EPS "));
        c.smthChanged(c.itsFormatCombo);
        QCOMPARE(c.itsPref.exportFormat, QString("EPS "));

        c.itsBatch->setChecked(true);
        c.smthChanged(c.itsBatch);
        QCOMPARE(c.itsPref.isBatch, 1);
        c.itsBatch->setChecked(false);
        c.smthChanged(c.itsBatch);
        QCOMPARE(c.itsPref.isBatch, 0);

        c.setSourceFileName(first, false);
        QCOMPARE(c.itsSrcFileName->text(), first);
        c.smthChanged(c.itsNext);
        QCOMPARE(c.itsSrcFileName->text(), second);
        c.smthChanged(c.itsPrev);
        QCOMPARE(c.itsSrcFileName->text(), first);

        // An unknown tag changes nothing.
        QLineEdit stranger;
        stranger.setProperty("tag", 55);
        const TPref before = c.itsPref;
        c.smthChanged(&stranger);
        c.smthChanged(nullptr);
        QCOMPARE(c.itsPref.dpi, before.dpi);
        QCOMPARE(c.itsPref.exportFormat, before.exportFormat);
        QCOMPARE(c.itsSrcFileName->text(), first);
    }

    void controlsReachTheDispatcherByUserActions() {
        Controller c;
        c.loadMainWindow();
        c.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(c.window()));
        c.itsDpiCombo->lineEdit()->selectAll();
        QTest::keyClicks(c.itsDpiCombo->lineEdit(), "150");
        QCOMPARE(c.itsPref.dpi, 150.0f);
        QTest::mouseClick(c.itsBatch, Qt::LeftButton, {}, QPoint(8, c.itsBatch->height() / 2));
        QCOMPARE(c.itsPref.isBatch, 1);
    }

    void fileHandedOverKeepsTitleAndButtons() {
        QTemporaryDir pictures;
        const QString path = writePng(pictures.path(), "handed.png");
        Controller c;
        c.loadMainWindow();
        c.window()->setWindowTitle("unchanged");
        QVERIFY(!c.application(nullptr, pictures.path() + "/missing.png"));
        QCOMPARE(c.itsSrcFileName->text(), QString());
        QVERIFY(c.application(nullptr, path));
        QCOMPARE(c.itsSrcFileName->text(), path);
        QCOMPARE(c.savedLoaction, QString());
        QCOMPARE(c.window()->windowTitle(), QString("unchanged"));
        QVERIFY(!c.itsConvert->isEnabled());
    }

    void launchWithAFileShowsIt() {
        QTemporaryDir pictures;
        const QString path = writePng(pictures.path(), "launched.png");
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        c.applicationWillFinishLaunching();
        QVERIFY(c.application(nullptr, path));
        c.applicationDidFinishLaunching();
        QCOMPARE(c.window()->windowTitle(), QString("Ormidon: launched.png"));
        QCOMPARE(c.itsSrcFileName->text(), path);
        QVERIFY(c.itsConvert->isEnabled() && c.itsNext->isEnabled());
        QCOMPARE(c.itsSizeField->text(), QString("64 * 48"));
    }

    void quitAndStartAgainRestoresTheSettings() {
        QTemporaryDir pictures;
        const QString path = writePng(pictures.path(), "kept.png");
        const QString destination = home.path() + "/Out put/été 写真";
        {
            Controller c;
            c.skipSplash = true;
            c.loadMainWindow();
            c.applicationDidFinishLaunching();
            c.setSourceFileName(path, true);
            c.itsDpiCombo->setEditText("300");
            c.itsFormatCombo->setCurrentIndex(c.itsFormatCombo->findText("PDF "));
            c.itsRotateSlider->setValue(-45);
            c.itsDstFileName->setText(destination);
            c.itsBatch->setChecked(true);
            c.applicationWillTerminate();
        }
        Controller c;
        c.skipSplash = true;
        c.loadMainWindow();
        QCOMPARE(c.savedLoaction, path);
        c.applicationDidFinishLaunching();
        QCOMPARE(c.itsPref.dpi, 300.0f);
        QCOMPARE(c.itsDpiCombo->currentText(), QString("300"));
        QCOMPARE(c.itsFormatCombo->currentText(), QString("PDF "));
        QCOMPARE(c.m_rotate, -45);
        QCOMPARE(c.itsRotateSlider->value(), -45);
        QCOMPARE(c.itsDstFileName->text(), destination);
        QVERIFY(c.itsBatch->isChecked());
        QCOMPARE(c.itsSrcFileName->text(), path);
        QCOMPARE(c.window()->windowTitle(), QString("Ormidon: kept.png"));
    }
};

QTEST_MAIN(tst_Controller)
#include "tst_Controller.moc"
