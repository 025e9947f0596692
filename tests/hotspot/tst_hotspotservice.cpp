// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotproviderfixture.h"
#include "logcapture.h"
#include "metaobject.h"
#include "servicedoubles.h"

#include <QtTest/QtTest>

#include <functional>
#include <type_traits>

using namespace morvek;

namespace {

using ServicePrivate = PrivateHalfOf<HotSpotService>;

static_assert(std::is_base_of<ServiceBase, HotSpotService>::value, "");
static_assert(std::is_same<decltype(&HotSpotService::configuration),
                           AsyncHotspotConfigOperation *(HotSpotService::*)() const>::value,
              "");
static_assert(std::is_same<decltype(&HotSpotService::enabled), bool (HotSpotService::*)() const>::value, "");
static_assert(std::is_base_of<QObject, ServicePrivate>::value, "");
static_assert(sizeof(ServicePrivate) == sizeof(QObject) + 2 * sizeof(void *), "");
static_assert(std::is_same<decltype(ServicePrivate::q), HotSpotService *>::value, "");
static_assert(std::is_same<decltype(ServicePrivate::provider), HotspotProvider *>::value, "");
static_assert(std::is_base_of<ServiceProviderBase, HotspotProvider>::value, "");
static_assert(std::is_base_of<HotspotProvider, HotspotProviderZop>::value, "");
static_assert(std::is_abstract<HotspotProvider>::value, "");
static_assert(std::has_virtual_destructor<HotspotProvider>::value, "");

/*! A provider that is on, records what is asked of it and completes nothing by itself. */
class FakeProvider : public HotspotProvider
{
public:
    void setConfiguration(AsyncHotspotConfigOperation *operation, const WifiHotspot &profile) override
    {
        record("setConfiguration", operation);
        profiles.append(profile);
    }
    void configuration(AsyncHotspotConfigOperation *operation) override { record("configuration", operation); }
    void setEnabled(AsyncHotspotEnableOperation *operation, bool enable) override
    {
        record(enable ? "setEnabled true" : "setEnabled false", operation);
    }
    bool enabled() const override
    {
        calls.append(QStringLiteral("enabled"));
        return true;
    }

    mutable QStringList calls;
    QList<AsyncOperationBase *> operations;
    QList<WifiHotspot> profiles;

private:
    void record(const char *call, AsyncOperationBase *operation)
    {
        calls.append(QLatin1String(call));
        operations.append(operation);
    }
};

/*! A service, or a subclass of it, whose provider is a fake one. */
template<typename Service = HotSpotService>
struct ServiceFixture
{
    ServiceFixture()
    {
        const auto replaced = std::move(privateHalf(*service));
        delete replaced->provider;
        privateHalf(*service) = std::make_unique<ServicePrivate>(service.get(), &provider);
    }

    FakeProvider provider;
    std::unique_ptr<Service> service = std::make_unique<Service>();
};

/*! Asks \a service for one thing and says what came back. */
using Call = std::function<QString(HotSpotService &service)>;

} // namespace

Q_DECLARE_METATYPE(Call)

class TestHotspotService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }
    void cleanup() { TetheringDaemon::deleteProviders(); }

    void declaresItsMethodsInOrder();
    void declaresItsVirtualsInOrder();
    void isMadeOfThreeObjects();
    void isAvailable();
    void isAsReadyAsItsProvider();

    void asksItsProvider_data() { calls(); }
    void asksItsProvider();
    void asksNothingWhileNotReady_data() { calls(); }
    void asksNothingWhileNotReady();
    void asksNothingWithoutProvider_data() { calls(); }
    void asksNothingWithoutProvider();
    void asksItselfWhetherItIsReady_data() { calls(); }
    void asksItselfWhetherItIsReady();

    void passesOperationsOn();
    void passesAnyProfileOn();
    void refusesFromTheEventLoop();
    void passesSignalsOn();
    void leavesItsProviderAlive();
    void leavesOperationsAlone();
    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();

private:
    void calls();
};

void TestHotspotService::declaresItsMethodsInOrder()
{
    const QMetaObject &provider = HotspotProvider::staticMetaObject;
    QCOMPARE(ownMethods(provider), lines({"signal enabledChanged(bool)", "signal configurationChanged(WifiHotspot)"}));
    QCOMPARE(provider.method(provider.methodOffset()).parameterNames(), QList<QByteArray> {"enabled"});
    QCOMPARE(provider.method(provider.methodOffset() + 1).parameterNames(), QList<QByteArray> {"configutaion"});
    QCOMPARE(provider.propertyCount(), provider.propertyOffset());
    QCOMPARE(QByteArray(provider.className()), QByteArray("morvek::HotspotProvider"));
    QCOMPARE(QByteArray(provider.superClass()->className()), QByteArray("morvek::ServiceProviderBase"));

    const QMetaObject &zop = HotspotProviderZop::staticMetaObject;
    QCOMPARE(ownMethods(zop),
             lines({"slot init(QString)", "slot zopControlChanged(morvek::ZopChangeset)",
                    "slot zopStatusChanged(QString,morvek::ZopVariant)"}));
    QCOMPARE(QByteArray(zop.className()), QByteArray("morvek::HotspotProviderZop"));
    QCOMPARE(QByteArray(zop.superClass()->className()), QByteArray("morvek::HotspotProvider"));
}

