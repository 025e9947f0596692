// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

QString leftEvent(const char *bssid, int reason)
{
    return QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=%1 reason=%2 -wifi_status")
        .arg(QLatin1String(bssid))
        .arg(reason);
}

QString joinedEvent(const char *bssid, int identifier, const char *ssid)
{
    return QStringLiteral("last_event=CTRL-EVENT-CONNECTED - Connection to %1 completed [id=%2 id_str=] "
                          "wifi_status={\"bssid\":\"%1\",\"key_mgmt\":\"WPA2-PSK\",\"pairwise_cipher\":\"CCMP\","
                          "\"ssid\":\"%3\"}")
        .arg(QLatin1String(bssid))
        .arg(identifier)
        .arg(QLatin1String(ssid));
}

/*! Before it is ready, a station that was connected has left. */
const char RadioGoesOff[] =
    "{'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'connected': true, 'lease': {'ip_addresses': "
    "['10.0.0.5/255.0.0.0']}}], 'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': ["
    "{'bssid': '02:00:00:00:00:01', 'ssid': 'a', 'frequency': 1, 'signal_level': 0, 'flags': []}]}, "
    "'timeline': [{'at': 0, 'event': 'radio-off'}]}";

} // namespace

/*! The Wi-Fi scenarios, as clients see them. */
class WifiPlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup();

    void security_data();
    void security();
    void scansNamesThatAreHardToWrite();
    void roaming();
    void outOfRange();
    void refused();
    void noReply();
    void late();
    void doubled();
    void repliesTakeTheirTime();
    void noReplyButPerformed();
    void neverAnswers();
    void diesInAConnect();
    void diesAtItsTime();
    void scanResultsAreNotToldAgain();
    void theOtherDaemonStays();
    void garbage();
    void otherEvents();
    void withoutWifi();
    void withoutNetworking();
    void withoutBoth();
    void leftOutDaemonDoesNotComeBack();

private:
    bool start(const char *scenario, const char *speed = "100");
    bool startWith(const char *scenario);
    /*! What comes of joining a network: "connected KEY_MGMT CIPHER", or the event. */
    QString join(const char *ssid, const char *passkey);

    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<ZopObject> m_control;
    std::unique_ptr<Seen> m_status;
};

void WifiPlayTest::cleanup()
{
    m_status.reset();
    m_control.reset();
    m_daemon.reset();
}

bool WifiPlayTest::start(const char *scenario, const char *speed)
{
    // Before the daemon, so that no event of the first moment is missed; it is not told of the start.
    if (!m_daemon->makeRoot() || !ZopObject::create(QLatin1String(WifiStatus), {}))
        return false;
    m_status = std::make_unique<Seen>(QLatin1String(WifiStatus));
    const bool started = m_daemon->start(QLatin1String(scenario), {QStringLiteral("--speed"), QLatin1String(speed)});
    m_control = std::make_unique<ZopObject>(QLatin1String(WifiControl), ZopObject::ReadWrite, true);
    return started;
}

bool WifiPlayTest::startWith(const char *scenario)
{
    if (!m_daemon->makeRoot() || !ZopObject::create(QLatin1String(WifiStatus), {}))
        return false;
    m_status = std::make_unique<Seen>(QLatin1String(WifiStatus));
    const bool started = m_daemon->startWith(scenario);
    m_control = std::make_unique<ZopObject>(QLatin1String(WifiControl), ZopObject::ReadWrite, true);
    return started;
}

