// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! wifi connect: what is chosen, what is told, every way in which it fails, and that nobody learns the passkey. */
class TestMorvekctlWifiConnect : public WifiCase
{
    Q_OBJECT

private Q_SLOTS:
    void joins_data();
    void joins();
    void joinsAsJson();
    void passkeyFile_data();
    void passkeyFile();
    void unusablePasskeyFile_data();
    void unusablePasskeyFile();
    void impossiblePasskey_data();
    void impossiblePasskey();
    void possiblePasskey_data();
    void possiblePasskey();
    void closedStandardInput();

    void fails_data();
    void fails();
    void failsAsJson();
    void nothingInRange();
    void manyInRange();
    void newerSecurity_data();
    void newerSecurity();
    void openTwinOfWhatCannotBeJoined();
    void refused_data();
    void refused();
    void openOneThatIsNot();
    void anotherApplicationJoins();
    void roamingIsNoOutcome();
    void roamingHidesNoFailure();
    void withoutLeaving();
    void radioGoesOff();
    void daemonDies();
    void daemonDiesLater();

    void withdrawnByTimeout();
    void withdrawnBySignal_data();
    void withdrawnBySignal();
    void whatFailedIsNotWithdrawn();
    void presentConnectionIsKept_data();
    void presentConnectionIsKept();

    void passkeyStaysSecret();

private:
    ToolResult connect(const QString &ssid, const QByteArray &passkey, const QStringList &options = {}) const
    {
        return runTool(m_root->path(),
                       QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), ssid,
                                    QStringLiteral("--passkey-file"), QStringLiteral("-")}
                           + options,
                       {}, passkey);
    }
    ToolResult connectWithoutPasskey(const QString &ssid, const QStringList &options = {}) const
    {
        return runTool(m_root->path(), QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), ssid} + options);
    }
    /*! Begins to join a network that never answers, and waits until the daemon was asked to. */
    bool beginToJoin(Tool *tool, const QStringList &options = {});
    /*! Begins to join \a ssid of a scenario that is late with "wnet_new", and has the station roam meanwhile. */
    bool beginAndRoam(Tool *tool, const QString &ssid, const QByteArray &passkey, const QStringList &options = {});
};

bool TestMorvekctlWifiConnect::beginToJoin(Tool *tool, const QStringList &options)
{
    if (!m_daemon->publish(QStringLiteral("town"), {QStringLiteral("--verbose")}))
        return false;
    tool->start(QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Mute"),
                             QStringLiteral("--passkey-file"), QStringLiteral("-")}
                + options);
    tool->feed("silence is golden\n");
    return waitForDaemon(QStringLiteral("reply   wnet_select"));
}

bool TestMorvekctlWifiConnect::beginAndRoam(Tool *tool, const QString &ssid, const QByteArray &passkey,
                                            const QStringList &options)
{
    if (!m_daemon->publish(QStringLiteral("late"), {QStringLiteral("--verbose")}))
        return false;
    tool->start(QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), ssid, QStringLiteral("--passkey-file"),
                             QStringLiteral("-")}
                + options);
    tool->feed(passkey);
    return waitForDaemon(QStringLiteral("request wnet_new"))
        && publish(QStringLiteral("wifi_status"),
                   ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:09","ssid":"Home","key_mgmt":"WPA2-PSK",)"
                                         R"("pairwise_cipher":"CCMP"})"),
                              "json"));
}

