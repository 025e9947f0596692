// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"
#include "terminaltool.h"

#include <zopobject.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using namespace morvek;

/*! configure: what reaches the daemon, what is told of it, and every way in which it fails. */
class TestMorvekctlConfigure : public DaemonCase
{
    Q_OBJECT

public:
    TestMorvekctlConfigure()
        : DaemonCase(QStringLiteral("/zop/services/networking/all/interfaces/eth0"))
    {
    }

private Q_SLOTS:
    void manual_data();
    void manual();
    void manualApplied();
    void autoApplied();
    void appliedInParts();
    void anotherIsConnected();
    void overruled_data();
    void overruled();
    void overruledForAMoment_data();
    void overruledForAMoment();
    void accepted();
    void acceptedAsJson();
    void appliedAsJson();

    void unknownInterface();
    void autoAlready();
    void autoNotConnected();
    void autoWithoutAddress();
    void sameConfiguration();
    void refusedByDaemon();
    void refusedAtDisconnection();
    void refusedAtConnection();
    void daemonDies();
    void noReply();
    void neverApplied();
    void waitsInVain();
    void strandedAndRefused();

    void dryRun();
    void dryRunAsJson();
    void dryRunOfNothing();
    void dryRunRefused();

private:
    /*! What the daemon publishes of \a interface, read without the library. */
    static QString published(const QString &interface, const QString &attribute)
    {
        ZopObject object(QStringLiteral("/zop/services/networking/all/interfaces/") + interface, ZopObject::Subscribe,
                         false);
        object.setAttributeCacheEnabled(true);
        return object.attribute(attribute).toString();
    }
};

void TestMorvekctlConfigure::manual_data()
{
    QTest::addColumn<QString>("mask"); // behind the address
    QTest::addColumn<QString>("addresses");
    QTest::newRow("netmask") << " --netmask 255.255.0.0"
                             << R"(["10.20.0.77/255.255.0.0"])";
    QTest::newRow("prefix") << " --prefix 16"
                            << R"(["10.20.0.77/255.255.0.0"])";
    QTest::newRow("shortest prefix") << " --prefix 1"
                                     << R"(["10.20.0.77/128.0.0.0"])";
    QTest::newRow("behind the address") << "/16"
                                        << R"(["10.20.0.77/255.255.0.0"])";
    QTest::newRow("shortest behind the address") << "/1"
                                                 << R"(["10.20.0.77/128.0.0.0"])";
    QTest::newRow("two machines behind the address") << "/31"
                                                     << R"(["10.20.0.77/255.255.255.254"])";
    QTest::newRow("behind the address, and the same prefix") << "/16 --prefix 16"
                                                             << R"(["10.20.0.77/255.255.0.0"])";
    QTest::newRow("behind the address, and the same netmask") << "/16 --netmask 255.255.0.0"
                                                              << R"(["10.20.0.77/255.255.0.0"])";
    QTest::newRow("two machines") << " --prefix=31"
                                  << R"(["10.20.0.77/255.255.255.254"])";
}

void TestMorvekctlConfigure::manual()
{
    QFETCH(QString, mask);
    QFETCH(QString, addresses);
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("manual")), QStringLiteral("no"));

    const ToolResult result =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.77%1 --gateway 10.20.0.76 --applied").arg(mask));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("manual")), QStringLiteral("yes"));
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("ip_addresses")), addresses);
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("ip_gateway")), QStringLiteral(R"(["10.20.0.76"])"));
}

void TestMorvekctlConfigure::manualApplied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    const ToolResult result = run(QStringLiteral(
        "configure cell0 manual --address 10.1.1.20 --netmask 255.255.255.0 --gateway 10.1.1.1 --applied"));
    QCOMPARE(result.output,
             QStringLiteral("Name              cell0\n"
                            "Type              cellular\n"
                            "Available         yes\n"
                            "Connected         yes\n"
                            "Preferred         no\n"
                            "Priority          3\n"
                            "Mode              manual\n"
                            "Address           10.1.1.20/24\n"
                            "Gateway           10.1.1.1\n"
                            "Hardware address  -\n"
                            "MTU               1430\n"
                            "Virtual           no\n"
                            "Parent            -\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlConfigure::autoApplied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    QCOMPARE(run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1 "
                                "--applied"))
                 .code,
             0);
    const ToolResult result = run(QStringLiteral("configure eth0 auto --applied"));
    QCOMPARE(result.errors, QString());
    QVERIFY(result.output.contains(QLatin1String("\nMode              auto\nAddress           10.20.0.40/16\n")));
    QCOMPARE(result.code, 0);
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("manual")), QStringLiteral("no"));
}

