// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "eventloop.h"
#include "logcapture.h"
#include "metaobject.h"
#include "protectedby.h"
#include "servicedoubles.h"
#include "wificonnectionconfig.h"
#include "wifiproviderzop_p.h"
#include "zopdouble.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>
#include <type_traits>

using namespace morvek;

namespace {

using ServicePrivate = PrivateHalfOf<WifiService>;

static_assert(!std::is_base_of<QObject, ServicePrivate>::value, "");
static_assert(std::is_base_of<ServiceProviderBase, WifiProvider>::value, "");
static_assert(std::is_abstract<WifiProvider>::value, "");
static_assert(std::has_virtual_destructor<WifiProvider>::value, "");

WifiAccessPoint accessPoint()
{
    WifiAccessPoint accessPoint;
    accessPoint.setBssid(QStringLiteral("02:00:00:00:01:0a"));
    accessPoint.setRssi(-57);
    return accessPoint;
}

WifiConnectionConfig config()
{
    return protectedBy("correct horse", "Home");
}

/*! A provider that is on and connected, records what is asked of it and completes nothing by itself. */
class FakeProvider : public WifiProvider
{
public:
    ~FakeProvider() override { ++deleted; }

    void powerOn() override { record("powerOn"); }
    void powerOff() override { record("powerOff"); }
    bool powered() const override { return record("powered"); }
    void scan(AsyncWifiScanOperation *operation) override
    {
        record("scan");
        operations.append(operation);
    }
    void connectAccessPoint(AsyncWifiConnectOperation *operation, const WifiConnectionConfig &wanted) override
    {
        record("connectAccessPoint");
        operations.append(operation);
        configs.append(wanted);
    }
    void disconnectAccessPoint() override { record("disconnectAccessPoint"); }
    WifiAccessPoint connectedAccessPoint() const override
    {
        record("connectedAccessPoint");
        return accessPoint();
    }
    bool connected() const override { return record("connected"); }

    static int deleted;
    mutable QStringList calls;
    QList<AsyncOperationBase *> operations;
    QList<WifiConnectionConfig> configs;

private:
    bool record(const char *call) const
    {
        calls.append(QLatin1String(call));
        return true;
    }
};

int FakeProvider::deleted = 0;

/*! Asks \a service for one thing and says what came back. */
using Call = std::function<QString(WifiService &service)>;

} // namespace

Q_DECLARE_METATYPE(Call)

class TestWifiService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void declaresItsMethodsInOrder();
    void declaresItsVirtualsInOrder();
    void isAvailable();
    void isAsReadyAsItsProvider();

    void asksItsProvider_data() { calls(); }
    void asksItsProvider();
    void asksNothingWhileNotReady_data() { calls(); }
    void asksNothingWhileNotReady();
    void asksNothingWithoutProvider_data() { calls(); }
    void asksNothingWithoutProvider();
    void asksTheProviderWhetherItIsReady_data() { calls(); }
    void asksTheProviderWhetherItIsReady();

    void passesOperationsOn();
    void refusesFromTheEventLoop();
    void passesSignalsOn();
    void deletesItsProvider();
    void leavesOperationsAlone();
    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();

private:
    void calls();
};

