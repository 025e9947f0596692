// SPDX-License-Identifier: Apache-2.0
#include "ipv4form.h"
#include "networkinterfaceconfig.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! What is typed for a manual configuration: every fault beside its field, and only where it can be told. */
class TestIpv4Form : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void faults_data();
    void faults();
    void textsTellTheFaults();
    void isMissingAtFirst();
    void configuration_data();
    void configuration();
    void hasNoConfigurationWithAFault();
    void reads();
    void readsNothing();
    void tellsItsChanges();
};

void TestIpv4Form::faults_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("netmask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<Ipv4Form::Fault>("addressFault");
    QTest::addColumn<Ipv4Form::Fault>("netmaskFault");
    QTest::addColumn<Ipv4Form::Fault>("gatewayFault");
    constexpr auto Sound = Ipv4Form::NoFault;
    constexpr auto NotAnAddress = Ipv4Form::NotAnAddress;

    const auto row = [](const char *address, const char *netmask, const char *gateway, Ipv4Form::Fault addressFault,
                        Ipv4Form::Fault netmaskFault, Ipv4Form::Fault gatewayFault) {
        QTest::addRow("'%s' '%s' '%s'", address, netmask, gateway)
            << address << netmask << gateway << addressFault << netmaskFault << gatewayFault;
    };
    const auto addressRow = [&](const char *address, Ipv4Form::Fault fault) {
        row(address, "", "", fault, Ipv4Form::Missing, Ipv4Form::Missing);
    };
    const auto netmaskRow = [&](const char *netmask, Ipv4Form::Fault fault) {
        row("", netmask, "", Ipv4Form::Missing, fault, Ipv4Form::Missing);
    };
    const auto gatewayRow = [&](const char *gateway, Ipv4Form::Fault fault) {
        row("", "", gateway, Ipv4Form::Missing, Ipv4Form::Missing, fault);
    };

    row("192.168.0.2", "255.255.255.0", "192.168.0.1", Sound, Sound, Sound);
    row("192.168.0.2", "24", "192.168.0.1", Sound, Sound, Sound);
    row(" 192.168.0.2\t", " 24 ", "\n192.168.0.1 ", Sound, Sound, Sound);
    row("   ", "\t", " ", Ipv4Form::Missing, Ipv4Form::Missing, Ipv4Form::Missing);

    // Each field by itself.
    addressRow("192.168.0.2", Sound);
    addressRow("1.0.0.1", Sound);
    addressRow("126.255.255.254", Sound);
    addressRow("128.0.0.1", Sound);
    addressRow("223.255.255.254", Sound);
    for (const char *text :
         {"192.168.0",      "10.1",           "192.168.0.2.", ".192.168.0.2", "192.168..2",   "192.168.0.2.1",
          "192.168.0.256",  "192.168.0.02",   "0192.168.0.2", "+192.168.0.2", "192.168.0.-2", "192. 168.0.2",
          "192.168.0.2/24", "192,168,0,2",    "3232235522",   "0xc0.168.0.2", "::1",          "fe80::1",
          "router",         "\xd9\xa1.2.3.4", "1000.1.1.1"}) {
        addressRow(text, NotAnAddress);
        gatewayRow(text, NotAnAddress);
    }
    for (const char *text : {"0.0.0.0", "0.255.255.255", "127.0.0.0", "127.0.0.1", "127.255.255.255", "224.0.0.0",
                             "239.1.2.3", "240.0.0.1", "255.255.255.255"}) {
        addressRow(text, Ipv4Form::NotAHost);
        gatewayRow(text, Ipv4Form::NotAHost);
    }
    gatewayRow("1.0.0.1", Sound);
    gatewayRow("223.255.255.254", Sound);
    for (const char *text : {"1", "9", "10", "19", "29", "30", "31", "128.0.0.0", "255.0.0.0", "255.255.254.0",
                             "255.255.255.252", "255.255.255.254"})
        netmaskRow(text, Sound);
    for (const char *text : {"0", "32", "33", "100", "024", "+24", "-1", "/24", "24.", "2 4", "255.255.255",
                             "255.255.255.00", "255.255.255.256", "mask", "\xd9\xa1\xd9\xa2"})
        netmaskRow(text, NotAnAddress);
    for (const char *text :
         {"0.0.0.0", "255.255.255.255", "255.0.255.0", "0.255.255.255", "255.255.255.1", "192.168.0.1", "0.0.0.1"})
        netmaskRow(text, Ipv4Form::NotANetmask);

    // The address in its network.
    row("192.168.0.0", "24", "", Ipv4Form::NetworkItself, Sound, Ipv4Form::Missing);
    row("192.168.0.255", "24", "", Ipv4Form::Broadcast, Sound, Ipv4Form::Missing);
    row("192.168.0.128", "25", "", Ipv4Form::NetworkItself, Sound, Ipv4Form::Missing);
    row("192.168.0.127", "25", "", Ipv4Form::Broadcast, Sound, Ipv4Form::Missing);
    row("192.168.0.255", "23", "", Sound, Sound, Ipv4Form::Missing);
    row("192.168.1.0", "23", "", Sound, Sound, Ipv4Form::Missing);
    row("192.168.0.4", "30", "", Ipv4Form::NetworkItself, Sound, Ipv4Form::Missing);
    row("192.168.0.7", "30", "", Ipv4Form::Broadcast, Sound, Ipv4Form::Missing);
    row("192.168.0.0", "255.0.255.0", "", Sound, Ipv4Form::NotANetmask, Ipv4Form::Missing);
    row("192.168.0.0", "", "", Sound, Ipv4Form::Missing, Ipv4Form::Missing);

    // A network of two addresses has neither.
    row("192.168.0.4", "31", "192.168.0.5", Sound, Sound, Sound);
    row("192.168.0.5", "31", "192.168.0.4", Sound, Sound, Sound);
    row("192.168.0.5", "31", "192.168.0.6", Sound, Sound, Ipv4Form::NotInNetwork);
    row("192.168.0.5", "31", "192.168.0.5", Sound, Sound, Ipv4Form::OwnAddress);

    // The gateway in the address's network.
    row("192.168.0.2", "24", "192.168.1.1", Sound, Sound, Ipv4Form::NotInNetwork);
    row("192.168.0.2", "23", "192.168.1.1", Sound, Sound, Sound);
    row("192.168.0.2", "24", "192.168.0.2", Sound, Sound, Ipv4Form::OwnAddress);
    row("192.168.0.2", "24", "192.168.0.0", Sound, Sound, Ipv4Form::NetworkItself);
    row("192.168.0.2", "24", "192.168.0.255", Sound, Sound, Ipv4Form::Broadcast);
    row("192.168.0.2", "24", "192.168.1.255", Sound, Sound, Ipv4Form::NotInNetwork);
    row("192.168.0.2", "24", "192.168.1.0", Sound, Sound, Ipv4Form::NotInNetwork);
    row("192.168.0.0", "24", "192.168.0.0", Ipv4Form::NetworkItself, Sound, Ipv4Form::OwnAddress);
    row("192.168.0.0", "24", "192.168.1.1", Ipv4Form::NetworkItself, Sound, Ipv4Form::NotInNetwork);

    // What is wrong by itself hides what would not fit.
    row("192.168.0", "24", "192.168.1.1", NotAnAddress, Sound, Sound);
    row("127.0.0.1", "24", "192.168.1.1", Ipv4Form::NotAHost, Sound, Sound);
    row("", "24", "192.168.1.255", Ipv4Form::Missing, Sound, Ipv4Form::Broadcast);
    row("", "24", "192.168.1.0", Ipv4Form::Missing, Sound, Ipv4Form::NetworkItself);
    row("192.168.0.2", "0.0.0.0", "192.168.1.1", Sound, Ipv4Form::NotANetmask, Sound);
    row("192.168.0.2", "", "192.168.0.2", Sound, Ipv4Form::Missing, Sound);
    row("192.168.0.2", "24", "127.0.0.1", Sound, Sound, Ipv4Form::NotAHost);
    row("192.168.0.255", "24", "192.168.0.1.", Ipv4Form::Broadcast, Sound, NotAnAddress);
}

