// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "stageclient.h"

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char World[] = R"({
    'interfaces': [
        {'name': 'eth0', 'type': 'wired', 'connected': true, 'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}},
        {'name': 'tun0', 'type': 'vpn', 'parent_interface': 'eth0', 'manual': {'ip_addresses': ['10.8.0.6/255.0.0.0']}},
        {'name': 'usb0', 'type': 'usb', 'present': false, 'lease': {'ip_addresses': ['10.1.0.5/255.0.0.0']}},
        {'name': 'wlan0', 'type': 'wifi', 'connected': true, 'lease': {'ip_addresses': ['10.2.0.5/255.0.0.0']}}],
    'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:11', 'access_points': [
        {'bssid': '02:00:00:00:00:11', 'ssid': 'Home', 'frequency': 2437, 'signal_level': -48, 'drift': 9,
         'flags': ['WPA2-PSK-CCMP'], 'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:12', 'ssid': 'Home', 'frequency': 5180, 'signal_level': -63, 'drift': 9,
         'flags': ['WPA2-PSK-CCMP'], 'passkey': 'correct horse 7'},
        {'bssid': '02:00:00:00:00:13', 'ssid': 'Garage', 'frequency': 2412, 'signal_level': -57, 'drift': 9,
         'flags': ['WPA2-PSK-CCMP'], 'passkey': 'open sesame 42'},
        {'bssid': '02:00:00:00:00:14', 'ssid': 'Far', 'frequency': 2412, 'signal_level': -80, 'flags': ['ESS'],
         'in_range': false}]},
    'hotspot': {'profile': {'ssid': 'Car', 'passphrase': 'drive safely 8', 'mhs_band': '5.0', 'max_num_sta': 10,
        'security_type': 'wpa2', 'autoshutdown_time': 600, 'privacy': false, 'block_conn': false}},
    'timeline': [{'at': 1000, 'event': 'appear', 'interface': 'usb0'},
                 {'at': 2000, 'event': 'vanish', 'interface': 'usb0'}],
    'faults': [{'message': 'wnet_disableall', 'fault': 'refuse', 'err': 7, 'errmsg': 'as the scenario says'}]
})";

const QString Done = QStringLiteral("done");
const QString Ok = QStringLiteral("ok");

} // namespace

/*! What is played in a running daemon whose world is held, and what comes of it at once. */
class StageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void playsLinks();
    void playsAWordOfEitherKind();
    void playsInterfaces();
    void playsTheRanking();
    void playsAttributes();
    void playsAccessPoints();
    void playsDrops();
    void playsAWrongKey();
    void aWrongKeyIsOfOneNetwork();
    void playsTheRadio();
    void playsTheHotspot();
    void aDaemonDiesAndComesBack();
    void aDaemonThatIsBackDoesNotComeBackAgain();
    void aDaemonCannotComeBackToAPlaceThatIsTaken();

    void refusesTheNextRequests();
    void playsEachFault();
    void playsFaultsInOrder();
    void aDaemonDiesOfARequest();
    void faultsEnd();
    void takesAThousandFaults();

    void refusals_data();
    void refusals();

    void heldLevelsDoNotDrift();
    void heldTimePassesOnRequest();
    void heldHotspotStopsWhenItsTimeHasPassed();
    void aReplyIsLateUntilItsTimeHasPassed();
    void unheldTimePassesByItself();

    void looksAtRequests();
    void looksAtRequestsSince();
    void looksAtTheLastThousandRequests();
    void looksAtObjectsAsTheyAre();
    void looksAtDaemons();
    void looksAtFaultsWithoutTheirAnswers();
    void showsNoSecret();
    void refusesWithoutRepeatingSecrets();
    void refusesWhatADaemonThatIsLeftOutWouldTell_data();
    void refusesWhatADaemonThatIsLeftOutWouldTell();
    void onlyLooksAtThisMachine();

private:
    static QString text(const QString &path, const char *name) { return Seen(path).text(name); }
    static QString interface(const char *name, const char *attribute) { return text(interfacePath(name), attribute); }
    static QString wifi(const char *attribute) { return text(QLatin1String(WifiStatus), attribute); }
    static QString hotspot() { return text(QLatin1String(TetheringStatus), "state"); }
    QString act(const char *line) { return m_client->act(line); }
    QString join(const char *ssid, const char *passkey, const char *identifier) const;
    QString levels() const;

    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<StageClient> m_client;
    std::unique_ptr<ZopObject> m_networking;
    std::unique_ptr<ZopObject> m_wifi;
    std::unique_ptr<ZopObject> m_tethering;
};

void StageTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->startWith(World, {QStringLiteral("--hold")}));
    m_client = std::make_unique<StageClient>(m_daemon->root());
    const auto open = [](const char *path) {
        return std::make_unique<ZopObject>(QLatin1String(path), ZopObject::ReadWrite, false);
    };
    m_networking = open(Control);
    m_wifi = open(WifiControl);
    m_tethering = open(TetheringControl);
}

void StageTest::cleanup()
{
    m_networking.reset();
    m_wifi.reset();
    m_tethering.reset();
    m_client.reset();
    m_daemon.reset();
}

