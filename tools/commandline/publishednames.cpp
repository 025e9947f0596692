// SPDX-License-Identifier: Apache-2.0
#include "publishednames.h"

#include <publishedstatus.h>
#include <zopdirwatcher.h>

namespace morvek {

namespace {

/*! What begins with a dash would be taken for an option. */
void addName(const QString &name, QStringList *names)
{
    if (!name.startsWith(QLatin1Char('-')) && !names->contains(name))
        names->append(name);
}

} // namespace

QStringList PublishedNames::interfaces()
{
    QStringList names;
    ZopDirWatcher watcher(QStringLiteral("/zop/services/networking/all/interfaces"));
    QObject::connect(&watcher, &ZopDirWatcher::objectAdded, [&names](const QString &name) { addName(name, &names); });
    watcher.setNameCacheEnabled(true);
    return names;
}

QStringList PublishedNames::networks()
{
    QStringList names;
    const QJsonArray results = PublishedStatus().scanResults();
    for (const QJsonValue &result : results)
        addName(result.toObject().value(QLatin1String("ssid")).toString(), &names);
    return names;
}

} // namespace morvek
