// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "playedwifi.h"

#include <wifinetworkmodel.h>

#include <QtCore/QElapsedTimer>

using namespace morvek;

namespace {

constexpr int Pause = 1000;     // the shortest
constexpr int Late = Pause / 4; // by which a test may hear of the end of a scan, on a machine that is busy or emulated

} // namespace

/*! When networks are looked for while somebody looks at them, and when they are not. */
class WifiControllerLookingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void hasAPause();
    void looksOnlyWhenSomebodyLooks();
    void looksAgainAfterThePause();
    void pauseAfterAnAnswerThatTookLong();
    void pauseAfterOneThatNeverCame();
    void pauseIsNotProlonged();
    void pauseIsSharedWithOtherScans();
    void takesTurnsWithAnotherController();
    void stopsAtOnce();
    void waitsForAScanThatIsUnderWay();
    void notWhileANetworkIsJoined();
    void whenWhoeverJoinedIsDeleted();
    void notWhileTheRadioIsOff();
    void notWhileTheDaemonIsGone();

private:
    WifiController &wifi() const { return *m->wifi; }
    int scans() const { return m->daemon.count("scan"); }
    /*! Waits until the pause would be over. */
    static bool outlastPause()
    {
        QTimer timer;
        timer.setSingleShot(true);
        QSignalSpy over(&timer, &QTimer::timeout);
        timer.start(Pause + Pause / 4);
        return over.wait();
    }

    std::unique_ptr<PlayedStation> m;
};

void WifiControllerLookingTest::init()
{
    m = std::make_unique<PlayedStation>();
    wifi().setScanPause(Pause);
    QVERIFY(m->waitForReady());
}

void WifiControllerLookingTest::cleanup()
{
    m.reset();
    PlayedDaemon::forgetAll();
}

void WifiControllerLookingTest::hasAPause()
{
    WifiController controller;
    QSignalSpy changed(&controller, &WifiController::scanPauseChanged);
    controller.setScanPause(10000);
    QCOMPARE(changed.count(), 0);
    controller.setScanPause(999);
    QCOMPARE(controller.scanPause(), 1000);
    controller.setScanPause(-1);
    QCOMPARE(changed.count(), 1);
    controller.setScanPause(1001);
    QCOMPARE(controller.scanPause(), 1001);
    QCOMPARE(changed.count(), 2);
}

void WifiControllerLookingTest::looksOnlyWhenSomebodyLooks()
{
    QSignalSpy changed(&wifi(), &WifiController::lookingChanged);
    QVERIFY(outlastPause());
    QCOMPARE(scans(), 0);
    QElapsedTimer timer;
    timer.start();
    wifi().setLooking(true);
    wifi().setLooking(true);
    QCOMPARE(changed.count(), 1);
    QVERIFY(wifi().isLooking());
    QVERIFY(m->daemon.waitFor("scan"));
    QVERIFY(timer.elapsed() < Pause);
    QTRY_COMPARE(wifi().networks()->rowCount(), 2);
}

void WifiControllerLookingTest::looksAgainAfterThePause()
{
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.elapsed() >= Pause - Late);
    QVERIFY(m->daemon.waitFor("scan", 3));
    QVERIFY(timer.elapsed() >= 2 * Pause - Late);
    QVERIFY(timer.elapsed() < 4 * Pause);
}

void WifiControllerLookingTest::pauseAfterAnAnswerThatTookLong()
{
    m->daemon.silentTo += QStringLiteral("scan");
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QVERIFY(outlastPause());
    QVERIFY(wifi().isScanning());
    QElapsedTimer timer;
    timer.start();
    m->daemon.tellScan();
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.elapsed() >= Pause);
}

void WifiControllerLookingTest::pauseAfterOneThatNeverCame()
{
    m->daemon.silentTo += QStringLiteral("scan");
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    auto *request = wifi().findChild<NetworkRequest *>();
    QVERIFY(request);
    QCOMPARE(request->deadline(), 15000);
    QElapsedTimer timer;
    connect(request, &NetworkRequest::finished, this, [&timer] { timer.start(); });
    request->setDeadline(50);
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.isValid());
    QVERIFY(timer.elapsed() >= Pause - Late);
}

/*! By what happens meanwhile, as somebody who closes the page and opens it again. */
void WifiControllerLookingTest::pauseIsNotProlonged()
{
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(QTest::qWaitFor([&timer] { return timer.elapsed() >= Pause * 9 / 10; }, Pause));
    wifi().setLooking(false);
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.elapsed() < Pause * 9 / 5);
}

