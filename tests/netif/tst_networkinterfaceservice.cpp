// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"
#include "eventloop.h"
#include "logcapture.h"
#include "metaobject.h"
#include "networkingdaemon.h"
#include "networkinterfaceprovider_p.h"
#include "servicedoubles.h"

#include <QtTest/QtTest>

#include <memory>

using namespace morvek;

namespace {

using ServicePrivate = PrivateHalfOf<NetworkInterfaceService>;

NetworkInterfaceData named(const char *name)
{
    NetworkInterfaceData data;
    data.name = QLatin1String(name);
    return data;
}

/*! A provider that knows what it is told and completes nothing by itself. */
class FakeProvider : public NetworkInterfaceProvider
{
public:
    ~FakeProvider() override { ++deleted; }

    QList<NetworkInterfaceData> interfaces() const override { return known; }
    NetworkInterfaceData preferredInterface() const override { return preferred; }
    void configure(AsyncNetworkInterfaceOperation *operation, const NetworkInterface &networkInterface,
                   const NetworkInterfaceConfig &config) override
    {
        operations.append(operation);
        configured.append(networkInterface);
        configs.append(config);
    }

    static int deleted;
    QList<NetworkInterfaceData> known;
    NetworkInterfaceData preferred;
    QList<AsyncNetworkInterfaceOperation *> operations;
    QList<NetworkInterface> configured;
    QList<NetworkInterfaceConfig> configs;
};

int FakeProvider::deleted = 0;

} // namespace

/*! Hears of the service by name, as an application may. */
class Listener : public QObject
{
    Q_OBJECT

public:
    QList<morvek::NetworkInterface> heard;

public Q_SLOTS:
    void onInterface(const morvek::NetworkInterface &networkInterface) { heard.append(networkInterface); }
};

class TestNetworkInterfaceService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void declaresItsMethodsInOrder();
    void declaresItsVirtualsInOrder();
    void isAvailable();
    void isAsReadyAsItsProvider();
    void withoutProvider();
    void answersEmptyWhileNotReady();
    void asksItsVirtualReady();
    void translatesInterfaces();
    void translatesThePreferredInterface();
    void passesParentsOn();
    void passesConfigureOn();
    void refusesConfigureWhileNotReady();
    void completesWithSuccess();
    void completesWithFailure();
    void notices_data();
    void notices();
    void ignoresAddedAndRemoved();
    void noticesReachQueuedConnectionsByName_data() { notices_data(); }
    void noticesReachQueuedConnectionsByName();
    void deletesItsProvider();
    void leavesOperationsAlone();
    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();
};

void TestNetworkInterfaceService::declaresItsMethodsInOrder()
{
    QCOMPARE(ownMethods(NetworkInterfaceProvider::staticMetaObject),
             (QStringList {
                 QStringLiteral("signal asyncConfigureSuccess(morvek::AsyncNetworkInterfaceOperation*,"
                                "morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal asyncConfigureFailure(morvek::AsyncNetworkInterfaceOperation*,int,QString)"),
                 QStringLiteral("signal interfaceConfigurationChanged(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal preferredInterfaceChanged(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceConnected(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceDisconnected(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceAdded(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceRemoved(morvek::NetworkInterfaceData)"),
             }));
    QCOMPARE(QByteArray(NetworkInterfaceProvider::staticMetaObject.superClass()->className()),
             QByteArray("morvek::ServiceProviderBase"));
    QCOMPARE(
        ownMethods(ServicePrivate::staticMetaObject),
        (QStringList {
            QStringLiteral("slot onProviderAsyncConfigureSuccess(morvek::AsyncNetworkInterfaceOperation*,"
                           "morvek::NetworkInterfaceData)"),
            QStringLiteral("slot onProviderAsyncConfigureFailure(morvek::AsyncNetworkInterfaceOperation*,int,QString)"),
            QStringLiteral("slot onProviderInterfaceConfigurationChanged(morvek::NetworkInterfaceData)"),
            QStringLiteral("slot onProviderPreferredInterfaceChanged(morvek::NetworkInterfaceData)"),
            QStringLiteral("slot onProviderInterfaceConnected(morvek::NetworkInterfaceData)"),
            QStringLiteral("slot onProviderInterfaceDisconnected(morvek::NetworkInterfaceData)"),
        }));
    QCOMPARE(QByteArray(ServicePrivate::staticMetaObject.className()),
             QByteArray("morvek::NetworkInterfaceService::Private"));
}

