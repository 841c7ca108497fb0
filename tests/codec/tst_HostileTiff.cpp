// libtiff reports through process-wide handlers. A damaged TIFF read before a valid one (by
// the program's own decoder, or by Magick++ directly) must leave nothing behind that the next
// read trips over: the valid TIFF, whose private tag makes libtiff warn, still opens. The test
// runs with MALLOC_PERTURB_ set, so that a handler writing into a freed report fails loudly.

#include "HostileCorpus.h"

#include "codec/ImageDecoder.h"
#include "codec/MagickSupport.h"

#include <Magick++.h>

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtConcurrent/QtConcurrentRun>
#include <QtTest>

namespace {

bool write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Reads the bytes with Magick++ as a TIFF, the way any code of the process could; its
// failure is expected and of no interest here.
void readWithMagick(const QByteArray& bytes) {
    try {
        Magick::Image image;
        image.quiet(false);
        image.read(Magick::Blob(bytes.constData(), size_t(bytes.size())), "TIFF");
    } catch (const std::exception&) {
    }
}

} // namespace

class tst_HostileTiff : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    QString damaged;
    QString valid;
    QString privateTag;

    void expectValid(const QString& path) {
        const DecodedImage decoded = ImageDecoder::decode(path);
        QVERIFY(decoded.ok);
        QCOMPARE(decoded.image.size(), QSize(8, 8));
        QCOMPARE(ImageDecoder::measure(path), QSizeF(8, 8));
    }

private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        // As the program does at launch: Magick++ first, with the program's handlers.
        ensureMagickInitialised();
        damaged = dir.filePath("damaged.tif");
        valid = dir.filePath("plain.tif");
        privateTag = dir.filePath("private-tag.tif");
        QVERIFY(write(damaged, HostileCorpus::tiffWithBrokenStrips()));
        QVERIFY(write(privateTag, HostileCorpus::tiffWithPrivateTag()));
        QImage plain(8, 8, QImage::Format_RGB32);
        plain.fill(Qt::green);
        plain.setDotsPerMeterX(2835); // 72 dpi: a point a pixel
        plain.setDotsPerMeterY(2835);
        QVERIFY(plain.save(valid, "TIFF"));
    }

    void damagedThenPrivateTag() {
        ImageDecoder::decode(damaged);
        expectValid(privateTag);
        expectValid(valid);
        // And once more in the other order.
        ImageDecoder::decode(damaged);
        expectValid(privateTag);
    }

    void magickReadThenPrivateTag() {
        readWithMagick(HostileCorpus::tiffWithBrokenStrips());
        expectValid(privateTag);
        readWithMagick(HostileCorpus::tiffWithPrivateTag());
        expectValid(privateTag);
        expectValid(valid);
    }

    // Magick++ on one thread, the program's decoder on another, then both the other way round:
    // the handlers are shared by every thread.
    void magickReadOnAnotherThread() {
        QtConcurrent::run([] {
            readWithMagick(HostileCorpus::tiffWithBrokenStrips());
        }).waitForFinished();
        expectValid(privateTag);
        QFuture<bool> decoded = QtConcurrent::run([this] {
            readWithMagick(HostileCorpus::tiffWithBrokenStrips());
            return ImageDecoder::decode(privateTag).ok;
        });
        QVERIFY(decoded.result());
    }

    // Magick++ started by someone else than the program (a plugin, a library of the desktop),
    // with its own libtiff handlers in place, before the program has decoded anything. Run in
    // a child process: the failure this guards against is a crash.
    void magickStartedElsewhere() {
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {"--magick-started-elsewhere", privateTag});
        QVERIFY(child.waitForFinished(60'000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
    }

    void manyDamagedTiffsThenValid() {
        QTemporaryDir corpus;
        QVERIFY(corpus.isValid());
        CorpusWriter writer(corpus.path());
        HostileCorpus::addTiffDamage(writer);
        QVERIFY(writer.errors().isEmpty());
        for (const CorpusEntry& e : writer.entries()) {
            // Giants belong to the corpus test, which runs them under a memory limit.
            if (e.damage == "bomb" || e.damage == "lying-header")
                continue;
            const QString path = corpus.filePath(e.name);
            ImageDecoder::decode(path);
            ImageDecoder::measure(path);
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            readWithMagick(file.readAll());
        }
        expectValid(privateTag);
        expectValid(valid);
    }
};

// The child of magickStartedElsewhere: Magick++ initialised and reading a damaged TIFF on its
// own, then the program's decoder on a valid one. Exits 0 when that decodes.
static int magickStartedElsewhere(const QString& valid) {
    Magick::InitializeMagick(nullptr);
    readWithMagick(HostileCorpus::tiffWithBrokenStrips());
    const DecodedImage decoded = ImageDecoder::decode(valid);
    return decoded.ok && decoded.image.size() == QSize(8, 8) ? 0 : 1;
}

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc == 3 && QByteArrayView(argv[1]) == "--magick-started-elsewhere")
        return magickStartedElsewhere(QString::fromLocal8Bit(argv[2]));
    tst_HostileTiff test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_HostileTiff.moc"
