// SPDX-License-Identifier: Apache-2.0
#include "hotspotcase.h"
#include "terminaltool.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! hotspot set: what is changed and what is not, every way in which it fails, and that nobody learns the passphrase. */
class TestMorvekctlHotspotSet : public HotspotCase
{
    Q_OBJECT

private Q_SLOTS:
    void changes_data();
    void changes();
    void tellsAsTable();
    void severalAtOnce();
    void passphraseFile_data();
    void passphraseFile();
    void passphraseFromStandardInput();

    void refused_data();
    void refused();
    void keepsSomethingElse();
    void keepsOneThingElse();
    void emptyProfile_data();
    void emptyProfile();
    void gapsAreFilled();
    void unknownSecurity();
    void timeIsUp_data();
    void timeIsUp();
    void interrupted_data();
    void interrupted();

    void typed_data();
    void typed();
    void notTyped_data();
    void notTyped();
    void typingTakesItsTime();
    void daemonDiesWhileTyping();

    void passphraseStaysSecret();

private:
    QString profile() const { return run(QStringLiteral("hotspot profile --show-passphrase --json")).output; }
    QString writeFile(const QByteArray &content) const;

    const QString unchanged =
        QStringLiteral(R"({"band":"5","blockConnections":false,"hasPassphrase":true,"inactivityTime":600,)"
                       R"("maxClients":10,"name":"Morvek Car","passphrase":"drive safely 8","privacy":false,)"
                       R"("security":"WPA2"})"
                       "\n");
    const QString prompt = QStringLiteral("Passphrase of the hotspot: ");
};

QString TestMorvekctlHotspotSet::writeFile(const QByteArray &content) const
{
    QFile file(m_root->filePath(QStringLiteral("secret")));
    file.open(QFile::WriteOnly);
    file.write(content);
    return file.fileName();
}

void TestMorvekctlHotspotSet::changes_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("before"); // what stands there when nothing has changed
    QTest::addColumn<QString>("after");
    QTest::newRow("name") << "--name Bus"
                          << R"("name":"Morvek Car")"
                          << R"("name":"Bus")";
    QTest::newRow("longest name") << "--name " + QString(16, QChar(0xe9)) << R"("name":"Morvek Car")"
                                  << "\"name\":\"" + QString(16, QChar(0xe9)) + "\"";
    QTest::newRow("same name") << "--name=Bus --band=5"
                               << R"("name":"Morvek Car")"
                               << R"("name":"Bus")";
    QTest::newRow("band") << "--band 2.4"
                          << R"("band":"5")"
                          << R"("band":"2.4")";
    QTest::newRow("open") << "--security open"
                          << R"("security":"WPA2")"
                          << R"("security":"open")";
    QTest::newRow("WPA") << "--security wpa"
                         << R"("security":"WPA2")"
                         << R"("security":"WPA")";
    QTest::newRow("WPA2") << "--security wpa2"
                          << R"("security":"WPA2")"
                          << R"("security":"WPA2")";
    QTest::newRow("both") << "--security wpa-wpa2"
                          << R"("security":"WPA2")"
                          << R"("security":"WPA/WPA2")";
    QTest::newRow("WPA as people write it") << "--security WPA"
                                            << R"("security":"WPA2")"
                                            << R"("security":"WPA")";
    QTest::newRow("both as people write it") << "--security WPA/WPA2"
                                             << R"("security":"WPA2")"
                                             << R"("security":"WPA/WPA2")";
    QTest::newRow("one client") << "--max-clients 1"
                                << R"("maxClients":10)"
                                << R"("maxClients":1)";
    QTest::newRow("clients") << "--max-clients 32"
                             << R"("maxClients":10)"
                             << R"("maxClients":32)";
    QTest::newRow("no inactivity time") << "--inactivity-time 0"
                                        << R"("inactivityTime":600)"
                                        << R"("inactivityTime":0)";
    QTest::newRow("inactivity time") << "--inactivity-time 86400"
                                     << R"("inactivityTime":600)"
                                     << R"("inactivityTime":86400)";
    QTest::newRow("privacy") << "--privacy on"
                             << R"("privacy":false)"
                             << R"("privacy":true)";
    QTest::newRow("no privacy") << "--privacy off"
                                << R"("privacy":false)"
                                << R"("privacy":false)";
    QTest::newRow("blocked") << "--block-connections on"
                             << R"("blockConnections":false)"
                             << R"("blockConnections":true)";
    QTest::newRow("not blocked") << "--block-connections off"
                                 << R"("blockConnections":false)"
                                 << R"("blockConnections":false)";
}

