// SPDX-License-Identifier: Apache-2.0
#include "dottedquad_p.h"
#include "logcapture.h"
#include "metaobject.h"
#include "networkingdaemon.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <memory>

using namespace morvek;
using namespace NetworkingDaemon;
using Connection = NetworkInterfaceProviderZop::ZopInterfaceConnection;

namespace {

QJsonDocument document(const QByteArray &text)
{
    return QJsonDocument::fromJson(text);
}

/*! The configuration's addresses as "address/netmask", a null one as "null". */
QStringList addresses(const NetworkInterfaceData &data)
{
    const auto text = [](const QHostAddress &a) { return a.isNull() ? QStringLiteral("null") : a.toString(); };
    QStringList texts;
    const QList<QNetworkAddressEntry> entries = data.configuration.ipAddresses();
    for (const QNetworkAddressEntry &entry : entries)
        texts.append(text(entry.ip()) + QLatin1Char('/') + text(entry.netmask()));
    return texts;
}

QStringList gateways(const NetworkInterfaceData &data)
{
    QStringList texts;
    const QList<QHostAddress> hosts = data.configuration.gatewayAddresses();
    for (const QHostAddress &host : hosts)
        texts.append(host.isNull() ? QStringLiteral("null") : host.toString());
    return texts;
}

/*! A connection to the interface "en0", wired as the provider wires it, and what it tells. */
struct Fixture
{
    explicit Fixture(const ZopDouble::Values &values = wired())
    {
        ZopDouble::store(interfacePath(QStringLiteral("en0")), values);
        connection = std::make_unique<Connection>(nullptr);
        auto *object =
            new ZopObject(interfacePath(QStringLiteral("en0")), ZopObject::Subscribe, false, connection.get());
        object->setAttributeCacheEnabled(true);
        listen();
        connection->setZopInterface(QStringLiteral("en0"), object);
        QObject::connect(object, &ZopObject::attributesChanged, connection.get(),
                         &Connection::onZopInterfaceAttributesChanged);
    }

    void listen()
    {
        const auto record = [this](const char *name, const NetworkInterfaceData *data) {
            events.append(QLatin1String(name));
            same = same && (!data || data == connection->interfaceData.get());
        };
        QObject::connect(connection.get(), &Connection::interfaceAttributesChanged,
                         [record](const NetworkInterfaceData &data) { record("attributes", &data); });
        QObject::connect(connection.get(), &Connection::interfaceConnected, [record](const NetworkInterfaceData &data) {
            record(data.connected ? "connected" : "connected, but not in the record", &data);
        });
        QObject::connect(connection.get(), &Connection::interfaceDisconnected,
                         [record](const NetworkInterfaceData &data) {
                             record(data.connected ? "disconnected, but not in the record" : "disconnected", &data);
                         });
        QObject::connect(connection.get(), &Connection::interfaceParentChanged,
                         [record] { record("parent", nullptr); });
    }

    const NetworkInterfaceData &data() const { return *connection->interfaceData; }

    std::unique_ptr<Connection> connection;
    QStringList events;
    bool same = true; //!< whether every signal carried the connection's own record
};

} // namespace

class TestZopInterfaceConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void declaresSignalsAndSlotsInOrder();
    void startsEmpty();
    void ignoresANullObject();
    void readsEveryAttribute();
    void readsAttributesInOrder();
    void readsAbsentAttributesAsEmpty();
    void dropsItsRecord();

    void typeWords_data();
    void typeWords();
    void mode_data();
    void mode();
    void findsAddress_data();
    void findsAddress();
    void findsWhatTheExpressionFinds();
    void leavesArgumentsAloneWithoutAnAddress();
    void ip4_data();
    void ip4();
    void ip4ReplacesTheList();
    void gateway_data();
    void gateway();
    void virtualDropsTheParent();
    void debugLinesHaveTheirThreshold();

    void toldAttributes_data();
    void toldAttributes();
    void valuesOfTheUpdateOrOfTheObject_data();
    void valuesOfTheUpdateOrOfTheObject();
    void connectedIsToldEachTime();
    void toldInNameOrderAndOnce();
    void connectedIsToldBeforeLaterAttributes();
    void removalsChangeNothing();
    void emptyUpdateDoesNothing();
    void updateMayBeDroppedWhileItIsTold();
    void updateWithoutObject();
    void parentChanges();
    void mayBeDeletedWhileItTells_data();
    void mayBeDeletedWhileItTells();
};

