// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;
using namespace TetheringDaemon;

namespace {

const char *const OpensControl =
    "object /zop/services/tethering/control mode 2 flag false parent morvek::HotspotProviderZop";
const char *const OpensStatus =
    "object /zop/services/tethering/status mode 2 flag false parent morvek::HotspotProviderZop";
const char *const CachesControl = "cache /zop/services/tethering/control true connected attributesChanged";
const char *const CachesStatus = "cache /zop/services/tethering/status true connected attributeChanged";

const char *const CannotOpen = "error 1300 Could not open ZOP object:Out of order 100%s";
const char *const WriteFailed = "error 1300 Unable to write to vantor zop";

QStringList paths(const QList<ZopObject *> &objects)
{
    QStringList texts;
    for (const ZopObject *object : objects)
        texts.append(object->path());
    return texts;
}

} // namespace

class TestHotspotProviderStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void registersTheProfile();
    void waitsForTheControlObject();
    void cannotWatch();
    void opensItsObjects();
    void opensItsObjectsOnce();
    void cannotOpenTheControlObject();
    void cannotOpenTheStatusObject();
    void tellsTheFirstFailureOnly();

    void takesTheStateOver_data();
    void takesTheStateOver();
    void readsTheStateAfterItWasTold();
    void hearsOldReplies();

    void followsTheState();
    void stateIsKeptWhenUnknown_data();
    void stateIsKeptWhenUnknown();
    void otherChangesAreIgnored();
    void stateIsReadFromNoObject();
};

void TestHotspotProviderStart::registersTheProfile()
{
    QCOMPARE(QMetaType::type("WifiHotspot"), int(QMetaType::UnknownType));
    HotspotProviderZop provider;
    const int type = QMetaType::type("WifiHotspot");
    QCOMPARE(type, qMetaTypeId<WifiHotspot>());
    // So those who do not know the class can take the signal's argument.
    const QSignalSpy spy(&provider, SIGNAL(configurationChanged(WifiHotspot)));
    emit provider.configurationChanged(car());
    QCOMPARE(spy.size(), 1);
    QVERIFY(spy.first().first().value<WifiHotspot>() == car());
}

void TestHotspotProviderStart::waitsForTheControlObject()
{
    LogCapture log(7);
    const HotspotProviderZop provider;
    const QStringList onlyTheWatcher = lines({"watcher /zop/services/tethering/ parent morvek::HotspotProviderZop"});
    QCOMPARE(ZopDouble::journal(), onlyTheWatcher);
    store({{QStringLiteral("state"), text("ACTIVE")}});
    for (const char *name : {"status", "Control", "contro", "control2", "xcontrol", "control/", ""})
        announce(name);
    ZopDouble::announce(QStringLiteral("/zop/services/tethering"), QStringLiteral("control"));
    runQueued();
    QCOMPARE(ZopDouble::journal(), onlyTheWatcher);
    QVERIFY(!provider.parent());
    QVERIFY(!provider.ready());
    QVERIFY(!provider.enabled());
    QVERIFY(log.take().isEmpty());
}

void TestHotspotProviderStart::cannotWatch()
{
    for (const int verbosity : {1, 2}) {
        ZopDouble::reset();
        ZopDouble::refuse(QLatin1String(Directory), QStringLiteral("Out of order 100%s"));
        LogCapture log(verbosity);
        HotspotProviderZop provider;
        HotspotEvents events(provider);
        QCOMPARE(log.take(),
                 verbosity < 2 ? QStringList()
                               : lines({"error 1300 Attempted to initialize ZopDirWatcher"
                                        "morvek::HotspotProviderZop::HotspotProviderZop() but failed due to "
                                        "Out of order 100%s"}));
        QCOMPARE(ZopDouble::journal(), lines({"watcher /zop/services/tethering/ parent morvek::HotspotProviderZop"}));
        // Neither does it listen to what it has nor make another one.
        ZopDouble::allow(QLatin1String(Directory));
        store();
        auto *watcher = provider.findChild<ZopDirWatcher *>();
        QVERIFY(watcher);
        emit watcher->objectAdded(QStringLiteral("control"));
        runQueued();
        announce("control");
        runQueued();
        QVERIFY(provider.children().isEmpty());
        QCOMPARE(ZopDouble::journal(),
                 lines({"watcher /zop/services/tethering/ parent morvek::HotspotProviderZop",
                        "delete watcher /zop/services/tethering/"}));
        QVERIFY(!provider.ready());
        QVERIFY(events.take().isEmpty());
        QVERIFY(log.take().isEmpty());
    }
}

