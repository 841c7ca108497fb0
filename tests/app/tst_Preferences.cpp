// The preferences file: what readPrefFile takes from ~/Library/Preferences/zel.pref and what
// writePrefFile leaves there, with real files under a private home folder and real controls.

#include "app/Controller.h"
#include "app/PropertyList.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <memory>

using Dictionary = PropertyList::Dictionary;

class tst_Preferences : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pathIsUnderHome();
    void noFileKeepsDefaults();
    void shutdownWritesAllKeys();
    void angleOnly();
    void allKeysApplied();
    void dpiWithTwoDecimals();
    void numbersFromText_data();
    void numbersFromText();
    void malformedFileKeepsDefaults_data();
    void malformedFileKeepsDefaults();
    void handEditedBytes_data();
    void handEditedBytes();
    void notAPlainFile();
    void oversizedFile();
    void nullOutlets();
    void emptySourceAfterRunWithoutImage();
    void writeReplacesLongerFile();
    void unwritableFolder();
    void preferencesFolderIsAFile();
    void nonAsciiFoldersRoundTrip_data();
    void nonAsciiFoldersRoundTrip();
    void controlsSetWithoutTheirActions();

    // The same file through the real main window: start-up reads it, shutdown writes it.
    void windowFirstLaunch();
    void windowAngleOnly();
    void windowStripMetadataKept();
    void windowDpiShownAsText();
    void windowBadFile_data();
    void windowBadFile();
    void windowRunWithoutImage();
    void windowUnwritablePreferences_data();
    void windowUnwritablePreferences();
    void windowNonAsciiDestination_data();
    void windowNonAsciiDestination();

private:
    QString prefPath() const { return m_home->path() + "/Library/Preferences/zel.pref"; }
    void writePrefText(const QByteArray& text) const;
    Dictionary readWrittenFile() const;
    void makeOutlets();
    static void startWindow(Controller& controller);

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Controller> m_controller;
    // The controls a window would give the controller, owned here.
    std::unique_ptr<QLineEdit> m_src, m_dst, m_rotateText;
    std::unique_ptr<QSlider> m_slider;
    std::unique_ptr<QCheckBox> m_batch;
};

void tst_Preferences::init() {
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(m_home->isValid());
    qputenv("HOME", QFile::encodeName(m_home->path()));
    m_controller = std::make_unique<Controller>();
    makeOutlets();
}

void tst_Preferences::cleanup() {
    m_controller.reset();
    m_src.reset();
    m_dst.reset();
    m_rotateText.reset();
    m_slider.reset();
    m_batch.reset();
    // Give a locked folder back its rights so that the temporary home can be removed.
    QFile::setPermissions(m_home->path() + "/Library/Preferences",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_home.reset();
}

void tst_Preferences::makeOutlets() {
    m_src = std::make_unique<QLineEdit>();
    m_dst = std::make_unique<QLineEdit>("/initial/destination");
    m_rotateText = std::make_unique<QLineEdit>("77");
    m_slider = std::make_unique<QSlider>(Qt::Horizontal);
    m_slider->setRange(-360, 360);
    m_slider->setValue(77);
    m_batch = std::make_unique<QCheckBox>();
    m_batch->setChecked(true);
    m_controller->itsSrcFileName = m_src.get();
    m_controller->itsDstFileName = m_dst.get();
    m_controller->itsRotateText = m_rotateText.get();
    m_controller->itsRotateSlider = m_slider.get();
    m_controller->itsBatch = m_batch.get();
}

void tst_Preferences::writePrefText(const QByteArray& text) const {
    QVERIFY(QDir().mkpath(m_home->path() + "/Library/Preferences"));
    QFile file(prefPath());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(text), text.size());
}

Dictionary tst_Preferences::readWrittenFile() const {
    QFile file(prefPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return {{"error", "the file is not ASCII"}};
    }
    return PropertyList::readDictionary(QString::fromLatin1(bytes)).value_or(Dictionary{});
}

void tst_Preferences::pathIsUnderHome() {
    QCOMPARE(Controller::prefFilePath(), prefPath());
}

