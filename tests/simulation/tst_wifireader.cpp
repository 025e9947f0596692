// SPDX-License-Identifier: Apache-2.0
#include "json.h"
#include "scenarioreader.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Interfaces[] = "'interfaces':[{'name':'eth0','type':'wired'},{'name':'wlan0','type':'wifi','up':false},"
                          "{'name':'wlan1','type':'wifi','lease':{'ip_addresses':['10.0.0.5/255.0.0.0']}},"
                          "{'name':'wlan2','type':'wifi','present':false}]";

/*! Not connected; what begins at "access_points" is left to the test. */
QByteArray scenarioWith(const QByteArray &accessPoints)
{
    return json("{") + json(Interfaces) + json(",'wifi':{'interface':'wlan0','access_points':[") + accessPoints
        + json("]}}");
}

/*! With two access points, the second out of range. */
QByteArray scenarioWith(const char *key, const QByteArray &value)
{
    return json("{") + json(Interfaces)
        + json(",'wifi':{'interface':'wlan0','access_points':["
               "{'bssid':'02:00:00:00:00:01','ssid':'a','frequency':2412,'signal_level':-40,'flags':[]},"
               "{'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':-40,'flags':[],"
               "'in_range':false}]},'")
              .append(key)
              .append(json("':["))
        + value + json("]}");
}

} // namespace

/*! What a scenario says of Wi-Fi. */
class WifiReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallest();
    void everyKey();
    void leasesOfOneInterface();
    void events();
    void wrongKeys();
    void faults();
    void delays();
    void errors_data();
    void errors();
    void neverShowsAPasskey();
};

void WifiReaderTest::smallest()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith(json("{'bssid':'02:00:00:00:00:0A','ssid':'','frequency':1,'signal_level':0,"
                                            "'flags':[]}")),
                          &scenario, &error),
             qPrintable(error));
    QCOMPARE(scenario.wifi.interface, QStringLiteral("wlan0"));
    QVERIFY(scenario.wifi.power);
    QCOMPARE(scenario.wifi.connected, QString());
    QCOMPARE(scenario.wifi.accessPoints.size(), 1);
    const ScenarioAccessPoint &point = scenario.wifi.accessPoints.first();
    QCOMPARE(point.bssid, QStringLiteral("02:00:00:00:00:0A"));
    QCOMPARE(point.ssid, QString());
    QCOMPARE(point.drift, 0);
    QCOMPARE(point.passkey, QString());
    QVERIFY(point.inRange && point.answers && point.flags.isEmpty() && point.lease.addresses.isEmpty());

    Scenario without;
    QVERIFY(readScenario(json("{'interfaces':[]}"), &without, &error));
    QCOMPARE(without.wifi.interface, QString());
}

void WifiReaderTest::everyKey()
{
    const QByteArray text = json("{") + json(Interfaces) + json(R"(,'wifi': {
        'interface': 'wlan1', 'power': true, 'connected': '02:00:00:00:00:02', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'Home', 'frequency': 100000, 'signal_level': -100, 'drift': 50,
             'flags': ['WPA2-PSK-CCMP', 'any text'], 'passkey': '12345678', 'in_range': false, 'answers': false,
             'lease': {'ip_addresses': ['10.0.0.6/255.0.0.0'], 'ip_gateway': ['10.0.0.1']}},
            {'bssid': '02:00:00:00:00:02', 'ssid': 'Home', 'frequency': 2412, 'signal_level': -40, 'flags': []}]}})");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));
    QCOMPARE(scenario.wifi.interface, QStringLiteral("wlan1"));
    QCOMPARE(scenario.wifi.connected, QStringLiteral("02:00:00:00:00:02"));
    const ScenarioAccessPoint &point = scenario.wifi.accessPoints.first();
    QCOMPARE(point.ssid, QStringLiteral("Home"));
    QCOMPARE(point.frequency, 100000);
    QCOMPARE(point.signalLevel, -100);
    QCOMPARE(point.drift, 50);
    QCOMPARE(point.flags, QStringList({QStringLiteral("WPA2-PSK-CCMP"), QStringLiteral("any text")}));
    QCOMPARE(point.passkey, QStringLiteral("12345678"));
    QVERIFY(!point.inRange && !point.answers);
    QCOMPARE(point.lease.addresses, QStringList {QStringLiteral("10.0.0.6/255.0.0.0")});
    QCOMPARE(point.lease.gateways, QStringList {QStringLiteral("10.0.0.1")});
}