void TestMorvekctlHotspotSet::changes()
{
    QFETCH(QString, options);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QVERIFY(start());
    QCOMPARE(profile(), unchanged);
    const QString changed = QString(unchanged).replace(before, after);
    const ToolResult result = run(QStringLiteral("hotspot set --json ") + options);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.output, QString(changed).remove(QLatin1String("\"passphrase\":\"drive safely 8\",")));
    QCOMPARE(result.code, 0);
    QCOMPARE(profile(), changed);
}

void TestMorvekctlHotspotSet::tellsAsTable()
{
    QVERIFY(start());
    const ToolResult result = run(QStringLiteral("hotspot set --max-clients 3"));
    QCOMPARE(result.output,
             QStringLiteral("Name               Morvek Car\n"
                            "Passphrase         (hidden)\n"
                            "Security           WPA2\n"
                            "Band               5 GHz\n"
                            "Max. clients       3\n"
                            "Inactivity time    600\n"
                            "Privacy            off\n"
                            "Block connections  off\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlHotspotSet::severalAtOnce()
{
    QVERIFY(start());
    const ToolResult result = runTool(m_root->path(),
                                      {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--name"),
                                       QStringLiteral("Back seat"), QStringLiteral("--band=2.4"),
                                       QStringLiteral("--security=wpa"), QStringLiteral("--max-clients=2"),
                                       QStringLiteral("--inactivity-time=60"), QStringLiteral("--privacy=on"),
                                       QStringLiteral("--block-connections=on"), QStringLiteral("--passphrase-file=-")},
                                      {}, "are we there yet\n");
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(profile(),
             QStringLiteral(R"({"band":"2.4","blockConnections":true,"hasPassphrase":true,"inactivityTime":60,)"
                            R"("maxClients":2,"name":"Back seat","passphrase":"are we there yet","privacy":true,)"
                            R"("security":"WPA"})"
                            "\n"));
}

void TestMorvekctlHotspotSet::passphraseFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("passphrase"); // as it is kept; null when it is refused
    QTest::addColumn<QString>("reason");
    const QString impossible =
        QStringLiteral("a passphrase has 8 to 63 plain letters, digits, blanks and signs (ASCII), "
                       "or 64 hexadecimal digits");
    QTest::newRow("shortest") << QByteArray("12345678\n") << "12345678" << QString();
    QTest::newRow("longest") << QByteArray(63, '~') << QString(63, QLatin1Char('~')) << QString();
    QTest::newRow("key") << QByteArray(64, 'f') << QString(64, QLatin1Char('f')) << QString();
    QTest::newRow("blanks") << QByteArray(" 123456 \n") << " 123456 " << QString();
    QTest::newRow("too short") << QByteArray("1234567\n") << QString() << impossible;
    QTest::newRow("too long") << QByteArray(64, 'g') << QString() << impossible;
    QTest::newRow("empty") << QByteArray() << QString() << "it must be one line of text";
    QTest::newRow("two lines") << QByteArray("12345678\n12345678\n") << QString() << "it must be one line of text";
}

void TestMorvekctlHotspotSet::passphraseFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, passphrase);
    QFETCH(QString, reason);
    QVERIFY(start());
    const QString file = writeFile(content);
    const ToolResult result = run(QStringLiteral("hotspot set --passphrase-file ") + file);
    if (passphrase.isNull()) {
        QCOMPARE(result.errors,
                 QStringLiteral("morvekctl: --passphrase-file \"%1\" holds no passphrase: %2\n").arg(file, reason));
        QCOMPARE(result.code, 2);
        QCOMPARE(profile(), unchanged);
        return;
    }
    QCOMPARE(result.errors, QString());
    QVERIFY(result.output.contains(QLatin1String("\nPassphrase         (hidden)\n")));
    QCOMPARE(result.code, 0);
    QCOMPARE(profile(), QString(unchanged).replace(QLatin1String("drive safely 8"), passphrase));
}

