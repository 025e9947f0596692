// SPDX-License-Identifier: Apache-2.0
#include "localencoding.h"
#include "logcapture.h"
#include "metaobject.h"
#include "networkingdaemon.h"
#include "networkinterfaceproviderzop_p.h"
#include "providerevents.h"
#include "textlines.h"

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <functional>
#include <memory>
#include <utility>

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

const char *const Signature = "debug1 1300 bool morvek::NetworkInterfaceProviderZop::init()";
const char *const NotInitialized = "warning 1300 NetworkInterfaceProviderZop was not initialized successfully";

QStringList names(const NetworkInterfaceProvider &provider)
{
    QStringList names;
    const QList<NetworkInterfaceData> records = provider.interfaces();
    for (const NetworkInterfaceData &record : records)
        names.append(record.name);
    return names;
}

NetworkInterfaceData record(const NetworkInterfaceProvider &provider, const char *name)
{
    const QList<NetworkInterfaceData> records = provider.interfaces();
    for (const NetworkInterfaceData &record : records) {
        if (record.name == QLatin1String(name))
            return record;
    }
    return NetworkInterfaceData();
}

QString parentName(const NetworkInterfaceProvider &provider, const char *name)
{
    const NetworkInterfaceData child = record(provider, name);
    return child.parent ? child.parent->name : QString();
}

/*! Every interface with its parent. */
QString links(const NetworkInterfaceProvider &provider)
{
    QStringList links;
    for (const QString &name : names(provider))
        links.append(name + QLatin1Char('>') + parentName(provider, qPrintable(name)));
    return links.join(QLatin1Char(' '));
}

/*!
 * How the interfaces of a busy daemon stand on each other, after each of its steps and while it is told. The verbosity
 * is one of the two at every other step.
 */
QStringList linksOfManySteps(int verbosity, int otherVerbosity)
{
    KrelLogger::setVerbosity(verbosity);
    ZopDouble::reset();
    start();
    NetworkInterfaceProviderZop provider;
    QStringList seen;
    const auto look = [&] { seen.append(links(provider)); };
    const QList<QByteArray> names {"a", "b", "c", "d", "within"};
    QRandomGenerator random(1);
    const auto any = [&] { return names.at(random.bounded(names.size())).constData(); };
    const auto one = [&] { return names.at(random.bounded(4)).constData(); };
    for (const auto signal : {&NetworkInterfaceProvider::interfaceAdded, &NetworkInterfaceProvider::interfaceRemoved})
        QObject::connect(&provider, signal, look);
    QObject::connect(&provider, &NetworkInterfaceProvider::interfaceConnected, [&](const NetworkInterfaceData &data) {
        look();
        if (data.name == QLatin1String("within"))
            return;
        removeInterface("within");
        addInterface("within", standingOn(any()));
    });
    const QList<std::function<void()>> steps {
        [&] { addInterface(one(), standingOn(any())); },
        [&] { addInterface(one(), wired()); },
        [&] { removeInterface(one()); },
        [&] { change(one(), "parent_interface", text(random.bounded(4) ? any() : "")); },
        [&] { ZopDouble::publish(interfacePath(QLatin1String(one())), {}, {QStringLiteral("parent_interface")}); },
        [&] { ZopDouble::publish(interfacePath(QLatin1String(one())), standingOn(any())); },
        [&] { ZopDouble::announce(interfaces(), QLatin1String(one())); },
    };
    for (int i = 0; i < 500; ++i) {
        KrelLogger::setVerbosity(i % 2 ? otherVerbosity : verbosity);
        steps.at(random.bounded(steps.size()))();
        look();
    }
    return seen;
}

} // namespace

class TestNetworkInterfaceProvider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void declaresItsMethodsInOrder();
    void opensItsObjects();
    void opensInterfaceObjects();
    void knowsEverythingWhenConstructed();
    void dropsItsObjects();
    void failsToOpen_data();
    void failsToOpen();
    void isReadyBeforeItSaysSo();
    void isUnreadyBeforeItSaysSo();
    void logsItsStart();
    void opensWhatIsMissing();
    void initTwice();

    void listsByName();
    void addsAnInterface();
    void unreadableInterfaceLeavesNoTrace();
    void removesAnInterface();
    void removesOnlyWhatItKnows();
    void removalLogsNothingAndTellsTheLastRecord();
    void followsAttributes();
    void relaysConnectionChanges();
    void laterInterfaceIsFollowedToo();

    void linksParents();
    void linksLaterParents();
    void unlinksRemovedParents();
    void unknownParentIsLogged();
    void followsAChangeOfParent();
    void virtualWithoutAttribute();
    void physicalKeepsItsParent();
    void parentsInACircle();
    void parentNamesItself();
    void withdrawnParentIsLeftAtTheNextAddition();
    void slotsSeeTheParentsOfTheWholeUpdate();
    void parentsAreTheSameInSilence();
    void parentsAreReadAnewOnlyAfterChanges();

    void preferredInterface();
    void preferredInterfaceUnknown();
    void preferredInterfaceThreshold();
    void preferredInterfaceIsCleared();
    void preferredInterfaceIsNotGuessed();
    void removedPreferredInterfaceIsForgotten();
    void priorities();
    void prioritiesKeepOthers();
    void prioritiesTellEachStepOnce();
    void prioritiesTellEachListenerTheSame();
    void prioritiesThatAreNone_data();
    void prioritiesThatAreNone();
    void otherStatusAttributesAreIgnored();

    void announcedTwice();
    void announcedTwiceMovesThePreferredOne();
    void announcedTwiceLeavesAnotherPreferredOne();
    void announcedTwiceRelinksChildren();
    void announcedTwiceAndRemoved();
    void announcedAgainUnreadable();

    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();
    void slotMayChangeTheInterfaces();
};

