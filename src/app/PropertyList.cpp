#include "app/PropertyList.h"

#include <QCoreApplication>

namespace {

bool isUnquotedChar(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_' || c == u'$' || c == u'+' || c == u'/' || c == u':' || c == u'.' || c == u'-';
}

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f' ||
           c == 0xFEFF; // a byte-order mark left at the start by an editor
}

int hexValue(char16_t c) {
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

// A recursive-descent reader over the whole text. Every step checks the end of the text
// before it looks at a character, and nesting is bounded, so no input can run it off the end
// or exhaust the stack.
class Reader {
    Q_DECLARE_TR_FUNCTIONS(PropertyList)

public:
    explicit Reader(QStringView text) : m_text(text) {}

    std::optional<PropertyList::Dictionary> readTop() {
        PropertyList::Dictionary top;
        if (!skipBlanks())
            return std::nullopt;
        if (atEnd())
            return fail(tr("The text holds no property list."));
        if (peek() == u'{') {
            ++m_pos;
            if (!readEntries(u'}', 1, &top))
                return std::nullopt;
            if (!skipBlanks())
                return std::nullopt;
            if (!atEnd())
                return fail(tr("Unexpected text after the end of the dictionary."));
            return top;
        }
        // A dictionary whose braces were left out: entries up to the end of the text.
        if (!readEntries(u'\0', 1, &top))
            return std::nullopt;
        return top;
    }

    QString error() const { return m_error; }

private:
    bool atEnd() const { return m_pos >= m_text.size(); }
    char16_t peek() const { return m_text[m_pos].unicode(); }

    std::nullopt_t fail(const QString& what) {
        if (m_error.isEmpty()) {
            qsizetype line = 1;
            for (qsizetype i = 0; i < m_pos && i < m_text.size(); ++i)
                line += m_text[i] == u'\n' ? 1 : 0;
            m_error =
                QCoreApplication::translate("PropertyList", "Line %1: %2").arg(line).arg(what);
        }
        return std::nullopt;
    }

    // Skips blanks and comments; false only for a comment that never ends.
    bool skipBlanks() {
        while (!atEnd()) {
            const char16_t c = peek();
            if (isBlank(c)) {
                ++m_pos;
            } else if (c == u'/' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == u'/') {
                while (!atEnd() && peek() != u'\n' && peek() != u'\r')
                    ++m_pos;
            } else if (c == u'/' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == u'*') {
                const qsizetype end = m_text.indexOf(u"*/", m_pos + 2);
                if (end < 0) {
                    fail(tr("A comment is never closed."));
                    return false;
                }
                m_pos = end + 2;
            } else {
                break;
            }
        }
        return true;
    }

    // Entries "key = value;" up to the closing character, or the end of the text when close
    // is 0. String values go into out when it is given.
    bool readEntries(char16_t close, int depth, PropertyList::Dictionary* out) {
        for (;;) {
            if (!skipBlanks())
                return false;
            if (atEnd()) {
                if (close == u'\0')
                    return true;
                fail(tr("A dictionary is never closed."));
                return false;
            }
            if (close != u'\0' && peek() == close) {
                ++m_pos;
                return true;
            }
            QString key;
            if (!readString(&key)) {
                fail(tr("A dictionary key must be a string."));
                return false;
            }
            if (!skipBlanks())
                return false;
            if (atEnd() || peek() != u'=') {
                fail(tr("Missing \"=\" after a dictionary key."));
                return false;
            }
            ++m_pos;
            QString value;
            bool isString = false;
            if (!readValue(depth, &value, &isString))
                return false;
            if (!skipBlanks())
                return false;
            if (atEnd() || peek() != u';') {
                fail(tr("Missing \";\" after a dictionary value."));
                return false;
            }
            ++m_pos;
            if (out) {
                // A later entry with the same key replaces the earlier one.
                if (isString)
                    out->insert(key, value);
                else
                    out->remove(key);
            }
        }
    }

    bool readArray(int depth) {
        for (;;) {
            if (!skipBlanks())
                return false;
            if (atEnd()) {
                fail(tr("An array is never closed."));
                return false;
            }
            if (peek() == u')') {
                ++m_pos;
                return true;
            }
            QString ignored;
            bool isString = false;
            if (!readValue(depth, &ignored, &isString))
                return false;
            if (!skipBlanks())
                return false;
            if (atEnd()) {
                fail(tr("An array is never closed."));
                return false;
            }
            if (peek() == u',') {
                ++m_pos; // a comma before the closing parenthesis is allowed
            } else if (peek() != u')') {
                fail(tr("Missing \",\" between array elements."));
                return false;
            }
        }
    }

    bool readData() {
        int digits = 0;
        for (;;) {
            if (!skipBlanks())
                return false;
            if (atEnd()) {
                fail(tr("A data value is never closed."));
                return false;
            }
            const char16_t c = peek();
            if (c == u'>') {
                ++m_pos;
                if (digits % 2 != 0) {
                    fail(tr("A data value holds an odd number of hexadecimal digits."));
                    return false;
                }
                return true;
            }
            if (hexValue(c) < 0) {
                fail(tr("A data value holds a character that is no hexadecimal digit."));
                return false;
            }
            ++digits;
            ++m_pos;
        }
    }

    // Any value; *isString tells whether it was a string (the only kind the caller keeps).
    bool readValue(int depth, QString* string, bool* isString) {
        *isString = false;
        if (!skipBlanks())
            return false;
        if (atEnd()) {
            fail(tr("A value is missing at the end of the text."));
            return false;
        }
        if (depth >= PropertyList::maxDepth) {
            fail(tr("The values are nested too deeply."));
            return false;
        }
        switch (peek()) {
        case u'{':
            ++m_pos;
            return readEntries(u'}', depth + 1, nullptr);
        case u'(':
            ++m_pos;
            return readArray(depth + 1);
        case u'<':
            ++m_pos;
            return readData();
        default:
            if (!readString(string)) {
                fail(tr("A value must be a string, an array, a dictionary or data."));
                return false;
            }
            *isString = true;
            return true;
        }
    }

    // A quoted or an unquoted string at the current place; false (with nothing read) when
    // none starts here, or with an error set when a quoted one is broken.
    bool readString(QString* out) {
        if (atEnd())
            return false;
        const char16_t c = peek();
        if (c == u'"' || c == u'\'')
            return readQuoted(c, out);
        if (!isUnquotedChar(c))
            return false;
        const qsizetype start = m_pos;
        while (!atEnd() && isUnquotedChar(peek()))
            ++m_pos;
        *out = m_text.sliced(start, m_pos - start).toString();
        return true;
    }

    bool readQuoted(char16_t quote, QString* out) {
        ++m_pos;
        out->clear();
        while (!atEnd()) {
            const char16_t c = peek();
            ++m_pos;
            if (c == quote)
                return true;
            if (c != u'\\') {
                out->append(QChar(c));
                continue;
            }
            if (atEnd())
                break;
            if (!readEscape(out))
                return false;
        }
        fail(tr("A quoted string is never closed."));
        return false;
    }

    // The character after a backslash, already known to exist.
    bool readEscape(QString* out) {
        const char16_t e = peek();
        ++m_pos;
        switch (e) {
        case u'a':
            out->append(QChar(u'\a'));
            return true;
        case u'b':
            out->append(QChar(u'\b'));
            return true;
        case u'f':
            out->append(QChar(u'\f'));
            return true;
        case u'n':
            out->append(QChar(u'\n'));
            return true;
        case u'r':
            out->append(QChar(u'\r'));
            return true;
        case u't':
            out->append(QChar(u'\t'));
            return true;
        case u'v':
            out->append(QChar(u'\v'));
            return true;
        case u'U':
        case u'u': {
            // Up to four hexadecimal digits: one UTF-16 code unit.
            char16_t unit = 0;
            int digits = 0;
            while (digits < 4 && !atEnd() && hexValue(peek()) >= 0) {
                unit = char16_t(unit * 16 + hexValue(peek()));
                ++m_pos;
                ++digits;
            }
            if (digits == 0) {
                fail(tr("A \\U escape holds no hexadecimal digit."));
                return false;
            }
            out->append(QChar(unit));
            return true;
        }
        default:
            if (e >= u'0' && e <= u'7') {
                // Up to three octal digits, taken as the character of that code.
                char16_t code = char16_t(e - u'0');
                for (int digits = 1; digits < 3 && !atEnd() && peek() >= u'0' && peek() <= u'7';
                     ++digits) {
                    code = char16_t(code * 8 + (peek() - u'0'));
                    ++m_pos;
                }
                out->append(QChar(code));
                return true;
            }
            // \" \' \\ and any other character stand for themselves.
            out->append(QChar(e));
            return true;
        }
    }

    QStringView m_text;
    qsizetype m_pos = 0;
    QString m_error;
};

} // namespace

