// SPDX-License-Identifier: Apache-2.0
#include "json.h"
#include "scenariofiles.h"
#include "scenarioreader.h"
#include "scenariowarnings.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

class ScenarioReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallest();
    void everyKey();
    void values();
    void eventsAreOrderedByTime();
    void circularParentsWhenAskedFor();
    void namesItsSchema();
    void syntaxErrors_data();
    void syntaxErrors();
    void duplicateKeys_data();
    void duplicateKeys();
    void addresses_data();
    void addresses();
    void errors_data();
    void errors();
    void shippedScenarios();
    void documentedExample();
    void files();
    void fileErrors();
};

void ScenarioReaderTest::smallest()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(json("{'interfaces':[{'name':'eth0','type':'wired'}]}"), &scenario, &error),
             qPrintable(error));
    QCOMPARE(scenario.interfaces.size(), 1);
    const ScenarioInterface &eth0 = scenario.interfaces.first();
    QCOMPARE(eth0.name, QStringLiteral("eth0"));
    QCOMPARE(eth0.type, QStringLiteral("wired"));
    QVERIFY(eth0.present && eth0.up && !eth0.connected && !eth0.manual);
    QCOMPARE(scenario.priority, QStringList {QStringLiteral("eth0")});
    QVERIFY(!scenario.pinsDefault);
    QCOMPARE(scenario.seed, 1u);
    QVERIFY(scenario.timeline.isEmpty() && scenario.faults.isEmpty());
}

void ScenarioReaderTest::everyKey()
{
    const QByteArray text = json(R"({
        'description': 'all', 'seed': 99, 'allow_circular_parents': false,
        'delays': {'reply': 5, 'release': [10, 20], 'manual': [0, 0], 'lease': 86400000},
        'interfaces': [
            {'name': 'a', 'type': 'cellular', 'link_address': '02:00:00:00:00:0A', 'mtu': 1430, 'present': true,
             'up': true, 'connected': true,
             'lease': {'ip_addresses': ['fe80::1/64', '10.0.0.5/255.0.0.0'], 'ip_gateway': ['10.0.0.1']}},
            {'name': 'b', 'type': 'vpn', 'parent_interface': 'a', 'present': false,
             'manual': {'ip_addresses': ['10.8.0.6/24']}}],
        'priority': ['b', 'a'], 'default_interface': 'b',
        'timeline': [
            {'at': 0, 'event': 'appear', 'interface': 'b'},
            {'at': 1, 'event': 'link-lost', 'interface': 'a'},
            {'at': 2, 'event': 'link-regained', 'interface': 'a'},
            {'at': 3, 'event': 'set', 'interface': 'a', 'attributes': {'mtu': 1}},
            {'at': 4, 'event': 'remove', 'object': 'status_public', 'attributes': ['priority']},
            {'at': 5, 'event': 'default', 'interface': ''},
            {'at': 6, 'event': 'default-follows'},
            {'at': 7, 'event': 'priority', 'order': ['a']},
            {'at': 8, 'event': 'daemon-dies', 'back_after': 100},
            {'at': 9, 'event': 'vanish', 'interface': 'b'}],
        'faults': [
            {'fault': 'refuse', 'message': 'net_connected', 'interface': 'a', 'err': 5, 'errmsg': 'no', 'times': 2, 'skip': 1},
            {'fault': 'no-reply', 'performs': true},
            {'fault': 'late', 'delay': 300},
            {'fault': 'double'},
            {'fault': 'die', 'back_after': 50}]
    })");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));

    QCOMPARE(scenario.description, QStringLiteral("all"));
    QCOMPARE(scenario.seed, 99u);
    QCOMPARE(scenario.delays.reply.from, 5);
    QCOMPARE(scenario.delays.reply.to, 5);
    QCOMPARE(scenario.delays.release.from, 10);
    QCOMPARE(scenario.delays.release.to, 20);
    QCOMPARE(scenario.delays.lease.to, 86400000);
    QCOMPARE(scenario.priority, QStringList({QStringLiteral("b"), QStringLiteral("a")}));
    QVERIFY(scenario.pinsDefault);
    QCOMPARE(scenario.defaultInterface, QStringLiteral("b"));

    const ScenarioInterface &a = scenario.interfaces.at(0);
    QCOMPARE(a.linkAddress, QStringLiteral("02:00:00:00:00:0A"));
    QCOMPARE(a.mtu, 1430);
    QVERIFY(a.connected);
    QCOMPARE(a.lease.addresses, QStringList({QStringLiteral("fe80::1/64"), QStringLiteral("10.0.0.5/255.0.0.0")}));
    QCOMPARE(a.lease.gateways, QStringList {QStringLiteral("10.0.0.1")});
    const ScenarioInterface &b = scenario.interfaces.at(1);
    QVERIFY(b.manual && !b.present);
    QCOMPARE(b.parent, QStringLiteral("a"));
    QCOMPARE(b.given.addresses, QStringList {QStringLiteral("10.8.0.6/255.255.255.0")});

    QCOMPARE(scenario.timeline.size(), 10);
    QCOMPARE(scenario.timeline.at(0).text, QStringLiteral("appear b"));
    QCOMPARE(scenario.timeline.at(4).changes.removals, QSet<QString> {QStringLiteral("priority")});
    QCOMPARE(scenario.timeline.at(4).interface, QString());
    QCOMPARE(scenario.timeline.at(7).order, QStringList {QStringLiteral("a")});
    QCOMPARE(scenario.timeline.at(8).backAfter, 100);

    QCOMPARE(scenario.faults.size(), 5);
    QCOMPARE(scenario.faults.at(0).kind, Fault::Refuse);
    QCOMPARE(scenario.faults.at(0).code, 5);
    QCOMPARE(scenario.faults.at(0).text, QStringLiteral("no"));
    QCOMPARE(scenario.faults.at(0).times, 2);
    QCOMPARE(scenario.faults.at(0).skip, 1);
    QVERIFY(scenario.faults.at(1).performs);
    QCOMPARE(scenario.faults.at(2).delay, 300);
    QCOMPARE(scenario.faults.at(3).kind, Fault::Double);
    QCOMPARE(scenario.faults.at(4).backAfter, 50);
}

