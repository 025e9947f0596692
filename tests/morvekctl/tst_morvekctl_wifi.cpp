// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"
#include "terminaltool.h"

#include <zopobject.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! wifi status, on, off, scan and disconnect, and what all commands of the group have in common. */
class TestMorvekctlWifi : public WifiCase
{
    Q_OBJECT

private Q_SLOTS:
    void status_data();
    void status();
    void statusOfNewerSecurity_data();
    void statusOfNewerSecurity();
    void connectedByWpa3();
    void statusTellsTheLevelOfTheLastScan();
    void statusTellsAddressesThatAreOfUse();
    void theNetworkInUseIsMarked();

    void power_data();
    void power();
    void disconnects();
    void disconnectsAsJson();
    void hiddenNetwork();
    void notConnected();
    void connectedMeanwhile();
    void disconnectGivesUpWhatIsPending();

    void scan();
    void scanAsJson();
    void listedTwice();
    void laterScan();
    void scanFindsNothing();
    void scanWithoutRadio_data();
    void scanWithoutRadio();
    void radioGoesOffDuringScan();
    void anotherApplicationsResults();
    void progressIsShownOnTerminals();
    void noProgressAsJson();
    void libraryIsQuietWhenTheScanSucceeds();
    void libraryIsLoudWhenAskedTo();
    void refused_data();
    void refused();
    void refusedAtAnyVerbosity_data();
    void refusedAtAnyVerbosity();
    void daemonDiesDuringScan();
    void interruptedScan_data();
    void interruptedScan();

    void timeIsUp_data();
    void timeIsUp();
    void ownDeadlines_data();
    void ownDeadlines();
    void deadlineWithoutTimeout();

    void daemonNeverThere_data();
    void daemonNeverThere();
    void daemonDied();
    void waitsForDaemon();
    void waitsForDaemonThatDied();
    void waitsInVain();
};

void TestMorvekctlWifi::status_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("json");

    QTest::newRow("connected") << "town"
                               << "Radio      on\n"
                                  "Connected  yes\n"
                                  "SSID       Home\n"
                                  "BSSID      02:00:00:00:70:01\n"
                                  "Signal     -\n"
                                  "Security   WPA2\n"
                                  "Cipher     CCMP\n"
                                  "Address    192.168.43.17/24\n"
                               << R"({"accessPoint":{"bssid":"02:00:00:00:70:01","channel":null,"cipher":"CCMP",)"
                                  R"("frequency":null,"security":"WPA2","signal":null,"ssid":"Home"},)"
                                  R"("address":"192.168.43.17/24","connected":true,"powered":true})"
                                  "\n";
    QTest::newRow("not connected") << "empty-air"
                                   << "Radio      on\n"
                                      "Connected  no\n"
                                      "SSID       -\n"
                                      "BSSID      -\n"
                                      "Signal     -\n"
                                      "Security   -\n"
                                      "Cipher     -\n"
                                      "Address    -\n"
                                   << "{\"accessPoint\":null,\"address\":null,\"connected\":false,\"powered\":true}\n";
    QTest::newRow("off") << "radio-off"
                         << "Radio      off\n"
                            "Connected  no\n"
                            "SSID       -\n"
                            "BSSID      -\n"
                            "Signal     -\n"
                            "Security   -\n"
                            "Cipher     -\n"
                            "Address    -\n"
                         << "{\"accessPoint\":null,\"address\":null,\"connected\":false,\"powered\":false}\n";
}

void TestMorvekctlWifi::status()
{
    QFETCH(QString, scenario);
    QFETCH(QString, text);
    QFETCH(QString, json);
    QVERIFY(m_daemon->publish(scenario));

    const ToolResult asText = run(QStringLiteral("wifi status"));
    QCOMPARE(asText.output, text);
    QCOMPARE(asText.errors, QString());
    QCOMPARE(asText.code, 0);
    const ToolResult asJson = run(QStringLiteral("wifi --json status"));
    QCOMPARE(asJson.output, json);
    QCOMPARE(asJson.errors, QString());
    QCOMPARE(asJson.code, 0);
}