void TestZopInterfaceConnection::declaresSignalsAndSlotsInOrder()
{
    QCOMPARE(QByteArray(Connection::staticMetaObject.className()),
             QByteArray("morvek::NetworkInterfaceProviderZop::ZopInterfaceConnection"));
    QCOMPARE(ownMethods(Connection::staticMetaObject),
             (QStringList {
                 QStringLiteral("signal interfaceAttributesChanged(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceConnected(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceDisconnected(morvek::NetworkInterfaceData)"),
                 QStringLiteral("signal interfaceParentChanged()"),
                 QStringLiteral("slot onZopInterfaceAttributesChanged(morvek::ZopChangeset)"),
             }));
}

void TestZopInterfaceConnection::startsEmpty()
{
    QObject parent;
    const auto *connection = new Connection(&parent);
    QCOMPARE(connection->parent(), &parent);
    QVERIFY(connection->interfaceData);
    QVERIFY(connection->interfaceData->isEmpty());
    QVERIFY(!connection->zopObject);
}

void TestZopInterfaceConnection::ignoresANullObject()
{
    Connection connection(nullptr);
    connection.setZopInterface(QStringLiteral("en0"), nullptr);
    QVERIFY(connection.interfaceData->isEmpty());
    QVERIFY(!connection.zopObject);
}

void TestZopInterfaceConnection::readsEveryAttribute()
{
    const Fixture fixture(with(wired(), "manual", text("yes")));
    const NetworkInterfaceData &data = fixture.data();
    QCOMPARE(fixture.connection->zopObject, ZopDouble::objects(interfacePath(QStringLiteral("en0"))).first());
    QCOMPARE(data.name, QStringLiteral("en0"));
    QCOMPARE(addresses(data), QStringList(QStringLiteral("10.0.0.5/255.0.0.0")));
    QCOMPARE(int(data.configuration.type()), 1);
    QCOMPARE(gateways(data), QStringList(QStringLiteral("10.0.0.1")));
    QCOMPARE(data.macAddress, QStringLiteral("02:00:00:00:00:01"));
    QCOMPARE(data.maxTransmissionUnit, 1500);
    QCOMPARE(int(data.type), 1);
    QCOMPARE(data.available, true);
    QCOMPARE(data.connected, true);
    QCOMPARE(data.isVirtual, false);
    QVERIFY(!data.parent);
    QCOMPARE(data.priority, -1);
    QVERIFY(fixture.events.isEmpty());
}

void TestZopInterfaceConnection::readsAttributesInOrder()
{
    const Fixture fixture;
    const QString path = QStringLiteral("/zop/services/networking/all/interfaces/en0");
    QStringList expected;
    for (const char *name :
         {"ip_addresses", "manual", "ip_gateway", "link_address", "mtu", "type", "up", "connected", "parent_interface"})
        expected.append(QStringLiteral("read %1 %2 default invalid").arg(path, QLatin1String(name)));
    QCOMPARE(ZopDouble::journal().mid(2), expected);
}

void TestZopInterfaceConnection::readsAbsentAttributesAsEmpty()
{
    const Fixture fixture(ZopDouble::Values {});
    NetworkInterfaceData expected;
    expected.name = QStringLiteral("en0");
    QVERIFY(fixture.data() == expected);
}

void TestZopInterfaceConnection::dropsItsRecord()
{
    NetworkInterfaceData child;
    {
        const Connection connection(nullptr);
        child.parent = connection.interfaceData.get();
        QVERIFY(child.parent);
    }
    QVERIFY(!child.parent);
}

void TestZopInterfaceConnection::typeWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("type");
    QTest::newRow("wired") << "wired" << 1;
    QTest::newRow("wifi") << "wifi" << 2;
    QTest::newRow("usb") << "usb" << 3;
    QTest::newRow("cellular") << "cellular" << 4;
    QTest::newRow("bluetooth_dun") << "bluetooth_dun" << 5;
    QTest::newRow("vpn") << "vpn" << 6;
    QTest::newRow("qv") << "qv" << 7;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("capital") << "Wired" << 0;
    QTest::newRow("blank") << "wired " << 0;
    QTest::newRow("bluetooth") << "bluetooth" << 0;
    QTest::newRow("the text form") << "orvanbridge" << 0;
    QTest::newRow("unknown") << "unknown" << 0;
}

void TestZopInterfaceConnection::typeWords()
{
    QFETCH(QString, word);
    QFETCH(int, type);
    QCOMPARE(int(networkInterfaceStringToType(word)), type);
    Connection connection(nullptr);
    connection.interfaceData->type = NetworkInterface::Cellular;
    connection.setType(word);
    QCOMPARE(int(connection.interfaceData->type), type);
}