/*! Joins a network by requests; the event that comes of it. */
QString StageTest::join(const char *ssid, const char *passkey, const char *identifier) const
{
    const Seen status {QLatin1String(WifiStatus)};
    const QString network = QStringLiteral("{'ssid':'%1','key_mgmt':'WPA-PSK','psk':'%2'}")
                                .arg(QLatin1String(ssid), QLatin1String(passkey));
    if (Request(m_wifi.get(), "wnet_new", qPrintable(network)).answer() != QLatin1String(identifier)
        || Request(m_wifi.get(), "wnet_select", identifier).outcome() != Ok)
        return QStringLiteral("refused");
    QString event;
    const auto isTold = [&] {
        // What was there before is left first.
        for (const QString &line : status.lines()) {
            if (!line.contains(QLatin1String("CTRL-EVENT-DISCONNECTED")))
                event = line.section(QLatin1Char('='), 1).section(QLatin1String(" wifi_status="), 0, 0);
        }
        return !event.isEmpty();
    };
    return QTest::qWaitFor(isTold, Patience) ? event : QStringLiteral("nothing");
}

/*! The levels of a new scan. */
QString StageTest::levels() const
{
    if (Request(m_wifi.get(), "scan").outcome() != Ok)
        return QStringLiteral("refused");
    const Seen status {QLatin1String(WifiStatus)};
    if (!QTest::qWaitFor([&] { return status.text("last_event") == QLatin1String("CTRL-EVENT-SCAN-RESULTS "); },
                         Patience))
        return QStringLiteral("nothing");
    QStringList levels;
    const QJsonArray results = QJsonDocument::fromJson(status.text("scan_results").toUtf8()).array();
    for (const QJsonValue &result : results)
        levels += result.toObject().value(QLatin1String("signal_level")).toString();
    return levels.join(QLatin1Char(' '));
}

void StageTest::playsLinks()
{
    QCOMPARE(act("{'event':'link-lost','interface':'eth0'}"), Done);
    QCOMPARE(interface("eth0", "up"), QStringLiteral("false"));
    QCOMPARE(interface("eth0", "connected"), QStringLiteral("false"));
    QCOMPARE(interface("eth0", "ip_addresses"), QStringLiteral("[]"));
    QCOMPARE(act("{'event':'link-regained','interface':'eth0'}"), Done);
    QCOMPARE(interface("eth0", "connected"), QStringLiteral("true"));
    QCOMPARE(interface("eth0", "ip_addresses"), QStringLiteral("[\"10.0.0.5/255.0.0.0\"]"));
}

void StageTest::playsAWordOfEitherKind()
{
    QCOMPARE(act("{'act':'link-lost','interface':'eth0'}"), Done);
    QCOMPARE(interface("eth0", "up"), QStringLiteral("false"));
    QCOMPARE(act("{'act':'refuse','message':'scan','err':16,'times':1}"), Done);
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), QStringLiteral("16 "));
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), Ok);
}

void StageTest::playsInterfaces()
{
    const auto isThere = [](const char *name) {
        return ZopObject(interfacePath(name), ZopObject::Subscribe, false).isValid();
    };
    QCOMPARE(act("{'event':'vanish','interface':'eth0'}"), Done);
    QVERIFY(!isThere("eth0"));
    QCOMPARE(act("{'event':'appear','interface':'eth0'}"), Done);
    QVERIFY(isThere("eth0"));
    QCOMPARE(interface("eth0", "connected"), QStringLiteral("true"));
}

void StageTest::playsTheRanking()
{
    const auto status = [](const char *name) { return text(QLatin1String(Status), name); };
    QCOMPARE(status("default_interface"), QStringLiteral("eth0"));
    QCOMPARE(act("{'event':'priority','order':['wlan0','eth0']}"), Done);
    QCOMPARE(status("priority"), QStringLiteral("[\"wlan0\",\"eth0\"]"));
    QCOMPARE(status("default_interface"), QStringLiteral("wlan0"));
    QCOMPARE(act("{'event':'default','interface':'tun0'}"), Done);
    QCOMPARE(status("default_interface"), QStringLiteral("tun0"));
    QCOMPARE(act("{'event':'default','interface':''}"), Done);
    QCOMPARE(status("default_interface"), QString());
    QCOMPARE(act("{'event':'default-follows'}"), Done);
    QCOMPARE(status("default_interface"), QStringLiteral("wlan0"));
}

void StageTest::playsAttributes()
{
    QCOMPARE(act("{'event':'set','interface':'eth0','attributes':{'mtu':'lots','ip_addresses':"
                 "{'encoding':'json','text':'[1,'}}}"),
             Done);
    QCOMPARE(interface("eth0", "mtu"), QStringLiteral("lots"));
    QCOMPARE(interface("eth0", "ip_addresses"), QStringLiteral("[1,"));
    QCOMPARE(act("{'event':'remove','interface':'eth0','attributes':['mtu']}"), Done);
    QVERIFY(!Seen(interfacePath("eth0")).has("mtu"));
    QCOMPARE(act("{'event':'set','object':'wifi/status','attributes':{'wifi_power':'perhaps'}}"), Done);
    QCOMPARE(wifi("wifi_power"), QStringLiteral("perhaps"));
}

