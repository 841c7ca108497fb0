#pragma once

#include <QDialog>
#include <QString>

#include <functional>

class QLineEdit;

// Asks for a file's new name: the current name in a field, selected without its suffix so that
// typing replaces just the name. Confirming hands the name to `tryRename`, which renames and
// answers an error sentence, or nothing on success; an error shows in a message box over the
// dialog, which stays open for another try. Closes only on success or Cancel.
class RenameDialog : public QDialog {
    Q_OBJECT
public:
    using TryRename = std::function<QString(const QString& newName)>;
    RenameDialog(const QString& path, TryRename tryRename, QWidget* parent);

    QLineEdit* nameField() const { return field; }

    void accept() override;

private:
    QLineEdit* field = nullptr;
    TryRename tryRename;
};
