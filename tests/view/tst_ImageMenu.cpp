#include "../export/ModalAnswer.h"
#include "app/Controller.h"
#include "thumbs/listImageViewItem.h"
#include "view/wmfImageView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

// A picture that shows which way it is turned: wide, red on the left, blue on the right.
QImage wideMarked(int width, int height) {
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(Qt::red);
    for (int y = 0; y < height; ++y)
        for (int x = width / 2; x < width; ++x)
            picture.setPixel(x, y, qRgb(0, 0, 255));
    return picture;
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

// The Image menu in the real main window: its items and keys, the on-screen turn of a picture
// that is no JPEG, and the lossless rewrite of a JPEG after the question asked once a session.
class tst_ImageMenu : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void menuFollowsViewWithItsKeys();
    void otherFormatsTurnOnScreenOnly();
    void turnKeysWorkFromTheAngleField();
    void flipsAreOfferedForJpegOnly();
    void jpegIsRewrittenAfterOneQuestionPerSession();
    void flipMirrorsTheJpegFile();
    void partialBlocksAskBeforeTrimming();
    void readOnlyFileGetsAMessageAndStays();
    void imageListCellFollowsTheTurn();

private:
    QString pathOf(const QString& name) const { return QDir(home->path()).filePath(name); }
    void open(const QString& path);
    void pressOnPicture(QKeyCombination key);

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
};

void tst_ImageMenu::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    qputenv("XDG_CONFIG_HOME", QDir(home->path()).filePath(".config").toUtf8());
    qputenv("XDG_CACHE_HOME", QDir(home->path()).filePath(".cache").toUtf8());
    QVERIFY(wideMarked(160, 80).save(pathOf("wide.png")));
    QVERIFY(wideMarked(160, 80).save(pathOf("wide.jpg"), "JPEG", 95));
    controller = std::make_unique<Controller>();
    controller->skipSplash = true;
    controller->loadMainWindow();
    QVERIFY(controller->itsMainWindow && controller->itsWmfView);
    controller->itsMainWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(controller->itsMainWindow));
    controller->itsMainWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(controller->itsMainWindow));
}

void tst_ImageMenu::cleanup() {
    if (controller && controller->itsMainWindow)
        delete controller->itsMainWindow.data();
    controller.reset();
    home.reset();
}

void tst_ImageMenu::open(const QString& path) {
    controller->setSourceFileName(path, false);
    QVERIFY(!controller->getCGImage().isNull());
    controller->itsWmfView->setFocus();
    QTRY_VERIFY(controller->itsWmfView->hasFocus());
}

void tst_ImageMenu::pressOnPicture(QKeyCombination key) {
    // A closed question hands the window's activation back through the window system, which
    // the offscreen platform does not always do: the menu keys need the window active.
    controller->itsMainWindow->activateWindow();
    QTRY_VERIFY(QApplication::activeWindow() == controller->itsMainWindow);
    QTest::keyClick(controller->itsWmfView, key.key(), key.keyboardModifiers());
}

void tst_ImageMenu::menuFollowsViewWithItsKeys() {
    QStringList titles;
    for (QAction* menu : controller->itsMainWindow->menuBar()->actions())
        titles << menu->text();
    QCOMPARE(titles, (QStringList{"&File", "&Edit", "&View", "&Image", "&Help"}));
    QCOMPARE(controller->itsMenuItemRotateLeft->text(), QStringLiteral("Rotate &Left"));
    QCOMPARE(controller->itsMenuItemRotateRight->text(), QStringLiteral("Rotate &Right"));
    QCOMPARE(controller->itsMenuItemFlipHorizontal->text(), QStringLiteral("Flip &Horizontal"));
    QCOMPARE(controller->itsMenuItemFlipVertical->text(), QStringLiteral("Flip &Vertical"));
    QCOMPARE(controller->itsMenuItemRotateLeft->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_L));
    QCOMPARE(controller->itsMenuItemRotateRight->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_R));
    // No other item of any menu has these keys.
    int owners = 0;
    for (QAction* menu : controller->itsMainWindow->menuBar()->actions())
        for (QAction* item : menu->menu()->actions())
            for (const QKeySequence& key : item->shortcuts())
                owners += key == QKeySequence(Qt::CTRL | Qt::Key_L) ||
                          key == QKeySequence(Qt::CTRL | Qt::Key_R);
    QCOMPARE(owners, 2);
}

