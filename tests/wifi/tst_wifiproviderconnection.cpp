// SPDX-License-Identifier: Apache-2.0
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace WifiDaemon;

namespace {

const char *const EventThere = "debug1 1300 Wi-Fi status ZOP object last_event attribute is present. Identifying event";
const char *const Failed = "failure -1 Failed to connect to Access Point";

/*!
 * What the provider's state is each time that it logs a line or tells a signal: the first word of the line or "Told",
 * then powered, connected, whether there is an access point, and the number of results of a connect.
 */
class States
{
public:
    States(const WifiProvider &provider, const AsyncWifiConnectOperation &operation)
    {
        const auto append = [this, &provider, &operation](const QString &event) {
            m_states.append(QStringLiteral("%1 %2%3%4%5")
                                .arg(event)
                                .arg(provider.powered())
                                .arg(provider.connected())
                                .arg(!provider.connectedAccessPoint().isEmpty())
                                .arg(operation.results().size()));
        };
        KrelLogger::setSink([append](KrelLogger::Level, unsigned short, const QString &text) {
            append(text.section(QLatin1Char(' '), 0, 0));
        });
        const auto told = [append] { append(QStringLiteral("Told")); };
        QObject::connect(&provider, &WifiProvider::poweredChanged, &m_context, told);
        QObject::connect(&provider, &WifiProvider::connectedChanged, &m_context, told);
    }

    /*! Since the last call. */
    QStringList take()
    {
        const QStringList states = m_states;
        m_states.clear();
        return states;
    }

private:
    Q_DISABLE_COPY(States)

    const LogCapture m_restores {7};
    QObject m_context;
    QStringList m_states;
};

} // namespace

class TestWifiProviderConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void accessPoints_data();
    void accessPoints();
    void followsTheConnection();
    void connectionLinesHaveThresholds();
    void roamingTellsNothing();
    void removals_data();
    void removals();
    void completesAConnect();
    void completesAConnectWithTheSameConnection();
    void connectWaitsForABssid();
    void changesBetweenItsLines();

    void lastEvents_data();
    void lastEvents();
    void lastEventThreshold();
    void lastEventFailsAConnectOnce();
};
void TestWifiProviderConnection::accessPoints_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("bssid");
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("security");
    QTest::addColumn<QStringList>("log");
    const char *const noKeyManagement = "warning 1300 Unrecognized Wi-Fi status key management value: \"\"";
    const char *const noCipher = "warning 1300 Unrecognized Wi-Fi status cipher: \"\"";
    const auto row = [](const char *title, const QByteArray &value, const QString &bssid, const QString &ssid,
                        const char *security, std::initializer_list<const char *> log) {
        QTest::newRow(title) << value << bssid << ssid << QString::fromLatin1(security) << lines(log);
    };
    const QString a = QStringLiteral("a");
    row("WPA, TKIP", R"({"bssid":"a","ssid":"b","key_mgmt":"WPA-PSK","pairwise_cipher":"TKIP"})", a,
        QStringLiteral("b"), "4 2 4", {});
    row("WPA2-EAP, CCMP", R"({"bssid":"a","ssid":"b","key_mgmt":"WPA2-EAP","pairwise_cipher":"CCMP","x":"y"})", a,
        QStringLiteral("b"), "8 4 2", {});
    row("open", R"({"bssid":"a","ssid":"b","key_mgmt":"NONE","pairwise_cipher":"NONE"})", a, QStringLiteral("b"),
        "1 1 1", {});
    row("unknown security", R"({"bssid":"a","ssid":"b","key_mgmt":"SAE","pairwise_cipher":"GCMP"})", a,
        QStringLiteral("b"), "0 0 0",
        {"warning 1300 Unrecognized Wi-Fi status key management value: \"SAE\"",
         "warning 1300 Unrecognized Wi-Fi status cipher: \"GCMP\""});
    row("missing security", R"({"bssid":"a","ssid":"b"})", a, QStringLiteral("b"), "0 0 0",
        {noKeyManagement, noCipher});
    row("missing name", R"({"bssid":"a","key_mgmt":"NONE","pairwise_cipher":"NONE"})", a, QString(), "1 1 1", {});
    row("other types", R"({"bssid":"a","ssid":1,"key_mgmt":["NONE"],"pairwise_cipher":null})", a, QString(), "0 0 0",
        {noKeyManagement, noCipher});
    row("signal level",
        R"({"bssid":"a","key_mgmt":"NONE","pairwise_cipher":"NONE","signal_level":"-50","frequency":)"
        R"("2437","flags":["ESS"]})",
        a, QString(), "1 1 1", {});
    row("number as bssid", R"({"bssid":1,"ssid":"b","key_mgmt":"NONE","pairwise_cipher":"NONE"})", QString(),
        QStringLiteral("b"), "1 1 1", {});
    row("empty bssid", R"({"bssid":"","ssid":"b","key_mgmt":"NONE","pairwise_cipher":"NONE"})", QString(),
        QStringLiteral("b"), "1 1 1", {});
    row("outside ASCII", "{\"bssid\":\"a\",\"ssid\":\"\xc3\xa9\xf0\x9f\x9a\x97\"}", a,
        QString::fromUtf8("\xc3\xa9\xf0\x9f\x9a\x97"), "0 0 0", {noKeyManagement, noCipher});
    row("quotes", R"({"bssid":"a","ssid":"\"b\\, rssi: 1 }"})", a, QStringLiteral("\"b\\, rssi: 1 }"), "0 0 0",
        {noKeyManagement, noCipher});
    row("zero", R"({"bssid":"a","ssid":"b\u0000c"})", a, QStringLiteral("b") + QChar(0) + QStringLiteral("c"), "0 0 0",
        {noKeyManagement, noCipher});
    for (const char *none :
         {"", "on", "{", R"({"bssid":"a")", "[]", R"([{"bssid":"a"}])", R"("a")", "1", "null", "{\"bssid\":\"a\xff\"}"})
        row(QByteArray("none: ") + none, none, QString(), QString(), "0 0 0", {noKeyManagement, noCipher});
    row("invalid UTF-8", "{\"bssid\":\"a\xff\"}", QString(), QString(), "0 0 0", {noKeyManagement, noCipher});
    row("deep", "{\"bssid\":" + QByteArray(10000, '[') + QByteArray(10000, ']') + '}', QString(), QString(), "0 0 0",
        {noKeyManagement, noCipher});
    row("huge", "{\"bssid\":\"a\",\"ssid\":\"" + QByteArray(2000000, 's') + "\"}", a,
        QString(2000000, QLatin1Char('s')), "0 0 0", {noKeyManagement, noCipher});
}

