// SPDX-License-Identifier: Apache-2.0
#include "managedinterfacescase.h"

#include <QtCore/QElapsedTimer>

using namespace morvek;

/*! What is published of a manager's devices. */
class ManagedInterfacesTest : public ManagedInterfacesCase
{
    Q_OBJECT

private Q_SLOTS:
    void publishes();
    void publishesBothFamilies();
    void isThereAsTheStateSays_data();
    void isThereAsTheStateSays();
    void ranksByMetric();
    void leasesGoWithTheManager();
    void waitsUntilTheManagerKnowsItsDevices();
    void takesTheLeaseByHandAtOnce();
    void types_data();
    void types();
    void showsKnownKindsByTheirNames();
    void namesThatComeLater();
    void followsAModemThatIsRenamed();

private:
    QString giveIp6(const QString &device);
};

void ManagedInterfacesTest::publishes()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    // Clients keep the last of them: the manager's first.
    QCOMPARE(eth0.text("ip_addresses"), QStringLiteral("[\"10.0.0.3/255.255.255.0\",\"10.0.0.2/255.255.255.0\"]"));
    QCOMPARE(eth0.text("ip_gateway"), QStringLiteral("[\"10.0.0.1\"]"));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
    QCOMPARE(eth0.text("up"), QStringLiteral("true"));
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QStringLiteral("eth0"));
    // Without its lease it has them by hand, unless the manager ends.
    const QVariantMap lease {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}};
    m_manager->setLease(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("yes"), Patience);
    m_manager->setLease(m_device, lease);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("no"), Patience);
    QElapsedTimer since;
    since.start();
    m_manager->setLease(m_device, {});
    QVERIFY(tellMtu(eth0, 1400));
    QVERIFY(eth0.text("manual") == QLatin1String("no") || since.hasExpired(LeaseTime));
    // With another address it is not the end of the manager.
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.9/24")});
    QVERIFY(tellMtu(eth0, 1500));
    QCOMPARE(eth0.text("manual"), QStringLiteral("yes"));
    // Without IPv4 addresses nothing has been done by hand.
    m_manager->setIp4(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("ip_addresses"), QStringLiteral("[]"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("no"), Patience);
    m_manager->setState(m_device, 20, 40);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("false"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->setState(m_device, 30);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("true"), Patience);
}

/*! fd00::2/64, and a default route of the best metric. */
QString ManagedInterfacesTest::giveIp6(const QString &device)
{
    QString config = QStringLiteral("/org/freedesktop/NetworkManager/IP6Config/1");
    const QList<QVariantMap> address {
        {{QStringLiteral("address"), QStringLiteral("fd00::2")}, {QStringLiteral("prefix"), 64U}}};
    const QList<QVariantMap> route {{{QStringLiteral("dest"), QStringLiteral("::")}, {QStringLiteral("prefix"), 0U}}};
    m_manager->add(config,
                   {{QStringLiteral("org.freedesktop.NetworkManager.IP6Config"),
                     {{QStringLiteral("AddressData"), QVariant::fromValue(address)},
                      {QStringLiteral("RouteData"), QVariant::fromValue(route)},
                      {QStringLiteral("Gateway"), QStringLiteral("fd00::1")}}}});
    m_manager->change(device, {{QStringLiteral("Ip6Config"), QVariant::fromValue(QDBusObjectPath(config))}});
    return config;
}

