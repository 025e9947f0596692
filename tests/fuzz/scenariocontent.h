// SPDX-License-Identifier: Apache-2.0
#ifndef SCENARIOCONTENT_H
#define SCENARIOCONTENT_H

#include "addresssearch.h"
#include "fuzz.h"
#include "scenarioreader.h"

#include <QtCore/QJsonArray>

#include <algorithm>

/*! What an accepted scenario says, compared with its JSON member by member. */
namespace ScenarioContent {

inline QJsonValue member(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key));
}

inline QString text(const QJsonObject &object, const char *key)
{
    return member(object, key).toString();
}

inline QStringList texts(const QJsonValue &array)
{
    QStringList result;
    for (const QJsonValue &value : array.toArray())
        result.append(value.toString());
    return result;
}

inline void expectSame(const QJsonValue &json, const morvek::AddressSet &set)
{
    QStringList addresses = texts(member(json.toObject(), "ip_addresses"));
    std::transform(addresses.begin(), addresses.end(), addresses.begin(), AddressSearch::withNetmask);
    Fuzz::expectEqual(set.addresses, addresses, "addresses");
    Fuzz::expectEqual(set.gateways, texts(member(json.toObject(), "ip_gateway")), "gateways");
}

inline void expectSame(const QJsonObject &json, const morvek::ScenarioInterface &interface)
{
    Fuzz::expectEqual(interface.name, text(json, "name"), "an interface's name");
    Fuzz::expectEqual(interface.type, text(json, "type"), "its type");
    Fuzz::expectEqual(interface.linkAddress, text(json, "link_address"), "its hardware address");
    Fuzz::expectEqual(interface.parent, text(json, "parent_interface"), "its parent");
    Fuzz::expectEqual(interface.mtu, member(json, "mtu").toInt(), "its MTU");
    Fuzz::expectEqual(interface.present, member(json, "present").toBool(true), "whether it is there");
    Fuzz::expectEqual(interface.up, member(json, "up").toBool(true), "whether it is up");
    Fuzz::expectEqual(interface.connected, member(json, "connected").toBool(), "whether it is connected");
    Fuzz::expectEqual(interface.manual, json.contains(QLatin1String("manual")), "whether it is set by hand");
    expectSame(member(json, "manual"), interface.given);
    expectSame(member(json, "lease"), interface.lease);
}

inline void expectSame(const QJsonObject &json, const morvek::ScenarioAccessPoint &point)
{
    Fuzz::expectEqual(point.bssid, text(json, "bssid"), "a bssid");
    Fuzz::expectEqual(point.ssid, text(json, "ssid"), "its ssid");
    Fuzz::expectEqual(point.passkey, text(json, "passkey"), "its passkey");
    Fuzz::expectEqual(point.frequency, member(json, "frequency").toInt(), "its frequency");
    Fuzz::expectEqual(point.signalLevel, member(json, "signal_level").toInt(), "its level");
    Fuzz::expectEqual(point.drift, member(json, "drift").toInt(), "its drift");
    Fuzz::expectEqual(point.flags, texts(member(json, "flags")), "its flags");
    Fuzz::expectEqual(point.inRange, member(json, "in_range").toBool(true), "whether it is in range");
    Fuzz::expectEqual(point.answers, member(json, "answers").toBool(true), "whether it answers");
    expectSame(member(json, "lease"), point.lease);
}

inline void expectSame(const QJsonObject &json, const morvek::TimelineEvent &event)
{
    Fuzz::expectEqual(event.at, member(json, "at").toInt(), "when an event is");
    Fuzz::expectEqual(event.text.section(QLatin1Char(' '), 0, 0), text(json, "event"), "what it is");
    Fuzz::expectEqual(event.interface, text(json, "interface"), "its interface");
    Fuzz::expectEqual(event.bssid, text(json, "bssid"), "its access point");
    Fuzz::expectEqual(event.order, texts(member(json, "order")), "its ranking");
    Fuzz::expectEqual(event.level, member(json, "signal_level").toInt(), "its level");
    Fuzz::expectEqual(event.backAfter, member(json, "back_after").toInt(-1), "when the daemon is back");
}

