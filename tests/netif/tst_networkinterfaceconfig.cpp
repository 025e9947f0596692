// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceconfig.h"
#include "textform.h"

#include <QtTest/QtTest>

#include <type_traits>

using namespace morvek;

static_assert(NetworkInterfaceConfig::Auto == 0, "");
static_assert(NetworkInterfaceConfig::Manual == 1, "");
static_assert(std::is_same<std::underlying_type<NetworkInterfaceConfig::ConfigurationType>::type, int>::value, "");

namespace {

QNetworkAddressEntry entry(const char *ip, const char *netmask = nullptr)
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QLatin1String(ip)));
    if (netmask)
        entry.setNetmask(QHostAddress(QLatin1String(netmask)));
    return entry;
}

QHostAddress host(const char *address)
{
    return QHostAddress(QLatin1String(address));
}

NetworkInterfaceConfig config(int type, const QList<QNetworkAddressEntry> &addresses,
                              const QList<QHostAddress> &gateways)
{
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::ConfigurationType(type));
    config.setIpAddresses(addresses);
    config.setGatewayAddresses(gateways);
    return config;
}

NetworkInterfaceConfig manual()
{
    return config(1, {entry("192.168.0.2", "255.255.255.0"), entry("10.0.0.2", "255.0.0.0")},
                  {host("192.168.0.1"), host("10.0.0.1")});
}

} // namespace

class TestNetworkInterfaceConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void appendsAddresses();
    void emptiness_data();
    void emptiness();
    void equality_data();
    void equality();
    void copiesAreIndependent();
    void textForm_data();
    void textForm();
};

void TestNetworkInterfaceConfig::defaults()
{
    const NetworkInterfaceConfig config;
    QCOMPARE(int(config.type()), 0);
    QVERIFY(config.ipAddresses().isEmpty());
    QVERIFY(config.gatewayAddresses().isEmpty());
    QVERIFY(config.isEmpty());
}

void TestNetworkInterfaceConfig::appendsAddresses()
{
    NetworkInterfaceConfig config;
    config.addIpAddress(entry("10.0.0.2"));
    config.addIpAddress(entry("10.0.0.3"));
    QCOMPARE(config.ipAddresses(), (QList<QNetworkAddressEntry> {entry("10.0.0.2"), entry("10.0.0.3")}));
    config.setIpAddresses({entry("10.0.0.4")});
    QCOMPARE(config.ipAddresses(), QList<QNetworkAddressEntry> {entry("10.0.0.4")});
    config.addGatewayAddress(host("10.0.0.1"));
    config.addGatewayAddress(host("10.0.0.254"));
    QCOMPARE(config.gatewayAddresses(), (QList<QHostAddress> {host("10.0.0.1"), host("10.0.0.254")}));
    config.setGatewayAddresses({host("10.0.0.9")});
    QCOMPARE(config.gatewayAddresses(), QList<QHostAddress> {host("10.0.0.9")});
}

void TestNetworkInterfaceConfig::emptiness_data()
{
    QTest::addColumn<NetworkInterfaceConfig>("config");
    QTest::addColumn<bool>("empty");
    QTest::newRow("auto") << config(0, {}, {}) << true;
    QTest::newRow("manual") << config(1, {}, {}) << false;
    QTest::newRow("another type") << config(2, {}, {}) << false;
    QTest::newRow("auto, address") << config(0, {entry("10.0.0.2")}, {}) << false;
    QTest::newRow("auto, null address") << config(0, {QNetworkAddressEntry()}, {}) << false;
    QTest::newRow("auto, gateway") << config(0, {}, {host("10.0.0.1")}) << false;
}

void TestNetworkInterfaceConfig::emptiness()
{
    QFETCH(NetworkInterfaceConfig, config);
    QTEST(config.isEmpty(), "empty");
}

