// SPDX-License-Identifier: Apache-2.0
#include "processes.h"

#include <zopobject.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! interfaces, show and preferred, and what all commands have in common: the daemon that is not there, output. */
class TestMorvekctlInterfaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void list();
    void listAsJson();
    void listOfNothing();
    void show();
    void showAsJson();
    void showWithoutProperties();
    void showUnknown();
    void preferred();
    void nothingPreferred();

    void daemonNeverThere_data();
    void daemonNeverThere();
    void daemonDied();
    void waitsForDaemon();
    void waitsInVain();

    void everyLocaleIsUtf8_data();
    void everyLocaleIsUtf8();
    void foreignTextCannotSteerTheTerminal();
    void foreignTextCannotSteerTheTerminalAsJson();
    void outputThatCannotBeWritten();

private:
    ToolResult run(const QString &arguments, const QStringList &variables = {}) const
    {
        return runTool(m_root->path(), arguments.split(QLatin1Char(' ')), variables);
    }
    /*! Adds an interface to those that the daemon publishes, as any program of the root's user could. */
    static bool publishInterface(const QString &name, const QString &linkAddress)
    {
        ZopChangeset values;
        values.assignments.insert(QStringLiteral("type"), QStringLiteral("wired"));
        values.assignments.insert(QStringLiteral("link_address"), linkAddress);
        return ZopObject::create(QStringLiteral("/zop/services/networking/all/interfaces/") + name, values);
    }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Daemon> m_daemon;
};

void TestMorvekctlInterfaces::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    qputenv("ZOP_ROOT", m_root->path().toUtf8());
}

void TestMorvekctlInterfaces::cleanup()
{
    m_daemon.reset();
    m_root.reset();
}

void TestMorvekctlInterfaces::list()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("interfaces"));
    QCOMPARE(
        result.output,
        QStringLiteral(
            "NAME    TYPE      AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE    ADDRESS           GATEWAY       "
            "PARENT\n"
            "cell0   cellular  yes        yes        no         3         auto    100.64.3.9/30     100.64.3.10   -\n"
            "eth0    wired     yes        yes        no         2         auto    10.20.0.40/16     10.20.0.1     -\n"
            "eth0.5  wired     yes        yes        no         4         manual  172.16.5.2/24     172.16.5.1    "
            "eth0\n"
            "wlan0   wifi      yes        yes        yes        1         auto    192.168.43.17/24  192.168.43.1  "
            "-\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlInterfaces::listAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("interfaces --json"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.output.count(QLatin1Char('\n')), 1);

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(result.output.toUtf8(), &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    const QJsonArray interfaces = document.array();
    QCOMPARE(interfaces.size(), 4);
    QStringList names;
    QStringList preferred;
    for (const QJsonValue &value : interfaces) {
        names += value[QLatin1String("name")].toString();
        if (value[QLatin1String("preferred")].toBool())
            preferred += names.last();
    }
    QCOMPARE(names,
             QStringList(
                 {QStringLiteral("cell0"), QStringLiteral("eth0"), QStringLiteral("eth0.5"), QStringLiteral("wlan0")}));
    QCOMPARE(preferred, QStringList(QStringLiteral("wlan0")));
}

void TestMorvekctlInterfaces::listOfNothing()
{
    QVERIFY(m_daemon->publish(QStringLiteral("no-interfaces")));
    const ToolResult table = run(QStringLiteral("interfaces"));
    QCOMPARE(table.output,
             QStringLiteral("NAME  TYPE  AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE  ADDRESS  "
                            "GATEWAY  PARENT\n"));
    QCOMPARE(table.code, 0);
    QCOMPARE(run(QStringLiteral("interfaces --json")).output, QStringLiteral("[]\n"));

    const ToolResult show = run(QStringLiteral("show eth0"));
    QCOMPARE(show.errors,
             QStringLiteral("morvekctl: there is no interface \"eth0\": there is none at all at the "
                            "moment\n"));
    QCOMPARE(show.code, 5);
}

void TestMorvekctlInterfaces::show()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("show eth0.5"));
    QCOMPARE(result.output,
             QStringLiteral("Name              eth0.5\n"
                            "Type              wired\n"
                            "Available         yes\n"
                            "Connected         yes\n"
                            "Preferred         no\n"
                            "Priority          4\n"
                            "Mode              manual\n"
                            "Address           172.16.5.2/24\n"
                            "Gateway           172.16.5.1\n"
                            "Hardware address  02:00:00:00:10:02\n"
                            "MTU               1496\n"
                            "Virtual           yes\n"
                            "Parent            eth0\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlInterfaces::showAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("--json show eth0.5"));
    QCOMPARE(result.output,
             QStringLiteral(R"({"available":true,"configuration":{"addresses":[{"address":"172.16.5.2",)"
                            R"("netmask":"255.255.255.0","prefix":24}],"gateways":["172.16.5.1"],"type":"manual"},)"
                            R"("connected":true,"mac":"02:00:00:00:10:02","mtu":1496,"name":"eth0.5",)"
                            R"("parent":"eth0","preferred":false,"priority":4,"type":"wired","virtual":true})"
                            "\n"));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlInterfaces::showWithoutProperties()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    QCOMPARE(run(QStringLiteral("show bare0")).output,
             QStringLiteral("Name              bare0\n"
                            "Type              orvanbridge\n"
                            "Available         yes\n"
                            "Connected         no\n"
                            "Preferred         no\n"
                            "Priority          -\n"
                            "Mode              auto\n"
                            "Address           -\n"
                            "Gateway           -\n"
                            "Hardware address  -\n"
                            "MTU               -\n"
                            "Virtual           no\n"
                            "Parent            -\n"));
    QCOMPARE(run(QStringLiteral("show bare0 --json")).output,
             QStringLiteral(R"({"available":true,"configuration":{"addresses":[],"gateways":[],"type":"auto"},)"
                            R"("connected":false,"mac":null,"mtu":null,"name":"bare0","parent":null,)"
                            R"("preferred":false,"priority":null,"type":"orvanbridge","virtual":false})"
                            "\n"));
}

void TestMorvekctlInterfaces::showUnknown()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("show eth7"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: there is no interface \"eth7\": use one of cell0, eth0, eth0.5, wlan0\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 5);
}

void TestMorvekctlInterfaces::preferred()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("preferred"));
    QVERIFY(result.output.startsWith(QLatin1String("Name              wlan0\n")));
    QVERIFY(result.output.contains(QLatin1String("\nPreferred         yes\n")));
    QCOMPARE(result.code, 0);

    const QJsonDocument json = QJsonDocument::fromJson(run(QStringLiteral("preferred --json")).output.toUtf8());
    QCOMPARE(json[QLatin1String("name")].toString(), QStringLiteral("wlan0"));
    QCOMPARE(json[QLatin1String("preferred")].toBool(), true);
}

