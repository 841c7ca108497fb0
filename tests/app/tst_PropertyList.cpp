// Reading and writing old-style property lists: the form of the preferences file.

#include "app/PropertyList.h"

#include <QRandomGenerator>
#include <QtTest>

using Dictionary = PropertyList::Dictionary;

class tst_PropertyList : public QObject {
    Q_OBJECT

private slots:
    void readsWellFormed_data();
    void readsWellFormed();
    void refusesMalformed_data();
    void refusesMalformed();
    void errorNamesTheLine();
    void truncatedTextNeverCrashes();
    void randomBytesNeverCrash();
    void deepNestingIsRefused();
    void writerLayout();
    void writerQuotes_data();
    void writerQuotes();
    void writerIsAscii();
    void roundTrip_data();
    void roundTrip();
};

void tst_PropertyList::readsWellFormed_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<Dictionary>("expected");

    QTest::newRow("empty dictionary") << "{}" << Dictionary{};
    QTest::newRow("blanks only inside") << " {\n\t} \n" << Dictionary{};
    QTest::newRow("unquoted") << "{ angle = -30; }" << Dictionary{{"angle", "-30"}};
    QTest::newRow("unquoted set") << "{ p = /a/b_c$d+e:f.g-9; }"
                                  << Dictionary{{"p", "/a/b_c$d+e:f.g-9"}};
    QTest::newRow("quoted") << "{ \"expformat\" = \"GIF \"; }" << Dictionary{{"expformat", "GIF "}};
    QTest::newRow("single quotes") << "{ a = 'say \"hi\"'; }" << Dictionary{{"a", "say \"hi\""}};
    QTest::newRow("empty string") << "{ srcLocation = \"\"; }" << Dictionary{{"srcLocation", ""}};
    QTest::newRow("several, sorted or not")
        << "{\n    dpi = \"72.00\";\n    angle = 0;\n    fillList = 1;\n}"
        << Dictionary{{"dpi", "72.00"}, {"angle", "0"}, {"fillList", "1"}};
    QTest::newRow("escapes") << R"({ a = "q\"b\\n\nt\tr\rv\vf\fb\ba\a"; })"
                             << Dictionary{{"a", QStringLiteral("q\"b\\n\nt\tr\rv\vf\fb\ba\a")}};
    QTest::newRow("other escaped characters stand for themselves")
        << R"({ a = "\'\x\/"; })" << Dictionary{{"a", "'x/"}};
    QTest::newRow("octal") << R"({ a = "\101\0102\7x"; })"
                           << Dictionary{{"a", QStringLiteral("A\b2\ax")}};
    QTest::newRow("octal high") << R"({ a = "\351t\351"; })"
                                << Dictionary{{"a", QStringLiteral(u"\u00e9t\u00e9")}};
    QTest::newRow("unicode escape") << R"({ a = "caf\U00e9 \U4E2D\u6587"; })"
                                    << Dictionary{{"a", QStringLiteral(u"caf\u00e9 \u4e2d\u6587")}};
    QTest::newRow("short unicode escape") << R"({ a = "\U41z"; })" << Dictionary{{"a", "Az"}};
    QTest::newRow("surrogate pair")
        << R"({ a = "\UD83D\UDE00"; })" << Dictionary{{"a", QString::fromUtf8("\xF0\x9F\x98\x80")}};
    QTest::newRow("line comment") << "// saved by Ormidon\n{ a = b; // the first\n c = d; }//end"
                                  << Dictionary{{"a", "b"}, {"c", "d"}};
    QTest::newRow("block comment")
        << "/* head */{/**/a /* k */=/* v */b /* ; */;/* multi\nline */}/* tail */"
        << Dictionary{{"a", "b"}};
    QTest::newRow("slashes inside an unquoted value are no comment")
        << "{ a = x//y/z; }" << Dictionary{{"a", "x//y/z"}};
    QTest::newRow("path with slashes") << "{ a = /usr//lib; }" << Dictionary{{"a", "/usr//lib"}};
    QTest::newRow("nested values are dropped")
        << "{ a = (1, 2, (3), {x = y;}); b = {c = d; e = (f);}; g = h; }" << Dictionary{{"g", "h"}};
    QTest::newRow("array with trailing comma")
        << "{ a = (1, 2,); b = (); c = c; }" << Dictionary{{"c", "c"}};
    QTest::newRow("data") << "{ a = <0fA1 b2c3>; b = <>; c = x; }" << Dictionary{{"c", "x"}};
    QTest::newRow("later key wins") << "{ a = 1; a = 2; }" << Dictionary{{"a", "2"}};
    QTest::newRow("later nested value removes the string") << "{ a = 1; a = (2); }" << Dictionary{};
    QTest::newRow("no braces") << "angle = -30;\ndpi = 96.00;"
                               << Dictionary{{"angle", "-30"}, {"dpi", "96.00"}};
    QTest::newRow("byte-order mark")
        << QStringLiteral(u"\ufeff{ a = b; }") << Dictionary{{"a", "b"}};
    QTest::newRow("quoted key") << "{ \"a key\" = v; }" << Dictionary{{"a key", "v"}};
    QTest::newRow("raw non-ASCII in quotes") << QStringLiteral(u"{ a = \"\u00e9\u4e2d\"; }")
                                             << Dictionary{{"a", QStringLiteral(u"\u00e9\u4e2d")}};
}

