// SPDX-License-Identifier: Apache-2.0
#include "wifirequest.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! The client's update; single quotes in \a dat stand for double ones. */
ZopChangeset makeRequest(const char *message, const QString &dat)
{
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("msg"), QString::fromUtf8(message));
    changes.assignments.insert(QStringLiteral("id"), 17);
    changes.assignments.insert(QStringLiteral("peer"), QStringLiteral("client-3"));
    if (!dat.isNull())
        changes.assignments.insert(QStringLiteral("dat"), QString(dat).replace(QLatin1Char('\''), QLatin1Char('"')));
    return changes;
}

WifiRequest read(const char *message, const char *dat)
{
    return WifiRequest::read(makeRequest(message, QString::fromUtf8(dat)));
}

} // namespace

class WifiRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void power();
    void withoutPayload();
    void newNetworkWithAPasskey();
    void newOpenNetwork();
    void limitsOfNames();
    void selectNetwork();
    void refusals_data();
    void refusals();
    void neverShowsAPasskey_data();
    void neverShowsAPasskey();
};

void WifiRequestTest::power()
{
    const WifiRequest on = read("wifi_power", "on");
    QCOMPARE(on.refusal.code, 0);
    QCOMPARE(on.kind, WifiRequest::Power);
    QVERIFY(on.power);
    QCOMPARE(on.id, ZopVariant(17));
    QCOMPARE(on.peer, ZopVariant(QStringLiteral("client-3")));
    QCOMPARE(on.toString(), QStringLiteral("wifi_power id=17 on"));
    const WifiRequest off = read("wifi_power", "off");
    QCOMPARE(off.refusal.code, 0);
    QVERIFY(!off.power);
    QCOMPARE(off.toString(), QStringLiteral("wifi_power id=17 off"));
}

void WifiRequestTest::withoutPayload()
{
    for (const char *dat : {static_cast<const char *>(nullptr), ""}) {
        const WifiRequest scan = read("scan", dat);
        QCOMPARE(scan.refusal.code, 0);
        QCOMPARE(scan.kind, WifiRequest::Scan);
        QCOMPARE(scan.toString(), QStringLiteral("scan id=17"));
        const WifiRequest disableAll = read("wnet_disableall", dat);
        QCOMPARE(disableAll.refusal.code, 0);
        QCOMPARE(disableAll.kind, WifiRequest::DisableAll);
        QCOMPARE(disableAll.toString(), QStringLiteral("wnet_disableall id=17"));
    }
}

void WifiRequestTest::newNetworkWithAPasskey()
{
    const WifiRequest request = read("wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}");
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.kind, WifiRequest::NewNetwork);
    QCOMPARE(request.message, QStringLiteral("wnet_new"));
    QCOMPARE(request.network.ssid, QStringLiteral("Garage"));
    QCOMPARE(request.network.passkey, QStringLiteral("open sesame 42"));
    QCOMPARE(request.toString(), QStringLiteral("wnet_new id=17 \"Garage\" WPA-PSK"));
}

void WifiRequestTest::newOpenNetwork()
{
    const WifiRequest request = read("wnet_new", "{'key_mgmt':'NONE','ssid':'two\\nlines'}");
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.network.ssid, QStringLiteral("two\nlines"));
    QCOMPARE(request.network.passkey, QString());
    QCOMPARE(request.toString(), QStringLiteral("wnet_new id=17 \"two\\x0alines\" NONE"));
}

void WifiRequestTest::limitsOfNames()
{
    const auto codeOf = [](const QString &ssid) {
        return WifiRequest::read(makeRequest("wnet_new", QStringLiteral("{'ssid':'%1','key_mgmt':'NONE'}").arg(ssid)))
            .refusal.code;
    };
    QCOMPARE(codeOf(QString()), 4);
    QCOMPARE(codeOf(QStringLiteral("x")), 0);
    QCOMPARE(codeOf(QString(32, QLatin1Char('x'))), 0);
    QCOMPARE(codeOf(QString(33, QLatin1Char('x'))), 4);
    QCOMPARE(codeOf(QString(16, QChar(0xe9))), 0);
    QCOMPARE(codeOf(QString(17, QChar(0xe9))), 4);
}

void WifiRequestTest::selectNetwork()
{
    const WifiRequest request = read("wnet_select", "3");
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.kind, WifiRequest::SelectNetwork);
    QCOMPARE(request.identifier, QStringLiteral("3"));
    QCOMPARE(request.toString(), QStringLiteral("wnet_select id=17 3"));
    // What a client sends after its new network was refused is for the radio to judge.
    QCOMPARE(read("wnet_select", "").refusal.code, 0);
}