void TestWifiProviderConnection::accessPoints()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, bssid);
    QFETCH(QString, ssid);
    QFETCH(QString, security);
    QFETCH(QStringList, log);
    // Read at the start, and told later.
    for (const bool initial : {true, false}) {
        ZopDouble::reset();
        const WifiProviderZop provider;
        LogCapture capture(3);
        start({{QStringLiteral("wifi_power"), text("off")},
               {QStringLiteral("wifi_status"), initial ? raw(value) : connection()}});
        if (!initial)
            change("wifi_status", json(value));
        QCOMPARE(capture.take(), log);
        const WifiAccessPoint accessPoint = provider.connectedAccessPoint();
        QCOMPARE(accessPoint.bssid(), bssid);
        QCOMPARE(accessPoint.ssid(), ssid);
        QCOMPARE(QStringLiteral("%1 %2 %3")
                     .arg(int(accessPoint.securityProtocols()))
                     .arg(int(accessPoint.keyManagementTypes()))
                     .arg(int(accessPoint.ciphers())),
                 security);
        QCOMPARE(accessPoint.rssi(), 0);
        QCOMPARE(accessPoint.frequency(), 0U);
        QCOMPARE(accessPoint.serviceSet(), WifiServiceSetIbss);
        QCOMPARE(provider.connected(), !bssid.isEmpty());
    }
}

void TestWifiProviderConnection::followsTheConnection()
{
    const WifiProviderFixture fixture;
    LogCapture log(7);
    change("wifi_status", connection());
    QCOMPARE(log.take(),
             lines({ConnectionThere, "debug2 1300 Updating connected flag to: 1",
                    "debug2 1300 Emitting connectedChanged signal with connected: 1"}));
    QCOMPARE(fixture.events->take(), lines({"connected"}));
    change("wifi_status", connection());
    QCOMPARE(log.take(), lines({ConnectionThere}));
    QVERIFY(fixture.events->take().isEmpty());
    removeAttribute("wifi_status");
    QCOMPARE(log.take(),
             lines({ConnectionGone, "debug2 1300 Updating connected flag to: 0",
                    "debug2 1300 Emitting connectedChanged signal with connected: 0"}));
    QCOMPARE(fixture.events->take(), lines({"disconnected"}));
    QCOMPARE(accessPointText(*fixture.provider), QString::fromLatin1(NoneText));
    removeAttribute("wifi_status");
    QCOMPARE(log.take(), lines({ConnectionGone}));
    change("wifi_status", connection());
    QCOMPARE(fixture.events->take(), lines({"connected"}));
    change("wifi_status", ZopVariant());
    QCOMPARE(fixture.events->take(), lines({"disconnected"}));
    change("wifi_status", connection());
    change("wifi_status", json(R"({"ssid":"Home","key_mgmt":"NONE","pairwise_cipher":"NONE"})"));
    QCOMPARE(fixture.events->take(), lines({"connected", "disconnected"}));
    QCOMPARE(fixture.provider->connectedAccessPoint().ssid(), QStringLiteral("Home"));
}

