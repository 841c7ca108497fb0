// The information panel's texts: units, fractions, places and the map link.
#include <QtTest>

#include "view/InformationText.h"

class tst_InformationText : public QObject {
    Q_OBJECT
private slots:
    void fileSize_data();
    void fileSize();
    void exposure_data();
    void exposure();
    void aperture();
    void focalLength();
    void positionAndMapLink();
    void germanNumbers();
    void rowsLeaveOutWhatIsMissing();
    void rowsOfACamera();
    void rowsOfAMissingFile();

private:
    const QLocale english{QLocale::English, QLocale::UnitedStates};
};

void tst_InformationText::fileSize_data() {
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("bytes") << qint64(512) << "512 bytes";
    QTest::newRow("kilobytes") << qint64(45678) << "45.7 kB (45,678 bytes)";
    QTest::newRow("megabytes") << qint64(3214567) << "3.2 MB (3,214,567 bytes)";
    QTest::newRow("gigabytes") << qint64(2500000000) << "2.5 GB (2,500,000,000 bytes)";
}

void tst_InformationText::fileSize() {
    QFETCH(qint64, bytes);
    QFETCH(QString, text);
    QCOMPARE(InformationText::fileSize(bytes, english), text);
}

void tst_InformationText::exposure_data() {
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("1/250") << 1.0 / 250 << "1/250 s";
    QTest::newRow("1/8000") << 1.0 / 8000 << "1/8000 s";
    QTest::newRow("10/300") << 10.0 / 300 << "1/30 s";
    QTest::newRow("half") << 0.5 << "1/2 s";
    QTest::newRow("0.8") << 0.8 << "0.8 s";
    QTest::newRow("one") << 1.0 << "1 s";
    QTest::newRow("2.5") << 2.5 << "2.5 s";
    QTest::newRow("30") << 30.0 << "30 s";
}

void tst_InformationText::exposure() {
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(InformationText::exposure(seconds, english), text);
}

void tst_InformationText::aperture() {
    QCOMPARE(InformationText::aperture(2.8, english), QStringLiteral("f/2.8"));
    QCOMPARE(InformationText::aperture(8.0, english), QStringLiteral("f/8"));
    QCOMPARE(InformationText::aperture(1.4142, english), QStringLiteral("f/1.4"));
    QCOMPARE(InformationText::aperture(22.0, english), QStringLiteral("f/22"));
}

void tst_InformationText::focalLength() {
    QCOMPARE(InformationText::focalLength(50, std::nullopt, english), QStringLiteral("50 mm"));
    QCOMPARE(InformationText::focalLength(4.25, 26, english),
             QStringLiteral("4.3 mm (26 mm in 35 mm film)"));
}

void tst_InformationText::positionAndMapLink() {
    const GpsPosition south_west{-33.8569, -151.2151};
    QCOMPARE(InformationText::position(south_west, english),
             QStringLiteral("33.85690° S, 151.21510° W"));
    QCOMPARE(InformationText::mapLink(south_west).toString(),
             QStringLiteral("https://www.openstreetmap.org/?mlat=-33.85690&mlon=-151.21510"
                            "#map=15/-33.85690/-151.21510"));
    const GpsPosition north_east{48.8584, 2.2945};
    QCOMPARE(InformationText::position(north_east, english),
             QStringLiteral("48.85840° N, 2.29450° E"));
    QCOMPARE(InformationText::mapLink(north_east).toString(),
             QStringLiteral("https://www.openstreetmap.org/?mlat=48.85840&mlon=2.29450"
                            "#map=15/48.85840/2.29450"));
}

void tst_InformationText::germanNumbers() {
    const QLocale german(QLocale::German, QLocale::Germany);
    QVERIFY(InformationText::fileSize(3214567, german).contains(QStringLiteral("3.214.567")));
    QVERIFY(InformationText::fileSize(3214567, german).startsWith(QStringLiteral("3,2 MB")));
    QCOMPARE(InformationText::aperture(2.8, german), QStringLiteral("f/2,8"));
    // The map link is a web address: its numbers keep the point in every language.
    QVERIFY(InformationText::mapLink({-33.8569, -151.2151}).toString().contains("-33.85690"));
}

void tst_InformationText::rowsLeaveOutWhatIsMissing() {
    PictureInformation info;
    info.exists = true;
    info.fileName = "plain.png";
    info.fileBytes = 1234;
    info.format = "PNG";
    info.pixels = QSize(50, 30);
    const QList<InformationRow> rows =
        InformationText::rows("/tmp/plain.png", info, QSize(), english);
    QStringList labels;
    for (const InformationRow& row : rows)
        labels << row.label;
    QCOMPARE(labels, (QStringList{"Name", "Size", "Format", "Pixels", "Colour profile"}));
    QCOMPARE(rows.at(3).value, QStringLiteral("50 × 30 pixels"));
    QCOMPARE(rows.at(4).value, QStringLiteral("sRGB (assumed)"));
    for (const InformationRow& row : rows)
        QVERIFY(row.link.isEmpty());
}

void tst_InformationText::rowsOfACamera() {
    PictureInformation info;
    info.exists = true;
    info.fileName = "IMG_0001.JPG";
    info.fileBytes = 3214567;
    info.format = "JPEG";
    info.pixels = QSize(6720, 4480);
    info.dpi = Dpi{72, 72};
    info.hasProfile = true;
    info.colourProfile = "Adobe RGB (1998)";
    info.camera.make = "Canon";
    info.camera.model = "Canon EOS 5D Mark IV";
    info.camera.exposureSeconds = 1.0 / 250;
    info.camera.fNumber = 2.8;
    info.camera.iso = 400;
    info.camera.focalLengthMm = 50;
    info.camera.taken = QDateTime(QDate(2024, 5, 17), QTime(14, 3, 21));
    info.camera.gps = GpsPosition{-33.8569, -151.2151};
    QMap<QString, QString> values;
    QUrl link;
    for (const InformationRow& row : InformationText::rows("x", info, QSize(1, 1), english)) {
        values.insert(row.label, row.value);
        if (!row.link.isEmpty())
            link = row.link;
    }
    QCOMPARE(values.value("Size"), QStringLiteral("3.2 MB (3,214,567 bytes)"));
    QCOMPARE(values.value("Pixels"), QStringLiteral("6720 × 4480 pixels (30.1 megapixels)"));
    QCOMPARE(values.value("Resolution"), QStringLiteral("72 dpi"));
    QCOMPARE(values.value("Colour profile"), QStringLiteral("Adobe RGB (1998)"));
    QCOMPARE(values.value("Exposure"), QStringLiteral("1/250 s"));
    QCOMPARE(values.value("Aperture"), QStringLiteral("f/2.8"));
    QCOMPARE(values.value("ISO"), QStringLiteral("400"));
    QCOMPARE(values.value("Focal length"), QStringLiteral("50 mm"));
    QCOMPARE(values.value("Date taken"), QStringLiteral("2024-05-17 14:03:21"));
    QCOMPARE(values.value("Location"), QStringLiteral("33.85690° S, 151.21510° W"));
    QVERIFY(!values.contains("Lens"));
    QCOMPARE(link, InformationText::mapLink(*info.camera.gps));
}

void tst_InformationText::rowsOfAMissingFile() {
    PictureInformation gone;
    const QList<InformationRow> rows =
        InformationText::rows("/pictures/gone.jpg", gone, QSize(), english);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0).value, QStringLiteral("gone.jpg"));
    QCOMPARE(rows.at(1).value, QStringLiteral("The file cannot be found."));
}

QTEST_GUILESS_MAIN(tst_InformationText)
#include "tst_InformationText.moc"
