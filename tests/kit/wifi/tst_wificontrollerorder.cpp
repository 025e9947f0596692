// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "plainrequest.h"
#include "playedwifi.h"
#include "toldstates.h"

#include <asyncwificonnectoperation.h>
#include <wificonnectionconfig.h>
#include <wifiservice.h>

using namespace morvek;

namespace {

const char *const NotLetIn = "CTRL-EVENT-SSID-TEMP-DISABLED id=7 ssid=\"Garage\" reason=WRONG_KEY";
const char *const NotFound = "CTRL-EVENT-NETWORK-NOT-FOUND ";

} // namespace

/*! What daemons tell in an order of their own, and what others do with the same service. */
class WifiControllerOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void formerNetworkIsNoOutcome();
    void formerNetworkHidesNoFailure();
    void withoutLeaving();
    void withoutLeavingAfterTheFormerWasTold();
    void samenessIsNoOutcome();
    void eventsBeforeItIsJoined();
    void failureOfAnotherNetwork();
    void failureOfANameThatIsEscaped();
    void isStillInRange();
    void looksOnceAtATime();

    void leavesForAnotherNetwork();
    void leavesAndIsBackAtOnce();
    void oneUpdateIsOneChange();

    void switchesOffAndOn();
    void statusComesLater();

    void serviceIsBusy();
    void serviceIsToldToLeave();
    void servicesAreDeletedMeanwhile();
    void isRefused();

private:
    WifiController &wifi() const { return *m->wifi; }
    QString endOf(const NetworkRequest *request) const
    {
        if (!QTest::qWaitFor([request] { return !request->isRunning(); }, 10000))
            return QStringLiteral("open");
        return request->isDone() ? QStringLiteral("done") : QVariant::fromValue(request->failure()).toString();
    }
    NetworkRequest *join(const char *ssid = "Garage")
    {
        return wifi().join(QLatin1String(ssid), QStringLiteral("open sesame 42"));
    }
    /*! What was told before is known when a scan that comes after it is. */
    bool isUnmoved(const NetworkRequest *request)
    {
        WifiController other(m->services.get());
        const NetworkRequest *scan = other.scan();
        return endOf(scan) == QLatin1String("done") && request->isRunning();
    }

    std::unique_ptr<PlayedStation> m;
};

void WifiControllerOrderTest::init()
{
    m = std::make_unique<PlayedStation>();
    QVERIFY(m->waitForReady());
}

void WifiControllerOrderTest::cleanup()
{
    m.reset();
    PlayedDaemon::forgetAll();
}

/*! The library takes what the former network tells for what has come of it. */
void WifiControllerOrderTest::formerNetworkIsNoOutcome()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Home", "09");
    QVERIFY(isUnmoved(request));
    QCOMPARE(wifi().bssid(), QStringLiteral("02:00:00:00:60:09"));
    m->daemon.tellLeft();
    QTRY_VERIFY(!wifi().isConnected());
    QVERIFY(request->isRunning());
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
}

void WifiControllerOrderTest::formerNetworkHidesNoFailure()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Home", "09");
    QVERIFY(isUnmoved(request));
    m->daemon.tellLeft();
    m->daemon.tellEvent(NotLetIn);
    QCOMPARE(endOf(request), QStringLiteral("WrongPasskey"));
}

/*! A daemon may go from one network straight to another. */
void WifiControllerOrderTest::withoutLeaving()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(wifi().ssid(), QStringLiteral("Garage"));
}

/*! Of which the library tells nothing at all. */
void WifiControllerOrderTest::withoutLeavingAfterTheFormerWasTold()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Home", "09");
    QVERIFY(isUnmoved(request));
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
}

void WifiControllerOrderTest::samenessIsNoOutcome()
{
    const NetworkRequest *request = join("Home");
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Home", "01");
    QVERIFY(isUnmoved(request));
    m->daemon.tellLeft();
    m->daemon.tellConnection("Home", "01");
    QCOMPARE(endOf(request), QStringLiteral("done"));
}

