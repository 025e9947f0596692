// SPDX-License-Identifier: Apache-2.0
#include "wifiunit.h"

using namespace morvek;

namespace {

const QStringList TownByStrength {
    QStringLiteral("Home"),  QStringLiteral("Garage"),   QStringLiteral("Attic"),  QString::fromUtf8("Café ☕"),
    QStringLiteral("Twins"), QStringLiteral("Office"),   QStringLiteral("Museum"), QStringLiteral("Future"),
    QStringLiteral("Mute"),  QStringLiteral("No level"),
};

} // namespace

/*! What the controller tells of the station, its radio, looking around, and leaving the network. */
class WifiControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_unit = std::make_unique<WifiUnit>(); }
    void cleanup() { m_unit.reset(); }

    void hasNothingToTellAtFirst();
    void becomesReady();
    void isGoneWithItsDaemon();
    void seesAnotherAccessPoint();
    void takesOneUpdateForOneChange();
    void nothingIsAskedWhileNotReady();

    void switchesTheRadio();
    void isSwitchedAlready();
    void switchingIsRefused();
    void switchingIsCancelled();
    void switchingIsOvertaken();
    void waitsForWhatWasAskedBefore();
    void somebodyElseSwitches();

    void scans();
    void scanIsRefused();
    void scansNotWithoutTheRadio();
    void radioGoesOffDuringAScan();

    void leaves();
    void isNotConnectedAnyway();
    void leavingIsRefused();
    void leavingIsCancelled();

    void sharesWithAnotherController();
    void requestsStayUntilTheNext();
    void isDeletedInASlot();

private:
    WifiController &wifi() const { return *m_unit->wifi; }
    bool act(const char *what, const QVariantMap &keys = {}) const
    {
        return m_unit->unit.act(QLatin1String(what), keys);
    }
    bool refuse(const char *message) const
    {
        return act("refuse", {{QStringLiteral("message"), QLatin1String(message)}, {QStringLiteral("err"), 16}});
    }

    std::unique_ptr<WifiUnit> m_unit;
};

void WifiControllerTest::hasNothingToTellAtFirst()
{
    const WifiController controller;
    QCOMPARE(controller.state(), WifiController::NotReady);
    QCOMPARE(controller.stateText(), QStringLiteral("The Wi-Fi service has not started yet."));
    QVERIFY(!controller.isPowered());
    QVERIFY(!controller.isConnected());
    QVERIFY(controller.ssid().isEmpty() && controller.bssid().isEmpty() && controller.joiningSsid().isEmpty());
    QVERIFY(!controller.isLooking());
    QVERIFY(!controller.isScanning());
    QCOMPARE(controller.scanPause(), 10000);
    QCOMPARE(controller.networks()->rowCount(), 0);
}

void WifiControllerTest::becomesReady()
{
    m_unit->begin();
    QCOMPARE(wifi().state(), WifiController::NotReady);
    ToldStates told(wifi());
    QVERIFY(m_unit->unit.start(townFile()));
    QVERIFY(m_unit->unit.waitForReady(&wifi()));
    QCOMPARE(told.take(), QStringList(QStringLiteral("Connected on Home/01")));
    QCOMPARE(plain(wifi().stateText()), QString::fromUtf8("Connected to “Home”."));
    QCOMPARE(wifi().ssid(), QStringLiteral("Home"));
    QCOMPARE(wifi().bssid(), QStringLiteral("02:00:00:00:70:01"));
    QCOMPARE(m_unit->listed(), QStringList(QStringLiteral("Home")));
    QCOMPARE(m_unit->told(QStringLiteral("Home"), WifiNetworkModel::InUseRole), QVariant(true));
    QCOMPARE(m_unit->told(QStringLiteral("Home"), WifiNetworkModel::SecurityRole), QVariant(QStringLiteral("WPA2")));
}