void StageTest::playsAccessPoints()
{
    QCOMPARE(act("{'event':'roam','bssid':'02:00:00:00:00:12'}"), Done);
    QVERIFY(wifi("wifi_status").contains(QLatin1String("02:00:00:00:00:12")));
    QCOMPARE(act("{'event':'out-of-range','bssid':'02:00:00:00:00:12'}"), Done);
    QVERIFY(wifi("wifi_status").contains(QLatin1String("02:00:00:00:00:11")));
    QCOMPARE(act("{'event':'in-range','bssid':'02:00:00:00:00:14'}"), Done);
    QCOMPARE(act("{'event':'signal','bssid':'02:00:00:00:00:13','signal_level':-30}"), Done);
    QCOMPARE(levels(), QStringLiteral("-48 -30 -80"));
}

void StageTest::playsDrops()
{
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(act("{'event':'dropped','reason':6}"), Done);
    // It comes back, as the network stays selected.
    QTRY_COMPARE(status.lines().size(), 2);
    QCOMPARE(status.lines().first(),
             QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:00:11 reason=6 -wifi_status"));
    QVERIFY(status.lines().last().startsWith(
        QLatin1String("last_event=CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:00:11 completed")));
    QCOMPARE(act("{'event':'wifi-event','text':'CTRL-EVENT-NOBODY-KNOWS'}"), Done);
    QCOMPARE(wifi("last_event"), QStringLiteral("CTRL-EVENT-NOBODY-KNOWS"));
}

void StageTest::playsAWrongKey()
{
    QCOMPARE(act("{'event':'wrong-key','ssid':'Garage'}"), Done);
    QCOMPARE(join("Garage", "open sesame 42", "1"),
             QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=1 ssid=\"Garage\" auth_failures=1 duration=10 "
                            "reason=WRONG_KEY"));
    QCOMPARE(join("Garage", "open sesame 42", "2"),
             QStringLiteral("CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:00:13 completed [id=2 id_str=]"));
}

void StageTest::aWrongKeyIsOfOneNetwork()
{
    QCOMPARE(act("{'event':'wrong-key','ssid':'Home'}"), Done);
    QVERIFY(join("Garage", "open sesame 42", "1").startsWith(QLatin1String("CTRL-EVENT-CONNECTED")));
    QVERIFY(join("Home", "correct horse 7", "2").startsWith(QLatin1String("CTRL-EVENT-SSID-TEMP-DISABLED id=2")));
}

void StageTest::playsTheRadio()
{
    QCOMPARE(act("{'event':'radio-off'}"), Done);
    QCOMPARE(wifi("wifi_power"), QStringLiteral("off"));
    QCOMPARE(interface("wlan0", "connected"), QStringLiteral("false"));
    QCOMPARE(act("{'event':'radio-on'}"), Done);
    QCOMPARE(wifi("wifi_power"), QStringLiteral("on"));
    QCOMPARE(interface("wlan0", "connected"), QStringLiteral("true"));
}

void StageTest::playsTheHotspot()
{
    QCOMPARE(act("{'event':'hotspot-starts'}"), Done);
    QCOMPARE(hotspot(), QStringLiteral("ACTIVE"));
    QCOMPARE(act("{'event':'hotspot-stops'}"), Done);
    QCOMPARE(hotspot(), QStringLiteral("INACTIVE"));
}

void StageTest::aDaemonDiesAndComesBack()
{
    const auto isServed = [](const char *path) {
        return ZopObject(QLatin1String(path), ZopObject::ReadWrite, false).isValid();
    };
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi'}"), Done);
    QVERIFY(!isServed(WifiControl));
    QVERIFY(isServed(Control));
    QCOMPARE(act("{'event':'radio-off'}"), Done);
    QCOMPARE(wifi("wifi_power"), QStringLiteral("on"));
    QCOMPARE(act("{'event':'daemon-back','daemon':'wifi'}"), Done);
    QVERIFY(isServed(WifiControl));
    QCOMPARE(wifi("wifi_power"), QStringLiteral("off"));
    QCOMPARE(act("{'event':'daemon-dies'}"), Done);
    QVERIFY(!isServed(Control));
    QCOMPARE(act("{'event':'daemon-back'}"), Done);
    QVERIFY(isServed(Control));
}

void StageTest::aDaemonThatIsBackDoesNotComeBackAgain()
{
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi','back_after':1000}"), Done);
    QCOMPARE(act("{'event':'daemon-back','daemon':'wifi'}"), Done);
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi'}"), Done);
    QCOMPARE(act("{'pass':5000}"), Done);
    QCOMPARE(act("{'event':'daemon-back','daemon':'wifi'}"), Done);
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi','back_after':1000}"), Done);
    QCOMPARE(act("{'pass':1000}"), Done);
    QCOMPARE(act("{'event':'daemon-back','daemon':'wifi'}"), QStringLiteral("the wifi daemon is not dead"));
}

void StageTest::aDaemonCannotComeBackToAPlaceThatIsTaken()
{
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi'}"), Done);
    auto other = std::make_unique<ZopObject>(QLatin1String(WifiControl), ZopObject::Publish, true);
    QVERIFY(other->isValid());
    // The other one has to be asked whether it is there.
    m_client->send("{'event':'daemon-back','daemon':'wifi'}\n");
    QTRY_VERIFY(m_client->socket.canReadLine());
    QVERIFY(m_client->answer().contains("the wifi daemon cannot come back yet: its log says why"));
    other.reset();
    QCOMPARE(act("{'event':'daemon-back','daemon':'wifi'}"), Done);
}

