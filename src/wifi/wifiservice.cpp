// SPDX-License-Identifier: Apache-2.0
#include "wifiservice.h"

#include "asyncoperationwriter_p.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "networklog_p.h"
#include "wifiproviderzop_p.h"
#include "wifiservice_p.h"

namespace morvek {

namespace {

const QLatin1String NotReadyMessage("Service is not ready");

const char NotReadyText[] = " called, but provider does not exist or is not ready";

} // namespace

WifiService::WifiService()
    : d(new Private(this))
{
}

WifiService::~WifiService() = default;

bool WifiService::available() const
{
    return true;
}

bool WifiService::ready() const
{
    return d->provider->ready();
}

void WifiService::powerOn()
{
    if (d->admitOrWarn("powerOn"))
        d->provider->powerOn();
}

void WifiService::powerOff()
{
    if (d->admitOrWarn("powerOff"))
        d->provider->powerOff();
}

bool WifiService::powered() const
{
    return d->admitOrWarn("powered") && d->provider->powered();
}

AsyncWifiScanOperation *WifiService::scan()
{
    auto operation = std::make_unique<AsyncWifiScanOperation>();
    if (d->admitOrWarn("scan"))
        d->provider->scan(operation.get());
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation.release();
}

AsyncWifiConnectOperation *WifiService::connectAccessPoint(const WifiConnectionConfig &config)
{
    auto operation = std::make_unique<AsyncWifiConnectOperation>();
    if (d->admitOrWarn("connectAccessPoint"))
        d->provider->connectAccessPoint(operation.get(), config);
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation.release();
}

void WifiService::disconnectAccessPoint()
{
    if (d->admitOrWarn("disconnectAccessPoint"))
        d->provider->disconnectAccessPoint();
}

WifiAccessPoint WifiService::connectedAccessPoint() const
{
    return d->admitOrWarn("connectedAccessPoint") ? d->provider->connectedAccessPoint() : WifiAccessPoint();
}

bool WifiService::connected() const
{
    return d->admitOrWarn("connected") && d->provider->connected();
}

WifiService::Private::Private(WifiService *service)
    : q(service),
      provider(new WifiProviderZop)
{
    connectProvider();
}

WifiService::Private::Private(WifiService *service, std::unique_ptr<WifiProvider> wifiProvider)
    : q(service),
      provider(std::move(wifiProvider))
{
    connectProvider();
}

WifiService::Private::~Private() = default;

void WifiService::Private::connectProvider()
{
    const WifiProvider *sender = provider.get();
    if (!sender)
        return;
    QObject::connect(sender, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    QObject::connect(sender, &WifiProvider::poweredChanged, q, &WifiService::poweredChanged);
    QObject::connect(sender, &WifiProvider::connectedChanged, q, &WifiService::connectedChanged);
}

bool WifiService::Private::admitOrWarn(const char *operation) const
{
    if (provider && provider->ready())
        return true;
    NetworkLog::printWarning(operation, NotReadyText);
    return false;
}

} // namespace morvek
