// SPDX-License-Identifier: Apache-2.0
#include "asyncoperationwriter_p.h"
#include "localencoding.h"
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace WifiDaemon;

namespace {

const char *const NotValid = "warning 1300 Scan results attribute value is not valid";

/*! The results in their text form, without what is the same in all of them. */
QStringList results(const AsyncWifiScanOperation &operation)
{
    QStringList texts;
    const QList<WifiAccessPoint> accessPoints = operation.results();
    for (WifiAccessPoint accessPoint : accessPoints)
        texts.append(textForm(accessPoint).remove(QStringLiteral("WifiAccessPoint { bssid: ")));
    return texts;
}

/*! An access point about which nothing but \a bssid is known. */
QString unknown(const char *bssid = "")
{
    return QLatin1String(bssid)
        + QLatin1String(", ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, protocols: 1, service set: "
                        "2 }");
}

} // namespace

class TestWifiProviderScans : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void accessPoints_data();
    void accessPoints();
    void unknownFlagsAreLoggedEachTime_data();
    void unknownFlagsAreLoggedEachTime();
    void flagsOfLaterScans();
    void numbers_data();
    void numbers();
    void names_data();
    void names();
    void localEncoding_data();
    void localEncoding();
    void noResults_data();
    void noResults();
    void manyResults();

    void succeedsFromTheEventLoop();
    void replacesTheList();
    void allPendingScansSucceed();
    void scanQueuedTwiceSucceedsTwice();
    void oldResultsEndNoScan();
    void sameResultsAreResults();
    void unwantedResults();
    void invalidResultsEndNoScan();
    void connectIsNotTouched();
    void deletedScans();
    void scanDeletesAnother();
    void scanStartsAnother();

private:
    LocalEncoding m_encoding {"UTF-8"};
};