void TestIpv4Form::faults()
{
    QFETCH(QString, address);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    Ipv4Form form;
    form.setAddress(address);
    form.setNetmask(netmask);
    form.setGateway(gateway);
    QTEST(form.addressFault(), "addressFault");
    QTEST(form.netmaskFault(), "netmaskFault");
    QTEST(form.gatewayFault(), "gatewayFault");
    QCOMPARE(form.address(), address);
    QCOMPARE(form.netmask(), netmask);
    QCOMPARE(form.gateway(), gateway);
    QCOMPARE(form.isValid(),
             form.addressText().isEmpty() && form.netmaskText().isEmpty() && form.gatewayText().isEmpty());
}

void TestIpv4Form::textsTellTheFaults()
{
    Ipv4Form form;
    QCOMPARE(form.addressText(), QStringLiteral("Missing."));
    QCOMPARE(form.netmaskText(), QStringLiteral("Missing."));
    QCOMPARE(form.gatewayText(), QStringLiteral("Missing."));
    form.setAddress(QStringLiteral("10.1"));
    form.setNetmask(QStringLiteral("32"));
    form.setGateway(QStringLiteral("127.0.0.1"));
    QCOMPARE(form.addressText(), QStringLiteral("Not an address: four numbers from 0 to 255 with dots between them."));
    QCOMPARE(form.netmaskText(), QStringLiteral("Not a netmask: one is like 255.255.255.0, or like 24."));
    QCOMPARE(form.gatewayText(), QStringLiteral("Not the address of a device in a network."));
    form.setNetmask(QStringLiteral("255.0.255.0"));
    QCOMPARE(form.netmaskText(), QStringLiteral("Not a netmask: one is like 255.255.255.0, or like 24."));
    form.setNetmask(QStringLiteral("24"));
    form.setAddress(QStringLiteral("10.0.0.0"));
    form.setGateway(QStringLiteral("10.0.0.255"));
    QCOMPARE(form.addressText(), QStringLiteral("The first address of the network stands for the network itself."));
    QCOMPARE(form.netmaskText(), QString());
    QCOMPARE(form.gatewayText(), QStringLiteral("The last address of the network stands for all its devices."));
    form.setGateway(QStringLiteral("10.0.1.1"));
    QCOMPARE(form.gatewayText(), QStringLiteral("Not in the network of address and netmask."));
    form.setGateway(QStringLiteral("10.0.0.0"));
    QCOMPARE(form.gatewayText(), QStringLiteral("This is the interface's own address: the router has another one."));
}

