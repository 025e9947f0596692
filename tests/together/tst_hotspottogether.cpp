// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotservice.h"
#include "krellogger.h"
#include "networklibraryexports.h"
#include "servicepointer.h"
#include "watched.h"

#include <csignal>

using namespace morvek;

namespace {

const QString ControlPath = QStringLiteral("/zop/services/tethering/control");
const QString StatusPath = QStringLiteral("/zop/services/tethering/status");

using Fetch = Watched<AsyncHotspotConfigOperation>;
using Update = Watched<AsyncHotspotConfigOperation>;
using Switch = Watched<AsyncHotspotEnableOperation>;
using Application = HotSpotServicePointer;

/*! The profile of the scenario headunit. */
WifiHotspot car()
{
    WifiHotspot car;
    car.setName(QStringLiteral("Morvek Car"));
    car.setPassphrase(QStringLiteral("drive safely 8"));
    car.setSecurityType(WifiSecurityProtocolWpa2);
    car.setBand(WifiBand5GHz);
    car.setMaxClients(10);
    car.setInactivityTime(600);
    return car;
}

WifiHotspot passengers()
{
    WifiHotspot passengers;
    passengers.setName(QString::fromUtf8("R\u00fccksitz \U0001f697"));
    passengers.setPassphrase(QStringLiteral("are we there yet?"));
    passengers.setSecurityType(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
    passengers.setBand(WifiBand2_4GHz);
    passengers.setMaxClients(4);
    passengers.setInactivityTime(0);
    passengers.setPrivacy(true);
    passengers.setBlockConn(true);
    return passengers;
}

/*! A tethering manager that answers as a test says, in this process. */
class ScriptedManager : public QObject
{
public:
    using Reply = QMap<QString, ZopVariant>;

    /*! On a root of its own. */
    ScriptedManager()
    {
        qputenv("ZOP_ROOT", m_folder.filePath(QStringLiteral("root")).toUtf8());
        m_status = std::make_unique<ZopObject>(StatusPath, ZopObject::Publish, false);
        m_control = std::make_unique<ZopObject>(ControlPath, ZopObject::Publish, true);
        connect(m_control.get(), &ZopObject::attributesChanged, this, &ScriptedManager::answer);
    }

    /*! What comes beside "id" and "peer". */
    Reply reply;

private:
    void answer(const ZopChangeset &request)
    {
        ZopChangeset changes;
        changes.assignments = reply;
        for (const QString &name : {QStringLiteral("id"), QStringLiteral("peer")})
            changes.assignments.insert(name, request.assignments.value(name));
        m_control->setAttributes(changes);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<ZopObject> m_status;
    std::unique_ptr<ZopObject> m_control;
};

ZopVariant json(const char *text)
{
    return ZopVariant(QByteArray(text), "json");
}

} // namespace

/*! The hotspot service of the shipped library on the shipped platform, against the manager as it is shipped. */
class HotspotTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void becomesReadyFromTheEventLoop();
    void waitsForTheManager();
    void readsTheProfile();
    void startsAndStops();
    void isToldWhoeverSwitches();
    void startsWithTheProfileThatWasRead();
    void stopsByItself();
    void writesAProfile();
    void tellsARefusedProfile();
    void keepsTheProfileAcrossARestart();
    void identifiersOfApplicationsCollide();
    void outlivesTheManager();
    void managerDiesWithARequestOpen();
    void madeWhileTheManagerIsDead();
    void runningFromTheStart();
    void hostileProfiles_data();
    void hostileProfiles();
    void repliesOfAnotherKind_data();
    void repliesOfAnotherKind();
    void deletedInItsOwnSlot_data();
    void deletedInItsOwnSlot();
    void operationsEndWithoutTheirService();

private:
    bool start();
    Application application();

    std::unique_ptr<DaemonFixture> m_daemon;
};

void HotspotTogetherTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(start());
}

void HotspotTogetherTest::cleanup()
{
    KrelLogger::setSink(nullptr);
    KrelLogger::setVerbosity(2);
    m_daemon.reset();
}

bool HotspotTogetherTest::start()
{
    return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")});
}

/*! A service that is ready, unless the test has failed. */
Application HotspotTogetherTest::application()
{
    Application service(newHotSpotService());
    if (!service->ready())
        QSignalSpy(service.get(), &ServiceBase::readyChanged).wait(Patience);
    return service;
}