void ScenarioReaderTest::values()
{
    const QByteArray text = json(R"({'interfaces': [{'name': 'a', 'type': 'wifi'}], 'timeline': [
        {'at': 0, 'event': 'set', 'interface': 'a', 'attributes': {
            'text': 'yes', 'true': true, 'false': false, 'number': -7, 'list': ['x', 1],
            'broken': {'encoding': 'json', 'text': '[1,'}, 'plain': {'text': 't'}, 'bytes': {'base64': 'AP+A'}}}]})");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));
    const auto values = scenario.timeline.first().changes.assignments;
    QCOMPARE(values.size(), 8);
    QCOMPARE(values.value(QStringLiteral("text")), ZopVariant("yes", "text"));
    QCOMPARE(values.value(QStringLiteral("true")), ZopVariant("true", "text"));
    QCOMPARE(values.value(QStringLiteral("false")), ZopVariant("false", "text"));
    QCOMPARE(values.value(QStringLiteral("number")), ZopVariant("-7", "number"));
    QCOMPARE(values.value(QStringLiteral("list")), ZopVariant("[\"x\",1]", "json"));
    QCOMPARE(values.value(QStringLiteral("broken")), ZopVariant("[1,", "json"));
    QCOMPARE(values.value(QStringLiteral("plain")), ZopVariant("t", "text"));
    QCOMPARE(values.value(QStringLiteral("bytes")), ZopVariant(QByteArray("\0\xff\x80", 3), "text"));
}

void ScenarioReaderTest::eventsAreOrderedByTime()
{
    const QByteArray text = json(R"({'interfaces': [{'name': 'a', 'type': 'wifi'}], 'timeline': [
        {'at': 20, 'event': 'vanish', 'interface': 'a'},
        {'at': 10, 'event': 'link-lost', 'interface': 'a'},
        {'at': 20, 'event': 'appear', 'interface': 'a'},
        {'at': 5, 'event': 'default-follows'}]})");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));
    QStringList order;
    for (const TimelineEvent &event : qAsConst(scenario.timeline))
        order += event.text;
    QCOMPARE(order,
             QStringList({QStringLiteral("default-follows"), QStringLiteral("link-lost a"), QStringLiteral("vanish a"),
                          QStringLiteral("appear a")}));
}

void ScenarioReaderTest::circularParentsWhenAskedFor()
{
    const QByteArray text = json(R"({'allow_circular_parents': true, 'interfaces': [
        {'name': 'a', 'type': 'vpn', 'parent_interface': 'b'}, {'name': 'b', 'type': 'vpn', 'parent_interface': 'a'}]})");
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(text, &scenario, &error), qPrintable(error));
}

void ScenarioReaderTest::syntaxErrors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("place");

    QTest::addRow("empty") << QByteArray() << "line 1, column 1: ";
    QTest::addRow("comma") << json("{\n  'interfaces': [,]\n}") << "line 2, column 18: ";
    QTest::addRow("no comma") << json("{\n  'interfaces': []\n  'seed': 1\n}") << "line 3, column 3: ";
    QTest::addRow("no quotes") << json("{\n  'interfaces': [],\n\n  seed: 1\n}") << "line 4, column 3: ";
    QTest::addRow("behind umlauts") << json("{\n  '\xc3\xa4\xc3\xb6': ,\n}") << "line 2, column 9: ";
    QTest::addRow("open") << json("{\n  'interfaces': [") << "line 2, column 17: ";
    QTest::addRow("garbage behind") << json("{\n}\nx") << "line 3, column 1: ";
    QTest::addRow("deep") << QByteArray(2000, '[') << "line 1, column 1025: ";
}

