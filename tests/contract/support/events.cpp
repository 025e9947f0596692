// SPDX-License-Identifier: Apache-2.0
#include "events.h"

#include "changetext.h"
#include "contracttest.h"

using morvek::ZopChangeset;
using morvek::ZopDirWatcher;
using morvek::ZopObject;
using morvek::ZopVariant;

Events::Events(ZopObject *object)
{
    connect(object, &ZopObject::attributeChanged, this,
            [this](const QString &name, const ZopVariant &value) { lines << name + QLatin1Char('=') + toText(value); });
    connect(object, &ZopObject::attributeRemoved, this,
            [this](const QString &name) { lines << QLatin1Char('-') + name; });
    connect(object, &ZopObject::attributesChanged, this,
            [this](const ZopChangeset &changes) { lines << toText(changes); });
}

Events::Events(ZopDirWatcher *watcher)
{
    connect(watcher, &ZopDirWatcher::objectAdded, this,
            [this](const QString &name) { lines << QLatin1Char('+') + name; });
    connect(watcher, &ZopDirWatcher::objectRemoved, this,
            [this](const QString &name) { lines << QLatin1Char('-') + name; });
}

QStringList Events::updates() const
{
    return lines.filter(QLatin1String("{"));
}

bool Events::wait(const QString &line) const
{
    return waitUntil([this, &line] { return lines.contains(line); });
}
