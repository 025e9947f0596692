// SPDX-License-Identifier: Apache-2.0
#include "hotspotcase.h"
#include "terminaltool.h"

#include <zopobject.h>

#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

/*! How the commands look on terminals: widths, colours, and what is shown while they wait. */
class TestMorvekctlLook : public HotspotCase
{
    Q_OBJECT

private Q_SLOTS:
    void widths_data();
    void widths();
    void colours();
    void noColours_data();
    void noColours();
    void progressOfHotspot_data();
    void progressOfHotspot();
    void interruptedHotspot_data();
    void interruptedHotspot();
    void interruptedBeforeTheRequest();
};

void TestMorvekctlLook::widths_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("table");

    const QString interfaces =
        QStringLiteral("NAME    TYPE      AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE    ADDRESS           "
                       "GATEWAY       PARENT\r\n"
                       "cell0   cellular  yes        yes        no         3         auto    100.64.3.9/30     "
                       "100.64.3.10   -\r\n"
                       "eth0    wired     yes        yes        no         2         auto    10.20.0.40/16     "
                       "10.20.0.1     -\r\n"
                       "eth0.5  wired     yes        yes        no         4         manual  172.16.5.2/24     "
                       "172.16.5.1    eth0\r\n"
                       "wlan0   wifi      yes        yes        yes        1         auto    192.168.43.17/24  "
                       "192.168.43.1  -\r\n");
    QTest::newRow("unknown width") << "headunit"
                                   << "interfaces" << 0 << interfaces;
    QTest::newRow("as wide as the table") << "headunit"
                                          << "interfaces" << 107 << interfaces;
    QTest::newRow("a column less")
        << "headunit"
        << "interfaces" << 106
        << "NAME    TYPE      AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE    ADDRESS           GATEWAY\r\n"
           "cell0   cellular  yes        yes        no         3         auto    100.64.3.9/30     100.64.3.10\r\n"
           "eth0    wired     yes        yes        no         2         auto    10.20.0.40/16     10.20.0.1\r\n"
           "eth0.5  wired     yes        yes        no         4         manual  172.16.5.2/24     172.16.5.1\r\n"
           "wlan0   wifi      yes        yes        yes        1         auto    192.168.43.17/24  192.168.43.1\r\n";
    QTest::newRow("interfaces at 80") << "headunit"
                                      << "interfaces" << 80
                                      << "NAME    TYPE      CONNECTED  PREFERRED  MODE    ADDRESS           GATEWAY\r\n"
                                         "cell0   cellular  yes        no         auto    100.64.3.9/30     "
                                         "100.64.3.10\r\n"
                                         "eth0    wired     yes        no         auto    10.20.0.40/16     "
                                         "10.20.0.1\r\n"
                                         "eth0.5  wired     yes        no         manual  172.16.5.2/24     "
                                         "172.16.5.1\r\n"
                                         "wlan0   wifi      yes        yes        auto    192.168.43.17/24  "
                                         "192.168.43.1\r\n";
    QTest::newRow("interfaces at 40") << "headunit"
                                      << "interfaces" << 40
                                      << "NAME    CONNECTED  ADDRESS\r\n"
                                         "cell0   yes        100.64.3.9/30\r\n"
                                         "eth0    yes        10.20.0.40/16\r\n"
                                         "eth0.5  yes        172.16.5.2/24\r\n"
                                         "wlan0   yes        192.168.43.17/24\r\n";
    QTest::newRow("interfaces at 3") << "headunit"
                                     << "interfaces" << 3 << QString::fromUtf8("…  …  …\r\n").repeated(5);
    QTest::newRow("a profile") << "wide"
                               << "hotspot profile" << 40
                               << QString::fromUtf8("Name               Ein sehr langer Name…\r\n"
                                                    "Passphrase         (hidden)\r\n"
                                                    "Security           WPA2\r\n"
                                                    "Band               5 GHz\r\n"
                                                    "Max. clients       10\r\n"
                                                    "Inactivity time    600\r\n"
                                                    "Privacy            off\r\n"
                                                    "Block connections  off\r\n");
    const QString scan = QStringLiteral("wifi scan");
    QTest::newRow("scan") << "wide" << scan << 0
                          << QString::fromUtf8(
                                 "   SSID                              BSSID              SIGNAL   FREQUENCY  CHANNEL  "
                                 "SECURITY\r\n"
                                 "   The longest name that there is..  02:00:00:00:70:02  -60 dBm  2412 MHz   1        "
                                 "WPA/WPA2 + WPS\r\n"
                                 "*  日本語のネットワーク              02:00:00:00:70:01  -61 dBm  2437 MHz   6        "
                                 "WPA2\r\n"
                                 "   Far 🚗🚗🚗🚗🚗🚗                  02:00:00:00:70:03  -76 dBm  2462 MHz   11       "
                                 "WPA2\r\n");
    QTest::newRow("scan at 80") << "wide" << scan << 80
                                << QString::fromUtf8(
                                       "   SSID                              SIGNAL   CHANNEL  SECURITY\r\n"
                                       "   The longest name that there is..  -60 dBm  1        WPA/WPA2 + WPS\r\n"
                                       "*  日本語のネットワーク              -61 dBm  6        WPA2\r\n"
                                       "   Far 🚗🚗🚗🚗🚗🚗                  -76 dBm  11       WPA2\r\n");
    QTest::newRow("scan at 40") << "wide" << scan << 40
                                << QString::fromUtf8("   SSID           SIGNAL   SECURITY\r\n"
                                                     "   The longest …  -60 dBm  WPA/WPA2 + W…\r\n"
                                                     "*  日本語のネッ…  -61 dBm  WPA2\r\n"
                                                     "   Far 🚗🚗🚗🚗…  -76 dBm  WPA2\r\n");
}

