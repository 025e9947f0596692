// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hotspotfixture.h"

#include <QtCore/QElapsedTimer>

using namespace morvek;

namespace {

const QString Fetch = QStringLiteral("retrieve_profile");
const QString Car = QStringLiteral("Morvek Car");

} // namespace

/*! What a hotspot's controller reads and tells, and how reading ends. */
class HotspotControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m = std::make_unique<HotspotFixture>(); }
    void cleanup() { m.reset(); }

    void withoutServices();
    void fetchesWhenItBecomesReady();
    void fetchesAgainWhenTheDaemonIsBack();
    void triesAgainEverMoreRarely();
    void doesNotTryAgainWhenOthersHaveRead();
    void readsOnce();
    void isOnFromTheStart();
    void isToldWhoeverSwitches();
    void ignoresStatesThatAreNone();
    void fetches();
    void fetchIsRefused_data();
    void fetchIsRefused();
    void fetchTakesTooLong();
    void fetchIsCancelled();
    void fetchIsLost();
    void fetchIsLostWithTheServices();
    void servicesEndBeforeAnythingIsRead();
    void fetchIsNotReady();
    void tellsDifferencesOnly();
    void formFollowsWhatIsRead();
    void readsAnEmptyProfile();
    void sharesWhatIsRead();
    void stateComesBeforeItsSignals();
    void ownRequestsLeaveOthersAlone();
    void gettersAskNothing();
    void reveals();
    void revealsNothingOfAnOpenOne();
    void texts();
    void deletedInASlot_data();
    void deletedInASlot();

private:
    std::unique_ptr<HotspotFixture> m;
};

void HotspotControllerTest::withoutServices()
{
    HotspotController controller;
    QCOMPARE(stateOf(controller), QStringLiteral("NotReady"));
    QVERIFY(!controller.isProfileKnown());
    QVERIFY(controller.name().isEmpty());
    QVERIFY(controller.reveal().isEmpty());
    NetworkRequest *const requests[] = {controller.fetch(), controller.setOn(true), controller.setOn(false),
                                        controller.apply()};
    for (const NetworkRequest *request : requests)
        QCOMPARE(endOf(request), QStringLiteral("NotReady"));
    controller.setServices(m->services.get());
    QTRY_COMPARE(controller.name(), Car);
}

void HotspotControllerTest::fetchesWhenItBecomesReady()
{
    QVERIFY(!m->controller->isProfileKnown());
    QVERIFY(m->controller->name().isEmpty());
    QCOMPARE(stateOf(*m->controller), QStringLiteral("NotReady"));
    const StateLog log(m->controller.get());
    QSignalSpy changed(m->controller.get(), &HotspotController::profileChanged);
    QTRY_COMPARE(changed.count(), 1);
    QVERIFY(m->controller->isProfileKnown());
    QCOMPARE(m->controller->name(), Car);
    QCOMPARE(m->form()->name(), Car);
    QCOMPARE(m->form()->security(), HotspotForm::Wpa2);
    QCOMPARE(m->form()->band(), HotspotForm::Band5GHz);
    QCOMPARE(m->form()->maxClients(), 10);
    QCOMPARE(m->form()->inactivityTime(), 600);
    QVERIFY(m->form()->isValid());
    QCOMPARE(log.states, QStringList({QStringLiteral("Off")})); // not busy: nobody has asked
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerTest::fetchesAgainWhenTheDaemonIsBack()
{
    QVERIFY(m->waitForProfile());
    m->daemon.die();
    QTRY_COMPARE(m->controller->availability(), NetworkController::Gone);
    QCOMPARE(stateOf(*m->controller), QStringLiteral("NotReady"));
    QCOMPARE(m->controller->name(), Car); // as it was told last
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    m->daemon.comeBack();
    QTRY_COMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerTest::triesAgainEverMoreRarely()
{
    m->services->setRetryPause(40);
    m->daemon.refuse("retrieve_profile");
    QElapsedTimer time;
    time.start();
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile", 5));
    QVERIFY2(time.elapsed() >= 560, qPrintable(QString::number(time.elapsed()))); // 40 + 80 + 160 + 320, roughly
    QVERIFY(!m->controller->isProfileKnown());
    m->daemon.answers.clear();
    QTRY_COMPARE(m->controller->name(), Car);
    QVERIFY(m->waitForProfile());
    const NetworkRequest *request = m->controller->fetch();
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerTest::doesNotTryAgainWhenOthersHaveRead()
{
    m->daemon.refuse("retrieve_profile");
    m->services->setRetryPause(100);
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    NetworkServices others; // which are told nothing of what is read here
    others.setRetryPause(100);
    const HotspotController later(&others);
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile", 2));
    m->daemon.answers.clear();
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QTRY_VERIFY(later.isProfileKnown());
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Fetch, Fetch, Fetch}));
}