void ScenarioReaderTest::syntaxErrors()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, place);
    Scenario scenario;
    QString error;
    QVERIFY(!readScenario(text, &scenario, &error));
    QVERIFY2(error.startsWith(place), qPrintable(error));
    QVERIFY(error.size() > place.size());
}

void ScenarioReaderTest::namesItsSchema()
{
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(json("{'$schema':'any','interfaces':[]}"), &scenario, &error), qPrintable(error));
}

void ScenarioReaderTest::duplicateKeys_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QByteArray &text, const char *expected) {
        QTest::addRow("%s", name) << text << QString::fromUtf8(expected);
    };
    row("top", json("{'interfaces':[],\n 'seed':1, 'seed':1}"), "line 2, column 12: a second \"seed\"");
    row("behind umlauts", json("{'interfaces':[],'description':'\xc3\xa4\xc3\xb6','seed':1,'seed':1}"),
        "line 1, column 46: a second \"seed\"");
    row("blanks before the colon", json("{'interfaces':[],'seed':1,'seed' \t\r\n:1}"),
        "line 1, column 27: a second \"seed\"");
    row("escaped", json("{'interfaces':[],'seed':1,'\\u0073\\u0065ed':1}"), "line 1, column 27: a second \"seed\"");
    row("escaped first", json("{'interfaces':[],'s\\u0065ed':1,'seed':1}"), "line 1, column 32: a second \"seed\"");
    row("in an array", json("{'interfaces':[{'name':'a','type':'usb'},{'name':'b','type':'usb','name':'b'}]}"),
        "line 1, column 67: a second \"name\"");
    row("nested",
        json("{'interfaces':[{'name':'a','type':'usb','lease':{'ip_gateway':[],'ip_addresses':[],'ip_gateway':[]}}]}"),
        "line 1, column 84: a second \"ip_gateway\"");
    row("behind what is nested", json("{'interfaces':[{'name':'a','type':'usb'}],'delays':{},'interfaces':[]}"),
        "line 1, column 55: a second \"interfaces\"");
    row("where keys are free",
        json("{'interfaces':[{'name':'a','type':'usb'}],'timeline':[{'at':1,'event':'set','interface':'a',"
             "'attributes':{'x':[{'\\'':1,'\\\\':2,'\\u005C':3}]}}]}"),
        "line 1, column 127: a second \"\\\"");
    row("before another mistake", json("{'colour':1,'colour':1}"), "line 1, column 13: a second \"colour\"");
    row("deep", QByteArray(1000, '[') + json("{'a':1,'a':1}") + QByteArray(1000, ']'),
        "line 1, column 1008: a second \"a\"");
    // None of these is a key that stands twice.
    row("once in each", json("{'seed':1,'interfaces':[{'name':'a','type':'usb'},{'name':'b','type':'usb'},7]}"),
        "interfaces[2]: must be an object");
    row("inside and outside", json("{'delays':{'manual':1},'interfaces':[],'manual':1}"),
        "unknown key \"manual\" (known: $schema, description, seed, delays, allow_circular_parents, interfaces, "
        "priority, default_interface, wifi, hotspot, timeline, faults)");
    row("a value", json("{'interfaces':[],'description':'seed','seed':-1}"),
        "seed: must be a whole number from 0 to 2147483647");
    row("inside a text", json("{'interfaces':[],'description':'\\'seed\\': 1 }]','seed':-1}"),
        "seed: must be a whole number from 0 to 2147483647");
    row("another case", json("{'interfaces':[],'Seed':1,'seed':1}"),
        "unknown key \"Seed\" (known: $schema, description, seed, delays, allow_circular_parents, interfaces, "
        "priority, default_interface, wifi, hotspot, timeline, faults)");
}

void ScenarioReaderTest::duplicateKeys()
{
    errors();
}