void TestMorvekctlWifiConnect::joins_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<QString>("steps");

    QTest::newRow("strongest that can be joined")
        << "Garage"
        << "open sesame 42"
        << "Joining \"Garage\" (WPA/WPA2 + WPS), strongest by 02:00:00:00:70:03 with -57 dBm.\n"
           "Connected to \"Garage\" by 02:00:00:00:70:03 (WPA2, CCMP).\n";
    QTest::newRow("WPA") << "Attic"
                         << "open sesame 42"
                         << "Joining \"Attic\" (WPA), strongest by 02:00:00:00:70:05 with -58 dBm.\n"
                            "Connected to \"Attic\" by 02:00:00:00:70:05 (WPA, TKIP).\n";
    QTest::newRow("open") << QString::fromUtf8("Café ☕") << QString()
                          << QString::fromUtf8(
                                 "Joining \"Café ☕\" (open), strongest by 02:00:00:00:70:06 with -60 dBm.\n"
                                 "Connected to \"Café ☕\" by 02:00:00:00:70:06 (open, none).\n");
    QTest::newRow("protected twin with a passkey")
        << "Twins"
        << "correct horse 7"
        << "Joining \"Twins\" (WPA2), strongest by 02:00:00:00:70:08 with -62 dBm.\n"
           "Connected to \"Twins\" by 02:00:00:00:70:08 (WPA2, CCMP).\n";
    QTest::newRow("level that is not known") << "No level" << QString()
                                             << "Joining \"No level\" (open), strongest by 02:00:00:00:70:10.\n"
                                                "Connected to \"No level\" by 02:00:00:00:70:10 (open, none).\n";
    QTest::newRow("the present network") << "Home"
                                         << "correct horse 7"
                                         << "Joining \"Home\" (WPA2), strongest by 02:00:00:00:70:01 with -48 dBm.\n"
                                            "Connected to \"Home\" by 02:00:00:00:70:01 (WPA2, CCMP).\n";
}

void TestMorvekctlWifiConnect::joins()
{
    QFETCH(QString, ssid);
    QFETCH(QString, passkey);
    QFETCH(QString, steps);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));

    const ToolResult result = passkey.isEmpty() ? connectWithoutPasskey(ssid) : connect(ssid, passkey.toUtf8());
    QCOMPARE(result.output, QStringLiteral("Looking for \"%1\".\n").arg(ssid) + steps);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifiConnect::joinsAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = connect(QStringLiteral("Garage"), "open sesame 42\n", {QStringLiteral("--json")});
    QCOMPARE(result.output,
             QStringLiteral(R"({"accessPoint":{"bssid":"02:00:00:00:70:03","channel":null,"cipher":"CCMP",)"
                            R"("frequency":null,"security":"WPA2","signal":null,"ssid":"Garage"},)"
                            R"("connected":true,"powered":true})"
                            "\n"));
    QCOMPARE(result.errors,
             QStringLiteral(R"({"note":"looking for \"Garage\""})"
                            "\n"
                            R"({"note":"joining \"Garage\" (WPA/WPA2 + WPS), strongest by 02:00:00:00:70:03 with )"
                            R"(-57 dBm"})"
                            "\n"));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifiConnect::passkeyFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::newRow("line") << QByteArray("open sesame 42\n") << 0;
    QTest::newRow("carriage return and line feed") << QByteArray("open sesame 42\r\n") << 0;
    QTest::newRow("without a line feed") << QByteArray("open sesame 42") << 0;
    // Blanks belong to the passkey, which thus is another one.
    QTest::newRow("blank at its end") << QByteArray("open sesame 42 \n") << 1;
    QTest::newRow("blank at its start") << QByteArray(" open sesame 42\n") << 1;
}

void TestMorvekctlWifiConnect::passkeyFile()
{
    QFETCH(QByteArray, content);
    QFETCH(int, code);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QFile file(m_root->filePath(QStringLiteral("key")));
    QVERIFY(file.open(QFile::WriteOnly));
    file.write(content);
    file.close();
    const ToolResult result =
        connectWithoutPasskey(QStringLiteral("Garage"), {QStringLiteral("--passkey-file=") + file.fileName()});
    QCOMPARE(result.code, code);
}

