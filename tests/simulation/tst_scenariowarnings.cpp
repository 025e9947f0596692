// SPDX-License-Identifier: Apache-2.0
#include "json.h"
#include "scenarioreader.h"
#include "scenariowarnings.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

// The station is at 01. 02 and 03 are of its network, 03 only later; 04 has its name and another key; 05 never answers;
// 06 cannot be joined; 07 is alone; 08 is open, of the name of 09, which is not; 0a and 0b have one key in two forms.
const char World[] = R"(
    'interfaces': [
        {'name': 'wlan0', 'type': 'wifi', 'connected': true, 'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}},
        {'name': 'eth0', 'type': 'wired'},
        {'name': 'eth1', 'type': 'wired', 'up': false},
        {'name': 'usb0', 'type': 'usb', 'present': false, 'up': false}],
    'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': [
        {'bssid': '02:00:00:00:00:01', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:02', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:03', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'correct horse 7', 'in_range': false},
        {'bssid': '02:00:00:00:00:04', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'wrong horse 8'},
        {'bssid': '02:00:00:00:00:05', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'correct horse 7', 'answers': false},
        {'bssid': '02:00:00:00:00:06', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -50, 'flags': ['WEP']},
        {'bssid': '02:00:00:00:00:07', 'ssid': 'Alone', 'frequency': 2437, 'signal_level': -50, 'flags': []},
        {'bssid': '02:00:00:00:00:08', 'ssid': 'Twins', 'frequency': 2437, 'signal_level': -50, 'flags': []},
        {'bssid': '02:00:00:00:00:09', 'ssid': 'Twins', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:0a', 'ssid': 'Keys', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': 'password'},
        {'bssid': '02:00:00:00:00:0b', 'ssid': 'Keys', 'frequency': 2437, 'signal_level': -50, 'flags': [],
         'passkey': '894746a616b8866c3374e833a85729adee067526ba3c5aa159295d147d0d568b', 'in_range': false}]},
    'hotspot': {'profile': {'ssid': 'Car', 'passphrase': 'drive safely 8', 'mhs_band': '5.0', 'max_num_sta': 1,
        'security_type': 'wpa2', 'autoshutdown_time': 0, 'privacy': false, 'block_conn': false}},)";

QStringList warnings(const QByteArray &text)
{
    Scenario scenario;
    QString error;
    return readScenario(text, &scenario, &error) ? warningsOf(scenario) : QStringList {error};
}

} // namespace

/*! What is told of a scenario that is no mistake, but can never happen. */
class ScenarioWarningsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timelines_data();
    void timelines();
    void stationsWithoutANetwork();
    void faults_data();
    void faults();
    void leases();
};