void TestHotspotProviderStart::opensItsObjects()
{
    const HotspotProviderZop provider;
    ZopDouble::clearJournal();
    LogCapture log(7);
    store();
    announce("control");
    QVERIFY(provider.ready());
    const QStringList opened = lines({OpensControl, OpensStatus, CachesControl, CachesStatus,
                                      "read /zop/services/tethering/status state default invalid"});
    QCOMPARE(ZopDouble::journal(), opened);
    runQueued();
    QCOMPARE(ZopDouble::journal(), opened + lines({"delete watcher /zop/services/tethering/"}));
    QCOMPARE(provider.children().size(), 2);
    QVERIFY(log.take().isEmpty());
}

// The object may have been replaced before the watcher goes, which is then told once more.
void TestHotspotProviderStart::opensItsObjectsOnce()
{
    HotspotProviderZop provider;
    HotspotEvents events(provider);
    QObject::connect(&provider, &ServiceProviderBase::readyChanged, [] { announce("control"); });
    start();
    announce("control");
    runQueued();
    announce("control");
    QCOMPARE(provider.findChildren<ZopObject *>().size(), 2);
    QCOMPARE(events.take(), lines({"ready"}));
}

void TestHotspotProviderStart::cannotOpenTheControlObject()
{
    for (const int verbosity : {1, 2}) {
        ZopDouble::reset();
        HotspotProviderZop provider;
        HotspotEvents events(provider);
        ZopDouble::clearJournal();
        ZopDouble::refuse(QLatin1String(Control), QStringLiteral("Out of order 100%s"));
        LogCapture log(verbosity);
        start({{QStringLiteral("state"), text("ACTIVE")}});
        QCOMPARE(log.take(), verbosity < 2 ? QStringList() : lines({CannotOpen}));
        QCOMPARE(ZopDouble::journal(), lines({OpensControl, OpensStatus}));
        ZopDouble::allow(QLatin1String(Control));
        announce("control");
        runQueued();
        announce("control");
        QCOMPARE(ZopDouble::journal(),
                 lines({OpensControl, OpensStatus, "delete watcher /zop/services/tethering/",
                        "delete object /zop/services/tethering/control"}));
        // The status object stays, and nobody listens to it.
        QCOMPARE(paths(provider.findChildren<ZopObject *>()), lines({Status}));
        change("state", text("INACTIVE"));
        change("state", text("ACTIVE"));
        QVERIFY(!provider.enabled());
        QVERIFY(!provider.ready());
        QVERIFY(events.take().isEmpty());
        QVERIFY(log.take().isEmpty());
        // There is nothing to write to, and no profile is written too early.
        const ConfigPointer profile = update(provider);
        QVERIFY(log.take().isEmpty());
        const EnablePointer on = switchOn(provider);
        const EnablePointer off = switchOff(provider);
        const ConfigPointer read = fetch(provider);
        const QString failed = QStringLiteral("failure -1 Unable to write to vantor zop");
        QCOMPARE(log.take(), verbosity < 2 ? QStringList() : lines({WriteFailed, WriteFailed, WriteFailed}));
        const EnableEnd onEnd(on.get());
        const EnableEnd offEnd(off.get());
        const ConfigEnd readEnd(read.get());
        const ConfigEnd profileEnd(profile.get());
        QCOMPARE(onEnd.text(), failed);
        QCOMPARE(offEnd.text(), failed);
        QCOMPARE(readEnd.text(), failed);
        QCOMPARE(profileEnd.text(), QString());
        QVERIFY(requests().isEmpty());
    }
}

