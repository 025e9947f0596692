// SPDX-License-Identifier: Apache-2.0
#include "networkservices.h"

#include "networkservices_p.h"

#include <hotspotservice.h>
#include <networkinterfaceservice.h>
#include <networklibraryexports.h>
#include <wifiservice.h>

#include <algorithm>

namespace morvek {

namespace {

template<typename Service, Service *(*make)(), void (*drop)(Service **)>
KeptService kept(const QString &daemon, const QStringList &objects)
{
    return {daemon, objects, []() -> ServiceBase * { return make(); },
            [](ServiceBase *base) {
                auto *service = static_cast<Service *>(base);
                drop(&service);
            }};
}

bool isPause(int milliseconds)
{
    constexpr int Hour = 3600000;
    return milliseconds >= 1 && milliseconds <= Hour;
}

KeptService keptServiceOf(int daemon)
{
    // In the order of NetworkController::Daemon.
    static const KeptService services[] = {
        kept<NetworkInterfaceService, newNetworkInterfaceService, deleteNetworkInterfaceService>(
            QStringLiteral("networking"), {QStringLiteral("/zop/services/networking/all/status_public")}),
        kept<WifiService, newWifiService, deleteWifiService>(QStringLiteral("Wi-Fi"),
                                                             {QStringLiteral("/zop/services/wifi/status")}),
        kept<HotSpotService, newHotSpotService, deleteHotSpotService>(
            QStringLiteral("tethering"), {QStringLiteral("/zop/services/tethering/status")}),
    };
    return services[daemon];
}

} // namespace

NetworkServices::NetworkServices(QObject *parent)
    : QObject(parent),
      d(new Private)
{
    d->q = this;
}

// Controllers hear of it while there is still something to ask.
NetworkServices::~NetworkServices()
{
    for (auto &keeper : d->keepers)
        keeper.reset();
}

bool NetworkServices::isIdle() const
{
    return d->uninterruptible == 0;
}

int NetworkServices::retryPause() const
{
    return d->retryPause;
}

void NetworkServices::setRetryPause(int milliseconds)
{
    if (milliseconds == d->retryPause || !isPause(milliseconds))
        return;
    d->retryPause = milliseconds;
    for (const auto &keeper : d->keepers) {
        if (keeper)
            keeper->setRetryPause(milliseconds);
    }
    Q_EMIT retryPauseChanged();
}

int NetworkServices::watchPause() const
{
    return d->watchPause;
}

void NetworkServices::setWatchPause(int milliseconds)
{
    if (milliseconds == d->watchPause || !isPause(milliseconds))
        return;
    d->watchPause = milliseconds;
    for (const auto &keeper : d->keepers) {
        if (keeper)
            keeper->setWatchPause(milliseconds);
    }
    Q_EMIT watchPauseChanged();
}

ServiceKeeper *NetworkServices::Private::keeper(int daemon)
{
    std::unique_ptr<ServiceKeeper> &keeper = keepers[std::size_t(daemon)];
    if (!keeper) {
        keeper = std::make_unique<ServiceKeeper>(keptServiceOf(daemon));
        keeper->setRetryPause(retryPause);
        keeper->setWatchPause(watchPause);
    }
    return keeper.get();
}

void NetworkServices::Private::setUninterruptible(int change)
{
    const bool wasIdle = q->isIdle();
    uninterruptible += change;
    if (q->isIdle() != wasIdle)
        Q_EMIT q->idleChanged();
}

} // namespace morvek