QString WifiPlayTest::join(const char *ssid, const char *passkey)
{
    QJsonObject network {{QStringLiteral("ssid"), QString::fromUtf8(ssid)}};
    network.insert(QStringLiteral("key_mgmt"), passkey ? QStringLiteral("WPA-PSK") : QStringLiteral("NONE"));
    if (passkey)
        network.insert(QStringLiteral("psk"), QLatin1String(passkey));
    ZopControlCommand added(m_control.get());
    added.setMessage(QStringLiteral("wnet_new"));
    added.setDat(network);
    QSignalSpy finished(&added, &ZopControlCommand::finished);
    added.start();
    if (!finished.wait(Patience) || added.hasError())
        return QStringLiteral("refused ") + added.errorString();
    const QString selected =
        Request(m_control.get(), "wnet_select", qPrintable(added.datResponse().toString())).outcome();
    if (selected != QLatin1String("ok"))
        return selected;
    const QString identifier = QStringLiteral("id=%1 ").arg(added.datResponse().toString());
    const auto ended = [this, &identifier] {
        const QString event = m_status->text("last_event");
        return event.contains(identifier) || event.startsWith(QStringLiteral("CTRL-EVENT-NETWORK-NOT-FOUND"));
    };
    if (!QTest::qWaitFor(ended, Patience))
        return QStringLiteral("nothing");
    if (!m_status->has("wifi_status"))
        return m_status->text("last_event");
    const QJsonObject status = m_status->object.attribute(QStringLiteral("wifi_status")).toJson().object();
    return QStringLiteral("connected %1 %2")
        .arg(status.value(QStringLiteral("key_mgmt")).toString(),
             status.value(QStringLiteral("pairwise_cipher")).toString());
}

void WifiPlayTest::security_data()
{
    QTest::addColumn<QByteArray>("ssid");
    QTest::addColumn<QByteArray>("passkey");
    QTest::addColumn<QString>("outcome");

    const auto row = [](const char *name, const char *ssid, const char *passkey, const char *outcome) {
        QTest::addRow("%s", name) << QByteArray(ssid) << QByteArray(passkey) << QString::fromUtf8(outcome);
    };
    const auto fails = [&row](const char *name, const char *ssid, const char *passkey, const char *quoted) {
        const QByteArray outcome = QByteArray("CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=") + quoted
            + " auth_failures=1 duration=10 reason=WRONG_KEY";
        row(name, ssid, passkey, outcome.constData());
    };
    const char nobody[] = "CTRL-EVENT-NETWORK-NOT-FOUND ";
    row("WPA", "Attic", "old but gold", "connected WPA-PSK TKIP");
    row("both ciphers", "Bakery", "eightbit", "connected WPA-PSK CCMP");
    row("a key", "Cellar", "0123456789ABCDEF0123456789ABCDEF0123456789ABCDEF0123456789ABCDEF",
        "connected WPA2-PSK CCMP");
    row("longest passkey", "Dairy", "sixty-three characters are the longest passkey there can be ...",
        "connected WPA2-PSK CCMP");
    row("the open twin", "Twins", nullptr, "connected NONE NONE");
    row("the protected twin", "Twins", "not that one", "connected WPA2-PSK CCMP");
    row("outside ASCII", "\xc5\xbb\xc3\xb3\xc5\x82ta \xc5\x82\xc3\xb3\x64\xc5\xba \xf0\x9f\x9b\xb6", "submarine",
        "connected WPA2-PSK CCMP");
    row("open, two lines", "two\nlines\tand\007bells", nullptr, "connected NONE NONE");

    fails("wrong", "Attic", "old but mold", "\"Attic\"");
    fails("capital", "Bakery", "Eightbit", "\"Bakery\"");
    fails("blank at the end", "Bakery", "eightbit ", "\"Bakery\"");
    fails("too long", "Bakery", "eightbit8", "\"Bakery\"");
    fails("nobody knows it", "Forgotten", "whatever it is", "\"Forgotten\"");
    fails("another key", "Cellar", "1123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef", "\"Cellar\"");
    fails("name with quotes", "say \"hello\" \\ 'goodbye'", "quotations", R"("say \"hello\" \\ 'goodbye'")");

    row("open against WPA2", "Dairy", nullptr, nobody);
    row("passkey against open", "two\nlines\tand\007bells", "whatever it is", nobody);
    row("WEP", "Old Router", nullptr, nobody);
    row("WEP with a passkey", "Old Router", "whatever it is", nobody);
    row("enterprise", "Office", "whatever it is", nobody);
    row("SAE", "Future", "whatever it is", nobody);
    row("WPA2 and WPA3", "Bridge", "old and new", "connected WPA2-PSK CCMP");
    row("OWE", "Lounge", nullptr, nobody);
    row("far away", "Far away", "beyond the hill", nobody);
    row("nowhere", "No such name", nullptr, nobody);
}