void HotspotTogetherTest::becomesReadyFromTheEventLoop()
{
    const Application service(newHotSpotService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    QSignalSpy enabled(service.get(), &HotSpotService::enabledChanged);
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    Fetch early(service->configuration());
    QCOMPARE(early.outcome(), QStringLiteral("-1 The service is not ready."));
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, Patience);
    QCOMPARE(ready.first().first().toBool(), true);
    QVERIFY(service->ready());
    QVERIFY(!service->enabled());
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(enabled.isEmpty());
}

void HotspotTogetherTest::waitsForTheManager()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->makeRoot());
    const Application service(newHotSpotService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    Switch early(service->setEnabled(true));
    QCOMPARE(early.outcome(), QStringLiteral("-1 The service is not ready."));
    QVERIFY(ready.isEmpty());
    QVERIFY(start());
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, Patience);
}

void HotspotTogetherTest::readsTheProfile()
{
    const Application service = application();
    QStringList order;
    connect(service.get(), &HotSpotService::configurationChanged, this, [&order](const WifiHotspot &profile) {
        order += QStringLiteral("changed");
        QVERIFY(profile == car());
    });
    Fetch fetch(service->configuration());
    connect(fetch.operation.get(), &AsyncHotspotConfigOperation::success, this,
            [&order] { order += QStringLiteral("success"); });
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QCOMPARE(order, QStringList({QStringLiteral("changed"), QStringLiteral("success")}));
    QCOMPARE(fetch.operation->results().size(), 1);
    QVERIFY(fetch.operation->results().first() == car());
}

void HotspotTogetherTest::startsAndStops()
{
    const Application service = application();
    QSignalSpy enabled(service.get(), &HotSpotService::enabledChanged);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));

    Switch on(service->setEnabled(true));
    QVERIFY(!service->enabled());
    QCOMPARE(on.outcome(), QStringLiteral("ok"));
    QCOMPARE(on.operation->results(), QList<bool>({true}));
    QTRY_COMPARE_WITH_TIMEOUT(enabled.count(), 1, Patience);
    QCOMPARE(enabled.last().first().toBool(), true);
    QVERIFY(service->enabled());

    Switch off(service->setEnabled(false));
    QCOMPARE(off.outcome(), QStringLiteral("ok"));
    QCOMPARE(off.operation->results(), QList<bool>({false}));
    QTRY_COMPARE_WITH_TIMEOUT(enabled.count(), 2, Patience);
    QCOMPARE(enabled.last().first().toBool(), false);
    QVERIFY(!service->enabled());
}

void HotspotTogetherTest::isToldWhoeverSwitches()
{
    const Application service = application();
    const Application other = application();
    QSignalSpy enabled(other.get(), &HotSpotService::enabledChanged);
    QSignalSpy othersProfile(other.get(), &HotSpotService::configurationChanged);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    Switch on(service->setEnabled(true));
    QTRY_COMPARE_WITH_TIMEOUT(enabled.count(), 1, Patience);
    QVERIFY(other->enabled());
    QVERIFY(othersProfile.isEmpty());
    Switch off(other->setEnabled(false)); // which needs no profile
    QCOMPARE(off.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!service->enabled(), Patience);
}

void HotspotTogetherTest::startsWithTheProfileThatWasRead()
{
    const Application service = application();
    Switch tooEarly(service->setEnabled(true)); // with no profile
    QCOMPARE(tooEarly.outcome(), QStringLiteral("-1 Failed to enable config."));
    QVERIFY(tooEarly.operation->results().isEmpty());
    Update update(service->setConfiguration(passengers())); // which is not read by that
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    Switch stillTooEarly(service->setEnabled(true));
    QCOMPARE(stillTooEarly.outcome(), QStringLiteral("-1 Failed to enable config."));
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    Switch on(service->setEnabled(true));
    QCOMPARE(on.outcome(), QStringLiteral("ok"));
}

void HotspotTogetherTest::stopsByItself()
{
    const Application service = application();
    QSignalSpy enabled(service.get(), &HotSpotService::enabledChanged);
    WifiHotspot brief = passengers();
    brief.setInactivityTime(1);
    Update update(service->setConfiguration(brief));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    Switch on(service->setEnabled(true));
    QTRY_COMPARE_WITH_TIMEOUT(enabled.count(), 2, Patience);
    QCOMPARE(enabled.first().first().toBool(), true);
    QCOMPARE(enabled.last().first().toBool(), false);
}

