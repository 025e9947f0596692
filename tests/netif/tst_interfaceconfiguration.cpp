// SPDX-License-Identifier: Apache-2.0
#include "eventloop.h"
#include "livingcommands.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "networkinterfaceproviderzop_p.h"
#include "privatehalf.h"
#include "providerevents.h"
#include "textlines.h"
#include "zopinterfaceconnection_p.h"

#include <QtTest/QtTest>

#include <memory>
#include <utility>

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

const char *const Unknown = "failure -1 The interface to configure is not in the list of known interfaces.";
const char *const Same =
    "failure -1 The new configuration settings are the same as the current configuration settings.";
const char *const Incomplete = "failure -1 For manual configuration, the new configuration settings must specify an "
                               "IP address, a netmask address and a gateway address.";

const char *const ConfigureLine =
    "debug1 1300 virtual void morvek::NetworkInterfaceProviderZop::configure(morvek::AsyncNetworkInterfaceOperation*, "
    "const morvek::NetworkInterface&, const morvek::NetworkInterfaceConfig&) (";
const char *const ConnectLine =
    "debug1 1300 int morvek::NetworkInterfaceProviderZop::connectInterface(morvek::NetworkInterfaceProviderZop::"
    "ZopInterfaceConnection*, const morvek::NetworkInterfaceConfig&) (";
const char *const DisconnectLine =
    "debug1 1300 int morvek::NetworkInterfaceProviderZop::disconnectInterface(morvek::NetworkInterfaceProviderZop::"
    "ZopInterfaceConnection*) (";

QNetworkAddressEntry entry(const char *ip, const char *netmask)
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QLatin1String(ip)));
    entry.setNetmask(QHostAddress(QLatin1String(netmask)));
    return entry;
}

NetworkInterfaceConfig config(int type, const QList<QNetworkAddressEntry> &addresses,
                              const QList<QHostAddress> &gateways)
{
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::ConfigurationType(type));
    config.setIpAddresses(addresses);
    config.setGatewayAddresses(gateways);
    return config;
}

QHostAddress host(const char *address)
{
    return QHostAddress(QLatin1String(address));
}

NetworkInterfaceConfig manual()
{
    return config(1, {entry("10.1.1.20", "255.255.255.0")}, {host("10.1.1.1")});
}

const char *const ManualText = "NetworkInterfaceConfig{type:manualip:[10.1.1.20/255.255.255.0]gateways:[10.1.1.1]}";

NetworkInterface publicValue(const NetworkInterfaceData &data)
{
    using ServicePrivate = PrivateHalfOf<NetworkInterfaceService>;
    NetworkInterface networkInterface;
    ServicePrivate::writeData(networkInterface, data);
    return networkInterface;
}

/*! What an application may hold of the interface \a name: its configuration is \a current. */
NetworkInterface held(const char *name, const NetworkInterfaceConfig &current = NetworkInterfaceConfig())
{
    NetworkInterfaceData data;
    data.name = QLatin1String(name);
    data.configuration = current;
    return publicValue(data);
}

/*! The commands that were sent, each as "name dat". */
QStringList sent()
{
    QStringList commands;
    const QList<ZopDouble::Command> all = ZopDouble::commands();
    for (const ZopDouble::Command &command : all)
        commands.append(command.message + QLatin1Char(' ') + command.dat.toString());
    return commands;
}

const char *const Disconnect = "net_disconnected \"en0\"";
const char *const ConnectManual =
    "net_connected [\"en0\",{\"gateway\":\"10.1.1.1\",\"ip_address\":\"10.1.1.20\",\"manual\":\"yes\","
    "\"manual6\":\"off\",\"netmask\":\"255.255.255.0\"}]";
const char *const ConnectAuto = "net_connected [\"en0\",{\"manual\":\"no\",\"manual6\":\"off\"}]";

/*! A ready provider that knows "en0", and an operation. */
struct Fixture
{
    explicit Fixture(const ZopDouble::Values &values)
    {
        start();
        provider = std::make_unique<NetworkInterfaceProviderZop>();
        addInterface("en0", values);
        events = std::make_unique<ProviderEvents>(*provider);
        operation = std::make_unique<AsyncNetworkInterfaceOperation>();
        ZopDouble::clearJournal();
    }

    void configure(const NetworkInterfaceConfig &config = manual())
    {
        provider->configure(operation.get(), held("en0"), config);
    }

    std::unique_ptr<NetworkInterfaceProviderZop> provider;
    std::unique_ptr<ProviderEvents> events;
    std::unique_ptr<AsyncNetworkInterfaceOperation> operation;
};

} // namespace