/*! Of whoever's. */
void WifiControllerLookingTest::pauseIsSharedWithOtherScans()
{
    WifiController other(m->services.get());
    const NetworkRequest *request = other.scan();
    QTRY_VERIFY(request->isDone());
    QElapsedTimer timer;
    timer.start();
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.elapsed() >= Pause - Late);
}

void WifiControllerLookingTest::takesTurnsWithAnotherController()
{
    WifiController other(m->services.get());
    other.setScanPause(Pause);
    wifi().setLooking(true);
    other.setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(m->daemon.waitFor("scan", 4));
    QVERIFY(timer.elapsed() >= 2 * Pause); // six in that time otherwise
}

void WifiControllerLookingTest::stopsAtOnce()
{
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QTRY_VERIFY(!wifi().isScanning());
    wifi().setLooking(false);
    QVERIFY(outlastPause());
    QCOMPARE(scans(), 1);

    wifi().setLooking(true);
    wifi().setLooking(false);
    QVERIFY(outlastPause());
    QCOMPARE(scans(), 1);
}

/*! It may end; and its results are not thrown away. */
void WifiControllerLookingTest::waitsForAScanThatIsUnderWay()
{
    m->daemon.silentTo += QStringLiteral("scan");
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    QTRY_VERIFY(wifi().isScanning());
    wifi().setLooking(false);
    QVERIFY(wifi().isScanning());
    m->daemon.tellScan();
    QTRY_VERIFY(!wifi().isScanning());
    QTRY_COMPARE(wifi().networks()->rowCount(), 2);

    // One that somebody asks for is not doubled.
    const NetworkRequest *request = wifi().scan();
    QVERIFY(m->daemon.waitFor("scan", 2));
    wifi().setLooking(true);
    QVERIFY(outlastPause());
    QCOMPARE(scans(), 2);
    m->daemon.tellScan();
    QTRY_VERIFY(request->isDone());
    QVERIFY(m->daemon.waitFor("scan", 3));
}

void WifiControllerLookingTest::notWhileANetworkIsJoined()
{
    m->daemon.silentTo += QStringLiteral("wnet_new");
    WifiController other(m->services.get());
    NetworkRequest *request = other.join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"));
    QVERIFY(m->daemon.waitFor("wnet_new"));
    QCOMPARE(scans(), 1);
    wifi().setLooking(true);
    QVERIFY(outlastPause());
    QCOMPARE(scans(), 1);
    request->cancel();
    QVERIFY(m->daemon.waitFor("scan", 2));
}

void WifiControllerLookingTest::whenWhoeverJoinedIsDeleted()
{
    m->daemon.silentTo += QStringLiteral("wnet_new");
    auto other = std::make_unique<WifiController>(m->services.get());
    other->join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"));
    QVERIFY(m->daemon.waitFor("wnet_new"));
    wifi().setLooking(true);
    other.reset();
    QVERIFY(m->daemon.waitFor("scan", 2));
}

void WifiControllerLookingTest::notWhileTheRadioIsOff()
{
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    m->daemon.tellOff();
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    const QPointer<NetworkRequest> last(wifi().findChild<NetworkRequest *>());
    QVERIFY(last);
    QVERIFY(outlastPause());
    QVERIFY(last); // nor has another one been tried
    QCOMPARE(scans(), 1);
    QCOMPARE(wifi().networks()->rowCount(), 0);
    QElapsedTimer timer;
    timer.start();
    m->daemon.tellOn();
    QVERIFY(m->daemon.waitFor("scan", 2));
    QVERIFY(timer.elapsed() < Pause);

    // Nor does it wait for the pause, as there is nothing to be seen.
    QTRY_VERIFY(!wifi().isScanning());
    timer.start();
    m->daemon.tellOff();
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    m->daemon.tellOn();
    QVERIFY(m->daemon.waitFor("scan", 3));
    QVERIFY(timer.elapsed() < Pause);
}

void WifiControllerLookingTest::notWhileTheDaemonIsGone()
{
    wifi().setLooking(true);
    QVERIFY(m->daemon.waitFor("scan"));
    m->daemon.die();
    QTRY_COMPARE(wifi().state(), WifiController::NotReady);
    const QPointer<NetworkRequest> last(wifi().findChild<NetworkRequest *>());
    QVERIFY(last);
    QVERIFY(outlastPause());
    QVERIFY(last);
    m->daemon.comeBack();
    QVERIFY(m->daemon.waitFor("scan", 2));
}

CONTRACT_TEST_MAIN(WifiControllerLookingTest)
#include "tst_wificontrollerlooking.moc"
