// Fuzzes the preferences reader with arbitrary bytes, decoded the way the preferences file is
// (UTF-8, else one character a byte), and checks that whatever it reads survives the writer.

#include "app/PropertyList.h"

#include <QByteArray>
#include <QStringDecoder>

#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

using FuzzSupport::check;

namespace {

QString decodeLikeThePrefFile(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        text = QString::fromLatin1(bytes);
    return text;
}

void readAndRoundTrip(QStringView text) {
    QString error;
    const std::optional<PropertyList::Dictionary> read = PropertyList::readDictionary(text, &error);
    check(read.has_value() == error.isEmpty(), "an error is given exactly when reading fails");
    if (!read)
        return;
    const QString written = PropertyList::writeDictionary(*read);
    for (QChar c : written)
        check(c.unicode() < 0x80, "the writer writes ASCII only");
    const std::optional<PropertyList::Dictionary> again = PropertyList::readDictionary(written);
    check(again.has_value(), "the writer's text reads back");
    check(*again == *read, "the writer's text reads back as the same dictionary");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    FuzzSupport::quietQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    readAndRoundTrip(decodeLikeThePrefFile(bytes));
    // The same bytes as UTF-16 code units reach what no decoder produces: lone surrogates.
    readAndRoundTrip(QStringView(reinterpret_cast<const char16_t*>(data), qsizetype(size / 2)));
    return 0;
}
