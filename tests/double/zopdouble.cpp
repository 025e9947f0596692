// SPDX-License-Identifier: Apache-2.0
#include "zopregistry.h"

using namespace morvek;

namespace {

ZopRegistry &registry()
{
    return ZopRegistry::instance();
}

QList<QPointer<ZopDirWatcher>> watchers(const QString &directory)
{
    QList<QPointer<ZopDirWatcher>> found;
    for (const WatcherState *watcher : qAsConst(registry().watchers)) {
        if (watcher->path == directory)
            found.append(watcher->q);
    }
    return found;
}

void finish(int index, bool failed, int code, const QString &text, const ZopVariant &dat)
{
    const QPointer<ZopControlCommand> command = registry().commands.at(index).command;
    for (CommandState *state : qAsConst(registry().commandStates)) {
        if (state->q != command)
            continue;
        state->failed = failed;
        state->errorCode = code;
        state->errorString = text;
        state->reply = dat;
    }
    if (command)
        emit command->finished(command);
}

} // namespace

ZopRegistry &ZopRegistry::instance()
{
    static ZopRegistry registry;
    return registry;
}

void tellObject(const QPointer<ZopObject> &object, const ZopChangeset &changes)
{
    for (auto it = changes.assignments.begin(); object && it != changes.assignments.end(); ++it)
        emit object->attributeChanged(it.key(), it.value());
    for (const QString &name : changes.removals) {
        if (object)
            emit object->attributeRemoved(name);
    }
    if (object)
        emit object->attributesChanged(changes);
}

QString classText(const QObject *parent)
{
    return QString::fromLatin1(parent ? parent->metaObject()->className() : "none");
}

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString connectedText(const QMap<QString, bool> &connected)
{
    return QLatin1String("connected ") + QStringList(connected.keys(true)).join(QLatin1Char(','));
}

void ZopDouble::reset()
{
    if (!registry().objects.isEmpty() || !registry().watchers.isEmpty() || !registry().commandStates.isEmpty())
        qFatal("The double is reset while a client lives");
    registry() = ZopRegistry();
}

void ZopDouble::publish(const QString &path, const Values &values, const QSet<QString> &removals)
{
    store(path, values, removals);
    tell(path, values, removals);
}

void ZopDouble::store(const QString &path, const Values &values, const QSet<QString> &removals)
{
    Values &held = registry().world[path];
    for (auto it = values.begin(); it != values.end(); ++it)
        held.insert(it.key(), it.value());
    for (const QString &name : removals)
        held.remove(name);
    for (ObjectState *object : qAsConst(registry().objects)) {
        if (object->path == path && object->cached)
            object->cache = held;
    }
}

void ZopDouble::tell(const QString &path, const Values &values, const QSet<QString> &removals)
{
    QList<QPointer<ZopObject>> told;
    for (ZopObject *object : objects(path))
        told.append(object);
    for (const QPointer<ZopObject> &object : qAsConst(told))
        tellObject(object, {values, removals});
}

void ZopDouble::add(const QString &directory, const QString &name, const Values &values)
{
    publish(directory + QLatin1Char('/') + name, values);
    announce(directory, name);
}

void ZopDouble::announce(const QString &directory, const QString &name)
{
    for (const QPointer<ZopDirWatcher> &watcher : watchers(directory)) {
        if (watcher)
            emit watcher->objectAdded(name);
    }
}

void ZopDouble::remove(const QString &directory, const QString &name)
{
    registry().world.remove(directory + QLatin1Char('/') + name);
    for (const QPointer<ZopDirWatcher> &watcher : watchers(directory)) {
        if (watcher)
            emit watcher->objectRemoved(name);
    }
}

void ZopDouble::refuse(const QString &path, const QString &error)
{
    registry().refusals.insert(path, error);
}

void ZopDouble::allow(const QString &path)
{
    registry().refusals.remove(path);
}

QList<ZopDouble::Command> ZopDouble::commands()
{
    return registry().commands;
}

void ZopDouble::onStart(const std::function<void(const QString &message)> &hook)
{
    ZopRegistry::instance().startHook = hook;
}

void ZopDouble::setNextId(const QString &id)
{
    registry().nextId = id;
}

void ZopDouble::answer(int index, const ZopVariant &dat)
{
    finish(index, false, 0, QString(), dat);
}

void ZopDouble::answerError(int index, int code, const QString &text, const ZopVariant &dat)
{
    finish(index, true, code, text, dat);
}

QList<ZopDouble::Write> ZopDouble::writes()
{
    return registry().writes;
}

void ZopDouble::onWrite(const std::function<void(const ZopChangeset &changes)> &hook)
{
    registry().writeHook = hook;
}

void ZopDouble::refuseWrites(const QString &path, const QString &error)
{
    registry().writeRefusals.insert(path, error);
}

QStringList ZopDouble::journal()
{
    return registry().journal;
}

void ZopDouble::clearJournal()
{
    registry().journal.clear();
}

int ZopDouble::askedTexts()
{
    return registry().askedTexts;
}

QList<ZopObject *> ZopDouble::objects(const QString &path)
{
    QList<ZopObject *> found;
    for (const ObjectState *object : qAsConst(registry().objects)) {
        if (object->path == path)
            found.append(object->q);
    }
    return found;
}

QSet<QObject *> ZopDouble::owners()
{
    QSet<QObject *> found;
    for (const ObjectState *object : qAsConst(registry().objects))
        found.insert(object->q->parent());
    for (const WatcherState *watcher : qAsConst(registry().watchers))
        found.insert(watcher->q->parent());
    return found;
}