/*! What stands last in \a shown, as long as \a text. */
static QString endOf(const TerminalTool &tool, const QString &text)
{
    return tool.shown().right(text.size());
}

void TestMorvekctlLook::widths()
{
    QFETCH(QString, scenario);
    QFETCH(QString, arguments);
    QFETCH(int, columns);
    QFETCH(QString, table);
    QVERIFY(m_daemon->publish(scenario));
    TerminalTool tool;
    tool.setKind("dumb", columns);
    QVERIFY(tool.start(m_root->path(), arguments.split(QLatin1Char(' '))));
    QCOMPARE(tool.wait(), 0);
    QCOMPARE(endOf(tool, table), table);
}

void TestMorvekctlLook::colours()
{
    QVERIFY(m_daemon->publish(QStringLiteral("wide")));
    const auto shownBy = [this](const QString &arguments) {
        TerminalTool tool;
        tool.setKind("xterm");
        tool.start(m_root->path(), arguments.split(QLatin1Char(' ')));
        tool.wait();
        return tool.shown();
    };
    const QString scan = shownBy(QStringLiteral("wifi scan"));
    QVERIFY(scan.contains(QString::fromUtf8("\x1b[32m*\x1b[0m  日本語")));
    QVERIFY(scan.contains(QLatin1String("02:00:00:00:70:02  \x1b[32m-60 dBm\x1b[0m  2412")));
    QVERIFY(scan.contains(QLatin1String("02:00:00:00:70:01  \x1b[33m-61 dBm\x1b[0m  2437")));
    QVERIFY(scan.contains(QLatin1String("02:00:00:00:70:03  \x1b[31m-76 dBm\x1b[0m  2462")));
    QCOMPARE(scan.count(QLatin1String("\x1b[0m")), 4);
    QVERIFY(shownBy(QStringLiteral("wifi status")).contains(QLatin1String("Connected  \x1b[32myes\x1b[0m\r\n")));
    QCOMPARE(shownBy(QStringLiteral("interfaces")),
             QStringLiteral("NAME   TYPE   AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE  ADDRESS           GATEWAY"
                            "       PARENT\r\n"
                            "eth0   wired  yes        no         no         2         auto  -                 -      "
                            "       -\r\n"
                            "wlan0  wifi   yes        \x1b[32myes\x1b[0m        yes        1         auto  "
                            "192.168.43.17/24  192.168.43.1  -\r\n"));
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("scan_results"),
                               QStringLiteral(R"([{"bssid":"02:00:00:00:70:01","signal_level":"-75"}])"));
    QVERIFY(ZopObject(QStringLiteral("/zop/services/wifi/status"), ZopObject::Publish, false).setAttributes(changes));
    QVERIFY(shownBy(QStringLiteral("wifi status")).contains(QLatin1String("Signal     \x1b[33m-75 dBm\x1b[0m\r\n")));
    QVERIFY(!shownBy(QStringLiteral("hotspot status")).contains(QLatin1Char('\x1b')));
    QCOMPARE(run(QStringLiteral("hotspot on")).code, 0);
    QVERIFY(
        shownBy(QStringLiteral("hotspot status")).contains(QLatin1String("Hotspot            \x1b[32mon\x1b[0m\r\n")));
    QCOMPARE(shownBy(QStringLiteral("show x")),
             QStringLiteral("\x1b[31mmorvekctl:\x1b[0m there is no interface \"x\": use one of eth0, wlan0\r\n"));
}

void TestMorvekctlLook::noColours_data()
{
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<QByteArray>("variable");
    QTest::newRow("NO_COLOR") << QByteArray("xterm") << QByteArray("NO_COLOR=1");
    QTest::newRow("an empty NO_COLOR") << QByteArray("xterm") << QByteArray("NO_COLOR=");
    QTest::newRow("a dumb terminal") << QByteArray("dumb") << QByteArray();
    QTest::newRow("a terminal of no kind") << QByteArray() << QByteArray();
}