void TestMorvekctlWifiConnect::unusablePasskeyFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("line feed") << QByteArray("\n");
    QTest::newRow("second line feed") << QByteArray("open sesame 42\n\n");
    QTest::newRow("two lines") << QByteArray("open sesame 42\nGarage\n");
    QTest::newRow("carriage return alone") << QByteArray("open sesame 42\r");
    QTest::newRow("two carriage returns") << QByteArray("open sesame 42\r\r\n");
    QTest::newRow("line feed first") << QByteArray("open sesame 42\n\r");
    QTest::newRow("nothing but the end of a line") << QByteArray("\r\n");
    QTest::newRow("two lines with both") << QByteArray("open sesame 42\r\nGarage\r\n");
    QTest::newRow("zero byte") << QByteArray("open sesame 42\0", 15);
    QTest::newRow("no UTF-8") << QByteArray("open ses\xffme 42\n");
    QTest::newRow("too long") << QByteArray(1024, 'x');
}

void TestMorvekctlWifiConnect::unusablePasskeyFile()
{
    QFETCH(QByteArray, content);
    const ToolResult result = connect(QStringLiteral("Garage"), content);
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: --passkey-file \"-\" holds no passkey: it must be one line of text\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 2);
}

void TestMorvekctlWifiConnect::impossiblePasskey_data()
{
    QTest::addColumn<QByteArray>("passkey");
    QTest::newRow("too short") << QByteArray("sesame7");
    QTest::newRow("too long, no digits") << QByteArray(64, 'g');
    QTest::newRow("too long, digits") << QByteArray(65, '7');
    QTest::newRow("no ASCII") << QByteArray("open s\xc3\xa9same");
}

void TestMorvekctlWifiConnect::impossiblePasskey()
{
    QFETCH(QByteArray, passkey);
    const ToolResult result = connect(QStringLiteral("Garage"), passkey);
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: --passkey-file \"-\" holds no passkey: a passkey has 8 to 63 plain letters, "
                            "digits, blanks and signs (ASCII), or 64 hexadecimal digits\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 2);
}

void TestMorvekctlWifiConnect::possiblePasskey_data()
{
    QTest::addColumn<QByteArray>("passkey");
    QTest::newRow("shortest") << QByteArray(" \"~sam~ ");
    QTest::newRow("longest") << QByteArray(63, 'g');
    QTest::newRow("digits") << QByteArray("0123456789abcdefABCDEF0123456789abcdefABCDEF0123456789abcdefABCD");
}

/*! Another one than that of the network, which only the daemon can tell. */
void TestMorvekctlWifiConnect::possiblePasskey()
{
    QFETCH(QByteArray, passkey);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = connect(QStringLiteral("Garage"), passkey);
    QVERIFY2(result.errors.endsWith(QLatin1String("(the passkey is wrong, as a rule)\n")), qPrintable(result.errors));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifiConnect::closedStandardInput()
{
    const ToolResult result =
        runWithClosedInput(m_root->path(), QStringLiteral("wifi connect Garage --passkey-file -"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: --passkey-file \"-\" cannot be read: Bad file descriptor\n"));
    QCOMPARE(result.code, 2);
}

void TestMorvekctlWifiConnect::fails_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<int>("code");

    const auto row = [](const char *name, const char *ssid, const char *passkey, const char *sentence, int code) {
        QTest::newRow(name) << QString::fromUtf8(ssid) << QString::fromUtf8(passkey) << QString::fromUtf8(sentence)
                            << code;
    };
    row("wrong passkey", "Garage", "open sesame 43",
        "\"Garage\" was not joined, code -1: Failed to connect to Access Point (the passkey is wrong, as a rule)", 1);
    row("open twin without a passkey", "Twins", "",
        "\"Twins\" needs a passkey: give --passkey-file FILE, \"-\" for standard input; the open one of that name is "
        "not "
        "taken for it",
        2);
    row("not in range", "garage", "open sesame 42",
        "there is no network \"garage\" in range: use one of \"Garage\", \"Home\", \"Attic\", \"Café ☕\", \"Twins\", "
        "\"Office\", \"Museum\", \"Future\", \"Mute\", \"No level\"",
        5);
    row("enterprise", "Office", "",
        "\"Office\" cannot be joined: its security is WPA2 Enterprise; this unit's library joins WPA and WPA2 with a "
        "passkey, and open networks",
        1);
    row("enterprise with a passkey", "Office", "open sesame 42",
        "\"Office\" cannot be joined: its security is WPA2 Enterprise; this unit's library joins WPA and WPA2 with a "
        "passkey, and open networks",
        1);
    row("several securities", "Museum", "",
        "\"Museum\" cannot be joined: its security is WEP, WPA2 Enterprise; this unit's library joins WPA and WPA2 "
        "with a passkey, and open networks",
        1);
    row("WPA3", "Future", "",
        "\"Future\" cannot be joined: its security is WPA3; this unit's library joins WPA and WPA2 with a passkey, and "
        "open networks",
        1);
    row("open with a passkey", "Café ☕", "open sesame 42",
        "\"Café ☕\" is open: leave --passkey-file out to join it without protection", 1);
    row("no passkey", "Garage", "", "\"Garage\" needs a passkey: give --passkey-file FILE, \"-\" for standard input",
        2);
}

