// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

using namespace morvek;

namespace {

const char Passkey[] = "a passkey of House";
const QString NotFound = QStringLiteral("last_event=CTRL-EVENT-NETWORK-NOT-FOUND ");
const char HouseBssid[] = "0a:00:00:00:00:01";
const char GuestBssid[] = "0a:00:00:00:00:03";

} // namespace

/*! Networks of a real manager are joined: what it is asked for, and what an application sees of what it does. */
class ManagedRadioJoiningTest : public ManagedRadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void joins();
    void profileByProtection_data();
    void profileByProtection();
    void networkOutOfSight();
    void wrongPasskey();
    void oneFailureIsNoWrongPasskey();
    void failureOfTheFormerNetwork();
    void wrongPasskeyBeforeTheAssociation();
    void wrongPasskeyThatTheSupplicantTells();
    void outOfRange();
    void openNetworkFails();
    void fallbackComesAfterTheEvent();
    void othersTakeTheRadio();
    void othersTakeTheRadioBeforeTheAnswer();
    void othersLeaveTheRadioBeforeTheAnswer();
    void roamsBeforeTheSelect();
    void otherNetworkCompletesNothing();
    void refusal();
    void refusalAfterLeaving();
    void leaves();
    void leavingIsRefused_data();
    void leavingIsRefused();
    void leavesWhileJoining();
    void selectsAnother();
    void selectsAnotherWhileJoining();
    void failsAgainForAnotherRequest();
    void isOvertaken_data();
    void isOvertaken();
    void passkeyStaysSecret();
    void remembers();
    void remembersOneOfAName();
    void cannotRemember();
    void joinsAgainAfterTheHotspot();
    void leavesTheNetworkDuringTheHotspot();

private:
    /*! The daemons are there, and the station is in the network. */
    void joinHouse();
    /*! On the radio that has joined a network. */
    void startHotspot(ZopObject *control);
    void finishScan() { m_manager->finishScan(m_wifi); }
    QString last(const char *name) { return m_status->text(name); }
};

void ManagedRadioJoiningTest::joinHouse()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

void ManagedRadioJoiningTest::joins()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    const BusCall call = join();
    QCOMPARE(call.pathAt(1), m_wifi);
    QCOMPARE(call.pathAt(2), m_house);
    const BusSettings profile = call.settings(0);
    QCOMPARE(profile[QStringLiteral("connection")][QStringLiteral("type")].toString(),
             QStringLiteral("802-11-wireless"));
    QCOMPARE(profile[QStringLiteral("connection")][QStringLiteral("autoconnect")], QVariant(false));
    QCOMPARE(profile[QStringLiteral("802-11-wireless")][QStringLiteral("ssid")].toByteArray(), QByteArray("House"));
    QVERIFY(!profile[QStringLiteral("802-11-wireless")].contains(QStringLiteral("hidden")));
    const QVariantMap options = call.map(3);
    QCOMPARE(options.size(), 2);
    QCOMPARE(options[QStringLiteral("persist")].toString(), QStringLiteral("volatile"));
    QCOMPARE(options[QStringLiteral("bind-activation")].toString(), QStringLiteral("dbus-client"));
    QCOMPARE(autoconnects(), QList<bool> {false});
    // It is in the network as soon as it has been let in.
    for (const uint state : {50U, 60U, 40U, 50U})
        m_manager->setState(m_wifi, state);
    QVERIFY(connect.isOpen());
    QCOMPARE(m_status->lines(), QStringList());
    m_manager->setState(m_wifi, 70);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(connect.operation->results().first().bssid(), QLatin1String(HouseBssid));
    QVERIFY(m_service->connected());
    m_manager->activate(m_wifi);
    m_manager->setState(m_wifi, 110);
    m_manager->setState(m_wifi, 30);
    QCOMPARE(told(2), (QStringList {connected(HouseBssid, 0), disconnected(HouseBssid)}));
    // Still the manager joins nothing by itself: the network is wanted.
    QCOMPARE(autoconnects(), QList<bool> {false});
}

