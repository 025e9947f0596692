// SPDX-License-Identifier: Apache-2.0
#include "zopdirwatcher.h"

#include "zopregistry.h"

#include <QtCore/QMetaMethod>

namespace morvek {

class ZopDirWatcher::Private : public WatcherState
{
};

ZopDirWatcher::ZopDirWatcher(const QString &path, QObject *parent)
    : QObject(parent),
      d(new Private)
{
    ZopRegistry &registry = ZopRegistry::instance();
    d->q = this;
    d->path = path;
    d->error = registry.refusals.value(path);
    registry.journal.append(QStringLiteral("watcher %1 parent %2").arg(path, classText(parent)));
    if (isValid())
        registry.watchers.append(d.get());
}

ZopDirWatcher::~ZopDirWatcher()
{
    ZopRegistry::instance().journal.append(QLatin1String("delete watcher ") + d->path);
    ZopRegistry::instance().watchers.removeOne(d.get());
}

bool ZopDirWatcher::isValid() const
{
    return d->error.isEmpty();
}

QString ZopDirWatcher::errorString() const
{
    ++ZopRegistry::instance().askedTexts;
    return d->error;
}

void ZopDirWatcher::setNameCacheEnabled(bool enabled)
{
    const QMap<QString, bool> connected {
        {QStringLiteral("objectAdded"), isSignalConnected(QMetaMethod::fromSignal(&ZopDirWatcher::objectAdded))},
        {QStringLiteral("objectRemoved"), isSignalConnected(QMetaMethod::fromSignal(&ZopDirWatcher::objectRemoved))},
    };
    ZopRegistry &registry = ZopRegistry::instance();
    registry.journal.append(QStringLiteral("names %1 %2 %3").arg(d->path, boolText(enabled), connectedText(connected)));
    if (!enabled)
        return;
    const QString prefix = d->path + QLatin1Char('/');
    const QStringList paths = registry.world.keys();
    for (const QString &path : paths) {
        if (path.startsWith(prefix))
            emit objectAdded(path.mid(prefix.size()));
    }
}

} // namespace morvek
