// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotevents.h"
#include "hotspotservice.h"
#include "logcapture.h"
#include "operationend.h"
#include "servicepointer.h"
#include "tetheringdaemon.h"
#include "textlines.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;
using namespace TetheringDaemon;

namespace {

using ServicePointer = HotSpotServicePointer;
using ConfigPointer = std::unique_ptr<AsyncHotspotConfigOperation>;
using ConfigEnd = OperationEnd<AsyncHotspotConfigOperation>;
using EnablePointer = std::unique_ptr<AsyncHotspotEnableOperation>;
using EnableEnd = OperationEnd<AsyncHotspotEnableOperation>;

ServicePointer newService()
{
    return ServicePointer(newHotSpotService());
}

WifiHotspot van()
{
    WifiHotspot hotspot;
    hotspot.setName(QStringLiteral("Van"));
    hotspot.setPassphrase(QStringLiteral("correct horse"));
    hotspot.setSecurityType(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
    hotspot.setMaxClients(4);
    hotspot.setInactivityTime(20);
    hotspot.setPrivacy(true);
    return hotspot;
}

const char *const VanWritten =
    R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},)"
    R"("lanprofile":{"autoshutdown_time":20,"block_conn":false,"max_num_sta":4,"mhs_band":"2.4",)"
    R"("passphrase":"correct horse","privacy":true,"security_type":"wpa_mixed","ssid":"Van"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";
const char *const CarWritten =
    R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},)"
    R"("lanprofile":{"autoshutdown_time":0,"block_conn":true,"max_num_sta":10,"mhs_band":"5.0",)"
    R"("passphrase":"open sesame","privacy":false,"security_type":"wpa2","ssid":"Car"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";
const char *const Fetch = R"(retrieve_profile {"lan_type":"wlanap","type":"lan"})";

const char *const NotReady = "failure -1 The service is not ready.";

} // namespace

class TestShippedHotspot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }
    void cleanup() { deleteProviders(); }

    void becomesReadyWithTheManager();
    void isNeverReadyWhenAnObjectIsMissing();
    void tellsOneStory();
    void isRefused();
    void cannotWrite();
    void twoServices();
    void logsNoPassphrase();

    void operationsOutliveTheService();
    void isDeletedInASlot_data();
    void isDeletedInASlot();
    void isDeletedInTheSlotOfAnOperation();
    void slotAsksTheService();
};

void TestShippedHotspot::becomesReadyWithTheManager()
{
    const ServicePointer service = newService();
    HotspotEvents events(*service);
    LogCapture log(2);
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    QVERIFY(!service->enabled());
    QVERIFY(log.take().isEmpty());
    const EnablePointer enable(service->setEnabled(true));
    const ConfigPointer write(service->setConfiguration(van()));
    const ConfigPointer read(service->configuration());
    QCOMPARE(log.take(),
             lines({"error 1300 The service is not ready.morvek::AsyncHotspotEnableOperation* "
                    "morvek::HotSpotService::setEnabled(bool)",
                    "error 1300 The service is not ready.morvek::AsyncHotspotConfigOperation* "
                    "morvek::HotSpotService::setConfiguration(const morvek::WifiHotspot&)",
                    "error 1300 The service is not ready.morvek::AsyncHotspotConfigOperation* "
                    "morvek::HotSpotService::configuration() const"}));
    // There is time to connect.
    const EnableEnd enableEnd(enable.get());
    const ConfigEnd writeEnd(write.get());
    const ConfigEnd readEnd(read.get());
    QCOMPARE(enableEnd.text(), QString::fromLatin1(NotReady));
    QCOMPARE(writeEnd.text(), QString::fromLatin1(NotReady));
    QCOMPARE(readEnd.text(), QString::fromLatin1(NotReady));
    start({{QStringLiteral("state"), text("ACTIVE")}});
    QCOMPARE(events.take(), lines({"on?", "ready"})); // while it is not ready, it says that the hotspot is off
    QVERIFY(service->ready());
    QVERIFY(service->enabled());
    QVERIFY(requests().isEmpty());
}

