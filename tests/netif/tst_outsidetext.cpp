// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"
#include "localencoding.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "networkinterfaceservice.h"
#include "textform.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

QByteArray repeated(const char *element, int count)
{
    QByteArray array("[");
    for (int i = 0; i < count; ++i)
        array += (i ? "," : "") + QByteArray(element);
    return array + ']';
}

} // namespace

/*! Whatever a daemon, or somebody in its place, writes into an attribute: it is not such a value, and no more. */
class TestOutsideText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void interfaceAttributes_data();
    void interfaceAttributes();
    void hugeLists();
    void statusAttributes_data();
    void statusAttributes();
    void strangeNames_data();
    void strangeNames();
    void strangeErrors_data();
    void strangeErrors();
};

void TestOutsideText::interfaceAttributes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *title, const char *name, const QByteArray &value, const char *text) {
        QTest::newRow(title) << QString::fromLatin1(name) << value << QString::fromUtf8(text);
    };
    const QByteArray deep = QByteArray(100000, '[') + QByteArray(100000, ']');
    row("addresses, deep", "ip_addresses", deep, "ip:");
    row("addresses, deep objects", "ip_addresses", QByteArray("{\"a\":").repeated(50000), "ip:");
    row("addresses, cut off", "ip_addresses", "[\"10.0.0.6/255.0.0.0\"", "ip:");
    row("addresses, invalid UTF-8", "ip_addresses", "[\"10.0.0.6\xff/255.0.0.0\"]", "ip:");
    row("addresses, zero byte", "ip_addresses", QByteArray("[\"10.0.0.6\0/255.0.0.0\"]", 23), "ip:/");
    row("netmask, zero byte", "ip_addresses", R"(["10.0.0.6/255.0.0.0\u0000"])", "ip:10.0.0.6/");
    row("addresses, escaped zero", "ip_addresses", R"(["10.0.0.6\u0000/255.0.0.0"])", "ip:/");
    row("addresses, number", "ip_addresses", "1e999", "ip:");
    row("addresses, null", "ip_addresses", "null", "ip:");
    row("addresses, huge text", "ip_addresses", "[\"" + QByteArray(2000000, '1') + "/255.0.0.0\"]", "ip:");
    row("addresses, many dots", "ip_addresses", "[\"" + QByteArray("1.").repeated(500000) + "/255.0.0.0\"]", "ip:/");
    row("addresses, huge netmask", "ip_addresses", "[\"10.0.0.6/" + QByteArray(2000000, '1') + "\"]", "ip:10.0.0.6/");
    row("gateway, deep", "ip_gateway", deep, "gateway:");
    row("gateway, object", "ip_gateway", "{}", "gateway:");
    row("gateway, nested", "ip_gateway", "[[\"10.0.0.1\"]]", "gateway:");
    row("gateway, huge text", "ip_gateway", "[\"" + QByteArray(2000000, '1') + "\"]", "gateway:");
    row("gateway, zero byte", "ip_gateway", R"(["10.0.0.1\u0000"])", "gateway:");
    row("manual, JSON", "manual", "true", "type:0");
    row("manual, zero byte", "manual", QByteArray("yes\0", 4), "type:0");
    row("manual, invalid UTF-8", "manual", "yes\xff", "type:0");
    row("type, zero byte", "type", QByteArray("wifi\0", 5), "kind:0");
    row("type, invalid UTF-8", "type", "\xffwifi", "kind:0");
    row("type, huge", "type", QByteArray(2000000, 'w'), "kind:0");
    row("mtu, too large", "mtu", "2147483648", "mtu:0");
    row("mtu, largest", "mtu", "2147483647", "mtu:2147483647");
    row("mtu, smallest", "mtu", "-2147483648", "mtu:-2147483648");
    row("mtu, too small", "mtu", "-2147483649", "mtu:0");
    row("mtu, huge", "mtu", QByteArray(100000, '9'), "mtu:0");
    row("mtu, fraction", "mtu", "1500.5", "mtu:0");
    row("mtu, zero byte", "mtu", QByteArray("1400\0", 5), "mtu:0");
    row("mtu, words", "mtu", "many", "mtu:0");
    row("mtu, nothing", "mtu", "", "mtu:0");
    row("up, number", "up", "2", "up:0");
    row("up, capital", "up", "TRUE", "up:0");
    row("up, zero byte", "up", QByteArray("true\0", 5), "up:0");
    row("connected, words", "connected", "perhaps", "connected:0");
    row("address, invalid UTF-8", "link_address", "\xff\xfe", "mac:\xef\xbf\xbd\xef\xbf\xbd");
}

void TestOutsideText::interfaceAttributes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, value);
    QFETCH(QString, text);
    start();
    addInterface("en0", wired());
    addInterface("en1", with(wired(), name.toLatin1(), raw(value)));
    const NetworkInterfaceService service;
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), {{name, raw(value)}});
    for (const NetworkInterface &networkInterface : service.interfaces()) {
        const NetworkInterfaceConfig config = networkInterface.configuration();
        QStringList addresses;
        for (const QNetworkAddressEntry &entry : config.ipAddresses())
            addresses.append(entry.ip().toString() + QLatin1Char('/') + entry.netmask().toString());
        QStringList gateways;
        for (const QHostAddress &gateway : config.gatewayAddresses())
            gateways.append(gateway.toString());
        const QStringList facts {
            QStringLiteral("ip:") + addresses.join(QLatin1Char(',')),
            QStringLiteral("gateway:") + gateways.join(QLatin1Char(',')),
            QStringLiteral("type:%1").arg(config.type()),
            QStringLiteral("kind:%1").arg(networkInterface.type()),
            QStringLiteral("mtu:%1").arg(networkInterface.maxTransmissionUnit()),
            QStringLiteral("up:%1").arg(networkInterface.available()),
            QStringLiteral("connected:%1").arg(networkInterface.connected()),
            QStringLiteral("mac:") + networkInterface.macAddress(),
        };
        QVERIFY2(facts.contains(text), qPrintable(facts.join(QLatin1Char('\n')).left(1000)));
        QVERIFY(!textForm(networkInterface).isEmpty());
    }
    QCOMPARE(service.interfaces().size(), 2);
}