void TestMorvekctlWifi::statusOfNewerSecurity_data()
{
    QTest::addColumn<QString>("keyManagement");
    QTest::addColumn<QString>("cipher");
    QTest::addColumn<QString>("flags"); // of the access point in the last scan
    QTest::addColumn<QString>("security");
    QTest::addColumn<QString>("shownCipher");

    const auto row = [](const char *keyManagement, const char *cipher, const char *flags, const char *security,
                        const char *shownCipher) {
        QTest::addRow("%s %s %s", keyManagement, cipher, flags)
            << keyManagement << cipher << flags << security << shownCipher;
    };
    row("SAE", "GCMP", "", "WPA3", "unknown");
    row("FT-SAE", "CCMP", "", "WPA3", "CCMP");
    row("WPA3-EAP", "CCMP", "", "WPA3 Enterprise", "CCMP");
    row("OWE", "CCMP", "", "OWE", "CCMP");
    // What the connection itself tells comes first.
    row("SAE", "CCMP", "WPA2-PSK+SAE-CCMP", "WPA3", "CCMP");
    row("WPA2-PSK", "CCMP", "WPA2-PSK+SAE-CCMP", "WPA2", "CCMP");
    row("NONE", "NONE", "", "open", "none");
    row("NONE", "NONE", "WPA2-PSK-CCMP", "open", "none");
    // What is encrypted is not open, whatever else it is.
    row("NONE", "CCMP", "", "unknown", "CCMP");
    row("NONE", "CCMP", "WPA2-OWE-CCMP", "OWE", "CCMP");
    row("PURPLE", "CCMP", "WPA3-SAE", "WPA3", "CCMP");
    row("PURPLE", "CCMP", "WPA2-CCMP", "unknown protection", "CCMP");
    row("PURPLE", "CCMP", "ESS", "unknown", "CCMP");
    row("", "", "RSN-SAE", "WPA3", "unknown");
}

void TestMorvekctlWifi::statusOfNewerSecurity()
{
    QFETCH(QString, keyManagement);
    QFETCH(QString, cipher);
    QFETCH(QString, flags);
    QFETCH(QString, security);
    QFETCH(QString, shownCipher);
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const QString results = QStringLiteral(R"([{"bssid":"02:00:00:00:70:0a","flags":["WPA3-EAP-CCMP"]},)"
                                           R"({"bssid":"02:00:00:00:70:0d","flags":["%1"]}])")
                                .arg(flags);
    if (!flags.isEmpty())
        QVERIFY(publish(QStringLiteral("scan_results"), results));
    const QString status =
        QStringLiteral(R"({"bssid":"02:00:00:00:70:0d","ssid":"New","key_mgmt":"%1","pairwise_cipher":"%2"})")
            .arg(keyManagement, cipher);
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(status.toUtf8(), "json")));

    QCOMPARE(run(QStringLiteral("wifi status")).output,
             QStringLiteral("Radio      on\n"
                            "Connected  yes\n"
                            "SSID       New\n"
                            "BSSID      02:00:00:00:70:0d\n"
                            "Signal     -\n"
                            "Security   %1\n"
                            "Cipher     %2\n"
                            "Address    192.168.43.17/24\n")
                 .arg(security, shownCipher));
    const QJsonDocument json = QJsonDocument::fromJson(run(QStringLiteral("wifi status --json")).output.toUtf8());
    QCOMPARE(json[QLatin1String("accessPoint")][QLatin1String("security")].toString(), security);

    Tool monitor(m_root->path());
    monitor.start({QStringLiteral("wifi"), QStringLiteral("monitor")});
    QCOMPARE(monitor.nextEvent(),
             QStringLiteral("present       radio on, connected to \"New\" by 02:00:00:00:70:0d (%1, %2)")
                 .arg(security, shownCipher));
    monitor.signal(SIGINT);
    QCOMPARE(monitor.wait(), 0);
}

void TestMorvekctlWifi::connectedByWpa3()
{
    QVERIFY(m_daemon->publish(QStringLiteral("newer")));
    const QString status = run(QStringLiteral("wifi status")).output;
    QVERIFY2(status.contains(QLatin1String("\nSecurity   WPA3\nCipher     CCMP\n")), qPrintable(status));
}

