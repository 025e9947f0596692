// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "plainrequest.h"
#include "playeddaemon.h"

#include <servicebase.h>

using namespace morvek;

namespace {

constexpr int Never = 1000000; // milliseconds

} // namespace

/*! How the services of the library become ready and stay usable, seen by those that share them. */
class NetworkServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { PlayedDaemon::forgetAll(); }

    void isReadyAtOnce_data() { addDaemons(); }
    void isReadyAtOnce()
    {
        QFETCH(int, daemon);
        const PlayedDaemon played {PlayedDaemon::Kind(daemon)};
        NetworkServices services;
        PlainController controller(PlainController::Daemon(daemon), &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        QVERIFY(controller.service()->ready());
        QCOMPARE(controller.availabilityText(), QString());
    }

    void waitsForItsDaemon_data() { addDaemons(); }
    void waitsForItsDaemon()
    {
        QFETCH(int, daemon);
        QFETCH(QString, waiting);
        NetworkServices services;
        services.setRetryPause(Never); // the daemon's coming is enough
        PlainController controller(PlainController::Daemon(daemon), &services);
        QCOMPARE(controller.availability(), NetworkController::Waiting);
        QCOMPARE(controller.availabilityText(), waiting);
        QSignalSpy changed(&controller, &NetworkController::availabilityChanged);
        const PlayedDaemon played {PlayedDaemon::Kind(daemon)};
        QVERIFY(changed.wait());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(controller.availability(), NetworkController::Ready);
        QVERIFY(controller.service()->ready());
    }

    // The library tries once: such a service never becomes ready.
    void healsWhatHasFailed_data() { addDaemons(); }
    void healsWhatHasFailed()
    {
        QFETCH(int, daemon);
        NetworkServices services;
        services.setRetryPause(20);
        // What the service waits for is there; what it opens then is not.
        using Kind = PlayedDaemon::Kind;
        const bool waitsForStatus = daemon == PlayedDaemon::Wifi;
        const auto publish = [&](bool status) {
            return std::make_unique<ZopObject>(status ? PlayedDaemon::statusOf(Kind(daemon))
                                                      : PlayedDaemon::controlOf(Kind(daemon)),
                                               ZopObject::Publish, !status);
        };
        const auto first = publish(waitsForStatus);
        PlainController controller(PlainController::Daemon(daemon), &services);
        waitForSomeTurns();
        QVERIFY(!controller.service()->ready());
        const ServiceBase *failed = controller.service();
        const auto rest = publish(!waitsForStatus);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        QVERIFY(controller.service() != failed);
        QVERIFY(controller.service()->ready());
    }

    void makesNoneThatWouldFail_data() { addDaemons(); }
    void makesNoneThatWouldFail()
    {
        QFETCH(int, daemon);
        const auto kind = PlayedDaemon::Kind(daemon);
        const ZopObject control(PlayedDaemon::controlOf(kind), ZopObject::Publish, true);
        NetworkServices services;
        services.setRetryPause(20);
        PlainController controller(PlainController::Daemon(daemon), &services);
        waitForSomeTurns();
        QCOMPARE(controller.called, QStringList({QStringLiteral("replaced")}));
        const ZopObject status(PlayedDaemon::statusOf(kind), ZopObject::Publish, false);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
    }

    void noticesDeathAndReturn_data() { addDaemons(); }
    void noticesDeathAndReturn()
    {
        QFETCH(int, daemon);
        QFETCH(QString, gone);
        auto played = std::make_unique<PlayedDaemon>(PlayedDaemon::Kind(daemon));
        NetworkServices services;
        services.setWatchPause(Never); // one that ends in order tells it
        PlainController controller(PlainController::Daemon(daemon), &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        const ServiceBase *service = controller.service();
        controller.called.clear();
        QStringList calledBefore;
        connect(&controller, &NetworkController::availabilityChanged, this, [&] { calledBefore = controller.called; });

        played.reset();
        QTRY_COMPARE(controller.availability(), NetworkController::Gone);
        QCOMPARE(calledBefore, QStringList({QStringLiteral("availability 2")}));
        QCOMPARE(controller.availabilityText(), gone);
        QCOMPARE(controller.called, QStringList({QStringLiteral("availability 2")}));

        played = std::make_unique<PlayedDaemon>(PlayedDaemon::Kind(daemon));
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        QCOMPARE(controller.service(), service); // which works again by itself
        QCOMPARE(controller.called, QStringList({QStringLiteral("availability 2"), QStringLiteral("availability 1")}));
    }

    void losesWhatTheFormerDaemonWasAsked()
    {
        auto played = std::make_unique<PlayedDaemon>(PlayedDaemon::Wifi);
        NetworkServices services;
        PlainController controller(PlainController::Wifi, &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        PlainRequest *request = controller.ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        played.reset(); // and at once, within the same turn:
        played = std::make_unique<PlayedDaemon>(PlayedDaemon::Wifi);
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::Lost);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
    }

    void isShared()
    {
        const PlayedDaemon played(PlayedDaemon::Wifi);
        NetworkServices services;
        PlainController one(PlainController::Wifi, &services);
        QTRY_COMPARE(one.availability(), NetworkController::Ready);
        PlainController other(PlainController::Wifi, &services);
        QCOMPARE(other.availability(), NetworkController::Ready);
        QCOMPARE(other.service(), one.service());
        QCOMPARE(other.called, QStringList({QStringLiteral("replaced"), QStringLiteral("availability 1")}));
    }

    void isGivenOnce()
    {
        NetworkServices services;
        NetworkServices others;
        PlainController controller(PlainController::Wifi, nullptr);
        QCOMPARE(controller.services(), nullptr);
        QCOMPARE(controller.availability(), NetworkController::Waiting);
        QCOMPARE(controller.service(), nullptr);
        QSignalSpy changed(&controller, &NetworkController::servicesChanged);
        controller.setServices(&services);
        QCOMPARE(changed.count(), 1);
        controller.setServices(&others);
        controller.setServices(nullptr);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(controller.services(), &services);
    }

    void goesBeforeItsControllers()
    {
        const PlayedDaemon played(PlayedDaemon::Wifi);
        auto services = std::make_unique<NetworkServices>();
        PlainController controller(PlainController::Wifi, services.get());
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        PlainRequest *request = controller.ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        QSignalSpy changed(&controller, &NetworkController::servicesChanged);
        controller.called.clear();
        controller.beginUninterruptible();

        services.reset();
        QCOMPARE(controller.services(), nullptr);
        QCOMPARE(controller.service(), nullptr);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(controller.availability(), NetworkController::Waiting);
        QCOMPARE(controller.called,
                 QStringList({QStringLiteral("none"), QStringLiteral("giveUp %1").arg(NetworkRequest::Lost),
                              QStringLiteral("release"), QStringLiteral("availability 0")}));
        controller.endUninterruptible();
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::Lost);
        QCOMPARE(controller.ask()->isRunning(), true); // and fails later
    }

    void isDeletedBySlots_data()
    {
        QTest::addColumn<bool>("dies");
        QTest::addRow("when the daemon comes") << false;
        QTest::addRow("when it dies") << true;
    }
    void isDeletedBySlots()
    {
        QFETCH(bool, dies);
        auto played = std::make_unique<PlayedDaemon>(PlayedDaemon::Wifi);
        auto services = std::make_unique<NetworkServices>();
        PlainController controller(PlainController::Wifi, services.get());
        if (dies)
            QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        connect(&controller, &NetworkController::availabilityChanged, this, [&] { services.reset(); });
        if (dies)
            played.reset();
        QTRY_VERIFY(!services);
        QCOMPARE(controller.availability(), NetworkController::Waiting);
    }

    void aControllerIsDeletedBySlots()
    {
        const PlayedDaemon played(PlayedDaemon::Wifi);
        NetworkServices services;
        auto controller = std::make_unique<PlainController>(PlainController::Wifi, &services);
        QSignalSpy changed(controller.get(), &NetworkController::availabilityChanged);
        connect(controller.get(), &PlainController::heard, this, [&] { controller.reset(); });
        QTRY_VERIFY(!controller);
        QCOMPARE(changed.count(), 0);
    }

    void tellsWhenItIsIdle()
    {
        NetworkServices services;
        auto one = std::make_unique<PlainController>(PlainController::Wifi, &services);
        PlainController other(PlainController::Tethering, &services);
        QSignalSpy changed(&services, &NetworkServices::idleChanged);
        QVERIFY(services.isIdle());
        one->beginUninterruptible();
        QVERIFY(!services.isIdle());
        other.beginUninterruptible();
        one->beginUninterruptible();
        one->beginUninterruptible();
        QCOMPARE(changed.count(), 1);
        other.endUninterruptible();
        QVERIFY(!services.isIdle());
        one->endUninterruptible();
        QVERIFY(!services.isIdle());
        QCOMPARE(changed.count(), 1);
        one.reset(); // with both that it has left open
        QVERIFY(services.isIdle());
        QCOMPARE(changed.count(), 2);
    }

    void hasPauses()
    {
        NetworkServices services;
        QCOMPARE(services.retryPause(), 1000);
        QCOMPARE(services.watchPause(), 1000);
        QSignalSpy retry(&services, &NetworkServices::retryPauseChanged);
        QSignalSpy watch(&services, &NetworkServices::watchPauseChanged);
        services.setRetryPause(1000);
        services.setRetryPause(0);
        services.setWatchPause(1000);
        services.setWatchPause(0);
        services.setRetryPause(3600001);
        services.setWatchPause(3600001);
        QCOMPARE(retry.count() + watch.count(), 0);
        services.setRetryPause(1);
        services.setWatchPause(1);
        QCOMPARE(retry.count(), 1);
        QCOMPARE(watch.count(), 1);
        QCOMPARE(services.retryPause(), 1);
        QCOMPARE(services.watchPause(), 1);
        services.setRetryPause(3600000);
        services.setWatchPause(3600000);
        QCOMPARE(services.retryPause(), 3600000);
        QCOMPARE(services.watchPause(), 3600000);
    }

private:
    static void addDaemons()
    {
        QTest::addColumn<int>("daemon");
        QTest::addColumn<QString>("waiting");
        QTest::addColumn<QString>("gone");
        QTest::addRow("networking") << int(PlayedDaemon::Networking) << "The network service has not started yet."
                                    << "The network service has stopped.";
        QTest::addRow("Wi-Fi") << int(PlayedDaemon::Wifi) << "The Wi-Fi service has not started yet."
                               << "The Wi-Fi service has stopped.";
        QTest::addRow("tethering") << int(PlayedDaemon::Tethering) << "The hotspot service has not started yet."
                                   << "The hotspot service has stopped.";
    }

    static void waitForSomeTurns()
    {
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&turns] { ++turns; });
        timer.start(10);
        QTRY_VERIFY(turns > 10);
    }
};

CONTRACT_TEST_MAIN(NetworkServicesTest)

#include "tst_networkservices.moc"
