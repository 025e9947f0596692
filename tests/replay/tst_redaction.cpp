// SPDX-License-Identifier: Apache-2.0
#include "redaction.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QString Eth0 = QStringLiteral("/zop/services/networking/all/interfaces/eth0");
const QString Wifi = QStringLiteral("/zop/services/wifi/status");

/*! What becomes of \a text, the value of \a attribute; "(nothing)" when it is left out. */
QString redacted(Redaction *redaction, const char *attribute, const QByteArray &text)
{
    RecordedEvent event;
    event.kind = RecordedEvent::Updated;
    event.object = Wifi;
    event.changes.assignments.insert(QLatin1String(attribute), ZopVariant(text, "text"));
    if (!redaction->apply(&event))
        return QStringLiteral("(nothing)");
    return event.changes.assignments.value(QLatin1String(attribute)).toString();
}

} // namespace

class RedactionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data();
    void values();
    void networksStayNetworks_data();
    void networksStayNetworks();
    void theSameForTheSame();
    void objects_data();
    void objects();
    void leavesOutWhatNobodyKnows();
    void manyAddressesOfOneNetworkDiffer_data();
    void manyAddressesOfOneNetworkDiffer();
    void manyNetworksDiffer_data();
    void manyNetworksDiffer();
    void longTexts();
};

void RedactionTest::values_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *attribute, const char *text, const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(attribute) << QByteArray(text) << QString::fromUtf8(expected);
    };
    row("word", "connected", "true", "true");
    row("number", "mtu", "1500", "1500");
    row("no word", "type", "Home", "?");
    row("state", "state", "INACTIVE", "INACTIVE");
    row("unknown attribute", "hostname", "Home", "(nothing)");
    row("hardware address", "link_address", "02:00:5E:10:00:01", "06:00:00:00:00:01");
    row("no hardware address", "link_address", "Home", "?");
    row("no address at all", "link_address", "", "");
    row("broadcast", "link_address", "ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:ff");
    row("other separators", "link_address", "00-11-22-33-44-55", "06-00-00-00-00-01");
    row("usual interface", "default_interface", "wlan0", "wlan0");
    row("none", "default_interface", "", "");
    row("a person's interface", "parent_interface", "wg-peter", "interface1");
    row("interface named after its address", "default_interface", "enx00112233445a", "enx060000000001");
    row("ranking", "priority", "[\"eth0\",\"home\",\"wlp2s0\",7]", "[\"eth0\",\"interface1\",\"wlp2s0\",null]");
    row("no ranking", "priority", "[\"home\"", "?");
    row("addresses", "ip_addresses",
        "[\"fe80::1122:33ff:fe44:5566/64\",\"10.1.2.3/255.0.0.0\",\"Home\",\"10.1.2.3/255.0.255.0\"]",
        "[\"fe80::1/64\",\"192.0.2.1/255.0.0.0\",\"?\",\"?\"]");
    row("prefixes", "ip_addresses", "[\"2a01:1:2:3::4/64\",\"10.1.2.3/8\",\"10.1.2.3/33\",\"10.1.2.4/08\"]",
        "[\"2001:db8::1/64\",\"192.0.2.1/8\",\"?\",\"?\"]");
    row("an address and more", "ip_gateway", R"(["10.1.2.3\u0000Home","10.1.2.3/255.0.0.0\u0000Home","10.1.2.3 "])",
        R"(["?","?","?"])");
    const char *common = R"(["0.0.0.0","255.255.255.255","127.0.0.1","127.9.9.9","::1","::",""])";
    row("addresses that are everybody's", "ip_gateway", common, common);
    const char *hidden = R"([{"ssid":"\u0000\u0000"}])";
    row("a name that is hidden", "scan_results", hidden, hidden);
    row("a name that is cut off", "last_event", "ssid=\"Home", "ssid=??");
    row("status", "wifi_status",
        "{\"bssid\":\"02:00:00:00:20:01\",\"ssid\":\"Home\",\"key_mgmt\":\"WPA2-PSK\",\"pairwise_cipher\":\"CCMP\","
        "\"owner\":\"Peter\"}",
        "{\"bssid\":\"06:00:00:00:00:01\",\"key_mgmt\":\"WPA2-PSK\",\"pairwise_cipher\":\"CCMP\",\"ssid\":\"network-"
        "1\"}");
    row("no status", "wifi_status", "Home", "?");
    row("results", "scan_results",
        "[{\"bssid\":\"02:00:00:00:20:01\",\"ssid\":\"Home\",\"frequency\":\"2412\",\"signal_level\":-48,"
        "\"flags\":[\"WPA2-PSK+SAE-CCMP\",\"ESS\",\"HOME\"]},"
        "{\"bssid\":\"Home\",\"ssid\":\"\",\"frequency\":\"Home\"},{\"ssid\":\"Home\"},{\"ssid\":\"Caf\u00e9\"},"
        "\"Home\"]",
        "[{\"bssid\":\"06:00:00:00:00:01\",\"flags\":[\"WPA2-PSK+SAE-CCMP\",\"ESS\",\"?\"],\"frequency\":\"2412\","
        "\"signal_level\":-48,\"ssid\":\"network-1\"},{\"bssid\":\"?\",\"frequency\":\"?\",\"ssid\":\"\"},"
        "{\"ssid\":\"network-1\"},{\"ssid\":\"network-2\"},null]");
    row("event", "last_event", "CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:20:01 completed [id=0 id_str=]",
        "CTRL-EVENT-CONNECTED - Connection to 06:00:00:00:00:01 completed [id=0 id_str=]");
    row("event with a name", "last_event",
        "CTRL-EVENT-SSID-TEMP-DISABLED id=12 ssid=\"My \\\"Home\\\" 1\" auth_failures=1 duration=10 reason=WRONG_KEY",
        "CTRL-EVENT-SSID-TEMP-DISABLED id=12 ssid=\"network-1\" auth_failures=1 duration=10 reason=WRONG_KEY");
    row("event of anything", "last_event", "Trying 'Home' Peter 192.168.1.1 2412 HOME-1 ssid=Home",
        "? 'network-1' ? ? ? ? ssid=?");
    row("event with names that are none", "last_event", "ssid=\"\" 'Home\\'", "ssid=\"\" 'network-1'");
    row("its end is blank", "last_event", "CTRL-EVENT-SCAN-RESULTS ", "CTRL-EVENT-SCAN-RESULTS ");
}

