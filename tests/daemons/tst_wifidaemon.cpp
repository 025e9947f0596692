// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char HomeStatus[] =
    R"({"bssid":"02:00:00:00:20:01","key_mgmt":"WPA2-PSK","pairwise_cipher":"CCMP","ssid":"Home"})";
const char GarageStatus[] =
    R"({"bssid":"02:00:00:00:20:03","key_mgmt":"WPA2-PSK","pairwise_cipher":"CCMP","ssid":"Garage"})";

/*! Nothing is ever finished in it. */
const char SlowScenario[] =
    "{'delays': {'scan': 86400000, 'associate': 86400000}, 'interfaces': [{'name': 'wlan0', 'type': 'wifi', "
    "'up': false}], 'wifi': {'interface': 'wlan0', 'access_points': [{'bssid': '02:00:00:00:00:01', 'ssid': 'Home', "
    "'frequency': 2412, 'signal_level': -40, 'flags': ['ESS']}]}}";

} // namespace

/*! What the Wi-Fi daemon publishes and answers, as its clients see it. */
class WifiDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void publishes();
    void publishesNothingWithoutWifi();
    void overwritesNothingOfAnotherDaemon();
    void switchesThePower();
    void scans();
    void scansTellEveryClient();
    void joinsWithAPasskey();
    void failsWithAWrongPasskey();
    void leaves();
    void repliesBeforeTheWorldChanges();
    void refuses_data();
    void refuses();
    void refusesWhileTheRadioIsOff();
    void neverShowsAPasskey();
    void takesOverAFormerRun();
    void tellsNothingAnewOfAFormerRun();

private:
    bool startHeadunit();
    std::unique_ptr<ZopObject> openControl() const;

    std::unique_ptr<DaemonFixture> m_daemon;
};

bool WifiDaemonTest::startHeadunit()
{
    return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")});
}

std::unique_ptr<ZopObject> WifiDaemonTest::openControl() const
{
    return std::make_unique<ZopObject>(QLatin1String(WifiControl), ZopObject::ReadWrite, true);
}

void WifiDaemonTest::publishes()
{
    QVERIFY(startHeadunit());
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(status.object.attribute(QStringLiteral("wifi_power")), ZopVariant("on", "text"));
    QCOMPARE(status.object.attribute(QStringLiteral("wifi_status")), ZopVariant(HomeStatus, "json"));
    QVERIFY(!status.has("scan_results"));
    QVERIFY(!status.has("last_event"));
    QVERIFY(openControl()->isValid());
}

void WifiDaemonTest::publishesNothingWithoutWifi()
{
    QVERIFY(m_daemon->start(QStringLiteral("come-and-go")));
    QVERIFY(!ZopObject(QLatin1String(WifiStatus), ZopObject::Subscribe, false).isValid());
    QVERIFY(!openControl()->isValid());
}