class TestInterfaceConfiguration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void refusals_data();
    void refusals();
    void refusalsAreCheckedInOrder();
    void callersCopyDecides();
    void acceptedConfigurations_data();
    void acceptedConfigurations();

    void connectsADisconnectedInterface();
    void disconnectsAConnectedInterface();
    void presentStateDecides();
    void logsAConnection();
    void logsADisconnection();
    void logsNothingBelowItsThreshold();
    void settingsOfAConnection_data();
    void settingsOfAConnection();
    void returnsTheIdentifier();
    void nameIsNotEscapedInADisconnection();

    void waitsUntilTheAddressesAreGone();
    void addressesGoneBeforeTheReply();
    void otherInterfacesDoNotCount();
    void handlerWorksOnce();
    void handlerIsGoneBeforeItsRequest();
    void waitsForASignalWithoutAddresses();

    void succeedsWithTheRecordOfThatMoment();
    void replyToADisconnectionTellsNothing();
    void refusedByTheDaemon_data();
    void refusedByTheDaemon();
    void refusalLines();
    void unknownIdentifiers();
    void refusalOfAStranger();
    void repliesInAnotherOrder();
    void twoRequestsForOneInterface();
    void failedDisconnectionLeavesTheHandlerArmed();
    void failedDisconnectionAfterTheAddresses();
    void identifierIsTakenOnce();
    void identifierIsGivenTwice();

    void vanishedBeforeTheReplyToAConnection_data();
    void vanishedBeforeTheReplyToAConnection();
    void vanishedBeforeTheReplyToADisconnection_data();
    void vanishedBeforeTheReplyToADisconnection();
    void vanishedBeforeTheAddressesWereGone();
    void logsBeforeItFails();
    void vanishedAfterItsIdentifierWasUsedAgain();
    void vanishedAfterAFailedDisconnection();
    void vanishedWithTwoCommandsInFlight_data();
    void vanishedWithTwoCommandsInFlight();
    void vanishedAndCameBack();
    void anotherInterfaceVanished();
    void severalWaitForTheSameInterface();
    void identifierIsUsedAgain();
    void announcedTwiceWhileConfigured();
    void announcedTwiceWhileConfiguredAndRemoved();

    void deletedOperationIsSkipped_data();
    void deletedOperationIsSkipped();
    void deletedOperationStillSwitches();
    void deletedProviderForgets();
    void commandsLiveAsLongAsTheProvider();
};

void TestInterfaceConfiguration::refusals_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<NetworkInterfaceConfig>("current");
    QTest::addColumn<NetworkInterfaceConfig>("wanted");
    QTest::addColumn<QString>("event");
    QTest::addColumn<QStringList>("log");
    const QNetworkAddressEntry address = entry("10.1.1.20", "255.255.255.0");
    const QHostAddress gateway = host("10.1.1.1");
    const auto row = [](const char *title, const char *name, const NetworkInterfaceConfig &current,
                        const NetworkInterfaceConfig &wanted, const char *event,
                        std::initializer_list<const char *> log) {
        QTest::newRow(title) << QString::fromLatin1(name) << current << wanted << QString::fromLatin1(event)
                             << lines(log);
    };
    const char *const unknown = "debug1 1300 Passed in a NetworkInterface to configure() that is not in the list of "
                                "known interfaces.";
    const char *const same = "debug1 1300 Trying to configure an interface with its current configuration.";
    const char *const incomplete =
        "debug1 1300 The configuration data is incomplete and the interface cannot be configured.";
    const char *const alreadyAuto = "debug1 1300 Trying to configure an interface to type=auto (DHCP) that's already "
                                    "using DHCP configuration.";
    row("unknown", "en9", {}, manual(), Unknown, {unknown});
    row("no name", "", {}, manual(), Unknown, {unknown});
    row("auto to auto", "en0", {}, {}, Same, {alreadyAuto});
    row("auto to another auto", "en0", config(0, {address}, {gateway}), {}, Same, {alreadyAuto});
    row("same manual", "en0", manual(), manual(), Same, {same});
    row("same incomplete manual", "en0", config(1, {}, {}), config(1, {}, {}), Same, {same});
    row("same other type", "en0", config(2, {}, {}), config(2, {}, {}), Same, {same});
    row("manual, nothing", "en0", {}, config(1, {}, {}), Incomplete,
        {incomplete, "debug1 1300 Passed in: NetworkInterfaceConfig{type:manual}"});
    row("manual, no address", "en0", {}, config(1, {}, {gateway}), Incomplete,
        {incomplete, "debug1 1300 Passed in: NetworkInterfaceConfig{type:manualgateways:[10.1.1.1]}"});
    row("manual, no gateway", "en0", {}, config(1, {address}, {}), Incomplete,
        {incomplete, "debug1 1300 Passed in: NetworkInterfaceConfig{type:manualip:[10.1.1.20/255.255.255.0]}"});
    row("manual, null address", "en0", {}, config(1, {QNetworkAddressEntry(), address}, {gateway}), Incomplete,
        {incomplete,
         "debug1 1300 Passed in: "
         "NetworkInterfaceConfig{type:manualip:[,10.1.1.20/255.255.255.0]gateways:[10.1.1.1]}"});
    row("manual, null netmask", "en0", {}, config(1, {entry("10.1.1.20", ""), address}, {gateway}), Incomplete,
        {incomplete,
         "debug1 1300 Passed in: "
         "NetworkInterfaceConfig{type:manualip:[10.1.1.20,10.1.1.20/255.255.255.0]gateways:[10.1.1.1]}"});
    row("manual, null gateway", "en0", {}, config(1, {address}, {QHostAddress(), gateway}), Incomplete,
        {incomplete,
         "debug1 1300 Passed in: "
         "NetworkInterfaceConfig{type:manualip:[10.1.1.20/255.255.255.0]gateways:[,10.1.1.1]}"});
}

void TestInterfaceConfiguration::refusals()
{
    QFETCH(QString, name);
    QFETCH(NetworkInterfaceConfig, current);
    QFETCH(NetworkInterfaceConfig, wanted);
    QFETCH(QString, event);
    QFETCH(QStringList, log);
    const Fixture fixture(wired());
    LogCapture capture(6);
    fixture.provider->configure(fixture.operation.get(), held(name.toLatin1(), current), wanted);
    QCOMPARE(fixture.events->take(), QStringList {event});
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get()});
    QCOMPARE(capture.take().mid(1), log);
    QVERIFY(ZopDouble::commands().isEmpty());
    QVERIFY(ZopDouble::journal().isEmpty());
    releaseAddresses("en0");
    QVERIFY(ZopDouble::commands().isEmpty());
}

