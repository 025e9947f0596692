// SPDX-License-Identifier: Apache-2.0
#include "hotspotcase.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! hotspot status, profile, on and off, and what all commands of the group have in common. */
class TestMorvekctlHotspot : public HotspotCase
{
    Q_OBJECT

private Q_SLOTS:
    void status();
    void statusWhileOn();
    void profile();
    void passphrase();
    void otherProfiles_data();
    void otherProfiles();
    void nothingToHide();

    void switches();
    void switchesAsJson();
    void startsWithTheProfile();
    void stopsWithoutTheProfile();
    void stopsWhatIsStarting();
    void stopsWhatHasStarted();
    void startsWithAGap_data();
    void startsWithAGap();
    void switchedByAnotherApplication();
    void answeredTwice();

    void refused_data();
    void refused();
    void timeIsUp_data();
    void timeIsUp();
    void ownDeadlines_data();
    void ownDeadlines();
    void deadlinesWithoutTimeout_data();
    void deadlinesWithoutTimeout();
    void libraryIsLoudWhenAskedTo();
    void daemonDies();

    void daemonNeverThere_data();
    void daemonNeverThere();
    void daemonDied();
    void waitsForDaemon();
    void waitsForDaemonThatDied();
    void waitsInVain();

private:
    const QString profileRows = QStringLiteral("Name               Morvek Car\n"
                                               "Passphrase         (hidden)\n"
                                               "Security           WPA2\n"
                                               "Band               5 GHz\n"
                                               "Max. clients       10\n"
                                               "Inactivity time    600\n"
                                               "Privacy            off\n"
                                               "Block connections  off\n");
    const QString profileJson =
        QStringLiteral(R"({"band":"5","blockConnections":false,"hasPassphrase":true,"inactivityTime":600,)"
                       R"("maxClients":10,"name":"Morvek Car","privacy":false,"security":"WPA2"})");
};

void TestMorvekctlHotspot::status()
{
    QVERIFY(start());
    const ToolResult asText = run(QStringLiteral("hotspot status"));
    QCOMPARE(asText.output, QStringLiteral("Hotspot            off\n") + profileRows);
    QCOMPARE(asText.errors, QString());
    QCOMPARE(asText.code, 0);
    const ToolResult asJson = run(QStringLiteral("hotspot --json status"));
    QCOMPARE(asJson.output, QStringLiteral("{\"enabled\":false,\"profile\":%1}\n").arg(profileJson));
    QCOMPARE(asJson.errors, QString());
    QCOMPARE(asJson.code, 0);
}

void TestMorvekctlHotspot::statusWhileOn()
{
    QVERIFY(start());
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QCOMPARE(run(QStringLiteral("hotspot status")).output, QStringLiteral("Hotspot            on\n") + profileRows);
    QCOMPARE(run(QStringLiteral("hotspot status --json")).output,
             QStringLiteral("{\"enabled\":true,\"profile\":%1}\n").arg(profileJson));
}

void TestMorvekctlHotspot::profile()
{
    QVERIFY(start());
    const ToolResult asText = run(QStringLiteral("hotspot profile"));
    QCOMPARE(asText.output, profileRows);
    QCOMPARE(asText.errors, QString());
    QCOMPARE(asText.code, 0);
    const ToolResult asJson = run(QStringLiteral("hotspot profile --json"));
    QCOMPARE(asJson.output, profileJson + QLatin1Char('\n'));
    QCOMPARE(asJson.errors, QString());
    QCOMPARE(asJson.code, 0);
}

