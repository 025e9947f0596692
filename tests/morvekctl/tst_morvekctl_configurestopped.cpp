// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"
#include "terminaltool.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! configure, stopped by signals and deadlines: no interface is left without addresses. */
class TestMorvekctlConfigureStopped : public DaemonCase
{
    Q_OBJECT

public:
    TestMorvekctlConfigureStopped()
        : DaemonCase(QStringLiteral("/zop/services/networking/all/interfaces/eth0"))
    {
    }

private Q_SLOTS:
    void whileReleasing_data();
    void whileReleasing();
    void deadlineWhileReleasing();
    void signalsTogether();
    void refusedAfterSignal();
    void neverReleased();
    void secondSignal();
    void signalsAfterDeadline();
    void anotherIsReleased();
    void withoutAddress();
    void neverReleasedWithoutAddress();
    void whileAwaitingAddresses();
    void ownDeadlines();

private:
    bool start(const QString &scenario) { return m_daemon->publish(scenario, {QStringLiteral("--verbose")}); }
    static QStringList manual()
    {
        return QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1")
            .split(QLatin1Char(' '));
    }
};

namespace {

const QString Released = QStringLiteral("request net_disconnected id=1 eth0\n");
const QString BringsItBack =
    QStringLiteral("'morvekctl configure eth0 manual ...' and then 'morvekctl configure eth0 auto' bring it back\n");

} // namespace

void TestMorvekctlConfigureStopped::whileReleasing_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("hung up") << SIGHUP;
    QTest::newRow("quit") << SIGQUIT;
}

void TestMorvekctlConfigureStopped::whileReleasing()
{
    QFETCH(int, signal);
    QVERIFY(start(QStringLiteral("slow-release")));
    Tool tool(m_root->path());
    tool.start(manual() + QStringList {QStringLiteral("--applied")});
    QVERIFY(waitForDaemon(Released));
    tool.signal(signal);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: interrupted: the networking daemon has not answered; it may still make eth0 "
                            "manual; if no address comes, ")
                 + BringsItBack);
    QTRY_COMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.77/255.255.0.0"])"));
    QCOMPARE(published(QStringLiteral("manual")), QStringLiteral("yes"));
    QCOMPARE(run(QStringLiteral("configure eth0 auto --applied")).code, 0);
}

void TestMorvekctlConfigureStopped::deadlineWhileReleasing()
{
    QVERIFY(start(QStringLiteral("slow-release")));
    const ToolResult result =
        runTool(m_root->path(), manual() + QStringList {QStringLiteral("--timeout"), QStringLiteral("0.05")});
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: the networking daemon has not answered; it may still make eth0 "
                            "manual; if no address comes, ")
                 + BringsItBack);
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
    QTRY_COMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.77/255.255.0.0"])"));
    QCOMPARE(published(QStringLiteral("connected")), QStringLiteral("true"));
}

/*! Who stops a program may signal it and its group. */
void TestMorvekctlConfigureStopped::signalsTogether()
{
    QVERIFY(start(QStringLiteral("slow-release")));
    Tool tool(m_root->path());
    tool.start(manual());
    QVERIFY(waitForDaemon(Released));
    tool.signal(SIGTERM);
    tool.signal(SIGINT);
    QCOMPARE(tool.wait(), 1);
    QTRY_COMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.77/255.255.0.0"])"));
}

void TestMorvekctlConfigureStopped::refusedAfterSignal()
{
    QVERIFY(start(QStringLiteral("release-refused")));
    Tool tool(m_root->path());
    tool.start(manual());
    QVERIFY(waitForDaemon(Released));
    tool.signal(SIGINT);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: eth0 was not configured, code 16: The system was unable to configure the "
                            "interface. (device or resource busy)\n"));
    QCOMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.40/255.255.0.0"])"));
}

void TestMorvekctlConfigureStopped::neverReleased()
{
    QVERIFY(start(QStringLiteral("never-released")));
    Tool tool(m_root->path());
    tool.start(manual());
    QVERIFY(waitForDaemon(Released));
    QElapsedTimer timer;
    timer.start();
    tool.signal(SIGTERM);
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(timer.elapsed() > 4500 && timer.elapsed() < 9000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(
        tool.errors(),
        QStringLiteral("morvekctl: interrupted: eth0 has its addresses still, and manual was not asked for; should "
                       "it lose them later, ")
            + BringsItBack);
    QCOMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.40/255.255.0.0"])"));
}

void TestMorvekctlConfigureStopped::secondSignal()
{
    QVERIFY(start(QStringLiteral("never-released")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), manual()));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has left its network ... 0 s")));
    QVERIFY(waitForDaemon(Released));
    tool.type("\x03");
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 can be left; Ctrl-C leaves it at once ... 1 s")));
    QElapsedTimer timer;
    timer.start();
    tool.type("\x03");
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(
        tool.shown().endsWith(QStringLiteral("\r\x1b[K"
                                             "morvekctl: interrupted: eth0 has its addresses still, and manual was "
                                             "not asked for; should it lose them later, ")
                              + BringsItBack.chopped(1) + QStringLiteral("\r\n")),
        qPrintable(tool.shown()));
}

/*! The first signal after a deadline is not the second one. */
void TestMorvekctlConfigureStopped::signalsAfterDeadline()
{
    QVERIFY(start(QStringLiteral("never-released")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), manual() + QStringList {QStringLiteral("--timeout"), QStringLiteral("0.3")}));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 can be left ... 0 s")));
    QElapsedTimer timer;
    timer.start();
    tool.type("\x03");
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 can be left; Ctrl-C leaves it at once ... 1 s")));
    tool.type("\x03");
    QCOMPARE(tool.wait(), 4);
    QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(tool.shown().contains(QLatin1String("morvekctl: the time is up: eth0 has its addresses still, ")),
             qPrintable(tool.shown()));
}

