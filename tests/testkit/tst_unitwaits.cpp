// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotservice.h"
#include "networkcontroller.h"
#include "networkinterfaceconfig.h"
#include "networkinterfaceservice.h"
#include "networkservices.h"
#include "servicepointer.h"
#include "unitfailure.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

#include <QtCore/QPointer>
#include <QtCore/QProcess>
#include <QtCore/QTimer>

#include <csignal>

using namespace morvek;

namespace {

const QString Done = QStringLiteral("done");
const QString Open = QStringLiteral("open");
const QString Scan = QStringLiteral("scan");
const QVariantMap OfScan {{QStringLiteral("message"), Scan}};

/*! A request of the network kit that ends as its test wants. */
class OwnRequest : public NetworkRequest
{
    Q_OBJECT

public:
    explicit OwnRequest(NetworkController *controller)
        : NetworkRequest(controller, QString(), -1)
    {
    }

    using NetworkRequest::fail;
    using NetworkRequest::succeed;

protected:
    void start() override { }
};

class OwnController : public NetworkController
{
    Q_OBJECT

public:
    explicit OwnController(NetworkServices *services)
        : NetworkController(Wifi, nullptr)
    {
        setServices(services);
    }

    OwnRequest *ask() { return take(new OwnRequest(this)); }

protected:
    void onServiceReplaced() override { }
    void onAvailabilityChanged() override { }
};

} // namespace

/*! What a unit waits for while the event loop runs, and what it says when it has waited in vain. */
class UnitWaitsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void forARequest();
    void forARequestThatIsThere();
    void forARequestWithMore();
    void forARequestAfterAnother();
    void forARequestInVain();
    void forARequestThatCannotBe();
    void forARequestOfADeadUnit();

    void forACondition();
    void forAConditionInVain();
    void deletesWhatIsDeletedLater();

    void forAService();
    void forAServiceInVain();
    void forAServiceThatIsDeleted();
    void forAController();
    void forWhatIsNeverReady();

    void forTheEndOfEachOperation();
    void forAFailure();
    void forAnEndInVain();
    void forAnEndThatIsPast();
    void forTheFirstEnd();
    void forTheEndsOfTwo();
    void forAnOperationThatIsDeleted();
    void forAnOperationInThePlaceOfAnother();
    void forTheEndOfARequestOfTheKit();
    void forWhatNeverEnds();

private:
    WifiServicePointer readyWifi();

    std::unique_ptr<TestUnit> m_unit;
};

void UnitWaitsTest::init()
{
    m_unit = std::make_unique<TestUnit>();
    QVERIFY(m_unit->start());
}

void UnitWaitsTest::cleanup()
{
    m_unit.reset();
}

WifiServicePointer UnitWaitsTest::readyWifi()
{
    WifiServicePointer wifi(newWifiService());
    m_unit->waitForReady(wifi.get());
    return wifi;
}

void UnitWaitsTest::forARequest()
{
    const WifiServicePointer wifi = readyWifi();
    std::unique_ptr<AsyncWifiScanOperation> scan;
    QTimer::singleShot(50, wifi.get(), [&] { scan.reset(wifi->scan()); });
    const TestRequest request = m_unit->waitForRequest(Scan);
    QVERIFY(request.isValid());
    QCOMPARE(request.message, Scan);
    QCOMPARE(request.daemon, QStringLiteral("wifi"));
}

void UnitWaitsTest::forARequestThatIsThere()
{
    const WifiServicePointer wifi = readyWifi();
    const std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    QCOMPARE(m_unit->endOf(scan.get()), Done);
    m_unit->setTimeout(0);
    QCOMPARE(m_unit->waitForRequest(Scan).number, 1);
}

void UnitWaitsTest::forARequestWithMore()
{
    const WifiServicePointer wifi = readyWifi();
    QVERIFY(m_unit->act(QStringLiteral("refuse"),
                        {{QStringLiteral("message"), QStringLiteral("wnet_new")}, {QStringLiteral("err"), 5}}));
    WifiConnectionConfig config;
    for (const char *ssid : {"Café am Markt", "Other"}) {
        config.setSsid(QString::fromUtf8(ssid));
        const std::unique_ptr<AsyncWifiConnectOperation> joining(wifi->connectAccessPoint(config));
        QVERIFY(m_unit->endOf(joining.get()) != Open);
    }
    const QString message = QStringLiteral("wnet_new");
    const auto of = [](const char *key, const char *value) {
        return QVariantMap {{QLatin1String(key), QString::fromUtf8(value)}};
    };
    QCOMPARE(m_unit->waitForRequest(message).ssid, QStringLiteral("Café am Markt"));
    QCOMPARE(m_unit->waitForRequest(message, of("ssid", "Other")).ssid, QStringLiteral("Other"));
    m_unit->setTimeout(50);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("waited 50 ms")));
    QVERIFY(!m_unit->waitForRequest(message, of("ssid", "Third")).isValid());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("waited 50 ms")));
    QVERIFY(!m_unit->waitForRequest(Scan, of("ssid", "Other")).isValid());
    // All of it counts.
    QVERIFY(m_unit
                ->waitForRequest(message,
                                 {{QStringLiteral("ssid"), QStringLiteral("Other")},
                                  {QStringLiteral("daemon"), QStringLiteral("wifi")}})
                .isValid());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("waited 50 ms")));
    QVERIFY(!m_unit
                 ->waitForRequest(message,
                                  {{QStringLiteral("ssid"), QStringLiteral("Other")},
                                   {QStringLiteral("daemon"), QStringLiteral("tethering")}})
                 .isValid());
}