void TestMorvekctlHotspot::passphrase()
{
    QVERIFY(start());
    QCOMPARE(run(QStringLiteral("hotspot profile --show-passphrase")).output,
             QString(profileRows).replace(QLatin1String("(hidden)"), QLatin1String("drive safely 8")));
    QCOMPARE(run(QStringLiteral("hotspot profile --show-passphrase --json")).output,
             QStringLiteral(R"({"band":"5","blockConnections":false,"hasPassphrase":true,"inactivityTime":600,)"
                            R"("maxClients":10,"name":"Morvek Car","passphrase":"drive safely 8","privacy":false,)"
                            R"("security":"WPA2"})"
                            "\n"));
    const ToolResult status = run(QStringLiteral("hotspot status --show-passphrase"));
    QCOMPARE(status.errors,
             QStringLiteral(
                 "morvekctl: 'hotspot status' takes no --show-passphrase: see 'morvekctl help hotspot status'\n"));
    QCOMPARE(status.code, 2);
}

void TestMorvekctlHotspot::otherProfiles_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("json");

    QTest::newRow("nothing") << QByteArray("{}")
                             << "Name               -\n"
                                "Passphrase         -\n"
                                "Security           WPA2\n"
                                "Band               2.4 GHz\n"
                                "Max. clients       -\n"
                                "Inactivity time    -\n"
                                "Privacy            off\n"
                                "Block connections  off\n"
                             << R"({"band":"2.4","blockConnections":false,"hasPassphrase":false,)"
                                R"("inactivityTime":null,"maxClients":null,"name":null,"passphrase":null,)"
                                R"("privacy":false,"security":"WPA2"})";
    QTest::newRow("only a name") << QByteArray(R"({"ssid":"Bus"})")
                                 << "Name               Bus\n"
                                    "Passphrase         -\n"
                                    "Security           unknown\n"
                                    "Band               2.4 GHz\n"
                                    "Max. clients       0\n"
                                    "Inactivity time    0\n"
                                    "Privacy            off\n"
                                    "Block connections  off\n"
                                 << R"({"band":"2.4","blockConnections":false,"hasPassphrase":false,)"
                                    R"("inactivityTime":0,"maxClients":0,"name":"Bus","passphrase":null,)"
                                    R"("privacy":false,"security":"unknown"})";
    QTest::newRow("open") << QByteArray(R"({"ssid":"\u001b[31m","passphrase":"p","mhs_band":"2.4","max_num_sta":1,)"
                                        R"("security_type":"none","autoshutdown_time":1,"privacy":true,)"
                                        R"("block_conn":false})")
                          << "Name               \\u001b[31m\n"
                             "Passphrase         p\n"
                             "Security           open\n"
                             "Band               2.4 GHz\n"
                             "Max. clients       1\n"
                             "Inactivity time    1\n"
                             "Privacy            on\n"
                             "Block connections  off\n"
                          << R"({"band":"2.4","blockConnections":false,"hasPassphrase":true,"inactivityTime":1,)"
                             R"("maxClients":1,"name":"\u001b[31m","passphrase":"p","privacy":true,)"
                             R"("security":"open"})";
    QTest::newRow("WPA") << QByteArray(R"({"ssid":"A","passphrase":"B","security_type":"wpa","block_conn":true})")
                         << "Name               A\n"
                            "Passphrase         B\n"
                            "Security           WPA\n"
                            "Band               2.4 GHz\n"
                            "Max. clients       0\n"
                            "Inactivity time    0\n"
                            "Privacy            off\n"
                            "Block connections  on\n"
                         << R"({"band":"2.4","blockConnections":true,"hasPassphrase":true,"inactivityTime":0,)"
                            R"("maxClients":0,"name":"A","passphrase":"B","privacy":false,"security":"WPA"})";
    QTest::newRow("mixed") << QByteArray(R"({"ssid":"A","passphrase":"B","security_type":"wpa_mixed"})")
                           << "Name               A\n"
                              "Passphrase         B\n"
                              "Security           WPA/WPA2\n"
                              "Band               2.4 GHz\n"
                              "Max. clients       0\n"
                              "Inactivity time    0\n"
                              "Privacy            off\n"
                              "Block connections  off\n"
                           << R"({"band":"2.4","blockConnections":false,"hasPassphrase":true,"inactivityTime":0,)"
                              R"("maxClients":0,"name":"A","passphrase":"B","privacy":false,"security":"WPA/WPA2"})";
}

void TestMorvekctlHotspot::otherProfiles()
{
    QFETCH(QByteArray, profile);
    QFETCH(QString, rows);
    QFETCH(QString, json);
    QVERIFY(start(tellsProfile(profile)));
    QCOMPARE(run(QStringLiteral("hotspot profile --show-passphrase")).output, rows);
    QCOMPARE(run(QStringLiteral("hotspot profile --show-passphrase --json")).output, json + QLatin1Char('\n'));
}

void TestMorvekctlHotspot::nothingToHide()
{
    QVERIFY(start(tellsProfile("{}")));
    const QString rows = run(QStringLiteral("hotspot profile")).output;
    QVERIFY2(rows.contains(QLatin1String("\nPassphrase         -\n")), qPrintable(rows));
    const QString json = run(QStringLiteral("hotspot profile --json")).output;
    QVERIFY2(json.contains(QLatin1String("\"hasPassphrase\":false,")), qPrintable(json));
}

void TestMorvekctlHotspot::switches()
{
    QVERIFY(start());
    const auto check = [this](const QString &command, const QString &output, const QString &state) {
        const ToolResult result = run(QStringLiteral("hotspot ") + command);
        QCOMPARE(result.output, output);
        QCOMPARE(result.errors, QString());
        QCOMPARE(result.code, 0);
        QCOMPARE(this->state(), state);
    };
    check(QStringLiteral("off"), QStringLiteral("The hotspot is off.\n"), QStringLiteral("INACTIVE"));
    check(QStringLiteral("on"), QStringLiteral("The hotspot is on.\n"), QStringLiteral("ACTIVE"));
    check(QStringLiteral("on"), QStringLiteral("The hotspot is on already.\n"), QStringLiteral("ACTIVE"));
    check(QStringLiteral("off"), QStringLiteral("The hotspot is off.\n"), QStringLiteral("INACTIVE"));
}

void TestMorvekctlHotspot::switchesAsJson()
{
    QVERIFY(start());
    const auto check = [this](const QString &command, const QString &output) {
        const ToolResult result = run(QStringLiteral("hotspot --json ") + command);
        QCOMPARE(result.output, output);
        QCOMPARE(result.errors, QString());
        QCOMPARE(result.code, 0);
    };
    check(QStringLiteral("off"), QStringLiteral("{\"enabled\":false}\n"));
    check(QStringLiteral("on"), QStringLiteral("{\"enabled\":true}\n"));
    check(QStringLiteral("on"), QStringLiteral("{\"enabled\":true}\n"));
    check(QStringLiteral("off"), QStringLiteral("{\"enabled\":false}\n"));
}

void TestMorvekctlHotspot::startsWithTheProfile()
{
    QVERIFY(start({}, {QStringLiteral("--verbose")}));
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("reply   start")));
    QVERIFY(m_told.indexOf(QLatin1String("request retrieve_profile")) < m_told.indexOf(QLatin1String("request start")));
    QVERIFY2(m_told.section(QLatin1String("request start"), 1)
                 .section(QLatin1Char('\n'), 0, 0)
                 .contains(QLatin1String("Morvek Car")),
             qPrintable(m_told));
}

