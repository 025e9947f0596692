// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "protectedby.h"
#include "radiocase.h"
#include "watched.h"

using namespace morvek;

namespace {

using Scan = Watched<AsyncWifiScanOperation>;
using Connect = Watched<AsyncWifiConnectOperation>;

const QString WrongPasskey = QStringLiteral("-1 Failed to connect to Access Point");
const char *const Unfitting = "not-the-passkey";
/*! What hostapd calls the access points of House. */
const QStringList House {QStringLiteral("02:00:00:00:02:00"), QStringLiteral("02:00:00:00:03:00")};

/*! BSSID NAME FREQUENCY SECURITY KEY-MANAGEMENT CIPHERS, the last three as numbers of the library's flags. */
QString lineOf(const WifiAccessPoint &one)
{
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(one.bssid(), one.ssid())
        .arg(one.frequency())
        .arg(int(one.securityProtocols()))
        .arg(int(one.keyManagementTypes()))
        .arg(int(one.ciphers()));
}

} // namespace

/*! The unit's station among real access points: what the kernel, the supplicant and the manager really do. */
class RadioStationTest : public RadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void scans();
    void joins_data();
    void joins();
    void wrongPasskey_data();
    void wrongPasskey();
    void wrongPasskeyBesideTheUsersOwnNetwork();
    void comesIntoRangeAndGoes();
    void accessPointEnds();
    void roams();
    void powerOffAndOn();
    void killedDaemonLeavesNothing();
    void passkeysLeaveNoTrace();

private:
    QByteArray m_profiles;
};

void RadioStationTest::initTestCase()
{
    startManager();
    m_profiles = Air::profiles();
    begin();
}

/*! Everything is as it was. */
void RadioStationTest::cleanupTestCase()
{
    end();
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable"), GuestPatience);
    QCOMPARE(Air::profiles(), m_profiles);
    QCOMPARE(shell("nmcli -t -f WIFI radio"), QByteArray("enabled"));
    QCOMPARE(shell("nmcli -t -g GENERAL.AUTOCONNECT device show wlan0"), QByteArray("yes"));
    QCOMPARE(Air::associated(), QByteArray());
}

void RadioStationTest::scans()
{
    QStringList lines;
    Scan scan(wifi().scan());
    QCOMPARE(scan.outcome(GuestPatience), QStringLiteral("ok"));
    const QList<WifiAccessPoint> results = scan.operation->results();
    for (const WifiAccessPoint &one : results) {
        lines += lineOf(one);
        QVERIFY2(one.rssi() < -20 && one.rssi() > -100, qPrintable(QString::number(one.rssi())));
        QCOMPARE(int(one.serviceSet()), int(WifiServiceSetEss));
    }
    lines.sort();
    // A protocol and a key management that the library knows nothing of add nothing; the network does not look open.
    const QStringList expected {
        QStringLiteral("02:00:00:00:01:00 Open 2412 1 1 1"),  QStringLiteral("02:00:00:00:01:01 Wpa2 2412 8 2 2"),
        QStringLiteral("02:00:00:00:01:02 Mixed 2412 8 2 2"), QStringLiteral("02:00:00:00:01:03 Wpa3 2412 8 0 2"),
        QStringLiteral("02:00:00:00:01:04 Owe 2412 8 0 2"),   QStringLiteral("02:00:00:00:02:00 House 2437 8 2 2"),
        QStringLiteral("02:00:00:00:03:00 House 2462 8 2 2")};
    QCOMPARE(lines, expected);
}

void RadioStationTest::joins_data()
{
    QTest::addColumn<QByteArray>("passkey");
    QTest::addColumn<QByteArray>("bssid");
    QTest::newRow("Open") << QByteArray() << QByteArray("02:00:00:00:01:00");
    QTest::newRow("Wpa2") << QByteArray("passkey-of-wpa2") << QByteArray("02:00:00:00:01:01");
    QTest::newRow("Mixed") << QByteArray("passkey-of-mixed") << QByteArray("02:00:00:00:01:02");
    QTest::newRow("Wpa3") << QByteArray("passkey-of-wpa3") << QByteArray("02:00:00:00:01:03");
    QTest::newRow("Owe") << QByteArray() << QByteArray("02:00:00:00:01:04");
}

void RadioStationTest::joins()
{
    QFETCH(QByteArray, passkey);
    QFETCH(QByteArray, bssid);
    const QString ssid = QString::fromLatin1(QTest::currentDataTag());
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    QCOMPARE(join(QTest::currentDataTag(), passkey.constData()), QStringLiteral("ok"));
    QCOMPARE(wifi().connectedAccessPoint().ssid(), ssid);
    QCOMPARE(wifi().connectedAccessPoint().bssid(), QString::fromLatin1(bssid));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().toBool(), true);
    QCOMPARE(Air::associated(), bssid);
    // The interface gets its address from the server behind the access point, and the kernel has the same one.
    QTRY_VERIFY_WITH_TIMEOUT(radioAddresses().startsWith(QLatin1String("10.5.0.10")), GuestPatience);
    QCOMPARE(Air::addresses("wlan0"), radioAddresses().toLatin1());
    leave();
    QTRY_COMPARE_WITH_TIMEOUT(radioAddresses(), QString(), GuestPatience);
    QTRY_COMPARE_WITH_TIMEOUT(Air::addresses("wlan0"), QByteArray(), GuestPatience);
}

void RadioStationTest::wrongPasskey_data()
{
    QTest::addColumn<QByteArray>("passkey");
    QTest::newRow("Wpa2") << QByteArray("passkey-of-wpa2");
    QTest::newRow("Mixed") << QByteArray("passkey-of-mixed");
    QTest::newRow("Wpa3") << QByteArray("passkey-of-wpa3");
}

