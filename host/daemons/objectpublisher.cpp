// SPDX-License-Identifier: Apache-2.0
#include "objectpublisher.h"

#include "zopdirwatcher.h"
#include "zopobject.h"
#include "zopwire.h"

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

/*! What the object holds at this moment. */
Attributes attributesOf(ZopObject *object)
{
    Attributes attributes;
    const auto collect = [&attributes](const QString &name, const ZopVariant &value) {
        attributes.insert(name, value);
    };
    const QMetaObject::Connection connection = QObject::connect(object, &ZopObject::attributeChanged, collect);
    object->setAttributeCacheEnabled(true);
    QObject::disconnect(connection);
    return attributes;
}

// What the platform says of an object; it tells reasons as texts only.
bool isMalformed(const QString &error)
{
    return error.startsWith(QLatin1String("malformed content"));
}

bool isGone(const QString &error)
{
    return error == QLatin1String("no such object");
}

/*! Whether the path has not the object any more that was published; of what cannot be opened nobody can tell. */
bool isLost(const QString &error)
{
    return isMalformed(error) || isGone(error) || error == QLatin1String("another object has this path");
}

/*! What \a changes take while they wait, about. */
qint64 bytesOf(const ZopChangeset &changes)
{
    constexpr qint64 Overhead = 128; // of each attribute
    qint64 bytes = Overhead;
    for (auto it = changes.assignments.cbegin(); it != changes.assignments.cend(); ++it)
        bytes += Overhead + qint64(sizeof(QChar)) * it.key().size() + it.value().bytes().size();
    for (const QString &name : changes.removals)
        bytes += Overhead + qint64(sizeof(QChar)) * name.size();
    return bytes;
}

/*! Makes one update of \a earlier and \a later. */
void merge(ZopChangeset *earlier, const ZopChangeset &later)
{
    for (auto it = later.assignments.cbegin(); it != later.assignments.cend(); ++it) {
        earlier->assignments.insert(it.key(), it.value());
        earlier->removals.remove(it.key());
    }
    for (const QString &name : later.removals) {
        earlier->assignments.remove(name);
        earlier->removals.insert(name);
    }
}

} // namespace

ObjectPublisher::ObjectPublisher(Tell tellLoss, Permission permission)
    : m_tellLoss(std::move(tellLoss)),
      m_permission(std::move(permission))
{
}

ObjectPublisher::~ObjectPublisher() = default;

bool ObjectPublisher::publish(const QString &path, const Attributes &attributes, Takeover takeover, QString *error)
{
    m_objects[path].attributes = attributes;
    return add(path, {Step::Create, {}, takeover}, error);
}

bool ObjectPublisher::update(const QString &path, const ZopChangeset &changes, QString *error)
{
    const auto found = m_objects.find(path);
    if (found == m_objects.end() || found->second.endsWith(Step::Remove)) {
        *error = QStringLiteral("not published");
        return false;
    }
    apply(changes, &found->second.attributes);
    return found->second.endsWith(Step::Create) || add(path, {Step::Update, changes, TellDifference}, error);
}

bool ObjectPublisher::remove(const QString &path, QString *error)
{
    Published &published = m_objects[path];
    if (published.endsWith(Step::Create))
        published.waiting.pop_back();
    if (published.endsWith(Step::Remove))
        return true;
    return add(path, {Step::Remove, {}, TellDifference}, error);
}

bool ObjectPublisher::add(const QString &path, const Step &step, QString *error)
{
    Published &published = m_objects[path];
    const bool isFirst = published.waiting.empty();
    wait(path, &published, step);
    const bool done = !isFirst || perform(path, &published, error);
    if (!published.object && published.waiting.empty())
        m_objects.erase(path);
    return done;
}

/*! Puts \a step behind what waits; what is too much becomes one update with what they all come to. */
void ObjectPublisher::wait(const QString &path, Published *published, const Step &step)
{
    std::deque<Step> &waiting = published->waiting;
    if (waiting.empty()) {
        published->waitingBytes = 0;
        published->hasLost = false;
    }
    published->waitingBytes += bytesOf(step.changes);
    waiting.push_back(step);
    if (step.kind != Step::Update || waiting.size() == 1
        || (!published->hasLost && published->waitingBytes <= LargestQueue))
        return;
    // There is no other kind of step before an update: what is created takes updates into itself.
    ZopChangeset all;
    for (const Step &update : waiting)
        merge(&all, update.changes);
    waiting.assign(1, {Step::Update, all, TellDifference});
    if (!std::exchange(published->hasLost, true) && m_tellLoss)
        m_tellLoss(path, QStringLiteral("updates were lost: too many wait, and are told as one"));
}