void tst_Preferences::noFileKeepsDefaults() {
    Controller& c = *m_controller;
    c.itsPref.dpi = 300.0f;
    c.itsPref.exportFormat = "JPEG";
    c.m_rotate = 45;
    QVERIFY(!c.readPrefFile());
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    QCOMPARE(c.m_rotate, 0);
    QCOMPARE(c.savedLoaction, QString());
    QCOMPARE(m_rotateText->text(), QString("0"));
    QCOMPARE(m_slider->value(), 0);
    // The destination and the switch keep what the window gave them.
    QCOMPARE(m_dst->text(), QString("/initial/destination"));
    QVERIFY(m_batch->isChecked());
}

void tst_Preferences::shutdownWritesAllKeys() {
    Controller& c = *m_controller;
    QVERIFY(!c.readPrefFile());
    QVERIFY(!QDir(m_home->path() + "/Library").exists());
    c.writePrefFile();
    QVERIFY(QFile::exists(prefPath()));
    const Dictionary expected{
        {"angle", "0"},        {"dpi", "72.00"},  {"dstLocation", "/initial/destination"},
        {"expformat", "TIFF"}, {"fillList", "1"}, {"srcLocation", ""},
        {"stripMetadata", "0"}};
    QCOMPARE(readWrittenFile(), expected);

    c.itsPref.dpi = 150.5f;
    c.itsPref.exportFormat = "GIF ";
    c.m_rotate = -725;
    m_src->setText("/pictures/a.png");
    m_batch->setChecked(false);
    c.writePrefFile();
    const Dictionary changed{
        {"angle", "-725"},     {"dpi", "150.50"}, {"dstLocation", "/initial/destination"},
        {"expformat", "GIF "}, {"fillList", "0"}, {"srcLocation", "/pictures/a.png"},
        {"stripMetadata", "0"}};
    QCOMPARE(readWrittenFile(), changed);
}

void tst_Preferences::angleOnly() {
    writePrefText("{\n    angle = -30;\n}\n");
    Controller& c = *m_controller;
    QVERIFY(c.readPrefFile());
    QCOMPARE(c.m_rotate, -30);
    QCOMPARE(m_rotateText->text(), QString("-30"));
    QCOMPARE(m_slider->value(), -30);
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    QCOMPARE(c.savedLoaction, QString());
    QCOMPARE(m_dst->text(), QString("/initial/destination"));
    QVERIFY(m_batch->isChecked());
}

void tst_Preferences::allKeysApplied() {
    writePrefText("// written by hand\n"
                  "{ fillList = 0; srcLocation = \"/pics/My Photo.jpg\"; dpi = \"600.00\";\n"
                  "  expformat = \"PNGf\"; angle = 90; dstLocation = /out/folder;\n"
                  "  extra = (1, 2); }\n");
    Controller& c = *m_controller;
    QVERIFY(c.readPrefFile());
    QCOMPARE(c.itsPref.dpi, 600.0f);
    QCOMPARE(c.itsPref.exportFormat, QString("PNGf"));
    QCOMPARE(c.m_rotate, 90);
    QCOMPARE(c.savedLoaction, QString("/pics/My Photo.jpg"));
    QCOMPARE(m_dst->text(), QString("/out/folder"));
    QVERIFY(!m_batch->isChecked());
    QCOMPARE(m_rotateText->text(), QString("90"));
    QCOMPARE(m_slider->value(), 90);
    // The source field itself is left to the launch, which reopens the saved source.
    QCOMPARE(m_src->text(), QString());
}

void tst_Preferences::dpiWithTwoDecimals() {
    writePrefText("{ dpi = \"96.00\"; }");
    QVERIFY(m_controller->readPrefFile());
    QCOMPARE(m_controller->itsPref.dpi, 96.0f);
    m_controller->writePrefFile();
    QCOMPARE(readWrittenFile().value("dpi"), QString("96.00"));
}

