// SPDX-License-Identifier: Apache-2.0
#include "managedinterfacescase.h"

#include <QtCore/QElapsedTimer>

using namespace morvek;

/*! Requests that connect, and what remains of them when others connect or disconnect. */
class ManagedInterfacesConnectingTest : public ManagedInterfacesCase
{
    Q_OBJECT

private Q_SLOTS:
    void activatesAProfile_data();
    void activatesAProfile();
    void activatesWhatIsStillGoingDown();
    void activatesWhatHasFailedByThen();
    void activationIsRefused();
    void activationLosesItsManager();
    void activationLosesItsInterface();
    void activatesTheBestProfile();
    void radioIsNotJoinedByItself();
    void makesAProfileOnce();
    void doesNotMakeWhatOthersConnect();
    void leavesToOthersWhatTheyConnect();
    void givesAgainAfterTheManagersReturn();
    void tellsWhatItCannotGiveAgain();
    void appliesOnceWhatIsAskedForAfterALoss();
    void makesNothingToDisconnect();
    void forgetsWhatARemovedOneHad();

private:
    QString beginActivationIn(uint state, const BusCall &call);
};

void ManagedInterfacesConnectingTest::activatesAProfile_data()
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
    QTest::addRow("ends in between") << none << QVector<uint> {50, 30}
                                     << QStringLiteral("13 the network manager could not connect \"eth0\" (reason 0)");
    QTest::addRow("loses its link") << none << QVector<uint> {50, 20} << failed;
}

void ManagedInterfacesConnectingTest::activatesAProfile()
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
    QVERIFY(answersAnother());
    QVERIFY(after.isEmpty() || request.finished.isEmpty());
    go(after);
    QCOMPARE(request.outcome(), outcome);
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), outcome == QLatin1String("ok") ? 1 : 0);
    // The interface takes other requests.
    QVERIFY(!Request(m_control.get(), "net_disconnected", "'eth0'").outcome().isEmpty());
}

/*! The connection is on its way, and the device is not yet, or no more. */
QString ManagedInterfacesConnectingTest::beginActivationIn(uint state, const BusCall &call)
{
    QString active = m_manager->beginActivation(call.pathAt(1), call.pathAt(0));
    const QVariant none = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/")));
    m_manager->change(m_device, {{QStringLiteral("ActiveConnection"), none}});
    m_manager->setState(m_device, state, 5);
    m_manager->change(m_device, {{QStringLiteral("ActiveConnection"), QVariant::fromValue(QDBusObjectPath(active))}});
    return active;
}

/*! The end of the connection before is no end of this one. */
void ManagedInterfacesConnectingTest::activatesWhatIsStillGoingDown()
{
    addProfile();
    m_manager->setState(m_device, 110);
    QString active;
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [&](const BusCall &call) {
        active = beginActivationIn(110, call);
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(active))}, {}, {}};
    });
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QVERIFY(answersAnother());
    const QVariant none = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/")));
    m_manager->change(m_device, {{QStringLiteral("ActiveConnection"), none}});
    m_manager->setState(m_device, 30);
    QVERIFY(tellMtu(Seen(interfacePath("eth0")), 1400));
    QCOMPARE(m_manager->calls(QStringLiteral("GetAppliedConnection")).size(), 0);
    m_manager->change(m_device, {{QStringLiteral("ActiveConnection"), QVariant::fromValue(QDBusObjectPath(active))}});
    m_manager->setState(m_device, 40);
    m_manager->activate(m_device);
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
}

void ManagedInterfacesConnectingTest::activatesWhatHasFailedByThen()
{
    addProfile();
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [&](const BusCall &call) {
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(beginActivationIn(120, call)))}, {}, {}};
    });
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(),
             QStringLiteral("13 the network manager could not connect \"eth0\" (reason 5)"));
}

void ManagedInterfacesConnectingTest::activationIsRefused()
{
    addProfile();
    m_manager->refuse(QStringLiteral("ActivateConnection"),
                      QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"), QStringLiteral("not you"), 1);
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"),
                      QStringLiteral("org.freedesktop.NetworkManager.UnknownDevice"), QStringLiteral("too late"), 1);
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("9 not you"));
    m_manager->change(m_device, {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths())}});
    QVERIFY(tellMtu(Seen(interfacePath("eth0")), 1400));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("3 too late"));
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
}

void ManagedInterfacesConnectingTest::activationLosesItsManager()
{
    addProfile();
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QVERIFY(answersAnother());
    m_manager->stop();
    QCOMPARE(request.outcome(), QStringLiteral("10 the network manager does not run"));
}

void ManagedInterfacesConnectingTest::activationLosesItsInterface()
{
    addProfile();
    QVERIFY(start());
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    QVERIFY(answersAnother());
    m_manager->change(m_device,
                      {{QStringLiteral("Interface"), QStringLiteral("eth9")},
                       {QStringLiteral("IpInterface"), QStringLiteral("eth9")}});
    QCOMPARE(request.outcome(), QStringLiteral("3 no interface \"eth0\""));
}

void ManagedInterfacesConnectingTest::activatesTheBestProfile()
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