// Access points of one network give the station the same address; nobody else may have it.
void WifiReaderTest::leasesOfOneInterface()
{
    const QByteArray text = json(R"({'interfaces': [
        {'name': 'wlan0', 'type': 'wifi', 'up': false, 'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']},
         'manual': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}],
        'wifi': {'interface': 'wlan0', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'a', 'frequency': 2412, 'signal_level': -40, 'flags': [],
             'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}},
            {'bssid': '02:00:00:00:00:02', 'ssid': 'a', 'frequency': 2412, 'signal_level': -40, 'flags': [],
             'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}]}})");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));
}

void WifiReaderTest::events()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith("timeline", json(R"(
        {'at': 0, 'event': 'in-range', 'bssid': '02:00:00:00:00:02'},
        {'at': 1, 'event': 'roam', 'bssid': '02:00:00:00:00:02'},
        {'at': 2, 'event': 'out-of-range', 'bssid': '02:00:00:00:00:02'},
        {'at': 3, 'event': 'signal', 'bssid': '02:00:00:00:00:02', 'signal_level': -77},
        {'at': 4, 'event': 'dropped', 'reason': 6},
        {'at': 5, 'event': 'dropped'},
        {'at': 6, 'event': 'radio-off'},
        {'at': 7, 'event': 'radio-on'},
        {'at': 8, 'event': 'wifi-event', 'text': 'whatever it is'},
        {'at': 9, 'event': 'set', 'object': 'wifi/status', 'attributes': {'wifi_power': 'perhaps'}},
        {'at': 10, 'event': 'remove', 'object': 'wifi/status', 'attributes': ['wifi_power']},
        {'at': 11, 'event': 'set', 'object': 'status_public', 'attributes': {'wifi_power': 'perhaps'}},
        {'at': 12, 'event': 'daemon-dies', 'daemon': 'wifi', 'back_after': 5},
        {'at': 13, 'event': 'daemon-dies', 'daemon': 'networking'},
        {'at': 14, 'event': 'daemon-dies'},
        {'at': 15, 'event': 'appear', 'interface': 'wlan2'},
        {'at': 16, 'event': 'link-lost', 'interface': 'wlan1'})")),
                          &scenario, &error),
             qPrintable(error));
    const auto &timeline = scenario.timeline;
    QCOMPARE(timeline.size(), 17);
    QCOMPARE(timeline.at(0).text, QStringLiteral("in-range 02:00:00:00:00:02"));
    QCOMPARE(timeline.at(0).bssid, QStringLiteral("02:00:00:00:00:02"));
    QCOMPARE(timeline.at(3).level, -77);
    QCOMPARE(timeline.at(4).reason, 6);
    QCOMPARE(timeline.at(5).reason, 2);
    QCOMPARE(timeline.at(6).text, QStringLiteral("radio-off"));
    QCOMPARE(timeline.at(8).told, QStringLiteral("whatever it is"));
    QCOMPARE(timeline.at(9).service, Service::Wifi);
    QCOMPARE(timeline.at(10).service, Service::Wifi);
    QCOMPARE(timeline.at(11).service, Service::Networking);
    QCOMPARE(timeline.at(12).service, Service::Wifi);
    QCOMPARE(timeline.at(12).backAfter, 5);
    QCOMPARE(timeline.at(13).service, Service::Networking);
    QCOMPARE(timeline.at(14).service, Service::Networking);
}

