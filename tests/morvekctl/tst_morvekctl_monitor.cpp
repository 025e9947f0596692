// SPDX-License-Identifier: Apache-2.0
#include "processes.h"

#include <zopobject.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

/*! monitor: what it tells, in which order, and how it ends. */
class TestMorvekctlMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void presentState();
    void presentStateAsJson();
    void changes();
    void changesAsJson();
    void nothingPreferred();
    void sameStateAgain();
    void outlivesDaemon();
    void outlivesDaemonAsJson();
    void anotherStateAfterReturn();
    void waitsForDaemon();

    void endsBySignal_data();
    void endsBySignal();
    void endsAfterCount();
    void endsByTimeout();
    void countWithinTimeout();
    void endsWithItsReader();

private:
    void follow(const QString &options = {});
    bool change(const QString &arguments) const
    {
        return runTool(m_root->path(), arguments.split(QLatin1Char(' '))).code == 0;
    }
    bool giveWlan0AnAddress() const
    {
        return change(QStringLiteral("configure wlan0 manual --address 192.168.43.99 --prefix 24 "
                                     "--gateway 192.168.43.1"));
    }
    QString nextLine() { return m_tool->nextEvent(); }
    /*! "EVENT NAME" of the next line of JSON, or "EVENT -"; nothing like that when it has no time. */
    QString nextJson()
    {
        const QJsonObject object = m_tool->nextEventObject();
        const QJsonValue interface = object[QLatin1String("interface")];
        return object[QLatin1String("event")].toString() + QLatin1Char(' ')
            + (interface.isNull() ? QStringLiteral("-") : interface[QLatin1String("name")].toString());
    }

    QStringList nextFour(QString (TestMorvekctlMonitor::*next)());

    // The daemon publishes the preferred interface in another object: only the order within each is promised.
    const QRegularExpression preferred {QStringLiteral("\\Apreferred ")};
    const QRegularExpression notPreferred {QStringLiteral("\\A(?!preferred )")};

    /*! Writes one attribute of an interface, as the daemon would. */
    static bool publish(const QString &name, const QString &attribute, const ZopVariant &value)
    {
        ZopChangeset changes;
        changes.assignments.insert(attribute, value);
        return ZopObject(interfaces + name, ZopObject::Publish, false).setAttributes(changes);
    }
    bool replaceDaemon(const QString &scenario);

    static inline const QString interfaces = QStringLiteral("/zop/services/networking/all/interfaces/");

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Daemon> m_daemon;
    std::unique_ptr<Tool> m_tool;
};

void TestMorvekctlMonitor::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    qputenv("ZOP_ROOT", m_root->path().toUtf8());
    m_daemon = std::make_unique<Daemon>(m_root->path());
    m_tool = std::make_unique<Tool>(m_root->path());
}

void TestMorvekctlMonitor::cleanup()
{
    m_tool.reset();
    m_daemon.reset();
    m_root.reset();
}

void TestMorvekctlMonitor::follow(const QString &options)
{
    m_tool->start(QStringLiteral("monitor %1").arg(options).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

QStringList TestMorvekctlMonitor::nextFour(QString (TestMorvekctlMonitor::*next)())
{
    QStringList lines;
    while (lines.size() < 4)
        lines += (this->*next)();
    return lines;
}

void TestMorvekctlMonitor::presentState()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow();
    QCOMPARE(nextLine(),
             QStringLiteral("present        cell0   cellular, connected, auto, 100.64.3.9/30, via 100.64.3.10"));
    QCOMPARE(nextLine(), QStringLiteral("present        eth0    wired, connected, auto, 10.20.0.40/16, via 10.20.0.1"));
    QCOMPARE(nextLine(),
             QStringLiteral("present        eth0.5  wired, connected, manual, 172.16.5.2/24, via 172.16.5.1"));
    QCOMPARE(nextLine(),
             QStringLiteral("present        wlan0   wifi, connected, auto, 192.168.43.17/24, via 192.168.43.1"));
    QCOMPARE(nextLine(),
             QStringLiteral("preferred      wlan0   wifi, connected, auto, 192.168.43.17/24, via 192.168.43.1"));
}

void TestMorvekctlMonitor::presentStateAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(), QStringLiteral("present cell0"));
    QCOMPARE(nextJson(), QStringLiteral("present eth0"));

    const QJsonObject line = QJsonDocument::fromJson(m_tool->nextLine().toUtf8()).object();
    QCOMPARE(line.keys(), QStringList({QStringLiteral("event"), QStringLiteral("interface"), QStringLiteral("time")}));
    QCOMPARE(QJsonDocument(line[QLatin1String("interface")].toObject()).toJson(QJsonDocument::Compact),
             QByteArray(R"({"available":true,"configuration":{"addresses":[{"address":"172.16.5.2",)"
                        R"("netmask":"255.255.255.0","prefix":24}],"gateways":["172.16.5.1"],"type":"manual"},)"
                        R"("connected":true,"mac":"02:00:00:00:10:02","mtu":1496,"name":"eth0.5",)"
                        R"("parent":"eth0","priority":4,"type":"wired","virtual":true})"));
    QCOMPARE(nextJson(), QStringLiteral("present wlan0"));
    QCOMPARE(nextJson(), QStringLiteral("preferred wlan0"));
}