void StageTest::refusesTheNextRequests()
{
    QCOMPARE(act("{'fault':'refuse','message':'scan','err':16,'errmsg':'busy','times':2}"), Done);
    QTRY_VERIFY(m_daemon->process().errors().contains("stage   refuse scan\n"));
    QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), QStringLiteral("16 busy"));
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), QStringLiteral("16 busy"));
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), Ok);
}

void StageTest::playsEachFault()
{
    QCOMPARE(act("{'fault':'no-reply','message':'stop','times':1}"), Done);
    QCOMPARE(act("{'fault':'double','message':'scan','times':1}"), Done);
    QCOMPARE(act("{'fault':'ignore','message':'start','times':1}"), Done);
    QCOMPARE(act("{'fault':'answer','message':'retrieve_profile','err':'0','dat':'garbage','times':1}"), Done);
    QCOMPARE(act("{'fault':'no-reply','message':'wifi_power','performs':true,'times':1}"), Done);

    QCOMPARE(act("{'event':'hotspot-starts'}"), Done);
    const Request unanswered(m_tethering.get(), "stop");
    QCOMPARE(Request(m_tethering.get(), "start", "nonsense").outcome(), Ok);
    QCOMPARE(Request(m_tethering.get(), "retrieve_profile", "{'type':'lan','lan_type':'wlanap'}").answer(),
             QStringLiteral("garbage"));
    QCOMPARE(unanswered.finished.count(), 0);
    QCOMPARE(hotspot(), QStringLiteral("ACTIVE"));

    const Request unansweredToo(m_wifi.get(), "wifi_power", "off");
    QTRY_COMPARE(wifi("wifi_power"), QStringLiteral("off"));
    QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    QCOMPARE(unansweredToo.finished.count(), 0);

    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), Ok);
    const QJsonArray requests = m_client->look("requests").toArray();
    QCOMPARE(requests.last().toObject().value(QLatin1String("answers")).toArray(),
             QJsonArray({QStringLiteral("ok"), QStringLiteral("ok")}));
}

void StageTest::playsFaultsInOrder()
{
    // Those that are played come before the scenario's, the earlier one first.
    QCOMPARE(act("{'fault':'refuse','message':'wnet_disableall','err':1,'errmsg':'first','times':1}"), Done);
    QCOMPARE(act("{'fault':'refuse','err':2,'errmsg':'second','times':1}"), Done);
    QCOMPARE(Request(m_wifi.get(), "wnet_disableall").outcome(), QStringLiteral("1 first"));
    QCOMPARE(act("{'fault':'refuse','err':3,'errmsg':'third','times':1}"), Done);
    QCOMPARE(Request(m_wifi.get(), "wnet_disableall").outcome(), QStringLiteral("2 second"));
    QCOMPARE(Request(m_wifi.get(), "wnet_disableall").outcome(), QStringLiteral("3 third"));
    QCOMPARE(Request(m_wifi.get(), "wnet_disableall").outcome(), QStringLiteral("7 as the scenario says"));
}

void StageTest::aDaemonDiesOfARequest()
{
    QCOMPARE(act("{'fault':'die','message':'scan','back_after':1000,'times':1}"), Done);
    QVERIFY(Request(m_wifi.get(), "scan").outcome().startsWith(QStringLiteral("-1 ")));
    QCOMPARE(m_client->look("daemons").toObject().value(QLatin1String("wifi")).toString(), QStringLiteral("dead"));
    QCOMPARE(act("{'pass':999}"), Done);
    QCOMPARE(m_client->look("daemons").toObject().value(QLatin1String("wifi")).toString(), QStringLiteral("dead"));
    QCOMPARE(act("{'pass':1}"), Done);
    QCOMPARE(m_client->look("daemons").toObject().value(QLatin1String("wifi")).toString(), QStringLiteral("alive"));
}

void StageTest::faultsEnd()
{
    QCOMPARE(act("{'fault':'refuse','message':'scan','err':16}"), Done);
    QCOMPARE(act("{'event':'faults-end'}"), Done);
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), Ok);
    QCOMPARE(Request(m_wifi.get(), "wnet_disableall").outcome(), Ok);
    QCOMPARE(m_client->look("faults").toArray(), QJsonArray());
}

void StageTest::takesAThousandFaults()
{
    for (int i = 0; i < 1000; ++i)
        m_client->send("{'fault':'refuse','message':'scan','err':16,'times':1}\n");
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(m_client->answer(), QByteArray("{\"done\":true}"));
    QCOMPARE(act("{'fault':'double'}"), QStringLiteral("too many faults wait for their requests"));
    QCOMPARE(Request(m_wifi.get(), "scan").outcome(), QStringLiteral("16 "));
    QCOMPARE(act("{'fault':'double'}"), Done);
}

