#include "browse/FolderIndex.h"

#include <QCollator>
#include <QFile>
#include <QHash>
#include <QLocale>

#include <algorithm>
#include <ctime>
#include <dirent.h>
#include <map>
#include <memory>
#include <mutex>
#include <sys/stat.h>

// Stepping through a large folder one image at a time would list the whole folder on every
// step. Instead each folder's listing (names in order plus a name -> position index) is kept
// and reused for as long as the folder's status times are unchanged; any entry added, removed
// or renamed changes them, so a stale listing is never served.

namespace {

struct FolderStamp {
    dev_t dev = 0;
    ino_t ino = 0;
    timespec mtime{};
    timespec ctime{};

    bool operator==(const FolderStamp& o) const {
        return dev == o.dev && ino == o.ino && mtime.tv_sec == o.mtime.tv_sec &&
               mtime.tv_nsec == o.mtime.tv_nsec && ctime.tv_sec == o.ctime.tv_sec &&
               ctime.tv_nsec == o.ctime.tv_nsec;
    }
};

struct Listing {
    FolderStamp stamp;
    QStringList names;           // entries that are not folders, in walking order
    QHash<QString, int> indexOf; // name -> position in names
};

using ListingPtr = std::shared_ptr<const Listing>;

// File times come from the kernel's coarse clock: two changes within one tick can leave the
// same stamp. A listing taken that close to the folder's last change is used once and not
// kept, so a change made in the same tick is still seen by the next call.
constexpr long long kRacyWindowNs = 100'000'000;
constexpr size_t kMaxCachedFolders = 32;

long long toNs(const timespec& t) {
    return static_cast<long long>(t.tv_sec) * 1'000'000'000LL + t.tv_nsec;
}

bool stampOf(const QByteArray& folder, FolderStamp& stamp) {
    struct stat st {};
    if (::stat(folder.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
        return false;
    stamp.dev = st.st_dev;
    stamp.ino = st.st_ino;
    stamp.mtime = st.st_mtim;
    stamp.ctime = st.st_ctim;
    return true;
}

QString joinPath(const QString& folder, const QString& name) {
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

// One collation for every caller: the user's locale with numbers compared by value. The C
// locale collates byte by byte and ignores numeric mode, so it falls back to English rules.
QCollator makeCollator() {
    QLocale locale;
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English, QLocale::UnitedStates);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseSensitive);
    return collator;
}

void sortNatural(QStringList& names) {
    const QCollator collator = makeCollator();
    std::vector<std::pair<QCollatorSortKey, QString>> keyed;
    keyed.reserve(names.size());
    for (QString& name : names)
        keyed.emplace_back(collator.sortKey(name), std::move(name));
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        const int c = a.first.compare(b.first);
        return c != 0 ? c < 0 : a.second < b.second; // equal keys (a01, a1): plain order
    });
    names.clear();
    for (auto& [key, name] : keyed)
        names.append(std::move(name));
}

// Reads the folder: every entry but "." and "..", minus those that are folders (a link to a
// folder counts as one). Returns false when the folder cannot be read.
bool readFolder(const QByteArray& folder, QStringList& names) {
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return false;
    const std::unique_ptr<DIR, int (*)(DIR*)> closer(dir, &::closedir);
    QByteArray entryPath = folder;
    if (!entryPath.endsWith('/'))
        entryPath.append('/');
    const qsizetype prefix = entryPath.size();
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            entryPath.truncate(prefix);
            entryPath.append(name);
            struct stat st {};
            isFolder = ::stat(entryPath.constData(), &st) == 0 && S_ISDIR(st.st_mode);
        }
        if (isFolder)
            continue;
        // A name that is not valid in the file-name encoding would come back as other bytes
        // and name no file; it is left out (with a word) rather than stop every walk there.
        const QString decoded = QFile::decodeName(name);
        if (QFile::encodeName(decoded) != QByteArrayView(name)) {
            qWarning("Ormidon: skipping a file name that is not valid text: %s/%s",
                     folder.constData(), name);
            continue;
        }
        names.append(decoded);
    }
    return true;
}

