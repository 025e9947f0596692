// SPDX-License-Identifier: Apache-2.0
#include "localencoding.h"
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace WifiDaemon;

namespace {

const char *const PowerMissing = "warning 1300 Wi-Fi status ZOP object powered attribute is not valid";

} // namespace

class TestWifiProviderStatus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void waitsForTheStatusObject();
    void opensItsObjects();
    void takesTheStateOverSilently();
    void startsWithoutAttributes();
    void cannotBeOpened_data();
    void cannotBeOpened();
    void opensItsObjectsOnce();

    void followsThePower();
    void powerIsKeptWhenUnknown_data();
    void powerIsKeptWhenUnknown();
    void powerIsKeptWhenMissing();
    void otherAttributesAreIgnored();

    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();
};
void TestWifiProviderStatus::waitsForTheStatusObject()
{
    LogCapture log(7);
    const WifiProviderZop provider;
    const QStringList onlyTheWatcher = lines({"watcher /zop/services/wifi/ parent morvek::WifiProviderZop"});
    QCOMPARE(ZopDouble::journal(), onlyTheWatcher);
    store({{QStringLiteral("wifi_power"), text("on")}, {QStringLiteral("wifi_status"), connection()}});
    for (const char *name : {"control", "Status", "statu", "status2", "xstatus", "status/", ""})
        announce(name);
    ZopDouble::announce(QStringLiteral("/zop/services/wifi"), QStringLiteral("status"));
    runQueued();
    QCOMPARE(ZopDouble::journal(), onlyTheWatcher);
    QVERIFY(!provider.parent());
    QVERIFY(!provider.ready());
    QVERIFY(!provider.powered());
    QVERIFY(!provider.connected());
    QCOMPARE(accessPointText(provider), QString::fromLatin1(NoneText));
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderStatus::opensItsObjects()
{
    const WifiProviderZop provider;
    ZopDouble::clearJournal();
    start();
    QVERIFY(provider.ready());
    const QStringList opened = lines({
        "object /zop/services/wifi/control mode 2 flag false parent morvek::WifiProviderZop",
        "object /zop/services/wifi/status mode 1 flag false parent morvek::WifiProviderZop",
        // What is there already is told to nobody.
        "cache /zop/services/wifi/status true connected ",
        "read /zop/services/wifi/status wifi_power default invalid",
        "read /zop/services/wifi/status wifi_status default invalid",
    });
    QCOMPARE(ZopDouble::journal(), opened);
    runQueued();
    QCOMPARE(ZopDouble::journal(), opened + lines({"delete watcher /zop/services/wifi/"}));
}

void TestWifiProviderStatus::takesTheStateOverSilently()
{
    WifiProviderZop provider;
    WifiEvents events(provider);
    LogCapture log(7);
    start({
        {QStringLiteral("wifi_power"), text("on")},
        {QStringLiteral("wifi_status"), connection()},
        {QStringLiteral("scan_results"), text("[]")},
        {QStringLiteral("last_event"), text("CTRL-EVENT-SSID-TEMP-DISABLED")},
    });
    QCOMPARE(log.take(),
             lines({"debug2 1300 Updating powered flag to: 1", ConnectionThere,
                    "debug2 1300 Updating connected flag to: 1"}));
    QCOMPARE(events.take(), lines({"ready"}));
    QVERIFY(provider.powered());
    QVERIFY(provider.connected());
    QCOMPARE(accessPointText(provider), QString::fromLatin1(HomeText));
    runQueued();
    QVERIFY(events.take().isEmpty());
    change("wifi_power", text("off"));
    removeAttribute("wifi_status");
    QCOMPARE(events.take(), lines({"off", "disconnected"}));
}

void TestWifiProviderStatus::startsWithoutAttributes()
{
    WifiProviderZop provider;
    WifiEvents events(provider);
    LogCapture log(7);
    start({});
    QCOMPARE(log.take(), lines({PowerMissing, ConnectionGone}));
    QCOMPARE(events.take(), lines({"ready"}));
    QVERIFY(!provider.powered());
    QVERIFY(!provider.connected());
    change("wifi_power", text("on"));
    QCOMPARE(events.take(), lines({"on"}));
}

void TestWifiProviderStatus::cannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("opened");
    const QString control = QStringLiteral("object /zop/services/wifi/control mode 2 flag false parent "
                                           "morvek::WifiProviderZop");
    const QString status = QStringLiteral("object /zop/services/wifi/status mode 1 flag false parent "
                                          "morvek::WifiProviderZop");
    QTest::newRow("control") << QString::fromLatin1(Control)
                             << QStringLiteral("error 1300 Unable to open Wi-Fi service ZOP control object "
                                               "/zop/services/wifi/control: Out of order 100%s")
                             << QStringList {control};
    QTest::newRow("status") << QString::fromLatin1(Status)
                            << QStringLiteral("error 1300 Unable to open Wi-Fi service ZOP status object "
                                              "/zop/services/wifi/status: Out of order 100%s")
                            << QStringList {control, status};
}