void tst_PropertyList::readsWellFormed() {
    QFETCH(QString, text);
    QFETCH(Dictionary, expected);
    QString error;
    const std::optional<Dictionary> result = PropertyList::readDictionary(text, &error);
    QVERIFY2(result.has_value(), qPrintable(error));
    QVERIFY(error.isEmpty());
    QCOMPARE(*result, expected);
}

void tst_PropertyList::refusesMalformed_data() {
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << "  \n\t ";
    QTest::newRow("comment only") << "// nothing\n/* here */";
    QTest::newRow("top-level string") << "hello";
    QTest::newRow("top-level quoted string") << "\"hello\"";
    QTest::newRow("top-level array") << "(a, b)";
    QTest::newRow("top-level data") << "<00>";
    QTest::newRow("unclosed dictionary") << "{ a = b;";
    QTest::newRow("missing semicolon") << "{ a = b }";
    QTest::newRow("missing equals") << "{ a b; }";
    QTest::newRow("missing value") << "{ a = ; }";
    QTest::newRow("value at end") << "{ a =";
    QTest::newRow("key not a string") << "{ (a) = b; }";
    QTest::newRow("unclosed quote") << "{ a = \"b; }";
    QTest::newRow("backslash at end") << "{ a = \"b\\";
    QTest::newRow("empty unicode escape") << "{ a = \"\\Uxyz\"; }";
    QTest::newRow("unclosed comment") << "{ a = b; } /* never";
    QTest::newRow("unclosed array") << "{ a = (1, 2; }";
    QTest::newRow("array without commas") << "{ a = (1 2); }";
    QTest::newRow("double comma") << "{ a = (1,,2); }";
    QTest::newRow("unclosed data") << "{ a = <00; }";
    QTest::newRow("odd data") << "{ a = <abc>; }";
    QTest::newRow("bad data") << "{ a = <zz>; }";
    QTest::newRow("text after") << "{ a = b; } c";
    QTest::newRow("two dictionaries") << "{} {}";
    QTest::newRow("stray character") << "{ a = b; # }";
    QTest::newRow("two strings") << "{ a = 'it''s'; }";
    QTest::newRow("comment where a value starts") << "{ a = //x; }";
    QTest::newRow("non-ASCII unquoted") << QStringLiteral(u"{ a = caf\u00e9; }");
    QTest::newRow("brace in braceless") << "a = b; }";
    QTest::newRow("NUL") << QString(QChar(0));
}

