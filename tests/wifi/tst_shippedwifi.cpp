// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "localencoding.h"
#include "logcapture.h"
#include "operationend.h"
#include "protectedby.h"
#include "servicepointer.h"
#include "textform.h"
#include "textlines.h"
#include "wificonnectionconfig.h"
#include "wifidaemon.h"
#include "wifievents.h"
#include "wifiservice.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;
using namespace WifiDaemon;

namespace {

using ServicePointer = WifiServicePointer;
using ScanPointer = std::unique_ptr<AsyncWifiScanOperation>;
using ScanEnd = OperationEnd<AsyncWifiScanOperation>;
using ConnectPointer = std::unique_ptr<AsyncWifiConnectOperation>;
using ConnectEnd = OperationEnd<AsyncWifiConnectOperation>;

ServicePointer newService()
{
    return ServicePointer(newWifiService());
}

WifiConnectionConfig home()
{
    return protectedBy("correct horse", "Home");
}

/*! The names of the commands that were sent. */
QStringList sent()
{
    QStringList messages;
    const QList<ZopDouble::Command> all = ZopDouble::commands();
    for (const ZopDouble::Command &command : all)
        messages.append(command.message);
    return messages;
}

const char *const NotReady = "failure -1 Service is not ready";

} // namespace

class TestShippedWifi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void becomesReadyWithTheDaemon();
    void isNeverReadyWhenAnObjectIsMissing();
    void tellsOneStory();
    void failsToJoin();
    void twoServices();

    void operationsOutliveTheService();
    void isDeletedLaterWithOperationsOpen();
    void isDeletedInASlot_data();
    void isDeletedInASlot();
    void isDeletedInTheSlotOfAnOperation();
    void slotAsksTheService();

private:
    LocalEncoding m_encoding {"UTF-8"};
};

void TestShippedWifi::becomesReadyWithTheDaemon()
{
    const ServicePointer service = newService();
    WifiEvents events(*service);
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    const ScanPointer scan(service->scan());
    const ConnectPointer join(service->connectAccessPoint(home()));
    const ScanEnd scanEnd(scan.get());
    const ConnectEnd joinEnd(join.get());
    service->powerOn();
    service->disconnectAccessPoint();
    QCOMPARE(scanEnd.text(), QString::fromLatin1(NotReady));
    QCOMPARE(joinEnd.text(), QString::fromLatin1(NotReady));
    start({{QStringLiteral("wifi_power"), text("on")}, {QStringLiteral("wifi_status"), connection()}});
    QCOMPARE(events.take(), lines({"ready"}));
    QVERIFY(service->ready());
    QVERIFY(service->powered());
    QVERIFY(service->connected());
    WifiAccessPoint accessPoint = service->connectedAccessPoint();
    QCOMPARE(textForm(accessPoint),
             QStringLiteral("WifiAccessPoint { bssid: 02:00:00:00:01:0a, ssid: Home, rssi: 0, frequency: 0, ciphers: "
                            "2, key management: 2, protocols: 8, service set: 2 }"));
    QVERIFY(ZopDouble::commands().isEmpty());
}

void TestShippedWifi::isNeverReadyWhenAnObjectIsMissing()
{
    const ServicePointer service = newService();
    WifiEvents events(*service);
    LogCapture log(2);
    ZopDouble::store(QLatin1String(Status), {});
    announce("status");
    QCOMPARE(log.take(),
             lines({"error 1300 Unable to open Wi-Fi service ZOP control object /zop/services/wifi/control: No such "
                    "object",
                    "error 1300 Unable to initialize WifiProviderZop"}));
    start();
    runQueued();
    start();
    QVERIFY(!service->ready());
    QVERIFY(!service->powered());
    QVERIFY(events.take().isEmpty());
    const ScanPointer scan(service->scan());
    const ScanEnd end(scan.get());
    QCOMPARE(end.text(), QString::fromLatin1(NotReady));
    // Another one finds what is there by then.
    const ServicePointer second = newService();
    announce("status");
    QVERIFY(second->ready());
}