void TestHotspotProviderStart::cannotOpenTheStatusObject()
{
    for (const int verbosity : {1, 2}) {
        ZopDouble::reset();
        HotspotProviderZop provider;
        HotspotEvents events(provider);
        ZopDouble::clearJournal();
        ZopDouble::refuse(QLatin1String(Status), QStringLiteral("Out of order 100%s"));
        LogCapture log(verbosity);
        start({{QStringLiteral("state"), text("ACTIVE")}});
        QCOMPARE(log.take(), verbosity < 2 ? QStringList() : lines({CannotOpen}));
        QCOMPARE(ZopDouble::journal(), lines({OpensControl, OpensStatus, CachesControl}));
        ZopDouble::allow(QLatin1String(Status));
        announce("control");
        runQueued();
        announce("control");
        QCOMPARE(ZopDouble::journal(),
                 lines({OpensControl, OpensStatus, CachesControl, "delete watcher /zop/services/tethering/",
                        "delete object /zop/services/tethering/status"}));
        QCOMPARE(paths(provider.findChildren<ZopObject *>()), lines({Control}));
        change("state", text("ACTIVE"));
        QVERIFY(!provider.enabled());
        QVERIFY(!provider.ready());
        QVERIFY(events.take().isEmpty());
        // The control object works: only a profile is not written, though its operation waits for a reply.
        const ConfigPointer read = fetch(provider);
        const int readId = lastId();
        const ConfigPointer profile = update(provider);
        const EnablePointer on = switchOn(provider);
        const EnablePointer off = switchOff(provider);
        QCOMPARE(requests(), lines({R"(retrieve_profile {"lan_type":"wlanap","type":"lan"})", "start {}", "stop"}));
        const ConfigEnd readEnd(read.get());
        const ConfigEnd profileEnd(profile.get());
        const EnableEnd onEnd(on.get());
        accept("start", lastId() - 1);
        QCOMPARE(onEnd.text(), QStringLiteral("success true"));
        accept("retrieve_profile", readId, json(CarProfile));
        QCOMPARE(readEnd.text(), QStringLiteral("success Car"));
        QCOMPARE(events.take(), lines({"profile Car"}));
        QCOMPARE(profileEnd.text(), QString());
        QVERIFY(!profile->hasError());
        QVERIFY(log.take().isEmpty());
        accept("update_profile", readId + 1);
        QCOMPARE(profileEnd.text(), QStringLiteral("success Car"));
    }
}

void TestHotspotProviderStart::tellsTheFirstFailureOnly()
{
    const HotspotProviderZop provider;
    LogCapture log(7);
    announce("control"); // neither is there
    QCOMPARE(log.take(), lines({"error 1300 Could not open ZOP object:No such object"}));
    ZopDouble::clearJournal();
    runQueued();
    QCOMPARE(ZopDouble::journal(),
             lines({"delete watcher /zop/services/tethering/", "delete object /zop/services/tethering/control"}));
}

void TestHotspotProviderStart::takesTheStateOver_data()
{
    QTest::addColumn<ZopDouble::Values>("status");
    QTest::addColumn<bool>("on");
    const QString state = QStringLiteral("state");
    QTest::newRow("ACTIVE") << ZopDouble::Values {{state, text("ACTIVE")}} << true;
    QTest::newRow("ACTIVE, whatever its encoding") << ZopDouble::Values {{state, json("ACTIVE")}} << true;
    for (const char *other : {"INACTIVE", "active", " ACTIVE", "ACTIVE ", "", "1", "true", "STARTING", "\"ACTIVE\""})
        QTest::newRow(other) << ZopDouble::Values {{state, text(other)}} << false;
    QTest::newRow("with a zero") << ZopDouble::Values {{state, raw(QByteArray("ACTIVE\0", 7))}} << false;
    QTest::newRow("bad UTF-8") << ZopDouble::Values {{state, raw("ACTIVE\xff")}} << false;
    QTest::newRow("absent") << ZopDouble::Values {} << false;
    QTest::newRow("another attribute") << ZopDouble::Values {{QStringLiteral("State"), text("ACTIVE")}} << false;
}

void TestHotspotProviderStart::takesTheStateOver()
{
    QFETCH(ZopDouble::Values, status);
    QFETCH(bool, on);
    HotspotProviderZop provider;
    HotspotEvents events(provider);
    LogCapture log(7);
    start(status);
    QCOMPARE(events.take(), on ? lines({"on", "ready"}) : lines({"ready"}));
    QCOMPARE(provider.enabled(), on);
    runQueued();
    QVERIFY(events.take().isEmpty());
    QVERIFY(log.take().isEmpty());
}

// What counts in the end is what is read.
void TestHotspotProviderStart::readsTheStateAfterItWasTold()
{
    for (const char *state : {"INACTIVE", "STOPPING"}) {
        ZopDouble::reset();
        HotspotProviderZop provider;
        HotspotEvents events(provider);
        QObject::connect(&provider, &HotspotProvider::enabledChanged, [&](bool enabled) {
            if (enabled)
                ZopDouble::store(QLatin1String(Status), {{QStringLiteral("state"), text(state)}});
        });
        start({{QStringLiteral("state"), text("ACTIVE")}});
        QCOMPARE(events.take(), lines({"on", "off", "ready"}));
    }
    // And the other way round.
    ZopDouble::reset();
    HotspotProviderZop provider;
    HotspotEvents events(provider);
    int told = 0;
    QObject::connect(&provider, &HotspotProvider::enabledChanged, [&] {
        if (++told == 1)
            ZopDouble::tell(QLatin1String(Status), {{QStringLiteral("state"), text("INACTIVE")}});
    });
    start({{QStringLiteral("state"), text("ACTIVE")}});
    QCOMPARE(events.take(), lines({"on", "off", "on", "ready"}));
}