void WifiPlayTest::security()
{
    QFETCH(QByteArray, ssid);
    QFETCH(QByteArray, passkey);
    QVERIFY(start("wifi-security", "1000"));
    QTEST(join(ssid.constData(), passkey.isNull() ? nullptr : passkey.constData()), "outcome");
}

void WifiPlayTest::scansNamesThatAreHardToWrite()
{
    QVERIFY(start("wifi-security", "1000"));
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(m_status->has("scan_results"));
    QStringList names;
    const QJsonArray results = m_status->object.attribute(QStringLiteral("scan_results")).toJson().array();
    for (const QJsonValue &point : results)
        names += point.toObject().value(QStringLiteral("ssid")).toString();
    QCOMPARE(names.size(), 16);
    QCOMPARE(names.at(12), QStringLiteral("say \"hello\" \\ 'goodbye'"));
    QCOMPARE(names.at(13), QStringLiteral("two\nlines\tand\007bells"));
    QCOMPARE(names.at(14),
             QString::fromUtf8("\xc5\xbb\xc3\xb3\xc5\x82ta \xc5\x82\xc3\xb3\x64\xc5\xba \xf0\x9f\x9b\xb6"));
    QCOMPARE(names.at(15), QString());
}

void WifiPlayTest::roaming()
{
    QVERIFY(start("wifi-roaming"));
    const Seen wlan0(interfacePath("wlan0"));
    QTRY_COMPARE_WITH_TIMEOUT(m_status->updates.count(), 5, Patience);
    QCOMPARE(m_status->lines().mid(1),
             QStringList({joinedEvent("02:00:00:00:62:02", 0, "Home"), joinedEvent("02:00:00:00:62:01", 0, "Home"),
                          joinedEvent("02:00:00:00:62:02", 0, "Home"), joinedEvent("02:00:00:00:62:01", 0, "Home")}));
    QCOMPARE(wlan0.updates.count(), 0);
    QCOMPARE(wlan0.text("connected"), QStringLiteral("true"));
}

void WifiPlayTest::outOfRange()
{
    QVERIFY(start("wifi-out-of-range"));
    const char home[] = "02:00:00:00:63:01";
    QTRY_COMPARE_WITH_TIMEOUT(m_status->updates.count(), 8, Patience);
    QCOMPARE(
        m_status->lines().mid(1),
        QStringList({leftEvent(home, 4), joinedEvent(home, 0, "Home"), leftEvent(home, 6), joinedEvent(home, 0, "Home"),
                     QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:63:01 reason=3 "
                                    "wifi_power=off -wifi_status"),
                     QStringLiteral("wifi_power=on"), joinedEvent(home, 0, "Home")}));
    const Seen wlan0(interfacePath("wlan0"));
    QTRY_COMPARE(wlan0.text("connected"), QStringLiteral("true"));
}

void WifiPlayTest::refused()
{
    QVERIFY(start("wifi-refused"));
    const char network[] = "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}";
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("16 device or resource busy"));
    QCOMPARE(Request(m_control.get(), "wnet_new", network).outcome(), QStringLiteral("28 no room for another network"));
    QCOMPARE(Request(m_control.get(), "wnet_select", "").outcome(), QStringLiteral("5 the adapter does not answer"));
    QCOMPARE(Request(m_control.get(), "wnet_disableall").outcome(), QStringLiteral("16 device or resource busy"));
    QCOMPARE(Request(m_control.get(), "wifi_power", "off").outcome(), QStringLiteral("13 permission denied"));

    // What was refused was not done: the identifier is the first one, and nothing was told.
    QCOMPARE(m_status->updates.count(), 1);
    QCOMPARE(Request(m_control.get(), "wnet_new", network).answer(), QStringLiteral("1"));
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "wnet_select", "1").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "wnet_disableall").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->text("wifi_power"), QStringLiteral("off"));
}

void WifiPlayTest::noReply()
{
    QVERIFY(start("wifi-no-reply"));
    const Request unanswered(m_control.get(), "wnet_new",
                             "{'ssid':'Silent','key_mgmt':'WPA-PSK','psk':'speech is silver'}");
    // It has not become known either.
    QCOMPARE(Request(m_control.get(), "wnet_new", "{'ssid':'Other','key_mgmt':'NONE'}").answer(), QStringLiteral("1"));
    QCOMPARE(unanswered.finished.count(), 0);
}

