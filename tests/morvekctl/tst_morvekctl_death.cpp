// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! A daemon that dies while a command waits for what it has accepted: it is told as that, and soon. */
class TestMorvekctlDeath : public WifiCase
{
    Q_OBJECT

private Q_SLOTS:
    void killed_data();
    void killed();
    void endsInOrder();
    void replacedAtOnce();
    void othersMayDie();
    void whileReleasing();
    void whileAwaitingAddresses();

private:
    /*! Starts \a arguments, and waits until the daemon has told that it has \a accepted. */
    bool begin(Tool *tool, const QString &arguments, const QString &accepted);

    const QString wifiDied = QStringLiteral("morvekctl: the Wi-Fi daemon has died, and with it what was asked of it\n");
};

bool TestMorvekctlDeath::begin(Tool *tool, const QString &arguments, const QString &accepted)
{
    if (!m_daemon->publish(QStringLiteral("slow"), {QStringLiteral("--verbose")}))
        return false;
    tool->start(arguments.split(QLatin1Char(' ')));
    tool->feed("correct horse 7\n");
    return waitForDaemon(accepted);
}

void TestMorvekctlDeath::killed_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("accepted");
    QTest::addColumn<QString>("daemon");
    QTest::newRow("scan") << "wifi scan"
                          << "reply   scan"
                          << "Wi-Fi";
    QTest::newRow("scan as JSON") << "wifi scan --json --timeout 60"
                                  << "reply   scan"
                                  << "Wi-Fi";
    QTest::newRow("scan of connect") << "wifi connect Home --passkey-file -"
                                     << "reply   scan"
                                     << "Wi-Fi";
    QTest::newRow("hotspot on") << "hotspot on"
                                << "reply   start"
                                << "tethering";
}

void TestMorvekctlDeath::killed()
{
    QFETCH(QString, arguments);
    QFETCH(QString, accepted);
    QFETCH(QString, daemon);
    Tool tool(m_root->path());
    QVERIFY(begin(&tool, arguments, accepted));
    QElapsedTimer timer;
    timer.start();
    m_daemon->signal(SIGKILL);
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    const QString sentence = QStringLiteral("the %1 daemon has died, and with it what was asked of it").arg(daemon);
    const QString form = arguments.contains(QLatin1String("--json"))
        ? QStringLiteral(R"({"code":null,"exitCode":1,"message":"%1"})")
        : QStringLiteral("morvekctl: %1");
    const QString errors = tool.errors();
    QVERIFY2(errors.endsWith(form.arg(sentence) + QLatin1Char('\n')), qPrintable(errors));
}

void TestMorvekctlDeath::endsInOrder()
{
    Tool tool(m_root->path());
    QVERIFY(begin(&tool, QStringLiteral("wifi scan"), QStringLiteral("reply   scan")));
    m_daemon->signal(SIGTERM);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), wifiDied);
}

/*! Whoever looks now and then finds a daemon at any time, but another one. */
void TestMorvekctlDeath::replacedAtOnce()
{
    Tool tool(m_root->path());
    QVERIFY(begin(&tool, QStringLiteral("wifi scan"), QStringLiteral("reply   scan")));
    QCOMPARE(run(QStringLiteral("wifi off")).errors,
             QStringLiteral("morvekctl: the radio is still on, code -1: the daemon is gone (the Wi-Fi daemon has "
                            "died)\n"));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), wifiDied);
}

void TestMorvekctlDeath::othersMayDie()
{
    Tool tool(m_root->path());
    QVERIFY(begin(&tool, QStringLiteral("wifi scan --json"), QStringLiteral("reply   scan")));
    // It takes as long as the death of the own daemon would.
    QCOMPARE(run(QStringLiteral("hotspot off")).code, 1);
    QCOMPARE(run(QStringLiteral("hotspot status --wait --timeout 1")).code, 4);
    QVERIFY(publish(QStringLiteral("scan_results"), QStringLiteral("[]")));
    QCOMPARE(tool.nextLine(), QStringLiteral("[]"));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlDeath::whileReleasing()
{
    Tool tool(m_root->path());
    QVERIFY(
        begin(&tool,
              QStringLiteral("configure wlan0 manual --address 192.168.43.9 --prefix 24 --gateway 192.168.43.1 --json"),
              QStringLiteral("reply   net_disconnected")));
    QElapsedTimer timer;
    timer.start();
    m_daemon->signal(SIGKILL);
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(tool.errors(),
             QStringLiteral(
                 R"({"code":null,"exitCode":1,"message":"the networking daemon has died, and with it what was asked )"
                 R"(of it: wlan0 has its addresses still, and manual was not asked for; should it lose them later, )"
                 R"('morvekctl configure wlan0 manual ...' and then 'morvekctl configure wlan0 auto' bring it back"})"
                 "\n"));
}

void TestMorvekctlDeath::whileAwaitingAddresses()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start(QStringLiteral("configure eth0 auto --applied").split(QLatin1Char(' ')));
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: the networking daemon has died, and with it what was asked of it: auto was "
                            "accepted, but eth0 does not report it yet; if no address comes, 'morvekctl configure "
                            "eth0 ...' once more brings it back\n"));
}

QTEST_GUILESS_MAIN(TestMorvekctlDeath)
#include "tst_morvekctl_death.moc"