void WifiReaderTest::wrongKeys()
{
    const auto read = [](const char *event, Scenario *scenario) {
        QString error;
        readScenario(json(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
                              'wifi': {'interface': 'wlan0', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'Mixed "1"', 'frequency': 2412, 'signal_level': -40, 'flags': []},
            {'bssid': '02:00:00:00:00:02', 'ssid': 'Mixed "1"', 'frequency': 2412, 'signal_level': -40, 'flags': [],
             'passkey': '12345678'},
            {'bssid': '02:00:00:00:00:03', 'ssid': 'Open', 'frequency': 2412, 'signal_level': -40, 'flags': []}]},
            'timeline': [)")
                             .replace(R"("1")", R"(\"1\")")
                         + json(event) + "]}",
                     scenario, &error);
        return error;
    };
    Scenario scenario;
    QCOMPARE(read(R"({'at':7,'event':'wrong-key','ssid':'Mixed \'1\''})", &scenario), QString());
    QCOMPARE(scenario.timeline.first().ssid, QStringLiteral("Mixed \"1\""));
    QCOMPARE(scenario.timeline.first().text, QStringLiteral("wrong-key \"Mixed \\\"1\\\"\""));
    QCOMPARE(scenario.timeline.first().at, 7);
    QCOMPARE(read("{'at':7,'event':'wrong-key','ssid':'Open'}", &scenario),
             QStringLiteral("timeline[0].ssid: no access point \"Open\" has a passkey"));
    QCOMPARE(read("{'at':7,'event':'wrong-key'}", &scenario), QStringLiteral("timeline[0]: \"ssid\" is missing"));
}

void WifiReaderTest::faults()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith("faults", json(R"(
        {'fault': 'double', 'message': 'wifi_power'}, {'fault': 'double', 'message': 'scan'},
        {'fault': 'double', 'message': 'wnet_new', 'ssid': 'a'}, {'fault': 'double', 'message': 'wnet_select'},
        {'fault': 'double', 'message': 'wnet_disableall'}, {'fault': 'double', 'ssid': 'a'})")),
                          &scenario, &error),
             qPrintable(error));
    QCOMPARE(scenario.faults.size(), 6);
    QCOMPARE(scenario.faults.at(0).message, QStringLiteral("wifi_power"));
    QCOMPARE(scenario.faults.at(0).ssid, QString());
    QCOMPARE(scenario.faults.at(2).ssid, QStringLiteral("a"));
    QCOMPARE(scenario.faults.at(5).ssid, QStringLiteral("a"));
}

void WifiReaderTest::delays()
{
    Scenario scenario;
    QString error;
    QVERIFY(readScenario(json("{'interfaces':[]}"), &scenario, &error));
    QCOMPARE(scenario.delays.scan.from, 800);
    QCOMPARE(scenario.delays.scan.to, 2500);
    QCOMPARE(scenario.delays.associate.from, 400);
    QCOMPARE(scenario.delays.associate.to, 1200);
    QVERIFY(readScenario(json("{'interfaces':[],'delays':{'scan':[1,2],'associate':3}}"), &scenario, &error));
    QCOMPARE(scenario.delays.scan.from, 1);
    QCOMPARE(scenario.delays.scan.to, 2);
    QCOMPARE(scenario.delays.associate.from, 3);
    QCOMPARE(scenario.delays.associate.to, 3);
}

