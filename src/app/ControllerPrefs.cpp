// The preferences file: six settings kept between runs in an old-style property list at
// ~/Library/Preferences/zel.pref. Read once while the window starts, written once at shutdown.

#include "app/Controller.h"
#include "app/PropertyList.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QStringDecoder>

#include <cmath>
#include <limits>

namespace {

// A preferences file is a few hundred bytes; anything far larger is not ours to load whole.
constexpr qint64 maxPrefFileSize = 4 * 1024 * 1024;

const QString keyDpi = QStringLiteral("dpi");
const QString keyFormat = QStringLiteral("expformat");
const QString keyAngle = QStringLiteral("angle");
const QString keySource = QStringLiteral("srcLocation");
const QString keyDestination = QStringLiteral("dstLocation");
const QString keyFillList = QStringLiteral("fillList");

qsizetype skipLeadingBlanks(QStringView text) {
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n' ||
                               text[i] == u'\r' || text[i] == u'\v' || text[i] == u'\f'))
        ++i;
    return i;
}

qsizetype skipDigits(QStringView text, qsizetype i) {
    while (i < text.size() && text[i] >= u'0' && text[i] <= u'9')
        ++i;
    return i;
}

// The number at the start of a text, the way settings are read back: leading blanks are
// skipped, the longest decimal number there is taken and the rest is ignored; no number at
// all gives 0. Parsed by hand so that the user's locale never changes what "96.00" means.
float leadingFloat(QStringView text) {
    const qsizetype start = skipLeadingBlanks(text);
    qsizetype i = start;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
        ++i;
    const qsizetype intStart = i;
    i = skipDigits(text, i);
    bool anyDigit = i > intStart;
    if (i < text.size() && text[i] == u'.') {
        const qsizetype fracStart = i + 1;
        const qsizetype fracEnd = skipDigits(text, fracStart);
        if (fracEnd > fracStart || anyDigit) {
            anyDigit = anyDigit || fracEnd > fracStart;
            i = fracEnd;
        }
    }
    if (!anyDigit)
        return 0.0f;
    if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype e = i + 1;
        if (e < text.size() && (text[e] == u'+' || text[e] == u'-'))
            ++e;
        const qsizetype expEnd = skipDigits(text, e);
        if (expEnd > e)
            i = expEnd;
    }
    bool ok = false;
    const double value = text.sliced(start, i - start).toDouble(&ok);
    // Out of the range of a float the value means nothing useful: treat it as no number.
    if (!ok || !std::isfinite(value) || std::fabs(value) > std::numeric_limits<float>::max())
        return 0.0f;
    return float(value);
}

// The whole number at the start of a text: leading blanks, an optional sign, digits; the rest
// is ignored, no digits give 0, and a number too large for 32 bits stops at the nearest limit.
int32_t leadingInt(QStringView text) {
    qsizetype i = skipLeadingBlanks(text);
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    constexpr int64_t limit = int64_t(std::numeric_limits<int32_t>::max()) + 1;
    int64_t magnitude = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i)
        magnitude = std::min(limit, magnitude * 10 + (text[i].unicode() - u'0'));
    if (negative)
        return int32_t(-magnitude);
    return int32_t(std::min(magnitude, limit - 1));
}

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
            itsPref.dpi = leadingFloat(*it);
        if (auto it = prefs->constFind(keyFormat); it != prefs->cend())
            itsPref.exportFormat = *it;
        if (auto it = prefs->constFind(keyAngle); it != prefs->cend())
            m_rotate = leadingInt(*it);
        if (auto it = prefs->constFind(keySource); it != prefs->cend())
            savedLoaction = *it;
        if (auto it = prefs->constFind(keyDestination); it != prefs->cend() && itsDstFileName)
            itsDstFileName->setText(*it);
        if (auto it = prefs->constFind(keyFillList); it != prefs->cend() && itsBatch) {
            // Set as the program's own value, not a click: the box's action is not sent.
            const QSignalBlocker blocker(itsBatch.data());
            itsBatch->setChecked(leadingInt(*it) != 0);
        }
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