void WifiPlayTest::late()
{
    QVERIFY(start("wifi-no-reply", "20"));
    QStringList order;
    Request late(m_control.get(), "wnet_new", "{'ssid':'Slow','key_mgmt':'WPA-PSK','psk':'take your time'}");
    Request other(m_control.get(), "wnet_new", "{'ssid':'Other','key_mgmt':'NONE'}");
    connect(&late.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("late"); });
    connect(&other.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("other"); });
    QCOMPARE(late.answer(), QStringLiteral("2"));
    QCOMPARE(other.answer(), QStringLiteral("1"));
    QCOMPARE(order, QStringList({QStringLiteral("other"), QStringLiteral("late")}));
}

void WifiPlayTest::doubled()
{
    QVERIFY(start("wifi-no-reply"));
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    control.setAttributeCacheEnabled(true);
    QSignalSpy messages(&control, &ZopObject::attributesChanged);
    ZopChangeset request;
    request.assignments.insert(QStringLiteral("msg"), QStringLiteral("wnet_new"));
    request.assignments.insert(QStringLiteral("id"), 41);
    request.assignments.insert(QStringLiteral("dat"),
                               QJsonObject {{QStringLiteral("ssid"), QStringLiteral("Echo")},
                                            {QStringLiteral("key_mgmt"), QStringLiteral("WPA-PSK")},
                                            {QStringLiteral("psk"), QStringLiteral("hello hello")}});
    QVERIFY(control.setAttributes(request));
    QTRY_COMPARE(messages.count(), 2);
    for (const QList<QVariant> &arguments : messages) {
        const auto reply = arguments.first().value<ZopChangeset>().assignments;
        QCOMPARE(reply.value(QStringLiteral("res")).toString(), QStringLiteral("wnet_new"));
        QCOMPARE(reply.value(QStringLiteral("id")).toInt(), 41);
        QCOMPARE(reply.value(QStringLiteral("dat")).toString(), QStringLiteral("1"));
        QCOMPARE(reply.value(QStringLiteral("err")), ZopVariant("0", "text"));
        QVERIFY(!reply.contains(QStringLiteral("psk")));
    }
    // It became known once.
    QCOMPARE(Request(m_control.get(), "wnet_new", "{'ssid':'Other','key_mgmt':'NONE'}").answer(), QStringLiteral("2"));
    QCOMPARE(messages.count(), 2);
}

void WifiPlayTest::repliesTakeTheirTime()
{
    QVERIFY(startWith("{'delays': {'reply': 86400000}, 'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],"
                      "'wifi': {'interface': 'wlan0', 'access_points': []},"
                      "'faults': [{'fault': 'late', 'message': 'scan', 'delay': 50}]}"));
    const Request slow(m_control.get(), "wnet_disableall");
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QCOMPARE(slow.finished.count(), 0);
}

void WifiPlayTest::noReplyButPerformed()
{
    QVERIFY(startWith("{'delays': {'scan': 0}, 'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],"
                      "'wifi': {'interface': 'wlan0', 'access_points': []},"
                      "'faults': [{'fault': 'no-reply', 'message': 'scan', 'performs': true, 'times': 1}]}"));
    const Request unanswered(m_control.get(), "scan");
    QTRY_COMPARE(m_status->text("scan_results"), QStringLiteral("[]"));
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QCOMPARE(unanswered.finished.count(), 0);
}

void WifiPlayTest::neverAnswers()
{
    QVERIFY(start("wifi-no-reply"));
    QCOMPARE(
        Request(m_control.get(), "wnet_new", "{'ssid':'Mute','key_mgmt':'WPA-PSK','psk':'silence is golden'}").answer(),
        QStringLiteral("1"));
    QCOMPARE(Request(m_control.get(), "wnet_select", "1").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->updates.count(), 2);
    // Two scans take longer than any association, and nothing else has come when they are finished.
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
        QTRY_COMPARE(m_status->updates.count(), 4 + 2 * i);
    }
    const QStringList lines = m_status->lines();
    QCOMPARE(lines.at(1), leftEvent("02:00:00:00:65:01", 3));
    QCOMPARE(lines.at(2), QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED "));
    QVERIFY(lines.at(5).startsWith(QStringLiteral("last_event=CTRL-EVENT-SCAN-RESULTS ")));
}