void RedactionTest::values()
{
    QFETCH(QString, attribute);
    QFETCH(QByteArray, text);
    Redaction redaction;
    QTEST(redacted(&redaction, attribute.toLatin1().constData(), text), "expected");
}

void RedactionTest::networksStayNetworks_data()
{
    QTest::addColumn<QByteArray>("addresses");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *addresses, const char *expected) {
        QTest::newRow(name) << QByteArray(addresses) << QString::fromUtf8(expected);
    };
    row("one network", R"(["192.168.1.40/255.255.255.0","192.168.1.1"])", R"(["192.0.2.1/255.255.255.0","192.0.2.2"])");
    row("two networks", R"(["192.168.1.40/24","192.168.2.40/24"])", R"(["192.0.2.1/24","198.51.100.1/24"])");
    row("a wide one", R"(["10.20.0.40/16","10.20.7.1/16","10.21.0.1/16"])",
        R"(["192.0.2.1/16","192.0.2.2/16","198.51.100.1/16"])");
    row("without netmasks", R"(["10.1.2.3","10.2.3.4"])", R"(["192.0.2.1","198.51.100.1"])");
    row("everything", R"(["10.1.2.3/0"])", R"(["192.0.2.1/0"])");
    row("small ones", R"(["100.64.3.10/30","100.64.3.9","100.64.3.13/30"])",
        R"(["192.0.2.2/30","192.0.2.1","198.51.100.1/30"])");
    row("a wide one beside small ones", R"(["10.0.0.1/24","10.0.1.1/24","10.0.2.1/24","10.0.3.1/24","10.1.0.1/16"])",
        R"(["192.0.2.1/24","198.51.100.1/24","203.0.113.1/24","198.18.0.1/24","198.19.0.1/16"])");
    row("four", R"(["10.0.0.1/24","10.0.1.1/24","10.0.2.1/24","10.0.3.1/24"])",
        R"(["192.0.2.1/24","198.51.100.1/24","203.0.113.1/24","198.18.0.1/24"])");
    row("a gateway before its network is known", R"(["10.20.7.1","10.20.0.40/16","10.20.0.41/16"])",
        R"(["192.0.2.1","192.0.2.2/16","192.0.2.3/16"])");
    row("it has one of ours already", R"(["192.0.2.7/24"])", R"(["198.51.100.1/24"])");
    row("it is wide from then on", R"(["10.20.7.1","10.20.0.40/16","10.20.9.1"])",
        R"(["192.0.2.1","192.0.2.2/16","192.0.2.3"])");
    row("a small one that is wide", R"(["10.0.0.1/30","10.0.0.9/24"])", R"(["192.0.2.1/30","192.0.2.2/24"])");
    row("a small one stays so", R"(["10.0.0.1/30","10.0.0.9"])", R"(["192.0.2.1/30","198.51.100.1"])");
    row("the least that is small", R"(["10.0.0.70/25"])", R"(["192.0.2.70/25"])");
    row("of one address", R"(["10.1.2.3/32","10.1.2.4/33"])", R"(["192.0.2.0/32","?"])");
    row("none is wider", R"(["10.1.2.3/4","10.200.0.1","11.1.2.3"])", R"(["192.0.2.1/4","192.0.2.2","198.51.100.1"])");
    row("the same bits in the other family", R"(["a01:203::1/32","10.1.2.3"])", R"(["2001:db8::1/32","192.0.2.1"])");
    row("IPv6 without netmasks", R"(["2a01:0:0:2::1","2a01:0:0:3::1"])", R"(["2001:db8::1","2001:db8:8000::1"])");
    row("link", R"(["169.254.12.7/16","fe80::211:22ff:fe33:4455/64","fe80::2","febf::7"])",
        R"(["169.254.0.1/16","fe80::1/64","fe80::3","fe80::4"])");
    row("beside the link", R"(["169.255.12.7/16","fec0::7"])", R"(["192.0.2.1/16","2001:db8::1"])");
    row("IPv6", R"(["2a01:1::1/64","2a01:1::2/64","2a01:2::1/64","fd00::1/48"])",
        R"(["2001:db8::1/64","2001:db8::2/64","2001:db8:8000::1/64","2001:db8:4000::1/48"])");
}

