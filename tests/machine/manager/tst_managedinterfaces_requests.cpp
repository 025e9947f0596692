// SPDX-License-Identifier: Apache-2.0
#include "managedinterfacescase.h"

#include <QtCore/QElapsedTimer>

#include <limits>

using namespace morvek;

/*! What comes of requests for what is connected. */
class ManagedInterfacesRequestsTest : public ManagedInterfacesCase
{
    Q_OBJECT

private Q_SLOTS:
    void refusals_data();
    void refusals();
    void refusesByState_data();
    void refusesByState();
    void oneAfterTheOther();
    void triesAgainWhenSomebodyElseWasFaster();
    void sendsSettings();
    void tellsReleaseAlsoWhereNothingIs();
    void tellsReleaseOfWhatTheManagerDoesNotTake();
    void isConnectedWithWhatWasAskedFor();
    void isNotConnectedBeforeTheAnswer();
    void tellsThatNobodyAnswers();
    void waitsForAnAnswerAsTheProfileSays();
    void takesWhatComesByItself();
    void takesNothingThatWasToBeConnectedAnew();
    void takesNothingOfANetwork();
    void sparesNoOther();
    void sparesThePreferredForAMomentOnly();
    void leavesWhatIsSharedAlone();
    void keepsWhatTheProfileSays();
    void takesWhatTheProfileHasByHand();
};

void ManagedInterfacesRequestsTest::refusals_data()
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

void ManagedInterfacesRequestsTest::refusals()
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
    QVERIFY(answersAnother());
    QCOMPARE(eth0.text("ip_addresses"), addresses);
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesRequestsTest::refusesByState_data()
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

void ManagedInterfacesRequestsTest::refusesByState()
{
    QFETCH(uint, state);
    m_manager->setState(m_device, state);
    QVERIFY(start());
    QTEST(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), "disconnecting");
    QTEST(Request(m_control.get(), "net_connected", Manual).outcome(), "connecting");
}

void ManagedInterfacesRequestsTest::oneAfterTheOther()
{
    QVERIFY(connectDevice());
    m_manager->hold(QStringLiteral("Reapply"));
    Request first(m_control.get(), "net_disconnected", "'eth0'");
    Request second(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("GetAppliedConnection")).size(), 1);
    m_manager->release(QStringLiteral("Reapply"));
    QCOMPARE(first.outcome(), QStringLiteral("ok"));
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 2);
    QCOMPARE(m_manager->applied(m_device)[QStringLiteral("ipv4")][QStringLiteral("method")].toString(),
             QStringLiteral("manual"));
}

void ManagedInterfacesRequestsTest::triesAgainWhenSomebodyElseWasFaster()
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

void ManagedInterfacesRequestsTest::sendsSettings()
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

void ManagedInterfacesRequestsTest::tellsReleaseAlsoWhereNothingIs()
{
    QVERIFY(start());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.lines(),
                              QStringList {QStringLiteral("connected=false ip_addresses=[] ip_gateway=[]")}, Patience);
}

/*! Somebody else has given it those: they are told again, as the client waits for them to go. */
void ManagedInterfacesRequestsTest::tellsReleaseOfWhatTheManagerDoesNotTake()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    const QString released = QStringLiteral("connected=false ip_addresses=[] ip_gateway=[\"10.0.0.1\"]");
    QTRY_COMPARE_WITH_TIMEOUT(eth0.lines().value(0), released, Patience);
    QVERIFY(tellMtu(eth0, 1400));
    QCOMPARE(eth0.text("ip_addresses"), QStringLiteral("[\"10.0.0.3/255.255.255.0\",\"10.0.0.2/255.255.255.0\"]"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesRequestsTest::isConnectedWithWhatWasAskedFor()
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
    QVERIFY(tellMtu(eth0, 1400));
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("true"), Patience);
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
}

/*! Nobody else has given it the address that comes before the answer. */
void ManagedInterfacesRequestsTest::isNotConnectedBeforeTheAnswer()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->setLease(m_device, {});
    m_manager->setIp4(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("false"), Patience);
    m_manager->hold(QStringLiteral("Reapply"));
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply"), 2));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.7/24")});
    QTRY_VERIFY_WITH_TIMEOUT(eth0.text("ip_addresses").contains(QLatin1String("10.0.0.7")), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("false"));
    m_manager->release(QStringLiteral("Reapply"));
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("true"), Patience);
}

