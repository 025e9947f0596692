// SPDX-License-Identifier: Apache-2.0
#include "objectpublisher.h"

#include "zopdirwatcher.h"
#include "zopobject.h"

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

} // namespace

ObjectPublisher::ObjectPublisher() = default;
ObjectPublisher::~ObjectPublisher() = default;

bool ObjectPublisher::publish(const QString &path, const Attributes &attributes, Takeover takeover, QString *error)
{
    ZopChangeset whole;
    whole.assignments = attributes;
    bool created = ZopObject::create(path, whole, error);
    // Not a mode that creates: nobody must see the object before it has its values.
    auto object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    if (!object->isValid() && !created && ZopObject::remove(path)) {
        created = ZopObject::create(path, whole, error);
        object = std::make_unique<ZopObject>(path, ZopObject::ReadWrite, false);
    }
    if (!object->isValid()) {
        if (created)
            *error = object->errorString();
        return false;
    }
    if (!created) {
        ZopChangeset changes = difference(attributesOf(object.get()), attributes);
        if (takeover == TellAll)
            changes.assignments = attributes;
        const Attributes unwritten = m_unwritten[path];
        for (auto it = unwritten.begin(); it != unwritten.end(); ++it) {
            if (attributes.contains(it.key()))
                changes.assignments.insert(it.key(), attributes.value(it.key()));
        }
        if (!isEmpty(changes) && !object->setAttributes(changes)) {
            *error = object->errorString();
            return false;
        }
    }
    m_objects[path] = std::move(object);
    m_unwritten.erase(path);
    return true;
}

bool ObjectPublisher::update(const QString &path, const ZopChangeset &changes, QString *error)
{
    const auto found = m_objects.find(path);
    if (found == m_objects.end() || !found->second->setAttributes(changes)) {
        *error = found == m_objects.end() ? QStringLiteral("not published") : found->second->errorString();
        for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
            m_unwritten[path].insert(it.key(), it.value());
        return false;
    }
    return true;
}

bool ObjectPublisher::remove(const QString &path, QString *error)
{
    m_objects.erase(path);
    return ZopObject::remove(path, error);
}

void ObjectPublisher::abandon()
{
    m_objects.clear();
    m_unwritten.clear();
}

QStringList ObjectPublisher::names(const QString &directory)
{
    QStringList names;
    ZopDirWatcher watcher(directory);
    QObject::connect(&watcher, &ZopDirWatcher::objectAdded, [&names](const QString &name) { names += name; });
    watcher.setNameCacheEnabled(true);
    return names;
}

} // namespace morvek