void ManagedRadioJoiningTest::profileByProtection_data()
{
    QTest::addColumn<uint>("rsn");
    QTest::addColumn<bool>("hasPasskey");
    QTest::addColumn<QString>("keyManagement");
    QTest::addColumn<QString>("status");
    QTest::newRow("WPA2") << uint(FakeManager::Wpa2) << true << QStringLiteral("wpa-psk")
                          << connected("0a:00:00:00:00:05", 0, "Other");
    QTest::newRow("WPA2 and WPA3") << uint(FakeManager::Wpa2Wpa3) << true << QStringLiteral("wpa-psk")
                                   << connected("0a:00:00:00:00:05", 0, "Other");
    QTest::newRow("WPA3") << uint(FakeManager::Wpa3) << true << QStringLiteral("sae")
                          << connected("0a:00:00:00:00:05", 0, "Other", "WPA3-SAE");
    QTest::newRow("OWE") << uint(FakeManager::Owe) << false << QStringLiteral("owe")
                         << connected("0a:00:00:00:00:05", 0, "Other", "OWE");
    QTest::newRow("open") << 0U << false << QString() << connected("0a:00:00:00:00:05", 0, "Other", "NONE", "NONE");
}

void ManagedRadioJoiningTest::profileByProtection()
{
    QFETCH(const bool, hasPasskey);
    QFETCH(const uint, rsn);
    const QString other = addAccessPoint("Other", 5, rsn, 60);
    addAccessPoint("Other", 6, rsn, 40);
    // Stronger, and nothing for this passkey, or for none.
    addAccessPoint("Other", 7, hasPasskey ? 0U : uint(FakeManager::Wpa2), 90);
    startDaemons();
    Connect connect(connectTo("Other", hasPasskey ? Passkey : nullptr));
    const BusCall call = join();
    QCOMPARE(call.pathAt(2), other);
    const QVariantMap security = call.settings(0)[QStringLiteral("802-11-wireless-security")];
    QTEST(security[QStringLiteral("key-mgmt")].toString(), "keyManagement");
    QCOMPARE(security[QStringLiteral("psk")].toString(), hasPasskey ? QLatin1String(Passkey) : QLatin1String());
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QTEST(told(1).first(), "status");
}

/*! Perhaps it does not tell its name. */
void ManagedRadioJoiningTest::networkOutOfSight()
{
    startDaemons();
    Connect connect(connectTo("Hidden", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 0);
    finishScan();
    const BusCall call = join();
    QCOMPARE(call.pathAt(2), QStringLiteral("/"));
    QCOMPARE(call.settings(0)[QStringLiteral("802-11-wireless")][QStringLiteral("hidden")], QVariant(true));
    QCOMPARE(call.settings(0)[QStringLiteral("802-11-wireless-security")][QStringLiteral("key-mgmt")].toString(),
             QStringLiteral("wpa-psk"));
}

void ManagedRadioJoiningTest::wrongPasskey()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->setState(m_wifi, 50);
    m_manager->setState(m_wifi, 60);
    m_manager->setState(m_wifi, 40);
    m_manager->setState(m_wifi, 50);
    // The manager would ask somebody for another passkey, and wait.
    m_manager->setState(m_wifi, 60, 8);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("DeactivateConnection")));
    join(2);
    QVERIFY(connect.isOpen());
    refusePasskey();
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(told(1), QStringList {wrongKey(0)});
    // Nothing is wanted any longer.
    QTRY_COMPARE(autoconnects(), (QList<bool> {false, true}));
    finishScan();
    told(2);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 2);
}

void ManagedRadioJoiningTest::oneFailureIsNoWrongPasskey()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    refusePasskey();
    join(2);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(told(1), QStringList {connected(HouseBssid, 0)});
    // It does not count for later.
    m_manager->deactivate(m_wifi, 53);
    told(2);
    finishScan();
    join(3);
    refusePasskey();
    join(4);
    m_manager->activate(m_wifi);
    QCOMPARE(told(4).at(3), connected(HouseBssid, 0));
}

