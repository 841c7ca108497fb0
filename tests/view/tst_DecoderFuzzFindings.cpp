// Files found by fuzzing the decoder chain that stopped the whole program. Each is decoded in a
// child process (this executable run with --decode), so that a decoder that aborts fails its
// row instead of the suite. Rows whose cause lies in a system library the chain calls are
// marked as expected failures until the chain refuses such files before the library sees them;
// an unexpected pass then says that the mark can go.

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
};

void tst_DecoderFuzzFindings::survives_data() {
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("knownCause");

    // A JBIG header declaring a page of 16,777,215 x 167,772,160 pixels: libjbig asks malloc
    // for the whole page (350 TB) while Magick only pings it, and aborts when that fails.
    QTest::newRow("jbig page of 350 TB")
        << "bie" << QByteArray::fromBase64("AAABAAD///8KAAAAAAUABwAAAAIIAAMcvKAH")
        << "libjbig aborts when its allocation of the declared page fails";
}

void tst_DecoderFuzzFindings::survives() {
    QFETCH(QString, suffix);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, knownCause);

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
    if (!knownCause.isEmpty())
        QEXPECT_FAIL("", qPrintable(knownCause), Continue);
    QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0,
             "the decoder chain ends the process");
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