void WifiPlayTest::diesInAConnect()
{
    QVERIFY(start("wifi-daemon-restart", "20"));
    QCOMPARE(
        Request(m_control.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}").answer(),
        QStringLiteral("1"));
    Request open(m_control.get(), "wnet_select", "1");
    QVERIFY(open.outcome().startsWith(QStringLiteral("-1 ")));
    // The network is still known when the daemon is back, and nothing else has changed.
    QTRY_COMPARE_WITH_TIMEOUT(Request(m_control.get(), "wnet_select", "1").outcome(), QStringLiteral("ok"), Patience);
    QTRY_COMPARE(m_status->updates.count(), 3);
    QCOMPARE(m_status->lines().mid(1),
             QStringList({leftEvent("02:00:00:00:66:01", 3), joinedEvent("02:00:00:00:66:03", 1, "Garage")}));
    QCOMPARE(Request(m_control.get(), "wnet_new", "{'ssid':'Other','key_mgmt':'NONE'}").answer(), QStringLiteral("2"));
    const QByteArray log = m_daemon->process().errors();
    QVERIFY(log.contains("daemon  wifi dead\n") && log.contains("daemon  wifi back\n"));
}

void WifiPlayTest::diesAtItsTime()
{
    QVERIFY(start("wifi-daemon-restart"));
    QTRY_VERIFY_WITH_TIMEOUT(m_daemon->process().errors().contains("daemon  wifi back\n"), Patience);
    QTRY_COMPARE(m_status->updates.count(), 2);
    // The world went on: the station roamed meanwhile.
    QCOMPARE(m_status->lines().last(), joinedEvent("02:00:00:00:66:02", 0, "Home"));
}