void RedactionTest::networksStayNetworks()
{
    QFETCH(QByteArray, addresses);
    Redaction redaction;
    QTEST(redacted(&redaction, "ip_addresses", addresses), "expected");
}

void RedactionTest::theSameForTheSame()
{
    Redaction redaction;
    const auto take = [&redaction](const char *attribute, const char *text) {
        return redacted(&redaction, attribute, text);
    };
    QCOMPARE(take("ip_addresses", "[\"10.0.0.9/24\"]"), QStringLiteral("[\"192.0.2.1/24\"]"));
    QCOMPARE(take("ip_gateway", "[\"10.0.0.1\",\"10.0.0.9\"]"), QStringLiteral("[\"192.0.2.2\",\"192.0.2.1\"]"));
    QCOMPARE(take("wifi_status", "{\"ssid\":\"a\",\"bssid\":\"00:00:00:00:00:0a\"}"),
             QStringLiteral("{\"bssid\":\"06:00:00:00:00:01\",\"ssid\":\"network-1\"}"));
    QCOMPARE(take("last_event", "ssid=\"b\" 00:00:00:00:00:0B ssid=\"\\x61\" 00:00:00:00:00:0A"),
             QStringLiteral("ssid=\"network-2\" 06:00:00:00:00:02 ssid=\"network-1\" 06:00:00:00:00:01"));
    // However they are written.
    QCOMPARE(take("last_event", R"(ssid="ab" ssid="\x61b" ssid="x6" ssid="\x6")"),
             QStringLiteral("ssid=\"network-3\" ssid=\"network-3\" ssid=\"network-4\" ssid=\"network-4\""));
    QCOMPARE(take("last_event", R"('c\' ssid="c\\")"), QStringLiteral("'network-5' ssid=\"network-5\""));
    QString last;
    for (int i = 0x10; i < 0x2e; ++i)
        last = take("link_address", qPrintable(QStringLiteral("00:00:00:00:01:%1").arg(i, 0, 16)));
    QCOMPARE(last, QStringLiteral("06:00:00:00:00:20"));
    QCOMPARE(take("priority", "[\"x\",\"y\",\"x\"]"), QStringLiteral("[\"interface1\",\"interface2\",\"interface1\"]"));
}