void TestShippedHotspot::isNeverReadyWhenAnObjectIsMissing()
{
    for (const char *missing : {Control, Status}) {
        ZopDouble::reset();
        const ServicePointer service = newService();
        HotspotEvents events(*service);
        LogCapture log(2);
        ZopDouble::store(QLatin1String(missing == Control ? Status : Control), {});
        announce("control");
        QCOMPARE(log.take(), lines({"error 1300 Could not open ZOP object:No such object"}));
        start();
        runQueued();
        start();
        QVERIFY(!service->ready());
        QVERIFY(!service->enabled());
        QVERIFY(events.take().isEmpty());
        const ConfigPointer write(service->setConfiguration(van()));
        const ConfigEnd end(write.get());
        QCOMPARE(end.text(), QString::fromLatin1(NotReady));
        QVERIFY(requests().isEmpty());
        // Another one finds what is there by then.
        const ServicePointer second = newService();
        announce("control");
        QVERIFY(second->ready());
        deleteProviders();
    }
}

void TestShippedHotspot::tellsOneStory()
{
    const ServicePointer service = newService();
    HotspotEvents events(*service);
    start();

    const ConfigPointer read(service->configuration());
    const ConfigEnd readEnd(read.get());
    accept("retrieve_profile", lastId(), json(CarProfile));
    QCOMPARE(readEnd.text(), QStringLiteral("success Car"));
    const WifiHotspot fetched = read->results().first();
    QCOMPARE(fetched.passphrase(), QStringLiteral("open sesame"));
    QCOMPARE(int(fetched.securityType()), 8);
    QCOMPARE(int(fetched.band()), 1);
    QCOMPARE(fetched.maxClients(), 10);
    QCOMPARE(fetched.inactivityTime(), 0);
    QVERIFY(!fetched.privacy());
    QVERIFY(fetched.blockConn());
    QVERIFY(events.profile() == fetched);

    const EnablePointer on(service->setEnabled(true));
    const EnableEnd onEnd(on.get());
    accept("start", lastId());
    QCOMPARE(onEnd.text(), QStringLiteral("success true"));
    QVERIFY(!service->enabled());
    change("state", text("ACTIVE"));
    QVERIFY(service->enabled());

    const ConfigPointer write(service->setConfiguration(van()));
    const ConfigEnd writeEnd(write.get());
    accept("update_profile", lastId());
    QCOMPARE(writeEnd.text(), QStringLiteral("success Car"));
    QVERIFY(write->results().first() == fetched);

    const EnablePointer off(service->setEnabled(false));
    const EnableEnd offEnd(off.get());
    accept("stop", lastId());
    QCOMPARE(offEnd.text(), QStringLiteral("success false"));
    change("state", text("INACTIVE"));
    QCOMPARE(events.take(), lines({"ready", "profile Car", "on", "profile Car", "off"}));
    QCOMPARE(requests(),
             (QStringList {QLatin1String(Fetch), QLatin1String("start ") + QLatin1String(CarWritten),
                           QLatin1String("update_profile ") + QLatin1String(VanWritten), QStringLiteral("stop")}));
}

void TestShippedHotspot::isRefused()
{
    const ServicePointer service = newService();
    HotspotEvents events(*service);
    start();
    events.take();
    const EnablePointer on(service->setEnabled(true));
    refuse("start", lastId());
    const EnablePointer off(service->setEnabled(false));
    refuse("stop", lastId());
    const ConfigPointer write(service->setConfiguration(van()));
    refuse("update_profile", lastId());
    const ConfigPointer read(service->configuration());
    refuse("retrieve_profile", lastId());
    const ConfigPointer empty(service->configuration());
    accept("retrieve_profile", lastId());
    const EnableEnd onEnd(on.get());
    const EnableEnd offEnd(off.get());
    const ConfigEnd writeEnd(write.get());
    const ConfigEnd readEnd(read.get());
    const ConfigEnd emptyEnd(empty.get());
    QCOMPARE(onEnd.text(), QStringLiteral("failure -1 Failed to enable config."));
    QCOMPARE(offEnd.text(), QStringLiteral("failure -1 Failed to disable config."));
    QCOMPARE(writeEnd.text(), QStringLiteral("failure -1 Failed to update WifiHotspot config."));
    QCOMPARE(readEnd.text(), QStringLiteral("failure -1 Failed to retrieve WifiHotspot config."));
    QCOMPARE(emptyEnd.text(), QStringLiteral("failure -1 Empty or malformatted config."));
    QVERIFY(events.take().isEmpty());
}