void TestNetworkInterfaceProvider::declaresItsMethodsInOrder()
{
    QCOMPARE(ownMethods(NetworkInterfaceProviderZop::staticMetaObject),
             lines({
                 "slot onZopNetworkingStatusPublicAttributeChanged(QString,morvek::ZopVariant)",
                 "slot onZopNetworkingInterfaceAdded(QString)",
                 "slot onZopNetworkingInterfaceRemoved(QString)",
                 "slot updateParentInterfaces()",
                 "slot onControlCommandConfigureDisconnectFinished(morvek::ZopControlCommand*)",
                 "slot onControlCommandConnectFinished(morvek::ZopControlCommand*)",
             }));
    QCOMPARE(QByteArray(NetworkInterfaceProviderZop::staticMetaObject.superClass()->className()),
             QByteArray("morvek::NetworkInterfaceProvider"));
}

void TestNetworkInterfaceProvider::opensItsObjects()
{
    start();
    const NetworkInterfaceProviderZop provider;
    QVERIFY(!provider.parent());
    QVERIFY(provider.ready());
    QCOMPARE(ZopDouble::journal(),
             lines({
                 "watcher /zop/services/networking/all/interfaces parent morvek::NetworkInterfaceProviderZop",
                 "names /zop/services/networking/all/interfaces true connected objectAdded,objectRemoved",
                 "object /zop/services/networking/all/status_public mode 1 flag false parent "
                 "morvek::NetworkInterfaceProviderZop",
                 "cache /zop/services/networking/all/status_public true connected attributeChanged",
                 "object /zop/services/networking/control mode 2 flag true parent "
                 "morvek::NetworkInterfaceProviderZop",
             }));
}

void TestNetworkInterfaceProvider::opensInterfaceObjects()
{
    start();
    NetworkInterfaceProviderZop provider;
    ZopDouble::clearJournal();
    addInterface("en0", wired());
    QCOMPARE(ZopDouble::journal().mid(0, 2),
             lines({
                 "object /zop/services/networking/all/interfaces/en0 mode 1 flag false parent "
                 "morvek::NetworkInterfaceProviderZop::ZopInterfaceConnection",
                 "cache /zop/services/networking/all/interfaces/en0 true connected ",
             }));
    const QObject *connection = ZopDouble::objects(interfacePath(QStringLiteral("en0"))).first()->parent();
    QCOMPARE(connection->parent(), &provider);
}

void TestNetworkInterfaceProvider::knowsEverythingWhenConstructed()
{
    start();
    ZopDouble::store(interfacePath(QStringLiteral("en0")), wired());
    ZopDouble::store(interfacePath(QStringLiteral("vl0")), standingOn("en0"));
    ZopDouble::store(
        QLatin1String(Status),
        {{QStringLiteral("default_interface"), text("vl0")}, {QStringLiteral("priority"), json(R"(["en0","vl0"])")}});
    LogCapture log(3);
    const NetworkInterfaceProviderZop provider;
    QCOMPARE(names(provider), lines({"en0", "vl0"}));
    QCOMPARE(provider.preferredInterface().name, QStringLiteral("vl0"));
    QCOMPARE(record(provider, "en0").priority, 1);
    QCOMPARE(record(provider, "vl0").priority, 2);
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en0"));
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceProvider::dropsItsObjects()
{
    start();
    {
        NetworkInterfaceProviderZop provider;
        addInterface("en0", wired());
    }
    QStringList dropped = ZopDouble::journal().filter(QRegularExpression(QStringLiteral("^delete")));
    dropped.sort();
    QCOMPARE(dropped,
             lines({
                 "delete object /zop/services/networking/all/interfaces/en0",
                 "delete object /zop/services/networking/all/status_public",
                 "delete object /zop/services/networking/control",
                 "delete watcher /zop/services/networking/all/interfaces",
             }));
}

void TestNetworkInterfaceProvider::failsToOpen_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("journal");
    const QStringList watched = lines({
        "watcher /zop/services/networking/all/interfaces parent morvek::NetworkInterfaceProviderZop",
        "names /zop/services/networking/all/interfaces true connected objectAdded,objectRemoved",
    });
    const QStringList status = lines({
        "object /zop/services/networking/all/status_public mode 1 flag false parent "
        "morvek::NetworkInterfaceProviderZop",
    });
    QTest::newRow("watcher") << interfaces()
                             << "debug1 1300 Error creating ZOP dirwatcher "
                                "\"/zop/services/networking/all/interfaces\""
                             << watched.mid(0, 1) + lines({"delete watcher /zop/services/networking/all/interfaces"});
    QTest::newRow("status") << QString::fromLatin1(Status)
                            << "debug1 1300 Error creating ZOP object "
                               "\"/zop/services/networking/all/status_public\""
                            << watched + status + lines({"delete object /zop/services/networking/all/status_public"});
    QTest::newRow("control") << QString::fromLatin1(Control)
                             << "debug1 1300 Error creating ZOP object \"/zop/services/networking/control\""
                             << watched + status
            + lines({
                "cache /zop/services/networking/all/status_public true connected attributeChanged",
                "object /zop/services/networking/control mode 2 flag true parent "
                "morvek::NetworkInterfaceProviderZop",
                "delete object /zop/services/networking/control",
            });
}

