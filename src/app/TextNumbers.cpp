#include "app/TextNumbers.h"

#include <QLocale>
#include <QRegularExpression>

#include <limits>

namespace {

QString leadingMatch(const QString& text, const QRegularExpression& pattern) {
    const QRegularExpressionMatch match = pattern.match(text);
    return match.hasMatch() ? match.captured(1) : QString();
}

} // namespace

float leadingFloatValue(const QString& text) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*([+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?))"));
    bool ok = false;
    const double value = QLocale::c().toDouble(leadingMatch(text, pattern), &ok);
    if (!ok)
        return 0.0f;
    if (value > std::numeric_limits<float>::max())
        return std::numeric_limits<float>::max();
    if (value < -std::numeric_limits<float>::max())
        return -std::numeric_limits<float>::max();
    return float(value);
}

int32_t leadingIntValue(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"(^\s*([+-]?\d+))"));
    const QString digits = leadingMatch(text, pattern);
    if (digits.isEmpty())
        return 0;
    const bool negative = digits.startsWith('-');
    int64_t value = 0;
    for (const QChar c : digits) {
        if (!c.isDigit())
            continue;
        value = value * 10 + (c.unicode() - '0');
        if (value > int64_t(std::numeric_limits<int32_t>::max()) + 1)
            break;
    }
    if (negative)
        value = -value;
    if (value > std::numeric_limits<int32_t>::max())
        return std::numeric_limits<int32_t>::max();
    if (value < std::numeric_limits<int32_t>::min())
        return std::numeric_limits<int32_t>::min();
    return int32_t(value);
}
