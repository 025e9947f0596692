// SPDX-License-Identifier: Apache-2.0
#include "jsontext_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

using namespace morvek;

class TestJsonText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void string_data();
    void string();
    void stringAsQtWritesIt();
};

void TestJsonText::string_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char *name, const QString &text, const char *json) {
        QTest::newRow(name) << text << QByteArray(json);
    };
    row("nothing", QString(), "\"\"");
    row("plain", QStringLiteral("en0"), "\"en0\"");
    row("blank and behind the letters", QStringLiteral(" ~\x7f"), "\" ~\x7f\"");
    row("slash", QStringLiteral("a/b'"), "\"a/b'\"");
    row("quotes", QStringLiteral("\"a\""), R"("\"a\"")");
    row("backslash", QStringLiteral("a\\b"), R"("a\\b")");
    row("short escapes", QStringLiteral("\b\f\n\r\t"), R"("\b\f\n\r\t")");
    row("zero", QString(QChar(0)), R"("\u0000")");
    row("controls", QStringLiteral("\x01\x0b\x1b\x1f"), R"("\u0001\u000b\u001b\u001f")");
    row("outside ASCII", QString::fromUtf8("\xc2\x80\xc3\xa9\xe2\x82\xac\xe2\x80\xa8"),
        "\"\xc2\x80\xc3\xa9\xe2\x82\xac\xe2\x80\xa8\"");
    row("pair", QString::fromUtf8("\xf0\x9f\x9a\x97"), "\"\xf0\x9f\x9a\x97\"");
    row("last pair", QString::fromUtf8("\xf4\x8f\xbf\xbf"), "\"\xf4\x8f\xbf\xbf\"");
    row("pair before quotes", QString::fromUtf8("\xf0\x9f\x9a\x97\""), "\"\xf0\x9f\x9a\x97\\\"\"");
    row("no characters", QString(QChar(0xfffe)) + QChar(0xffff) + QChar(0xfdd0),
        "\"\xef\xbf\xbe\xef\xbf\xbf\xef\xb7\x90\"");
    row("byte order mark", QString(QChar(0xfeff)), "\"\xef\xbb\xbf\"");
    row("high surrogate at the end", QStringLiteral("a") + QChar(0xd83d), R"("a\ud83d")");
    row("low surrogate alone", QChar(0xdfff) + QStringLiteral("a"), R"("\udfffa")");
    row("wrong order", QString(QChar(0xdc00)) + QChar(0xdbff), R"("\udc00\udbff")");
    row("two high ones", QString(QChar(0xd83d)) + QChar(0xd83d) + QChar(0xde97), "\"\\ud83d\xf0\x9f\x9a\x97\"");
}

void TestJsonText::string()
{
    QFETCH(QString, text);
    QString json = QStringLiteral("[");
    appendJsonString(text, &json);
    QTEST(json.toUtf8().mid(1), "json");
    QCOMPARE(json.at(0), QChar(QLatin1Char('[')));
}

// Daemons have always been sent what Qt's classes write.
void TestJsonText::stringAsQtWritesIt()
{
    QRandomGenerator random(1);
    for (int i = 0; i < 5000; ++i) {
        QString text;
        for (int more = random.bounded(8); more > 0; --more) {
            const ushort bound = random.bounded(3) ? 0x80 : 0xffff;
            text += QChar(ushort(random.bounded(4) ? random.bounded(bound + 1) : 0xd7f8 + random.bounded(0x810)));
        }
        QString json = QStringLiteral("[");
        appendJsonString(text, &json);
        QCOMPARE(json.toUtf8() + ']', QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact));
    }
}

QTEST_GUILESS_MAIN(TestJsonText)
#include "tst_jsontext.moc"
