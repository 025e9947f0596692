// SPDX-License-Identifier: Apache-2.0
#include "worldfixture.h"

using namespace morvek;

namespace {

/*!
 * At home, with a second access point of the same name that is weaker and a third, stronger one with another passkey;
 * an open café with a lease of its own, a garage, one that never answers, and one that is not in range.
 */
const char HomeScenario[] = R"({
    'delays': {'reply': 0, 'lease': 1, 'scan': 2, 'associate': 3},
    'interfaces': [
        {'name': 'wlan0', 'type': 'wifi', 'connected': true,
         'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0'], 'ip_gateway': ['192.168.1.1']}}],
    'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': [
        {'bssid': '02:00:00:00:00:01', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50,
         'flags': ['WPA2-PSK-CCMP', 'ESS'], 'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:02', 'ssid': 'Home', 'frequency': 5180, 'signal_level': -60,
         'flags': ['WPA2-PSK-CCMP', 'ESS'], 'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:03', 'ssid': 'Home', 'frequency': 2412, 'signal_level': -40,
         'flags': ['WPA2-PSK-CCMP', 'ESS'], 'passkey': 'wrong horse 8', 'in_range': false},
        {'bssid': '02:00:00:00:00:04', 'ssid': 'Cafe', 'frequency': 2462, 'signal_level': -70, 'flags': ['ESS'],
         'lease': {'ip_addresses': ['172.20.0.83/255.255.252.0'], 'ip_gateway': ['172.20.0.1']}},
        {'bssid': '02:00:00:00:00:05', 'ssid': 'Garage', 'frequency': 2412, 'signal_level': -57,
         'flags': ['WPA-PSK-TKIP', 'ESS'], 'passkey': 'open sesame 42'},
        {'bssid': '02:00:00:00:00:06', 'ssid': 'Mute', 'frequency': 2412, 'signal_level': -57,
         'flags': ['ESS'], 'passkey': 'silence is golden', 'answers': false},
        {'bssid': '02:00:00:00:00:07', 'ssid': 'Far', 'frequency': 2412, 'signal_level': -90, 'flags': ['ESS'],
         'passkey': 'silence is golden', 'in_range': false}]}
})";

const QString Down = QStringLiteral("wlan0: connected=false ip_addresses=[] ip_gateway=[] up=false");
const QString NoDefault = QStringLiteral("status: default_interface=");
const QString Up = QStringLiteral("wlan0: up=true");
const QString Leased = QStringLiteral("wlan0: connected=true ip_addresses=[\"192.168.1.7/255.255.255.0\"] "
                                      "ip_gateway=[\"192.168.1.1\"] manual=no");
const QString Default = QStringLiteral("status: default_interface=wlan0");

QString bssid(int n)
{
    return QStringLiteral("02:00:00:00:00:%1").arg(n, 2, 10, QLatin1Char('0'));
}

QString left(int n, int reason)
{
    return QStringLiteral("wifi: last_event=CTRL-EVENT-DISCONNECTED bssid=%1 reason=%2 -wifi_status")
        .arg(bssid(n))
        .arg(reason);
}

QString joined(int n, int identifier, const char *ssid, const char *keyManagement, const char *cipher)
{
    return QStringLiteral(
               "wifi: last_event=CTRL-EVENT-CONNECTED - Connection to %1 completed [id=%2 id_str=] "
               "wifi_status={\"bssid\":\"%1\",\"key_mgmt\":\"%4\",\"pairwise_cipher\":\"%5\",\"ssid\":\"%3\"}")
        .arg(bssid(n), QString::number(identifier), QLatin1String(ssid), QLatin1String(keyManagement),
             QLatin1String(cipher));
}

QString home(int n)
{
    return joined(n, 0, "Home", "WPA2-PSK", "CCMP");
}

} // namespace

class SimulatedRadioTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void start();
    void startsDisconnected();
    void startsWithTheLeaseOfTheAccessPoint();

    void scans();
    void everyScanIsToldAnew();
    void scansAreJoined();
    void scanEndsWithThePower();
    void scanTakesItsTime();

    void identifiers();
    void joinsWithThePasskey();
    void joinsAnOpenNetwork();
    void joinsTheSameAgain();
    void wrongPasskey();
    void wrongPasskeyIsForgotten();
    void anAwaitedWrongPasskeyIsThatOfTheNextAttempt();
    void escapesNames();
    void notInRange();
    void securityThatDoesNotMatch_data();
    void securityThatDoesNotMatch();
    void strongestIsTaken();
    void associationTakesItsTime();
    void neverAnswers();
    void anotherAnswers();
    void newerSelectionOverrides();
    void disableAll();
    void disableAllOverridesAnAssociation();
    void refusals();

    void powerOffAndOn();
    void powerOffEndsAnAssociation();
    void nothingIsJoinedWithoutPower();
    void powerTwice();

    void roamsWhenOutOfRange();
    void losesTheConnectionOutOfRange();
    void comesBackIntoRange();
    void othersComeIntoRange();
    void strangersGoOutOfRange();
    void roams();
    void roamsOnlyWhereItIsWelcome();
    void dropped();
    void signalLevels();
    void tellsEvents();

    void disconnectedInterfaceStaysSo();
    void interfaceVanishes();
    void scanWithoutInterface();
};

void SimulatedRadioTest::start()
{
    const WorldFixture fixture(HomeScenario);
    const Attributes expected {
        {QStringLiteral("wifi_power"), ZopVariant("on", "text")},
        {QStringLiteral("wifi_status"),
         ZopVariant(R"({"bssid":"02:00:00:00:00:01","key_mgmt":"WPA2-PSK","pairwise_cipher":"CCMP","ssid":"Home"})",
                    "json")},
    };
    QCOMPARE(fixture.world.status(Service::Wifi), expected);
    QCOMPARE(fixture.attribute("wlan0", "ip_addresses"), QStringLiteral("[\"192.168.1.7/255.255.255.0\"]"));
}

void SimulatedRadioTest::startsDisconnected()
{
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
        'wifi': {'interface': 'wlan0', 'power': false, 'access_points': []}})");
    const Attributes expected {{QStringLiteral("wifi_power"), ZopVariant("off", "text")}};
    QCOMPARE(fixture.world.status(Service::Wifi), expected);
    // There is nothing that could be joined.
    QCOMPARE(fixture.wifiRequest("wifi_power", "on"), 0);
    QCOMPARE(fixture.settle(), QStringList {QStringLiteral("wifi: wifi_power=on")});
}

void SimulatedRadioTest::startsWithTheLeaseOfTheAccessPoint()
{
    const WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'connected': true,
            'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0']}}],
        'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:04', 'access_points': [
            {'bssid': '02:00:00:00:00:04', 'ssid': 'Cafe', 'frequency': 1, 'signal_level': 0, 'flags': [],
             'lease': {'ip_addresses': ['172.20.0.83/255.255.252.0'], 'ip_gateway': ['172.20.0.1']}}]}})");
    QCOMPARE(fixture.attribute("wlan0", "ip_addresses"), QStringLiteral("[\"172.20.0.83/255.255.252.0\"]"));
    QCOMPARE(fixture.attribute("wlan0", "ip_gateway"), QStringLiteral("[\"172.20.0.1\"]"));
}

void SimulatedRadioTest::scans()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.take(), QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-SCAN-STARTED ")});
    QCOMPARE(
        fixture.settle(),
        QStringList {QStringLiteral(
            "wifi: last_event=CTRL-EVENT-SCAN-RESULTS  scan_results=["
            R"({"bssid":"02:00:00:00:00:01","flags":["WPA2-PSK-CCMP","ESS"],"frequency":"2437","signal_level":"-50","ssid":"Home"},)"
            R"({"bssid":"02:00:00:00:00:02","flags":["WPA2-PSK-CCMP","ESS"],"frequency":"5180","signal_level":"-60","ssid":"Home"},)"
            R"({"bssid":"02:00:00:00:00:04","flags":["ESS"],"frequency":"2462","signal_level":"-70","ssid":"Cafe"},)"
            R"({"bssid":"02:00:00:00:00:05","flags":["WPA-PSK-TKIP","ESS"],"frequency":"2412","signal_level":"-57","ssid":"Garage"},)"
            R"({"bssid":"02:00:00:00:00:06","flags":["ESS"],"frequency":"2412","signal_level":"-57","ssid":"Mute"}])")});
    QCOMPARE(fixture.world.status(Service::Wifi).value(QStringLiteral("scan_results")).encoding(), QByteArray("text"));
}

