// SPDX-License-Identifier: Apache-2.0
#include "localencoding.h"
#include "logcapture.h"
#include "textlines.h"
#include "wifiproviderzopparserutilities.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using namespace morvek;
using Utilities = WifiProviderZopParserUtilities;

namespace {

/*! What the parsers write to, as plain numbers. */
struct Outputs
{
    uint protocols;
    uint keyManagement;
    uint ciphers;
    int serviceSet;
};

QString text(const Outputs &outputs)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(outputs.protocols, 0, 16)
        .arg(outputs.keyManagement, 0, 16)
        .arg(outputs.ciphers, 0, 16)
        .arg(outputs.serviceSet);
}

Outputs parse(const QByteArray &flags, const Outputs &start = {0, 0, 0, 2})
{
    QFlags<WifiSecurityProtocol> protocols(QFlag(start.protocols));
    QFlags<WifiKeyManagementType> keyManagement(QFlag(start.keyManagement));
    QFlags<WifiCipher> ciphers(QFlag(start.ciphers));
    auto serviceSet = WifiServiceSet(start.serviceSet);
    Utilities::parseScanResultFlags(QJsonDocument::fromJson(flags).array(), protocols, keyManagement, ciphers,
                                    serviceSet);
    return {uint(protocols), uint(keyManagement), uint(ciphers), int(serviceSet)};
}

} // namespace

class TestWifiProviderZopParserUtilities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statusKeyManagement_data();
    void statusKeyManagement();
    void unknownStatusKeyManagement_data();
    void unknownStatusKeyManagement();
    void statusCipher_data();
    void statusCipher();
    void unknownStatusCipher_data();
    void unknownStatusCipher();
    void scanResultFlags_data();
    void scanResultFlags();
    void unknownScanResultFlags_data();
    void unknownScanResultFlags();
    void scanResultFlagsAdd_data();
    void scanResultFlagsAdd();
    void logsInTheLocalEncoding();

private:
    LocalEncoding m_encoding {"UTF-8"};
};

void TestWifiProviderZopParserUtilities::statusKeyManagement_data()
{
    QTest::addColumn<uint>("protocols");
    QTest::addColumn<uint>("keyManagement");
    QTest::newRow("NONE") << 0x1U << 0x1U;
    QTest::newRow("WPA-PSK") << 0x4U << 0x2U;
    QTest::newRow("WPA-EAP") << 0x4U << 0x4U;
    QTest::newRow("WPA2-PSK") << 0x8U << 0x2U;
    QTest::newRow("WPA2-EAP") << 0x8U << 0x4U;
}

void TestWifiProviderZopParserUtilities::statusKeyManagement()
{
    QFETCH(uint, protocols);
    QFETCH(uint, keyManagement);
    LogCapture log(7);
    for (const uint start : {0x0U, 0x12U}) {
        QFlags<WifiSecurityProtocol> protocolsOut {QFlag(start)};
        QFlags<WifiKeyManagementType> keyManagementOut {QFlag(start ? 0x7U : 0x0U)};
        Utilities::parseStatusKeyManagement(QLatin1String(QTest::currentDataTag()), protocolsOut, keyManagementOut);
        QCOMPARE(uint(protocolsOut), protocols);
        QCOMPARE(uint(keyManagementOut), keyManagement);
    }
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderZopParserUtilities::unknownStatusKeyManagement_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value :
         {"", "none", "wpa2-psk", "WPA-psk", "WPA2", "PSK", "WPA3-SAE", "WPA2-SAE", "WPA-NONE", "NONE ", " WPA-PSK",
          "WPA-PSK\n", "WPA-PSK-CCMP", "WPA2-PSK WPA-PSK", "%s \"%n\"", "\xc3\xa9"})
        QTest::addRow("'%s'", value) << QString::fromUtf8(value);
}

void TestWifiProviderZopParserUtilities::unknownStatusKeyManagement()
{
    QFETCH(QString, value);
    QFlags<WifiSecurityProtocol> protocols(QFlag(0x12));
    QFlags<WifiKeyManagementType> keyManagement(QFlag(0x5));
    LogCapture log(2);
    Utilities::parseStatusKeyManagement(value, protocols, keyManagement);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    Utilities::parseStatusKeyManagement(value, protocols, keyManagement);
    QCOMPARE(log.take(),
             QStringList(QLatin1String("warning 1300 Unrecognized Wi-Fi status key management value: \"") + value
                         + QLatin1Char('"')));
    QCOMPARE(uint(protocols), 0x12U);
    QCOMPARE(uint(keyManagement), 0x5U);
}

