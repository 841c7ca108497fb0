#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"

#include <QFileDevice>
#include <QFileInfo>
#include <QPainter>

#include <cstring>

namespace LegacyWriters {

bool exists(const char* coder) {
    if (!coder)
        return false;
    if (std::strcmp(coder, "movie") == 0)
        return movieWriterExists();
    for (const char* own : {"paint", "qtimage", "flic", "swf"})
        if (std::strcmp(coder, own) == 0)
            return true;
    return false;
}

int16_t write(const char* coder, const QImage& picture, QFileDevice& file, float dpi,
              const QString& target) {
    if (!exists(coder))
        return kNoEncoder;
    const std::string_view name(coder);
    if (name == "paint")
        return writePaint(picture, file, QFileInfo(target).completeBaseName());
    if (name == "qtimage")
        return writeQuickTimeImage(picture, file, dpi);
    if (name == "flic")
        return writeFlic(picture, file);
    if (name == "swf")
        return writeSwf(picture, file);
    return writeMovie(picture, file);
}

QImage onWhite(const QImage& picture) {
    if (!picture.hasAlphaChannel())
        return picture.convertToFormat(QImage::Format_RGB32);
    QImage out(picture.size(), QImage::Format_RGB32);
    if (out.isNull())
        return out;
    out.fill(Qt::white);
    QPainter painter(&out);
    painter.drawImage(0, 0, picture);
    return out;
}

} // namespace LegacyWriters