void TestIpv4Form::isMissingAtFirst()
{
    const Ipv4Form form;
    QCOMPARE(form.addressFault(), Ipv4Form::Missing);
    QCOMPARE(form.netmaskFault(), Ipv4Form::Missing);
    QCOMPARE(form.gatewayFault(), Ipv4Form::Missing);
    QCOMPARE(form.prefixLength(), -1);
    QVERIFY(!form.isValid());
}

void TestIpv4Form::configuration_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("netmask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<QString>("writtenAddress");
    QTest::addColumn<QString>("writtenNetmask");
    QTest::addColumn<QString>("writtenGateway");
    QTest::addColumn<int>("prefixLength");
    QTest::newRow("netmask") << "10.1.1.20"
                             << "255.255.255.0"
                             << "10.1.1.1"
                             << "10.1.1.20"
                             << "255.255.255.0"
                             << "10.1.1.1" << 24;
    QTest::newRow("length") << "10.1.1.20"
                            << "9"
                            << "10.1.1.1"
                            << "10.1.1.20"
                            << "255.128.0.0"
                            << "10.1.1.1" << 9;
    QTest::newRow("shortest") << "10.1.1.20"
                              << "1"
                              << "10.1.1.1"
                              << "10.1.1.20"
                              << "128.0.0.0"
                              << "10.1.1.1" << 1;
    QTest::newRow("longest") << "10.1.1.20"
                             << "31"
                             << "10.1.1.21"
                             << "10.1.1.20"
                             << "255.255.255.254"
                             << "10.1.1.21" << 31;
    QTest::newRow("blanks") << " 10.1.1.20"
                            << "16 "
                            << "\t10.1.1.1 "
                            << "10.1.1.20"
                            << "255.255.0.0"
                            << "10.1.1.1" << 16;
}