void HotspotControllerTest::readsOnce()
{
    m->services->setRetryPause(50);
    QVERIFY(m->waitForProfile());
    m->daemon.refuse("retrieve_profile");
    NetworkServices others;
    others.setRetryPause(50);
    const HotspotController later(&others);
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    m->daemon.answers.clear();
    QTRY_VERIFY(later.isProfileKnown());
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Fetch}));
}

void HotspotControllerTest::isOnFromTheStart()
{
    m.reset();
    PlayedTethering daemon;
    daemon.setActive(true);
    NetworkServices services;
    const HotspotController controller(&services);
    const StateLog log(&controller);
    QTRY_COMPARE(controller.state(), HotspotController::On);
    QVERIFY(controller.isOn());
    QCOMPARE(log.states.last(), QStringLiteral("On, on"));
    QTRY_VERIFY(controller.isProfileKnown());
}

void HotspotControllerTest::isToldWhoeverSwitches()
{
    QVERIFY(m->waitForProfile());
    const StateLog log(m->controller.get());
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    m->daemon.setActive(false);
    QTRY_VERIFY(!m->controller->isOn());
    QCOMPARE(log.states, QStringList({QStringLiteral("On, on"), QStringLiteral("Off")}));
    QVERIFY(m->daemon.requests.isEmpty());
    // What it was told last stays while the daemon is dead.
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    m->daemon.die();
    QTRY_COMPARE(stateOf(*m->controller), QStringLiteral("NotReady, on"));
    m->daemon.isActive = false;
    m->daemon.comeBack();
    QTRY_COMPARE(stateOf(*m->controller), QStringLiteral("Off"));
}

void HotspotControllerTest::ignoresStatesThatAreNone()
{
    QVERIFY(m->waitForProfile());
    const StateLog log(m->controller.get());
    for (const char *state : {"PERHAPS", "active", "", "ACTIVE "})
        QVERIFY(
            set(PlayedDaemon::statusOf(PlayedDaemon::Tethering), QStringLiteral("state=%1").arg(QLatin1String(state))));
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    QCOMPARE(log.states, QStringList({QStringLiteral("On, on")}));
}

void HotspotControllerTest::fetches()
{
    QVERIFY(m->waitForProfile());
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    const StateLog log(m->controller.get());
    NetworkRequest *request = m->controller->fetch();
    QSignalSpy finished(request, &NetworkRequest::finished);
    QCOMPARE(request->deadline(), 5000);
    QCOMPARE(request->subject(), QString());
    QVERIFY(request->isRunning());
    QVERIFY(m->controller->isBusy());
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(finished.count(), 1);
    QVERIFY(request->sentence().isEmpty());
    QCOMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCOMPARE(log.states, QStringList({QStringLiteral("Off, busy"), QStringLiteral("Off")}));
}

void HotspotControllerTest::fetchIsRefused_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<ZopVariant>("value");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::addRow("refused") << QStringLiteral("errmsg") << ZopVariant(QStringLiteral("busy")) << -1
                             << QStringLiteral("Failed to retrieve WifiHotspot config.");
    QTest::addRow("no JSON") << QStringLiteral("dat") << ZopVariant(QStringLiteral("{}")) << -1
                             << QStringLiteral("Empty or malformatted config.");
    QTest::addRow("another answer") << QStringLiteral("res") << ZopVariant(QStringLiteral("start")) << 0 << QString();
}

void HotspotControllerTest::fetchIsRefused()
{
    QFETCH(QString, attribute);
    QFETCH(ZopVariant, value);
    QFETCH(int, code);
    QFETCH(QString, text);
    QVERIFY(m->waitForProfile());
    m->daemon.answers.insert(Fetch, {{attribute, value}});
    const NetworkRequest *request = m->controller->fetch();
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->code(), code);
    QCOMPARE(request->text(), text);
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service does not tell its settings."));
    QCOMPARE(m->controller->name(), Car);
}

