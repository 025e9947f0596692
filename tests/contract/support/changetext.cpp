// SPDX-License-Identifier: Apache-2.0
#include "changetext.h"

#include <QtCore/QStringList>

#include <algorithm>

using morvek::ZopChangeset;
using morvek::ZopVariant;

namespace {

// Shorter runs are written out.
constexpr int ShortestRun = 100;

QString valueFrom(const QString &text)
{
    const int star = text.indexOf(QLatin1Char('*'));
    bool ok = false;
    const int count = text.left(star).toInt(&ok);
    return star > 0 && ok ? QString(count, text.at(star + 1)) : text;
}

} // namespace

ZopChangeset changesFrom(const QString &text)
{
    ZopChangeset changes;
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        const int equals = word.indexOf(QLatin1Char('='));
        if (word.startsWith(QLatin1Char('-')))
            changes.removals.insert(word.mid(1));
        else
            changes.assignments.insert(word.left(equals), ZopVariant(valueFrom(word.mid(equals + 1))));
    }
    return changes;
}

QString toText(const ZopVariant &value)
{
    const QByteArray bytes = value.bytes();
    const bool isRun = bytes.size() >= ShortestRun && bytes.count(bytes.at(0)) == bytes.size();
    return isRun ? QStringLiteral("%1*%2").arg(bytes.size()).arg(QLatin1Char(bytes.at(0))) : value.toString();
}

QString toText(const ZopChangeset &changes)
{
    QStringList words;
    for (auto it = changes.assignments.cbegin(); it != changes.assignments.cend(); ++it)
        words << it.key() + QLatin1Char('=') + toText(it.value());
    QStringList removals(changes.removals.cbegin(), changes.removals.cend());
    removals.sort();
    for (const QString &name : qAsConst(removals))
        words << QLatin1Char('-') + name;
    return QLatin1Char('{') + words.join(QLatin1Char(' ')) + QLatin1Char('}');
}