void TestWifiProviderStatus::cannotBeOpened()
{
    QFETCH(QString, path);
    QFETCH(QString, line);
    QFETCH(QStringList, opened);
    for (const int verbosity : {1, 2}) {
        ZopDouble::reset();
        WifiProviderZop provider;
        WifiEvents events(provider);
        ZopDouble::clearJournal();
        ZopDouble::refuse(path, QStringLiteral("Out of order 100%s"));
        LogCapture log(verbosity);
        start({{QStringLiteral("wifi_power"), text("on")}});
        QCOMPARE(log.take(),
                 verbosity < 2
                     ? QStringList()
                     : QStringList({line, QStringLiteral("error 1300 Unable to initialize WifiProviderZop")}));
        QCOMPARE(ZopDouble::journal(), opened);
        QCOMPARE(provider.findChildren<ZopObject *>().size(), opened.size());
        // Neither in the same turn nor later is it tried again.
        ZopDouble::allow(path);
        announce("status");
        runQueued();
        announce("status");
        QVERIFY(provider.children().isEmpty());
        QCOMPARE(ZopDouble::journal().mid(opened.size()).filter(QStringLiteral("object /zop")).size(), opened.size());
        QCOMPARE(ZopDouble::journal().filter(QStringLiteral("delete object")).size(), opened.size());
        QVERIFY(!provider.ready());
        QVERIFY(!provider.powered());
        QVERIFY(events.take().isEmpty());
    }
}

// The object may have been replaced before the watcher goes, which is then told once more.
void TestWifiProviderStatus::opensItsObjectsOnce()
{
    WifiProviderZop provider;
    WifiEvents events(provider);
    QObject::connect(&provider, &ServiceProviderBase::readyChanged, [] { announce("status"); });
    start();
    QCOMPARE(ZopDouble::objects(QLatin1String(Status)).size(), 1);
    ZopDouble::clearJournal();
    announce("status");
    QVERIFY(ZopDouble::journal().isEmpty());
    runQueued();
    announce("status");
    QCOMPARE(ZopDouble::journal(), lines({"delete watcher /zop/services/wifi/"}));
    QCOMPARE(ZopDouble::objects(QLatin1String(Status)).size(), 1);
    change("wifi_power", text("on"));
    QCOMPARE(events.take(), lines({"ready", "on"}));
}

void TestWifiProviderStatus::followsThePower()
{
    const WifiProviderFixture fixture;
    LogCapture log(7);
    change("wifi_power", text("off"));
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    change("wifi_power", text("on"));
    QCOMPARE(log.take(),
             lines({"debug2 1300 Updating powered flag to: 1",
                    "debug2 1300 Emitting poweredChanged signal with powered: 1"}));
    QCOMPARE(fixture.events->take(), lines({"on"}));
    QVERIFY(fixture.provider->powered());
    change("wifi_power", text("on"));
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    change("wifi_power", text("off"));
    QCOMPARE(log.take(),
             lines({"debug2 1300 Updating powered flag to: 0",
                    "debug2 1300 Emitting poweredChanged signal with powered: 0"}));
    QCOMPARE(fixture.events->take(), lines({"off"}));
    QVERIFY(!fixture.provider->powered());
    KrelLogger::setVerbosity(6);
    change("wifi_power", text("on"));
    QVERIFY(log.take().isEmpty());
    QCOMPARE(fixture.events->take(), lines({"on"}));
}

void TestWifiProviderStatus::powerIsKeptWhenUnknown_data()
{
    QTest::addColumn<QByteArray>("value");
    for (const char *value : {"ON", "OFF", "On", "true", "1", "0", "", " on", "off ", "onn", "of", "\"on\"", "100%s"})
        QTest::addRow("'%s'", value) << QByteArray(value);
    QTest::newRow("zero byte") << QByteArray("on\0", 3);
    QTest::newRow("outside ASCII") << QByteArray("\xc3\xa9\xe2\x82\xac");
}