void TestNetworkInterfaceProvider::failsToOpen()
{
    QFETCH(QString, path);
    QFETCH(QString, line);
    QFETCH(QStringList, journal);
    const QStringList debugLines {QString::fromLatin1(Signature), line,
                                  QStringLiteral("debug1 1300 Service is ready? : false")};
    start();
    ZopDouble::refuse(path, QStringLiteral("Out of order"));
    for (const int verbosity : {2, 3, 5, 6}) {
        ZopDouble::clearJournal();
        LogCapture log(verbosity);
        const NetworkInterfaceProviderZop provider;
        QVERIFY(!provider.ready());
        QCOMPARE(ZopDouble::journal(), journal);
        QStringList expected;
        if (verbosity == 6)
            expected += debugLines;
        if (verbosity >= 3)
            expected.append(QString::fromLatin1(NotInitialized));
        QCOMPARE(log.take(), expected);
    }
}

void TestNetworkInterfaceProvider::isReadyBeforeItSaysSo()
{
    start();
    NetworkInterfaceProviderZop provider;
    provider.setReady(false);
    LogCapture log(6);
    QStringList linesBefore;
    connect(&provider, &ServiceProviderBase::readyChanged, &provider, [&] { linesBefore = log.take(); });
    QVERIFY(provider.init());
    QCOMPARE(linesBefore, lines({Signature}));
    QCOMPARE(log.take(), lines({"debug1 1300 Service is ready? : true"}));
}

void TestNetworkInterfaceProvider::isUnreadyBeforeItSaysSo()
{
    start();
    ZopDouble::refuse(QString::fromLatin1(Control), QStringLiteral("Out of order"));
    NetworkInterfaceProviderZop provider;
    provider.setReady(true);
    LogCapture log(6);
    QStringList linesBefore;
    connect(&provider, &ServiceProviderBase::readyChanged, &provider, [&] { linesBefore = log.take(); });
    QVERIFY(!provider.init());
    QCOMPARE(linesBefore,
             lines({Signature, "debug1 1300 Error creating ZOP object \"/zop/services/networking/control\""}));
    QCOMPARE(log.take(), lines({"debug1 1300 Service is ready? : false", NotInitialized}));
}

void TestNetworkInterfaceProvider::logsItsStart()
{
    start();
    LogCapture log(6);
    const NetworkInterfaceProviderZop provider;
    QCOMPARE(log.take(), lines({Signature, "debug1 1300 Service is ready? : true"}));
    LogCapture quiet(5);
    const NetworkInterfaceProviderZop another;
    QVERIFY(quiet.take().isEmpty());
}

void TestNetworkInterfaceProvider::opensWhatIsMissing()
{
    start();
    ZopDouble::refuse(interfaces(), QStringLiteral("Out of order"));
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    ZopDouble::allow(interfaces());
    ZopDouble::refuse(QLatin1String(Status), QStringLiteral("Out of order"));
    QVERIFY(!provider.init());
    addInterface("en0", wired());
    QCOMPARE(events.take(), lines({"added en0"}));
    ZopDouble::allow(QLatin1String(Status));
    ZopDouble::refuse(QLatin1String(Control), QStringLiteral("Out of order"));
    QVERIFY(!provider.init());
    changeStatus("default_interface", text("en0"));
    QCOMPARE(events.take(), lines({"preferred en0"}));
    ZopDouble::allow(QLatin1String(Control));
    ZopDouble::clearJournal();
    QVERIFY(provider.init());
    QVERIFY(provider.ready());
    QCOMPARE(events.take(), lines({"ready"}));
    QCOMPARE(ZopDouble::journal(),
             lines({
                 "object /zop/services/networking/control mode 2 flag true parent "
                 "morvek::NetworkInterfaceProviderZop",
             }));
}

void TestNetworkInterfaceProvider::initTwice()
{
    start();
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    ZopDouble::clearJournal();
    QVERIFY(provider.init());
    QVERIFY(ZopDouble::journal().isEmpty());
    QVERIFY(events.take().isEmpty());
}

void TestNetworkInterfaceProvider::listsByName()
{
    start();
    NetworkInterfaceProviderZop provider;
    QVERIFY(provider.interfaces().isEmpty());
    for (const char *name : {"wl0", "en1", "EN0", "en10", "en0"})
        addInterface(name, wired());
    changeStatus("priority", json(R"(["wl0","en10","en1"])"));
    QCOMPARE(names(provider), lines({"EN0", "en0", "en1", "en10", "wl0"}));
}

