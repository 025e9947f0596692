// SPDX-License-Identifier: Apache-2.0
#include "livingcommands.h"
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;
using namespace WifiDaemon;

using Request = std::function<void(WifiProviderZop &provider)>;
Q_DECLARE_METATYPE(Request)

class TestWifiProviderRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void sendsRequests_data();
    void sendsRequests();
    void repliesTellNothing_data() { sendsRequests_data(); }
    void repliesTellNothing();
    void refusals_data();
    void refusals();
    void refusedScanStaysPending();

    void networkEntries_data();
    void networkEntries();
    void invalidConfigurations_data();
    void invalidConfigurations();
    void failsBeforeItLogs();

    void commandsLiveAsLongAsTheProvider();
    void deletedBeforeItsNotice();
    void providerLeavesOperationsOpen_data();
    void providerLeavesOperationsOpen();
};
void TestWifiProviderRequests::sendsRequests_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<QString>("message");
    QTest::addColumn<ZopVariant>("dat");
    QTest::newRow("power on") << Request([](WifiProviderZop &provider) { provider.powerOn(); })
                              << QStringLiteral("wifi_power") << text("on");
    QTest::newRow("power off") << Request([](WifiProviderZop &provider) { provider.powerOff(); })
                               << QStringLiteral("wifi_power") << text("off");
    QTest::newRow("scan") << Request([](WifiProviderZop &provider) {
        AsyncWifiScanOperation operation;
        provider.scan(&operation);
    }) << QStringLiteral("scan")
                          << ZopVariant();
    QTest::newRow("connect") << Request([](WifiProviderZop &provider) {
        AsyncWifiConnectOperation operation;
        provider.connectAccessPoint(&operation, home());
    }) << QStringLiteral("wnet_new")
                             << json(R"({"key_mgmt":"WPA-PSK","psk":"correct horse","ssid":"Home"})");
    QTest::newRow("disconnect") << Request([](WifiProviderZop &provider) { provider.disconnectAccessPoint(); })
                                << QStringLiteral("wnet_disableall") << ZopVariant();
}

void TestWifiProviderRequests::sendsRequests()
{
    QFETCH(Request, request);
    QFETCH(QString, message);
    QFETCH(ZopVariant, dat);
    const WifiProviderFixture fixture;
    request(*fixture.provider);
    QCOMPARE(ZopDouble::journal(),
             (QStringList {
                 QStringLiteral("command /zop/services/wifi/control parent morvek::WifiProviderZop"),
                 QStringLiteral("start %1 1 connected finished").arg(message),
             }));
    const ZopDouble::Command command = ZopDouble::commands().first();
    QCOMPARE(command.message, message);
    QVERIFY(command.dat == dat);
    QCOMPARE(command.command->parent(), fixture.provider.get());
}

// Only the status object does.
void TestWifiProviderRequests::repliesTellNothing()
{
    QFETCH(Request, request);
    const WifiProviderFixture fixture;
    change("wifi_power", text("on"));
    change("wifi_status", connection());
    QCOMPARE(fixture.events->take(), lines({"on", "connected"}));
    request(*fixture.provider);
    LogCapture log(7);
    ZopDouble::answer(0, text("1"));
    ZopDouble::publish(QLatin1String(Control), {{QStringLiteral("wifi_power"), text("off")}});
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(fixture.provider->powered());
    QVERIFY(fixture.provider->connected());
}

void TestWifiProviderRequests::refusals_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const char *title, const Request &request, const char *line) {
        QTest::newRow(title) << request << QStringList(QString::fromLatin1(line));
    };
    row(
        "power on", [](WifiProviderZop &provider) { provider.powerOn(); },
        "error 1300 Wi-Fi service control command failed\nmsg: wifi_power\nerror code: 13\nerror: Not allowed: 100%s");
    row(
        "power off", [](WifiProviderZop &provider) { provider.powerOff(); },
        "error 1300 Wi-Fi service control command failed\nmsg: wifi_power\nerror code: 13\nerror: Not allowed: 100%s");
    row(
        "scan",
        [](WifiProviderZop &provider) {
            AsyncWifiScanOperation operation;
            provider.scan(&operation);
        },
        "error 1300 Wi-Fi service control command failed\nmsg: scan\nerror code: 13\nerror: Not allowed: 100%s");
    row(
        "disconnect", [](WifiProviderZop &provider) { provider.disconnectAccessPoint(); },
        "error 1300 Failed to disconnet from Access Point");
}

