// SPDX-License-Identifier: Apache-2.0
#include "world.h"

#include "zopwire.h"

namespace morvek {

World::World(QObject *parent)
    : QObject(parent)
{
}

World::~World() = default;

void World::addInterface(const QString &name, const Attributes &attributes)
{
    m_interfaces.insert(name, attributes);
    Q_EMIT interfaceAdded(name);
}

void World::removeInterface(const QString &name)
{
    if (m_interfaces.remove(name) > 0)
        Q_EMIT interfaceRemoved(name);
}

void World::changeInterface(const QString &name, const ZopChangeset &changes)
{
    const auto found = m_interfaces.find(name);
    if (found == m_interfaces.end())
        return;
    apply(changes, &found.value());
    Q_EMIT interfaceChanged(name, changes);
}

void World::changeStatus(Service service, const ZopChangeset &changes)
{
    apply(changes, &m_statuses[service]);
    Q_EMIT statusChanged(service, changes);
}

void World::updateInterface(const QString &name, const Attributes &attributes)
{
    const ZopChangeset changes = difference(m_interfaces.value(name), attributes);
    if (!isEmpty(changes))
        changeInterface(name, changes);
}

void World::updateStatus(Service service, const Attributes &attributes)
{
    const ZopChangeset changes = difference(m_statuses.value(service), attributes);
    if (!isEmpty(changes))
        changeStatus(service, changes);
}

} // namespace morvek
