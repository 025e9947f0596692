// SPDX-License-Identifier: Apache-2.0
#include "worldfixture.h"

using namespace morvek;

namespace {

/*! What takes longer comes later, however short it really takes. */
const QByteArray Text = R"({
    'delays': {'hotspot_start': 0, 'hotspot_stop': 0}, 'interfaces': [],
    'hotspot': {'active': false, 'profile': {'ssid': 'a', 'passphrase': '12345678', 'mhs_band': '2.4',
        'max_num_sta': 5, 'security_type': 'wpa2', 'autoshutdown_time': 0, 'privacy': false, 'block_conn': false}}})";

QByteArray active(const QByteArray &text)
{
    return QByteArray(text).replace("'active': false", "'active': true");
}

QJsonObject profileFor(int seconds)
{
    Scenario scenario;
    QString error;
    const QByteArray text = QByteArray(Text).replace('\'', '"').replace(
        "\"autoshutdown_time\": 0", "\"autoshutdown_time\": " + QByteArray::number(seconds));
    if (!readScenario(text, &scenario, &error))
        qFatal("%s", qPrintable(error));
    return scenario.hotspot.profile;
}

const QString Activated = QStringLiteral("tethering: state=ACTIVE");
const QString Deactivated = QStringLiteral("tethering: state=INACTIVE");

} // namespace

class SimulatedHotspotTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void starts();
    void startsActive();
    void stops();
    void nothingNew();
    void newerStopOverrides();
    void newerStartOverrides();
    void whatWasOverriddenIsNotFinished();
    void aSecondStopDelaysNothing();
    void keepsTheProfile();
    void runsWithWhatItWasStartedWith();
    void takesItsTime();
    void stopsByItself();
    void stopsByItselfAfterAStartAsActive();
    void neverStopsByItself();
    void inactivityIsInSecondsOfTheWorld();
    void inactivityOfARestart();
    void anewWithANewProfile();
    void newProfileEndsTheFormerCount();
    void newProfileWhileStarting();
    void newProfileWhileStopping();
    void startsAgainAfterInactivity();
};

void SimulatedHotspotTest::starts()
{
    WorldFixture fixture(Text.constData());
    QCOMPARE(fixture.world.status(Service::Tethering).size(), 1);
    QCOMPARE(fixture.world.status(Service::Tethering).value(QStringLiteral("state")), ZopVariant("INACTIVE", "text"));
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.take(), QStringList());
    QCOMPARE(fixture.settle(), QStringList {Activated});
    QCOMPARE(fixture.world.status(Service::Tethering).value(QStringLiteral("state")), ZopVariant("ACTIVE", "text"));
}

void SimulatedHotspotTest::startsActive()
{
    WorldFixture fixture(active(Text).constData());
    QCOMPARE(fixture.world.status(Service::Tethering).value(QStringLiteral("state")), ZopVariant("ACTIVE", "text"));
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::stops()
{
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->stop();
    QCOMPARE(fixture.take(), QStringList());
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::nothingNew()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList());
    fixture.hotspot->start(profileFor(0));
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Activated});
    fixture.hotspot->start(profileFor(1));
    QCOMPARE(fixture.settle(), QStringList());
    fixture.hotspot->stop();
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::newerStopOverrides()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(0));
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList());
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Activated});
}

void SimulatedHotspotTest::newerStartOverrides()
{
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->stop();
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList());
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::whatWasOverriddenIsNotFinished()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(0));
    fixture.hotspot->stop();
    QStringList before;
    fixture.pace.after(0, &fixture.world, [&] { before = fixture.take(); });
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Activated});
    QCOMPARE(before, QStringList());
}

void SimulatedHotspotTest::aSecondStopDelaysNothing()
{
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->stop();
    QStringList before;
    fixture.pace.after(0, &fixture.world, [&] { before = fixture.take(); });
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList());
    QCOMPARE(before, QStringList {Deactivated});
}