void TestNetworkInterfaceService::declaresItsVirtualsInOrder()
{
    struct LastOfQObject : QObject
    {
        static quintptr position() { return virtualPosition(&LastOfQObject::disconnectNotify); }
    };
    QCOMPARE(virtualPosition(&NetworkInterfaceProvider::interfaces), LastOfQObject::position() + 1);
    QCOMPARE(virtualPosition(&NetworkInterfaceProvider::preferredInterface), LastOfQObject::position() + 2);
    QCOMPARE(virtualPosition(&NetworkInterfaceProvider::configure), LastOfQObject::position() + 3);
}

void TestNetworkInterfaceService::isAvailable()
{
    NetworkInterfaceService service;
    QVERIFY(service.available());
    replaceProvider<FakeProvider>(service)->setReady(true);
    QVERIFY(service.available());
}

void TestNetworkInterfaceService::isAsReadyAsItsProvider()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    QSignalSpy readyChanged(&service, &ServiceBase::readyChanged);
    QVERIFY(!service.ready());
    provider->setReady(true);
    QVERIFY(service.ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {true});
    provider->setReady(false);
    QVERIFY(!service.ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {false});
    QVERIFY(readyChanged.isEmpty());
}

void TestNetworkInterfaceService::withoutProvider()
{
    NetworkInterfaceService unready;
    AlwaysReadyService<NetworkInterfaceService> ready;
    for (NetworkInterfaceService *service : {&unready, static_cast<NetworkInterfaceService *>(&ready)}) {
        privateHalf(*service)->provider.reset();
        QVERIFY(service->available());
        QVERIFY(service->interfaces().isEmpty());
        QVERIFY(service->preferredInterface().isEmpty());
        const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service->configure({}, {}));
        QSignalSpy failure(operation.get(), &AsyncNetworkInterfaceOperation::failure);
        QVERIFY(failure.wait());
        QCOMPARE(operation->error().code(), -1);
    }
    QVERIFY(!unready.ready());
}

void TestNetworkInterfaceService::answersEmptyWhileNotReady()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->known = {named("en0")};
    provider->preferred = named("en0");
    LogCapture log(7);
    QVERIFY(service.interfaces().isEmpty());
    QVERIFY(service.preferredInterface().isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceService::asksItsVirtualReady()
{
    UnreadyService<NetworkInterfaceService> service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    provider->known = {named("en0")};
    provider->preferred = named("en0");
    QVERIFY(service.interfaces().isEmpty());
    QVERIFY(service.preferredInterface().isEmpty());
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure({}, {}));
    QVERIFY(provider->operations.isEmpty());
    QCOMPARE(operation->error().code(), -1);
}

void TestNetworkInterfaceService::translatesInterfaces()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    QVERIFY(service.interfaces().isEmpty());
    NetworkInterfaceData first = named("wl0");
    first.priority = 4;
    first.connected = true;
    provider->known = {first, named("en0"), NetworkInterfaceData()};
    const QList<NetworkInterface> interfaces = service.interfaces();
    QCOMPARE(interfaces.size(), 3);
    QVERIFY(first == interfaces.at(0));
    QCOMPARE(interfaces.at(1).name(), QStringLiteral("en0"));
    QVERIFY(interfaces.at(2).isEmpty());
}

void TestNetworkInterfaceService::translatesThePreferredInterface()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    QVERIFY(service.preferredInterface().isEmpty());
    provider->preferred = named("en0");
    provider->preferred.maxTransmissionUnit = 1500;
    QVERIFY(provider->preferred == service.preferredInterface());
}

void TestNetworkInterfaceService::passesParentsOn()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    NetworkInterfaceData parent = named("br0");
    parent.priority = 3;
    NetworkInterfaceData child = named("vl0");
    child.parent = &parent;
    provider->known = {child};
    QVERIFY(parent == service.interfaces().first().parent());
    parent.priority = 5;
    QCOMPARE(service.interfaces().first().parent().priority(), 5);
}

void TestNetworkInterfaceService::passesConfigureOn()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    provider->known = {named("en0")};
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    const NetworkInterface known = service.interfaces().first();
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure(known, config));
    const std::unique_ptr<AsyncNetworkInterfaceOperation> second(service.configure({}, {}));
    QVERIFY(!operation->parent());
    QCOMPARE(provider->operations, (QList<AsyncNetworkInterfaceOperation *> {operation.get(), second.get()}));
    QVERIFY(provider->configured.at(0) == known);
    QVERIFY(provider->configs.at(0) == config);
    QVERIFY(provider->configured.at(1).isEmpty());
    QVERIFY(provider->configs.at(1).isEmpty());
    QVERIFY(!operation->hasError());
}

