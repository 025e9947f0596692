// SPDX-License-Identifier: Apache-2.0
#include "timelinereader.h"

#include "attributes.h"
#include "jsonnode.h"
#include "scenarioreader.h"
#include "wifireader.h"
#include "wirenames.h"

#include <QtCore/QSet>

#include <algorithm>
#include <limits>

namespace morvek {

namespace {

struct EventWord
{
    QLatin1String word;
    TimelineEvent::Kind kind;
};

const EventWord EventWords[] = {
    {QLatin1String("vanish"), TimelineEvent::Vanish},
    {QLatin1String("appear"), TimelineEvent::Appear},
    {QLatin1String("link-lost"), TimelineEvent::LinkLost},
    {QLatin1String("link-regained"), TimelineEvent::LinkRegained},
    {QLatin1String("set"), TimelineEvent::SetAttributes},
    {QLatin1String("remove"), TimelineEvent::RemoveAttributes},
    {QLatin1String("default"), TimelineEvent::PinDefault},
    {QLatin1String("default-follows"), TimelineEvent::FollowDefault},
    {QLatin1String("priority"), TimelineEvent::SetPriority},
    {QLatin1String("daemon-dies"), TimelineEvent::DaemonDies},
    {QLatin1String("out-of-range"), TimelineEvent::OutOfRange},
    {QLatin1String("in-range"), TimelineEvent::InRange},
    {QLatin1String("signal"), TimelineEvent::Signal},
    {QLatin1String("roam"), TimelineEvent::Roam},
    {QLatin1String("dropped"), TimelineEvent::Dropped},
    {QLatin1String("radio-on"), TimelineEvent::RadioOn},
    {QLatin1String("radio-off"), TimelineEvent::RadioOff},
    {QLatin1String("wifi-event"), TimelineEvent::TellWifiEvent},
};

const auto AttributesKey = QLatin1String("attributes");
const auto BackAfterKey = QLatin1String("back_after");
const auto DaemonKey = QLatin1String("daemon");
const auto InterfaceKey = QLatin1String("interface");
const auto ObjectKey = QLatin1String("object");
const auto OrderKey = QLatin1String("order");
const auto ReasonKey = QLatin1String("reason");
const auto TextKey = QLatin1String("text");

// An access point that ends a connection without a reason of its own says that the station's time is over.
constexpr int UsualReason = 2;
constexpr int LargestReason = 65535;

TimelineEvent::Kind readKind(const JsonNode &node)
{
    const QString word = node.text();
    QStringList known;
    for (const EventWord &event : EventWords) {
        if (word == event.word)
            return event.kind;
        known += event.word;
    }
    node.fail(QStringLiteral("no event \"%1\" (known: %2)").arg(word, known.join(QLatin1String(", "))));
    return TimelineEvent::Vanish;
}

QStringList keysOf(TimelineEvent::Kind kind)
{
    switch (kind) {
    case TimelineEvent::SetAttributes:
    case TimelineEvent::RemoveAttributes:
        return {InterfaceKey, ObjectKey, AttributesKey};
    case TimelineEvent::FollowDefault:
    case TimelineEvent::RadioOn:
    case TimelineEvent::RadioOff:
        return {};
    case TimelineEvent::SetPriority:
        return {OrderKey};
    case TimelineEvent::DaemonDies:
        return {DaemonKey, BackAfterKey};
    case TimelineEvent::OutOfRange:
    case TimelineEvent::InRange:
    case TimelineEvent::Roam:
        return {Wire::Bssid};
    case TimelineEvent::Signal:
        return {Wire::Bssid, Wire::SignalLevel};
    case TimelineEvent::Dropped:
        return {ReasonKey};
    case TimelineEvent::TellWifiEvent:
        return {TextKey};
    case TimelineEvent::Vanish:
    case TimelineEvent::Appear:
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
    case TimelineEvent::PinDefault:
        break;
    }
    return {InterfaceKey};
}

/*! Bytes that no JSON value stands for: {"encoding": "json", "text": "[1,"} or with "base64". */
ZopVariant readBytes(const JsonNode &node)
{
    const QString encoding = QStringLiteral("encoding");
    const QString text = QStringLiteral("text");
    const QString base64 = QStringLiteral("base64");
    node.expectObject({encoding, text, base64});
    if (node.has(text) == node.has(base64))
        node.fail(QStringLiteral("needs either \"text\" or \"base64\""));
    QByteArray bytes = node.textOr(text, QString()).toUtf8();
    if (node.has(base64)) {
        const auto decoded = QByteArray::fromBase64Encoding(node.member(base64).text().toUtf8(),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            node.member(base64).fail(QStringLiteral("is not base64"));
        bytes = decoded.decoded;
    }
    return ZopVariant(bytes, node.textOr(encoding, QStringLiteral("text")).toUtf8());
}

ZopVariant readValue(const JsonNode &node)
{
    switch (node.value().type()) {
    case QJsonValue::String:
        return node.text();
    case QJsonValue::Bool:
        return truthValue(node.flag());
    case QJsonValue::Double:
        return node.number(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    case QJsonValue::Array:
        return node.value().toArray();
    case QJsonValue::Object:
        return readBytes(node);
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    node.fail(QStringLiteral("null is no value; the event \"remove\" removes an attribute"));
    return {};
}

/*! Which daemon \a node names, by one of these words. */
Service readService(const JsonNode &node, QLatin1String networking, QLatin1String wifi, const Scenario &scenario)
{
    const QString word = node.text();
    if (word == wifi) {
        expectWifi(node, scenario);
        return Service::Wifi;
    }
    if (word != networking)
        node.fail(QStringLiteral("must be \"%1\" or \"%2\"").arg(networking, wifi));
    return Service::Networking;
}

void readAttributes(const JsonNode &node, const Scenario &scenario, TimelineEvent *event)
{
    const bool interface = node.has(InterfaceKey);
    if (interface == node.has(ObjectKey))
        node.fail(QStringLiteral("needs either \"interface\" or \"object\""));
    if (!interface)
        event->service =
            readService(node.member(ObjectKey), QLatin1String("status_public"), QLatin1String("wifi/status"), scenario);
    const JsonNode attributes = node.member(AttributesKey);
    if (event->kind == TimelineEvent::RemoveAttributes) {
        const QStringList names = attributes.texts();
        event->changes.removals = QSet<QString>(names.begin(), names.end());
    } else {
        const QVector<JsonNode> members = attributes.members();
        for (const JsonNode &member : members)
            event->changes.assignments.insert(member.key(), readValue(member));
    }
    if (event->changes.assignments.isEmpty() && event->changes.removals.isEmpty())
        attributes.fail(QStringLiteral("must not be empty"));
}

void readWifiEvent(const JsonNode &node, const Scenario &scenario, TimelineEvent *event)
{
    expectWifi(node, scenario);
    const QStringList keys = keysOf(event->kind);
    if (keys.contains(Wire::Bssid)) {
        event->bssid = readBssid(node.member(Wire::Bssid), scenario);
        event->text += QLatin1Char(' ') + event->bssid;
    }
    if (event->kind == TimelineEvent::Signal)
        event->level = readSignalLevel(node.member(Wire::SignalLevel));
    if (event->kind == TimelineEvent::TellWifiEvent)
        event->told = node.member(TextKey).text();
    event->reason = node.numberOr(ReasonKey, 1, LargestReason, UsualReason);
}

TimelineEvent readEvent(const JsonNode &node, const Scenario &scenario)
{
    const QString at = QStringLiteral("at");
    const QString word = QStringLiteral("event");
    TimelineEvent event;
    event.at = node.member(at).number(0, LongestTime);
    event.kind = readKind(node.member(word));
    const QStringList keys = keysOf(event.kind);
    node.expectObject(QStringList {at, word} + keys);
    event.text = node.member(word).text();

    const bool attributes = keys.contains(AttributesKey);
    const bool none =
        event.kind == TimelineEvent::PinDefault && node.textOr(InterfaceKey, QStringLiteral("?")).isEmpty();
    if (keys.contains(InterfaceKey) && !none && (!attributes || node.has(InterfaceKey)))
        event.interface = readInterfaceName(node.member(InterfaceKey), scenario);
    if (!event.interface.isEmpty())
        event.text += QLatin1Char(' ') + event.interface;
    if (attributes)
        readAttributes(node, scenario, &event);
    if (event.kind == TimelineEvent::SetPriority)
        event.order = readRanking(node.member(OrderKey), scenario);
    if (event.kind >= TimelineEvent::OutOfRange)
        readWifiEvent(node, scenario, &event);
    if (node.has(DaemonKey))
        event.service =
            readService(node.member(DaemonKey), QLatin1String("networking"), QLatin1String("wifi"), scenario);
    event.backAfter = node.numberOr(BackAfterKey, 0, LongestTime, -1);
    return event;
}

/*! What is there at some time of the timeline. */
struct Presence
{
    explicit Presence(const Scenario &scenario)
        : wifiInterface(scenario.wifi.interface)
    {
        for (const ScenarioInterface &interface : scenario.interfaces) {
            if (interface.present)
                interfaces.insert(interface.name);
        }
        for (const ScenarioAccessPoint &accessPoint : scenario.wifi.accessPoints) {
            if (accessPoint.inRange)
                accessPoints.insert(accessPoint.bssid);
        }
    }

    QSet<QString> interfaces;
    QSet<QString> accessPoints; // in range
    QString wifiInterface;
};

/*! Notes what happens to something that is not there at that time, or comes though it is there. */
void checkPresence(const JsonNode &node, const QString &name, bool comes, bool goes, QSet<QString> *present,
                   const char *there)
{
    if (comes && present->contains(name))
        node.fail(QStringLiteral("\"%1\" is %2 at that time").arg(name, QLatin1String(there)));
    if (!comes && !present->contains(name))
        node.fail(QStringLiteral("\"%1\" is not %2 at that time").arg(name, QLatin1String(there)));
    if (comes)
        present->insert(name);
    else if (goes)
        present->remove(name);
}

void checkEvent(const JsonNode &node, const TimelineEvent &event, Presence *presence)
{
    if (!event.interface.isEmpty() && event.kind != TimelineEvent::PinDefault)
        checkPresence(node.member(InterfaceKey), event.interface, event.kind == TimelineEvent::Appear,
                      event.kind == TimelineEvent::Vanish, &presence->interfaces, "there");
    if (!event.bssid.isEmpty() && event.kind != TimelineEvent::Signal)
        checkPresence(node.member(Wire::Bssid), event.bssid, event.kind == TimelineEvent::InRange,
                      event.kind == TimelineEvent::OutOfRange, &presence->accessPoints, "in range");
    const bool link = event.kind == TimelineEvent::LinkLost || event.kind == TimelineEvent::LinkRegained;
    if (link && event.interface == presence->wifiInterface)
        node.member(InterfaceKey)
            .fail(QStringLiteral("\"%1\" has a link while the Wi-Fi station is connected (\"dropped\" ends that)")
                      .arg(event.interface));
}

} // namespace

QVector<TimelineEvent> readTimeline(const JsonNode &node, const Scenario &scenario)
{
    using Placed = QPair<TimelineEvent, JsonNode>;
    QVector<Placed> placed;
    const QVector<JsonNode> items = node.items();
    for (const JsonNode &item : items)
        placed.append(Placed(readEvent(item, scenario), item));
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed &a, const Placed &b) { return a.first.at < b.first.at; });

    Presence presence(scenario);
    QVector<TimelineEvent> events;
    for (const Placed &one : qAsConst(placed)) {
        checkEvent(one.second, one.first, &presence);
        events += one.first;
    }
    return events;
}

} // namespace morvek