void TestShippedWifi::tellsOneStory()
{
    const ServicePointer service = newService();
    WifiEvents events(*service);
    start();

    service->powerOn();
    ZopDouble::answer(0);
    QVERIFY(!service->powered());
    change("wifi_power", text("on"));
    QVERIFY(service->powered());

    const ScanPointer scan(service->scan());
    const ScanEnd scanEnd(scan.get());
    ZopDouble::answer(1);
    change("scan_results",
           text("[{\"bssid\":\"02:00:00:00:01:0a\",\"ssid\":\"Caf\xc3\xa9\",\"signal_level\":\"-57\","
                "\"frequency\":\"2437\",\"flags\":[\"WPA2-PSK-CCMP\",\"ESS\"]},{\"bssid\":\"02:00:00:00:01:0b\"}]"));
    QCOMPARE(scanEnd.text(), QStringLiteral("success 02:00:00:00:01:0a,02:00:00:00:01:0b"));
    WifiAccessPoint found = scan->results().first();
    QCOMPARE(textForm(found),
             QString::fromUtf8("WifiAccessPoint { bssid: 02:00:00:00:01:0a, ssid: Caf\xc3\xa9, rssi: -57, frequency: "
                               "2437, ciphers: 2, key management: 2, protocols: 8, service set: 1 }"));

    const ConnectPointer operation(service->connectAccessPoint(home()));
    const ConnectEnd end(operation.get());
    ZopDouble::answer(2, text("7"));
    ZopDouble::answer(3);
    QCOMPARE(end.text(), QString());
    change("wifi_status", connection());
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QVERIFY(operation->results().first() == service->connectedAccessPoint());
    change("wifi_status", connection("02:00:00:00:01:0b"));
    QCOMPARE(service->connectedAccessPoint().bssid(), QStringLiteral("02:00:00:00:01:0b"));

    service->disconnectAccessPoint();
    ZopDouble::answer(4);
    QVERIFY(service->connected());
    removeAttribute("wifi_status");
    QVERIFY(!service->connected());
    QVERIFY(service->connectedAccessPoint().isEmpty());

    service->powerOff();
    change("wifi_power", text("off"));
    QCOMPARE(events.take(), lines({"ready", "on", "connected", "disconnected", "off"}));
    QCOMPARE(sent(), lines({"wifi_power", "scan", "wnet_new", "wnet_select", "wnet_disableall", "wifi_power"}));
}

void TestShippedWifi::failsToJoin()
{
    const ServicePointer service = newService();
    start();
    const ConnectPointer wrongPasskey(service->connectAccessPoint(home()));
    const ConnectPointer busy(service->connectAccessPoint(home()));
    const ConnectEnd wrongPasskeyEnd(wrongPasskey.get());
    const ConnectEnd busyEnd(busy.get());
    WifiConnectionConfig withoutPasskey = home();
    withoutPasskey.setPasskey(QString());
    const ConnectPointer invalid(service->connectAccessPoint(withoutPasskey));
    const ConnectEnd invalidEnd(invalid.get());
    ZopDouble::answer(0, text("7"));
    ZopDouble::answer(1);
    change("last_event", text("<3>CTRL-EVENT-SSID-TEMP-DISABLED id=7"));
    QCOMPARE(wrongPasskeyEnd.text(), QStringLiteral("failure -1 Failed to connect to Access Point"));
    QCOMPARE(busyEnd.text(), QStringLiteral("failure -1 Another connect operation in progress."));
    QCOMPARE(invalidEnd.text(), QStringLiteral("failure -1 Wifi Configuration provided is not valid"));
    const ConnectPointer refused(service->connectAccessPoint(home()));
    const ConnectEnd refusedEnd(refused.get());
    ZopDouble::answerError(2, 28, QStringLiteral("Too many networks"));
    QCOMPARE(refusedEnd.text(), QStringLiteral("failure -1 Too many networks"));
    const ConnectPointer cancelled(service->connectAccessPoint(home()));
    const ConnectEnd cancelledEnd(cancelled.get());
    service->disconnectAccessPoint();
    QCOMPARE(cancelledEnd.text(),
             QStringLiteral("failure -1 Cancelling connect operation, due to issued disconnect command"));
    QCOMPARE(sent(), lines({"wnet_new", "wnet_select", "wnet_new", "wnet_select", "wnet_new", "wnet_disableall"}));
}