void TestMorvekctlHotspotSet::passphraseFromStandardInput()
{
    QVERIFY(start());
    const ToolResult result = runTool(
        m_root->path(),
        {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--passphrase-file"), QStringLiteral("-")},
        {}, "are we there yet");
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(profile(), QString(unchanged).replace(QLatin1String("drive safely 8"), QLatin1String("are we there yet")));
}

void TestMorvekctlHotspotSet::refused_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("sentence");
    const QString notChanged =
        QStringLiteral("the profile was not changed, code -1: Failed to update WifiHotspot config.");
    QTest::newRow("by the daemon") << QByteArray(R"({ "message": "update_profile", "fault": "refuse", "err": 16,
                                                      "errmsg": "device or resource busy" })")
                                   << notChanged + " (device or resource busy)";
    QTest::newRow("without a word") << QByteArray(R"({ "message": "update_profile", "fault": "refuse", "err": 16 })")
                                    << notChanged;
    QTest::newRow("by its death") << QByteArray(R"({ "message": "update_profile", "fault": "die" })")
                                  << notChanged + " (the daemon is gone) (the tethering daemon has died)";
    QTest::newRow("to be read") << QByteArray(R"({ "fault": "refuse", "err": 13, "errmsg": "permission denied" })")
                                << "the profile was not changed: it was not read, code -1: Failed to retrieve "
                                   "WifiHotspot config.";
    QTest::newRow("to be read again")
        << QByteArray(R"({ "message": "retrieve_profile", "fault": "refuse", "err": 1, "errmsg": "no", "skip": 1 })")
        << "the profile was changed, but not read again, code -1: Failed to retrieve WifiHotspot config.";
}

void TestMorvekctlHotspotSet::refused()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, sentence);
    QVERIFY(start(faults));
    for (const char *verbosity : {"KREL_VERBOSITY=0", "KREL_VERBOSITY=2"}) {
        m_daemon = std::make_unique<Daemon>(m_root->path());
        QVERIFY(start(faults));
        const ToolResult result =
            run(QStringLiteral("hotspot set --band 2.4 --timeout 60"), {QString::fromLatin1(verbosity)});
        QCOMPARE(result.errors, QStringLiteral("morvekctl: %1\n").arg(sentence));
        QCOMPARE(result.output, QString());
        QCOMPARE(result.code, 1);
    }
}

void TestMorvekctlHotspotSet::keepsSomethingElse()
{
    QVERIFY(start(tellsProfile(R"({"ssid":"Bus","passphrase":"all aboard","mhs_band":"5.0","max_num_sta":9,
                                   "security_type":"wpa","autoshutdown_time":1,"privacy":true,"block_conn":true})",
                               1)));
    const ToolResult result = run(QStringLiteral("hotspot set --band 2.4 --json"));
    QCOMPARE(result.output,
             QStringLiteral(R"({"band":"5","blockConnections":true,"hasPassphrase":true,"inactivityTime":1,)"
                            R"("maxClients":9,"name":"Bus","privacy":true,"security":"WPA"})"
                            "\n"));
    QCOMPARE(result.errors,
             complaintLine(QStringLiteral("--json"),
                           QStringLiteral("the tethering daemon keeps something else than what was written: name, "
                                          "passphrase, security, band, maximum of clients, inactivity time, privacy, "
                                          "blocked connections"),
                           1));
    QCOMPARE(result.code, 1);

    // What is complained of before the end becomes a note.
    Tool tool(m_root->path());
    tool.writeTo(QStringLiteral("/dev/full"));
    tool.start(
        {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--band=2.4"), QStringLiteral("--json")});
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral(R"({"note":"the tethering daemon keeps something else than what was written: band"})"
                            "\n"
                            R"({"code":null,"exitCode":1,"message":"the output could not be written: No space left on )"
                            R"(device"})"
                            "\n"));
}