void ScenarioReaderTest::addresses_data()
{
    QTest::addColumn<QByteArray>("lease");
    QTest::addColumn<QString>("expected"); // what is wrong with it, after its place

    const auto row = [](const char *name, const char *addresses, const char *gateways, const char *expected) {
        QTest::addRow("%s", name) << json("'ip_addresses':[") + json(addresses) + json("],'ip_gateway':[")
                + json(gateways)
                + ']' << QString::fromUtf8(expected);
    };
    const auto wrong = [&row](const char *address, const char *which) {
        const QString text = QLatin1String(address);
        row(address, qPrintable(QStringLiteral("'%1'").arg(text)), "",
            qPrintable(QStringLiteral("ip_addresses[0]: \"%1\" is the %2 address of its network, not that of a host")
                           .arg(text, QLatin1String(which))));
    };
    const auto right = [&row](const char *address) {
        row(address, qPrintable(QStringLiteral("'%1'").arg(QLatin1String(address))), "", "");
    };
    wrong("10.20.0.0/255.255.0.0", "first");
    right("10.20.0.1/255.255.0.0");
    right("10.20.255.254/255.255.0.0");
    wrong("10.20.255.255/255.255.0.0", "broadcast");
    right("10.20.1.0/255.255.0.0");
    right("10.20.0.255/255.255.0.0");
    wrong("10.0.0.8/255.255.255.252", "first");
    right("10.0.0.9/255.255.255.252");
    right("10.0.0.10/255.255.255.252");
    wrong("10.0.0.11/255.255.255.252", "broadcast");
    right("10.0.0.8/255.255.255.254");
    right("10.0.0.9/255.255.255.254");
    right("10.0.0.8/255.255.255.255");
    wrong("127.255.255.255/128.0.0.0", "broadcast");
    wrong("255.255.255.255/128.0.0.0", "broadcast");
    wrong("2001:db8::/64", "first");
    wrong("2001:db8:0:0:1::/80", "first");
    right("2001:db8::1:0/64");
    right("2001:db8::ffff:ffff:ffff:ffff/64");
    wrong("2001:db8::4/126", "first");
    right("2001:db8::7/126");
    right("2001:db8::4/127");
    right("2001:db8::4/128");
    wrong("::/0", "first");
    right("::1/0");

    const auto gateway = [&row](const char *name, const char *addresses, const char *text, bool isRight) {
        row(name, addresses, qPrintable(QStringLiteral("'%1'").arg(QLatin1String(text))),
            isRight ? ""
                    : qPrintable(QStringLiteral("ip_gateway[0]: \"%1\" is no other host of the network of an address "
                                                "here")
                                     .arg(QLatin1String(text))));
    };
    gateway("gateway", "'10.20.0.40/255.255.0.0'", "10.20.255.254", true);
    gateway("gateway outside", "'10.20.0.40/255.255.0.0'", "10.21.0.1", false);
    gateway("gateway below", "'10.20.0.40/255.255.0.0'", "10.19.255.254", false);
    gateway("own gateway", "'10.20.0.40/255.255.0.0'", "10.20.0.40", false);
    gateway("network as gateway", "'10.20.0.40/255.255.0.0'", "10.20.0.0", false);
    gateway("broadcast as gateway", "'10.20.0.40/255.255.0.0'", "10.20.255.255", false);
    gateway("gateway of the second", "'10.20.0.40/255.255.0.0','10.8.0.6/255.255.255.0'", "10.8.0.1", true);
    gateway("two in a network", "'10.0.0.8/255.255.255.254'", "10.0.0.9", true);
    gateway("alone in its network", "'10.0.0.8/255.255.255.255'", "10.0.0.9", false);
    gateway("gateway in IPv6", "'2001:db8::5/64'", "2001:db8::1", true);
    gateway("gateway outside in IPv6", "'2001:db8::5/64'", "2001:db8:0:1::1", false);
    gateway("link-local gateway", "'2001:db8::5/64'", "fe80::1", true);
    gateway("link-local gateway in IPv4", "'10.20.0.40/255.255.0.0'", "169.254.0.1", false);
    gateway("gateway of another kind", "'fe80::11/64'", "192.168.43.1", false);
    row("second gateway", "'10.20.0.40/255.255.0.0'", "'10.20.0.1','10.21.0.1'",
        "ip_gateway[1]: \"10.21.0.1\" is no other host of the network of an address here");
}

void ScenarioReaderTest::addresses()
{
    QFETCH(QByteArray, lease);
    QFETCH(QString, expected);
    for (const char *key : {"lease", "manual"}) {
        Scenario scenario;
        QString error;
        readScenario(json("{'interfaces':[{'name':'a','type':'usb','") + key + json("':{") + lease + "}}]}", &scenario,
                     &error);
        QCOMPARE(error,
                 expected.isEmpty() ? QString()
                                    : QStringLiteral("interfaces[0].%1.%2").arg(QLatin1String(key), expected));
    }
}

