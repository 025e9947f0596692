// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"
#include "logcapture.h"
#include "namedinterface.h"
#include "networkingdaemon.h"
#include "networkinterfaceservice.h"
#include "operationend.h"
#include "servicepointer.h"
#include "textform.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

using ServicePointer = NetworkInterfaceServicePointer;
using OperationPointer = std::unique_ptr<AsyncNetworkInterfaceOperation>;
using End = OperationEnd<AsyncNetworkInterfaceOperation>;

ServicePointer newService()
{
    return ServicePointer(newNetworkInterfaceService());
}

NetworkInterfaceConfig manual()
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QStringLiteral("10.1.1.20")));
    entry.setNetmask(QHostAddress(QStringLiteral("255.255.255.0")));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(entry);
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.1.1.1")));
    return config;
}

const char *const Unknown = "failure -1 The interface to configure is not in the list of known interfaces.";

using Signal = void (NetworkInterfaceService::*)(const NetworkInterface &);

} // namespace

class TestShippedService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void isReadyAtOnce();
    void isNeverReadyWithoutTheDaemon();
    void listsAndFollows();
    void toldInOrder();
    void configures();
    void refuses();
    void refusesWhileNotReady();

    void interfaceOutlivesItsParent();
    void interfaceOutlivesTheService();
    void circlesOfParentsAreSafe();
    void interfaceVanishesDuringAConnection();
    void interfaceVanishesDuringADisconnection();
    void interfaceVanishesWhileItsAddressesAreAwaited();
    void preferredInterfaceVanishes();
    void oneNameIsAnnouncedTwice();
    void operationIsDeletedBeforeTheReply();
    void operationIsDeletedBeforeTheNotice();
    void operationOutlivesTheService();
    void serviceIsDeletedInASlot_data();
    void serviceIsDeletedInASlot();
    void serviceIsDeletedInTheSlotOfAnOperation();
    void slotAsksTheService();
};

void TestShippedService::isReadyAtOnce()
{
    start();
    ZopDouble::store(interfacePath(QStringLiteral("en0")), wired());
    ZopDouble::store(QLatin1String(Status), {{QStringLiteral("default_interface"), text("en0")}});
    const ServicePointer service = newService();
    QVERIFY(service->ready());
    QCOMPARE(service->preferredInterface().name(), QStringLiteral("en0"));
    QCOMPARE(textForm(service->interfaces().first()),
             QStringLiteral("NetworkInterface {name:en0,type:wired,mac:02:00:00:00:00:01,available:1,priority:-1,"
                            "connected:true,configuration:NetworkInterfaceConfig{type:autoip:[10.0.0.5/255.0.0.0]"
                            "gateways:[10.0.0.1]}}"));
}

void TestShippedService::isNeverReadyWithoutTheDaemon()
{
    LogCapture log(7);
    const ServicePointer service = newService();
    log.take();
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    addInterface("en0", wired());
    QVERIFY(service->interfaces().isEmpty());
    QVERIFY(service->preferredInterface().isEmpty());
}

void TestShippedService::listsAndFollows()
{
    start();
    const ServicePointer service = newService();
    QVERIFY(service->interfaces().isEmpty());
    addInterface("wl0", wired());
    addInterface("en0", unplugged());
    QCOMPARE(service->interfaces().size(), 2);
    QCOMPARE(service->interfaces().first().name(), QStringLiteral("en0"));
    const NetworkInterface before = named(*service, "en0");
    change("en0", "connected", text("true"));
    QVERIFY(!before.connected());
    QVERIFY(named(*service, "en0").connected());
    QVERIFY(before != named(*service, "en0"));
    removeInterface("en0");
    QCOMPARE(service->interfaces().size(), 1);
}

void TestShippedService::toldInOrder()
{
    start();
    const ServicePointer service = newService();
    QStringList heard;
    const auto hear = [&](const char *name, Signal signal) {
        connect(service.get(), signal, [&heard, name](const NetworkInterface &networkInterface) {
            heard.append(QLatin1String(name) + networkInterface.name());
        });
    };
    hear("changed ", &NetworkInterfaceService::interfaceConfigurationChanged);
    hear("preferred ", &NetworkInterfaceService::preferredInterfaceChanged);
    hear("connected ", &NetworkInterfaceService::interfaceConnected);
    hear("disconnected ", &NetworkInterfaceService::interfaceDisconnected);
    addInterface("en0", unplugged());
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), wired());
    ZopDouble::publish(
        QLatin1String(Status),
        {{QStringLiteral("priority"), json(R"(["en0"])")}, {QStringLiteral("default_interface"), text("en0")}});
    change("en0", "connected", text("false"));
    removeInterface("en0");
    QCOMPARE(heard,
             (QStringList {
                 QStringLiteral("connected en0"),
                 QStringLiteral("changed en0"),
                 QStringLiteral("preferred en0"),
                 QStringLiteral("changed en0"),
                 QStringLiteral("disconnected en0"),
             }));
}

