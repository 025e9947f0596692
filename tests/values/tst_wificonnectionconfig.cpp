// SPDX-License-Identifier: Apache-2.0
#include "protectedby.h"
#include "textform.h"
#include "wificonnectionconfig.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;

namespace {

using Change = std::function<void(WifiConnectionConfig &)>;

WifiConnectionConfig pskConfig()
{
    return protectedBy("correct horse", "Home");
}

} // namespace

Q_DECLARE_METATYPE(Change)

class TestWifiConnectionConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void validity_data();
    void validity();
    void comparesEveryField_data();
    void comparesEveryField();
    void copiesAreIndependent();
    void textFormHidesThePasskey();
};

void TestWifiConnectionConfig::defaults()
{
    const WifiConnectionConfig config;
    QVERIFY(config.ssid().isEmpty());
    QVERIFY(config.passkey().isEmpty());
    QCOMPARE(int(config.keyManagementType()), 0x1);
    QCOMPARE(int(config.securityProtocol()), 0x1);
    QVERIFY(config.isValid());
    QVERIFY(config == WifiConnectionConfig());
}

void TestWifiConnectionConfig::validity_data()
{
    QTest::addColumn<int>("keyManagement");
    QTest::addColumn<int>("protocol");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<bool>("valid");
    const QString key = QStringLiteral("k");
    QTest::newRow("psk, none") << 0x2 << 0x1 << key << false;
    QTest::newRow("psk, wep") << 0x2 << 0x2 << key << false;
    QTest::newRow("psk, wpa") << 0x2 << 0x4 << key << true;
    QTest::newRow("psk, wpa2") << 0x2 << 0x8 << key << true;
    QTest::newRow("psk, wpa and wpa2") << 0x2 << 0xc << key << false;
    QTest::newRow("psk, wps") << 0x2 << 0x10 << key << false;
    QTest::newRow("psk, wpa, no key") << 0x2 << 0x4 << QString() << false;
    QTest::newRow("psk, wpa2, no key") << 0x2 << 0x8 << QString() << false;
    QTest::newRow("psk, wpa, empty key") << 0x2 << 0x4 << QString(QLatin1String("")) << false;
    QTest::newRow("psk, wpa2, empty key") << 0x2 << 0x8 << QString(QLatin1String("")) << false;
    QTest::newRow("none, none") << 0x1 << 0x1 << QString() << true;
    QTest::newRow("none, none, a key") << 0x1 << 0x1 << key << true;
    QTest::newRow("none, wep") << 0x1 << 0x2 << key << false;
    QTest::newRow("none, wpa") << 0x1 << 0x4 << key << false;
    QTest::newRow("none, wpa2") << 0x1 << 0x8 << key << false;
    QTest::newRow("none, wps") << 0x1 << 0x10 << key << false;
    QTest::newRow("eap, wpa2") << 0x4 << 0x8 << key << false;
    QTest::newRow("eap, none") << 0x4 << 0x1 << key << false;
    QTest::newRow("none and psk, none") << 0x3 << 0x1 << key << false;
    QTest::newRow("psk and eap, wpa2") << 0x6 << 0x8 << key << false;
    QTest::newRow("nothing, none") << 0x0 << 0x1 << key << false;
}

void TestWifiConnectionConfig::validity()
{
    QFETCH(int, keyManagement);
    QFETCH(int, protocol);
    QFETCH(QString, passkey);
    WifiConnectionConfig config;
    config.setKeyManagementType(WifiKeyManagementType(keyManagement));
    config.setSecurityProtocol(WifiSecurityProtocol(protocol));
    config.setPasskey(passkey);
    QTEST(config.isValid(), "valid");
    config.setSsid(QStringLiteral("Home"));
    QTEST(config.isValid(), "valid");
}

void TestWifiConnectionConfig::comparesEveryField_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("ssid", [](WifiConnectionConfig &c) { c.setSsid(QStringLiteral("home")); });
    row("passkey", [](WifiConnectionConfig &c) { c.setPasskey(QStringLiteral("Correct horse")); });
    row("key management", [](WifiConnectionConfig &c) { c.setKeyManagementType(WifiKeyManagementEap); });
    row("protocol", [](WifiConnectionConfig &c) { c.setSecurityProtocol(WifiSecurityProtocolWpa); });
}

void TestWifiConnectionConfig::comparesEveryField()
{
    QFETCH(Change, change);
    const WifiConnectionConfig reference = pskConfig();
    WifiConnectionConfig changed = pskConfig();
    QVERIFY(reference == changed);
    QVERIFY(!(reference != changed));
    change(changed);
    QVERIFY(!(reference == changed));
    QVERIFY(reference != changed);
}

void TestWifiConnectionConfig::copiesAreIndependent()
{
    WifiConnectionConfig source = pskConfig();
    WifiConnectionConfig copy(source);
    WifiConnectionConfig assigned;
    assigned = source;
    QCOMPARE(copy.ssid(), QStringLiteral("Home"));
    QCOMPARE(copy.passkey(), QStringLiteral("correct horse"));
    QCOMPARE(int(copy.keyManagementType()), 0x2);
    QCOMPARE(int(copy.securityProtocol()), 0x8);
    QVERIFY(assigned == source);
    copy.setPasskey(QString());
    assigned.setSsid(QString());
    QVERIFY(source == pskConfig());
    const WifiConnectionConfig &same = source;
    source = same;
    QVERIFY(source == pskConfig());
}

void TestWifiConnectionConfig::textFormHidesThePasskey()
{
    WifiConnectionConfig config = pskConfig();
    QCOMPARE(textForm(config), QStringLiteral("WifiConfig { ssid: Home, key management: 2, protocols: 8 }"));
    WifiConnectionConfig none;
    QCOMPARE(textForm(none), QStringLiteral("WifiConfig { ssid: , key management: 1, protocols: 1 }"));
    none.setSecurityProtocol(WifiSecurityProtocolWps);
    QCOMPARE(textFormInAnyStream(none), QStringLiteral("WifiConfig { ssid: , key management: 1, protocols: 16 }"));
}

QTEST_APPLESS_MAIN(TestWifiConnectionConfig)
#include "tst_wificonnectionconfig.moc"
