// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

using namespace morvek;

namespace {

const char Passkey[] = "a passkey of House";
const char UsersPasskey[] = "a passkey of the user's";
const QByteArray NotEverything = "morvek-hostd: not everything is as it was yet: the next end or start goes on\n";

} // namespace

/*! What the radio had before it has afterwards, however the program ends. */
class ManagedRadioRestorationTest : public ManagedRadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void givesPowerBack_data();
    void givesPowerBack();
    void givesPowerBackWithoutTheMachinesSwitch();
    void switchesOffAgain();
    void keepsPowerWhenAsked();
    void staysOutWhenAsked();
    void leavesPowerThatTheUserHasSwitched();
    void givesNetworkBack_data();
    void givesNetworkBack();
    void joinsByItselfBeforeTheNetworkIsBack();
    void asksForNothingElseWhileItGivesBack();
    void keepsWhatIsRefused_data();
    void keepsWhatIsRefused();
    void keepsSettingsThatAreRefused();
    void waitsForNoAddressesWhereNoneWere();
    void forgetsWhatIsGone();
    void keepsWhatAManagerThatHasEndedCannotGiveBack();
    void givesNetworkBackAfterAWrongPasskey();
    void keepsNetworkWhenAsked();
    void isNotAheadOfTheManager_data();
    void isNotAheadOfTheManager();
    void endsAheadOfTheManager();

private:
    /*! The manager does on its own what it is asked for. */
    void play();
    void switchPower(bool on);
    void start(const QStringList &arguments = {});
    void startAgain(const QStringList &arguments = {});
    void joinHouse();
    void refuse(const QString &member)
    {
        m_manager->refuse(member, QStringLiteral("org.freedesktop.NetworkManager.Failed"), QStringLiteral("not now"));
    }
    bool isOn() const { return m_manager->value<bool>(FakeManager::managerPath(), QStringLiteral("WirelessEnabled")); }
    bool joinsByItself() const { return m_manager->value<bool>(m_wifi, QStringLiteral("Autoconnect")); }
    QString joinOwn();
    QString connectCable(const char *ipv4);
    void changeAddress(const QString &wired);
    QString method(const QString &wired)
    {
        return m_manager->applied(wired)[QStringLiteral("ipv4")][QStringLiteral("method")].toString();
    }
    QString profileInUse() const;
    QString notes() const
    {
        return m_daemon->root() + QStringLiteral("/.morvek-hostd-session.networking.wifi.tethering.json");
    }
};

void ManagedRadioRestorationTest::switchPower(bool on)
{
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), on}});
    m_manager->setState(m_wifi, on ? 30 : 20);
}

void ManagedRadioRestorationTest::play()
{
    m_manager->setAnswer(QStringLiteral("Set"), [this](const BusCall &call) {
        const bool value = call.arguments.at(2).toBool();
        if (call.text(1) == QLatin1String("WirelessEnabled"))
            switchPower(value);
        else
            m_manager->change(call.path, {{call.text(1), value}});
        return BusAnswer();
    });
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [this](const BusCall &call) {
        const QString active = m_manager->beginActivation(call.pathAt(1), call.pathAt(0));
        m_manager->activate(call.pathAt(1));
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(active))}, {}, {}};
    });
}

void ManagedRadioRestorationTest::start(const QStringList &arguments)
{
    play();
    startDaemons(arguments);
}

void ManagedRadioRestorationTest::startAgain(const QStringList &arguments)
{
    m_daemon->kill();
    startDaemons(arguments);
}

void ManagedRadioRestorationTest::joinHouse()
{
    Connect connect(connectTo("House", Passkey));
    QCOMPARE(join().pathAt(1), m_wifi);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

/*! The station is in a network of the user's, who has a passkey there, too. */
QString ManagedRadioRestorationTest::joinOwn()
{
    QString profile = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
         {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), QByteArray("Guest")}}},
         {QStringLiteral("802-11-wireless-security"),
          {{QStringLiteral("key-mgmt"), QStringLiteral("wpa-psk")},
           {QStringLiteral("psk"), QLatin1String(UsersPasskey)}}}});
    m_manager->beginActivation(m_wifi, profile, m_guest);
    m_manager->activate(m_wifi);
    return profile;
}