/*! What it has told last stays, also when it is another daemon that comes back. */
void WifiControllerTest::isGoneWithItsDaemon()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    ToldStates told(wifi());
    QVERIFY(act("daemon-dies", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QTRY_COMPARE(told.lines, QStringList(QStringLiteral("NotReady on Home/01")));
    QCOMPARE(wifi().stateText(), QStringLiteral("The Wi-Fi service has stopped."));
    QVERIFY(act("radio-off"));
    QVERIFY(act("daemon-back", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    QVERIFY(!wifi().isConnected());
    QCOMPARE(wifi().stateText(), QStringLiteral("Wi-Fi is off."));
}

/*! Of which the library tells nothing. */
void WifiControllerTest::seesAnotherAccessPoint()
{
    QVERIFY(m_unit->start(QStringLiteral("wifi-roaming")));
    ToldStates told(wifi());
    QVERIFY(act("roam", {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:62:02")}}));
    QTRY_COMPARE(told.lines, QStringList(QStringLiteral("Connected on Home/02")));
    QCOMPARE(m_unit->listed(), QStringList(QStringLiteral("Home")));
}

/*! The library tells the radio before the connection. */
void WifiControllerTest::takesOneUpdateForOneChange()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    ToldStates told(wifi());
    QVERIFY(act("radio-off"));
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    QVERIFY(act("radio-on"));
    QTRY_COMPARE(wifi().state(), WifiController::Connected);
    QVERIFY(told.lines.removeAll(QStringLiteral("Disconnected on")) < 2); // the daemon takes two updates
    QCOMPARE(told.lines, QStringList({QStringLiteral("Off off"), QStringLiteral("Connected on Home/01")}));
}

void WifiControllerTest::nothingIsAskedWhileNotReady()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(act("daemon-dies", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QTRY_COMPARE(wifi().state(), WifiController::NotReady);
    const QList<NetworkRequest *> requests {wifi().setPowered(false), wifi().scan(), wifi().leave(),
                                            wifi().join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"))};
    for (NetworkRequest *request : requests)
        QCOMPARE(m_unit->endOf(request), QStringLiteral("NotReady: The Wi-Fi service has stopped."));
    QVERIFY(act("daemon-back", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QVERIFY(m_unit->unit.waitForReady(&wifi()));
    QCOMPARE(m_unit->asked(), QStringList());
}

void WifiControllerTest::switchesTheRadio()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QCOMPARE(m_unit->endOf(wifi().scan()), QStringLiteral("done"));
    ToldStates told(wifi());
    NetworkRequest *off = wifi().setPowered(false);
    QCOMPARE(off->deadline(), 10000);
    QCOMPARE(wifi().state(), WifiController::SwitchingOff);
    QCOMPARE(wifi().stateText(), QStringLiteral("Wi-Fi is being switched off."));
    connect(off, &NetworkRequest::finished, this, [&] { told.lines += QStringLiteral("finished"); });
    QCOMPARE(m_unit->endOf(off), QStringLiteral("done"));
    QCOMPARE(told.take(),
             QStringList(
                 {QStringLiteral("SwitchingOff on Home/01"), QStringLiteral("Off off"), QStringLiteral("finished")}));
    QTRY_COMPARE(m_unit->listed(), QStringList()); // what is switched off hears nothing

    NetworkRequest *on = wifi().setPowered(true);
    QCOMPARE(wifi().state(), WifiController::SwitchingOn);
    QCOMPARE(wifi().stateText(), QStringLiteral("Wi-Fi is being switched on."));
    QCOMPARE(m_unit->endOf(on), QStringLiteral("done"));
    QVERIFY(wifi().isPowered());
    QCOMPARE(told.lines.constFirst(), QStringLiteral("SwitchingOn off"));
    QTRY_COMPARE(told.lines.constLast(), QStringLiteral("Connected on Home/01"));
    QCOMPARE(m_unit->asked(),
             QStringList({QStringLiteral("scan"), QStringLiteral("wifi_power"), QStringLiteral("wifi_power")}));
}

void WifiControllerTest::isSwitchedAlready()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    ToldStates told(wifi());
    NetworkRequest *request = wifi().setPowered(true);
    QVERIFY(request->isRunning());
    QCOMPARE(wifi().state(), WifiController::Connected);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(wifi().scan()), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(), QStringList(QStringLiteral("scan")));
    QCOMPARE(told.take(), QStringList());

    // Somebody else has switched it back.
    QCOMPARE(m_unit->endOf(wifi().setPowered(false)), QStringLiteral("done"));
    QVERIFY(act("radio-on"));
    QTRY_VERIFY(wifi().isPowered());
    QCOMPARE(m_unit->endOf(wifi().setPowered(true)), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(), QStringList({QStringLiteral("scan"), QStringLiteral("wifi_power")}));
}

void WifiControllerTest::switchingIsRefused()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(refuse("wifi_power"));
    NetworkRequest *off = wifi().setPowered(false);
    off->setDeadline(300);
    QCOMPARE(m_unit->endOf(off),
             QStringLiteral("TimedOut: Wi-Fi has not gone off in time; the request may have been refused."));
    QCOMPARE(wifi().state(), WifiController::Connected);
    QVERIFY(act("radio-off"));
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    NetworkRequest *on = wifi().setPowered(true);
    on->setDeadline(300);
    QCOMPARE(m_unit->endOf(on),
             QStringLiteral("TimedOut: Wi-Fi has not come on in time; the request may have been refused."));
    QCOMPARE(wifi().state(), WifiController::Off);
}

void WifiControllerTest::switchingIsCancelled()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *off = wifi().setPowered(false);
    off->cancel();
    QCOMPARE(m_unit->endOf(off),
             QStringLiteral("Cancelled: Cancelled. Wi-Fi may still be switched off, and its network be left."));
    QTRY_COMPARE(wifi().state(), WifiController::Off);
    NetworkRequest *on = wifi().setPowered(true);
    on->cancel();
    QCOMPARE(m_unit->endOf(on), QStringLiteral("Cancelled: Cancelled. Wi-Fi may still be switched on."));
    QTRY_VERIFY(wifi().isPowered());
}

void WifiControllerTest::switchingIsOvertaken()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *off = wifi().setPowered(false);
    NetworkRequest *alsoOff = wifi().setPowered(false);
    NetworkRequest *on = wifi().setPowered(true);
    QCOMPARE(wifi().state(), WifiController::SwitchingOn);
    QCOMPARE(m_unit->endOf(off), QStringLiteral("Overtaken: Switching Wi-Fi on was asked for meanwhile."));
    QCOMPARE(m_unit->endOf(alsoOff), QStringLiteral("Overtaken: Switching Wi-Fi on was asked for meanwhile."));
    QCOMPARE(m_unit->endOf(on), QStringLiteral("done"));
    QVERIFY(wifi().isPowered());
    QCOMPARE(m_unit->asked(),
             QStringList({QStringLiteral("wifi_power"), QStringLiteral("wifi_power"), QStringLiteral("wifi_power")}));
    QTRY_COMPARE(wifi().state(), WifiController::Connected);

    NetworkRequest *offAgain = wifi().setPowered(false);
    QCOMPARE(m_unit->endOf(offAgain), QStringLiteral("done"));
    NetworkRequest *onAgain = wifi().setPowered(true);
    QCOMPARE(m_unit->endOf(wifi().setPowered(false)), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(onAgain), QStringLiteral("Overtaken: Switching Wi-Fi off was asked for meanwhile."));
}

/*! The radio is on all the while, as the daemon refuses to switch it off. */
void WifiControllerTest::waitsForWhatWasAskedBefore()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(refuse("wifi_power"));
    wifi().setPowered(false)->cancel();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(m_unit->endOf(wifi().setPowered(true)), QStringLiteral("done"));
    QVERIFY(timer.elapsed() >= 900); // by then it would have gone off
    QCOMPARE(m_unit->asked(), QStringList({QStringLiteral("wifi_power"), QStringLiteral("wifi_power")}));
}

void WifiControllerTest::somebodyElseSwitches()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(act("no-reply", {{QStringLiteral("message"), QStringLiteral("wifi_power")}}));
    NetworkRequest *off = wifi().setPowered(false);
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("wifi_power")).isValid());
    QVERIFY(off->isRunning());
    QVERIFY(act("radio-off"));
    QCOMPARE(m_unit->endOf(off), QStringLiteral("done"));
}