void TestShippedService::configures()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    const OperationPointer operation(service->configure(named(*service, "en0"), manual()));
    const End end(operation.get());
    ZopDouble::answer(0);
    QCOMPARE(end.text(), QString());
    releaseAddresses("en0");
    ZopDouble::answer(1);
    QVERIFY(!operation->results().isEmpty());
    QCOMPARE(end.text(), QStringLiteral("success en0"));
    QCOMPARE(operation->results().size(), 1);
    QVERIFY(operation->results().first() == named(*service, "en0"));
}

void TestShippedService::refuses()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    const NetworkInterface en0 = named(*service, "en0");
    const OperationPointer unknown(service->configure({}, manual()));
    const OperationPointer same(service->configure(en0, {}));
    const OperationPointer daemon(service->configure(en0, manual()));
    const End unknownEnd(unknown.get());
    const End sameEnd(same.get());
    const End daemonEnd(daemon.get());
    ZopDouble::answerError(0, 13, QStringLiteral("Not allowed"));
    QCOMPARE(unknownEnd.text(), QString::fromLatin1(Unknown));
    QCOMPARE(sameEnd.text(),
             QStringLiteral("failure -1 The new configuration settings are the same as the current configuration "
                            "settings."));
    QCOMPARE(daemonEnd.text(),
             QStringLiteral("failure 13 The system was unable to configure the interface. (Not allowed)"));
    QVERIFY(daemon->results().isEmpty());
}

void TestShippedService::refusesWhileNotReady()
{
    addInterface("en0", wired());
    const ServicePointer service = newService();
    LogCapture log(7);
    const OperationPointer operation(service->configure({}, manual()));
    const End end(operation.get());
    QCOMPARE(end.text(), QStringLiteral("failure -1 The operation failed because the service is not ready."));
    QVERIFY(log.take().isEmpty());
}

void TestShippedService::interfaceOutlivesItsParent()
{
    start();
    addInterface("br0", wired());
    addInterface("vl0", standingOn("br0"));
    const ServicePointer service = newService();
    const NetworkInterface held = named(*service, "vl0");
    const NetworkInterface parent = held.parent();
    QCOMPARE(parent.name(), QStringLiteral("br0"));
    QVERIFY(held == named(*service, "vl0"));
    removeInterface("br0");
    QVERIFY(held.parent().isEmpty());
    QVERIFY(held == held);
    QVERIFY(held == named(*service, "vl0"));
    QCOMPARE(parent.name(), QStringLiteral("br0"));
    addInterface("br0", wired());
    QVERIFY(held.parent().isEmpty());
    QVERIFY(held != named(*service, "vl0"));
    QCOMPARE(named(*service, "vl0").parent().name(), QStringLiteral("br0"));
}

void TestShippedService::interfaceOutlivesTheService()
{
    start();
    addInterface("br0", wired());
    addInterface("vl0", standingOn("br0"));
    addInterface("vl1", standingOn("vl0"));
    ServicePointer service = newService();
    const NetworkInterface first = named(*service, "vl1");
    const NetworkInterface second = named(*service, "vl1");
    const NetworkInterface middle = first.parent();
    service.reset();
    QVERIFY(first.parent().isEmpty());
    QVERIFY(middle.parent().isEmpty());
    QCOMPARE(middle.name(), QStringLiteral("vl0"));
    QVERIFY(first == second);
    QVERIFY(first != middle);
    const NetworkInterface copy(first);
    QVERIFY(copy.parent().isEmpty());
    QVERIFY(!copy.isEmpty());
    QVERIFY(textForm(copy).startsWith(QLatin1String("NetworkInterface {name:vl1,")));
}

void TestShippedService::circlesOfParentsAreSafe()
{
    start();
    addInterface("a", standingOn("b"));
    addInterface("b", standingOn("c"));
    addInterface("c", standingOn("a"));
    addInterface("self", standingOn("self"));
    const ServicePointer service = newService();
    const NetworkInterface a = named(*service, "a");
    QVERIFY(a == named(*service, "a"));
    QVERIFY(a != named(*service, "b"));
    QVERIFY(a != named(*service, "self"));
    QVERIFY(named(*service, "self") == named(*service, "self"));
    NetworkInterface walk = a;
    for (int i = 0; i < 300; ++i)
        walk = walk.parent();
    QVERIFY(walk == a);
}

