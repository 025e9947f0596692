// SPDX-License-Identifier: Apache-2.0
#include "scenarioreader.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QByteArray Profile = "{'ssid':'Car','passphrase':'12345678','mhs_band':'2.4','max_num_sta':5,"
                           "'security_type':'wpa','autoshutdown_time':60,'privacy':true,'block_conn':false}";
const QByteArray Hotspot = "'hotspot':{'profile':" + Profile + "}";

/*! A scenario; single quotes stand for double ones. */
QByteArray scenarioWith(const QByteArray &keys)
{
    return QByteArray("{'interfaces':[{'name':'eth0','type':'wired'}]," + keys + "}").replace('\'', '"');
}

} // namespace

/*! What a scenario says of the hotspot. */
class HotspotReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallest();
    void everyKey();
    void without();
    void events();
    void faults();
    void delays();
    void errors_data();
    void errors();
    void neverShowsAPassphrase();
};

void HotspotReaderTest::smallest()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith(Hotspot), &scenario, &error), qPrintable(error));
    QVERIFY(!scenario.hotspot.active);
    const QByteArray document =
        R"({"type":"lan","lantype":"wlanap","wantype":"bridge","lancfg":{"gateway_address":"192.168.0.1",)"
        R"("gateway_subnet":"255.255.255.0","dhcp_lease_time":"120"},"lanprofile":)"
        + QByteArray(Profile).replace('\'', '"') + "}";
    QCOMPARE(scenario.hotspot.profile, QJsonDocument::fromJson(document).object());
    QCOMPARE(scenario.delays.hotspotStart.from, 500);
    QCOMPARE(scenario.delays.hotspotStart.to, 1500);
    QCOMPARE(scenario.delays.hotspotStop.from, 200);
    QCOMPARE(scenario.delays.hotspotStop.to, 600);
}

void HotspotReaderTest::everyKey()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith("'hotspot':{'active':true,'profile':" + Profile + "}"), &scenario, &error),
             qPrintable(error));
    QVERIFY(scenario.hotspot.active);
}

void HotspotReaderTest::without()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith("'seed':1"), &scenario, &error), qPrintable(error));
    QVERIFY(scenario.hotspot.profile.isEmpty());
}

void HotspotReaderTest::events()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith(Hotspot + R"(,'timeline': [
        {'at': 0, 'event': 'hotspot-starts'},
        {'at': 1, 'event': 'hotspot-stops'},
        {'at': 2, 'event': 'set', 'object': 'tethering/status', 'attributes': {'state': 'x'}},
        {'at': 3, 'event': 'remove', 'object': 'tethering/status', 'attributes': ['state']},
        {'at': 4, 'event': 'daemon-dies', 'daemon': 'tethering', 'back_after': 9}])"),
                          &scenario, &error),
             qPrintable(error));
    const QVector<TimelineEvent> &events = scenario.timeline;
    QCOMPARE(events.size(), 5);
    QCOMPARE(events.at(0).kind, TimelineEvent::HotspotStarts);
    QCOMPARE(events.at(0).text, QStringLiteral("hotspot-starts"));
    QCOMPARE(events.at(1).kind, TimelineEvent::HotspotStops);
    QCOMPARE(events.at(2).service, Service::Tethering);
    QCOMPARE(events.at(2).changes.assignments.value(QStringLiteral("state")), ZopVariant("x", "text"));
    QCOMPARE(events.at(3).service, Service::Tethering);
    QCOMPARE(events.at(4).service, Service::Tethering);
    QCOMPARE(events.at(4).backAfter, 9);
}

void HotspotReaderTest::faults()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith(Hotspot + R"(,'faults': [
        {'fault': 'refuse', 'message': 'retrieve_profile', 'err': 5},
        {'fault': 'ignore', 'message': 'start', 'times': 2},
        {'fault': 'answer', 'message': 'stop'},
        {'fault': 'answer', 'message': 'update_profile', 'res': 'x', 'err': 0, 'errmsg': {'base64': '/w=='},
         'dat': [1]},
        {'fault': 'ignore'}])"),
                          &scenario, &error),
             qPrintable(error));
    const QVector<Fault> &faults = scenario.faults;
    QCOMPARE(faults.size(), 5);
    QCOMPARE(faults.at(0).message, QStringLiteral("retrieve_profile"));
    QCOMPARE(faults.at(0).reply.size(), 0);
    QCOMPARE(faults.at(1).kind, Fault::Answer);
    QCOMPARE(faults.at(1).times, 2);
    QCOMPARE(faults.at(1).reply, Attributes({{QStringLiteral("err"), ZopVariant("0", "text")}}));
    QCOMPARE(faults.at(2).kind, Fault::Answer);
    QCOMPARE(faults.at(2).reply, Attributes());
    QCOMPARE(faults.at(3).reply,
             Attributes({{QStringLiteral("res"), ZopVariant("x", "text")},
                         {QStringLiteral("err"), ZopVariant("0", "number")},
                         {QStringLiteral("errmsg"), ZopVariant("\xff", "text")},
                         {QStringLiteral("dat"), ZopVariant("[1]", "json")}}));
    QCOMPARE(faults.at(4).message, QString());
}

