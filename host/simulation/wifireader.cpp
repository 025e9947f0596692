// SPDX-License-Identifier: Apache-2.0
#include "wifireader.h"

#include "jsonnode.h"
#include "scenarioreader.h"
#include "simulatedaccesspoint.h"
#include "wifitext.h"
#include "wirenames.h"

namespace morvek {

namespace {

const auto AccessPointsKey = QLatin1String("access_points");
const auto AnswersKey = QLatin1String("answers");
const auto ConnectedKey = QLatin1String("connected");
const auto DriftKey = QLatin1String("drift");
const auto InRangeKey = QLatin1String("in_range");
const auto InterfaceKey = QLatin1String("interface");
const auto LeaseKey = QLatin1String("lease");
const auto PasskeyKey = QLatin1String("passkey");
const auto PowerKey = QLatin1String("power");

constexpr int HighestFrequency = 100000;
constexpr int MostDrift = 50;

ScenarioAccessPoint readAccessPoint(const JsonNode &node)
{
    node.expectObject({Wire::Bssid, Wire::Ssid, Wire::Frequency, Wire::SignalLevel, DriftKey, Wire::Flags, PasskeyKey,
                       InRangeKey, AnswersKey, LeaseKey});
    ScenarioAccessPoint point;
    point.bssid = node.member(Wire::Bssid).text();
    checkHardwareAddress(node.member(Wire::Bssid));
    point.ssid = node.member(Wire::Ssid).text();
    if (!WifiText::isSsid(point.ssid))
        node.member(Wire::Ssid).fail(QStringLiteral("is longer than 32 bytes"));
    point.frequency = node.member(Wire::Frequency).number(1, HighestFrequency);
    point.signalLevel = readSignalLevel(node.member(Wire::SignalLevel));
    point.drift = node.numberOr(DriftKey, 0, MostDrift, 0);
    point.flags = node.member(Wire::Flags).texts();
    point.passkey = node.textOr(PasskeyKey, QString());
    if (node.has(PasskeyKey) && !WifiText::isPasskey(point.passkey))
        node.member(PasskeyKey).fail(QStringLiteral("is neither 8 to 63 ASCII characters nor 64 hexadecimal digits"));
    point.inRange = node.flagOr(InRangeKey, true);
    point.answers = node.flagOr(AnswersKey, true);
    if (node.has(LeaseKey))
        point.lease = readAddressSet(node.member(LeaseKey));
    return point;
}

/*! The station's connection and the link of its interface are one thing. */
void checkConnected(const JsonNode &node, const ScenarioWifi &wifi, const ScenarioInterface &interface)
{
    if (wifi.connected.isEmpty()) {
        if (interface.up)
            node.member(InterfaceKey)
                .fail(QStringLiteral("\"%1\" is up though the station is not connected (\"up\": false is missing)")
                          .arg(interface.name));
        return;
    }
    const JsonNode place = node.member(ConnectedKey);
    const ScenarioAccessPoint *point = wifi.accessPoint(wifi.connected);
    if (!point)
        place.fail(QStringLiteral("no access point \"%1\"").arg(wifi.connected));
    else if (!wifi.power || !point->inRange)
        place.fail(QStringLiteral("the radio must be on and the access point in range"));
    else if (!SimulatedAccessPoint(*point).canBeJoined())
        place.fail(QStringLiteral("nobody can join \"%1\", as it has no \"passkey\"").arg(wifi.connected));
    else if (!interface.present || !interface.up)
        place.fail(QStringLiteral("\"%1\" must be present and up").arg(interface.name));
}

} // namespace

ScenarioWifi readWifi(const JsonNode &node, const Scenario &scenario)
{
    node.expectObject({InterfaceKey, PowerKey, ConnectedKey, AccessPointsKey});
    ScenarioWifi wifi;
    const JsonNode name = node.member(InterfaceKey);
    wifi.interface = readInterfaceName(name, scenario);
    wifi.power = node.flagOr(PowerKey, true);
    wifi.connected = node.textOr(ConnectedKey, QString());
    const QVector<JsonNode> items = node.member(AccessPointsKey).items();
    for (const JsonNode &item : items) {
        const ScenarioAccessPoint point = readAccessPoint(item);
        if (wifi.accessPoint(point.bssid))
            item.member(Wire::Bssid).fail(QStringLiteral("a second \"%1\"").arg(point.bssid));
        wifi.accessPoints += point;
    }
    for (const ScenarioInterface &interface : scenario.interfaces) {
        if (interface.name != wifi.interface)
            continue;
        if (interface.type != QLatin1String("wifi"))
            name.fail(QStringLiteral("\"%1\" is not of the type wifi").arg(wifi.interface));
        checkConnected(node, wifi, interface);
    }
    return wifi;
}

int readSignalLevel(const JsonNode &node)
{
    return node.number(-100, 0);
}

QString readBssid(const JsonNode &node, const Scenario &scenario)
{
    QString bssid = node.text();
    expectWifi(node, scenario);
    if (!scenario.wifi.accessPoint(bssid))
        node.fail(QStringLiteral("no access point \"%1\"").arg(bssid));
    return bssid;
}

QString readSecuredName(const JsonNode &node, const Scenario &scenario)
{
    QString ssid = node.text();
    const QVector<ScenarioAccessPoint> &points = scenario.wifi.accessPoints;
    if (std::none_of(points.begin(), points.end(),
                     [&ssid](const ScenarioAccessPoint &one) { return one.ssid == ssid && !one.passkey.isEmpty(); }))
        node.fail(QStringLiteral("no access point \"%1\" has a passkey").arg(ssid));
    return ssid;
}

void expectWifi(const JsonNode &node, const Scenario &scenario)
{
    if (scenario.wifi.interface.isEmpty())
        node.fail(QStringLiteral("there is no \"wifi\" in this scenario"));
}

} // namespace morvek