void WifiReaderTest::errors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto wifi = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("wifi: %s", name) << json("{") + json(Interfaces) + json(",'wifi':{") + json(keys) + json("}}")
                                        << QString::fromUtf8(expected);
    };
    const char point[] = "'bssid':'02:00:00:00:00:0B','ssid':'a','frequency':2412,'signal_level':-40,'flags':[]";
    const auto accessPoint = [&point](const char *name, const char *keys, const char *expected) {
        const QByteArray first = json("{") + json(point) + json("},{");
        QTest::addRow("access point: %s", name)
            << scenarioWith(first + json(keys) + '}') << QString::fromUtf8(expected);
    };
    const auto event = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("event: %s", name) << scenarioWith("timeline", '{' + json(keys) + '}')
                                         << QString::fromUtf8(expected);
    };
    const auto fault = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("fault: %s", name) << scenarioWith("faults", '{' + json(keys) + '}')
                                         << QString::fromUtf8(expected);
    };
    const auto without = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("without Wi-Fi: %s", name) << json("{'interfaces':[{'name':'wlan0','type':'wifi'}],") + json(keys)
                + json("}") << QString::fromUtf8(expected);
    };

    wifi("no interface", "'access_points':[]", "wifi: \"interface\" is missing");
    wifi("no access points", "'interface':'wlan0'", "wifi: \"access_points\" is missing");
    wifi("unknown key", "'interface':'wlan0','access_points':[],'radio':true",
         "wifi: unknown key \"radio\" (known: interface, power, connected, access_points)");
    wifi("unknown interface", "'interface':'wlan9','access_points':[]", "wifi.interface: no interface \"wlan9\"");
    wifi("wired interface", "'interface':'eth0','access_points':[]",
         "wifi.interface: \"eth0\" is not of the type wifi");
    wifi("power", "'interface':'wlan0','power':'on','access_points':[]", "wifi.power: must be true or false");
    const char up[] = "is up though the station is not connected (\"up\": false is missing)";
    wifi("up, not connected", "'interface':'wlan1','access_points':[]",
         qPrintable(QStringLiteral("wifi.interface: \"wlan1\" ") + QLatin1String(up)));
    wifi("absent, not connected", "'interface':'wlan2','access_points':[]",
         qPrintable(QStringLiteral("wifi.interface: \"wlan2\" ") + QLatin1String(up)));
    wifi("connected to nothing", "'interface':'wlan1','connected':'02:00:00:00:00:0B','access_points':[]",
         "wifi.connected: no access point \"02:00:00:00:00:0B\"");
    const auto connected = [&wifi, &point](const char *name, const char *keys, const char *more, const char *expected) {
        wifi(name,
             (QByteArray(keys) + ",'connected':'02:00:00:00:00:0B','access_points':[{" + point + more + "}]")
                 .constData(),
             expected);
    };
    connected("connected without power", "'interface':'wlan1','power':false", "",
              "wifi.connected: the radio must be on and the access point in range");
    connected("connected out of range", "'interface':'wlan1'", ",'in_range':false",
              "wifi.connected: the radio must be on and the access point in range");
    connected("connected, down", "'interface':'wlan0'", "", "wifi.connected: \"wlan0\" must be present and up");
    connected("connected, absent", "'interface':'wlan2'", "", "wifi.connected: \"wlan2\" must be present and up");
    wifi("connected to WEP",
         "'interface':'wlan1','connected':'02:00:00:00:00:0B','access_points':[{'bssid':'02:00:00:00:00:0B',"
         "'ssid':'a','frequency':2412,'signal_level':-40,'flags':['WEP']}]",
         "wifi.connected: nobody can join \"02:00:00:00:00:0B\", as it has no \"passkey\"");

    accessPoint("no bssid", "'ssid':'a','frequency':2412,'signal_level':-40,'flags':[]",
                "wifi.access_points[1]: \"bssid\" is missing");
    accessPoint("no ssid", "'bssid':'02:00:00:00:00:02','frequency':2412,'signal_level':-40,'flags':[]",
                "wifi.access_points[1]: \"ssid\" is missing");
    accessPoint("no frequency", "'bssid':'02:00:00:00:00:02','ssid':'a','signal_level':-40,'flags':[]",
                "wifi.access_points[1]: \"frequency\" is missing");
    accessPoint("no level", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'flags':[]",
                "wifi.access_points[1]: \"signal_level\" is missing");
    accessPoint("no flags", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':-40",
                "wifi.access_points[1]: \"flags\" is missing");
    accessPoint("twice", point, "wifi.access_points[1].bssid: a second \"02:00:00:00:00:0B\"");
    const auto key = [&accessPoint](const char *name, const char *keys, const char *expected) {
        const QByteArray whole =
            QByteArray("'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':-40,'flags':[],") + keys;
        accessPoint(name, whole.constData(), expected);
    };
    key("unknown key", "'channel':1",
        "wifi.access_points[1]: unknown key \"channel\" (known: bssid, ssid, frequency, signal_level, drift, flags, "
        "passkey, in_range, answers, lease)");
    accessPoint("bssid", "'bssid':'02:00','ssid':'a','frequency':2412,'signal_level':-40,'flags':[]",
                "wifi.access_points[1].bssid: \"02:00\" is not a hardware address, as 02:00:00:00:00:01 is");
    accessPoint("long ssid",
                "'bssid':'02:00:00:00:00:02','ssid':'12345678901234567890123456789012+','frequency':2412,"
                "'signal_level':-40,'flags':[]",
                "wifi.access_points[1].ssid: is longer than 32 bytes");
    accessPoint("frequency", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':'2412','signal_level':-40,'flags':[]",
                "wifi.access_points[1].frequency: must be a whole number from 1 to 100000");
    accessPoint("frequency 0", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':0,'signal_level':-40,'flags':[]",
                "wifi.access_points[1].frequency: must be a whole number from 1 to 100000");
    accessPoint("level", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':1,'flags':[]",
                "wifi.access_points[1].signal_level: must be a whole number from -100 to 0");
    accessPoint("level", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':-101,'flags':[]",
                "wifi.access_points[1].signal_level: must be a whole number from -100 to 0");
    accessPoint("flags", "'bssid':'02:00:00:00:00:02','ssid':'a','frequency':2412,'signal_level':-40,'flags':[1]",
                "wifi.access_points[1].flags[0]: must be a text");
    key("drift", "'drift':51", "wifi.access_points[1].drift: must be a whole number from 0 to 50");
    key("range", "'in_range':1", "wifi.access_points[1].in_range: must be true or false");
    key("answers", "'answers':1", "wifi.access_points[1].answers: must be true or false");
    key("lease", "'lease':{}", "wifi.access_points[1].lease: \"ip_addresses\" is missing");
    key("lease of another interface", "'lease':{'ip_addresses':['10.0.0.5/255.255.0.0']}",
        "wifi.access_points[1].lease.ip_addresses[0]: \"wlan1\" has this address, too");
    key("lease of nobody", "'lease':{'ip_addresses':['10.0.0.0/255.0.0.0']}",
        "wifi.access_points[1].lease.ip_addresses[0]: \"10.0.0.0/255.0.0.0\" is the first address of its network, "
        "not that of a host");
    const char noPasskey[] =
        "wifi.access_points[1].passkey: is neither 8 to 63 ASCII characters nor 64 hexadecimal digits";
    key("passkey", "'passkey':'1234567'", noPasskey);
    key("empty passkey", "'passkey':''", noPasskey);

    event("no bssid", "'at':1,'event':'roam'", "timeline[0]: \"bssid\" is missing");
    event("unknown bssid", "'at':1,'event':'roam','bssid':'02:00:00:00:00:09'",
          "timeline[0].bssid: no access point \"02:00:00:00:00:09\"");
    event("key of another", "'at':1,'event':'radio-on','bssid':'02:00:00:00:00:01'",
          "timeline[0]: unknown key \"bssid\" (known: at, event)");
    event("no level", "'at':1,'event':'signal','bssid':'02:00:00:00:00:01'",
          "timeline[0]: \"signal_level\" is missing");
    event("level", "'at':1,'event':'signal','bssid':'02:00:00:00:00:01','signal_level':5",
          "timeline[0].signal_level: must be a whole number from -100 to 0");
    event("reason", "'at':1,'event':'dropped','reason':0",
          "timeline[0].reason: must be a whole number from 1 to 65535");
    event("no text", "'at':1,'event':'wifi-event'", "timeline[0]: \"text\" is missing");
    event("gone twice",
          "'at':1,'event':'out-of-range','bssid':'02:00:00:00:00:01'},"
          "{'at':2,'event':'out-of-range','bssid':'02:00:00:00:00:01'",
          "timeline[1].bssid: \"02:00:00:00:00:01\" is not in range at that time");
    event("there already", "'at':1,'event':'in-range','bssid':'02:00:00:00:00:01'",
          "timeline[0].bssid: \"02:00:00:00:00:01\" is in range at that time");
    event("there twice",
          "'at':1,'event':'in-range','bssid':'02:00:00:00:00:02'},"
          "{'at':2,'event':'in-range','bssid':'02:00:00:00:00:02'",
          "timeline[1].bssid: \"02:00:00:00:00:02\" is in range at that time");
    event("roams out of range", "'at':1,'event':'roam','bssid':'02:00:00:00:00:02'",
          "timeline[0].bssid: \"02:00:00:00:00:02\" is not in range at that time");
    const char follows[] = "timeline[0].interface: the Wi-Fi station gives \"wlan0\" its link (\"dropped\" takes it)";
    event("link lost", "'at':1,'event':'link-lost','interface':'wlan0'", follows);
    event("link regained", "'at':1,'event':'link-regained','interface':'wlan0'", follows);
    event("object", "'at':1,'event':'set','object':'wifi','attributes':{'x':1}",
          "timeline[0].object: \"wifi\" is none of status_public, wifi/status, tethering/status");
    event("daemon", "'at':1,'event':'daemon-dies','daemon':'cellular'",
          "timeline[0].daemon: \"cellular\" is none of networking, wifi, tethering");

    fault("interface", "'fault':'double','message':'scan','interface':'wlan0'",
          "faults[0].interface: only net_connected and net_disconnected name an interface");
    fault("both names", "'fault':'double','ssid':'a','interface':'wlan0'",
          "faults[0].interface: only net_connected and net_disconnected name an interface");
    fault("ssid of another", "'fault':'double','message':'wnet_select','ssid':'a'",
          "faults[0].ssid: only wnet_new names a network");
    fault("ssid of another daemon", "'fault':'double','message':'net_connected','ssid':'a'",
          "faults[0].ssid: only wnet_new names a network");
    fault("empty ssid", "'fault':'double','ssid':''", "faults[0].ssid: must have 1 to 32 bytes");
    fault("long ssid", "'fault':'double','ssid':'12345678901234567890123456789012+'",
          "faults[0].ssid: must have 1 to 32 bytes");

    fault("unknown ssid", "'fault':'double','ssid':'A'", "faults[0].ssid: no access point has this name");
    fault("unknown ssid of a new network", "'fault':'double','message':'wnet_new','ssid':'ab'",
          "faults[0].ssid: no access point has this name");

    without("event", "'timeline':[{'at':1,'event':'radio-off'}]",
            "timeline[0].event: there is no \"wifi\" in this scenario");
    without("object", "'timeline':[{'at':1,'event':'set','object':'wifi/status','attributes':{'x':1}}]",
            "timeline[0].object: there is no \"wifi\" in this scenario");
    without("daemon", "'timeline':[{'at':1,'event':'daemon-dies','daemon':'wifi'}]",
            "timeline[0].daemon: there is no \"wifi\" in this scenario");
    without("message", "'faults':[{'fault':'double','message':'scan'}]",
            "faults[0].message: there is no \"wifi\" in this scenario");
    without("ssid", "'faults':[{'fault':'double','ssid':'a'}]",
            "faults[0].ssid: there is no \"wifi\" in this scenario");
}

void WifiReaderTest::errors()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    Scenario scenario;
    QString error;
    QVERIFY(!readScenario(text, &scenario, &error));
    QCOMPARE(error, expected);
}

void WifiReaderTest::neverShowsAPasskey()
{
    Scenario scenario;
    QString error;
    QVERIFY(!readScenario(scenarioWith(json("{'bssid':'02:00:00:00:00:0A','ssid':'','frequency':1,'signal_level':0,"
                                            "'flags':[],'passkey':'TopSecret\xc3\xa9'}")),
                          &scenario, &error));
    QVERIFY2(error.contains(QStringLiteral("passkey")) && !error.contains(QStringLiteral("Secret")), qPrintable(error));
}

QTEST_GUILESS_MAIN(WifiReaderTest)
#include "tst_wifireader.moc"