void TestNetworkInterfaceProvider::addsAnInterface()
{
    start();
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    LogCapture log(7);
    addInterface("en0", wired());
    QCOMPARE(events.take(), lines({"added en0"}));
    QVERIFY(log.take().isEmpty());
    const NetworkInterfaceData added = events.records().first();
    QCOMPARE(added.macAddress, QStringLiteral("02:00:00:00:00:01"));
    QCOMPARE(added.priority, -1);
    QVERIFY(added == record(provider, "en0"));
}

void TestNetworkInterfaceProvider::unreadableInterfaceLeavesNoTrace()
{
    start();
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    ZopDouble::refuse(interfacePath(QStringLiteral("en0")), QStringLiteral("Out of order"));
    LogCapture log(6);
    addInterface("en0", wired());
    QCOMPARE(log.take(),
             lines({"debug1 1300 Unable to read ZOP network interface object "
                    "\"/zop/services/networking/all/interfaces/en0\""}));
    KrelLogger::setVerbosity(5);
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QVERIFY(log.take().isEmpty());
    QVERIFY(events.take().isEmpty());
    QVERIFY(provider.interfaces().isEmpty());
    QVERIFY(provider.findChildren<ZopObject *>().size() == 2);
    removeInterface("en0");
    QVERIFY(events.take().isEmpty());
}

void TestNetworkInterfaceProvider::removesAnInterface()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    ProviderEvents events(provider);
    removeInterface("en0");
    QCOMPARE(events.take(), lines({"removed en0"}));
    QCOMPARE(names(provider), lines({"en1"}));
    QVERIFY(ZopDouble::objects(interfacePath(QStringLiteral("en0"))).isEmpty());
    addInterface("en0", wired());
    QCOMPARE(events.take(), lines({"added en0"}));
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(events.take(), lines({"changed en0"}));
}

void TestNetworkInterfaceProvider::removesOnlyWhatItKnows()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    ProviderEvents events(provider);
    LogCapture log(7);
    removeInterface("en1");
    removeInterface("en");
    QVERIFY(events.take().isEmpty());
    QVERIFY(log.take().isEmpty());
    QCOMPARE(names(provider), lines({"en0"}));
}

void TestNetworkInterfaceProvider::removalLogsNothingAndTellsTheLastRecord()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    changeStatus("priority", json(R"(["x","en0"])"));
    ProviderEvents events(provider);
    LogCapture log(7);
    QStringList namesThen;
    connect(&provider, &NetworkInterfaceProvider::interfaceRemoved, [&] { namesThen = names(provider); });
    const NetworkInterfaceData before = record(provider, "en0");
    removeInterface("en0");
    QVERIFY(events.records().first() == before);
    QCOMPARE(before.priority, 2);
    QVERIFY(namesThen.isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceProvider::followsAttributes()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    ProviderEvents events(provider);
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(events.take(), lines({"changed en0"}));
    QCOMPARE(events.records().first().maxTransmissionUnit, 9000);
    QCOMPARE(record(provider, "en0").maxTransmissionUnit, 9000);
    QCOMPARE(record(provider, "en1").maxTransmissionUnit, 1500);
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(events.take(), lines({"changed en0"}));
}

void TestNetworkInterfaceProvider::relaysConnectionChanges()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    ProviderEvents events(provider);
    change("en0", "connected", text("false"));
    QCOMPARE(events.take(), lines({"disconnected en0"}));
    QCOMPARE(events.records().first().connected, false);
    change("en0", "connected", text("true"));
    QCOMPARE(events.take(), lines({"connected en0"}));
    QCOMPARE(events.records().first().connected, true);
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), unplugged());
    QCOMPARE(events.take(), lines({"disconnected en0", "changed en0"}));
}

void TestNetworkInterfaceProvider::laterInterfaceIsFollowedToo()
{
    start();
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    addInterface("en0", standingOn("br0"));
    addInterface("br0", wired());
    events.take();
    change("en0", "parent_interface", text("br0"));
    QCOMPARE(events.take(), lines({"changed en0"}));
    QCOMPARE(parentName(provider, "en0"), QStringLiteral("br0"));
}

void TestNetworkInterfaceProvider::linksParents()
{
    start();
    NetworkInterfaceProviderZop provider;
    LogCapture log(7);
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    addInterface("vl1", standingOn("vl0"));
    QVERIFY(log.take().isEmpty());
    QCOMPARE(parentName(provider, "en0"), QString());
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en0"));
    QCOMPARE(record(provider, "vl1").parent->parent->name, QStringLiteral("en0"));
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(record(provider, "vl0").parent->maxTransmissionUnit, 9000);
}