void TestMorvekctlWifiConnect::fails()
{
    QFETCH(QString, ssid);
    QFETCH(QString, passkey);
    QFETCH(QString, sentence);
    QFETCH(int, code);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));

    const ToolResult result = passkey.isEmpty() ? connectWithoutPasskey(ssid) : connect(ssid, passkey.toUtf8());
    QCOMPARE(result.errors, QStringLiteral("morvekctl: %1\n").arg(sentence));
    QVERIFY(result.output.startsWith(QStringLiteral("Looking for \"%1\".\n").arg(ssid)));
    QCOMPARE(result.code, code);
}

void TestMorvekctlWifiConnect::failsAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = connectWithoutPasskey(QStringLiteral("Office"), {QStringLiteral("--json")});
    QCOMPARE(result.errors,
             QStringLiteral(R"({"note":"looking for \"Office\""})"
                            "\n"
                            R"({"code":null,"exitCode":1,"message":"\"Office\" cannot be joined: its security is WPA2 )"
                            R"(Enterprise; this unit's library joins WPA and WPA2 with a passkey, and open networks"})"
                            "\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
    // The operation's own code is told, too.
    const ToolResult wrong = connect(QStringLiteral("Garage"), "open sesame 43", {QStringLiteral("--json")});
    QCOMPARE(wrong.errors.section(QLatin1Char('\n'), 2),
             complaintLine(QStringLiteral("--json"),
                           QStringLiteral("\"Garage\" was not joined, code -1: Failed to connect to Access Point (the "
                                          "passkey is wrong, as a rule)"),
                           1, QStringLiteral("-1")));
    QCOMPARE(wrong.code, 1);
}

void TestMorvekctlWifiConnect::nothingInRange()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    const ToolResult result = connectWithoutPasskey(QStringLiteral("Garage"));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: there is no network \"Garage\" in range: there is none at all at the moment\n"));
    QCOMPARE(result.code, 5);
}

void TestMorvekctlWifiConnect::manyInRange()
{
    QVERIFY(m_daemon->publish(QStringLiteral("air")));
    const ToolResult result = connectWithoutPasskey(QStringLiteral("Garage"));
    QCOMPARE(result.errors,
             QString::fromUtf8("morvekctl: there is no network \"Garage\" in range: use one of \"Mixed\", \"Annex\", "
                               "\"Zoo\", \"Corp\", \"Old corp\", \"Both\", \"Museum\", \"Depot\", \"Café Łódź\", "
                               "\"Future\" and 9 more\n"));
    QCOMPARE(result.code, 5);
}