void TestMorvekctlInterfaces::nothingPreferred()
{
    QVERIFY(m_daemon->publish(QStringLiteral("nothing-preferred")));
    const ToolResult text = run(QStringLiteral("preferred"));
    QCOMPARE(text.output, QStringLiteral("No interface is preferred.\n"));
    QCOMPARE(text.code, 0);
    const ToolResult json = run(QStringLiteral("preferred --json"));
    QCOMPARE(json.output, QStringLiteral("null\n"));
    QCOMPARE(json.code, 0);
}

void TestMorvekctlInterfaces::daemonNeverThere_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"interfaces", "show eth0", "preferred", "configure eth0 auto",
          "configure eth0 manual --address 10.0.0.2 --prefix 24 --gateway 10.0.0.1", "monitor", "monitor --json"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestMorvekctlInterfaces::daemonNeverThere()
{
    QFETCH(QString, arguments);
    const ToolResult result = run(arguments);
    QCOMPARE(result.errors,
             complaintLine(arguments,
                           QStringLiteral("the networking daemon is not there: start morvek-hostd, or set ZOP_ROOT to "
                                          "its root (it is \"%1\"), or add --wait")
                               .arg(m_root->path()),
                           3));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlInterfaces::daemonDied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);

    const ToolResult result = run(QStringLiteral("interfaces"));
    QVERIFY(result.errors.startsWith(QLatin1String("morvekctl: the networking daemon is not there: ")));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlInterfaces::waitsForDaemon()
{
    Tool tool(m_root->path());
    tool.start({QStringLiteral("preferred"), QStringLiteral("--json"), QStringLiteral("--wait")});
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const QJsonDocument preferred = QJsonDocument::fromJson(tool.nextLine().toUtf8());
    QCOMPARE(preferred[QLatin1String("name")].toString(), QStringLiteral("wlan0"));
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(tool.errors(), QString());
}