void TestZopInterfaceConnection::mode_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("log");
    const QStringList warned(QStringLiteral("debug1 1300 IPv4 is set to \"no\" but we don't support IPv6."));
    QTest::newRow("yes") << "yes" << 1 << QStringList();
    QTest::newRow("no") << "no" << 0 << warned;
    QTest::newRow("empty") << "" << 0 << QStringList();
    QTest::newRow("Yes") << "Yes" << 0 << QStringList();
    QTest::newRow("No") << "No" << 0 << QStringList();
    QTest::newRow("true") << "true" << 0 << QStringList();
    QTest::newRow("yes and more") << "yes " << 0 << QStringList();
}

void TestZopInterfaceConnection::mode()
{
    QFETCH(QString, value);
    QFETCH(QStringList, log);
    LogCapture capture(6);
    Connection connection(nullptr);
    for (const auto before : {NetworkInterfaceConfig::Auto, NetworkInterfaceConfig::Manual}) {
        connection.interfaceData->configuration.setType(before);
        connection.setMode(value);
        QTEST(int(connection.interfaceData->configuration.type()), "type");
        QCOMPARE(capture.take(), log);
    }
}

void TestZopInterfaceConnection::findsAddress_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("netmask");
    const auto row = [](const char *name, const char *json, const char *ip, const char *netmask) {
        QTest::newRow(name) << QByteArray(json) << QString::fromUtf8(ip) << QString::fromUtf8(netmask);
    };
    row("one", R"(["10.0.0.5/255.0.0.0"])", "10.0.0.5", "255.0.0.0");
    row("behind IPv6", R"(["fe80::2/64","10.0.0.5/255.0.0.0"])", "10.0.0.5", "255.0.0.0");
    row("before IPv6", R"(["10.0.0.5/255.0.0.0","fe80::2/64"])", "10.0.0.5", "255.0.0.0");
    row("the last one", R"(["10.0.0.5/255.0.0.0","192.168.1.7/255.255.255.0"])", "192.168.1.7", "255.255.255.0");
    row("prefix length as written", R"(["10.0.0.5/8"])", "10.0.0.5", "8");
    row("no slash", R"(["10.0.0.5"])", "10.0.0.5", "");
    row("no slash at last", R"(["10.0.0.5/255.0.0.0","10.0.0.6"])", "10.0.0.6", "");
    row("slash at the end", R"(["10.0.0.5/"])", "10.0.0.5", "");
    row("two slashes", R"(["10.0.0.5//255.0.0.0"])", "10.0.0.5", "");
    row("three parts", R"(["10.0.0.5/255.0.0.0/eth"])", "10.0.0.5", "255.0.0.0");
    row("within words", R"(["at 10.0.0.5 now/255.0.0.0"])", "at 10.0.0.5 now", "255.0.0.0");
    row("in a longer number", R"(["1.10.0.0.5/255.0.0.0"])", "1.10.0.0.5", "255.0.0.0");
    row("mapped", R"(["::ffff:10.0.0.5/255.0.0.0"])", "::ffff:10.0.0.5", "255.0.0.0");
    row("leading zeros", R"(["010.000.0.05/255.0.0.0"])", "010.000.0.05", "255.0.0.0");
    row("largest", R"(["255.255.255.255/255.0.0.0"])", "255.255.255.255", "255.0.0.0");
    row("249 and 199", R"(["249.199.200.99/255.0.0.0"])", "249.199.200.99", "255.0.0.0");
    row("0 at the end", R"(["10.0.0.0/255.0.0.0"])", "10.0.0.0", "255.0.0.0");
    row("9 at the end", R"(["10.0.0.9/255.0.0.0"])", "10.0.0.9", "255.0.0.0");
    row("10 at the end", R"(["10.0.0.10/255.0.0.0"])", "10.0.0.10", "255.0.0.0");
    row("99 at the end", R"(["10.0.0.99/255.0.0.0"])", "10.0.0.99", "255.0.0.0");
    row("100 at the end", R"(["10.0.0.100/255.0.0.0"])", "10.0.0.100", "255.0.0.0");
    row("199 at the end", R"(["10.0.0.199/255.0.0.0"])", "10.0.0.199", "255.0.0.0");
    row("200 at the end", R"(["10.0.0.200/255.0.0.0"])", "10.0.0.200", "255.0.0.0");
    row("249 at the end", R"(["10.0.0.249/255.0.0.0"])", "10.0.0.249", "255.0.0.0");
    row("250 at the end", R"(["10.0.0.250/255.0.0.0"])", "10.0.0.250", "255.0.0.0");
    row("254 at the end", R"(["10.0.0.254/255.0.0.0"])", "10.0.0.254", "255.0.0.0");
    row("0 in front", R"(["0.0.0.5/255.0.0.0"])", "0.0.0.5", "255.0.0.0");
    row("9 in front", R"(["9.0.0.5/255.0.0.0"])", "9.0.0.5", "255.0.0.0");
    row("10 in front", R"(["10.0.0.5/255.0.0.0"])", "10.0.0.5", "255.0.0.0");
    row("99 in front", R"(["99.0.0.5/255.0.0.0"])", "99.0.0.5", "255.0.0.0");
    row("100 in front", R"(["100.0.0.5/255.0.0.0"])", "100.0.0.5", "255.0.0.0");
    row("199 in front", R"(["199.0.0.5/255.0.0.0"])", "199.0.0.5", "255.0.0.0");
    row("200 in front", R"(["200.0.0.5/255.0.0.0"])", "200.0.0.5", "255.0.0.0");
    row("210 in front", R"(["210.0.0.5/255.0.0.0"])", "210.0.0.5", "255.0.0.0");
    row("239 in front", R"(["239.0.0.5/255.0.0.0"])", "239.0.0.5", "255.0.0.0");
    row("250 in front", R"(["250.0.0.5/255.0.0.0"])", "250.0.0.5", "255.0.0.0");
    row("251 in front", R"(["251.0.0.5/255.0.0.0"])", "251.0.0.5", "255.0.0.0");
    row("254 in front", R"(["254.0.0.5/255.0.0.0"])", "254.0.0.5", "255.0.0.0");
    row("number too large at the end", R"(["10.0.0.256/255.0.0.0"])", "", "");
    row("260", R"(["10.0.0.260/255.0.0.0"])", "", "");
    row("300", R"(["10.0.0.300/255.0.0.0"])", "", "");
    row("number too large in the middle", R"(["10.256.0.1/255.0.0.0"])", "", "");
    row("four digits", R"(["10.0.0.1000/255.0.0.0"])", "", "");
    row("three numbers", R"(["10.0.5/255.0.0.0"])", "", "");
    row("letters before", R"(["x10.0.0.5/255.0.0.0"])", "", "");
    row("letters behind", R"(["10.0.0.5x/255.0.0.0"])", "", "");
    row("letter as last digit", R"(["10.0.0.24X/255.0.0.0"])", "", "");
    row("letter as last digit of the first number", R"(["24A.0.0.5/255.0.0.0"])", "", "");
    row("commas", R"(["10,0,0,5/255.0.0.0"])", "", "");
    row("in the second part only", R"(["fe80::2/10.0.0.5"])", "", "");
    row("empty text", R"([""])", "", "");
    row("slash only", R"(["/"])", "", "");
    row("other types", R"([1,true,null,{"a":"10.0.0.5/8"},["10.0.0.5/8"],10.5])", "", "");
    row("other types beside", R"([1,"10.0.0.5/255.0.0.0",null])", "10.0.0.5", "255.0.0.0");
    row("embedded zero", R"(["10.0.0.5\u0000/255.0.0.0\u0000"])", nullptr, nullptr);
    row("lone surrogate", R"(["10.0.0.5\ud800/255.0.0.0"])", "", "");
    row("lone surrogate far behind", R"(["10.0.0.5 - \ud800x/255.0.0.0"])", "", "");
    row("lone surrogate in front", R"(["\udc00 10.0.0.5/255.0.0.0"])", "", "");
    row("whole pair", R"(["\ud83d\ude9710.0.0.5\ud83d\ude97/8"])",
        "\xf0\x9f\x9a\x97"
        "10.0.0.5\xf0\x9f\x9a\x97",
        "8");
    row("letters outside ASCII", R"(["\u00e910.0.0.5\u00e9/8"])",
        "\xc3\xa9"
        "10.0.0.5\xc3\xa9",
        "8");
    row("digits outside ASCII", R"(["\u066110.0.0.5\uff15/8"])",
        "\xd9\xa1"
        "10.0.0.5\xef\xbc\x95",
        "8");
    row("digit outside ASCII within", R"(["10.0.0\u0661.5/8"])", "", "");
    row("underscore in front", R"(["_10.0.0.5/8"])", "", "");
    row("underscore behind", R"(["10.0.0.5_/8"])", "", "");
    row("a and Z around", R"(["a10.0.0.5 10.0.0.6Z/8"])", "", "");
    row("A and z around", R"(["A10.0.0.5 10.0.0.6z/8"])", "", "");
    row("next to the letters", R"(["@10.0.0.5[/8"])", "@10.0.0.5[", "8");
    row("next to the small letters", R"(["`10.0.0.5{/8"])", "`10.0.0.5{", "8");
    row("colon behind", R"(["10.0.0.5:/8"])", "10.0.0.5:", "8");
    row("dots around", R"([".10.0.0.5./8"])", ".10.0.0.5.", "8");
    row("two dots", R"(["10..0.0.5/8"])", "", "");
    row("dot at the end", R"(["10.0.5./8"])", "", "");
    row("behind a number too large", R"(["256.1.2.3.4/8"])", "256.1.2.3.4", "8");
    row("before a number too large", R"(["1.2.3.4.256/8"])", "1.2.3.4.256", "8");
    row("four digits in front", R"(["1000.0.0.5/8"])", "", "");
    row("four zeros", R"(["0000.0.0.5/8"])", "", "");
    row("the second one", R"(["10.0.0.256 10.0.0.5/8"])", "10.0.0.256 10.0.0.5", "8");
    row("nothing", "[]", "", "");
}

void TestZopInterfaceConnection::findsAddress()
{
    QFETCH(QByteArray, json);
    QString ip;
    QString netmask;
    findIpNetmask(document(json).array(), ip, netmask);
    if (QByteArray(QTest::currentDataTag()) == "embedded zero") {
        QCOMPARE(ip, QStringLiteral("10.0.0.5") + QChar(0));
        QCOMPARE(netmask, QStringLiteral("255.0.0.0") + QChar(0));
        return;
    }
    QTEST(ip, "ip");
    QTEST(netmask, "netmask");
}

// The daemon's lists have always been searched with this expression.
void TestZopInterfaceConnection::findsWhatTheExpressionFinds()
{
    const QRegularExpression expression(QStringLiteral("\\b(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\.){3}"
                                                       "(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\b"));
    const QString pieces = QStringLiteral("0123456789............0125 _aZ-") + QChar(0) + QChar(0xe9) + QChar(0x661)
        + QChar(0xd83d) + QChar(0xde97);
    QRandomGenerator random(1);
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text = i % 2 ? QStringLiteral("10.0.0.5") : QString();
        for (int more = random.bounded(12); more > 0; --more)
            text.insert(random.bounded(text.size() + 1), pieces.at(random.bounded(pieces.size())));
        const bool expected = expression.match(text).hasMatch();
        QVERIFY2(holdsDottedQuad(text) == expected, qPrintable(text));
        found += expected;
    }
    QVERIFY(found > 1000 && found < 19000);
}

void TestZopInterfaceConnection::leavesArgumentsAloneWithoutAnAddress()
{
    QString ip = QStringLiteral("a");
    QString netmask = QStringLiteral("b");
    findIpNetmask(document(R"(["fe80::2/64"])").array(), ip, netmask);
    QCOMPARE(ip, QStringLiteral("a"));
    QCOMPARE(netmask, QStringLiteral("b"));
}

void TestZopInterfaceConnection::ip4_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("logged");
    const auto row = [](const char *name, const char *json, const QStringList &entries, bool logged) {
        QTest::newRow(name) << QByteArray(json) << entries << logged;
    };
    row("one", R"(["10.0.0.5/255.0.0.0"])", {QStringLiteral("10.0.0.5/255.0.0.0")}, false);
    row("behind IPv6", R"(["fe80::2/64","10.0.0.5/255.0.0.0"])", {QStringLiteral("10.0.0.5/255.0.0.0")}, false);
    row("the last one", R"(["10.0.0.5/255.0.0.0","192.168.1.7/255.255.255.0"])",
        {QStringLiteral("192.168.1.7/255.255.255.0")}, false);
    row("netmask that is none", R"(["10.0.0.5/255.0.255.0"])", {QStringLiteral("10.0.0.5/null")}, false);
    row("netmask in letters", R"(["10.0.0.5/x"])", {QStringLiteral("10.0.0.5/null")}, false);
    row("prefix length", R"(["10.0.0.5/8"])", {QStringLiteral("10.0.0.5/null")}, false);
    row("address that is none", R"(["at 10.0.0.5/255.0.0.0"])", {QStringLiteral("null/null")}, false);
    row("no netmask", R"(["10.0.0.5"])", {}, true);
    row("nothing behind the slash", R"(["10.0.0.5/"])", {}, true);
    row("no netmask at last", R"(["10.0.0.5/255.0.0.0","10.0.0.6"])", {}, true);
    row("IPv6 only", R"(["fe80::2/64"])", {}, true);
    row("empty array", "[]", {}, true);
    row("object", R"({"0":"10.0.0.5/255.0.0.0"})", {}, true);
    row("no JSON", "10.0.0.5/255.0.0.0", {}, true);
    row("nothing", "", {}, true);
}

void TestZopInterfaceConnection::ip4()
{
    QFETCH(QByteArray, json);
    QFETCH(bool, logged);
    LogCapture log(6);
    Connection connection(nullptr);
    connection.setIp4(document(json));
    QTEST(addresses(*connection.interfaceData), "entries");
    QCOMPARE(log.take(),
             logged ? QStringList(QStringLiteral("debug1 1300 Not a valid IP4 Address and Netmask")) : QStringList());
}

void TestZopInterfaceConnection::ip4ReplacesTheList()
{
    Connection connection(nullptr);
    connection.setIp4(document(R"(["10.0.0.5/255.0.0.0"])"));
    connection.setIp4(document(R"(["10.0.0.6/255.0.0.0"])"));
    QCOMPARE(addresses(*connection.interfaceData), QStringList(QStringLiteral("10.0.0.6/255.0.0.0")));
    connection.setIp4(document("[]"));
    QVERIFY(addresses(*connection.interfaceData).isEmpty());
}

void TestZopInterfaceConnection::gateway_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("hosts");
    const auto row = [](const char *name, const char *json, const QStringList &hosts) {
        QTest::newRow(name) << QByteArray(json) << hosts;
    };
    row("one", R"(["10.0.0.1"])", {QStringLiteral("10.0.0.1")});
    row("first of two", R"(["10.0.0.1","10.0.0.2"])", {QStringLiteral("10.0.0.1")});
    row("IPv6", R"(["fe80::1"])", {QStringLiteral("fe80::1")});
    row("no address", R"(["router"])", {QStringLiteral("null")});
    row("empty text", R"([""])", {QStringLiteral("null")});
    row("number", "[1]", {QStringLiteral("null")});
    row("number first", R"([1,"10.0.0.2"])", {QStringLiteral("null")});
    row("empty array", "[]", {});
    row("object", R"({"0":"10.0.0.1"})", {});
    row("no JSON", "10.0.0.1", {});
}