void TestNetworkInterfaceService::refusesConfigureWhileNotReady()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    LogCapture log(7);
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure({}, {}));
    QVERIFY(operation);
    QVERIFY(provider->operations.isEmpty());
    QSignalSpy success(operation.get(), &AsyncNetworkInterfaceOperation::success);
    QSignalSpy failure(operation.get(), &AsyncNetworkInterfaceOperation::failure);
    QVERIFY(failure.wait());
    QCOMPARE(operation->error().code(), -1);
    QCOMPARE(operation->error().message(), QStringLiteral("The operation failed because the service is not ready."));
    QVERIFY(operation->results().isEmpty());
    QVERIFY(success.isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceService::completesWithSuccess()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure({}, {}));
    QSignalSpy success(operation.get(), &AsyncNetworkInterfaceOperation::success);
    QSignalSpy failure(operation.get(), &AsyncNetworkInterfaceOperation::failure);
    NetworkInterfaceData data = named("en0");
    data.macAddress = QStringLiteral("02:00:00:00:00:01");
    emit provider->asyncConfigureSuccess(operation.get(), data);
    QCOMPARE(operation->results().size(), 1);
    QVERIFY(data == operation->results().first());
    QVERIFY(success.isEmpty());
    QVERIFY(success.wait());
    QCOMPARE(success.size(), 1);
    QVERIFY(failure.isEmpty());
    QVERIFY(!operation->hasError());
}

void TestNetworkInterfaceService::completesWithFailure()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    provider->setReady(true);
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure({}, {}));
    QSignalSpy success(operation.get(), &AsyncNetworkInterfaceOperation::success);
    QSignalSpy failure(operation.get(), &AsyncNetworkInterfaceOperation::failure);
    emit provider->asyncConfigureFailure(operation.get(), 42, QStringLiteral("Words of the provider"));
    QVERIFY(failure.isEmpty());
    QVERIFY(failure.wait());
    QCOMPARE(failure.size(), 1);
    QVERIFY(success.isEmpty());
    QCOMPARE(operation->error().code(), 42);
    QCOMPARE(operation->error().message(), QStringLiteral("Words of the provider"));
    QVERIFY(operation->results().isEmpty());
}

namespace {

using ProviderSignal = void (NetworkInterfaceProvider::*)(const NetworkInterfaceData &);
using ServiceSignal = void (NetworkInterfaceService::*)(const NetworkInterface &);

const QList<ServiceSignal> &serviceSignals()
{
    static const QList<ServiceSignal> all {
        &NetworkInterfaceService::interfaceConfigurationChanged,
        &NetworkInterfaceService::preferredInterfaceChanged,
        &NetworkInterfaceService::interfaceConnected,
        &NetworkInterfaceService::interfaceDisconnected,
    };
    return all;
}

const QList<ProviderSignal> &providerSignals()
{
    static const QList<ProviderSignal> all {
        &NetworkInterfaceProvider::interfaceConfigurationChanged,
        &NetworkInterfaceProvider::preferredInterfaceChanged,
        &NetworkInterfaceProvider::interfaceConnected,
        &NetworkInterfaceProvider::interfaceDisconnected,
    };
    return all;
}

} // namespace

void TestNetworkInterfaceService::notices_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("interfaceConfigurationChanged") << 0;
    QTest::newRow("preferredInterfaceChanged") << 1;
    QTest::newRow("interfaceConnected") << 2;
    QTest::newRow("interfaceDisconnected") << 3;
}

void TestNetworkInterfaceService::notices()
{
    QFETCH(int, which);
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    QList<int> signalsHeard;
    QList<NetworkInterface> heard;
    for (int i = 0; i < serviceSignals().size(); ++i) {
        connect(&service, serviceSignals().at(i), [&, i](const NetworkInterface &networkInterface) {
            signalsHeard.append(i);
            heard.append(networkInterface);
        });
    }
    NetworkInterfaceData parent = named("br0");
    NetworkInterfaceData data = named("en0");
    data.parent = &parent;
    emit(provider->*providerSignals().at(which))(data);
    emit(provider->*providerSignals().at(which))(data);
    emit(provider->*providerSignals().at(which))(NetworkInterfaceData());
    QCOMPARE(signalsHeard, (QList<int> {which, which, which}));
    QVERIFY(data == heard.at(0));
    QVERIFY(data == heard.at(1));
    QCOMPARE(heard.at(1).parent().name(), QStringLiteral("br0"));
    QVERIFY(heard.at(2).isEmpty());
}