void WifiControllerOrderTest::eventsBeforeItIsJoined()
{
    m->daemon.silentTo += QStringLiteral("scan");
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("scan"));
    m->daemon.tellEvent(NotLetIn);
    m->daemon.tellEvent(NotFound);
    m->daemon.tellLeft();
    m->daemon.tellConnection("Home", "09");
    QTRY_COMPARE(wifi().bssid(), QStringLiteral("02:00:00:00:60:09"));
    QVERIFY(request->isRunning());
    QCOMPARE(m->daemon.count("scan"), 1);
    m->daemon.tellScan();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
}

/*! Which the library takes for that of the network that it joins itself. */
void WifiControllerOrderTest::failureOfAnotherNetwork()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellEvent("CTRL-EVENT-SSID-TEMP-DISABLED id=8 ssid=\"Garag\" reason=WRONG_KEY");
    QVERIFY(isUnmoved(request));
    QCOMPARE(m->daemon.count("scan"), 2);
    m->daemon.tellLeft();
    m->daemon.tellEvent("CTRL-EVENT-SSID-TEMP-DISABLED id=7 ssid=\"Garage\" reason=CONN_FAILED");
    QCOMPARE(endOf(request), QStringLiteral("WrongPasskey"));
    QCOMPARE(m->daemon.count("scan"), 3);
    m->daemon.tellEvent(NotLetIn); // later, when nobody waits
    QVERIFY(endOf(wifi().scan()) == QLatin1String("done"));
}

void WifiControllerOrderTest::failureOfANameThatIsEscaped()
{
    m->daemon.inRange += QStringLiteral("My \"Garage\"");
    const NetworkRequest *request = join("My \"Garage\"");
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellEvent("CTRL-EVENT-SSID-TEMP-DISABLED id=7 ssid=\"My \\\"Garage\\\"\" reason=WRONG_KEY");
    QCOMPARE(endOf(request), QStringLiteral("WrongPasskey"));
    QCOMPARE(m->daemon.count("scan"), 1);
}

/*! Daemons tell at each turn that they have not found it yet. */
void WifiControllerOrderTest::isStillInRange()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.tellLeft();
    m->daemon.tellEvent(NotFound);
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(isUnmoved(request));
    QTRY_VERIFY(!wifi().isScanning());
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.count("wnet_disableall"), 0);
}

void WifiControllerOrderTest::looksOnceAtATime()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    m->daemon.silentTo += QStringLiteral("scan");
    m->daemon.tellLeft();
    m->daemon.tellEvent(NotFound);
    m->daemon.tellEvent(NotFound);
    m->daemon.tellEvent("CTRL-EVENT-SCAN-STARTED ");
    QVERIFY(m->daemon.waitFor("scan", 2));
    m->daemon.inRange.removeAll(QStringLiteral("Garage"));
    m->daemon.tellScan();
    QCOMPARE(endOf(request), QStringLiteral("OutOfRange"));
    QVERIFY(m->daemon.waitFor("wnet_disableall"));
    QCOMPARE(m->daemon.count("scan"), 2);
}

void WifiControllerOrderTest::leavesForAnotherNetwork()
{
    const NetworkRequest *request = wifi().leave();
    QVERIFY(m->daemon.waitFor("wnet_disableall"));
    m->daemon.tellConnection("Home", "09"); // has not heard of it yet
    QVERIFY(isUnmoved(request));
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("Overtaken"));
    QVERIFY(request->sentence().contains(QStringLiteral("Garage")));
}

void WifiControllerOrderTest::leavesAndIsBackAtOnce()
{
    const NetworkRequest *request = wifi().leave();
    QVERIFY(m->daemon.waitFor("wnet_disableall"));
    m->daemon.tellLeft();
    m->daemon.tellConnection("Garage", "02");
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(wifi().state(), WifiController::Connected);
}

/*! The library tells the radio before it has read the connection. */
void WifiControllerOrderTest::oneUpdateIsOneChange()
{
    ToldStates told(wifi());
    m->daemon.tellOff();
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    m->daemon.tellOn();
    QTRY_COMPARE(wifi().state(), WifiController::Disconnected);
    m->daemon.tellOn();                              // once more, and
    m->daemon.tellEvent("CTRL-EVENT-SCAN-STARTED "); // what is not shown
    const NetworkRequest *scan = wifi().scan();
    QCOMPARE(endOf(scan), QStringLiteral("done"));
    QCOMPARE(told.take(), QStringList({QStringLiteral("Off off"), QStringLiteral("Disconnected on")}));
}

