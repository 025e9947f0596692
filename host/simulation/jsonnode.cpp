// SPDX-License-Identifier: Apache-2.0
#include "jsonnode.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace morvek {

JsonNode::JsonNode(const QJsonValue &value, QString *error)
    : JsonNode(value, QString(), QString(), error)
{
}

JsonNode::JsonNode(const QJsonValue &value, const QString &place, const QString &key, QString *error)
    : m_value(value),
      m_place(place),
      m_key(key),
      m_error(error)
{
}

void JsonNode::fail(const QString &text) const
{
    if (m_error->isEmpty())
        *m_error = m_place.isEmpty() ? text : m_place + QLatin1String(": ") + text;
}

void JsonNode::expectObject(const QStringList &keys) const
{
    if (!m_value.isObject())
        fail(QStringLiteral("must be an object"));
    const QStringList present = m_value.toObject().keys();
    for (const QString &key : present) {
        if (!keys.contains(key))
            fail(QStringLiteral("unknown key \"%1\" (known: %2)").arg(key, keys.join(QLatin1String(", "))));
    }
}

bool JsonNode::has(const QString &key) const
{
    return m_value.toObject().contains(key);
}

JsonNode JsonNode::member(const QString &key) const
{
    if (!has(key))
        fail(QStringLiteral("\"%1\" is missing").arg(key));
    const QString place = m_place.isEmpty() ? key : m_place + QLatin1Char('.') + key;
    return JsonNode(m_value.toObject().value(key), place, key, m_error);
}

QVector<JsonNode> JsonNode::members() const
{
    if (!m_value.isObject())
        fail(QStringLiteral("must be an object"));
    QVector<JsonNode> nodes;
    const QStringList keys = m_value.toObject().keys();
    for (const QString &key : keys)
        nodes += member(key);
    return nodes;
}

QVector<JsonNode> JsonNode::items() const
{
    if (!m_value.isArray())
        fail(QStringLiteral("must be an array"));
    QVector<JsonNode> nodes;
    const QJsonArray array = m_value.toArray();
    for (int i = 0; i < array.size(); ++i)
        nodes += JsonNode(array.at(i), QStringLiteral("%1[%2]").arg(m_place).arg(i), m_key, m_error);
    return nodes;
}

QString JsonNode::text() const
{
    if (!m_value.isString())
        fail(QStringLiteral("must be a text"));
    return m_value.toString();
}

bool JsonNode::flag() const
{
    if (!m_value.isBool())
        fail(QStringLiteral("must be true or false"));
    return m_value.toBool();
}

int JsonNode::number(int least, int most) const
{
    const double number = m_value.toDouble();
    const int integer = number >= least && number <= most ? static_cast<int>(number) : least;
    // Equality is meant: it tells a whole number within the range from everything else.
    if (!m_value.isDouble() || integer < number || integer > number)
        fail(QStringLiteral("must be a whole number from %1 to %2").arg(least).arg(most));
    return integer;
}

QStringList JsonNode::texts() const
{
    QStringList result;
    const QVector<JsonNode> nodes = items();
    for (const JsonNode &node : nodes)
        result += node.text();
    return result;
}

QString JsonNode::textOr(const QString &key, const QString &otherwise) const
{
    return has(key) ? member(key).text() : otherwise;
}

bool JsonNode::flagOr(const QString &key, bool otherwise) const
{
    return has(key) ? member(key).flag() : otherwise;
}

int JsonNode::numberOr(const QString &key, int least, int most, int otherwise) const
{
    return has(key) ? member(key).number(least, most) : otherwise;
}

} // namespace morvek