void TestShippedHotspot::cannotWrite()
{
    const ServicePointer service = newService();
    start();
    ZopDouble::refuseWrites(QLatin1String(Control), QStringLiteral("gone"));
    const EnablePointer on(service->setEnabled(true));
    const ConfigPointer write(service->setConfiguration(van()));
    const EnableEnd onEnd(on.get());
    const ConfigEnd writeEnd(write.get());
    QCOMPARE(onEnd.text(), QStringLiteral("failure -1 Unable to write to vantor zop"));
    QCOMPARE(writeEnd.text(), QStringLiteral("failure -1 Unable to write to vantor zop"));
}

// They share the numbers of their requests, and nothing else but the state.
void TestShippedHotspot::twoServices()
{
    const ServicePointer first = newService();
    const ServicePointer second = newService();
    start();
    HotspotEvents firstEvents(*first);
    HotspotEvents secondEvents(*second);
    const ConfigPointer read(first->configuration());
    const int readId = lastId();
    const EnablePointer on(second->setEnabled(true));
    QCOMPARE(lastId(), readId + 1);
    const ConfigEnd readEnd(read.get());
    const EnableEnd onEnd(on.get());
    accept("retrieve_profile", readId, json(CarProfile));
    accept("start", readId + 1);
    change("state", text("ACTIVE"));
    QCOMPARE(readEnd.text(), QStringLiteral("success Car"));
    QCOMPARE(onEnd.text(), QStringLiteral("success true"));
    QCOMPARE(firstEvents.take(), lines({"profile Car", "on"}));
    QCOMPARE(secondEvents.take(), lines({"on"}));
}

void TestShippedHotspot::logsNoPassphrase()
{
    LogCapture log(7);
    const ServicePointer service = newService();
    const ConfigPointer early(service->setConfiguration(van()));
    start();
    const QList<std::function<void(const char *request)>> ends {
        [](const char *request) { accept(request, lastId(), json(CarProfile)); },
        [](const char *request) { accept(request, lastId(), text(CarProfile)); },
        [](const char *request) { accept(request, lastId(), json(QByteArray(CarProfile).chopped(1))); },
        [](const char *request) { refuse(request, lastId()); },
        [](const char *request) { accept(request, 0, json(CarProfile)); },
        [](const char *) { ZopDouble::refuseWrites(QLatin1String(Control), QStringLiteral("gone")); },
        [](const char *) {},
    };
    WifiHotspot empty = van();
    empty.setMaxClients(-1);
    for (const auto &end : ends) {
        const ConfigPointer read(service->configuration());
        end("retrieve_profile");
        const ConfigPointer write(service->setConfiguration(van()));
        end("update_profile");
        const ConfigPointer writeEmpty(service->setConfiguration(empty));
        end("update_profile");
        const EnablePointer on(service->setEnabled(true));
        end("start");
        const EnablePointer off(service->setEnabled(false));
        end("stop");
        runQueued();
    }
    const QString all = log.take().join(QLatin1Char('\n'));
    for (const char *wanted : {"not ready", "is empty", "No operation", "Unable to write", "Failed to retrieve",
                               "malformatted", "Failed to update", "Failed to enable", "Failed to disable"})
        QVERIFY2(all.contains(QLatin1String(wanted)), wanted);
    for (const char *secret : {"correct", "horse", "open", "sesame"})
        QVERIFY2(!all.contains(QLatin1String(secret), Qt::CaseInsensitive), secret);
}