void TestNetworkInterfaceConfig::equality_data()
{
    const QNetworkAddressEntry a = entry("192.168.0.2", "255.255.255.0");
    const QNetworkAddressEntry b = entry("10.0.0.2", "255.0.0.0");
    const QHostAddress g = host("192.168.0.1");
    const QHostAddress h = host("10.0.0.1");
    QNetworkAddressEntry broadcast = a;
    broadcast.setBroadcast(host("192.168.0.255"));
    QTest::addColumn<NetworkInterfaceConfig>("other");
    QTest::addColumn<bool>("equal");
    QTest::newRow("same contents") << config(1, {a, b}, {g, h}) << true;
    QTest::newRow("type") << config(0, {a, b}, {g, h}) << false;
    QTest::newRow("addresses in another order") << config(1, {b, a}, {g, h}) << false;
    QTest::newRow("fewer addresses") << config(1, {a}, {g, h}) << false;
    QTest::newRow("no addresses") << config(1, {}, {g, h}) << false;
    QTest::newRow("second address") << config(1, {a, entry("10.0.0.3", "255.0.0.0")}, {g, h}) << false;
    QTest::newRow("netmask") << config(1, {a, entry("10.0.0.2", "255.255.0.0")}, {g, h}) << false;
    QTest::newRow("no netmask") << config(1, {a, entry("10.0.0.2")}, {g, h}) << false;
    QTest::newRow("broadcast") << config(1, {broadcast, b}, {g, h}) << false;
    QTest::newRow("gateways in another order") << config(1, {a, b}, {h, g}) << false;
    QTest::newRow("more gateways") << config(1, {a, b}, {g, h, h}) << false;
    QTest::newRow("second gateway") << config(1, {a, b}, {g, host("10.0.0.3")}) << false;
}

void TestNetworkInterfaceConfig::equality()
{
    QFETCH(NetworkInterfaceConfig, other);
    QFETCH(bool, equal);
    const NetworkInterfaceConfig reference = manual();
    QCOMPARE(reference == other, equal);
    QCOMPARE(other == reference, equal);
    QCOMPARE(reference != other, !equal);
    QVERIFY(other == other);
    QVERIFY(!(other != other));
}

void TestNetworkInterfaceConfig::copiesAreIndependent()
{
    NetworkInterfaceConfig source = manual();
    NetworkInterfaceConfig copy(source);
    NetworkInterfaceConfig assigned;
    assigned = source;
    QVERIFY(copy == source);
    QVERIFY(assigned == source);
    copy.setType(NetworkInterfaceConfig::Auto);
    copy.addIpAddress(entry("10.0.0.9"));
    assigned.addGatewayAddress(host("10.0.0.9"));
    QVERIFY(source == manual());
    source.setIpAddresses({});
    QCOMPARE(copy.ipAddresses().size(), 3);
    source = manual();
    const NetworkInterfaceConfig &same = source;
    source = same;
    QVERIFY(source == manual());
}

void TestNetworkInterfaceConfig::textForm_data()
{
    QTest::addColumn<NetworkInterfaceConfig>("config");
    QTest::addColumn<QString>("text");
    const QNetworkAddressEntry a = entry("192.168.0.2", "255.255.255.0");
    const QHostAddress g = host("192.168.0.1");
    QTest::newRow("empty") << config(0, {}, {}) << "NetworkInterfaceConfig{empty}";
    QTest::newRow("manual") << config(1, {}, {}) << "NetworkInterfaceConfig{type:manual}";
    QTest::newRow("another type") << config(7, {}, {}) << "NetworkInterfaceConfig{type:manual}";
    QTest::newRow("manual, complete") << config(
        1, {a}, {g}) << "NetworkInterfaceConfig{type:manualip:[192.168.0.2/255.255.255.0]gateways:[192.168.0.1]}";
    QTest::newRow("auto, address") << config(0, {a}, {})
                                   << "NetworkInterfaceConfig{type:autoip:[192.168.0.2/255.255.255.0]}";
    QTest::newRow("gateways only") << config(1, {}, {g, host("10.0.0.1")})
                                   << "NetworkInterfaceConfig{type:manualgateways:[192.168.0.1,10.0.0.1]}";
    QTest::newRow("no netmask") << config(1, {entry("192.168.0.2")}, {})
                                << "NetworkInterfaceConfig{type:manualip:[192.168.0.2]}";
    QTest::newRow("several addresses") << config(
        1, {entry("192.168.0.2"), a, entry("10.0.0.2", "255.0.0.0")},
        {}) << "NetworkInterfaceConfig{type:manualip:[192.168.0.2,192.168.0.2/255.255.255.0,10.0.0.2/255.0.0.0]}";
    QTest::newRow("null address and gateway") << config(1, {QNetworkAddressEntry()}, {QHostAddress()})
                                              << "NetworkInterfaceConfig{type:manualip:[]gateways:[]}";
}

void TestNetworkInterfaceConfig::textForm()
{
    QFETCH(NetworkInterfaceConfig, config);
    QFETCH(QString, text);
    QCOMPARE(::textForm(config), text);
}

QTEST_APPLESS_MAIN(TestNetworkInterfaceConfig)
#include "tst_networkinterfaceconfig.moc"
