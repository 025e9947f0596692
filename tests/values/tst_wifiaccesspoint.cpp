// SPDX-License-Identifier: Apache-2.0
#include "textform.h"
#include "wifiaccesspoint.h"

#include <QtTest/QtTest>

#include <functional>
#include <type_traits>

using namespace morvek;

static_assert(WifiCipherNone == 0x1, "");
static_assert(WifiCipherCcmp == 0x2, "");
static_assert(WifiCipherTkip == 0x4, "");
static_assert(WifiKeyManagementNone == 0x1, "");
static_assert(WifiKeyManagementPsk == 0x2, "");
static_assert(WifiKeyManagementEap == 0x4, "");
static_assert(WifiSecurityProtocolNone == 0x1, "");
static_assert(WifiSecurityProtocolWep == 0x2, "");
static_assert(WifiSecurityProtocolWpa == 0x4, "");
static_assert(WifiSecurityProtocolWpa2 == 0x8, "");
static_assert(WifiSecurityProtocolWps == 0x10, "");
static_assert(WifiServiceSetEss == 1, "");
static_assert(WifiServiceSetIbss == 2, "");
static_assert(std::is_same<decltype(WifiAccessPoint().frequency()), unsigned int>::value, "");

namespace {

using Change = std::function<void(WifiAccessPoint &)>;

WifiAccessPoint completeAccessPoint()
{
    WifiAccessPoint accessPoint;
    accessPoint.setBssid(QStringLiteral("02:00:00:00:01:0a"));
    accessPoint.setSsid(QStringLiteral("Home"));
    accessPoint.setRssi(-57);
    accessPoint.setFrequency(2412);
    accessPoint.setCiphers(QFlags<WifiCipher>(WifiCipherCcmp) | WifiCipherTkip);
    accessPoint.setKeyManagementTypes(WifiKeyManagementPsk);
    accessPoint.setSecurityProtocols(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
    accessPoint.setServiceSet(WifiServiceSetEss);
    return accessPoint;
}

} // namespace

Q_DECLARE_METATYPE(Change)

class TestWifiAccessPoint : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void keepsWhatIsSet();
    void isEmptyWithoutBssidOnly();
    void comparesEveryField_data();
    void comparesEveryField();
    void copiesAreIndependent();
    void textForm_data();
    void textForm();
};

void TestWifiAccessPoint::defaults()
{
    const WifiAccessPoint accessPoint;
    QVERIFY(accessPoint.bssid().isEmpty());
    QVERIFY(accessPoint.ssid().isEmpty());
    QCOMPARE(accessPoint.rssi(), 0);
    QCOMPARE(accessPoint.frequency(), 0U);
    QCOMPARE(int(accessPoint.ciphers()), 0x1);
    QCOMPARE(int(accessPoint.keyManagementTypes()), 0x1);
    QCOMPARE(int(accessPoint.securityProtocols()), 0x1);
    QCOMPARE(int(accessPoint.serviceSet()), 2);
    QVERIFY(accessPoint.isEmpty());
    QVERIFY(accessPoint == WifiAccessPoint());
}

void TestWifiAccessPoint::keepsWhatIsSet()
{
    const WifiAccessPoint accessPoint = completeAccessPoint();
    QCOMPARE(accessPoint.bssid(), QStringLiteral("02:00:00:00:01:0a"));
    QCOMPARE(accessPoint.ssid(), QStringLiteral("Home"));
    QCOMPARE(accessPoint.rssi(), -57);
    QCOMPARE(accessPoint.frequency(), 2412U);
    QCOMPARE(int(accessPoint.ciphers()), 0x6);
    QCOMPARE(int(accessPoint.keyManagementTypes()), 0x2);
    QCOMPARE(int(accessPoint.securityProtocols()), 0xc);
    QCOMPARE(int(accessPoint.serviceSet()), 1);
}