// What has been asked for still ends, since whoever answers the manager stays.
void TestShippedHotspot::operationsOutliveTheService()
{
    for (const bool later : {false, true}) {
        ZopDouble::reset();
        ServicePointer service = newService();
        start();
        const ConfigPointer early(service->configuration());
        const int earlyId = lastId();
        const EnablePointer on(service->setEnabled(true));
        const ConfigEnd earlyEnd(early.get());
        const EnableEnd onEnd(on.get());
        if (later)
            service.release()->deleteLater();
        else
            service.reset();
        accept("start", earlyId + 1);
        QCOMPARE(onEnd.text(), QStringLiteral("success true"));
        change("state", text("ACTIVE"));
        accept("retrieve_profile", earlyId, json(CarProfile));
        QCOMPARE(earlyEnd.text(), QStringLiteral("success Car"));
        // A new service begins on its own.
        const ServicePointer second = newService();
        announce("control");
        QVERIFY(second->enabled());
        const EnablePointer again(second->setEnabled(true));
        QCOMPARE(requests().last(), QStringLiteral("start {}"));
        QCOMPARE(lastId(), earlyId + 2);
        deleteProviders();
    }
}

void TestShippedHotspot::isDeletedInASlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("readyChanged") << 0;
    QTest::newRow("enabledChanged, before it is ready") << 1;
    QTest::newRow("enabledChanged") << 2;
    QTest::newRow("configurationChanged, read") << 3;
    QTest::newRow("configurationChanged, written") << 4;
}

void TestShippedHotspot::isDeletedInASlot()
{
    QFETCH(int, which);
    ServicePointer service = newService();
    ConfigPointer operation;
    if (which > 1)
        start();
    if (which > 2)
        operation.reset(which == 3 ? service->configuration() : service->setConfiguration(van()));
    int heardLater = 0;
    const auto hear = [&](auto signal) {
        connect(service.get(), signal, [&service] { service.reset(); });
        connect(service.get(), signal, [&heardLater] { ++heardLater; });
    };
    hear(&ServiceBase::readyChanged);
    hear(&HotSpotService::enabledChanged);
    hear(&HotSpotService::configurationChanged);
    switch (which) {
    case 0:
        start();
        break;
    case 1:
        start({{QStringLiteral("state"), text("ACTIVE")}});
        break;
    case 2:
        change("state", text("ACTIVE"));
        break;
    case 3:
        accept("retrieve_profile", lastId(), json(CarProfile));
        break;
    default:
        accept("update_profile", lastId());
    }
    QVERIFY(!service);
    runQueued();
    QCOMPARE(heardLater, 0);
    QCOMPARE(operation ? operation->results().size() : 1, 1);
}

void TestShippedHotspot::isDeletedInTheSlotOfAnOperation()
{
    ServicePointer service = newService();
    start();
    AsyncHotspotConfigOperation *read = service->configuration();
    const int readId = lastId();
    const EnablePointer off(service->setEnabled(false));
    const QPointer<AsyncHotspotConfigOperation> alive(read);
    const EnableEnd end(off.get());
    connect(read, &AsyncHotspotConfigOperation::success, [&service](AsyncHotspotConfigOperation *asyncop) {
        service.reset();
        delete asyncop;
    });
    accept("retrieve_profile", readId, json(CarProfile));
    runQueued();
    QVERIFY(!alive);
    QVERIFY(!service);
    refuse("stop", readId + 1);
    QCOMPARE(end.text(), QStringLiteral("failure -1 Failed to disable config."));
}

void TestShippedHotspot::slotAsksTheService()
{
    const ServicePointer service = newService();
    ConfigPointer read;
    EnablePointer on;
    EnablePointer off;
    connect(service.get(), &HotSpotService::readyChanged, [&] { read.reset(service->configuration()); });
    connect(service.get(), &HotSpotService::configurationChanged, [&] { on.reset(service->setEnabled(true)); });
    connect(service.get(), &HotSpotService::enabledChanged, [&] { off.reset(service->setEnabled(false)); });
    start();
    accept("retrieve_profile", lastId(), json(CarProfile));
    change("state", text("ACTIVE"));
    QCOMPARE(requests(),
             (QStringList {QLatin1String(Fetch), QLatin1String("start ") + QLatin1String(CarWritten),
                           QStringLiteral("stop")}));
    QVERIFY(off);
    const EnableEnd end(off.get());
    accept("stop", lastId());
    QCOMPARE(end.text(), QStringLiteral("success false"));
}

QTEST_GUILESS_MAIN(TestShippedHotspot)
#include "tst_shippedhotspot.moc"
