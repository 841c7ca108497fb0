#pragma once

// A controller with the real main window, a source folder of small pictures made here and a
// destination folder, both in temporary folders; HOME points at a temporary folder as well so
// that no preferences of the user are read or written.

#include "app/Controller.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QLineEdit>
#include <QMainWindow>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

struct FlowFixture {
    QTemporaryDir home;
    QTemporaryDir sources;
    QTemporaryDir out;
    std::unique_ptr<Controller> controller;

    FlowFixture() {
        qputenv("HOME", home.path().toLocal8Bit());
        qunsetenv("XDG_CONFIG_HOME");
        controller = std::make_unique<Controller>();
        controller->skipSplash = true;
        controller->loadMainWindow();
        controller->itsMainWindow->show();
        controller->itsDstFileName->setText(out.path());
    }

    // A picture of w x h with a coloured quarter, so that a read-back shows more than a size.
    // JPEG records 72 dpi exactly, so one pixel is one point and 72 dpi output keeps the size.
    QString makeImage(const QString& name, int w = 64, int h = 48, const char* format = "JPEG") {
        QImage image(w, h, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QPainter(&image).fillRect(0, 0, w / 2, h / 2, Qt::yellow);
        image.setDotsPerMeterX(2835);
        image.setDotsPerMeterY(2835);
        const QString path = sources.path() + "/" + name;
        image.save(path, format);
        return path;
    }
    QString writeBytes(const QString& name, const QByteArray& bytes) {
        const QString path = sources.path() + "/" + name;
        QFile f(path);
        if (f.open(QIODevice::WriteOnly))
            f.write(bytes);
        return path;
    }
    QString outPath(const QString& name) const { return out.path() + "/" + name; }

    // Shows the picture as the user's choice of source would.
    void open(const QString& path) { controller->setSourceFileName(path, false); }

    bool selectFormat(const QString& code) {
        const int i = controller->itsFormatCombo->findText(code);
        controller->itsFormatCombo->setCurrentIndex(i);
        return i >= 0;
    }
    void setDpi(const QString& text) { controller->itsDpiCombo->setCurrentText(text); }

    static QSize readBackSize(const QString& path) {
        QImageReader reader(path);
        const QImage image = reader.read();
        return image.size();
    }
    static QByteArray readAll(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};