void TestInterfaceConfiguration::refusalsAreCheckedInOrder()
{
    const Fixture fixture(wired());
    fixture.provider->configure(fixture.operation.get(), held("en9"), {});
    fixture.provider->configure(fixture.operation.get(), held("en9", manual()), manual());
    fixture.provider->configure(fixture.operation.get(), held("en9"), config(1, {}, {}));
    QCOMPARE(fixture.events->take(), lines({Unknown, Unknown, Unknown}));
    fixture.provider->configure(fixture.operation.get(), held("en0", config(1, {}, {})), config(1, {}, {}));
    QCOMPARE(fixture.events->take(), lines({Same}));
}

// What the application holds is compared, not what the daemon has told since.
void TestInterfaceConfiguration::callersCopyDecides()
{
    const Fixture fixture(with(unplugged(), "manual", text("yes")));
    QCOMPARE(int(fixture.provider->interfaces().first().configuration.type()), 1);
    fixture.provider->configure(fixture.operation.get(), held("en0"), {});
    QCOMPARE(fixture.events->take(), lines({Same}));
    fixture.provider->configure(fixture.operation.get(), held("en0", manual()), {});
    QVERIFY(fixture.events->take().isEmpty());
    QCOMPARE(sent(), lines({ConnectAuto}));
}

void TestInterfaceConfiguration::acceptedConfigurations_data()
{
    QTest::addColumn<NetworkInterfaceConfig>("current");
    QTest::addColumn<NetworkInterfaceConfig>("wanted");
    QTest::addColumn<QString>("command");
    const QString other = QStringLiteral("net_connected [\"en0\",{\"manual6\":\"off\"}]");
    const QNetworkAddressEntry address = entry("10.1.1.20", "255.255.255.0");
    QTest::newRow("auto to manual") << NetworkInterfaceConfig() << manual() << ConnectManual;
    QTest::newRow("manual to auto") << manual() << NetworkInterfaceConfig() << ConnectAuto;
    QTest::newRow("manual to auto with addresses")
        << manual() << config(0, {address}, {host("10.1.1.1")}) << ConnectAuto;
    QTest::newRow("manual to manual") << config(1, {}, {}) << manual() << ConnectManual;
    QTest::newRow("only the first ones count")
        << NetworkInterfaceConfig()
        << config(1, {address, entry("10.9.9.9", "255.0.0.0")}, {host("10.1.1.1"), host("10.9.9.1")}) << ConnectManual;
    QTest::newRow("another type") << NetworkInterfaceConfig() << config(2, {address}, {host("10.1.1.1")}) << other;
    QTest::newRow("another type without anything") << NetworkInterfaceConfig() << config(-1, {}, {}) << other;
    QTest::newRow("another type to auto") << config(2, {}, {}) << NetworkInterfaceConfig() << ConnectAuto;
}

void TestInterfaceConfiguration::acceptedConfigurations()
{
    QFETCH(NetworkInterfaceConfig, current);
    QFETCH(NetworkInterfaceConfig, wanted);
    QFETCH(QString, command);
    const Fixture fixture(unplugged());
    fixture.provider->configure(fixture.operation.get(), held("en0", current), wanted);
    QCOMPARE(sent(), QStringList {command});
    QVERIFY(fixture.events->take().isEmpty());
}

void TestInterfaceConfiguration::connectsADisconnectedInterface()
{
    Fixture fixture(unplugged());
    fixture.configure();
    QCOMPARE(ZopDouble::journal(),
             lines({
                 "command /zop/services/networking/control parent morvek::NetworkInterfaceProviderZop",
                 "start net_connected 1 connected finished",
             }));
    QCOMPARE(sent(), lines({ConnectManual}));
    QCOMPARE(ZopDouble::commands().first().dat.encoding(), QByteArray("text"));
    QCOMPARE(ZopDouble::commands().first().command->parent(), fixture.provider.get());
    // Nothing waits for addresses here.
    releaseAddresses("en0");
    QCOMPARE(ZopDouble::commands().size(), 1);
    ZopDouble::answer(0);
    QCOMPARE(fixture.events->take(), lines({"changed en0", "success en0"}));
    QVERIFY(ZopDouble::commands().first().command);
}

void TestInterfaceConfiguration::disconnectsAConnectedInterface()
{
    Fixture fixture(wired());
    fixture.configure();
    QCOMPARE(ZopDouble::journal(),
             lines({
                 "command /zop/services/networking/control parent morvek::NetworkInterfaceProviderZop",
                 "start net_disconnected 1 connected finished",
             }));
    QCOMPARE(sent(), lines({Disconnect}));
    QCOMPARE(ZopDouble::commands().first().dat.encoding(), QByteArray("text"));
    QCOMPARE(ZopDouble::commands().first().command->parent(), fixture.provider.get());
}

void TestInterfaceConfiguration::presentStateDecides()
{
    Fixture fixture(unplugged());
    NetworkInterfaceData data;
    data.name = QStringLiteral("en0");
    data.connected = true;
    fixture.provider->configure(fixture.operation.get(), publicValue(data), manual());
    QCOMPARE(sent(), lines({ConnectManual}));
    change("en0", "connected", text("true"));
    fixture.configure();
    QCOMPARE(sent(), lines({ConnectManual, Disconnect}));
}

