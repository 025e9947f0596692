// SPDX-License-Identifier: Apache-2.0
// Scenario files. A refused one has a reason. An accepted one says what its JSON says, keeps the rules of a world,
// checked here anew, is read the same again, and is refused with one key more, known or not. Those that come with the
// product are accepted.
#include "scenariocontent.h"

#include "profilecheck.h"
#include "scenariofiles.h"
#include "scenariowarnings.h"

#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>
#include <QtNetwork/QHostAddress>

using namespace morvek;
using Fuzz::expect;

namespace {

void checkTimes(DelayRange delay)
{
    expect(delay.from >= 0 && delay.from <= delay.to && delay.to <= LongestTime, "a delay is a range");
}

/*! By the bits. The hosts of an IPv4 network have neither all of their own bits unset nor all of them set. */
void checkAddresses(const AddressSet &set, const QString &interface, QHash<QHostAddress, QString> *owners)
{
    QVector<QPair<quint32, quint32>> ipv4;
    bool hasIpv6 = false;
    for (const QString &text : set.addresses) {
        const QHostAddress address(text.section(QLatin1Char('/'), 0, 0));
        const bool shared = !address.isLinkLocal() && owners->value(address, interface) != interface;
        expect(!shared, "an address is one interface's");
        owners->insert(address, interface);
        const QHostAddress netmask(text.section(QLatin1Char('/'), 1));
        hasIpv6 = hasIpv6 || address.protocol() == QAbstractSocket::IPv6Protocol;
        if (address.protocol() != QAbstractSocket::IPv4Protocol)
            continue;
        const quint32 own = ~netmask.toIPv4Address();
        const quint32 host = address.toIPv4Address() & own;
        expect(own <= 1 || (host != 0 && host != own), "an address is a host's");
        ipv4.append({address.toIPv4Address(), netmask.toIPv4Address()});
    }
    for (const QString &text : set.gateways) {
        const QHostAddress gateway(text);
        const quint32 bits = gateway.toIPv4Address();
        const bool isNear = std::any_of(ipv4.cbegin(), ipv4.cend(), [bits](const QPair<quint32, quint32> &one) {
            return ((one.first ^ bits) & one.second) == 0 && one.first != bits;
        });
        expect(gateway.protocol() == QAbstractSocket::IPv4Protocol ? isNear : hasIpv6 || gateway.isLinkLocal(),
               "a gateway is near");
    }
}

void checkAllAddresses(const Scenario &scenario)
{
    QHash<QHostAddress, QString> owners;
    for (const ScenarioInterface &interface : scenario.interfaces) {
        checkAddresses(interface.lease, interface.name, &owners);
        checkAddresses(interface.given, interface.name, &owners);
    }
    for (const ScenarioAccessPoint &point : scenario.wifi.accessPoints)
        checkAddresses(point.lease, scenario.wifi.interface, &owners);
}

QSet<QString> checkInterfaces(const Scenario &scenario)
{
    QSet<QString> names;
    for (const ScenarioInterface &interface : scenario.interfaces) {
        expect(!interface.name.isEmpty() && interface.name.size() <= 15 && !interface.name.contains(QLatin1Char('/')),
               "an interface's name can be an object's");
        expect(!names.contains(interface.name), "names are used once");
        expect(interface.mtu == 0 || (interface.mtu >= 68 && interface.mtu <= 65536), "the MTU");
        expect(!interface.connected || (interface.present && interface.up), "what is connected is there");
        const AddressSet &addresses = interface.manual ? interface.given : interface.lease;
        expect(!interface.connected || !addresses.addresses.isEmpty(), "what is connected has addresses");
        names.insert(interface.name);
    }
    for (const ScenarioInterface &interface : scenario.interfaces)
        expect(interface.parent.isEmpty() || names.contains(interface.parent), "a parent is there");
    return names;
}

void checkWifi(const ScenarioWifi &wifi, const QSet<QString> &interfaces)
{
    if (wifi.interface.isEmpty()) {
        expect(wifi.accessPoints.isEmpty(), "access points need a station");
        return;
    }
    expect(interfaces.contains(wifi.interface), "the station's interface is there");
    QSet<QString> bssids;
    for (const ScenarioAccessPoint &point : wifi.accessPoints) {
        expect(point.bssid.size() == 17 && !bssids.contains(point.bssid), "a bssid");
        expect(point.ssid.toUtf8().size() <= 32, "an ssid");
        expect(point.passkey.isEmpty() || ProfileCheck::isPasskey(point.passkey), "a passkey");
        expect(point.signalLevel >= -100 && point.signalLevel <= 0 && point.drift >= 0, "a level");
        bssids.insert(point.bssid);
    }
    expect(wifi.connected.isEmpty() || (wifi.power && bssids.contains(wifi.connected)), "the connection");
}

void checkTimeline(const Scenario &scenario, const QSet<QString> &interfaces)
{
    int last = 0;
    for (const TimelineEvent &event : scenario.timeline) {
        expect(event.at >= last && event.at <= LongestTime, "events are in order");
        expect(event.interface.isEmpty() || interfaces.contains(event.interface), "an event's interface is known");
        expect(event.bssid.isEmpty() || scenario.wifi.accessPoint(event.bssid), "an event's access point is known");
        expect(event.backAfter >= -1 && !event.text.isEmpty(), "an event");
        last = event.at;
    }
}

void checkFaults(const Scenario &scenario, const QSet<QString> &interfaces)
{
    for (const Fault &fault : scenario.faults) {
        expect(fault.kind != Fault::Refuse || fault.code >= 1, "a refusal has a code");
        expect(fault.skip >= 0 && (fault.times == -1 || fault.times >= 1) && fault.delay >= 0, "a fault's numbers");
        expect(fault.interface.isEmpty() || interfaces.contains(fault.interface), "a fault's interface is known");
        const bool isKnown = std::any_of(scenario.wifi.accessPoints.cbegin(), scenario.wifi.accessPoints.cend(),
                                         [&fault](const ScenarioAccessPoint &one) { return one.ssid == fault.ssid; });
        expect(fault.ssid.isEmpty() || isKnown, "a fault's network is known");
    }
}

void checkWorld(const Scenario &scenario)
{
    const ScenarioDelays &delays = scenario.delays;
    for (const DelayRange &delay : {delays.reply, delays.release, delays.manual, delays.lease, delays.scan,
                                    delays.associate, delays.hotspotStart, delays.hotspotStop})
        checkTimes(delay);
    const QSet<QString> interfaces = checkInterfaces(scenario);
    QSet<QString> ranked;
    for (const QString &name : scenario.priority) {
        expect(interfaces.contains(name) && !ranked.contains(name), "the ranking");
        ranked.insert(name);
    }
    expect(scenario.defaultInterface.isEmpty() || interfaces.contains(scenario.defaultInterface), "the default");
    checkWifi(scenario.wifi, interfaces);
    checkAllAddresses(scenario);
    expect(scenario.hotspot.profile.isEmpty() || ProfileCheck::isProfile(scenario.hotspot.profile), "the hotspot");
    checkTimeline(scenario, interfaces);
    checkFaults(scenario, interfaces);
    for (const QString &warning : warningsOf(scenario))
        expect(warning.contains(QLatin1String("]")), "a warning names its place");
}

/*! Of all objects inside. */
int membersIn(const QJsonValue &value)
{
    int count = value.toObject().size();
    for (const QJsonValue &member : value.toObject())
        count += membersIn(member);
    for (const QJsonValue &item : value.toArray())
        count += membersIn(item);
    return count;
}

/*! Each member has one outside of texts. */
int colonsIn(const QByteArray &json)
{
    int count = 0;
    bool isText = false;
    for (int i = 0; i < json.size(); ++i) {
        if (json.at(i) == '"')
            isText = !isText;
        else if (json.at(i) == '\\' && isText)
            ++i;
        else if (json.at(i) == ':' && !isText)
            ++count;
    }
    return count;
}

bool isAccepted(const QByteArray &input)
{
    Scenario scenario;
    QString error = QStringLiteral("from before");
    const bool accepted = readScenario(input, &scenario, &error);
    Fuzz::expectEqual(error.isEmpty(), accepted, "whether there is a reason");
    if (!accepted)
        return false;
    const QJsonDocument document = QJsonDocument::fromJson(input);
    ScenarioContent::expectSame(document.object(), scenario);
    checkWorld(scenario);
    Fuzz::expectEqual(membersIn(document.object()), colonsIn(input), "no member hides another one");

    const QByteArray again = document.toJson(QJsonDocument::Compact);
    Scenario second;
    expect(readScenario(again, &second, &error), "it is accepted again");
    ScenarioContent::expectSame(document.object(), second);
    expect(!readScenario(again.chopped(1) + R"(,"zz":1})", &second, &error), "a key that nobody knows is refused");
    expect(error.contains(QLatin1String("\"zz\"")), "and named");
    expect(!readScenario(again.chopped(1) + R"(,"\u0069nterfaces":[]})", &second, &error), "so is a second one");
    expect(error.endsWith(QLatin1String(": a second \"interfaces\"")), "and named");
    return true;
}

/*! Those that come with the product. */
bool areShippedAccepted()
{
    const QStringList names = ScenarioFiles::shipped();
    expect(!names.isEmpty(), "scenarios come with the product");
    for (const QString &name : names) {
        QFile file(QStringLiteral(":/scenarios/%1.json").arg(name));
        expect(file.open(QIODevice::ReadOnly) && isAccepted(file.readAll()), "a scenario of the product is accepted");
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool shipped = areShippedAccepted();
    Q_UNUSED(shipped)
    isAccepted(Fuzz::bytes(data, size));
    return 0;
}
