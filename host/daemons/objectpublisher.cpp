// SPDX-License-Identifier: Apache-2.0
#include "objectpublisher.h"

#include "zopdirwatcher.h"
#include "zopobject.h"

#include <algorithm>

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

} // namespace

ObjectPublisher::ObjectPublisher() = default;
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
    return add(path, {Step::Remove, {}, TellDifference}, error);
}

bool ObjectPublisher::add(const QString &path, const Step &step, QString *error)
{
    Published &published = m_objects[path];
    published.waiting.push_back(step);
    const bool done = published.waiting.size() > 1 || perform(path, &published, error);
    if (!published.object && published.waiting.empty())
        m_objects.erase(path);
    return done;
}

QStringList ObjectPublisher::retry()
{
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
    } else if (waiting.front().kind == Step::Update && (isMalformed(*error) || isGone(*error))) {
        // Nobody can be told these updates any more. They are part of the attributes.
        while (!waiting.empty() && waiting.front().kind == Step::Update)
            waiting.pop_front();
        if (waiting.empty())
            waiting.push_back({Step::Create, {}, TellDifference});
    }
    return done;
}

bool ObjectPublisher::create(const QString &path, Published *published, QString *error)
{
    ZopChangeset changes;
    changes.assignments = published->attributes;
    bool created = ZopObject::create(path, changes, error);
    // Not a mode that creates: nobody must see the object before it has its values.
    auto object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    if (isMalformed(object->errorString()) && ZopObject::remove(path)) {
        created = ZopObject::create(path, changes, error);
        object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    }
    Takeover &takeover = published->waiting.front().takeover;
    if (created)
        takeover = TellDifference; // everything has been told, also when it cannot be opened yet
    if (!isGone(object->errorString()))
        *error = object->errorString();
    if (!object->isValid())
        return false;
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

} // namespace morvek
