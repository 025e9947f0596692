// SPDX-License-Identifier: Apache-2.0
#include "networkingrequest.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! The client's update; single quotes in \a dat stand for double ones. */
ZopChangeset makeRequest(const char *message, const char *dat)
{
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("msg"), QString::fromUtf8(message));
    changes.assignments.insert(QStringLiteral("id"), 17);
    changes.assignments.insert(QStringLiteral("peer"), QStringLiteral("client-3"));
    if (dat)
        changes.assignments.insert(QStringLiteral("dat"),
                                   QString::fromUtf8(dat).replace(QLatin1Char('\''), QLatin1Char('"')));
    return changes;
}

} // namespace

class NetworkingRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void connectManually();
    void connectByDhcp();
    void disconnect();
    void withoutAttributes();
    void refusals_data();
    void refusals();
};

void NetworkingRequestTest::connectManually()
{
    const auto request =
        NetworkingRequest::read(makeRequest("net_connected",
                                            "['en0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','"
                                            "manual6':'off','netmask':'255.255.255.0'}]"));
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.kind, NetworkingRequest::Connect);
    QCOMPARE(request.message, QStringLiteral("net_connected"));
    QCOMPARE(request.id, ZopVariant(17));
    QCOMPARE(request.peer, ZopVariant(QStringLiteral("client-3")));
    QCOMPARE(request.interface, QStringLiteral("en0"));
    QVERIFY(request.settings.manual);
    QCOMPARE(request.settings.address, QStringLiteral("10.1.1.20"));
    QCOMPARE(request.settings.netmask, QStringLiteral("255.255.255.0"));
    QCOMPARE(request.settings.gateway, QStringLiteral("10.1.1.1"));
    QCOMPARE(request.toString(), QStringLiteral("net_connected id=17 en0 manual 10.1.1.20/255.255.255.0 via 10.1.1.1"));
}

void NetworkingRequestTest::connectByDhcp()
{
    const auto request =
        NetworkingRequest::read(makeRequest("net_connected", "['en0',{'manual':'no','manual6':'off'}]"));
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.interface, QStringLiteral("en0"));
    QVERIFY(!request.settings.manual);
    QCOMPARE(request.toString(), QStringLiteral("net_connected id=17 en0 dhcp"));
}

void NetworkingRequestTest::disconnect()
{
    const auto request = NetworkingRequest::read(makeRequest("net_disconnected", "'en0'"));
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.kind, NetworkingRequest::Disconnect);
    QCOMPARE(request.interface, QStringLiteral("en0"));
    QCOMPARE(request.toString(), QStringLiteral("net_disconnected id=17 en0"));
}

void NetworkingRequestTest::withoutAttributes()
{
    const auto request = NetworkingRequest::read(ZopChangeset());
    QCOMPARE(request.refusal.code, 1);
    QCOMPARE(request.refusal.text, QStringLiteral("unknown message \"\""));
    QVERIFY(!request.id.isValid());
}