void RedactionTest::objects_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    const QString interfaces = Eth0.chopped(4);
    for (const QString &known : {Eth0, Wifi, QStringLiteral("/zop/services/networking/all/status_public"),
                                 QStringLiteral("/zop/services/tethering/status")})
        QTest::newRow(qPrintable(known)) << known << known;
    QTest::newRow("a person's") << interfaces + QStringLiteral("wg-peter") << interfaces + QStringLiteral("interface1");
    QTest::newRow("of others") << QStringLiteral("/zop/services/home/peter") << QString();
}

void RedactionTest::objects()
{
    QFETCH(QString, path);
    QFETCH(QString, expected);
    RecordedEvent event;
    event.kind = RecordedEvent::Gone;
    event.object = path;
    Redaction redaction;
    QCOMPARE(redaction.apply(&event), !expected.isEmpty());
    QCOMPARE(event.object, expected);
}

void RedactionTest::leavesOutWhatNobodyKnows()
{
    RecordedEvent event;
    event.kind = RecordedEvent::Updated;
    event.object = Eth0;
    event.changes.assignments.insert(QStringLiteral("peter"), 1);
    event.changes.assignments.insert(QStringLiteral("mtu"), ZopVariant(QByteArray("1\xff"), "Home"));
    event.changes.removals = {QStringLiteral("peter"), QStringLiteral("link_address")};
    Redaction redaction;
    QVERIFY(redaction.apply(&event));
    QCOMPARE(event.changes.assignments.keys(), QStringList {QStringLiteral("mtu")});
    QCOMPARE(event.changes.assignments.first(), ZopVariant(QByteArray("?"), "?"));
    QCOMPARE(event.changes.removals, QSet<QString> {QStringLiteral("link_address")});
    event.changes.assignments.clear();
    QVERIFY(redaction.apply(&event));
    event.changes = {};
    QVERIFY(!redaction.apply(&event));
    event.kind = RecordedEvent::Created;
    QVERIFY(redaction.apply(&event));
}

void RedactionTest::manyAddressesOfOneNetworkDiffer_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("last");
    QTest::newRow("IPv4") << "10.0.0.%1" << 254 << "192.0.2.254";
    QTest::newRow("IPv6") << "2a01::%1" << 300 << "2001:db8::12c";
}

void RedactionTest::manyAddressesOfOneNetworkDiffer()
{
    QFETCH(QString, form);
    QFETCH(int, number);
    AddressRedaction redaction;
    QSet<QString> all;
    for (int i = 1; i < number; ++i)
        all += redaction.replace(form.arg(number - i));
    const QString last = redaction.replace(form.arg(number));
    QCOMPARE(all.size(), number - 1);
    QVERIFY(!all.contains(last));
    QTEST(last, "last");
}

void RedactionTest::manyNetworksDiffer_data()
{
    QTest::addColumn<QString>("form");
    QTest::newRow("IPv4") << "10.%1.%2.1/24";
    QTest::newRow("IPv6") << "2a01:%1:%2::1/64";
}

void RedactionTest::manyNetworksDiffer()
{
    QFETCH(QString, form);
    AddressRedaction redaction;
    QSet<QString> all;
    for (int i = 0; i < 512; ++i)
        all += redaction.replace(form.arg(i / 250).arg(i % 250));
    QCOMPARE(all.size(), 512);
    // When all are used up it goes on nevertheless.
    QVERIFY(!redaction.replace(form.arg(9).arg(9)).isEmpty());
}

/*! What is known stays, and what is not goes, both at once. */
void RedactionTest::longTexts()
{
    const QByteArray words = QByteArray("[WPA2-").repeated(10000);
    Redaction redaction;
    QCOMPARE(redacted(&redaction, "wifi_status", "{\"key_mgmt\":\"" + words + "\"}"),
             QStringLiteral("{\"key_mgmt\":\"%1\"}").arg(QLatin1String(words)));
    QCOMPARE(redacted(&redaction, "wifi_status", "{\"key_mgmt\":\"" + words + "Home\"}"),
             QStringLiteral("{\"key_mgmt\":\"?\"}"));
}

QTEST_APPLESS_MAIN(RedactionTest)

#include "tst_redaction.moc"