/*! It is heard after the manager has been asked to join another one, and says nothing of that. */
void ManagedRadioJoiningTest::failureOfTheFormerNetwork()
{
    const QString office = addAccessPoint("Office", 5, FakeManager::Wpa2);
    joinHouse();
    m_manager->hold(QStringLiteral("AddAndActivateConnection2"));
    Connect connect(connectTo("Office", Passkey));
    join(2);
    m_manager->fail(m_wifi, 53);
    m_manager->release(QStringLiteral("AddAndActivateConnection2"));
    m_manager->setState(m_wifi, 50);
    fail(7);
    // That it is not in sight would have to be seen first.
    QCOMPARE(join(3).pathAt(2), office);
    QCOMPARE(m_manager->calls(QStringLiteral("RequestScan")).size(), 0);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

/*! With WPA3 the manager says that it has not found the network. */
void ManagedRadioJoiningTest::wrongPasskeyBeforeTheAssociation()
{
    addAccessPoint("Safe", 5, FakeManager::Wpa3);
    startDaemons();
    Connect connect(connectTo("Safe", Passkey));
    for (int attempt = 1; attempt <= 2; ++attempt) {
        join(attempt);
        m_manager->setState(m_wifi, 50);
        fail(53);
        QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan"), attempt));
        QVERIFY(connect.isOpen());
        finishScan();
    }
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QStringList events = told(3);
    events = events.filter(QStringLiteral("TEMP"));
    QCOMPARE(events, QStringList {wrongKey(0, "Safe")});
}

void ManagedRadioJoiningTest::wrongPasskeyThatTheSupplicantTells()
{
    BusObjects supplicant(QStringLiteral("fi.w1.wpa_supplicant1"), QStringLiteral("/fi/w1/wpa_supplicant1"));
    const QString interface = QStringLiteral("/fi/w1/wpa_supplicant1/Interfaces/0");
    supplicant.add(interface,
                   {{QStringLiteral("fi.w1.wpa_supplicant1.Interface"), {{QStringLiteral("AuthStatusCode"), 0}}}});
    QVERIFY(supplicant.start());
    addAccessPoint("Safe", 5, FakeManager::Wpa3);
    startDaemons();
    Connect connect(connectTo("Safe", Passkey));
    for (int attempt = 1; attempt <= 2; ++attempt) {
        join(attempt);
        m_manager->setState(m_wifi, 50);
        // The supplicant tells it again and again.
        const bool left = QTest::qWaitFor(
            [&] {
                supplicant.change(interface, {{QStringLiteral("AuthStatusCode"), 0}});
                supplicant.change(interface, {{QStringLiteral("AuthStatusCode"), 1}});
                return m_manager->calls(QStringLiteral("DeactivateConnection")).size() == attempt;
            },
            Patience);
        QVERIFY(left);
    }
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(told(1), QStringList {wrongKey(0, "Safe")});
}

void ManagedRadioJoiningTest::outOfRange()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->removeAccessPoint(m_house);
    fail(53);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    finishScan();
    QTRY_COMPARE(told(2).count(NotFound), 1);
    QVERIFY(connect.isOpen());
    // It is joined when it comes into sight.
    addAccessPoint("House", 2, FakeManager::Wpa2);
    finishScan();
    join(2);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(toldUntil(connected("0a:00:00:00:00:02", 0)).count(NotFound), 1);
}