/*! The library knows no level of the connection. */
void TestMorvekctlWifi::statusTellsTheLevelOfTheLastScan()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QVERIFY(publish(QStringLiteral("scan_results"),
                    QString(QStringLiteral(R"([{"bssid":"02:00:00:00:70:02","signal_level":"-31"},)"
                                           R"({"bssid":"02:00:00:00:70:01","signal_level":"-48"},)"
                                           R"({"signal_level":"-30"}])"))));
    QVERIFY(run(QStringLiteral("wifi status")).output.contains(QLatin1String("\nSignal     -48 dBm\n")));
    QVERIFY(run(QStringLiteral("wifi status --json")).output.contains(QLatin1String(R"("signal":-48,)")));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QVERIFY(run(QStringLiteral("wifi status")).output.contains(QLatin1String("\nSignal     -\n")));
}

/*! Those of other interfaces are not, nor are those of one that has lost its link, or of a station without a network.
 */
void TestMorvekctlWifi::statusTellsAddressesThatAreOfUse()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    QVERIFY(run(QStringLiteral("wifi status")).output.contains(QLatin1String("\nAddress    192.168.43.17/24\n")));
    const QString status = published(QStringLiteral("wifi_status"));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(QByteArrayLiteral("{}"), "json")));
    QVERIFY(run(QStringLiteral("wifi status")).output.contains(QLatin1String("\nAddress    -\n")));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(status.toUtf8(), "json")));
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("connected"), QStringLiteral("false"));
    QVERIFY(ZopObject(QStringLiteral("/zop/services/networking/all/interfaces/wlan0"), ZopObject::Publish, false)
                .setAttributes(changes));
    const QString output = run(QStringLiteral("wifi status")).output;
    QVERIFY(output.contains(QLatin1String("\nSSID       Home\n")));
    QVERIFY(output.contains(QLatin1String("\nAddress    -\n")));
}

void TestMorvekctlWifi::theNetworkInUseIsMarked()
{
    QVERIFY(m_daemon->publish(QStringLiteral("wide")));
    const QJsonArray used = QJsonDocument::fromJson(run(QStringLiteral("wifi scan --json")).output.toUtf8()).array();
    QStringList marks;
    for (const QJsonValue &one : used)
        marks += one[QLatin1String("bssid")].toString() + (one[QLatin1String("inUse")].toBool() ? "*" : "");
    QCOMPARE(marks.join(QLatin1Char(' ')), QStringLiteral("02:00:00:00:70:02 02:00:00:00:70:01* 02:00:00:00:70:03"));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QVERIFY(!run(QStringLiteral("wifi scan")).output.contains(QLatin1Char('*')));
}

void TestMorvekctlWifi::power_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("published");

    QTest::newRow("on") << "radio-off"
                        << "wifi on"
                        << "The radio is on.\n"
                        << "on";
    QTest::newRow("off") << "town"
                         << "wifi off"
                         << "The radio is off.\n"
                         << "off";
    QTest::newRow("on already") << "town"
                                << "wifi on"
                                << "The radio is on already.\n"
                                << "on";
    QTest::newRow("off already") << "radio-off"
                                 << "wifi off"
                                 << "The radio is off already.\n"
                                 << "off";
    QTest::newRow("on as JSON") << "radio-off"
                                << "wifi on --json"
                                << "{\"accessPoint\":null,\"connected\":false,\"powered\":true}\n"
                                << "on";
    QTest::newRow("off as JSON while connected") << "town"
                                                 << "wifi off --json"
                                                 << "{\"accessPoint\":null,\"connected\":false,\"powered\":false}\n"
                                                 << "off";
    QTest::newRow("off already as JSON") << "radio-off"
                                         << "wifi off --json"
                                         << "{\"accessPoint\":null,\"connected\":false,\"powered\":false}\n"
                                         << "off";
}

void TestMorvekctlWifi::power()
{
    QFETCH(QString, scenario);
    QFETCH(QString, arguments);
    QFETCH(QString, output);
    QFETCH(QString, published);
    QVERIFY(m_daemon->publish(scenario));

    const ToolResult result = run(arguments);
    QCOMPARE(result.output, output);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(this->published(QStringLiteral("wifi_power")), published);
}

void TestMorvekctlWifi::disconnects()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = run(QStringLiteral("wifi disconnect"));
    QCOMPARE(result.output, QStringLiteral("Disconnected from \"Home\".\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QVERIFY(run(QStringLiteral("wifi status")).output.contains(QLatin1String("\nConnected  no\n")));
}

void TestMorvekctlWifi::disconnectsAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const ToolResult result = run(QStringLiteral("wifi disconnect --json"));
    QCOMPARE(result.output, QStringLiteral("{\"accessPoint\":null,\"connected\":false,\"powered\":true}\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifi::hiddenNetwork()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    QVERIFY(publish(QStringLiteral("wifi_status"), ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:0f"})"), "json")));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).output,
             QStringLiteral("Disconnected from a network without a name.\n"));
}

