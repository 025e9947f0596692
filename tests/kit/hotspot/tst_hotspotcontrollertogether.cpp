// SPDX-License-Identifier: Apache-2.0
#include "hotspotcontroller.h"
#include "hotspotform.h"
#include "networkservices.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QString Done = QStringLiteral("done");
const QVariantMap OfTethering {{QStringLiteral("daemon"), QStringLiteral("tethering")}};

} // namespace

/*! The hotspot's controller through the scenarios of the hotspot, with the daemons as they are shipped. */
class HotspotControllerTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void switchesAndChanges();
    void outlivesTheDaemon();
    void waitsForTheDaemon();
    void isKilled();
    void healsRefusals();
    void neverActive();
    void stopsByItself();
    void daemonRestarts();
    void noReplies();
    void garbage();

private:
    /*! Starts \a scenario, and waits until the controller is ready. */
    bool start(const char *scenario);
    QString end(NetworkRequest *request) { return m_unit->endOf(request); }
    HotspotForm *form() const { return m_controller->form(); }

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<NetworkServices> m_services;
    std::unique_ptr<HotspotController> m_controller;
};

bool HotspotControllerTogetherTest::start(const char *scenario)
{
    m_unit = std::make_unique<TestUnit>();
    if (!m_unit->start(QString::fromLatin1(scenario)))
        return false;
    m_services = std::make_unique<NetworkServices>();
    m_services->setRetryPause(20);
    m_services->setWatchPause(20);
    m_controller = std::make_unique<HotspotController>(m_services.get());
    return m_unit->waitForReady(m_controller.get());
}

void HotspotControllerTogetherTest::cleanup()
{
    m_controller.reset();
    m_services.reset();
    m_unit.reset();
}

void HotspotControllerTogetherTest::switchesAndChanges()
{
    QVERIFY(start("headunit"));
    QTRY_COMPARE(m_controller->name(), QStringLiteral("Morvek Car"));
    QCOMPARE(end(m_controller->setOn(true)), Done);
    QCOMPARE(m_controller->state(), HotspotController::On);
    form()->setName(QStringLiteral("Passengers"));
    form()->setPassphrase(QStringLiteral("are we there yet?"));
    form()->setMaxClients(33); // more than this daemon takes, which only it knows
    QCOMPARE(end(m_controller->apply()), QStringLiteral("Refused"));
    form()->setMaxClients(32);
    form()->setSecurity(HotspotForm::Open);
    QCOMPARE(end(m_controller->apply()), Done);
    QCOMPARE(m_controller->name(), QStringLiteral("Passengers"));
    QCOMPARE(m_controller->reveal(), QStringLiteral("are we there yet?"));
    QCOMPARE(form()->security(), HotspotForm::Open);
    QCOMPARE(end(m_controller->setOn(false)), Done);
    QCOMPARE(m_controller->state(), HotspotController::Off);
    QCOMPARE(end(m_controller->setOn(false)), Done);
    // Others switch it.
    QVERIFY(m_unit->act(QStringLiteral("hotspot-starts")));
    QTRY_COMPARE(m_controller->state(), HotspotController::On);
    QVERIFY(m_unit->act(QStringLiteral("hotspot-stops")));
    QTRY_COMPARE(m_controller->state(), HotspotController::Off);
}

void HotspotControllerTogetherTest::outlivesTheDaemon()
{
    QVERIFY(start("headunit"));
    QTRY_VERIFY(m_controller->isProfileKnown());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), OfTethering));
        QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
        QCOMPARE(end(m_controller->setOn(true)), QStringLiteral("NotReady"));
        QVERIFY(m_unit->act(QStringLiteral("daemon-back"), OfTethering));
        QVERIFY(m_unit->waitForReady(m_controller.get()));
        QCOMPARE(end(m_controller->setOn(true)), Done);
        QCOMPARE(end(m_controller->setOn(false)), Done);
    }
}

void HotspotControllerTogetherTest::waitsForTheDaemon()
{
    m_unit = std::make_unique<TestUnit>();
    m_services = std::make_unique<NetworkServices>();
    m_services->setRetryPause(20);
    m_controller = std::make_unique<HotspotController>(m_services.get());
    QCOMPARE(end(m_controller->fetch()), QStringLiteral("NotReady"));
    QVERIFY(m_unit->start());
    QTRY_COMPARE(m_controller->name(), QStringLiteral("Morvek Car"));
}

void HotspotControllerTogetherTest::isKilled()
{
    QVERIFY(start("hotspot-never-active"));
    QTRY_VERIFY(m_controller->isProfileKnown());
    NetworkRequest *request = m_controller->setOn(true);
    QVERIFY(m_unit->waitForRequest(QStringLiteral("start")).isValid());
    m_unit->kill();
    QCOMPARE(end(request), QStringLiteral("Lost"));
    QVERIFY(m_unit->restart());
    QVERIFY(m_unit->waitForReady(m_controller.get()));
    QCOMPARE(m_controller->state(), HotspotController::Off);
}

