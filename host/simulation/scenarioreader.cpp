// SPDX-License-Identifier: Apache-2.0
#include "scenarioreader.h"

#include "addresstext.h"
#include "duplicatekey.h"
#include "faultreader.h"
#include "hotspotreader.h"
#include "interfaceaddress.h"
#include "jsonnode.h"
#include "timelinereader.h"
#include "wifireader.h"
#include "wirenames.h"

#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <limits>

namespace morvek {

namespace {

const auto LeaseKey = QLatin1String("lease");

ScenarioInterface readInterface(const JsonNode &node)
{
    node.expectObject({QStringLiteral("name"), Wire::Type, Wire::LinkAddress, Wire::Mtu, Wire::ParentInterface,
                       QStringLiteral("present"), Wire::Up, Wire::Connected, Wire::Manual, LeaseKey});
    ScenarioInterface interface;
    interface.name = node.member(QStringLiteral("name")).text();
    checkForm(node.member(QStringLiteral("name")), QStringLiteral("[A-Za-z0-9_][A-Za-z0-9_.:@-]{0,14}"),
              QStringLiteral("is not a name of 1 to 15 letters, digits and _ . : @ -"));
    interface.type = node.member(Wire::Type).text();
    checkForm(node.member(Wire::Type), QStringLiteral("wired|wifi|usb|cellular|bluetooth_dun|vpn|qv"),
              QStringLiteral("is not one of wired, wifi, usb, cellular, bluetooth_dun, vpn, qv"));
    if (node.has(Wire::LinkAddress)) {
        interface.linkAddress = node.member(Wire::LinkAddress).text();
        checkHardwareAddress(node.member(Wire::LinkAddress));
    }
    interface.mtu = node.numberOr(Wire::Mtu, 68, 65536, 0);
    interface.parent = node.textOr(Wire::ParentInterface, QString());
    interface.present = node.flagOr(QStringLiteral("present"), true);
    interface.up = node.flagOr(Wire::Up, true);
    interface.connected = node.flagOr(Wire::Connected, false);
    interface.manual = node.has(Wire::Manual);
    if (interface.manual)
        interface.given = readAddressSet(node.member(Wire::Manual));
    if (node.has(LeaseKey))
        interface.lease = readAddressSet(node.member(LeaseKey));
    return interface;
}

using InterfacesByName = QHash<QString, ScenarioInterface>;

void checkParent(const JsonNode &node, const InterfacesByName &known, bool circlesAllowed)
{
    const QString name = node.textOr(QStringLiteral("name"), QString());
    QString ancestor = known.value(name).parent;
    if (ancestor.isEmpty())
        return;
    const JsonNode place = node.member(Wire::ParentInterface);
    if (!known.contains(ancestor))
        place.fail(QStringLiteral("no interface \"%1\"").arg(ancestor));
    for (int i = 0; !circlesAllowed && i < known.size() && !ancestor.isEmpty(); ++i) {
        if (ancestor == name)
            place.fail(
                QStringLiteral("\"%1\" is its own ancestor (\"allow_circular_parents\": true permits it)").arg(name));
        ancestor = known.value(ancestor).parent;
    }
}

/*! A world that starts against its own rules would change at its first event for no visible reason. */
void checkConnected(const JsonNode &node, const InterfacesByName &known)
{
    const ScenarioInterface interface = known.value(node.textOr(QStringLiteral("name"), QString()));
    if (!interface.connected)
        return;
    const JsonNode place = node.member(Wire::Connected);
    if (!interface.present || !interface.up)
        place.fail(QStringLiteral("an interface must be present and up to be connected"));
    if (!interface.manual && interface.lease.addresses.isEmpty())
        place.fail(QStringLiteral("there are no addresses for it (\"lease\" or \"manual\")"));
    if (!interface.parent.isEmpty() && !known.value(interface.parent).connected)
        place.fail(QStringLiteral("its parent \"%1\" is not connected").arg(interface.parent));
}

void readInterfaces(const JsonNode &node, bool circlesAllowed, Scenario *scenario)
{
    InterfacesByName known;
    const QVector<JsonNode> items = node.items();
    for (const JsonNode &item : items) {
        const ScenarioInterface interface = readInterface(item);
        if (known.contains(interface.name))
            item.member(QStringLiteral("name")).fail(QStringLiteral("a second \"%1\"").arg(interface.name));
        known.insert(interface.name, interface);
        scenario->interfaces += interface;
        scenario->priority += interface.name;
    }
    for (const JsonNode &item : items) {
        checkParent(item, known, circlesAllowed);
        checkConnected(item, known);
    }
}

/*! Whose addresses are whose. What is link-local may be there once on each link. */
using AddressOwners = QHash<QHostAddress, QString>;

/*! Notes an address of \a interface in the member \a key of \a node that another interface has, too. */
void checkOwners(const JsonNode &node, const QString &key, const QString &interface, AddressOwners *owners)
{
    if (!node.has(key))
        return;
    const QVector<JsonNode> addresses = node.member(key).member(Wire::IpAddresses).items();
    for (const JsonNode &address : addresses) {
        const QHostAddress host = InterfaceAddress(address.text()).host();
        if (host.isLinkLocal())
            continue;
        if (owners->value(host, interface) != interface)
            address.fail(QStringLiteral("\"%1\" has this address, too").arg(owners->value(host)));
        owners->insert(host, interface);
    }
}

/*! What the Wi-Fi station gets somewhere is its interface's. */
void checkAllOwners(const JsonNode &top, const QString &wifi, const Scenario &scenario)
{
    AddressOwners owners;
    const QVector<JsonNode> interfaces = top.member(QStringLiteral("interfaces")).items();
    for (int i = 0; i < interfaces.size(); ++i) {
        for (const QString &key : {QString(LeaseKey), Wire::Manual})
            checkOwners(interfaces.at(i), key, scenario.interfaces.at(i).name, &owners);
    }
    if (!top.has(wifi))
        return;
    const QVector<JsonNode> accessPoints = top.member(wifi).member(QStringLiteral("access_points")).items();
    for (const JsonNode &accessPoint : accessPoints)
        checkOwners(accessPoint, LeaseKey, scenario.wifi.interface, &owners);
}

DelayRange readDelay(const JsonNode &node, const QString &key, DelayRange otherwise)
{
    if (!node.has(key))
        return otherwise;
    const JsonNode delay = node.member(key);
    if (!delay.value().isArray()) {
        const int fixed = delay.number(0, LongestTime);
        return {fixed, fixed};
    }
    const QVector<JsonNode> ends = delay.items();
    if (ends.size() != 2) {
        delay.fail(QStringLiteral("must be a time or [least, most]"));
        return otherwise;
    }
    const int least = ends.at(0).number(0, LongestTime);
    return {least, ends.at(1).number(least, LongestTime)};
}

ScenarioDelays readDelays(const JsonNode &node)
{
    const QString reply = QStringLiteral("reply");
    const QString release = QStringLiteral("release");
    const QString associate = QStringLiteral("associate");
    const QString hotspotStart = QStringLiteral("hotspot_start");
    const QString hotspotStop = QStringLiteral("hotspot_stop");
    node.expectObject({reply, release, Wire::Manual, LeaseKey, Wire::Scan, associate, hotspotStart, hotspotStop});
    ScenarioDelays delays;
    delays.reply = readDelay(node, reply, delays.reply);
    delays.release = readDelay(node, release, delays.release);
    delays.manual = readDelay(node, Wire::Manual, delays.manual);
    delays.lease = readDelay(node, LeaseKey, delays.lease);
    delays.scan = readDelay(node, Wire::Scan, delays.scan);
    delays.associate = readDelay(node, associate, delays.associate);
    delays.hotspotStart = readDelay(node, hotspotStart, delays.hotspotStart);
    delays.hotspotStop = readDelay(node, hotspotStop, delays.hotspotStop);
    return delays;
}

void readAll(const JsonNode &top, Scenario *scenario)
{
    const QString circles = QStringLiteral("allow_circular_parents");
    const QString delays = QStringLiteral("delays");
    const QString wifi = QStringLiteral("wifi");
    const QString hotspot = QStringLiteral("hotspot");
    const QString timeline = QStringLiteral("timeline");
    const QString faults = QStringLiteral("faults");
    const QString schema = QStringLiteral("$schema");
    top.expectObject({schema, QStringLiteral("description"), QStringLiteral("seed"), delays, circles,
                      QStringLiteral("interfaces"), Wire::Priority, Wire::DefaultInterface, wifi, hotspot, timeline,
                      faults});
    top.textOr(schema, QString()); // it is the editor's
    scenario->description = top.textOr(QStringLiteral("description"), QString());
    scenario->seed = quint32(top.numberOr(QStringLiteral("seed"), 0, std::numeric_limits<int>::max(), 1));
    if (top.has(delays))
        scenario->delays = readDelays(top.member(delays));
    readInterfaces(top.member(QStringLiteral("interfaces")), top.flagOr(circles, false), scenario);
    if (top.has(Wire::Priority))
        scenario->priority = readRanking(top.member(Wire::Priority), *scenario);
    scenario->pinsDefault = top.has(Wire::DefaultInterface);
    if (scenario->pinsDefault && !top.member(Wire::DefaultInterface).text().isEmpty())
        scenario->defaultInterface = readInterfaceName(top.member(Wire::DefaultInterface), *scenario);
    if (top.has(wifi))
        scenario->wifi = readWifi(top.member(wifi), *scenario);
    checkAllOwners(top, wifi, *scenario);
    if (top.has(hotspot))
        scenario->hotspot = readHotspot(top.member(hotspot));
    if (top.has(timeline))
        scenario->timeline = readTimeline(top.member(timeline), *scenario);
    if (top.has(faults))
        scenario->faults = readFaults(top.member(faults), *scenario);
}

/*! Where the byte at \a offset is, in lines and characters. */
QString linePlace(const QByteArray &json, int offset)
{
    const QByteArray before = json.left(qMax(0, offset));
    const int lineStart = before.lastIndexOf('\n') + 1;
    return QStringLiteral("line %1, column %2: ")
        .arg(before.count('\n') + 1)
        .arg(QString::fromUtf8(before.mid(lineStart)).size() + 1);
}

/*! Every interface has a link-local address in IPv6, also when nobody names it. */
bool isNeighbour(const QHostAddress &gateway, const QStringList &addresses)
{
    return (gateway.protocol() == QAbstractSocket::IPv6Protocol && gateway.isLinkLocal())
        || std::any_of(addresses.begin(), addresses.end(),
                       [&gateway](const QString &address) { return InterfaceAddress(address).hasNeighbour(gateway); });
}

QString syntaxError(const QByteArray &json, const QJsonParseError &error)
{
    // The parser tells how far it has read: one character behind the wrong one, except before garbage at the end.
    const int behind = error.error == QJsonParseError::GarbageAtEnd ? 0 : 1;
    return linePlace(json, error.offset - behind) + error.errorString();
}

} // namespace

QJsonValue parseJson(const QByteArray &json, QString *error)
{
    // First, as the parser forgets to free what it drops for a second value.
    const DuplicateKey duplicate = DuplicateKey::find(json);
    if (duplicate.offset != -1) {
        *error = linePlace(json, duplicate.offset) + QStringLiteral("a second \"%1\"").arg(duplicate.key);
        return {};
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    *error = parseError.error == QJsonParseError::NoError ? QString() : syntaxError(json, parseError);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

bool readScenario(const QByteArray &json, Scenario *scenario, QString *error)
{
    const QJsonValue top = parseJson(json, error);
    if (!error->isEmpty())
        return false;
    *scenario = Scenario();
    readAll(JsonNode(top, error), scenario);
    return error->isEmpty();
}

void checkForm(const JsonNode &node, const QString &pattern, const QString &fault)
{
    const QRegularExpression form(QStringLiteral("\\A(?:%1)\\z").arg(pattern));
    if (!form.match(node.text()).hasMatch())
        node.fail(QStringLiteral("\"%1\" %2").arg(node.text(), fault));
}

void checkHardwareAddress(const JsonNode &node)
{
    checkForm(node, QStringLiteral("[0-9A-Fa-f]{2}(?::[0-9A-Fa-f]{2}){5}"),
              QStringLiteral("is not a hardware address, as 02:00:00:00:00:01 is"));
}

AddressSet readAddressSet(const JsonNode &node)
{
    node.expectObject({Wire::IpAddresses, Wire::IpGateway});
    AddressSet set;
    const QVector<JsonNode> addresses = node.member(Wire::IpAddresses).items();
    for (const JsonNode &address : addresses) {
        QString published;
        if (!AddressText::isInterfaceAddress(address.text(), &published))
            address.fail(QStringLiteral("\"%1\" is not an address with its netmask, "
                                        "as 10.0.0.5/255.255.255.0, 10.0.0.5/24 and fe80::1/64 are")
                             .arg(address.text()));
        const InterfaceAddress own(published);
        if (own.isNetwork() || own.isBroadcast())
            address.fail(
                QStringLiteral("\"%1\" is the %2 address of its network, not that of a host")
                    .arg(address.text(), own.isNetwork() ? QStringLiteral("first") : QStringLiteral("broadcast")));
        set.addresses += published;
    }
    if (addresses.isEmpty())
        node.member(Wire::IpAddresses).fail(QStringLiteral("must not be empty"));
    if (!node.has(Wire::IpGateway))
        return set;
    const QVector<JsonNode> gateways = node.member(Wire::IpGateway).items();
    for (const JsonNode &gateway : gateways) {
        set.gateways += gateway.text();
        if (!AddressText::isGateway(set.gateways.last()))
            gateway.fail(QStringLiteral("\"%1\" is not an IP address").arg(set.gateways.last()));
        if (!isNeighbour(QHostAddress(set.gateways.last()), set.addresses))
            gateway.fail(
                QStringLiteral("\"%1\" is no other host of the network of an address here").arg(set.gateways.last()));
    }
    return set;
}

QString readInterfaceName(const JsonNode &node, const Scenario &scenario)
{
    QString name = node.text();
    for (const ScenarioInterface &interface : scenario.interfaces) {
        if (interface.name == name)
            return name;
    }
    node.fail(QStringLiteral("no interface \"%1\"").arg(name));
    return name;
}

QStringList readRanking(const JsonNode &node, const Scenario &scenario)
{
    QStringList names;
    const QVector<JsonNode> items = node.items();
    for (const JsonNode &item : items) {
        const QString name = readInterfaceName(item, scenario);
        if (names.contains(name))
            item.fail(QStringLiteral("\"%1\" stands here twice").arg(name));
        names += name;
    }
    return names;
}

} // namespace morvek