void WifiRequestTest::refusals_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, const char *message, const char *dat, int code, const char *text) {
        QTest::addRow("%s", name) << QByteArray(message) << QByteArray(dat) << code << text;
    };
    const auto network = [&row](const char *name, const char *dat, int code, const char *text) {
        row(name, "wnet_new", dat, code, text);
    };
    row("message", "wnet_explode", "", 1, "unknown message \"wnet_explode\"");
    row("another daemon's", "net_connected", "['eth0',{'manual':'no'}]", 1, "unknown message \"net_connected\"");
    row("power: none", "wifi_power", "", 2, "dat must be on or off");
    row("power: capital", "wifi_power", "On", 2, "dat must be on or off");
    row("power: JSON", "wifi_power", "'on'", 2, "dat must be on or off");
    row("scan", "scan", "all", 2, "scan takes no dat");
    row("disable", "wnet_disableall", "0", 2, "wnet_disableall takes no dat");

    const char noObject[] = "dat must be {\"ssid\", \"key_mgmt\"}";
    network("new: none", "", 2, noObject);
    network("new: no JSON", "Garage", 2, noObject);
    network("new: cut off", "{'ssid':'Garage','key_mgmt':'NONE'", 2, noObject);
    network("new: array", "[{'ssid':'Garage','key_mgmt':'NONE'}]", 2, noObject);
    network("new: unknown member", "{'ssid':'Garage','key_mgmt':'NONE','wep_key0':'x'}", 2,
            "dat must hold nothing but \"ssid\", \"key_mgmt\" and \"psk\"");
    network("new: no ssid", "{'key_mgmt':'NONE'}", 2, "\"ssid\" is missing");
    network("new: no key_mgmt", "{'ssid':'Garage'}", 2, "\"key_mgmt\" is missing");
    network("new: ssid is a number", "{'ssid':7,'key_mgmt':'NONE'}", 2, "\"ssid\" is not a text");
    network("new: psk is a number", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':12345678}", 2,
            "\"psk\" is not a text");
    network("new: enterprise", "{'ssid':'Garage','key_mgmt':'WPA-EAP'}", 2, "\"key_mgmt\" must be NONE or WPA-PSK");
    network("new: other token", "{'ssid':'Garage','key_mgmt':'WPA2-PSK','psk':'12345678'}", 2,
            "\"key_mgmt\" must be NONE or WPA-PSK");
    network("new: open with a psk", "{'ssid':'Garage','key_mgmt':'NONE','psk':'12345678'}", 2,
            "\"psk\" is only for WPA-PSK");

    network("new: empty ssid", "{'ssid':'','key_mgmt':'NONE'}", 4, "\"ssid\" must have 1 to 32 bytes");
    network("new: no psk", "{'ssid':'Garage','key_mgmt':'WPA-PSK'}", 4, "WPA-PSK needs \"psk\"");
    const char noPasskey[] = "\"psk\" must be 8 to 63 ASCII characters or 64 hexadecimal digits";
    network("new: empty psk", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':''}", 4, noPasskey);
    network("new: short psk", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'1234567'}", 4, noPasskey);
    network("new: psk outside ASCII", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'caf\xc3\xa9 au lait'}", 4,
            noPasskey);
}

void WifiRequestTest::refusals()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    const WifiRequest request = read(message.constData(), dat.constData());
    QTEST(request.refusal.text, "text");
    QTEST(request.refusal.code, "code");
}

void WifiRequestTest::neverShowsAPasskey_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QString>("line");

    const auto row = [](const char *name, const char *message, const char *dat, const char *line) {
        QTest::addRow("%s", name) << QByteArray(message) << QByteArray(dat) << line;
    };
    row("right", "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'TopSecret'}",
        "wnet_new id=17 \"Garage\" WPA-PSK");
    row("refused", "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-EAP','psk':'TopSecret'}", "wnet_new id=17 \"Garage\"");
    row("outside ASCII", "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'TopSecret\xc3\xa9'}",
        "wnet_new id=17 \"Garage\"");
    row("of an open one", "wnet_new", "{'ssid':'Garage','key_mgmt':'NONE','psk':'TopSecret'}",
        "wnet_new id=17 \"Garage\"");
    row("as a key", "wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','TopSecret':'psk'}",
        "wnet_new id=17 \"Garage\"");
    row("as key management", "wnet_new", "{'ssid':'Garage','key_mgmt':'TopSecret'}", "wnet_new id=17 \"Garage\"");
    row("broken", "wnet_new", "{'ssid':'Garage','psk':'TopSecret'", "wnet_new id=17");
    row("as an identifier", "wnet_select", "TopSecret", "wnet_select id=17");
    row("as an identifier, short", "wnet_select", "Secret78", "wnet_select id=17");
    row("as power", "wifi_power", "TopSecret", "wifi_power id=17");
    row("with a scan", "scan", "TopSecret", "scan id=17");
}

void WifiRequestTest::neverShowsAPasskey()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    const WifiRequest request = read(message.constData(), dat.constData());
    QTEST(request.toString(), "line");
    QVERIFY2(!request.refusal.text.contains(QStringLiteral("Secret")), qPrintable(request.refusal.text));
}

QTEST_GUILESS_MAIN(WifiRequestTest)
#include "tst_wifirequest.moc"
