// SPDX-License-Identifier: Apache-2.0
#include "processes.h"
#include "terminaltool.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! The passkey that is typed: it is not shown, and the terminal is as before however the command ends. */
class TestMorvekctlWifiPrompt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void typed_data();
    void typed();
    void wrong();
    void protectedTwinIsAsked();
    void noPossiblePasskey();
    void openNetworkIsNotAsked();
    void given();
    void endsWithoutPasskey_data();
    void endsWithoutPasskey();
    void endsBySignal_data();
    void endsBySignal();
    void outlivesTerminal();
    void endsByTimeout();
    void keysThatWouldLeaveTheTerminalSilent();

private:
    /*! Starts to join \a ssid, and waits until the passkey is asked for. */
    bool startAndWait(const QString &ssid, const QStringList &options = {},
                      TerminalTool::Hangup hangup = TerminalTool::HeedHangup)
    {
        return m_tool->start(m_root->path(),
                             QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), ssid} + options, hangup)
            && m_tool->waitFor(prompt);
    }
    bool echoes() const { return m_tool->modes().c_lflag & ECHO; }
    bool isRestored() const;

    const QString prompt = QStringLiteral("Passkey of \"Garage\": ");
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Daemon> m_daemon;
    std::unique_ptr<TerminalTool> m_tool;
};

void TestMorvekctlWifiPrompt::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    m_tool = std::make_unique<TerminalTool>();
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
}

void TestMorvekctlWifiPrompt::cleanup()
{
    m_tool.reset();
    m_daemon.reset();
    m_root.reset();
}

/*! Compared with a terminal that nobody has touched. */
bool TestMorvekctlWifiPrompt::isRestored() const
{
    TerminalTool fresh;
    if (!fresh.start(m_root->path(), {QStringLiteral("--version")}) || fresh.wait() != 0)
        return false;
    const termios now = m_tool->modes();
    const termios before = fresh.modes();
    return now.c_iflag == before.c_iflag && now.c_oflag == before.c_oflag && now.c_cflag == before.c_cflag
        && now.c_lflag == before.c_lflag && std::equal(std::begin(now.c_cc), std::end(now.c_cc), before.c_cc);
}

void TestMorvekctlWifiPrompt::typed_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("by default") << QStringList();
    QTest::newRow("standard input is a terminal") << QStringList {QStringLiteral("--passkey-file=-")};
}