void TestShippedService::interfaceVanishesDuringAConnection()
{
    start();
    addInterface("en0", unplugged());
    const ServicePointer service = newService();
    const NetworkInterface en0 = named(*service, "en0");
    const OperationPointer accepted(service->configure(en0, manual()));
    const OperationPointer refused(service->configure(en0, manual()));
    const End acceptedEnd(accepted.get());
    const End refusedEnd(refused.get());
    removeInterface("en0");
    QCOMPARE(acceptedEnd.text(), QString());
    ZopDouble::answer(0);
    ZopDouble::answerError(1, 19, QStringLiteral("Gone"));
    QCOMPARE(acceptedEnd.text(), QStringLiteral("success en0"));
    QCOMPARE(accepted->results().first().macAddress(), QStringLiteral("02:00:00:00:00:01"));
    QCOMPARE(refusedEnd.text(), QStringLiteral("failure 19 The system was unable to configure the interface. (Gone)"));
    const OperationPointer late(service->configure(en0, manual()));
    const End lateEnd(late.get());
    QCOMPARE(lateEnd.text(), QString::fromLatin1(Unknown));
}

void TestShippedService::interfaceVanishesDuringADisconnection()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    const OperationPointer operation(service->configure(named(*service, "en0"), manual()));
    const End end(operation.get());
    removeInterface("en0");
    QCOMPARE(end.text(), QString());
    ZopDouble::answer(0);
    QCOMPARE(end.text(), QString::fromLatin1(Unknown));
}

void TestShippedService::interfaceVanishesWhileItsAddressesAreAwaited()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    const OperationPointer operation(service->configure(named(*service, "en0"), manual()));
    const End end(operation.get());
    ZopDouble::answer(0);
    removeInterface("en0");
    QCOMPARE(end.text(), QString::fromLatin1(Unknown));
}

void TestShippedService::preferredInterfaceVanishes()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    changeStatus("default_interface", text("en0"));
    QStringList heard;
    connect(service.get(), &NetworkInterfaceService::preferredInterfaceChanged,
            [&heard](const NetworkInterface &networkInterface) { heard.append(networkInterface.name()); });
    removeInterface("en0");
    QVERIFY(service->preferredInterface().isEmpty());
    changeStatus("default_interface", text(""));
    QCOMPARE(heard, QStringList(QString()));
}

void TestShippedService::oneNameIsAnnouncedTwice()
{
    start();
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    const ServicePointer service = newService();
    changeStatus("default_interface", text("en0"));
    const NetworkInterface held = named(*service, "vl0");
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QCOMPARE(service->interfaces().size(), 2);
    QCOMPARE(service->preferredInterface().name(), QStringLiteral("en0"));
    removeInterface("en0");
    QVERIFY(held.parent().isEmpty());
    QVERIFY(service->preferredInterface().isEmpty());
    QCOMPARE(service->interfaces().size(), 1);
    QVERIFY(ZopDouble::objects(interfacePath(QStringLiteral("en0"))).isEmpty());
}

void TestShippedService::operationIsDeletedBeforeTheReply()
{
    start();
    addInterface("en0", wired());
    const ServicePointer service = newService();
    OperationPointer deleted(service->configure(named(*service, "en0"), manual()));
    const OperationPointer kept(service->configure(named(*service, "en0"), manual()));
    const End end(kept.get());
    deleted.reset();
    releaseAddresses("en0");
    for (int i = 0; i < 4; ++i)
        ZopDouble::answer(i);
    QCOMPARE(end.text(), QStringLiteral("success en0"));
    QCOMPARE(ZopDouble::commands().size(), 4);
}

void TestShippedService::operationIsDeletedBeforeTheNotice()
{
    start();
    const ServicePointer service = newService();
    OperationPointer deleted(service->configure({}, {}));
    const OperationPointer kept(service->configure({}, {}));
    const End deletedEnd(deleted.get());
    const End keptEnd(kept.get());
    deleted.reset();
    QCOMPARE(keptEnd.text(), QString::fromLatin1(Unknown));
    QCOMPARE(deletedEnd.text(), QString());
}

