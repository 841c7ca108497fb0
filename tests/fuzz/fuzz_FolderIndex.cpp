// Fuzzes the folder index with real folders: the input names a handful of files (any bytes but
// '/' and NUL, valid UTF-8 or not) and asks for links that lead nowhere, in a loop or to a
// folder. Every step is taken from every entry, and the answers are checked against the folder.
//
// Input: one byte of flags, then names separated by '\n'.

#include "browse/FolderIndex.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FuzzSupport.h"

using FuzzSupport::check;

namespace {

constexpr int kMaxNames = 8;
constexpr qsizetype kMaxNameBytes = 64;
constexpr int32_t kSteps[] = {kStepFirst, kStepLast, kStepPrevious, kStepNext, 103};

enum Flag : uint8_t {
    kDangling = 1,   // "dangling" -> a name that does not exist
    kLoop = 2,       // "loopA" -> "loopB" -> "loopA"
    kSubfolder = 4,  // "sub", a folder
    kFolderLink = 8, // "here" -> ".", a link to a folder
    kSelfLink = 16,  // "self" -> "self"
    kTrailing = 32,  // the folder is named with a trailing '/'
};

QByteArray runFolder; // the folder of this input, under a private temporary folder

// Names with bytes that do not decode cannot go through QDir, so the folder goes the POSIX way.
int removeEntry(const char* path, const struct stat*, int, FTW*) {
    return ::remove(path);
}
void removeRunFolder() {
    ::nftw(runFolder.constData(), removeEntry, 8, FTW_DEPTH | FTW_PHYS);
}

bool createFile(const QByteArray& name) {
    const int fd = ::open((runFolder + '/' + name).constData(), O_CREAT | O_EXCL | O_WRONLY, 0644);
    if (fd < 0)
        return false;
    ::close(fd);
    return true;
}

bool createLink(const char* target, const char* name) {
    return ::symlink(target, (runFolder + '/' + name).constData()) == 0;
}

// Whether the name comes back as its own bytes through the file-name encoding: the listing
// leaves out, with a warning, a name that does not, since it could not be opened by it.
bool decodable(const QByteArray& name) {
    return QFile::encodeName(QFile::decodeName(name)) == name;
}

// Creates the folder's entries; returns how many are not folders (links to folders count as
// folders) and have decodable names, which is how many the listing must hold.
int populate(uint8_t flags, const QList<QByteArray>& names) {
    int files = 0;
    for (const QByteArray& name : names)
        files += createFile(name) && decodable(name) ? 1 : 0;
    if (flags & kDangling)
        files += createLink("nowhere", "dangling") ? 1 : 0;
    if (flags & kLoop)
        files += (createLink("loopB", "loopA") ? 1 : 0) + (createLink("loopA", "loopB") ? 1 : 0);
    if (flags & kSelfLink)
        files += createLink("self", "self") ? 1 : 0;
    if (flags & kSubfolder)
        ::mkdir((runFolder + "/sub").constData(), 0755);
    if (flags & kFolderLink)
        createLink(".", "here");
    return files;
}

QList<QByteArray> namesOf(const uint8_t* data, size_t size) {
    QList<QByteArray> names;
    QByteArray name;
    for (size_t i = 0; i <= size && names.size() < kMaxNames; ++i) {
        if (i == size || data[i] == '\n') {
            if (!name.isEmpty() && name != "." && name != "..")
                names.append(name);
            name.clear();
        } else if (data[i] != '/' && data[i] != '\0' && name.size() < kMaxNameBytes) {
            name.append(char(data[i]));
        }
    }
    return names;
}

// Every step from `path` (only the next one with `allSteps` false: each step reads the folder
// anew, and a path that names no entry fails the same way for all). Where the path names a
// listed file exactly once, the answer must be the neighbour the listing gives.
void stepFrom(const QString& path, const QString& folder, const QStringList& listed, qsizetype at,
              bool allSteps = true) {
    for (const int32_t step : kSteps) {
        if (!allSteps && step != kStepNext)
            continue;
        QString moved = path;
        const bool ok = goToFile(step, moved);
        check(ok || moved == path, "a step that leads nowhere leaves the path alone");
        if (at < 0)
            continue;
        qsizetype target = -1;
        if (step == kStepFirst)
            target = 0;
        else if (step == kStepLast)
            target = listed.size() - 1;
        else if (step == kStepPrevious)
            target = at - 1;
        else if (step == kStepNext)
            target = at + 1 < listed.size() ? at + 1 : -1;
        check(ok == (target >= 0), "a step succeeds exactly when it has somewhere to go");
        if (ok)
            check(moved == folder + u'/' + listed.at(target), "a step reaches the neighbour");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    FuzzSupport::quietQtMessages();
    static const QByteArray root = [] {
        QByteArray pattern = QFile::encodeName(QDir::tempPath()) + "/ormidon-fuzz-XXXXXX";
        check(::mkdtemp(pattern.data()) != nullptr, "a private temporary folder");
        return pattern;
    }();
    runFolder = root + "/run";
    std::atexit([] {
        removeRunFolder();
        ::rmdir(root.constData());
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QList<QByteArray> names = namesOf(data + 1, size - 1);
    removeRunFolder();
    check(::mkdir(runFolder.constData(), 0755) == 0, "the run's folder is made");
    const int files = populate(flags, names);

    const QString folder = QFile::decodeName(runFolder);
    const QStringList listed = folderFileList(flags & kTrailing ? folder + u'/' : folder);
    check(listed.size() == files,
          "the listing holds every entry that is not a folder and whose name decodes");

    for (qsizetype i = 0; i < listed.size(); ++i) {
        const QString path = folder + u'/' + listed.at(i);
        // Only a name that leads back to its own bytes, and is listed once, has one answer.
        struct stat st {};
        const bool exact = listed.count(listed.at(i)) == 1 &&
                           ::stat(QFile::encodeName(path).constData(), &st) == 0;
        stepFrom(path, folder, listed, exact ? i : -1);
        stepFrom(path + u'/', folder, listed, -1, false);
        stepFrom(folder + QStringLiteral("//") + listed.at(i), folder, listed, -1, false);
    }
    for (const QByteArray& name : names)
        stepFrom(folder + u'/' + QFile::decodeName(name), folder, listed, -1, false);
    stepFrom(folder, folder, listed, -1, false);
    return 0;
}
