// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hotspotfixture.h"

using namespace morvek;

namespace {

const QString Fetch = QStringLiteral("retrieve_profile");
const QString Start = QStringLiteral("start Morvek Car");
const QString Stop = QStringLiteral("stop");

} // namespace

/*! How switching the hotspot begins, ends, and stands beside other requests. */
class HotspotControllerSwitchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m.reset(); }

    void switchesOn();
    void switchesOff();
    void startsWithTheProfileOfNow();
    void isOnAlready();
    void isOffAlready();
    void isOffAlreadyAndCannotBeStopped();
    void isSwitchedByOthersMeanwhile();
    void isRefused();
    void settingsAreNotTold();
    void answerOfAnotherKind();
    void neverComesTrue_data();
    void neverComesTrue();
    void isNeverAnswered_data() { addStages(); }
    void isNeverAnswered();
    void isCancelled();
    void cancelledWhileReadingAsksForNothing();
    void cancelledWhenTheSettingsAreThere();
    void isOvertakenWhileReading();
    void isOvertakenWhenAsked();
    void isOvertakenOnItsWayOff();
    void goesOffAndOnAgain();
    void overtakingIsRefused();
    void isSwitchedBackAtOnce();
    void isAskedForTwice();
    void isOvertakenByAnotherController();
    void waitsForChangesOfTheProfile();
    void switchesOffDuringChangesOfTheProfile();
    void isLost_data() { addStages(); }
    void isLost();
    void isLostWhenTheDaemonIsReplacedAtOnce();
    void incompleteProfiles_data();
    void incompleteProfiles();
    void startsAnOpenOneWithoutPassphrase();
    void doesNotWriteThatForEver();

private:
    static void addStages();
    /*! Starts with the hotspot on. */
    void beOn();

    std::unique_ptr<HotspotFixture> m;
};

void HotspotControllerSwitchTest::init()
{
    m = std::make_unique<HotspotFixture>();
    QVERIFY(m->waitForProfile());
}

void HotspotControllerSwitchTest::beOn()
{
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
}

void HotspotControllerSwitchTest::switchesOn()
{
    m->daemon.performs = false;
    m->daemon.silentTo += QStringLiteral("start");
    const StateLog log(m->controller.get());
    NetworkRequest *request = m->controller->setOn(true);
    QSignalSpy finished(request, &NetworkRequest::finished);
    QCOMPARE(request->deadline(), 20000);
    QVERIFY(waitForRequest(m->daemon, "start"));
    m->daemon.speak("start");
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QVERIFY(request->isRunning()); // it was accepted, but is not so
    m->daemon.setActive(true);
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(finished.count(), 1);
    QVERIFY(request->sentence().isEmpty());
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Start, Fetch}));
    QCOMPARE(log.states,
             QStringList({QStringLiteral("SwitchingOn, busy"), QStringLiteral("SwitchingOn, on, busy"),
                          QStringLiteral("On, on")}));
}

void HotspotControllerSwitchTest::switchesOff()
{
    beOn();
    m->daemon.performs = false;
    const StateLog log(m->controller.get());
    const NetworkRequest *request = m->controller->setOn(false);
    QCOMPARE(request->deadline(), 20000);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QVERIFY(request->isRunning());
    m->daemon.setActive(false);
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Stop, Fetch}));
    QCOMPARE(log.states,
             QStringList({QStringLiteral("SwitchingOff, on, busy"), QStringLiteral("SwitchingOff, busy"),
                          QStringLiteral("Off")}));
}

void HotspotControllerSwitchTest::startsWithTheProfileOfNow()
{
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    QCOMPARE(endOf(m->controller->setOn(true)), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, QStringLiteral("start Theirs")}));
    QCOMPARE(m->controller->name(), QStringLiteral("Theirs"));
}

void HotspotControllerSwitchTest::isOnAlready()
{
    beOn();
    QCOMPARE(endOf(m->controller->setOn(true)), QStringLiteral("done"));
    QVERIFY(m->daemon.requests.isEmpty());
}

// Somebody may have had it started, which the status does not tell yet.
void HotspotControllerSwitchTest::isOffAlready()
{
    m->daemon.silentTo += Stop;
    const NetworkRequest *request = m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QVERIFY(request->isRunning());
    m->daemon.speak("stop");
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Stop, Fetch}));
}

void HotspotControllerSwitchTest::isOffAlreadyAndCannotBeStopped()
{
    m->daemon.refuse("stop");
    QCOMPARE(endOf(m->controller->setOn(false)), QStringLiteral("done"));
}