void TestShippedService::operationOutlivesTheService()
{
    start();
    addInterface("en0", wired());
    ServicePointer service = newService();
    const OperationPointer pending(service->configure(named(*service, "en0"), manual()));
    const OperationPointer ended(service->configure({}, manual()));
    const End pendingEnd(pending.get());
    const End end(ended.get());
    service.reset();
    QCOMPARE(end.text(), QString::fromLatin1(Unknown));
    QCOMPARE(pendingEnd.text(), QString());
}

void TestShippedService::serviceIsDeletedInASlot_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("cause");
    QTest::newRow("changed by attributes") << 0 << 0;
    QTest::newRow("changed by a priority") << 0 << 1;
    QTest::newRow("changed in both ways") << 0 << 2;
    QTest::newRow("preferred") << 1 << 3;
    QTest::newRow("connected, before other attributes") << 2 << 4;
    QTest::newRow("disconnected, before other attributes") << 3 << 5;
    QTest::newRow("changed, before the addresses are missed") << 0 << 6;
}

void TestShippedService::serviceIsDeletedInASlot()
{
    QFETCH(int, signal);
    QFETCH(int, cause);
    const QList<Signal> toldBy {
        &NetworkInterfaceService::interfaceConfigurationChanged,
        &NetworkInterfaceService::preferredInterfaceChanged,
        &NetworkInterfaceService::interfaceConnected,
        &NetworkInterfaceService::interfaceDisconnected,
    };
    const QString en0 = interfacePath(QStringLiteral("en0"));
    const QList<std::function<void()>> causes {
        [&] { ZopDouble::publish(en0, wired()); },
        [] { changeStatus("priority", json(R"(["en0","vl0","en0"])")); },
        [] { change("vl0", "parent_interface", text("")); },
        [] {
            ZopDouble::publish(QLatin1String(Status),
                               {{QStringLiteral("default_interface"), text("en0")},
                                {QStringLiteral("priority"), json(R"(["vl0","en0"])")}});
        },
        [&] { ZopDouble::publish(en0, standingOn("vl0")); },
        [&] { ZopDouble::publish(en0, unplugged()); },
        [] { releaseAddresses("en0"); },
    };
    start();
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    ServicePointer service = newService();
    const NetworkInterface held = named(*service, "vl0");
    const OperationPointer operation(service->configure(named(*service, "en0"), manual()));
    const End end(operation.get());
    int heardLater = 0;
    connect(service.get(), toldBy.at(signal), [&service] { service.reset(); });
    connect(service.get(), toldBy.at(signal), [&heardLater] { ++heardLater; });
    causes.at(cause)();
    QVERIFY(!service);
    QCOMPARE(heardLater, 0);
    QCOMPARE(end.text(), QString());
    QCOMPARE(ZopDouble::commands().size(), 1);
    QVERIFY(held.parent().isEmpty());
}

void TestShippedService::serviceIsDeletedInTheSlotOfAnOperation()
{
    start();
    ServicePointer service = newService();
    AsyncNetworkInterfaceOperation *operation = service->configure({}, {});
    const QPointer<AsyncNetworkInterfaceOperation> alive(operation);
    connect(operation, &AsyncNetworkInterfaceOperation::failure, [&service](AsyncNetworkInterfaceOperation *asyncop) {
        service.reset();
        delete asyncop;
    });
    QTRY_VERIFY(!alive);
    QVERIFY(!service);
}

void TestShippedService::slotAsksTheService()
{
    start();
    addInterface("en0", unplugged());
    const ServicePointer service = newService();
    QList<bool> connected;
    OperationPointer operation;
    connect(service.get(), &NetworkInterfaceService::interfaceConnected, [&](const NetworkInterface &networkInterface) {
        connected.append(named(*service, "en0").connected());
        operation.reset(service->configure(networkInterface, manual()));
    });
    ZopDouble::publish(interfacePath(QStringLiteral("en0")),
                       {{QStringLiteral("connected"), text("true")}, {QStringLiteral("mtu"), ZopVariant(1)}});
    QCOMPARE(connected, QList<bool> {true});
    // The disconnection is asked for, and the change of the MTU in the same update finds no address: on it goes.
    QCOMPARE(ZopDouble::commands().size(), 2);
    QCOMPARE(ZopDouble::commands().at(0).message, QStringLiteral("net_disconnected"));
    QCOMPARE(ZopDouble::commands().at(1).message, QStringLiteral("net_connected"));
}

QTEST_GUILESS_MAIN(TestShippedService)
#include "tst_shippedservice.moc"