void RadioStationTest::wrongPasskey()
{
    QFETCH(QByteArray, passkey);
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    QCOMPARE(join(QTest::currentDataTag(), Unfitting), WrongPasskey);
    QVERIFY(!wifi().connected());
    // It was not joined at any time, and may be joined with the right one.
    QCOMPARE(join(QTest::currentDataTag(), passkey.constData()), QStringLiteral("ok"));
    QCOMPARE(changed.count(), 1);
    leave();
}

/*! The user's own network is taken up again by the manager, which must not pass for what was asked for. */
void RadioStationTest::wrongPasskeyBesideTheUsersOwnNetwork()
{
    shell("nmcli connection add type wifi ifname wlan0 con-name Home ssid Open");
    shell("nmcli connection up Home"); // who has left a network by an application is not joined to one by itself
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().ssid(), QStringLiteral("Open"), GuestPatience);
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    QCOMPARE(join("Wpa2", Unfitting), WrongPasskey);
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("Wpa2"));
    leave();
    shell("nmcli connection delete Home");
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), GuestPatience);
    QTRY_VERIFY_WITH_TIMEOUT(!wifi().connected(), GuestPatience);
}

void RadioStationTest::comesIntoRangeAndGoes()
{
    Air::setInRange(2, false);
    Air::setInRange(3, false);
    Connect connect(wifi().connectAccessPoint(protectedBy("passkey-of-house", "House")));
    // The manager gives up after 25 s; the application does not hear of that.
    Scan scan(wifi().scan());
    QCOMPARE(scan.outcome(GuestPatience), QStringLiteral("ok"));
    QVERIFY(connect.isOpen());
    Air::setInRange(2, true);
    QCOMPARE(connect.outcome(GuestPatience), QStringLiteral("ok"));
    QCOMPARE(wifi().connectedAccessPoint().bssid(), House.at(0));

    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    Air::setInRange(2, false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, GuestPatience);
    QCOMPARE(wifi().connected(), false);
    Air::setInRange(2, true);
    Air::setInRange(3, true);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, GuestPatience);
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("House"));
    leave();
}

void RadioStationTest::accessPointEnds()
{
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    Air::setServing(1, false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, GuestPatience);
    QCOMPARE(wifi().connected(), false);
    QTRY_COMPARE_WITH_TIMEOUT(radioAddresses(), QString(), GuestPatience);
    Air::setServing(1, true);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, GuestPatience);
    QCOMPARE(wifi().connectedAccessPoint().bssid(), QStringLiteral("02:00:00:00:01:01"));
    leave();
}

/*! From one access point to the other of the same name, when asked to and when the present one is gone. */
void RadioStationTest::roams()
{
    QCOMPARE(join("House", "passkey-of-house"), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!radioAddresses().isEmpty(), GuestPatience);
    const QString address = radioAddresses();
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    const int first = House.indexOf(wifi().connectedAccessPoint().bssid());
    QVERIFY(first != -1);
    Air::askToRoam(first + 2);
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().bssid(), House.at(1 - first), GuestPatience);
    QCOMPARE(Air::associated(), House.at(1 - first).toLatin1());
    Air::setInRange(3 - first, false);
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().bssid(), House.at(first), GuestPatience);
    QCOMPARE(Air::associated(), House.at(first).toLatin1());
    Air::setInRange(3 - first, true);
    QVERIFY(changed.isEmpty());
    QCOMPARE(radioAddresses(), address);
    leave();
}

void RadioStationTest::powerOffAndOn()
{
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QSignalSpy powered(&wifi(), &WifiService::poweredChanged);
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    wifi().powerOff();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 1, GuestPatience);
    QCOMPARE(wifi().powered(), false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, GuestPatience);
    QCOMPARE(shell("nmcli -t -f WIFI radio"), QByteArray("disabled"));
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), GuestPatience);
    wifi().powerOn();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 2, GuestPatience);
    QCOMPARE(wifi().powered(), true);
    // What was joined last stays wanted.
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, GuestPatience);
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("Wpa2"));
    leave();
}

/*! What it had joined goes with it, and the user's own network is back as soon as it runs again. */
void RadioStationTest::killedDaemonLeavesNothing()
{
    shell("nmcli connection add type wifi ifname wlan0 con-name Home ssid Open");
    shell("nmcli connection up Home");
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().ssid(), QStringLiteral("Open"), GuestPatience);
    const QByteArray profiles = Air::profiles();
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QVERIFY(Air::profiles() != profiles);
    kill();
    QTRY_COMPARE_WITH_TIMEOUT(Air::profiles(), profiles, GuestPatience);
    QTRY_COMPARE_WITH_TIMEOUT(Air::profilesInMemory(), QByteArray(), GuestPatience);
    QCOMPARE(Air::activeProfiles(), QByteArray("Cable"));
    begin();
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), GuestPatience);
    QCOMPARE(placesOf({"passkey-of-wpa2"}), QByteArrayList());
    shell("nmcli connection delete Home");
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), GuestPatience);
}

void RadioStationTest::passkeysLeaveNoTrace()
{
    // The search does find what is there: what the manager writes on a disk, its log, and a process's arguments.
    for (const char *there : {"seen-bssids", "NetworkManager (version", "--intern-config=intern.conf"})
        QVERIFY2(!placesOf({there}).isEmpty(), there);
    QCOMPARE(Air::profilesInMemory(), QByteArray());
    QCOMPARE(placesOf({"passkey-of-wpa2", "passkey-of-mixed", "passkey-of-wpa3", "passkey-of-house", Unfitting}),
             QByteArrayList());
}

QTEST_GUILESS_MAIN(RadioStationTest)
#include "tst_radiostation.moc"
