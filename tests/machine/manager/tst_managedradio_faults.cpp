// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

#include <QtDBus/QDBusArgument>

using namespace morvek;

namespace {

const char Passkey[] = "a passkey of House";
const char HouseBssid[] = "0a:00:00:00:00:01";

} // namespace

/*! The manager restarts, the radio is pulled and put back, the machine sleeps: the world follows, what is wanted stays.
 */
class ManagedRadioFaultsTest : public ManagedRadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void managerAway();
    void managerRestartsWhileJoining();
    void managerDiesWhileAsked();
    void managerDiesWhileTheNetworkIsLookedFor();
    void scansThatNobodyFinishes();
    void radioIsPulled();
    void radioIsSwitchedOff();
    void sleepAndWake();
    void hiddenNetworkAfterSleep();
    void comesIntoSightAgain();
    void othersLeaveTheRadio();
    void leftByHand_data();
    void leftByHand();
    void leftByHandWhileJoining();
    void othersNetworkIsLeftByHand();
    void othersNetworkIsLeftBeforeTheJoin();
    void comesIntoSightMeanwhile_data();
    void comesIntoSightMeanwhile();
    void goneWhileLookedFor();

private:
    /*! Joins House. */
    void becomeConnected();
};

void ManagedRadioFaultsTest::becomeConnected()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    forget();
}

void ManagedRadioFaultsTest::managerAway()
{
    becomeConnected();
    m_manager->stop();
    const QString gone = QStringLiteral("10 the network manager does not run");
    QTRY_COMPARE(request("scan"), gone);
    QCOMPARE(request("wifi_power", "off"), gone);
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), gone);
    QCOMPARE(request("wnet_select", "0"), gone);
    QCOMPARE(request("wnet_disableall"), gone);
    // The world stays as it was.
    QVERIFY(m_service->powered());
    QVERIFY(m_service->connected());
    QCOMPARE(m_status->lines(), QStringList());
    // It comes back without the connection.
    m_manager->setState(m_wifi, 30);
    QVERIFY(m_manager->start());
    QCOMPARE(told(1), QStringList {disconnected(HouseBssid)});
    QCOMPARE(join().pathAt(2), m_house);
    m_manager->activate(m_wifi);
    QCOMPARE(told(2).constLast(), connected(HouseBssid, 0));
}

void ManagedRadioFaultsTest::managerRestartsWhileJoining()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->setState(m_wifi, 50);
    m_manager->stop();
    m_manager->setState(m_wifi, 30);
    QVERIFY(m_manager->start());
    join(2);
    QVERIFY(connect.isOpen());
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

/*! Every request is answered. */
void ManagedRadioFaultsTest::managerDiesWhileAsked()
{
    startDaemons();
    m_manager->hold(QStringLiteral("AddAndActivateConnection2"));
    m_manager->hold(QStringLiteral("RequestScan"));
    Connect connect(connectTo("House", Passkey));
    join();
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    Request scan(&control, "scan");
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    m_manager->stop();
    QVERIFY(connect.outcome().startsWith(QLatin1String("-1 ")));
    QCOMPARE(scan.outcome(), QStringLiteral("10 the network manager does not run"));
}

/*! The manager has not been asked for the network yet. */
void ManagedRadioFaultsTest::managerDiesWhileTheNetworkIsLookedFor()
{
    startDaemons();
    Connect connect(connectTo("Far", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    m_manager->stop();
    QCOMPARE(connect.outcome(), QStringLiteral("-1 the network manager does not run"));
    // It is not wanted, and what else there is may be joined.
    addAccessPoint("Far", 7, FakeManager::Wpa2);
    m_manager->change(m_wifi, {{QStringLiteral("Autoconnect"), true}});
    m_manager->forgetCalls();
    QVERIFY(m_manager->start());
    QTRY_COMPARE(request("scan"), QStringLiteral("ok"));
    m_manager->finishScan(m_wifi);
    told(2);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    QCOMPARE(autoconnects(), QList<bool>());
}

void ManagedRadioFaultsTest::scansThatNobodyFinishes()
{
    const QString scan = QStringLiteral("RequestScan");
    startDaemons();
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    m_manager->stop();
    QTRY_COMPARE(request("scan"), QStringLiteral("10 the network manager does not run"));
    QVERIFY(m_manager->start());
    QTRY_COMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(scan).size(), 2);
    m_manager->removeDevice(m_wifi);
    QTRY_VERIFY(!m_service->powered());
    m_wifi = m_manager->addWifi(QStringLiteral("wlan0"));
    QTRY_VERIFY(m_service->powered());
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(scan).size(), 3);
    m_manager->setState(m_wifi, 20);
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), false}});
    QTRY_VERIFY(!m_service->powered());
    m_manager->setState(m_wifi, 30);
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), true}});
    QTRY_VERIFY(m_service->powered());
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(scan).size(), 4);
}