void HotspotControllerTogetherTest::healsRefusals()
{
    QVERIFY(start("hotspot-refused"));
    QTRY_VERIFY(m_controller->isProfileKnown()); // at the second attempt
    form()->setName(QStringLiteral("Passengers"));
    QCOMPARE(end(m_controller->apply()), QStringLiteral("Refused"));
    QCOMPARE(end(m_controller->apply()), Done);
    QCOMPARE(end(m_controller->setOn(true)), QStringLiteral("Refused"));
    QCOMPARE(end(m_controller->setOn(true)), Done);
    QCOMPARE(end(m_controller->setOn(false)), QStringLiteral("Refused"));
    QCOMPARE(end(m_controller->setOn(false)), Done);
}

void HotspotControllerTogetherTest::neverActive()
{
    QVERIFY(start("hotspot-never-active"));
    NetworkRequest *request = m_controller->setOn(true);
    QVERIFY(m_unit->waitForRequest(QStringLiteral("start")).isValid());
    QCOMPARE(end(m_controller->fetch()), Done); // so that was answered, too
    request->setDeadline(1);
    QCOMPARE(end(request), QStringLiteral("TimedOut"));
    QCOMPARE(m_controller->state(), HotspotController::Off);
}

void HotspotControllerTogetherTest::stopsByItself()
{
    QVERIFY(start("hotspot-inactivity"));
    QCOMPARE(end(m_controller->setOn(true)), Done);
    QVERIFY(m_unit->pass(5000));
    QTRY_COMPARE(m_controller->state(), HotspotController::Off);
}

void HotspotControllerTogetherTest::daemonRestarts()
{
    QVERIFY(start("hotspot-daemon-restart"));
    NetworkRequest *request = m_controller->setOn(true);
    QCOMPARE(end(request), QStringLiteral("Lost")); // it has died of that
    QTRY_COMPARE(m_controller->state(), HotspotController::NotReady);
    QVERIFY(m_unit->pass(1500));
    QVERIFY(m_unit->waitForReady(m_controller.get()));
    QTRY_VERIFY(m_controller->isProfileKnown());
    QCOMPARE(m_controller->state(), HotspotController::Off);
    QVERIFY(m_unit->pass(28600)); // it dies, and somebody has the hotspot started meanwhile
    QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
    QVERIFY(!m_controller->isOn());
    QVERIFY(m_unit->pass(3000));
    QTRY_COMPARE(m_controller->state(), HotspotController::On);
}

void HotspotControllerTogetherTest::noReplies()
{
    QVERIFY(start("hotspot-no-reply"));
    QVERIFY(m_unit->waitForRequest(QStringLiteral("retrieve_profile")).isValid()); // the one that is never answered
    QCOMPARE(end(m_controller->fetch()), Done);
    QVERIFY(m_controller->isProfileKnown());
    form()->setName(QStringLiteral("Passengers"));
    NetworkRequest *request = m_controller->apply();
    QVERIFY(m_unit->waitForRequest(QStringLiteral("update_profile")).isValid());
    QVERIFY(m_unit->pass(8000));
    QCOMPARE(end(request), Done);
    QCOMPARE(end(m_controller->setOn(true)), Done);  // answered twice
    QCOMPARE(end(m_controller->setOn(false)), Done); // never answered, but done
    QCOMPARE(m_controller->state(), HotspotController::Off);
    QCOMPARE(m_controller->name(), QStringLiteral("Passengers"));
}

void HotspotControllerTogetherTest::garbage()
{
    QVERIFY(start("hotspot-garbage"));
    // Seven times, the first time by the controller itself.
    QTRY_VERIFY(m_controller->isProfileKnown());
    QVERIFY(!form()->isValid());
    QStringList ends;
    for (int i = 2; i <= 7; ++i)
        ends += end(m_controller->fetch());
    QCOMPARE(ends,
             QStringList(
                 {Done, Done, QStringLiteral("Refused"), Done, QStringLiteral("Refused"), QStringLiteral("Refused")}));
    QCOMPARE(end(m_controller->fetch()), Done);
    QCOMPARE(m_controller->name(), QStringLiteral("Morvek Car"));
    form()->setName(QStringLiteral("Passengers"));
    QCOMPARE(end(m_controller->apply()), QStringLiteral("Overtaken")); // answered as another request, and not done
    QCOMPARE(end(m_controller->apply()), QStringLiteral("Refused"));   // answered without a code
    QCOMPARE(end(m_controller->apply()), Done);
    ends.clear();
    for (int i = 1; i <= 2; ++i)
        ends += end(m_controller->setOn(true));
    QCOMPARE(ends, QStringList({QStringLiteral("Refused"), QStringLiteral("Refused")}));
    QVERIFY(m_unit->act(QStringLiteral("faults-end")));
    QCOMPARE(end(m_controller->setOn(true)), Done);
    QVERIFY(m_unit->pass(7000)); // garbage in the status, and a new "INACTIVE" at last
    QTRY_COMPARE(m_controller->state(), HotspotController::Off);
}

QTEST_GUILESS_MAIN(HotspotControllerTogetherTest)
#include "tst_hotspotcontrollertogether.moc"
