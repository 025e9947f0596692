// SPDX-License-Identifier: Apache-2.0
#include "servicekeeper_p.h"

#include "zoplook_p.h"

#include <servicebase.h>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

// In milliseconds. What a daemon creates comes at once, and a service may need a turn of the event loop to become
// ready.
constexpr int SettleTime = 50;

} // namespace

ServiceKeeper::ServiceKeeper(const KeptService &kept)
    : m_kept(kept),
      m_watch(kept.daemon)
{
    connect(&m_watch, &DaemonWatch::died, this, &ServiceKeeper::onDied);
    connect(&m_watch, &DaemonWatch::returned, this, &ServiceKeeper::onReturned);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ServiceKeeper::lookAgain);
    replaceService(m_kept.make());
}

ServiceKeeper::~ServiceKeeper()
{
    replaceService(nullptr);
}

void ServiceKeeper::setRetryPause(int milliseconds)
{
    m_retryPause = milliseconds;
    if (m_availability == NetworkController::Waiting)
        m_retry.start(milliseconds);
}

void ServiceKeeper::replaceService(ServiceBase *service)
{
    const auto drop = m_kept.drop;
    ServiceBase *former = std::exchange(m_service, service);
    if (service)
        connect(service, &ServiceBase::readyChanged, this, &ServiceKeeper::onReady);
    const QPointer<ServiceKeeper> self(this); // a slot may end it all
    Q_EMIT replaced();
    if (former)
        drop(former);
    if (self)
        onReady();
}

void ServiceKeeper::onReady()
{
    if (!m_service || !m_service->ready())
        return;
    m_retry.stop();
    const QPointer<ServiceKeeper> self(this); // a slot may end it all
    // The folder may not have told yet that the daemon is there.
    m_watch.look();
    if (self)
        set(m_watch.isThere() ? NetworkController::Ready : NetworkController::Gone);
}

void ServiceKeeper::onDied()
{
    if (m_availability == NetworkController::Ready)
        set(NetworkController::Gone);
}

// The service that was ready before works again by itself.
void ServiceKeeper::onReturned()
{
    if (m_service->ready())
        set(NetworkController::Ready);
    else
        m_retry.start(SettleTime);
}

void ServiceKeeper::lookAgain()
{
    const int pause = m_retry.interval();
    m_retry.start(std::clamp(2 * pause, m_retryPause, MostGrowth * m_retryPause));
    if (isComplete())
        replaceService(m_kept.make());
}

bool ServiceKeeper::isComplete() const
{
    return DaemonWatch::isServed(m_kept.daemon)
        && std::all_of(m_kept.objects.begin(), m_kept.objects.end(),
                       [](const QString &path) { return canBeOpened(path, ToRead); });
}

void ServiceKeeper::set(NetworkController::Availability availability)
{
    if (std::exchange(m_availability, availability) != availability)
        Q_EMIT availabilityChanged();
}

} // namespace morvek