void TestWifiProviderConnection::connectionLinesHaveThresholds()
{
    const WifiProviderFixture fixture;
    LogCapture log(6);
    change("wifi_status", connection());
    removeAttribute("wifi_status");
    QCOMPARE(log.take(), lines({ConnectionThere, ConnectionGone}));
    KrelLogger::setVerbosity(5);
    change("wifi_status", connection());
    removeAttribute("wifi_status");
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderConnection::roamingTellsNothing()
{
    const WifiProviderFixture fixture;
    change("wifi_status", connection());
    fixture.events->take();
    LogCapture log(7);
    change("wifi_status", connection("02:00:00:00:01:0b"));
    QCOMPARE(log.take(), lines({ConnectionThere}));
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(fixture.provider->connected());
    QCOMPARE(fixture.provider->connectedAccessPoint().bssid(), QStringLiteral("02:00:00:00:01:0b"));
}

void TestWifiProviderConnection::removals_data()
{
    QTest::addColumn<bool>("disconnects");
    QTest::newRow("wifi_status") << true;
    QTest::newRow("wifi_status2") << true;
    QTest::newRow("wifi_status_of_wl0") << true;
    QTest::newRow("wifi_statu") << false;
    QTest::newRow("Wifi_status") << false;
    QTest::newRow("my_wifi_status") << false;
    QTest::newRow("wifi_power") << false;
    QTest::newRow("scan_results") << false;
    QTest::newRow("last_event") << false;
}

void TestWifiProviderConnection::removals()
{
    QFETCH(bool, disconnects);
    const WifiProviderFixture fixture;
    change("wifi_power", text("on"));
    change("wifi_status", connection());
    const ScanPointer scan = fixture.scan();
    const ConnectPointer operation = fixture.join();
    QCOMPARE(fixture.events->take(), lines({"on", "connected"}));
    LogCapture log(6);
    removeAttribute(QTest::currentDataTag());
    QCOMPARE(log.take(), disconnects ? lines({ConnectionGone}) : QStringList());
    QCOMPARE(fixture.events->take(), disconnects ? lines({"disconnected"}) : QStringList());
    QCOMPARE(accessPointText(*fixture.provider), QString::fromLatin1(disconnects ? NoneText : HomeText));
    QVERIFY(fixture.provider->powered());
    QVERIFY(!operation->hasError());
    // Both still wait.
    const ScanEnd scanEnd(scan.get());
    const ConnectEnd end(operation.get());
    QCOMPARE(scanEnd.text() + end.text(), QString());
    change("wifi_status", connection());
    change("scan_results", text("[]"));
    QCOMPARE(scanEnd.text() + end.text(), QStringLiteral("success success 02:00:00:00:01:0a"));
}

void TestWifiProviderConnection::completesAConnect()
{
    for (const int verbosity : {2, 3, 7}) {
        ZopDouble::reset();
        const WifiProviderFixture fixture;
        const ConnectPointer operation = fixture.join();
        int resultsWhenTold = 0;
        QObject::connect(fixture.provider.get(), &WifiProvider::connectedChanged,
                         [&] { resultsWhenTold = operation->results().size(); });
        LogCapture log(verbosity);
        change("wifi_status", connection());
        const QByteArray setting = QByteArray("warning 1300 Setting connected access point: ") + HomeText;
        QCOMPARE(log.take(),
                 verbosity == 2       ? QStringList()
                     : verbosity == 3 ? lines({setting})
                                      : lines({ConnectionThere, setting, "debug2 1300 Updating connected flag to: 1",
                                               "debug2 1300 Emitting connectedChanged signal with connected: 1"}));
        QCOMPARE(resultsWhenTold, 1);
        QCOMPARE(fixture.events->take(), lines({"connected"}));
        const ConnectEnd end(operation.get());
        QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
        WifiAccessPoint result = operation->results().first();
        QCOMPARE(textForm(result), QString::fromLatin1(HomeText));
        QVERIFY(!operation->hasError());
    }
}

void TestWifiProviderConnection::completesAConnectWithTheSameConnection()
{
    const WifiProviderFixture fixture;
    change("wifi_status", connection());
    QCOMPARE(fixture.events->take(), lines({"connected"}));
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    QCOMPARE(end.text(), QString());
    change("wifi_status", connection());
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QVERIFY(fixture.events->take().isEmpty());
}

void TestWifiProviderConnection::connectWaitsForABssid()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    LogCapture log(3);
    change("wifi_status", json(R"({"ssid":"Home","key_mgmt":"NONE","pairwise_cipher":"NONE"})"));
    change("wifi_status", json(R"({"bssid":"","ssid":"Home","key_mgmt":"NONE","pairwise_cipher":"NONE"})"));
    change("wifi_status", ZopVariant());
    removeAttribute("wifi_status");
    QVERIFY(log.take().isEmpty());
    QCOMPARE(end.text(), QString());
    QVERIFY(fixture.events->take().isEmpty());
    change("wifi_status", connection());
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
}

