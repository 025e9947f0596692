// SPDX-License-Identifier: Apache-2.0
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace WifiDaemon;

/*! What has happened already at the moment when something else happens. */
class TestWifiProviderOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void stateComesBeforeReady();
    void failsTheConnectBeforeItLeaves();
    void failsTheConnectBeforeItSelects();
    void queuesBeforeItAsks();
    void stateIsReadFromNoObject();
};

void TestWifiProviderOrder::stateComesBeforeReady()
{
    WifiProviderZop provider;
    QStringList seen;
    connect(&provider, &ServiceProviderBase::readyChanged, [&](bool ready) {
        seen.append(QStringLiteral("%1 %2 %3 %4")
                        .arg(ready)
                        .arg(provider.powered())
                        .arg(provider.connected())
                        .arg(provider.connectedAccessPoint().bssid()));
    });
    start({{QStringLiteral("wifi_power"), text("on")}, {QStringLiteral("wifi_status"), connection()}});
    QCOMPARE(seen, lines({"1 1 1 02:00:00:00:01:0a"}));
}

void TestWifiProviderOrder::failsTheConnectBeforeItLeaves()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    QStringList seen;
    ZopDouble::onStart(
        [&](const QString &message) { seen.append(message + QLatin1Char(' ') + operation->error().message()); });
    fixture.provider->disconnectAccessPoint();
    QCOMPARE(seen, lines({"wnet_disableall Cancelling connect operation, due to issued disconnect command"}));
}

void TestWifiProviderOrder::failsTheConnectBeforeItSelects()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    QStringList seen;
    ZopDouble::onStart(
        [&](const QString &message) { seen.append(message + QLatin1Char(' ') + operation->error().message()); });
    ZopDouble::answerError(lastCommand(), 16, QStringLiteral("no more room"));
    QCOMPARE(seen, lines({"wnet_select no more room"}));
}

void TestWifiProviderOrder::queuesBeforeItAsks()
{
    const WifiProviderFixture fixture;
    ZopDouble::onStart([&](const QString &message) {
        if (message == QLatin1String("scan"))
            change("scan_results", text(R"([{"bssid":"02:00:00:00:01:0b"}])"));
        else
            change("wifi_status", connection());
    });
    const ScanPointer scan = fixture.scan();
    QCOMPARE(scan->results().size(), 1);
    const ConnectPointer connect = fixture.join();
    QCOMPARE(connect->results().size(), 1);
}

void TestWifiProviderOrder::stateIsReadFromNoObject()
{
    const WifiProviderFixture fixture;
    change("wifi_power", text("on"));
    change("wifi_status", connection());
    // Not told to anybody: whoever asks the object itself would see it.
    ZopDouble::store(QLatin1String(Status), {{QStringLiteral("wifi_power"), text("off")}},
                     {QStringLiteral("wifi_status")});
    ZopDouble::clearJournal();
    QVERIFY(fixture.provider->powered());
    QVERIFY(fixture.provider->connected());
    QCOMPARE(fixture.provider->connectedAccessPoint().ssid(), QStringLiteral("Home"));
    QCOMPARE(ZopDouble::journal(), QStringList());
}

QTEST_GUILESS_MAIN(TestWifiProviderOrder)
#include "tst_wifiproviderorder.moc"