void TestMorvekctlHotspot::stopsWithoutTheProfile()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "refuse", "err": 16, "errmsg": "busy" })"));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QCOMPARE(run(QStringLiteral("hotspot off --timeout 1")).errors,
             QStringLiteral("morvekctl: the time is up: the hotspot is still on, though the tethering daemon has "
                            "accepted to switch it\n"));
}

/*! A hotspot that somebody has had started is told as off until it is on. */
void TestMorvekctlHotspot::stopsWhatIsStarting()
{
    QVERIFY(start({}, {QStringLiteral("--verbose")}));
    const ToolResult result = run(QStringLiteral("hotspot off"));
    QCOMPARE(result.output, QStringLiteral("The hotspot is off.\n"));
    QCOMPARE(result.code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("reply   stop")));
}

void TestMorvekctlHotspot::stopsWhatHasStarted()
{
    QVERIFY(start(R"({ "message": "stop", "fault": "no-reply", "times": 1 })", {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("hotspot"), QStringLiteral("off")});
    QVERIFY(waitForDaemon(QStringLiteral("request stop")));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("INACTIVE")));
    QCOMPARE(tool.nextLine(), QStringLiteral("The hotspot is off."));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlHotspot::startsWithAGap_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<QString>("gap");
    QTest::newRow("nothing") << QByteArray("{}") << "no name, no passphrase, no maximum of clients, no inactivity time";
    QTest::newRow("no passphrase") << QByteArray(R"({"ssid":"Bus","security_type":"none"})") << "no passphrase";
    QTest::newRow("no security") << QByteArray(R"({"ssid":"Bus","passphrase":"all aboard","security_type":"wpa3"})")
                                 << "an unknown security";
}