void UnitWaitsTest::forARequestAfterAnother()
{
    const WifiServicePointer wifi = readyWifi();
    std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    const TestRequest first = m_unit->waitForRequest(Scan);
    QCOMPARE(first.number, 1);
    QTimer::singleShot(50, wifi.get(), [&] { scan.reset(wifi->scan()); });
    QCOMPARE(m_unit->waitForRequest(Scan, {}, first.number).number, 2);
}

void UnitWaitsTest::forARequestInVain()
{
    m_unit->setTimeout(50);
    VERIFY_FAILS(*m_unit, m_unit->waitForRequest(Scan, {{QStringLiteral("daemon"), QStringLiteral("wifi")}}).isValid(),
                 "waited 50 ms for a request with {\"daemon\":\"wifi\",\"message\":\"scan\"}; there were: none");
    const WifiServicePointer wifi = readyWifi();
    wifi->powerOff();
    QVERIFY(m_unit->waitForRequest(QStringLiteral("wifi_power")).isValid());
    VERIFY_FAILS(*m_unit, m_unit->waitForRequest(Scan).isValid(),
                 (QStringLiteral("waited 50 ms for a request with {\"message\":\"scan\"}; there were: ")
                  + m_unit->requests().at(0).text)
                     .toUtf8());
    VERIFY_FAILS(*m_unit, m_unit->waitForRequest(Scan, {}, 1).isValid(),
                 "waited 50 ms for a request with {\"message\":\"scan\"}; there were: none");
}

void UnitWaitsTest::forARequestThatCannotBe()
{
    VERIFY_FAILS(*m_unit, m_unit->waitForRequest(Scan, {{QStringLiteral("colour"), 1}}).isValid(),
                 "a request has no \"colour\"");
}

void UnitWaitsTest::forARequestOfADeadUnit()
{
    const auto process = pid_t(m_unit->processId());
    QTimer::singleShot(50, m_unit.get(), [process] { ::kill(process, SIGKILL); });
    VERIFY_FAILS(*m_unit, m_unit->waitForRequest(Scan).isValid(),
                 (QStringLiteral("{\"look\":\"requests\",\"since\":0}: morvek-hostd was killed by signal 9: ")
                  + m_unit->output().trimmed())
                     .toUtf8());
    m_unit->kill();
}

void UnitWaitsTest::forACondition()
{
    bool isTrue = false;
    QTimer::singleShot(50, this, [&] { isTrue = true; });
    QVERIFY(m_unit->waitUntil([&] { return isTrue; }));
    m_unit->setTimeout(0);
    QVERIFY(m_unit->waitUntil([] { return true; }));
}

void UnitWaitsTest::forAConditionInVain()
{
    m_unit->setTimeout(120);
    QElapsedTimer time;
    time.start();
    VERIFY_FAILS(*m_unit, m_unit->waitUntil([] { return false; }), "waited 120 ms for a condition");
    QVERIFY2(time.elapsed() >= 120, qPrintable(QString::number(time.elapsed())));
    m_unit->setTimeout(1);
    VERIFY_FAILS(*m_unit, m_unit->waitUntil([] { return false; }, QStringLiteral("better times")),
                 "waited 1 ms for better times");
}

void UnitWaitsTest::deletesWhatIsDeletedLater()
{
    QPointer<QObject> object = new QObject;
    object->deleteLater();
    QVERIFY(m_unit->waitUntil([&] { return !object; }));
}

void UnitWaitsTest::forAService()
{
    const WifiServicePointer wifi(newWifiService());
    QVERIFY(!wifi->ready());
    QVERIFY(m_unit->waitForReady(wifi.get()));
    QVERIFY(wifi->ready());
    m_unit->setTimeout(0);
    QVERIFY(m_unit->waitForReady(wifi.get()));
}