void TestWifiProviderScans::accessPoints_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const char *title, const QByteArray &value, const QStringList &expected,
                        std::initializer_list<const char *> log = {}) {
        QTest::newRow(title) << value << expected << lines(log);
    };
    row("complete",
        R"([{"bssid":"02:00:00:00:01:0a","ssid":"Home","signal_level":"-57","frequency":"2437",)"
        R"("flags":["WPA-PSK-TKIP","WPA2-PSK-CCMP","WPS","ESS"],"age":"3"}])",
        {QStringLiteral("02:00:00:00:01:0a, ssid: Home, rssi: -57, frequency: 2437, ciphers: 7, key management: 3, "
                        "protocols: 28, service set: 1 }")});
    row("several, in order",
        R"([{"bssid":"c","flags":["WEP"]},{"bssid":"a","flags":["ESS"]},{"bssid":"b","flags":["WPA2-EAP-CCMP"]}])",
        {QStringLiteral("c, ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, protocols: 2, service set: "
                        "2 }"),
         QStringLiteral("a, ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, protocols: 1, service set: "
                        "1 }"),
         QStringLiteral("b, ssid: , rssi: 0, frequency: 0, ciphers: 2, key management: 4, protocols: 8, service set: "
                        "2 }")});
    row("duplicates", R"([{"bssid":"a"},{"bssid":"a"},{"bssid":"b"},{"bssid":"a"}])",
        {unknown("a"), unknown("a"), unknown("b"), unknown("a")});
    row("no objects", R"([1,"a",null,[],{},["bssid"],[{"bssid":"a"}],true,{"bssid":"a"}])",
        {unknown(), unknown(), unknown(), unknown(), unknown(), unknown(), unknown(), unknown(), unknown("a")});
    row("other types", R"([{"bssid":1,"ssid":["a"],"signal_level":-57,"frequency":2437,"flags":"ESS"}])", {unknown()});
    row("null", R"([{"bssid":null,"ssid":null,"signal_level":null,"frequency":null,"flags":null}])", {unknown()});
    row("other capitals", R"([{"BSSID":"a","Ssid":"a","Signal_level":"1","FREQUENCY":"1","Flags":["ESS"]}])",
        {unknown()});
    row("flags of other types", R"([{"bssid":"a","flags":[1,{"ESS":1},["ESS"],null]}])", {unknown("a")});
    row("flags as an object", R"([{"bssid":"a","flags":{"0":"ESS"}}])", {unknown("a")});
    row("unknown flags", R"([{"bssid":"a","flags":["WPA3-PSK-CCMP","WPA2-PSK"]},{"bssid":"b"}])",
        {QStringLiteral("a, ssid: , rssi: 0, frequency: 0, ciphers: 3, key management: 3, protocols: 1, service set: "
                        "2 }"),
         unknown("b")},
        {"error 1300 Unrecognized access point flag security protocol: \"WPA3\"",
         "error 1300 Unable to parse access point WPA flag \"WPA2-PSK\""});
    row("unknown security", R"([{"bssid":"a","flags":["WPA2-SAE-GCMP"]}])",
        {QStringLiteral("a, ssid: , rssi: 0, frequency: 0, ciphers: 0, key management: 0, protocols: 8, service set: "
                        "2 }")},
        {"error 1300 Unrecognized access point flag key management: \"SAE\"",
         "error 1300 Unrecognized access point cipher: \"GCMP\""});
    row("the same flags again",
        R"([{"bssid":"a","flags":["WPA2-EAP-TKIP","ESS"]},{"bssid":"b","flags":["ESS"]},)"
        R"({"bssid":"c","flags":["WPA2-EAP-TKIP","ESS"]},{"bssid":"d","flags":["ESS","WEP"]}])",
        {QStringLiteral("a, ssid: , rssi: 0, frequency: 0, ciphers: 4, key management: 4, protocols: 8, service set: "
                        "1 }"),
         QStringLiteral("b, ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, protocols: 1, service set: "
                        "1 }"),
         QStringLiteral("c, ssid: , rssi: 0, frequency: 0, ciphers: 4, key management: 4, protocols: 8, service set: "
                        "1 }"),
         QStringLiteral("d, ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, protocols: 2, service set: "
                        "1 }")});
    row("byte order mark", "\xef\xbb\xbf[{\"bssid\":\"a\"}]", {unknown("a")});
    row("two byte order marks", "\xef\xbb\xbf\xef\xbb\xbf[{\"bssid\":\"a\"}]", {unknown("a")});
    row("three byte order marks", "\xef\xbb\xbf\xef\xbb\xbf\xef\xbb\xbf[{\"bssid\":\"a\"}]", {});
    row("spaces", " [ { \"bssid\" : \"a\" } ]\n", {unknown("a")});
}

void TestWifiProviderScans::accessPoints()
{
    QFETCH(QByteArray, value);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, log);
    for (const char *encoding : {"text", "json"}) {
        ZopDouble::reset();
        const WifiProviderFixture fixture;
        const ScanPointer scan = fixture.scan();
        const ScanEnd end(scan.get());
        LogCapture capture(7);
        change("scan_results", ZopVariant(value, encoding));
        QCOMPARE(capture.take(), log);
        QCOMPARE(results(*scan), expected);
        QVERIFY(end.text().startsWith(QLatin1String("success ")));
        QVERIFY(!scan->hasError());
        QVERIFY(fixture.events->take().isEmpty());
    }
}

void TestWifiProviderScans::unknownFlagsAreLoggedEachTime_data()
{
    QTest::addColumn<QByteArray>("flag");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *flag, const char *line) {
        QTest::newRow(flag) << QByteArray(flag) << QString::fromLatin1(line);
    };
    row("WPA2-PSK", "error 1300 Unable to parse access point WPA flag \"WPA2-PSK\"");
    row("WPA4-PSK-CCMP", "error 1300 Unrecognized access point flag security protocol: \"WPA4\"");
    row("WPA2-SAE-CCMP", "error 1300 Unrecognized access point flag key management: \"SAE\"");
    row("WPA2-PSK-GCMP", "error 1300 Unrecognized access point cipher: \"GCMP\"");
}