void TestWifiProviderZopParserUtilities::statusCipher_data()
{
    QTest::addColumn<uint>("ciphers");
    QTest::newRow("NONE") << 0x1U;
    QTest::newRow("CCMP") << 0x2U;
    QTest::newRow("TKIP") << 0x4U;
}

void TestWifiProviderZopParserUtilities::statusCipher()
{
    QFETCH(uint, ciphers);
    LogCapture log(7);
    for (const uint start : {0x0U, 0x7U}) {
        QFlags<WifiCipher> ciphersOut {QFlag(start)};
        Utilities::parseStatusCipher(QLatin1String(QTest::currentDataTag()), ciphersOut);
        QCOMPARE(uint(ciphersOut), ciphers);
    }
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderZopParserUtilities::unknownStatusCipher_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value :
         {"", "none", "ccmp", "TKIP+CCMP", "CCMP+TKIP", "CCMP ", " TKIP", "GCMP", "WEP", "%s \"%n\"", "\xc3\xa9"})
        QTest::addRow("'%s'", value) << QString::fromUtf8(value);
}

void TestWifiProviderZopParserUtilities::unknownStatusCipher()
{
    QFETCH(QString, value);
    QFlags<WifiCipher> ciphers(QFlag(0x5));
    LogCapture log(2);
    Utilities::parseStatusCipher(value, ciphers);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    Utilities::parseStatusCipher(value, ciphers);
    QCOMPARE(
        log.take(),
        QStringList(QLatin1String("warning 1300 Unrecognized Wi-Fi status cipher: \"") + value + QLatin1Char('"')));
    QCOMPARE(uint(ciphers), 0x5U);
}

void TestWifiProviderZopParserUtilities::scanResultFlags_data()
{
    QTest::addColumn<QByteArray>("flags");
    QTest::addColumn<QString>("outputs");
    const auto row = [](const QByteArray &flags, const Outputs &outputs) {
        QTest::newRow(flags) << flags << text(outputs);
    };
    row(R"([])", {0x1, 0x1, 0x1, 2});
    row(R"(["ESS"])", {0x1, 0x1, 0x1, 1});
    row(R"(["ESS","IBSS"])", {0x1, 0x1, 0x1, 1});
    row(R"(["WPS"])", {0x10, 0x1, 0x1, 2});
    row(R"(["WEP"])", {0x2, 0x1, 0x1, 2});
    row(R"(["WEP","WPS","ESS"])", {0x12, 0x1, 0x1, 1});
    row(R"(["WPA-PSK-TKIP"])", {0x4, 0x2, 0x4, 2});
    row(R"(["WPA-PSK-CCMP"])", {0x4, 0x2, 0x2, 2});
    row(R"(["WPA-EAP-TKIP+CCMP"])", {0x4, 0x4, 0x6, 2});
    row(R"(["WPA2-PSK-CCMP","ESS"])", {0x8, 0x2, 0x2, 1});
    row(R"(["ESS","WPA2-EAP-TKIP"])", {0x8, 0x4, 0x4, 1});
    row(R"(["WPA2-PSK-TKIP+CCMP"])", {0x8, 0x2, 0x6, 2});
    row(R"(["WPA-PSK-CCMP","WPA2-PSK-CCMP"])", {0xc, 0x2, 0x2, 2});
    row(R"(["WPA2-PSK-CCMP","WPA-PSK-TKIP"])", {0xc, 0x2, 0x6, 2});
    row(R"(["WPA-PSK-TKIP","WPA2-EAP-CCMP","ESS"])", {0xc, 0x6, 0x6, 1});
    row(R"(["WPS","WPA2-PSK-CCMP"])", {0x18, 0x3, 0x3, 2});
    row(R"(["WPA2-EAP-CCMP","WEP"])", {0xa, 0x5, 0x3, 2});
    // These name nothing, which is not worth a line.
    for (const char *flag : {"", "ess", "wps", "wep", "wpa2-psk-ccmp", "IBSS", "WPS2", "WEP40", "ESS ", " ESS", "P2P",
                             " WPA2-PSK-CCMP", "RSN-PSK-CCMP", "[WPA2-PSK-CCMP]", "WP", "XWPA-PSK-CCMP"})
        row(QByteArray("[\"") + flag + "\"]", {0x1, 0x1, 0x1, 2});
    // No strings.
    for (const char *flag :
         {"1", "null", "true", R"(["WPA2-PSK-CCMP"])", R"({"ESS":"ESS","WPS":"WPS"})", R"([["ESS"]])"})
        row(QByteArray("[") + flag + ",\"ESS\"]", {0x1, 0x1, 0x1, 1});
}

