#include "files/RenameDialog.h"
#include "files/FileRename.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

RenameDialog::RenameDialog(const QString& path, TryRename tryRename, QWidget* parent)
    : QDialog(parent), tryRename(std::move(tryRename)) {
    setObjectName(QStringLiteral("renameDialog"));
    setWindowTitle(tr("Rename"));
    const QString name = QFileInfo(path).fileName();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("New name for “%1”:").arg(name), this));
    field = new QLineEdit(name, this);
    field->setObjectName(QStringLiteral("renameField"));
    field->setMinimumWidth(fontMetrics().averageCharWidth() * 40);
    layout->addWidget(field);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("Rename"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &RenameDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &RenameDialog::reject);
    field->setFocus();
    field->setSelection(0, FileRename::baseNameLength(name));
}

void RenameDialog::accept() {
    const QString error = tryRename ? tryRename(field->text()) : QString();
    if (error.isEmpty()) {
        QDialog::accept();
        return;
    }
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Rename"), error, QMessageBox::Ok, this);
    box->setObjectName(QStringLiteral("renameError"));
    box->button(QMessageBox::Ok)->setText(tr("OK"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QDialog::finished, field, [this] { field->setFocus(); });
    box->open();
}