void HotspotTogetherTest::writesAProfile()
{
    const Application service = application();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch first(service->configuration());
    QCOMPARE(first.outcome(), QStringLiteral("ok"));

    // The result is what was read last.
    Update update(service->setConfiguration(passengers()));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    QVERIFY(update.operation->results() == QList<WifiHotspot>({car()}));
    QCOMPARE(changed.count(), 2);
    QVERIFY(changed.last().first().value<WifiHotspot>() == car());

    Fetch second(service->configuration());
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QVERIFY(second.operation->results() == QList<WifiHotspot>({passengers()}));
    const Application other = application();
    Fetch others(other->configuration());
    QCOMPARE(others.outcome(), QStringLiteral("ok"));
    QVERIFY(others.operation->results() == QList<WifiHotspot>({passengers()}));
}

void HotspotTogetherTest::tellsARefusedProfile()
{
    const Application service = application();
    WifiHotspot wrong = passengers();
    wrong.setPassphrase(QStringLiteral("short"));
    for (const WifiHotspot &profile : {wrong, WifiHotspot()}) {
        Update update(service->setConfiguration(profile));
        QCOMPARE(update.outcome(), QStringLiteral("-1 Failed to update WifiHotspot config."));
        QVERIFY(update.operation->results().isEmpty());
    }
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results().first() == car());
}

void HotspotTogetherTest::keepsTheProfileAcrossARestart()
{
    const Application service = application();
    Update update(service->setConfiguration(passengers()));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    m_daemon->kill();
    QVERIFY(start());
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results().first() == passengers());
}

void HotspotTogetherTest::identifiersOfApplicationsCollide()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    const Application service = application();
    QStringList lines;
    KrelLogger::setSink([&lines](KrelLogger::Level, unsigned short, const QString &text) { lines += text; });
    KrelLogger::setVerbosity(7);
    // The other application sends whatever identifier this one may use next.
    ZopObject other(ControlPath, ZopObject::ReadWrite, false);
    QVERIFY(other.isValid());
    QSignalSpy othersReplies(&other, &ZopObject::attributesChanged);
    constexpr int Requests = 200;
    for (int id = 1; id <= Requests; ++id) {
        ZopChangeset stop;
        stop.assignments.insert(QStringLiteral("msg"), QStringLiteral("stop"));
        stop.assignments.insert(QStringLiteral("id"), id);
        QVERIFY(other.setAttributes(stop));
    }
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results().first() == car());
    QTRY_COMPARE_WITH_TIMEOUT(othersReplies.count(), Requests, Patience);
    for (const QList<QVariant> &reply : othersReplies)
        QCOMPARE(reply.first().value<ZopChangeset>().assignments.value(QStringLiteral("res")).toString(),
                 QStringLiteral("stop"));
    QCOMPARE(lines.filter(QStringLiteral("No operation for message")), QStringList());
    // They did collide.
    static const QRegularExpression request(QStringLiteral("retrieve_profile id=(\\d+)"));
    const int id = request.match(QString::fromUtf8(m_daemon->process().errors())).captured(1).toInt();
    QVERIFY2(id >= 1 && id <= Requests, qPrintable(QString::number(id)));
}

void HotspotTogetherTest::outlivesTheManager()
{
    const Application service = application();
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    Switch on(service->setEnabled(true));
    QTRY_VERIFY_WITH_TIMEOUT(service->enabled(), Patience);

    m_daemon->kill();
    Fetch refused(service->configuration());
    QCOMPARE(refused.outcome(), QStringLiteral("-1 Unable to write to vantor zop"));
    QVERIFY(service->ready());
    QVERIFY(service->enabled()); // what the manager has published stays

    QVERIFY(start()); // with the hotspot off
    QTRY_VERIFY_WITH_TIMEOUT(!service->enabled(), Patience);
    Switch again(service->setEnabled(true)); // with the profile that was read before
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(service->enabled(), Patience);
    QVERIFY(ready.isEmpty());
}

void HotspotTogetherTest::managerDiesWithARequestOpen()
{
    const Application service = application();
    ::kill(pid_t(m_daemon->process().processId()), SIGSTOP);
    Fetch fetch(service->configuration());
    Switch off(service->setEnabled(false));
    m_daemon->kill();
    QCOMPARE(fetch.outcome(), QStringLiteral("-1 Failed to retrieve WifiHotspot config."));
    QCOMPARE(off.outcome(), QStringLiteral("-1 Failed to disable config."));
}

void HotspotTogetherTest::madeWhileTheManagerIsDead()
{
    m_daemon->kill();
    const Application service(newHotSpotService());
    Fetch early(service->configuration());
    QCOMPARE(early.outcome(), QStringLiteral("-1 The service is not ready."));
    QVERIFY(start());
    QTRY_VERIFY_WITH_TIMEOUT(service->ready(), Patience);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
}