void TestWifiProviderRequests::refusals()
{
    QFETCH(Request, request);
    QFETCH(QStringList, log);
    const WifiProviderFixture fixture;
    request(*fixture.provider);
    request(*fixture.provider);
    LogCapture capture(1);
    ZopDouble::answerError(0, 13, QStringLiteral("Not allowed: 100%s"));
    QVERIFY(capture.take().isEmpty());
    KrelLogger::setVerbosity(2);
    ZopDouble::answerError(1, 13, QStringLiteral("Not allowed: 100%s"));
    QCOMPARE(capture.take(), log);
    QCOMPARE(ZopDouble::commands().size(), 2);
    QVERIFY(fixture.events->take().isEmpty());
}

void TestWifiProviderRequests::refusedScanStaysPending()
{
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ScanEnd end(scan.get());
    ZopDouble::answerError(0, 13, QStringLiteral("Not allowed"));
    QCOMPARE(end.text(), QString());
    QVERIFY(!scan->hasError());
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(end.text(), QStringLiteral("success a"));
}

void TestWifiProviderRequests::networkEntries_data()
{
    QTest::addColumn<WifiConnectionConfig>("config");
    QTest::addColumn<QByteArray>("entry");
    const auto row = [](const char *title, const WifiConnectionConfig &config, const char *entry) {
        QTest::newRow(title) << config << QByteArray(entry);
    };
    const QString home = QStringLiteral("Home");
    row("WPA", wifiConfig(home, QStringLiteral("key"), 0x2, 0x4),
        R"({"ssid":"Home","key_mgmt":"WPA-PSK","psk":"key"})");
    row("WPA2", wifiConfig(home, QStringLiteral("key"), 0x2, 0x8),
        R"({"ssid":"Home","key_mgmt":"WPA-PSK","psk":"key"})");
    row("open", wifiConfig(home, QString(), 0x1, 0x1), R"({"ssid":"Home","key_mgmt":"NONE"})");
    row("open with a passkey", wifiConfig(home, QStringLiteral("key"), 0x1, 0x1),
        R"({"ssid":"Home","key_mgmt":"NONE"})");
    row("no name", WifiConnectionConfig(), R"({"ssid":"","key_mgmt":"NONE"})");
    row("quotes", wifiConfig(QStringLiteral("a\"b\\"), QStringLiteral("\"k\\ ey "), 0x2, 0x8),
        R"({"ssid":"a\"b\\","key_mgmt":"WPA-PSK","psk":"\"k\\ ey "})");
    row("outside ASCII",
        wifiConfig(QString::fromUtf8("\xc3\xa9\xf0\x9f\x9a\x97"), QString::fromUtf8("\xe2\x82\xac"), 0x2, 0x4),
        "{\"ssid\":\"\xc3\xa9\xf0\x9f\x9a\x97\",\"key_mgmt\":\"WPA-PSK\",\"psk\":\"\xe2\x82\xac\"}");
    row("zero", wifiConfig(QStringLiteral("a") + QChar(0) + QStringLiteral("b"), QString(QChar(0)), 0x2, 0x8),
        R"({"ssid":"a\u0000b","key_mgmt":"WPA-PSK","psk":"\u0000"})");
    row("short passkey", wifiConfig(home, QStringLiteral("k"), 0x2, 0x8),
        R"({"ssid":"Home","key_mgmt":"WPA-PSK","psk":"k"})");
}

void TestWifiProviderRequests::networkEntries()
{
    QFETCH(WifiConnectionConfig, config);
    QFETCH(QByteArray, entry);
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join(config);
    QCOMPARE(ZopDouble::commands().size(), 1);
    const ZopVariant dat = ZopDouble::commands().first().dat;
    QCOMPARE(dat.encoding(), QByteArray("json"));
    QCOMPARE(dat.toJson().object(), QJsonDocument::fromJson(entry).object());
    QVERIFY(!operation->hasError());
}

void TestWifiProviderRequests::invalidConfigurations_data()
{
    QTest::addColumn<WifiConnectionConfig>("config");
    const QString home = QStringLiteral("Home");
    const QString key = QStringLiteral("key");
    QTest::newRow("no passkey") << wifiConfig(home, QString(), 0x2, 0x8);
    QTest::newRow("passkey without protocol") << wifiConfig(home, key, 0x2, 0x1);
    QTest::newRow("WEP with a passkey") << wifiConfig(home, key, 0x2, 0x2);
    QTest::newRow("WEP") << wifiConfig(home, key, 0x1, 0x2);
    QTest::newRow("open WPA2") << wifiConfig(home, key, 0x1, 0x8);
    QTest::newRow("EAP") << wifiConfig(home, key, 0x4, 0x8);
    QTest::newRow("both protocols") << wifiConfig(home, key, 0x2, 0xc);
}

