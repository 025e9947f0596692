// SPDX-License-Identifier: Apache-2.0
#include "attributes.h"

namespace morvek {

ZopChangeset difference(const Attributes &from, const Attributes &to)
{
    ZopChangeset changes;
    for (auto it = to.begin(); it != to.end(); ++it) {
        if (from.value(it.key()) != it.value())
            changes.assignments.insert(it.key(), it.value());
    }
    for (auto it = from.begin(); it != from.end(); ++it) {
        if (!to.contains(it.key()))
            changes.removals.insert(it.key());
    }
    return changes;
}

bool isEmpty(const ZopChangeset &changes)
{
    return changes.assignments.isEmpty() && changes.removals.isEmpty();
}

ZopVariant truthValue(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

ZopVariant yesOrNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

ZopVariant textList(const QStringList &texts)
{
    return QJsonArray::fromStringList(texts);
}

} // namespace morvek