void HotspotControllerTest::fetchTakesTooLong()
{
    QVERIFY(m->waitForProfile());
    m->daemon.silentTo += Fetch;
    NetworkRequest *request = m->controller->fetch();
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    request->setDeadline(1);
    QCOMPARE(endOf(request), QStringLiteral("TimedOut"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service does not answer. The settings were not read."));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("Off"));
    // What comes late is still true.
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    m->daemon.speak("retrieve_profile");
    QTRY_COMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCOMPARE(request->failure(), NetworkRequest::TimedOut);
}

void HotspotControllerTest::fetchIsCancelled()
{
    QVERIFY(m->waitForProfile());
    NetworkRequest *request = m->controller->fetch();
    request->cancel();
    QVERIFY(request->isRunning()); // the end is told from the event loop
    QCOMPARE(endOf(request), QStringLiteral("Cancelled"));
    QCOMPARE(request->sentence(), QStringLiteral("Cancelled. The settings were not read."));
}

void HotspotControllerTest::fetchIsLost()
{
    QVERIFY(m->waitForProfile());
    m->daemon.silentTo += Fetch;
    NetworkRequest *request = m->controller->fetch();
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    m->daemon.die();
    QCOMPARE(endOf(request), QStringLiteral("Lost"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service has stopped. The settings were not read."));
    QTRY_COMPARE(stateOf(*m->controller), QStringLiteral("NotReady"));
}

void HotspotControllerTest::fetchIsLostWithTheServices()
{
    QVERIFY(m->waitForProfile());
    NetworkRequest *request = m->controller->fetch();
    m->services.reset();
    QCOMPARE(stateOf(*m->controller), QStringLiteral("NotReady, busy"));
    QCOMPARE(endOf(request), QStringLiteral("Lost"));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("NotReady"));
    QCOMPARE(m->controller->name(), Car);
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("NotReady"));
}

void HotspotControllerTest::servicesEndBeforeAnythingIsRead()
{
    m->daemon.silentTo += Fetch;
    QVERIFY(waitForRequest(m->daemon, "retrieve_profile"));
    m->services.reset();
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("NotReady")); // after the end of the controller's own
    QCOMPARE(stateOf(*m->controller), QStringLiteral("NotReady"));
    QVERIFY(!m->controller->isProfileKnown());
}

void HotspotControllerTest::fetchIsNotReady()
{
    const NetworkRequest *request = m->controller->fetch();
    QCOMPARE(endOf(request), QStringLiteral("NotReady"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service has not started yet."));
    QVERIFY(m->waitForProfile());
    m->daemon.die();
    QTRY_COMPARE(m->controller->availability(), NetworkController::Gone);
    request = m->controller->fetch();
    QCOMPARE(endOf(request), QStringLiteral("NotReady"));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service has stopped."));
}

void HotspotControllerTest::tellsDifferencesOnly()
{
    QVERIFY(m->waitForProfile());
    QSignalSpy changed(m->controller.get(), &HotspotController::profileChanged);
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(changed.count(), 0);
    const QPair<const char *, QJsonValue> differences[] = {
        {"ssid", QStringLiteral("Theirs")},
        {"passphrase", QStringLiteral("another one")},
        {"mhs_band", QStringLiteral("2.4")},
        {"max_num_sta", 3},
        {"security_type", QStringLiteral("wpa")},
        {"autoshutdown_time", 0},
        {"privacy", true},
        {"block_conn", true},
    };
    int count = 0;
    for (const auto &difference : differences) {
        m->daemon.change(difference.first, difference.second);
        QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
        QCOMPARE(changed.count(), ++count);
    }
}

void HotspotControllerTest::formFollowsWhatIsRead()
{
    QVERIFY(m->waitForProfile());
    m->form()->setMaxClients(7);
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    m->daemon.change("max_num_sta", 3);
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->form()->name(), QStringLiteral("Theirs"));
    QCOMPARE(m->form()->maxClients(), 7);
    m->form()->revert();
    QCOMPARE(m->form()->maxClients(), 3);
}

void HotspotControllerTest::readsAnEmptyProfile()
{
    m->daemon.profile = QJsonObject();
    QSignalSpy changed(m->controller.get(), &HotspotController::profileChanged);
    QTRY_COMPARE(changed.count(), 1);
    QVERIFY(m->controller->isProfileKnown());
    QVERIFY(m->controller->name().isEmpty());
    QCOMPARE(m->form()->nameFault(), HotspotForm::Missing);
    QCOMPARE(m->form()->maxClientsFault(), HotspotForm::Missing);
    QVERIFY(m->controller->reveal().isEmpty());
}

void HotspotControllerTest::sharesWhatIsRead()
{
    QVERIFY(m->waitForProfile());
    HotspotController other(m->services.get());
    QTRY_COMPARE(other.name(), Car);
    QCOMPARE(stateOf(other), QStringLiteral("Off"));
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    QCOMPARE(endOf(other.fetch()), QStringLiteral("done"));
    QCOMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCOMPARE(endOf(other.setOn(true)), QStringLiteral("done"));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("On, on"));
    // One that comes late, too, knows at once what only changes tell.
    const HotspotController late(m->services.get());
    QCOMPARE(stateOf(late), QStringLiteral("On, on"));
}

void HotspotControllerTest::stateComesBeforeItsSignals()
{
    HotspotController *controller = m->controller.get();
    QStringList seen;
    const auto see = [&](const char *what) {
        seen += QStringLiteral("%1: %2, %3").arg(QLatin1String(what), stateOf(*controller), controller->name())
            + (controller->form()->name() == controller->name() ? QString() : QStringLiteral(", differs"))
            + (controller->availability() == NetworkController::Ready ? QStringLiteral(", ready") : QString());
    };
    connect(controller, &HotspotController::stateChanged, this, [see] { see("state"); });
    connect(controller, &HotspotController::profileChanged, this, [see] { see("profile"); });
    connect(controller->form(), &HotspotForm::changed, this, [see] { see("form"); });
    QVERIFY(m->waitForProfile());
    NetworkRequest *request = controller->fetch();
    connect(request, &NetworkRequest::finished, this, [&] { see(request->isRunning() ? "runs" : "finished"); });
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(seen,
             QStringList({QStringLiteral("state: Off, , ready"), QStringLiteral("form: Off, Morvek Car, ready"),
                          QStringLiteral("profile: Off, Morvek Car, ready"),
                          QStringLiteral("state: Off, busy, Morvek Car, ready"),
                          QStringLiteral("state: Off, Morvek Car, ready"),
                          QStringLiteral("finished: Off, Morvek Car, ready")}));
}

void HotspotControllerTest::ownRequestsLeaveOthersAlone()
{
    QVERIFY(m->waitForProfile());
    const QPointer<NetworkRequest> request = m->controller->fetch();
    QCOMPARE(endOf(request), QStringLiteral("done"));
    m->daemon.die();
    QTRY_COMPARE(m->controller->availability(), NetworkController::Gone);
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    m->daemon.comeBack();
    QTRY_COMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(request);
    QVERIFY(request->isDone());
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!request); // the application has asked for another one
}