void TestMorvekctlWifiConnect::newerSecurity_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("output"); // after the first line
    QTest::addColumn<QString>("errors");

    const QString library =
        QStringLiteral("; this unit's library joins WPA and WPA2 with a passkey, and open networks");
    const QString twin = QStringLiteral("; the open one of that name is not taken for it");
    QTest::newRow("WPA3")
        << "New" << QString()
        << QStringLiteral("morvekctl: \"New\" cannot be joined: its security is WPA3%1\n").arg(library);
    QTest::newRow("WPA3 with an open twin")
        << "Twins" << QString()
        << QStringLiteral("morvekctl: \"Twins\" cannot be joined: its security is WPA3%1%2\n").arg(library, twin);
    QTest::newRow("OWE")
        << "Encrypted" << QString()
        << QStringLiteral("morvekctl: \"Encrypted\" cannot be joined: its security is OWE%1\n").arg(library);
    QTest::newRow("OWE with an open twin")
        << "Lounge" << QString()
        << QStringLiteral("morvekctl: \"Lounge\" cannot be joined: its security is OWE%1%2\n").arg(library, twin);
    QTest::newRow("unknown protection with an open twin")
        << "Strange" << QString()
        << QStringLiteral("morvekctl: \"Strange\" cannot be joined: its security is unknown protection%1%2\n")
               .arg(library, twin);
    // An access point for the old and the new takes the old way.
    QTest::newRow("WPA2 and WPA3") << "Both"
                                   << "Joining \"Both\" (WPA2/WPA3), strongest by 02:00:00:00:70:09 with -60 dBm.\n"
                                      "Connected to \"Both\" by 02:00:00:00:70:09 (WPA2, CCMP).\n"
                                   << QString();
    QTest::newRow("WPA2 in other words") << "Plain"
                                         << "Joining \"Plain\" (WPA2), strongest by 02:00:00:00:70:0a with -61 dBm.\n"
                                            "Connected to \"Plain\" by 02:00:00:00:70:0a (WPA2, CCMP).\n"
                                         << QString();
}

void TestMorvekctlWifiConnect::newerSecurity()
{
    QFETCH(QString, ssid);
    QFETCH(QString, output);
    QFETCH(QString, errors);
    QVERIFY(m_daemon->publish(QStringLiteral("newer")));
    for (const bool withPasskey : {true, false}) {
        if (!withPasskey && errors.isEmpty())
            continue;
        const ToolResult result = withPasskey ? connect(ssid, "correct horse 7") : connectWithoutPasskey(ssid);
        QCOMPARE(result.errors, errors);
        QCOMPARE(result.output, QStringLiteral("Looking for \"%1\".\n").arg(ssid) + output);
        QCOMPARE(result.code, errors.isEmpty() ? 0 : 1);
    }
}

void TestMorvekctlWifiConnect::openTwinOfWhatCannotBeJoined()
{
    QVERIFY(m_daemon->publish(QStringLiteral("office-twin")));
    const ToolResult result = connectWithoutPasskey(QStringLiteral("Office"));
    QCOMPARE(result.errors,
             QStringLiteral(
                 "morvekctl: \"Office\" cannot be joined: its security is WPA2 Enterprise; this unit's library joins "
                 "WPA and WPA2 with a passkey, and open networks; the open one of that name is not taken for it\n"));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifiConnect::refused_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("reason");
    QTest::newRow("new network") << "new-refused"
                                 << "no room for another network";
    QTest::newRow("selection") << "select-refused"
                               << "the adapter does not answer";
}

