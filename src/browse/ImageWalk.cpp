#include "browse/ImageWalk.h"

#include "browse/FolderIndex.h"
#include "browse/ImageFileTest.h"

#include <QFile>

#include <sys/stat.h>

namespace {

// An entry is stepped on only when its name is an image type and it leads to a regular file:
// a dangling link, a link loop, a pipe or a device named like an image is passed over.
bool isImageEntry(const QString& path, const ImageFileTypes& types) {
    if (!IsImageFile(path, types))
        return false;
    struct stat st {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISREG(st.st_mode);
}

} // namespace

bool findImageFile(int32_t step, QString& path, const ImageFileTypes& types) {
    // A loop, not a recursion: thousands of non-images in a row must not exhaust the stack of
    // a worker thread.
    for (;;) {
        if (!goToFile(step, path))
            return false;
        if (isImageEntry(path, types))
            return true;
        // First and last always reach the same entry again: a non-image there ends the walk.
        if (step != kStepPrevious && step != kStepNext)
            return false;
    }
}

bool findFirstImageFile(QString& path, const ImageFileTypes& types) {
    if (!goToFile(kStepFirst, path))
        return false;
    if (isImageEntry(path, types))
        return true;
    return findImageFile(kStepNext, path, types);
}