// Whoever has the control object keeps his status object; so the control object comes first.
void WifiDaemonTest::overwritesNothingOfAnotherDaemon()
{
    QVERIFY(m_daemon->makeRoot());
    const ZopObject another(QLatin1String(WifiControl), ZopObject::Publish, true);
    QVERIFY2(another.isValid(), qPrintable(another.errorString()));
    const auto ended = HostdProcess::run({QStringLiteral("--root"), m_daemon->root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.errors.count('\n'), 1);
    QVERIFY(!ZopObject(QLatin1String(WifiStatus), ZopObject::Subscribe, false).isValid());
}

void WifiDaemonTest::switchesThePower()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    const Seen wlan0(interfacePath("wlan0"));
    QCOMPARE(Request(control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(),
                 QStringList {QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:20:01 reason=3 "
                                             "wifi_power=off -wifi_status")});
    QTRY_COMPARE(wlan0.text("up"), QStringLiteral("false"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[]"));
    QCOMPARE(Request(control.get(), "wifi_power", "on").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 3);
    QCOMPARE(status.lines().at(1), QStringLiteral("wifi_power=on"));
    QCOMPARE(status.text("wifi_status"), QLatin1String(HomeStatus));
    QTRY_COMPARE(wlan0.text("ip_addresses"), QStringLiteral("[\"fe80::11/64\",\"192.168.43.17/255.255.255.0\"]"));
}

void WifiDaemonTest::scans()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(Request(control.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QCOMPARE(status.lines().first(), QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED "));
    QCOMPARE(status.update(1).assignments.keys(),
             QStringList({QStringLiteral("last_event"), QStringLiteral("scan_results")}));
    QCOMPARE(status.text("last_event"), QStringLiteral("CTRL-EVENT-SCAN-RESULTS "));
    const ZopVariant results = status.object.attribute(QStringLiteral("scan_results"));
    QCOMPARE(results.encoding(), QByteArray("text"));

    struct Expected
    {
        const char *ssid;
        const char *frequency;
        int level;
        const char *flags;
    };
    const Expected expected[] = {
        {"Home", "2437", -48, R"(["WPA2-PSK-CCMP","ESS"])"},
        {"Home", "5180", -63, R"(["WPA2-PSK-CCMP","ESS"])"},
        {"Garage", "2412", -57, R"(["WPA-PSK-TKIP","WPA2-PSK-CCMP","WPS","ESS"])"},
        {"Caf\xc3\xa9 am Markt", "2462", -70, R"(["ESS"])"},
        {"Old Router", "2427", -77, R"(["WEP","ESS"])"},
        {"Office", "5240", -66, R"(["WPA2-EAP-CCMP","ESS"])"},
        {"Future", "5500", -72, R"(["WPA3-SAE-CCMP","ESS"])"},
    };
    const QJsonArray array = results.toJson().array();
    QCOMPARE(array.size(), 7);
    for (int i = 0; i < array.size(); ++i) {
        const QJsonObject point = array.at(i).toObject();
        QCOMPARE(point.size(), 5);
        QCOMPARE(point.value(QStringLiteral("bssid")).toString(), QStringLiteral("02:00:00:00:20:0%1").arg(i + 1));
        QCOMPARE(point.value(QStringLiteral("ssid")).toString(), QString::fromUtf8(expected[i].ssid));
        QCOMPARE(point.value(QStringLiteral("frequency")).toString(), QLatin1String(expected[i].frequency));
        const int level = point.value(QStringLiteral("signal_level")).toString().toInt();
        QVERIFY2(qAbs(level - expected[i].level) <= 3, expected[i].ssid);
        QCOMPARE(QJsonDocument(point.value(QStringLiteral("flags")).toArray()).toJson(QJsonDocument::Compact),
                 QByteArray(expected[i].flags));
    }
}

void WifiDaemonTest::scansTellEveryClient()
{
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("5")}));
    const auto one = openControl();
    const auto other = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    const Seen observer {QLatin1String(WifiStatus)};
    Request first(one.get(), "scan");
    Request second(other.get(), "scan");
    QCOMPARE(first.outcome(), QStringLiteral("ok"));
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QTRY_COMPARE(observer.updates.count(), 2);
    QVERIFY(observer.has("scan_results"));
    // Nothing came twice: the next thing that is told is the next scan.
    QCOMPARE(Request(one.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 3);
    QCOMPARE(status.lines().last(), QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED "));
}

void WifiDaemonTest::joinsWithAPasskey()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    const Seen wlan0(interfacePath("wlan0"));
    Request added(control.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}");
    QCOMPARE(added.outcome(), QStringLiteral("ok"));
    QCOMPARE(added.command.datResponse(), ZopVariant("1", "text"));
    QCOMPARE(Request(control.get(), "wnet_select", "1").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(),
                 QStringList({QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:20:01 reason=3 "
                                             "-wifi_status"),
                              QStringLiteral("last_event=CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:20:03 "
                                             "completed [id=1 id_str=] wifi_status=")
                                  + QLatin1String(GarageStatus)}));
    QTRY_COMPARE(wlan0.lines(),
                 QStringList({QStringLiteral("connected=false ip_addresses=[] ip_gateway=[] up=false"),
                              QStringLiteral("up=true"),
                              QStringLiteral("connected=true ip_addresses=[\"192.168.77.21/255.255.255.0\"] "
                                             "ip_gateway=[\"192.168.77.1\"] manual=no")}));
}

void WifiDaemonTest::failsWithAWrongPasskey()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    const QString id =
        Request(control.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 43'}").answer();
    QCOMPARE(Request(control.get(), "wnet_select", qPrintable(id)).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QCOMPARE(status.lines().last(),
             QStringLiteral("last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=1 ssid=\"Garage\" auth_failures=1 "
                            "duration=10 reason=WRONG_KEY"));
    QVERIFY(!status.has("wifi_status"));
    QCOMPARE(Seen(interfacePath("wlan0")).text("up"), QStringLiteral("false"));
}

void WifiDaemonTest::leaves()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(Request(control.get(), "wnet_disableall").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(),
                 QStringList {QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:20:01 reason=3 "
                                             "-wifi_status")});
    QTRY_COMPARE(Seen(QLatin1String(Status)).text("default_interface"), QStringLiteral("eth0"));
}