void ManagedInterfacesTest::publishesBothFamilies()
{
    addProfile();
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/32"), QStringLiteral("10.0.0.3/0")},
                      QStringLiteral("10.0.0.1"));
    const QString ip6 = giveIp6(m_device);
    QVERIFY(start());
    const Seen eth0(interfacePath("eth0"));
    // Both families have a default route.
    QCOMPARE(Seen(QLatin1String(Status)).text("priority"), QStringLiteral("[\"eth0\"]"));
    // A client keeps the last of those addresses that are IPv4.
    QCOMPARE(eth0.text("ip_addresses"),
             QStringLiteral("[\"fd00::2/64\",\"10.0.0.3/0.0.0.0\",\"10.0.0.2/255.255.255.255\"]"));
    QCOMPARE(eth0.text("ip_gateway"), QStringLiteral("[\"10.0.0.1\",\"fd00::1\"]"));
    // Those of one family are taken.
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->setIp4(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(
        eth0.lines(),
        QStringList {QStringLiteral("connected=false ip_addresses=[\"fd00::2/64\"] ip_gateway=[\"fd00::1\"]")},
        Patience);
    // What is told of a configuration that came later is heard.
    m_manager->change(ip6, {{QStringLiteral("Gateway"), QStringLiteral("fd00::9")}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("ip_gateway"), QStringLiteral("[\"fd00::9\"]"), Patience);
}

void ManagedInterfacesTest::isThereAsTheStateSays_data()
{
    QTest::addColumn<uint>("state");
    QTest::addColumn<QString>("up");
    QTest::addColumn<QString>("connected");

    const QString yes = QStringLiteral("true");
    const QString no = QStringLiteral("false");
    QTest::addRow("unmanaged") << 10U << no << no;
    QTest::addRow("unavailable") << 20U << no << no;
    QTest::addRow("disconnected") << 30U << yes << no;
    QTest::addRow("secondaries") << 90U << yes << no;
    QTest::addRow("activated") << 100U << yes << yes;
    QTest::addRow("deactivating") << 110U << yes << no;
}

void ManagedInterfacesTest::isThereAsTheStateSays()
{
    QFETCH(uint, state);
    m_manager->setState(m_device, state);
    QVERIFY(start());
    const Seen eth0(interfacePath("eth0"));
    QTEST(eth0.text("up"), "up");
    QTEST(eth0.text("connected"), "connected");
}

void ManagedInterfacesTest::ranksByMetric()
{
    const auto give = [this](const QString &interface, const QVector<int> &metrics, uint table = 0) {
        QString device = m_manager->addEthernet(interface);
        m_manager->setIp4(device, {QStringLiteral("10.0.0.2/24")});
        QList<QVariantMap> routes;
        for (const int metric : metrics) {
            routes += {{QStringLiteral("dest"), QStringLiteral("0.0.0.0")}, {QStringLiteral("prefix"), 0U}};
            if (metric >= 0)
                routes.last().insert(QStringLiteral("metric"), uint(metric));
            if (table != 0)
                routes.last().insert(QStringLiteral("table"), table);
        }
        m_manager->change(m_manager->pathValue(device, QStringLiteral("Ip4Config")),
                          {{QStringLiteral("RouteData"), QVariant::fromValue(routes)}});
        return device;
    };
    give(QStringLiteral("eth1"), {300, 50, 200});
    give(QStringLiteral("eth2"), {100});
    const QString none = give(QStringLiteral("eth3"), {});
    give(QStringLiteral("eth4"), {10});
    const QString kernels = give(QStringLiteral("eth5"), {-1});
    give(QStringLiteral("eth6"), {1}, 200);
    giveIp6(give(QStringLiteral("eth7"), {}));
    QVERIFY(start());
    const Seen status {QLatin1String(Status)};
    // The best of several counts, a metric that is not told is the kernel's: 0, and IPv4 is better than IPv6.
    QCOMPARE(status.text("priority"),
             QStringLiteral("[\"eth5\",\"eth4\",\"eth1\",\"eth2\",\"eth7\",\"eth0\",\"eth3\",\"eth6\"]"));
    QCOMPARE(status.text("default_interface"), QStringLiteral("eth5"));
    m_manager->removeDevice(kernels);
    QTRY_COMPARE_WITH_TIMEOUT(status.text("default_interface"), QStringLiteral("eth4"), Patience);
    m_manager->setIp4(none, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"), 10);
    // Of two alike the first by name.
    const QString all = QStringLiteral("[\"eth3\",\"eth4\",\"eth1\",\"eth2\",\"eth7\",\"eth0\",\"eth6\"]");
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), all, Patience);
}

/*! It takes them away first when it ends in order, and leaves the addresses. */
void ManagedInterfacesTest::leasesGoWithTheManager()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QElapsedTimer since;
    since.start();
    m_manager->setLease(m_device, {});
    // What is published after that is known here.
    QVERIFY(tellMtu(eth0, 1400));
    m_manager->stop();
    const auto isGone = [this] {
        return Request(m_control.get(), "net_connected", Manual).outcome()
            == QLatin1String("10 the network manager does not run");
    };
    QVERIFY(QTest::qWaitFor(isGone, Patience));
    QVERIFY(eth0.text("manual") == QLatin1String("no") || since.hasExpired(LeaseTime));
    // Without a lease it is manual, when the manager stays.
    QVERIFY(m_manager->start());
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("yes"), Patience);
    QCOMPARE(eth0.lines(), (QStringList {QStringLiteral("mtu=1400"), QStringLiteral("manual=yes")}));
}

