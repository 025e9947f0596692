// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceservice.h"
#include "stand.h"
#include "wifiapplication.h"

using namespace morvek;

namespace {

WifiConnectionConfig configOf(const StandAccessPoint &accessPoint)
{
    return *accessPoint.passkey ? protectedBy(accessPoint.passkey, accessPoint.ssid)
                                : openNetwork(QString::fromUtf8(accessPoint.ssid));
}

} // namespace

/*! The Wi-Fi service of the shipped library and platform against the shipped daemons, on each stand. */
class WifiTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void becomesReadyFromTheEventLoop();
    void switchesTheRadio();
    void scans();
    void joinsAndLeaves();
    void oneStoryWithTheInterfaces();
    void tellsAWrongPasskey();
    void tellsTheDaemonsRefusal();
    void joinsAnOpenNetwork();
    void cancelsWhenLeaving();
    void twoApplicationsScan();
    void twoApplicationsJoin();
    void twoProcesses();
    void laterScanWaitsForLaterResults();
    void outlivesTheDaemon();
    void deletedWithOperationsOpen();

private:
    WifiConnectionConfig garage(const char *passkey = nullptr) const;

    std::unique_ptr<Stand> m_stand;
    std::unique_ptr<DaemonFixture> m_daemon;
};

void WifiTogetherTest::initTestCase()
{
    m_stand = Stand::make();
    QVERIFY(m_stand);
}

void WifiTogetherTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_stand->start(m_daemon.get()));
}

void WifiTogetherTest::cleanup()
{
    m_daemon.reset();
}

/*! What joins the garage's network with \a passkey, or with the right one. */
WifiConnectionConfig WifiTogetherTest::garage(const char *passkey) const
{
    const StandAccessPoint &garage = m_stand->air.at(m_stand->garage);
    return protectedBy(passkey ? passkey : garage.passkey, garage.ssid);
}

void WifiTogetherTest::becomesReadyFromTheEventLoop()
{
    const Application service(newWifiService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    QSignalSpy powered(service.get(), &WifiService::poweredChanged);
    QSignalSpy connected(service.get(), &WifiService::connectedChanged);
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    Scan early(service->scan());
    QCOMPARE(early.outcome(), QStringLiteral("-1 Service is not ready"));

    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, Patience);
    QCOMPARE(ready.first().first().toBool(), true);
    QVERIFY(service->ready());
    QVERIFY(service->powered());
    QVERIFY(service->connected());
    const WifiAccessPoint joined = service->connectedAccessPoint();
    const StandAccessPoint &home = m_stand->air.at(m_stand->home);
    QCOMPARE(joined.bssid(), QString::fromUtf8(home.bssid));
    QCOMPARE(joined.ssid(), QString::fromUtf8(home.ssid));
    QCOMPARE(int(joined.securityProtocols()), 0x8);
    QCOMPARE(int(joined.keyManagementTypes()), 0x2);
    QCOMPARE(int(joined.ciphers()), 0x2);
    // What was so from the start is not told as a change, not even before the next one.
    service->powerOff();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 1, Patience);
    QCOMPARE(powered.first().first().toBool(), false);
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 1, Patience);
    QCOMPARE(connected.first().first().toBool(), false);
}

void WifiTogetherTest::switchesTheRadio()
{
    const Application service = wifiApplication();
    const Application other = wifiApplication();
    QSignalSpy powered(service.get(), &WifiService::poweredChanged);
    QSignalSpy othersPowered(other.get(), &WifiService::poweredChanged);
    service->powerOff();
    QVERIFY(service->powered());
    QVERIFY(powered.wait(Patience));
    QVERIFY(!service->powered());
    QTRY_VERIFY_WITH_TIMEOUT(!service->connected(), Patience);
    QVERIFY(service->connectedAccessPoint().isEmpty());
    service->powerOff(); // already so: nothing is told
    service->powerOn();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 2, Patience);
    QCOMPARE(powered.last().first().toBool(), true);
    QTRY_COMPARE_WITH_TIMEOUT(othersPowered.count(), 2, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(service->connected(), Patience); // the network that was selected is joined again
}