void WifiDaemonTest::repliesBeforeTheWorldChanges()
{
    QVERIFY(m_daemon->startWith(SlowScenario));
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(Request(control.get(), "scan").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "wnet_new", "{'ssid':'Home','key_mgmt':'NONE'}").answer(), QStringLiteral("0"));
    QCOMPARE(Request(control.get(), "wnet_select", "0").outcome(), QStringLiteral("ok"));
    QVERIFY(!status.has("scan_results"));
    QVERIFY(!status.has("wifi_status"));
}

void WifiDaemonTest::refuses_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QString>("outcome");

    QTest::addRow("message") << QByteArray("wnet_explode") << QByteArray() << "1 unknown message \"wnet_explode\"";
    QTest::addRow("power") << QByteArray("wifi_power") << QByteArray("ON") << "2 dat must be on or off";
    QTest::addRow("no network") << QByteArray("wnet_new") << QByteArray() << "2 dat must be {\"ssid\", \"key_mgmt\"}";
    QTest::addRow("identifier") << QByteArray("wnet_select") << QByteArray("1") << "3 no such network";
    QTest::addRow("no identifier") << QByteArray("wnet_select") << QByteArray() << "3 no such network";
    QTest::addRow("psk") << QByteArray("wnet_new") << QByteArray("{'ssid':'Home','key_mgmt':'WPA-PSK','psk':'short'}")
                         << "4 \"psk\" must be 8 to 63 ASCII characters or 64 hexadecimal digits";
}

void WifiDaemonTest::refuses()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QTEST(Request(control.get(), message.constData(), dat.isNull() ? nullptr : dat.constData()).outcome(), "outcome");
}

void WifiDaemonTest::refusesWhileTheRadioIsOff()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "scan").outcome(), QStringLiteral("7 the radio is off"));
    QCOMPARE(Request(control.get(), "wnet_select", "0").outcome(), QStringLiteral("7 the radio is off"));
}

void WifiDaemonTest::neverShowsAPasskey()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(WifiStatus)};
    const char wrong[] = "TopSecret1";
    const char right[] = "open sesame 42";
    Request(control.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}").outcome();
    Request(control.get(), "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'TopSecret1'}").outcome();
    const QString refusals = Request(control.get(), "wnet_new", "{'ssid':'Garage','psk':'TopSecret1'}").outcome()
        + Request(control.get(), "wnet_new", "{'psk':'TopSecret1'").outcome()
        + Request(control.get(), "wnet_select", "TopSecret1").outcome()
        + Request(control.get(), "wifi_power", "TopSecret1").outcome();
    QVERIFY2(!refusals.contains(QLatin1String(wrong)), qPrintable(refusals));
    for (const char *id : {"1", "2"}) {
        const int before = status.updates.count();
        QCOMPARE(Request(control.get(), "wnet_select", id).outcome(), QStringLiteral("ok"));
        QTRY_COMPARE(status.updates.count(), before + 2);
    }
    QVERIFY(status.text("last_event").contains(QStringLiteral("WRONG_KEY")));

    QByteArrayList places {m_daemon->process().errors()};
    // The request is told, though.
    QVERIFY(places.first().contains("wnet_new id=1 \"Garage\" WPA-PSK\n"));
    places += everythingReadable(m_daemon->root(), m_daemon->process().processId());
    QVERIFY(places.size() > 7);
    for (const QByteArray &place : qAsConst(places))
        QVERIFY2(!place.contains(wrong) && !place.contains(right), place.constData());
}

void WifiDaemonTest::takesOverAFormerRun()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(Request(control.get(), "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.text("wifi_power"), QStringLiteral("off"));
    m_daemon->kill();
    ZopObject writer(QLatin1String(WifiStatus), ZopObject::ReadWrite, false);
    ZopChangeset stale;
    stale.assignments.insert(QStringLiteral("scan_results"), QStringLiteral("[]"));
    stale.assignments.insert(QStringLiteral("stale"), QStringLiteral("yes"));
    QVERIFY(writer.setAttributes(stale));
    QTRY_VERIFY(status.has("stale"));
    status.updates.clear();

    QVERIFY(startHeadunit());
    QTRY_COMPARE(status.lines(),
                 QStringList {QStringLiteral("wifi_power=on wifi_status=") + QLatin1String(HomeStatus)
                              + QStringLiteral(" -last_event -scan_results -stale")});
}

void WifiDaemonTest::tellsNothingAnewOfAFormerRun()
{
    QVERIFY(startHeadunit());
    m_daemon->kill();
    const Seen status {QLatin1String(WifiStatus)};
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "scan").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QCOMPARE(status.lines().first(), QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED "));
}

QTEST_GUILESS_MAIN(WifiDaemonTest)
#include "tst_wifidaemon.moc"