void TestWifiProviderScans::unknownFlagsAreLoggedEachTime()
{
    QFETCH(QByteArray, flag);
    QFETCH(QString, line);
    LogCapture log(2);
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const QByteArray result = "{\"flags\":[\"WPA-PSK-TKIP\",\"" + flag + "\",\"ESS\"]}";
    change("scan_results", raw('[' + result + ',' + result + ']'));
    QCOMPARE(log.take(), QStringList({line, line}));
    QCOMPARE(scan->results().size(), 2);
}

void TestWifiProviderScans::flagsOfLaterScans()
{
    const auto result = [](const char *flag) { return QByteArray("{\"flags\":[\"") + flag + "\"]}"; };
    const WifiProviderFixture fixture;
    LogCapture log(2);
    for (int i = 0; i < 3; ++i) {
        const ScanPointer scan = fixture.scan();
        change("scan_results", raw('[' + result("WEP") + ',' + result("ESS") + ']'));
        QCOMPARE(int(scan->results().value(0).securityProtocols()), 0x2);
        QCOMPARE(scan->results().value(0).serviceSet(), WifiServiceSetIbss);
        QCOMPARE(int(scan->results().value(1).securityProtocols()), 0x1);
        QCOMPARE(scan->results().value(1).serviceSet(), WifiServiceSetEss);

        const ScanPointer another = fixture.scan();
        QByteArray kinds;
        for (int kind = 0; kind < 10; ++kind)
            kinds += result(QByteArray::number(10 * i + kind)) + ',';
        change("scan_results", raw('[' + kinds + result("ESS") + ',' + result("WPA2-SAE-CCMP") + ']'));
        QCOMPARE(another->results().size(), 12);
        QCOMPARE(another->results().value(9).serviceSet(), WifiServiceSetIbss);
        QCOMPARE(another->results().value(10).serviceSet(), WifiServiceSetEss);
        QCOMPARE(int(another->results().value(11).securityProtocols()), 0x8);
        QCOMPARE(log.take(), lines({"error 1300 Unrecognized access point flag key management: \"SAE\""}));
    }
}

void TestWifiProviderScans::numbers_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<int>("rssi");
    QTest::addColumn<uint>("frequency");
    QTest::newRow("both") << QByteArray("\"2437\"") << 2437 << 2437U;
    QTest::newRow("zero") << QByteArray("\"0\"") << 0 << 0U;
    QTest::newRow("leading zero") << QByteArray("\"010\"") << 10 << 10U;
    QTest::newRow("largest signed") << QByteArray("\"2147483647\"") << 2147483647 << 2147483647U;
    QTest::newRow("beyond signed") << QByteArray("\"2147483648\"") << 0 << 2147483648U;
    QTest::newRow("largest unsigned") << QByteArray("\"4294967295\"") << 0 << 4294967295U;
    QTest::newRow("beyond unsigned") << QByteArray("\"4294967296\"") << 0 << 0U;
    QTest::newRow("smallest") << QByteArray("\"-2147483648\"") << -2147483647 - 1 << 0U;
    QTest::newRow("below") << QByteArray("\"-2147483649\"") << 0 << 0U;
    QTest::newRow("negative") << QByteArray("\"-1\"") << -1 << 0U;
    QTest::newRow("one digit") << QByteArray("\"9\"") << 9 << 9U;
    QTest::newRow("nine digits") << QByteArray("\"987654321\"") << 987654321 << 987654321U;
    QTest::newRow("nine digits below zero") << QByteArray("\"-987654321\"") << -987654321 << 0U;
    QTest::newRow("ten digits") << QByteArray("\"1000000000\"") << 1000000000 << 1000000000U;
    QTest::newRow("many zeros") << QByteArray("\"0000000000012\"") << 12 << 12U;
    QTest::newRow("plus") << QByteArray("\"+12\"") << 12 << 12U;
    QTest::newRow("blanks") << QByteArray("\" 12 \"") << 12 << 12U;
    QTest::newRow("blank before the minus") << QByteArray("\" -12\"") << -12 << 0U;
    for (const QByteArray &none : {QByteArray("\"\""),        QByteArray("\"many\""),
                                   QByteArray("\"5x\""),      QByteArray("\"5.0\""),
                                   QByteArray("\"5e1\""),     QByteArray("\"-\""),
                                   QByteArray("\"--5\""),     QByteArray("\"- 5\""),
                                   QByteArray("\"5-\""),      QByteArray("\"5/5\""),
                                   QByteArray("\"5:\""),      QByteArray("\"0x10\""),
                                   QByteArray("\"1,000\""),   QByteArray("\"5\\u0000\""),
                                   QByteArray("\"\\u0665\""), QByteArray("5"),
                                   QByteArray("-5.5"),        QByteArray("true"),
                                   QByteArray("[\"5\"]"),     '"' + QByteArray(100000, '9') + '"'})
        QTest::newRow(none.left(20)) << none << 0 << 0U;
}

