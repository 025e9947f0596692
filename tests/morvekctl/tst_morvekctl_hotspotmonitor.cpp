// SPDX-License-Identifier: Apache-2.0
#include "hotspotcase.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! hotspot monitor: what it tells, in which order, and how it ends. */
class TestMorvekctlHotspotMonitor : public HotspotCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void changes();
    void changesAsJson();
    void withoutProfile();
    void withoutProfileAsJson();
    void profileThatIsLate();
    void otherChangesAreNotTold();
    void outlivesDaemon();
    void anotherProfileAfterReturn();
    void waitsForDaemon();
    void waitsWithFewServices();
    void endsBySignal_data();
    void endsBySignal();
    void endsAfterCount();
    void endsByTimeout();
    void countWithinTimeout();

private:
    void follow(const QString &options = {})
    {
        m_tool->start(QStringLiteral("hotspot monitor %1").arg(options).split(QLatin1Char(' '), Qt::SkipEmptyParts));
    }
    QString nextLine() { return m_tool->nextEvent(); }
    QString nextJson()
    {
        return QString::fromUtf8(QJsonDocument(m_tool->nextEventObject()).toJson(QJsonDocument::Compact));
    }

    const QString off = QStringLiteral("present  hotspot off");
    const QString profile = QStringLiteral("profile  hotspot off, \"Morvek Car\" (WPA2, 5 GHz)");
    std::unique_ptr<Tool> m_tool;
};

void TestMorvekctlHotspotMonitor::init()
{
    HotspotCase::init();
    m_tool = std::make_unique<Tool>(m_root->path());
}

void TestMorvekctlHotspotMonitor::cleanup()
{
    m_tool.reset();
    HotspotCase::cleanup();
}

void TestMorvekctlHotspotMonitor::changes()
{
    QVERIFY(start());
    follow();
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    QCOMPARE(run(QStringLiteral("hotspot off")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("off      hotspot off"));
}

void TestMorvekctlHotspotMonitor::changesAsJson()
{
    QVERIFY(start());
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(), QStringLiteral(R"({"enabled":true,"event":"present"})"));
    QCOMPARE(nextJson(),
             QStringLiteral(R"({"enabled":true,"event":"profile","profile":{"band":"5","blockConnections":false,)"
                            R"("hasPassphrase":true,"inactivityTime":600,"maxClients":10,"name":"Morvek Car",)"
                            R"("privacy":false,"security":"WPA2"}})"));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("INACTIVE")));
    QCOMPARE(nextJson(), QStringLiteral(R"({"enabled":false,"event":"off"})"));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QCOMPARE(nextJson(), QStringLiteral(R"({"enabled":true,"event":"on"})"));
}

void TestMorvekctlHotspotMonitor::withoutProfile()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "refuse", "err": 13, "errmsg": "permission denied",
                       "times": 1 })"));
    follow(QStringLiteral("--count 1"));
    QCOMPARE(nextLine(), off);
    QVERIFY(QTest::qWaitFor(
        [errors = QString(), this]() mutable {
            errors += m_tool->errors();
            return errors
                == QLatin1String("morvekctl: the profile was not read, code -1: Failed to retrieve WifiHotspot "
                                 "config.\n");
        },
        60000));
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    QCOMPARE(m_tool->wait(), 0);
}

/*! It goes on after that, so it is a note, whose code is not that of the end. */
void TestMorvekctlHotspotMonitor::withoutProfileAsJson()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "refuse", "err": 13, "errmsg": "permission denied",
                       "times": 1 })"));
    follow(QStringLiteral("--json --count 1 --timeout 2"));
    QCOMPARE(m_tool->wait(), 4);
    QCOMPARE(m_tool->errors(),
             QStringLiteral(R"({"note":"the profile was not read, code -1: Failed to retrieve WifiHotspot config."})"
                            "\n"
                            R"({"code":null,"exitCode":4,"message":"the time is up: fewer changes than --count came"})"
                            "\n"));
}

void TestMorvekctlHotspotMonitor::profileThatIsLate()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "late", "delay": 2000, "times": 1 })",
                  {QStringLiteral("--verbose")}));
    follow();
    QCOMPARE(nextLine(), off);
    QVERIFY(waitForDaemon(QStringLiteral("request retrieve_profile")));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    QCOMPARE(nextLine(), QStringLiteral("profile  hotspot on, \"Morvek Car\" (WPA2, 5 GHz)"));
}