void TestZopInterfaceConnection::gateway()
{
    QFETCH(QByteArray, json);
    LogCapture log(7);
    Connection connection(nullptr);
    connection.interfaceData->configuration.addGatewayAddress(QHostAddress(QStringLiteral("10.9.9.9")));
    connection.setGateway(document(json));
    QTEST(gateways(*connection.interfaceData), "hosts");
    QVERIFY(log.take().isEmpty());
}

void TestZopInterfaceConnection::virtualDropsTheParent()
{
    NetworkInterfaceData parent;
    Connection connection(nullptr);
    connection.interfaceData->parent = &parent;
    connection.setVirtual(QStringLiteral("en0"));
    QCOMPARE(connection.interfaceData->isVirtual, true);
    QVERIFY(!connection.interfaceData->parent);
    connection.interfaceData->parent = &parent;
    connection.setVirtual(QString());
    QCOMPARE(connection.interfaceData->isVirtual, false);
    QVERIFY(!connection.interfaceData->parent);
}

void TestZopInterfaceConnection::debugLinesHaveTheirThreshold()
{
    Connection connection(nullptr);
    LogCapture log(5);
    connection.setIp4(document("[]"));
    connection.setMode(QStringLiteral("no"));
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(6);
    connection.setIp4(document("[]"));
    connection.setMode(QStringLiteral("no"));
    QCOMPARE(log.take(),
             (QStringList {
                 QStringLiteral("debug1 1300 Not a valid IP4 Address and Netmask"),
                 QStringLiteral("debug1 1300 IPv4 is set to \"no\" but we don't support IPv6."),
             }));
}