void ManagedRadioJoiningTest::openNetworkFails()
{
    startDaemons();
    Connect connect(connectTo("Guest", nullptr));
    join();
    m_manager->setState(m_wifi, 50);
    fail(11);
    QCOMPARE(told(1), QStringList {NotFound});
    QVERIFY(connect.isOpen());
    finishScan();
    join(2);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

void ManagedRadioJoiningTest::fallbackComesAfterTheEvent()
{
    const QString users = joinAsTheUser("Guest", m_guest);
    startDaemons();
    QVERIFY(m_service->connected());
    Connect connect(connectTo("House", Passkey));
    join();
    QTRY_VERIFY(!m_service->connected());
    refusePasskey();
    join(2);
    refusePasskey();
    // At once, as the manager does when it may.
    m_manager->beginActivation(m_wifi, users, m_guest);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(told(3),
             (QStringList {disconnected(GuestBssid), wrongKey(0), connected(GuestBssid, -1, "Guest", "NONE", "NONE")}));
    QTRY_VERIFY(m_service->connected());
}

/*! Somebody has the radio join another network while an application waits for its own. */
void ManagedRadioJoiningTest::othersTakeTheRadio()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    joinAsTheUser("Guest", m_guest);
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QCOMPARE(told(2), (QStringList {wrongKey(0), connected(GuestBssid, -1, "Guest", "NONE", "NONE")}));
}