QString ManagedRadioRestorationTest::connectCable(const char *ipv4)
{
    const QString wired = m_manager->addEthernet(QStringLiteral("eth0"));
    m_manager->beginActivation(
        wired,
        m_manager->addProfile({{QStringLiteral("connection"),
                                {{QStringLiteral("id"), QStringLiteral("cable")},
                                 {QStringLiteral("uuid"), QStringLiteral("6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001")},
                                 {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
                               {QStringLiteral("802-3-ethernet"), {}},
                               {QStringLiteral("ipv4"),
                                {{QStringLiteral("method"), QLatin1String(ipv4)},
                                 {QStringLiteral("route-metric"), QVariant::fromValue(qlonglong(77))}}}}));
    m_manager->activate(wired);
    return wired;
}

/*! As an application asks for it. */
void ManagedRadioRestorationTest::changeAddress(const QString &wired)
{
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "net_connected",
                     "['eth0',{'manual':'yes','ip_address':'10.0.0.9','netmask':'255.255.255.0','gateway':'10.0.0.1'}]")
                 .outcome(),
             QStringLiteral("ok"));
    QCOMPARE(method(wired), QStringLiteral("manual"));
    m_manager->setIp4(wired, {QStringLiteral("10.0.0.9/24")});
    const Seen eth0(interfacePath("eth0"));
    QTRY_COMPARE(eth0.text("ip_addresses"), QStringLiteral("[\"10.0.0.9/255.255.255.0\"]"));
}

QString ManagedRadioRestorationTest::profileInUse() const
{
    const auto active = m_manager->value<QDBusObjectPath>(m_wifi, QStringLiteral("ActiveConnection"));
    return m_manager->value<QDBusObjectPath>(active.path(), QStringLiteral("Connection")).path();
}

void ManagedRadioRestorationTest::givesPowerBack_data()
{
    QTest::addColumn<bool>("isKilled");
    QTest::addRow("at its end") << false;
    QTest::addRow("at the next start") << true;
}

void ManagedRadioRestorationTest::givesPowerBack()
{
    QFETCH(bool, isKilled);
    const QString own = joinOwn();
    start();
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->connected());
    QVERIFY(!isOn());
    if (isKilled) {
        m_daemon->process().kill();
        QVERIFY(!isOn());
        QVERIFY(QFile::exists(notes()));
        startAgain();
        QVERIFY(isOn());
        QCOMPARE(profileInUse(), own);
        QVERIFY(!QFile::exists(notes()));
    }
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(isOn());
    QCOMPARE(profileInUse(), own);
    QVERIFY(!QFile::exists(notes()));
}

/*! The network of before cannot be joined until somebody turns that: it is not waited for. */
void ManagedRadioRestorationTest::givesPowerBackWithoutTheMachinesSwitch()
{
    joinOwn();
    start();
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->connected());
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessHardwareEnabled"), false}});
    m_manager->setAnswer(QStringLiteral("Set"), [this](const BusCall &call) {
        m_manager->change(call.path, {{call.text(1), call.arguments.at(2)}});
        return BusAnswer();
    });
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(isOn());
    QVERIFY(!m_daemon->process().errors().contains("not everything is as it was yet"));
    QVERIFY(!QFile::exists(notes()));
}

void ManagedRadioRestorationTest::switchesOffAgain()
{
    switchPower(false);
    start();
    QCOMPARE(request("wifi_power", "on"), QStringLiteral("ok"));
    QTRY_VERIFY(m_service->powered());
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(!isOn());
}

void ManagedRadioRestorationTest::keepsPowerWhenAsked()
{
    start({QStringLiteral("--remember")});
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->powered());
    QVERIFY(!QFile::exists(notes()));
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(!isOn());
}

/*! Who leaves a network, too. */
void ManagedRadioRestorationTest::staysOutWhenAsked()
{
    joinOwn();
    start({QStringLiteral("--remember")});
    QCOMPARE(request("wnet_disableall"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->connected());
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(m_manager->calls(QStringLiteral("ActivateConnection")).size(), 0);
}

/*! Also when that makes it what the session has made of it. */
void ManagedRadioRestorationTest::leavesPowerThatTheUserHasSwitched()
{
    start();
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->powered());
    switchPower(true);
    QTRY_VERIFY(m_service->powered());
    switchPower(false);
    QTRY_VERIFY(!m_service->powered());
    m_manager->forgetCalls();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(m_manager->calls(QStringLiteral("Set")).size(), 0);
    QVERIFY(!isOn());
}

void ManagedRadioRestorationTest::givesNetworkBack_data()
{
    givesPowerBack_data();
}

