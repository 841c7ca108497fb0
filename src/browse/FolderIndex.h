#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

// Step codes of folder navigation; 101 and 102 are also the tags of the previous and next
// buttons.
enum StepCode : int32_t { kStepFirst = 0, kStepLast = 1, kStepPrevious = 101, kStepNext = 102 };

// Replaces `path` with the path of the entry of its folder reached by `step` (folders left out,
// natural name order) and returns true; leaves it as it was and returns false when the step
// leads nowhere. Safe to call from any thread.
bool goToFile(int32_t step, QString& path);

// The names of the folder's entries that are not folders, in the order every caller walks them:
// natural, locale-aware name order (img2 before img10). Empty for an unreadable folder.
QStringList folderFileList(const QString& folder);

// Whether a listing of the folder is kept for reuse right now. A listing is kept once the
// folder has not changed for a moment; tests and the benchmark look at this.
bool folderListingIsKept(const QString& folder);
