#include "browse/ImageWalk.h"

#include "browse/FolderIndex.h"
#include "browse/ImageFileTest.h"

bool findImageFile(int32_t step, QString& path, const QStringList& types) {
    // A loop, not a recursion: thousands of non-images in a row must not exhaust the stack of
    // a worker thread.
    for (;;) {
        if (!goToFile(step, path))
            return false;
        if (IsImageFile(path, types))
            return true;
        // First and last always reach the same entry again: a non-image there ends the walk.
        if (step != kStepPrevious && step != kStepNext)
            return false;
    }
}

bool findFirstImageFile(QString& path, const QStringList& types) {
    if (!goToFile(kStepFirst, path))
        return false;
    if (IsImageFile(path, types))
        return true;
    return findImageFile(kStepNext, path, types);
}