void NetworkingRequestTest::refusals_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto connects = [](const char *name, const char *dat, int code, const char *text) {
        QTest::addRow("connect: %s", name) << QByteArray("net_connected") << QByteArray(dat) << code << text;
    };
    const auto disconnects = [](const char *name, const char *dat, const char *text) {
        QTest::addRow("disconnect: %s", name) << QByteArray("net_disconnected") << QByteArray(dat) << 2 << text;
    };

    QTest::addRow("message") << QByteArray("net_explode") << QByteArray("'en0'") << 1
                             << "unknown message \"net_explode\"";

    const char noPair[] = "dat must be [interface name, {settings}]";
    connects("no JSON", "en0", 2, noPair);
    connects("empty", "", 2, noPair);
    connects("a name", "'en0'", 2, noPair);
    connects("no settings", "['en0']", 2, noPair);
    connects("three elements", "['en0',{'manual':'no'},1]", 2, noPair);
    connects("name is a number", "[1,{'manual':'no'}]", 2, noPair);
    connects("settings are a text", "['en0','manual']", 2, noPair);

    const char noChoice[] = "\"manual\" must be \"yes\" or \"no\"";
    connects("no manual", "['en0',{'manual6':'off'}]", 2, noChoice);
    connects("manual is true", "['en0',{'manual':true}]", 2, noChoice);
    connects("manual is Yes", "['en0',{'manual':'Yes'}]", 2, noChoice);

    connects("unknown key", "['en0',{'manual':'no','mtu':'9'}]", 2, "unknown setting \"mtu\"");
    connects("address of DHCP", "['en0',{'manual':'no','ip_address':'10.1.1.20'}]", 2,
             "\"ip_address\" is only for manual configuration");
    connects("number", "['en0',{'manual':'yes','netmask':24}]", 2, "\"netmask\" is not a text");
    connects("manual6 is on", "['en0',{'manual':'no','manual6':'on'}]", 2, "\"manual6\" must be \"off\"");

    connects("no address", "['en0',{'manual':'yes','netmask':'255.0.0.0','gateway':'10.1.1.1'}]", 4,
             "manual configuration needs \"ip_address\"");
    connects("no netmask", "['en0',{'manual':'yes','ip_address':'10.1.1.20','gateway':'10.1.1.1'}]", 4,
             "manual configuration needs \"netmask\"");
    connects("no gateway", "['en0',{'manual':'yes','ip_address':'10.1.1.20','netmask':'255.0.0.0'}]", 4,
             "manual configuration needs \"gateway\"");
    connects("half an address",
             "['en0',{'manual':'yes','ip_address':'10.1','netmask':'255.0.0.0','gateway':'10.1.1.1'}]", 4,
             "\"10.1\" is not the IPv4 address of a host");
    connects("loopback", "['en0',{'manual':'yes','ip_address':'127.0.0.1','netmask':'255.0.0.0','gateway':'10.1.1.1'}]",
             4, "\"127.0.0.1\" is not the IPv4 address of a host");
    connects("IPv6", "['en0',{'manual':'yes','ip_address':'fe80::1','netmask':'255.0.0.0','gateway':'10.1.1.1'}]", 4,
             "\"fe80::1\" is not the IPv4 address of a host");
    connects("bad netmask",
             "['en0',{'manual':'yes','ip_address':'10.1.1.20','netmask':'255.0.255.0','gateway':'10.1.1.1'}]", 4,
             "\"255.0.255.0\" is not a netmask");
    connects("bad gateway",
             "['en0',{'manual':'yes','ip_address':'10.1.1.20','netmask':'255.255.255.0','gateway':'10.1.1'}]", 4,
             "\"10.1.1\" is not the IPv4 address of a host");
    connects("far gateway",
             "['en0',{'manual':'yes','ip_address':'10.1.1.20','netmask':'255.255.255.0','gateway':'10.1.2.1'}]", 4,
             "the gateway 10.1.2.1 is not a neighbour of 10.1.1.20/255.255.255.0");
    connects("gateway to itself",
             "['en0',{'manual':'yes','ip_address':'10.1.1.20','netmask':'255.255.255.0','gateway':'10.1.1.20'}]", 4,
             "the gateway 10.1.1.20 is not a neighbour of 10.1.1.20/255.255.255.0");

    const char noName[] = "dat must be \"interface name\"";
    disconnects("no JSON", "en0", noName);
    disconnects("empty", "", noName);
    disconnects("array", "['en0']", noName);
    disconnects("two names", "'en0','en1'", noName);
    disconnects("number", "1", noName);
    disconnects("brackets", "'a'],['b'", noName);
}

void NetworkingRequestTest::refusals()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    const auto request = NetworkingRequest::read(makeRequest(message.constData(), dat.constData()));
    QTEST(request.refusal.text, "text");
    QTEST(request.refusal.code, "code");
}

QTEST_GUILESS_MAIN(NetworkingRequestTest)
#include "tst_networkingrequest.moc"