void TestMorvekctlWifi::notConnected()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    const ToolResult result = run(QStringLiteral("wifi disconnect"));
    QCOMPARE(result.output,
             QStringLiteral("The station is not connected. The Wi-Fi daemon has been asked to give up what it may be "
                            "joining.\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(run(QStringLiteral("wifi disconnect --json")).output,
             QStringLiteral("{\"accessPoint\":null,\"connected\":false,\"powered\":true}\n"));
}

void TestMorvekctlWifi::connectedMeanwhile()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("disconnect")});
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
    QVERIFY(publish(QStringLiteral("wifi_status"),
                    ZopVariant(QByteArray(R"({"bssid":"02:00:00:00:70:01","ssid":"Home"})"), "json")));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: the station has been connected to \"Home\" meanwhile\n"));
}

void TestMorvekctlWifi::disconnectGivesUpWhatIsPending()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air"), {QStringLiteral("--verbose")}));
    QCOMPARE(run(QStringLiteral("wifi disconnect")).code, 0);
    QVERIFY(waitForDaemon(QStringLiteral("request wnet_disableall")));
}

void TestMorvekctlWifi::scan()
{
    QVERIFY(m_daemon->publish(QStringLiteral("air")));
    const ToolResult result = run(QStringLiteral("wifi scan"));
    QCOMPARE(result.output,
             QString::fromUtf8(
                 "   SSID                    BSSID              SIGNAL    FREQUENCY  CHANNEL  SECURITY\n"
                 "   Mixed                   02:00:00:00:70:04  -9 dBm    5160 MHz   32       WPA/WPA2 + WPS\n"
                 "   Annex                   02:00:00:00:70:02  -50 dBm   2484 MHz   14       WPA\n"
                 "   Zoo                     02:00:00:00:70:01  -50 dBm   2472 MHz   13       WPA2\n"
                 "   Zoo                     02:00:00:00:70:03  -50 dBm   2412 MHz   1        WPA2\n"
                 "   Corp                    02:00:00:00:70:05  -56 dBm   5885 MHz   177      WPA2 Enterprise\n"
                 "   Old corp                02:00:00:00:70:06  -57 dBm   5180 MHz   36       WPA/WPA2 Enterprise\n"
                 "   Both                    02:00:00:00:70:07  -58 dBm   2411 MHz   -        WPA2 + Enterprise\n"
                 "   Museum                  02:00:00:00:70:08  -59 dBm   2477 MHz   -        WEP\n"
                 "   Depot                   02:00:00:00:70:09  -60 dBm   5155 MHz   -        WEP + WPS\n"
                 "   Café Łódź               02:00:00:00:70:0a  -61 dBm   2437 MHz   6        open\n"
                 "   Future                  02:00:00:00:70:0b  -62 dBm   5890 MHz   -        WPA3\n"
                 "   Newer                   02:00:00:00:70:0c  -63 dBm   5183 MHz   -        WPA3\n"
                 "   Nearly                  02:00:00:00:70:0d  -64 dBm   2438 MHz   -        WPA3\n"
                 "   Button                  02:00:00:00:70:0e  -65 dBm   2447 MHz   8        open + WPS\n"
                 "   Both new                02:00:00:00:70:0f  -66 dBm   2452 MHz   9        WPA3 + WPS\n"
                 "   Unreadable              02:00:00:00:70:10  -67 dBm   2457 MHz   10       WPA2\n"
                 "   -                       02:00:00:00:70:11  -68 dBm   2462 MHz   11       WPA2\n"
                 "   Unknown cipher          02:00:00:00:70:14  -69 dBm   2467 MHz   12       WPA3\n"
                 "   New corp                02:00:00:00:70:15  -70 dBm   2467 MHz   12       WPA3 Enterprise\n"
                 "   red\\u001b[31m\\u0009tab  02:00:00:00:70:12  -100 dBm  2467 MHz   12       open\n"
                 "   No level                02:00:00:00:70:13  -         58320 MHz  -        open\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifi::scanAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("air")));
    const ToolResult result = run(QStringLiteral("wifi scan --json"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(result.output.count(QLatin1Char('\n')), 1);

    QJsonParseError error;
    const QJsonArray list = QJsonDocument::fromJson(result.output.toUtf8(), &error).array();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(list.size(), 21);
    const auto line = [&](int index) {
        return QString::fromUtf8(QJsonDocument(list[index].toObject()).toJson(QJsonDocument::Compact));
    };
    QCOMPARE(line(0),
             QStringLiteral(R"({"bssid":"02:00:00:00:70:04","channel":32,"cipher":"TKIP+CCMP","frequency":5160,)"
                            R"("inUse":false,"security":"WPA/WPA2 + WPS","signal":-9,"ssid":"Mixed"})"));
    QCOMPARE(line(1),
             QStringLiteral(R"({"bssid":"02:00:00:00:70:02","channel":14,"cipher":"TKIP","frequency":2484,)"
                            R"("inUse":false,"security":"WPA","signal":-50,"ssid":"Annex"})"));
    QCOMPARE(line(9),
             QString::fromUtf8(R"({"bssid":"02:00:00:00:70:0a","channel":6,"cipher":"none","frequency":2437,)"
                               R"("inUse":false,"security":"open","signal":-61,"ssid":"Café Łódź"})"));
    QCOMPARE(line(16),
             QStringLiteral(R"({"bssid":"02:00:00:00:70:11","channel":11,"cipher":"unknown","frequency":2462,)"
                            R"("inUse":false,"security":"WPA2","signal":-68,"ssid":null})"));
    QCOMPARE(list[19][QLatin1String("ssid")].toString(), QStringLiteral("red\x1b[31m\ttab"));
    QCOMPARE(line(20),
             QStringLiteral(R"({"bssid":"02:00:00:00:70:13","channel":null,"cipher":"none","frequency":58320,)"
                            R"("inUse":false,"security":"open","signal":null,"ssid":"No level"})"));
}

/*! Neither of the two may pass for open. */
void TestMorvekctlWifi::listedTwice()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("scan")});
    QVERIFY(waitForDaemon(QStringLiteral("request scan")));
    QVERIFY(publish(QStringLiteral("scan_results"),
                    QStringLiteral(R"([{"bssid":"a","ssid":"s","flags":["ESS"]},)"
                                   R"({"bssid":"a","ssid":"s","flags":["WPA3-SAE-CCMP"]},)"
                                   R"({"bssid":"b","ssid":"s","flags":["ESS"]},)"
                                   R"({"bssid":"c","ssid":"s","flags":["WPA3-SAE-CCMP"]},)"
                                   R"({"bssid":"c","ssid":"s","flags":["ESS"]}])")));
    QCOMPARE(tool.nextLine(), QStringLiteral("   SSID  BSSID  SIGNAL  FREQUENCY  CHANNEL  SECURITY"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   s     a      -       -          -        WPA3"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   s     a      -       -          -        WPA3"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   s     b      -       -          -        open"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   s     c      -       -          -        WPA3"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   s     c      -       -          -        WPA3"));
    QCOMPARE(tool.wait(), 0);
}

/*! What is not listed any more is what the library knows it to be; what it takes for open may be anything. */
void TestMorvekctlWifi::laterScan()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("scan")});
    QVERIFY(waitForDaemon(QStringLiteral("request scan")));
    tool.signal(SIGSTOP);
    QVERIFY(publish(QStringLiteral("scan_results"),
                    QStringLiteral(R"([{"bssid":"a","flags":["WPA2-PSK-CCMP","WPS"]},{"bssid":"b","flags":["ESS"]},)"
                                   R"({"bssid":"c","flags":["WPA-PSK-TKIP"]},{"bssid":"d","flags":["WPA-EAP-TKIP"]},)"
                                   R"({"bssid":"e","flags":["WPA2-EAP-CCMP"]},{"bssid":"f","flags":["WEP"]}])")));
    QVERIFY(publish(QStringLiteral("scan_results"), QStringLiteral("[]")));
    tool.signal(SIGCONT);
    QCOMPARE(tool.nextLine(), QStringLiteral("   SSID  BSSID  SIGNAL  FREQUENCY  CHANNEL  SECURITY"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     a      -       -          -        WPA2 + WPS"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     b      -       -          -        unknown"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     c      -       -          -        WPA"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     d      -       -          -        WPA Enterprise"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     e      -       -          -        WPA2 Enterprise"));
    QCOMPARE(tool.nextLine(), QStringLiteral("   -     f      -       -          -        WEP"));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlWifi::scanFindsNothing()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    const ToolResult table = run(QStringLiteral("wifi scan"));
    QCOMPARE(table.output, QStringLiteral("   SSID  BSSID  SIGNAL  FREQUENCY  CHANNEL  SECURITY\n"));
    QCOMPARE(table.code, 0);
    QCOMPARE(run(QStringLiteral("wifi scan --json")).output, QStringLiteral("[]\n"));
}

void TestMorvekctlWifi::scanWithoutRadio_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"wifi scan", "wifi scan --json", "wifi connect Home"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestMorvekctlWifi::scanWithoutRadio()
{
    QFETCH(QString, arguments);
    QVERIFY(m_daemon->publish(QStringLiteral("radio-off")));
    const ToolResult result = run(arguments);
    QCOMPARE(result.errors,
             complaintLine(arguments, QStringLiteral("the radio is off: switch it on with 'morvekctl wifi on'"), 1));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifi::radioGoesOffDuringScan()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("scan")});
    QVERIFY(waitForDaemon(QStringLiteral("request scan")));
    QVERIFY(publish(QStringLiteral("wifi_power"), QStringLiteral("off")));
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(tool.errors(), QStringLiteral("morvekctl: the radio is off: switch it on with 'morvekctl wifi on'\n"));
}

