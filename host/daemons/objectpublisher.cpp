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
    const bool created = ZopObject::create(path, whole, error);
    auto object = std::make_unique<ZopObject>(path, ZopObject::Publish, false);
    if (!object->isValid()) {
        *error = object->errorString();
        return false;
    }
    if (!created) {
        ZopChangeset changes = difference(attributesOf(object.get()), attributes);
        if (takeover == TellAll)
            changes.assignments = attributes;
        if (!isEmpty(changes) && !object->setAttributes(changes)) {
            *error = object->errorString();
            return false;
        }
    }
    m_objects[path] = std::move(object);
    return true;
}

bool ObjectPublisher::update(const QString &path, const ZopChangeset &changes, QString *error)
{
    const auto found = m_objects.find(path);
    if (found == m_objects.end() || !found->second->setAttributes(changes)) {
        *error = found == m_objects.end() ? QStringLiteral("not published") : found->second->errorString();
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