void SimulatedRadioTest::everyScanIsToldAnew()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    const QStringList first = fixture.settle();
    QCOMPARE(first.size(), 2);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.settle(), first);
}

void SimulatedRadioTest::scansAreJoined()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    const QStringList told = fixture.settle();
    QCOMPARE(told.size(), 2);
    QVERIFY(told.at(1).startsWith(QStringLiteral("wifi: last_event=CTRL-EVENT-SCAN-RESULTS ")));
}

void SimulatedRadioTest::scanEndsWithThePower()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.wifiRequest("wifi_power", "off"), 0);
    QCOMPARE(fixture.wifiRequest("wifi_power", "on"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList());
    // The next one is a scan of its own.
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.settle().size(), 2);
}

void SimulatedRadioTest::scanTakesItsTime()
{
    QByteArray scenario(HomeScenario);
    scenario.replace("'associate': 3", "'associate': 86400000");
    WorldFixture fixture(scenario.constData());
    fixture.radio->drop(9);
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.settle().last().left(46), QStringLiteral("wifi: last_event=CTRL-EVENT-SCAN-RESULTS  scan"));
}

void SimulatedRadioTest::associationTakesItsTime()
{
    QByteArray scenario(HomeScenario);
    scenario.replace("'scan': 2", "'scan': 86400000");
    WorldFixture fixture(scenario.constData());
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    fixture.radio->drop(9);
    const QStringList told = fixture.settle();
    QVERIFY(told.contains(home(1)));
    QVERIFY(!fixture.world.status(Service::Wifi).contains(QStringLiteral("scan_results")));
}

void SimulatedRadioTest::identifiers()
{
    WorldFixture fixture(HomeScenario);
    // 0 is the network that it is connected to.
    QCOMPARE(fixture.radio->addNetwork({QStringLiteral("Garage"), QString()}), QStringLiteral("1"));
    QCOMPARE(fixture.radio->addNetwork({QStringLiteral("Garage"), QString()}), QStringLiteral("2"));
    WorldFixture empty(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
        'wifi': {'interface': 'wlan0', 'access_points': []}})");
    QCOMPARE(empty.radio->addNetwork({QStringLiteral("Garage"), QString()}), QStringLiteral("0"));
}

void SimulatedRadioTest::joinsWithThePasskey()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 42")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    QCOMPARE(fixture.take(), QStringList({left(1, 3), Down, NoDefault}));
    QCOMPARE(fixture.settle(), QStringList({joined(5, 1, "Garage", "WPA-PSK", "TKIP"), Up, Leased, Default}));
}

void SimulatedRadioTest::joinsAnOpenNetwork()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Cafe"), QString()});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(),
             QStringList({joined(4, 1, "Cafe", "NONE", "NONE"), Up,
                          QStringLiteral("wlan0: connected=true ip_addresses=[\"172.20.0.83/255.255.252.0\"] "
                                         "ip_gateway=[\"172.20.0.1\"] manual=no"),
                          Default}));
    // Back home the lease is the interface's own again.
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle(), QStringList({left(4, 3), Down, NoDefault, home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::joinsTheSameAgain()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle(), QStringList({left(1, 3), Down, NoDefault, home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::wrongPasskey()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 43")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(),
             QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=1 ssid=\"Garage\" "
                                         "auth_failures=1 duration=10 reason=WRONG_KEY")});
    QVERIFY(!fixture.world.status(Service::Wifi).contains(QStringLiteral("wifi_status")));
    // It is told each time.
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    QCOMPARE(fixture.settle().size(), 1);
}

void SimulatedRadioTest::wrongPasskeyIsForgotten()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 43")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.settle();
    fixture.radio->setPower(false);
    fixture.radio->setPower(true);
    fixture.radio->setInRange(bssid(5), false);
    fixture.radio->setInRange(bssid(5), true);
    QCOMPARE(fixture.settle(),
             QStringList({QStringLiteral("wifi: wifi_power=off"), QStringLiteral("wifi: wifi_power=on")}));
}