void HotspotControllerTest::gettersAskNothing()
{
    qRegisterMetaType<NetworkServices *>(); // or they are not read
    qRegisterMetaType<HotspotForm *>();
    QVERIFY(m->waitForProfile());
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    const QMetaObject *meta = m->controller->metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i)
        meta->property(i).read(m->controller.get());
    m->controller->reveal();
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerTest::reveals()
{
    QVERIFY(m->controller->reveal().isEmpty());
    QVERIFY(m->waitForProfile());
    QCOMPARE(m->controller->reveal(), QStringLiteral("drive safely 8"));
    m->form()->setPassphrase(QStringLiteral("are we there yet?"));
    QCOMPARE(m->controller->reveal(), QStringLiteral("drive safely 8")); // clients still need that one
    m->daemon.change("passphrase", QStringLiteral("another one"));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->controller->reveal(), QStringLiteral("another one"));
}

void HotspotControllerTest::revealsNothingOfAnOpenOne()
{
    QVERIFY(m->waitForProfile());
    m->daemon.change("security_type", QStringLiteral("none"));
    m->daemon.change("passphrase", QStringLiteral("none"));
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->controller->reveal(), QString());
}

void HotspotControllerTest::texts()
{
    QCOMPARE(m->controller->stateText(), QStringLiteral("The hotspot service has not started yet."));
    QVERIFY(m->waitForProfile());
    QCOMPARE(m->controller->stateText(), QStringLiteral("The hotspot is off."));
    m->controller->setOn(true);
    QCOMPARE(m->controller->stateText(), QStringLiteral("The hotspot is being switched on."));
    QTRY_COMPARE(m->controller->stateText(), QStringLiteral("The hotspot is on."));
    m->controller->setOn(false);
    QCOMPARE(m->controller->stateText(), QStringLiteral("The hotspot is being switched off."));
    m->daemon.die();
    QTRY_COMPARE(m->controller->stateText(), QStringLiteral("The hotspot service has stopped."));
}

void HotspotControllerTest::deletedInASlot_data()
{
    QTest::addColumn<QString>("signal");
    for (const char *signal : {"profile", "form", "state", "finished"})
        QTest::newRow(signal) << QString::fromLatin1(signal);
}

void HotspotControllerTest::deletedInASlot()
{
    QFETCH(QString, signal);
    QVERIFY(m->waitForProfile());
    const auto end = [this] { m->controller.reset(); };
    NetworkRequest *request = m->controller->fetch();
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    if (signal == QLatin1String("profile"))
        connect(m->controller.get(), &HotspotController::profileChanged, this, end);
    else if (signal == QLatin1String("form"))
        connect(m->form(), &HotspotForm::changed, this, end);
    else if (signal == QLatin1String("state"))
        connect(m->controller.get(), &HotspotController::stateChanged, this, end);
    else
        connect(request, &NetworkRequest::finished, this, end);
    QTRY_VERIFY(!m->controller);
    // The services are still good for another one.
    HotspotController next(m->services.get());
    QTRY_COMPARE(next.name(), QStringLiteral("Theirs"));
}

CONTRACT_TEST_MAIN(HotspotControllerTest)
#include "tst_hotspotcontroller.moc"