void WifiControllerTest::scans()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QSignalSpy changed(&wifi(), &WifiController::scanningChanged);
    NetworkRequest *request = wifi().scan();
    QCOMPARE(request->deadline(), 15000);
    QVERIFY(wifi().isScanning());
    QStringList listed;
    connect(request, &NetworkRequest::finished, this, [&] {
        listed = m_unit->listed();
        QVERIFY(!wifi().isScanning());
    });
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    QCOMPARE(listed, TownByStrength);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(m_unit->told(QStringLiteral("Garage"), WifiNetworkModel::LevelRole), QVariant(-40));
    QCOMPARE(m_unit->told(QStringLiteral("Garage"), WifiNetworkModel::AccessPointsRole), QVariant(3));
    QCOMPARE(m_unit->told(QStringLiteral("Future"), WifiNetworkModel::SecurityRole), QVariant(QStringLiteral("WPA3")));
    QCOMPARE(m_unit->asked(), QStringList(QStringLiteral("scan")));
}

void WifiControllerTest::scanIsRefused()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(refuse("scan"));
    NetworkRequest *request = wifi().scan();
    request->setDeadline(300);
    QCOMPARE(m_unit->endOf(request),
             QStringLiteral("TimedOut: The search for networks has not ended in time; it may have been refused."));
    QVERIFY(!wifi().isScanning());
    NetworkRequest *cancelled = wifi().scan();
    cancelled->cancel();
    QCOMPARE(m_unit->endOf(cancelled), QStringLiteral("Cancelled: Cancelled."));
}

void WifiControllerTest::scansNotWithoutTheRadio()
{
    QVERIFY(m_unit->start(QStringLiteral("radio-off")));
    QCOMPARE(m_unit->endOf(wifi().scan()), QStringLiteral("NotReady: Wi-Fi is off: switch it on first."));
    QCOMPARE(m_unit->endOf(wifi().join(QStringLiteral("Home"), QStringLiteral("correct horse 7"))),
             QStringLiteral("NotReady: Wi-Fi is off: switch it on first."));
    QCOMPARE(m_unit->endOf(wifi().setPowered(true)), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(), QStringList(QStringLiteral("wifi_power")));
}