void ScenarioReaderTest::errors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const char *text, const char *expected) {
        QTest::addRow("%s", name) << json(text) << QString::fromUtf8(expected);
    };
    const auto interface = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("%s", name) << json("{'interfaces':[{'name':'a','type':'wifi'},{") + json(keys) + json("}]}")
                                  << QString::fromUtf8(expected);
    };
    const auto event = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("%s", name) << json("{'interfaces':[{'name':'a','type':'wifi'},"
                                          "{'name':'b','type':'usb','present':false}],'timeline':[")
                + json("{'at':0,'event':'default-follows'},{") + json(keys)
                + json("}]}") << QString::fromUtf8(expected);
    };
    const auto fault = [](const char *name, const char *keys, const char *expected) {
        QTest::addRow("%s", name) << json("{'interfaces':[{'name':'a','type':'wifi'}],'faults':[{") + json(keys)
                + json("}]}") << QString::fromUtf8(expected);
    };

    row("no object", "[]", "must be an object");
    row("no interfaces", "{}", "\"interfaces\" is missing");
    row("unknown key", "{'interfaces':[],'colour':1}",
        "unknown key \"colour\" (known: $schema, description, seed, delays, allow_circular_parents, interfaces, "
        "priority, "
        "default_interface, wifi, hotspot, timeline, faults)");
    row("interfaces are no array", "{'interfaces':{}}", "interfaces: must be an array");
    row("interface is no object", "{'interfaces':['a']}", "interfaces[0]: must be an object");
    row("schema is a number", "{'interfaces':[],'$schema':1}", "$schema: must be a text");
    row("description is a number", "{'interfaces':[],'description':1}", "description: must be a text");
    row("seed is negative", "{'interfaces':[],'seed':-1}", "seed: must be a whole number from 0 to 2147483647");
    row("seed is a fraction", "{'interfaces':[],'seed':1.5}", "seed: must be a whole number from 0 to 2147483647");
    row("seed is a text", "{'interfaces':[],'seed':'1'}", "seed: must be a whole number from 0 to 2147483647");
    row("circles is a number", "{'interfaces':[],'allow_circular_parents':1}",
        "allow_circular_parents: must be true or false");

    row("delays: unknown", "{'interfaces':[],'delays':{'x':1}}",
        "delays: unknown key \"x\" (known: reply, release, manual, lease, scan, associate, hotspot_start, "
        "hotspot_stop)");
    row("delays: negative", "{'interfaces':[],'delays':{'reply':-1}}",
        "delays.reply: must be a whole number from 0 to 86400000");
    row("delays: three", "{'interfaces':[],'delays':{'lease':[1,2,3]}}",
        "delays.lease: must be a time or [least, most]");
    row("delays: turned round", "{'interfaces':[],'delays':{'lease':[5,4]}}",
        "delays.lease[1]: must be a whole number from 5 to 86400000");

    interface("interface: no name", "'type':'usb'", "interfaces[1]: \"name\" is missing");
    interface("interface: no type", "'name':'b'", "interfaces[1]: \"type\" is missing");
    interface("interface: unknown key", "'name':'b','type':'usb','ip':1",
              "interfaces[1]: unknown key \"ip\" (known: name, type, link_address, mtu, parent_interface, present, up, "
              "connected, manual, lease)");
    interface("interface: name twice", "'name':'a','type':'usb'", "interfaces[1].name: a second \"a\"");
    interface("interface: slash", "'name':'a/b','type':'usb'",
              "interfaces[1].name: \"a/b\" is not a name of 1 to 15 letters, digits and _ . : @ -");
    interface("interface: hidden", "'name':'.b','type':'usb'",
              "interfaces[1].name: \".b\" is not a name of 1 to 15 letters, digits and _ . : @ -");
    interface("interface: long name", "'name':'abcdefghijklmnop','type':'usb'",
              "interfaces[1].name: \"abcdefghijklmnop\" is not a name of 1 to 15 letters, digits and _ . : @ -");
    interface("interface: type", "'name':'b','type':'Wired'",
              "interfaces[1].type: \"Wired\" is not one of wired, wifi, usb, cellular, bluetooth_dun, vpn, qv");
    interface("interface: link address", "'name':'b','type':'usb','link_address':'02:00'",
              "interfaces[1].link_address: \"02:00\" is not a hardware address, as 02:00:00:00:00:01 is");
    interface("interface: mtu", "'name':'b','type':'usb','mtu':67",
              "interfaces[1].mtu: must be a whole number from 68 to 65536");
    interface("interface: up", "'name':'b','type':'usb','up':'yes'", "interfaces[1].up: must be true or false");
    interface("interface: present", "'name':'b','type':'usb','present':1",
              "interfaces[1].present: must be true or false");
    interface("interface: manual", "'name':'b','type':'usb','manual':'yes'", "interfaces[1].manual: must be an object");
    interface("lease: unknown key", "'name':'b','type':'usb','lease':{'dns':[]}",
              "interfaces[1].lease: unknown key \"dns\" (known: ip_addresses, ip_gateway)");
    interface("lease: no addresses", "'name':'b','type':'usb','lease':{}",
              "interfaces[1].lease: \"ip_addresses\" is missing");
    interface("lease: empty", "'name':'b','type':'usb','lease':{'ip_addresses':[]}",
              "interfaces[1].lease.ip_addresses: must not be empty");
    interface("lease: prefix length", "'name':'b','type':'usb','lease':{'ip_addresses':['fe80::1/64','10.0.0.5/33']}",
              "interfaces[1].lease.ip_addresses[1]: \"10.0.0.5/33\" is not an address with its netmask, as "
              "10.0.0.5/255.255.255.0, 10.0.0.5/24 and fe80::1/64 are");
    interface("lease: gateway",
              "'name':'b','type':'usb','lease':{'ip_addresses':['fe80::1/64'],'ip_gateway':['10.0.0']}",
              "interfaces[1].lease.ip_gateway[0]: \"10.0.0\" is not an IP address");
    row("lease: of two",
        "{'interfaces':[{'name':'a','type':'usb','lease':{'ip_addresses':['fe80::1/64','10.0.0.5/255.0.0.0']}},"
        "{'name':'b','type':'usb','lease':{'ip_addresses':['fe80::1/64','10.0.0.5/255.255.0.0']}}]}",
        "interfaces[1].lease.ip_addresses[1]: \"a\" has this address, too");
    row("manual: lease of another",
        "{'interfaces':[{'name':'a','type':'usb','manual':{'ip_addresses':['2001:db8::1/64']}},"
        "{'name':'b','type':'usb','lease':{'ip_addresses':['2001:0db8:0::1/80']}}]}",
        "interfaces[1].lease.ip_addresses[0]: \"a\" has this address, too");
    row("lease: manual of another",
        "{'interfaces':[{'name':'a','type':'usb','lease':{'ip_addresses':['10.0.0.5/255.0.0.0']}},"
        "{'name':'b','type':'usb','manual':{'ip_addresses':['10.0.0.5/255.0.0.0']}}]}",
        "interfaces[1].manual.ip_addresses[0]: \"a\" has this address, too");
    interface("parent: unknown", "'name':'b','type':'vpn','parent_interface':'c'",
              "interfaces[1].parent_interface: no interface \"c\"");
    interface(
        "parent: itself", "'name':'b','type':'vpn','parent_interface':'b'",
        "interfaces[1].parent_interface: \"b\" is its own ancestor (\"allow_circular_parents\": true permits it)");
    row("parent: circle",
        "{'interfaces':[{'name':'a','type':'vpn'},{'name':'b','type':'vpn','parent_interface':'d'},"
        "{'name':'c','type':'vpn','parent_interface':'b'},{'name':'d','type':'vpn','parent_interface':'c'}]}",
        "interfaces[1].parent_interface: \"b\" is its own ancestor (\"allow_circular_parents\": true permits it)");
    interface("connected: absent", "'name':'b','type':'usb','connected':true,'present':false",
              "interfaces[1].connected: an interface must be present and up to be connected");
    interface("connected: down", "'name':'b','type':'usb','connected':true,'up':false",
              "interfaces[1].connected: an interface must be present and up to be connected");
    interface("connected: no addresses", "'name':'b','type':'usb','connected':true",
              "interfaces[1].connected: there are no addresses for it (\"lease\" or \"manual\")");
    interface("connected: parent is not",
              "'name':'b','type':'vpn','connected':true,'parent_interface':'a','manual':{'ip_addresses':['::1/64']}",
              "interfaces[1].connected: its parent \"a\" is not connected");

    row("priority: unknown", "{'interfaces':[{'name':'a','type':'wifi'}],'priority':['a','b']}",
        "priority[1]: no interface \"b\"");
    row("priority: twice", "{'interfaces':[{'name':'a','type':'wifi'}],'priority':['a','a']}",
        "priority[1]: \"a\" stands here twice");
    row("default: unknown", "{'interfaces':[{'name':'a','type':'wifi'}],'default_interface':'b'}",
        "default_interface: no interface \"b\"");
    row("default: number", "{'interfaces':[],'default_interface':1}", "default_interface: must be a text");

    event("event: no time", "'event':'default-follows'", "timeline[1]: \"at\" is missing");
    event("event: none", "'at':1", "timeline[1]: \"event\" is missing");
    event("event: before the start", "'at':-1,'event':'default-follows'",
          "timeline[1].at: must be a whole number from 0 to 86400000");
    event("event: after a day", "'at':86400001,'event':'default-follows'",
          "timeline[1].at: must be a whole number from 0 to 86400000");
    event("event: unknown word", "'at':1,'event':'explode'",
          "timeline[1].event: no event \"explode\" (known: vanish, appear, link-lost, link-regained, set, remove, "
          "default, default-follows, priority, daemon-dies, daemon-back, faults-end, out-of-range, in-range, signal, "
          "roam, dropped, wrong-key, radio-on, radio-off, wifi-event, hotspot-starts, hotspot-stops)");
    event("event: unknown key", "'at':1,'event':'vanish','interface':'a','back_after':1",
          "timeline[1]: unknown key \"back_after\" (known: at, event, interface)");
    event("event: no interface", "'at':1,'event':'vanish'", "timeline[1]: \"interface\" is missing");
    event("event: unknown interface", "'at':1,'event':'vanish','interface':'wlan9'",
          "timeline[1].interface: no interface \"wlan9\"");
    event("event: empty interface", "'at':1,'event':'vanish','interface':''",
          "timeline[1].interface: no interface \"\"");
    event("event: not there", "'at':1,'event':'link-lost','interface':'b'",
          "timeline[1].interface: \"b\" is not there at that time");
    event("event: there already", "'at':1,'event':'appear','interface':'a'",
          "timeline[1].interface: \"a\" is there at that time");
    event("event: twice gone", "'at':1,'event':'vanish','interface':'a'},{'at':2,'event':'vanish','interface':'a'",
          "timeline[2].interface: \"a\" is not there at that time");
    event("set: nothing", "'at':1,'event':'set','interface':'a'", "timeline[1]: \"attributes\" is missing");
    event("set: empty", "'at':1,'event':'set','interface':'a','attributes':{}",
          "timeline[1].attributes: must not be empty");
    event("set: both", "'at':1,'event':'set','interface':'a','object':'status_public','attributes':{'x':1}",
          "timeline[1]: needs either \"interface\" or \"object\"");
    event("set: neither", "'at':1,'event':'set','attributes':{'x':1}",
          "timeline[1]: needs either \"interface\" or \"object\"");
    event("set: another object", "'at':1,'event':'set','object':'control','attributes':{'x':1}",
          "timeline[1].object: \"control\" is none of status_public, wifi/status, tethering/status");
    event("set: null", "'at':1,'event':'set','interface':'a','attributes':{'mtu':null}",
          "timeline[1].attributes.mtu: null is no value; the event \"remove\" removes an attribute");
    event("set: fraction", "'at':1,'event':'set','interface':'a','attributes':{'mtu':1.5}",
          "timeline[1].attributes.mtu: must be a whole number from -2147483648 to 2147483647");
    event("set: no bytes", "'at':1,'event':'set','interface':'a','attributes':{'mtu':{'encoding':'json'}}",
          "timeline[1].attributes.mtu: needs either \"text\" or \"base64\"");
    event("set: bad base64", "'at':1,'event':'set','interface':'a','attributes':{'mtu':{'base64':'*'}}",
          "timeline[1].attributes.mtu.base64: is not base64");
    event("set: unknown key", "'at':1,'event':'set','interface':'a','attributes':{'mtu':{'hex':'00'}}",
          "timeline[1].attributes.mtu: unknown key \"hex\" (known: encoding, text, base64)");
    event("remove: object", "'at':1,'event':'remove','interface':'a','attributes':{'x':1}",
          "timeline[1].attributes: must be an array");
    event("remove: number", "'at':1,'event':'remove','interface':'a','attributes':[1]",
          "timeline[1].attributes[0]: must be a text");
    event("default: unknown interface", "'at':1,'event':'default','interface':'c'",
          "timeline[1].interface: no interface \"c\"");
    event("priority: no order", "'at':1,'event':'priority'", "timeline[1]: \"order\" is missing");
    event("priority: unknown interface", "'at':1,'event':'priority','order':['a','c']",
          "timeline[1].order[1]: no interface \"c\"");
    event("death: too long", "'at':1,'event':'daemon-dies','back_after':86400001",
          "timeline[1].back_after: must be a whole number from 0 to 86400000");

    fault("fault: none", "'err':1", "faults[0]: \"fault\" is missing");
    fault("fault: unknown word", "'fault':'burn'",
          "faults[0].fault: no fault \"burn\" (known: refuse, no-reply, late, double, die, answer, ignore)");
    fault("fault: key of another", "'fault':'double','delay':1",
          "faults[0]: unknown key \"delay\" (known: fault, message, interface, ssid, skip, times)");
    fault("fault: unknown message", "'fault':'double','message':'explode'",
          "faults[0].message: no message \"explode\" (known: net_connected, net_disconnected, wifi_power, scan, "
          "wnet_new, wnet_select, wnet_disableall, retrieve_profile, update_profile, start, stop)");
    fault("fault: unknown interface", "'fault':'double','interface':'b'", "faults[0].interface: no interface \"b\"");
    fault("fault: no code", "'fault':'refuse'", "faults[0]: \"err\" is missing");
    fault("fault: success", "'fault':'refuse','err':0", "faults[0].err: must be a whole number from 1 to 2147483647");
    fault("fault: no time", "'fault':'late'", "faults[0]: \"delay\" is missing");
    fault("fault: never", "'fault':'double','times':0", "faults[0].times: must be a whole number from 1 to 2147483647");
    fault("fault: skip", "'fault':'double','skip':-1", "faults[0].skip: must be a whole number from 0 to 2147483647");
}

