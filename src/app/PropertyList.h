#pragma once

#include <QMap>
#include <QString>
#include <QStringView>

#include <optional>

// Reader and writer of old-style text property lists, the format of the preferences file:
//
//   {
//       angle = -30;
//       dstLocation = "/home/ana/Desktop";
//   }
//
// The reader takes any well-formed list whose top level is a dictionary (with or without its
// braces): quoted strings with their escapes, unquoted strings, // and /* */ comments, nested
// arrays, dictionaries and <hex data>. It hands back the top-level entries whose values are
// strings; nested values are checked for form and then dropped, since no setting uses them.
// The writer produces pure 7-bit ASCII text: every character outside ASCII is written as a
// \UXXXX escape of its UTF-16 code unit, so any path survives the round trip exactly.
class PropertyList {
public:
    using Dictionary = QMap<QString, QString>;

    // The top-level string entries, or nothing when the text is not a well-formed list with a
    // dictionary at the top; then *error (when given) says what is wrong and on which line.
    static std::optional<Dictionary> readDictionary(QStringView text, QString* error = nullptr);

    // The text of a dictionary of strings: keys in ascending order, one "key = value;" a line.
    static QString writeDictionary(const Dictionary& dictionary);

    // A string in the form the reader reads back as the same string: bare when it is made only
    // of characters that need no quotes (and holds no "//"), quoted and escaped otherwise.
    static QString quoted(QStringView string);

    // True for a non-empty string made only of letters, digits and _ $ + / : . -
    static bool isUnquotedSafe(QStringView string);

    // Nesting deeper than this is refused rather than followed.
    static constexpr int maxDepth = 256;
};