void TestZopInterfaceConnection::toldAttributes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QStringList>("events");
    const QStringList attributes(QStringLiteral("attributes"));
    const auto row = [](const char *name, const char *value, const QStringList &events) {
        QTest::addRow("%s=%s", name, value) << QString::fromLatin1(name) << QByteArray(value) << events;
    };
    row("connected", "true", {QStringLiteral("connected")});
    row("connected", "false", {QStringLiteral("disconnected")});
    row("ip_addresses", R"(["10.0.0.6/255.0.0.0"])", attributes);
    row("manual", "yes", attributes);
    row("ip_gateway", R"(["10.0.0.2"])", attributes);
    row("parent_interface", "en1", {QStringLiteral("parent"), QStringLiteral("attributes")});
    row("parent_interface", "", {QStringLiteral("parent"), QStringLiteral("attributes")});
    row("up", "false", attributes);
    row("link_address", "02:00:00:00:00:09", attributes);
    row("mtu", "1400", attributes);
    row("type", "wifi", attributes);
    row("type", "wired", attributes);
    row("Type", "wifi", {});
    row("Connected", "false", {});
    row("name", "en9", {});
    row("priority", "3", {});
    row("", "x", {});
}

void TestZopInterfaceConnection::toldAttributes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, value);
    Fixture fixture;
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), {{name, ZopVariant(value, "text")}});
    QTEST(fixture.events, "events");
    QVERIFY(fixture.same);
    QCOMPARE(fixture.data().name, QStringLiteral("en0"));
    QCOMPARE(fixture.data().priority, -1);
}

