// SPDX-License-Identifier: Apache-2.0
#include "processes.h"

#include <zopobject.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! wifi monitor: what it tells, in which order, and how it ends. */
class TestMorvekctlWifiMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void changes();
    void changesAsJson();
    void present_data();
    void present();
    void roaming();
    void hiddenNetwork();
    void sameStateAgain();
    void noHalfStates();
    void outlivesDaemon();
    void outlivesDaemonAsJson();
    void anotherNetworkAfterReturn();
    void waitsForDaemon();
    void endsBySignal_data();
    void endsBySignal();
    void endsAfterCount();
    void endsByTimeout();
    void countWithinTimeout();

private:
    void follow(const QString &options = {});
    bool replaceDaemon()
    {
        m_daemon->signal(SIGKILL);
        m_daemon->wait();
        m_daemon = std::make_unique<Daemon>(m_root->path());
        return m_daemon->publish(QStringLiteral("town"));
    }
    static bool publish(const QString &attribute, const ZopVariant &value)
    {
        ZopChangeset changes;
        changes.assignments.insert(attribute, value);
        return ZopObject(QStringLiteral("/zop/services/wifi/status"), ZopObject::Publish, false).setAttributes(changes);
    }
    ToolResult run(const QString &arguments, const QByteArray &input = {}) const
    {
        return runTool(m_root->path(), arguments.split(QLatin1Char(' ')), {}, input);
    }
    QString nextLine() { return m_tool->nextEvent(); }
    /*! The next line of JSON without its time; "{}" when it has none. */
    QString nextJson()
    {
        return QString::fromUtf8(QJsonDocument(m_tool->nextEventObject()).toJson(QJsonDocument::Compact));
    }

    const QString atHome = QStringLiteral("present       radio on, connected to \"Home\" by 02:00:00:00:70:01 "
                                          "(WPA2, CCMP)");

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Daemon> m_daemon;
    std::unique_ptr<Tool> m_tool;
};

void TestMorvekctlWifiMonitor::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    qputenv("ZOP_ROOT", m_root->path().toUtf8());
    m_daemon = std::make_unique<Daemon>(m_root->path());
    m_tool = std::make_unique<Tool>(m_root->path());
}

void TestMorvekctlWifiMonitor::cleanup()
{
    m_tool.reset();
    m_daemon.reset();
    m_root.reset();
}

void TestMorvekctlWifiMonitor::follow(const QString &options)
{
    m_tool->start(QStringLiteral("wifi monitor %1").arg(options).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

void TestMorvekctlWifiMonitor::changes()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow();
    QCOMPARE(nextLine(), atHome);

    QCOMPARE(run(QStringLiteral("wifi connect Garage --passkey-file -"), "open sesame 42").code, 0);
    QCOMPARE(nextLine(), QStringLiteral("disconnected  radio on, not connected"));
    QCOMPARE(nextLine(),
             QStringLiteral("connected     radio on, connected to \"Garage\" by 02:00:00:00:70:03 (WPA2, CCMP)"));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("disconnected  radio on, not connected"));
    QCOMPARE(run(QStringLiteral("wifi off")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("off           radio off, not connected"));
    QCOMPARE(run(QStringLiteral("wifi on")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("on            radio on, not connected"));
}

void TestMorvekctlWifiMonitor::changesAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(),
             QStringLiteral(R"({"accessPoint":{"bssid":"02:00:00:00:70:01","channel":null,"cipher":"CCMP",)"
                            R"("frequency":null,"security":"WPA2","signal":null,"ssid":"Home"},"connected":true,)"
                            R"("event":"present","powered":true})"));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QCOMPARE(nextJson(),
             QStringLiteral(R"({"accessPoint":null,"connected":false,"event":"disconnected","powered":true})"));
    QCOMPARE(run(QStringLiteral("wifi off")).code, 0);
    QCOMPARE(nextJson(), QStringLiteral(R"({"accessPoint":null,"connected":false,"event":"off","powered":false})"));
    QCOMPARE(run(QStringLiteral("wifi on")).code, 0);
    QCOMPARE(nextJson(), QStringLiteral(R"({"accessPoint":null,"connected":false,"event":"on","powered":true})"));
    QCOMPARE(
        runTool(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("No level")}).code,
        0);
    QCOMPARE(nextJson(),
             QStringLiteral(R"({"accessPoint":{"bssid":"02:00:00:00:70:10","channel":null,"cipher":"none",)"
                            R"("frequency":null,"security":"open","signal":null,"ssid":"No level"},"connected":true,)"
                            R"("event":"connected","powered":true})"));
}

void TestMorvekctlWifiMonitor::present_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("line");
    QTest::newRow("not connected") << "empty-air"
                                   << "present       radio on, not connected";
    QTest::newRow("off") << "radio-off"
                         << "present       radio off, not connected";
}

void TestMorvekctlWifiMonitor::present()
{
    QFETCH(QString, scenario);
    QFETCH(QString, line);
    QVERIFY(m_daemon->publish(scenario));
    follow();
    QCOMPARE(nextLine(), line);
}

void TestMorvekctlWifiMonitor::roaming()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow();
    QCOMPARE(nextLine(), atHome);

    QVERIFY(publish(QStringLiteral("wifi_status"),
                    ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:99","ssid":"Home"})"), "json")));
    QCOMPARE(nextLine(),
             QStringLiteral("roamed        radio on, connected to \"Home\" by 02:00:00:00:70:99 (unknown, unknown)"));
    QVERIFY(publish(QStringLiteral("wifi_status"),
                    ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:98","ssid":"Hall"})"), "json")));
    QCOMPARE(nextLine(),
             QStringLiteral("connected     radio on, connected to \"Hall\" by 02:00:00:00:70:98 (unknown, unknown)"));
}