void HotspotControllerSwitchTest::isSwitchedByOthersMeanwhile()
{
    m->daemon.silentTo += Fetch;
    const NetworkRequest *request = m->controller->setOn(true);
    m->daemon.setActive(true);
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerSwitchTest::isRefused()
{
    m->daemon.refuse("start");
    const NetworkRequest *request = m->controller->setOn(true);
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->code(), -1);
    QCOMPARE(request->text(), QStringLiteral("Failed to enable config."));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service refuses to switch on."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("Off"));

    m->daemon.refuse("stop");
    beOn();
    request = m->controller->setOn(false);
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->text(), QStringLiteral("Failed to disable config."));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service refuses to switch off."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("On, on"));
}

void HotspotControllerSwitchTest::settingsAreNotTold()
{
    m->daemon.refuse("retrieve_profile");
    const NetworkRequest *request = m->controller->setOn(true);
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->text(), QStringLiteral("Failed to retrieve WifiHotspot config."));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot was not switched on: its settings cannot be read."));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerSwitchTest::answerOfAnotherKind()
{
    m->daemon.answers.insert(Fetch, {{QStringLiteral("res"), QStringLiteral("stop")}});
    const NetworkRequest *request = m->controller->setOn(true);
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerSwitchTest::neverComesTrue_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<QString>("sentence");
    QTest::addRow("on") << true << QStringLiteral("The hotspot has not come on in time. It still may.");
    QTest::addRow("off") << false << QStringLiteral("The hotspot has not gone off in time. It still may.");
}

void HotspotControllerSwitchTest::neverComesTrue()
{
    QFETCH(bool, on);
    QFETCH(QString, sentence);
    if (!on)
        beOn();
    m->daemon.performs = false;
    NetworkRequest *request = m->controller->setOn(on);
    QVERIFY(waitForRequest(m->daemon, on ? "start" : "stop"));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done")); // so that was answered, too
    request->setDeadline(1);
    QCOMPARE(endOf(request), QStringLiteral("TimedOut"));
    QCOMPARE(request->sentence(), sentence);
    QCOMPARE(stateOf(*m->controller), on ? QStringLiteral("Off") : QStringLiteral("On, on"));
    m->daemon.setActive(on); // late
    QTRY_COMPARE(m->controller->isOn(), on);
    QCOMPARE(request->failure(), NetworkRequest::TimedOut);
}

void HotspotControllerSwitchTest::addStages()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("outlook");
    QTest::addRow("reading") << true << Fetch << QStringLiteral("The hotspot was not switched on.");
    QTest::addRow("on") << true << QStringLiteral("start") << QStringLiteral("The hotspot may still come on.");
    QTest::addRow("off") << false << Stop << QStringLiteral("The hotspot may still go off.");
}

void HotspotControllerSwitchTest::isNeverAnswered()
{
    QFETCH(bool, on);
    QFETCH(QString, message);
    QFETCH(QString, outlook);
    if (!on)
        beOn();
    m->daemon.silentTo += message;
    NetworkRequest *request = m->controller->setOn(on);
    QVERIFY(waitForRequest(m->daemon, qPrintable(message)));
    request->setDeadline(1);
    QCOMPARE(endOf(request), QStringLiteral("TimedOut"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service does not answer. ") + outlook);
}

void HotspotControllerSwitchTest::isCancelled()
{
    m->daemon.silentTo += QStringLiteral("start");
    NetworkRequest *request = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    request->cancel();
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The hotspot may still come on."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("Off"));
    m->daemon.speak("start"); // and so it does
    QTRY_COMPARE(stateOf(*m->controller), QStringLiteral("On, on"));

    m->daemon.silentTo += Stop;
    request = m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    request->cancel();
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The hotspot may still go off."));

    m->daemon.performs = false;
    m->daemon.silentTo.clear();
    request = m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop", 2));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done")); // so that was answered, too
    request->cancel();
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The hotspot may still go off."));
}

void HotspotControllerSwitchTest::cancelledWhileReadingAsksForNothing()
{
    m->daemon.silentTo += Fetch;
    NetworkRequest *request = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    request->cancel();
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The hotspot was not switched on."));
    m->daemon.speak("retrieve_profile");
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Fetch}));
}

// The library has the end of its operation on the way.
void HotspotControllerSwitchTest::cancelledWhenTheSettingsAreThere()
{
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    NetworkRequest *request = m->controller->setOn(true);
    connect(m->controller.get(), &HotspotController::profileChanged, request, &NetworkRequest::cancel);
    QVERIFY(QSignalSpy(request, &NetworkRequest::finished).wait()); // in an event loop that deletes nothing early
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The hotspot was not switched on."));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Fetch}));
}

