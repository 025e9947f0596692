// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <limits>

using namespace morvek;

/*! What is published of a manager's devices, and what comes of requests that it refuses. */
class ManagedInterfacesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
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
    void refusals_data();
    void refusals();
    void refusesByState_data();
    void refusesByState();
    void triesAgainWhenSomebodyElseWasFaster();
    void oneAfterTheOther();
    void sendsSettings();
    void tellsReleaseAlsoWhereNothingIs();
    void tellsReleaseOfWhatTheManagerDoesNotTake();
    void isConnectedWithWhatWasAskedFor();
    void tellsThatNobodyAnswers();
    void waitsForAnAnswerAsTheProfileSays();
    void takesWhatComesByItself();
    void sparesThePreferredForAMomentOnly();
    void doesNotSpareAnother();
    void activatesAProfile_data();
    void activatesAProfile();
    void activatesWhatIsStillGoingDown();
    void activationIsRefused();
    void activationLosesItsManager();
    void activationLosesItsInterface();
    void activatesTheBestProfile();
    void makesAProfileOnce();
    void makesNothingToDisconnect();
    void keepsWhatTheProfileSays();
    void leavesToOthersWhatTheyConnect();
    void appliesOnceWhatIsAskedForAfterALoss();
    void forgetsWhatARemovedOneHad();
    void radioIsNotJoinedByItself();
    void showsKnownKindsByTheirNames();
    void namesThatComeLater();
    void followsAModemThatIsRenamed();

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<ZopObject> m_control;
    QString m_device;
    QString m_profile;

    void addProfile();
    bool connectDevice();
    bool start(const QStringList &arguments = {});
};