void WifiTogetherTest::scans()
{
    const Application service = wifiApplication();
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), m_stand->air.size());
    for (const StandAccessPoint &expected : qAsConst(m_stand->air)) {
        const WifiAccessPoint one = found(scan, QLatin1String(expected.bssid));
        QCOMPARE(one.ssid(), QString::fromUtf8(expected.ssid));
        QVERIFY2(one.rssi() >= expected.weakest && one.rssi() <= expected.strongest,
                 qPrintable(QStringLiteral("%1: %2 dBm").arg(one.ssid()).arg(one.rssi())));
        QCOMPARE(int(one.frequency()), expected.frequency);
        QCOMPARE(int(one.securityProtocols()), expected.protocols);
        QCOMPARE(int(one.keyManagementTypes()), expected.keyManagement);
        QCOMPARE(int(one.ciphers()), expected.ciphers);
        QCOMPARE(one.serviceSet(), WifiServiceSetEss);
    }
}

void WifiTogetherTest::joinsAndLeaves()
{
    const Application service = wifiApplication();
    QSignalSpy connected(service.get(), &WifiService::connectedChanged);
    Connect connect(service->connectAccessPoint(garage()));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(connect.operation->results().size(), 1);
    QCOMPARE(connect.operation->results().first().ssid(), garage().ssid());
    QVERIFY(connect.operation->results().first() == service->connectedAccessPoint());
    QCOMPARE(connected.count(), 2); // the former network is left first
    QCOMPARE(connected.first().first().toBool(), false);
    QCOMPARE(connected.last().first().toBool(), true);

    service->disconnectAccessPoint();
    QVERIFY(service->connected());
    QVERIFY(connected.wait(Patience));
    QVERIFY(!service->connected());
    QVERIFY(service->connectedAccessPoint().isEmpty());
}