void tst_Preferences::numbersFromText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<float>("dpi");
    QTest::addColumn<int>("angle");
    QTest::addColumn<bool>("fillList");

    QTest::newRow("integer") << "150" << 150.0f << 150 << true;
    QTest::newRow("decimal") << "\"-3.75\"" << -3.75f << -3 << true;
    QTest::newRow("no number") << "abc" << 0.0f << 0 << false;
    QTest::newRow("empty") << "\"\"" << 0.0f << 0 << false;
    QTest::newRow("leading number") << "12abc" << 12.0f << 12 << true;
    QTest::newRow("leading blanks") << "\"  \\t7.5 dpi\"" << 7.5f << 7 << true;
    QTest::newRow("plus sign") << "+5" << 5.0f << 5 << true;
    QTest::newRow("fraction only") << ".5" << 0.5f << 0 << false;
    QTest::newRow("trailing point") << "5." << 5.0f << 5 << true;
    QTest::newRow("exponent") << "1e3" << 1000.0f << 1 << true;
    QTest::newRow("half exponent") << "2e" << 2.0f << 2 << true;
    QTest::newRow("comma is no point") << "\"96,5\"" << 96.0f << 96 << true;
    QTest::newRow("zero") << "0" << 0.0f << 0 << false;
    QTest::newRow("sign only") << "-" << 0.0f << 0 << false;
    QTest::newRow("hex is no number") << "0x10" << 0.0f << 0 << false;
    QTest::newRow("words are no number") << "inf" << 0.0f << 0 << false;
    QTest::newRow("huge") << "99999999999" << 99999999999.0f << std::numeric_limits<int>::max()
                          << true;
    QTest::newRow("huge negative")
        << "-99999999999" << -99999999999.0f << std::numeric_limits<int>::min() << true;
    QTest::newRow("beyond float") << "1e60" << std::numeric_limits<float>::max() << 1 << true;
}

void tst_Preferences::numbersFromText() {
    QFETCH(QString, text);
    QFETCH(float, dpi);
    QFETCH(int, angle);
    QFETCH(bool, fillList);
    m_batch->setChecked(!fillList);
    writePrefText(QString("{ dpi = %1; angle = %1; fillList = %1; }").arg(text).toLatin1());
    QVERIFY(m_controller->readPrefFile());
    QCOMPARE(m_controller->itsPref.dpi, dpi);
    QCOMPARE(m_controller->m_rotate, angle);
    QCOMPARE(m_rotateText->text(), QString::number(angle));
    QCOMPARE(m_batch->isChecked(), fillList);
}

void tst_Preferences::malformedFileKeepsDefaults_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("missing semicolon") << QByteArray("{ angle = 45 }");
    QTest::newRow("truncated") << QByteArray("{\n    angle = 45;\n    dpi = \"300.");
    QTest::newRow("not a dictionary") << QByteArray("(angle, 45)");
    QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    QTest::newRow("XML") << QByteArray("<?xml version=\"1.0\"?><plist><dict/></plist>");
}

void tst_Preferences::malformedFileKeepsDefaults() {
    QFETCH(QByteArray, bytes);
    writePrefText(bytes);
    Controller& c = *m_controller;
    c.m_rotate = 45;
    c.itsPref.dpi = 300.0f;
    c.itsPref.exportFormat = "JPEG";
    QVERIFY(!c.readPrefFile());
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    QCOMPARE(c.m_rotate, 0);
    QCOMPARE(c.savedLoaction, QString());
    QCOMPARE(m_slider->value(), 0);
    QCOMPARE(m_dst->text(), QString("/initial/destination"));
    // The next shutdown replaces the bad file with a good one.
    c.writePrefFile();
    QCOMPARE(readWrittenFile().value("angle"), QString("0"));
}

void tst_Preferences::handEditedBytes_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("folder");
    QTest::newRow("ASCII escapes")
        << QByteArray("\"/home/\\U00e9l\\U00e8ve\"") << QStringLiteral(u"/home/\u00e9l\u00e8ve");
    QTest::newRow("UTF-8") << QByteArray("\"/home/\xC3\xA9l\xC3\xA8ve/\xE4\xB8\xAD\"")
                           << QStringLiteral(u"/home/\u00e9l\u00e8ve/\u4e2d");
    QTest::newRow("other bytes, one character each")
        << QByteArray("\"/home/\xE9l\xE8ve\"") << QStringLiteral(u"/home/\u00e9l\u00e8ve");
}

void tst_Preferences::handEditedBytes() {
    QFETCH(QByteArray, value);
    QFETCH(QString, folder);
    writePrefText("{ dstLocation = " + value + "; }");
    QVERIFY(m_controller->readPrefFile());
    QCOMPARE(m_dst->text(), folder);
}