// They hear of what the other one does: results and connections belong to whoever waits.
void TestShippedWifi::twoServices()
{
    const ServicePointer first = newService();
    const ServicePointer second = newService();
    start();
    const ScanPointer firstScan(first->scan());
    const ConnectPointer firstConnect(first->connectAccessPoint(home()));
    const ConnectPointer secondConnect(second->connectAccessPoint(home()));
    const ScanEnd scanEnd(firstScan.get());
    const ConnectEnd firstEnd(firstConnect.get());
    const ConnectEnd secondEnd(secondConnect.get());
    LogCapture log(3);
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(log.take(), lines({"warning 1300 Scan results attribute value is not valid"})); // by the second
    QCOMPARE(scanEnd.text(), QStringLiteral("success a"));
    change("wifi_status", connection());
    QCOMPARE(firstEnd.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QCOMPARE(secondEnd.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QCOMPARE(sent(), lines({"scan", "wnet_new", "wnet_new"}));
}

void TestShippedWifi::operationsOutliveTheService()
{
    ServicePointer service = newService();
    start();
    const ScanPointer scan(service->scan());
    const ConnectPointer pending(service->connectAccessPoint(home()));
    const ConnectPointer ended(service->connectAccessPoint(home()));
    const ScanEnd scanEnd(scan.get());
    const ConnectEnd pendingEnd(pending.get());
    const ConnectEnd end(ended.get());
    service.reset();
    change("scan_results", text("[]"));
    change("wifi_status", connection());
    ZopDouble::answer(1);
    QCOMPARE(end.text(), QStringLiteral("failure -1 Another connect operation in progress."));
    QCOMPARE(scanEnd.text() + pendingEnd.text(), QString());
    QCOMPARE(sent(), lines({"scan", "wnet_new"}));
}

void TestShippedWifi::isDeletedLaterWithOperationsOpen()
{
    ServicePointer service = newService();
    start();
    const ConnectPointer pending(service->connectAccessPoint(home()));
    const ConnectEnd end(pending.get());
    const QPointer<WifiService> alive(service.get());
    service.release()->deleteLater();
    ZopDouble::answer(0, text("7")); // until then it works
    QCOMPARE(sent(), lines({"wnet_new", "wnet_select"}));
    runQueued();
    QVERIFY(!alive);
    ZopDouble::answer(1);
    change("wifi_status", connection());
    QCOMPARE(end.text(), QString());
    QVERIFY(!pending->hasError());
}

void TestShippedWifi::isDeletedInASlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("readyChanged") << 0;
    QTest::newRow("poweredChanged, before other attributes") << 1;
    QTest::newRow("connectedChanged") << 2;
    QTest::newRow("connectedChanged, before other removals") << 3;
}

void TestShippedWifi::isDeletedInASlot()
{
    QFETCH(int, which);
    const QString path = QLatin1String(Status);
    const ZopDouble::Values both {{QStringLiteral("wifi_power"), text("on")},
                                  {QStringLiteral("wifi_status"), connection()}};
    const QList<std::function<void()>> causes {
        [&] { start(both); },
        [&] { ZopDouble::publish(path, both); },
        [] { change("wifi_status", connection()); },
        [&] {
            ZopDouble::publish(path, {}, {QStringLiteral("wifi_status"), QStringLiteral("wifi_status_2")});
        },
    };
    ServicePointer service = newService();
    if (which != 0)
        start();
    if (which == 3)
        change("wifi_status", connection());
    const ConnectPointer operation(service->connectAccessPoint(home()));
    int heardLater = 0;
    const auto hear = [&](auto signal) {
        connect(service.get(), signal, [&service] { service.reset(); });
        connect(service.get(), signal, [&heardLater] { ++heardLater; });
    };
    hear(&ServiceBase::readyChanged);
    hear(&WifiService::poweredChanged);
    hear(&WifiService::connectedChanged);
    causes.at(which)();
    QVERIFY(!service);
    runQueued();
    QCOMPARE(heardLater, 0);
    // The connect had been completed before the connection was told.
    QCOMPARE(operation->results().size(), which == 2 ? 1 : 0);
}

void TestShippedWifi::isDeletedInTheSlotOfAnOperation()
{
    ServicePointer service = newService();
    start();
    AsyncWifiScanOperation *first = service->scan();
    const ScanPointer second(service->scan());
    const QPointer<AsyncWifiScanOperation> alive(first);
    const ScanEnd end(second.get());
    connect(first, &AsyncWifiScanOperation::success, [&service](AsyncWifiScanOperation *asyncop) {
        service.reset();
        delete asyncop;
    });
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(end.text(), QStringLiteral("success a"));
    QVERIFY(!alive);
    QVERIFY(!service);
}

void TestShippedWifi::slotAsksTheService()
{
    const ServicePointer service = newService();
    ConnectPointer operation;
    ScanPointer scan;
    connect(service.get(), &WifiService::readyChanged, [&] { service->powerOn(); });
    connect(service.get(), &WifiService::poweredChanged, [&] { scan.reset(service->scan()); });
    connect(service.get(), &WifiService::connectedChanged, [&](bool connected) {
        if (!connected)
            operation.reset(service->connectAccessPoint(home()));
    });
    start();
    // The results come in one update with the power, but before it in the order of names.
    ZopDouble::publish(QLatin1String(Status),
                       {{QStringLiteral("scan_results"), text("[]")}, {QStringLiteral("wifi_power"), text("on")}});
    QVERIFY(scan);
    const ScanEnd scanEnd(scan.get());
    QCOMPARE(scanEnd.text(), QString());
    change("wifi_status", connection());
    removeAttribute("wifi_status");
    QVERIFY(operation);
    QCOMPARE(sent(), lines({"wifi_power", "scan", "wnet_new"}));
    const ConnectEnd end(operation.get());
    change("wifi_status", connection());
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
}

QTEST_GUILESS_MAIN(TestShippedWifi)
#include "tst_shippedwifi.moc"