void TestMorvekctlHotspotSet::keepsOneThingElse()
{
    QVERIFY(start(R"({ "message": "update_profile", "fault": "ignore" })"));
    const ToolResult result = run(QStringLiteral("hotspot set --max-clients 3"));
    QVERIFY(result.output.contains(QLatin1String("\nMax. clients       10\n")));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the tethering daemon keeps something else than what was written: maximum of "
                            "clients\n"));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlHotspotSet::emptyProfile_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("missing");
    const QByteArray noPassphrase = R"({"ssid":"Bus","security_type":"none"})";
    QTest::newRow("nothing") << QByteArray("{}") << "--band 5"
                             << "name, no passphrase, no maximum of clients, no inactivity time";
    QTest::newRow("nothing but a name") << QByteArray("{}") << "--name Bus"
                                        << "passphrase, no maximum of clients, no inactivity time";
    QTest::newRow("no name") << QByteArray(R"({"passphrase":"all aboard","security_type":"wpa2"})") << "--band 5"
                             << "name";
    QTest::newRow("no passphrase") << noPassphrase << "--security open"
                                   << "passphrase";
    QTest::newRow("no maximum") << QByteArray(
        R"({"ssid":"Bus","passphrase":"all aboard","security_type":"wpa2","max_num_sta":-1})")
                                << "--band 5"
                                << "maximum of clients";
    QTest::newRow("no time") << QByteArray(
        R"({"ssid":"Bus","passphrase":"all aboard","security_type":"wpa2","autoshutdown_time":-1})")
                             << "--band 5"
                             << "inactivity time";
}

void TestMorvekctlHotspotSet::emptyProfile()
{
    QFETCH(QByteArray, profile);
    QFETCH(QString, options);
    QFETCH(QString, missing);
    QVERIFY(start(tellsProfile(profile), {QStringLiteral("--verbose")}));
    const ToolResult result = run(QStringLiteral("hotspot set ") + options);
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the profile was not changed: the tethering daemon's has no %1: give that, "
                            "too\n")
                 .arg(missing));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
    QCOMPARE(run(QStringLiteral("hotspot off")).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("reply   stop")));
    QVERIFY(m_told.contains(QLatin1String("request retrieve_profile")));
    QVERIFY(!m_told.contains(QLatin1String("update_profile")));
}

void TestMorvekctlHotspotSet::gapsAreFilled()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "answer", "err": "0", "times": 1,
                       "dat": { "encoding": "json", "text": "{}" } })"));
    const ToolResult result =
        run(QStringLiteral("hotspot set --name Bus --max-clients 4 --inactivity-time 0 --passphrase-file ")
            + writeFile("all aboard"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(profile(),
             QStringLiteral(R"({"band":"2.4","blockConnections":false,"hasPassphrase":true,"inactivityTime":0,)"
                            R"("maxClients":4,"name":"Bus","passphrase":"all aboard","privacy":false,)"
                            R"("security":"WPA2"})"
                            "\n"));
}

void TestMorvekctlHotspotSet::unknownSecurity()
{
    const QByteArray answer = R"({ "message": "retrieve_profile", "fault": "answer", "err": "0", "times": 2, "dat":
        { "encoding": "json", "text": "{\"lanprofile\":{\"ssid\":\"Bus\",\"passphrase\":\"all aboard\",)"
                              R"(\"security_type\":\"wpa3\",\"max_num_sta\":4}}" } })";
    QVERIFY(start(answer));
    const ToolResult refused = run(QStringLiteral("hotspot set --name Tram"));
    QCOMPARE(refused.errors,
             QStringLiteral("morvekctl: the profile was not changed: the tethering daemon's has an unknown security: "
                            "give that, too\n"));
    QCOMPARE(refused.output, QString());
    QCOMPARE(refused.code, 1);

    QCOMPARE(run(QStringLiteral("hotspot set --name Tram --security wpa2")).code, 0);
    QCOMPARE(profile(),
             QStringLiteral(R"({"band":"2.4","blockConnections":false,"hasPassphrase":true,"inactivityTime":0,)"
                            R"("maxClients":4,"name":"Tram","passphrase":"all aboard","privacy":false,)"
                            R"("security":"WPA2"})"
                            "\n"));
}

