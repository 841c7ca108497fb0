#pragma once

// The about panel's version line: "version " and the program's version.

#include <QLabel>

class VersionTextField : public QLabel {
    Q_OBJECT
public:
    explicit VersionTextField(QWidget* parent = nullptr);
    void awakeFromNib();

    // "version " and the application's version, or "version last" when it has none.
    static QString versionText();
};