void TestInterfaceConfiguration::logsAConnection()
{
    Fixture fixture(unplugged());
    LogCapture log(6);
    fixture.configure();
    QCOMPARE(log.take(),
             (QStringList {
                 QLatin1String(ConfigureLine)
                     + QLatin1String("NetworkInterface {name:en0,type:unknown,mac:,available:0,priority:-1,"
                                     "connected:false,configuration:NetworkInterfaceConfig{empty}}, ")
                     + QLatin1String(ManualText) + QLatin1Char(')'),
                 QLatin1String(ConnectLine) + QLatin1String("en0, ") + QLatin1String(ManualText) + QLatin1Char(')'),
             }));
    ZopDouble::answer(0);
    QVERIFY(log.take().isEmpty());
}

void TestInterfaceConfiguration::logsADisconnection()
{
    Fixture fixture(wired());
    LogCapture log(6);
    fixture.configure();
    QCOMPARE(log.take().mid(1), QStringList {QLatin1String(DisconnectLine) + QLatin1String("en0)")});
    ZopDouble::answer(0);
    QVERIFY(log.take().isEmpty());
    releaseAddresses("en0");
    QCOMPARE(log.take(),
             (QStringList {
                 QStringLiteral("debug1 1300 Not a valid IP4 Address and Netmask"),
                 QLatin1String(ConnectLine) + QLatin1String("en0, ") + QLatin1String(ManualText) + QLatin1Char(')'),
             }));
}

void TestInterfaceConfiguration::logsNothingBelowItsThreshold()
{
    Fixture fixture(wired());
    LogCapture log(5);
    fixture.configure();
    fixture.configure(NetworkInterfaceConfig());
    fixture.configure(config(1, {}, {}));
    fixture.provider->configure(fixture.operation.get(), held("en9"), manual());
    fixture.provider->configure(fixture.operation.get(), held("en0", manual()), manual());
    releaseAddresses("en0");
    ZopDouble::answerError(0, 3, QStringLiteral("No"));
    ZopDouble::answer(0);
    QVERIFY(log.take().isEmpty());
    QCOMPARE(fixture.events->take().size(), 6);
}

void TestInterfaceConfiguration::settingsOfAConnection_data()
{
    QTest::addColumn<NetworkInterfaceConfig>("settings");
    QTest::addColumn<QString>("dat");
    QNetworkAddressEntry noNetmask;
    noNetmask.setIp(host("10.1.1.20"));
    const auto row = [](const char *name, const NetworkInterfaceConfig &settings, const char *dat) {
        QTest::newRow(name) << settings << QString::fromLatin1(dat);
    };
    row("manual", manual(),
        R"(["en0",{"gateway":"10.1.1.1","ip_address":"10.1.1.20","manual":"yes","manual6":"off",)"
        R"("netmask":"255.255.255.0"}])");
    row("auto", {}, R"(["en0",{"manual":"no","manual6":"off"}])");
    row("another type", config(2, {noNetmask}, {host("10.1.1.1")}), R"(["en0",{"manual6":"off"}])");
    row("manual, nothing", config(1, {}, {}), R"(["en0",{"manual":"yes","manual6":"off"}])");
    row("manual, gateway only", config(1, {}, {host("10.1.1.1")}),
        R"(["en0",{"gateway":"10.1.1.1","manual":"yes","manual6":"off"}])");
    row("manual, no netmask", config(1, {noNetmask}, {QHostAddress(), host("10.1.1.1")}),
        R"(["en0",{"ip_address":"10.1.1.20","manual":"yes","manual6":"off"}])");
    QNetworkAddressEntry strange;
    strange.setIp(QHostAddress(QStringLiteral("fe80::1")));
    QHostAddress scoped(QStringLiteral("fe80::2"));
    scoped.setScopeId(QStringLiteral("a\"b"));
    row("manual, IPv6 with a zone", config(1, {strange}, {scoped}),
        R"(["en0",{"gateway":"fe80::2%a\"b","ip_address":"fe80::1","manual":"yes","manual6":"off"}])");
    row("manual, null address", config(1, {QNetworkAddressEntry(), noNetmask}, {}),
        R"(["en0",{"manual":"yes","manual6":"off"}])");
}

void TestInterfaceConfiguration::settingsOfAConnection()
{
    QFETCH(NetworkInterfaceConfig, settings);
    const Fixture fixture(unplugged());
    auto *connection = fixture.provider->findChild<NetworkInterfaceProviderZop::ZopInterfaceConnection *>();
    fixture.provider->connectInterface(connection, settings);
    QTEST(ZopDouble::commands().first().dat.toString(), "dat");
}

void TestInterfaceConfiguration::returnsTheIdentifier()
{
    const Fixture fixture(unplugged());
    auto *connection = fixture.provider->findChild<NetworkInterfaceProviderZop::ZopInterfaceConnection *>();
    ZopDouble::setNextId(QStringLiteral("4711"));
    QCOMPARE(fixture.provider->connectInterface(connection, manual()), 4711);
    ZopDouble::setNextId(QStringLiteral("010"));
    QCOMPARE(fixture.provider->disconnectInterface(connection), 10);
    ZopDouble::setNextId(QStringLiteral("-2"));
    QCOMPARE(fixture.provider->disconnectInterface(connection), -2);
}

void TestInterfaceConfiguration::nameIsNotEscapedInADisconnection()
{
    start();
    NetworkInterfaceProviderZop provider;
    NetworkInterfaceData data;
    data.name = QString::fromUtf8("a\"b\\c\xc3\xa9");
    ZopDouble::add(interfaces(), data.name, wired());
    AsyncNetworkInterfaceOperation operation;
    provider.configure(&operation, publicValue(data), manual());
    QCOMPARE(ZopDouble::commands().last().dat.bytes(), QByteArray("\"a\"b\\c\xc3\xa9\""));
    ZopDouble::publish(interfacePath(data.name), {{QStringLiteral("ip_addresses"), json("[]")}});
    QVERIFY(ZopDouble::commands().last().dat.bytes().startsWith("[\"a\\\"b\\\\c\xc3\xa9\",{"));
}

