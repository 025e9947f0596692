// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "contracttest.h"
#include "networkinterface.h"
#include "networkinterfaceservice.h"
#include "operationend.h"
#include "protectedby.h"
#include "servicepointer.h"
#include "wificonnectionconfig.h"
#include "wifievents.h"
#include "wifiservice.h"

using namespace morvek;

namespace {

using Values = QMap<QString, ZopVariant>;

const QString Status = QStringLiteral("/zop/services/wifi/status");
const QString Control = QStringLiteral("/zop/services/wifi/control");
const QString Interface = QStringLiteral("/zop/services/networking/all/interfaces/eth0");

bool publishValues(const QString &path, const Values &values)
{
    ZopChangeset changes;
    changes.assignments = values;
    return ZopObject::create(path, changes);
}

bool update(ZopObject &object, const Values &values)
{
    ZopChangeset changes;
    changes.assignments = values;
    return object.setAttributes(changes);
}

/*! So much that whoever does not read meanwhile is left behind. */
bool writeALot(ZopObject &object)
{
    for (int n = 0; n < 60; ++n) {
        if (!update(object, {{QStringLiteral("filler"), QString(200000, QLatin1Char('x'))}}))
            return false;
    }
    return update(object, {{QStringLiteral("filler"), QString()}});
}

ZopVariant found(const char *bssid)
{
    return QJsonArray {QJsonObject {{QStringLiteral("bssid"), QLatin1String(bssid)}}};
}

} // namespace

/*! What an application hears that did not turn its event loop while a lot was published. */
class LeftBehindTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oldNewsOfTheStationAreNotTold();
    void thePresentInterfaceIsTold();
};

void LeftBehindTest::oldNewsOfTheStationAreNotTold()
{
    const Values known = {
        {QStringLiteral("wifi_power"), QStringLiteral("on")},
        {QStringLiteral("scan_results"), found("02:00:00:00:00:01")},
        {QStringLiteral("last_event"), QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED")},
    };
    const ZopObject control(Control, ZopObject::Publish, true);
    QVERIFY(publishValues(Status, known));
    const WifiServicePointer service(newWifiService());
    QVERIFY(waitUntil([&] { return service->ready(); }));
    WifiEvents events(*service);
    const std::unique_ptr<AsyncWifiScanOperation> scan(service->scan());
    const std::unique_ptr<AsyncWifiConnectOperation> join(
        service->connectAccessPoint(protectedBy("correct horse", "Home")));
    const OperationEnd<AsyncWifiScanOperation> scanEnd(scan.get());
    const OperationEnd<AsyncWifiConnectOperation> joinEnd(join.get());

    ZopObject status(Status, ZopObject::ReadWrite, false);
    QVERIFY(update(status, {{QStringLiteral("wifi_power"), QStringLiteral("off")}}));
    QVERIFY(update(status, known));
    QVERIFY(writeALot(status));
    QVERIFY(update(status, {{QStringLiteral("wifi_status"), QJsonObject {{QStringLiteral("bssid"), QString()}}}}));
    // What comes of the present state has come when a later update is told.
    ZopObject witness(Status, ZopObject::Subscribe, false);
    const Events told(&witness);
    QVERIFY(update(status, {{QStringLiteral("end"), 1}}));
    QVERIFY(told.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.take(), QStringList());
    QCOMPARE(scanEnd.text(), QString());
    QCOMPARE(joinEnd.text(), QString());

    // The next ones count.
    QVERIFY(update(status, {{QStringLiteral("scan_results"), found("02:00:00:00:00:02")}}));
    QVERIFY(update(status, {{QStringLiteral("last_event"), known.value(QStringLiteral("last_event"))}}));
    QVERIFY(waitUntil([&] { return !scanEnd.text().isEmpty() && !joinEnd.text().isEmpty(); }));
    QCOMPARE(scanEnd.text(), QStringLiteral("success 02:00:00:00:00:02"));
    QCOMPARE(joinEnd.text(), QStringLiteral("failure -1 Failed to connect to Access Point"));
}

void LeftBehindTest::thePresentInterfaceIsTold()
{
    QVERIFY(publishValues(Interface,
                          {{QStringLiteral("mtu"), 1500}, {QStringLiteral("connected"), QStringLiteral("true")}}));
    QVERIFY(publishValues(QStringLiteral("/zop/services/networking/all/status_public"), {}));
    const ZopObject control(QStringLiteral("/zop/services/networking/control"), ZopObject::Publish, true);
    const NetworkInterfaceServicePointer service(newNetworkInterfaceService());
    QVERIFY(service->ready());
    QStringList told;
    const auto note = [&told](const char *what) {
        return [&told, what](const NetworkInterface &one) {
            told << QLatin1String(what) + QLatin1Char(' ') + QString::number(one.maxTransmissionUnit());
        };
    };
    connect(service.get(), &NetworkInterfaceService::interfaceConfigurationChanged, this, note("changed"));
    connect(service.get(), &NetworkInterfaceService::interfaceConnected, this, note("connected"));
    connect(service.get(), &NetworkInterfaceService::interfaceDisconnected, this, note("disconnected"));

    ZopObject object(Interface, ZopObject::ReadWrite, false);
    QVERIFY(update(object, {{QStringLiteral("connected"), QStringLiteral("false")}, {QStringLiteral("mtu"), 1400}}));
    QVERIFY(update(object, {{QStringLiteral("connected"), QStringLiteral("true")}}));
    QVERIFY(writeALot(object));
    QVERIFY(update(object, {{QStringLiteral("mtu"), 1300}}));
    QVERIFY(waitUntil([&] { return !told.isEmpty(); }));
    QVERIFY(update(object, {{QStringLiteral("mtu"), 1200}}));
    QVERIFY(waitUntil([&] { return told.size() > 1; }));
    QCOMPARE(told, QStringList({"changed 1300", "changed 1200"}));
}

CONTRACT_TEST_MAIN(LeftBehindTest)

#include "tst_leftbehind.moc"