void TestNetworkInterfaceProvider::linksLaterParents()
{
    start();
    NetworkInterfaceProviderZop provider;
    ProviderEvents events(provider);
    LogCapture log(6);
    addInterface("vl0", standingOn("en0"));
    QCOMPARE(log.take(),
             lines({"debug1 1300 Interface \"vl0\" has a parent interface \"en0\" which is not in our list of known "
                    "interfaces.Cannot setup parent relationship."}));
    QCOMPARE(record(provider, "vl0").isVirtual, true);
    QVERIFY(!record(provider, "vl0").parent);
    addInterface("en0", wired());
    QVERIFY(log.take().isEmpty());
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en0"));
    QCOMPARE(events.take(), lines({"added vl0", "added en0"}));
}

void TestNetworkInterfaceProvider::unlinksRemovedParents()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    const NetworkInterfaceData copy = record(provider, "vl0");
    ProviderEvents events(provider);
    LogCapture log(6);
    QString parentThen = QStringLiteral("not told");
    connect(&provider, &NetworkInterfaceProvider::interfaceRemoved, [&] { parentThen = parentName(provider, "vl0"); });
    removeInterface("en0");
    QCOMPARE(log.take(),
             lines({"debug1 1300 Interface \"vl0\" has a parent interface \"en0\" which is not in our list of known "
                    "interfaces.Cannot setup parent relationship."}));
    QCOMPARE(events.take(), lines({"removed en0"}));
    QCOMPARE(parentThen, QString());
    QVERIFY(!parentThen.contains(QLatin1String("not")));
    QVERIFY(!record(provider, "vl0").parent);
    QVERIFY(!copy.parent);
}

void TestNetworkInterfaceProvider::unknownParentIsLogged()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("vl1", standingOn("en1"));
    addInterface("vl0", standingOn("en0"));
    LogCapture log(5);
    provider.updateParentInterfaces();
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(6);
    provider.updateParentInterfaces();
    QCOMPARE(log.take(),
             lines({
                 "debug1 1300 Interface \"vl0\" has a parent interface \"en0\" which is not in our list of known "
                 "interfaces.Cannot setup parent relationship.",
                 "debug1 1300 Interface \"vl1\" has a parent interface \"en1\" which is not in our list of known "
                 "interfaces.Cannot setup parent relationship.",
             }));
}

void TestNetworkInterfaceProvider::followsAChangeOfParent()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    addInterface("vl0", wired());
    ProviderEvents events(provider);
    change("vl0", "parent_interface", text("en0"));
    QCOMPARE(events.take(), lines({"changed vl0"}));
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en0"));
    QCOMPARE(events.records().first().parent->name, QStringLiteral("en0"));
    change("vl0", "parent_interface", text("en1"));
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en1"));
    change("vl0", "parent_interface", text(""));
    QVERIFY(!record(provider, "vl0").parent);
    QCOMPARE(record(provider, "vl0").isVirtual, false);
    change("en0", "parent_interface", text("en1"));
    QCOMPARE(parentName(provider, "en0"), QStringLiteral("en1"));
}

// The record says what was told last, the object what it holds: between the two an attribute may be gone.
void TestNetworkInterfaceProvider::virtualWithoutAttribute()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    ZopDouble::publish(interfacePath(QStringLiteral("vl0")), {}, {QStringLiteral("parent_interface")});
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("en0"));
    LogCapture log(6);
    provider.updateParentInterfaces();
    QCOMPARE(log.take(),
             lines({"debug1 1300 Interface \"vl0\" has a parent interface \"\" which is not in our list of known "
                    "interfaces.Cannot setup parent relationship."}));
    QVERIFY(!record(provider, "vl0").parent);
    QCOMPARE(record(provider, "vl0").isVirtual, true);
}

void TestNetworkInterfaceProvider::physicalKeepsItsParent()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    ZopDouble::store(interfacePath(QStringLiteral("en1")), {{QStringLiteral("parent_interface"), text("en0")}});
    provider.updateParentInterfaces();
    QVERIFY(!record(provider, "en1").parent);
}

void TestNetworkInterfaceProvider::parentsInACircle()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("vl0", standingOn("vl1"));
    addInterface("vl1", standingOn("vl0"));
    QCOMPARE(parentName(provider, "vl0"), QStringLiteral("vl1"));
    QCOMPARE(parentName(provider, "vl1"), QStringLiteral("vl0"));
    const NetworkInterfaceData first = record(provider, "vl0");
    QVERIFY(first == record(provider, "vl0"));
    QVERIFY(first != record(provider, "vl1"));
    removeInterface("vl1");
    QVERIFY(!first.parent);
}

void TestNetworkInterfaceProvider::parentNamesItself()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("vl0", standingOn("vl0"));
    const NetworkInterfaceData held = record(provider, "vl0");
    QCOMPARE(held.parent->parent->parent->name, QStringLiteral("vl0"));
    QVERIFY(held == record(provider, "vl0"));
    removeInterface("vl0");
    QVERIFY(!held.parent);
}

void TestNetworkInterfaceProvider::withdrawnParentIsLeftAtTheNextAddition()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    ZopDouble::publish(interfacePath(QStringLiteral("vl0")), {}, {QStringLiteral("parent_interface")});
    QCOMPARE(links(provider), QStringLiteral("en0> vl0>en0"));
    addInterface("en1", wired());
    QCOMPARE(links(provider), QStringLiteral("en0> en1> vl0>"));
}