void ManagedInterfacesConnectingTest::radioIsNotJoinedByItself()
{
    const QString radio = m_manager->addWifi(QStringLiteral("wlan0"));
    const QString profile = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
         {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), QByteArray("Garage")}}}});
    m_manager->change(
        radio, {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths {QDBusObjectPath(profile)})}});
    m_manager->addDevice(QStringLiteral("br0"), 13, QStringLiteral("Bridge"), {}); // nor is it known what this needs
    QVERIFY(start());
    for (const char *name : {"wlan0", "br0"})
        QCOMPARE(Request(m_control.get(), "net_connected", QByteArray(Automatic).replace("eth0", name).constData())
                     .outcome(),
                 QStringLiteral("5 \"%1\" has no link").arg(QLatin1String(name)));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    QCOMPARE(m_manager->calls(QStringLiteral("ActivateConnection")).size(), 0);
}

void ManagedInterfacesConnectingTest::makesAProfileOnce()
{
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    const BusCall call = m_manager->calls(QStringLiteral("AddAndActivateConnection2")).first();
    const QVariantMap connection = call.settings(0)[QStringLiteral("connection")];
    QCOMPARE(connection[QStringLiteral("autoconnect")], QVariant(false));
    QCOMPARE(connection[QStringLiteral("id")].toString(), QStringLiteral("morvek-hostd eth0"));
    QCOMPARE(connection[QStringLiteral("type")].toString(), QStringLiteral("802-3-ethernet"));
    QVERIFY(!connection[QStringLiteral("uuid")].toString().isEmpty());
    QVERIFY(call.settings(0).contains(QStringLiteral("802-3-ethernet")));
    QCOMPARE(connection[QStringLiteral("interface-name")].toString(), QStringLiteral("eth0"));
    QCOMPARE(call.map(3)[QStringLiteral("persist")].toString(), QStringLiteral("volatile"));
    QCOMPARE(call.map(3)[QStringLiteral("bind-activation")].toString(), QStringLiteral("dbus-client"));
    m_manager->activate(m_device);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok")); // with the same one
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

void ManagedInterfacesConnectingTest::doesNotMakeWhatOthersConnect()
{
    QVERIFY(start());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->activate(m_device);
    m_manager->deactivate(m_device, 39);
    m_manager->beginActivation(m_device, m_manager->addProfile(richProfile(77)));
    m_manager->activate(m_device);
    m_manager->change(m_device, {{QStringLiteral("Mtu"), 1400U}});
    const Seen eth0(interfacePath("eth0"));
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QStringLiteral("1400"), Patience);
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 1);
    m_manager->setState(m_device, 20, 40);
    m_manager->setState(m_device, 30);
    QVERIFY(tellMtu(eth0, 1500));
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 1);
}

void ManagedInterfacesConnectingTest::leavesToOthersWhatTheyConnect()
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
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("GetAppliedConnection")).size(), 0);
    QVERIFY(!m_daemon->process().errors().contains("gets again what it was given"));
    // That the lease is the manager's counts again.
    QElapsedTimer since;
    since.start();
    m_manager->setLease(m_device, {});
    m_manager->change(m_device, {{QStringLiteral("Mtu"), ++mtu}});
    QTRY_COMPARE_WITH_TIMEOUT(eth0.text("mtu"), QString::number(mtu), Patience);
    QVERIFY(eth0.text("manual") == QLatin1String("no") || since.hasExpired(LeaseTime));
}

void ManagedInterfacesConnectingTest::givesAgainAfterTheManagersReturn()
{
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->stop();
    const auto isGone = [this] {
        return Request(m_control.get(), "net_connected", Automatic).outcome().startsWith(QLatin1String("10 "));
    };
    QVERIFY(QTest::qWaitFor(isGone, Patience));
    m_manager->forgetCalls();
    m_manager->beginActivation(m_device, m_profile); // with what the profile says
    m_manager->activate(m_device);
    QVERIFY(m_manager->start());
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Reapply")));
    QTRY_COMPARE_WITH_TIMEOUT(m_manager->applied(m_device)[QStringLiteral("ipv4")][QStringLiteral("method")].toString(),
                              QStringLiteral("manual"), Patience);
}

void ManagedInterfacesConnectingTest::tellsWhatItCannotGiveAgain()
{
    QVERIFY(connectDevice());
    QCOMPARE(Request(m_control.get(), "net_connected", Manual).outcome(), QStringLiteral("ok"));
    m_manager->refuse(QStringLiteral("Reapply"), QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("not you"));
    m_manager->deactivate(m_device);
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    const QByteArray line = "morvek-hostd: \"eth0\" does not get again what it was given: not you\n";
    QTRY_VERIFY_WITH_TIMEOUT(m_daemon->process().errors().contains(line), Patience);
}

void ManagedInterfacesConnectingTest::appliesOnceWhatIsAskedForAfterALoss()
{
    QVERIFY(connectDevice());
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(Request(m_control.get(), "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    m_manager->setState(m_device, 30, 39);
    QVERIFY(tellMtu(eth0, 1400));
    m_manager->forgetCalls();
    Request request(m_control.get(), "net_connected", Manual);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("ActivateConnection")));
    m_manager->activate(m_device);
    QCOMPARE(request.outcome(), QStringLiteral("ok"));
    QVERIFY(tellMtu(eth0, 1500));
    QVERIFY(answersAnother());
    QCOMPARE(m_manager->calls(QStringLiteral("Reapply")).size(), 1);
}

/*! What was made for an application is not made again for one that has disconnected it meanwhile. */
void ManagedInterfacesConnectingTest::makesNothingToDisconnect()
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

/*! It is pulled without a word and put back with another connection. */
void ManagedInterfacesConnectingTest::forgetsWhatARemovedOneHad()
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

QTEST_GUILESS_MAIN(ManagedInterfacesConnectingTest)

#include "tst_managedinterfaces_connecting.moc"
