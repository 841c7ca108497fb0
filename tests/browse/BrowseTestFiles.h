#pragma once

// Real files for the browse suites: images written by Qt's own encoders, plain text files and
// sub-folders, all inside a temporary folder the test owns.

#include <QDir>
#include <QFile>
#include <QImage>
#include <QString>

namespace BrowseTestFiles {

inline QString writeImage(const QString& folder, const QString& name, const char* format = "PNG") {
    QImage image(24, 16, QImage::Format_RGB32);
    image.fill(Qt::darkYellow);
    const QString path = folder + u'/' + name;
    return image.save(path, format) ? path : QString();
}

inline QString writeText(const QString& folder, const QString& name) {
    const QString path = folder + u'/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write("not an image\n");
    return path;
}

inline QString makeFolder(const QString& folder, const QString& name) {
    const QString path = folder + u'/' + name;
    return QDir().mkpath(path) ? path : QString();
}

} // namespace BrowseTestFiles