void WifiControllerTest::radioGoesOffDuringAScan()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(act("no-reply", {{QStringLiteral("message"), QStringLiteral("scan")}}));
    NetworkRequest *request = wifi().scan();
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("scan")).isValid());
    QVERIFY(act("radio-off"));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Overtaken: Wi-Fi was switched off meanwhile."));
}

void WifiControllerTest::leaves()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    ToldStates told(wifi());
    NetworkRequest *request = wifi().leave();
    QCOMPARE(request->deadline(), 10000);
    QCOMPARE(request->subject(), QStringLiteral("Home"));
    QCOMPARE(wifi().state(), WifiController::Leaving);
    QCOMPARE(plain(wifi().stateText()), QString::fromUtf8("Leaving “Home”."));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    QCOMPARE(wifi().stateText(), QStringLiteral("Not connected."));
    QCOMPARE(told.take(), QStringList({QStringLiteral("Leaving on Home/01"), QStringLiteral("Disconnected on")}));
    QCOMPARE(m_unit->asked(), QStringList(QStringLiteral("wnet_disableall")));
}

/*! The daemon may be joining what another application has asked for. */
void WifiControllerTest::isNotConnectedAnyway()
{
    QVERIFY(m_unit->start(QStringLiteral("mute-and-open")));
    ToldStates told(wifi());
    QCOMPARE(m_unit->endOf(wifi().leave()), QStringLiteral("done"));
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("wnet_disableall")).isValid());
    QCOMPARE(told.take(), QStringList());
}

void WifiControllerTest::leavingIsRefused()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(refuse("wnet_disableall"));
    NetworkRequest *request = wifi().leave();
    request->setDeadline(300);
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("TimedOut: “Home” has not been left in time; the request may have been refused."));
    QCOMPARE(wifi().state(), WifiController::Connected);
}

void WifiControllerTest::leavingIsCancelled()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *request = wifi().leave();
    request->cancel();
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("Cancelled: Cancelled. “Home” may still be left."));
    QTRY_COMPARE(wifi().state(), WifiController::Disconnected);
}

void WifiControllerTest::sharesWithAnotherController()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    auto other = std::make_unique<WifiController>(m_unit->services.get());
    QCOMPARE(other->state(), WifiController::Connected);
    QCOMPARE(m_unit->endOf(other->scan()), QStringLiteral("done"));
    QTRY_COMPARE(m_unit->listed(), TownByStrength); // one station, one list
    const WifiController late(m_unit->services.get());
    QCOMPARE(late.networks()->rowCount(), 10);

    NetworkRequest *off = other->setPowered(false);
    QCOMPARE(wifi().state(), WifiController::Connected); // it is the other one that is at it
    NetworkRequest *on = wifi().setPowered(true);
    QCOMPARE(m_unit->endOf(off), QStringLiteral("Overtaken: Switching Wi-Fi on was asked for meanwhile."));
    QCOMPARE(m_unit->endOf(on), QStringLiteral("done"));

    NetworkRequest *leaving = other->leave();
    other.reset();
    QVERIFY(leaving);
    QTRY_COMPARE(wifi().state(), WifiController::Disconnected);
}

void WifiControllerTest::requestsStayUntilTheNext()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    wifi().setLooking(true);
    const QPointer<NetworkRequest> first(wifi().scan());
    QCOMPARE(m_unit->endOf(first), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(wifi().leave()), QStringLiteral("done"));
    // Nor does looking around take it away.
    wifi().setScanPause(1000);
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("scan"), {}, m_unit->askedSoFar()).isValid());
    QTRY_VERIFY(!wifi().isScanning());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(first && first->isDone());
    const NetworkRequest *second = wifi().scan();
    QTRY_VERIFY(!first);
    QVERIFY(second->isRunning() || second->isDone());
}

void WifiControllerTest::isDeletedInASlot()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    connect(&wifi(), &WifiController::stateChanged, this, [this] { m_unit->wifi.reset(); });
    wifi().setPowered(false);
    QTRY_VERIFY(!m_unit->wifi);

    m_unit->wifi = std::make_unique<WifiController>(m_unit->services.get());
    QTRY_VERIFY(m_unit->wifi->state() == WifiController::Off);
    connect(m_unit->wifi->setPowered(true), &NetworkRequest::finished, this, [this] { m_unit->services.reset(); });
    QTRY_VERIFY(!m_unit->services);
    QCOMPARE(wifi().state(), WifiController::NotReady);
}

QTEST_GUILESS_MAIN(WifiControllerTest)
#include "tst_wificontroller.moc"
