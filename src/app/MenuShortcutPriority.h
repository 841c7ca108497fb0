#pragma once

#include <QObject>
#include <QPointer>

class QKeyEvent;
class QWidget;

// Gives the window's own menu shortcuts priority over the editing keys of whatever control has
// the keyboard. A text field claims many control keys for itself before the shortcuts are
// looked at (on X11 a line edit takes Ctrl+E for "end of line"), so a menu command would work
// or not depending on where the keyboard is. This filter answers the control's claim for it:
// a key that is the shortcut of an enabled menu item of the window goes to the menu item; any
// other key (Ctrl+A, Ctrl+Z, Ctrl+C, ...) stays the field's. One instance per window, owned by
// the window; it watches the whole application, as Qt asks the focus widget and its parents.
class MenuShortcutPriority : public QObject {
    Q_OBJECT
public:
    explicit MenuShortcutPriority(QWidget* window);
    ~MenuShortcutPriority() override;

    // Whether `key` is the shortcut of an enabled menu item (or window action) of the window.
    bool isMenuShortcut(const QKeyEvent& key) const;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QPointer<QWidget> window;
};