void TestMorvekctlLook::noColours()
{
    QFETCH(QByteArray, kind);
    QFETCH(QByteArray, variable);
    QVERIFY(m_daemon->publish(QStringLiteral("wide")));
    for (const char *arguments : {"interfaces", "wifi status", "show x"}) {
        TerminalTool tool;
        tool.setKind(kind);
        tool.setVariable(variable);
        QVERIFY(tool.start(m_root->path(), QString::fromLatin1(arguments).split(QLatin1Char(' '))));
        QVERIFY(tool.wait() != -1);
        QVERIFY(!tool.shown().isEmpty());
        QVERIFY2(!tool.shown().contains(QLatin1Char('\x1b')), qPrintable(tool.shown()));
    }
    // Nor into pipes.
    const ToolResult result = run(QStringLiteral("wifi scan"), {QStringLiteral("TERM=xterm")});
    QVERIFY(result.output.contains(QString::fromUtf8("\n*  日本語")));
    QVERIFY(!result.output.contains(QLatin1Char('\x1b')));
    QVERIFY(!run(QStringLiteral("show x"), {QStringLiteral("TERM=xterm")}).errors.contains(QLatin1Char('\x1b')));
}

void TestMorvekctlLook::progressOfHotspot_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("present");
    QTest::addColumn<QString>("next");
    QTest::newRow("on") << "on"
                        << "INACTIVE"
                        << "ACTIVE";
    QTest::newRow("off") << "off"
                         << "ACTIVE"
                         << "INACTIVE";
}

void TestMorvekctlLook::progressOfHotspot()
{
    QFETCH(QString, word);
    QFETCH(QString, present);
    QFETCH(QString, next);
    QVERIFY(start(R"({ "message": "start", "fault": "no-reply" }, { "message": "stop", "fault": "no-reply" })"));
    QVERIFY(publish(QStringLiteral("state"), present));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("hotspot"), word}));
    QVERIFY(tool.waitFor(QStringLiteral("\r\x1b[KSwitching the hotspot %1 ... 0 s").arg(word)));
    QVERIFY(publish(QStringLiteral("state"), next));
    QCOMPARE(tool.wait(), 0);
    const QString end = QStringLiteral(" s\r\x1b[KThe hotspot is %1.\r\n").arg(word);
    QCOMPARE(endOf(tool, end), end);

    QVERIFY(publish(QStringLiteral("state"), present));
    TerminalTool json;
    QVERIFY(json.start(m_root->path(),
                       {QStringLiteral("hotspot"), word, QStringLiteral("--json"), QStringLiteral("--timeout"),
                        QStringLiteral("0.5")}));
    QCOMPARE(json.wait(), 4);
    QVERIFY2(json.shown().startsWith(QLatin1String("{\"code\":null,\"exitCode\":4,\"message\":\"the time is up: ")),
             qPrintable(json.shown()));
}

void TestMorvekctlLook::interruptedHotspot_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("request");
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("outlook");
    const QString mayStart = QStringLiteral("the hotspot may still start, unless 'morvekctl hotspot off' stops it");
    QTest::newRow("on, SIGINT") << "on"
                                << "reply   start" << SIGINT << mayStart;
    QTest::newRow("on, SIGTERM") << "on"
                                 << "reply   start" << SIGTERM << mayStart;
    QTest::newRow("off, SIGHUP") << "off"
                                 << "reply   stop" << SIGHUP << "the hotspot may still stop";
}

void TestMorvekctlLook::interruptedHotspot()
{
    QFETCH(QString, word);
    QFETCH(QString, request);
    QFETCH(int, signal);
    QFETCH(QString, outlook);
    QVERIFY(start(R"({ "message": "start", "fault": "ignore" }, { "message": "stop", "fault": "ignore" })",
                  {QStringLiteral("--verbose")}));
    if (word == QLatin1String("off"))
        QVERIFY(publish(QStringLiteral("state"), QStringLiteral("ACTIVE")));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("hotspot"), word}));
    QVERIFY(waitForDaemon(request));
    ::kill(tool.processId(), signal);
    QCOMPARE(tool.wait(), 1);
    const QString end = QStringLiteral("\r\x1b[Kmorvekctl: interrupted: %1\r\n").arg(outlook);
    QCOMPARE(endOf(tool, end), end);
}

void TestMorvekctlLook::interruptedBeforeTheRequest()
{
    QVERIFY(start(R"({ "message": "retrieve_profile", "fault": "no-reply" })", {QStringLiteral("--verbose")}));
    TerminalTool tool;
    QVERIFY(tool.start(m_root->path(), {QStringLiteral("hotspot"), QStringLiteral("on")}));
    QVERIFY(waitForDaemon(QStringLiteral("request retrieve_profile")));
    tool.type("\x03");
    QCOMPARE(tool.wait(), 1);
    const QString end = QStringLiteral("\r\x1b[Kmorvekctl: interrupted: the hotspot was not switched\r\n");
    QCOMPARE(endOf(tool, end), end);
}

QTEST_GUILESS_MAIN(TestMorvekctlLook)
#include "tst_morvekctl_look.moc"
