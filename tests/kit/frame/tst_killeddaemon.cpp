// SPDX-License-Identifier: Apache-2.0
#include "hostdprocess.h"
#include "plainrequest.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

/*! The daemons are killed, which nobody tells, and started again. */
class KilledDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isNoticed_data()
    {
        QTest::addColumn<int>("daemon");
        QTest::addRow("networking") << int(PlainController::Networking);
        QTest::addRow("Wi-Fi") << int(PlainController::Wifi);
        QTest::addRow("tethering") << int(PlainController::Tethering);
    }
    void isNoticed()
    {
        QFETCH(int, daemon);
        const QTemporaryDir root;
        qputenv("ZOP_ROOT", root.path().toLocal8Bit());
        auto hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        NetworkServices services;
        services.setWatchPause(20);
        PlainController controller(PlainController::Daemon(daemon), &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        PlainRequest *request = controller.ask();

        hostd->kill();
        QTRY_COMPARE(controller.availability(), NetworkController::Gone);
        QTRY_COMPARE(request->failure(), NetworkRequest::Lost);

        hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        QVERIFY(controller.ask()->isRunning());
    }

    void isLookedForWithAPause()
    {
        const QTemporaryDir root;
        qputenv("ZOP_ROOT", root.path().toLocal8Bit());
        HostdProcess hostd;
        QVERIFY(hostd.start(root.path(), {QStringLiteral("--hold")}));
        NetworkServices services;
        services.setWatchPause(1000000);
        PlainController controller(PlainController::Wifi, &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        hostd.kill();
        bool isOver = false;
        QTimer::singleShot(1500, this, [&isOver] { isOver = true; }); // longer than any pause that is not set
        QTRY_VERIFY(isOver);
        QCOMPARE(controller.availability(), NetworkController::Ready);
        services.setWatchPause(20);
        QTRY_COMPARE(controller.availability(), NetworkController::Gone);
    }

    // Its folder tells that it is another one.
    void isReplacedBeforeSomebodyLooks()
    {
        const QTemporaryDir root;
        qputenv("ZOP_ROOT", root.path().toLocal8Bit());
        auto hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        NetworkServices services;
        services.setWatchPause(1000000);
        PlainController controller(PlainController::Wifi, &services);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
        PlainRequest *request = controller.ask();
        hostd->kill();
        hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        QTRY_COMPARE(request->failure(), NetworkRequest::Lost);
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
    }

    // What was made while only the remains of a dead daemon were there.
    void isHealed_data() { isNoticed_data(); }
    void isHealed()
    {
        QFETCH(int, daemon);
        const QTemporaryDir root;
        qputenv("ZOP_ROOT", root.path().toLocal8Bit());
        auto hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        hostd->kill();
        NetworkServices services;
        PlainController controller(PlainController::Daemon(daemon), &services);
        QTRY_COMPARE(controller.called.count(QStringLiteral("replaced")), 1);
        QCOMPARE(controller.availability(), NetworkController::Waiting);

        hostd = std::make_unique<HostdProcess>();
        QVERIFY(hostd->start(root.path(), {QStringLiteral("--hold")}));
        QTRY_COMPARE(controller.availability(), NetworkController::Ready);
    }
};

QTEST_GUILESS_MAIN(KilledDaemonTest)

#include "tst_killeddaemon.moc"