void TestMorvekctlMonitor::changes()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow();
    for (int i = 0; i < 5; ++i)
        QVERIFY(!nextLine().isNull());

    QVERIFY(giveWlan0AnAddress());
    const QStringList lines = nextFour(&TestMorvekctlMonitor::nextLine);
    QCOMPARE(lines.filter(notPreferred),
             QStringList({
                 QStringLiteral("disconnected   wlan0   wifi, not connected, auto"),
                 QStringLiteral("connected      wlan0   wifi, connected, manual, 192.168.43.99/24, via 192.168.43.1"),
             }));
    QCOMPARE(lines.filter(preferred),
             QStringList({
                 QStringLiteral("preferred      eth0    wired, connected, auto, 10.20.0.40/16, via 10.20.0.1"),
                 QStringLiteral("preferred      wlan0   wifi, connected, manual, 192.168.43.99/24, via 192.168.43.1"),
             }));
}

void TestMorvekctlMonitor::changesAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow(QStringLiteral("--json"));
    for (int i = 0; i < 5; ++i)
        QVERIFY(!nextJson().isNull());

    QVERIFY(giveWlan0AnAddress());
    const QStringList lines = nextFour(&TestMorvekctlMonitor::nextJson);
    QCOMPARE(lines.filter(notPreferred),
             QStringList({QStringLiteral("disconnected wlan0"), QStringLiteral("connected wlan0")}));
    QCOMPARE(lines.filter(preferred),
             QStringList({QStringLiteral("preferred eth0"), QStringLiteral("preferred wlan0")}));
}

void TestMorvekctlMonitor::nothingPreferred()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    follow();
    QCOMPARE(nextLine(), QStringLiteral("present        bare0  orvanbridge, not connected, auto"));
    QCOMPARE(nextLine(), QStringLiteral("preferred      -"));

    m_tool->signal(SIGTERM);
    QCOMPARE(m_tool->wait(), 0);
    m_tool = std::make_unique<Tool>(m_root->path());
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(), QStringLiteral("present bare0"));
    QCOMPARE(nextJson(), QStringLiteral("preferred -"));
}

/*! Only what the line shows makes a line: the MTU does in JSON. */
void TestMorvekctlMonitor::sameStateAgain()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    Tool json(m_root->path());
    json.start({QStringLiteral("monitor"), QStringLiteral("--json")});
    follow();
    for (Tool *tool : {m_tool.get(), &json}) {
        QVERIFY(!tool->nextLine().isNull());
        QVERIFY(!tool->nextLine().isNull());
    }
    const QString bare = QStringLiteral("bare0");
    QVERIFY(publish(bare, QStringLiteral("connected"), QStringLiteral("no")));
    QVERIFY(publish(bare, QStringLiteral("type"), QStringLiteral("qv")));
    QVERIFY(publish(bare, QStringLiteral("mtu"), 1234));
    QVERIFY(publish(bare, QStringLiteral("connected"), QStringLiteral("yes")));
    QCOMPARE(nextLine(), QStringLiteral("connected      bare0  orvanbridge, connected, auto"));

    const QJsonObject line = json.nextEventObject();
    QCOMPARE(line[QLatin1String("event")].toString(), QStringLiteral("configuration"));
    QCOMPARE(line.value(QLatin1String("interface")).toObject().value(QLatin1String("mtu")).toInt(), 1234);
    QCOMPARE(json.nextEventObject()[QLatin1String("event")].toString(), QStringLiteral("connected"));
}

bool TestMorvekctlMonitor::replaceDaemon(const QString &scenario)
{
    m_daemon->signal(SIGKILL);
    m_daemon->wait();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    return m_daemon->publish(scenario);
}