void ScenarioReaderTest::errors()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    Scenario scenario;
    QString error;
    QVERIFY(!readScenario(text, &scenario, &error));
    QCOMPARE(error, expected);
}

void ScenarioReaderTest::shippedScenarios()
{
    const QStringList names = ScenarioFiles::shipped();
    for (const char *name : {"headunit", "come-and-go", "refused", "no-reply", "daemon-restart",
                             "hotspot-daemon-restart", "hotspot-garbage", "hotspot-inactivity", "hotspot-never-active",
                             "hotspot-no-reply", "hotspot-refused", "wifi-daemon-restart", "wifi-garbage",
                             "wifi-no-reply", "wifi-out-of-range", "wifi-refused", "wifi-roaming", "wifi-security"})
        QVERIFY2(names.contains(QLatin1String(name)), name);
    for (const QString &name : names) {
        Scenario scenario;
        QString error;
        QVERIFY2(ScenarioFiles::load(name, &scenario, &error), qPrintable(error));
        QVERIFY2(!scenario.description.isEmpty(), qPrintable(name));
        QVERIFY2(!scenario.interfaces.isEmpty(), qPrintable(name));
        QCOMPARE(warningsOf(scenario), QStringList());
    }
}

void ScenarioReaderTest::documentedExample()
{
    QFile file(QStringLiteral(MORVEK_DOCS "/scenarios.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray page = file.readAll();
    const int begin = page.indexOf("```json\n") + 8;
    const int end = page.indexOf("```", begin);
    QVERIFY(begin > 8 && end > begin);
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(page.mid(begin, end - begin), &scenario, &error), qPrintable(error));
    QCOMPARE(scenario.interfaces.size(), 4);
    QCOMPARE(scenario.wifi.accessPoints.size(), 3);
    QCOMPARE(scenario.timeline.size(), 28);
    QCOMPARE(scenario.faults.size(), 9);
    QVERIFY(scenario.hotspot.active);
    QCOMPARE(warningsOf(scenario), QStringList());
}

void ScenarioReaderTest::files()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("mine.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(json("{'interfaces':[{'name':'mine','type':'wired'}]}"));
    file.close();
    Scenario scenario;
    QString error;
    QVERIFY2(ScenarioFiles::load(file.fileName(), &scenario, &error), qPrintable(error));
    QCOMPARE(scenario.interfaces.first().name, QStringLiteral("mine"));
}

void ScenarioReaderTest::fileErrors()
{
    Scenario scenario;
    QString error;
    QVERIFY(!ScenarioFiles::load(QStringLiteral("nowhere"), &scenario, &error));
    QCOMPARE(error,
             QStringLiteral("nowhere: no such scenario (shipped: come-and-go, daemon-restart, headunit, "
                            "hotspot-daemon-restart, hotspot-garbage, hotspot-inactivity, hotspot-never-active, "
                            "hotspot-no-reply, hotspot-refused, no-reply, "
                            "refused, wifi-daemon-restart, wifi-garbage, wifi-no-reply, wifi-out-of-range, "
                            "wifi-refused, wifi-roaming, wifi-security; a file's name ends in .json or contains a /)"));
    QVERIFY(!ScenarioFiles::load(QStringLiteral("/nonexistent/x.json"), &scenario, &error));
    QCOMPARE(error, QStringLiteral("/nonexistent/x.json: No such file or directory"));
    QVERIFY(!ScenarioFiles::load(QStringLiteral("/dev/zero"), &scenario, &error));
    QCOMPARE(error, QStringLiteral("/dev/zero: is larger than 8 MiB"));

    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("bad.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{}");
    file.close();
    QVERIFY(!ScenarioFiles::load(file.fileName(), &scenario, &error));
    QCOMPARE(error, file.fileName() + QStringLiteral(": \"interfaces\" is missing"));
}

QTEST_GUILESS_MAIN(ScenarioReaderTest)
#include "tst_scenarioreader.moc"
