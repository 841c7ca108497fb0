#include "about/VersionTextField.h"

#include <QCoreApplication>

VersionTextField::VersionTextField(QWidget* parent) : QLabel(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAlignment(Qt::AlignCenter);
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, QColor(0xd8, 0xe6, 0xf0));
    setPalette(colours);
}

void VersionTextField::awakeFromNib() {
    setText(versionText());
}

QString VersionTextField::versionText() {
    const QString version = QCoreApplication::applicationVersion();
    return QStringLiteral("version ") + (version.isEmpty() ? QStringLiteral("last") : version);
}