/*! One that has just come finds them one after the other. */
void ManagedInterfacesTest::waitsUntilTheManagerKnowsItsDevices()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    m_manager->stop();
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("Startup"), true}});
    m_manager->setState(m_device, 20);
    const auto outcome = [this] { return Request(m_control.get(), "net_connected", Manual).outcome(); };
    QVERIFY(QTest::qWaitFor([outcome] { return outcome().startsWith(QLatin1String("10 ")); }, Patience));
    QElapsedTimer sinceStart;
    sinceStart.start();
    QVERIFY(m_manager->start());
    QVERIFY(QTest::qWaitFor([outcome] { return outcome() == QLatin1String("5 \"eth0\" has no link"); }, Patience));
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("Startup"), false}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    if (sinceStart.elapsed() < 4000) // it waits for 5 s
        QCOMPARE(eth0.lines(), QStringList {QStringLiteral("mtu=1400")});
}

/*! That is no end of the manager. */
void ManagedInterfacesTest::takesTheLeaseByHandAtOnce()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    const char *const same = "['eth0',{'manual':'yes','manual6':'off','ip_address':'10.0.0.2',"
                             "'netmask':'255.255.255.0','gateway':'10.0.0.1'}]";
    QCOMPARE(Request(m_control.get(), "net_connected", same).outcome(), QStringLiteral("ok"));
    m_manager->setLease(m_device, {});
    QVERIFY(tellMtu(eth0, 1400));
    QCOMPARE(eth0.text("manual"), QStringLiteral("yes"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesTest::types_data()
{
    QTest::addColumn<uint>("type");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("udi");
    QTest::addColumn<QString>("word");

    QTest::addRow("wired") << 1U << QStringLiteral("Wired") << QStringLiteral("/sys/devices/pci0/net/x0")
                           << QStringLiteral("wired");
    QTest::addRow("usb") << 1U << QStringLiteral("Wired") << QStringLiteral("/sys/devices/pci0/usb1/1-1/net/x0")
                         << QStringLiteral("usb");
    QTest::addRow("no usb") << 1U << QStringLiteral("Wired") << QStringLiteral("/sys/devices/pci0/net/usbnet")
                            << QStringLiteral("wired");
    QTest::addRow("vlan") << 11U << QStringLiteral("Vlan") << QString() << QStringLiteral("wired");
    QTest::addRow("bridge") << 13U << QStringLiteral("Bridge") << QString() << QStringLiteral("wired");
    for (const auto &[name, type] :
         {std::pair("bond", 10U), {"team", 15U}, {"macvlan", 18U}, {"vxlan", 19U}, {"veth", 20U}, {"macsec", 21U}})
        QTest::addRow("%s", name) << type << QStringLiteral("Generic") << QString() << QStringLiteral("wired");
    QTest::addRow("modem") << 8U << QStringLiteral("Modem") << QString() << QStringLiteral("cellular");
    QTest::addRow("bluetooth") << 5U << QStringLiteral("Bluetooth") << QString() << QStringLiteral("bluetooth_dun");
    QTest::addRow("tunnel") << 16U << QStringLiteral("Tun") << QString() << QStringLiteral("vpn");
    QTest::addRow("wireguard") << 29U << QStringLiteral("WireGuard") << QString() << QStringLiteral("vpn");
    QTest::addRow("infiniband") << 9U << QStringLiteral("Infiniband") << QString() << QStringLiteral("unknown");
}

void ManagedInterfacesTest::types()
{
    QFETCH(uint, type);
    QFETCH(QString, kind);
    QFETCH(QString, udi);
    QFETCH(QString, word);
    QVariantMap own;
    if (kind == QLatin1String("Vlan"))
        own.insert(QStringLiteral("Parent"), QVariant::fromValue(QDBusObjectPath(m_device)));
    m_manager->addDevice(QStringLiteral("x0"), type, kind, own, {{QStringLiteral("Udi"), udi}});
    QVERIFY(start());
    const Seen x0(interfacePath("x0"));
    QCOMPARE(x0.text("type"), word);
    QCOMPARE(x0.text("parent_interface"), own.isEmpty() ? QString() : QStringLiteral("eth0"));
    QVERIFY(!Seen(interfacePath("eth0")).has("parent_interface"));
}

void ManagedInterfacesTest::showsKnownKindsByTheirNames()
{
    for (const uint type : {0U, 22U, 24U, 25U, 26U, 30U, 32U})
        m_manager->addDevice(QStringLiteral("hidden%1").arg(type), type, QStringLiteral("Generic"), {});
    m_manager->addDevice(QStringLiteral("cdc-wdm0"), 8, QStringLiteral("Modem"), {},
                         {{QStringLiteral("IpInterface"), QStringLiteral("wwan0")}});
    m_manager->addEthernet(
        QStringLiteral("eth1"),
        {{QStringLiteral("HwAddress"), QStringLiteral("0A:00:00:00:00:FF")}, {QStringLiteral("Mtu"), 1400U}});
    QVERIFY(start());
    QCOMPARE(Seen(QLatin1String(Status)).text("priority"), QStringLiteral("[\"eth0\",\"eth1\",\"wwan0\"]"));
    const Seen eth1(interfacePath("eth1"));
    QCOMPARE(eth1.text("link_address"), QStringLiteral("0a:00:00:00:00:ff"));
    QCOMPARE(eth1.text("mtu"), QStringLiteral("1400"));
}

/*! An interface is there when it has a name that an object can have, and as long as it has that one. */
void ManagedInterfacesTest::namesThatComeLater()
{
    const QString device = m_manager->addEthernet(QString());
    const QString foreign = m_manager->addEthernet(QStringLiteral("eth/1"));
    // What is known when the daemon starts is shown, also by a manager that has just come.
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("Startup"), true}});
    QVERIFY(start());
    const auto rename = [this](const QString &path, const char *name) {
        m_manager->change(
            path,
            {{QStringLiteral("Interface"), QLatin1String(name)}, {QStringLiteral("IpInterface"), QLatin1String(name)}});
    };
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("priority"), QStringLiteral("[\"eth0\"]"));
    rename(device, "lan0");
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"eth0\",\"lan0\"]"), Patience);
    rename(foreign, "lan1");
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"eth0\",\"lan0\",\"lan1\"]"), Patience);
    // A request for a name that goes has its answer, and the other name takes requests.
    m_manager->setAnswer(QStringLiteral("AddAndActivateConnection2"), [&](const BusCall &) {
        rename(device, "wan0");
        return BusAnswer {{}, QStringLiteral("org.freedesktop.NetworkManager.UnknownDevice"), QStringLiteral("no")};
    });
    QCOMPARE(Request(m_control.get(), "net_connected", "['lan0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("3 no"));
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"eth0\",\"lan1\",\"wan0\"]"), Patience);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'lan0'").outcome(),
             QStringLiteral("3 no interface \"lan0\""));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'wan0'").outcome(), QStringLiteral("ok"));
    // Also one that appears without a name.
    const QString late = m_manager->addEthernet(QString());
    rename(late, "abc0");
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"abc0\",\"eth0\",\"lan1\",\"wan0\"]"),
                              Patience);
}

/*! The manager knows the name of what its addresses are on only while it is connected. */
void ManagedInterfacesTest::followsAModemThatIsRenamed()
{
    const QString modem = m_manager->addDevice(QStringLiteral("cdc-wdm0"), 8, QStringLiteral("Modem"), {},
                                               {{QStringLiteral("IpInterface"), QString()}});
    QVERIFY(start({QStringLiteral("--only"), QStringLiteral("cdc-wdm0")}));
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("priority"), QStringLiteral("[\"cdc-wdm0\"]"));
    m_manager->change(modem, {{QStringLiteral("IpInterface"), QStringLiteral("wwan0")}});
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"wwan0\"]"), Patience);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'wwan0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'cdc-wdm0'").outcome(),
             QStringLiteral("3 no interface \"cdc-wdm0\""));
    // Also when that is its name from the start.
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(m_daemon->process().start(m_daemon->root(),
                                      {QStringLiteral("--network"), QStringLiteral("manager"), QStringLiteral("--only"),
                                       QStringLiteral("cdc-wdm0")}));
    QVERIFY(Seen(interfacePath("wwan0")).has("type"));
}

QTEST_GUILESS_MAIN(ManagedInterfacesTest)

#include "tst_managedinterfaces.moc"