void TestWifiService::declaresItsMethodsInOrder()
{
    const QMetaObject &provider = WifiProvider::staticMetaObject;
    QCOMPARE(ownMethods(provider),
             (QStringList {
                 QStringLiteral("signal poweredChanged(bool)"),
                 QStringLiteral("signal connectedChanged(bool)"),
             }));
    QCOMPARE(provider.method(provider.methodOffset()).parameterNames(), QList<QByteArray> {"powered"});
    QCOMPARE(provider.method(provider.methodOffset() + 1).parameterNames(), QList<QByteArray> {"connected"});
    QCOMPARE(provider.propertyCount(), provider.propertyOffset());
    QCOMPARE(QByteArray(provider.superClass()->className()), QByteArray("morvek::ServiceProviderBase"));
    QCOMPARE(ownMethods(WifiProviderZop::staticMetaObject),
             (QStringList {
                 QStringLiteral("slot zopDirWatcherObjectAdded(QString)"),
                 QStringLiteral("slot zopStatusChanged(QString,morvek::ZopVariant)"),
                 QStringLiteral("slot zopStatusAttributeRemoved(QString)"),
                 QStringLiteral("slot zopControlChanged(QString,morvek::ZopVariant)"),
                 QStringLiteral("slot zopControlCommandComplete(morvek::ZopControlCommand*)"),
                 QStringLiteral("slot onAddAccessPointComplete(morvek::ZopControlCommand*)"),
                 QStringLiteral("slot onEnableAccessPointComplete(morvek::ZopControlCommand*)"),
                 QStringLiteral("slot disconnectAccessPointCompelete(morvek::ZopControlCommand*)"),
             }));
    QCOMPARE(QByteArray(WifiProviderZop::staticMetaObject.className()), QByteArray("morvek::WifiProviderZop"));
    QCOMPARE(QByteArray(WifiProviderZop::staticMetaObject.superClass()->className()),
             QByteArray("morvek::WifiProvider"));
}

void TestWifiService::declaresItsVirtualsInOrder()
{
    struct LastOfQObject : QObject
    {
        static quintptr position() { return virtualPosition(&LastOfQObject::disconnectNotify); }
    };
    QCOMPARE(virtualPosition(&WifiProvider::powerOn), LastOfQObject::position() + 1);
    QCOMPARE(virtualPosition(&WifiProvider::powerOff), LastOfQObject::position() + 2);
    QCOMPARE(virtualPosition(&WifiProvider::powered), LastOfQObject::position() + 3);
    QCOMPARE(virtualPosition(&WifiProvider::scan), LastOfQObject::position() + 4);
    QCOMPARE(virtualPosition(&WifiProvider::connectAccessPoint), LastOfQObject::position() + 5);
    QCOMPARE(virtualPosition(&WifiProvider::disconnectAccessPoint), LastOfQObject::position() + 6);
    QCOMPARE(virtualPosition(&WifiProvider::connectedAccessPoint), LastOfQObject::position() + 7);
    QCOMPARE(virtualPosition(&WifiProvider::connected), LastOfQObject::position() + 8);
}

void TestWifiService::isAvailable()
{
    WifiService service;
    QVERIFY(service.available());
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    QVERIFY(service.available());
    provider->setReady(true);
    QVERIFY(service.available());
    privateHalf(service) = std::make_unique<ServicePrivate>(&service, nullptr);
    QVERIFY(service.available());
}

void TestWifiService::isAsReadyAsItsProvider()
{
    WifiService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    QSignalSpy readyChanged(&service, &ServiceBase::readyChanged);
    LogCapture log(7);
    QVERIFY(!service.ready());
    provider->setReady(true);
    QVERIFY(service.ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {true});
    provider->setReady(false);
    QVERIFY(!service.ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {false});
    QVERIFY(readyChanged.isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestWifiService::calls()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("ready");
    QTest::addColumn<QString>("notReady");
    const auto row = [](const char *name, const Call &call, const char *ready, const char *notReady) {
        QTest::newRow(name) << call << QString::fromLatin1(ready) << QString::fromLatin1(notReady);
    };
    const auto boolText = [](bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); };
    const auto nothing = [](void (WifiService::*call)()) {
        return [call](WifiService &service) {
            (service.*call)();
            return QString();
        };
    };
    row("powerOn", nothing(&WifiService::powerOn), "", "");
    row("powerOff", nothing(&WifiService::powerOff), "", "");
    row(
        "powered", [boolText](WifiService &service) { return boolText(service.powered()); }, "true", "false");
    row(
        "scan", [](WifiService &service) { return endOf(service.scan()); }, "pending", "-1 Service is not ready");
    row(
        "connectAccessPoint", [](WifiService &service) { return endOf(service.connectAccessPoint(config())); },
        "pending", "-1 Service is not ready");
    row("disconnectAccessPoint", nothing(&WifiService::disconnectAccessPoint), "", "");
    row(
        "connectedAccessPoint",
        [](WifiService &service) {
            const WifiAccessPoint now = service.connectedAccessPoint();
            return now == accessPoint()    ? QStringLiteral("the provider's")
                : now == WifiAccessPoint() ? QStringLiteral("default")
                                           : QStringLiteral("another");
        },
        "the provider's", "default");
    row(
        "connected", [boolText](WifiService &service) { return boolText(service.connected()); }, "true", "false");
}

