// SPDX-License-Identifier: Apache-2.0
#include "networkingdaemon.h"

#include "interfacecontrol.h"
#include "networkingrequest.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

namespace {

QString pathOf(const QString &interface)
{
    return Wire::InterfacesDirectory + QLatin1Char('/') + interface;
}

} // namespace

NetworkingDaemon::NetworkingDaemon(InterfaceControl *control, const DaemonTools &tools, QObject *parent)
    : Daemon(QStringLiteral("networking"), Wire::ControlObject, ControlFirst, tools, parent),
      m_control(control)
{
}

NetworkingDaemon::~NetworkingDaemon() = default;

Daemon::Task NetworkingDaemon::read(const ZopChangeset &changes)
{
    const NetworkingRequest request = NetworkingRequest::read(changes);
    Task task;
    task.request = request;
    task.text = request.toString();
    task.interface = request.interface;
    task.carryOut = [this, request](const AnswerCall &answer) { m_control->carryOut(request, answer); };
    return task;
}

bool NetworkingDaemon::publish(QString *error)
{
    return publishInterfaces(error)
        && publishStatus(Service::Networking, Wire::StatusObject, ObjectPublisher::TellAll, error);
}

void NetworkingDaemon::follow()
{
    followStatus(Service::Networking, Wire::StatusObject);
    connect(world(), &World::interfaceAdded, this, &NetworkingDaemon::onInterfaceAdded);
    connect(world(), &World::interfaceRemoved, this, &NetworkingDaemon::onInterfaceRemoved);
    connect(world(), &World::interfaceChanged, this, &NetworkingDaemon::onInterfaceChanged);
}

bool NetworkingDaemon::publishInterfaces(QString *error)
{
    QStringList former;
    if (!ObjectPublisher::list(Wire::InterfacesDirectory, &former, error))
        return false;
    for (const QString &name : qAsConst(former)) {
        if (!world()->hasInterface(name) && !publisher().remove(pathOf(name), error))
            return false;
    }
    const QStringList interfaces = world()->interfaces();
    for (const QString &name : interfaces) {
        if (!publisher().publish(pathOf(name), world()->interfaceAttributes(name), ObjectPublisher::TellAll, error))
            return false;
    }
    return true;
}

// Clients that had heard of an interface before it was there have passed over its name.
void NetworkingDaemon::onLatePublication(const QString &path)
{
    if (path == Wire::StatusObject)
        return;
    const Attributes status = world()->status(Service::Networking);
    ZopChangeset ranking;
    for (const QString &name : {Wire::Priority, Wire::DefaultInterface}) {
        if (status.contains(name))
            ranking.assignments.insert(name, status.value(name));
    }
    update(Wire::StatusObject, ranking);
}

void NetworkingDaemon::onInterfaceAdded(const QString &name)
{
    QString error;
    const bool done =
        publisher().publish(pathOf(name), world()->interfaceAttributes(name), ObjectPublisher::TellAll, &error);
    report(pathOf(name), done, error);
}

void NetworkingDaemon::onInterfaceRemoved(const QString &name)
{
    QString error;
    const bool done = publisher().remove(pathOf(name), &error);
    report(pathOf(name), done, error);
}

void NetworkingDaemon::onInterfaceChanged(const QString &name, const ZopChangeset &changes)
{
    update(pathOf(name), changes);
}

} // namespace morvek
