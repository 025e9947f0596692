// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceservice.h"

#include "asyncnetworkinterfaceoperation.h"
#include "asyncoperationwriter_p.h"
#include "networkinterfacedata.h"
#include "networkinterfaceproviderzop_p.h"
#include "networkinterfaceservice_p.h"

namespace morvek {

namespace {

const QLatin1String NotReadyMessage("The operation failed because the service is not ready.");

} // namespace

NetworkInterfaceService::NetworkInterfaceService()
    : d(new Private(this))
{
    // Makes queued connections by name find the type of the signals' argument.
    qRegisterMetaType<NetworkInterface>();
}

NetworkInterfaceService::~NetworkInterfaceService() = default;

bool NetworkInterfaceService::available() const
{
    return true;
}

bool NetworkInterfaceService::ready() const
{
    return d->provider && d->provider->ready();
}

QList<NetworkInterface> NetworkInterfaceService::interfaces() const
{
    QList<NetworkInterface> interfaces;
    if (!d->provider || !ready())
        return interfaces;
    const QList<NetworkInterfaceData> records = d->provider->interfaces();
    for (const NetworkInterfaceData &record : records)
        interfaces.append(Private::publicValue(record));
    return interfaces;
}

NetworkInterface NetworkInterfaceService::preferredInterface() const
{
    if (!d->provider || !ready())
        return NetworkInterface();
    return Private::publicValue(d->provider->preferredInterface());
}

AsyncNetworkInterfaceOperation *NetworkInterfaceService::configure(const NetworkInterface &networkInterface,
                                                                   const NetworkInterfaceConfig &config)
{
    auto *operation = new AsyncNetworkInterfaceOperation;
    if (d->provider && ready())
        d->provider->configure(operation, networkInterface, config);
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation;
}

NetworkInterfaceService::Private::Private(NetworkInterfaceService *service)
    : Private(service, new NetworkInterfaceProviderZop)
{
}

NetworkInterfaceService::Private::Private(NetworkInterfaceService *service,
                                          NetworkInterfaceProvider *networkInterfaceProvider)
    : q(service),
      provider(networkInterfaceProvider)
{
    connect(provider, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    connect(provider, &NetworkInterfaceProvider::interfaceConfigurationChanged, this,
            &Private::onProviderInterfaceConfigurationChanged);
    connect(provider, &NetworkInterfaceProvider::preferredInterfaceChanged, this,
            &Private::onProviderPreferredInterfaceChanged);
    connect(provider, &NetworkInterfaceProvider::interfaceConnected, this, &Private::onProviderInterfaceConnected);
    connect(provider, &NetworkInterfaceProvider::interfaceDisconnected, this,
            &Private::onProviderInterfaceDisconnected);
    connect(provider, &NetworkInterfaceProvider::asyncConfigureSuccess, this,
            &Private::onProviderAsyncConfigureSuccess);
    connect(provider, &NetworkInterfaceProvider::asyncConfigureFailure, this,
            &Private::onProviderAsyncConfigureFailure);
}

NetworkInterfaceService::Private::~Private()
{
    delete provider;
    provider = nullptr;
}

void NetworkInterfaceService::Private::writeData(NetworkInterface &target, const NetworkInterfaceData &source)
{
    target.d->data = source;
}

NetworkInterface NetworkInterfaceService::Private::publicValue(const NetworkInterfaceData &record)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, record);
    return networkInterface;
}

void NetworkInterfaceService::Private::onProviderAsyncConfigureSuccess(AsyncNetworkInterfaceOperation *operation,
                                                                       const NetworkInterfaceData &data)
{
    AsyncOperationWriter::setResult(*operation, publicValue(data));
}

void NetworkInterfaceService::Private::onProviderAsyncConfigureFailure(AsyncNetworkInterfaceOperation *operation,
                                                                       int code, const QString &message)
{
    AsyncOperationWriter::setError(*operation, AsyncOperationError(code, message));
}

void NetworkInterfaceService::Private::onProviderInterfaceConfigurationChanged(const NetworkInterfaceData &data)
{
    emit q->interfaceConfigurationChanged(publicValue(data));
}

void NetworkInterfaceService::Private::onProviderPreferredInterfaceChanged(const NetworkInterfaceData &data)
{
    emit q->preferredInterfaceChanged(publicValue(data));
}

void NetworkInterfaceService::Private::onProviderInterfaceConnected(const NetworkInterfaceData &data)
{
    emit q->interfaceConnected(publicValue(data));
}

void NetworkInterfaceService::Private::onProviderInterfaceDisconnected(const NetworkInterfaceData &data)
{
    emit q->interfaceDisconnected(publicValue(data));
}

} // namespace morvek