/*! The library would send an empty profile, or one without security. */
void TestMorvekctlHotspot::startsWithAGap()
{
    QFETCH(QByteArray, profile);
    QFETCH(QString, gap);
    QVERIFY(start(tellsProfile(profile), {QStringLiteral("--verbose")}));
    const ToolResult result = run(QStringLiteral("hotspot on"));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: the hotspot is still off: its profile has %1, see 'morvekctl help hotspot set'\n")
            .arg(gap));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
    QCOMPARE(run(QStringLiteral("hotspot off")).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("reply   stop")));
    QVERIFY(!m_told.contains(QLatin1String("request start")));
}

void TestMorvekctlHotspot::switchedByAnotherApplication()
{
    QVERIFY(start(R"({ "fault": "no-reply" })", {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("hotspot"), QStringLiteral("on")});
    QVERIFY(waitForDaemon(QStringLiteral("request retrieve_profile")));
    QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    QCOMPARE(tool.nextLine(), QStringLiteral("The hotspot is on."));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlHotspot::answeredTwice()
{
    QVERIFY(start(R"({ "fault": "double" })"));
    for (const char *command : {"hotspot on", "hotspot profile", "hotspot off"}) {
        const ToolResult result = run(QLatin1String(command));
        QCOMPARE(result.errors, QString());
        QCOMPARE(result.code, 0);
    }
}

void TestMorvekctlHotspot::refused_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("sentence");

    const QByteArray busy = R"("fault": "refuse", "err": 16, "errmsg": "device or resource busy" })";
    const QByteArray fetch = R"({ "message": "retrieve_profile", )" + busy;
    const QByteArray start = R"({ "message": "start", )" + busy;
    const QByteArray stop = R"({ "message": "stop", )" + busy;
    const QByteArray textDat = R"({ "message": "retrieve_profile", "fault": "answer", "dat": "{}" })";
    const QByteArray otherAnswer = R"({ "message": "retrieve_profile", "fault": "answer", "res": "stop", "err": "0" })";
    const QString refused = QStringLiteral(", code -1: Failed to retrieve WifiHotspot config.");
    const QString noProfile = QStringLiteral(": what the tethering daemon has answered is no profile");

    QTest::newRow("on") << start << "INACTIVE"
                        << "on"
                        << "the hotspot is still off, code -1: Failed to enable config.";
    QTest::newRow("off") << stop << "ACTIVE"
                         << "off"
                         << "the hotspot is still on, code -1: Failed to disable config.";
    QTest::newRow("off, though it is not on")
        << stop << "INACTIVE"
        << "off"
        << "the hotspot is off, but may be starting, code -1: Failed to disable config.";
    QTest::newRow("profile of on") << fetch << "INACTIVE"
                                   << "on"
                                   << QStringLiteral("the hotspot is still off, as its profile was not read") + refused;
    QTest::newRow("profile") << fetch << "INACTIVE"
                             << "profile" << QStringLiteral("the profile was not read") + refused;
    QTest::newRow("status") << fetch << "INACTIVE"
                            << "status --json" << QStringLiteral("the profile was not read") + refused;
    QTest::newRow("no JSON") << textDat << "INACTIVE"
                             << "profile"
                             << "the profile was not read, code -1: Empty or malformatted config.";
    QTest::newRow("another answer") << otherAnswer << "INACTIVE"
                                    << "profile" << QStringLiteral("the profile was not read") + noProfile;
}

void TestMorvekctlHotspot::refused()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, state);
    QFETCH(QString, command);
    QFETCH(QString, sentence);
    QVERIFY(start(faults));
    QVERIFY(publish(QStringLiteral("state"), state));
    const ToolResult result = run(QStringLiteral("hotspot %1 --timeout 60").arg(command));
    QCOMPARE(result.errors, complaintLine(command, sentence, 1, QStringLiteral("-1")));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
    QCOMPARE(this->state(), state);
}