void TestWifiService::asksItsProvider()
{
    QFETCH(Call, call);
    QFETCH(QString, ready);
    WifiService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    LogCapture log(7);
    QCOMPARE(call(service), ready);
    QCOMPARE(provider->calls, QStringList(QLatin1String(QTest::currentDataTag())));
    QVERIFY(log.take().isEmpty());
}

void TestWifiService::asksNothingWhileNotReady()
{
    QFETCH(Call, call);
    QFETCH(QString, notReady);
    WifiService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    LogCapture log(2);
    QCOMPARE(call(service), notReady);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    QCOMPARE(call(service), notReady);
    QCOMPARE(log.take(),
             QStringList(QStringLiteral("warning 1300 %1 called, but provider does not exist or is not ready")
                             .arg(QLatin1String(QTest::currentDataTag()))));
    QVERIFY(provider->calls.isEmpty());
}

void TestWifiService::asksNothingWithoutProvider()
{
    QFETCH(Call, call);
    QFETCH(QString, notReady);
    AlwaysReadyService<WifiService> service;
    privateHalf(service) = std::make_unique<ServicePrivate>(&service, nullptr);
    LogCapture log(3);
    QCOMPARE(call(service), notReady);
    QCOMPARE(log.take(),
             QStringList(QStringLiteral("warning 1300 %1 called, but provider does not exist or is not ready")
                             .arg(QLatin1String(QTest::currentDataTag()))));
}

// The service's own word does not count.
void TestWifiService::asksTheProviderWhetherItIsReady()
{
    QFETCH(Call, call);
    QFETCH(QString, ready);
    QFETCH(QString, notReady);
    UnreadyService<WifiService> unready;
    replaceProvider<FakeProvider>(unready)->setReady(true);
    QCOMPARE(call(unready), ready);
    AlwaysReadyService<WifiService> alwaysReady;
    const FakeProvider *provider = replaceProvider<FakeProvider>(alwaysReady);
    QCOMPARE(call(alwaysReady), notReady);
    QVERIFY(provider->calls.isEmpty());
}

void TestWifiService::passesOperationsOn()
{
    WifiService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    const std::unique_ptr<AsyncWifiScanOperation> scan(service.scan());
    const std::unique_ptr<AsyncWifiConnectOperation> connection(service.connectAccessPoint(config()));
    const std::unique_ptr<AsyncWifiScanOperation> second(service.scan());
    QCOMPARE(provider->operations, (QList<AsyncOperationBase *> {scan.get(), connection.get(), second.get()}));
    QCOMPARE(provider->configs.size(), 1);
    QVERIFY(provider->configs.first() == config());
    for (const AsyncOperationBase *operation : qAsConst(provider->operations))
        QVERIFY(!operation->parent());
}

void TestWifiService::refusesFromTheEventLoop()
{
    WifiService service;
    replaceProvider<FakeProvider>(service);
    const std::unique_ptr<AsyncWifiScanOperation> scan(service.scan());
    const std::unique_ptr<AsyncWifiConnectOperation> connection(service.connectAccessPoint(config()));
    QVERIFY(!scan->parent());
    QVERIFY(!connection->parent());
    QStringList heard;
    connect(scan.get(), &AsyncWifiScanOperation::failure, [&heard] { heard.append(QStringLiteral("scan failed")); });
    connect(scan.get(), &AsyncWifiScanOperation::success, [&heard] { heard.append(QStringLiteral("scanned")); });
    connect(connection.get(), &AsyncWifiConnectOperation::failure,
            [&heard] { heard.append(QStringLiteral("connection failed")); });
    connect(connection.get(), &AsyncWifiConnectOperation::success,
            [&heard] { heard.append(QStringLiteral("connected")); });
    runQueued();
    runQueued();
    QCOMPARE(heard, (QStringList {QStringLiteral("scan failed"), QStringLiteral("connection failed")}));
    QVERIFY(scan->results().isEmpty());
    QVERIFY(connection->results().isEmpty());
}

