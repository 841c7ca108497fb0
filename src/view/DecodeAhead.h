#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

#include "browse/ImageFileTest.h"
#include "codec/ImageDecoder.h"

// What identifies the contents of a file without reading it: a file rewritten in place changes
// its size or modification time, one replaced by a rename its inode.
struct FileStamp {
    qint64 size = -1;
    qint64 mtimeNs = 0;
    quint64 inode = 0;
    quint64 device = 0;
    bool operator==(const FileStamp&) const = default;
};

// The stamp of the regular file at `path`; nothing when there is none.
std::optional<FileStamp> stampOfFile(const QString& path);

// The pictures beside the current one in folder order (the next and the previous, as the arrow
// keys step), decoded on one background thread while the current one is looked at, so that a
// step shows its picture at once. It holds at most three pictures: the current one and its two
// neighbours. Each is kept with the stamp its file had when it was read and is served only while
// the file on disk still has that stamp. A neighbour is decoded exactly as a step would decode
// it (ImageDecoder::decode, converted for display), and the scaled copy the view draws of a large
// picture is made beside it.
//
// take() and lookAround() are called from one thread (the GUI thread); the decoding thread
// starts with the first lookAround() and ends with the object.
class DecodeAhead {
public:
    // Pictures above this many pixels are not decoded ahead: at 40 megapixels a picture takes
    // 160 MB, so the three held take at most 480 MB.
    static constexpr qint64 kDefaultMaxPixels = 40'000'000;

    // The view a picture is prepared for: its size in logical pixels and its device pixel ratio.
    struct ViewShape {
        QSizeF size;
        qreal ratio = 1.0;
    };

    enum class Source {
        Decoded, // decoded by take() itself: nothing was ready
        Cache,   // ready in the cache
        Awaited, // the background decode was under way, and take() waited for it
    };

    struct Picture {
        DecodedImage decoded;
        QImage displayCopy; // makeDisplayCopy for the view take() was given; null when none is
                            // needed or was made
        Source source = Source::Decoded;
    };

    explicit DecodeAhead(ImageFileTypes imageTypes, qint64 maxPixels = kDefaultMaxPixels);
    ~DecodeAhead(); // lets a decode under way end, drops it, and ends the thread
    DecodeAhead(const DecodeAhead&) = delete;
    DecodeAhead& operator=(const DecodeAhead&) = delete;

    // The picture at `path`: from the cache when it is held and its file is unchanged, after
    // waiting for it when it is being decoded (never a second decode of the same file), else
    // decoded here. The result is kept as the current picture.
    Picture take(const QString& path, const ViewShape& view);

    // Makes `current` the current picture and decodes its neighbours in the background, the
    // next one first. Pictures that are neither are dropped at once,
    // and a decode under way of one of them is discarded when it ends.
    void lookAround(const QString& current, const ViewShape& view);

    // Drops every picture and every decode not yet started.
    void clear();

    // ----------------------------------------------------------------- observation (tests)
    QStringList heldPaths() const;           // the pictures ready, current first, in no other order
    bool waitUntilIdle(int timeoutMs) const; // until nothing is queued, decoding or looked for
    int backgroundDecodes() const;           // decodes the background thread has started
    Source lastTakenSource() const;          // where the latest take() found its picture

private:
    enum class State { Queued, Decoding, Ready };
    struct Entry {
        quint64 id = 0;
        QString path;
        State state = State::Queued;
        FileStamp stamp;
        DecodedImage decoded;
        QImage displayCopy;
        QSize displayPixels;
    };
    struct Request {
        QString current;
        ViewShape view;
    };
    struct Prepared {
        bool keep = false; // false: nothing to hold (unreadable, too large, changed meanwhile)
        FileStamp stamp;
        DecodedImage decoded;
        QImage displayCopy;
        QSize displayPixels;
    };

    void run();
    void settle(const Request& request, const QString& next, const QString& previous);
    Prepared prepare(const QString& path, const ViewShape& view) const;
    bool fitsAhead(const QString& path) const;
    std::list<Entry>::iterator find(const QString& path);
    std::list<Entry>::iterator findId(quint64 id);
    Entry& keepCurrent(const QString& path);
    void startThread();

    const ImageFileTypes types;
    const qint64 maxPixels;

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::list<Entry> entries; // current first, then the neighbours in decoding order
    std::optional<Request> request;
    ViewShape queuedView;
    quint64 nextId = 1;
    int decodesStarted = 0;
    Source lastTaken = Source::Decoded;
    bool stopping = false;
    bool busy = false; // the thread is looking for neighbours or decoding
    std::thread worker;
};
