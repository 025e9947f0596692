// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "plainrequest.h"
#include "playeddaemon.h"

#include <QtCore/QPointer>

using namespace morvek;

/*! What every request of the kit promises. */
class NetworkRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_daemon = std::make_unique<PlayedDaemon>(PlayedDaemon::Wifi);
        QVERIFY(m_daemon->isValid());
        m_services = std::make_unique<NetworkServices>();
        m_controller = std::make_unique<PlainController>(PlainController::Wifi, m_services.get());
        QTRY_COMPARE(m_controller->availability(), NetworkController::Ready);
        m_controller->called.clear();
    }
    void cleanup()
    {
        m_controller.reset();
        m_services.reset();
        m_daemon.reset();
        PlayedDaemon::forgetAll();
    }

    void runsUntilItEnds()
    {
        PlainRequest *request = m_controller->ask(5000, QStringLiteral("Home"));
        QCOMPARE(m_controller->called, QStringList({QStringLiteral("start")}));
        QVERIFY(request->isRunning());
        QVERIFY(!request->isDone());
        QCOMPARE(request->failure(), NetworkRequest::NoFailure);
        QCOMPARE(request->subject(), QStringLiteral("Home"));
        QCOMPARE(request->deadline(), 5000);
        QCOMPARE(request->parent(), m_controller.get());
        QSignalSpy finished(request, &NetworkRequest::finished);

        request->succeed();
        QVERIFY(request->hasEnded());
        QVERIFY(request->isRunning()); // until it is told
        QVERIFY(!request->isDone());
        QCOMPARE(finished.count(), 0);
        bool wasDone = false;
        connect(request, &NetworkRequest::finished, this,
                [&] { wasDone = request->isDone() && !request->isRunning(); });
        QVERIFY(finished.wait());
        QVERIFY(wasDone);
        QCOMPARE(request->failure(), NetworkRequest::NoFailure);
        QCOMPARE(request->sentence(), QString());
        QCOMPARE(m_controller->called, QStringList({QStringLiteral("start"), QStringLiteral("release")}));
    }

    void tellsItsFailureWithTheEnd()
    {
        PlainRequest *request = m_controller->ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        request->fail(NetworkRequest::Refused, QStringLiteral("It was refused."), 16, QStringLiteral("busy"));
        QCOMPARE(request->failure(), NetworkRequest::NoFailure);
        QCOMPARE(request->sentence(), QString());
        QCOMPARE(request->code(), 0);
        QCOMPARE(request->text(), QString());
        QVERIFY(finished.wait());
        QVERIFY(!request->isDone());
        QVERIFY(!request->isRunning());
        QCOMPARE(request->failure(), NetworkRequest::Refused);
        QCOMPARE(request->sentence(), QStringLiteral("It was refused."));
        QCOMPARE(request->code(), 16);
        QCOMPARE(request->text(), QStringLiteral("busy"));
    }

    void endsOnce()
    {
        PlainRequest *request = m_controller->ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        request->fail(NetworkRequest::Invalid, QStringLiteral("First."));
        request->fail(NetworkRequest::Refused, QStringLiteral("Second."));
        request->succeed();
        request->cancel();
        QVERIFY(finished.wait());
        request->succeed();
        request->cancel();
        m_daemon.reset(); // what would lose it, if it were open
        QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
        runQueuedCalls();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(request->sentence(), QStringLiteral("First."));
        QCOMPARE(request->failure(), NetworkRequest::Invalid);
        QCOMPARE(m_controller->called.count(QStringLiteral("release")), 1);
        QVERIFY(m_controller->called.filter(QStringLiteral("giveUp")).isEmpty());
    }

    void isCancelled()
    {
        PlainRequest *request = m_controller->ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        request->cancel();
        QCOMPARE(m_controller->called,
                 QStringList({QStringLiteral("start"), QStringLiteral("giveUp %1").arg(NetworkRequest::Cancelled),
                              QStringLiteral("release")}));
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::Cancelled);
        QCOMPARE(request->sentence(), QStringLiteral("Cancelled."));
    }

    void tellsWhatMayStillCome()
    {
        PlainRequest *request = m_controller->ask();
        request->given = QStringLiteral("Cancelled, but it may still happen.");
        QSignalSpy finished(request, &NetworkRequest::finished);
        request->cancel();
        QVERIFY(finished.wait());
        QCOMPARE(request->sentence(), QStringLiteral("Cancelled, but it may still happen."));
    }

    void timesOut()
    {
        PlainRequest *request = m_controller->ask(30);
        QSignalSpy finished(request, &NetworkRequest::finished);
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::TimedOut);
        QCOMPARE(request->sentence(), QStringLiteral("No answer came in time."));
        QVERIFY(m_controller->called.contains(QStringLiteral("giveUp %1").arg(NetworkRequest::TimedOut)));

        PlainRequest *hurried = m_controller->ask(0);
        QVERIFY(hurried->isRunning());
        QTRY_COMPARE(hurried->failure(), NetworkRequest::TimedOut);
    }

    void deadlineCountsFromTheBeginning()
    {
        PlainRequest *request = m_controller->ask();
        QSignalSpy changed(request, &NetworkRequest::deadlineChanged);
        request->setDeadline(-1);
        QCOMPARE(changed.count(), 0);
        QElapsedTimer age;
        age.start();
        QTRY_VERIFY(age.elapsed() > 100);
        QSignalSpy finished(request, &NetworkRequest::finished);
        bool isLate = false;
        const QObject here;
        QTimer::singleShot(50, &here, [&isLate] { isLate = true; });
        request->setDeadline(100); // is over
        QCOMPARE(changed.count(), 1);
        QCOMPARE(request->deadline(), 100);
        QVERIFY(request->isRunning());
        QVERIFY(finished.wait());
        QVERIFY(!isLate);
        QCOMPARE(request->failure(), NetworkRequest::TimedOut);
    }

    void aLaterDeadlineTakesThePlace()
    {
        PlainRequest *request = m_controller->ask(20);
        PlainRequest *witness = m_controller->askOther();
        request->setDeadline(60000);
        witness->setDeadline(100);
        QSignalSpy witnessed(witness, &NetworkRequest::finished);
        QVERIFY(witnessed.wait());
        QVERIFY(request->isRunning());
        request->setDeadline(-1);
        QCOMPARE(request->deadline(), -1);
        request->succeed();
        request->setDeadline(0); // no more
        QSignalSpy finished(request, &NetworkRequest::finished);
        QVERIFY(finished.wait());
        QVERIFY(request->isDone());
    }

    void isLostWithTheDaemon()
    {
        PlainRequest *request = m_controller->ask();
        QSignalSpy finished(request, &NetworkRequest::finished);
        m_daemon.reset();
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::Lost);
        QCOMPARE(request->sentence(), QStringLiteral("The service has stopped meanwhile."));
        QCOMPARE(m_controller->called,
                 QStringList({QStringLiteral("start"), QStringLiteral("giveUp %1").arg(NetworkRequest::Lost),
                              QStringLiteral("release"), QStringLiteral("availability 2")}));
    }

    void failsWhenTheServiceIsNotReady()
    {
        m_daemon.reset();
        QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
        m_controller->called.clear();
        PlainRequest *request = m_controller->ask();
        QVERIFY(request->isRunning());
        QSignalSpy finished(request, &NetworkRequest::finished);
        QVERIFY(finished.wait());
        QCOMPARE(request->failure(), NetworkRequest::NotReady);
        QCOMPARE(request->sentence(), QStringLiteral("The Wi-Fi service has stopped."));
        QCOMPARE(m_controller->called, QStringList({QStringLiteral("release")}));
    }

    void staysUntilTheNextOfItsKind()
    {
        const QPointer<PlainRequest> first = m_controller->ask(-1, QStringLiteral("a"));
        const QPointer<PlainRequest> open = m_controller->ask(-1, QStringLiteral("b"));
        const QPointer<PlainRequest> other = m_controller->askOther();
        first->succeed();
        other->succeed();
        QTRY_VERIFY(first->isDone() && other->isDone());
        QVERIFY(first);
        m_controller->ask(-1, QStringLiteral("c"));
        QVERIFY(first); // not inside the call
        QTRY_VERIFY(!first);
        QVERIFY(open);
        QVERIFY(other);
    }

    void staysUntilTheNextOfItsSubject()
    {
        const QPointer<PlainRequest> eth0 = m_controller->askFor(QStringLiteral("eth0"));
        const QPointer<PlainRequest> wlan0 = m_controller->askFor(QStringLiteral("wlan0"));
        eth0->succeed();
        wlan0->succeed();
        QTRY_VERIFY(eth0->isDone() && wlan0->isDone());
        m_controller->askFor(QStringLiteral("eth0"));
        QTRY_VERIFY(!eth0);
        QVERIFY(wlan0);
    }

    void mayBeDeleted()
    {
        delete m_controller->ask();
        const QPointer<PlainRequest> ending = m_controller->ask();
        connect(ending, &NetworkRequest::ending, this, [&] { delete ending; });
        ending->succeed();
        QTRY_VERIFY(!ending);
        const QPointer<PlainRequest> ended = m_controller->ask();
        connect(ended, &NetworkRequest::finished, ended, &QObject::deleteLater);
        ended->succeed();
        QTRY_VERIFY(!ended);
        PlainRequest *request = m_controller->ask();
        QVERIFY(request->isRunning());
        m_daemon.reset();
        QTRY_COMPARE(request->failure(), NetworkRequest::Lost);
    }

    void goesWithItsController()
    {
        const QPointer<PlainRequest> request = m_controller->ask(10);
        request->succeed();
        m_controller.reset();
        QVERIFY(!request);
        runQueuedCalls(); // nothing is told of it
    }

private:
    static void runQueuedCalls()
    {
        bool done = false;
        QMetaObject::invokeMethod(
            qApp, [&done] { done = true; }, Qt::QueuedConnection);
        QTRY_VERIFY(done);
    }

    std::unique_ptr<PlayedDaemon> m_daemon;
    std::unique_ptr<NetworkServices> m_services;
    std::unique_ptr<PlainController> m_controller;
};

CONTRACT_TEST_MAIN(NetworkRequestTest)

#include "tst_networkrequest.moc"