void TestWifiProviderStatus::powerIsKeptWhenUnknown()
{
    QFETCH(QByteArray, value);
    const WifiProviderFixture fixture;
    const QString line =
        QStringLiteral("warning 1300 Wi-Fi status ZOP object powered attribute does not have a recognized value: ")
        + QString::fromUtf8(value.constData()); // printed up to its zero
    const LocalEncoding encoding("UTF-8");
    for (const char *former : {"on", "off"}) {
        change("wifi_power", text(former));
        fixture.events->take();
        LogCapture log(2);
        change("wifi_power", raw(value));
        QVERIFY(log.take().isEmpty());
        KrelLogger::setVerbosity(7);
        change("wifi_power", raw(value));
        QCOMPARE(log.take(), QStringList {line});
        QVERIFY(fixture.events->take().isEmpty());
        QCOMPARE(fixture.provider->powered(), former == QByteArray("on"));
    }
}

void TestWifiProviderStatus::powerIsKeptWhenMissing()
{
    const WifiProviderFixture fixture;
    change("wifi_power", text("on"));
    QCOMPARE(fixture.events->take(), lines({"on"}));
    LogCapture log(7);
    removeAttribute("wifi_power");
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(2);
    change("wifi_power", ZopVariant());
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    change("wifi_power", ZopVariant());
    QCOMPARE(log.take(), lines({PowerMissing}));
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(fixture.provider->powered());
    change("wifi_power", text("on"));
    QVERIFY(fixture.events->take().isEmpty());
}

void TestWifiProviderStatus::otherAttributesAreIgnored()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ScanPointer scan = fixture.scan();
    LogCapture log(7);
    for (const char *name : {"Wifi_power", "wifi_power2", "wifi", "wifi_status2", "wifi_statu", "WIFI_STATUS",
                             "scan_results2", "scan_result", "last_events", "last_even", ""}) {
        change(name, text("on"));
        change(name, connection());
        change(name, text("[]"));
        change(name, text("CTRL-EVENT-SSID-TEMP-DISABLED"));
    }
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(!operation->hasError());
    QVERIFY(operation->results().isEmpty());
    const ScanEnd end(scan.get());
    QCOMPARE(end.text(), QString());
}

void TestWifiProviderStatus::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("readyChanged") << 0;
    QTest::newRow("poweredChanged") << 1;
    QTest::newRow("connectedChanged") << 2;
    QTest::newRow("disconnected") << 3;
}

void TestWifiProviderStatus::mayBeDeletedInAnySlot()
{
    QFETCH(int, which);
    auto provider = std::make_unique<WifiProviderZop>();
    if (which != 0)
        start();
    if (which == 3)
        change("wifi_status", connection());
    AsyncWifiScanOperation scan;
    if (which != 0)
        provider->scan(&scan);
    int heardLater = 0;
    const auto hear = [&](auto signal) {
        QObject::connect(provider.get(), signal, [&provider] { provider.reset(); });
        QObject::connect(provider.get(), signal, [&heardLater] { ++heardLater; });
    };
    hear(&ServiceProviderBase::readyChanged);
    hear(&WifiProvider::poweredChanged);
    hear(&WifiProvider::connectedChanged);
    if (which == 0)
        start({{QStringLiteral("wifi_power"), text("on")}, {QStringLiteral("wifi_status"), connection()}});
    else if (which == 1)
        ZopDouble::publish(QLatin1String(Status),
                           {{QStringLiteral("wifi_power"), text("on")}, {QStringLiteral("wifi_status"), connection()}});
    else if (which == 2)
        ZopDouble::publish(QLatin1String(Status), {{QStringLiteral("wifi_status"), connection()}},
                           {QStringLiteral("wifi_status_2")});
    else
        ZopDouble::publish(QLatin1String(Status), {}, {QStringLiteral("wifi_status"), QStringLiteral("wifi_status_2")});
    QVERIFY(!provider);
    const ScanEnd end(&scan);
    change("scan_results", text("[]"));
    QCOMPARE(end.text(), QString());
    QCOMPARE(heardLater, 0);
}

QTEST_GUILESS_MAIN(TestWifiProviderStatus)
#include "tst_wifiproviderstatus.moc"