std::optional<PropertyList::Dictionary> PropertyList::readDictionary(QStringView text,
                                                                     QString* error) {
    Reader reader(text);
    std::optional<Dictionary> result = reader.readTop();
    if (error)
        *error = result ? QString() : reader.error();
    return result;
}

bool PropertyList::isUnquotedSafe(QStringView string) {
    if (string.isEmpty())
        return false;
    for (QChar c : string) {
        if (!isUnquotedChar(c.unicode()))
            return false;
    }
    return true;
}

QString PropertyList::quoted(QStringView string) {
    // "//" reads back fine bare, but a less careful reader could take it for a comment.
    if (isUnquotedSafe(string) && !string.contains(u"//"))
        return string.toString();
    static constexpr char hex[] = "0123456789ABCDEF";
    QString text;
    text.reserve(string.size() + 2);
    text.append(u'"');
    for (QChar qc : string) {
        const char16_t c = qc.unicode();
        switch (c) {
        case u'"':
            text.append(u"\\\"");
            break;
        case u'\\':
            text.append(u"\\\\");
            break;
        case u'\n':
            text.append(u"\\n");
            break;
        case u'\t':
            text.append(u"\\t");
            break;
        case u'\r':
            text.append(u"\\r");
            break;
        default:
            if (c < 0x20 || c == 0x7F) {
                text.append(u'\\');
                text.append(QChar(u'0' + ((c >> 6) & 7)));
                text.append(QChar(u'0' + ((c >> 3) & 7)));
                text.append(QChar(u'0' + (c & 7)));
            } else if (c > 0x7F) {
                text.append(u"\\U");
                for (int shift = 12; shift >= 0; shift -= 4)
                    text.append(QChar(hex[(c >> shift) & 0xF]));
            } else {
                text.append(qc);
            }
        }
    }
    text.append(u'"');
    return text;
}

QString PropertyList::writeDictionary(const Dictionary& dictionary) {
    QString text = QStringLiteral("{\n");
    for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it) {
        text += QStringLiteral("    ") + quoted(it.key()) + QStringLiteral(" = ") +
                quoted(it.value()) + QStringLiteral(";\n");
    }
    text += QStringLiteral("}\n");
    return text;
}