void TestWifiProviderScans::numbers()
{
    QFETCH(QByteArray, written);
    QFETCH(int, rssi);
    QFETCH(uint, frequency);
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    change("scan_results", raw("[{\"signal_level\":" + written + "},{\"frequency\":" + written + "}]"));
    QCOMPARE(scan->results().size(), 2);
    QCOMPARE(scan->results().at(0).rssi(), rssi);
    QCOMPARE(scan->results().at(0).frequency(), 0U);
    QCOMPARE(scan->results().at(1).rssi(), 0);
    QCOMPARE(scan->results().at(1).frequency(), frequency);
}

void TestWifiProviderScans::names_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("blanks") << QByteArray("  a ") << QStringLiteral("  a ");
    QTest::newRow("outside ASCII") << QByteArray("\xc3\xa9\xe2\x82\xac\xf0\x9f\x9a\x97")
                                   << QString::fromUtf8("\xc3\xa9\xe2\x82\xac\xf0\x9f\x9a\x97");
    QTest::newRow("escaped") << QByteArray(R"(\u00e9\ud83d\ude97)") << QString::fromUtf8("\xc3\xa9\xf0\x9f\x9a\x97");
    QTest::newRow("quotes") << QByteArray(R"(\"a\\\"b)") << QStringLiteral("\"a\\\"b");
    QTest::newRow("JSON") << QByteArray(R"(\"},{\"bssid\":\"x)") << QStringLiteral("\"},{\"bssid\":\"x");
    QTest::newRow("zero byte") << QByteArray(R"(a\u0000b)") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("control characters") << QByteArray(R"(\n\u001b[2J)") << QStringLiteral("\n\x1b[2J");
    QTest::newRow("format") << QByteArray("%1%s%n") << QStringLiteral("%1%s%n");
    QTest::newRow("invalid UTF-8") << QByteArray("a\xff\xfe") << QStringLiteral("a") + QChar(0xfffd) + QChar(0xfffd);
    QTest::newRow("raw zero byte") << QByteArray("a\0b", 3) << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("replacement") << QByteArray("a\xef\xbf\xbd") << QStringLiteral("a") + QChar(0xfffd);
    QTest::newRow("lone surrogate") << QByteArray(R"(a\ud83d)") << QStringLiteral("a") + QChar(0xd83d);
    QTest::newRow("surrogate as UTF-8") << QByteArray("\xed\xa0\x80") << QString(3, QChar(0xfffd));
    QTest::newRow("huge") << QByteArray(2000000, 'a') << QString(2000000, QLatin1Char('a'));
}

void TestWifiProviderScans::names()
{
    QFETCH(QByteArray, written);
    QFETCH(QString, name);
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    LogCapture log(7);
    change("scan_results", raw("[{\"bssid\":\"a\",\"ssid\":\"" + written + "\"},{\"bssid\":\"b\"}]"));
    QVERIFY(log.take().isEmpty());
    QCOMPARE(scan->results().size(), 2);
    QCOMPARE(scan->results().at(0).bssid(), QStringLiteral("a"));
    QCOMPARE(scan->results().at(0).ssid(), name);
    QCOMPARE(scan->results().at(1).bssid(), QStringLiteral("b"));
}