// A control object keeps what it was told last.
void TestHotspotProviderStart::hearsOldReplies()
{
    for (const int verbosity : {2, 3}) {
        ZopDouble::reset();
        HotspotProviderZop provider;
        HotspotEvents events(provider);
        LogCapture log(verbosity);
        accept("start", 987654);
        start();
        QCOMPARE(log.take(),
                 verbosity < 3 ? QStringList() : lines({"warning 1300 No operation for message with id:987654"}));
        QCOMPARE(events.take(), lines({"ready"}));
        QVERIFY(!provider.enabled());
    }
}

void TestHotspotProviderStart::followsTheState()
{
    const HotspotProviderFixture fixture;
    LogCapture log(7);
    change("state", text("ACTIVE"));
    QCOMPARE(fixture.events->take(), lines({"on"}));
    change("state", text("ACTIVE"));
    QVERIFY(fixture.events->take().isEmpty());
    change("state", text("INACTIVE"));
    QCOMPARE(fixture.events->take(), lines({"off"}));
    change("state", text("INACTIVE"));
    QVERIFY(fixture.events->take().isEmpty());
    change("state", json("ACTIVE"));
    QCOMPARE(fixture.events->take(), lines({"on"}));
    runQueued();
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(log.take().isEmpty());
}

void TestHotspotProviderStart::stateIsKeptWhenUnknown_data()
{
    QTest::addColumn<ZopVariant>("state");
    for (const char *other : {"active", "inactive", "ACTIVE ", " INACTIVE", "", "STARTING", "true", "false", "0"})
        QTest::newRow(other) << text(other);
    QTest::newRow("with a zero") << raw(QByteArray("INACTIVE\0", 9));
    QTest::newRow("JSON") << json("\"INACTIVE\"");
    QTest::newRow("invalid") << ZopVariant();
}

void TestHotspotProviderStart::stateIsKeptWhenUnknown()
{
    QFETCH(ZopVariant, state);
    const HotspotProviderFixture fixture;
    LogCapture log(7);
    change("state", state);
    QVERIFY(!fixture.provider->enabled());
    change("state", text("ACTIVE"));
    change("state", state);
    QVERIFY(fixture.provider->enabled());
    QCOMPARE(fixture.events->take(), lines({"on"}));
    QVERIFY(log.take().isEmpty());
}

void TestHotspotProviderStart::otherChangesAreIgnored()
{
    const HotspotProviderFixture fixture;
    for (const char *name : {"State", "state2", "stat", "res", ""})
        change(name, text("ACTIVE"));
    ZopDouble::publish(QLatin1String(Control), {{QStringLiteral("state"), text("ACTIVE")}});
    QVERIFY(!fixture.provider->enabled());
    change("state", text("ACTIVE"));
    ZopDouble::publish(QLatin1String(Status), {}, {QStringLiteral("state")});
    QVERIFY(fixture.provider->enabled());
    QCOMPARE(fixture.events->take(), lines({"on"}));
    // Replies come from the control object only.
    const EnablePointer operation = switchOff(*fixture.provider);
    const EnableEnd end(operation.get());
    ZopDouble::publish(QLatin1String(Status),
                       {{QStringLiteral("res"), text("stop")},
                        {QStringLiteral("id"), ZopVariant(lastId())},
                        {QStringLiteral("err"), text("0")}});
    QCOMPARE(end.text(), QString());
}

void TestHotspotProviderStart::stateIsReadFromNoObject()
{
    const HotspotProviderFixture fixture;
    change("state", text("ACTIVE"));
    ZopDouble::store(QLatin1String(Status), {{QStringLiteral("state"), text("INACTIVE")}}); // told to nobody
    QVERIFY(fixture.provider->enabled());
    QVERIFY(ZopDouble::journal().isEmpty());
}

QTEST_GUILESS_MAIN(TestHotspotProviderStart)
#include "tst_hotspotproviderstart.moc"