/*! What is noted meanwhile names networks, and no passkey. */
void ManagedRadioRestorationTest::givesNetworkBack()
{
    QFETCH(bool, isKilled);
    const QString own = joinOwn();
    start();
    joinHouse();
    QVERIFY(!joinsByItself());
    QVERIFY(QFile::exists(notes()));
    const QByteArrayList places = everythingReadable(m_daemon->root(), m_daemon->process().processId());
    QVERIFY(places.join().contains("autoconnect"));
    for (const QByteArray &place : places) {
        QVERIFY(!place.contains(Passkey));
        QVERIFY(!place.contains(UsersPasskey));
    }
    if (isKilled) {
        m_daemon->process().kill();
        startAgain();
    }
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(profileInUse(), own);
    QVERIFY(joinsByItself());
    QVERIFY(!QFile::exists(notes()));
}

/*! Out of range, the network of before takes longer than anybody waits. */
void ManagedRadioRestorationTest::joinsByItselfBeforeTheNetworkIsBack()
{
    const QString own = joinOwn();
    start();
    joinHouse();
    m_manager->setAnswer(QStringLiteral("ActivateConnection"), [this](const BusCall &call) {
        const QString active = m_manager->beginActivation(call.pathAt(1), call.pathAt(0));
        return BusAnswer {{QVariant::fromValue(QDBusObjectPath(active))}, {}, {}};
    });
    m_manager->setAnswer(QStringLiteral("Set"), [this](const BusCall &call) {
        m_manager->change(call.path, {{call.text(1), call.arguments.at(2).toBool()}});
        m_manager->activate(m_wifi);
        return BusAnswer();
    });
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(joinsByItself());
    QCOMPARE(profileInUse(), own);
    QVERIFY(!QFile::exists(notes()));
}

/*! What was selected is in sight again as soon as the radio is on. */
void ManagedRadioRestorationTest::asksForNothingElseWhileItGivesBack()
{
    const QString own = joinOwn();
    start();
    joinHouse();
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    QTRY_VERIFY(!m_service->connected());
    m_manager->forgetCalls();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    QCOMPARE(profileInUse(), own);
}

void ManagedRadioRestorationTest::keepsWhatIsRefused_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<bool>("isPower");
    QTest::addColumn<QByteArray>("line");
    QTest::addRow("network") << QStringLiteral("ActivateConnection") << false
                             << QByteArray("\"wlan0\" is not as it was: not now");
    QTest::addRow("joining by itself") << QStringLiteral("Set") << false
                                       << QByteArray("\"wlan0\" is not as it was: not now");
    QTest::addRow("power") << QStringLiteral("Set") << true
                           << QByteArray("the power of the radios is not as it was: not now");
}

/*! The next start and end try again, and give back nothing else then. */
void ManagedRadioRestorationTest::keepsWhatIsRefused()
{
    QFETCH(QString, member);
    QFETCH(bool, isPower);
    QFETCH(QByteArray, line);
    const QByteArray lines = "morvek-hostd: " + line + '\n' + NotEverything;
    const QString own = joinOwn();
    start();
    if (isPower)
        QCOMPARE(request("wifi_power", "off"), QStringLiteral("ok"));
    else
        joinHouse();
    refuse(member);
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY2(m_daemon->process().errors().endsWith(lines), m_daemon->process().errors());
    QVERIFY(QFile::exists(notes()));
    startAgain();
    QTRY_VERIFY(m_daemon->process().errors().contains(lines));
    QCOMPARE(isOn(), !isPower);
    m_manager->allow(member);
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(m_daemon->process().errors().count("as it was"), 2);
    QVERIFY(isOn());
    QVERIFY(joinsByItself());
    QCOMPARE(profileInUse(), own);
    QVERIFY(!QFile::exists(notes()));
}

/*! Addresses are not waited for then. */
void ManagedRadioRestorationTest::keepsSettingsThatAreRefused()
{
    const QString wired = connectCable("auto");
    m_manager->setIp4(wired, {QStringLiteral("10.0.0.2/24")});
    start();
    changeAddress(wired);
    refuse(QStringLiteral("Reapply"));
    QElapsedTimer since;
    since.start();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(since.elapsed() < 8000); // it would wait for 10 s
    QVERIFY(
        m_daemon->process().errors().endsWith("morvek-hostd: \"eth0\" is not as it was: not now\n" + NotEverything));
    m_manager->allow(QStringLiteral("Reapply"));
    m_manager->setIp4(wired, {QStringLiteral("10.0.0.2/24")});
    startAgain();
    QCOMPARE(method(wired), QStringLiteral("auto"));
    QCOMPARE(m_manager->applied(wired)[QStringLiteral("ipv4")][QStringLiteral("route-metric")].toInt(), 77);
    QVERIFY(!QFile::exists(notes()));
}