QStringList ObjectPublisher::check(const Tell &tellTrouble)
{
    const ZopObject::NoWaiting noWaiting;
    QStringList mended;
    for (auto &[path, published] : m_objects) {
        if (!published.waiting.empty() || published.object->check())
            continue;
        QString error = published.object->errorString();
        if (!isLost(error))
            continue;
        tellTrouble(path, error);
        wait(path, &published, {Step::Create, {}, MakeAnew});
        if (perform(path, &published, &error))
            mended += path;
    }
    return mended;
}

QStringList ObjectPublisher::retry()
{
    const ZopObject::NoWaiting noWaiting; // that has been done when it was first tried
    QStringList created;
    for (auto it = m_objects.begin(); it != m_objects.end();) {
        Published &published = it->second;
        bool done = true;
        while (done && !published.waiting.empty()) {
            const bool creates = published.waiting.front().kind == Step::Create;
            QString error;
            done = perform(it->first, &published, &error);
            if (done && creates)
                created += it->first;
        }
        it = published.object || !published.waiting.empty() ? std::next(it) : m_objects.erase(it);
    }
    return created;
}

bool ObjectPublisher::isWaiting() const
{
    return std::any_of(m_objects.begin(), m_objects.end(), [](const auto &one) { return !one.second.waiting.empty(); });
}

/*! Does what waits first; when that fails, it goes on waiting, or what makes it possible takes its place. */
bool ObjectPublisher::perform(const QString &path, Published *published, QString *error)
{
    std::deque<Step> &waiting = published->waiting;
    if (waiting.front().kind != Step::Update && m_permission && !m_permission(error))
        return false;
    bool done = false;
    switch (waiting.front().kind) {
    case Step::Create:
        done = create(path, published, error);
        break;
    case Step::Update:
        done = published->object->setAttributes(waiting.front().changes);
        *error = published->object->errorString();
        break;
    case Step::Remove:
        published->object.reset();
        done = ZopObject::remove(path, error) || isGone(*error);
        break;
    }
    if (done) {
        waiting.pop_front();
    } else if (waiting.front().kind == Step::Update && isLost(*error)) {
        // Nobody can be told these updates any more. They are part of the attributes.
        while (!waiting.empty() && waiting.front().kind == Step::Update)
            waiting.pop_front();
        if (waiting.empty())
            waiting.push_back({Step::Create, {}, MakeAnew});
    }
    return done;
}

bool ObjectPublisher::create(const QString &path, Published *published, QString *error)
{
    ZopChangeset changes;
    changes.assignments = published->attributes;
    Takeover &takeover = published->waiting.front().takeover;
    bool created =
        takeover == MakeAnew ? ZopObject::createAnew(path, changes, error) : ZopObject::create(path, changes, error);
    // Not a mode that creates: nobody must see the object before it has its values.
    auto object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    if (!created && isMalformed(object->errorString()) && ZopObject::createAnew(path, changes, error)) {
        created = true;
        object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    }
    if (created)
        takeover = TellDifference; // everything has been told, also when it cannot be opened yet
    if (!isGone(object->errorString()) && !object->errorString().isEmpty())
        *error = object->errorString();
    if (!object->isValid() || (!created && takeover == MakeAnew))
        return false;
    if (!object->check() && isLost(object->errorString())) {
        takeover = MakeAnew;
        *error = object->errorString();
        return false;
    }
    if (!created) {
        const Attributes present = attributesOf(object.get());
        changes = difference(present, published->attributes);
        if (takeover == TellAll)
            changes.assignments = published->attributes;
        if (!isEmpty(changes) && !object->setAttributes(changes)) {
            *error = object->errorString();
            return false;
        }
    }
    published->object = std::move(object);
    return true;
}

void ObjectPublisher::abandon()
{
    m_objects.clear();
}

bool ObjectPublisher::list(const QString &directory, QStringList *names, QString *error)
{
    // Short of descriptors, it may leave names out, and nothing tells that: these stay until the next start.
    ZopDirWatcher watcher(directory);
    QObject::connect(&watcher, &ZopDirWatcher::objectAdded, [names](const QString &name) { *names += name; });
    watcher.setNameCacheEnabled(true);
    *error = watcher.errorString();
    return watcher.isValid();
}

bool ObjectPublisher::read(const QString &path, Attributes *attributes)
{
    const ZopObject::NoWaiting noWaiting;
    ZopObject object(path, ZopObject::Subscribe, false);
    if (!object.isValid())
        return false;
    *attributes = attributesOf(&object);
    return true;
}

} // namespace morvek