void TestHotspotService::declaresItsVirtualsInOrder()
{
    struct LastOfQObject : QObject
    {
        static quintptr position() { return virtualPosition(&LastOfQObject::disconnectNotify); }
    };
    QCOMPARE(virtualPosition(&HotspotProvider::setConfiguration), LastOfQObject::position() + 1);
    QCOMPARE(virtualPosition(&HotspotProvider::configuration), LastOfQObject::position() + 2);
    QCOMPARE(virtualPosition(&HotspotProvider::setEnabled), LastOfQObject::position() + 3);
    QCOMPARE(virtualPosition(&HotspotProvider::enabled), LastOfQObject::position() + 4);
}

void TestHotspotService::isMadeOfThreeObjects()
{
    HotSpotService service;
    QVERIFY(!service.parent());
    const ServicePrivate &privateObject = *privateHalf(service);
    QCOMPARE(privateObject.q, &service);
    QVERIFY(!privateObject.parent());
    // The two members stand in this order behind what QObject has.
    QVERIFY(static_cast<const void *>(&privateObject.q) < static_cast<const void *>(&privateObject.provider));
    const QMetaObject *metaObject = privateObject.metaObject();
    QCOMPARE(QByteArray(metaObject->className()), QByteArray("morvek::HotSpotService::Private"));
    QCOMPARE(QByteArray(metaObject->superClass()->className()), QByteArray("QObject"));
    QVERIFY(ownMethods(*metaObject).isEmpty());
    QCOMPARE(metaObject->propertyCount(), metaObject->propertyOffset());
    QVERIFY(!privateObject.provider->parent());
    QCOMPARE(QByteArray(privateObject.provider->metaObject()->className()), QByteArray("morvek::HotspotProviderZop"));
}

void TestHotspotService::isAvailable()
{
    const ServiceFixture<> fixture;
    QVERIFY(fixture.service->available());
    privateHalf(*fixture.service)->provider->setReady(true);
    QVERIFY(fixture.service->available());
    privateHalf(*fixture.service)->provider = nullptr;
    QVERIFY(fixture.service->available());
}

void TestHotspotService::isAsReadyAsItsProvider()
{
    ServiceFixture<> fixture;
    QSignalSpy readyChanged(fixture.service.get(), &ServiceBase::readyChanged);
    LogCapture log(7);
    QVERIFY(!fixture.service->ready());
    fixture.provider.setReady(true);
    QVERIFY(fixture.service->ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {true});
    fixture.provider.setReady(false);
    QVERIFY(!fixture.service->ready());
    QCOMPARE(readyChanged.takeFirst(), QVariantList {false});
    QVERIFY(readyChanged.isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestHotspotService::calls()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("ready");
    QTest::addColumn<QString>("notReady");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const char *name, const Call &call, const QStringList &log) {
        QTest::newRow(name) << call << QStringLiteral("pending") << QStringLiteral("-1 The service is not ready.")
                            << log;
    };
    const QStringList setEnabledLog = lines({"error 1300 The service is not ready.morvek::AsyncHotspotEnableOperation* "
                                             "morvek::HotSpotService::setEnabled(bool)"});
    row(
        "setEnabled true", [](HotSpotService &service) { return endOf(service.setEnabled(true)); }, setEnabledLog);
    row(
        "setEnabled false", [](HotSpotService &service) { return endOf(service.setEnabled(false)); }, setEnabledLog);
    row(
        "setConfiguration", [](HotSpotService &service) { return endOf(service.setConfiguration(car())); },
        lines({"error 1300 The service is not ready.morvek::AsyncHotspotConfigOperation* "
               "morvek::HotSpotService::setConfiguration(const morvek::WifiHotspot&)"}));
    row(
        "configuration", [](HotSpotService &service) { return endOf(service.configuration()); },
        lines({"error 1300 The service is not ready.morvek::AsyncHotspotConfigOperation* "
               "morvek::HotSpotService::configuration() const"}));
    QTest::newRow("enabled") << Call(
        [](HotSpotService &service) { return service.enabled() ? QStringLiteral("true") : QStringLiteral("false"); })
                             << QStringLiteral("true") << QStringLiteral("false") << QStringList();
}

