// SPDX-License-Identifier: Apache-2.0
#include "zopobject.h"

#include "controlclient.h"
#include "controlserver.h"
#include "localsocket.h"
#include "lockwait.h"
#include "stateobject.h"
#include "zopobject_p.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

namespace morvek {

namespace {

bool isSocket(const ZopPath &path)
{
    struct stat status;
    return path.place().status(&status) && S_ISSOCK(status.st_mode);
}

/*! Runs \a action on the file of \a path, and hands its error on to whoever wants it. */
template<typename Action>
bool onFile(const QString &path, QString *error, const Action &action)
{
    const ZopPath target = ZopPath::object(path);
    QString reason = target.error();
    const bool done = target.isValid() && action(target, &reason);
    if (error)
        *error = reason;
    return done;
}

} // namespace

ZopObject::Private::Private(ZopObject *object, const QString &objectPath, PublicationMode publicationMode)
    : q(object),
      path(objectPath),
      mode(publicationMode)
{
}

void ZopObject::Private::open(bool flag)
{
    const ZopPath target = ZopPath::object(path);
    error = target.error();
    if (!target.isValid())
        return;
    // Most objects are files: whether this is a socket is only asked when it cannot be opened as one. What a client may
    // write to, however, is one as a rule.
    const bool isControl = mode == ReadWrite && isSocket(target);
    if (!isControl && (start(makeBackend(target, flag)) || mode == Publish || !isSocket(target)))
        return;
    auto made = std::make_unique<ControlClient>(target, teller());
    ControlClient *opened = made.get();
    if (start(std::move(made)) && mode == ReadWrite)
        client = opened;
}

bool ZopObject::Private::start(std::unique_ptr<ZopBackend> made)
{
    error.clear();
    if (!made->start(&error))
        return false;
    backend = std::move(made);
    return true;
}

ZopBackend::Tell ZopObject::Private::teller()
{
    return [this](const ZopChangeset &changes) { tell(changes); };
}

std::unique_ptr<ZopBackend> ZopObject::Private::makeBackend(const ZopPath &target, bool flag)
{
    if (mode == Publish && flag)
        return std::make_unique<ControlServer>(target, teller());
    // Somebody else may create it at the same moment, which is as good.
    QString ignored;
    if (mode == Publish && !Journal::exists(target))
        Journal::create(target, {}, &ignored);
    // Who writes what nobody in this process listens to has not to hear of it.
    const StateObject::Heard heard = [this] { return isHeard(); };
    return std::make_unique<StateObject>(target, teller(), mode == Subscribe ? StateObject::Heard() : heard);
}

void ZopObject::Private::tell(const ZopChangeset &changes) const
{
    // Any slot may delete the object, and this with it.
    const QPointer<ZopObject> object(q);
    for (auto it = changes.assignments.cbegin(); object && it != changes.assignments.cend(); ++it)
        emit object->attributeChanged(it.key(), it.value());
    if (object && !changes.removals.isEmpty()) {
        QStringList removed(changes.removals.begin(), changes.removals.end());
        removed.sort();
        for (auto it = removed.cbegin(); object && it != removed.cend(); ++it)
            emit object->attributeRemoved(*it);
    }
    if (object)
        emit object->attributesChanged(changes);
}

bool ZopObject::Private::isHeard() const
{
    return q->isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributeChanged))
        || q->isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributeRemoved))
        || q->isSignalConnected(QMetaMethod::fromSignal(&ZopObject::attributesChanged));
}

/*! Any thread may begin to listen. */
void ZopObject::Private::wakeUp() const
{
    const auto wake = [this] {
        if (backend)
            backend->wakeUp();
    };
    if (q->thread() == QThread::currentThread())
        wake();
    else
        QMetaObject::invokeMethod(q, wake, Qt::QueuedConnection);
}

ZopObject::NoWaiting::NoWaiting()
    : m_hasWaited(setWaitingForLocks(false))
{
}

ZopObject::NoWaiting::~NoWaiting()
{
    setWaitingForLocks(m_hasWaited);
}

ZopObject::ZopObject(const QString &path, PublicationMode mode, bool flag, QObject *parent)
    : QObject(parent),
      d(new Private(this, path, mode))
{
    d->open(flag);
}

ZopObject::~ZopObject() = default;

bool ZopObject::isValid() const
{
    return d->backend != nullptr;
}

QString ZopObject::errorString() const
{
    return d->error;
}

QString ZopObject::path() const
{
    return d->path;
}

void ZopObject::setAttributeCacheEnabled(bool enabled)
{
    if (!enabled || !d->backend)
        return;
    const QPointer<ZopObject> guard(this);
    d->backend->refresh();
    if (!guard)
        return;
    ZopChangeset present;
    present.assignments = d->backend->values();
    if (!present.assignments.isEmpty())
        d->tell(present);
}

ZopVariant ZopObject::attribute(const QString &name, const ZopVariant &defaultValue) const
{
    if (!d->backend)
        return defaultValue;
    d->backend->catchUp();
    return d->backend->values().value(name, defaultValue);
}

bool ZopObject::setAttributes(const ZopChangeset &changes)
{
    if (!d->backend)
        return false;
    if (d->mode != Subscribe)
        return d->backend->write(changes, &d->error);
    d->error = QStringLiteral("the object was opened for reading only");
    return false;
}

void ZopObject::connectNotify(const QMetaMethod &)
{
    if (d->mode != Subscribe) // others never sleep
        d->wakeUp();
}

bool ZopObject::check()
{
    return d->backend && d->backend->check(&d->error);
}

bool ZopObject::createAnew(const QString &path, const ZopChangeset &values, QString *error)
{
    return onFile(path, error, [&values](const ZopPath &target, QString *reason) {
        QString refusal;
        const bool isServed = isSocket(target)
            && (LocalSocket::connectTo(target, target.name(), &refusal).isOpen() || !LocalSocket::isNobody(errno));
        if (isServed)
            *reason = QStringLiteral("a control object has this path");
        return !isServed && Journal::createAnew(target, values, reason);
    });
}

bool ZopObject::create(const QString &path, const ZopChangeset &values, QString *error)
{
    return onFile(path, error, [&values](const ZopPath &target, QString *reason) {
        return Journal::create(target, values, reason);
    });
}

bool ZopObject::remove(const QString &path, QString *error)
{
    return onFile(path, error, [](const ZopPath &target, QString *reason) { return Journal::remove(target, reason); });
}

} // namespace morvek
