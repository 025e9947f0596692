// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char HomeStatus[] =
    R"({"bssid":"02:00:00:00:20:01","key_mgmt":"WPA2-PSK","pairwise_cipher":"CCMP","ssid":"Home"})";
const char GarageStatus[] =
    R"({"bssid":"02:00:00:00:20:03","key_mgmt":"WPA2-PSK","pairwise_cipher":"CCMP","ssid":"Garage"})";

/*! The updates one after the other: "NAME=VALUE" for each assignment, "-NAME" for each removal. */
QStringList updatesOf(const Seen &object)
{
    QStringList updates;
    for (int i = 0; i < object.updates.count(); ++i) {
        const ZopChangeset changes = object.update(i);
        QStringList words;
        for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
            words += it.key() + QLatin1Char('=') + it.value().toString();
        for (const QString &name : changes.removals)
            words += QLatin1Char('-') + name;
        updates += words.join(QLatin1Char('|'));
    }
    return updates;
}

} // namespace

/*! What the Wi-Fi daemon publishes and answers, as its clients see it. */
class WifiDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void publishes();
    void scans();
    void joinsWithAPasskey();

private:
    bool startHeadunit(const char *speed = "100");

    std::unique_ptr<DaemonFixture> m_daemon;
};

bool WifiDaemonTest::startHeadunit(const char *speed)
{
    return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QLatin1String(speed)});
}

void WifiDaemonTest::publishes()
{
    QVERIFY(startHeadunit());
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(status.object.attribute(QStringLiteral("wifi_power")), ZopVariant("on", "text"));
    QCOMPARE(status.object.attribute(QStringLiteral("wifi_status")), ZopVariant(HomeStatus, "json"));
    QVERIFY(!status.object.attribute(QStringLiteral("scan_results")).isValid());
    QVERIFY(!status.object.attribute(QStringLiteral("last_event")).isValid());
    QVERIFY(ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, true).isValid());
}

void WifiDaemonTest::scans()
{
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, true);
    const Seen status {QLatin1String(WifiStatus)};
    QCOMPARE(Request(&control, "scan").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QCOMPARE(updatesOf(status).first(), QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED "));
    QCOMPARE(status.update(1).assignments.keys(),
             QStringList({QStringLiteral("last_event"), QStringLiteral("scan_results")}));
    QCOMPARE(status.text("last_event"), QStringLiteral("CTRL-EVENT-SCAN-RESULTS "));
    const ZopVariant results = status.object.attribute(QStringLiteral("scan_results"));
    QCOMPARE(results.encoding(), QByteArray("text"));
    const QJsonArray array = results.toJson().array();
    QCOMPARE(array.size(), 7);
    qInfo("%s", results.bytes().constData());
}

void WifiDaemonTest::joinsWithAPasskey()
{
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, true);
    const Seen status {QLatin1String(WifiStatus)};
    const Seen wlan0(interfacePath("wlan0"));
    const QString id =
        Request(&control, "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}").answer();
    QCOMPARE(id, QStringLiteral("1"));
    QCOMPARE(Request(&control, "wnet_select", "1").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.updates.count(), 2);
    QCOMPARE(updatesOf(status),
             QStringList({QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:20:01 reason=3|"
                                         "-wifi_status"),
                          QStringLiteral("last_event=CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:20:03 completed "
                                         "[id=1 id_str=]|wifi_status=")
                              + QLatin1String(GarageStatus)}));
    QTRY_COMPARE(wlan0.updates.count(), 3);
    QCOMPARE(updatesOf(wlan0),
             QStringList({QStringLiteral("connected=false|ip_addresses=[]|ip_gateway=[]|up=false"),
                          QStringLiteral("up=true"),
                          QStringLiteral("connected=true|ip_addresses=[\"fe80::11/64\",\"192.168.43.17/255.255.255.0\"]|"
                                         "ip_gateway=[\"192.168.43.1\"]|manual=no")}));
}

QTEST_GUILESS_MAIN(WifiDaemonTest)
#include "tst_wifidaemon.moc"
