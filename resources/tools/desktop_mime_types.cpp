// Prints the MimeType line of the desktop entry: every MIME type (with its aliases) that the
// shared MIME database gives to a file-name suffix the decoder chain reads, sorted, e.g.
//   MimeType=application/pdf;image/bmp;...;
// tests/install/mime_types.sh compares it with the shipped desktop entry; when the decoders
// change, paste the new line into resources/org.ormidon.Ormidon.desktop.
#include "codec/ImageDecoder.h"

#include <QCoreApplication>
#include <QMimeDatabase>
#include <QSet>
#include <QTextStream>

// Types a file manager offers for many files that are not pictures; listing them would put
// Ormidon in the "Open With" menu of every text file or archive.
static bool tooGeneral(const QString& name) {
    return name.startsWith(QLatin1String("text/")) || name == QLatin1String("application/zip")
        || name == QLatin1String("application/xml") || name == QLatin1String("application/gzip")
        || name == QLatin1String("application/octet-stream");
}

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QMimeDatabase database;
    QSet<QString> names;
    for (const QString& suffix : ImageDecoder::readableSuffixes()) {
        for (const QMimeType& type : database.mimeTypesForFileName(QStringLiteral("x.") + suffix)) {
            if (type.isDefault())
                continue;
            for (const QString& name : QStringList(type.name()) + type.aliases())
                if (!tooGeneral(name))
                    names.insert(name);
        }
    }
    QStringList sorted(names.begin(), names.end());
    sorted.sort();
    QTextStream out(stdout);
    out << "MimeType=" << sorted.join(QLatin1Char(';')) << ";\n";
    return sorted.isEmpty() ? 1 : 0;
}