void StageTest::refusals_data()
{
    QTest::addColumn<QByteArrayList>("before"); // what is done before
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const char *line, const char *reason, const QByteArrayList &before = {}) {
        QTest::addRow("%s", name) << before << QByteArray(line) << QString::fromLatin1(reason);
    };
    row("no JSON", "link-lost", "line 1, column 1: illegal value");
    row("nothing", "", "line 1, column 1: illegal value");
    row("a key twice", "{'event':'radio-off','event':'radio-on'}", "line 1, column 22: a second \"event\"");
    row("an array", "[]", "must be an object");
    row("no request", "{}", "needs \"act\", \"event\", \"fault\", \"look\" or \"pass\"");
    row("no word", "{'act':1}", "needs \"act\", \"event\", \"fault\", \"look\" or \"pass\"");
    row("a word of no kind", "{'act':'dance'}",
        "neither an event nor a fault: \"dance\" (events: vanish, appear, link-lost, link-regained, set, remove, "
        "default, default-follows, priority, daemon-dies, daemon-back, faults-end, out-of-range, in-range, signal, "
        "roam, "
        "dropped, wrong-key, radio-on, radio-off, wifi-event, hotspot-starts, hotspot-stops; faults: refuse, no-reply, "
        "late, double, die, answer, ignore)");
    row("an event twice", "{'act':'radio-off','event':'radio-off'}", "\"act\" and \"event\" say the same");
    row("two requests", "{'fault':'double','event':'radio-off'}",
        "unknown key \"event\" (known: fault, message, interface, ssid, skip, times)");
    row("a look and more", "{'look':'all','pass':1}", "unknown key \"pass\" (known: look, since)");
    row("a time", "{'at':1,'event':'radio-off'}", "unknown key \"at\" (known: event)");
    row("unknown interface", "{'event':'vanish','interface':'eth9'}", "interface: no interface \"eth9\"");
    row("absent interface", "{'event':'vanish','interface':'usb0'}", "interface: \"usb0\" is not there at that time");
    row("present interface", "{'event':'appear','interface':'eth0'}", "interface: \"eth0\" is there at that time");
    row("vanished interface", "{'event':'link-lost','interface':'eth0'}",
        "interface: \"eth0\" is not there at that time", {"{'event':'vanish','interface':'eth0'}"});
    row("Wi-Fi's link", "{'event':'link-lost','interface':'wlan0'}",
        "interface: the Wi-Fi station gives \"wlan0\" its link (\"dropped\" takes it)");
    row("link lost twice", "{'event':'link-lost','interface':'eth0'}", "\"eth0\" has no link already",
        {"{'event':'link-lost','interface':'eth0'}"});
    row("link regained twice", "{'event':'link-regained','interface':'eth0'}", "\"eth0\" has a link already");
    row("unknown access point", "{'event':'roam','bssid':'02:00:00:00:00:99'}",
        "bssid: no access point \"02:00:00:00:00:99\"");
    row("access point out of range", "{'event':'roam','bssid':'02:00:00:00:00:14'}",
        "bssid: \"02:00:00:00:00:14\" is not in range at that time");
    row("access point in range", "{'event':'in-range','bssid':'02:00:00:00:00:11'}",
        "bssid: \"02:00:00:00:00:11\" is in range at that time");
    row("roams nowhere", "{'event':'roam','bssid':'02:00:00:00:00:11'}",
        "the station is connected to \"02:00:00:00:00:11\" already");
    row("roams to strangers", "{'event':'roam','bssid':'02:00:00:00:00:13'}",
        "the station is not welcome at \"02:00:00:00:00:13\"");
    row("roams unconnected", "{'event':'roam','bssid':'02:00:00:00:00:12'}", "the station is not connected",
        {"{'event':'radio-off'}"});
    row("dropped unconnected", "{'event':'dropped'}", "the station is not connected", {"{'event':'radio-off'}"});
    row("wrong key of nobody", "{'event':'wrong-key','ssid':'Nobody'}",
        "ssid: no access point \"Nobody\" has a passkey");
    row("wrong key where none is asked for", "{'event':'wrong-key','ssid':'Far'}",
        "ssid: no access point \"Far\" has a passkey");
    row("wrong key twice", "{'event':'wrong-key','ssid':'Home'}", "the next attempt to join \"Home\" fails already",
        {"{'event':'wrong-key','ssid':'Home'}"});
    row("radio on twice", "{'event':'radio-on'}", "the radio is on already");
    row("radio off twice", "{'event':'radio-off'}", "the radio is off already", {"{'event':'radio-off'}"});
    row("hotspot stops twice", "{'event':'hotspot-stops'}", "the hotspot is not active or stops already");
    row("hotspot starts twice", "{'event':'hotspot-starts'}", "the hotspot is active or starts already",
        {"{'event':'hotspot-starts'}"});
    row("dead daemon", "{'event':'daemon-dies','daemon':'wifi'}", "the wifi daemon is dead already",
        {"{'event':'daemon-dies','daemon':'wifi'}"});
    row("living daemon", "{'event':'daemon-back','daemon':'tethering'}", "the tethering daemon is not dead");
    row("no fault", "{'fault':'nonsense'}",
        "fault: no fault \"nonsense\" (known: refuse, no-reply, late, double, die, answer, ignore)");
    row("fault of no message", "{'fault':'double','message':'dance'}",
        "message: no message \"dance\" (known: net_connected, net_disconnected, wifi_power, scan, wnet_new, "
        "wnet_select, wnet_disableall, retrieve_profile, update_profile, start, stop)");
    row("no view", "{'look':'everything'}", "look: \"everything\" is none of requests, objects, faults, daemons, all");
    row("no number", "{'look':'requests','since':-1}", "since: must be a whole number from 0 to 2147483647");
    row("no time", "{'pass':-1}", "pass: must be a whole number from 0 to 86400000");
}

void StageTest::refusals()
{
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArray, line);
    for (const QByteArray &event : qAsConst(before))
        QCOMPARE(act(event.constData()), Done);
    QTEST(act(line.constData()), "reason");
    // Nor did it leave anything behind.
    QCOMPARE(m_client->look("faults").toArray().size(), 1);
}