// Each attribute is told with one value while the object holds another.
void TestZopInterfaceConnection::valuesOfTheUpdateOrOfTheObject_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<ZopVariant>("told");
    QTest::addColumn<ZopVariant>("held");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const ZopVariant &told, const ZopVariant &held, const char *result) {
        QTest::newRow(name) << QString::fromLatin1(name) << told << held << QString::fromLatin1(result);
    };
    row("connected", text("true"), text("false"), "connected:0");
    row("ip_addresses", json(R"(["10.0.0.7/255.0.0.0"])"), json(R"(["10.0.0.8/255.0.0.0"])"), "ip:10.0.0.7/255.0.0.0");
    row("manual", text("yes"), text(""), "type:1");
    row("ip_gateway", json(R"(["10.0.0.7"])"), json(R"(["10.0.0.8"])"), "gateway:10.0.0.7");
    row("parent_interface", text("en1"), text(""), "virtual:1");
    row("up", text("true"), text("false"), "available:0");
    row("link_address", text("told"), text("held"), "mac:held");
    row("mtu", ZopVariant(1), ZopVariant(2), "mtu:2");
    row("type", text("wifi"), text("usb"), "kind:2");
}

void TestZopInterfaceConnection::valuesOfTheUpdateOrOfTheObject()
{
    QFETCH(QString, name);
    QFETCH(ZopVariant, told);
    QFETCH(ZopVariant, held);
    QFETCH(QString, result);
    Fixture fixture;
    ZopDouble::store(interfacePath(QStringLiteral("en0")), {{name, held}});
    ZopDouble::tell(interfacePath(QStringLiteral("en0")), {{name, told}});
    const NetworkInterfaceData &data = fixture.data();
    const QMap<QString, QString> present {
        {QStringLiteral("connected"), QStringLiteral("connected:%1").arg(data.connected)},
        {QStringLiteral("ip_addresses"), QStringLiteral("ip:") + addresses(data).join(QLatin1Char(','))},
        {QStringLiteral("manual"), QStringLiteral("type:%1").arg(data.configuration.type())},
        {QStringLiteral("ip_gateway"), QStringLiteral("gateway:") + gateways(data).join(QLatin1Char(','))},
        {QStringLiteral("parent_interface"), QStringLiteral("virtual:%1").arg(data.isVirtual)},
        {QStringLiteral("up"), QStringLiteral("available:%1").arg(data.available)},
        {QStringLiteral("link_address"), QStringLiteral("mac:") + data.macAddress},
        {QStringLiteral("mtu"), QStringLiteral("mtu:%1").arg(data.maxTransmissionUnit)},
        {QStringLiteral("type"), QStringLiteral("kind:%1").arg(data.type)},
    };
    QCOMPARE(present.value(name), result);
}