// The notice of the connection comes first, when the record does not know the new parent yet.
void TestNetworkInterfaceProvider::slotsSeeTheParentsOfTheWholeUpdate()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    addInterface("vl0", standingOn("en0"));
    QStringList seen;
    connect(&provider, &NetworkInterfaceProvider::interfaceConnected, [&] {
        seen.append(links(provider));
        addInterface("en2", wired());
        seen.append(links(provider));
    });
    ZopDouble::publish(interfacePath(QStringLiteral("vl0")), standingOn("en1"));
    QCOMPARE(seen, lines({"en0> en1> vl0>en0", "en0> en1> en2> vl0>en1"}));
    QCOMPARE(links(provider), QStringLiteral("en0> en1> en2> vl0>en1"));
}

// Where each walk is logged, all interfaces are looked at.
void TestNetworkInterfaceProvider::parentsAreTheSameInSilence()
{
    LogCapture log(6);
    const QStringList logged = linksOfManySteps(6, 6);
    QVERIFY(log.take().size() > 1000);
    QCOMPARE(linksOfManySteps(5, 6), logged);
    log.take();
    QCOMPARE(linksOfManySteps(5, 5), logged);
    QVERIFY(log.take().filter(QStringLiteral("parent")).isEmpty());
}

// Thousands of interfaces may come one after the other.
void TestNetworkInterfaceProvider::parentsAreReadAnewOnlyAfterChanges()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    addInterface("vl1", standingOn("en0"));
    const auto readsOfAddition = [](const char *name) {
        ZopDouble::clearJournal();
        addInterface(name, wired());
        return ZopDouble::journal().filter(QStringLiteral(" parent_interface ")).size();
    };
    QCOMPARE(readsOfAddition("en1"), 1); // its own
    change("vl0", "connected", text("true"));
    change("vl0", "mtu", text("1400"));
    QCOMPARE(readsOfAddition("en2"), 1);
    ZopDouble::publish(interfacePath(QStringLiteral("vl0")), {}, {QStringLiteral("parent_interface")});
    QCOMPARE(readsOfAddition("en3"), 3);
    QCOMPARE(readsOfAddition("en4"), 1);
}

void TestNetworkInterfaceProvider::preferredInterface()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("wl0", wired());
    QVERIFY(provider.preferredInterface().isEmpty());
    ProviderEvents events(provider);
    LogCapture log(7);
    QString preferredThen;
    connect(&provider, &NetworkInterfaceProvider::preferredInterfaceChanged,
            [&] { preferredThen = provider.preferredInterface().name; });
    changeStatus("default_interface", text("wl0"));
    QCOMPARE(events.take(), lines({"preferred wl0"}));
    QCOMPARE(preferredThen, QStringLiteral("wl0"));
    QVERIFY(events.records().first() == record(provider, "wl0"));
    changeStatus("default_interface", text("en0"));
    changeStatus("default_interface", text("en0"));
    QCOMPARE(events.take(), lines({"preferred en0", "preferred en0"}));
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(provider.preferredInterface().maxTransmissionUnit, 9000);
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceProvider::preferredInterfaceUnknown()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    LogCapture log(7);
    changeStatus("default_interface", text("en9"));
    QCOMPARE(events.take(), lines({"preferred -"}));
    QCOMPARE(log.take(),
             lines({"warning 1300 Preferred network interface changed to \"en9\" which is not in the list of known "
                    "interfaces."}));
    QVERIFY(provider.preferredInterface().isEmpty());
}

void TestNetworkInterfaceProvider::preferredInterfaceThreshold()
{
    const LocalEncoding encoding("UTF-8");
    start();
    NetworkInterfaceProviderZop provider;
    LogCapture log(2);
    changeStatus("default_interface", text("en9"));
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    changeStatus("default_interface", text("100% en\xc3\xa9"));
    QCOMPARE(log.take(),
             lines({"warning 1300 Preferred network interface changed to \"100% en\xc3\xa9\" which is not in the list "
                    "of known interfaces."}));
}

void TestNetworkInterfaceProvider::preferredInterfaceIsCleared()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    LogCapture log(7);
    changeStatus("default_interface", text(""));
    QCOMPARE(events.take(), lines({"preferred -"}));
    QVERIFY(provider.preferredInterface().isEmpty());
    QVERIFY(log.take().isEmpty());
}

// The name counts when it is told; an interface of that name that comes later is not preferred until it is told again.
void TestNetworkInterfaceProvider::preferredInterfaceIsNotGuessed()
{
    start();
    NetworkInterfaceProviderZop provider;
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    addInterface("en0", wired());
    QCOMPARE(events.take(), lines({"added en0"}));
    QVERIFY(provider.preferredInterface().isEmpty());
}

