#pragma once

class QKeyEvent;
class QWidget;

// Whether the text control `focus` can do something with the standard editing key `key` right
// now, so that the key is its own even when a menu item has the same shortcut: Copy with a
// selection, Undo with something to undo, Delete in a field that can be edited. Keys that are
// no editing key (F2, Ctrl+E, ...) are never a field's here.
bool fieldUsesEditingKey(const QWidget* focus, const QKeyEvent& key);