void tst_ImageMenu::otherFormatsTurnOnScreenOnly() {
    const QString path = pathOf("wide.png");
    const QByteArray before = readAll(path);
    open(path);
    ScopedAnswers answerer({});
    pressOnPicture(Qt::CTRL | Qt::Key_R);
    QCOMPARE(controller->getRotation(), 90);
    QCOMPARE(controller->itsRotateSlider->value(), 90);
    QCOMPARE(controller->itsRotateText->text(), QStringLiteral("90"));
    pressOnPicture(Qt::CTRL | Qt::Key_R);
    QCOMPARE(controller->getRotation(), 180);
    pressOnPicture(Qt::CTRL | Qt::Key_R); // past a half turn, as the slider holds it
    QCOMPARE(controller->getRotation(), -90);
    QCOMPARE(controller->itsRotateSlider->value(), -90);
    pressOnPicture(Qt::CTRL | Qt::Key_L);
    pressOnPicture(Qt::CTRL | Qt::Key_L);
    QCOMPARE(controller->getRotation(), 90);
    // Through the menu item as well.
    controller->itsMenuItemRotateLeft->trigger();
    QCOMPARE(controller->getRotation(), 0);
    QCOMPARE(controller->itsRotateText->text(), QStringLiteral("0"));
    QCOMPARE(readAll(path), before);
    QCOMPARE(answerer.seen->names, QStringList());
}