void TestMorvekctlHotspotMonitor::otherChangesAreNotTold()
{
    QVERIFY(start());
    follow();
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    QCOMPARE(run(QStringLiteral("hotspot set --band 2.4")).code, 0);
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("STARTING")));
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
}

void TestMorvekctlHotspotMonitor::outlivesDaemon()
{
    QVERIFY(start());
    follow(QStringLiteral("--count 3"));
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    QCOMPARE(nextLine(), QStringLiteral("gone     the tethering daemon has died"));
    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(start());
    // The daemon serves requests when it has told its state.
    QCOMPARE(nextLine(), QStringLiteral("off      hotspot off"));
    QCOMPARE(nextLine(), QStringLiteral("back     the tethering daemon is there again"));
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    QCOMPARE(m_tool->wait(), 0);
}

void TestMorvekctlHotspotMonitor::anotherProfileAfterReturn()
{
    QVERIFY(start());
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(), QStringLiteral(R"({"enabled":false,"event":"present"})"));
    QVERIFY(nextJson().contains(QLatin1String(R"("band":"5")")));
    QCOMPARE(run(QStringLiteral("hotspot set --band 2.4")).code, 0);
    m_daemon->signal(SIGKILL);
    m_daemon->wait();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(start());
    QCOMPARE(nextJson(), QStringLiteral(R"({"event":"gone"})"));
    QCOMPARE(nextJson(), QStringLiteral(R"({"event":"back"})"));
    QVERIFY(nextJson().startsWith(QLatin1String(R"({"enabled":false,"event":"profile","profile":{"band":"2.4",)")));
}

void TestMorvekctlHotspotMonitor::waitsForDaemon()
{
    follow(QStringLiteral("--wait"));
    QVERIFY(start());
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
}

void TestMorvekctlHotspotMonitor::waitsWithFewServices()
{
    follow(QStringLiteral("--wait"));
    // Each service stays, and opens the objects when they come. At a service a second there would be six of them.
    QCOMPARE(run(QStringLiteral("hotspot status --wait --timeout 6.3")).code, 4);
    QVERIFY(start());
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    int sockets = 0;
    const QDir open(QStringLiteral("/proc/%1/fd").arg(m_tool->processId()));
    const QFileInfoList files = open.entryInfoList(QDir::Files | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &file : files)
        sockets += QFile::symLinkTarget(file.filePath()).contains(QLatin1String("socket:")) ? 1 : 0;
    QVERIFY2(sockets >= 1 && sockets <= 5, qPrintable(QString::number(sockets)));
}

void TestMorvekctlHotspotMonitor::endsBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlHotspotMonitor::endsBySignal()
{
    QFETCH(int, signal);
    QVERIFY(start());
    follow();
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    m_tool->signal(signal);
    QCOMPARE(m_tool->wait(), 0);
    QCOMPARE(m_tool->errors(), QString());
}

void TestMorvekctlHotspotMonitor::endsAfterCount()
{
    QVERIFY(start());
    follow(QStringLiteral("--count 2"));
    QCOMPARE(nextLine(), off);
    QCOMPARE(nextLine(), profile);
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on       hotspot on"));
    QCOMPARE(run(QStringLiteral("hotspot off")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("off      hotspot off"));
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(m_tool->nextLine().isNull());
}

void TestMorvekctlHotspotMonitor::endsByTimeout()
{
    QVERIFY(start());
    const ToolResult result = run(QStringLiteral("hotspot monitor --timeout 1"));
    QCOMPARE(result.output.count(QLatin1Char('\n')), 2);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlHotspotMonitor::countWithinTimeout()
{
    QVERIFY(start());
    const ToolResult result = run(QStringLiteral("hotspot monitor --timeout 1 --count 1"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: fewer changes than --count came\n"));
    QCOMPARE(result.code, 4);
}

QTEST_GUILESS_MAIN(TestMorvekctlHotspotMonitor)
#include "tst_morvekctl_hotspotmonitor.moc"