namespace {

const char *const Automatic = "['eth0',{'manual':'no','manual6':'off'}]";
const char *const Manual = "['eth0',{'manual':'yes','manual6':'off','ip_address':'10.0.0.7','netmask':'255.255.255.0',"
                           "'gateway':'10.0.0.1'}]";

/*! With much that belongs to the automatic addresses of this one. */
BusSettings richProfile(int metric, const char *uuid = "6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001")
{
    const QList<QVariantMap> route {{{QStringLiteral("dest"), QStringLiteral("10.10.0.0")},
                                     {QStringLiteral("prefix"), 16U},
                                     {QStringLiteral("next-hop"), QStringLiteral("10.0.0.1")}}};
    return {{QStringLiteral("connection"),
             {{QStringLiteral("id"), QStringLiteral("house")},
              {QStringLiteral("uuid"), QLatin1String(uuid)},
              {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
            {QStringLiteral("802-3-ethernet"), {}},
            {QStringLiteral("ipv4"),
             {{QStringLiteral("method"), QStringLiteral("auto")},
              {QStringLiteral("never-default"), true},
              {QStringLiteral("dns"), QVariant::fromValue(QList<uint> {0x0100000a})},
              {QStringLiteral("dns-search"), QStringList {QStringLiteral("example.org")}},
              {QStringLiteral("route-data"), QVariant::fromValue(route)},
              {QStringLiteral("route-metric"), QVariant::fromValue(qlonglong(metric))}}}};
}

} // namespace

void ManagedInterfacesTest::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagedInterfacesTest::init()
{
    m_manager = std::make_unique<FakeManager>();
    m_device = m_manager->addEthernet(QStringLiteral("eth0"));
    m_daemon = std::make_unique<DaemonFixture>();
}

void ManagedInterfacesTest::cleanup()
{
    m_control.reset();
    m_daemon.reset();
    m_manager.reset();
}

void ManagedInterfacesTest::addProfile()
{
    m_profile =
        m_manager->addProfile({{QStringLiteral("connection"),
                                {{QStringLiteral("id"), QStringLiteral("house")},
                                 {QStringLiteral("uuid"), QStringLiteral("6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001")},
                                 {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
                               {QStringLiteral("802-3-ethernet"), {}},
                               {QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("auto")}}},
                               {QStringLiteral("ipv6"), {{QStringLiteral("method"), QStringLiteral("auto")}}}});
    m_manager->change(
        m_device,
        {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths {QDBusObjectPath(m_profile)})}});
}

bool ManagedInterfacesTest::connectDevice()
{
    addProfile();
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24"), QStringLiteral("10.0.0.3/24")},
                      QStringLiteral("10.0.0.1"));
    m_manager->setLease(m_device, {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
    return start();
}

bool ManagedInterfacesTest::start(const QStringList &arguments)
{
    const QStringList usual {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")};
    if (!m_manager->start() || !m_daemon->process().start(m_daemon->root(), usual + arguments))
        return false;
    m_control = std::make_unique<ZopObject>(QLatin1String(Control), ZopObject::ReadWrite, true);
    return m_control->isValid();
}

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
    m_manager->setLease(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("yes"), Patience);
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

void ManagedInterfacesTest::publishesBothFamilies()
{
    addProfile();
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/32"), QStringLiteral("10.0.0.3/0")},
                      QStringLiteral("10.0.0.1"));
    const QString ip6 = QStringLiteral("/org/freedesktop/NetworkManager/IP6Config/1");
    const QList<QVariantMap> address {
        {{QStringLiteral("address"), QStringLiteral("fd00::2")}, {QStringLiteral("prefix"), 64U}}};
    m_manager->add(ip6,
                   {{QStringLiteral("org.freedesktop.NetworkManager.IP6Config"),
                     {{QStringLiteral("AddressData"), QVariant::fromValue(address)},
                      {QStringLiteral("Gateway"), QStringLiteral("fd00::1")}}}});
    m_manager->change(m_device, {{QStringLiteral("Ip6Config"), QVariant::fromValue(QDBusObjectPath(ip6))}});
    QVERIFY(start());
    const Seen eth0(interfacePath("eth0"));
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
    const auto give = [this](const QString &interface, const QVector<int> &metrics) {
        QString device = m_manager->addEthernet(interface);
        m_manager->setIp4(device, {QStringLiteral("10.0.0.2/24")});
        QList<QVariantMap> routes;
        for (const int metric : metrics) {
            routes += {{QStringLiteral("dest"), QStringLiteral("0.0.0.0")}, {QStringLiteral("prefix"), 0U}};
            if (metric >= 0)
                routes.last().insert(QStringLiteral("metric"), uint(metric));
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
    QVERIFY(start());
    const Seen status {QLatin1String(Status)};
    // The best of several counts, and a metric that is not told is the kernel's: 0.
    QCOMPARE(status.text("priority"), QStringLiteral("[\"eth5\",\"eth4\",\"eth1\",\"eth2\",\"eth0\",\"eth3\"]"));
    QCOMPARE(status.text("default_interface"), QStringLiteral("eth5"));
    m_manager->removeDevice(kernels);
    QTRY_COMPARE_WITH_TIMEOUT(status.text("default_interface"), QStringLiteral("eth4"), Patience);
    m_manager->setIp4(none, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"), 10);
    // Of two alike the first by name.
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"eth3\",\"eth4\",\"eth1\",\"eth2\",\"eth0\"]"),
                              Patience);
}

/*! It takes them away first when it ends in order, and leaves the addresses. */
void ManagedInterfacesTest::leasesGoWithTheManager()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    m_manager->setLease(m_device, {});
    // What is published after that is known here.
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(eth0.lines(), QStringList {QStringLiteral("mtu=1400")});
    m_manager->stop();
    const auto isGone = [this] {
        return Request(m_control.get(), "net_connected", Manual).outcome()
            == QLatin1String("10 the network manager does not run");
    };
    QVERIFY(QTest::qWaitFor(isGone, Patience));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
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
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
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

void ManagedInterfacesTest::refusals_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("outcome");

    const QString nm = QStringLiteral("org.freedesktop.NetworkManager.");
    QTest::addRow("permission") << QStringLiteral("Reapply") << nm + QStringLiteral("PermissionDenied")
                                << QStringLiteral("9 the manager's text");
    QTest::addRow("permission to look") << QStringLiteral("GetAppliedConnection")
                                        << nm + QStringLiteral("PermissionDenied")
                                        << QStringLiteral("9 the manager's text");
    QTest::addRow("bus policy") << QStringLiteral("Reapply")
                                << QStringLiteral("org.freedesktop.DBus.Error.AccessDenied")
                                << QStringLiteral("9 the manager's text");
    QTest::addRow("settings") << QStringLiteral("Reapply") << nm + QStringLiteral("Settings.Connection.InvalidProperty")
                              << QStringLiteral("4 the manager's text");
    QTest::addRow("settings missing") << QStringLiteral("Reapply")
                                      << nm + QStringLiteral("Settings.Connection.MissingProperty")
                                      << QStringLiteral("4 the manager's text");
    QTest::addRow("something else") << QStringLiteral("Reapply") << nm + QStringLiteral("Device.IncompatibleConnection")
                                    << QStringLiteral("13 the manager's text");
}

void ManagedInterfacesTest::refusals()
{
    QFETCH(QString, member);
    QFETCH(QString, error);
    QFETCH(QString, outcome);
    m_manager->refuse(member, error, QStringLiteral("the manager's text"));
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    const QString addresses = eth0.text("ip_addresses");
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), outcome);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), outcome);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QCOMPARE(eth0.text("ip_addresses"), addresses);
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesTest::refusesByState_data()
{
    QTest::addColumn<uint>("state");
    QTest::addColumn<QString>("connecting");
    QTest::addColumn<QString>("disconnecting");

    const QString unmanaged = QStringLiteral("11 the network manager leaves \"eth0\" alone");
    QTest::addRow("unknown") << 0U << unmanaged << unmanaged;
    QTest::addRow("unmanaged") << 10U << unmanaged << unmanaged;
    QTest::addRow("unavailable") << 20U << QStringLiteral("5 \"eth0\" has no link") << QStringLiteral("ok");
    QTest::addRow("disconnected") << 30U << QStringLiteral("ok") << QStringLiteral("ok");
    // What is on its way has settings that others can be applied to; here there are none.
    const QString none = QStringLiteral("13 This device is not active");
    QTest::addRow("prepare") << 40U << none << none;
    QTest::addRow("activated") << 100U << none << none;
    QTest::addRow("deactivating") << 110U << QStringLiteral("ok") << QStringLiteral("ok");
}