void TestMorvekctlMonitor::outlivesDaemon()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow(QStringLiteral("--count 1"));
    for (int i = 0; i < 5; ++i)
        QVERIFY(!nextLine().isNull());
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    QCOMPARE(nextLine(), QStringLiteral("gone           the networking daemon has died"));

    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    QCOMPARE(nextLine(), QStringLiteral("back           the networking daemon is there again"));
    // The new daemon tells all that it publishes, which is as it was.
    QVERIFY(change(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1")));
    QCOMPARE(nextLine(), QStringLiteral("disconnected   eth0    wired, not connected, auto"));
    QCOMPARE(m_tool->wait(), 0);
}

void TestMorvekctlMonitor::outlivesDaemonAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    follow(QStringLiteral("--json"));
    QCOMPARE(nextJson(), QStringLiteral("present bare0"));
    QCOMPARE(nextJson(), QStringLiteral("preferred -"));
    QVERIFY(replaceDaemon(QStringLiteral("nothing-preferred")));
    QCOMPARE(m_tool->nextEventObject(), QJsonObject({{QStringLiteral("event"), QStringLiteral("gone")}}));
    QCOMPARE(m_tool->nextEventObject(), QJsonObject({{QStringLiteral("event"), QStringLiteral("back")}}));
}

void TestMorvekctlMonitor::anotherStateAfterReturn()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow();
    for (int i = 0; i < 5; ++i)
        QVERIFY(!nextLine().isNull());
    QVERIFY(replaceDaemon(QStringLiteral("nothing-preferred")));
    QCOMPARE(nextLine(), QStringLiteral("gone           the networking daemon has died"));
    QCOMPARE(nextLine(), QStringLiteral("back           the networking daemon is there again"));
    QStringList lines;
    while (lines.size() < 6)
        lines += nextLine();
    lines.sort();
    QCOMPARE(lines,
             QStringList({QStringLiteral("added          bare0   orvanbridge, not connected, auto"),
                          QStringLiteral("preferred      -"), QStringLiteral("removed        cell0"),
                          QStringLiteral("removed        eth0"), QStringLiteral("removed        eth0.5"),
                          QStringLiteral("removed        wlan0")}));
}

void TestMorvekctlMonitor::waitsForDaemon()
{
    follow(QStringLiteral("--json --wait"));
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    QCOMPARE(nextJson(), QStringLiteral("present bare0"));
}

void TestMorvekctlMonitor::endsBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlMonitor::endsBySignal()
{
    QFETCH(int, signal);
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    const auto former = ::signal(signal, SIG_IGN); // who runs the tests may ignore it, as nohup does
    follow();
    const bool follows = !nextLine().isNull();
    ::signal(signal, former);
    QVERIFY(follows);
    m_tool->signal(signal);
    QCOMPARE(m_tool->wait(), 0);
    QCOMPARE(m_tool->errors(), QString());
}

void TestMorvekctlMonitor::endsAfterCount()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    follow(QStringLiteral("--json --count 2"));
    for (int i = 0; i < 5; ++i)
        QVERIFY(!nextJson().isNull());
    QVERIFY(giveWlan0AnAddress());
    QVERIFY(!nextJson().isNull());
    QVERIFY(!nextJson().isNull());
    QVERIFY(m_tool->nextLine().isNull());
    QCOMPARE(m_tool->wait(), 0);
}

void TestMorvekctlMonitor::endsByTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    const ToolResult result =
        runTool(m_root->path(), {QStringLiteral("monitor"), QStringLiteral("--timeout"), QStringLiteral("0.3")});
    QCOMPARE(result.output.count(QLatin1Char('\n')), 2);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlMonitor::countWithinTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    const ToolResult result = runTool(
        m_root->path(),
        {QStringLiteral("monitor"), QStringLiteral("--count"), QStringLiteral("1"), QStringLiteral("--timeout=0.3")});
    QCOMPARE(result.output.count(QLatin1Char('\n')), 2);
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: fewer changes than --count came\n"));
    QCOMPARE(result.code, 4);
}

void TestMorvekctlMonitor::endsWithItsReader()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const QByteArray pipe = m_root->filePath(QStringLiteral("pipe")).toUtf8();
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    pollfd reader = {::open(pipe.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), POLLIN, 0};
    QVERIFY(reader.fd >= 0);
    m_tool->writeTo(QString::fromUtf8(pipe));
    follow();
    QCOMPARE(::poll(&reader, 1, 60000), 1);
    ::close(reader.fd);

    QVERIFY(giveWlan0AnAddress());
    QCOMPARE(m_tool->wait(), 1);
    QCOMPARE(m_tool->errors(), QString());
}

QTEST_GUILESS_MAIN(TestMorvekctlMonitor)
#include "tst_morvekctl_monitor.moc"
