// SPDX-License-Identifier: Apache-2.0
#include "hotspotapplication.h"
#include "krellogger.h"
#include "playedstand.h"

#include <csignal>

using namespace morvek;

namespace {

const QString ControlPath = QStringLiteral("/zop/services/tethering/control");
const QString StatusPath = QStringLiteral("/zop/services/tethering/status");

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

/*! The hotspot service and what only a played world brings about, and a manager that is late or lies. */
class HotspotPlayedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void waitsForTheManager();
    void identifiersOfApplicationsCollide();
    void managerDiesWithARequestOpen();
    void madeWhileTheManagerIsDead();
    void hostileProfiles_data();
    void hostileProfiles();
    void repliesOfAnotherKind_data();
    void repliesOfAnotherKind();
    void deletedInItsOwnSlot_data();
    void deletedInItsOwnSlot();
    void operationsEndWithoutTheirService();

private:
    bool start() { return m_stand.start(m_daemon.get()); }

    PlayedStand m_stand;
    std::unique_ptr<DaemonFixture> m_daemon;
};

void HotspotPlayedTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(start());
}

void HotspotPlayedTest::cleanup()
{
    KrelLogger::setSink(nullptr);
    KrelLogger::setVerbosity(2);
    m_daemon.reset();
}

void HotspotPlayedTest::waitsForTheManager()
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

void HotspotPlayedTest::identifiersOfApplicationsCollide()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    const Application service = hotspotApplication();
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
    QVERIFY(fetch.operation->results().first() == m_stand.car);
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

void HotspotPlayedTest::managerDiesWithARequestOpen()
{
    const Application service = hotspotApplication();
    ::kill(pid_t(m_daemon->process().processId()), SIGSTOP);
    Fetch fetch(service->configuration());
    Switch off(service->setEnabled(false));
    m_daemon->kill();
    QCOMPARE(fetch.outcome(), QStringLiteral("-1 Failed to retrieve WifiHotspot config."));
    QCOMPARE(off.outcome(), QStringLiteral("-1 Failed to disable config."));
}

void HotspotPlayedTest::madeWhileTheManagerIsDead()
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

void HotspotPlayedTest::hostileProfiles_data()
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

void HotspotPlayedTest::hostileProfiles()
{
    QFETCH(ZopVariant, dat);
    QFETCH(QString, outcome);
    QFETCH(WifiHotspot, profile);
    ScriptedManager manager;
    manager.reply = {{QStringLiteral("res"), QStringLiteral("retrieve_profile")}};
    if (dat.isValid())
        manager.reply.insert(QStringLiteral("dat"), dat);
    const Application service = hotspotApplication();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), outcome);
    if (outcome == QLatin1String("ok"))
        QVERIFY(fetch.operation->results() == QList<WifiHotspot>({profile}));
    else
        QVERIFY(fetch.operation->results().isEmpty());
    QCOMPARE(changed.count(), outcome == QLatin1String("ok") ? 1 : 0);
}

void HotspotPlayedTest::repliesOfAnotherKind_data()
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

void HotspotPlayedTest::repliesOfAnotherKind()
{
    QFETCH(QString, res);
    QFETCH(QString, err);
    QFETCH(QString, outcome);
    QFETCH(bool, ofProfile);
    ScriptedManager manager;
    manager.reply = {{QStringLiteral("res"), res},
                     {QStringLiteral("err"), err},
                     {QStringLiteral("dat"), json(R"({"lanprofile":{"ssid":"a"}})")}};
    const Application service = hotspotApplication();
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

void HotspotPlayedTest::deletedInItsOwnSlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("readyChanged") << QByteArray(SIGNAL(readyChanged(bool)));
    QTest::newRow("enabledChanged") << QByteArray(SIGNAL(enabledChanged(bool)));
    QTest::newRow("configurationChanged") << QByteArray(SIGNAL(configurationChanged(morvek::WifiHotspot)));
}

void HotspotPlayedTest::deletedInItsOwnSlot()
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
    const Application next = hotspotApplication();
    Fetch later(next->configuration());
    QCOMPARE(later.outcome(), QStringLiteral("ok"));
}

/*! What serves it stays, is told of changes, and completes what it was asked. */
void HotspotPlayedTest::operationsEndWithoutTheirService()
{
    Application service = hotspotApplication();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch fetch(service->configuration());
    Switch deleted(service->setEnabled(false));
    deleted.operation.reset();
    Switch refused(service->setEnabled(true));
    service.reset();
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results() == QList<WifiHotspot>({m_stand.car}));
    QCOMPARE(refused.outcome(), QStringLiteral("-1 Failed to enable config."));
    QVERIFY(changed.isEmpty());

    const Application next = hotspotApplication();
    Fetch again(next->configuration());
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
    Switch on(next->setEnabled(true));
    QTRY_VERIFY_WITH_TIMEOUT(next->enabled(), Patience);
}

QTEST_GUILESS_MAIN(HotspotPlayedTest)
#include "tst_hotspotplayed.moc"
