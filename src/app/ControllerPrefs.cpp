// The preferences file: seven settings kept between runs in an old-style property list at
// ~/Library/Preferences/zel.pref. Read once while the window starts, written once at shutdown.

#include "app/Controller.h"
#include "app/PropertyList.h"
#include "app/TextNumbers.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QStringDecoder>

namespace {

// A preferences file is a few hundred bytes; anything far larger is not ours to load whole.
constexpr qint64 maxPrefFileSize = 4 * 1024 * 1024;

const QString keyDpi = QStringLiteral("dpi");
const QString keyFormat = QStringLiteral("expformat");
const QString keyAngle = QStringLiteral("angle");
const QString keySource = QStringLiteral("srcLocation");
const QString keyDestination = QStringLiteral("dstLocation");
const QString keyFillList = QStringLiteral("fillList");
const QString keyStripMetadata = QStringLiteral("stripMetadata");

// The file's bytes as text. The file is written as ASCII; a hand-edited one in UTF-8 is read
// as such, and any other bytes are taken one character each, so nothing fails to decode.
QString decodePrefText(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        text = QString::fromLatin1(bytes);
    return text;
}

// The whole file, or nothing when it is missing, not a plain file, unreadable or too large.
std::optional<QByteArray> readPrefBytes(const QString& path) {
    const QFileInfo info(path);
    if (!info.isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.read(maxPrefFileSize + 1);
    if (bytes.size() > maxPrefFileSize)
        return std::nullopt;
    return bytes;
}

} // namespace

QString Controller::prefFilePath() {
    return QDir::homePath() + QStringLiteral("/Library/Preferences/zel.pref");
}

bool Controller::readPrefFile() {
    const QString path = prefFilePath();
    itsPref.dpi = 72.0f;

    std::optional<PropertyList::Dictionary> prefs;
    if (const std::optional<QByteArray> bytes = readPrefBytes(path)) {
        const QString text = decodePrefText(*bytes);
        // A malformed file does not stop the start: it is read as no file, and the next
        // shutdown replaces it with a good one.
        if (!text.isEmpty())
            prefs = PropertyList::readDictionary(text);
    }

    // Set after the read and before the keys, so that a value in the file always wins.
    itsPref.exportFormat = QStringLiteral("TIFF");
    m_rotate = 0;

    if (prefs) {
        if (auto it = prefs->constFind(keyDpi); it != prefs->cend())
            itsPref.dpi = leadingFloatValue(*it);
        if (auto it = prefs->constFind(keyFormat); it != prefs->cend())
            itsPref.exportFormat = *it;
        if (auto it = prefs->constFind(keyAngle); it != prefs->cend())
            m_rotate = leadingIntValue(*it);
        if (auto it = prefs->constFind(keySource); it != prefs->cend())
            savedLoaction = *it;
        if (auto it = prefs->constFind(keyDestination); it != prefs->cend() && itsDstFileName)
            itsDstFileName->setText(*it);
        if (auto it = prefs->constFind(keyFillList); it != prefs->cend() && itsBatch) {
            // Set as the program's own value, not a click: the box's action is not sent.
            const QSignalBlocker blocker(itsBatch.data());
            itsBatch->setChecked(leadingIntValue(*it) != 0);
        }
        if (auto it = prefs->constFind(keyStripMetadata);
            it != prefs->cend() && itsStripMetadata)
            itsStripMetadata->setChecked(leadingIntValue(*it) != 0);
    }

    // The angle goes to both rotation controls whether or not there was a file. Their
    // actions are not sent, so the slider's range cannot change m_rotate behind our back.
    if (itsRotateText) {
        const QSignalBlocker blocker(itsRotateText.data());
        itsRotateText->setText(QString::number(m_rotate));
    }
    if (itsRotateSlider) {
        const QSignalBlocker blocker(itsRotateSlider.data());
        itsRotateSlider->setValue(m_rotate);
    }
    return prefs.has_value();
}

void Controller::writePrefFile() {
    PropertyList::Dictionary prefs;
    prefs.insert(keyDpi, QString::asprintf("%.2f", double(itsPref.dpi)));
    prefs.insert(keyFormat, itsPref.exportFormat);
    prefs.insert(keyAngle, QString::asprintf("%d", int(m_rotate)));
    prefs.insert(keySource, itsSrcFileName ? itsSrcFileName->text() : QString());
    prefs.insert(keyDestination, itsDstFileName ? itsDstFileName->text() : QString());
    prefs.insert(keyFillList, QString::number(itsBatch && itsBatch->isChecked() ? 1 : 0));
    prefs.insert(keyStripMetadata,
                 QString::number(itsStripMetadata && itsStripMetadata->isChecked() ? 1 : 0));

    // The writer's text is pure ASCII, so Latin-1 bytes are ASCII bytes.
    const QByteArray bytes = PropertyList::writeDictionary(prefs).toLatin1();

    // A home without a Library/Preferences folder is usual on Linux: make it. Any failure
    // here or below is silent; the next start then sees the old file or none.
    const QString path = prefFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    file.write(bytes);
}