void TestNetworkInterfaceProvider::removedPreferredInterfaceIsForgotten()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("wl0", wired());
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    removeInterface("wl0");
    QCOMPARE(provider.preferredInterface().name, QStringLiteral("en0"));
    QString preferredThen = QStringLiteral("not told");
    connect(&provider, &NetworkInterfaceProvider::interfaceRemoved,
            [&] { preferredThen = provider.preferredInterface().name; });
    removeInterface("en0");
    QCOMPARE(events.take(), lines({"removed wl0", "removed en0"}));
    QCOMPARE(preferredThen, QString());
    QVERIFY(provider.preferredInterface().isEmpty());
    addInterface("en0", wired());
    QVERIFY(provider.preferredInterface().isEmpty());
    changeStatus("default_interface", text("en0"));
    QCOMPARE(provider.preferredInterface().name, QStringLiteral("en0"));
}

void TestNetworkInterfaceProvider::priorities()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    addInterface("b", wired());
    ProviderEvents events(provider);
    LogCapture log(7);
    changeStatus("priority", json(R"(["b","x","a"])"));
    QCOMPARE(events.take(), lines({"changed b", "changed a"}));
    QCOMPARE(events.records().at(0).priority, 1);
    QCOMPARE(events.records().at(1).priority, 3);
    QCOMPARE(record(provider, "b").priority, 1);
    QCOMPARE(record(provider, "a").priority, 3);
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceProvider::prioritiesKeepOthers()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    addInterface("b", wired());
    changeStatus("priority", json(R"(["a","b"])"));
    ProviderEvents events(provider);
    changeStatus("priority", json(R"(["b"])"));
    QCOMPARE(events.take(), lines({"changed b"}));
    QCOMPARE(record(provider, "a").priority, 1);
    QCOMPARE(record(provider, "b").priority, 1);
    changeStatus("priority", json(R"(["b","b"])"));
    QCOMPARE(events.take(), lines({"changed b", "changed b"}));
    QCOMPARE(record(provider, "b").priority, 2);
}

// A slot that is told of the first priority still sees the second as it was.
void TestNetworkInterfaceProvider::prioritiesTellEachStepOnce()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    addInterface("b", wired());
    QList<int> seen;
    connect(&provider, &NetworkInterfaceProvider::interfaceConfigurationChanged,
            [&] { seen.append(record(provider, "b").priority); });
    changeStatus("priority", json(R"(["a","b"])"));
    QCOMPARE(seen, (QList<int> {-1, 2}));
}

// A slot may run an event loop, in which the interface changes again.
void TestNetworkInterfaceProvider::prioritiesTellEachListenerTheSame()
{
    start();
    const NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    QList<int> heard;
    bool nested = false;
    connect(&provider, &NetworkInterfaceProvider::interfaceConfigurationChanged, [&] {
        if (!std::exchange(nested, true))
            change("a", "mtu", ZopVariant(9000));
    });
    connect(&provider, &NetworkInterfaceProvider::interfaceConfigurationChanged,
            [&](const NetworkInterfaceData &data) { heard.append(data.maxTransmissionUnit); });
    changeStatus("priority", json(R"(["a"])"));
    QCOMPARE(heard, QList<int>({9000, 1500}));
}

void TestNetworkInterfaceProvider::prioritiesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("empty array") << QByteArray("[]");
    QTest::newRow("object") << QByteArray(R"({"0":"a"})");
    QTest::newRow("string") << QByteArray(R"("a")");
    QTest::newRow("no JSON") << QByteArray("a,b");
    QTest::newRow("cut off") << QByteArray(R"(["a","b")");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("other types") << QByteArray(R"([1,null,true,["a"],{"a":"b"}])");
    QTest::newRow("too deep") << QByteArray(5000, '[') + QByteArray(5000, ']');
    QTest::newRow("invalid UTF-8") << QByteArray("[\"\xff\xfe\"]");
}

void TestNetworkInterfaceProvider::prioritiesThatAreNone()
{
    QFETCH(QByteArray, value);
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    ProviderEvents events(provider);
    changeStatus("priority", json(value));
    QVERIFY(events.take().isEmpty());
    QCOMPARE(record(provider, "a").priority, -1);
    changeStatus("priority", json(R"(["a"])"));
    QCOMPARE(events.take(), lines({"changed a"}));
}

void TestNetworkInterfaceProvider::otherStatusAttributesAreIgnored()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    ProviderEvents events(provider);
    LogCapture log(7);
    for (const char *name : {"Default_interface", "priorities", "default", ""}) {
        changeStatus(name, text("a"));
        changeStatus(name, json(R"(["a"])"));
    }
    QVERIFY(events.take().isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestNetworkInterfaceProvider::announcedTwice()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    ProviderEvents events(provider);
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QCOMPARE(events.take(), lines({"added en0"}));
    QCOMPARE(names(provider), lines({"en0"}));
    // The earlier connection stays, and tells too.
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(events.take(), lines({"changed en0", "changed en0"}));
}

void TestNetworkInterfaceProvider::announcedTwiceMovesThePreferredOne()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QCOMPARE(events.take(), lines({"added en0"}));
    // Only the connection that is listed gets a priority.
    changeStatus("priority", json(R"(["en0"])"));
    QCOMPARE(provider.preferredInterface().priority, 1);
}