/*! Without a name it is not the network that no connection is. */
void TestMorvekctlWifiMonitor::hiddenNetwork()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    follow();
    QCOMPARE(nextLine(), QStringLiteral("present       radio on, not connected"));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:97"})"), "json")));
    QCOMPARE(nextLine(),
             QStringLiteral("connected     radio on, connected to a network without a name by 02:00:00:00:70:97 "
                            "(unknown, unknown)"));
}

void TestMorvekctlWifiMonitor::sameStateAgain()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    follow();
    QCOMPARE(nextLine(), QStringLiteral("present       radio on, not connected"));
    QVERIFY(publish(QStringLiteral("wifi_power"), QStringLiteral("on")));
    QVERIFY(publish(QStringLiteral("scan_results"), QStringLiteral("[]")));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(QByteArray(R"({"ssid":"Home"})"), "json")));
    QVERIFY(publish(QStringLiteral("wifi_power"), QStringLiteral("off")));
    QCOMPARE(nextLine(), QStringLiteral("off           radio off, not connected"));
}

/*! The radio and the connection that goes with it are one update, and one line. */
void TestMorvekctlWifiMonitor::noHalfStates()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow(QStringLiteral("--count 3"));
    QCOMPARE(nextLine(), atHome);
    QCOMPARE(run(QStringLiteral("wifi off")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("off           radio off, not connected"));

    ZopChangeset both;
    both.assignments.insert(QStringLiteral("wifi_power"), QStringLiteral("on"));
    both.assignments.insert(QStringLiteral("wifi_status"),
                            ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:99","ssid":"Home"})"), "json"));
    QVERIFY(ZopObject(QStringLiteral("/zop/services/wifi/status"), ZopObject::Publish, false).setAttributes(both));
    QCOMPARE(nextLine(),
             QStringLiteral("on            radio on, connected to \"Home\" by 02:00:00:00:70:99 (unknown, unknown)"));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(QByteArray("{}"), "json")));
    QCOMPARE(nextLine(), QStringLiteral("disconnected  radio on, not connected"));
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(m_tool->nextLine().isNull());
}

void TestMorvekctlWifiMonitor::outlivesDaemon()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow(QStringLiteral("--count 1"));
    QCOMPARE(nextLine(), atHome);
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    QCOMPARE(nextLine(), QStringLiteral("gone          the Wi-Fi daemon has died"));

    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QCOMPARE(nextLine(), QStringLiteral("back          the Wi-Fi daemon is there again"));
    QVERIFY(replaceDaemon());
    QCOMPARE(nextLine(), QStringLiteral("gone          the Wi-Fi daemon has died"));
    QCOMPARE(nextLine(), QStringLiteral("back          the Wi-Fi daemon is there again"));
    // Nothing of that counts.
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("disconnected  radio on, not connected"));
    QCOMPARE(m_tool->wait(), 0);
}

void TestMorvekctlWifiMonitor::outlivesDaemonAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow(QStringLiteral("--json"));
    QVERIFY(!nextJson().isNull());
    QVERIFY(replaceDaemon());
    QCOMPARE(nextJson(), QStringLiteral(R"({"event":"gone"})"));
    QCOMPARE(nextJson(), QStringLiteral(R"({"event":"back"})"));
}

/*! The connection as such has not changed, so the library does not tell it. */
void TestMorvekctlWifiMonitor::anotherNetworkAfterReturn()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QCOMPARE(run(QStringLiteral("wifi connect Garage --passkey-file -"), "open sesame 42").code, 0);
    follow();
    QCOMPARE(nextLine(),
             QStringLiteral("present       radio on, connected to \"Garage\" by 02:00:00:00:70:03 (WPA2, CCMP)"));
    QVERIFY(replaceDaemon());
    QCOMPARE(nextLine(), QStringLiteral("gone          the Wi-Fi daemon has died"));
    QCOMPARE(nextLine(), QStringLiteral("back          the Wi-Fi daemon is there again"));
    QCOMPARE(nextLine(),
             QStringLiteral("connected     radio on, connected to \"Home\" by 02:00:00:00:70:01 (WPA2, CCMP)"));
}

void TestMorvekctlWifiMonitor::waitsForDaemon()
{
    follow(QStringLiteral("--wait"));
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QCOMPARE(nextLine(), atHome);
}

void TestMorvekctlWifiMonitor::endsBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlWifiMonitor::endsBySignal()
{
    QFETCH(int, signal);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow();
    QCOMPARE(nextLine(), atHome);
    m_tool->signal(signal);
    QCOMPARE(m_tool->wait(), 0);
    QCOMPARE(m_tool->errors(), QString());
}

void TestMorvekctlWifiMonitor::endsAfterCount()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    follow(QStringLiteral("--count 2"));
    QCOMPARE(nextLine(), atHome);
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("disconnected  radio on, not connected"));
    QCOMPARE(run(QStringLiteral("wifi off")).code, 0);
    QCOMPARE(nextLine(), QStringLiteral("off           radio off, not connected"));
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(m_tool->nextLine().isNull());
}

void TestMorvekctlWifiMonitor::endsByTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = run(QStringLiteral("wifi monitor --timeout 0.3"));
    QCOMPARE(result.output.count(QLatin1Char('\n')), 1);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifiMonitor::countWithinTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = run(QStringLiteral("wifi monitor --timeout 0.3 --count 1"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: fewer changes than --count came\n"));
    QCOMPARE(result.code, 4);
}

QTEST_GUILESS_MAIN(TestMorvekctlWifiMonitor)
#include "tst_morvekctl_wifimonitor.moc"