void TestMorvekctlHotspotSet::timeIsUp_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("read") << QByteArray(R"({ "fault": "no-reply" })")
                          << "the profile was not changed: it was not read; the tethering daemon has not answered";
    QTest::newRow("write") << QByteArray(R"({ "message": "update_profile", "fault": "no-reply" })")
                           << "the tethering daemon has not answered; it may still take the profile";
    QTest::newRow("read again") << QByteArray(R"({ "message": "retrieve_profile", "fault": "no-reply", "skip": 1 })")
                                << "the profile was changed, but not read again; the tethering daemon has not answered";
}

void TestMorvekctlHotspotSet::timeIsUp()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, sentence);
    QVERIFY(start(faults));
    const ToolResult result = run(QStringLiteral("hotspot set --band 2.4 --timeout 1"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: %1\n").arg(sentence));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

void TestMorvekctlHotspotSet::interrupted_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlHotspotSet::interrupted()
{
    QFETCH(int, signal);
    QVERIFY(start(R"({ "message": "update_profile", "fault": "no-reply" })", {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--band=2.4")});
    QVERIFY(waitForDaemon(QStringLiteral("request update_profile")));
    tool.signal(signal);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: interrupted: the tethering daemon has not answered; it may still take the "
                            "profile\n"));
}

void TestMorvekctlHotspotSet::typed_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("asked for") << "--ask-passphrase";
    QTest::newRow("standard input is a terminal") << "--passphrase-file=-";
}

void TestMorvekctlHotspotSet::typed()
{
    QFETCH(QString, option);
    QVERIFY(start());
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("hotspot"), QStringLiteral("set"), option}));
    QVERIFY(tool.waitFor(prompt));
    QVERIFY(!(tool.modes().c_lflag & ECHO));
    tool.type("are we there yet\n");
    QCOMPARE(tool.wait(), 0);
    QVERIFY2(tool.shown().startsWith(prompt + QLatin1String("\r\nName               Morvek Car\r\n")),
             qPrintable(tool.shown()));
    QVERIFY(!tool.shown().contains(QLatin1String("are we")));
    QVERIFY(tool.modes().c_lflag & ECHO);
    QCOMPARE(profile(), QString(unchanged).replace(QLatin1String("drive safely 8"), QLatin1String("are we there yet")));
}

void TestMorvekctlHotspotSet::notTyped_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<int>("code");
    const QString nothing = QStringLiteral("the profile was not changed: no passphrase was typed");
    QTest::newRow("Return") << QByteArray("\n") << QStringList() << nothing << 1;
    QTest::newRow("Ctrl-D") << QByteArray("\x04") << QStringList() << nothing << 1;
    QTest::newRow("Ctrl-C") << QByteArray("are we\x03") << QStringList() << "interrupted: " + nothing << 1;
    QTest::newRow("too short") << QByteArray("are we?\n") << QStringList()
                               << "the profile was not changed: a passphrase has 8 to 63 plain letters, digits, "
                                  "blanks and signs (ASCII), or 64 hexadecimal digits"
                               << 1;
    QTest::newRow("--timeout") << QByteArray() << QStringList {QStringLiteral("--timeout=1")}
                               << "the time is up: " + nothing << 4;
}

