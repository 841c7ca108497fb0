// The menu shortcuts of the real main window work wherever the keyboard is, text fields
// included: Ctrl+E converts from inside the angle, source, destination and resolution fields
// (a line edit on X11 would take it for "end of line"), and so do Ctrl+Shift+E, Ctrl+G and
// Ctrl+,; a field keeps its editing keys that are no menu shortcut. Keys go to the window as
// the system sends them and reach the control that has the keyboard.

#include "app/Controller.h"
#include "app/MenuShortcutPriority.h"
#include "app/PrefDrawer.h"
#include "view/wmfImageView.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// On X11 a line edit claims Ctrl+E ("end of line") and several other control keys before the
// shortcuts are looked at; the offscreen platform has other key bindings, so here every text
// control claims every control key the same way, as the worst platform would.
class ClaimsControlKeys : public QObject {
protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::ShortcutOverride)
            return false;
        if (!(static_cast<QKeyEvent*>(event)->modifiers() & Qt::ControlModifier))
            return false;
        event->accept();
        return true;
    }
};

} // namespace

class tst_MenuShortcuts : public QObject {
    Q_OBJECT

    QTemporaryDir home;
    QTemporaryDir pictures;
    QTemporaryDir out;
    std::unique_ptr<Controller> c;
    ClaimsControlKeys claim;

    QString picture(const QString& name) const { return pictures.path() + u'/' + name; }
    QString output(const QString& name) const { return out.path() + u'/' + name; }

    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(c->window()->windowHandle(), key, modifiers);
    }

    // The user clicks into a field and types there.
    void clickInto(QWidget* widget) {
        QTest::mouseClick(widget, Qt::LeftButton);
        QCOMPARE(QApplication::focusWidget(), widget);
    }

    static QSize sizeOf(const QString& path) { return QImageReader(path).read().size(); }

private slots:
    void init() {
        QVERIFY(home.isValid() && pictures.isValid() && out.isValid());
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        for (const QString& name : QDir(out.path()).entryList(QDir::Files | QDir::Hidden))
            QFile::remove(output(name));
        for (const char* name : {"cat.png", "dog.png"}) {
            QImage image(80, 40, QImage::Format_RGB32);
            image.fill(Qt::darkGreen);
            image.setDotsPerMeterX(2835); // 72 dpi: one pixel is one point
            image.setDotsPerMeterY(2835);
            QVERIFY(image.save(picture(name)));
        }
        c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        c->window()->resize(900, 700);
        c->window()->show();
        QVERIFY(QTest::qWaitForWindowActive(c->window()));
        c->itsDstFileName->setText(out.path());
        for (QLineEdit* field : c->window()->findChildren<QLineEdit*>())
            field->installEventFilter(&claim);
        c->itsFormatCombo->setCurrentIndex(c->itsFormatCombo->findText("PNGf"));
        c->setSourceFileName(picture("cat.png"), false);
        QVERIFY(!QFile::exists(output("cat.PNGf")));
        // The drawer with the destination and resolution fields slides open at start-up.
        QTRY_COMPARE(c->itsPrefDrawer->state(), PrefDrawer::Open);
        QTRY_VERIFY(c->itsDstFileName->isVisible() && c->itsDstFileName->width() > 20);
    }

    void cleanup() { c.reset(); }

    void ctrlEConvertsFromEachTextField_data() {
        QTest::addColumn<QString>("field");
        QTest::newRow("angle") << "itsRotateText";
        QTest::newRow("source") << "itsSrcFileName";
        QTest::newRow("destination") << "itsDstFileName";
        QTest::newRow("resolution") << "itsDpiCombo";
    }
    void ctrlEConvertsFromEachTextField() {
        QFETCH(QString, field);
        QWidget* widget = c->window()->findChild<QWidget*>(field);
        QVERIFY(widget);
        // An editable list is clicked in its text; the list itself holds the keyboard.
        auto* combo = qobject_cast<QComboBox*>(widget);
        QTest::mouseClick(combo ? combo->lineEdit() : widget, Qt::LeftButton);
        QCOMPARE(QApplication::focusWidget(), widget);
        pressKey(Qt::Key_E, Qt::ControlModifier);
        QCOMPARE(sizeOf(output("cat.PNGf")), QSize(80, 40));
        QCOMPARE(QApplication::focusWidget(), widget); // the field keeps the keyboard
    }

    void typedAngleThenReturnThenCtrlE() {
        clickInto(c->itsRotateText);
        c->itsRotateText->selectAll();
        QTest::keyClicks(c->itsRotateText, "90");
        pressKey(Qt::Key_Return);
        QCOMPARE(c->getRotation(), 90);
        pressKey(Qt::Key_E, Qt::ControlModifier);
        QCOMPARE(sizeOf(output("cat.PNGf")), QSize(40, 80)); // turned a quarter
    }

    void ctrlShiftEStartsConvertAllFromAField() {
        clickInto(c->itsDstFileName);
        pressKey(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_VERIFY(QFile::exists(output("dog.PNGf")));
        QTRY_COMPARE(c->itsConvertAll->text(), QStringLiteral("Convert All"));
        QCOMPARE(sizeOf(output("cat.PNGf")), QSize(80, 40));
        QCOMPARE(sizeOf(output("dog.PNGf")), QSize(80, 40));
    }

    void ctrlGAndCtrlCommaFromAField() {
        clickInto(c->itsRotateText);
        QVERIFY(!c->m_Monochrome);
        pressKey(Qt::Key_G, Qt::ControlModifier);
        QVERIFY(c->m_Monochrome);
        const PrefDrawer::State before = c->itsPrefDrawer->state();
        pressKey(Qt::Key_Comma, Qt::ControlModifier);
        QVERIFY(c->itsPrefDrawer->state() != before);
    }

    // Keys that no menu item has stay the field's: select all, then typing replaces the text.
    void aFieldKeepsItsOwnEditingKeys() {
        clickInto(c->itsDstFileName);
        pressKey(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(c->itsDstFileName->selectedText(), out.path());
        pressKey(Qt::Key_Z);
        QCOMPARE(c->itsDstFileName->text(), QStringLiteral("z"));
        pressKey(Qt::Key_Z, Qt::ControlModifier); // undo
        QCOMPARE(c->itsDstFileName->text(), out.path());
    }

    // The filter knows the window's shortcuts, and only the enabled ones.
    void onlyEnabledMenuItemsClaimAKey() {
        auto* priority = c->window()->findChild<MenuShortcutPriority*>();
        QVERIFY(priority);
        const QKeyEvent ctrlE(QEvent::ShortcutOverride, Qt::Key_E, Qt::ControlModifier);
        const QKeyEvent ctrlA(QEvent::ShortcutOverride, Qt::Key_A, Qt::ControlModifier);
        const QKeyEvent plainE(QEvent::ShortcutOverride, Qt::Key_E, Qt::NoModifier);
        QVERIFY(priority->isMenuShortcut(ctrlE));
        QVERIFY(!priority->isMenuShortcut(ctrlA));
        QVERIFY(!priority->isMenuShortcut(plainE));
        c->itsMenuItemConvert->setEnabled(false);
        QVERIFY(!priority->isMenuShortcut(ctrlE));
    }
};

QTEST_MAIN(tst_MenuShortcuts)
#include "tst_MenuShortcuts.moc"