void TestMorvekctlWifiConnect::refused()
{
    QFETCH(QString, scenario);
    QFETCH(QString, reason);
    QVERIFY(m_daemon->publish(scenario));
    const ToolResult result = connect(QStringLiteral("Home"), "correct horse 7");
    QCOMPARE(result.errors, QStringLiteral("morvekctl: \"Home\" was not joined, code -1: %1\n").arg(reason));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifiConnect::openOneThatIsNot()
{
    QVERIFY(m_daemon->publish(QStringLiteral("mute-and-open"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Mute")});
    QVERIFY(waitForDaemon(QStringLiteral("reply   wnet_select")));
    QVERIFY(publish(QStringLiteral("last_event"), QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=0")));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: \"Mute\" was not joined, code -1: Failed to connect to Access Point "
                            "(it may not be open after all)\n"));
}

void TestMorvekctlWifiConnect::anotherApplicationJoins()
{
    Tool tool(m_root->path());
    QVERIFY(beginToJoin(&tool));
    QVERIFY(publish(QStringLiteral("wifi_status"),
                    ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:01","ssid":"Home","key_mgmt":"WPA2-PSK",)"
                                          R"("pairwise_cipher":"CCMP"})"),
                               "json")));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: \"Mute\" was not joined: the station is connected to \"Home\" in its "
                            "place\n"));
}

void TestMorvekctlWifiConnect::roamingIsNoOutcome()
{
    Tool tool(m_root->path());
    QVERIFY(beginAndRoam(&tool, QStringLiteral("Garage"), "open sesame 42"));
    QCOMPARE(tool.nextLine(), QStringLiteral("Looking for \"Garage\"."));
    QCOMPARE(tool.nextLine(),
             QStringLiteral("Joining \"Garage\" (WPA2), strongest by 02:00:00:00:70:02 with -57 dBm."));
    QCOMPARE(tool.nextLine(), QStringLiteral("Connected to \"Garage\" by 02:00:00:00:70:02 (WPA2, CCMP)."));
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(tool.errors(), QString());
}

void TestMorvekctlWifiConnect::roamingHidesNoFailure()
{
    Tool tool(m_root->path());
    QVERIFY(beginAndRoam(&tool, QStringLiteral("Home"), "correct horse 8", {QStringLiteral("--timeout=4")}));
    QVERIFY(waitForDaemon(QStringLiteral("reply   wnet_select")));
    QCOMPARE(tool.wait(), 4);
    QCOMPARE(tool.errors(),
             QStringLiteral("morvekctl: the time is up: \"Home\" has not been joined: it may be out of range now, or "
                            "the Wi-Fi daemon does not answer\n"));
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
}

/*! A daemon may go from one network straight to another. */
void TestMorvekctlWifiConnect::withoutLeaving()
{
    QVERIFY(m_daemon->publish(QStringLiteral("new-ignored"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Garage"), QStringLiteral("--json")});
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_new")));
    QVERIFY(publish(QStringLiteral("wifi_status"),
                    ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:02","ssid":"Garage"})"), "json")));
    QCOMPARE(tool.wait(), 0);
    QVERIFY(tool.nextLine().contains(QLatin1String("\"ssid\":\"Garage\"")));
}

void TestMorvekctlWifiConnect::radioGoesOff()
{
    Tool tool(m_root->path());
    QVERIFY(beginToJoin(&tool));
    QVERIFY(publish(QStringLiteral("wifi_power"), QStringLiteral("off")));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: the radio is off: switch it on with 'morvekctl wifi on'\n"));
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
}

void TestMorvekctlWifiConnect::daemonDies()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town-dies")));
    const ToolResult result = connect(QStringLiteral("Home"), "correct horse 7");
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: \"Home\" was not joined, code -1: the daemon is gone (the Wi-Fi daemon "
                            "has died)\n"));
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifiConnect::daemonDiesLater()
{
    Tool tool(m_root->path());
    QVERIFY(beginToJoin(&tool));
    QElapsedTimer timer;
    timer.start();
    m_daemon->signal(SIGKILL);
    QCOMPARE(tool.wait(), 1);
    QVERIFY(timer.elapsed() < 2000);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: the Wi-Fi daemon has died, and with it what was asked of it\n"));
}