void TestHotspotService::asksItsProvider()
{
    QFETCH(Call, call);
    QFETCH(QString, ready);
    ServiceFixture<> fixture;
    fixture.provider.setReady(true);
    LogCapture log(7);
    QCOMPARE(call(*fixture.service), ready);
    QCOMPARE(fixture.provider.calls, QStringList(QLatin1String(QTest::currentDataTag())));
    QVERIFY(log.take().isEmpty());
}

void TestHotspotService::asksNothingWhileNotReady()
{
    QFETCH(Call, call);
    QFETCH(QString, notReady);
    QFETCH(QStringList, log);
    const ServiceFixture<> fixture;
    LogCapture capture(1);
    QCOMPARE(call(*fixture.service), notReady);
    QVERIFY(capture.take().isEmpty());
    for (const int verbosity : {2, 7}) {
        KrelLogger::setVerbosity(verbosity);
        QCOMPARE(call(*fixture.service), notReady);
        QCOMPARE(capture.take(), log);
    }
    QVERIFY(fixture.provider.calls.isEmpty());
}

void TestHotspotService::asksNothingWithoutProvider()
{
    QFETCH(Call, call);
    QFETCH(QString, notReady);
    QFETCH(QStringList, log);
    ServiceFixture<> fixture;
    fixture.provider.setReady(true);
    privateHalf(*fixture.service)->provider = nullptr;
    QVERIFY(!fixture.service->ready());
    LogCapture capture(2);
    QCOMPARE(call(*fixture.service), notReady);
    QCOMPARE(capture.take(), log);
}

// A subclass may have a word in it.
void TestHotspotService::asksItselfWhetherItIsReady()
{
    QFETCH(Call, call);
    QFETCH(QString, ready);
    QFETCH(QString, notReady);
    const ServiceFixture<AlwaysReadyService<HotSpotService>> alwaysReady;
    QCOMPARE(call(*alwaysReady.service), ready);
    QCOMPARE(alwaysReady.provider.calls.size(), 1);
    ServiceFixture<UnreadyService<HotSpotService>> unready;
    unready.provider.setReady(true);
    QCOMPARE(call(*unready.service), notReady);
    QVERIFY(unready.provider.calls.isEmpty());
}

void TestHotspotService::passesOperationsOn()
{
    ServiceFixture<> fixture;
    fixture.provider.setReady(true);
    const EnablePointer on(fixture.service->setEnabled(true));
    const ConfigPointer read(fixture.service->configuration());
    const ConfigPointer write(fixture.service->setConfiguration(car()));
    const EnablePointer off(fixture.service->setEnabled(false));
    QCOMPARE(fixture.provider.operations, (QList<AsyncOperationBase *> {on.get(), read.get(), write.get(), off.get()}));
}

void TestHotspotService::passesAnyProfileOn()
{
    ServiceFixture<> fixture;
    fixture.provider.setReady(true);
    LogCapture log(7);
    const ConfigPointer complete(fixture.service->setConfiguration(car()));
    const ConfigPointer empty(fixture.service->setConfiguration(WifiHotspot()));
    QCOMPARE(fixture.provider.profiles.size(), 2);
    QVERIFY(fixture.provider.profiles.at(0) == car());
    QVERIFY(fixture.provider.profiles.at(1) == WifiHotspot());
    QVERIFY(!empty->hasError());
    QVERIFY(log.take().isEmpty());
}

void TestHotspotService::refusesFromTheEventLoop()
{
    const ServiceFixture<> fixture;
    QStringList heard;
    // Whoever is queued while a line is written comes after the notice.
    const LogCapture log(2);
    KrelLogger::setSink([&](KrelLogger::Level, unsigned short, const QString &) {
        QMetaObject::invokeMethod(
            qApp, [&heard] { heard.append(QStringLiteral("logged")); }, Qt::QueuedConnection);
    });
    const EnablePointer enable(fixture.service->setEnabled(true));
    const ConfigPointer read(fixture.service->configuration());
    const ConfigPointer write(fixture.service->setConfiguration(car()));
    const auto hear = [&heard](auto *operation, const QString &name) {
        using Operation = typename std::remove_pointer<decltype(operation)>::type;
        connect(operation, &Operation::failure, [=, &heard](Operation *asyncop) {
            heard.append(name + (asyncop == operation ? QStringLiteral(" failed") : QStringLiteral(" mistaken")));
        });
        connect(operation, &Operation::success, [=, &heard] { heard.append(name); });
    };
    hear(enable.get(), QStringLiteral("enable"));
    hear(read.get(), QStringLiteral("read"));
    hear(write.get(), QStringLiteral("write"));
    runQueued();
    runQueued();
    QCOMPARE(heard, lines({"enable failed", "logged", "read failed", "logged", "write failed", "logged"}));
    QVERIFY(enable->results().isEmpty());
    QVERIFY(read->results().isEmpty());
    QVERIFY(write->results().isEmpty());
}