void HotspotControllerSwitchTest::isOvertakenWhileReading()
{
    m->daemon.silentTo += Fetch;
    const StateLog log(m->controller.get());
    const NetworkRequest *on = m->controller->setOn(true);
    const NetworkRequest *off = m->controller->setOn(false);
    QCOMPARE(m->controller->state(), HotspotController::SwitchingOff);
    QCOMPARE(endOf(on), QStringLiteral("Overtaken"));
    QCOMPARE(on->sentence(), QStringLiteral("The hotspot is to be switched off instead."));
    QCOMPARE(endOf(off), QStringLiteral("done"));
    m->daemon.speak("retrieve_profile");
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Stop, Fetch})); // and no start
    QVERIFY(!log.states.contains(QStringLiteral("On, on")));
}

void HotspotControllerSwitchTest::isOvertakenWhenAsked()
{
    m->daemon.performs = false;
    const NetworkRequest *on = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    const NetworkRequest *off = m->controller->setOn(false);
    QCOMPARE(endOf(on), QStringLiteral("Overtaken"));
    QCOMPARE(endOf(off), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Start, Stop}));
}

void HotspotControllerSwitchTest::isOvertakenOnItsWayOff()
{
    beOn();
    m->daemon.performs = false;
    const NetworkRequest *off = m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    const NetworkRequest *on = m->controller->setOn(true); // which it still is
    QCOMPARE(m->controller->state(), HotspotController::SwitchingOn);
    QCOMPARE(endOf(off), QStringLiteral("Overtaken"));
    QCOMPARE(off->sentence(), QStringLiteral("The hotspot is to be switched on instead."));
    QCOMPARE(endOf(on), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Stop, Fetch, Start}));
}

// What the first request has brought about is no answer to the second.
void HotspotControllerSwitchTest::goesOffAndOnAgain()
{
    beOn();
    m->daemon.performs = false;
    m->daemon.silentTo += QStringLiteral("start");
    m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    const NetworkRequest *on = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    m->daemon.setActive(false);
    QTRY_VERIFY(!m->controller->isOn());
    QCOMPARE(m->controller->state(), HotspotController::SwitchingOn);
    m->daemon.speak("start");
    m->daemon.setActive(true);
    QCOMPARE(endOf(on), QStringLiteral("done"));
}

void HotspotControllerSwitchTest::overtakingIsRefused()
{
    m->daemon.performs = false;
    m->daemon.refuse("stop");
    const NetworkRequest *on = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    QCOMPARE(endOf(m->controller->setOn(false)), QStringLiteral("Refused")); // it is off, but coming on
    QCOMPARE(endOf(on), QStringLiteral("Overtaken"));
}