void TestWifiProviderConnection::changesBetweenItsLines()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    States states(*fixture.provider, *operation);
    change("wifi_power", text("on"));
    QCOMPARE(states.take(), lines({"Updating 0000", "Emitting 1000", "Told 1000"}));
    change("wifi_status", json(R"({"bssid":"a"})"));
    QCOMPARE(states.take(),
             lines({"Wi-Fi 1000", "Unrecognized 1000", "Unrecognized 1000", "Setting 1010", "Updating 1011",
                    "Emitting 1111", "Told 1111"}));
    removeAttribute("wifi_status");
    QCOMPARE(states.take(), lines({"Wi-Fi 1111", "Updating 1101", "Emitting 1001", "Told 1001"}));
}

void TestWifiProviderConnection::lastEvents_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("fails");
    QTest::newRow("zero byte") << QByteArray("\0\xff"
                                             "CTRL-EVENT-SSID-TEMP-DISABLED",
                                             31)
                               << true;
    QTest::newRow("huge") << QByteArray(2000000, '-') + "CTRL-EVENT-SSID-TEMP-DISABLED" << true;
    const auto row = [](const char *value, bool fails) { QTest::addRow("'%s'", value) << QByteArray(value) << fails; };
    row("CTRL-EVENT-SSID-TEMP-DISABLED", true);
    row("<3>CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"Home\" auth_failures=1 reason=WRONG_KEY", true);
    row("CTRL-EVENT-SSID-TEMP-DISABLEDCTRL-EVENT-CONNECTED", true);
    row("", false);
    row("ctrl-event-ssid-temp-disabled", false);
    row("CTRL-EVENT-SSID-TEMP-DISABLE", false);
    row("TRL-EVENT-SSID-TEMP-DISABLED", false);
    row("CTRL-EVENT-SSID-REENABLED", false);
    row("CTRL-EVENT-CONNECTED", false);
    row("CTRL-EVENT-DISCONNECTED reason=3", false);
    row("CTRL EVENT SSID TEMP DISABLED", false);
}

void TestWifiProviderConnection::lastEvents()
{
    QFETCH(QByteArray, value);
    QFETCH(bool, fails);
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    LogCapture log(7);
    change("last_event", raw(value));
    QCOMPARE(log.take(), lines({EventThere}));
    QCOMPARE(operation->hasError(), fails);
    QCOMPARE(end.text(), QString::fromLatin1(fails ? Failed : ""));
    QVERIFY(fixture.events->take().isEmpty());
    change("last_event", raw(value));
    QCOMPARE(end.text(), QString::fromLatin1(fails ? Failed : ""));
    QCOMPARE(sent(), lines({NewHome}));
}

void TestWifiProviderConnection::lastEventThreshold()
{
    const WifiProviderFixture fixture;
    LogCapture log(5);
    change("last_event", text("CTRL-EVENT-SSID-TEMP-DISABLED"));
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(6);
    change("last_event", text("CTRL-EVENT-SSID-TEMP-DISABLED"));
    QCOMPARE(log.take(), lines({EventThere}));
    KrelLogger::setVerbosity(7);
    change("last_event", ZopVariant());
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
}

void TestWifiProviderConnection::lastEventFailsAConnectOnce()
{
    const WifiProviderFixture fixture;
    change("last_event", text("CTRL-EVENT-SSID-TEMP-DISABLED")); // of nobody who waits here
    const ConnectPointer first = fixture.join();
    const ConnectPointer second = fixture.join();
    const ConnectEnd firstEnd(first.get());
    const ConnectEnd secondEnd(second.get());
    QVERIFY(!first->hasError());
    ZopDouble::publish(QLatin1String(Status),
                       {{QStringLiteral("last_event"), text("CTRL-EVENT-SSID-TEMP-DISABLED")},
                        {QStringLiteral("wifi_status"), connection()}});
    QCOMPARE(firstEnd.text(), QString::fromLatin1(Failed));
    QCOMPARE(secondEnd.text(), QStringLiteral("failure -1 Another connect operation in progress."));
    QVERIFY(first->results().isEmpty());
    QCOMPARE(fixture.events->take(), lines({"connected"}));
    const ConnectPointer third = fixture.join();
    QVERIFY(!third->hasError());
}

QTEST_GUILESS_MAIN(TestWifiProviderConnection)
#include "tst_wifiproviderconnection.moc"