void TestInterfaceConfiguration::waitsUntilTheAddressesAreGone()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::answer(0);
    change("en0", "connected", text("false"));
    change("en0", "mtu", ZopVariant(9000));
    change("en0", "ip_addresses", json(R"(["10.0.0.6/255.0.0.0"])"));
    change("en0", "ip_gateway", json("[]"));
    QCOMPARE(sent(), lines({Disconnect}));
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(),
             lines({"disconnected en0", "changed en0", "changed en0", "changed en0", "changed en0", "success en0"}));
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get()});
}

void TestInterfaceConfiguration::addressesGoneBeforeTheReply()
{
    Fixture fixture(wired());
    fixture.configure();
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    ZopDouble::answer(0);
    QCOMPARE(fixture.events->take(), lines({"changed en0"}));
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
}

void TestInterfaceConfiguration::otherInterfacesDoNotCount()
{
    Fixture fixture(wired());
    addInterface("en1", wired());
    fixture.configure();
    releaseAddresses("en1");
    QCOMPARE(sent(), lines({Disconnect}));
}

void TestInterfaceConfiguration::handlerWorksOnce()
{
    Fixture fixture(wired());
    fixture.configure();
    releaseAddresses("en0");
    releaseAddresses("en0");
    change("en0", "mtu", ZopVariant(1));
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
}

// The daemon may speak of the interface again while the request is written.
void TestInterfaceConfiguration::handlerIsGoneBeforeItsRequest()
{
    Fixture fixture(wired());
    fixture.configure();
    bool spoken = false;
    ZopDouble::onStart([&spoken](const QString &) {
        if (!std::exchange(spoken, true))
            change("en0", "mtu", ZopVariant(1));
    });
    releaseAddresses("en0");
    QVERIFY(spoken);
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
}

// An interface that is connected without an address is switched with the next thing that the daemon tells of it.
void TestInterfaceConfiguration::waitsForASignalWithoutAddresses()
{
    Fixture fixture(with(unplugged(), "connected", text("true")));
    fixture.configure();
    QCOMPARE(sent(), lines({Disconnect}));
    change("en0", "connected", text("false"));
    QCOMPARE(sent(), lines({Disconnect}));
    change("en0", "mtu", ZopVariant(1400));
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
}

void TestInterfaceConfiguration::succeedsWithTheRecordOfThatMoment()
{
    Fixture fixture(unplugged());
    fixture.configure();
    change("en0", "mtu", ZopVariant(9000));
    fixture.events->take();
    ZopDouble::answer(0, json(R"({"anything":1})"));
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
    QCOMPARE(fixture.events->records().first().maxTransmissionUnit, 9000);
    QVERIFY(fixture.events->records().first() == fixture.provider->interfaces().first());
}

void TestInterfaceConfiguration::replyToADisconnectionTellsNothing()
{
    Fixture fixture(wired());
    fixture.configure();
    LogCapture log(6);
    ZopDouble::answer(0);
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(log.take().isEmpty());
    // The request is gone: a second reply has no match.
    ZopDouble::answer(0);
    QCOMPARE(log.take(),
             lines({"debug1 1300 The ZOP networking control sent a message with an id we don't know about."}));
    QVERIFY(fixture.events->take().isEmpty());
}

void TestInterfaceConfiguration::refusedByTheDaemon_data()
{
    QTest::addColumn<bool>("connected");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("event");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, int code, const char *text, const char *event, const char *line) {
        for (const bool connected : {true, false}) {
            const QString command = connected ? QStringLiteral("net_disconnected") : QStringLiteral("net_connected");
            QTest::addRow("%s, %s", name, qPrintable(command))
                << connected << code << QString::fromLatin1(text) << QString::fromLatin1(event)
                << QString::fromLatin1(line).arg(command);
        }
    };
    row("with words", 19, "No such device",
        "failure 19 The system was unable to configure the interface. (No such device)",
        "debug1 1300 The command to %1 failed with error(19):No such device");
    row("without words", 19, "", "failure 19 The system was unable to configure the interface.",
        "debug1 1300 The command to %1 failed with error(19):");
    row("negative", -1, "(timeout)", "failure -1 The system was unable to configure the interface. ((timeout))",
        "debug1 1300 The command to %1 failed with error(-1):(timeout)");
    row("no code", 0, "Busy", "failure 0 The system was unable to configure the interface. (Busy)",
        "debug1 1300 The command to %1 failed with error(0):Busy");
}

void TestInterfaceConfiguration::refusedByTheDaemon()
{
    QFETCH(bool, connected);
    QFETCH(int, code);
    QFETCH(QString, text);
    QFETCH(QString, event);
    QFETCH(QString, line);
    Fixture fixture(connected ? wired() : unplugged());
    fixture.configure();
    LogCapture log(6);
    ZopDouble::answerError(0, code, text);
    QCOMPARE(fixture.events->take(), QStringList {event});
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get()});
    QCOMPARE(log.take(), QStringList {line});
}

void TestInterfaceConfiguration::refusalLines()
{
    Fixture fixture(unplugged());
    fixture.configure();
    LogCapture log(5);
    ZopDouble::answerError(0, 1, QStringLiteral("No"));
    QVERIFY(log.take().isEmpty());
    QCOMPARE(fixture.events->take().size(), 1);
}

