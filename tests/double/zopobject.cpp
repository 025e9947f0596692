// SPDX-License-Identifier: Apache-2.0
#include "zopobject.h"

#include "zopregistry.h"

#include <QtCore/QMetaMethod>

namespace morvek {

class ZopObject::Private : public ObjectState
{
};

ZopObject::ZopObject(const QString &path, PublicationMode mode, bool flag, QObject *parent)
    : QObject(parent),
      d(new Private)
{
    ZopRegistry &registry = ZopRegistry::instance();
    d->q = this;
    d->path = path;
    if (registry.refusals.contains(path))
        d->error = registry.refusals.value(path);
    else if (!registry.world.contains(path))
        d->error = QStringLiteral("No such object");
    registry.journal.append(QStringLiteral("object %1 mode %2 flag %3 parent %4")
                                .arg(path, QString::number(mode), boolText(flag), classText(parent)));
    if (isValid())
        registry.objects.append(d.get());
}

ZopObject::~ZopObject()
{
    ZopRegistry::instance().journal.append(QLatin1String("delete object ") + d->path);
    ZopRegistry::instance().objects.removeOne(d.get());
}

bool ZopObject::isValid() const
{
    return d->error.isEmpty();
}

QString ZopObject::errorString() const
{
    ++ZopRegistry::instance().askedTexts;
    return isValid() ? d->writeError : d->error;
}

QString ZopObject::path() const
{
    ++ZopRegistry::instance().askedTexts;
    return d->path;
}

void ZopObject::setAttributeCacheEnabled(bool enabled)
{
    const QMap<QString, bool> connected {
        {QStringLiteral("attributeChanged"), isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributeChanged))},
        {QStringLiteral("attributeRemoved"), isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributeRemoved))},
        {QStringLiteral("attributesChanged"),
         isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributesChanged))},
    };
    ZopRegistry &registry = ZopRegistry::instance();
    registry.journal.append(QStringLiteral("cache %1 %2 %3").arg(d->path, boolText(enabled), connectedText(connected)));
    d->cached = enabled;
    d->cache = enabled ? registry.world.value(d->path) : ZopDouble::Values();
    if (!d->cache.isEmpty())
        tellObject(this, {d->cache, {}});
}

ZopVariant ZopObject::attribute(const QString &name, const ZopVariant &defaultValue) const
{
    ZopRegistry::instance().journal.append(
        QStringLiteral("read %1 %2 default %3")
            .arg(d->path, name, defaultValue.isValid() ? QStringLiteral("valid") : QStringLiteral("invalid")));
    return d->cache.value(name, defaultValue);
}

bool ZopObject::setAttributes(const ZopChangeset &changes)
{
    ZopRegistry &registry = ZopRegistry::instance();
    registry.journal.append(QLatin1String("write ") + d->path);
    if (registry.writeRefusals.contains(d->path)) {
        d->writeError = registry.writeRefusals.value(d->path);
        return false;
    }
    registry.writes.append({d->path, changes});
    if (registry.writeHook)
        registry.writeHook(changes);
    return true;
}

void ZopObject::connectNotify(const QMetaMethod &) { }

bool ZopObject::create(const QString &, const ZopChangeset &, QString *)
{
    return false;
}

bool ZopObject::remove(const QString &, QString *)
{
    return false;
}

} // namespace morvek