void WifiTogetherTest::oneStoryWithTheInterfaces()
{
    const Application service = wifiApplication();
    NetworkInterfaceService *interfaces = newNetworkInterfaceService();
    QVERIFY(interfaces->ready());
    QCOMPARE(interfaces->preferredInterface().name(), m_stand->preferred);
    QSignalSpy preferred(interfaces, &NetworkInterfaceService::preferredInterfaceChanged);

    service->disconnectAccessPoint();
    QTRY_COMPARE_WITH_TIMEOUT(interfaces->preferredInterface().name(), m_stand->wired, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!service->connected(), Patience);
    Connect connect(service->connectAccessPoint(configOf(m_stand->air.at(m_stand->home))));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(interfaces->preferredInterface().name(), m_stand->preferred, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(interfaces->preferredInterface().connected(), Patience);
    QVERIFY(!interfaces->preferredInterface().configuration().ipAddresses().isEmpty());
    deleteNetworkInterfaceService(&interfaces);
}

void WifiTogetherTest::tellsAWrongPasskey()
{
    const Application service = wifiApplication();
    Connect connect(service->connectAccessPoint(garage("wrong and long")));
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QVERIFY(connect.success.isEmpty());
    QVERIFY(connect.operation->results().isEmpty());
    QVERIFY(!service->connected());
    Connect again(service->connectAccessPoint(garage()));
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
}

void WifiTogetherTest::tellsTheDaemonsRefusal()
{
    const Application service = wifiApplication();
    service->powerOff();
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Connect connect(service->connectAccessPoint(garage()));
    const QString outcome = connect.outcome();
    QVERIFY2(outcome.startsWith(QLatin1String("-1 ")), qPrintable(outcome));
    QVERIFY2(outcome.contains(QLatin1String("radio")), qPrintable(outcome));
}

void WifiTogetherTest::joinsAnOpenNetwork()
{
    const Application service = wifiApplication();
    Connect connect(service->connectAccessPoint(configOf(m_stand->air.at(m_stand->open))));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    const WifiAccessPoint cafe = connect.operation->results().first();
    QCOMPARE(cafe.ssid(), QString::fromUtf8(m_stand->air.at(m_stand->open).ssid));
    QCOMPARE(int(cafe.securityProtocols()), 0x1);
    QCOMPARE(int(cafe.keyManagementTypes()), 0x1);
    QCOMPARE(int(cafe.ciphers()), 0x1);
}

void WifiTogetherTest::cancelsWhenLeaving()
{
    const Application service = wifiApplication();
    Connect pending(service->connectAccessPoint(openNetwork(QStringLiteral("Nowhere"))));
    Connect second(service->connectAccessPoint(garage()));
    QCOMPARE(second.outcome(), QStringLiteral("-1 Another connect operation in progress."));
    QVERIFY(pending.isOpen());
    service->disconnectAccessPoint();
    QCOMPARE(pending.outcome(), QStringLiteral("-1 Cancelling connect operation, due to issued disconnect command"));
    Connect next(service->connectAccessPoint(garage()));
    QCOMPARE(next.outcome(), QStringLiteral("ok"));
    QCOMPARE(pending.failure.count(), 1);
    QVERIFY(pending.success.isEmpty());
}

void WifiTogetherTest::twoApplicationsScan()
{
    const Application first = wifiApplication();
    const Application second = wifiApplication();
    Scan scan(first->scan());
    Scan othersScan(second->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(othersScan.outcome(), QStringLiteral("ok"));
    QVERIFY(scan.operation->results() == othersScan.operation->results());
}

void WifiTogetherTest::twoApplicationsJoin()
{
    const Application first = wifiApplication();
    const Application second = wifiApplication();
    Connect connect(first->connectAccessPoint(garage()));
    Connect othersConnect(second->connectAccessPoint(configOf(m_stand->air.at(m_stand->open))));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(othersConnect.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(first->connected() && second->connected(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(first->connectedAccessPoint().ssid(), second->connectedAccessPoint().ssid(), Patience);
    QCOMPARE(connect.success.count(), 1);
    QCOMPARE(othersConnect.success.count(), 1);
}

/*! Their requests carry the same identifiers, and yet each gets its own replies. */
void WifiTogetherTest::twoProcesses()
{
    const Application service = wifiApplication();
    for (int i = 0; i < 3; ++i) {
        QProcess other;
        other.start(
            QStringLiteral(MORVEKCTL),
            {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Nowhere"), QStringLiteral("--json")});
        QVERIFY(other.waitForStarted(Patience));
        Connect connect(service->connectAccessPoint(garage("too few")));
        Scan scan(service->scan());
        QCOMPARE(connect.outcome(),
                 QStringLiteral("-1 \"psk\" must be 8 to 63 ASCII characters or 64 hexadecimal digits"));
        QCOMPARE(scan.outcome(), QStringLiteral("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(other.state(), QProcess::NotRunning, Patience);
        QCOMPARE(other.exitCode(), 5); // it has scanned too, and found no such network
    }
}

void WifiTogetherTest::laterScanWaitsForLaterResults()
{
    const Application first = wifiApplication();
    const Application second = wifiApplication();
    Scan scan(first->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    Scan othersScan(second->scan());
    QVERIFY(othersScan.isOpen());
    QCOMPARE(othersScan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.success.count(), 1);
}

void WifiTogetherTest::outlivesTheDaemon()
{
    const Application service = wifiApplication();
    m_daemon->kill();
    Scan waiting(service->scan());
    Connect refused(service->connectAccessPoint(garage()));
    const QString outcome = refused.outcome();
    QVERIFY2(outcome.startsWith(QLatin1String("-1 ")), qPrintable(outcome));
    QVERIFY(service->ready());
    QVERIFY(service->connected()); // what the daemon has published stays

    QVERIFY(m_stand->start(m_daemon.get()));
    QVERIFY(waiting.isOpen());
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(waiting.outcome(), QStringLiteral("ok"));
    QVERIFY(waiting.operation->results() == scan.operation->results());
    Connect connect(service->connectAccessPoint(garage()));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

void WifiTogetherTest::deletedWithOperationsOpen()
{
    Application service = wifiApplication();
    Scan scan(service->scan());
    Connect connect(service->connectAccessPoint(openNetwork(QStringLiteral("Nowhere"))));
    service.reset();
    const Application next = wifiApplication();
    Scan later(next->scan());
    QCOMPARE(later.outcome(), QStringLiteral("ok"));
    QVERIFY(scan.isOpen());
    QVERIFY(connect.isOpen());
}

QTEST_GUILESS_MAIN(WifiTogetherTest)
#include "tst_wifitogether.moc"