void TestHotspotService::passesSignalsOn()
{
    ServiceFixture<> fixture;
    QStringList heard;
    WifiHotspot profile;
    connect(fixture.service.get(), &ServiceBase::readyChanged,
            [&](bool ready) { heard.append(ready ? "ready" : "not ready"); });
    connect(fixture.service.get(), &HotSpotService::enabledChanged,
            [&](bool enabled) { heard.append(enabled ? "on" : "off"); });
    connect(fixture.service.get(), &HotSpotService::configurationChanged, [&](const WifiHotspot &configutaion) {
        heard.append(QLatin1String("profile ") + configutaion.name());
        profile = configutaion;
    });
    // Whether or not the provider is ready, and without comparing.
    emit fixture.provider.enabledChanged(true);
    emit fixture.provider.enabledChanged(true);
    emit fixture.provider.configurationChanged(car());
    emit fixture.provider.enabledChanged(false);
    emit fixture.provider.readyChanged(true);
    emit fixture.provider.configurationChanged(car());
    emit fixture.provider.readyChanged(false);
    const QStringList expected = lines({"on", "on", "profile Car", "off", "ready", "profile Car", "not ready"});
    QCOMPARE(heard, expected);
    QVERIFY(profile == car());
    runQueued();
    QCOMPARE(heard, expected);
    QVERIFY(fixture.provider.calls.isEmpty());
}

void TestHotspotService::leavesItsProviderAlive()
{
    auto *service = new HotSpotService;
    const QPointer<QObject> privateObject(privateHalf(*service).get());
    const QPointer<HotspotProvider> provider(privateHalf(*service)->provider);
    QByteArray serviceThen;
    connect(privateObject, &QObject::destroyed, [&] { serviceThen = service->metaObject()->className(); });
    TetheringDaemon::start();
    delete service;
    QCOMPARE(serviceThen, QByteArray("morvek::HotSpotService"));
    runQueued();
    QVERIFY(!privateObject);
    QVERIFY(provider);
    QCOMPARE(ZopDouble::owners(), QSet<QObject *> {provider.data()});
    // It goes on: with the state, and with what is asked of it.
    HotspotEvents events(*provider);
    TetheringDaemon::change("state", text("ACTIVE"));
    QCOMPARE(events.take(), lines({"on"}));
    const ConfigPointer read = fetch(*provider);
    const ConfigEnd end(read.get());
    TetheringDaemon::accept("retrieve_profile", TetheringDaemon::lastId(), json(TetheringDaemon::CarProfile));
    QCOMPARE(events.take(), lines({"profile Car"}));
    QCOMPARE(end.text(), QStringLiteral("success Car"));
}

void TestHotspotService::leavesOperationsAlone()
{
    ServiceFixture<> fixture;
    const EnablePointer refused(fixture.service->setEnabled(true));
    fixture.provider.setReady(true);
    const EnablePointer pending(fixture.service->setEnabled(true));
    const EnableEnd refusedEnd(refused.get());
    const EnableEnd pendingEnd(pending.get());
    fixture.service.reset();
    QCOMPARE(refusedEnd.text(), QStringLiteral("failure -1 The service is not ready."));
    QCOMPARE(pendingEnd.text(), QString());
    QVERIFY(!pending->hasError());
}

void TestHotspotService::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("readyChanged") << 0;
    QTest::newRow("enabledChanged") << 1;
    QTest::newRow("configurationChanged") << 2;
}

void TestHotspotService::mayBeDeletedInAnySlot()
{
    QFETCH(int, which);
    ServiceFixture<> fixture;
    int heardLater = 0;
    const auto hear = [&](auto signal) {
        connect(fixture.service.get(), signal, [&fixture] { fixture.service.reset(); });
        connect(fixture.service.get(), signal, [&heardLater] { ++heardLater; });
    };
    hear(&ServiceBase::readyChanged);
    hear(&HotSpotService::enabledChanged);
    hear(&HotSpotService::configurationChanged);
    if (which == 0)
        fixture.provider.setReady(true);
    else if (which == 1)
        emit fixture.provider.enabledChanged(true);
    else
        emit fixture.provider.configurationChanged(car());
    QVERIFY(!fixture.service);
    runQueued();
    QCOMPARE(heardLater, 0);
}

QTEST_GUILESS_MAIN(TestHotspotService)
#include "tst_hotspotservice.moc"