void UnitWaitsTest::forAServiceInVain()
{
    m_unit->setWithout({QStringLiteral("tethering")});
    QVERIFY(m_unit->stop());
    QVERIFY(m_unit->start());
    const HotSpotServicePointer hotspot(newHotSpotService());
    m_unit->setTimeout(50);
    VERIFY_FAILS(*m_unit, m_unit->waitForReady(hotspot.get()), "waited 50 ms for morvek::HotSpotService to be ready");
}

void UnitWaitsTest::forAServiceThatIsDeleted()
{
    QVERIFY(m_unit->stop());
    WifiServicePointer wifi(newWifiService());
    QTimer::singleShot(10, wifi.get(), [&] { wifi.reset(); });
    m_unit->setTimeout(200);
    VERIFY_FAILS(*m_unit, m_unit->waitForReady(wifi.get()), "waited 200 ms for morvek::WifiService to be ready");
    QVERIFY(!wifi);
}

void UnitWaitsTest::forAController()
{
    NetworkServices services;
    OwnController controller(&services);
    QVERIFY(m_unit->waitForReady(&controller));
    QCOMPARE(controller.availability(), NetworkController::Ready);
    QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QVERIFY(m_unit->waitUntil([&] { return controller.availability() == NetworkController::Gone; }));
    m_unit->setTimeout(50);
    VERIFY_FAILS(*m_unit, m_unit->waitForReady(&controller), "waited 50 ms for OwnController to be ready");
}

void UnitWaitsTest::forWhatIsNeverReady()
{
    VERIFY_FAILS(*m_unit, m_unit->waitForReady(nullptr), "null is neither a service nor a controller");
    VERIFY_FAILS(*m_unit, m_unit->waitForReady(this), "UnitWaitsTest is neither a service nor a controller");
}

void UnitWaitsTest::forTheEndOfEachOperation()
{
    const NetworkInterfaceServicePointer interfaces(newNetworkInterfaceService());
    const HotSpotServicePointer hotspot(newHotSpotService());
    const WifiServicePointer wifi = readyWifi();
    QVERIFY(m_unit->waitForReady(hotspot.get()));
    QVERIFY(m_unit->waitForReady(interfaces.get()));
    const auto ends = [this](QObject *operation) {
        const std::unique_ptr<QObject> owned(operation);
        return m_unit->endOf(operation);
    };
    QNetworkAddressEntry address;
    address.setIp(QHostAddress(QStringLiteral("192.168.43.50")));
    address.setNetmask(QHostAddress(QStringLiteral("255.255.255.0")));
    NetworkInterfaceConfig byHand;
    byHand.setType(NetworkInterfaceConfig::Manual);
    byHand.setIpAddresses({address});
    byHand.addGatewayAddress(QHostAddress(QStringLiteral("192.168.43.1")));
    QCOMPARE(ends(interfaces->configure(interfaces->preferredInterface(), byHand)), Done);
    QCOMPARE(ends(wifi->scan()), Done);
    WifiConnectionConfig config;
    config.setSsid(QStringLiteral("Café am Markt"));
    QCOMPARE(ends(wifi->connectAccessPoint(config)), Done);
    QCOMPARE(ends(hotspot->configuration()), Done);
    QCOMPARE(ends(hotspot->setEnabled(true)), Done);
}

void UnitWaitsTest::forAFailure()
{
    const WifiServicePointer wifi(newWifiService());
    const std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    QCOMPARE(m_unit->endOf(scan.get()), QStringLiteral("-1 Service is not ready"));
    QCOMPARE(m_unit->errorString(), QString()); // it has ended
}

void UnitWaitsTest::forAnEndInVain()
{
    const WifiServicePointer wifi = readyWifi();
    QVERIFY(m_unit->act(QStringLiteral("no-reply"), OfScan));
    const std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    m_unit->setTimeout(50);
    QString end;
    VERIFY_FAILS(*m_unit, (end = m_unit->endOf(scan.get())) != Open,
                 "waited 50 ms for the end of morvek::AsyncWifiScanOperation");
    // It may still come.
    m_unit->setTimeout(10000);
    QVERIFY(m_unit->act(QStringLiteral("faults-end")));
    const std::unique_ptr<AsyncWifiScanOperation> second(wifi->scan());
    QCOMPARE(m_unit->endOf(second.get()), Done);
    QCOMPARE(m_unit->endOf(scan.get()), Done);
}

void UnitWaitsTest::forAnEndThatIsPast()
{
    const WifiServicePointer wifi = readyWifi();
    const std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    m_unit->watch(scan.get());
    QVERIFY(QSignalSpy(scan.get(), &AsyncWifiScanOperation::success).wait());
    m_unit->setTimeout(0);
    QCOMPARE(m_unit->endOf(scan.get()), Done);
    QCOMPARE(m_unit->endOf(scan.get()), Done);
}

