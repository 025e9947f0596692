// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceservice.h"

#include "asyncnetworkinterfaceoperation.h"
#include "asyncoperationwriter.h"
#include "networkinterfacedata.h"
#include "networkinterfaceproviderzop_p.h"
#include "networkinterfaceservice_p.h"

namespace morvek {

namespace {

constexpr int NotReadyCode = -1;
const QLatin1String NotReadyMessage("The operation failed because the service is not ready.");

} // namespace

NetworkInterfaceService::NetworkInterfaceService()
    : d(new Private(this))
{
    // Makes queued connections by name find the type of the signals' argument.
    qRegisterMetaType<NetworkInterface>();
}

NetworkInterfaceService::~NetworkInterfaceService()
{
    d.reset();
}

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
    for (const NetworkInterfaceData &record : records) {
        NetworkInterface networkInterface;
        Private::writeData(networkInterface, record);
        interfaces.append(networkInterface);
    }
    return interfaces;
}

NetworkInterface NetworkInterfaceService::preferredInterface() const
{
    NetworkInterface networkInterface;
    if (d->provider && ready())
        Private::writeData(networkInterface, d->provider->preferredInterface());
    return networkInterface;
}

AsyncNetworkInterfaceOperation *NetworkInterfaceService::configure(const NetworkInterface &networkInterface,
                                                                   const NetworkInterfaceConfig &config)
{
    auto *operation = new AsyncNetworkInterfaceOperation;
    if (d->provider && ready())
        d->provider->configure(operation, networkInterface, config);
    else
        AsyncOperationWriter::setError(*operation, AsyncOperationError(NotReadyCode, NotReadyMessage));
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

void NetworkInterfaceService::Private::onProviderAsyncConfigureSuccess(AsyncNetworkInterfaceOperation *operation,
                                                                       const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, data);
    AsyncOperationWriter::setResult(*operation, networkInterface);
}

void NetworkInterfaceService::Private::onProviderAsyncConfigureFailure(AsyncNetworkInterfaceOperation *operation,
                                                                       int code, const QString &message)
{
    AsyncOperationWriter::setError(*operation, AsyncOperationError(code, message));
}

void NetworkInterfaceService::Private::onProviderInterfaceConfigurationChanged(const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, data);
    emit q->interfaceConfigurationChanged(networkInterface);
}

void NetworkInterfaceService::Private::onProviderPreferredInterfaceChanged(const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, data);
    emit q->preferredInterfaceChanged(networkInterface);
}

void NetworkInterfaceService::Private::onProviderInterfaceConnected(const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, data);
    emit q->interfaceConnected(networkInterface);
}

void NetworkInterfaceService::Private::onProviderInterfaceDisconnected(const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    writeData(networkInterface, data);
    emit q->interfaceDisconnected(networkInterface);
}

} // namespace morvek
