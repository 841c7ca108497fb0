#include "view/DecodeAhead.h"

#include "browse/FolderIndex.h"
#include "browse/ImageWalk.h"
#include "view/DisplayCopy.h"

#include <QFile>

#include <algorithm>
#include <chrono>

#include <sys/stat.h>

std::optional<FileStamp> stampOfFile(const QString& path) {
    struct stat st {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &st) != 0 ||
        !S_ISREG(st.st_mode))
        return std::nullopt;
    FileStamp stamp;
    stamp.size = qint64(st.st_size);
    stamp.mtimeNs = qint64(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
    stamp.inode = quint64(st.st_ino);
    stamp.device = quint64(st.st_dev);
    return stamp;
}

DecodeAhead::DecodeAhead(ImageFileTypes imageTypes, qint64 maxPixels)
    : types(std::move(imageTypes)), maxPixels(maxPixels) {}

DecodeAhead::~DecodeAhead() {
    {
        std::lock_guard lock(mutex);
        stopping = true;
        request.reset();
    }
    changed.notify_all();
    if (worker.joinable())
        worker.join(); // waits for at most the one decode under way
}

void DecodeAhead::startThread() {
    if (!worker.joinable())
        worker = std::thread([this] { run(); });
}

std::list<DecodeAhead::Entry>::iterator DecodeAhead::find(const QString& path) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const Entry& e) { return e.path == path; });
}

std::list<DecodeAhead::Entry>::iterator DecodeAhead::findId(quint64 id) {
    return std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.id == id; });
}

// ------------------------------------------------------------------------------ GUI thread

DecodeAhead::Picture DecodeAhead::take(const QString& path, const ViewShape& view) {
    Picture picture;
    std::unique_lock lock(mutex);
    for (;;) {
        auto it = find(path);
        if (it == entries.end())
            break;
        if (it->state == State::Decoding) {
            // Decoded already: waiting costs less than a second decode beside it.
            picture.source = Source::Awaited;
            changed.wait(lock);
            continue;
        }
        if (it->state == State::Queued) {
            entries.erase(it); // not started: decoded here at once instead
            break;
        }
        const quint64 id = it->id;
        lock.unlock();
        const std::optional<FileStamp> now = stampOfFile(path);
        lock.lock();
        it = findId(id);
        if (it == entries.end())
            continue;
        if (!now || !(*now == it->stamp)) {
            entries.erase(it); // the file changed since it was read: never its old pixels
            break;
        }
        picture.decoded = it->decoded;
        if (it->displayPixels == viewDevicePixels(view.size, view.ratio))
            picture.displayCopy = it->displayCopy;
        if (picture.source != Source::Awaited)
            picture.source = Source::Cache;
        entries.splice(entries.begin(), entries, it); // the current picture comes first
        lastTaken = picture.source;
        return picture;
    }
    lock.unlock();

    const std::optional<FileStamp> before = stampOfFile(path);
    picture.decoded = ImageDecoder::decode(path);
    {
        std::lock_guard observed(mutex);
        lastTaken = picture.source;
    }
    const qint64 pixels = qint64(picture.decoded.image.width()) * picture.decoded.image.height();
    if (!picture.decoded.ok || !before || pixels > maxPixels || !(stampOfFile(path) == before))
        return picture;

    lock.lock();
    auto it = find(path);
    if (it != entries.end()) {
        if (it->state == State::Decoding)
            return picture; // read again meanwhile by a newer look around: that one stays
        entries.erase(it);
    }
    Entry current;
    current.id = nextId++;
    current.path = path;
    current.state = State::Ready;
    current.stamp = *before;
    current.decoded = picture.decoded;
    entries.push_front(std::move(current));
    return picture;
}

void DecodeAhead::lookAround(const QString& current, const ViewShape& view) {
    {
        std::lock_guard lock(mutex);
        request = Request{current, view};
        startThread();
    }
    changed.notify_all();
}

void DecodeAhead::clear() {
    {
        std::lock_guard lock(mutex);
        request.reset();
        // A decode under way finds its entry gone when it ends, and drops what it made.
        entries.clear();
    }
    changed.notify_all();
}

// ------------------------------------------------------------------------------ observation

QStringList DecodeAhead::heldPaths() const {
    std::lock_guard lock(mutex);
    QStringList held;
    for (const Entry& e : entries)
        if (e.state == State::Ready)
            held.append(e.path);
    return held;
}