/*! Both come true, one after the other: then there is nothing left to wait for. */
void WifiControllerOrderTest::switchesOffAndOn()
{
    QElapsedTimer timer;
    timer.start();
    wifi().setPowered(false);
    const NetworkRequest *on = wifi().setPowered(true);
    QVERIFY(m->daemon.waitFor("wifi_power", 2));
    QVERIFY(isUnmoved(on));
    m->daemon.tellOff();
    QTRY_VERIFY(!wifi().isPowered());
    QVERIFY(on->isRunning());
    m->daemon.tellOn();
    QCOMPARE(endOf(on), QStringLiteral("done"));
    QVERIFY(timer.elapsed() < 1000);
}

/*! What the library does not tell is looked at as soon as it is there. */
void WifiControllerOrderTest::statusComesLater()
{
    NetworkServices services;
    const PlainController plain(PlainController::Wifi, &services);
    QTRY_COMPARE(plain.availability(), NetworkController::Ready);
    QVERIFY(ZopObject::remove(PlayedDaemon::statusOf(PlayedDaemon::Wifi)));
    const WifiController late(&services);
    QTRY_COMPARE(late.state(), WifiController::Disconnected);
    m->daemon.die();
    m->daemon.comeBack();
    QTRY_COMPARE(late.state(), WifiController::Connected);
    m->daemon.tellConnection("Home", "09");
    QTRY_COMPARE(late.bssid(), QStringLiteral("02:00:00:00:60:09"));
}

/*! With something that this kit has not asked for. */
void WifiControllerOrderTest::serviceIsBusy()
{
    PlainController plain(PlainController::Wifi, m->services.get());
    auto *service = static_cast<WifiService *>(plain.service());
    WifiConnectionConfig config;
    config.setSsid(QStringLiteral("Elsewhere"));
    const std::unique_ptr<AsyncWifiConnectOperation> operation(service->connectAccessPoint(config));
    const NetworkRequest *request = join();
    QCOMPARE(endOf(request), QStringLiteral("Busy"));
    QCOMPARE(request->text(), QStringLiteral("Another connect operation in progress."));
    QCOMPARE(request->sentence(), QStringLiteral("Another network is being joined: wait for that."));
    QCOMPARE(m->daemon.count("wnet_disableall"), 0);
}

void WifiControllerOrderTest::serviceIsToldToLeave()
{
    const NetworkRequest *request = join();
    QVERIFY(m->daemon.waitFor("wnet_select"));
    const PlainController plain(PlainController::Wifi, m->services.get());
    static_cast<WifiService *>(plain.service())->disconnectAccessPoint();
    QCOMPARE(endOf(request), QStringLiteral("Overtaken"));
    QCOMPARE(request->sentence(), QStringLiteral("Leaving the network was asked for meanwhile."));
}

void WifiControllerOrderTest::servicesAreDeletedMeanwhile()
{
    m->daemon.silentTo += QStringLiteral("scan");
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    const QList<NetworkRequest *> requests {join(), wifi().scan(), wifi().setPowered(false), wifi().leave()};
    m->services.reset();
    QCOMPARE(wifi().state(), WifiController::NotReady);
    for (const NetworkRequest *request : requests)
        QVERIFY(endOf(request) == QLatin1String(request == requests.constFirst() ? "Overtaken" : "Lost"));
    QVERIFY(!wifi().isScanning());
    QCOMPARE(endOf(wifi().scan()), QStringLiteral("NotReady"));
}

void WifiControllerOrderTest::isRefused()
{
    m->daemon.refusal = QStringLiteral("no room");
    const NetworkRequest *request = join();
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->text(), QStringLiteral("no room"));
    QCOMPARE(request->code(), 0);
    QCOMPARE(wifi().state(), WifiController::Connected);
}

CONTRACT_TEST_MAIN(WifiControllerOrderTest)
#include "tst_wificontrollerorder.moc"
