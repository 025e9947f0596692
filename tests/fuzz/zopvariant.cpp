// SPDX-License-Identifier: Apache-2.0
// Conversions of an attribute's value. Own readings of numbers and truth values by hand; JSON as its parser reads the
// bytes.
#include "zopvariant.h"
#include "fuzz.h"

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    const ZopVariant value(input, "text");
    const QString text = value.toString();
    Fuzz::expectEqual(value.bytes(), input, "the bytes are kept");
    Fuzz::expectEqual(ZopVariant(text).toString(), text, "a text comes back");

    bool isAscii = true;
    for (const char c : input)
        isAscii = isAscii && static_cast<signed char>(c) >= 0;
    if (isAscii) {
        bool actuallyRead = false;
        int expected = 0;
        const int actual = value.toInt(&actuallyRead);
        const bool read = Fuzz::readNumber(Fuzz::text(input), &expected);
        Fuzz::expectEqual(actuallyRead, read, "whether it is a number");
        Fuzz::expectEqual(actual, read ? expected : 0, "the number");
        Fuzz::expectEqual(value.toInt(), actual, "the number without asking whether it is one");
        if (read)
            Fuzz::expectEqual(ZopVariant(actual).toInt(), actual, "a number comes back");
    }
    const bool isTrue = input == "true" || input == "1" || input == "yes" || input == "on";
    Fuzz::expectEqual(value.toBool(), isTrue, "the truth value");

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(input, &error);
    QJsonParseError told {-1, QJsonParseError::DocumentTooLarge};
    Fuzz::expect(value.toJson(&told) == document, "JSON is parsed");
    Fuzz::expect(told.error == error.error && told.offset == error.offset, "what is wrong with it is told");
    Fuzz::expect(value.toJson() == document, "JSON is parsed without asking what is wrong");
    Fuzz::expect(ZopVariant(input, "json").toJson() == document, "JSON is parsed whatever the encoding");
    if (document.isObject())
        Fuzz::expect(ZopVariant(document.object()).toJson() == document, "an object comes back");
    if (document.isArray())
        Fuzz::expect(ZopVariant(document.array()).toJson() == document, "an array comes back");
    return 0;
}
