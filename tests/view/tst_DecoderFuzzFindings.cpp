// Files found by fuzzing the decoder chain. Those that stopped the whole program are decoded in
// a child process (this executable run with --decode), so that a decoder that aborts fails its
// row instead of the suite; one got past the size limits.

#include "codec/DecodeLimits.h"
#include "codec/ImageDecoder.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

class tst_DecoderFuzzFindings : public QObject {
    Q_OBJECT

private slots:
    void survives_data();
    void survives();
    void topDownBmpStaysWithinLimits();
};

void tst_DecoderFuzzFindings::survives_data() {
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("bytes");

    // A JBIG header declaring a page of 16,777,215 x 167,772,160 pixels: libjbig asks malloc
    // for the whole page (350 TB) while Magick only pings it, and aborts when that fails.
    QTest::newRow("jbig page of 350 TB")
        << "bie" << QByteArray::fromBase64("AAABAAD///8KAAAAAAUABwAAAAIIAAMcvKAH");
    // The same under the other JBIG suffix: a page of 318,767,616 x 1,920 pixels.
    QTest::newRow("jbg page of 76 GB")
        << "jbg" << QByteArray::fromBase64("AAABABMAAgAAAAeAAAIAQAAAAAeAAP8C");
}

void tst_DecoderFuzzFindings::survives() {
    QFETCH(QString, suffix);
    QFETCH(QByteArray, bytes);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("input.") + suffix);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
    file.close();

    QProcess child;
    // Under AddressSanitizer, a failed giant allocation returns null as it does in a normal
    // build, instead of ending the child with a report of its own.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    const QString asan = env.value(QStringLiteral("ASAN_OPTIONS"));
    env.insert(QStringLiteral("ASAN_OPTIONS"),
               asan + (asan.isEmpty() ? "" : ":") + "allocator_may_return_null=1");
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--decode"), path});
    QVERIFY(child.waitForFinished(120'000));
    QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0,
             "the decoder chain ends the process");
}

void tst_DecoderFuzzFindings::topDownBmpStaysWithinLimits() {
    // A top-down BMP (negative height) 65,799 pixels wide, 256 rows, its pixels cut short. Qt
    // gives its size as 65,799 x -256, which is not a valid size, and the chain checks a size
    // against the limits only when it is valid.
    const QByteArray bytes = QByteArray::fromBase64(
        "Qk2uAAAAAAAAAGIAAAAoAAAABwEBAAD///8BABgAAAAAAHgAAAAjJwAAEhcA0wAAAP8AAP8AAP8AAAAlUERGLQ==");
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("wide.bmp"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
    file.close();

    const DecodedImage decoded = ImageDecoder::decode(path);
    QVERIFY(!decoded.ok || (decoded.image.width() <= DecodeLimits::kMaxSide &&
                            decoded.image.height() <= DecodeLimits::kMaxSide));
}

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--decode") == 0) {
        QGuiApplication app(argc, argv);
        const QString path = QString::fromLocal8Bit(argv[2]);
        ImageDecoder::measure(path);
        ImageDecoder::decode(path);
        return 0;
    }
    QGuiApplication app(argc, argv);
    tst_DecoderFuzzFindings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_DecoderFuzzFindings.moc"