void TestMorvekctlHotspot::timeIsUp_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("sentence");

    const QString silent = QStringLiteral("; the tethering daemon has not answered");
    const QString accepted = QStringLiteral(", though the tethering daemon has accepted to switch it");
    QTest::newRow("on") << QByteArray(R"({ "message": "start", "fault": "no-reply" })") << "INACTIVE"
                        << "on" << QStringLiteral("the hotspot is still off") + silent;
    QTest::newRow("off") << QByteArray(R"({ "message": "stop", "fault": "no-reply" })") << "ACTIVE"
                         << "off" << QStringLiteral("the hotspot is still on") + silent;
    QTest::newRow("on, accepted") << QByteArray(R"({ "message": "start", "fault": "ignore" })") << "INACTIVE"
                                  << "on" << QStringLiteral("the hotspot is still off") + accepted;
    QTest::newRow("off, though it is not on")
        << QByteArray(R"({ "message": "stop", "fault": "no-reply" })") << "INACTIVE"
        << "off" << QStringLiteral("the hotspot is off, but may be starting") + silent;
    QTest::newRow("off, accepted") << QByteArray(R"({ "message": "stop", "fault": "ignore" })") << "ACTIVE"
                                   << "off" << QStringLiteral("the hotspot is still on") + accepted;
    QTest::newRow("profile of on") << QByteArray(R"({ "fault": "no-reply" })") << "INACTIVE"
                                   << "on"
                                   << QStringLiteral("the hotspot is still off, as its profile was not read") + silent;
    QTest::newRow("profile") << QByteArray(R"({ "fault": "no-reply" })") << "INACTIVE"
                             << "profile" << QStringLiteral("the profile was not read") + silent;
}

void TestMorvekctlHotspot::timeIsUp()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, state);
    QFETCH(QString, command);
    QFETCH(QString, sentence);
    QVERIFY(start(faults));
    QVERIFY(publish(QStringLiteral("state"), state));
    const ToolResult result = run(QStringLiteral("hotspot %1 --timeout 1").arg(command));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: %1\n").arg(sentence));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

void TestMorvekctlHotspot::ownDeadlines_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("times");
    const QStringList both {QStringLiteral("5 seconds"), QStringLiteral("10 seconds")};
    QTest::newRow("on") << "on" << both;
    QTest::newRow("off") << "off" << both;
    for (const char *command : {"status", "profile", "set"})
        QTest::newRow(command) << command << QStringList {QStringLiteral("5 seconds")};
}

void TestMorvekctlHotspot::ownDeadlines()
{
    QFETCH(QString, command);
    QFETCH(QStringList, times);
    const QString help = run(QStringLiteral("help hotspot ") + command).output;
    for (const QString &time : times)
        QVERIFY2(help.contains(time), qPrintable(help));
}

void TestMorvekctlHotspot::deadlinesWithoutTimeout_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<int>("least");
    QTest::newRow("no answer") << QByteArray(R"({ "fault": "no-reply" })")
                               << "the hotspot is still off, as its profile was not read; the tethering daemon has "
                                  "not answered"
                               << 5000;
    QTest::newRow("accepted") << QByteArray(R"({ "message": "start", "fault": "ignore" })")
                              << "the hotspot is still off, though the tethering daemon has accepted to switch it"
                              << 10000;
}

