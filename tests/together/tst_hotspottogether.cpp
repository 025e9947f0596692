// SPDX-License-Identifier: Apache-2.0
#include "hotspotapplication.h"
#include "stand.h"

using namespace morvek;

namespace {

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

} // namespace

/*! The hotspot service of the shipped library and platform against the shipped manager, on each stand. */
class HotspotTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void becomesReadyFromTheEventLoop();
    void readsTheProfile();
    void startsAndStops();
    void isToldWhoeverSwitches();
    void startsWithTheProfileThatWasRead();
    void stopsByItself();
    void writesAProfile();
    void tellsARefusedProfile();
    void keepsTheProfileAcrossARestart();
    void outlivesTheManager();
    void runningFromTheStart();

private:
    bool start() { return m_stand->start(m_daemon.get()); }

    std::unique_ptr<Stand> m_stand;
    std::unique_ptr<DaemonFixture> m_daemon;
};

void HotspotTogetherTest::initTestCase()
{
    m_stand = Stand::make();
    QVERIFY(m_stand);
}

void HotspotTogetherTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(start());
    Update update(hotspotApplication()->setConfiguration(m_stand->car));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
}

void HotspotTogetherTest::cleanup()
{
    m_daemon.reset();
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

void HotspotTogetherTest::readsTheProfile()
{
    const Application service = hotspotApplication();
    QStringList order;
    connect(service.get(), &HotSpotService::configurationChanged, this, [this, &order](const WifiHotspot &profile) {
        order += QStringLiteral("changed");
        QVERIFY(profile == m_stand->car);
    });
    Fetch fetch(service->configuration());
    connect(fetch.operation.get(), &AsyncHotspotConfigOperation::success, this,
            [&order] { order += QStringLiteral("success"); });
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QCOMPARE(order, QStringList({QStringLiteral("changed"), QStringLiteral("success")}));
    QCOMPARE(fetch.operation->results().size(), 1);
    QVERIFY(fetch.operation->results().first() == m_stand->car);
}

void HotspotTogetherTest::startsAndStops()
{
    const Application service = hotspotApplication();
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
    const Application service = hotspotApplication();
    const Application other = hotspotApplication();
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
    const Application service = hotspotApplication();
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
    const Application service = hotspotApplication();
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
    const Application service = hotspotApplication();
    QSignalSpy changed(service.get(), &HotSpotService::configurationChanged);
    Fetch first(service->configuration());
    QCOMPARE(first.outcome(), QStringLiteral("ok"));

    // The result is what was read last.
    Update update(service->setConfiguration(passengers()));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    QVERIFY(update.operation->results() == QList<WifiHotspot>({m_stand->car}));
    QCOMPARE(changed.count(), 2);
    QVERIFY(changed.last().first().value<WifiHotspot>() == m_stand->car);

    Fetch second(service->configuration());
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QVERIFY(second.operation->results() == QList<WifiHotspot>({passengers()}));
    const Application other = hotspotApplication();
    Fetch others(other->configuration());
    QCOMPARE(others.outcome(), QStringLiteral("ok"));
    QVERIFY(others.operation->results() == QList<WifiHotspot>({passengers()}));
}

void HotspotTogetherTest::tellsARefusedProfile()
{
    const Application service = hotspotApplication();
    WifiHotspot wrong = passengers();
    wrong.setPassphrase(QStringLiteral("short"));
    for (const WifiHotspot &profile : {wrong, WifiHotspot()}) {
        Update update(service->setConfiguration(profile));
        QCOMPARE(update.outcome(), QStringLiteral("-1 Failed to update WifiHotspot config."));
        QVERIFY(update.operation->results().isEmpty());
    }
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results().first() == m_stand->car);
}

void HotspotTogetherTest::keepsTheProfileAcrossARestart()
{
    const Application service = hotspotApplication();
    Update update(service->setConfiguration(passengers()));
    QCOMPARE(update.outcome(), QStringLiteral("ok"));
    m_daemon->kill();
    QVERIFY(start());
    Fetch fetch(service->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QVERIFY(fetch.operation->results().first() == passengers());
}

void HotspotTogetherTest::outlivesTheManager()
{
    const Application service = hotspotApplication();
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

/*! A service that is made while the hotspot is on is told so before it is ready. */
void HotspotTogetherTest::runningFromTheStart()
{
    {
        const Application service = hotspotApplication();
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

QTEST_GUILESS_MAIN(HotspotTogetherTest)
#include "tst_hotspottogether.moc"
