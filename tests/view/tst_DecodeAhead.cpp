// The decode-ahead cache on real files: neighbours decoded in the background and served, a file
// rewritten on disk read again, at most three pictures held, work dropped when the current
// picture moves elsewhere, undecodable and oversized neighbours, and a step that waits for the
// decode under way instead of starting a second one.

#include <QColorSpace>
#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "browse/ImageFileTest.h"
#include "codec/ImageDecoder.h"
#include "view/DecodeAhead.h"
#include "view/DisplayCopy.h"

namespace {

using Source = DecodeAhead::Source;

const DecodeAhead::ViewShape kView{QSizeF(320, 240), 1.0};

// A picture whose colour tells which file it came from.
QString writePicture(const QString& folder, const QString& name, QColor colour,
                     QSize size = QSize(64, 48)) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    const QString path = folder + u'/' + name;
    return image.save(path) ? path : QString();
}

// A picture of fine detail that takes a while to decode: PNG of noise.
QString writeSlowPicture(const QString& folder, const QString& name, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    quint32 seed = 12345;
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            seed = seed * 1664525u + 1013904223u;
            line[x] = 0xff000000u | (seed >> 8);
        }
    }
    const QString path = folder + u'/' + name;
    return image.save(path, "PNG", 0) ? path : QString();
}

QColor centreOf(const DecodedImage& decoded) {
    return decoded.image.pixelColor(decoded.image.width() / 2, decoded.image.height() / 2);
}

bool sameSet(QStringList a, QStringList b) {
    a.sort();
    b.sort();
    return a == b;
}

} // namespace