void TestNetworkInterfaceProvider::announcedTwiceLeavesAnotherPreferredOne()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("wl0", wired());
    changeStatus("default_interface", text("wl0"));
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QCOMPARE(provider.preferredInterface().name, QStringLiteral("wl0"));
    changeStatus("default_interface", text(""));
    addInterface("en1", wired());
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QVERIFY(provider.preferredInterface().isEmpty());
}

void TestNetworkInterfaceProvider::announcedTwiceRelinksChildren()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("vl0", standingOn("en0"));
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    changeStatus("priority", json(R"(["en0"])"));
    QCOMPARE(record(provider, "vl0").parent->priority, 1);
}

void TestNetworkInterfaceProvider::announcedTwiceAndRemoved()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    addInterface("en1", wired());
    changeStatus("default_interface", text("en0"));
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    ProviderEvents events(provider);
    removeInterface("en0");
    QCOMPARE(events.take(), lines({"removed en0"}));
    QCOMPARE(names(provider), lines({"en1"}));
    QVERIFY(provider.preferredInterface().isEmpty());
    QVERIFY(ZopDouble::objects(interfacePath(QStringLiteral("en0"))).isEmpty());
    QCOMPARE(ZopDouble::objects(interfacePath(QStringLiteral("en1"))).size(), 1);
    removeInterface("en0");
    QVERIFY(events.take().isEmpty());
    addInterface("en0", wired());
    change("en0", "mtu", ZopVariant(9000));
    QCOMPARE(events.take(), lines({"added en0", "changed en0"}));
    removeInterface("en0"); // must not end the former connections once more
    QCOMPARE(events.take(), lines({"removed en0"}));
}

void TestNetworkInterfaceProvider::announcedAgainUnreadable()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    ProviderEvents events(provider);
    ZopDouble::refuse(interfacePath(QStringLiteral("en0")), QStringLiteral("Out of order"));
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    QVERIFY(events.take().isEmpty());
    QCOMPARE(names(provider), lines({"en0"}));
    QCOMPARE(provider.preferredInterface().name, QStringLiteral("en0"));
}

void TestNetworkInterfaceProvider::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("changed by an attribute") << 0;
    QTest::newRow("changed by a priority") << 1;
    QTest::newRow("preferred") << 2;
    QTest::newRow("connected") << 3;
    QTest::newRow("disconnected") << 4;
    QTest::newRow("added") << 5;
    QTest::newRow("removed") << 6;
}

void TestNetworkInterfaceProvider::mayBeDeletedInAnySlot()
{
    using Signal = void (NetworkInterfaceProvider::*)(const NetworkInterfaceData &);
    QFETCH(int, which);
    const QList<Signal> toldBy {
        &NetworkInterfaceProvider::interfaceConfigurationChanged,
        &NetworkInterfaceProvider::interfaceConfigurationChanged,
        &NetworkInterfaceProvider::preferredInterfaceChanged,
        &NetworkInterfaceProvider::interfaceConnected,
        &NetworkInterfaceProvider::interfaceDisconnected,
        &NetworkInterfaceProvider::interfaceAdded,
        &NetworkInterfaceProvider::interfaceRemoved,
    };
    const QList<std::function<void()>> causes {
        [] { change("en0", "mtu", ZopVariant(1)); },
        [] { changeStatus("priority", json(R"(["en0","en1","en0"])")); },
        [] { changeStatus("default_interface", text("en0")); },
        [] { ZopDouble::publish(interfacePath(QStringLiteral("en0")), standingOn("en1")); },
        [] { ZopDouble::publish(interfacePath(QStringLiteral("en0")), unplugged()); },
        [] { addInterface("en2", wired()); },
        [] { removeInterface("en0"); },
    };
    start();
    auto provider = std::make_unique<NetworkInterfaceProviderZop>();
    addInterface("en0", wired());
    addInterface("en1", wired());
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    connect(provider.get(), toldBy.at(which), [&provider] { provider.reset(); });
    causes.at(which)();
    QVERIFY(!provider);
}

void TestNetworkInterfaceProvider::slotMayChangeTheInterfaces()
{
    start();
    NetworkInterfaceProviderZop provider;
    addInterface("a", wired());
    addInterface("b", wired());
    addInterface("c", wired());
    ProviderEvents events(provider);
    connect(&provider, &NetworkInterfaceProvider::interfaceConfigurationChanged, [](const NetworkInterfaceData &data) {
        if (data.name == QLatin1String("a"))
            removeInterface("b");
    });
    changeStatus("priority", json(R"(["a","b","c"])"));
    QCOMPARE(events.take(), lines({"changed a", "removed b", "changed c"}));
    // An interface that comes within the notice of a removal is another one of the same name.
    QStringList namesThen;
    connect(&provider, &NetworkInterfaceProvider::interfaceRemoved, [&] {
        namesThen = names(provider);
        addInterface("a", wired());
    });
    removeInterface("a");
    QCOMPARE(namesThen, lines({"c"}));
    QCOMPARE(names(provider), lines({"a", "c"}));
    QCOMPARE(ZopDouble::objects(interfacePath(QStringLiteral("a"))).size(), 1);
}

QTEST_GUILESS_MAIN(TestNetworkInterfaceProvider)
#include "tst_networkinterfaceprovider.moc"