void TestWifiProviderZopParserUtilities::scanResultFlags()
{
    QFETCH(QByteArray, flags);
    QFETCH(QString, outputs);
    LogCapture log(7);
    QCOMPARE(text(parse(flags)), outputs);
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderZopParserUtilities::unknownScanResultFlags_data()
{
    QTest::addColumn<QByteArray>("flags");
    QTest::addColumn<QString>("outputs");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const QByteArray &flags, const Outputs &outputs, std::initializer_list<const char *> log) {
        QTest::newRow(flags) << flags << text(outputs) << lines(log);
    };
    const Outputs open {0x1, 0x1, 0x1, 2};
    row(R"(["WPA"])", open, {"error 1300 Unable to parse access point WPA flag \"WPA\""});
    row(R"(["WPA2-PSK"])", open, {"error 1300 Unable to parse access point WPA flag \"WPA2-PSK\""});
    row(R"(["WPA-"])", open, {"error 1300 Unable to parse access point WPA flag \"WPA-\""});
    row(R"(["WPA---"])", open, {"error 1300 Unable to parse access point WPA flag \"WPA---\""});
    row(R"(["WPAX"])", open, {"error 1300 Unable to parse access point WPA flag \"WPAX\""});
    row(R"(["WPA2-PSK-CCMP-preauth"])", open,
        {"error 1300 Unable to parse access point WPA flag \"WPA2-PSK-CCMP-preauth\""});
    row(R"(["WPA2-PSK-CCMP-"])", open, {"error 1300 Unable to parse access point WPA flag \"WPA2-PSK-CCMP-\""});
    row(R"(["WPA2-PSK","ESS","WPS"])", {0x10, 0x1, 0x1, 1},
        {"error 1300 Unable to parse access point WPA flag \"WPA2-PSK\""});
    row(R"(["WPAX-PSK-CCMP"])", {0x1, 0x3, 0x3, 2},
        {"error 1300 Unrecognized access point flag security protocol: \"WPAX\""});
    row(R"(["WPA3-SAE-CCMP"])", {0x1, 0x1, 0x3, 2},
        {"error 1300 Unrecognized access point flag security protocol: \"WPA3\"",
         "error 1300 Unrecognized access point flag key management: \"SAE\""});
    row(R"(["WPA2-SAE-CCMP"])", {0x8, 0x0, 0x2, 2},
        {"error 1300 Unrecognized access point flag key management: \"SAE\""});
    row(R"(["WPA-psk-ccmp"])", {0x4, 0x0, 0x0, 2},
        {"error 1300 Unrecognized access point flag key management: \"psk\"",
         "error 1300 Unrecognized access point cipher: \"ccmp\""});
    row(R"(["WPA2-PSK-CCMP+TKIP"])", {0x8, 0x2, 0x0, 2},
        {"error 1300 Unrecognized access point cipher: \"CCMP+TKIP\""});
    row(R"(["WPA2-PSK-NONE"])", {0x8, 0x2, 0x0, 2}, {"error 1300 Unrecognized access point cipher: \"NONE\""});
    row(R"(["WPA2-NONE-CCMP "])", {0x8, 0x0, 0x0, 2},
        {"error 1300 Unrecognized access point flag key management: \"NONE\"",
         "error 1300 Unrecognized access point cipher: \"CCMP \""});
    row(R"(["WPA--"])", {0x4, 0x0, 0x0, 2},
        {"error 1300 Unrecognized access point flag key management: \"\"",
         "error 1300 Unrecognized access point cipher: \"\""});
    row(R"(["WPA9-%s-\"é"])", open,
        {"error 1300 Unrecognized access point flag security protocol: \"WPA9\"",
         "error 1300 Unrecognized access point flag key management: \"%s\"",
         "error 1300 Unrecognized access point cipher: \"\"\xc3\xa9\""});
    row(R"(["WPA2-SAE-CCMP","WPA-PSK","WPA-PSK-GCMP"])", {0xc, 0x2, 0x2, 2},
        {"error 1300 Unrecognized access point flag key management: \"SAE\"",
         "error 1300 Unable to parse access point WPA flag \"WPA-PSK\"",
         "error 1300 Unrecognized access point cipher: \"GCMP\""});
}