void HotspotControllerSwitchTest::isSwitchedBackAtOnce()
{
    m->daemon.performs = false;
    const NetworkRequest *request = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    m->daemon.setActive(true);
    m->daemon.setActive(false);
    QCOMPARE(endOf(request), QStringLiteral("Overtaken"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot was switched off again."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("Off"));

    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    request = m->controller->setOn(false);
    QVERIFY(waitForRequest(m->daemon, "stop"));
    m->daemon.setActive(false);
    m->daemon.setActive(true);
    QCOMPARE(endOf(request), QStringLiteral("Overtaken"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot was switched on again."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("On, on"));
}

void HotspotControllerSwitchTest::isAskedForTwice()
{
    const NetworkRequest *first = m->controller->setOn(true);
    const NetworkRequest *second = m->controller->setOn(true);
    QVERIFY(first != second);
    QCOMPARE(endOf(first), QStringLiteral("done"));
    QCOMPARE(endOf(second), QStringLiteral("done"));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("On, on"));
}

void HotspotControllerSwitchTest::isOvertakenByAnotherController()
{
    m->daemon.performs = false;
    HotspotController other(m->services.get());
    QTRY_VERIFY(other.isProfileKnown());
    m->daemon.requests.clear();
    const NetworkRequest *on = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    QCOMPARE(stateOf(other), QStringLiteral("Off"));
    const NetworkRequest *off = other.setOn(false);
    QCOMPARE(endOf(on), QStringLiteral("Overtaken"));
    QCOMPARE(on->sentence(), QStringLiteral("The hotspot is to be switched off instead."));
    QCOMPARE(endOf(off), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Start, Stop}));
}

void HotspotControllerSwitchTest::waitsForChangesOfTheProfile()
{
    m->form()->setName(QStringLiteral("Mine"));
    m->daemon.silentTo += QStringLiteral("update_profile");
    const NetworkRequest *apply = m->controller->apply();
    const NetworkRequest *on = m->controller->setOn(true);
    QCOMPARE(stateOf(*m->controller), QStringLiteral("Off, busy"));
    QCOMPARE(endOf(on), QStringLiteral("Busy"));
    QCOMPARE(on->sentence(), QStringLiteral("The settings of the hotspot are being changed."));
    QVERIFY(waitForRequest(m->daemon, "update_profile"));
    m->daemon.speak("update_profile");
    QCOMPARE(endOf(apply), QStringLiteral("done"));
    QCOMPARE(endOf(m->controller->setOn(true)), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests.last(), QStringLiteral("start Mine"));
}

void HotspotControllerSwitchTest::switchesOffDuringChangesOfTheProfile()
{
    beOn();
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *apply = m->controller->apply();
    const NetworkRequest *off = m->controller->setOn(false);
    QCOMPARE(endOf(off), QStringLiteral("done"));
    QCOMPARE(endOf(apply), QStringLiteral("done"));
}

void HotspotControllerSwitchTest::isLost()
{
    QFETCH(bool, on);
    QFETCH(QString, message);
    QFETCH(QString, outlook);
    if (!on)
        beOn();
    m->daemon.silentTo += message;
    const NetworkRequest *request = m->controller->setOn(on);
    QVERIFY(waitForRequest(m->daemon, qPrintable(message)));
    m->daemon.die();
    QCOMPARE(endOf(request), QStringLiteral("Lost"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service has stopped. ") + outlook);
    QTRY_COMPARE(m->controller->state(), HotspotController::NotReady);
    m->daemon.silentTo.clear();
    m->daemon.comeBack();
    QTRY_COMPARE(stateOf(*m->controller), on ? QStringLiteral("Off") : QStringLiteral("On, on"));
    QCOMPARE(endOf(m->controller->setOn(on)), QStringLiteral("done"));
}

void HotspotControllerSwitchTest::isLostWhenTheDaemonIsReplacedAtOnce()
{
    m->daemon.silentTo += QStringLiteral("start");
    const NetworkRequest *request = m->controller->setOn(true);
    QVERIFY(waitForRequest(m->daemon, "start"));
    m->daemon.die();
    m->daemon.comeBack();
    QCOMPARE(endOf(request), QStringLiteral("Lost"));
}

void HotspotControllerSwitchTest::incompleteProfiles_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::addRow("name") << QStringLiteral("ssid") << QJsonValue(QString());
    QTest::addRow("passphrase") << QStringLiteral("passphrase") << QJsonValue(QString());
    QTest::addRow("clients") << QStringLiteral("max_num_sta") << QJsonValue(-1);
    QTest::addRow("time") << QStringLiteral("autoshutdown_time") << QJsonValue(-1);
    QTest::addRow("security") << QStringLiteral("security_type") << QJsonValue(QStringLiteral("wpa3"));
}

void HotspotControllerSwitchTest::incompleteProfiles()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    m->daemon.change(qPrintable(key), value);
    const NetworkRequest *request = m->controller->setOn(true);
    QCOMPARE(endOf(request), QStringLiteral("Invalid"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot cannot start: its settings are not complete."));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

// The library sends a profile as it has read it, and one without a passphrase not at all.
void HotspotControllerSwitchTest::startsAnOpenOneWithoutPassphrase()
{
    m->daemon.change("security_type", QStringLiteral("none"));
    m->daemon.change("passphrase", QString());
    QCOMPARE(endOf(m->controller->setOn(true)), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, QStringLiteral("update_profile Morvek Car"), Fetch, Start}));
    QCOMPARE(m->daemon.profile.value(QLatin1String("passphrase")).toString(), QStringLiteral("none"));
}

void HotspotControllerSwitchTest::doesNotWriteThatForEver()
{
    m->daemon.change("security_type", QStringLiteral("none"));
    m->daemon.change("passphrase", QString());
    m->daemon.answers.insert(QStringLiteral("update_profile"), {}); // taken, but not kept
    QCOMPARE(endOf(m->controller->setOn(true)), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests,
             QStringList({Fetch, QStringLiteral("update_profile Morvek Car"), Fetch, QStringLiteral("start")}));
}

CONTRACT_TEST_MAIN(HotspotControllerSwitchTest)
#include "tst_hotspotcontrollerswitch.moc"
