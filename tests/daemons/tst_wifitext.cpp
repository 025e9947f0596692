// SPDX-License-Identifier: Apache-2.0
#include "wifitext.h"

#include <QtTest/QtTest>

using namespace morvek;

class WifiTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ssids();
    void passkeys_data();
    void passkeys();
    void keysThatAreTheSame();
    void quotes_data();
    void quotes();
};

void WifiTextTest::ssids()
{
    QVERIFY(WifiText::isSsid(QString()));
    QVERIFY(WifiText::isSsid(QString(32, QLatin1Char('x'))));
    QVERIFY(!WifiText::isSsid(QString(33, QLatin1Char('x'))));
    // Bytes count: this one has two.
    QVERIFY(WifiText::isSsid(QString(16, QChar(0xe9))));
    QVERIFY(!WifiText::isSsid(QString(16, QChar(0xe9)) + QLatin1Char('x')));
}

void WifiTextTest::passkeys_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("fits");

    QTest::addRow("none") << QString() << false;
    QTest::addRow("7") << "1234567" << false;
    QTest::addRow("8") << "12345678" << true;
    QTest::addRow("63") << QString(63, QLatin1Char('~')) << true;
    QTest::addRow("64, no digits") << QString(64, QLatin1Char('g')) << false;
    QTest::addRow("64 digits") << QString(60, QLatin1Char('0')) + QStringLiteral("9aFf") << true;
    QTest::addRow("65 digits") << QString(65, QLatin1Char('0')) << false;
    QTest::addRow("blanks") << QString(8, QLatin1Char(' ')) << true;
    QTest::addRow("tab") << "1234567\t" << false;
    QTest::addRow("line break at the end") << "12345678\n" << false;
    QTest::addRow("zero") << QString(8, QChar(0)) << false;
    QTest::addRow("delete") << QString(8, QChar(0x7f)) << false;
    QTest::addRow("not ASCII") << QString(8, QChar(0xe9)) << false;
}

void WifiTextTest::passkeys()
{
    QFETCH(QString, text);
    QTEST(WifiText::isPasskey(text), "fits");
}

void WifiTextTest::keysThatAreTheSame()
{
    const QString ssid = QStringLiteral("IEEE");
    const QString passkey = QStringLiteral("password");
    // The pair that the standard gives as an example.
    const QString key = QStringLiteral("f42c6fc52df0ebef9ebb4b90b38a5f902e83fe1b135a70e23aed762e9710a12e");
    QVERIFY(WifiText::isSameKey(passkey, passkey, ssid));
    QVERIFY(!WifiText::isSameKey(passkey, QStringLiteral("passwort"), ssid));
    QVERIFY(!WifiText::isSameKey(passkey, QStringLiteral("Password"), ssid));
    QVERIFY(WifiText::isSameKey(key, passkey, ssid));
    QVERIFY(WifiText::isSameKey(passkey, key, ssid));
    QVERIFY(WifiText::isSameKey(key, key.toUpper(), ssid));
    QVERIFY(!WifiText::isSameKey(key, passkey, QStringLiteral("Another")));
    QVERIFY(!WifiText::isSameKey(key, QStringLiteral("0") + key.mid(1), ssid));
    QVERIFY(!WifiText::isSameKey(key, QString(), ssid));
    QVERIFY(WifiText::isSameKey(QString(), QString(), ssid));
}

void WifiTextTest::quotes_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("quoted");

    QTest::addRow("plain") << "Home 5"
                           << "\"Home 5\"";
    QTest::addRow("empty") << QString() << "\"\"";
    QTest::addRow("quotes") << "say \"hello\""
                            << "\"say \\\"hello\\\"\"";
    QTest::addRow("backslash") << "a\\b"
                               << "\"a\\\\b\"";
    QTest::addRow("apostrophe") << "it's"
                                << "\"it's\"";
    QTest::addRow("outside ASCII") << QStringLiteral("Café 🛶") << QStringLiteral("\"Café 🛶\"");
    QTest::addRow("line break") << "two\nlines\r"
                                << "\"two\\x0alines\\x0d\"";
    QTest::addRow("zero") << QString(QChar(0)) << "\"\\x00\"";
    QTest::addRow("escape") << QStringLiteral("\x1b[1m\x7f") << "\"\\x1b[1m\\x7f\"";
    QTest::addRow("control beyond ASCII") << QString(QChar(0x85)) << "\"\\xc2\\x85\"";
    QTest::addRow("line separator") << QString(QChar(0x2028)) << "\"\\xe2\\x80\\xa8\"";
    QTest::addRow("paragraph separator") << QString(QChar(0x2029)) << "\"\\xe2\\x80\\xa9\"";
}

void WifiTextTest::quotes()
{
    QFETCH(QString, ssid);
    QTEST(WifiText::quoted(ssid), "quoted");
}

QTEST_GUILESS_MAIN(WifiTextTest)
#include "tst_wifitext.moc"
