#include "thumbs/ThumbnailCache.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ThumbnailCache {

namespace {

// No entry of a 256-pixel folder needs more; a larger file there is not one of ours to trust.
constexpr qint64 kMaxEntryBytes = 4 << 20;

const char kUriKey[] = "Thumb::URI";
const char kMTimeKey[] = "Thumb::MTime";

QString folderOf(Flavour flavour) {
    return root() + (flavour == Flavour::Large ? QStringLiteral("/large")
                                               : QStringLiteral("/normal"));
}

QString failureFolder() {
    return root() + QStringLiteral("/fail/ormidon-") + QStringLiteral(ORMIDON_VERSION);
}

QString entryName(const Source& source) {
    return QString::fromLatin1(
               QCryptographicHash::hash(source.uri, QCryptographicHash::Md5).toHex()) +
           QStringLiteral(".png");
}

// Creates `folder` and the missing folders above it, each for the user only.
bool makePrivateFolder(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    struct stat st {};
    if (::stat(path.constData(), &st) == 0)
        return S_ISDIR(st.st_mode);
    const QString parent = QFileInfo(folder).path();
    if (parent != folder && !makePrivateFolder(parent))
        return false;
    return ::mkdir(path.constData(), 0700) == 0 || errno == EEXIST;
}

// Writes `bytes` to `target` whole or not at all: into a new file of the same folder, made
// for the user only, then renamed over the target.
bool writeAtomically(const QString& target, const QByteArray& bytes) {
    if (!makePrivateFolder(QFileInfo(target).path()))
        return false;
    QByteArray temporary = QFile::encodeName(target) + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data()); // mode 0600
    if (fd < 0)
        return false;
    qint64 written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        written += n;
    }
    const bool complete = written == bytes.size() && ::fchmod(fd, 0600) == 0;
    const bool closed = ::close(fd) == 0;
    if (!complete || !closed ||
        ::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0) {
        ::unlink(temporary.constData());
        return false;
    }
    return true;
}

// The keys go on the image itself: QImageWriter::setText takes the first colon of a key as the
// end of the key, and every key of the standard has two.
QByteArray pngWithStamp(const Source& source, QImage image, bool withSize) {
    const int width = image.width(), height = image.height();
    image.setText(QString::fromLatin1(kUriKey), QString::fromLatin1(source.uri));
    image.setText(QString::fromLatin1(kMTimeKey), QString::number(source.mtime));
    image.setText(QStringLiteral("Thumb::Size"), QString::number(source.size));
    if (withSize) {
        image.setText(QStringLiteral("Thumb::Image::Width"), QString::number(width));
        image.setText(QStringLiteral("Thumb::Image::Height"), QString::number(height));
    }
    image.setText(QStringLiteral("Software"), QStringLiteral("Ormidon " ORMIDON_VERSION));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "png") ? bytes : QByteArray();
}

// Whether the entry's stamp names this picture as it is now. A missing Thumb::MTime never
// matches: the standard makes it mandatory. (The keys are read from the decoded image:
// QImageReader::text splits keys at their first colon too.)
bool stampMatches(const QImage& entry, const Source& source) {
    if (entry.text(QString::fromLatin1(kUriKey)).toLatin1() != source.uri)
        return false;
    bool ok = false;
    const QString mtime = entry.text(QString::fromLatin1(kMTimeKey)).trimmed();
    qint64 seconds = mtime.toLongLong(&ok);
    if (!ok) {
        const double fractional = mtime.toDouble(&ok); // some writers add a fraction
        seconds = qint64(fractional);
    }
    return ok && seconds == source.mtime;
}

// The picture of a cache file no larger than `side`, or a null image.
QImage readEntry(const QString& path, int side) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxEntryBytes)
        return {};
    QImageReader reader(&file, "png");
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > side || size.height() > side)
        return {};
    QImage image;
    return reader.read(&image) ? image : QImage();
}

} // namespace

int sideOf(Flavour flavour) { return flavour == Flavour::Large ? 256 : 128; }

Flavour flavourFor(int pixels) { return pixels <= 128 ? Flavour::Normal : Flavour::Large; }

QString root() {
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return QDir::cleanPath(base + QStringLiteral("/thumbnails"));
}

Source describe(const QString& path) {
    Source source;
    if (path.isEmpty())
        return source;
    source.path = QFileInfo(path).absoluteFilePath();
    struct stat st {};
    if (::stat(QFile::encodeName(source.path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return source;
    source.uri = QUrl::fromLocalFile(source.path).toEncoded();
    source.mtime = qint64(st.st_mtim.tv_sec);
    source.size = qint64(st.st_size);
    source.valid = true;
    return source;
}

QString entryPath(const Source& source, Flavour flavour) {
    return folderOf(flavour) + u'/' + entryName(source);
}

QString failurePath(const Source& source) { return failureFolder() + u'/' + entryName(source); }

bool isInsideCache(const QString& path) {
    const QString cache = root() + u'/';
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (absolute.startsWith(cache))
        return true;
    // Through a link to it, or a cache folder reached by a link.
    const QString real = QFileInfo(absolute).canonicalFilePath();
    const QString realCache = QFileInfo(root()).canonicalFilePath();
    return !real.isEmpty() && !realCache.isEmpty() && real.startsWith(realCache + u'/');
}

QImage read(const Source& source, Flavour flavour) {
    if (!source.valid)
        return {};
    const QImage entry = readEntry(entryPath(source, flavour), sideOf(flavour));
    return !entry.isNull() && stampMatches(entry, source) ? entry : QImage();
}

bool write(const Source& source, Flavour flavour, const QImage& thumbnail) {
    if (!source.valid || thumbnail.isNull() || isInsideCache(source.path))
        return false;
    const QByteArray png = pngWithStamp(source, thumbnail, true);
    return !png.isEmpty() && writeAtomically(entryPath(source, flavour), png);
}

bool hasFailed(const Source& source) {
    if (!source.valid)
        return false;
    const QImage entry = readEntry(failurePath(source), sideOf(Flavour::Large));
    return !entry.isNull() && stampMatches(entry, source);
}

bool writeFailure(const Source& source) {
    if (!source.valid || isInsideCache(source.path))
        return false;
    QImage mark(1, 1, QImage::Format_ARGB32);
    mark.fill(Qt::transparent);
    const QByteArray png = pngWithStamp(source, mark, false);
    return !png.isEmpty() && writeAtomically(failurePath(source), png);
}

} // namespace ThumbnailCache