void TestWifiProviderZopParserUtilities::unknownScanResultFlags()
{
    QFETCH(QByteArray, flags);
    QFETCH(QString, outputs);
    QFETCH(QStringList, log);
    LogCapture capture(1);
    QCOMPARE(text(parse(flags)), outputs);
    QVERIFY(capture.take().isEmpty());
    KrelLogger::setVerbosity(2);
    QCOMPARE(text(parse(flags)), outputs);
    QCOMPARE(capture.take(), log);
}

void TestWifiProviderZopParserUtilities::scanResultFlagsAdd_data()
{
    QTest::addColumn<QByteArray>("flags");
    QTest::addColumn<QString>("outputs");
    QTest::addColumn<QString>("expected");
    const auto row = [](const QByteArray &flags, const Outputs &start, const Outputs &expected) {
        QTest::newRow(flags + " to " + text(start).toLatin1()) << flags << text(start) << text(expected);
    };
    row("[]", {0x0, 0x4, 0x4, 1}, {0x1, 0x5, 0x5, 2});
    row("[]", {0x10, 0x4, 0x4, 1}, {0x10, 0x4, 0x4, 2});
    row(R"(["ESS"])", {0x4, 0x2, 0x4, 2}, {0x4, 0x2, 0x4, 1});
    row(R"(["WPS"])", {0x4, 0x2, 0x4, 1}, {0x14, 0x3, 0x5, 2});
    row(R"(["WEP"])", {0x4, 0x2, 0x4, 1}, {0x6, 0x3, 0x5, 2});
    row(R"(["WPA2-PSK-CCMP"])", {0x4, 0x4, 0x4, 2}, {0xc, 0x6, 0x6, 2});
    row(R"(["WPA-EAP-TKIP"])", {0x8, 0x2, 0x2, 2}, {0xc, 0x6, 0x6, 2});
    row(R"(["WPA-EAP-TKIP+CCMP"])", {0x0, 0x0, 0x1, 2}, {0x4, 0x4, 0x7, 2});
}

void TestWifiProviderZopParserUtilities::scanResultFlagsAdd()
{
    QFETCH(QByteArray, flags);
    QFETCH(QString, outputs);
    QFETCH(QString, expected);
    const QStringList start = outputs.split(QLatin1Char(' '));
    QCOMPARE(text(parse(flags,
                        {start.at(0).toUInt(nullptr, 16), start.at(1).toUInt(nullptr, 16),
                         start.at(2).toUInt(nullptr, 16), start.at(3).toInt()})),
             expected);
}

void TestWifiProviderZopParserUtilities::logsInTheLocalEncoding()
{
    const LocalEncoding encoding("ISO-8859-1");
    LogCapture log(7);
    // One that the encoding has, and one that it has not.
    const QString mixed = QString::fromUtf8("\u00e9\u20ac");
    QFlags<WifiSecurityProtocol> protocols;
    QFlags<WifiKeyManagementType> keyManagement;
    QFlags<WifiCipher> ciphers;
    Utilities::parseStatusKeyManagement(mixed, protocols, keyManagement);
    Utilities::parseStatusCipher(mixed, ciphers);
    parse("[\"WPA\u00e9\u20ac\",\"WPA\u00e9\u20ac-\u00e9\u20ac-\u00e9\u20ac\"]");
    QCOMPARE(log.take(),
             lines({"warning 1300 Unrecognized Wi-Fi status key management value: \"\u00e9?\"",
                    "warning 1300 Unrecognized Wi-Fi status cipher: \"\u00e9?\"",
                    "error 1300 Unable to parse access point WPA flag \"WPA\u00e9?\"",
                    "error 1300 Unrecognized access point flag security protocol: \"WPA\u00e9?\"",
                    "error 1300 Unrecognized access point flag key management: \"\u00e9?\"",
                    "error 1300 Unrecognized access point cipher: \"\u00e9?\""}));
}

QTEST_GUILESS_MAIN(TestWifiProviderZopParserUtilities)
#include "tst_wifiproviderzopparserutilities.moc"