void TestWifiProviderScans::localEncoding_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ASCII") << QByteArray("Home") << 1 << QStringLiteral("Home");
    QTest::newRow("escaped") << QByteArray("\\u20ac") << 1 << QString(QChar(0x20ac));
    QTest::newRow("not in the encoding") << QByteArray("\xe2\x82\xac") << 1 << QStringLiteral("?");
    // What the encoding makes of this is no JSON any more.
    QTest::newRow("in the encoding") << QByteArray("\xc3\xa9") << 0 << QString();
}

// The results pass through the local encoding, so that a program which wants every name runs where that is UTF-8.
void TestWifiProviderScans::localEncoding()
{
    QFETCH(QByteArray, name);
    QFETCH(int, count);
    QFETCH(QString, expected);
    const LocalEncoding encoding("ISO-8859-1");
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ScanEnd end(scan.get());
    change("scan_results", raw("[{\"bssid\":\"a\",\"ssid\":\"" + name + "\"}]"));
    QCOMPARE(end.text(), QString::fromLatin1(count ? "success a" : "success "));
    QCOMPARE(scan->results().size(), count);
    QCOMPARE(scan->results().value(0).ssid(), expected);
    // The connection does not.
    change("wifi_status", raw("{\"bssid\":\"a\",\"ssid\":\"\xe2\x82\xac\"}"));
    QCOMPARE(fixture.provider->connectedAccessPoint().ssid(), QString(QChar(0x20ac)));
}

void TestWifiProviderScans::noResults_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("empty array") << QByteArray("[]");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("object") << QByteArray(R"({"bssid":"a"})");
    QTest::newRow("text") << QByteArray(R"("[]")");
    QTest::newRow("number") << QByteArray("5");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("no JSON") << QByteArray("bssid ssid");
    QTest::newRow("cut off") << QByteArray(R"([{"bssid":"a"},{"bssid":"b")");
    QTest::newRow("cut off in a text") << QByteArray(R"([{"bssid":"a"},{"bssid":"b)");
    QTest::newRow("cut off before the end") << QByteArray(R"([{"bssid":"a"},{"bssid":"b"})");
    QTest::newRow("two arrays") << QByteArray(R"([{"bssid":"a"}][])");
    QTest::newRow("deep") << QByteArray(10000, '[') + QByteArray(10000, ']');
    QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(10000) + QByteArray(10000, '}');
    QTest::newRow("deep within an element")
        << "[{\"bssid\":\"a\",\"flags\":" + QByteArray(10000, '[') + QByteArray(10000, ']') + "}]";
    QTest::newRow("deep and cut off") << QByteArray(1000000, '[');
    QTest::newRow("invalid UTF-8") << QByteArray("\xff\xfe[]");
    QTest::newRow("zero byte") << QByteArray("[\0]", 3);
    QTest::newRow("escaped invalid UTF-8") << QByteArray("[{\"bssid\":\"\\\xc3\"}]");
    QTest::newRow("escaped outside ASCII") << QByteArray("[{\"bssid\":\"\\\xc3\xa9\"}]");
}

void TestWifiProviderScans::noResults()
{
    QFETCH(QByteArray, value);
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ScanEnd end(scan.get());
    LogCapture log(7);
    change("scan_results", raw(value));
    QCOMPARE(end.text(), QStringLiteral("success "));
    QVERIFY(scan->results().isEmpty());
    QVERIFY(!scan->hasError());
    QVERIFY(log.take().isEmpty());
}