void tst_Preferences::notAPlainFile() {
    QVERIFY(QDir().mkpath(prefPath()));
    QVERIFY(!m_controller->readPrefFile());
    QCOMPARE(m_controller->m_rotate, 0);
    m_controller->writePrefFile(); // cannot replace a folder: silently nothing
    QVERIFY(QFileInfo(prefPath()).isDir());
}

void tst_Preferences::oversizedFile() {
    QByteArray big = "{ angle = 45; }";
    big.append(QByteArray(5 * 1024 * 1024, ' '));
    writePrefText(big);
    QVERIFY(!m_controller->readPrefFile());
    QCOMPARE(m_controller->m_rotate, 0);
}

void tst_Preferences::nullOutlets() {
    Controller bare;
    writePrefText("{ angle = 12; dstLocation = /x; fillList = 1; srcLocation = /s.png; }");
    QVERIFY(bare.readPrefFile());
    QCOMPARE(bare.m_rotate, 12);
    QCOMPARE(bare.savedLoaction, QString("/s.png"));
    bare.writePrefFile();
    const Dictionary expected{{"angle", "12"},       {"dpi", "72.00"},  {"dstLocation", ""},
                              {"expformat", "TIFF"}, {"fillList", "0"}, {"srcLocation", ""},
                              {"stripMetadata", "0"}};
    QCOMPARE(readWrittenFile(), expected);
}

void tst_Preferences::emptySourceAfterRunWithoutImage() {
    writePrefText("{ srcLocation = /old/picture.png; }");
    Controller& c = *m_controller;
    QVERIFY(c.readPrefFile());
    QCOMPARE(c.savedLoaction, QString("/old/picture.png"));
    // No image was shown in this run, so the source field stayed empty.
    c.writePrefFile();
    QCOMPARE(readWrittenFile().value("srcLocation", "missing"), QString());

    Controller next;
    QVERIFY(next.readPrefFile());
    QCOMPARE(next.savedLoaction, QString());
}

void tst_Preferences::writeReplacesLongerFile() {
    writePrefText("{ angle = 1; }\n" + QByteArray(4000, '/') + "\n");
    m_controller->writePrefFile();
    QFile file(prefPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.size() < 300);
    QCOMPARE(readWrittenFile().size(), 7);
}

void tst_Preferences::unwritableFolder() {
    const QString folder = m_home->path() + "/Library/Preferences";
    writePrefText("{ angle = 15; }");
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    QFile::setPermissions(prefPath(), QFile::ReadOwner);
    QFile probe(folder + "/probe");
    if (probe.open(QIODevice::WriteOnly)) {
        probe.close();
        probe.remove();
        QSKIP("The folder stays writable for this user (root); see preferencesFolderIsAFile.");
    }
    Controller& c = *m_controller;
    QVERIFY(c.readPrefFile());
    c.m_rotate = 99;
    c.writePrefFile(); // fails quietly
    Controller next;
    QVERIFY(next.readPrefFile());
    QCOMPARE(next.m_rotate, 15);
}

void tst_Preferences::preferencesFolderIsAFile() {
    // A plain file where the folder should be: no folder can be made, no file written.
    QVERIFY(QDir().mkpath(m_home->path() + "/Library"));
    QFile blocker(m_home->path() + "/Library/Preferences");
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    m_controller->m_rotate = 33;
    m_controller->writePrefFile();
    QVERIFY(QFileInfo(blocker.fileName()).isFile());
    QCOMPARE(blocker.size(), 0);
    Controller next;
    QVERIFY(!next.readPrefFile());
    QCOMPARE(next.m_rotate, 0);
    QCOMPARE(next.itsPref.exportFormat, QString("TIFF"));
}

void tst_Preferences::nonAsciiFoldersRoundTrip_data() {
    QTest::addColumn<QString>("folder");
    QTest::newRow("accents") << QStringLiteral(u"/home/\u00e9l\u00e8ve/Images r\u00e9centes");
    QTest::newRow("CJK") << QStringLiteral(u"/home/\u5f20\u4f1f/\u56fe\u7247 \u5199\u771f");
    QTest::newRow("emoji") << QString::fromUtf8("/tmp/\xF0\x9F\x8C\x84 \"sea\" \\ \xC3\xBC");
}

