#include "app/MenuShortcutPriority.h"
#include "app/FieldEditingKeys.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace {

bool hasShortcut(const QAction* action, const QKeySequence& pressed) {
    // An item whose shortcut belongs to one widget (the picture's single keys: 1, 0, +, -)
    // leaves the key to the field that has the keyboard.
    if (!action->isEnabled() || action->shortcutContext() == Qt::WidgetShortcut)
        return false;
    for (const QKeySequence& shortcut : action->shortcuts())
        if (shortcut.matches(pressed) == QKeySequence::ExactMatch)
            return true;
    return false;
}

// The items of a menu and of its submenus, depth first.
bool menuHasShortcut(const QList<QAction*>& actions, const QKeySequence& pressed) {
    for (const QAction* action : actions) {
        if (hasShortcut(action, pressed))
            return true;
        if (const QMenu* sub = action->menu(); sub && menuHasShortcut(sub->actions(), pressed))
            return true;
    }
    return false;
}

} // namespace

MenuShortcutPriority::MenuShortcutPriority(QWidget* window) : QObject(window), window(window) {
    if (QCoreApplication* app = QCoreApplication::instance())
        app->installEventFilter(this);
}

MenuShortcutPriority::~MenuShortcutPriority() {
    if (QCoreApplication* app = QCoreApplication::instance())
        app->removeEventFilter(this);
}

bool MenuShortcutPriority::isMenuShortcut(const QKeyEvent& key) const {
    if (!window)
        return false;
    const int code = key.key();
    if (code == 0 || code == Qt::Key_unknown || code == Qt::Key_Control || code == Qt::Key_Shift ||
        code == Qt::Key_Alt || code == Qt::Key_Meta)
        return false;
    // The keypad's digits and signs are the same keys to a shortcut.
    const QKeySequence pressed(
        QKeyCombination(key.modifiers() & ~Qt::KeypadModifier, Qt::Key(code)));
    if (menuHasShortcut(window->actions(), pressed))
        return true;
    for (const QMenuBar* bar : window->findChildren<QMenuBar*>())
        if (menuHasShortcut(bar->actions(), pressed))
            return true;
    return false;
}

bool MenuShortcutPriority::eventFilter(QObject* object, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride)
        return false;
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget || !window || widget->window() != window)
        return false; // a dialog's fields keep their keys: the window's menus don't reach there
    auto* key = static_cast<QKeyEvent*>(event);
    if (fieldUsesEditingKey(widget, *key) || !isMenuShortcut(*key))
        return false; // a field copies its selection and undoes its typing itself
    // Not accepted and not delivered: no control claims the key, so the shortcut runs.
    event->ignore();
    return true;
}
