// SPDX-License-Identifier: Apache-2.0
#include "timelinereader.h"

#include "attributereader.h"
#include "hotspotreader.h"
#include "jsonnode.h"
#include "scenarioreader.h"
#include "wifireader.h"
#include "wifitext.h"
#include "wirenames.h"

#include <algorithm>

namespace morvek {

namespace {

const auto AttributesKey = QLatin1String("attributes");
const auto BackAfterKey = QLatin1String("back_after");
const auto DaemonKey = QLatin1String("daemon");
const auto EventKey = QLatin1String("event");
const auto InterfaceKey = QLatin1String("interface");
const auto ObjectKey = QLatin1String("object");
const auto OrderKey = QLatin1String("order");
const auto ReasonKey = QLatin1String("reason");
const auto TextKey = QLatin1String("text");

// An access point that ends a connection without a reason of its own says that the station's time is over.
constexpr int UsualReason = 2;
constexpr int LargestReason = 65535;

struct EventWord
{
    QLatin1String word;
    TimelineEvent::Kind kind;
    QStringList keys;
    enum Needs { Nothing, Wifi, Hotspot } needs = Nothing;
};

const QVector<EventWord> &knownEvents()
{
    static const QVector<EventWord> words {
        {QLatin1String("vanish"), TimelineEvent::Vanish, {InterfaceKey}},
        {QLatin1String("appear"), TimelineEvent::Appear, {InterfaceKey}},
        {QLatin1String("link-lost"), TimelineEvent::LinkLost, {InterfaceKey}},
        {QLatin1String("link-regained"), TimelineEvent::LinkRegained, {InterfaceKey}},
        {QLatin1String("set"), TimelineEvent::SetAttributes, {InterfaceKey, ObjectKey, AttributesKey}},
        {QLatin1String("remove"), TimelineEvent::RemoveAttributes, {InterfaceKey, ObjectKey, AttributesKey}},
        {QLatin1String("default"), TimelineEvent::PinDefault, {InterfaceKey}},
        {QLatin1String("default-follows"), TimelineEvent::FollowDefault, {}},
        {QLatin1String("priority"), TimelineEvent::SetPriority, {OrderKey}},
        {QLatin1String("daemon-dies"), TimelineEvent::DaemonDies, {DaemonKey, BackAfterKey}},
        {QLatin1String("daemon-back"), TimelineEvent::DaemonBack, {DaemonKey}},
        {QLatin1String("faults-end"), TimelineEvent::FaultsEnd, {}},
        {QLatin1String("out-of-range"), TimelineEvent::OutOfRange, {Wire::Bssid}, EventWord::Wifi},
        {QLatin1String("in-range"), TimelineEvent::InRange, {Wire::Bssid}, EventWord::Wifi},
        {QLatin1String("signal"), TimelineEvent::Signal, {Wire::Bssid, Wire::SignalLevel}, EventWord::Wifi},
        {QLatin1String("roam"), TimelineEvent::Roam, {Wire::Bssid}, EventWord::Wifi},
        {QLatin1String("dropped"), TimelineEvent::Dropped, {ReasonKey}, EventWord::Wifi},
        {QLatin1String("wrong-key"), TimelineEvent::WrongKey, {Wire::Ssid}, EventWord::Wifi},
        {QLatin1String("radio-on"), TimelineEvent::RadioOn, {}, EventWord::Wifi},
        {QLatin1String("radio-off"), TimelineEvent::RadioOff, {}, EventWord::Wifi},
        {QLatin1String("wifi-event"), TimelineEvent::TellWifiEvent, {TextKey}, EventWord::Wifi},
        {QLatin1String("hotspot-starts"), TimelineEvent::HotspotStarts, {}, EventWord::Hotspot},
        {QLatin1String("hotspot-stops"), TimelineEvent::HotspotStops, {}, EventWord::Hotspot},
    };
    return words;
}

EventWord readWord(const JsonNode &node)
{
    const QString text = node.text();
    for (const EventWord &one : knownEvents()) {
        if (text == one.word)
            return one;
    }
    node.fail(QStringLiteral("no event \"%1\" (known: %2)").arg(text, eventWords().join(QLatin1String(", "))));
    return knownEvents().first();
}

/*! Which service \a node names, by this one of its words. */
Service readService(const JsonNode &node, QLatin1String ServiceWords::*word, const Scenario &scenario)
{
    const QString text = node.text();
    QStringList known;
    for (const ServiceWords &one : Services) {
        known += one.*word;
        if (text != one.*word)
            continue;
        if (one.service == Service::Wifi)
            expectWifi(node, scenario);
        if (one.service == Service::Tethering)
            expectHotspot(node, scenario);
        return one.service;
    }
    node.fail(QStringLiteral("\"%1\" is none of %2").arg(text, known.join(QLatin1String(", "))));
    return Service::Networking;
}

void readAttributes(const JsonNode &node, const Scenario &scenario, TimelineEvent *event)
{
    const bool interface = node.has(InterfaceKey);
    if (interface == node.has(ObjectKey))
        node.fail(QStringLiteral("needs either \"interface\" or \"object\""));
    if (!interface)
        event->service = readService(node.member(ObjectKey), &ServiceWords::statusObject, scenario);
    const JsonNode attributes = node.member(AttributesKey);
    if (event->kind == TimelineEvent::RemoveAttributes) {
        const QStringList names = attributes.texts();
        event->changes.removals = QSet<QString>(names.begin(), names.end());
    } else {
        const QVector<JsonNode> members = attributes.members();
        for (const JsonNode &member : members)
            event->changes.assignments.insert(member.key(), readAttributeValue(member));
    }
    if (event->changes.assignments.isEmpty() && event->changes.removals.isEmpty())
        attributes.fail(QStringLiteral("must not be empty"));
}

void readWifiEvent(const JsonNode &node, const Scenario &scenario, bool bssid, TimelineEvent *event)
{
    if (bssid) {
        event->bssid = readBssid(node.member(Wire::Bssid), scenario);
        event->text += QLatin1Char(' ') + event->bssid;
    }
    if (event->kind == TimelineEvent::Signal)
        event->level = readSignalLevel(node.member(Wire::SignalLevel));
    if (event->kind == TimelineEvent::WrongKey) {
        event->ssid = readSecuredName(node.member(Wire::Ssid), scenario);
        event->text += QLatin1Char(' ') + WifiText::quoted(event->ssid);
    }
    if (event->kind == TimelineEvent::TellWifiEvent)
        event->told = node.member(TextKey).text();
    event->reason = node.numberOr(ReasonKey, 1, LargestReason, UsualReason);
}

TimelineEvent readEvent(const JsonNode &node, const Scenario &scenario, const QStringList &ownKeys = {})
{
    TimelineEvent event;
    const EventWord word = readWord(node.member(EventKey));
    event.kind = word.kind;
    event.text = word.word;
    node.expectObject(ownKeys + QStringList(EventKey) + word.keys);
    if (word.needs == EventWord::Hotspot)
        expectHotspot(node.member(EventKey), scenario);
    if (word.needs == EventWord::Wifi) {
        expectWifi(node.member(EventKey), scenario);
        readWifiEvent(node, scenario, word.keys.contains(Wire::Bssid), &event);
    }

    const bool attributes = word.keys.contains(AttributesKey);
    const bool none =
        event.kind == TimelineEvent::PinDefault && node.textOr(InterfaceKey, QStringLiteral("?")).isEmpty();
    if (word.keys.contains(InterfaceKey) && !none && (!attributes || node.has(InterfaceKey)))
        event.interface = readInterfaceName(node.member(InterfaceKey), scenario);
    if (!event.interface.isEmpty())
        event.text += QLatin1Char(' ') + event.interface;
    if (attributes)
        readAttributes(node, scenario, &event);
    if (event.kind == TimelineEvent::SetPriority)
        event.order = readRanking(node.member(OrderKey), scenario);
    if (node.has(DaemonKey))
        event.service = readService(node.member(DaemonKey), &ServiceWords::name, scenario);
    event.backAfter = node.numberOr(BackAfterKey, 0, LongestTime, -1);
    return event;
}

Presence presenceAtStart(const Scenario &scenario)
{
    Presence presence;
    for (const ScenarioInterface &interface : scenario.interfaces) {
        if (interface.present)
            presence.interfaces.insert(interface.name);
    }
    for (const ScenarioAccessPoint &accessPoint : scenario.wifi.accessPoints) {
        if (accessPoint.inRange)
            presence.accessPoints.insert(accessPoint.bssid);
    }
    return presence;
}

/*! Notes what happens to something that is not there at that time, or comes though it is there. */
void checkPresence(const JsonNode &node, const QString &name, bool comes, const QSet<QString> &present,
                   const QString &there)
{
    if (comes == present.contains(name))
        node.fail(
            QStringLiteral("\"%1\" is %2%3 at that time").arg(name, comes ? QString() : QStringLiteral("not "), there));
}

void follow(const JsonNode &node, const TimelineEvent &event, const Scenario &scenario, Presence *presence)
{
    const bool link = event.kind == TimelineEvent::LinkLost || event.kind == TimelineEvent::LinkRegained;
    if (link && event.interface == scenario.wifi.interface)
        node.member(InterfaceKey)
            .fail(
                QStringLiteral("the Wi-Fi station gives \"%1\" its link (\"dropped\" takes it)").arg(event.interface));
    if (!event.interface.isEmpty() && event.kind != TimelineEvent::PinDefault)
        checkPresence(node.member(InterfaceKey), event.interface, event.kind == TimelineEvent::Appear,
                      presence->interfaces, QStringLiteral("there"));
    if (!event.bssid.isEmpty() && event.kind != TimelineEvent::Signal)
        checkPresence(node.member(Wire::Bssid), event.bssid, event.kind == TimelineEvent::InRange,
                      presence->accessPoints, QStringLiteral("in range"));
    if (event.kind == TimelineEvent::Appear)
        presence->interfaces.insert(event.interface);
    else if (event.kind == TimelineEvent::Vanish)
        presence->interfaces.remove(event.interface);
    else if (event.kind == TimelineEvent::InRange)
        presence->accessPoints.insert(event.bssid);
    else if (event.kind == TimelineEvent::OutOfRange)
        presence->accessPoints.remove(event.bssid);
}

} // namespace

QStringList eventWords()
{
    QStringList words;
    for (const EventWord &one : knownEvents())
        words += one.word;
    return words;
}

QVector<TimelineEvent> readTimeline(const JsonNode &node, const Scenario &scenario)
{
    using Placed = QPair<TimelineEvent, JsonNode>;
    QVector<Placed> placed;
    const QVector<JsonNode> items = node.items();
    const QString at = QStringLiteral("at");
    for (const JsonNode &item : items) {
        placed.append(Placed(readEvent(item, scenario, {at}), item));
        placed.last().first.at = item.member(at).number(0, LongestTime);
        placed.last().first.number = placed.size() - 1;
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed &a, const Placed &b) { return a.first.at < b.first.at; });

    Presence presence = presenceAtStart(scenario);
    QVector<TimelineEvent> events;
    for (const Placed &one : qAsConst(placed)) {
        follow(one.second, one.first, scenario, &presence);
        events += one.first;
    }
    return events;
}

TimelineEvent readEventOfNow(const JsonNode &node, const Scenario &scenario, Presence presence)
{
    TimelineEvent event = readEvent(node, scenario);
    follow(node, event, scenario, &presence);
    return event;
}

} // namespace morvek