void tst_Preferences::nonAsciiFoldersRoundTrip() {
    QFETCH(QString, folder);
    m_dst->setText(folder);
    m_src->setText(folder + "/a.png");
    m_controller->writePrefFile();
    QCOMPARE(readWrittenFile().value("dstLocation"), folder); // also checks the file is ASCII

    Controller next;
    QLineEdit dst;
    next.itsDstFileName = &dst;
    QVERIFY(next.readPrefFile());
    QCOMPARE(dst.text(), folder);
    QCOMPARE(next.savedLoaction, folder + "/a.png");
}

void tst_Preferences::controlsSetWithoutTheirActions() {
    writePrefText("{ angle = 500; fillList = 0; }");
    QSignalSpy sliderMoved(m_slider.get(), &QSlider::valueChanged);
    QSignalSpy boxToggled(m_batch.get(), &QCheckBox::toggled);
    QVERIFY(m_controller->readPrefFile());
    QCOMPARE(m_controller->m_rotate, 500); // not cut to the slider's range
    QCOMPARE(m_rotateText->text(), QString("500"));
    QCOMPARE(m_slider->value(), 360);
    QVERIFY(!m_batch->isChecked());
    QCOMPARE(sliderMoved.count(), 0);
    QCOMPARE(boxToggled.count(), 0);
}

void tst_Preferences::startWindow(Controller& controller) {
    controller.skipSplash = true;
    controller.loadMainWindow();
    QVERIFY(controller.window());
    QVERIFY(controller.itsRotateSlider && controller.itsRotateText && controller.itsDpiCombo &&
            controller.itsFormatCombo && controller.itsDstFileName && controller.itsBatch);
}

void tst_Preferences::windowFirstLaunch() {
    Controller c;
    startWindow(c);
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsDpiCombo->currentText(), QString("72"));
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    if (c.itsFormatCombo->findText("TIFF") >= 0)
        QCOMPARE(c.itsFormatCombo->currentText(), QString("TIFF"));
    QCOMPARE(c.m_rotate, 0);
    QCOMPARE(c.itsRotateSlider->value(), 0);
    QCOMPARE(c.itsRotateText->text(), QString("0"));
    QVERIFY(!QFile::exists(prefPath()));

    c.closeController();
    const Dictionary written = readWrittenFile();
    QCOMPARE(written.keys(),
             QStringList({"angle", "dpi", "dstLocation", "expformat", "fillList", "srcLocation",
                          "stripMetadata"}));
    QCOMPARE(written.value("stripMetadata"), QString("0"));
    QCOMPARE(written.value("dpi"), QString("72.00"));
    QCOMPARE(written.value("angle"), QString("0"));
    QCOMPARE(written.value("expformat"), c.itsPref.exportFormat);
    QCOMPARE(written.value("dstLocation"), c.itsDstFileName->text());
    QCOMPARE(written.value("fillList"), QString(c.itsBatch->isChecked() ? "1" : "0"));
}

// The drawer's "leave out metadata" box is off at first launch; ticked, it comes back ticked.
void tst_Preferences::windowStripMetadataKept() {
    {
        Controller c;
        startWindow(c);
        QVERIFY(c.itsStripMetadata);
        QVERIFY(!c.itsStripMetadata->isChecked());
        c.itsStripMetadata->click(); // the drawer is closed: the click as its button sends it
        QVERIFY(c.itsStripMetadata->isChecked());
        c.closeController();
    }
    QCOMPARE(readWrittenFile().value("stripMetadata"), QString("1"));
    Controller again;
    startWindow(again);
    QVERIFY(again.itsStripMetadata->isChecked());
}

void tst_Preferences::windowAngleOnly() {
    writePrefText("{\n    angle = -30;\n}\n");
    Controller c;
    startWindow(c);
    QCOMPARE(c.m_rotate, -30);
    QCOMPARE(c.itsRotateSlider->value(), -30);
    QCOMPARE(c.itsRotateText->text(), QString("-30"));
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsDpiCombo->currentText(), QString("72"));
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    QCOMPARE(c.savedLoaction, QString());
    c.closeController();
    QCOMPARE(readWrittenFile().value("angle"), QString("-30"));
}

