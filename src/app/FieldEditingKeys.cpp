#include "app/FieldEditingKeys.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextDocument>
#include <QTextEdit>

namespace {

// The line edit inside a spin box or an editable combo box, or the widget itself.
const QLineEdit* lineEditOf(const QWidget* widget) {
    if (auto* edit = qobject_cast<const QLineEdit*>(widget))
        return edit;
    if (auto* combo = qobject_cast<const QComboBox*>(widget))
        return combo->isEditable() ? combo->lineEdit() : nullptr;
    if (qobject_cast<const QAbstractSpinBox*>(widget))
        return widget->findChild<QLineEdit*>();
    return nullptr;
}

} // namespace

bool fieldUsesEditingKey(const QWidget* focus, const QKeyEvent& key) {
    if (!focus)
        return false;
    const bool copy = key.matches(QKeySequence::Copy);
    const bool undo = key.matches(QKeySequence::Undo);
    const bool del =
        key.key() == Qt::Key_Delete && (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (!copy && !undo && !del)
        return false;
    if (const QLineEdit* edit = lineEditOf(focus)) {
        if (copy)
            return edit->hasSelectedText() && edit->echoMode() == QLineEdit::Normal;
        if (undo)
            return !edit->isReadOnly() && edit->isUndoAvailable();
        return !edit->isReadOnly();
    }
    if (auto* text = qobject_cast<const QTextEdit*>(focus)) {
        if (copy)
            return text->textCursor().hasSelection();
        if (undo)
            return !text->isReadOnly() && text->document()->isUndoAvailable();
        return !text->isReadOnly();
    }
    if (auto* plain = qobject_cast<const QPlainTextEdit*>(focus)) {
        if (copy)
            return plain->textCursor().hasSelection();
        if (undo)
            return !plain->isReadOnly() && plain->document()->isUndoAvailable();
        return !plain->isReadOnly();
    }
    return false;
}
