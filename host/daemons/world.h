// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WORLD_H
#define MORVEK_HOSTD_WORLD_H

#include "attributes.h"
#include "service.h"

#include <QtCore/QObject>

namespace morvek {

/*!
 * What there is to publish, as the daemons see it: the network interfaces, the status that ranks them, and the status
 * of the Wi-Fi station and of the hotspot.
 *
 * It outlives every daemon: while one is dead the world goes on, and the daemon publishes it as it has become when
 * it is back. Something else drives the world: a scenario, or the machine's kernel.
 */
class World : public QObject
{
    Q_OBJECT

public:
    explicit World(QObject *parent = nullptr);
    ~World() override;

    QStringList interfaces() const { return m_interfaces.keys(); }
    bool hasInterface(const QString &name) const { return m_interfaces.contains(name); }
    Attributes interfaceAttributes(const QString &name) const { return m_interfaces.value(name); }
    Attributes status(Service service) const { return m_statuses.value(service); }

    void addInterface(const QString &name, const Attributes &attributes);
    void removeInterface(const QString &name);
    /*! Tells \a changes as they are, even what sets a value to what it was. */
    void changeInterface(const QString &name, const ZopChangeset &changes);
    void changeStatus(Service service, const ZopChangeset &changes);

    /*! Tells what differs from the present attributes, or nothing. */
    void updateInterface(const QString &name, const Attributes &attributes);
    void updateStatus(Service service, const Attributes &attributes);

Q_SIGNALS:
    void interfaceAdded(const QString &name);
    void interfaceRemoved(const QString &name);
    void interfaceChanged(const QString &name, const morvek::ZopChangeset &changes);
    void statusChanged(morvek::Service service, const morvek::ZopChangeset &changes);

private:
    Q_DISABLE_COPY(World)
    QMap<QString, Attributes> m_interfaces;
    QMap<Service, Attributes> m_statuses;
};

} // namespace morvek

#endif