void SimulatedRadioTest::anAwaitedWrongPasskeyIsThatOfTheNextAttempt()
{
    WorldFixture fixture(HomeScenario);
    const QString home = QStringLiteral("Home");
    const QString cafe = QStringLiteral("Cafe");
    const QString mute = QStringLiteral("Mute");
    for (const QString &name : {home, cafe, mute})
        fixture.radio->awaitWrongKey(name);
    // Neither whoever has been joined already, nor without a passkey, nor while nobody answers.
    fixture.radio->roam(bssid(2));
    QCOMPARE(fixture.take(), QStringList {::home(2)});
    fixture.radio->addNetwork({cafe, QString()});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    QVERIFY(fixture.settle().contains(joined(4, 1, "Cafe", "NONE", "NONE")));
    fixture.radio->addNetwork({mute, QStringLiteral("silence is golden")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "2"), 0);
    fixture.settle();
    for (const QString &name : {home, cafe, mute})
        QVERIFY(fixture.radio->isWrongKeyAwaited(name));
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle(),
             QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"Home\" "
                                         "auth_failures=1 duration=10 reason=WRONG_KEY")});
    QVERIFY(!fixture.radio->isWrongKeyAwaited(home));
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QVERIFY(fixture.settle().contains(::home(1)));
}

void SimulatedRadioTest::escapesNames()
{
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
        'wifi': {'interface': 'wlan0', 'access_points': [{'bssid': '02:00:00:00:00:01', 'ssid': 'a\n\'b\\%1',
            'frequency': 1, 'signal_level': 0, 'flags': [], 'passkey': '12345678'}]}})");
    fixture.radio->addNetwork({QStringLiteral("a\n\"b\\%1"), QStringLiteral("87654321")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(
        fixture.settle(),
        QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"a\\x0a\\\"b\\\\%1\" "
                                    "auth_failures=1 duration=10 reason=WRONG_KEY")});
}

void SimulatedRadioTest::notInRange()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Far"), QStringLiteral("silence is golden")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-NETWORK-NOT-FOUND ")});
    fixture.radio->setInRange(bssid(7), true);
    QCOMPARE(fixture.settle(), QStringList({joined(7, 1, "Far", "WPA2-PSK", "CCMP"), Up, Leased, Default}));
}

void SimulatedRadioTest::securityThatDoesNotMatch_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("passkey");

    QTest::addRow("open against protected") << "Garage" << QString();
    QTest::addRow("protected against open") << "Cafe"
                                            << "open sesame 42";
}

void SimulatedRadioTest::securityThatDoesNotMatch()
{
    QFETCH(QString, ssid);
    QFETCH(QString, passkey);
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({ssid, passkey});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-NETWORK-NOT-FOUND ")});
}

void SimulatedRadioTest::strongestIsTaken()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setLevel(bssid(2), -49);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QVERIFY(fixture.settle().contains(home(2)));
    // Of equal ones the first.
    fixture.radio->setLevel(bssid(1), -49);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QVERIFY(fixture.settle().contains(home(1)));
    // The strongest decides, also about the passkey.
    fixture.radio->setInRange(bssid(3), true);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle().last(),
             QStringLiteral("wifi: last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"Home\" auth_failures=1 "
                            "duration=10 reason=WRONG_KEY"));
}

void SimulatedRadioTest::neverAnswers()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Mute"), QStringLiteral("not even whether it is right")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList());
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::anotherAnswers()
{
    QByteArray scenario(HomeScenario);
    scenario.replace("'ssid': 'Far'", "'ssid': 'Mute'").replace("'signal_level': -90", "'signal_level': -30");
    WorldFixture fixture(scenario.constData());
    fixture.radio->addNetwork({QStringLiteral("Mute"), QStringLiteral("silence is golden")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.settle();
    fixture.radio->setInRange(bssid(7), true);
    QCOMPARE(fixture.settle(), QStringList({joined(7, 1, "Mute", "WPA2-PSK", "CCMP"), Up, Leased, Default}));
}

void SimulatedRadioTest::newerSelectionOverrides()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 42")});
    fixture.radio->addNetwork({QStringLiteral("Cafe"), QString()});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    QCOMPARE(fixture.wifiRequest("wnet_select", "2"), 0);
    QCOMPARE(fixture.take(), QStringList({left(1, 3), Down, NoDefault}));
    const QStringList told = fixture.settle();
    QCOMPARE(told.size(), 4);
    QCOMPARE(told.first(), joined(4, 2, "Cafe", "NONE", "NONE"));
}

void SimulatedRadioTest::disableAll()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    QCOMPARE(fixture.settle(), QStringList({left(1, 3), Down, NoDefault}));
    // Nothing is selected any more.
    fixture.radio->setPower(false);
    fixture.radio->setPower(true);
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(1), true);
    QCOMPARE(fixture.settle(),
             QStringList({QStringLiteral("wifi: wifi_power=off"), QStringLiteral("wifi: wifi_power=on")}));
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedRadioTest::disableAllOverridesAnAssociation()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 42")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    QCOMPARE(fixture.settle(), QStringList({left(1, 3), Down, NoDefault}));
}