void ManagedInterfacesTest::refusesByState()
{
    QFETCH(uint, state);
    m_manager->setState(m_device, state);
    QVERIFY(start());
    QTEST(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), "disconnecting");
    QTEST(Request(m_control.get(), "net_connected", Manual).outcome(), "connecting");
}

void ManagedInterfacesTest::oneAfterTheOther()
{
    QVERIFY(connectDevice());
    m_manager->hold(QStringLiteral("Reapply"));
    Request first(m_control.get(), "net_disconnected", "'eth0'");
    Request second(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QCOMPARE(m_manager->calls(QStringLiteral("GetAppliedConnection")).size(), 1);
    m_manager->release(QStringLiteral("Reapply"));
    QCOMPARE(first.outcome(), QStringLiteral("ok"));
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 2);
    QCOMPARE(m_manager->applied(m_device)[QStringLiteral("ipv4")][QStringLiteral("method")].toString(),
             QStringLiteral("manual"));
}

void ManagedInterfacesTest::triesAgainWhenSomebodyElseWasFaster()
{
    const QString changed = QStringLiteral("org.freedesktop.NetworkManager.Device.VersionIdMismatch");
    QVERIFY(connectDevice());
    for (int i = 0; i < 2; ++i) {
        m_manager->refuse(QStringLiteral("Reapply"), changed, QStringLiteral("too late"), 1);
        QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    }
    m_manager->refuse(QStringLiteral("Reapply"), changed, QStringLiteral("too late"), 2);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("13 too late"));
}