void TestIpv4Form::configuration()
{
    QFETCH(QString, address);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    Ipv4Form form;
    form.setAddress(address);
    form.setNetmask(netmask);
    form.setGateway(gateway);
    const NetworkInterfaceConfig config = form.configuration();
    QCOMPARE(config.type(), NetworkInterfaceConfig::Manual);
    QCOMPARE(config.ipAddresses().size(), 1);
    QTEST(config.ipAddresses().first().ip().toString(), "writtenAddress");
    QTEST(config.ipAddresses().first().netmask().toString(), "writtenNetmask");
    QCOMPARE(config.gatewayAddresses().size(), 1);
    QTEST(config.gatewayAddresses().first().toString(), "writtenGateway");
    QTEST(form.prefixLength(), "prefixLength");
}

void TestIpv4Form::hasNoConfigurationWithAFault()
{
    Ipv4Form form;
    form.setAddress(QStringLiteral("10.1.1.20"));
    form.setNetmask(QStringLiteral("24"));
    form.setGateway(QStringLiteral("10.1.2.1"));
    QVERIFY(!form.isValid());
    QVERIFY(form.configuration().isEmpty());
    form.setGateway(QStringLiteral("10.1.1.1"));
    QVERIFY(form.isValid());
    QVERIFY(!form.configuration().isEmpty());
}

void TestIpv4Form::reads()
{
    QNetworkAddressEntry first;
    first.setIp(QHostAddress(QStringLiteral("10.1.1.20")));
    first.setNetmask(QHostAddress(QStringLiteral("255.255.0.0")));
    QNetworkAddressEntry second;
    second.setIp(QHostAddress(QStringLiteral("10.2.1.20")));
    second.setNetmask(QHostAddress(QStringLiteral("255.0.0.0")));
    NetworkInterfaceConfig config;
    config.addIpAddress(first);
    config.addIpAddress(second);
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.1.1.1")));
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.2.1.1")));

    Ipv4Form form;
    QSignalSpy changed(&form, &Ipv4Form::changed);
    form.read(config);
    QCOMPARE(form.address(), QStringLiteral("10.1.1.20"));
    QCOMPARE(form.netmask(), QStringLiteral("255.255.0.0"));
    QCOMPARE(form.gateway(), QStringLiteral("10.1.1.1"));
    QVERIFY(form.isValid());
    QCOMPARE(changed.count(), 1);
}

void TestIpv4Form::readsNothing()
{
    Ipv4Form form;
    form.setAddress(QStringLiteral("10.1.1.20"));
    form.setNetmask(QStringLiteral("24"));
    form.setGateway(QStringLiteral("10.1.1.1"));
    form.read(NetworkInterfaceConfig());
    QCOMPARE(form.address(), QString());
    QCOMPARE(form.netmask(), QString());
    QCOMPARE(form.gateway(), QString());
    QCOMPARE(form.gatewayFault(), Ipv4Form::Missing);
}

void TestIpv4Form::tellsItsChanges()
{
    Ipv4Form form;
    QList<Ipv4Form::Fault> seen;
    connect(&form, &Ipv4Form::changed, &form, [&] { seen.append(form.gatewayFault()); });
    form.setGateway(QStringLiteral("10.1.2.1"));
    form.setGateway(QStringLiteral("10.1.2.1"));
    form.setAddress(QStringLiteral("10.1.1.20"));
    form.setNetmask(QStringLiteral("24"));
    form.setNetmask(QStringLiteral("16"));
    QCOMPARE(
        seen,
        (QList<Ipv4Form::Fault> {Ipv4Form::NoFault, Ipv4Form::NoFault, Ipv4Form::NotInNetwork, Ipv4Form::NoFault}));
}

QTEST_GUILESS_MAIN(TestIpv4Form)
#include "tst_ipv4form.moc"