void TestWifiProviderScans::manyResults()
{
    QByteArray value = "[";
    for (int i = 0; i < 5000; ++i)
        value += (i ? "," : "") + QByteArrayLiteral("{\"bssid\":\"ap") + QByteArray::number(i)
            + "\",\"signal_level\":\"-" + QByteArray::number(i) + "\",\"flags\":[\"WPA2-PSK-CCMP\",\"ESS\"]}";
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    change("scan_results", raw(value + ']'));
    QCOMPARE(scan->results().size(), 5000);
    for (int i = 0; i < 5000; ++i) {
        const WifiAccessPoint accessPoint = scan->results().at(i);
        QCOMPARE(accessPoint.bssid(), QStringLiteral("ap%1").arg(i));
        QCOMPARE(accessPoint.rssi(), -i);
        QCOMPARE(int(accessPoint.securityProtocols()), 0x8);
        QCOMPARE(accessPoint.serviceSet(), WifiServiceSetEss);
    }
}

void TestWifiProviderScans::succeedsFromTheEventLoop()
{
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    int heard = 0;
    QObject::connect(scan.get(), &AsyncWifiScanOperation::success, [&heard] { ++heard; });
    ZopDouble::answer(0); // this tells that it has begun
    runQueued();
    QCOMPARE(heard, 0);
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(heard, 0);
    const ScanEnd end(scan.get());
    QCOMPARE(end.text(), QStringLiteral("success a"));
    QCOMPARE(heard, 1);
}

void TestWifiProviderScans::replacesTheList()
{
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    WifiAccessPoint former;
    former.setBssid(QStringLiteral("former"));
    AsyncOperationWriter::setResult(*scan, former);
    change("scan_results", text(R"([{"bssid":"a"},{"bssid":"b"}])"));
    QCOMPARE(results(*scan), QStringList({unknown("a"), unknown("b")}));
}

void TestWifiProviderScans::allPendingScansSucceed()
{
    const WifiProviderFixture fixture;
    const ScanPointer first = fixture.scan();
    const ScanPointer second = fixture.scan();
    QCOMPARE(sent(), lines({"scan", "scan"}));
    QStringList order;
    QObject::connect(second.get(), &AsyncWifiScanOperation::success, [&order] { order.append("second"); });
    QObject::connect(first.get(), &AsyncWifiScanOperation::success, [&order] { order.append("first"); });
    change("scan_results", text(R"([{"bssid":"a"},{"bssid":"b"}])"));
    const ScanPointer third = fixture.scan();
    const ScanEnd thirdEnd(third.get());
    QCOMPARE(thirdEnd.text(), QString());
    QCOMPARE(order, lines({"first", "second"}));
    QCOMPARE(results(*first), QStringList({unknown("a"), unknown("b")}));
    QCOMPARE(results(*second), results(*first));
    change("scan_results", text(R"([{"bssid":"c"}])"));
    QCOMPARE(thirdEnd.text(), QStringLiteral("success c"));
    QCOMPARE(results(*first).size(), 2);
    QCOMPARE(order.size(), 2);
}

void TestWifiProviderScans::scanQueuedTwiceSucceedsTwice()
{
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    fixture.provider->scan(scan.get());
    const ScanEnd end(scan.get());
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(end.text(), QStringLiteral("success a / success a"));
}

void TestWifiProviderScans::oldResultsEndNoScan()
{
    WifiProviderZop provider;
    start({{QStringLiteral("scan_results"), text(R"([{"bssid":"old"}])")}});
    AsyncWifiScanOperation scan;
    const ScanEnd end(&scan);
    provider.scan(&scan);
    QCOMPARE(end.text(), QString());
    change("wifi_power", text("on"));
    change("last_event", text("CTRL-EVENT-SCAN-RESULTS"));
    removeAttribute("scan_results");
    QCOMPARE(end.text(), QString());
    change("scan_results", text(R"([{"bssid":"new"}])"));
    QCOMPARE(end.text(), QStringLiteral("success new"));
}

void TestWifiProviderScans::sameResultsAreResults()
{
    const WifiProviderFixture fixture;
    for (int i = 0; i < 2; ++i) {
        const ScanPointer scan = fixture.scan();
        const ScanEnd end(scan.get());
        change("scan_results", text(R"([{"bssid":"a"}])"));
        QCOMPARE(end.text(), QStringLiteral("success a"));
    }
}