void TestMorvekctlHotspot::deadlinesWithoutTimeout()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, sentence);
    QFETCH(int, least);
    QVERIFY(start(faults));
    QElapsedTimer timer;
    timer.start();
    const ToolResult result = run(QStringLiteral("hotspot on"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: %1\n").arg(sentence));
    QCOMPARE(result.code, 4);
    QVERIFY(timer.elapsed() >= least * 9 / 10); // timers may be early by a twentieth
}

void TestMorvekctlHotspot::libraryIsLoudWhenAskedTo()
{
    QVERIFY(start(R"({ "message": "start", "fault": "refuse", "err": 16 })"));
    for (const char *verbosity : {"KREL_VERBOSITY=0", "KREL_VERBOSITY=2", "KREL_VERBOSITY=3", "KREL_VERBOSITY=7"}) {
        const ToolResult result = run(QStringLiteral("hotspot on"), {QString::fromLatin1(verbosity)});
        const bool loud = QByteArray(verbosity).back() >= '3';
        QCOMPARE(result.errors.count(QLatin1String(" warning 1300 Failed to enable config.\n")), loud ? 1 : 0);
        QVERIFY2(result.errors.endsWith(
                     QLatin1String("morvekctl: the hotspot is still off, code -1: Failed to enable config.\n")),
                 qPrintable(result.errors));
        QCOMPARE(result.code, 1);
    }
}

void TestMorvekctlHotspot::daemonDies()
{
    QVERIFY(start(R"({ "message": "start", "fault": "die" })"));
    const ToolResult result = run(QStringLiteral("hotspot on --timeout 60"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the hotspot is still off, code -1: Failed to enable config. (the tethering "
                            "daemon has died)\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlHotspot::daemonNeverThere_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"hotspot status", "hotspot on", "hotspot off", "hotspot profile",
                                  "hotspot set --band 5", "hotspot monitor", "hotspot status --json"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestMorvekctlHotspot::daemonNeverThere()
{
    QFETCH(QString, arguments);
    const ToolResult result = run(arguments);
    QCOMPARE(result.errors,
             complaintLine(arguments,
                           QStringLiteral("the tethering daemon is not there: start morvek-hostd, or set ZOP_ROOT to "
                                          "its root (it is \"%1\"), or add --wait")
                               .arg(m_root->path()),
                           3));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlHotspot::daemonDied()
{
    QVERIFY(start());
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    const ToolResult result = run(QStringLiteral("hotspot status"));
    QVERIFY2(result.errors.startsWith(QLatin1String("morvekctl: the tethering daemon is not there: ")),
             qPrintable(result.errors));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlHotspot::waitsForDaemon()
{
    Tool tool(m_root->path());
    tool.start({QStringLiteral("hotspot"), QStringLiteral("on"), QStringLiteral("--wait")});
    QVERIFY(start());
    QCOMPARE(tool.nextLine(), QStringLiteral("The hotspot is on."));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlHotspot::waitsForDaemonThatDied()
{
    QVERIFY(start());
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    Tool tool(m_root->path());
    tool.start(
        {QStringLiteral("hotspot"), QStringLiteral("profile"), QStringLiteral("--json"), QStringLiteral("--wait")});
    const ToolResult inVain = run(QStringLiteral("hotspot status --wait --timeout 1.5"));
    QCOMPARE(inVain.errors, QStringLiteral("morvekctl: the time is up: the tethering daemon is still not there\n"));
    QCOMPARE(inVain.code, 4);
    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(start());
    QCOMPARE(tool.nextLine(), profileJson);
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(tool.errors(), QString());
}

void TestMorvekctlHotspot::waitsInVain()
{
    const ToolResult result = run(QStringLiteral("hotspot set --band 5 --wait --timeout 0.3"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: the tethering daemon is still not there\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

QTEST_GUILESS_MAIN(TestMorvekctlHotspot)
#include "tst_morvekctl_hotspot.moc"