/*! A service that is made while the hotspot is on is told so before it is ready. */
void HotspotTogetherTest::runningFromTheStart()
{
    {
        const Application service = application();
        Fetch fetch(service->configuration());
        QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
        Switch on(service->setEnabled(true));
        QTRY_VERIFY_WITH_TIMEOUT(service->enabled(), Patience);
    }
    const Application service(newHotSpotService());
    QStringList order;
    connect(service.get(), &HotSpotService::enabledChanged, this,
            [&order](bool enabled) { order += enabled ? QStringLiteral("on") : QStringLiteral("off"); });
    connect(service.get(), &ServiceBase::readyChanged, this, [&order] { order += QStringLiteral("ready"); });
    QTRY_VERIFY_WITH_TIMEOUT(service->ready(), Patience);
    QVERIFY(service->enabled());
    QCOMPARE(order, QStringList({QStringLiteral("on"), QStringLiteral("ready")}));
}

void HotspotTogetherTest::hostileProfiles_data()
{
    QTest::addColumn<ZopVariant>("dat");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<WifiHotspot>("profile");
    const QString ok = QStringLiteral("ok");
    const QString none = QStringLiteral("-1 Empty or malformatted config.");
    const WifiHotspot defaults;
    WifiHotspot nothing; // what absent and wrong fields are read as
    nothing.setSecurityType({});
    nothing.setInactivityTime(0);
    nothing.setMaxClients(0);

    QTest::newRow("none") << ZopVariant() << none << defaults;
    QTest::newRow("text") << ZopVariant(QStringLiteral("{}")) << none << defaults;
    QTest::newRow("a number") << ZopVariant(7) << none << defaults;
    QTest::newRow("cut off") << json(R"({"lanprofile":{"ssid":"a)") << ok << defaults;
    QTest::newRow("no JSON") << json("\xff\xfe nonsense") << ok << defaults;
    QTest::newRow("an array") << json(R"([{"lanprofile":{"ssid":"a"}}])") << ok << defaults;
    QTest::newRow("not an object") << json(R"({"lanprofile":["ssid"]})") << ok << defaults;
    QTest::newRow("wrong types") << json(
        R"({"lanprofile":{"ssid":7,"passphrase":[],"mhs_band":5.0,"max_num_sta":"10","security_type":8,)"
        R"("autoshutdown_time":null,"privacy":"true","block_conn":1}})")
                                 << ok << nothing;
    QTest::newRow("unknown words") << json(R"({"lanprofile":{"mhs_band":"5 GHz","security_type":"WPA2"}})") << ok
                                   << nothing;
    QTest::newRow("huge numbers") << json(R"({"lanprofile":{"max_num_sta":1e300,"autoshutdown_time":4294967296}})")
                                  << ok << nothing;
    QTest::newRow("fractions") << json(R"({"lanprofile":{"max_num_sta":1.5,"autoshutdown_time":0.1}})") << ok
                               << nothing;
    WifiHotspot negative = nothing;
    negative.setMaxClients(-2147483647 - 1);
    QTest::newRow("the least number") << json(R"({"lanprofile":{"max_num_sta":-2147483648}})") << ok << negative;
    WifiHotspot zero = nothing;
    zero.setName(QString(QLatin1String("a\0b", 3)));
    QTest::newRow("a zero byte") << json(R"({"lanprofile":{"ssid":"a\u0000b"}})") << ok << zero;
    const QByteArray deep = "{\"lanprofile\":{\"ssid\":" + QByteArray(10000, '[') + QByteArray(10000, ']') + "}}";
    QTest::newRow("nested") << ZopVariant(deep, "json") << ok << defaults;
    WifiHotspot longName = nothing;
    longName.setName(QString(1000000, QLatin1Char('x')));
    const QByteArray big = "{\"lanprofile\":{\"ssid\":\"" + QByteArray(1000000, 'x') + "\"}}";
    QTest::newRow("a long name") << ZopVariant(big, "json") << ok << longName;
}

