#include "app/TextNumbers.h"

#include <QtTest>

#include <limits>

class tst_TextNumbers : public QObject {
    Q_OBJECT
private slots:
    void floats_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("value");
        QTest::newRow("integer") << "72" << 72.0f;
        QTest::newRow("fraction") << "150.5" << 150.5f;
        QTest::newRow("blanks") << "  300 " << 300.0f;
        QTest::newRow("trailing text") << "96dpi" << 96.0f;
        QTest::newRow("no number") << "abc" << 0.0f;
        QTest::newRow("empty") << "" << 0.0f;
        QTest::newRow("negative") << "-12.25" << -12.25f;
        QTest::newRow("leading dot") << ".5" << 0.5f;
        QTest::newRow("exponent") << "1e3" << 1000.0f;
        QTest::newRow("comma is no decimal point") << "150,5" << 150.0f;
        QTest::newRow("huge") << "1e300" << std::numeric_limits<float>::max();
    }
    void floats() {
        QFETCH(QString, text);
        QFETCH(float, value);
        QCOMPARE(leadingFloatValue(text), value);
    }

    void integers_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value");
        QTest::newRow("plain") << "45" << 45;
        QTest::newRow("plus") << "+30" << 30;
        QTest::newRow("minus") << "-30" << -30;
        QTest::newRow("fraction cut") << "12.9" << 12;
        QTest::newRow("text") << "abc" << 0;
        QTest::newRow("digits then text") << "90deg" << 90;
        QTest::newRow("sign alone") << "-" << 0;
        QTest::newRow("blank first") << "  7" << 7;
        QTest::newRow("720") << "720" << 720;
        QTest::newRow("huge") << "99999999999999999999" << std::numeric_limits<int32_t>::max();
        QTest::newRow("huge negative") << "-99999999999999999999"
                                       << std::numeric_limits<int32_t>::min();
        QTest::newRow("int32 min") << "-2147483648" << std::numeric_limits<int32_t>::min();
    }
    void integers() {
        QFETCH(QString, text);
        QFETCH(int, value);
        QCOMPARE(leadingIntValue(text), value);
    }
};

QTEST_MAIN(tst_TextNumbers)
#include "tst_TextNumbers.moc"