void StageTest::heldLevelsDoNotDrift()
{
    for (int i = 0; i < 5; ++i)
        QCOMPARE(levels(), QStringLiteral("-48 -63 -57"));
}

void StageTest::heldTimePassesOnRequest()
{
    const auto isThere = [] { return ZopObject(interfacePath("usb0"), ZopObject::Subscribe, false).isValid(); };
    QCOMPARE(act("{'pass':999}"), Done);
    QVERIFY(!isThere());
    QCOMPARE(act("{'pass':1}"), Done);
    QVERIFY(isThere());
    QCOMPARE(interface("usb0", "connected"), QStringLiteral("true"));
    QCOMPARE(act("{'pass':999}"), Done);
    QVERIFY(isThere());
    QCOMPARE(act("{'pass':1}"), Done);
    QVERIFY(!isThere());
}

void StageTest::heldHotspotStopsWhenItsTimeHasPassed()
{
    QCOMPARE(act("{'event':'hotspot-starts'}"), Done);
    QCOMPARE(act("{'pass':599999}"), Done);
    QCOMPARE(hotspot(), QStringLiteral("ACTIVE"));
    QCOMPARE(act("{'pass':1}"), Done);
    QCOMPARE(hotspot(), QStringLiteral("INACTIVE"));
}

void StageTest::aReplyIsLateUntilItsTimeHasPassed()
{
    QCOMPARE(act("{'fault':'late','message':'scan','delay':5000,'times':1}"), Done);
    Request late(m_wifi.get(), "scan");
    QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    QCOMPARE(act("{'pass':4999}"), Done);
    QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    QCOMPARE(late.finished.count(), 0);
    QCOMPARE(act("{'pass':1}"), Done);
    QCOMPARE(late.outcome(), Ok);
}

void StageTest::unheldTimePassesByItself()
{
    cleanup();
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->startWith(World, {QStringLiteral("--speed"), QStringLiteral("100")}));
    m_client = std::make_unique<StageClient>(m_daemon->root());
    QCOMPARE(act("{'pass':1}"), QStringLiteral("time passes by itself (--hold lets it stand still)"));
    QTRY_VERIFY(m_daemon->process().errors().contains("event   vanish usb0\n"));
    QCOMPARE(act("{'event':'link-lost','interface':'eth0'}"), Done);
    QCOMPARE(interface("eth0", "connected"), QStringLiteral("false"));
    QCOMPARE(act("{'event':'link-regained','interface':'eth0'}"), Done);
    QTRY_COMPARE(interface("eth0", "connected"), QStringLiteral("true"));
    QVERIFY(m_daemon->process().errors().contains("event   link-lost eth0\n"));
}

void StageTest::looksAtRequests()
{
    QCOMPARE(m_client->look("requests").toArray(), QJsonArray());
    QCOMPARE(Request(m_networking.get(), "net_disconnected", "'eth0'").outcome(), Ok);
    QCOMPARE(Request(m_networking.get(), "net_disconnected", "'eth9'").outcome(),
             QStringLiteral("3 no interface \"eth9\""));
    QCOMPARE(act("{'fault':'no-reply','message':'wnet_new','times':1}"), Done);
    const Request unanswered(m_wifi.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'NONE'}");
    QTRY_COMPARE(m_client->look("requests").toArray().size(), 3);
    const QJsonArray requests = m_client->look("requests").toArray();
    QStringList lines;
    for (const QJsonValue &one : requests) {
        QJsonObject request = one.toObject();
        QVERIFY(request.take(QStringLiteral("at")).toInt(-1) >= 0);
        QVERIFY(request.take(QStringLiteral("text"))
                    .toString()
                    .startsWith(request.value(QLatin1String("message")).toString()));
        lines += QString::fromUtf8(QJsonDocument(request).toJson(QJsonDocument::Compact));
    }
    QCOMPARE(lines.at(0),
             QStringLiteral("{\"answers\":[\"ok\"],\"daemon\":\"networking\",\"interface\":\"eth0\","
                            "\"message\":\"net_disconnected\",\"number\":1}"));
    QCOMPARE(lines.at(1),
             QStringLiteral("{\"answers\":[\"refused (3): no interface \\\"eth9\\\"\"],\"daemon\":\"networking\","
                            "\"interface\":\"eth9\",\"message\":\"net_disconnected\",\"number\":2}"));
    QCOMPARE(lines.at(2),
             QStringLiteral("{\"answers\":[],\"daemon\":\"wifi\",\"message\":\"wnet_new\",\"number\":3,"
                            "\"ssid\":\"Garage\"}"));
}

void StageTest::looksAtRequestsSince()
{
    for (int i = 0; i < 3; ++i)
        QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    const auto numbers = [this](const char *line) {
        QList<int> found;
        const QJsonObject answer = QJsonDocument::fromJson(m_client->ask(line)).object();
        const QJsonArray requests = answer.value(QLatin1String("requests")).toArray();
        for (const QJsonValue &request : requests)
            found += request.toObject().value(QLatin1String("number")).toInt();
        return found;
    };
    QCOMPARE(numbers("{'look':'requests','since':0}"), QList<int>({1, 2, 3}));
    QCOMPARE(numbers("{'look':'requests','since':1}"), QList<int>({2, 3}));
    QCOMPARE(numbers("{'look':'requests','since':3}"), QList<int>());
}

