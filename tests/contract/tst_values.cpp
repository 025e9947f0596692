// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

#include <limits>

using namespace morvek;

class ValueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makesText_data();
    void makesText();
    void readsNumbers_data();
    void readsNumbers();
    void readsTruthValues_data();
    void readsTruthValues();
    void readsText();
    void readsJson_data();
    void readsJson();
    void saysWhyItIsNoJson();
    void nothingIsInvalid();
    void isCopiedAndComparedWhole();
};

void ValueTest::makesText_data()
{
    QTest::addColumn<ZopVariant>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("encoding");
    QTest::newRow("text") << ZopVariant(QStringLiteral("on")) << QByteArray("on") << QByteArray("text");
    QTest::newRow("literal") << ZopVariant("on") << QByteArray("on") << QByteArray("text");
    QTest::newRow("empty") << ZopVariant(QString()) << QByteArray("") << QByteArray("text");
    QTest::newRow("outside ASCII") << ZopVariant(QString(QChar(0xe9))) << QByteArray("\xc3\xa9") << QByteArray("text");
    QTest::newRow("zero") << ZopVariant(0) << QByteArray("0") << QByteArray("number");
    QTest::newRow("negative") << ZopVariant(-12) << QByteArray("-12") << QByteArray("number");
    QTest::newRow("smallest") << ZopVariant(std::numeric_limits<int>::min()) << QByteArray("-2147483648")
                              << QByteArray("number");
    QTest::newRow("object") << ZopVariant(QJsonObject {{"b", 1}, {"a", QJsonArray {true, "x"}}})
                            << QByteArray(R"({"a":[true,"x"],"b":1})") << QByteArray("json");
    QTest::newRow("array") << ZopVariant(QJsonArray {1, 2}) << QByteArray("[1,2]") << QByteArray("json");
    QTest::newRow("bytes") << ZopVariant(QByteArray("\0\xff", 2), "raw") << QByteArray("\0\xff", 2)
                           << QByteArray("raw");
}

void ValueTest::makesText()
{
    QFETCH(ZopVariant, value);
    QVERIFY(value.isValid());
    QTEST(value.bytes(), "bytes");
    QTEST(value.encoding(), "encoding");
}

void ValueTest::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("isOne");
    QTest::newRow("zero") << QByteArray("0") << 0 << true;
    QTest::newRow("plain") << QByteArray("42") << 42 << true;
    QTest::newRow("negative") << QByteArray("-42") << -42 << true;
    QTest::newRow("decimal in spite of a zero") << QByteArray("010") << 10 << true;
    QTest::newRow("largest") << QByteArray("2147483647") << 2147483647 << true;
    QTest::newRow("too large") << QByteArray("2147483648") << 0 << false;
    QTest::newRow("far too large") << QByteArray("99999999999999999999") << 0 << false;
    QTest::newRow("too small") << QByteArray("-2147483649") << 0 << false;
    QTest::newRow("empty") << QByteArray() << 0 << false;
    QTest::newRow("word") << QByteArray("ten") << 0 << false;
    QTest::newRow("number and more") << QByteArray("42x") << 0 << false;
    QTest::newRow("number and zero byte") << QByteArray("42\0x", 4) << 0 << false;
    QTest::newRow("hexadecimal") << QByteArray("0x10") << 0 << false;
    QTest::newRow("fraction") << QByteArray("1.5") << 0 << false;
    QTest::newRow("json number") << QByteArray("[1]") << 0 << false;
    QTest::newRow("no utf-8") << QByteArray("\xff\xfe") << 0 << false;
    QTest::newRow("first and last digit") << QByteArray("90") << 90 << true;
    QTest::newRow("below the digits") << QByteArray("4/") << 0 << false;
    QTest::newRow("above the digits") << QByteArray("4:") << 0 << false;
    QTest::newRow("nine digits") << QByteArray("987654321") << 987654321 << true;
    QTest::newRow("ten digits") << QByteArray("1987654321") << 1987654321 << true;
    QTest::newRow("nine digits below zero") << QByteArray("-987654321") << -987654321 << true;
    QTest::newRow("ten digits below zero") << QByteArray("-1987654321") << -1987654321 << true;
    QTest::newRow("negative zero") << QByteArray("-0") << 0 << true;
    QTest::newRow("many zeros") << QByteArray("0000000000042") << 42 << true;
    QTest::newRow("minus") << QByteArray("-") << 0 << false;
    QTest::newRow("two minus") << QByteArray("--1") << 0 << false;
    QTest::newRow("plus") << QByteArray("+42") << 42 << true;
    QTest::newRow("blanks") << QByteArray(" 42\n") << 42 << true;
    QTest::newRow("blank within") << QByteArray("4 2") << 0 << false;
    QTest::newRow("other blanks") << QByteArray("\xc2\xa0\x34\x32\xe2\x80\x83") << 42 << true;
    QTest::newRow("other digits") << QByteArray("\xd9\xa4\xd9\xa2") << 0 << false;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf\x34\x32") << 42 << true;
    QTest::newRow("two byte order marks") << QByteArray("\xef\xbb\xbf\xef\xbb\xbf\x34\x32") << 0 << false;
    QTest::newRow("grouped") << QByteArray("1,000") << 0 << false;
}