void SimulatedHotspotTest::keepsTheProfile()
{
    WorldFixture fixture(Text.constData());
    QCOMPARE(fixture.hotspot->profile(), profileFor(0));
    fixture.hotspot->start(profileFor(7));
    QCOMPARE(fixture.hotspot->profile(), profileFor(0));
    fixture.hotspot->setProfile(profileFor(8));
    QCOMPARE(fixture.hotspot->profile(), profileFor(8));
    fixture.hotspot->stop();
    fixture.hotspot->setProfile(profileFor(9));
    QCOMPARE(fixture.hotspot->profile(), profileFor(9));
}

void SimulatedHotspotTest::runsWithWhatItWasStartedWith()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(1));
    QCOMPARE(fixture.settle(), QStringList({Activated, Deactivated}));
}

void SimulatedHotspotTest::takesItsTime()
{
    WorldFixture fixture(QByteArray(Text).replace("'hotspot_start': 0", "'hotspot_start': 86400000").constData());
    fixture.pace = Pace(1, 1);
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList());
    fixture.hotspot->stop();
    QCOMPARE(fixture.settle(), QStringList());

    WorldFixture other(active(Text).replace("'hotspot_stop': 0", "'hotspot_stop': 86400000").constData());
    other.pace = Pace(1, 1);
    other.hotspot->stop();
    QCOMPARE(other.settle(), QStringList());
    other.hotspot->start(profileFor(0));
    QCOMPARE(other.settle(), QStringList());
}

void SimulatedHotspotTest::stopsByItself()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(4));
    QCOMPARE(fixture.settle(), QStringList({Activated, Deactivated}));
    QCOMPARE(fixture.world.status(Service::Tethering).value(QStringLiteral("state")), ZopVariant("INACTIVE", "text"));
}

void SimulatedHotspotTest::stopsByItselfAfterAStartAsActive()
{
    WorldFixture fixture(active(Text).replace("'autoshutdown_time': 0", "'autoshutdown_time': 2").constData());
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::neverStopsByItself()
{
    WorldFixture fixture(active(Text).constData());
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedHotspotTest::inactivityIsInSecondsOfTheWorld()
{
    // Two seconds of the world are 20 ms here; two milliseconds would be over at once.
    WorldFixture fixture(Text.constData());
    fixture.pace = Pace(100, 1);
    QElapsedTimer timer;
    timer.start();
    fixture.hotspot->start(profileFor(2));
    QTRY_COMPARE(fixture.told, QStringList({Activated, Deactivated}));
    QVERIFY(timer.elapsed() > 10);
}

void SimulatedHotspotTest::inactivityOfARestart()
{
    // A stop that was taken back does not let it run for ever, nor with what it ran with before.
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->stop();
    fixture.hotspot->start(profileFor(3));
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::anewWithANewProfile()
{
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->setProfile(profileFor(3));
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::newProfileEndsTheFormerCount()
{
    WorldFixture fixture(active(Text).replace("'autoshutdown_time': 0", "'autoshutdown_time': 3").constData());
    fixture.hotspot->setProfile(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList());
}

void SimulatedHotspotTest::newProfileWhileStarting()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(0));
    fixture.hotspot->setProfile(profileFor(3));
    QCOMPARE(fixture.settle(), QStringList({Activated, Deactivated}));
    fixture.hotspot->start(profileFor(3));
    fixture.hotspot->setProfile(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Activated});
}

void SimulatedHotspotTest::newProfileWhileStopping()
{
    WorldFixture fixture(active(Text).constData());
    fixture.hotspot->stop();
    fixture.hotspot->setProfile(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Deactivated});
}

void SimulatedHotspotTest::startsAgainAfterInactivity()
{
    WorldFixture fixture(Text.constData());
    fixture.hotspot->start(profileFor(1));
    QCOMPARE(fixture.settle(), QStringList({Activated, Deactivated}));
    fixture.hotspot->start(profileFor(0));
    QCOMPARE(fixture.settle(), QStringList {Activated});
}

QTEST_GUILESS_MAIN(SimulatedHotspotTest)
#include "tst_simulatedhotspot.moc"