void TestMorvekctlWifi::anotherApplicationsResults()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("scan"), QStringLiteral("--json")});
    QVERIFY(waitForDaemon(QStringLiteral("request scan")));
    // Numbers that are not in quotes are none.
    QVERIFY(publish(QStringLiteral("scan_results"),
                    QString(QStringLiteral(R"([{"bssid":"b","ssid":"s","signal_level":-9,"frequency":2412}])"))));
    QCOMPARE(tool.nextLine(),
             QStringLiteral(
                 R"([{"bssid":"b","channel":null,"cipher":"none","frequency":null,"inUse":false,"security":"open",)"
                 R"("signal":null,"ssid":"s"}])"));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlWifi::progressIsShownOnTerminals()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("scan")}));
    QVERIFY(tool.waitFor(QStringLiteral("\r\x1b[KScanning ... 0 s")));
    // A slow moment skips seconds.
    QVERIFY(tool.waitFor(QRegularExpression(QStringLiteral("\r\x1b\\[KScanning \\.\\.\\. [1-9][0-9]* s"))));
    QVERIFY(publish(QStringLiteral("scan_results"), QStringLiteral("[]")));
    QCOMPARE(tool.wait(), 0);
    QVERIFY2(tool.shown().endsWith(QLatin1String(" s\r\x1b[K   SSID  BSSID  SIGNAL  FREQUENCY  CHANNEL  SECURITY\r\n")),
             qPrintable(tool.shown()));

    TerminalTool other;
    QVERIFY(
        other.start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("scan"), QStringLiteral("--timeout=0.3")}));
    QCOMPARE(other.wait(), 4);
    QVERIFY2(other.shown().startsWith(QLatin1String("\r\x1b[KScanning ... 0 s\r\x1b[K")), qPrintable(other.shown()));
    QVERIFY2(other.shown().contains(QLatin1String("\r\x1b[Kmorvekctl: the time is up: ")), qPrintable(other.shown()));
}