/*! The daemon tells the addresses before it tells that they are automatic. */
void TestMorvekctlConfigure::appliedInParts()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start(QStringLiteral("configure eth0 auto --applied").split(QLatin1Char(' ')));
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected id=2 ok")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant(R"(["10.20.0.40/255.255.0.0"])", "json")));
    QVERIFY(publish(QStringLiteral("connected"), true));
    QVERIFY(publish(QStringLiteral("manual"), QStringLiteral("no")));
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(tool.errors(), QString());
}

void TestMorvekctlConfigure::anotherIsConnected()
{
    const QString another = QStringLiteral("/zop/services/networking/all/interfaces/usb0");
    const QString connected = QStringLiteral("connected");
    const QString addresses = QStringLiteral("ip_addresses");
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased"), {QStringLiteral("--verbose")}));
    QVERIFY(publish(another, connected, false));
    QVERIFY(publish(another, QStringLiteral("manual"), QStringLiteral("no")));
    QVERIFY(publish(another, addresses, ZopVariant(R"(["10.30.0.2/255.255.0.0"])", "json")));
    Tool tool(m_root->path());
    tool.start(QStringLiteral("configure eth0 auto --applied --json").split(QLatin1Char(' ')));
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected id=2 ok")));
    QVERIFY(publish(another, connected, true));
    QVERIFY(publish(QStringLiteral("manual"), QStringLiteral("no")));
    QVERIFY(publish(addresses, ZopVariant(R"(["10.20.0.40/255.255.0.0"])", "json")));
    QVERIFY(publish(connected, true));
    QCOMPARE(QJsonDocument::fromJson(tool.nextLine().toUtf8())[QLatin1String("name")].toString(),
             QStringLiteral("eth0"));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlConfigure::overruled_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("sentence");
    const QString manual = QStringLiteral("manual --prefix 16 --address ");
    QTest::newRow("another address") << "slow-release" << manual + "10.20.0.77 --gateway 10.20.0.1"
                                     << manual + "10.20.0.78 --gateway 10.20.0.1"
                                     << "manual was accepted, but eth0 is manual with 10.20.0.78/16 via 10.20.0.1 now";
    QTest::newRow("another gateway") << "slow-release" << manual + "10.20.0.77 --gateway 10.20.0.1"
                                     << manual + "10.20.0.77 --gateway 10.20.0.2"
                                     << "manual was accepted, but eth0 is manual with 10.20.0.77/16 via 10.20.0.2 now";
    QTest::newRow("another mode") << "never-leased"
                                  << "auto" << manual + "10.20.0.78 --gateway 10.20.0.1"
                                  << "auto was accepted, but eth0 is manual with 10.20.0.78/16 via 10.20.0.1 now";
}

/*! Two at once: the one whose addresses do not come ends when the other's have come, not at its deadline. */
void TestMorvekctlConfigure::overruled()
{
    QFETCH(QString, scenario);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, sentence);
    QVERIFY(m_daemon->publish(scenario, {QStringLiteral("--verbose")}));
    const QString command = QStringLiteral("configure eth0 --applied ");
    Tool tool(m_root->path());
    tool.start((command + first).split(QLatin1Char(' ')));
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected id=2 ok")));
    QCOMPARE(run(command + second).code, 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: %1: somebody has configured it meanwhile\n").arg(sentence));
    QCOMPARE(tool.nextLine(), QString());
}

void TestMorvekctlConfigure::overruledForAMoment_data()
{
    QTest::addColumn<QString>("attribute"); // which tells that the other configuration is over
    QTest::addColumn<ZopVariant>("value");
    QTest::newRow("connection") << "connected" << ZopVariant(false);
    QTest::newRow("addresses") << "ip_addresses" << ZopVariant("[]", "json");
}

