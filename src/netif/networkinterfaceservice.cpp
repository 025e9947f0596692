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
    auto operation = std::make_unique<AsyncNetworkInterfaceOperation>();
    if (d->provider && ready())
        d->provider->configure(operation.get(), networkInterface, config);
    else
        AsyncOperationWriter::setError(*operation, NotReadyMessage);
    return operation.release();
}

NetworkInterfaceService::Private::Private(NetworkInterfaceService *service)
    : q(service),
      provider(new NetworkInterfaceProviderZop)
{
    connectProvider();
}

NetworkInterfaceService::Private::Private(NetworkInterfaceService *service,
                                          std::unique_ptr<NetworkInterfaceProvider> networkInterfaceProvider)
    : q(service),
      provider(std::move(networkInterfaceProvider))
{
    connectProvider();
}

NetworkInterfaceService::Private::~Private() = default;

void NetworkInterfaceService::Private::connectProvider()
{
    const NetworkInterfaceProvider *sender = provider.get();
    connect(sender, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    connect(sender, &NetworkInterfaceProvider::interfaceConfigurationChanged, this,
            &Private::onProviderInterfaceConfigurationChanged);
    connect(sender, &NetworkInterfaceProvider::preferredInterfaceChanged, this,
            &Private::onProviderPreferredInterfaceChanged);
    connect(sender, &NetworkInterfaceProvider::interfaceConnected, this, &Private::onProviderInterfaceConnected);
    connect(sender, &NetworkInterfaceProvider::interfaceDisconnected, this, &Private::onProviderInterfaceDisconnected);
    connect(sender, &NetworkInterfaceProvider::asyncConfigureSuccess, this, &Private::onProviderAsyncConfigureSuccess);
    connect(sender, &NetworkInterfaceProvider::asyncConfigureFailure, this, &Private::onProviderAsyncConfigureFailure);
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