void TestMorvekctlWifiPrompt::typed()
{
    QFETCH(QStringList, options);
    QVERIFY(startAndWait(QStringLiteral("Garage"), options));
    QVERIFY(!echoes());
    m_tool->type("open sesame 42\n");
    QCOMPARE(m_tool->wait(), 0);
    QCOMPARE(m_tool->shown(),
             QStringLiteral("Looking for \"Garage\".\r\n"
                            "Passkey of \"Garage\": \r\n"
                            "Joining \"Garage\" (WPA/WPA2 + WPS), strongest by 02:00:00:00:70:03 with -57 dBm.\r\n"
                            "Connected to \"Garage\" by 02:00:00:00:70:03 (WPA2, CCMP).\r\n"));
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::wrong()
{
    QVERIFY(startAndWait(QStringLiteral("Garage")));
    m_tool->type("open sesame 43\n");
    QCOMPARE(m_tool->wait(), 1);
    QVERIFY(!m_tool->shown().contains(QLatin1String("sesame")));
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::protectedTwinIsAsked()
{
    QVERIFY(
        m_tool->start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Twins")}));
    QVERIFY(m_tool->waitFor(QStringLiteral("Passkey of \"Twins\": ")));
    m_tool->type("correct horse 7\n");
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(m_tool->shown().endsWith(QLatin1String("Connected to \"Twins\" by 02:00:00:00:70:08 (WPA2, CCMP).\r\n")));
}

void TestMorvekctlWifiPrompt::noPossiblePasskey()
{
    QVERIFY(startAndWait(QStringLiteral("Garage")));
    m_tool->type("sesame\n");
    QCOMPARE(m_tool->wait(), 1);
    QVERIFY2(m_tool->shown().endsWith(QLatin1String(
                 "Passkey of \"Garage\": \r\n"
                 "morvekctl: \"Garage\" was not joined: a passkey has 8 to 63 plain letters, digits, blanks "
                 "and signs (ASCII), or 64 hexadecimal digits\r\n")),
             qPrintable(m_tool->shown()));
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::openNetworkIsNotAsked()
{
    QVERIFY(
        m_tool->start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("No level")}));
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(!m_tool->shown().contains(QLatin1String("Passkey")));
}

void TestMorvekctlWifiPrompt::given()
{
    QFile file(m_root->filePath(QStringLiteral("key")));
    QVERIFY(file.open(QFile::WriteOnly));
    file.write("open sesame 42\n");
    file.close();
    QVERIFY(m_tool->start(m_root->path(),
                          {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Garage"),
                           QStringLiteral("--passkey-file"), file.fileName()}));
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(!m_tool->shown().contains(QLatin1String("Passkey")));
}

void TestMorvekctlWifiPrompt::endsWithoutPasskey_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("reason");
    QTest::newRow("Return") << QByteArray("\n") << "no passkey was typed";
    QTest::newRow("Ctrl-D") << QByteArray("\x04") << "no passkey was typed";
    QTest::newRow("Ctrl-C") << QByteArray("\x03") << "interrupted";
    QTest::newRow("Ctrl-C after a few keys") << QByteArray("open ses\x03") << "interrupted";
}

void TestMorvekctlWifiPrompt::endsWithoutPasskey()
{
    QFETCH(QByteArray, keys);
    QFETCH(QString, reason);
    QVERIFY(startAndWait(QStringLiteral("Garage")));
    m_tool->type(keys);
    QCOMPARE(m_tool->wait(), 1);
    QCOMPARE(m_tool->shown(),
             QStringLiteral("Looking for \"Garage\".\r\n"
                            "Passkey of \"Garage\": \r\n"
                            "morvekctl: \"Garage\" was not joined: %1\r\n")
                 .arg(reason));
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::endsBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlWifiPrompt::endsBySignal()
{
    QFETCH(int, signal);
    const auto former = ::signal(signal, SIG_IGN); // who runs the tests may ignore it, as nohup does
    const bool started = startAndWait(QStringLiteral("Garage"));
    ::signal(signal, former);
    QVERIFY(started);
    QVERIFY(!isRestored());
    ::kill(m_tool->processId(), signal);
    QCOMPARE(m_tool->wait(), 1);
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::outlivesTerminal()
{
    QVERIFY(startAndWait(QStringLiteral("Garage"), {}, TerminalTool::IgnoreHangup));
    ::kill(m_tool->processId(), SIGHUP);
    m_tool->type("open sesame 42\n");
    QCOMPARE(m_tool->wait(), 0);
}

void TestMorvekctlWifiPrompt::endsByTimeout()
{
    QVERIFY(startAndWait(QStringLiteral("Garage"), {QStringLiteral("--timeout"), QStringLiteral("2")}));
    QCOMPARE(m_tool->wait(), 4);
    QVERIFY(m_tool->shown().endsWith(
        QLatin1String("Passkey of \"Garage\": \r\nmorvekctl: the time is up: no passkey was typed\r\n")));
    QVERIFY(isRestored());
}

void TestMorvekctlWifiPrompt::keysThatWouldLeaveTheTerminalSilent()
{
    QVERIFY(startAndWait(QStringLiteral("Garage")));
    m_tool->type("\x1c\x1a\x15" // Ctrl-\, Ctrl-Z; Ctrl-U takes them back
                 "open sesame 42\n");
    QCOMPARE(m_tool->wait(), 0);
    QVERIFY(isRestored());
}

QTEST_GUILESS_MAIN(TestMorvekctlWifiPrompt)
#include "tst_morvekctl_wifiprompt.moc"