void tst_PropertyList::refusesMalformed() {
    QFETCH(QString, text);
    QString error = "untouched";
    QVERIFY(!PropertyList::readDictionary(text, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(error != "untouched");
}

void tst_PropertyList::errorNamesTheLine() {
    QString error;
    QVERIFY(!PropertyList::readDictionary(u"{\n a = b;\n c = d\n}", &error));
    QVERIFY2(error.startsWith("Line 4:"), qPrintable(error));
}

void tst_PropertyList::truncatedTextNeverCrashes() {
    Dictionary all{{"angle", "-30"},
                   {"dpi", "96.00"},
                   {"dstLocation", QStringLiteral(u"/home/\u00e9l\u00e8ve/\u4e2d\u6587")},
                   {"expformat", "GIF "},
                   {"fillList", "1"},
                   {"srcLocation", "/tmp/a \"b\"\\c.png"}};
    const QString text = "/* c */\n" + PropertyList::writeDictionary(all).chopped(1) + " // x\n";
    QVERIFY(PropertyList::readDictionary(text).has_value());
    // Every proper prefix of the text either fails or, where the cut falls after the closing
    // brace and not inside the "//" of the last comment, reads the whole dictionary; none may
    // crash or hang.
    const qsizetype closing = text.lastIndexOf(u'}');
    for (qsizetype n = 0; n < text.size(); ++n) {
        const std::optional<Dictionary> result = PropertyList::readDictionary(text.first(n));
        if (n > closing && !text.first(n).endsWith(u" /"))
            QCOMPARE(result.value_or(Dictionary{}), all);
        else
            QVERIFY2(!result, qPrintable(QString::number(n)));
    }
}

void tst_PropertyList::randomBytesNeverCrash() {
    QRandomGenerator random(20261121);
    const QString alphabet = QStringLiteral("{}()<>=;,\"'\\/*aZ09 \n\tU-.");
    int accepted = 0;
    for (int round = 0; round < 3000; ++round) {
        QString text;
        const int length = random.bounded(60);
        for (int i = 0; i < length; ++i) {
            if (random.bounded(4) == 0)
                text.append(QChar(char16_t(random.bounded(0x10000))));
            else
                text.append(alphabet[random.bounded(int(alphabet.size()))]);
        }
        QString error;
        const std::optional<Dictionary> result = PropertyList::readDictionary(text, &error);
        QCOMPARE(error.isEmpty(), result.has_value());
        accepted += result ? 1 : 0;
    }
    QVERIFY(accepted < 3000);
}

void tst_PropertyList::deepNestingIsRefused() {
    const int deep = 100000;
    const QString arrays = "{ a = " + QString(deep, u'(') + QString(deep, u')') + "; }";
    QVERIFY(!PropertyList::readDictionary(arrays));
    const QString dicts =
        "{ a = " + QString("{ a = ").repeated(deep) + "}" + QString("; }").repeated(deep) + "; }";
    QVERIFY(!PropertyList::readDictionary(dicts));
    const int fine = PropertyList::maxDepth - 2;
    const QString shallow = "{ a = " + QString(fine, u'(') + QString(fine, u')') + "; b = c; }";
    QCOMPARE(PropertyList::readDictionary(shallow).value_or(Dictionary{}),
             (Dictionary{{"b", "c"}}));
}

void tst_PropertyList::writerLayout() {
    const Dictionary prefs{{"srcLocation", ""}, {"angle", "-30"},
                           {"dpi", "72.00"},    {"expformat", "TIFF"},
                           {"fillList", "1"},   {"dstLocation", "/home/ana/Desktop"}};
    QCOMPARE(PropertyList::writeDictionary(prefs),
             QStringLiteral("{\n"
                            "    angle = -30;\n"
                            "    dpi = 72.00;\n"
                            "    dstLocation = /home/ana/Desktop;\n"
                            "    expformat = TIFF;\n"
                            "    fillList = 1;\n"
                            "    srcLocation = \"\";\n"
                            "}\n"));
    QCOMPARE(PropertyList::writeDictionary({}), QStringLiteral("{\n}\n"));
}

void tst_PropertyList::writerQuotes_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("written");

    QTest::newRow("safe") << "a/B_$+:.-9"
                          << "a/B_$+:.-9";
    QTest::newRow("empty") << ""
                           << "\"\"";
    QTest::newRow("blank") << "GIF "
                           << "\"GIF \"";
    QTest::newRow("quote and backslash") << "a\"b\\c"
                                         << R"("a\"b\\c")";
    QTest::newRow("control") << QStringLiteral("\n\t\r\x01\x7f") << R"("\n\t\r\001\177")";
    QTest::newRow("accent") << QStringLiteral(u"\u00e9") << R"("\U00E9")";
    QTest::newRow("CJK") << QStringLiteral(u"\u4e2d") << R"("\U4E2D")";
    QTest::newRow("emoji") << QString::fromUtf8("\xF0\x9F\x98\x80") << R"("\UD83D\UDE00")";
    QTest::newRow("comment-like") << "/*x"
                                  << "\"/*x\"";
    QTest::newRow("double slash") << "/usr//lib"
                                  << "\"/usr//lib\"";
    QTest::newRow("single slashes") << "/usr/lib/"
                                    << "/usr/lib/";
}

void tst_PropertyList::writerQuotes() {
    QFETCH(QString, value);
    QFETCH(QString, written);
    QCOMPARE(PropertyList::quoted(value), written);
}

void tst_PropertyList::writerIsAscii() {
    QString everyUnit;
    for (char32_t u = 1; u < 0x10000; u += 7)
        everyUnit.append(QChar(char16_t(u)));
    const QString text = PropertyList::writeDictionary({{"k", everyUnit}, {everyUnit, "v"}});
    for (QChar c : text)
        QVERIFY2(c.unicode() < 0x80, qPrintable(QString::number(c.unicode(), 16)));
    QCOMPARE(PropertyList::readDictionary(text).value_or(Dictionary{}),
             (Dictionary{{"k", everyUnit}, {everyUnit, "v"}}));
}

void tst_PropertyList::roundTrip_data() {
    QTest::addColumn<QString>("value");

    QTest::newRow("plain") << "TIFF";
    QTest::newRow("double slashes") << "//server//share//";
    QTest::newRow("path with blanks") << "/home/ana/My Pictures/a b.png";
    QTest::newRow("accents") << QStringLiteral(u"/home/\u00e9l\u00e8ve/Bilder \u00fc\u00df");
    QTest::newRow("CJK") << QStringLiteral(u"/home/\u5f20\u4f1f/\u56fe\u7247/\u5199\u771f");
    QTest::newRow("emoji") << QString::fromUtf8("/tmp/\xF0\x9F\x8C\x84 sunset \xF0\x9F\x98\x80");
    QTest::newRow("lone surrogate") << QStringLiteral(u"a") + QChar(char16_t(0xD800)) + "b";
    QTest::newRow("quotes and escapes") << "\"\\n\\U0041'//*";
    QTest::newRow("controls") << QStringLiteral("\x01\x02\n\x1f\x7f");
    QTest::newRow("octal-looking") << "\\101";
}

void tst_PropertyList::roundTrip() {
    QFETCH(QString, value);
    const Dictionary written{{"dstLocation", value}, {value, "key"}};
    const QString text = PropertyList::writeDictionary(written);
    QCOMPARE(PropertyList::readDictionary(text).value_or(Dictionary{}), written);
}

QTEST_APPLESS_MAIN(tst_PropertyList)
#include "tst_PropertyList.moc"