void WifiPlayTest::scanResultsAreNotToldAgain()
{
    QVERIFY(startWith("{'delays': {'scan': 0}, 'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],"
                      "'wifi': {'interface': 'wlan0', 'access_points': []},"
                      "'faults': [{'fault': 'die', 'message': 'wnet_disableall', 'back_after': 100, 'times': 1}]}"));
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->updates.count(), 3);
    QVERIFY(Request(m_control.get(), "wnet_disableall").outcome().startsWith(QStringLiteral("-1 ")));
    QTRY_COMPARE_WITH_TIMEOUT(Request(m_control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"), Patience);
    QTRY_COMPARE(m_status->updates.count(), 4);
    QCOMPARE(m_status->lines().last(), QStringLiteral("wifi_power=off"));
    QVERIFY(m_status->has("scan_results"));
}

void WifiPlayTest::theOtherDaemonStays()
{
    QVERIFY(startWith("{'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],"
                      "'wifi': {'interface': 'wlan0', 'access_points': []},"
                      "'timeline': [{'at': 0, 'event': 'daemon-dies', 'daemon': 'networking'}]}"));
    QVERIFY(!ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QCOMPARE(Request(m_control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QVERIFY(m_daemon->process().errors().contains("daemon  networking dead\n"));
}

void WifiPlayTest::garbage()
{
    QVERIFY(start("wifi-garbage"));
    QTRY_COMPARE_WITH_TIMEOUT(m_status->updates.count(), 12, Patience);
    const auto value = [this](int update, const char *name) {
        return m_status->update(update).assignments.value(QLatin1String(name));
    };
    QCOMPARE(value(1, "scan_results"), ZopVariant("[{\"bssid\":\"02:00:00:00:67:0", "text"));
    QCOMPARE(value(2, "scan_results"), ZopVariant("no JSON at all", "text"));
    QVERIFY(value(3, "scan_results").toJson().isArray());
    QCOMPARE(value(4, "scan_results"), ZopVariant("[{\"ssid\":\"\xff\xfe\"}]", "text"));
    QCOMPARE(value(5, "wifi_power"), ZopVariant("perhaps", "text"));
    QCOMPARE(m_status->update(6).removals, QSet<QString> {QStringLiteral("wifi_power")});
    QCOMPARE(value(7, "wifi_status"), ZopVariant("{\"bssid\"", "json"));
    QCOMPARE(value(8, "wifi_status").toJson().object().value(QStringLiteral("bssid")).toInt(), 7);
    QCOMPARE(value(9, "last_event"), ZopVariant("CTRL-EVENT-NOBODY-KNOWS what=this is", "text"));
    QCOMPARE(value(10, "last_event"), ZopVariant("", "text"));
    QCOMPARE(value(11, "nonsense"), ZopVariant("true", "text"));
    QCOMPARE(value(11, "wifi_power"), ZopVariant("on", "text"));
    // The daemon itself is not confused.
    QCOMPARE(Request(m_control.get(), "wnet_disableall").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->updates.count(), 13);
    QCOMPARE(m_status->lines().last(), leftEvent("02:00:00:00:67:01", 3));
}

void WifiPlayTest::otherEvents()
{
    QVERIFY(startWith(
        "{'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}], 'delays': {'scan': 0, 'associate': 0},"
        "'wifi': {'interface': 'wlan0', 'access_points': ["
        "{'bssid': '02:00:00:00:00:01', 'ssid': 'a', 'frequency': 1, 'signal_level': 0, 'flags': []}]},"
        "'timeline': [{'at': 0, 'event': 'signal', 'bssid': '02:00:00:00:00:01', 'signal_level': -33},"
        "{'at': 0, 'event': 'radio-off'}, {'at': 0, 'event': 'radio-on'},"
        "{'at': 0, 'event': 'remove', 'object': 'wifi/status', 'attributes': ['wifi_power']}]}"));
    QTRY_COMPARE(m_status->updates.count(), 4);
    QCOMPARE(m_status->lines().mid(1),
             QStringList(
                 {QStringLiteral("wifi_power=off"), QStringLiteral("wifi_power=on"), QStringLiteral("-wifi_power")}));
    QCOMPARE(Request(m_control.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(m_status->text("scan_results").contains(QStringLiteral("\"signal_level\":\"-33\"")));
}

void WifiPlayTest::withoutWifi()
{
    QVERIFY(m_daemon->startWith(RadioGoesOff, {QStringLiteral("--without"), QStringLiteral("wifi")}));
    QVERIFY(!ZopObject(QLatin1String(WifiStatus), ZopObject::Subscribe, false).isValid());
    QVERIFY(!ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, true).isValid());
    // The station is there all the same, and takes the link of its interface with it.
    const Seen wlan0(interfacePath("wlan0"));
    QCOMPARE(wlan0.text("up"), QStringLiteral("false"));
}

void WifiPlayTest::withoutNetworking()
{
    QVERIFY(m_daemon->startWith(RadioGoesOff, {QStringLiteral("--without"), QStringLiteral("networking")}));
    QVERIFY(!ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
    QVERIFY(!ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QVERIFY(!ZopObject(interfacePath("wlan0"), ZopObject::Subscribe, false).isValid());
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(status.text("wifi_power"), QStringLiteral("off"));
    QVERIFY(ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, true).isValid());
}

void WifiPlayTest::withoutBoth()
{
    QVERIFY(m_daemon->startWith(RadioGoesOff,
                                {QStringLiteral("--without"), QStringLiteral("networking"), QStringLiteral("--without"),
                                 QStringLiteral("wifi")}));
    QVERIFY(!ZopObject(QLatin1String(WifiStatus), ZopObject::Subscribe, false).isValid());
    QVERIFY(!ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
}

void WifiPlayTest::leftOutDaemonDoesNotComeBack()
{
    const char scenario[] = "{'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],"
                            "'wifi': {'interface': 'wlan0', 'access_points': []}, 'timeline': ["
                            "{'at': 0, 'event': 'daemon-dies', 'daemon': 'wifi', 'back_after': 0},"
                            "{'at': 50, 'event': 'radio-off'}]}";
    QVERIFY(m_daemon->startWith(scenario, {QStringLiteral("--without"), QStringLiteral("wifi")}));
    QTRY_VERIFY(m_daemon->process().errors().contains("event   radio-off\n"));
    QVERIFY(!m_daemon->process().errors().contains("daemon  wifi"));
    QVERIFY(!ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, true).isValid());
}

QTEST_GUILESS_MAIN(WifiPlayTest)
#include "tst_wifiplay.moc"