void tst_Preferences::windowDpiShownAsText() {
    writePrefText("{ dpi = \"96.00\"; }");
    Controller c;
    startWindow(c);
    QCOMPARE(c.itsPref.dpi, 96.0f);
    QCOMPARE(c.itsDpiCombo->currentText(), QString("96.00"));
    c.closeController();
    QCOMPARE(readWrittenFile().value("dpi"), QString("96.00"));
}

void tst_Preferences::windowBadFile_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("malformed") << QByteArray("{ angle = 45; dpi = \"300.00\"; expformat = ");
    QTest::newRow("binary") << QByteArray("\0\xff\xfe{(<\"", 7);
}

void tst_Preferences::windowBadFile() {
    QFETCH(QByteArray, bytes);
    writePrefText(bytes);
    Controller c;
    startWindow(c);
    QCOMPARE(c.m_rotate, 0);
    QCOMPARE(c.itsRotateSlider->value(), 0);
    QCOMPARE(c.itsPref.dpi, 72.0f);
    QCOMPARE(c.itsDpiCombo->currentText(), QString("72"));
    QCOMPARE(c.itsPref.exportFormat, QString("TIFF"));
    c.closeController();
    QCOMPARE(readWrittenFile().size(), 7);
}

void tst_Preferences::windowRunWithoutImage() {
    writePrefText("{ srcLocation = \"/no/such/picture.png\"; }");
    {
        Controller c;
        startWindow(c);
        QCOMPARE(c.savedLoaction, QString("/no/such/picture.png"));
        QCOMPARE(c.itsSrcFileName->text(), QString());
        c.closeController();
    }
    QCOMPARE(readWrittenFile().value("srcLocation", "missing"), QString());
    Controller next;
    startWindow(next);
    QCOMPARE(next.savedLoaction, QString());
    QCOMPARE(next.itsSrcFileName->text(), QString());
}

void tst_Preferences::windowUnwritablePreferences_data() {
    QTest::addColumn<bool>("plainFile");
    QTest::newRow("folder without write rights") << false;
    QTest::newRow("plain file in the folder's place") << true;
}

void tst_Preferences::windowUnwritablePreferences() {
    QFETCH(bool, plainFile);
    const QString folder = m_home->path() + "/Library/Preferences";
    if (plainFile) {
        QVERIFY(QDir().mkpath(m_home->path() + "/Library"));
        QFile blocker(folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
    } else {
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner)); // 0500
        QFile probe(folder + "/probe");
        if (probe.open(QIODevice::WriteOnly)) {
            probe.remove();
            QSKIP("Folder rights do not bind this user (root); the plain-file row covers it.");
        }
    }
    {
        Controller c;
        startWindow(c);
        c.m_rotate = 40;
        c.closeController(); // the write fails quietly
    }
    QVERIFY(!QFileInfo(prefPath()).exists());
    Controller next;
    startWindow(next);
    QCOMPARE(next.m_rotate, 0);
    QCOMPARE(next.itsRotateSlider->value(), 0);
    QCOMPARE(next.itsPref.exportFormat, QString("TIFF"));
}

void tst_Preferences::windowNonAsciiDestination_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("accents") << QStringLiteral(u"Images r\u00e9centes \u00e0 l'\u00e9t\u00e9");
    QTest::newRow("CJK") << QStringLiteral(u"\u56fe\u7247 \u5199\u771f");
    QTest::newRow("both and an emoji")
        << QString::fromUtf8("\xC3\xA9l\xC3\xA8ve \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80");
}

void tst_Preferences::windowNonAsciiDestination() {
    QFETCH(QString, name);
    const QString folder = m_home->path() + "/" + name;
    QVERIFY(QDir().mkpath(folder));
    {
        Controller c;
        startWindow(c);
        c.itsDstFileName->setText(folder);
        c.closeController();
    }
    QCOMPARE(readWrittenFile().value("dstLocation"), folder); // also checks the file is ASCII
    Controller next;
    startWindow(next);
    QCOMPARE(next.itsDstFileName->text(), folder);
}

QTEST_MAIN(tst_Preferences)
#include "tst_Preferences.moc"