void TestWifiService::passesSignalsOn()
{
    WifiService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    QStringList heard;
    connect(&service, &ServiceBase::readyChanged, [&](bool ready) { heard.append(ready ? "ready" : "not ready"); });
    connect(&service, &WifiService::poweredChanged, [&](bool powered) { heard.append(powered ? "on" : "off"); });
    connect(&service, &WifiService::connectedChanged,
            [&](bool connected) { heard.append(connected ? "connected" : "disconnected"); });
    // Whether or not the provider is ready, and without comparing.
    emit provider->poweredChanged(true);
    emit provider->poweredChanged(true);
    emit provider->connectedChanged(true);
    emit provider->poweredChanged(false);
    emit provider->readyChanged(true);
    emit provider->connectedChanged(false);
    emit provider->readyChanged(false);
    const QStringList expected {"on", "on", "connected", "off", "ready", "disconnected", "not ready"};
    QCOMPARE(heard, expected);
    runQueued();
    QCOMPARE(heard, expected);
    QVERIFY(provider->calls.isEmpty());
}

void TestWifiService::deletesItsProvider()
{
    auto *service = new WifiService;
    QVERIFY(!service->parent());
    const QPointer<WifiProvider> ownProvider(privateHalf(*service)->provider.get());
    QCOMPARE(privateHalf(*service)->q, service);
    QVERIFY(!ownProvider->parent());
    QCOMPARE(QByteArray(ownProvider->metaObject()->className()), QByteArray("morvek::WifiProviderZop"));
    const int before = FakeProvider::deleted;
    const FakeProvider *provider = replaceProvider<FakeProvider>(*service);
    QVERIFY(!ownProvider);
    QCOMPARE(FakeProvider::deleted, before);
    QByteArray serviceThen;
    connect(provider, &QObject::destroyed, [&] { serviceThen = service->metaObject()->className(); });
    delete service;
    QCOMPARE(FakeProvider::deleted, before + 1);
    QCOMPARE(serviceThen, QByteArray("morvek::WifiService"));
}

void TestWifiService::leavesOperationsAlone()
{
    auto service = std::make_unique<WifiService>();
    FakeProvider *provider = replaceProvider<FakeProvider>(*service);
    const std::unique_ptr<AsyncWifiScanOperation> refused(service->scan());
    provider->setReady(true);
    const std::unique_ptr<AsyncWifiScanOperation> pending(service->scan());
    QSignalSpy failure(refused.get(), &AsyncWifiScanOperation::failure);
    service.reset();
    QVERIFY(failure.wait());
    QVERIFY(!pending->hasError());
    QVERIFY(pending->results().isEmpty());
}

void TestWifiService::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("readyChanged") << 0;
    QTest::newRow("poweredChanged") << 1;
    QTest::newRow("connectedChanged") << 2;
}

void TestWifiService::mayBeDeletedInAnySlot()
{
    QFETCH(int, which);
    auto service = std::make_unique<WifiService>();
    FakeProvider *provider = replaceProvider<FakeProvider>(*service);
    int heardLater = 0;
    const auto hear = [&](auto signal) {
        connect(service.get(), signal, [&service] { service.reset(); });
        connect(service.get(), signal, [&heardLater] { ++heardLater; });
    };
    hear(&ServiceBase::readyChanged);
    hear(&WifiService::poweredChanged);
    hear(&WifiService::connectedChanged);
    if (which == 0)
        provider->setReady(true);
    else if (which == 1)
        emit provider->poweredChanged(true);
    else
        emit provider->connectedChanged(true);
    QVERIFY(!service);
    runQueued();
    QCOMPARE(heardLater, 0);
}

QTEST_GUILESS_MAIN(TestWifiService)
#include "tst_wifiservice.moc"