void HotspotReaderTest::delays()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(scenarioWith("'delays':{'hotspot_start':[1,2],'hotspot_stop':[3,4]}"), &scenario, &error),
             qPrintable(error));
    QCOMPARE(scenario.delays.hotspotStart.from, 1);
    QCOMPARE(scenario.delays.hotspotStart.to, 2);
    QCOMPARE(scenario.delays.hotspotStop.from, 3);
    QCOMPARE(scenario.delays.hotspotStop.to, 4);
}

void HotspotReaderTest::errors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QByteArray &keys, const char *expected) {
        QTest::addRow("%s", name) << scenarioWith(keys) << QString::fromUtf8(expected);
    };
    const auto profile = [&row](const char *name, const char *before, const char *after, const char *expected) {
        row(name, QByteArray(Hotspot).replace(before, after), expected);
    };
    row("no object", "'hotspot':true", "hotspot: must be an object");
    row("no profile", "'hotspot':{}", "hotspot: \"profile\" is missing");
    row("unknown key", "'hotspot':{'interface':'wlan0'}",
        "hotspot: unknown key \"interface\" (known: active, profile)");
    row("active", "'hotspot':{'active':1,'profile':" + Profile + "}", "hotspot.active: must be true or false");
    row("profile is a text", "'hotspot':{'profile':'Car'}", "hotspot.profile: must be an object");
    row("profile is empty", "'hotspot':{'profile':{}}", "hotspot.profile: \"ssid\" is missing");
    profile("missing", "'passphrase'", "'passkey'", "hotspot.profile: \"passphrase\" is missing");
    profile("unknown", "'ssid'", "'hidden':true,'ssid'",
            "hotspot.profile: the hotspot's profile has an unknown member");
    profile("type", "'Car'", "1", "hotspot.profile: \"ssid\" is not a text");
    profile("value", "'2.4'", "'2'", "hotspot.profile: \"mhs_band\" must be 2.4 or 5.0");

    const char none[] = "there is no \"hotspot\" in this scenario";
    const auto event = [&row](const char *name, const char *keys, const QByteArray &expected) {
        row(name, QByteArray("'timeline':[{'at':1,") + keys + "}]", ("timeline[0]." + expected).constData());
    };
    event("starts without", "'event':'hotspot-starts'", QByteArray("event: ") + none);
    event("stops without", "'event':'hotspot-stops'", QByteArray("event: ") + none);
    event("status without", "'event':'remove','object':'tethering/status','attributes':['x']",
          QByteArray("object: ") + none);
    event("daemon without", "'event':'daemon-dies','daemon':'tethering'", QByteArray("daemon: ") + none);
    row("key of another event", Hotspot + ",'timeline':[{'at':1,'event':'hotspot-stops','reason':3}]",
        "timeline[0]: unknown key \"reason\" (known: at, event)");

    for (const char *message : {"retrieve_profile", "update_profile", "start", "stop"}) {
        const QByteArray fault = QByteArray("'faults':[{'fault':'double','message':'") + message + '\'';
        row(message, fault + "}]", (QByteArray("faults[0].message: ") + none).constData());
        row((QByteArray(message) + " names no interface").constData(), Hotspot + ',' + fault + ",'interface':'eth0'}]",
            "faults[0].interface: only net_connected and net_disconnected name an interface");
    }
    row("ignore takes nothing", "'faults':[{'fault':'ignore','err':1}]",
        "faults[0]: unknown key \"err\" (known: fault, message, interface, ssid, skip, times)");
    row("answer takes no code", "'faults':[{'fault':'answer','code':1}]",
        "faults[0]: unknown key \"code\" (known: fault, message, interface, ssid, skip, times, res, err, errmsg, dat)");
    row("answer with null", "'faults':[{'fault':'answer','dat':null}]",
        "faults[0].dat: null is no value; the event \"remove\" removes an attribute");
}

void HotspotReaderTest::errors()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    Scenario scenario;
    QString error;
    QVERIFY(!readScenario(text, &scenario, &error));
    QCOMPARE(error, expected);
}

void HotspotReaderTest::neverShowsAPassphrase()
{
    for (const char *passphrase : {"Secret", "SecretSecretSecret\\u00e9"}) {
        Scenario scenario;
        QString error;
        QVERIFY(!readScenario(scenarioWith(QByteArray(Hotspot).replace("12345678", passphrase)), &scenario, &error));
        QCOMPARE(error,
                 QStringLiteral("hotspot.profile: \"passphrase\" must be 8 to 63 printable ASCII characters or 64 "
                                "hexadecimal digits"));
    }
}

QTEST_GUILESS_MAIN(HotspotReaderTest)
#include "tst_hotspotreader.moc"