void ManagedRadioJoiningTest::othersTakeTheRadioBeforeTheAnswer()
{
    startDaemons();
    QCOMPARE(request("wnet_new", "{'ssid':'Far','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    Request select(&control, "wnet_select", "0");
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    joinAsTheUser("Guest", m_guest);
    QCOMPARE(select.outcome(), QStringLiteral("ok"));
    QCOMPARE(told(2), (QStringList {wrongKey(0, "Far"), connected(GuestBssid, -1, "Guest", "NONE", "NONE")}));
}

/*! They have not been let in. */
void ManagedRadioJoiningTest::othersLeaveTheRadioBeforeTheAnswer()
{
    startDaemons();
    Connect connect(connectTo("Far", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    m_manager->beginActivation(m_wifi, m_manager->addProfile({}), m_guest);
    m_manager->setStates(m_wifi, {{50, 0}, {110, 0}});
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QVERIFY(told(1).constLast().contains(QStringLiteral("SCAN-STARTED")));
    m_manager->setState(m_wifi, 30);
    finishScan();
    QCOMPARE(join().pathAt(2), QStringLiteral("/"));
    QVERIFY(connect.isOpen());
}

/*! From the first of the two requests on a client takes any network for its own. */
void ManagedRadioJoiningTest::roamsBeforeTheSelect()
{
    joinAsTheUser("House", m_house);
    startDaemons();
    const auto roamTo = [this](int number) {
        m_manager->change(m_wifi,
                          {{QStringLiteral("ActiveAccessPoint"),
                            QVariant::fromValue(QDBusObjectPath(addAccessPoint("House", number, FakeManager::Wpa2)))}});
    };
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    roamTo(2);
    finishScan();
    QVERIFY(!told(1).first().contains(QStringLiteral("wifi_status=")));
    QCOMPARE(request("wnet_select", "0"), QStringLiteral("ok"));
    m_manager->activate(m_wifi);
    QCOMPARE(told(3).mid(1),
             (QStringList {disconnected(HouseBssid), connected(GuestBssid, 0, "Guest", "NONE", "NONE")}));
    // It is told when nothing is selected.
    joinAsTheUser("House", m_house);
    toldUntil(connected(HouseBssid, -1));
    forget();
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    roamTo(4);
    QCOMPARE(told(1), QStringList {connected("0a:00:00:00:00:04", -1)});
}

/*! What the radio was in goes on until the manager has taken the new one up; that may be a while. */
void ManagedRadioJoiningTest::otherNetworkCompletesNothing()
{
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    Connect connect(connectTo("Far", Passkey));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    const QString other = addAccessPoint("Guest", 4, 0);
    m_manager->change(m_wifi, {{QStringLiteral("ActiveAccessPoint"), QVariant::fromValue(QDBusObjectPath(other))}});
    finishScan();
    join();
    QVERIFY(connect.isOpen());
    QCOMPARE(told(2).filter(QStringLiteral("wifi_status=")), QStringList());
    QCOMPARE(told(2).constLast(), disconnected(GuestBssid));
}

void ManagedRadioJoiningTest::refusal()
{
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"),
                      QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("Not authorized to control networking."));
    Connect connect(connectTo("House", Passkey));
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Not authorized to control networking."));
    QTRY_COMPARE(autoconnects(), (QList<bool> {false, true}));
    QVERIFY(m_service->connected());
    QCOMPARE(request("wnet_select", "0"), QStringLiteral("9 Not authorized to control networking."));
    QCOMPARE(m_status->lines(), QStringList());
    m_manager->allow(QStringLiteral("AddAndActivateConnection2"));
    QCOMPARE(request("wnet_select", "1"), QStringLiteral("3 no such network"));
    QCOMPARE(request("wnet_select", "00"), QStringLiteral("3 no such network"));
}

/*! What has been left is not joined by itself because of it. */
void ManagedRadioJoiningTest::refusalAfterLeaving()
{
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    QCOMPARE(request("wnet_disableall"), QStringLiteral("ok"));
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"),
                      QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("Not authorized to control networking."));
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    QCOMPARE(request("wnet_select", "0"), QStringLiteral("9 Not authorized to control networking."));
    // It asks for that after whatever it has asked for before.
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QVERIFY(!autoconnects().isEmpty());
    QVERIFY(!autoconnects().contains(true));
}

void ManagedRadioJoiningTest::leaves()
{
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    QCOMPARE(request("wnet_disableall"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Disconnect")).size(), 1);
    QCOMPARE(told(1), QStringList {disconnected(GuestBssid)});
    QCOMPARE(autoconnects(), QList<bool> {false});
    // There is nothing to be left.
    QCOMPARE(request("wnet_disableall"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Disconnect")).size(), 1);
}

void ManagedRadioJoiningTest::leavingIsRefused_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("it has ended by itself") << QStringLiteral("NotActive") << QStringLiteral("ok");
    QTest::newRow("it is not to be left") << QStringLiteral("NotAllowed") << QStringLiteral("13 no");
}

void ManagedRadioJoiningTest::leavingIsRefused()
{
    QFETCH(const QString, error);
    joinAsTheUser("Guest", m_guest);
    startDaemons();
    m_manager->refuse(QStringLiteral("Disconnect"), QStringLiteral("org.freedesktop.NetworkManager.Device.") + error,
                      QStringLiteral("no"));
    QTEST(request("wnet_disableall"), "outcome");
}

void ManagedRadioJoiningTest::leavesWhileJoining()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_service->disconnectAccessPoint();
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Cancelling connect operation, due to issued disconnect command"));
    QTRY_COMPARE(m_manager->value<uint>(m_wifi, QStringLiteral("State")), 30U);
    finishScan();
    told(1);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 1);
    QCOMPARE(m_status->lines().filter(QStringLiteral("wifi_status")), QStringList());
}

void ManagedRadioJoiningTest::selectsAnother()
{
    startDaemons();
    Connect first(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QCOMPARE(first.outcome(), QStringLiteral("ok"));
    Connect second(connectTo("Guest", nullptr));
    QCOMPARE(join(2).pathAt(2), m_guest);
    toldUntil(disconnected(HouseBssid));
    m_manager->activate(m_wifi);
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QCOMPARE(told(3),
             (QStringList {connected(HouseBssid, 0), disconnected(HouseBssid),
                           connected(GuestBssid, 1, "Guest", "NONE", "NONE")}));
    // The other one is not wanted any more.
    m_manager->deactivate(m_wifi, 53);
    told(4);
    finishScan();
    QCOMPARE(join(3).pathAt(2), m_guest);
}

/*! The radio has to be free first. */
void ManagedRadioJoiningTest::selectsAnotherWhileJoining()
{
    startDaemons();
    QCOMPARE(request("wnet_new", "{'ssid':'House','key_mgmt':'WPA-PSK','psk':'a passkey'}"), QStringLiteral("ok"));
    QCOMPARE(request("wnet_select", "0"), QStringLiteral("ok"));
    m_manager->setState(m_wifi, 50);
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    QCOMPARE(request("wnet_select", "1"), QStringLiteral("ok"));
    QCOMPARE(join(2).pathAt(2), m_guest);
    QCOMPARE(m_manager->calls(QStringLiteral("DeactivateConnection")).size(), 1);
}

/*! What has failed before it was asked for does not count. */
void ManagedRadioJoiningTest::failsAgainForAnotherRequest()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    refusePasskey();
    join(2);
    QCOMPARE(request("wnet_new", "{'ssid':'House','key_mgmt':'WPA-PSK','psk':'another passkey'}"),
             QStringLiteral("ok"));
    QCOMPARE(request("wnet_select", "1"), QStringLiteral("ok"));
    join(3);
    refusePasskey();
    join(4);
    QCOMPARE(m_status->lines(), QStringList());
    refusePasskey();
    QCOMPARE(told(1), QStringList {wrongKey(1)});
}

void ManagedRadioJoiningTest::isOvertaken_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::newRow("by another network") << QByteArray("wnet_select") << QByteArray("1");
    QTest::newRow("by leaving") << QByteArray("wnet_disableall") << QByteArray();
}

/*! Its client may wait for another network when the reply comes: a refusal would be taken for that one's. */
void ManagedRadioJoiningTest::isOvertaken()
{
    QFETCH(const QByteArray, message);
    QFETCH(const QByteArray, dat);
    startDaemons();
    QCOMPARE(request("wnet_new", "{'ssid':'Far','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    Request select(&control, "wnet_select", "0");
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    Request other(&control, message.constData(), dat.isEmpty() ? nullptr : dat.constData());
    QCOMPARE(select.outcome(), QStringLiteral("ok"));
    QCOMPARE(other.outcome(), QStringLiteral("ok"));
    // It is not wanted any longer.
    addAccessPoint("Far", 5, 0);
    finishScan();
    Connect connect(connectTo("House", Passkey));
    const int before = message == "wnet_select" ? 1 : 0;
    QCOMPARE(join(before + 1).pathAt(2), m_house);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

void ManagedRadioJoiningTest::passkeyStaysSecret()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    refusePasskey();
    join(2);
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"), QStringLiteral("org.freedesktop.DBus.Error.Failed"),
                      QStringLiteral("no"));
    refusePasskey();
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QByteArrayList places = everythingReadable(m_daemon->root(), m_daemon->process().processId());
    places += m_daemon->process().errors();
    places += m_daemon->process().output();
    QVERIFY(places.join().contains("House"));
    for (const QByteArray &place : places)
        QVERIFY(!place.contains(Passkey));
}

void ManagedRadioJoiningTest::remembers()
{
    startDaemons({QStringLiteral("--remember")});
    Connect connect(connectTo("House", Passkey));
    const BusCall call = join();
    QCOMPARE(call.map(3), (QVariantMap {{QStringLiteral("persist"), QStringLiteral("volatile")}}));
    refusePasskey();
    join(2);
    // Only what has been right.
    QCOMPARE(m_manager->calls(QStringLiteral("Update2")).size(), 0);
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Update2")));
    const BusCall stored = m_manager->calls(QStringLiteral("Update2")).first();
    QVERIFY(!stored.settings(0)[QStringLiteral("connection")].contains(QStringLiteral("autoconnect")));
    QCOMPARE(stored.settings(0)[QStringLiteral("802-11-wireless-security")][QStringLiteral("psk")].toString(),
             QLatin1String(Passkey));
    QCOMPARE(stored.arguments.at(1).toUInt(), 1U);
}

void ManagedRadioJoiningTest::startHotspot(ZopObject *control)
{
    Request start(control, "start",
                  R"({"type":"lan","lantype":"wlanap","wantype":"bridge","lancfg":{"dhcp_lease_time":"120",)"
                  R"("gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},"lanprofile":{"ssid":"car",)"
                  R"("passphrase":"drive safely 8","mhs_band":"2.4","max_num_sta":5,"security_type":"wpa2",)"
                  R"("autoshutdown_time":0,"privacy":false,"block_conn":false}})");
    const BusSettings profile = join(2).settings(0);
    QCOMPARE(profile[QStringLiteral("802-11-wireless")][QStringLiteral("mode")].toString(), QStringLiteral("ap"));
    m_manager->change(m_wifi, {{QStringLiteral("Mode"), 3U}});
    m_manager->activate(m_wifi);
    QCOMPARE(start.outcome(), QStringLiteral("ok"));
}

/*! Only what was stored by an earlier run for the same network goes, and not before there is another one. */
void ManagedRadioJoiningTest::remembersOneOfAName()
{
    const auto store = [this](const char *ssid, const char *mark) {
        BusSettings settings {
            {QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
            {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), QByteArray(ssid)}}}};
        const QMap<QString, QString> data {{QString::fromLatin1(mark), QStringLiteral("yes")}};
        settings[QStringLiteral("user")].insert(QStringLiteral("data"), QVariant::fromValue(data));
        return m_manager->addProfile(settings);
    };
    store("House", "users.own");
    store("Guest", "morvek.kept");
    const QString old = store("House", "morvek.kept");
    m_manager->hold(QStringLiteral("Update2"));
    startDaemons({QStringLiteral("--remember")});
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Update2")));
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Delete")).size(), 0);
    m_manager->release(QStringLiteral("Update2"));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Delete")));
    finishScan();
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    const QVector<BusCall> deleted = m_manager->calls(QStringLiteral("Delete"));
    QCOMPARE(deleted.size(), 1);
    QCOMPARE(deleted.first().path, old);
}