void StageTest::looksAtTheLastThousandRequests()
{
    ZopChangeset request;
    request.assignments.insert(QStringLiteral("msg"), QString(10000, QLatin1Char('x')));
    for (int i = 0; i < 1001; ++i)
        QVERIFY(m_wifi->setAttributes(request));
    QCOMPARE(Request(m_wifi.get(), "wifi_power", "on").outcome(), Ok);
    const QJsonArray requests = m_client->look("requests").toArray();
    QCOMPARE(requests.size(), 1000);
    QCOMPARE(requests.first().toObject().value(QLatin1String("number")).toInt(), 3);
    QCOMPARE(requests.last().toObject().value(QLatin1String("number")).toInt(), 1002);
    QCOMPARE(requests.first().toObject().value(QLatin1String("message")).toString(),
             QString(400, QLatin1Char('x')) + QStringLiteral("..."));
}

void StageTest::looksAtObjectsAsTheyAre()
{
    QCOMPARE(act("{'event':'set','interface':'eth0','attributes':{'a':1,'b':'1','c':['x'],'d':"
                 "{'encoding':'json','text':'[1,'},'e':{'base64':'/wD+'}}}"),
             Done);
    const QJsonObject objects = m_client->look("objects").toObject();
    QCOMPARE(objects.keys(),
             QStringList({interfacePath("eth0"), interfacePath("tun0"), interfacePath("wlan0"), QLatin1String(Status),
                          QLatin1String(TetheringStatus), QLatin1String(WifiStatus)}));
    const QJsonObject eth0 = objects.value(interfacePath("eth0")).toObject();
    QCOMPARE(eth0.value(QLatin1String("connected")), QJsonValue(QStringLiteral("true")));
    QCOMPARE(eth0.value(QLatin1String("a")), QJsonValue(1));
    QCOMPARE(eth0.value(QLatin1String("b")), QJsonValue(QStringLiteral("1")));
    QCOMPARE(eth0.value(QLatin1String("c")), QJsonValue(QJsonArray({QStringLiteral("x")})));
    QCOMPARE(eth0.value(QLatin1String("d")),
             QJsonValue(QJsonObject({{QStringLiteral("encoding"), QStringLiteral("json")},
                                     {QStringLiteral("text"), QStringLiteral("[1,")}})));
    QCOMPARE(eth0.value(QLatin1String("e")),
             QJsonValue(QJsonObject({{QStringLiteral("encoding"), QStringLiteral("text")},
                                     {QStringLiteral("base64"), QStringLiteral("/wD+")}})));
    QCOMPARE(objects.value(QLatin1String(WifiStatus))
                 .toObject()
                 .value(QLatin1String("wifi_status"))
                 .toObject()
                 .value(QLatin1String("ssid")),
             QJsonValue(QStringLiteral("Home")));
    // What a dead daemon has left is there still.
    QCOMPARE(act("{'event':'daemon-dies'}"), Done);
    QCOMPARE(act("{'event':'vanish','interface':'eth0'}"), Done);
    QCOMPARE(m_client->look("objects").toObject().value(interfacePath("eth0")).toObject(), eth0);
}

void StageTest::looksAtDaemons()
{
    cleanup();
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->startWith(World, {QStringLiteral("--without"), QStringLiteral("tethering")}));
    m_client = std::make_unique<StageClient>(m_daemon->root());
    QCOMPARE(act("{'event':'daemon-dies','daemon':'wifi'}"), Done);
    QCOMPARE(m_client->look("daemons").toObject(),
             QJsonObject({{QStringLiteral("networking"), QStringLiteral("alive")},
                          {QStringLiteral("wifi"), QStringLiteral("dead")},
                          {QStringLiteral("tethering"), QStringLiteral("left out")}}));
    QCOMPARE(act("{'event':'daemon-back','daemon':'tethering'}"), QStringLiteral("the tethering daemon is left out"));
    QCOMPARE(act("{'event':'daemon-dies','daemon':'tethering'}"), QStringLiteral("the tethering daemon is left out"));
}

void StageTest::looksAtFaultsWithoutTheirAnswers()
{
    QCOMPARE(act("{'fault':'answer','message':'retrieve_profile','dat':'drive safely 8','skip':1,'times':2}"), Done);
    QCOMPARE(act("{'fault':'late','ssid':'Garage','delay':7,'skip':1,'times':1}"), Done);
    QCOMPARE(act("{'fault':'double','interface':'eth0','times':1}"), Done);
    QCOMPARE(Request(m_networking.get(), "net_disconnected", "'eth0'").outcome(), Ok);
    QCOMPARE(Request(m_tethering.get(), "retrieve_profile", "{'type':'lan','lan_type':'wlanap'}").outcome(), Ok);
    const QString faults =
        QString::fromUtf8(QJsonDocument(m_client->look("faults").toArray()).toJson(QJsonDocument::Compact));
    QCOMPARE(faults,
             QStringLiteral("[{\"fault\":\"answer\",\"message\":\"retrieve_profile\",\"times\":2},"
                            "{\"fault\":\"late\",\"skip\":1,\"ssid\":\"Garage\",\"times\":1},"
                            "{\"fault\":\"refuse\",\"message\":\"wnet_disableall\"}]"));
}

