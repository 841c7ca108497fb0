#pragma once

#include <QCoreApplication>
#include <QList>
#include <QLocale>
#include <QSize>
#include <QString>
#include <QUrl>

#include "codec/PictureInformation.h"

// One line of the information panel: what it is, its value and, for the place a photograph was
// taken, the map it opens.
struct InformationRow {
    QString label;
    QString value;
    QUrl link; // empty for rows that open nothing
};

// The information panel's texts, in the user's language and number format. Rows with no data
// are left out: a picture without camera data shows the file's rows alone.
class InformationText {
    Q_DECLARE_TR_FUNCTIONS(InformationText)
public:
    // The rows for the picture at `path`; `shownPixels` is the size of the picture as decoded,
    // for formats whose header does not give it.
    static QList<InformationRow> rows(const QString& path, const PictureInformation& information,
                                      QSize shownPixels, const QLocale& locale = QLocale());

    static QString fileSize(qint64 bytes,
                            const QLocale& locale = QLocale()); // "3.2 MB (3,214,567 bytes)"
    static QString pixelSize(QSize pixels, const QLocale& locale = QLocale());
    static QString resolution(const Dpi& dpi, const QLocale& locale = QLocale());
    static QString exposure(double seconds, const QLocale& locale = QLocale()); // "1/250 s"
    static QString aperture(double fNumber, const QLocale& locale = QLocale()); // "f/2.8"
    static QString focalLength(double mm, std::optional<int> film35mm,
                               const QLocale& locale = QLocale());
    static QString position(const GpsPosition& gps, const QLocale& locale = QLocale());
    // The place on OpenStreetMap's map, at the zoom of a few streets.
    static QUrl mapLink(const GpsPosition& gps);
};
