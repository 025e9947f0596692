// SPDX-License-Identifier: Apache-2.0
#include "networkcontroller.h"

#include "networkcontroller_p.h"
#include "networkrequest_p.h"
#include "networkservices_p.h"

#include <utility>

namespace morvek {

NetworkController::NetworkController(Daemon daemon, QObject *parent)
    : QObject(parent),
      d(new Private)
{
    d->daemon = daemon;
}

NetworkController::~NetworkController()
{
    if (d->services && d->uninterruptible > 0)
        d->services->d->setUninterruptible(-d->uninterruptible);
}

NetworkServices *NetworkController::services() const
{
    return d->services;
}

void NetworkController::setServices(NetworkServices *services)
{
    if (d->services || !services)
        return;
    d->services = services;
    d->keeper = services->d->keeper(d->daemon);
    connect(d->keeper, &ServiceKeeper::replaced, this, &NetworkController::onServiceReplaced);
    connect(d->keeper, &ServiceKeeper::availabilityChanged, this, &NetworkController::followKeeper);
    connect(d->keeper, &QObject::destroyed, this, &NetworkController::followKeeper);
    connect(services, &QObject::destroyed, this, &NetworkController::servicesChanged);
    onServiceReplaced();
    followKeeper();
    Q_EMIT servicesChanged();
}

NetworkController::Availability NetworkController::availability() const
{
    return d->availability;
}

QString NetworkController::availabilityText() const
{
    if (d->availability == Ready)
        return QString();
    const bool isGone = d->availability == Gone;
    switch (d->daemon) {
    case Networking:
        return isGone ? tr("The network service has stopped.") : tr("The network service has not started yet.");
    case Wifi:
        return isGone ? tr("The Wi-Fi service has stopped.") : tr("The Wi-Fi service has not started yet.");
    case Tethering:
        return isGone ? tr("The hotspot service has stopped.") : tr("The hotspot service has not started yet.");
    }
    return QString();
}

ServiceBase *NetworkController::service() const
{
    return d->keeper ? d->keeper->service() : nullptr;
}

void NetworkController::beginUninterruptible()
{
    ++d->uninterruptible;
    if (d->services)
        d->services->d->setUninterruptible(1);
}

void NetworkController::endUninterruptible()
{
    --d->uninterruptible;
    if (d->services)
        d->services->d->setUninterruptible(-1);
}

void NetworkController::adopt(NetworkRequest *request, const QMetaObject *kind, bool sameSubject)
{
    const auto others = findChildren<NetworkRequest *>(QString(), Qt::FindDirectChildrenOnly);
    for (NetworkRequest *other : others) {
        if (other->metaObject() == kind && !other->isRunning()
            && !(sameSubject && other->subject() != request->subject()))
            other->deleteLater();
    }
    if (d->availability == Ready)
        request->start();
    else
        request->fail(NetworkRequest::NotReady, availabilityText());
}

void NetworkController::followKeeper()
{
    const Availability availability = d->keeper ? d->keeper->availability() : Waiting;
    if (std::exchange(d->availability, availability) == availability)
        return;
    if (availability != Ready)
        loseRequests();
    const QPointer<NetworkController> self(this); // a slot may end it all
    onAvailabilityChanged();
    if (self)
        Q_EMIT availabilityChanged();
}

void NetworkController::loseRequests()
{
    const auto requests = findChildren<NetworkRequest *>(QString(), Qt::FindDirectChildrenOnly);
    for (NetworkRequest *request : requests)
        request->d->endEarly(NetworkRequest::Lost);
}

} // namespace morvek
