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
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable"), Patience);
    QCOMPARE(Air::profiles(), m_profiles);
    QCOMPARE(shell("nmcli -t -f WIFI radio"), QByteArray("enabled"));
    QCOMPARE(shell("nmcli -t -g GENERAL.AUTOCONNECT device show wlan0"), QByteArray("yes"));
    QCOMPARE(Air::associated(), QByteArray());
}

void RadioStationTest::scans()
{
    // A protocol and a key management that the library knows nothing of add nothing; the network does not look open.
    const QStringList expected {
        QStringLiteral("02:00:00:00:01:00 Open 2412 1 1 1"),  QStringLiteral("02:00:00:00:01:01 Wpa2 2412 8 2 2"),
        QStringLiteral("02:00:00:00:01:02 Mixed 2412 8 2 2"), QStringLiteral("02:00:00:00:01:03 Wpa3 2412 8 0 2"),
        QStringLiteral("02:00:00:00:01:04 Owe 2412 8 0 2"),   QStringLiteral("02:00:00:00:02:00 House 2437 8 2 2"),
        QStringLiteral("02:00:00:00:03:00 House 2462 8 2 2")};
    const QDeadlineTimer patience(Patience);
    QStringList lines;
    QList<WifiAccessPoint> results;
    do { // a scan may miss an access point
        Scan scan(wifi().scan());
        QCOMPARE(scan.outcome(), QStringLiteral("ok"));
        results = scan.operation->results();
        lines.clear();
        for (const WifiAccessPoint &one : qAsConst(results))
            lines += lineOf(one);
        lines.sort();
    } while (lines.size() < expected.size() && !patience.hasExpired());
    QCOMPARE(lines, expected);
    for (const WifiAccessPoint &one : qAsConst(results)) {
        QVERIFY2(one.rssi() < -20 && one.rssi() > -100, qPrintable(QString::number(one.rssi())));
        QCOMPARE(int(one.serviceSet()), int(WifiServiceSetEss));
    }
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
    QTRY_VERIFY_WITH_TIMEOUT(radioAddresses().startsWith(QLatin1String("10.5.0.10")), Patience);
    QCOMPARE(Air::addresses("wlan0"), radioAddresses().toLatin1());
    leave();
    QTRY_COMPARE_WITH_TIMEOUT(radioAddresses(), QString(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(Air::addresses("wlan0"), QByteArray(), Patience);
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
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().ssid(), QStringLiteral("Open"), Patience);
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    QCOMPARE(join("Wpa2", Unfitting), WrongPasskey);
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("Wpa2"));
    leave();
    shell("nmcli connection delete Home");
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!wifi().connected(), Patience);
}

void RadioStationTest::comesIntoRangeAndGoes()
{
    Air::setInRange(2, false);
    Air::setInRange(3, false);
    Connect connect(wifi().connectAccessPoint(protectedBy("passkey-of-house", "House")));
    // The manager gives up after 25 s; the application does not hear of that.
    Scan scan(wifi().scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QVERIFY(connect.isOpen());
    Air::setInRange(2, true);
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(wifi().connectedAccessPoint().bssid(), House.at(0));

    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    Air::setInRange(2, false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(wifi().connected(), false);
    Air::setInRange(2, true);
    Air::setInRange(3, true);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, Patience);
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("House"));
    leave();
}

void RadioStationTest::accessPointEnds()
{
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    Air::setServing(1, false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(wifi().connected(), false);
    QTRY_COMPARE_WITH_TIMEOUT(radioAddresses(), QString(), Patience);
    Air::setServing(1, true);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, Patience);
    QCOMPARE(wifi().connectedAccessPoint().bssid(), QStringLiteral("02:00:00:00:01:01"));
    leave();
}

/*! From one access point to the other of the same name, when asked to and when the present one is gone. */
void RadioStationTest::roams()
{
    QCOMPARE(join("House", "passkey-of-house"), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!radioAddresses().isEmpty(), Patience);
    const QString address = radioAddresses();
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    const int first = House.indexOf(wifi().connectedAccessPoint().bssid());
    QVERIFY(first != -1);
    Air::askToRoam(first + 2);
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().bssid(), House.at(1 - first), Patience);
    QCOMPARE(Air::associated(), House.at(1 - first).toLatin1());
    QCOMPARE(radioAddresses(), address);
    QVERIFY(changed.isEmpty());
    // Here the supplicant has to look for it first. When that takes long, the manager has left the network meanwhile.
    Air::setInRange(3 - first, false);
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().bssid(), House.at(first), Patience);
    QCOMPARE(Air::associated(), House.at(first).toLatin1());
    Air::setInRange(3 - first, true);
    QTRY_COMPARE_WITH_TIMEOUT(radioAddresses(), address, Patience);
    leave();
}

void RadioStationTest::powerOffAndOn()
{
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QSignalSpy powered(&wifi(), &WifiService::poweredChanged);
    QSignalSpy changed(&wifi(), &WifiService::connectedChanged);
    wifi().powerOff();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 1, Patience);
    QCOMPARE(wifi().powered(), false);
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(shell("nmcli -t -f WIFI radio"), QByteArray("disabled"));
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), Patience);
    wifi().powerOn();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 2, Patience);
    QCOMPARE(wifi().powered(), true);
    // What was joined last stays wanted.
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, Patience);
    QCOMPARE(wifi().connectedAccessPoint().ssid(), QStringLiteral("Wpa2"));
    leave();
}

/*! What it had joined goes with it, and the user's own network is back as soon as it runs again. */
void RadioStationTest::killedDaemonLeavesNothing()
{
    shell("nmcli connection add type wifi ifname wlan0 con-name Home ssid Open");
    shell("nmcli connection up Home");
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().ssid(), QStringLiteral("Open"), Patience);
    const QByteArray profiles = Air::profiles();
    QCOMPARE(join("Wpa2", "passkey-of-wpa2"), QStringLiteral("ok"));
    QVERIFY(Air::profiles() != profiles);
    kill();
    QTRY_COMPARE_WITH_TIMEOUT(Air::profiles(), profiles, Patience);
    QTRY_COMPARE_WITH_TIMEOUT(Air::profilesInMemory(), QByteArray(), Patience);
    QCOMPARE(Air::activeProfiles(), QByteArray("Cable"));
    begin();
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), Patience);
    QCOMPARE(placesOf({"passkey-of-wpa2"}), QByteArrayList());
    shell("nmcli connection delete Home");
    QTRY_COMPARE_WITH_TIMEOUT(Air::associated(), QByteArray(), Patience);
}

void RadioStationTest::passkeysLeaveNoTrace()
{
    // The search does find what is there: what the manager writes on a disk, its log, arguments, and environments.
    QVERIFY(placesOf({"seen-bssids"}).contains("/guest/written"));
    QVERIFY(placesOf({"NetworkManager (version"}).contains("/run"));
    QVERIFY(placesOf({"--network"}).contains(QByteArray::number(daemon().process().processId())));
    QVERIFY(placesOf({"BENCH=/run/bench"}).contains(QByteArray::number(QCoreApplication::applicationPid())));
    QCOMPARE(Air::profilesInMemory(), QByteArray());
    QCOMPARE(placesOf({"passkey-of-wpa2", "passkey-of-mixed", "passkey-of-wpa3", "passkey-of-house", Unfitting}),
             QByteArrayList());
}

QTEST_GUILESS_MAIN(RadioStationTest)
#include "tst_radiostation.moc"