void TestInterfaceConfiguration::unknownIdentifiers()
{
    const char *const unknownId =
        "debug1 1300 The ZOP networking control sent a message with an id we don't know about.";
    Fixture fixture(wired());
    fixture.configure();
    releaseAddresses("en0");
    fixture.events->take();
    const std::unique_ptr<ZopControlCommand> stranger(new ZopControlCommand(nullptr, nullptr));
    ZopDouble::setNextId(QStringLiteral("77"));
    stranger->start();
    LogCapture log(6);
    fixture.provider->onControlCommandConnectFinished(stranger.get());
    fixture.provider->onControlCommandConfigureDisconnectFinished(stranger.get());
    QCOMPARE(log.take(), lines({unknownId, unknownId}));
    KrelLogger::setVerbosity(5);
    fixture.provider->onControlCommandConnectFinished(stranger.get());
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
}

void TestInterfaceConfiguration::refusalOfAStranger()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopControlCommand stranger(nullptr, nullptr);
    ZopDouble::setNextId(QStringLiteral("77"));
    stranger.start();
    connect(&stranger, &ZopControlCommand::finished, fixture.provider.get(),
            &NetworkInterfaceProviderZop::onControlCommandConnectFinished);
    connect(&stranger, &ZopControlCommand::finished, fixture.provider.get(),
            &NetworkInterfaceProviderZop::onControlCommandConfigureDisconnectFinished);
    LogCapture log(7);
    ZopDouble::answerError(1, 5, QStringLiteral("No"));
    const char *const unknownId =
        "debug1 1300 The ZOP networking control sent a message with an id we don't know about.";
    QCOMPARE(log.take(), lines({unknownId, unknownId}));
    QVERIFY(fixture.events->take().isEmpty());
    releaseAddresses("en0");
    QCOMPARE(sent().last(), QString::fromLatin1(ConnectManual));
}

void TestInterfaceConfiguration::repliesInAnotherOrder()
{
    Fixture fixture(unplugged());
    addInterface("en1", unplugged());
    fixture.configure();
    AsyncNetworkInterfaceOperation second;
    fixture.provider->configure(&second, held("en1"), manual());
    fixture.events->take();
    ZopDouble::answer(1);
    ZopDouble::answerError(0, 5, QString());
    QCOMPARE(fixture.events->take(),
             lines({"success en1", "failure 5 The system was unable to configure the interface."}));
    QCOMPARE(fixture.events->operations(),
             (QList<AsyncNetworkInterfaceOperation *> {&second, fixture.operation.get()}));
}

void TestInterfaceConfiguration::twoRequestsForOneInterface()
{
    Fixture fixture(wired());
    fixture.configure();
    AsyncNetworkInterfaceOperation second;
    fixture.provider->configure(&second, held("en0", manual()), {});
    QCOMPARE(sent(), lines({Disconnect, Disconnect}));
    ZopDouble::answer(0);
    ZopDouble::answer(1);
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, Disconnect, ConnectManual, ConnectAuto}));
    ZopDouble::answer(3);
    ZopDouble::answer(2);
    QCOMPARE(fixture.events->operations(),
             (QList<AsyncNetworkInterfaceOperation *> {&second, fixture.operation.get()}));
}

// The daemon may let go of the addresses after it has refused, and the operation ends twice then.
void TestInterfaceConfiguration::failedDisconnectionLeavesTheHandlerArmed()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::answerError(0, 16, QStringLiteral("Busy"));
    QCOMPARE(fixture.events->take(), lines({"failure 16 The system was unable to configure the interface. (Busy)"}));
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"changed en0", "success en0"}));
    QCOMPARE(fixture.events->operations(),
             (QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get(), fixture.operation.get()}));
    releaseAddresses("en0");
    QCOMPARE(ZopDouble::commands().size(), 2);
}

void TestInterfaceConfiguration::failedDisconnectionAfterTheAddresses()
{
    Fixture fixture(wired());
    fixture.configure();
    releaseAddresses("en0");
    ZopDouble::answerError(0, 16, QString());
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(),
             lines({"changed en0", "failure 16 The system was unable to configure the interface.", "success en0"}));
}

void TestInterfaceConfiguration::identifierIsTakenOnce()
{
    Fixture fixture(unplugged());
    fixture.configure();
    ZopDouble::answer(0);
    ZopDouble::answer(0);
    ZopDouble::answerError(0, 1, QString());
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
}

// What the platform should not do: the later request has the identifier then.
void TestInterfaceConfiguration::identifierIsGivenTwice()
{
    Fixture fixture(unplugged());
    AsyncNetworkInterfaceOperation second;
    ZopDouble::setNextId(QStringLiteral("7"));
    fixture.configure();
    ZopDouble::setNextId(QStringLiteral("7"));
    fixture.provider->configure(&second, held("en0"), manual());
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {&second});
}

void TestInterfaceConfiguration::vanishedBeforeTheReplyToAConnection_data()
{
    QTest::addColumn<bool>("refused");
    QTest::newRow("accepted") << false;
    QTest::newRow("refused") << true;
}

void TestInterfaceConfiguration::vanishedBeforeTheReplyToAConnection()
{
    QFETCH(bool, refused);
    Fixture fixture(unplugged());
    fixture.configure();
    change("en0", "mtu", ZopVariant(9000));
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"changed en0", "removed en0"}));
    if (refused) {
        ZopDouble::answerError(0, 19, QStringLiteral("No such device"));
        QCOMPARE(fixture.events->take(),
                 lines({"failure 19 The system was unable to configure the interface. (No such device)"}));
    } else {
        ZopDouble::answer(0);
        QCOMPARE(fixture.events->take(), lines({"success en0"}));
        QCOMPARE(fixture.events->records().first().maxTransmissionUnit, 9000);
    }
}

