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
    if (d->admits("powerOn"))
        d->provider->powerOn();
}

void WifiService::powerOff()
{
    if (d->admits("powerOff"))
        d->provider->powerOff();
}

bool WifiService::powered() const
{
    return d->admits("powered") && d->provider->powered();
}

AsyncWifiScanOperation *WifiService::scan()
{
    auto *operation = new AsyncWifiScanOperation;
    if (d->admits("scan"))
        d->provider->scan(operation);
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation;
}

AsyncWifiConnectOperation *WifiService::connectAccessPoint(const WifiConnectionConfig &config)
{
    auto *operation = new AsyncWifiConnectOperation;
    if (d->admits("connectAccessPoint"))
        d->provider->connectAccessPoint(operation, config);
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation;
}

void WifiService::disconnectAccessPoint()
{
    if (d->admits("disconnectAccessPoint"))
        d->provider->disconnectAccessPoint();
}

WifiAccessPoint WifiService::connectedAccessPoint() const
{
    return d->admits("connectedAccessPoint") ? d->provider->connectedAccessPoint() : WifiAccessPoint();
}

bool WifiService::connected() const
{
    return d->admits("connected") && d->provider->connected();
}

WifiService::Private::Private(WifiService *service)
    : Private(service, new WifiProviderZop)
{
}

WifiService::Private::Private(WifiService *service, WifiProvider *wifiProvider)
    : q(service),
      provider(wifiProvider)
{
    if (!provider)
        return;
    QObject::connect(provider, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    QObject::connect(provider, &WifiProvider::poweredChanged, q, &WifiService::poweredChanged);
    QObject::connect(provider, &WifiProvider::connectedChanged, q, &WifiService::connectedChanged);
}

WifiService::Private::~Private()
{
    delete provider;
    provider = nullptr;
}

bool WifiService::Private::admits(const char *operation) const
{
    if (provider && provider->ready())
        return true;
    NetworkLog::printWarning(operation, NotReadyText);
    return false;
}

} // namespace morvek