void TestMorvekctlWifi::noProgressAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("empty-air")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("scan"), QStringLiteral("--json")}));
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(tool.shown(), QStringLiteral("[]\r\n"));
}

void TestMorvekctlWifi::libraryIsQuietWhenTheScanSucceeds()
{
    QVERIFY(m_daemon->publish(QStringLiteral("air")));
    QCOMPARE(run(QStringLiteral("wifi scan")).errors, QString());
}

void TestMorvekctlWifi::libraryIsLoudWhenAskedTo()
{
    QVERIFY(m_daemon->publish(QStringLiteral("air")));
    const ToolResult result = run(QStringLiteral("wifi scan"), {QStringLiteral("KREL_VERBOSITY=2")});
    QVERIFY(result.errors.contains(
        QLatin1String(" error 1300 Unrecognized access point flag security protocol: \"WPA3\"\n")));
    QCOMPARE(result.code, 0);
}

void TestMorvekctlWifi::refused_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<QString>("code");
    QTest::newRow("off") << "all-refused"
                         << "wifi off"
                         << "the radio is still on, code 13: permission denied"
                         << "13";
    QTest::newRow("on") << "off-and-refused"
                        << "wifi on --json"
                        << "the radio is still off, code 13: permission denied"
                        << "13";
    QTest::newRow("scan") << "all-refused"
                          << "wifi scan"
                          << "nothing was scanned, code 16: device or resource busy"
                          << "16";
    QTest::newRow("scan of connect") << "all-refused"
                                     << "wifi connect Home --json"
                                     << "nothing was scanned, code 16: device or resource busy"
                                     << "16";
    QTest::newRow("disconnect") << "all-refused"
                                << "wifi disconnect"
                                << "the station was not disconnected: the Wi-Fi daemon has refused, or is gone"
                                << "null";
    QTest::newRow("disconnect without a connection")
        << "off-and-refused"
        << "wifi disconnect"
        << "the station was not disconnected: the Wi-Fi daemon has refused, or is gone"
        << "null";
}