/*! When it has been asked for, and the manager gives up. */
void ManagedInterfacesRequestsTest::tellsThatNobodyAnswers()
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
    QVERIFY(answersAnother());
    QCOMPARE(spoken(), 0);
    m_manager->setState(m_device, 120, 5);
    QTRY_COMPARE_WITH_TIMEOUT(spoken(), 1, Patience);
}

/*! As the profile says that it is connected with, and not for the requests before. Takes one second. */
void ManagedInterfacesRequestsTest::waitsForAnAnswerAsTheProfileSays()
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

/*! What is not the one that is configured, or is not connected any more, is not spared. */
void ManagedInterfacesRequestsTest::sparesNoOther()
{
    const QString device = m_manager->addEthernet(QStringLiteral("eth1"));
    m_manager->beginActivation(device, m_manager->addProfile(richProfile(77, "6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c002")));
    m_manager->activate(device);
    m_manager->setIp4(device, {QStringLiteral("10.0.0.4/24")}, QStringLiteral("10.0.0.1"), 200);
    QVERIFY(connectDevice());
    const Seen eth1(interfacePath("eth1"));
    // The status is told behind what is told of the interfaces: it is known when something else comes.
    const auto tellTwice = [this, &device, &eth1](uint mtu) {
        const auto tell = [this, &device, &eth1](uint each) {
            m_manager->change(device, {{QStringLiteral("Mtu"), each}});
            return QTest::qWaitFor([&eth1, each] { return eth1.text("mtu") == QString::number(each); }, Patience);
        };
        return tell(mtu) && tell(mtu + 100);
    };
    QCOMPARE(Seen {QLatin1String(Status)}.text("default_interface"), QStringLiteral("eth0"));
    QCOMPARE(
        Request(m_control.get(), "net_connected", QByteArray(Automatic).replace("eth0", "eth1").constData()).outcome(),
        QStringLiteral("ok"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")});
    QVERIFY(tellTwice(1401));
    QCOMPARE(Seen {QLatin1String(Status)}.text("default_interface"), QStringLiteral("eth1"));
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"));
    QVERIFY(tellTwice(1402));
    QCOMPARE(Seen {QLatin1String(Status)}.text("default_interface"), QStringLiteral("eth0"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    // All that is not its loss is told.
    m_manager->addEthernet(QStringLiteral("eth2"));
    QVERIFY(tellTwice(1403));
    QCOMPARE(Seen {QLatin1String(Status)}.text("priority"), QStringLiteral("[\"eth0\",\"eth1\",\"eth2\"]"));
    m_manager->deactivate(m_device);
    m_manager->setIp4(m_device, {});
    QVERIFY(tellTwice(1404));
    QCOMPARE(Seen {QLatin1String(Status)}.text("default_interface"), QStringLiteral("eth1"));
    m_manager->setIp4(device, {QStringLiteral("10.0.0.4/24")});
    QVERIFY(tellTwice(1405));
    QCOMPARE(Seen {QLatin1String(Status)}.text("default_interface"), QString());
}

void ManagedInterfacesRequestsTest::sparesThePreferredForAMomentOnly()
{
    m_manager->addEthernet(QStringLiteral("eth1"));
    QVERIFY(connectDevice());
    const Seen status {QLatin1String(Status)};
    const Seen eth0(interfacePath("eth0"));
    QElapsedTimer since;
    since.start();
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth1'").outcome(), QStringLiteral("ok"));
    m_manager->setIp4(m_device, {});
    m_manager->setLease(m_device, {});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("false"), Patience);
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QVERIFY(status.text("default_interface") == QLatin1String("eth0") || since.hasExpired(900)); // of 1000
    QTRY_COMPARE_WITH_TIMEOUT(status.text("default_interface"), QString(), Patience);
    // Somebody else has given it an address: that is what it has.
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.9/24")});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("manual"), QStringLiteral("yes"), Patience);
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
}

void ManagedInterfacesRequestsTest::leavesWhatIsSharedAlone()
{
    m_manager->beginActivation(
        m_device,
        m_manager->addProfile(
            {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
             {QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("shared")}}}}));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(),
             QStringLiteral("12 \"eth0\" shares its addresses with others"));
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 0);
}