void UnitWaitsTest::forTheFirstEnd()
{
    AsyncWifiScanOperation operation;
    m_unit->watch(&operation);
    operation.notifySuccess();
    operation.notifyFailure();
    QCOMPARE(m_unit->endOf(&operation), Done);
}

void UnitWaitsTest::forTheEndsOfTwo()
{
    const WifiServicePointer wifi = readyWifi();
    const HotSpotServicePointer hotspot(newHotSpotService());
    QVERIFY(m_unit->waitForReady(hotspot.get()));
    QVERIFY(m_unit->act(QStringLiteral("refuse"),
                        {{QStringLiteral("message"), QStringLiteral("retrieve_profile")},
                         {QStringLiteral("err"), 5},
                         {QStringLiteral("errmsg"), QStringLiteral("no")}}));
    const std::unique_ptr<AsyncWifiScanOperation> scan(wifi->scan());
    const std::unique_ptr<AsyncHotspotConfigOperation> reading(hotspot->configuration());
    m_unit->watch(scan.get());
    m_unit->watch(reading.get());
    QSignalSpy found(scan.get(), &AsyncWifiScanOperation::success);
    QSignalSpy unread(reading.get(), &AsyncHotspotConfigOperation::failure);
    QVERIFY(m_unit->waitUntil([&] { return found.count() == 1 && unread.count() == 1; }));
    m_unit->setTimeout(0);
    QCOMPARE(m_unit->endOf(reading.get()), QStringLiteral("-1 Failed to retrieve WifiHotspot config."));
    QCOMPARE(m_unit->endOf(scan.get()), Done);
}

void UnitWaitsTest::forAnOperationThatIsDeleted()
{
    const WifiServicePointer wifi = readyWifi();
    QVERIFY(m_unit->act(QStringLiteral("no-reply"), OfScan));
    AsyncWifiScanOperation *scan = wifi->scan();
    QTimer::singleShot(50, scan, &QObject::deleteLater);
    QCOMPARE(m_unit->endOf(scan), QStringLiteral("deleted"));
    // One that deletes itself when it has ended has ended.
    QVERIFY(m_unit->act(QStringLiteral("faults-end")));
    scan = wifi->scan();
    connect(scan, &AsyncWifiScanOperation::success, scan, &QObject::deleteLater);
    QCOMPARE(m_unit->endOf(scan), Done);
}

void UnitWaitsTest::forAnOperationInThePlaceOfAnother()
{
    const WifiServicePointer wifi = readyWifi();
    const auto place = std::make_unique<std::aligned_storage_t<sizeof(OwnRequest), alignof(OwnRequest)>>();
    NetworkServices services;
    OwnController controller(&services);
    auto *first = new (place.get()) OwnRequest(&controller);
    first->succeed();
    QCOMPARE(m_unit->endOf(first), Done);
    first->~OwnRequest();
    auto *second = new (place.get()) OwnRequest(&controller);
    second->fail(NetworkRequest::Busy, QStringLiteral("Another one runs."));
    QCOMPARE(m_unit->endOf(second), QStringLiteral("Busy"));
    second->~OwnRequest();
}

void UnitWaitsTest::forTheEndOfARequestOfTheKit()
{
    NetworkServices services;
    OwnController controller(&services);
    QVERIFY(m_unit->waitForReady(&controller));
    OwnRequest *request = controller.ask();
    QTimer::singleShot(50, request, [request] { request->succeed(); });
    QCOMPARE(m_unit->endOf(request), Done);
    QVERIFY(request->isDone());
    request = controller.ask();
    request->fail(NetworkRequest::WrongPasskey, QStringLiteral("It is wrong."));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("WrongPasskey"));
    m_unit->setTimeout(50);
    request = controller.ask();
    QString end;
    VERIFY_FAILS(*m_unit, (end = m_unit->endOf(request)) != Open, "waited 50 ms for the end of OwnRequest");
    // What has ended unseen tells how.
    request->cancel();
    QSignalSpy finished(request, &NetworkRequest::finished);
    QVERIFY(finished.wait());
    m_unit->setTimeout(0);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Cancelled"));
}

void UnitWaitsTest::forWhatNeverEnds()
{
    QString end;
    VERIFY_FAILS(*m_unit, (end = m_unit->endOf(nullptr)) != Open, "there is no operation");
    VERIFY_FAILS(*m_unit, (end = m_unit->endOf(this)) != Open, "UnitWaitsTest is no operation");
    QProcess process; // which finishes, too
    VERIFY_FAILS(*m_unit, (end = m_unit->endOf(&process)) != Open, "QProcess is no operation");
    QTest::ignoreMessage(QtWarningMsg, "TestUnit: UnitWaitsTest is no operation");
    m_unit->watch(this);
}

QTEST_GUILESS_MAIN(UnitWaitsTest)
#include "tst_unitwaits.moc"