void TestNetworkInterfaceService::ignoresAddedAndRemoved()
{
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    int heard = 0;
    for (const ServiceSignal signal : serviceSignals())
        connect(&service, signal, [&heard] { ++heard; });
    emit provider->interfaceAdded(named("en0"));
    emit provider->interfaceRemoved(named("en0"));
    emit provider->interfaceConnected(named("en0"));
    QCOMPARE(heard, 1);
}

void TestNetworkInterfaceService::noticesReachQueuedConnectionsByName()
{
    QFETCH(int, which);
    NetworkInterfaceService service;
    FakeProvider *provider = replaceProvider<FakeProvider>(service);
    Listener listener;
    const QByteArray signal = QByteArray(QTest::currentDataTag()) + "(morvek::NetworkInterface)";
    QVERIFY(
        connect(&service, '2' + signal, &listener, SLOT(onInterface(morvek::NetworkInterface)), Qt::QueuedConnection));
    emit(provider->*providerSignals().at(which))(named("en0"));
    QVERIFY(listener.heard.isEmpty());
    QTRY_COMPARE(listener.heard.size(), 1);
    QCOMPARE(listener.heard.first().name(), QStringLiteral("en0"));
}

void TestNetworkInterfaceService::deletesItsProvider()
{
    auto *service = new NetworkInterfaceService;
    const QPointer<QObject> ownHalf(privateHalf(*service).get());
    QVERIFY(!ownHalf->parent());
    QVERIFY(!privateHalf(*service)->provider->parent());
    QCOMPARE(privateHalf(*service)->q, service);
    QCOMPARE(QByteArray(privateHalf(*service)->provider->metaObject()->className()),
             QByteArray("morvek::NetworkInterfaceProviderZop"));
    const QPointer<NetworkInterfaceProvider> ownProvider(privateHalf(*service)->provider.get());
    const int before = FakeProvider::deleted;
    replaceProvider<FakeProvider>(*service);
    QVERIFY(!ownHalf);
    QVERIFY(!ownProvider);
    QCOMPARE(FakeProvider::deleted, before);
    delete service;
    QCOMPARE(FakeProvider::deleted, before + 1);
}

void TestNetworkInterfaceService::leavesOperationsAlone()
{
    auto service = std::make_unique<NetworkInterfaceService>();
    FakeProvider *provider = replaceProvider<FakeProvider>(*service);
    provider->setReady(true);
    const std::unique_ptr<AsyncNetworkInterfaceOperation> pending(service->configure({}, {}));
    const std::unique_ptr<AsyncNetworkInterfaceOperation> ended(service->configure({}, {}));
    emit provider->asyncConfigureFailure(ended.get(), 1, QString());
    QSignalSpy failure(ended.get(), &AsyncNetworkInterfaceOperation::failure);
    service.reset();
    QVERIFY(failure.wait());
    QVERIFY(!pending->hasError());
    QVERIFY(pending->results().isEmpty());
}

void TestNetworkInterfaceService::mayBeDeletedInAnySlot_data()
{
    notices_data();
    QTest::newRow("readyChanged") << 4;
}

void TestNetworkInterfaceService::mayBeDeletedInAnySlot()
{
    QFETCH(int, which);
    auto service = std::make_unique<NetworkInterfaceService>();
    FakeProvider *provider = replaceProvider<FakeProvider>(*service);
    int heardLater = 0;
    const auto deleteIt = [&service] { service.reset(); };
    if (which == 4) {
        connect(service.get(), &ServiceBase::readyChanged, deleteIt);
        connect(service.get(), &ServiceBase::readyChanged, [&heardLater] { ++heardLater; });
        provider->setReady(true);
    } else {
        connect(service.get(), serviceSignals().at(which), deleteIt);
        connect(service.get(), serviceSignals().at(which), [&heardLater] { ++heardLater; });
        emit(provider->*providerSignals().at(which))(named("en0"));
    }
    QVERIFY(!service);
    runQueued();
    QCOMPARE(heardLater, 0);
}

QTEST_GUILESS_MAIN(TestNetworkInterfaceService)
#include "tst_networkinterfaceservice.moc"