void ManagedRadioFaultsTest::radioIsPulled()
{
    becomeConnected();
    m_manager->removeDevice(m_wifi);
    QTRY_VERIFY(!m_service->powered());
    QTRY_VERIFY(!m_service->connected());
    QCOMPARE(request("scan"), QStringLiteral("7 the radio is off"));
    QCOMPARE(request("wifi_power", "on"), QStringLiteral("7 there is no radio"));
    m_wifi = m_manager->addWifi(QStringLiteral("wlan0"));
    QTRY_VERIFY(m_service->powered());
    m_house = addAccessPoint("House", 2, FakeManager::Wpa2);
    m_manager->finishScan(m_wifi);
    QCOMPARE(join().pathAt(2), m_house);
    m_manager->activate(m_wifi);
    QTRY_VERIFY(m_service->connected());
    QTRY_COMPARE(autoconnects(), QList<bool> {false});
}

void ManagedRadioFaultsTest::radioIsSwitchedOff()
{
    becomeConnected();
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), false}});
    m_manager->setState(m_wifi, 20);
    QTRY_VERIFY(!m_service->powered());
    QTRY_VERIFY(!m_service->connected());
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), true}});
    m_manager->setState(m_wifi, 30, 42);
    QTRY_VERIFY(m_service->powered());
    join();
    m_manager->activate(m_wifi);
    QTRY_VERIFY(m_service->connected());
}

void ManagedRadioFaultsTest::sleepAndWake()
{
    becomeConnected();
    m_manager->setState(m_wifi, 110, 37);
    m_manager->setState(m_wifi, 10, 37);
    QTRY_VERIFY(!m_service->connected());
    QVERIFY(m_service->powered());
    for (const uint state : {20U, 30U})
        m_manager->setState(m_wifi, state);
    join();
    m_manager->activate(m_wifi);
    QTRY_VERIFY(m_service->connected());
}

/*! It is asked for by its name; then it is in sight. */
void ManagedRadioFaultsTest::hiddenNetworkAfterSleep()
{
    startDaemons();
    Connect connect(connectTo("Hidden", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    m_manager->finishScan(m_wifi);
    join();
    const QString shown = addAccessPoint("Hidden", 5, FakeManager::Wpa2);
    m_manager->change(m_wifi, {{QStringLiteral("ActiveAccessPoint"), QVariant::fromValue(QDBusObjectPath(shown))}});
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    m_manager->forgetCalls();
    m_manager->setState(m_wifi, 110, 37);
    m_manager->setState(m_wifi, 10, 37);
    m_manager->removeAccessPoint(shown);
    QTRY_VERIFY(!m_service->connected());
    for (const uint state : {20U, 30U})
        m_manager->setState(m_wifi, state);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    const QVariantMap options = m_manager->calls(QStringLiteral("RequestScan")).first().map(0);
    QCOMPARE(qdbus_cast<QByteArrayList>(options[QStringLiteral("ssids")]), QByteArrayList {"Hidden"});
    m_manager->finishScan(m_wifi);
    QTRY_VERIFY(m_status->text("last_event").contains(QStringLiteral("SCAN-RESULTS")));
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    const QString again = addAccessPoint("Hidden", 5, FakeManager::Wpa2);
    m_manager->finishScan(m_wifi);
    QCOMPARE(join().pathAt(2), again);
}

void ManagedRadioFaultsTest::comesIntoSightAgain()
{
    becomeConnected();
    m_manager->removeAccessPoint(m_house);
    fail(53);
    QCOMPARE(told(1), QStringList {disconnected(HouseBssid, 4)});
    m_manager->finishScan(m_wifi);
    told(2);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    addAccessPoint("House", 2, FakeManager::Wpa2);
    m_manager->finishScan(m_wifi);
    join();
    m_manager->activate(m_wifi);
    QTRY_VERIFY(m_service->connected());
    // Nobody waits for that, so nobody is told that it was not found.
    QCOMPARE(m_status->lines().filter(QStringLiteral("NOT-FOUND")), QStringList());
}

/*! What somebody joins by hand is told, and not fought. */
void ManagedRadioFaultsTest::othersLeaveTheRadio()
{
    becomeConnected();
    joinAsTheUser("Guest", m_guest);
    // The end of the one network and the other one may be told at once.
    const int before = toldUntil(connected("0a:00:00:00:00:03", -1, "Guest", "NONE", "NONE")).size();
    m_manager->finishScan(m_wifi);
    QVERIFY(told(before + 1).constLast().contains(QStringLiteral("scan_results=")));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    m_manager->deactivate(m_wifi, 53);
    QCOMPARE(join().pathAt(2), m_house);
}

void ManagedRadioFaultsTest::leftByHand_data()
{
    QTest::addColumn<uint>("reason");
    QTest::addColumn<bool>("isWanted");
    QTest::newRow("by the user") << 39U << false;
    QTest::newRow("by itself") << 40U << true;
}

/*! What the user disconnects with another program stays so, until a network is selected again. */
void ManagedRadioFaultsTest::leftByHand()
{
    QFETCH(const uint, reason);
    QFETCH(const bool, isWanted);
    becomeConnected();
    m_manager->deactivate(m_wifi, reason);
    QCOMPARE(told(1), QStringList {disconnected(HouseBssid)});
    m_manager->finishScan(m_wifi);
    QVERIFY(told(2).constLast().contains(QStringLiteral("scan_results=")));
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), isWanted ? 1 : 0);
    // Nor does the manager join anything by itself.
    QCOMPARE(autoconnects(), QList<bool>());
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    QCOMPARE(request("wnet_select", "1"), QStringLiteral("ok"));
    QCOMPARE(join(isWanted ? 2 : 1).pathAt(2), m_guest);
}