void SimulatedRadioTest::refusals()
{
    WorldFixture fixture(HomeScenario);
    for (const char *identifier : {"1", "-1", "00", "+0", " 0", "", "0x0", "4294967296", "Home"})
        QVERIFY2(fixture.wifiRequest("wnet_select", identifier) == 3, identifier);
    QCOMPARE(fixture.wifiRequest("wnet_explode"), 1);
    QCOMPARE(fixture.wifiRequest("wifi_power", "perhaps"), 2);
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->setPower(false);
    fixture.take();
    QCOMPARE(fixture.wifiRequest("scan"), 7);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 7);
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 3);
    QCOMPARE(fixture.wifiRequest("wnet_new", "{'ssid':'Garage','key_mgmt':'NONE'}"), 0);
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    QCOMPARE(fixture.wifiRequest("wifi_power", "off"), 0);
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedRadioTest::powerOffAndOn()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("wifi_power", "off"), 0);
    QCOMPARE(fixture.take(),
             QStringList({QStringLiteral("wifi: last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:00:01 reason=3 "
                                         "wifi_power=off -wifi_status"),
                          Down, NoDefault}));
    QCOMPARE(fixture.wifiRequest("wifi_power", "on"), 0);
    QCOMPARE(fixture.take(), QStringList {QStringLiteral("wifi: wifi_power=on")});
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::powerOffEndsAnAssociation()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->addNetwork({QStringLiteral("Garage"), QStringLiteral("open sesame 42")});
    QCOMPARE(fixture.wifiRequest("wnet_select", "1"), 0);
    fixture.take();
    QCOMPARE(fixture.wifiRequest("wifi_power", "off"), 0);
    QCOMPARE(fixture.settle(), QStringList {QStringLiteral("wifi: wifi_power=off")});
    // What was selected is joined now.
    QCOMPARE(fixture.wifiRequest("wifi_power", "on"), 0);
    QVERIFY(fixture.settle().contains(joined(5, 1, "Garage", "WPA-PSK", "TKIP")));
}

void SimulatedRadioTest::nothingIsJoinedWithoutPower()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setPower(false);
    fixture.take();
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(1), true);
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedRadioTest::powerTwice()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.wifiRequest("wifi_power", "on"), 0);
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedRadioTest::roamsWhenOutOfRange()
{
    WorldFixture fixture(HomeScenario);
    // The strongest one would not have the station.
    fixture.radio->setInRange(bssid(3), true);
    fixture.radio->setInRange(bssid(1), false);
    QCOMPARE(fixture.settle(), QStringList {home(2)});
    QCOMPARE(fixture.attribute("wlan0", "connected"), QStringLiteral("true"));
}

void SimulatedRadioTest::losesTheConnectionOutOfRange()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setInRange(bssid(2), false);
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->setInRange(bssid(1), false);
    QCOMPARE(fixture.settle(), QStringList({left(1, 4), Down, NoDefault}));
}

void SimulatedRadioTest::comesBackIntoRange()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setInRange(bssid(2), false);
    fixture.radio->setInRange(bssid(1), false);
    fixture.take();
    fixture.radio->setInRange(bssid(1), true);
    QCOMPARE(fixture.take(), QStringList());
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::othersComeIntoRange()
{
    WorldFixture fixture(HomeScenario);
    // While it is connected the station stays where it is.
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(1), true);
    QCOMPARE(fixture.settle(), QStringList {home(2)});
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(2), false);
    fixture.take();
    // It waits for its own network only.
    fixture.radio->setInRange(bssid(7), true);
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->setInRange(bssid(2), true);
    fixture.radio->setInRange(bssid(1), true);
    // One attempt for both, and the stronger one is taken.
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::strangersGoOutOfRange()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setInRange(bssid(4), false);
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->addNetwork({QStringLiteral("Cafe"), QString()});
    // What goes while the station tries to join is not found.
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(2), false);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList {QStringLiteral("wifi: last_event=CTRL-EVENT-NETWORK-NOT-FOUND ")});
}