void ManagedRadioRestorationTest::waitsForNoAddressesWhereNoneWere()
{
    const QString wired = connectCable("disabled");
    start();
    changeAddress(wired);
    m_manager->setIp4(wired, {});
    m_manager->forgetCalls();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(method(wired), QStringLiteral("disabled"));
    // What somebody else applies at that moment counts: the version of what is replaced is told.
    QVERIFY(m_manager->calls(QStringLiteral("Reapply")).last().arguments.value(1).toULongLong() > 0);
    QVERIFY(!QFile::exists(notes()));
}

void ManagedRadioRestorationTest::forgetsWhatIsGone()
{
    start();
    joinHouse();
    QVERIFY(QFile::exists(notes()));
    m_manager->removeDevice(m_wifi);
    QTRY_VERIFY(!QFile::exists(m_daemon->root() + QLatin1String(Interfaces) + QStringLiteral("/wlan0")));
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(!QFile::exists(notes()));
}

void ManagedRadioRestorationTest::keepsWhatAManagerThatHasEndedCannotGiveBack()
{
    const QString own = joinOwn();
    start();
    joinHouse();
    m_manager->stop();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(m_daemon->process().errors().endsWith(NotEverything));
    QVERIFY(m_manager->start());
    startAgain();
    QVERIFY(joinsByItself());
    QCOMPARE(profileInUse(), own);
    QVERIFY(!QFile::exists(notes()));
}

/*! It is the session that has left the other one. */
void ManagedRadioRestorationTest::givesNetworkBackAfterAWrongPasskey()
{
    const QString own = joinOwn();
    start();
    Connect connect(connectTo("House", Passkey));
    for (int attempt = 1; attempt <= 2; ++attempt) {
        join(attempt);
        m_manager->setStates(m_wifi, {{50, 0}, {60, 8}});
    }
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(profileInUse(), own);
}

void ManagedRadioRestorationTest::keepsNetworkWhenAsked()
{
    const QString own = joinOwn();
    start({QStringLiteral("--remember")});
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    const QString kept = profileInUse();
    QCOMPARE(m_daemon->process().terminate(), 0);
    QCOMPARE(profileInUse(), kept);
    QVERIFY(kept != own);
}

void ManagedRadioRestorationTest::isNotAheadOfTheManager_data()
{
    QTest::addColumn<bool>("isRefusedAgain");
    QTest::addRow("when nothing is wanted any longer") << true;
    QTest::addRow("at its end") << false;
}

/*! Asked for the switch of the device and for its opposite before it has set the one. */
void ManagedRadioRestorationTest::isNotAheadOfTheManager()
{
    QFETCH(bool, isRefusedAgain);
    start();
    Connect connect(connectTo("House", Passkey));
    join();
    refusePasskey();
    join(2);
    QTRY_VERIFY(!joinsByItself());
    m_manager->hold(QStringLiteral("Set"));
    refusePasskey();
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    Connect again(connectTo("House", Passkey));
    join(3);
    m_manager->release(QStringLiteral("Set"));
    QTRY_COMPARE(autoconnects(), (QList<bool> {false, true, false}));
    if (isRefusedAgain) {
        refusePasskey();
        join(4);
        refusePasskey();
        QCOMPARE(again.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
        QTRY_VERIFY(joinsByItself());
    }
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(joinsByItself());
}

void ManagedRadioRestorationTest::endsAheadOfTheManager()
{
    start();
    m_manager->hold(QStringLiteral("Set"));
    Connect connect(connectTo("House", Passkey));
    join();
    m_daemon->process().signal(SIGTERM);
    QTRY_COMPARE(autoconnects(), (QList<bool> {false, true}));
    m_manager->release(QStringLiteral("Set"));
    QCOMPARE(m_daemon->process().waitForEnd(), 0);
    QVERIFY(joinsByItself());
}

QTEST_GUILESS_MAIN(ManagedRadioRestorationTest)

#include "tst_managedradio_restoration.moc"