void TestInterfaceConfiguration::vanishedBeforeTheReplyToADisconnection_data()
{
    vanishedBeforeTheReplyToAConnection_data();
}

void TestInterfaceConfiguration::vanishedBeforeTheReplyToADisconnection()
{
    QFETCH(bool, refused);
    Fixture fixture(wired());
    fixture.configure();
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0"}));
    LogCapture log(6);
    if (refused) {
        ZopDouble::answerError(0, 19, QString());
        QCOMPARE(fixture.events->take(), lines({"failure 19 The system was unable to configure the interface."}));
        QCOMPARE(log.take(), lines({"debug1 1300 The command to net_disconnected failed with error(19):"}));
    } else {
        ZopDouble::answer(0);
        QCOMPARE(fixture.events->take(), lines({Unknown}));
        QVERIFY(log.take().isEmpty());
    }
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get()});
    QCOMPARE(sent(), lines({Disconnect}));
}

void TestInterfaceConfiguration::vanishedBeforeTheAddressesWereGone()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::answer(0);
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0", Unknown}));
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get()});
    addInterface("en0", wired());
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect}));
    QCOMPARE(fixture.events->take(), lines({"added en0", "changed en0"}));
    // What was forgotten stays forgotten when a later connection takes the place of the deleted one.
    for (int i = 0; i < 10; ++i) {
        removeInterface("en0");
        addInterface("en0", wired());
        QCOMPARE(fixture.events->take(), lines({"removed en0", "added en0"}));
    }
}

void TestInterfaceConfiguration::logsBeforeItFails()
{
    Fixture fixture(unplugged());
    LogCapture log(6);
    QStringList before;
    connect(fixture.provider.get(), &NetworkInterfaceProvider::asyncConfigureFailure, fixture.provider.get(),
            [&] { before = log.take(); });
    AsyncNetworkInterfaceOperation refused;
    fixture.provider->configure(&refused, held("en9"), manual());
    QCOMPARE(before.size(), 2);
    QCOMPARE(before.last(),
             QStringLiteral("debug1 1300 Passed in a NetworkInterface to configure() that is not in the list of known "
                            "interfaces."));
    QVERIFY(log.take().isEmpty());

    fixture.configure();
    log.take();
    ZopDouble::answerError(0, 5, QStringLiteral("No"));
    QCOMPARE(before, lines({"debug1 1300 The command to net_connected failed with error(5):No"}));
    QVERIFY(log.take().isEmpty());
}

void TestInterfaceConfiguration::vanishedAfterItsIdentifierWasUsedAgain()
{
    Fixture fixture(wired());
    addInterface("en1", wired());
    ZopDouble::setNextId(QStringLiteral("7"));
    fixture.configure();
    ZopDouble::answer(0);
    AsyncNetworkInterfaceOperation second;
    ZopDouble::setNextId(QStringLiteral("7"));
    fixture.provider->configure(&second, held("en1"), manual());
    fixture.events->take();
    ZopDouble::answerError(1, 5, QString());
    QCOMPARE(fixture.events->take(), lines({"failure 5 The system was unable to configure the interface."}));
    removeInterface("en0");
    QCOMPARE(fixture.events->take(),
             lines({"removed en0", "failure -1 The interface to configure is not in the list of known interfaces."}));
    QCOMPARE(fixture.events->operations(),
             (QList<AsyncNetworkInterfaceOperation *> {&second, fixture.operation.get()}));
}

void TestInterfaceConfiguration::vanishedAfterAFailedDisconnection()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::answerError(0, 16, QString());
    fixture.events->take();
    removeInterface("en0");
    addInterface("en0", wired());
    releaseAddresses("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0", "added en0", "changed en0"}));
    QCOMPARE(sent(), lines({Disconnect}));
}

void TestInterfaceConfiguration::vanishedWithTwoCommandsInFlight_data()
{
    vanishedBeforeTheReplyToAConnection_data();
}

// The new configuration is on its way, so the disconnection's reply does not end the operation.
void TestInterfaceConfiguration::vanishedWithTwoCommandsInFlight()
{
    QFETCH(bool, refused);
    Fixture fixture(wired());
    fixture.configure();
    releaseAddresses("en0");
    removeInterface("en0");
    fixture.events->take();
    ZopDouble::answer(0);
    QVERIFY(fixture.events->take().isEmpty());
    if (refused)
        ZopDouble::answerError(1, 3, QString());
    else
        ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(),
             refused ? lines({"failure 3 The system was unable to configure the interface."}) : lines({"success en0"}));
}

void TestInterfaceConfiguration::vanishedAndCameBack()
{
    Fixture fixture(wired());
    fixture.configure();
    removeInterface("en0");
    addInterface("en0", wired());
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect}));
    fixture.events->take();
    ZopDouble::answer(0);
    QCOMPARE(fixture.events->take(), lines({Unknown}));
}

void TestInterfaceConfiguration::anotherInterfaceVanished()
{
    Fixture fixture(wired());
    addInterface("en1", wired());
    fixture.configure();
    ZopDouble::answer(0);
    removeInterface("en1");
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    addInterface("en1", wired());
    removeInterface("en1");
    change("en0", "mtu", ZopVariant(9000));
    fixture.events->take();
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"success en0"}));
    QCOMPARE(fixture.events->records().first().maxTransmissionUnit, 9000);
}

