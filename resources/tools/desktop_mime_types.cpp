// Prints the MimeType line of the desktop entry: every MIME type (with its aliases) that the
// shared MIME database gives to a file-name suffix the decoder chain reads, sorted, e.g.
//   MimeType=application/pdf;image/bmp;...;
// tests/install/mime_types.sh compares it with the shipped desktop entry; when the decoders
// change, paste the new line into resources/org.ormidon.Ormidon.desktop.
#include "codec/ImageDecoder.h"

#include <algorithm>

#include <QCoreApplication>
#include <QMimeDatabase>
#include <QSet>
#include <QTextStream>

// Only types that are pictures (an image/ name or alias; PDF has image/pdf) are listed: a suffix
// the decoders read may also name a sound or a document for the MIME database (.mpc, .pdb).
static bool isPicture(const QMimeType& type) {
    const auto image = [](const QString& name) { return name.startsWith(QLatin1String("image/")); };
    return image(type.name()) || std::ranges::any_of(type.aliases(), image);
}

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QMimeDatabase database;
    QSet<QString> names;
    for (const QString& suffix : ImageDecoder::readableSuffixes()) {
        for (const QMimeType& type : database.mimeTypesForFileName(QStringLiteral("x.") + suffix)) {
            if (!isPicture(type))
                continue;
            for (const QString& name : QStringList(type.name()) + type.aliases())
                names.insert(name);
        }
    }
    QStringList sorted(names.begin(), names.end());
    sorted.sort();
    QTextStream out(stdout);
    out << "MimeType=" << sorted.join(QLatin1Char(';')) << ";\n";
    return sorted.isEmpty() ? 1 : 0;
}