void ManagedInterfacesTest::sendsSettings()
{
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    BusSettings applied = m_manager->applied(m_device);
    QCOMPARE(applied[QStringLiteral("ipv4")][QStringLiteral("method")].toString(), QStringLiteral("disabled"));
    // Only IPv4 is taken.
    QCOMPARE(applied[QStringLiteral("ipv6")][QStringLiteral("method")].toString(), QStringLiteral("auto"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    applied = m_manager->applied(m_device);
    QCOMPARE(applied[QStringLiteral("ipv4")][QStringLiteral("method")].toString(), QStringLiteral("manual"));
    QCOMPARE(applied[QStringLiteral("ipv4")][QStringLiteral("gateway")].toString(), QStringLiteral("10.0.0.1"));
    QCOMPARE(Request(m_control.get(), "net_connected", "['eth0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    applied = m_manager->applied(m_device);
    QCOMPARE(applied[QStringLiteral("ipv4")][QStringLiteral("method")].toString(), QStringLiteral("auto"));
    QVERIFY(!applied[QStringLiteral("ipv4")].contains(QStringLiteral("gateway")));
}

void ManagedInterfacesTest::tellsReleaseAlsoWhereNothingIs()
{
    QVERIFY(start());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.lines(),
                              QStringList {QStringLiteral("connected=false ip_addresses=[] ip_gateway=[]")}, Patience);
}

/*! Somebody else has given it those: they are told again, as the client waits for them to go. */
void ManagedInterfacesTest::tellsReleaseOfWhatTheManagerDoesNotTake()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    const QString released = QStringLiteral("connected=false ip_addresses=[] ip_gateway=[\"10.0.0.1\"]");
    QTRY_COMPARE_WITH_TIMEOUT(eth0.lines().value(0), released, Patience);
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(eth0.text("ip_addresses"), QStringLiteral("[\"10.0.0.3/255.255.255.0\",\"10.0.0.2/255.255.255.0\"]"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesTest::isConnectedWithWhatWasAskedFor()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("false"), Patience);
    m_manager->setLease(m_device, {});
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.7/24")}, QStringLiteral("10.0.0.1"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("true"), Patience);
    QCOMPARE(eth0.text("manual"), QStringLiteral("yes"));
    QCOMPARE(Request(m_control.get(), "net_connected", Automatic).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("false"), Patience);
    // Neither a lease without an address nor an address without a lease is all.
    m_manager->setIp4(m_device, {});
    m_manager->setLease(m_device, {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("true"), Patience);
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
}

/*! When it has been asked for, and the manager gives up. */
void ManagedInterfacesTest::tellsThatNobodyAnswers()
{
    const auto spoken = [this] { return m_daemon->process().errors().count("nobody answers DHCP on \"eth0\""); };
    const auto fail = [this](uint reason) {
        m_manager->setState(m_device, 120, reason);
        m_manager->setState(m_device, 30);
        m_manager->beginActivation(m_device, m_profile);
        m_manager->activate(m_device);
    };
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->setIp4(m_device, {});
    m_manager->setLease(m_device, {});
    fail(5);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply"), 2));
    QCOMPARE(Request(m_control.get(), "net_connected", Automatic).outcome(), QStringLiteral("ok"));
    fail(4);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply"), 4));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QCOMPARE(spoken(), 0);
    m_manager->setState(m_device, 120, 5);
    QTRY_COMPARE_WITH_TIMEOUT(spoken(), 1, Patience);
}

/*! As the profile says that it is connected with, and not for the requests before. Takes one second. */
void ManagedInterfacesTest::waitsForAnAnswerAsTheProfileSays()
{
    const auto profile = [this](int seconds) {
        return m_manager->addProfile(
            {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
             {QStringLiteral("ipv4"),
              {{QStringLiteral("method"), QStringLiteral("auto")}, {QStringLiteral("dhcp-timeout"), seconds}}}});
    };
    const auto ask = [this](const char *message, const char *settings, const char *name) {
        return Request(m_control.get(), message, QByteArray(settings).replace("eth0", name).constData()).outcome();
    };
    const QString ok = QStringLiteral("ok");
    const QString aSecond = profile(1);
    const QString forEver = profile(std::numeric_limits<int>::max());
    QHash<QByteArray, QString> devices;
    for (const char *name : {"eth1", "eth2", "eth3", "eth4", "eth5"}) {
        devices[name] = m_manager->addEthernet(QLatin1String(name));
        m_manager->beginActivation(devices[name], aSecond);
    }
    QVERIFY(start());
    QCOMPARE(ask("net_connected", Automatic, "eth1"), ok);
    m_manager->deactivate(devices["eth1"]);
    m_manager->beginActivation(devices["eth1"], forEver);
    QCOMPARE(ask("net_connected", Automatic, "eth1"), ok);
    QCOMPARE(ask("net_disconnected", "'eth0'", "eth2"), ok);
    QCOMPARE(ask("net_connected", Manual, "eth2"), ok);
    const Seen eth2(interfacePath("eth2"));
    QCOMPARE(ask("net_connected", Automatic, "eth3"), ok);
    m_manager->setLease(devices["eth3"], {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
    m_manager->setIp4(devices["eth3"], {QStringLiteral("10.0.0.2/24")});
    QCOMPARE(ask("net_connected", Automatic, "eth4"), ok);
    m_manager->setState(devices["eth4"], 120, 5);
    QCOMPARE(ask("net_connected", Automatic, "eth5"), ok);
    // That one has been asked last.
    const auto spoken = [this](const char *name) {
        return m_daemon->process().errors().count(QByteArray("nobody answers DHCP on \"") + name + "\"\n");
    };
    QTRY_COMPARE_WITH_TIMEOUT(spoken("eth5"), 1, Patience);
    QCOMPARE(spoken("eth4"), 1);
    QCOMPARE(spoken("eth3"), 0);
    QCOMPARE(spoken("eth1"), 0);
    QVERIFY(!m_daemon->process().errors().contains("Timers"));
    QCOMPARE(eth2.lines(), QStringList());
}

/*! It is another one that is configured. */
void ManagedInterfacesTest::doesNotSpareAnother()
{
    m_manager->addEthernet(QStringLiteral("eth1"));
    QVERIFY(connectDevice());
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QStringLiteral("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth1'").outcome(), QStringLiteral("ok"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")});
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(Seen(interfacePath("eth0")).text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(status.text("default_interface"), QString());
}

/*! Who has disconnected it before it had a link finds it so afterwards, whatever the manager connects it with. */
void ManagedInterfacesTest::takesWhatComesByItself()
{
    addProfile();
    m_manager->setState(m_device, 20, 40);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->beginActivation(m_device, m_profile);
    m_manager->setState(m_device, 70);
    const Seen eth0(interfacePath("eth0"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("ip_addresses"), QStringLiteral("[\"10.0.0.2/255.255.255.0\"]"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->activate(m_device);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QTRY_COMPARE_WITH_TIMEOUT(m_manager->applied(m_device)[QStringLiteral("ipv4")][QStringLiteral("method")].toString(),
                              QStringLiteral("disabled"), Patience);
    m_manager->setIp4(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("ip_addresses"), QStringLiteral("[]"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
}

/*! What was made for an application is not made again for one that has disconnected it meanwhile. */
void ManagedInterfacesTest::makesNothingToDisconnect()
{
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->activate(m_device);
    m_manager->setState(m_device, 20, 40);
    const Seen eth0(interfacePath("eth0"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("false"), Patience);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->setState(m_device, 30);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("true"), Patience);
    // A request comes after whatever it would have done by itself.
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 1);
}

void ManagedInterfacesTest::sparesThePreferredForAMomentOnly()
{
    QVERIFY(connectDevice());
    const Seen status {QLatin1String(Status)};
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    const Seen eth0(interfacePath("eth0"));
    m_manager->setIp4(m_device, {});
    m_manager->setLease(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("false"), Patience);
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QCOMPARE(status.text("default_interface"), QStringLiteral("eth0"));
    QTRY_COMPARE_WITH_TIMEOUT(status.text("default_interface"), QString(), Patience);
}

void ManagedInterfacesTest::activatesAProfile_data()
{
    QTest::addColumn<QVector<uint>>("within"); // the states before the manager answers that it begins
    QTest::addColumn<QVector<uint>>("after");
    QTest::addColumn<QString>("outcome");

    const QString failed = QStringLiteral("13 the network manager could not connect \"eth0\" (reason 5)");
    const QString ok = QStringLiteral("ok");
    const QVector<uint> none;
    QTest::addRow("comes up") << none << QVector<uint> {50, 60, 70} << ok;
    QTest::addRow("comes up at once") << QVector<uint> {50, 60, 70} << none << ok;
    QTest::addRow("is up at once") << QVector<uint> {50, 60, 70, 80, 90, 100} << none << ok;
    QTest::addRow("fails") << none << QVector<uint> {50, 120} << failed;
    QTest::addRow("is taken down") << none << QVector<uint> {50, 110} << failed;
    QTest::addRow("is taken down at once") << QVector<uint> {50, 110} << none << failed;
    QTest::addRow("loses its link") << none << QVector<uint> {50, 20} << failed;
}

void ManagedInterfacesTest::activatesAProfile()
{
    QFETCH(QVector<uint>, within);
    QFETCH(QVector<uint>, after);
    QFETCH(QString, outcome);
    const auto go = [this](const QVector<uint> &states) {
        for (const uint state : states)
            m_manager->setState(m_device, state, state > 100 || state < 30 ? 5 : 0);
    };
    addProfile();
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [&](const BusCall &call) {
        const QString active = m_manager->beginActivation(call.pathAt(1), call.pathAt(0));
        go(within);
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(active))}, {}, {}};
    });
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    // The answer to this one is asked for later than that of the activation.
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QVERIFY(after.isEmpty() || request.finished.isEmpty());
    go(after);
    QCOMPARE(request.outcome(), outcome);
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), outcome == QLatin1String("ok") ? 1 : 0);
    // The interface takes other requests.
    QVERIFY(!Request(m_control.get(), "net_disconnected", "'eth0'").outcome().isEmpty());
}

/*! The end of the connection before is no end of this one. */
void ManagedInterfacesTest::activatesWhatIsStillGoingDown()
{
    addProfile();
    m_manager->setState(m_device, 110);
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [&](const BusCall &call) {
        const QString active = m_manager->beginActivation(call.pathAt(1), call.pathAt(0));
        m_manager->change(m_device, {{QStringLiteral("State"), 110}});
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(active))}, {}, {}};
    });
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    m_manager->change(m_device, {{QStringLiteral("State"), 30}});
    m_manager->emitSignal(m_device, QStringLiteral("org.freedesktop.NetworkManager.Device"),
                          QStringLiteral("StateChanged"), {30U, 110U, 0U});
    m_manager->activate(m_device);
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
}

void ManagedInterfacesTest::activationIsRefused()
{
    addProfile();
    m_manager->refuse(QStringLiteral("ActivateConnection"),
                      QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"), QStringLiteral("not you"), 1);
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"),
                      QStringLiteral("org.freedesktop.NetworkManager.UnknownDevice"), QStringLiteral("too late"), 1);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("9 not you"));
    m_manager->change(m_device, {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths())}});
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}}); // when this is told, the other is known
    QTRY_COMPARE_WITH_TIMEOUT(Seen(interfacePath("eth0")).text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("3 too late"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
}

void ManagedInterfacesTest::activationLosesItsManager()
{
    addProfile();
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    m_manager->stop();
    QCOMPARE(request.outcome(), QStringLiteral("10 the network manager does not run"));
}

void ManagedInterfacesTest::activationLosesItsInterface()
{
    addProfile();
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    m_manager->change(m_device,
                      {{QStringLiteral("Interface"), QStringLiteral("eth9")},
                       {QStringLiteral("IpInterface"), QStringLiteral("eth9")}});
    QCOMPARE(request.outcome(), QStringLiteral("3 no interface \"eth0\""));
}

void ManagedInterfacesTest::activatesTheBestProfile()
{
    const auto profile = [this](const char *id, int priority, qulonglong timestamp) {
        return QDBusObjectPath(
            m_manager->addProfile({{QStringLiteral("connection"),
                                    {{QStringLiteral("id"), QLatin1String(id)},
                                     {QStringLiteral("type"), QStringLiteral("802-3-ethernet")},
                                     {QStringLiteral("autoconnect-priority"), priority},
                                     {QStringLiteral("timestamp"), timestamp}}},
                                   {QStringLiteral("802-3-ethernet"), {}},
                                   {QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("auto")}}}}));
    };
    const BusPaths all {profile("old", 5, 10), profile("recent", 5, 20), profile("older", 5, 5),
                        profile("unwanted", -1, 30)};
    m_manager->change(m_device, {{QStringLiteral("AvailableConnections"), QVariant::fromValue(all)}});
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(m_manager->calls(QStringLiteral("ActivateConnection")).first().pathAt(0), all.at(1).path());
    m_manager->activate(m_device);
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
}