void TestInterfaceConfiguration::severalWaitForTheSameInterface()
{
    Fixture fixture(wired());
    AsyncNetworkInterfaceOperation second;
    AsyncNetworkInterfaceOperation third;
    fixture.configure();
    fixture.provider->configure(&second, held("en0"), manual());
    fixture.provider->configure(&third, held("en0"), manual());
    ZopDouble::answer(2);
    ZopDouble::answer(0);
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0", Unknown, Unknown}));
    QCOMPARE(fixture.events->operations(), (QList<AsyncNetworkInterfaceOperation *> {fixture.operation.get(), &third}));
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({Unknown}));
    QCOMPARE(fixture.events->operations().last(), &second);
}

// Identifiers are unique among the pending requests, not for ever.
void TestInterfaceConfiguration::identifierIsUsedAgain()
{
    Fixture fixture(wired());
    AsyncNetworkInterfaceOperation second;
    fixture.configure();
    ZopDouble::answer(0);
    ZopDouble::setNextId(QStringLiteral("1"));
    fixture.provider->configure(&second, held("en0"), manual());
    ZopDouble::answerError(1, 16, QString());
    QCOMPARE(fixture.events->operations(), QList<AsyncNetworkInterfaceOperation *> {&second});
    fixture.events->take();
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0", Unknown}));
    QCOMPARE(fixture.events->operations(),
             (QList<AsyncNetworkInterfaceOperation *> {&second, fixture.operation.get()}));
}

void TestInterfaceConfiguration::announcedTwiceWhileConfigured()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    fixture.events->take();
    ZopDouble::answer(0);
    QVERIFY(fixture.events->take().isEmpty());
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    ZopDouble::answer(1);
    QCOMPARE(fixture.events->take(), lines({"changed en0", "changed en0", "success en0"}));
}

void TestInterfaceConfiguration::announcedTwiceWhileConfiguredAndRemoved()
{
    Fixture fixture(wired());
    fixture.configure();
    ZopDouble::answer(0);
    ZopDouble::announce(interfaces(), QStringLiteral("en0"));
    fixture.events->take();
    removeInterface("en0");
    QCOMPARE(fixture.events->take(), lines({"removed en0", Unknown}));
}

void TestInterfaceConfiguration::deletedOperationIsSkipped_data()
{
    QTest::addColumn<bool>("connected");
    QTest::addColumn<bool>("refused");
    QTest::addColumn<bool>("vanished");
    for (const bool connected : {false, true})
        for (const bool refused : {false, true})
            for (const bool vanished : {false, true})
                QTest::addRow("%s, %s, %s", connected ? "net_disconnected" : "net_connected",
                              refused ? "refused" : "accepted", vanished ? "vanished" : "there")
                    << connected << refused << vanished;
}

void TestInterfaceConfiguration::deletedOperationIsSkipped()
{
    QFETCH(bool, connected);
    QFETCH(bool, refused);
    QFETCH(bool, vanished);
    Fixture fixture(connected ? wired() : unplugged());
    fixture.configure();
    fixture.operation.reset();
    if (vanished)
        removeInterface("en0");
    fixture.events->take();
    LogCapture log(6);
    if (refused)
        ZopDouble::answerError(0, 1, QStringLiteral("No"));
    else
        ZopDouble::answer(0);
    QCOMPARE(log.take().size(), refused ? 1 : 0);
    QVERIFY(fixture.events->take().isEmpty());
    // The request counts as taken.
    ZopDouble::answer(0);
    QCOMPARE(log.take(),
             lines({"debug1 1300 The ZOP networking control sent a message with an id we don't know about."}));
    if (!vanished)
        removeInterface("en0");
    QCOMPARE(fixture.events->take(), vanished ? QStringList() : lines({"removed en0"}));
}

void TestInterfaceConfiguration::deletedOperationStillSwitches()
{
    Fixture fixture(wired());
    fixture.configure();
    fixture.operation.reset();
    ZopDouble::answer(0);
    releaseAddresses("en0");
    QCOMPARE(sent(), lines({Disconnect, ConnectManual}));
    fixture.events->take();
    ZopDouble::answer(1);
    QVERIFY(fixture.events->take().isEmpty());
}

void TestInterfaceConfiguration::deletedProviderForgets()
{
    Fixture fixture(wired());
    addInterface("en1", unplugged());
    fixture.configure();
    AsyncNetworkInterfaceOperation second;
    fixture.provider->configure(&second, held("en1"), manual());
    fixture.events->take();
    fixture.provider.reset();
    for (const ZopDouble::Command &command : ZopDouble::commands())
        QVERIFY(!command.command);
    QVERIFY(fixture.events->take().isEmpty());
    QVERIFY(!fixture.operation->hasError());
    QVERIFY(!second.hasError());
}

void TestInterfaceConfiguration::commandsLiveAsLongAsTheProvider()
{
    Fixture fixture(wired());
    addInterface("en1", unplugged());
    AsyncNetworkInterfaceOperation second;
    AsyncNetworkInterfaceOperation third;
    fixture.configure();
    fixture.provider->configure(&second, held("en0"), manual());
    fixture.provider->configure(&third, held("en1"), manual());
    releaseAddresses("en0");
    ZopDouble::answer(0);
    ZopDouble::answerError(1, 16, QString());
    ZopDouble::answer(2);
    ZopDouble::answer(3);
    ZopDouble::answerError(4, 5, QString());
    removeInterface("en0");
    runQueued();
    runQueued();
    const QList<ZopDouble::Command> commands = ZopDouble::commands();
    QCOMPARE(commands.size(), 5);
    QVERIFY(allBelongTo(fixture.provider.get(), commands));
    fixture.provider.reset();
    QVERIFY(allAreGone(commands));
}

QTEST_GUILESS_MAIN(TestInterfaceConfiguration)
#include "tst_interfaceconfiguration.moc"