void HotspotTogetherTest::hostileProfiles()
{
    QFETCH(ZopVariant, dat);
    QFETCH(QString, outcome);
    QFETCH(WifiHotspot, profile);
    ScriptedManager manager;
    manager.reply = {{QStringLiteral("res"), QStringLiteral("retrieve_profile")}};
    if (dat.isValid())
        manager.reply.insert(QStringLiteral("dat"), dat);
    const Application service = application();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), outcome);
    if (outcome == QLatin1String("ok"))
        QVERIFY(fetch.operation->results() == QList<WifiHotspot>({profile}));
    else
        QVERIFY(fetch.operation->results().isEmpty());
    QCOMPARE(changed.count(), outcome == QLatin1String("ok") ? 1 : 0);
}

void HotspotTogetherTest::repliesOfAnotherKind_data()
{
    QTest::addColumn<QString>("res");
    QTest::addColumn<QString>("err");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<bool>("ofProfile"); // the request
    for (const char *res : {"start", "stop"})
        QTest::newRow(res) << QString(QLatin1String(res)) << QStringLiteral("0") << QStringLiteral("ok") << true;
    QTest::newRow("refused start") << QStringLiteral("start") << QStringLiteral("5")
                                   << QStringLiteral("-1 Failed to enable config.") << true;
    for (const char *res : {"retrieve_profile", "update_profile"})
        QTest::newRow(res) << QString(QLatin1String(res)) << QStringLiteral("0") << QStringLiteral("ok") << false;
    QTest::newRow("refused update") << QStringLiteral("update_profile") << QStringLiteral("5")
                                    << QStringLiteral("-1 Failed to update WifiHotspot config.") << false;
}

void HotspotTogetherTest::repliesOfAnotherKind()
{
    QFETCH(QString, res);
    QFETCH(QString, err);
    QFETCH(QString, outcome);
    QFETCH(bool, ofProfile);
    ScriptedManager manager;
    manager.reply = {{QStringLiteral("res"), res},
                     {QStringLiteral("err"), err},
                     {QStringLiteral("dat"), json(R"({"lanprofile":{"ssid":"a"}})")}};
    const Application service = application();
    if (ofProfile) {
        Fetch fetch(service->configuration());
        QCOMPARE(fetch.outcome(), outcome);
        QVERIFY(fetch.operation->results().isEmpty());
    } else {
        Switch off(service->setEnabled(false));
        QCOMPARE(off.outcome(), outcome);
        QVERIFY(off.operation->results().isEmpty());
    }
}

void HotspotTogetherTest::deletedInItsOwnSlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("readyChanged") << QByteArray(SIGNAL(readyChanged(bool)));
    QTest::newRow("enabledChanged") << QByteArray(SIGNAL(enabledChanged(bool)));
    QTest::newRow("configurationChanged") << QByteArray(SIGNAL(configurationChanged(morvek::WifiHotspot)));
}

void HotspotTogetherTest::deletedInItsOwnSlot()
{
    QFETCH(QByteArray, signal);
    HotSpotService *service = newHotSpotService();
    const QPointer<HotSpotService> alive(service);
    QTimer slotOwner; // stands for an object of the application
    connect(&slotOwner, &QTimer::timeout, [&service] { deleteHotSpotService(&service); });
    QVERIFY(connect(service, signal.constData(), &slotOwner, SIGNAL(timeout())));
    std::unique_ptr<AsyncHotspotConfigOperation> fetch;
    std::unique_ptr<AsyncHotspotEnableOperation> start;
    connect(service, &ServiceBase::readyChanged, service, [&] {
        if (!service)
            return;
        fetch.reset(service->configuration());
        connect(fetch.get(), &AsyncHotspotConfigOperation::success, service,
                [&] { start.reset(service->setEnabled(true)); });
    });
    QTRY_VERIFY_WITH_TIMEOUT(!alive, Patience);
    QVERIFY(!service);
    const Application next = application();
    Fetch later(next->configuration());
    QCOMPARE(later.outcome(), QStringLiteral("ok"));
}

/*! What serves it stays, is told of changes, and completes what it was asked. */
void HotspotTogetherTest::operationsEndWithoutTheirService()
{
    Application service = application();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch fetch(service->configuration());
    Switch deleted(service->setEnabled(false));
    deleted.operation.reset();
    Switch refused(service->setEnabled(true));
    service.reset();
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results() == QList<WifiHotspot>({car()}));
    QCOMPARE(refused.outcome(), QStringLiteral("-1 Failed to enable config."));
    QVERIFY(changed.isEmpty());

    const Application next = application();
    Fetch again(next->configuration());
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
    Switch on(next->setEnabled(true));
    QTRY_VERIFY_WITH_TIMEOUT(next->enabled(), Patience);
}

QTEST_GUILESS_MAIN(HotspotTogetherTest)
#include "tst_hotspottogether.moc"