void TestZopInterfaceConnection::connectedIsToldEachTime()
{
    Fixture fixture;
    change("en0", "connected", text("true"));
    change("en0", "connected", text("true"));
    change("en0", "connected", text("false"));
    change("en0", "connected", text("false"));
    QCOMPARE(fixture.events,
             (QStringList {
                 QStringLiteral("connected"),
                 QStringLiteral("connected"),
                 QStringLiteral("disconnected"),
                 QStringLiteral("disconnected"),
             }));
}

void TestZopInterfaceConnection::toldInNameOrderAndOnce()
{
    Fixture fixture(unplugged());
    ZopDouble::Values all = with(standingOn("en1"), "zzz", text("unknown"));
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), all);
    QCOMPARE(fixture.events,
             (QStringList {QStringLiteral("connected"), QStringLiteral("parent"), QStringLiteral("attributes")}));
    QCOMPARE(addresses(fixture.data()), QStringList(QStringLiteral("10.0.0.5/255.0.0.0")));
    QCOMPARE(fixture.data().isVirtual, true);
}

// "connected" precedes "ip_addresses" in an update's order, so the old addresses are still in the record then.
void TestZopInterfaceConnection::connectedIsToldBeforeLaterAttributes()
{
    Fixture fixture(unplugged());
    QStringList then;
    QObject::connect(fixture.connection.get(), &Connection::interfaceConnected,
                     [&then](const NetworkInterfaceData &data) { then = addresses(data); });
    ZopDouble::publish(interfacePath(QStringLiteral("en0")),
                       {{QStringLiteral("connected"), text("true")},
                        {QStringLiteral("ip_addresses"), json(R"(["10.0.0.5/255.0.0.0"])")}});
    QVERIFY(then.isEmpty());
    QCOMPARE(addresses(fixture.data()), QStringList(QStringLiteral("10.0.0.5/255.0.0.0")));
}