inline void expectSame(const QJsonObject &json, const morvek::Fault &fault)
{
    Fuzz::expectEqual(fault.message, text(json, "message"), "a fault's message");
    Fuzz::expectEqual(fault.interface, text(json, "interface"), "its interface");
    Fuzz::expectEqual(fault.ssid, text(json, "ssid"), "its network");
    Fuzz::expectEqual(fault.skip, member(json, "skip").toInt(), "how many pass first");
    Fuzz::expectEqual(fault.times, member(json, "times").toInt(-1), "how often");
    Fuzz::expectEqual(fault.backAfter, member(json, "back_after").toInt(-1), "when the daemon is back");
}

template<typename Element>
void expectSame(const QJsonArray &json, const QVector<Element> &elements, const char *what)
{
    Fuzz::expectEqual(elements.size(), json.size(), what);
    for (int i = 0; i < elements.size(); ++i)
        expectSame(json.at(i).toObject(), elements.at(i));
}

/*! Events of the same time stay as they stand in the file. */
inline QJsonArray inOrderOfTime(const QJsonArray &timeline)
{
    QVector<QJsonObject> events;
    for (const QJsonValue &event : timeline)
        events.append(event.toObject());
    std::stable_sort(events.begin(), events.end(), [](const QJsonObject &a, const QJsonObject &b) {
        return member(a, "at").toInt() < member(b, "at").toInt();
    });
    QJsonArray sorted;
    for (const QJsonObject &event : qAsConst(events))
        sorted.append(event);
    return sorted;
}

/*! An interface's place in the file is its rank, when no ranking is given. */
inline QStringList ranking(const QJsonObject &json)
{
    if (json.contains(QLatin1String("priority")))
        return texts(member(json, "priority"));
    QStringList names;
    for (const QJsonValue &interface : member(json, "interfaces").toArray())
        names.append(text(interface.toObject(), "name"));
    return names;
}

inline void expectSame(const QJsonObject &json, const morvek::Scenario &scenario)
{
    Fuzz::expectEqual(scenario.description, text(json, "description"), "the description");
    Fuzz::expectEqual(scenario.seed, quint32(member(json, "seed").toInt(1)), "the seed");
    Fuzz::expectEqual(scenario.priority, ranking(json), "the ranking");
    Fuzz::expectEqual(scenario.pinsDefault, json.contains(QLatin1String("default_interface")), "a default is pinned");
    Fuzz::expectEqual(scenario.defaultInterface, text(json, "default_interface"), "the default");
    expectSame(member(json, "interfaces").toArray(), scenario.interfaces, "how many interfaces");
    const QJsonObject wifi = member(json, "wifi").toObject();
    Fuzz::expectEqual(scenario.wifi.interface, text(wifi, "interface"), "the station");
    Fuzz::expectEqual(scenario.wifi.power, member(wifi, "power").toBool(true), "its power");
    Fuzz::expectEqual(scenario.wifi.connected, text(wifi, "connected"), "its connection");
    expectSame(member(wifi, "access_points").toArray(), scenario.wifi.accessPoints, "how many access points");
    const QJsonObject hotspot = member(json, "hotspot").toObject();
    Fuzz::expectEqual(member(scenario.hotspot.profile, "lanprofile").toObject(), member(hotspot, "profile").toObject(),
                      "the hotspot's profile");
    Fuzz::expectEqual(scenario.hotspot.active, member(hotspot, "active").toBool(), "whether it is active");
    expectSame(inOrderOfTime(member(json, "timeline").toArray()), scenario.timeline, "how many events");
    expectSame(member(json, "faults").toArray(), scenario.faults, "how many faults");
}

} // namespace ScenarioContent

#endif