void TestWifiProviderScans::unwantedResults()
{
    const WifiProviderFixture fixture;
    LogCapture log(2);
    change("scan_results", text(R"([{"bssid":"a","flags":["WPA"]}])"));
    QVERIFY(log.take().isEmpty());
    for (const int verbosity : {3, 7}) {
        KrelLogger::setVerbosity(verbosity);
        change("scan_results", text(R"([{"bssid":"a","flags":["WPA"]}])"));
        QCOMPARE(log.take(), lines({NotValid}));
    }
    QVERIFY(fixture.events->take().isEmpty());
}

void TestWifiProviderScans::invalidResultsEndNoScan()
{
    const WifiProviderFixture fixture;
    const ScanPointer scan = fixture.scan();
    const ScanEnd end(scan.get());
    LogCapture log(2);
    change("scan_results", ZopVariant());
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    change("scan_results", ZopVariant());
    QCOMPARE(log.take(), lines({NotValid}));
    removeAttribute("scan_results");
    QVERIFY(log.take().isEmpty());
    QCOMPARE(end.text(), QString());
    change("scan_results", text("[]"));
    QCOMPARE(end.text(), QStringLiteral("success "));
}

void TestWifiProviderScans::connectIsNotTouched()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ScanPointer scan = fixture.scan();
    const ConnectEnd end(operation.get());
    const ScanEnd scanEnd(scan.get());
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(scanEnd.text(), QStringLiteral("success a"));
    QCOMPARE(end.text(), QString());
    QVERIFY(!fixture.provider->connected());
    const ScanPointer second = fixture.scan();
    const ScanEnd secondEnd(second.get());
    fixture.provider->disconnectAccessPoint();
    change("wifi_status", connection());
    change("last_event", text("CTRL-EVENT-SSID-TEMP-DISABLED"));
    QCOMPARE(secondEnd.text(), QString());
}

void TestWifiProviderScans::deletedScans()
{
    const WifiProviderFixture fixture;
    fixture.scan().reset();
    const ScanPointer kept = fixture.scan();
    fixture.scan().reset();
    const ScanEnd end(kept.get());
    LogCapture log(7);
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(end.text(), QStringLiteral("success a"));
    // A deleted one still waits, so that its results are none of another client.
    fixture.scan().reset();
    change("scan_results", text("[]"));
    QVERIFY(log.take().isEmpty());
    change("scan_results", text("[]"));
    QCOMPARE(log.take(), lines({NotValid}));
}

void TestWifiProviderScans::scanDeletesAnother()
{
    const WifiProviderFixture fixture;
    const ScanPointer first = fixture.scan();
    ScanPointer second = fixture.scan();
    const ScanPointer third = fixture.scan();
    const ScanEnd secondEnd(second.get());
    const ScanEnd thirdEnd(third.get());
    QObject::connect(first.get(), &AsyncWifiScanOperation::success, [&second] { second.reset(); });
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(thirdEnd.text(), QStringLiteral("success a"));
    QVERIFY(!second);
    QCOMPARE(secondEnd.text(), QString());
}

void TestWifiProviderScans::scanStartsAnother()
{
    const WifiProviderFixture fixture;
    const ScanPointer first = fixture.scan();
    ScanPointer second;
    QObject::connect(first.get(), &AsyncWifiScanOperation::success, [&] { second = fixture.scan(); });
    change("scan_results", text("[]"));
    runQueued();
    QVERIFY(second);
    const ScanEnd end(second.get());
    QCOMPARE(end.text(), QString());
    QCOMPARE(sent(), lines({"scan", "scan"}));
    change("scan_results", text(R"([{"bssid":"a"}])"));
    QCOMPARE(end.text(), QStringLiteral("success a"));
}

QTEST_GUILESS_MAIN(TestWifiProviderScans)
#include "tst_wifiproviderscans.moc"
