// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtTest/QtTest>

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
    void leasesGoWithTheManager();
    void types_data();
    void types();
    void refusals_data();
    void refusals();
    void triesAgainWhenSomebodyElseWasFaster();
    void sendsSettings();
    void tellsReleaseAlsoWhereNothingIs();
    void takesWhatComesByItself();
    void sparesThePreferredForAMomentOnly();
    void activatesAProfile_data();
    void activatesAProfile();
    void activatesWhatIsStillGoingDown();
    void activationIsRefused();
    void activatesTheBestProfile();
    void makesAProfileOnce();
    void makesNothingToDisconnect();
    void keepsWhatTheProfileSays();
    void radioIsNotJoinedByItself();
    void showsKnownKindsByTheirNames();

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<ZopObject> m_control;
    QString m_device;
    QString m_profile;

    void addProfile();
    bool connectDevice();
    bool start();
};

namespace {

const char *const Manual = "['eth0',{'manual':'yes','manual6':'off','ip_address':'10.0.0.7','netmask':'255.255.255.0',"
                           "'gateway':'10.0.0.1'}]";

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

bool ManagedInterfacesTest::start()
{
    if (!m_manager->start()
        || !m_daemon->process().start(
            m_daemon->root(), {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")}))
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
    m_manager->setState(m_device, 20, 40);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("false"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->setState(m_device, 30);
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("up"), QStringLiteral("true"), Patience);
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

void ManagedInterfacesTest::triesAgainWhenSomebodyElseWasFaster()
{
    const QString changed = QStringLiteral("org.freedesktop.NetworkManager.Device.VersionIdMismatch");
    m_manager->refuse(QStringLiteral("Reapply"), changed, QStringLiteral("too late"), 1);
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
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
    const auto settings = [](int metric) {
        return BusSettings {{QStringLiteral("connection"),
                             {{QStringLiteral("id"), QStringLiteral("house")},
                              {QStringLiteral("uuid"), QStringLiteral("6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001")},
                              {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
                            {QStringLiteral("802-3-ethernet"), {}},
                            {QStringLiteral("ipv4"),
                             {{QStringLiteral("method"), QStringLiteral("auto")},
                              {QStringLiteral("never-default"), true},
                              {QStringLiteral("dns-search"), QStringList {QStringLiteral("example.org")}},
                              {QStringLiteral("route-metric"), QVariant::fromValue(qlonglong(metric))}}}};
    };
    const auto ipv4 = [this] { return m_manager->applied(m_device)[QStringLiteral("ipv4")]; };
    const QString search = QStringLiteral("dns-search");
    m_manager->beginActivation(m_device, m_manager->addProfile(settings(77)));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(ipv4()[search].toStringList(), QStringList()); // the manager wants none where there are no addresses
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    QCOMPARE(ipv4()[search].toStringList(), QStringList {QStringLiteral("example.org")});
    QCOMPARE(ipv4()[QStringLiteral("route-metric")].toInt(), 77);
    QVERIFY(!ipv4()[QStringLiteral("never-default")].toBool());
    QCOMPARE(Request(m_control.get(), "net_connected", "['eth0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    QVERIFY(ipv4()[QStringLiteral("never-default")].toBool());
    // The user has changed it and connects anew: that counts, under what was asked for. The manager's library knows the
    // connection only when it has read the profile, which is after the device's state.
    m_manager->forgetCalls();
    m_manager->deactivate(m_device);
    m_manager->beginActivation(m_device, m_manager->addProfile(settings(88)));
    m_manager->activate(m_device);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4()[QStringLiteral("route-metric")].toInt(), 88, Patience);
}

void ManagedInterfacesTest::radioIsNotJoinedByItself()
{
    m_manager->addWifi(QStringLiteral("wlan0"));
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", "['wlan0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("5 \"wlan0\" has no link"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
}

void ManagedInterfacesTest::showsKnownKindsByTheirNames()
{
    m_manager->addDevice(QStringLiteral("dummy0"), 22, QStringLiteral("Dummy"), {});
    m_manager->addDevice(QStringLiteral("p2p-dev-wlan0"), 30, QStringLiteral("WifiP2P"), {});
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

QTEST_GUILESS_MAIN(ManagedInterfacesTest)

#include "tst_managedinterfaces.moc"
