// Writes the hostile corpus into a folder, with a manifest naming each file's kind of damage:
//   corpus_generate FOLDER MANIFEST
// The test of the corpus runs it; it can also be run by hand to look at the files.

#include "HostileCorpus.h"

#include "codec/MagickSupport.h"

#include <QGuiApplication>

#include <cstdio>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // QPdfWriter and the SVG text need fonts
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s FOLDER MANIFEST\n", argv[0]);
        return 2;
    }
    ensureMagickInitialised();
    return HostileCorpus::generate(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]))
               ? 0
               : 1;
}