void ScenarioWarningsTest::timelines_data()
{
    QTest::addColumn<QByteArray>("events");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char *name, const char *events, const char *expected) {
        QTest::addRow("%s", name) << json(events)
                                  << (*expected ? QStringList {QString::fromUtf8(expected)} : QStringList());
    };
    row("link lost and regained",
        "{'at':1,'event':'link-lost','interface':'eth0'},{'at':2,'event':'link-regained','interface':'eth0'},"
        "{'at':3,'event':'link-regained','interface':'eth1'},{'at':4,'event':'link-lost','interface':'eth1'}",
        "");
    row("link lost twice",
        "{'at':1,'event':'link-lost','interface':'eth0'},{'at':2,'event':'link-lost','interface':'eth0'}",
        "timeline[1]: has no effect: \"eth0\" has no link then");
    row("no link to lose", "{'at':1,'event':'link-lost','interface':'eth1'}",
        "timeline[0]: has no effect: \"eth1\" has no link then");
    row("link there already", "{'at':1,'event':'link-regained','interface':'eth0'}",
        "timeline[0]: has no effect: \"eth0\" has its link then");
    row("place in the file",
        "{'at':2,'event':'link-lost','interface':'eth0'},{'at':1,'event':'link-lost','interface':'eth0'}",
        "timeline[0]: has no effect: \"eth0\" has no link then");
    row("appears with a link",
        "{'at':1,'event':'appear','interface':'usb0'},{'at':2,'event':'link-regained','interface':'usb0'}",
        "timeline[1]: has no effect: \"usb0\" has its link then");
    row("appears and loses it",
        "{'at':1,'event':'appear','interface':'usb0'},{'at':2,'event':'link-lost','interface':'usb0'}", "");

    row("dies again when it is back",
        "{'at':1,'event':'daemon-dies','back_after':5},{'at':6,'event':'daemon-dies','back_after':5}", "");
    row("dies while it is dead",
        "{'at':1,'event':'daemon-dies','back_after':5},{'at':5,'event':'daemon-dies','back_after':5}",
        "timeline[1]: has no effect: the networking daemon is dead then");
    row("dying while dead lengthens nothing",
        "{'at':1,'event':'daemon-dies','back_after':5},{'at':5,'event':'daemon-dies','back_after':9},"
        "{'at':6,'event':'daemon-dies'}",
        "timeline[1]: has no effect: the networking daemon is dead then");
    row("dies again when it was brought back",
        "{'at':1,'event':'daemon-dies'},{'at':2,'event':'daemon-back'},{'at':3,'event':'daemon-dies'}", "");
    row("another daemon dies", "{'at':1,'event':'daemon-dies'},{'at':2,'event':'daemon-dies','daemon':'wifi'}", "");
    row("dead for good",
        "{'at':1,'event':'daemon-dies','daemon':'wifi'},{'at':9,'event':'daemon-dies','daemon':'wifi'}",
        "timeline[1]: has no effect: the wifi daemon is dead then");

    const auto dead = [](const char *daemon, const char *event, bool isTold) {
        QTest::addRow("dead for good: %s: %s", daemon, event)
            << json("{'at':1,'event':'daemon-dies','daemon':'") + daemon + json("'},{'at':2,'event':") + json(event)
                + '}'
            << (isTold
                    ? QStringList()
                    : QStringList {QStringLiteral("timeline[1]: has no effect: the %1 daemon, which would tell of it, "
                                                  "is dead for good")
                                       .arg(QLatin1String(daemon))});
        QTest::addRow("dead for a while: %s: %s", daemon, event)
            << json("{'at':1,'event':'daemon-dies','back_after':9,'daemon':'") + daemon + json("'},{'at':2,'event':")
                + json(event) + '}'
            << QStringList();
    };
    dead("networking", "'link-lost','interface':'eth0'", false);
    dead("networking", "'link-regained','interface':'eth1'", false);
    dead("networking", "'appear','interface':'usb0'", false);
    dead("networking", "'vanish','interface':'eth0'", false);
    dead("networking", "'vanish','interface':'wlan0'", true);
    dead("networking", "'default','interface':'eth0'", false);
    dead("networking", "'default-follows'", false);
    dead("networking", "'priority','order':[]", false);
    dead("networking", "'set','interface':'wlan0','attributes':{'mtu':1}", false);
    dead("networking", "'remove','object':'status_public','attributes':['priority']", false);
    dead("networking", "'set','object':'wifi/status','attributes':{'wifi_power':'x'}", true);
    dead("networking", "'radio-off'", true);
    dead("wifi", "'set','object':'wifi/status','attributes':{'wifi_power':'x'}", false);
    dead("wifi", "'wifi-event','text':'x'", false);
    dead("wifi", "'radio-off'", true);
    dead("wifi", "'out-of-range','bssid':'02:00:00:00:00:01'", true);
    dead("wifi", "'signal','bssid':'02:00:00:00:00:01','signal_level':-60", true);
    dead("wifi", "'dropped'", true);
    dead("wifi", "'set','interface':'wlan0','attributes':{'mtu':1}", true);
    dead("tethering", "'hotspot-starts'", false);
    dead("tethering", "'hotspot-stops'", false);
    dead("tethering", "'remove','object':'tethering/status','attributes':['state']", false);
    dead("tethering", "'wifi-event','text':'x'", true);
    row("dead for good before it was dead for a while",
        "{'at':9,'event':'daemon-dies','daemon':'wifi','back_after':1},{'at':1,'event':'daemon-dies','daemon':'wifi'}",
        "timeline[0]: has no effect: the wifi daemon is dead then");

    const auto roam = [&row](const char *name, const char *bssid, const char *expected) {
        row(name,
            qPrintable(QStringLiteral("{'at':1,'event':'roam','bssid':'02:00:00:00:00:%1'}").arg(QLatin1String(bssid))),
            expected);
    };
    const auto alone = [&roam](const char *name, const char *bssid) {
        const QString why =
            QStringLiteral("timeline[0]: has no effect: the station cannot be at another access point of "
                           "the network of \"02:00:00:00:00:%1\" then");
        roam(name, bssid, qPrintable(why.arg(QLatin1String(bssid))));
    };
    roam("roams in its network", "02", "");
    roam("roams back", "01", "");
    alone("roams to another key", "04");
    roam("roams to what never answers", "05", "timeline[0]: has no effect: nobody can join \"02:00:00:00:00:05\"");
    roam("roams to what cannot be joined", "06", "timeline[0]: has no effect: nobody can join \"02:00:00:00:00:06\"");
    alone("roams to another network", "07");
    alone("roams to another kind of security", "08");
    alone("roams from another kind of security", "09");
    alone("roams before the other one comes", "0a");
    row("roams to the same key in another form",
        "{'at':1,'event':'in-range','bssid':'02:00:00:00:00:0b'},{'at':2,'event':'roam','bssid':'02:00:00:00:00:0b'},"
        "{'at':3,'event':'out-of-range','bssid':'02:00:00:00:00:0b'},"
        "{'at':4,'event':'roam','bssid':'02:00:00:00:00:0a'}",
        "");
    row("roams and is dropped without an interface",
        "{'at':1,'event':'vanish','interface':'wlan0'},{'at':2,'event':'roam','bssid':'02:00:00:00:00:02'}",
        "timeline[1]: has no effect: \"wlan0\" is not there then");
    row("is dropped without an interface", "{'at':1,'event':'vanish','interface':'wlan0'},{'at':2,'event':'dropped'}",
        "timeline[1]: has no effect: \"wlan0\" is not there then");
    row("is dropped when the interface is back",
        "{'at':1,'event':'vanish','interface':'wlan0'},{'at':2,'event':'appear','interface':'wlan0'},"
        "{'at':3,'event':'vanish','interface':'eth0'},{'at':4,'event':'dropped'}",
        "");
}