void TestMorvekctlInterfaces::waitsInVain()
{
    const ToolResult result = run(QStringLiteral("interfaces --wait --timeout 0.3"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: the networking daemon is still not there\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

void TestMorvekctlInterfaces::everyLocaleIsUtf8_data()
{
    QTest::addColumn<QStringList>("variables");
    QTest::newRow("C") << QStringList {QStringLiteral("LC_ALL=C")};
    QTest::newRow("POSIX") << QStringList {QStringLiteral("LC_ALL="), QStringLiteral("LANG=POSIX")};
    QTest::newRow("unknown") << QStringList {QStringLiteral("LC_ALL=nn_XX.ISO-8859-1")};
    QTest::newRow("UTF-8") << QStringList {QStringLiteral("LC_ALL=C.UTF-8")};
}

void TestMorvekctlInterfaces::everyLocaleIsUtf8()
{
    QFETCH(QStringList, variables);
    QVERIFY(m_daemon->publish(QStringLiteral("no-interfaces")));
    QVERIFY(publishInterface(QString::fromUtf8("büro0"), QString::fromUtf8("日本")));

    const ToolResult result = run(QString::fromUtf8("show büro0"), variables);
    QCOMPARE(result.errors, QString());
    QVERIFY(result.output.startsWith(QString::fromUtf8("Name              büro0\n")));
    QVERIFY(result.output.contains(QString::fromUtf8("\nHardware address  日本\n")));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlInterfaces::foreignTextCannotSteerTheTerminal()
{
    QVERIFY(m_daemon->publish(QStringLiteral("no-interfaces")));
    // A one-byte command introducer and a change of direction in the name, a colour, a line and a bell in the address.
    QVERIFY(publishInterface(QString::fromUtf8("a\u009B31m\u202Eb"),
                             QStringLiteral("\x1b[31mred\r\nName\a") + QChar(0x7f)));

    const ToolResult result = run(QString::fromUtf8("show a\u009B31m\u202Eb"));
    QVERIFY(result.output.startsWith(QLatin1String("Name              a\\u009b31m\\u202eb\n")));
    QVERIFY(
        result.output.contains(QLatin1String("\nHardware address  \\u001b[31mred\\u000d\\u000aName\\u0007\\u007f\n")));
    QCOMPARE(result.output.count(QLatin1Char('\n')), 13);

    const ToolResult list = run(QStringLiteral("interfaces"));
    QCOMPARE(list.output,
             QStringLiteral(
                 "NAME               TYPE   AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE  ADDRESS  GATEWAY  PARENT\n"
                 "a\\u009b31m\\u202eb  wired  no         no         no         -         auto  -        -        -\n"));
    QCOMPARE(run(QStringLiteral("show b")).errors,
             QStringLiteral("morvekctl: there is no interface \"b\": use one of a\\u009b31m\\u202eb\n"));
}

void TestMorvekctlInterfaces::foreignTextCannotSteerTheTerminalAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("no-interfaces")));
    const QString name = QString::fromUtf8("a\u009B31m\u202E\U000E0041b");
    const QString address = QStringLiteral("\x1b[31m\"red\"\\\r\n\a") + QChar(0x7f);
    QVERIFY(publishInterface(name, address));

    const ToolResult result = run(QStringLiteral("interfaces --json"));
    for (const QChar character : result.output.chopped(1))
        QVERIFY(character.isPrint() && character.unicode() < 0x7f);
    const QJsonDocument json = QJsonDocument::fromJson(result.output.toUtf8());
    QCOMPARE(json[0][QLatin1String("name")].toString(), name);
    QCOMPARE(json[0][QLatin1String("mac")].toString(), address);
}

void TestMorvekctlInterfaces::outputThatCannotBeWritten()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    for (const char *arguments : {"interfaces", "interfaces --json"}) {
        Tool tool(m_root->path());
        tool.writeTo(QStringLiteral("/dev/full"));
        tool.start(QString::fromLatin1(arguments).split(QLatin1Char(' ')));
        QCOMPARE(tool.wait(), 1);
        QCOMPARE(tool.errors(),
                 complaintLine(QLatin1String(arguments),
                               QStringLiteral("the output could not be written: No space left on device"), 1));
    }
}

QTEST_GUILESS_MAIN(TestMorvekctlInterfaces)
#include "tst_morvekctl_interfaces.moc"
