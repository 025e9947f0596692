// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "playeddaemon.h"
#include "servicekeeper_p.h"

#include <servicebase.h>

#include <QtCore/QElapsedTimer>

using namespace morvek;

namespace {

/*! A service that becomes ready when its test says so. */
class StubbornService : public ServiceBase
{
public:
    bool available() const override { return true; }
    bool ready() const override { return isReady; }

    bool isReady = false;
};

QVector<qint64> madeAt; // milliseconds
QElapsedTimer watch;
int dropped = 0;
StubbornService *latest = nullptr;

ServiceBase *make()
{
    madeAt += watch.elapsed();
    latest = new StubbornService;
    return latest;
}

void drop(ServiceBase *service)
{
    ++dropped;
    delete service;
}

KeptService stubborn()
{
    return {QStringLiteral("tethering"), {PlayedDaemon::statusOf(PlayedDaemon::Tethering)}, make, drop};
}

} // namespace

class ServiceKeeperTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        madeAt.clear();
        dropped = 0;
        watch.start();
    }
    void cleanup() { PlayedDaemon::forgetAll(); }

    void pausesGrow()
    {
        const PlayedDaemon played(PlayedDaemon::Tethering);
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(20);
        int pause = 20;
        qint64 madeMeanwhile = 0;
        QTimer reference;
        reference.setSingleShot(true);
        connect(&reference, &QTimer::timeout, &reference, [&] {
            pause *= 2;
            if (pause <= 320)
                reference.start(pause);
            else
                madeMeanwhile = madeAt.size();
        });
        reference.start(pause);
        QTRY_VERIFY(madeMeanwhile > 0 && madeAt.size() >= 6);
        QVERIFY(madeMeanwhile >= 5); // the sixth may be late
        QCOMPARE(dropped, madeAt.size() - 1);
        // After 20, 40, 80, 160, 320 more, or later; timers may be early by a twentieth.
        for (int i = 1; i < 6; ++i)
            QVERIFY2(madeAt[i] >= 19 * ((1 << i) - 1) - 2, qPrintable(QString::number(i)));
    }

    void pausesStopGrowing()
    {
        const PlayedDaemon played(PlayedDaemon::Tethering);
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(1);
        QTRY_VERIFY(madeAt.size() >= 7);
        // From then on each takes 32 ms, about as long as what takes as long on this machine.
        int ticks = 0;
        QTimer reference;
        reference.setSingleShot(true);
        reference.setInterval(32);
        connect(&reference, &QTimer::timeout, &reference, [&] {
            ++ticks;
            reference.start();
        });
        reference.start();
        const int before = madeAt.size();
        QTRY_VERIFY(madeAt.size() >= before + 20);
        QVERIFY2(ticks > 14 && ticks < 30, qPrintable(QString::number(ticks)));
    }

    void pausesAfterAReturn()
    {
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(400);
        const qint64 returned = watch.elapsed();
        const PlayedDaemon played(PlayedDaemon::Tethering);
        QTRY_VERIFY(madeAt.size() >= 3);
        QVERIFY(madeAt[2] >= returned + 47 + 380 - 2);
    }

    void makesNoneUntilAllIsThere()
    {
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(5);
        auto control =
            std::make_unique<ZopObject>(PlayedDaemon::controlOf(PlayedDaemon::Tethering), ZopObject::Publish, true);
        waitFor(100);
        QCOMPARE(madeAt.size(), 1);
        control.reset();
        ZopObject status(PlayedDaemon::statusOf(PlayedDaemon::Tethering), ZopObject::Publish, false);
        waitFor(200);
        QCOMPARE(madeAt.size(), 1);
        control =
            std::make_unique<ZopObject>(PlayedDaemon::controlOf(PlayedDaemon::Tethering), ZopObject::Publish, true);
        QTRY_VERIFY(madeAt.size() >= 2);
    }

    // The control object that has come is heard by the service, too.
    void givesAServiceTimeToBecomeReady()
    {
        const DaemonWatch witness(QStringLiteral("tethering")); // is told before the keeper
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(1000000);
        connect(&witness, &DaemonWatch::returned, latest, [] {
            QTimer::singleShot(10, latest, [] {
                latest->isReady = true;
                Q_EMIT latest->readyChanged(true);
            });
        });
        const PlayedDaemon played(PlayedDaemon::Tethering);
        QTRY_COMPARE(keeper.availability(), NetworkController::Ready);
        waitFor(150);
        QCOMPARE(madeAt.size(), 1);
    }

    void aDeadDaemonsServiceIsOfNoUse()
    {
        const ServiceKeeper keeper(stubborn());
        latest->isReady = true;
        Q_EMIT latest->readyChanged(true);
        QCOMPARE(keeper.availability(), NetworkController::Gone);
        const PlayedDaemon played(PlayedDaemon::Tethering);
        QTRY_COMPARE(keeper.availability(), NetworkController::Ready);
    }

    void makesNoneAnewThatIsReady()
    {
        auto played = std::make_unique<PlayedDaemon>(PlayedDaemon::Tethering);
        ServiceKeeper keeper(stubborn());
        keeper.setRetryPause(5);
        latest->isReady = true;
        Q_EMIT latest->readyChanged(true);
        QCOMPARE(keeper.availability(), NetworkController::Ready);
        keeper.setRetryPause(6);
        waitFor(50);
        played.reset();
        QTRY_COMPARE(keeper.availability(), NetworkController::Gone);
        played = std::make_unique<PlayedDaemon>(PlayedDaemon::Tethering);
        QTRY_COMPARE(keeper.availability(), NetworkController::Ready);
        waitFor(150);
        QCOMPARE(madeAt.size(), 1);
    }

    void theFormerServiceGoesLast()
    {
        const PlayedDaemon played(PlayedDaemon::Tethering);
        QVector<int> droppedBefore;
        ServiceKeeper keeper(stubborn());
        const ServiceBase *former = keeper.service();
        const QObject here;
        connect(&keeper, &ServiceKeeper::replaced, &here, [&] {
            if (keeper.service() != former)
                droppedBefore += dropped;
        });
        keeper.setRetryPause(5);
        QTRY_VERIFY(dropped > 0);
        QCOMPARE(droppedBefore.first(), 0);
    }

    void isDeletedBySlots()
    {
        const PlayedDaemon played(PlayedDaemon::Tethering);
        auto keeper = std::make_unique<ServiceKeeper>(stubborn());
        keeper->setRetryPause(5);
        connect(keeper.get(), &ServiceKeeper::replaced, this, [&] {
            if (keeper)
                keeper.reset();
        });
        QTRY_VERIFY(!keeper);
        QCOMPARE(dropped, madeAt.size());
    }

    void isDeletedByWhoHearsThatItIsReady()
    {
        auto keeper = std::make_unique<ServiceKeeper>(stubborn());
        connect(keeper.get(), &ServiceKeeper::availabilityChanged, this, [&] { keeper.reset(); });
        const PlayedDaemon played(PlayedDaemon::Tethering); // of which its folder has not told yet
        latest->isReady = true;
        Q_EMIT latest->readyChanged(true);
        QVERIFY(!keeper);
        QCOMPARE(dropped, 1);
    }

private:
    static void waitFor(int milliseconds)
    {
        bool over = false;
        QTimer::singleShot(milliseconds, [&over] { over = true; });
        QTRY_VERIFY(over);
    }
};

CONTRACT_TEST_MAIN(ServiceKeeperTest)

#include "tst_servicekeeper.moc"