void ValueTest::readsNumbers()
{
    QFETCH(QByteArray, bytes);
    for (const char *encoding : {"text", "number", "json", ""}) {
        const ZopVariant value(bytes, encoding);
        bool ok = false;
        QTEST(value.toInt(&ok), "number");
        QTEST(ok, "isOne");
        QTEST(value.toInt(), "number");
    }
}

void ValueTest::readsTruthValues_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isTrue");
    for (const char *yes : {"true", "1", "yes", "on"})
        QTest::newRow(yes) << QByteArray(yes) << true;
    for (const char *no : {"false", "0", "no", "off", "", "True", "ON", "2", " 1", "true ", "enabled"})
        QTest::newRow(no) << QByteArray(no) << false;
    QTest::newRow("on and a zero byte") << QByteArray("on\0", 3) << false;
    QTest::newRow("zero byte and on") << QByteArray("\0on", 3) << false;
    for (const char *yes : {"true", "1", "yes", "on"})
        QTest::addRow("byte order mark and %s", yes) << "\xef\xbb\xbf" + QByteArray(yes) << true;
    QTest::newRow("two byte order marks") << QByteArray("\xef\xbb\xbf\xef\xbb\xbf\x31") << false;
    QTest::newRow("other e") << QByteArray("\xef\xbd\x85") << false;
}

void ValueTest::readsTruthValues()
{
    QFETCH(QByteArray, bytes);
    QTEST(ZopVariant(bytes, "text").toBool(), "isTrue");
    QTEST(ZopVariant(bytes, "json").toBool(), "isTrue");
}

void ValueTest::readsText()
{
    QCOMPARE(ZopVariant(QByteArray("gr\xc3\xbc\xc3\x9f"), "json").toString(), QStringLiteral("gr\u00fc\u00df"));
    QCOMPARE(ZopVariant(7).toString(), QStringLiteral("7"));
    QCOMPARE(ZopVariant(QJsonArray {1}).toString(), QStringLiteral("[1]"));
    QCOMPARE(ZopVariant(QByteArray("a\xff"), "text").toString(), QString(QStringLiteral("a") + QChar(0xfffd)));
    QCOMPARE(ZopVariant(QByteArray("a\0b", 3), "text").toString().size(), 3);
}

void ValueTest::readsJson_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("compact");
    QTest::newRow("object") << QByteArray(" {\"a\" : 1}\n") << QByteArray("{\"a\":1}");
    QTest::newRow("array") << QByteArray("[1, 2]") << QByteArray("[1,2]");
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("half") << QByteArray("{\"a\":") << QByteArray();
    QTest::newRow("text") << QByteArray("wlan0") << QByteArray();
    QTest::newRow("zero byte") << QByteArray("{}\0", 3) << QByteArray();
    QTest::newRow("no utf-8") << QByteArray("[\"\xff\"]") << QByteArray();
    QTest::newRow("a hundred thousand levels") << QByteArray(100000, '[') + QByteArray(100000, ']') << QByteArray();
}

void ValueTest::readsJson()
{
    QFETCH(QByteArray, bytes);
    for (const char *encoding : {"json", "text"})
        QTEST(ZopVariant(bytes, encoding).toJson().toJson(QJsonDocument::Compact), "compact");
}

void ValueTest::saysWhyItIsNoJson()
{
    QJsonParseError error;
    QVERIFY(ZopVariant(QByteArray("{"), "json").toJson(&error).isNull());
    QVERIFY(error.error != QJsonParseError::NoError);
    QVERIFY(!ZopVariant(QByteArray("{}"), "text").toJson(&error).isNull());
    QCOMPARE(error.error, QJsonParseError::NoError);
}

void ValueTest::nothingIsInvalid()
{
    const ZopVariant nothing;
    QVERIFY(!nothing.isValid());
    QCOMPARE(nothing.toString(), QString());
    QCOMPARE(nothing.toInt(), 0);
    QCOMPARE(nothing.toBool(), false);
    QVERIFY(nothing.toJson().isNull());
    QVERIFY(nothing != ZopVariant(QString()));
    QCOMPARE(nothing, ZopVariant());
}

void ValueTest::isCopiedAndComparedWhole()
{
    const ZopVariant value(QByteArray("1"), "number");
    ZopVariant copy;
    copy = value;
    QCOMPARE(copy, value);
    QVERIFY(copy.isValid());
    QCOMPARE(value, ZopVariant(1));
    QVERIFY(value != ZopVariant(QStringLiteral("1")));
    QVERIFY(value != ZopVariant(2));
}

CONTRACT_TEST_MAIN(ValueTest)

#include "tst_values.moc"