void StageTest::showsNoSecret()
{
    QVERIFY(join("Garage", "open sesame 42", "1").startsWith(QLatin1String("CTRL-EVENT-CONNECTED")));
    QCOMPARE(act("{'event':'hotspot-starts'}"), Done);
    const QString profile =
        Request(m_tethering.get(), "retrieve_profile", "{'type':'lan','lan_type':'wlanap'}").answer();
    QVERIFY(profile.contains(QLatin1String("drive safely 8")));
    QCOMPARE(Request(m_tethering.get(), "update_profile", qPrintable(profile)).outcome(), Ok);
    QVERIFY(!Request(m_tethering.get(), "stop", "'drive safely 8'").outcome().isEmpty());
    const QByteArray all = m_client->ask("{'look':'all'}");
    QVERIFY(all.contains("update_profile") && all.contains("wnet_new"));
    for (const char *secret : {"open sesame 42", "drive safely 8", "correct horse 7"})
        QVERIFY2(!all.contains(secret), all.constData());
}

void StageTest::refusesWithoutRepeatingSecrets()
{
    const QByteArrayList lines {
        "{'fault':'answer','message':'update_profile','dat':'drive safely 8'",
        "{'fault':'answer','message':'update_profile','dat':'drive safely 8',}",
        "{'fault':'answer','message':'update_profile','dat':'drive safely 8','dat':'drive safely 8'}",
        "{'fault':'answer','message':'update_profile','passphrase':'drive safely 8'}",
        "{'fault':'answer','message':'update_profile','dat':{'text':'drive safely 8','base64':'drive safely 8'}}",
        "{'fault':'refuse','message':'update_profile','err':'drive safely 8'}",
        "{'event':'set','interface':'eth0','attributes':'drive safely 8'}",
        "{'event':'wrong-key','ssid':{'psk':'drive safely 8'}}",
        "{'psk':'drive safely 8'}",
        "'drive safely 8'",
        "drive safely 8",
    };
    for (const QByteArray &line : lines) {
        const QByteArray answer = m_client->ask(line.constData());
        QVERIFY2(answer.startsWith("{\"done\":false,"), answer.constData());
        QVERIFY2(!answer.contains("safely"), answer.constData());
    }
    QVERIFY(!m_daemon->process().errors().contains("safely"));
}

void StageTest::refusesWhatADaemonThatIsLeftOutWouldTell_data()
{
    QTest::addColumn<QString>("daemon");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("isRefused");
    const auto row = [](const char *daemon, const char *line, bool isRefused) {
        QTest::addRow("%s: %s", daemon, line) << QString::fromLatin1(daemon) << QByteArray(line) << isRefused;
    };
    row("networking", "{'fault':'double','message':'net_connected'}", true);
    row("networking", "{'fault':'double','interface':'eth0'}", true);
    row("networking", "{'fault':'double','message':'scan'}", false);
    row("networking", "{'fault':'double','message':'start'}", false);
    row("networking", "{'fault':'double'}", false);
    row("networking", "{'event':'link-lost','interface':'eth0'}", true);
    row("networking", "{'event':'vanish','interface':'wlan0'}", false);
    row("wifi", "{'fault':'double','message':'scan'}", true);
    row("wifi", "{'fault':'double','ssid':'Home'}", true);
    row("wifi", "{'fault':'double','interface':'eth0'}", false);
    row("wifi", "{'event':'wifi-event','text':'x'}", true);
    row("wifi", "{'event':'set','object':'wifi/status','attributes':{'a':1}}", true);
    row("wifi", "{'event':'set','interface':'wlan0','attributes':{'a':1}}", false);
    row("wifi", "{'event':'radio-off'}", false);
    row("tethering", "{'fault':'double','message':'start'}", true);
    row("tethering", "{'fault':'double','ssid':'Home'}", false);
    row("tethering", "{'event':'hotspot-starts'}", true);
    row("tethering", "{'event':'radio-off'}", false);
}

void StageTest::refusesWhatADaemonThatIsLeftOutWouldTell()
{
    QFETCH(QString, daemon);
    QFETCH(QByteArray, line);
    QFETCH(bool, isRefused);
    cleanup();
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->startWith(World, {QStringLiteral("--without"), daemon}));
    m_client = std::make_unique<StageClient>(m_daemon->root());
    QCOMPARE(act(line.constData()), isRefused ? QStringLiteral("the %1 daemon is left out").arg(daemon) : Done);
    QCOMPARE(m_client->look("faults").toArray().size(), isRefused || line.contains("event") ? 1 : 2);
}

void StageTest::onlyLooksAtThisMachine()
{
    cleanup();
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->process().start(m_daemon->root(), {QStringLiteral("--interfaces"), QStringLiteral("system")}));
    m_client = std::make_unique<StageClient>(m_daemon->root());
    const QString refusal = QStringLiteral("this machine's own interfaces are shown: nothing can be played");
    QCOMPARE(act("{'event':'daemon-dies'}"), refusal);
    QCOMPARE(act("{'fault':'double'}"), refusal);
    QCOMPARE(act("{'pass':1}"), refusal);
    QVERIFY(m_client->look("objects").toObject().contains(QLatin1String(Status)));
    QCOMPARE(m_client->look("daemons").toObject(),
             QJsonObject({{QStringLiteral("networking"), QStringLiteral("alive")}}));
}

QTEST_GUILESS_MAIN(StageTest)
#include "tst_stage.moc"