void TestMorvekctlWifi::refused()
{
    QFETCH(QString, scenario);
    QFETCH(QString, arguments);
    QFETCH(QString, sentence);
    QFETCH(QString, code);
    QVERIFY(m_daemon->publish(scenario));
    const ToolResult result = run(arguments + QStringLiteral(" --timeout 60"));
    QCOMPARE(result.errors.section(QLatin1String("{\"note\":\"looking for \\\"Home\\\"\"}\n"), -1),
             complaintLine(arguments, sentence, 1, code));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifi::refusedAtAnyVerbosity_data()
{
    QTest::addColumn<QString>("verbosity");
    QTest::addColumn<bool>("loud");
    QTest::newRow("0") << "KREL_VERBOSITY=0" << false;
    QTest::newRow("2") << "KREL_VERBOSITY=2" << true;
    QTest::newRow("7") << "KREL_VERBOSITY=7" << true;
}

void TestMorvekctlWifi::refusedAtAnyVerbosity()
{
    QFETCH(QString, verbosity);
    QFETCH(bool, loud);
    QVERIFY(m_daemon->publish(QStringLiteral("all-refused")));
    const ToolResult result = run(QStringLiteral("wifi off --timeout 60"), {verbosity});
    QVERIFY2(result.errors.endsWith(QLatin1String("morvekctl: the radio is still on, code 13: permission denied\n")),
             qPrintable(result.errors));
    QCOMPARE(result.errors.count(QLatin1String(" error 1300 Wi-Fi service control command failed")), loud ? 1 : 0);
    QCOMPARE(result.code, 1);
}

void TestMorvekctlWifi::daemonDiesDuringScan()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf"), {QStringLiteral("--verbose")}));
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("scan")});
    QVERIFY(waitForDaemon(QStringLiteral("request scan")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(tool.wait(), 1);
    QCOMPARE(
        tool.errors(),
        QStringLiteral("morvekctl: nothing was scanned, code -1: the daemon is gone (the Wi-Fi daemon has died)\n"));
}

void TestMorvekctlWifi::interruptedScan_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestMorvekctlWifi::interruptedScan()
{
    QFETCH(int, signal);
    QVERIFY(m_daemon->publish(QStringLiteral("deaf")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("wifi"), QStringLiteral("scan")}));
    QVERIFY(tool.waitFor(QStringLiteral("Scanning ... 0 s")));
    ::kill(tool.processId(), signal);
    QCOMPARE(tool.wait(), 1);
    QVERIFY2(tool.shown().endsWith(QLatin1String("\r\x1b[Kmorvekctl: nothing was scanned: interrupted\r\n")),
             qPrintable(tool.shown()));
}

void TestMorvekctlWifi::timeIsUp_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("what");

    QTest::newRow("off") << "deaf"
                         << "off"
                         << "the radio is still on";
    QTest::newRow("disconnect") << "deaf"
                                << "disconnect"
                                << "the station is still connected to \"Home\"";
    QTest::newRow("scan") << "deaf"
                          << "scan"
                          << "no scan results have come";
    QTest::newRow("connect") << "deaf"
                             << "connect Home"
                             << "no scan results have come";
}

