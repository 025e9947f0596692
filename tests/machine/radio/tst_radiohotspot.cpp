// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotservice.h"
#include "radiocase.h"
#include "watched.h"

using namespace morvek;

namespace {

const char *const Name = "Car Spot";
const char *const Passphrase = "drive safely 8";

bool hasWayOut()
{
    int code = -1;
    shell("nft list table ip nm-shared-wlan0", &code);
    return code == 0;
}

} // namespace

/*! The unit's hotspot with real clients, on the radio that is also the station. */
class RadioHotspotTest : public RadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void clientsReachTheOtherSideAndEachOther();
    void givesTheConnectionBack();
    void isolatesClients();
    void stopsWithoutClients();
    void killedDaemonLeavesNothing();
    void passphraseStaysWithTheManager();

private:
    WifiHotspot profile() const;
    void store(const WifiHotspot &profile);
    void startWith(const WifiHotspot &profile);
    void start();
    void stop();
    void waitForHome();

    HotSpotServicePointer m_hotspot;
    QByteArray m_profiles;
};

WifiHotspot RadioHotspotTest::profile() const
{
    WifiHotspot profile;
    profile.setName(QString::fromUtf8(Name));
    profile.setPassphrase(QString::fromUtf8(Passphrase));
    profile.setSecurityType(WifiSecurityProtocolWpa2);
    profile.setBand(WifiBand2_4GHz);
    profile.setMaxClients(4);
    profile.setInactivityTime(0);
    return profile;
}

/*! The connection that the user has made is up, and the application knows it. */
void RadioHotspotTest::waitForHome()
{
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(wifi().connectedAccessPoint().bssid(), QStringLiteral("02:00:00:00:01:00"), Patience);
}

void RadioHotspotTest::initTestCase()
{
    startManager();
    shell("nmcli connection add type wifi ifname wlan0 con-name Home ssid Open");
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), Patience);
    m_profiles = Air::profiles();
    begin();
    m_hotspot.reset(newHotSpotService());
    QTRY_VERIFY_WITH_TIMEOUT(m_hotspot->ready(), Patience);
    waitForHome();
}

void RadioHotspotTest::cleanupTestCase()
{
    m_hotspot.reset();
    end();
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), Patience);
    QCOMPARE(Air::profiles(), m_profiles);
    QTRY_COMPARE_WITH_TIMEOUT(shell("nft list ruleset"), QByteArray(), Patience);
}

void RadioHotspotTest::store(const WifiHotspot &profile)
{
    Watched<AsyncHotspotConfigOperation> write(m_hotspot->setConfiguration(profile));
    QCOMPARE(write.outcome(), QStringLiteral("ok"));
}

void RadioHotspotTest::startWith(const WifiHotspot &profile)
{
    store(profile);
    Watched<AsyncHotspotConfigOperation> read(m_hotspot->configuration());
    QCOMPARE(read.outcome(), QStringLiteral("ok"));
    QCOMPARE(read.operation->results(), QList<WifiHotspot> {profile});
    start();
    // The manager gives nft one second, and has a hotspot without a way out when that takes longer.
    const QDeadlineTimer patience(Patience);
    while (!hasWayOut() && !patience.hasExpired()) {
        stop();
        start();
    }
}

void RadioHotspotTest::start()
{
    QSignalSpy changed(m_hotspot.get(), &HotSpotService::enabledChanged);
    Watched<AsyncHotspotEnableOperation> start(m_hotspot->setEnabled(true));
    QCOMPARE(start.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(m_hotspot->enabled(), true);
    const QByteArray radio = shell("iw dev wlan0 info");
    QVERIFY2(radio.contains("type AP") && radio.contains("ssid Car Spot"), radio.constData());
    QTRY_VERIFY_WITH_TIMEOUT(!wifi().connected(), Patience);
}

void RadioHotspotTest::stop()
{
    QSignalSpy changed(m_hotspot.get(), &HotSpotService::enabledChanged);
    Watched<AsyncHotspotEnableOperation> stop(m_hotspot->setEnabled(false));
    QCOMPARE(stop.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(m_hotspot->enabled(), false);
}

void RadioHotspotTest::clientsReachTheOtherSideAndEachOther()
{
    startWith(profile());
    Air::joinHotspot("client", Name, Passphrase);
    QVERIFY(Air::reaches("client", "10.9.0.1"));
    Air::joinHotspot("passenger", Name, Passphrase);
    QVERIFY(Air::reaches("passenger", Air::addressOf("client")));
}

void RadioHotspotTest::givesTheConnectionBack()
{
    stop();
    waitForHome();
    QCOMPARE(Air::associated(), QByteArray("02:00:00:00:01:00"));
    Air::leaveHotspot("client");
    Air::leaveHotspot("passenger");
}

void RadioHotspotTest::isolatesClients()
{
    WifiHotspot isolated = profile();
    isolated.setPrivacy(true);
    startWith(isolated);
    Air::joinHotspot("client", Name, Passphrase);
    Air::joinHotspot("passenger", Name, Passphrase);
    QVERIFY(!Air::reaches("passenger", Air::addressOf("client")));
    QVERIFY(Air::reaches("passenger", "10.9.0.1"));
    QVERIFY(Air::reaches("client", "10.9.0.1"));
    stop();
    waitForHome();
    Air::leaveHotspot("client");
    Air::leaveHotspot("passenger");
}

/*! It stays while there is a client, and goes some seconds after the last one. */
void RadioHotspotTest::stopsWithoutClients()
{
    startWith(profile());
    Air::joinHotspot("client", Name, Passphrase);
    QSignalSpy changed(m_hotspot.get(), &HotSpotService::enabledChanged);
    WifiHotspot passing = profile();
    passing.setInactivityTime(5);
    store(passing);
    QVERIFY(!changed.wait(10000));
    Air::leaveHotspot("client");
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, Patience);
    QCOMPARE(m_hotspot->enabled(), false);
    waitForHome();
}

void RadioHotspotTest::killedDaemonLeavesNothing()
{
    startWith(profile());
    kill();
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable Home"), Patience);
    QCOMPARE(Air::profiles(), m_profiles);
    m_hotspot.reset();
    begin();
    m_hotspot.reset(newHotSpotService());
    QTRY_VERIFY_WITH_TIMEOUT(m_hotspot->ready(), Patience);
    QVERIFY(!m_hotspot->enabled());
}

/*! One file of the daemon's user keeps it, as that of every hotspot of these daemons. */
void RadioHotspotTest::passphraseStaysWithTheManager()
{
    const QString store = daemon().root() + QStringLiteral("/.morvek-hostd-hotspot.json");
    QVERIFY(QFile::exists(store));
    QVERIFY(QFile::remove(store));
    QCOMPARE(placesOf({Passphrase}), QByteArrayList());
}

QTEST_GUILESS_MAIN(RadioHotspotTest)
#include "tst_radiohotspot.moc"