class tst_DecodeAhead : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    QString folder;
    int folderNumber = 0;

    // A fresh folder for each test, so that neighbours are only what the test wrote.
    QString freshFolder() {
        folder = dir.filePath(QStringLiteral("f%1").arg(++folderNumber));
        QDir().mkpath(folder);
        return folder;
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void neighboursAreServedFromTheCache() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = writePicture(folder, "b.png", Qt::green);
        const QString c = writePicture(folder, "c.png", Qt::blue);
        DecodeAhead ahead(imageFileTypes());

        const DecodeAhead::Picture first = ahead.take(b, kView);
        QCOMPARE(first.source, Source::Decoded);
        QVERIFY(first.decoded.ok);
        ahead.lookAround(b, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(sameSet(ahead.heldPaths(), {a, b, c}));
        QCOMPARE(ahead.backgroundDecodes(), 2);

        const DecodeAhead::Picture next = ahead.take(c, kView);
        QCOMPARE(next.source, Source::Cache);
        QCOMPARE(ahead.lastTakenSource(), Source::Cache);
        // Exactly what a decode of its own gives: pixels, format, colours and size in points.
        const DecodedImage direct = ImageDecoder::decode(c);
        QVERIFY(next.decoded.ok);
        QCOMPARE(next.decoded.image, direct.image);
        QCOMPARE(next.decoded.image.format(), direct.image.format());
        QCOMPARE(next.decoded.image.colorSpace(), direct.image.colorSpace());
        QCOMPARE(next.decoded.pointSize, direct.pointSize);
        QCOMPARE(centreOf(next.decoded), QColor(Qt::blue));

        // Stepping back finds the previous picture kept as well.
        QCOMPARE(ahead.take(b, kView).source, Source::Cache);
        QCOMPARE(ahead.backgroundDecodes(), 2); // nothing was decoded twice
    }

    void aRewrittenFileIsReadAgain() {
        freshFolder();
        const QString a = writePicture(folder, "a.bmp", Qt::red);
        const QString b = writePicture(folder, "b.bmp", Qt::green);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(ahead.heldPaths().contains(b));

        // Same size on disk (an uncompressed picture of the same dimensions), new pixels and a
        // new modification time.
        const qint64 sizeBefore = QFileInfo(b).size();
        QVERIFY(!writePicture(folder, "b.bmp", Qt::yellow).isEmpty());
        QCOMPARE(QFileInfo(b).size(), sizeBefore);
        QFile file(b);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(10),
                                 QFileDevice::FileModificationTime));
        file.close();

        const DecodeAhead::Picture shown = ahead.take(b, kView);
        QCOMPARE(shown.source, Source::Decoded);
        QCOMPARE(centreOf(shown.decoded), QColor(Qt::yellow));
    }

    void aFileReplacedByRenameIsReadAgain() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = writePicture(folder, "b.png", Qt::green);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(ahead.heldPaths().contains(b));
        // A new file renamed over the old one, its time set back to the old one's.
        const QDateTime oldTime = QFileInfo(b).lastModified();
        const QString fresh = writePicture(folder, "b-new.png", Qt::magenta);
        QFile freshFile(fresh);
        QVERIFY(freshFile.open(QIODevice::ReadWrite));
        QVERIFY(freshFile.setFileTime(oldTime, QFileDevice::FileModificationTime));
        freshFile.close();
        QVERIFY(::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(b).constData()) ==
                0);
        QCOMPARE(centreOf(ahead.take(b, kView).decoded), QColor(Qt::magenta));
    }

    void aDeletedNeighbourIsNotServed() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = writePicture(folder, "b.png", Qt::green);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(ahead.heldPaths().contains(b));
        QVERIFY(QFile::remove(b));
        const DecodeAhead::Picture gone = ahead.take(b, kView);
        QVERIFY(!gone.decoded.ok);
        QCOMPARE(gone.source, Source::Decoded);
    }

    void atMostThreePicturesAreHeld() {
        freshFolder();
        QStringList paths;
        for (int i = 0; i < 6; ++i)
            paths << writePicture(folder, QStringLiteral("p%1.png").arg(i), QColor(i * 40, 0, 0));
        DecodeAhead ahead(imageFileTypes());
        ahead.take(paths[0], kView);
        for (int i = 1; i < 6; ++i) {
            ahead.lookAround(paths[i - 1], kView);
            QVERIFY(ahead.waitUntilIdle(10000));
            QVERIFY(ahead.heldPaths().size() <= 3);
            QCOMPARE(ahead.take(paths[i], kView).source, Source::Cache);
        }
        ahead.lookAround(paths[5], kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        // The last picture has only a previous neighbour; everything further back is gone.
        QVERIFY(sameSet(ahead.heldPaths(), {paths[4], paths[5]}));
    }

    void steppingBackDecodesOnlyTheNewNeighbour() {
        freshFolder();
        QStringList paths;
        for (int i = 0; i < 5; ++i)
            paths << writePicture(folder, QStringLiteral("p%1.png").arg(i), Qt::gray);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(paths[3], kView);
        ahead.lookAround(paths[3], kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QCOMPARE(ahead.take(paths[2], kView).source, Source::Cache);
        ahead.lookAround(paths[2], kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        // p3 is held already: only p1 is decoded, and p4 is let go.
        const QStringList held = ahead.heldPaths();
        QCOMPARE(held.first(), paths[2]);
        QVERIFY(sameSet(held, {paths[1], paths[2], paths[3]}));
        QCOMPARE(ahead.backgroundDecodes(), 3);
    }

    void movingElsewhereDropsTheWork() {
        freshFolder();
        const QString x1 = writeSlowPicture(folder, "x1.png", QSize(1500, 1000));
        const QString x2 = writeSlowPicture(folder, "x2.png", QSize(1500, 1000));
        const QString x3 = writeSlowPicture(folder, "x3.png", QSize(1500, 1000));
        const QString otherFolder = freshFolder();
        const QString y1 = writePicture(otherFolder, "y1.png", Qt::cyan);
        const QString y2 = writePicture(otherFolder, "y2.png", Qt::darkCyan);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(x2, kView);
        ahead.lookAround(x2, kView);
        ahead.take(y1, kView); // another folder, at once
        ahead.lookAround(y1, kView);
        QVERIFY(ahead.waitUntilIdle(20000));
        QVERIFY(sameSet(ahead.heldPaths(), {y1, y2}));
        QVERIFY(!ahead.heldPaths().contains(x1) && !ahead.heldPaths().contains(x3));

        ahead.clear();
        QVERIFY(ahead.heldPaths().isEmpty());
        QCOMPARE(ahead.take(y2, kView).source, Source::Decoded);
    }

    void endsWhileDecoding() {
        freshFolder();
        const QString a = writeSlowPicture(folder, "a.png", QSize(1500, 1000));
        writeSlowPicture(folder, "b.png", QSize(1500, 1000));
        QElapsedTimer timer;
        timer.start();
        {
            DecodeAhead ahead(imageFileTypes());
            ahead.lookAround(a, kView);
            QTRY_VERIFY(ahead.backgroundDecodes() >= 1);
        } // the destructor waits for the one decode under way, no more
        QVERIFY(timer.elapsed() < 20000);
    }

    void anUndecodableNeighbour() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = folder + "/b.png";
        QFile junk(b);
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("\x89PNG\r\n\x1a\n this is no picture at all");
        junk.close();
        const QString c = writePicture(folder, "c.png", Qt::blue);
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(!ahead.heldPaths().contains(b)); // nothing to hold: read again when stepped to
        const DecodeAhead::Picture refused = ahead.take(b, kView);
        QVERIFY(!refused.decoded.ok);
        QVERIFY(refused.decoded.image.isNull());
        ahead.lookAround(b, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(sameSet(ahead.heldPaths(), {a, c}));
        QCOMPARE(ahead.take(c, kView).source, Source::Cache);
    }

    void picturesAboveTheLimitAreNotDecodedAhead() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red, QSize(40, 40));
        const QString b = writePicture(folder, "b.png", Qt::green, QSize(400, 300));
        const QString c = writePicture(folder, "c.png", Qt::blue, QSize(40, 40));
        DecodeAhead ahead(imageFileTypes(), 10'000);
        ahead.take(b, kView); // shown all the same, but not held
        ahead.lookAround(b, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        QVERIFY(sameSet(ahead.heldPaths(), {a, c}));
        const DecodeAhead::Picture big = ahead.take(b, kView);
        QCOMPARE(big.source, Source::Decoded);
        QCOMPARE(big.decoded.image.size(), QSize(400, 300));
    }

    void aStepWaitsForTheDecodeUnderWay() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = writeSlowPicture(folder, "b.png", QSize(3000, 2000));
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QTRY_COMPARE(ahead.backgroundDecodes(), 1); // b is being decoded
        const DecodeAhead::Picture picture = ahead.take(b, kView);
        QVERIFY(picture.source == Source::Awaited || picture.source == Source::Cache);
        QVERIFY(picture.decoded.ok);
        QCOMPARE(picture.decoded.image.size(), QSize(3000, 2000));
        QCOMPARE(ahead.backgroundDecodes(), 1);
    }

    void theDisplayCopyIsMadeAhead() {
        freshFolder();
        const QString a = writePicture(folder, "a.png", Qt::red);
        const QString b = writeSlowPicture(folder, "b.png", QSize(2400, 1600));
        DecodeAhead ahead(imageFileTypes());
        ahead.take(a, kView);
        ahead.lookAround(a, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        const DecodeAhead::Picture shown = ahead.take(b, kView);
        QCOMPARE(shown.source, Source::Cache);
        const QImage expected = makeDisplayCopy(shown.decoded.image, kView.size, kView.ratio);
        QVERIFY(!expected.isNull());
        QCOMPARE(shown.displayCopy, expected);
        // A view of another size gets no copy: it makes its own.
        ahead.lookAround(b, kView);
        QVERIFY(ahead.waitUntilIdle(10000));
        const DecodeAhead::Picture other = ahead.take(b, {QSizeF(640, 480), 1.0});
        QCOMPARE(other.source, Source::Cache);
        QVERIFY(other.displayCopy.isNull());
    }
};

QTEST_GUILESS_MAIN(tst_DecodeAhead)
#include "tst_DecodeAhead.moc"