void TestMorvekctlWifiConnect::withdrawnByTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town"), {QStringLiteral("--verbose")}));
    const ToolResult result =
        connect(QStringLiteral("Mute"), "silence is golden", {QStringLiteral("--timeout"), QStringLiteral("2")});
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: \"Mute\" has not been joined: it may be out of range now, or "
                            "the Wi-Fi daemon does not answer\n"));
    QCOMPARE(result.code, 4);
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
}

void TestMorvekctlWifiConnect::withdrawnBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void TestMorvekctlWifiConnect::withdrawnBySignal()
{
    QFETCH(int, signal);
    Tool tool(m_root->path());
    QVERIFY(beginToJoin(&tool));
    tool.signal(signal);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: \"Mute\" was not joined: interrupted\n"));
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
}

void TestMorvekctlWifiConnect::whatFailedIsNotWithdrawn()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town"), {QStringLiteral("--verbose")}));
    QCOMPARE(connect(QStringLiteral("Garage"), "open sesame 43").code, 1);
    QCOMPARE(connect(QStringLiteral("Garage"), "open sesame 42").code, 0);
    QCOMPARE(runTool(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("off")}).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("request wifi_power")));
    QVERIFY(!m_told.contains(QLatin1String("wnet_disableall")));
}

void TestMorvekctlWifiConnect::presentConnectionIsKept_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("code");
    QTest::newRow("deadline") << 0
                              << "the time is up: \"Garage\" has not been joined; the station is still connected to "
                                 "\"Home\""
                              << 4;
    QTest::newRow("Ctrl-C") << SIGINT
                            << "\"Garage\" was not joined: interrupted; the station is still connected to \"Home\""
                            << 1;
}

void TestMorvekctlWifiConnect::presentConnectionIsKept()
{
    QFETCH(int, signal);
    QFETCH(QString, message);
    QFETCH(int, code);
    QVERIFY(m_daemon->publish(QStringLiteral("new-ignored"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Garage"),
                QStringLiteral("--timeout=%1").arg(signal == 0 ? 2 : 60)});
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_new")));
    if (signal != 0)
        tool.signal(signal);
    QCOMPARE(tool.wait(), code);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: %1\n").arg(message));
    QCOMPARE(runTool(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("off")}).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("request wifi_power")));
    QVERIFY(!m_told.contains(QLatin1String("wnet_disableall")));
}

void TestMorvekctlWifiConnect::passkeyStaysSecret()
{
    const QByteArray passkey = "silence is golden";
    Tool tool(m_root->path());
    QVERIFY(beginToJoin(&tool));

    for (const char *name : {"cmdline", "environ"}) {
        QFile file(QStringLiteral("/proc/%1/%2").arg(QString::number(tool.processId()), QLatin1String(name)));
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(content.contains(name == QByteArray("cmdline") ? "Mute" : "ZOP_ROOT"));
        QVERIFY(!content.contains(passkey));
    }
    QDirIterator files(m_root->path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    int count = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QFile::ReadOnly));
        QVERIFY2(!file.readAll().contains(passkey), qPrintable(file.fileName()));
        ++count;
    }
    QVERIFY(count > 0);

    tool.signal(SIGINT);
    QCOMPARE(tool.wait(), 1);
    QVERIFY(!tool.errors().contains(QString::fromUtf8(passkey)));
    for (QString line = tool.nextLine(); !line.isNull(); line = tool.nextLine())
        QVERIFY(!line.contains(QString::fromUtf8(passkey)));

    const ToolResult loud = runTool(m_root->path(),
                                    {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Garage"),
                                     QStringLiteral("--passkey-file=-"), QStringLiteral("--json")},
                                    {QStringLiteral("KREL_VERBOSITY=7")}, "open sesame 42\n");
    QCOMPARE(loud.code, 0);
    QVERIFY(loud.errors.contains(QLatin1String("Setting connected access point: ")));
    QVERIFY(!(loud.output + loud.errors).contains(QLatin1String("sesame")));
}

QTEST_GUILESS_MAIN(TestMorvekctlWifiConnect)
#include "tst_morvekctl_wificonnect.moc"