void TestWifiAccessPoint::isEmptyWithoutBssidOnly()
{
    WifiAccessPoint accessPoint = completeAccessPoint();
    accessPoint.setSsid(QString());
    QVERIFY(!accessPoint.isEmpty());
    accessPoint = completeAccessPoint();
    accessPoint.setBssid(QString());
    QVERIFY(accessPoint.isEmpty());
    accessPoint.setBssid(QLatin1String(""));
    QVERIFY(accessPoint.isEmpty());
}

void TestWifiAccessPoint::comparesEveryField_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("bssid", [](WifiAccessPoint &a) { a.setBssid(QStringLiteral("02:00:00:00:01:01")); });
    row("bssid case", [](WifiAccessPoint &a) { a.setBssid(QStringLiteral("02:00:00:00:01:0A")); });
    row("ssid", [](WifiAccessPoint &a) { a.setSsid(QStringLiteral("home")); });
    row("rssi", [](WifiAccessPoint &a) { a.setRssi(-58); });
    row("frequency", [](WifiAccessPoint &a) { a.setFrequency(5180); });
    row("ciphers", [](WifiAccessPoint &a) { a.setCiphers(WifiCipherCcmp); });
    row("key management", [](WifiAccessPoint &a) { a.setKeyManagementTypes(WifiKeyManagementEap); });
    row("protocols", [](WifiAccessPoint &a) { a.setSecurityProtocols(WifiSecurityProtocolWpa2); });
    row("service set", [](WifiAccessPoint &a) { a.setServiceSet(WifiServiceSetIbss); });
}

void TestWifiAccessPoint::comparesEveryField()
{
    QFETCH(Change, change);
    const WifiAccessPoint reference = completeAccessPoint();
    WifiAccessPoint changed = completeAccessPoint();
    QVERIFY(reference == changed);
    QVERIFY(!(reference != changed));
    change(changed);
    QVERIFY(!(reference == changed));
    QVERIFY(reference != changed);
}

void TestWifiAccessPoint::copiesAreIndependent()
{
    WifiAccessPoint source = completeAccessPoint();
    WifiAccessPoint copy(source);
    WifiAccessPoint assigned;
    assigned = source;
    QVERIFY(copy == source);
    QVERIFY(assigned == source);
    copy.setSsid(QStringLiteral("Other"));
    assigned.setRssi(-90);
    QCOMPARE(source.ssid(), QStringLiteral("Home"));
    QCOMPARE(source.rssi(), -57);
    const WifiAccessPoint &same = source;
    source = same;
    QVERIFY(source == completeAccessPoint());
}

void TestWifiAccessPoint::textForm_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("text");
    QTest::newRow("default") << Change([](WifiAccessPoint &a) { a = WifiAccessPoint(); })
                             << "WifiAccessPoint { bssid: , ssid: , rssi: 0, frequency: 0, ciphers: 1, "
                                "key management: 1, protocols: 1, service set: 2 }";
    QTest::newRow("complete") << Change([](WifiAccessPoint &) {})
                              << "WifiAccessPoint { bssid: 02:00:00:00:01:0a, ssid: Home, rssi: -57, "
                                 "frequency: 2412, ciphers: 6, key management: 2, protocols: 12, service set: 1 }";
    QTest::newRow("largest frequency")
        << Change([](WifiAccessPoint &a) { a.setFrequency(4294967295U); })
        << "WifiAccessPoint { bssid: 02:00:00:00:01:0a, ssid: Home, rssi: -57, frequency: 4294967295, ciphers: 6, "
           "key management: 2, protocols: 12, service set: 1 }";
}

void TestWifiAccessPoint::textForm()
{
    QFETCH(Change, change);
    QFETCH(QString, text);
    WifiAccessPoint accessPoint = completeAccessPoint();
    change(accessPoint);
    QCOMPARE(::textForm(accessPoint), text);
}

QTEST_APPLESS_MAIN(TestWifiAccessPoint)
#include "tst_wifiaccesspoint.moc"
