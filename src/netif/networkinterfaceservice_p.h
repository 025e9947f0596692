// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACESERVICE_P_H
#define MORVEK_NETWORKINTERFACESERVICE_P_H

#include "networkinterfaceservice.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

class NetworkInterfaceProvider;
struct NetworkInterfaceData;

/*!
 * Translates the provider's records and notifications into those of the service.
 */
class Q_DECL_HIDDEN NetworkInterfaceService::Private : public QObject
{
    Q_OBJECT

public:
    explicit Private(NetworkInterfaceService *service);
    Private(NetworkInterfaceService *service, std::unique_ptr<NetworkInterfaceProvider> networkInterfaceProvider);
    ~Private() override;

    static void writeData(NetworkInterface &target, const NetworkInterfaceData &source);
    static NetworkInterface publicValue(const NetworkInterfaceData &record);

    NetworkInterfaceService *q;
    std::unique_ptr<NetworkInterfaceProvider> provider;

public Q_SLOTS:
    void onProviderAsyncConfigureSuccess(morvek::AsyncNetworkInterfaceOperation *operation,
                                         const morvek::NetworkInterfaceData &data);
    void onProviderAsyncConfigureFailure(morvek::AsyncNetworkInterfaceOperation *operation, int code,
                                         const QString &message);
    void onProviderInterfaceConfigurationChanged(const morvek::NetworkInterfaceData &data);
    void onProviderPreferredInterfaceChanged(const morvek::NetworkInterfaceData &data);
    void onProviderInterfaceConnected(const morvek::NetworkInterfaceData &data);
    void onProviderInterfaceDisconnected(const morvek::NetworkInterfaceData &data);

private:
    Q_DISABLE_COPY(Private)
    void connectProvider();
};

} // namespace morvek

#endif