void TestZopInterfaceConnection::removalsChangeNothing()
{
    Fixture fixture;
    const NetworkInterfaceData before = fixture.data();
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), {},
                       {QStringLiteral("mtu"), QStringLiteral("connected"), QStringLiteral("ip_addresses")});
    QVERIFY(fixture.data() == before);
    QVERIFY(fixture.events.isEmpty());
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), {{QStringLiteral("type"), text("usb")}},
                       {QStringLiteral("link_address")});
    QCOMPARE(int(fixture.data().type), 3);
    QCOMPARE(fixture.data().macAddress, QStringLiteral("02:00:00:00:00:01"));
}

void TestZopInterfaceConnection::emptyUpdateDoesNothing()
{
    Fixture fixture;
    const NetworkInterfaceData before = fixture.data();
    fixture.connection->onZopInterfaceAttributesChanged(ZopChangeset());
    QVERIFY(fixture.data() == before);
    QVERIFY(fixture.events.isEmpty());
}

// Whoever has made the update may let go of it in the slot.
void TestZopInterfaceConnection::updateMayBeDroppedWhileItIsTold()
{
    Fixture fixture(unplugged());
    ZopDouble::store(interfacePath(QStringLiteral("en0")), wired());
    ZopChangeset update {with(wired(), "type", text("usb")), {}};
    QObject::connect(fixture.connection.get(), &Connection::interfaceConnected,
                     [&update] { update.assignments.clear(); });
    fixture.connection->onZopInterfaceAttributesChanged(update);
    QVERIFY(update.assignments.isEmpty());
    QCOMPARE(int(fixture.data().type), 3);
    QCOMPARE(addresses(fixture.data()), QStringList(QStringLiteral("10.0.0.5/255.0.0.0")));
}

void TestZopInterfaceConnection::updateWithoutObject()
{
    Connection connection(nullptr);
    connection.interfaceData->connected = true;
    connection.onZopInterfaceAttributesChanged({{{QStringLiteral("connected"), text("true")}}, {}});
    QCOMPARE(connection.interfaceData->connected, false);
}

void TestZopInterfaceConnection::parentChanges()
{
    Fixture fixture;
    NetworkInterfaceData parent;
    fixture.connection->interfaceData->parent = &parent;
    QCOMPARE(fixture.connection->parentInterface(), QString());
    bool cleared = false;
    QObject::connect(fixture.connection.get(), &Connection::interfaceParentChanged, fixture.connection.get(),
                     [&] { cleared = !fixture.data().parent && fixture.data().isVirtual; });
    change("en0", "parent_interface", text("en1"));
    QVERIFY(cleared);
    QCOMPARE(fixture.connection->parentInterface(), QStringLiteral("en1"));
    QCOMPARE(fixture.events, (QStringList {QStringLiteral("parent"), QStringLiteral("attributes")}));
}

void TestZopInterfaceConnection::mayBeDeletedWhileItTells_data()
{
    QTest::addColumn<QString>("event");
    QTest::newRow("connected") << "connected";
    QTest::newRow("parent") << "parent";
    QTest::newRow("attributes") << "attributes";
}

void TestZopInterfaceConnection::mayBeDeletedWhileItTells()
{
    QFETCH(QString, event);
    Fixture fixture(unplugged());
    const auto deleteIt = [&fixture] { fixture.connection.reset(); };
    if (event == QLatin1String("connected"))
        QObject::connect(fixture.connection.get(), &Connection::interfaceConnected, deleteIt);
    else if (event == QLatin1String("parent"))
        QObject::connect(fixture.connection.get(), &Connection::interfaceParentChanged, deleteIt);
    else
        QObject::connect(fixture.connection.get(), &Connection::interfaceAttributesChanged, deleteIt);
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), standingOn("en1"));
    QVERIFY(!fixture.connection);
    QCOMPARE(fixture.events.last(), event);
}

QTEST_GUILESS_MAIN(TestZopInterfaceConnection)
#include "tst_zopinterfaceconnection.moc"