void TestMorvekctlHotspotSet::notTyped()
{
    QFETCH(QByteArray, keys);
    QFETCH(QStringList, options);
    QFETCH(QString, sentence);
    QFETCH(int, code);
    QVERIFY(start());
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(),
                       QStringList {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--band=2.4"),
                                    QStringLiteral("--ask-passphrase")}
                           + options));
    QVERIFY(tool.waitFor(prompt));
    tool.type(keys);
    QCOMPARE(tool.wait(), code);
    QCOMPARE(tool.shown(), prompt + QStringLiteral("\r\nmorvekctl: %1\r\n").arg(sentence));
    QVERIFY(tool.modes().c_lflag & ECHO);
    QCOMPARE(profile(), unchanged);
}

void TestMorvekctlHotspotSet::typingTakesItsTime()
{
    QVERIFY(start());
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(),
                       {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--ask-passphrase")}));
    QVERIFY(tool.waitFor(prompt));
    // Longer than an answer may take.
    QCOMPARE(run(QStringLiteral("hotspot monitor --timeout 6")).code, 0);
    tool.type("are we there yet\n");
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlHotspotSet::daemonDiesWhileTyping()
{
    QVERIFY(start());
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(),
                       {QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--ask-passphrase")}));
    QVERIFY(tool.waitFor(prompt));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    tool.type("are we there yet\n");
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.shown(),
             prompt
                 + QLatin1String("\r\nmorvekctl: the profile was not changed: it was not read, code -1: Unable to "
                                 "write to vantor zop (the tethering daemon has died)\r\n"));
}

void TestMorvekctlHotspotSet::passphraseStaysSecret()
{
    const QByteArray passphrase = "are we there yet";
    QVERIFY(start(R"({ "message": "update_profile", "fault": "late", "delay": 1500, "times": 1 })",
                  {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("hotspot"), QStringLiteral("set"), QStringLiteral("--passphrase-file=-")});
    tool.feed(passphrase);
    QVERIFY(waitForDaemon(QStringLiteral("request update_profile")));
    for (const char *name : {"cmdline", "environ"}) {
        QFile file(QStringLiteral("/proc/%1/%2").arg(QString::number(tool.processId()), QLatin1String(name)));
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(content.contains(name == QByteArray("cmdline") ? "hotspot" : "ZOP_ROOT"));
        QVERIFY(!content.contains(passphrase));
    }
    QCOMPARE(tool.wait(), 0);
    QVERIFY(!tool.errors().contains(QString::fromUtf8(passphrase)));
    QVERIFY(tool.nextLine().startsWith(QLatin1String("Name ")));
    QCOMPARE(tool.nextLine(), QStringLiteral("Passphrase         (hidden)"));

    // The library's log, and the files that others could read if the root let them in.
    for (const char *arguments : {"hotspot profile", "hotspot status --json", "hotspot on", "hotspot set --band 2.4",
                                  "hotspot monitor --timeout 1", "hotspot off"}) {
        const ToolResult loud = run(QLatin1String(arguments), {QStringLiteral("KREL_VERBOSITY=7")});
        QCOMPARE(loud.code, 0);
        QVERIFY(!(loud.output + loud.errors).contains(QString::fromUtf8(passphrase)));
    }
    QVERIFY(waitForDaemon(QStringLiteral("reply   stop")));
    QVERIFY(!m_told.contains(QString::fromUtf8(passphrase)));
    QDirIterator files(m_root->path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QFile::ReadOnly));
        const bool isPrivate = !(file.permissions() & (QFile::ReadGroup | QFile::ReadOther));
        QVERIFY2(isPrivate || !file.readAll().contains(passphrase), qPrintable(file.fileName()));
    }
}

QTEST_GUILESS_MAIN(TestMorvekctlHotspotSet)
#include "tst_morvekctl_hotspotset.moc"