bool DecodeAhead::waitUntilIdle(int timeoutMs) const {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] {
        return !request && !busy &&
               std::none_of(entries.begin(), entries.end(),
                            [](const Entry& e) { return e.state == State::Queued; });
    });
}

DecodeAhead::Source DecodeAhead::lastTakenSource() const {
    std::lock_guard lock(mutex);
    return lastTaken;
}

int DecodeAhead::backgroundDecodes() const {
    std::lock_guard lock(mutex);
    return decodesStarted;
}

// -------------------------------------------------------------------------- decoding thread

bool DecodeAhead::fitsAhead(const QString& path) const {
    // Most formats tell their size from the header; the others are measured once decoded. A
    // header too costly to parse is refused by the decode as well.
    const ImageDecoder::PictureHeader header = ImageDecoder::readHeader(path);
    const QSize size = header.pixels;
    return header.affordable &&
           (!size.isValid() || qint64(size.width()) * size.height() <= maxPixels);
}

DecodeAhead::Prepared DecodeAhead::prepare(const QString& path, const ViewShape& view) const {
    Prepared made;
    const std::optional<FileStamp> before = stampOfFile(path);
    if (!before || !fitsAhead(path))
        return made;
    made.decoded = ImageDecoder::decode(path);
    const QImage& image = made.decoded.image;
    if (!made.decoded.ok || qint64(image.width()) * image.height() > maxPixels)
        return made; // an unreadable file is read again, and refused, when it is stepped to
    made.displayCopy = makeDisplayCopy(image, view.size, view.ratio);
    if (!made.displayCopy.isNull())
        made.displayPixels = viewDevicePixels(view.size, view.ratio);
    // A file written to while it was read may have given a mixture of old and new.
    made.keep = stampOfFile(path) == before;
    made.stamp = *before;
    return made;
}

void DecodeAhead::settle(const Request& request, const QString& next, const QString& previous) {
    // The next picture first: a step back needs only the one before it decoded, as the one it
    // came from is held already.
    const QString& first = next;
    const QString& second = previous;
    const QStringList wanted = {request.current, first, second};

    for (auto it = entries.begin(); it != entries.end();) {
        const bool keep = !it->path.isEmpty() && wanted.contains(it->path) &&
                          !(it->path == request.current && it->state == State::Queued);
        it = keep ? std::next(it) : entries.erase(it);
    }
    for (const QString& path : {request.current, first, second}) {
        if (path.isEmpty())
            continue;
        auto it = find(path);
        if (it == entries.end()) {
            if (path == request.current)
                continue; // shown already; held only when take() could keep it
            Entry entry;
            entry.id = nextId++;
            entry.path = path;
            entries.push_back(std::move(entry));
        } else {
            entries.splice(entries.end(), entries, it); // decoding order
        }
    }
    queuedView = request.view;
}

void DecodeAhead::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [&] {
            return stopping || request ||
                   std::any_of(entries.begin(), entries.end(),
                               [](const Entry& e) { return e.state == State::Queued; });
        });
        if (stopping)
            return;
        if (request) {
            const Request looking = *request;
            request.reset();
            busy = true;
            lock.unlock();
            QString next = looking.current, previous = looking.current;
            const bool hasNext = !next.isEmpty() && findImageFile(kStepNext, next, types);
            const bool hasPrevious =
                !previous.isEmpty() && findImageFile(kStepPrevious, previous, types);
            lock.lock();
            busy = false;
            if (!stopping && !request) // else a newer picture is current already
                settle(looking, hasNext ? next : QString(), hasPrevious ? previous : QString());
            changed.notify_all();
            continue;
        }
        auto queued = std::find_if(entries.begin(), entries.end(),
                                   [](const Entry& e) { return e.state == State::Queued; });
        queued->state = State::Decoding;
        const quint64 id = queued->id;
        const QString path = queued->path;
        const ViewShape view = queuedView;
        ++decodesStarted;
        busy = true;
        lock.unlock();
        Prepared made = prepare(path, view);
        lock.lock();
        busy = false;
        auto entry = findId(id);
        if (entry != entries.end()) {
            if (made.keep) {
                entry->state = State::Ready;
                entry->stamp = made.stamp;
                entry->decoded = std::move(made.decoded);
                entry->displayCopy = std::move(made.displayCopy);
                entry->displayPixels = made.displayPixels;
            } else {
                entries.erase(entry);
            }
        }
        changed.notify_all();
    }
}