void ManagedInterfacesTest::makesAProfileOnce()
{
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    const BusCall call = m_manager->calls(QStringLiteral("AddAndActivateConnection2")).first();
    const QVariantMap connection = call.settings(0)[QStringLiteral("connection")];
    QCOMPARE(connection[QStringLiteral("autoconnect")], QVariant(false));
    QCOMPARE(connection[QStringLiteral("interface-name")].toString(), QStringLiteral("eth0"));
    QCOMPARE(call.map(3)[QStringLiteral("persist")].toString(), QStringLiteral("volatile"));
    QCOMPARE(call.map(3)[QStringLiteral("bind-activation")].toString(), QStringLiteral("dbus-client"));
    m_manager->activate(m_device);
    // Without its link it is gone; with it, it is made again, and after somebody has ended it, not.
    m_manager->setState(m_device, 20, 40);
    m_manager->setState(m_device, 30);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2"), 2));
    m_manager->activate(m_device);
    m_manager->deactivate(m_device, 39);
    m_manager->addEthernet(QStringLiteral("eth1"));
    const Seen status {QLatin1String(Status)};
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"eth0\",\"eth1\"]"), Patience);
    QCOMPARE(Request(m_control.get(), "net_connected", "['eth1',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    const auto made = m_manager->calls(QStringLiteral("AddAndActivateConnection2"));
    QCOMPARE(made.size(), 3);
    QCOMPARE(made.last().settings(0)[QStringLiteral("connection")][QStringLiteral("interface-name")].toString(),
             QStringLiteral("eth1"));
}

void ManagedInterfacesTest::keepsWhatTheProfileSays()
{
    const auto ipv4 = [this] { return m_manager->applied(m_device)[QStringLiteral("ipv4")]; };
    // The manager's library has another word for it in its newer versions.
    const auto hasServers = [ipv4] {
        return !ipv4()[QStringLiteral("dns-data")].toStringList().isEmpty()
            || !qvariant_cast<QList<uint>>(ipv4()[QStringLiteral("dns")]).isEmpty();
    };
    const QString search = QStringLiteral("dns-search");
    const QString routes = QStringLiteral("route-data");
    m_manager->beginActivation(m_device, m_manager->addProfile(richProfile(77)));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    // The manager wants neither names nor routes where there are no addresses.
    QCOMPARE(ipv4()[search].toStringList(), QStringList());
    QVERIFY(!hasServers());
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4()[routes]).size(), 0);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    QCOMPARE(ipv4()[search].toStringList(), QStringList {QStringLiteral("example.org")});
    QVERIFY(hasServers());
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4()[routes]).size(), 1);
    QCOMPARE(ipv4()[QStringLiteral("route-metric")].toInt(), 77);
    QVERIFY(!ipv4()[QStringLiteral("never-default")].toBool());
    QCOMPARE(Request(m_control.get(), "net_connected", "['eth0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    QVERIFY(ipv4()[QStringLiteral("never-default")].toBool());
    // The user has changed it and connects anew: that counts, under what was asked for. The manager's library knows the
    // connection only when it has read the profile, which is after the device's state.
    m_manager->forgetCalls();
    m_manager->deactivate(m_device);
    m_manager->beginActivation(m_device, m_manager->addProfile(richProfile(88)));
    m_manager->activate(m_device);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4()[QStringLiteral("route-metric")].toInt(), 88, Patience);
}