void ScenarioWarningsTest::timelines()
{
    QFETCH(QByteArray, events);
    QTEST(warnings('{' + json(World) + json("'timeline':[") + events + "]}"), "expected");
}

void ScenarioWarningsTest::stationsWithoutANetwork()
{
    const auto dropped = [](const char *accessPoint, const char *events) {
        return warnings(json(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
            'wifi': {'interface': 'wlan0', 'access_points': [
                {'bssid': '02:00:00:00:00:01', 'ssid': 'a', 'frequency': 2437, 'signal_level': -50)")
                        + json(accessPoint) + json("}]},'timeline':[") + json(events)
                        + json("{'at':2,'event':'dropped'}]}"));
    };
    const QStringList never {QStringLiteral("timeline[0]: has no effect: the station cannot be connected then")};
    QCOMPARE(dropped(",'flags':['WEP']", ""), never);
    QCOMPARE(dropped(",'flags':[],'in_range':false", ""), never);
    QCOMPARE(dropped(",'flags':[],'in_range':false", "{'at':1,'event':'in-range','bssid':'02:00:00:00:00:01'},"),
             QStringList());
    QCOMPARE(dropped(",'flags':[]", ""), QStringList());
}

void ScenarioWarningsTest::faults_data()
{
    QTest::addColumn<QByteArray>("earlier");
    QTest::addColumn<QByteArray>("later");
    QTest::addColumn<bool>("isTaken");

    const auto row = [](const char *earlier, const char *later, bool isTaken) {
        QTest::addRow("%s | %s", earlier, later) << json(earlier) << json(later) << isTaken;
    };
    row("", "", true);
    row("", ",'message':'scan'", true);
    row("", ",'interface':'eth0'", true);
    row("", ",'ssid':'Home'", true);
    row("", ",'times':1", true);
    row(",'times':1", "", false);
    row(",'skip':1", "", false);
    row(",'skip':1", ",'skip':1", true);
    row(",'skip':2", ",'skip':1", false);
    row("", ",'skip':1", true);
    row(",'message':'scan'", "", false);
    row(",'message':'scan'", ",'message':'scan'", true);
    row(",'message':'scan'", ",'message':'start'", false);
    row(",'interface':'eth0'", "", false);
    row(",'interface':'eth0'", ",'message':'net_connected'", false);
    row(",'interface':'eth0'", ",'message':'net_connected','interface':'eth0'", true);
    row(",'interface':'eth0'", ",'message':'net_connected','interface':'eth1'", false);
    row(",'message':'net_connected'", ",'interface':'eth0'", false);
    row(",'ssid':'Home'", "", false);
    row(",'ssid':'Home'", ",'message':'wnet_new'", false);
    row(",'ssid':'Home'", ",'message':'wnet_new','ssid':'Home'", true);
    row(",'ssid':'Home'", ",'message':'wnet_new','ssid':'Alone'", false);
    row(",'message':'wnet_new'", ",'ssid':'Home'", true);
    row(",'message':'scan'", ",'ssid':'Home'", false);
}

void ScenarioWarningsTest::faults()
{
    QFETCH(QByteArray, earlier);
    QFETCH(QByteArray, later);
    QFETCH(bool, isTaken);
    const QByteArray start = '{' + json(World) + json("'faults':[");
    const QByteArray between = json("{'fault':'late','delay':1,'message':'stop'},");
    QCOMPARE(warnings(start + between + json("{'fault':'die'") + earlier + json("},{'fault':'double'") + later + "}]}"),
             isTaken ? QStringList {QStringLiteral("faults[2]: never happens: faults[1] takes all of its requests")}
                     : QStringList());
}

void ScenarioWarningsTest::leases()
{
    const auto leased = [](const char *keys) {
        return warnings(json(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
            'wifi': {'interface': 'wlan0', 'access_points': [
                {'bssid': '02:00:00:00:00:01', 'ssid': 'a', 'frequency': 2437, 'signal_level': -50, 'flags': []},
                {'bssid': '02:00:00:00:00:02', 'ssid': 'a', 'frequency': 2437, 'signal_level': -50,
                 'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']},)")
                        + json(keys) + json("}]}}"));
    };
    const QStringList never {QStringLiteral("wifi.access_points[1].lease: is never given: nobody can join this one")};
    QCOMPARE(leased("'flags':['WEP']"), never);
    QCOMPARE(leased("'flags':['WPA2-PSK-CCMP']"), never);
    QCOMPARE(leased("'flags':['WPA2-PSK-CCMP'],'passkey':'correct horse 7'"), QStringList());
    QCOMPARE(leased("'flags':[],'answers':false"), never);
    QCOMPARE(leased("'flags':[]"), QStringList());
}

QTEST_GUILESS_MAIN(ScenarioWarningsTest)
#include "tst_scenariowarnings.moc"
