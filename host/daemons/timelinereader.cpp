// SPDX-License-Identifier: Apache-2.0
#include "timelinereader.h"

#include "attributes.h"
#include "jsonnode.h"
#include "scenarioreader.h"
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
};

const auto AttributesKey = QLatin1String("attributes");
const auto BackAfterKey = QLatin1String("back_after");
const auto InterfaceKey = QLatin1String("interface");
const auto ObjectKey = QLatin1String("object");
const auto OrderKey = QLatin1String("order");

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
        return {};
    case TimelineEvent::SetPriority:
        return {OrderKey};
    case TimelineEvent::DaemonDies:
        return {BackAfterKey};
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

void readAttributes(const JsonNode &node, TimelineEvent *event)
{
    const bool interface = node.has(InterfaceKey);
    if (interface == node.has(ObjectKey))
        node.fail(QStringLiteral("needs either \"interface\" or \"object\""));
    if (!interface && node.member(ObjectKey).text() != QLatin1String("status_public"))
        node.member(ObjectKey).fail(QStringLiteral("must be \"status_public\""));
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
        readAttributes(node, &event);
    if (event.kind == TimelineEvent::SetPriority)
        event.order = readRanking(node.member(OrderKey), scenario);
    event.backAfter = node.numberOr(BackAfterKey, 0, LongestTime, -1);
    return event;
}

/*! Notes what happens to an interface that is not there at that time, or comes though it is there. */
void checkPresence(const JsonNode &node, const TimelineEvent &event, QSet<QString> *present)
{
    if (event.interface.isEmpty() || event.kind == TimelineEvent::PinDefault)
        return;
    const bool there = present->contains(event.interface);
    if (event.kind == TimelineEvent::Appear && there)
        node.member(InterfaceKey).fail(QStringLiteral("\"%1\" is there at that time").arg(event.interface));
    if (event.kind != TimelineEvent::Appear && !there)
        node.member(InterfaceKey).fail(QStringLiteral("\"%1\" is not there at that time").arg(event.interface));
    if (event.kind == TimelineEvent::Appear)
        present->insert(event.interface);
    else if (event.kind == TimelineEvent::Vanish)
        present->remove(event.interface);
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

    QSet<QString> present;
    for (const ScenarioInterface &interface : scenario.interfaces) {
        if (interface.present)
            present.insert(interface.name);
    }
    QVector<TimelineEvent> events;
    for (const Placed &one : qAsConst(placed)) {
        checkPresence(one.second, one.first, &present);
        events += one.first;
    }
    return events;
}

} // namespace morvek