void ManagedInterfacesTest::leavesToOthersWhatTheyConnect()
{
    const QString other = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
         {QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("auto")}}}});
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->forgetCalls();
    const Seen eth0(interfacePath("eth0"));
    uint mtu = 1400;
    for (const QString &profile : {other, m_profile}) { // nor does it come back to the first
        m_manager->deactivate(m_device);
        m_manager->beginActivation(m_device, profile);
        m_manager->activate(m_device);
        m_manager->change(m_device, {{QStringLiteral("Mtu"), ++mtu}});
        QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QString::number(mtu), Patience);
    }
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QCOMPARE(m_manager->calls(QStringLiteral("GetAppliedConnection")).size(), 0);
    QVERIFY(!m_daemon->process().errors().contains("gets again what it was given"));
}

void ManagedInterfacesTest::appliesOnceWhatIsAskedForAfterALoss()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->setState(m_device, 30, 39);
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    m_manager->forgetCalls();
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    m_manager->activate(m_device);
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1500U}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1500"), Patience);
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'nowhere'").outcome(),
             QStringLiteral("3 no interface \"nowhere\""));
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 1);
}

/*! It is pulled without a word and put back with another connection. */
void ManagedInterfacesTest::forgetsWhatARemovedOneHad()
{
    m_manager->beginActivation(m_device, m_manager->addProfile(richProfile(77)));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->removeDevice(m_device);
    m_device = m_manager->addEthernet(QStringLiteral("eth0"), {{QStringLiteral("Mtu"), 1400U}});
    m_manager->beginActivation(m_device,
                               m_manager->addProfile(richProfile(88, "6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c002")));
    m_manager->activate(m_device);
    const auto isBack = [] { return Seen(interfacePath("eth0")).text("mtu") == QLatin1String("1400"); };
    QVERIFY(QTest::qWaitFor(isBack, Patience));
    QCOMPARE(Request(m_control.get(), "net_connected", Automatic).outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->applied(m_device)[QStringLiteral("ipv4")][QStringLiteral("route-metric")].toInt(), 88);
}

void ManagedInterfacesTest::radioIsNotJoinedByItself()
{
    const QString radio = m_manager->addWifi(QStringLiteral("wlan0"));
    const QString profile = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
         {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), QByteArray("Garage")}}}});
    m_manager->change(
        radio, {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths {QDBusObjectPath(profile)})}});
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", "['wlan0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("5 \"wlan0\" has no link"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    QCOMPARE(m_manager->calls(QStringLiteral("ActivateConnection")).size(), 0);
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