void SimulatedRadioTest::roams()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->roam(bssid(2));
    QCOMPARE(fixture.settle(), QStringList {home(2)});
    fixture.radio->roam(bssid(2));
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->roam(bssid(1));
    QCOMPARE(fixture.settle(), QStringList {home(1)});
}

void SimulatedRadioTest::roamsOnlyWhereItIsWelcome()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setInRange(bssid(3), true);
    fixture.radio->setInRange(bssid(2), false);
    fixture.radio->roam(bssid(2)); // not in range
    fixture.radio->roam(bssid(3)); // another passkey
    fixture.radio->roam(bssid(4)); // another network
    QCOMPARE(fixture.settle(), QStringList());
    fixture.radio->setInRange(bssid(2), true);
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    fixture.settle();
    fixture.radio->roam(bssid(2)); // not connected
    QCOMPARE(fixture.settle(), QStringList());

    WorldFixture mute(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'connected': true,
            'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0']}}],
        'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'Mute', 'frequency': 1, 'signal_level': -9, 'flags': []},
            {'bssid': '02:00:00:00:00:02', 'ssid': 'Mute', 'frequency': 1, 'signal_level': 0, 'flags': [],
             'answers': false}]}})");
    mute.radio->roam(bssid(2));
    QCOMPARE(mute.settle(), QStringList());
    mute.radio->setInRange(bssid(1), false);
    QCOMPARE(mute.take(), QStringList({left(1, 4), Down, NoDefault}));
}

void SimulatedRadioTest::dropped()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->drop(6);
    QCOMPARE(fixture.take(), QStringList({left(1, 6), Down, NoDefault}));
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
    QCOMPARE(fixture.wifiRequest("wnet_disableall"), 0);
    fixture.take();
    fixture.radio->drop(6);
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedRadioTest::signalLevels()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->setLevel(bssid(4), -71);
    QCOMPARE(fixture.settle(), QStringList());
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QVERIFY(fixture.settle().last().contains(QStringLiteral("\"signal_level\":\"-71\",\"ssid\":\"Cafe\"")));
}

void SimulatedRadioTest::tellsEvents()
{
    WorldFixture fixture(HomeScenario);
    fixture.radio->tellEvent(QStringLiteral("whatever"));
    fixture.radio->tellEvent(QStringLiteral("whatever"));
    const QString told = QStringLiteral("wifi: last_event=whatever");
    QCOMPARE(fixture.take(), QStringList({told, told}));
}

// The one daemon's client has switched the interface off; the other one's finds it without addresses.
void SimulatedRadioTest::disconnectedInterfaceStaysSo()
{
    WorldFixture fixture(HomeScenario);
    QCOMPARE(fixture.request("net_disconnected", "'wlan0'"), 0);
    fixture.settle();
    QVERIFY(fixture.world.status(Service::Wifi).contains(QStringLiteral("wifi_status")));
    fixture.radio->drop(6);
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList({home(1), Up}));
}

void SimulatedRadioTest::interfaceVanishes()
{
    WorldFixture fixture(HomeScenario);
    fixture.network->vanish(QStringLiteral("wlan0"));
    QVERIFY(fixture.take().contains(left(1, 3)));
    fixture.radio->setInRange(bssid(1), false);
    fixture.radio->setInRange(bssid(1), true);
    QCOMPARE(fixture.wifiRequest("wnet_select", "0"), 0);
    QCOMPARE(fixture.settle(), QStringList());
    fixture.network->appear(QStringLiteral("wlan0"));
    QCOMPARE(fixture.attribute("wlan0", "up"), QStringLiteral("false"));
    fixture.take();
    QCOMPARE(fixture.settle(), QStringList({home(1), Up, Leased, Default}));
}

void SimulatedRadioTest::scanWithoutInterface()
{
    WorldFixture fixture(HomeScenario);
    fixture.network->vanish(QStringLiteral("wlan0"));
    QCOMPARE(fixture.wifiRequest("scan"), 0);
    QCOMPARE(fixture.settle().last(), QStringLiteral("wifi: last_event=CTRL-EVENT-SCAN-RESULTS  scan_results=[]"));
}

QTEST_GUILESS_MAIN(SimulatedRadioTest)
#include "tst_simulatedradio.moc"