/*! What has gone again has not won. */
void TestMorvekctlConfigure::overruledForAMoment()
{
    QFETCH(QString, attribute);
    QFETCH(ZopVariant, value);
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased"), {QStringLiteral("--verbose")}));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), QStringLiteral("configure eth0 auto --applied").split(QLatin1Char(' '))));
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected id=2 ok")));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has its addresses ... 0 s")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant(R"(["10.20.0.78/255.255.0.0"])", "json")));
    QVERIFY(publish(QStringLiteral("connected"), true));
    QVERIFY(publish(attribute, value));
    QVERIFY(tool.waitFor(QStringLiteral("Waiting until eth0 has its addresses ... 2 s")));
    QVERIFY(publish(QStringLiteral("manual"), QStringLiteral("no")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant(R"(["10.20.0.40/255.255.0.0"])", "json")));
    QVERIFY(publish(QStringLiteral("connected"), true));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlConfigure::accepted()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto"));
    QCOMPARE(result.output, QStringLiteral("eth0: the networking daemon has accepted auto.\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("ip_addresses")), QStringLiteral("[]"));
}

void TestMorvekctlConfigure::acceptedAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto --json"));
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(result.output.toUtf8(), &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(json[QLatin1String("name")].toString(), QStringLiteral("eth0"));
    QCOMPARE(json[QLatin1String("connected")], QJsonValue(false));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlConfigure::appliedAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    const ToolResult result = run(
        QStringLiteral("configure cell0 manual --address 10.1.1.20 --prefix 24 --gateway 10.1.1.1 --applied --json"));
    QCOMPARE(result.output,
             QStringLiteral(R"({"available":true,"configuration":{"addresses":[{"address":"10.1.1.20",)"
                            R"("netmask":"255.255.255.0","prefix":24}],"gateways":["10.1.1.1"],"type":"manual"},)"
                            R"("connected":true,"mac":null,"mtu":1430,"name":"cell0","parent":null,)"
                            R"("preferred":false,"priority":3,"type":"cellular","virtual":false})"
                            "\n"));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlConfigure::unknownInterface()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("configure eth7 auto"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: there is no interface \"eth7\": use one of cell0, eth0, eth0.5, wlan0\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 5);
}

void TestMorvekctlConfigure::autoAlready()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto"));
    QCOMPARE(result.output, QStringLiteral("eth0 is auto already.\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    const ToolResult applied = run(QStringLiteral("configure eth0 auto --applied"));
    QVERIFY(applied.output.contains(QLatin1String("\nMode              auto\nAddress           10.20.0.40/16\n")));
    QCOMPARE(applied.code, 0);
    const ToolResult asJson = run(QStringLiteral("configure eth0 auto --json"));
    QCOMPARE(QJsonDocument::fromJson(asJson.output.toUtf8())[QLatin1String("name")].toString(), QStringLiteral("eth0"));
    QCOMPARE(asJson.errors, QString());
    QCOMPARE(asJson.code, 0);
}

/*! Who waits until it is applied wants it connected, too. */
void TestMorvekctlConfigure::autoNotConnected()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    QVERIFY(publish(QStringLiteral("connected"), QStringLiteral("false")));
    QCOMPARE(run(QStringLiteral("configure eth0 auto")).output, QStringLiteral("eth0 is auto already.\n"));
    const ToolResult applied = run(QStringLiteral("configure eth0 auto --applied"));
    QCOMPARE(applied.output, QString());
    QCOMPARE(applied.code, 1);
}

/*! Without an address it has not what was asked for. */
void TestMorvekctlConfigure::autoWithoutAddress()
{
    QVERIFY(m_daemon->publish(QStringLiteral("wifi-security")));
    const ToolResult result = run(QStringLiteral("configure wlan0 auto"));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: wlan0 was not configured, code -1: The new configuration settings are the same as "
                       "the current configuration settings. (wlan0 has no address: 'morvekctl configure wlan0 manual "
                       "...' and then 'morvekctl configure wlan0 auto' bring it back)\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlConfigure::sameConfiguration()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    const QString arguments = QStringLiteral("configure eth0 manual --address 10.20.0.77/16 --gateway 10.20.0.1 ");
    QCOMPARE(run(arguments + QLatin1String("--applied")).code, 0);
    const ToolResult result = run(arguments + QLatin1String("--json"));
    QCOMPARE(result.errors,
             QStringLiteral(R"({"code":-1,"exitCode":1,"message":"eth0 was not configured, code -1: The new )"
                            R"(configuration settings are the same as the current configuration settings."})"
                            "\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlConfigure::refusedByDaemon()
{
    QVERIFY(m_daemon->publish(QStringLiteral("refused")));
    const ToolResult result = run(
        QStringLiteral("configure wlan0 manual --address 192.168.43.5 --prefix 24 --gateway 192.168.43.1 --applied"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: wlan0 was not configured, code 13: The system was unable to "
                            "configure the interface. (permission denied)\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlConfigure::refusedAtDisconnection()
{
    QVERIFY(m_daemon->publish(QStringLiteral("refused")));
    const QString arguments =
        QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1");
    const ToolResult first = run(arguments);
    QCOMPARE(first.errors,
             QStringLiteral("morvekctl: eth0 was not configured, code 16: The system was unable to "
                            "configure the interface. (device or resource busy)\n"));
    QCOMPARE(first.code, 1);
    QCOMPARE(run(arguments).code, 0);
}

void TestMorvekctlConfigure::refusedAtConnection()
{
    QVERIFY(m_daemon->publish(QStringLiteral("connect-refused")));
    const ToolResult result =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1"));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: eth0 was not configured, code 13: The system was unable to configure the "
                       "interface. (permission denied) (eth0 has no address: 'morvekctl configure eth0 manual ...' "
                       "and then 'morvekctl configure eth0 auto' bring it back)\n"));
    QCOMPARE(result.code, 1);
    QCOMPARE(run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1 --applied"))
                 .code,
             0);
    QCOMPARE(run(QStringLiteral("configure eth0 auto --applied")).code, 0);
    QCOMPARE(published(QStringLiteral("eth0"), QStringLiteral("ip_addresses")),
             QStringLiteral(R"(["10.20.0.40/255.255.0.0"])"));
}

void TestMorvekctlConfigure::daemonDies()
{
    QVERIFY(m_daemon->publish(QStringLiteral("dies")));
    const ToolResult result =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1"));
    QVERIFY2(
        result.errors.startsWith(QLatin1String("morvekctl: eth0 was not configured, code -1: The system was unable "
                                               "to configure the interface. (")),
        qPrintable(result.errors));
    QCOMPARE(result.errors.count(QLatin1Char('\n')), 1);
    QCOMPARE(result.code, 1);
}

void TestMorvekctlConfigure::noReply()
{
    QVERIFY(m_daemon->publish(QStringLiteral("no-reply")));
    const ToolResult result =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1 --timeout 0.5"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: eth0 has its addresses still, and manual was not asked for; "
                            "should it lose them later, 'morvekctl configure eth0 manual ...' and then 'morvekctl "
                            "configure eth0 auto' bring it back\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

void TestMorvekctlConfigure::neverApplied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto --applied --timeout 4"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: auto was accepted, but eth0 does not report it yet; if no "
                            "address comes, 'morvekctl configure eth0 ...' once more brings it back\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

void TestMorvekctlConfigure::waitsInVain()
{
    const ToolResult result = run(QStringLiteral("configure eth0 auto --wait --timeout 0.3"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: the networking daemon is still not there\n"));
    QCOMPARE(result.code, 4);
}

/*! What says automatic and has lost its addresses is not asked to become automatic. */
void TestMorvekctlConfigure::strandedAndRefused()
{
    QVERIFY(m_daemon->publish(QStringLiteral("slow-release")));
    QVERIFY(publish(QStringLiteral("ip_addresses"), ZopVariant("[]", "json")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto"));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: eth0 was not configured, code -1: The new configuration settings are the same "
                       "as the current configuration settings. (eth0 has no address: 'morvekctl configure eth0 manual "
                       "...' and then 'morvekctl configure eth0 auto' bring it back)\n"));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlConfigure::dryRun()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased"), {QStringLiteral("--verbose")}));
    const ToolResult connected =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.78 --prefix 16 --gateway 10.20.0.1 --dry-run"));
    QCOMPARE(connected.output,
             QStringLiteral(R"(Would send net_disconnected "eth0")"
                            "\n"
                            R"(Would send net_connected ["eth0",{"gateway":"10.20.0.1","ip_address":"10.20.0.78",)"
                            R"("manual":"yes","manual6":"off","netmask":"255.255.0.0"}] when the addresses are gone)"
                            "\n"));
    QCOMPARE(connected.errors, QString());
    QCOMPARE(connected.code, 0);

    QCOMPARE(run(QStringLiteral("configure eth0 auto")).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("reply   net_connected id=2 ok")));
    const int requests = m_told.count(QLatin1String(" request "));
    QCOMPARE(requests, 2); // and none of the dry run before

    const ToolResult unconnected = run(QStringLiteral("configure eth0 auto --dry-run"));
    QCOMPARE(unconnected.output,
             QStringLiteral(R"(Would send net_connected ["eth0",{"manual":"no","manual6":"off"}])"
                            "\n"));
    QCOMPARE(unconnected.code, 0);
}

void TestMorvekctlConfigure::dryRunAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto --dry-run --json"));
    QCOMPARE(result.output,
             QStringLiteral(R"({"interface":"eth0","requests":[{"dat":"eth0","msg":"net_disconnected"},)"
                            R"({"dat":["eth0",{"manual":"no","manual6":"off"}],"msg":"net_connected"}]})"
                            "\n"));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlConfigure::dryRunOfNothing()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("configure eth0 auto --dry-run"));
    QCOMPARE(result.output, QStringLiteral("Would send nothing: eth0 is auto already.\n"));
    QCOMPARE(result.code, 0);
    const ToolResult asJson = run(QStringLiteral("configure eth0 auto --dry-run --json"));
    QCOMPARE(asJson.output,
             QStringLiteral(R"({"interface":"eth0","requests":[]})"
                            "\n"));
    QCOMPARE(asJson.code, 0);
}

void TestMorvekctlConfigure::dryRunRefused()
{
    QVERIFY(m_daemon->publish(QStringLiteral("never-leased")));
    const ToolResult result =
        run(QStringLiteral("configure eth0 manual --address 10.20.0.77 --prefix 16 --gateway 10.20.0.1 --dry-run"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: nothing would be sent: eth0 is manual like that already\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

QTEST_GUILESS_MAIN(TestMorvekctlConfigure)
#include "tst_morvekctl_configure.moc"