class ListingCache {
public:
    // The current listing of `folder`; an empty one when it cannot be read.
    ListingPtr listing(const QString& folder) {
        const QByteArray encoded = QFile::encodeName(folder);
        FolderStamp stamp;
        if (!stampOf(encoded, stamp)) {
            forget(folder);
            return empty();
        }
        {
            const std::lock_guard lock(mutex);
            const auto it = cache.find(folder);
            if (it != cache.end() && it->second->stamp == stamp)
                return it->second;
        }

        timespec now{};
        ::clock_gettime(CLOCK_REALTIME, &now);
        auto fresh = std::make_shared<Listing>();
        if (!readFolder(encoded, fresh->names)) {
            forget(folder);
            return empty();
        }
        sortNatural(fresh->names);
        fresh->indexOf.reserve(fresh->names.size());
        for (int i = 0; i < fresh->names.size(); ++i)
            fresh->indexOf.insert(fresh->names.at(i), i);

        // The stamp read after the listing decides whether it may be kept: the folder may
        // have changed while it was being read.
        FolderStamp after;
        const bool settled = stampOf(encoded, after) && after == stamp &&
                             toNs(now) - toNs(stamp.mtime) > kRacyWindowNs &&
                             toNs(now) - toNs(stamp.ctime) > kRacyWindowNs;
        fresh->stamp = stamp;
        ListingPtr result = std::move(fresh);
        const std::lock_guard lock(mutex);
        if (settled) {
            if (cache.size() >= kMaxCachedFolders && !cache.count(folder))
                cache.clear();
            cache[folder] = result;
        } else {
            cache.erase(folder);
        }
        return result;
    }

    bool isKept(const QString& folder) {
        const std::lock_guard lock(mutex);
        return cache.count(folder) != 0;
    }

private:
    void forget(const QString& folder) {
        const std::lock_guard lock(mutex);
        cache.erase(folder);
    }
    static ListingPtr empty() {
        static const ListingPtr none = std::make_shared<const Listing>();
        return none;
    }

    std::mutex mutex;
    std::map<QString, ListingPtr> cache;
};

ListingCache& listingCache() {
    static ListingCache instance;
    return instance;
}

// Splits a path into its folder (everything before the last component; trailing separators
// do not count as a component) and that last component. The folder is empty when the path
// has none.
void splitPath(const QString& path, QString& folder, QString& name) {
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/')
        --end;
    const qsizetype slash = end > 0 ? path.lastIndexOf(u'/', end - 1) : -1;
    if (slash < 0)
        return;
    folder = slash == 0 ? QStringLiteral("/") : path.left(slash);
    name = path.mid(slash + 1);
}

} // namespace

QStringList folderFileList(const QString& folder) {
    // "/a/b/" and "/a/b" are one folder, and goToFile names it without the separator.
    qsizetype end = folder.size();
    while (end > 1 && folder.at(end - 1) == u'/')
        --end;
    if (end == 0)
        return {};
    return listingCache().listing(folder.left(end))->names;
}

bool folderListingIsKept(const QString& folder) {
    return listingCache().isKept(folder);
}

bool goToFile(int32_t step, QString& path) {
    QString folder, name;
    splitPath(path, folder, name);
    if (folder.isEmpty())
        return false;

    // A folder is never a step's origin; a file that no longer exists is in no listing. A link
    // that leads nowhere (dangling, a loop) is still an entry to step on from.
    const QByteArray encoded = QFile::encodeName(path);
    struct stat st {};
    if (::lstat(encoded.constData(), &st) != 0)
        return false;
    if (S_ISLNK(st.st_mode) && ::stat(encoded.constData(), &st) == 0 && S_ISDIR(st.st_mode))
        return false;
    if (S_ISDIR(st.st_mode))
        return false;

    const ListingPtr listing = listingCache().listing(folder);
    const auto found = listing->indexOf.constFind(name);
    // The name must give back the very same path: "/a//b.png" or "b.png/" are not in the list.
    if (found == listing->indexOf.cend() || joinPath(folder, name) != path)
        return false;
    const int current = found.value();
    const int count = static_cast<int>(listing->names.size());

    int target = -1;
    switch (step) {
    case kStepFirst:
        target = 0;
        break;
    case kStepLast:
        target = count - 1;
        break;
    case kStepPrevious:
        target = current > 0 ? current - 1 : -1;
        break;
    case kStepNext:
        target = current + 1;
        break;
    default:
        break;
    }
    if (target < 0 || target >= count)
        return false;
    path = joinPath(folder, listing->names.at(target));
    return true;
}