void ManagedRadioFaultsTest::leftByHandWhileJoining()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->setState(m_wifi, 50);
    m_manager->deactivate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(told(1), QStringList {wrongKey(0)});
    m_manager->finishScan(m_wifi);
    told(2);
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 1);
    QCOMPARE(autoconnects(), QList<bool> {false});
}

void ManagedRadioFaultsTest::othersNetworkIsLeftByHand()
{
    becomeConnected();
    joinAsTheUser("Guest", m_guest);
    toldUntil(connected("0a:00:00:00:00:03", -1, "Guest", "NONE", "NONE"));
    m_manager->deactivate(m_wifi);
    const int before = toldUntil(disconnected("0a:00:00:00:00:03")).size();
    m_manager->finishScan(m_wifi);
    QVERIFY(told(before + 1).constLast().contains(QStringLiteral("scan_results=")));
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
}

/*! An application has asked for another network before. */
void ManagedRadioFaultsTest::othersNetworkIsLeftBeforeTheJoin()
{
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    Connect connect(connectTo("Far", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    m_manager->deactivate(m_wifi);
    toldUntil(disconnected("0a:00:00:00:00:03"));
    QVERIFY(connect.isOpen());
    m_manager->finishScan(m_wifi);
    QCOMPARE(join().pathAt(2), QStringLiteral("/"));
}

void ManagedRadioFaultsTest::comesIntoSightMeanwhile_data()
{
    QTest::addColumn<bool>("isAsleep");
    QTest::newRow("while the machine sleeps") << true;
    QTest::newRow("while the manager is away") << false;
}

/*! It is joined at once, not after the next scan. */
void ManagedRadioFaultsTest::comesIntoSightMeanwhile()
{
    QFETCH(const bool, isAsleep);
    becomeConnected();
    m_manager->removeAccessPoint(m_house);
    fail(53);
    QCOMPARE(told(1), QStringList {disconnected(HouseBssid, 4)});
    if (isAsleep)
        m_manager->setState(m_wifi, 10, 37);
    else
        m_manager->stop();
    QTRY_VERIFY(request("scan") != QLatin1String("ok"));
    m_house = addAccessPoint("House", 2, FakeManager::Wpa2);
    if (isAsleep)
        m_manager->setStates(m_wifi, {{20, 0}, {30, 0}});
    else
        QVERIFY(m_manager->start());
    // The next scan would come after 20 s.
    QVERIFY(m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2"), 1, 10000));
    QCOMPARE(join().pathAt(2), m_house);
}

void ManagedRadioFaultsTest::goneWhileLookedFor()
{
    const QString scan = QStringLiteral("RequestScan");
    startDaemons();
    Connect connect(connectTo("Far", Passkey));
    QVERIFY(m_manager->waitForCalls(scan));
    m_manager->setState(m_wifi, 10, 37);
    QTRY_VERIFY(request("scan") != QLatin1String("ok"));
    m_manager->forgetCalls();
    m_manager->setStates(m_wifi, {{20, 0}, {30, 0}});
    QVERIFY(m_manager->waitForCalls(scan, 1, 10000));
    m_manager->finishScan(m_wifi);
    QCOMPARE(join().pathAt(2), QStringLiteral("/"));
    QVERIFY(connect.isOpen());
}

QTEST_GUILESS_MAIN(ManagedRadioFaultsTest)

#include "tst_managedradio_faults.moc"