void TestOutsideText::hugeLists()
{
    start();
    addInterface("en0", wired());
    const NetworkInterfaceService service;
    change("en0", "ip_addresses", json(repeated(R"("10.0.0.6/255.0.0.0")", 100000)));
    QCOMPARE(service.interfaces().first().configuration().ipAddresses().size(), 1);
    change("en0", "ip_gateway", json(repeated(R"("10.0.0.9")", 100000)));
    QCOMPARE(service.interfaces().first().configuration().gatewayAddresses().size(), 1);
    QSignalSpy changed(&service, &NetworkInterfaceService::interfaceConfigurationChanged);
    changeStatus("priority", json(repeated(R"("unknown")", 100000)));
    QVERIFY(changed.isEmpty());
    changeStatus("priority", json(repeated(R"("en0")", 1000)));
    QCOMPARE(changed.size(), 1000);
    QCOMPARE(service.interfaces().first().priority(), 1000);
}

void TestOutsideText::statusAttributes_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("zero byte") << QByteArray("en0\0", 4);
    QTest::newRow("zero byte first") << QByteArray("\0en0", 4);
    QTest::newRow("invalid UTF-8") << QByteArray("en0\xff");
    QTest::newRow("line break") << QByteArray("en0\nerror 1300 forged");
    QTest::newRow("format") << QByteArray("%s%n%d%1");
    QTest::newRow("JSON") << QByteArray("\"en0\"");
    QTest::newRow("huge") << QByteArray(2000000, 'e');
}

void TestOutsideText::statusAttributes()
{
    QFETCH(QByteArray, value);
    const LocalEncoding encoding("UTF-8");
    start();
    addInterface("en0", wired());
    const NetworkInterfaceService service;
    changeStatus("default_interface", text("en0"));
    QSignalSpy preferred(&service, &NetworkInterfaceService::preferredInterfaceChanged);
    LogCapture log(3);
    changeStatus("default_interface", raw(value));
    QCOMPARE(preferred.size(), 1);
    QVERIFY(service.preferredInterface().isEmpty());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    const QString name = QString::fromUtf8(value.constData()); // printed up to its zero
    QCOMPARE(lines.first(),
             QLatin1String("warning 1300 Preferred network interface changed to \"") + name
                 + QLatin1String("\" which is not in the list of known interfaces."));
}

void TestOutsideText::strangeNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blank") << QStringLiteral(" ");
    QTest::newRow("quotes") << QStringLiteral("a\"b");
    QTest::newRow("backslash") << QStringLiteral("a\\b");
    QTest::newRow("format") << QStringLiteral("%s%n%1");
    QTest::newRow("line break") << QStringLiteral("a\nb");
    QTest::newRow("zero") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("outside ASCII") << QString::fromUtf8("\xc3\xa9\xe2\x82\xac\xf0\x9f\x9a\x97");
    QTest::newRow("lone surrogate") << QString(QChar(0xd83d));
    QTest::newRow("long") << QString(100000, QLatin1Char('n'));
}

void TestOutsideText::strangeNames()
{
    QFETCH(QString, name);
    start();
    LogCapture log(7);
    ZopDouble::add(interfaces(), name, with(wired(), "parent_interface", ZopVariant(name)));
    ZopDouble::add(interfaces(), QStringLiteral("child"), with(wired(), "parent_interface", ZopVariant(name)));
    NetworkInterfaceService service;
    QCOMPARE(service.interfaces().size(), 2);
    NetworkInterface found;
    for (const NetworkInterface &networkInterface : service.interfaces()) {
        if (networkInterface.name() == name)
            found = networkInterface;
    }
    QVERIFY(!found.isEmpty());
    QVERIFY(textForm(found).contains(name));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::ConfigurationType(2));
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(service.configure(found, config));
    QVERIFY(!operation->hasError());
    QCOMPARE(ZopDouble::commands().size(), 1);
    QCOMPARE(ZopDouble::commands().first().dat.bytes(), ('"' + name + '"').toUtf8());
    ZopDouble::remove(interfaces(), name);
    QCOMPARE(service.interfaces().size(), 1);
}

void TestOutsideText::strangeErrors_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("largest") << 2147483647 << QStringLiteral("%1 %s %n");
    QTest::newRow("smallest") << -2147483647 - 1 << QStringLiteral("a\nb");
    QTest::newRow("zero") << 0 << QString(QChar(0));
    QTest::newRow("huge") << 1 << QString(2000000, QLatin1Char('e'));
}

void TestOutsideText::strangeErrors()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    start();
    addInterface("en0", wired());
    NetworkInterfaceService service;
    LogCapture log(7);
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::ConfigurationType(2));
    const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(
        service.configure(service.interfaces().first(), config));
    QSignalSpy failure(operation.get(), &AsyncNetworkInterfaceOperation::failure);
    ZopDouble::answerError(0, code, text);
    QVERIFY(failure.wait());
    QCOMPARE(operation->error().code(), code);
    QCOMPARE(operation->error().message(),
             QLatin1String("The system was unable to configure the interface. (") + text + QLatin1Char(')'));
}

QTEST_GUILESS_MAIN(TestOutsideText)
#include "tst_outsidetext.moc"