void TestMorvekctlWifi::timeIsUp()
{
    QFETCH(QString, scenario);
    QFETCH(QString, command);
    QFETCH(QString, what);
    QVERIFY(m_daemon->publish(scenario));
    const ToolResult result = run(QStringLiteral("wifi %1 --timeout 0.3").arg(command));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: %1; the Wi-Fi daemon has not told why\n").arg(what));
    QCOMPARE(result.code, 4);
}

void TestMorvekctlWifi::ownDeadlines_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("times");
    QTest::newRow("on") << "on" << QStringList {QStringLiteral("10 seconds")};
    QTest::newRow("off") << "off" << QStringList {QStringLiteral("10 seconds")};
    QTest::newRow("disconnect") << "disconnect" << QStringList {QStringLiteral("10 seconds")};
    QTest::newRow("scan") << "scan" << QStringList {QStringLiteral("15 seconds")};
    QTest::newRow("connect") << "connect" << QStringList {QStringLiteral("15 seconds"), QStringLiteral("30 seconds")};
}

void TestMorvekctlWifi::ownDeadlines()
{
    QFETCH(QString, command);
    QFETCH(QStringList, times);
    const QString help = run(QStringLiteral("help wifi ") + command).output;
    for (const QString &time : times)
        QVERIFY2(help.contains(time), qPrintable(help));
}

void TestMorvekctlWifi::deadlineWithoutTimeout()
{
    QVERIFY(m_daemon->publish(QStringLiteral("deaf")));
    const ToolResult result = run(QStringLiteral("wifi off"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the time is up: the radio is still on; the Wi-Fi daemon has not told why\n"));
    QCOMPARE(result.code, 4);
}

void TestMorvekctlWifi::daemonNeverThere_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"wifi status", "wifi on", "wifi off", "wifi scan", "wifi connect Home",
                                  "wifi disconnect", "wifi monitor", "wifi status --json"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestMorvekctlWifi::daemonNeverThere()
{
    QFETCH(QString, arguments);
    const ToolResult result = run(arguments);
    QCOMPARE(result.errors,
             complaintLine(arguments,
                           QStringLiteral("the Wi-Fi daemon is not there: start morvek-hostd, or set ZOP_ROOT to its "
                                          "root (it is \"%1\"), or add --wait")
                               .arg(m_root->path()),
                           3));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlWifi::daemonDied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);

    const ToolResult result = run(QStringLiteral("wifi status"));
    QVERIFY(result.errors.startsWith(QLatin1String("morvekctl: the Wi-Fi daemon is not there: ")));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 3);
}

void TestMorvekctlWifi::waitsForDaemon()
{
    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("status"), QStringLiteral("--json"), QStringLiteral("--wait")});
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    const QJsonDocument status = QJsonDocument::fromJson(tool.nextLine().toUtf8());
    QCOMPARE(status[QLatin1String("accessPoint")][QLatin1String("ssid")].toString(), QStringLiteral("Home"));
    QCOMPARE(tool.wait(), 0);
}

void TestMorvekctlWifi::waitsForDaemonThatDied()
{
    QVERIFY(m_daemon->publish(QStringLiteral("town")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    // It begins with the service that cannot be used, and tells so once, however often it tries.
    const ToolResult inVain = run(QStringLiteral("wifi scan --wait --timeout 2.5 --verbose"));
    QCOMPARE(inVain.errors.count(QLatin1String("Unable to initialize WifiProviderZop")), 1);
    QCOMPARE(inVain.code, 4);

    Tool tool(m_root->path());
    tool.start({QStringLiteral("wifi"), QStringLiteral("off"), QStringLiteral("--wait"), QStringLiteral("--verbose")});
    QVERIFY(QTest::qWaitFor([&tool] { return tool.errors().contains(QLatin1String("WifiProviderZop")); }, 60000));
    m_daemon = std::make_unique<Daemon>(m_root->path());
    QVERIFY(m_daemon->publish(QStringLiteral("wifi-refused"), {QStringLiteral("--speed=100")}));
    // What the library says is heard again once the service is there.
    QCOMPARE(tool.wait(), 1);
    QVERIFY(tool.errors().contains(QLatin1String("permission denied")));
}

void TestMorvekctlWifi::waitsInVain()
{
    const ToolResult result = run(QStringLiteral("wifi status --wait --timeout 0.3"));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: the time is up: the Wi-Fi daemon is still not there\n"));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 4);
}

QTEST_GUILESS_MAIN(TestMorvekctlWifi)
#include "tst_morvekctl_wifi.moc"