void TestMorvekctlConfigureStopped::anotherIsReleased()
{
    const QString another = QStringLiteral("/zop/services/networking/all/interfaces/usb0");
    const QString addresses = QStringLiteral("ip_addresses");
    QVERIFY(start(QStringLiteral("never-released")));
    QVERIFY(publish(another, addresses, ZopVariant(R"(["10.30.0.2/255.255.0.0"])", "json")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), manual()));
    QVERIFY(waitForDaemon(Released));
    QVERIFY(publish(another, addresses, ZopVariant("[]", "json")));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has left its network ... 2 s")));
}

/*! What is told of the interface's priority is no release: who leaves then leaves it without any configuration. */
void TestMorvekctlConfigureStopped::withoutAddress()
{
    QVERIFY(start(QStringLiteral("never-released")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant("[]", "json")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), manual()));
    QVERIFY(waitForDaemon(Released));
    QVERIFY(publish(QStringLiteral("/zop/services/networking/all/status_public"), QStringLiteral("priority"),
                    ZopVariant(R"(["eth0"])", "json")));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has left its network ... 1 s")));
    tool.type("\x03");
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 can be left; Ctrl-C leaves it at once ... ")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant("[]", "json")));
    QVERIFY(waitForDaemon(QStringLiteral("request net_connected id=2 eth0 ")));
    QCOMPARE(tool.wait(), 1);
}

void TestMorvekctlConfigureStopped::neverReleasedWithoutAddress()
{
    QVERIFY(start(QStringLiteral("never-released")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant("[]", "json")));
    const ToolResult result =
        runTool(m_root->path(), manual() + QStringList {QStringLiteral("--timeout"), QStringLiteral("0.05")});
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: eth0 has no address, and manual may not have been asked for; ")
                 + BringsItBack);
    QCOMPARE(result.code, 4);
}

void TestMorvekctlConfigureStopped::whileAwaitingAddresses()
{
    QVERIFY(start(QStringLiteral("never-leased")));
    TerminalTool tool;
    QVERIFY(tool.start(
        m_root->path(),
        {QStringLiteral("configure"), QStringLiteral("eth0"), QStringLiteral("auto"), QStringLiteral("--applied")}));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has its addresses ... 0 s")));
    tool.type("\x03");
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(tool.shown().endsWith(
                 QStringLiteral("morvekctl: interrupted: auto was accepted, but eth0 does not report it yet; if no "
                                "address comes, 'morvekctl configure eth0 ...' once more brings it back\r\n")),
             qPrintable(tool.shown()));
}

namespace {

/*! A run of configure that nobody stops, on a root and with a daemon of its own. */
struct Patient
{
    QTemporaryDir root;
    Daemon daemon {root.path()};
    Tool tool {root.path()};

    bool start(const QString &scenario, const QStringList &arguments)
    {
        const bool isPublished = daemon.publish(scenario);
        tool.start(arguments);
        return isPublished;
    }
};

bool isAbout(qint64 milliseconds, qint64 expected)
{
    return milliseconds > expected * 9 / 10 && milliseconds < expected + 4000;
}

} // namespace

/*! Ten seconds for an answer; ten, and five more, for addresses to go; thirty for others to come. */
void TestMorvekctlConfigureStopped::ownDeadlines()
{
    Patient unanswered;
    Patient unreleased;
    Patient unleased;
    QElapsedTimer timer;
    timer.start();
    QVERIFY(unanswered.start(QStringLiteral("connect-unanswered"), manual()));
    QVERIFY(unreleased.start(QStringLiteral("never-released"), manual()));
    QVERIFY(unleased.start(QStringLiteral("never-leased"),
                           QStringLiteral("configure eth0 auto --applied").split(QLatin1Char(' '))));

    QCOMPARE(unanswered.tool.wait(), 4);
    QVERIFY2(isAbout(timer.elapsed(), 10000), qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(unanswered.tool.errors(),
             QStringLiteral("morvekctl: the time is up: the networking daemon has not answered; it may still make eth0 "
                            "manual; if no address comes, ")
                 + BringsItBack);

    QCOMPARE(unreleased.tool.wait(), 4);
    QVERIFY2(isAbout(timer.elapsed(), 15000), qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(unreleased.tool.errors(),
             QStringLiteral("morvekctl: the time is up: eth0 has its addresses still, and manual was not asked for; "
                            "should it lose them later, ")
                 + BringsItBack);
    qputenv("ZOP_ROOT", unreleased.root.path().toUtf8());
    QCOMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.40/255.255.0.0"])"));

    QCOMPARE(unleased.tool.wait(), 4);
    QVERIFY2(isAbout(timer.elapsed(), 30000), qPrintable(QString::number(timer.elapsed())));

    // The way out, as it was told.
    for (const QStringList &arguments : {manual(), QStringLiteral("configure eth0 auto").split(QLatin1Char(' '))})
        QCOMPARE(runTool(unanswered.root.path(), arguments + QStringList {QStringLiteral("--applied")}).code, 0);
    qputenv("ZOP_ROOT", unanswered.root.path().toUtf8());
    QCOMPARE(published(QStringLiteral("ip_addresses")), QStringLiteral(R"(["10.20.0.40/255.255.0.0"])"));
}

QTEST_GUILESS_MAIN(TestMorvekctlConfigureStopped)
#include "tst_morvekctl_configurestopped.moc"