void ManagedInterfacesRequestsTest::keepsWhatTheProfileSays()
{
    const auto ipv4 = [this] { return m_manager->applied(m_device)[QStringLiteral("ipv4")]; };
    // The manager's library has another word for it in its newer versions.
    const auto hasServers = [ipv4] {
        return !ipv4()[QStringLiteral("dns-data")].toStringList().isEmpty()
            || !qvariant_cast<QList<uint>>(ipv4()[QStringLiteral("dns")]).isEmpty();
    };
    const QString search = QStringLiteral("dns-search");
    const QString routes = QStringLiteral("route-data");
    const QString addresses = QStringLiteral("address-data");
    m_manager->beginActivation(m_device, m_manager->addProfile(richProfile(77)));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    // The manager wants neither names nor routes where there are no addresses.
    QCOMPARE(ipv4()[search].toStringList(), QStringList());
    QVERIFY(!hasServers());
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4()[routes]).size(), 0);
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4()[addresses]).size(), 0);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    QCOMPARE(ipv4()[search].toStringList(), QStringList {QStringLiteral("example.org")});
    QVERIFY(hasServers());
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4()[routes]).size(), 1);
    const auto all = qvariant_cast<QList<QVariantMap>>(ipv4()[addresses]);
    QCOMPARE(all.size(), 1);
    QCOMPARE(all.first()[QStringLiteral("address")].toString(), QStringLiteral("10.0.0.7"));
    QCOMPARE(all.first()[QStringLiteral("prefix")].toInt(), 24);
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

void ManagedInterfacesRequestsTest::takesWhatTheProfileHasByHand()
{
    BusSettings settings = richProfile(77);
    settings[QStringLiteral("ipv4")].insert(QStringLiteral("method"), QStringLiteral("manual"));
    settings[QStringLiteral("ipv4")].insert(QStringLiteral("gateway"), QStringLiteral("10.0.0.9"));
    m_manager->beginActivation(m_device, m_manager->addProfile(settings));
    m_manager->activate(m_device);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Automatic).outcome(), QStringLiteral("ok"));
    const QVariantMap ipv4 = m_manager->applied(m_device)[QStringLiteral("ipv4")];
    QCOMPARE(ipv4[QStringLiteral("method")].toString(), QStringLiteral("auto"));
    QCOMPARE(qvariant_cast<QList<QVariantMap>>(ipv4[QStringLiteral("address-data")]).size(), 0);
    QVERIFY(!ipv4.contains(QStringLiteral("gateway")));
}

/*! Who has disconnected it before it had a link finds it so afterwards, whatever the manager connects it with. */
void ManagedInterfacesRequestsTest::takesWhatComesByItself()
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

/*! Clients connect anew by two requests; the second one came too late. */
void ManagedInterfacesRequestsTest::takesNothingThatWasToBeConnectedAnew()
{
    addProfile();
    m_manager->setState(m_device, 20, 40);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("5 \"eth0\" has no link"));
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    const Seen eth0(interfacePath("eth0"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("connected"), QStringLiteral("true"), Patience);
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 0);
}

/*! That is joined with what it says, whatever was asked for before. */
void ManagedInterfacesRequestsTest::takesNothingOfANetwork()
{
    const QString wifi = m_manager->addWifi(QStringLiteral("wlan0"));
    addProfile();
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
    m_manager->beginActivation(wifi, m_profile);
    m_manager->activate(wifi);
    const Seen wlan0(interfacePath("wlan0"));
    QTRY_COMPARE_WITH_TIMEOUT(wlan0.text("connected"), QStringLiteral("true"), Patience);
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 0);
}

QTEST_GUILESS_MAIN(ManagedInterfacesRequestsTest)

#include "tst_managedinterfaces_requests.moc"