void TestWifiProviderRequests::invalidConfigurations()
{
    QFETCH(WifiConnectionConfig, config);
    const WifiProviderFixture fixture;
    LogCapture log(2);
    const ConnectPointer first = fixture.join(config);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    const ConnectPointer second = fixture.join(config);
    QCOMPARE(
        log.take(),
        lines({"warning 1300 Connection AP - connectAccessPoint in provider - Wifi Configuration provided is not "
               "valid virtual void morvek::WifiProviderZop::connectAccessPoint(morvek::AsyncWifiConnectOperation*, "
               "const morvek::WifiConnectionConfig&)"}));
    const ConnectEnd firstEnd(first.get());
    const ConnectEnd secondEnd(second.get());
    QCOMPARE(firstEnd.text(), QStringLiteral("failure -1 Wifi Configuration provided is not valid"));
    QCOMPARE(secondEnd.text(), QStringLiteral("failure -1 Wifi Configuration provided is not valid"));
    QVERIFY(ZopDouble::journal().isEmpty());
    // It has not taken the place of a connect.
    const ConnectPointer valid = fixture.join();
    QCOMPARE(sent(), lines({NewHome}));
    change("wifi_status", connection());
    const ConnectEnd validEnd(valid.get());
    QCOMPARE(validEnd.text(), QStringLiteral("success 02:00:00:00:01:0a"));
}

void TestWifiProviderRequests::failsBeforeItLogs()
{
    const WifiProviderFixture fixture;
    AsyncWifiConnectOperation operation;
    const LogCapture log(3);
    QList<bool> failed;
    KrelLogger::setSink(
        [&](KrelLogger::Level, unsigned short, const QString &) { failed.append(operation.hasError()); });
    fixture.provider->connectAccessPoint(&operation, wifiConfig(QString(), QString(), 0x2, 0x8));
    QCOMPARE(failed, QList<bool> {true});
}

void TestWifiProviderRequests::commandsLiveAsLongAsTheProvider()
{
    WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ConnectPointer operation = fixture.join();
    fixture.provider->powerOn();
    fixture.provider->disconnectAccessPoint();
    ZopDouble::answer(0);
    ZopDouble::answer(1);
    ZopDouble::answerError(2, 1, QString());
    ZopDouble::answer(3);
    ZopDouble::answer(4);
    runQueued();
    runQueued();
    const QList<ZopDouble::Command> commands = ZopDouble::commands();
    QCOMPARE(commands.size(), 5);
    QVERIFY(allBelongTo(fixture.provider.get(), commands));
    fixture.provider.reset();
    QVERIFY(allAreGone(commands));
}

void TestWifiProviderRequests::deletedBeforeItsNotice()
{
    const WifiProviderFixture fixture;
    ConnectPointer connected = fixture.join();
    ScanPointer scanned = fixture.scan();
    ConnectPointer refused = fixture.join();
    const ScanPointer kept = fixture.scan();
    const ConnectEnd connectedEnd(connected.get());
    const ScanEnd scannedEnd(scanned.get());
    const ConnectEnd refusedEnd(refused.get());
    const ScanEnd keptEnd(kept.get());
    change("wifi_status", connection());
    change("scan_results", text(R"([{"bssid":"a"}])"));
    connected.reset();
    scanned.reset();
    refused.reset();
    QCOMPARE(keptEnd.text(), QStringLiteral("success a"));
    QCOMPARE(connectedEnd.text() + scannedEnd.text() + refusedEnd.text(), QString());
}

void TestWifiProviderRequests::providerLeavesOperationsOpen_data()
{
    QTest::addColumn<bool>("later");
    QTest::newRow("deleted") << false;
    QTest::newRow("deleted later") << true;
}

void TestWifiProviderRequests::providerLeavesOperationsOpen()
{
    QFETCH(bool, later);
    WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ConnectPointer operation = fixture.join();
    const ConnectPointer ended = fixture.join();
    const ScanEnd scanEnd(scan.get());
    const ConnectEnd end(operation.get());
    const ConnectEnd endedEnd(ended.get());
    if (later)
        fixture.provider.release()->deleteLater();
    else
        fixture.provider.reset();
    QCOMPARE(endedEnd.text(), QStringLiteral("failure -1 Another connect operation in progress."));
    QVERIFY(ZopDouble::objects(QLatin1String(Status)).isEmpty());
    QVERIFY(ZopDouble::objects(QLatin1String(Control)).isEmpty());
    change("scan_results", text("[]"));
    change("wifi_status", connection());
    ZopDouble::answer(0);
    ZopDouble::answerError(1, 1, QStringLiteral("Too late"));
    QCOMPARE(ZopDouble::commands().size(), 2);
    QCOMPARE(scanEnd.text() + end.text(), QString());
    QVERIFY(!scan->hasError());
    QVERIFY(!operation->hasError());
}

QTEST_GUILESS_MAIN(TestWifiProviderRequests)
#include "tst_wifiproviderrequests.moc"