void ManagedRadioJoiningTest::cannotRemember()
{
    m_manager->refuse(QStringLiteral("Update2"),
                      QStringLiteral("org.freedesktop.NetworkManager.Settings.PermissionDenied"),
                      QStringLiteral("Insufficient privileges"));
    startDaemons({QStringLiteral("--remember")});
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->activate(m_wifi);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(m_daemon->process().errors().contains(
        "morvek-hostd: the network manager does not remember \"House\": Insufficient privileges\n"));
}

void ManagedRadioJoiningTest::joinsAgainAfterTheHotspot()
{
    joinHouse();
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    const Seen hotspot {QLatin1String(TetheringStatus)};
    startHotspot(&control);
    QTRY_COMPARE(last("wifi_status"), QString());
    QCOMPARE(request("wnet_select", "0"), QStringLiteral("13 the hotspot has the radio"));
    // The radio is not asked for while it is an access point.
    finishScan();
    QTRY_COMPARE(last("last_event"), QStringLiteral("CTRL-EVENT-SCAN-RESULTS "));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 2);

    Request stop(&control, "stop");
    QVERIFY(m_manager->waitForCalls(QStringLiteral("DeactivateConnection")));
    m_manager->change(m_wifi, {{QStringLiteral("Mode"), 2U}});
    m_manager->setState(m_wifi, 30);
    QCOMPARE(stop.outcome(), QStringLiteral("ok"));
    QCOMPARE(join(3).settings(0)[QStringLiteral("802-11-wireless")][QStringLiteral("ssid")].toByteArray(),
             QByteArray("House"));
    m_manager->activate(m_wifi);
    QTRY_VERIFY(last("wifi_status").contains(QLatin1String("House")));
    QCOMPARE(m_manager->calls(QStringLiteral("ActivateConnection")).size(), 0);
}

void ManagedRadioJoiningTest::leavesTheNetworkDuringTheHotspot()
{
    joinHouse();
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    const Seen hotspot {QLatin1String(TetheringStatus)};
    startHotspot(&control);
    QCOMPARE(request("wnet_disableall"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("Disconnect")).size(), 0);
    QTRY_COMPARE(hotspot.text("state"), QStringLiteral("ACTIVE"));
    QCOMPARE(Request(&control, "stop").outcome(), QStringLiteral("ok"));
    m_manager->change(m_wifi, {{QStringLiteral("Mode"), 2U}});
    finishScan();
    QTRY_COMPARE(last("last_event"), QStringLiteral("CTRL-EVENT-SCAN-RESULTS "));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 2);
}

QTEST_GUILESS_MAIN(ManagedRadioJoiningTest)

#include "tst_managedradio_joining.moc"