void tst_ImageMenu::turnKeysWorkFromTheAngleField() {
    open(pathOf("wide.png"));
    controller->itsRotateText->setFocus();
    QTRY_VERIFY(controller->itsRotateText->hasFocus());
    controller->itsRotateText->setText(QStringLiteral("30"));
    QTest::keyClick(controller->itsRotateText, Qt::Key_Return); // the typed angle applies
    QCOMPARE(controller->getRotation(), 30);
    QTest::keyClick(controller->itsRotateText, Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(controller->getRotation(), 120);
    QCOMPARE(controller->itsRotateText->text(), QStringLiteral("120"));
    QCOMPARE(controller->itsRotateSlider->value(), 120);
}

void tst_ImageMenu::flipsAreOfferedForJpegOnly() {
    QMenu* menu = controller->itsMenuItemFlipHorizontal->associatedObjects().isEmpty()
                      ? nullptr
                      : qobject_cast<QMenu*>(
                            controller->itsMenuItemFlipHorizontal->associatedObjects().first());
    QVERIFY(menu);
    // No picture: nothing to turn.
    emit menu->aboutToShow();
    QVERIFY(!controller->itsMenuItemRotateRight->isEnabled());
    QVERIFY(!controller->itsMenuItemFlipHorizontal->isEnabled());

    open(pathOf("wide.png"));
    QVERIFY(controller->itsMenuItemRotateRight->isEnabled()); // as soon as the picture shows
    emit menu->aboutToShow();
    QVERIFY(controller->itsMenuItemRotateLeft->isEnabled());
    QVERIFY(controller->itsMenuItemRotateRight->isEnabled());
    QVERIFY(!controller->itsMenuItemFlipHorizontal->isEnabled());
    QVERIFY(!controller->itsMenuItemFlipVertical->isEnabled());

    open(pathOf("wide.jpg"));
    emit menu->aboutToShow();
    QVERIFY(controller->itsMenuItemFlipHorizontal->isEnabled());
    QVERIFY(controller->itsMenuItemFlipVertical->isEnabled());
}

void tst_ImageMenu::jpegIsRewrittenAfterOneQuestionPerSession() {
    const QString path = pathOf("wide.jpg");
    const QByteArray original = readAll(path);
    const QImage originalPixels = QImage(path).convertToFormat(QImage::Format_RGB32);
    open(path);
    QCOMPARE(controller->itsSizeField->text(), QStringLiteral("120 * 60"));
    {
        ScopedAnswers answerer({"Cancel"});
        pressOnPicture(Qt::CTRL | Qt::Key_R);
        QCOMPARE(answerer.seen->names, QStringList{"jpegTurnQuestion"});
        QCOMPARE(answerer.seen->texts.value(0),
                 QStringLiteral("Rotate the JPEG file itself? This rewrites the file losslessly."));
    }
    QCOMPARE(readAll(path), original); // cancelled: nothing changed, and asked again
    QCOMPARE(controller->getRotation(), 0);
    {
        ScopedAnswers answerer({"Rotate"});
        pressOnPicture(Qt::CTRL | Qt::Key_R);
        QCOMPARE(answerer.seen->names, QStringList{"jpegTurnQuestion"});
    }
    // The file is turned, the view shows it, and the angle is still the picture's own.
    const QImage turned = QImage(path);
    QCOMPARE(turned.size(), QSize(80, 160));
    QCOMPARE(QColor(turned.pixel(40, 10)).blue(), 0); // red went to the top
    QCOMPARE(QColor(turned.pixel(40, 150)).red(), 0); // blue to the bottom
    QCOMPARE(controller->getCGImage().size(), QSize(80, 160));
    QCOMPARE(controller->itsSizeField->text(), QStringLiteral("60 * 120")); // points at 96 dpi
    QCOMPARE(controller->getRotation(), 0);
    {
        ScopedAnswers answerer({});
        pressOnPicture(Qt::CTRL | Qt::Key_L); // not asked again this session
        QCOMPARE(answerer.seen->names, QStringList());
    }
    // Right then left: the very picture the file held.
    QCOMPARE(QImage(path).convertToFormat(QImage::Format_RGB32), originalPixels);
    QCOMPARE(controller->getCGImage().size(), QSize(160, 80));

    // A new session asks again.
    cleanup();
    init();
    open(pathOf("wide.jpg"));
    ScopedAnswers answerer({"Cancel"});
    pressOnPicture(Qt::CTRL | Qt::Key_L);
    QCOMPARE(answerer.seen->names, QStringList{"jpegTurnQuestion"});
}

void tst_ImageMenu::flipMirrorsTheJpegFile() {
    const QString path = pathOf("wide.jpg");
    open(path);
    ScopedAnswers answerer({"Flip"});
    controller->itsMenuItemFlipHorizontal->trigger();
    QCOMPARE(answerer.seen->names, QStringList{"jpegTurnQuestion"});
    QCOMPARE(answerer.seen->texts.value(0),
             QStringLiteral("Flip the JPEG file itself? This rewrites the file losslessly."));
    const QImage flipped = QImage(path);
    QCOMPARE(flipped.size(), QSize(160, 80));
    QCOMPARE(QColor(flipped.pixel(10, 40)).red(), 0); // blue on the left now
    QCOMPARE(QColor(flipped.pixel(150, 40)).blue(), 0);
    controller->itsMenuItemFlipVertical->trigger(); // confirmed already
    QCOMPARE(answerer.seen->names.size(), 1);
    QCOMPARE(QImage(path).size(), QSize(160, 80));
}

void tst_ImageMenu::partialBlocksAskBeforeTrimming() {
    // 4:2:0 blocks are 16 pixels a side: 45 rows leave 13 in a partial block at the bottom.
    const QString path = pathOf("odd.jpg");
    QVERIFY(wideMarked(70, 45).save(path, "JPEG", 90));
    const QByteArray before = readAll(path);
    open(path);
    {
        ScopedAnswers answerer({"Rotate", "Cancel"});
        pressOnPicture(Qt::CTRL | Qt::Key_R);
        QCOMPARE(answerer.seen->names, (QStringList{"jpegTurnQuestion", "jpegTrimQuestion"}));
        QVERIFY2(answerer.seen->texts.value(1).contains("13 pixel rows"),
                 qPrintable(answerer.seen->texts.value(1)));
    }
    QCOMPARE(readAll(path), before);
    {
        ScopedAnswers answerer({"Trim and Turn"});
        pressOnPicture(Qt::CTRL | Qt::Key_R);
        QCOMPARE(answerer.seen->names, QStringList{"jpegTrimQuestion"});
    }
    QCOMPARE(QImage(path).size(), QSize(32, 70));
    QCOMPARE(controller->getCGImage().size(), QSize(32, 70));
}

void tst_ImageMenu::readOnlyFileGetsAMessageAndStays() {
    const QString path = pathOf("wide.jpg");
    const QByteArray before = readAll(path);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup));
    open(path);
    ScopedAnswers answerer({"Rotate", "OK"});
    pressOnPicture(Qt::CTRL | Qt::Key_R);
    QCOMPARE(answerer.seen->names, (QStringList{"jpegTurnQuestion", "jpegTurnFailed"}));
    QCOMPARE(answerer.seen->texts.value(1), QStringLiteral("“wide.jpg” was not turned."));
    QCOMPARE(readAll(path), before);
    QCOMPARE(controller->getCGImage().size(), QSize(160, 80));
}

void tst_ImageMenu::imageListCellFollowsTheTurn() {
    const QString path = pathOf("wide.jpg");
    controller->setSourceFileName(path, true); // the list holds the picture's cell
    QTRY_COMPARE(controller->itsImageListView->getCount(), 1);
    listImageViewItem* cell = controller->itsImageListView->cells().first();
    QTRY_VERIFY(!cell->small_image.isNull());
    QVERIFY(cell->small_image.width() > cell->small_image.height());
    controller->itsWmfView->setFocus();
    ScopedAnswers answerer({"Rotate"});
    pressOnPicture(Qt::CTRL | Qt::Key_R);
    QTRY_VERIFY(!cell->small_image.isNull() &&
                cell->small_image.width() < cell->small_image.height());
}

QTEST_MAIN(tst_ImageMenu)
#include "tst_ImageMenu.moc"
