// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACEPROVIDER_P_H
#define MORVEK_NETWORKINTERFACEPROVIDER_P_H

#include "networkinterfacedata.h"
#include "serviceproviderbase.h"

#include <QtCore/QList>

namespace morvek {

class AsyncNetworkInterfaceOperation;

/*!
 * What stands behind NetworkInterfaceService: it knows the unit's interfaces and configures them.
 */
class NetworkInterfaceProvider : public ServiceProviderBase
{
    Q_OBJECT

public:
    /*! Every known interface, in a stable order. */
    virtual QList<NetworkInterfaceData> interfaces() const = 0;
    /*! The preferred interface, or an empty record. */
    virtual NetworkInterfaceData preferredInterface() const = 0;
    /*!
     * Gives \a networkInterface the configuration \a config and tells the end by asyncConfigureSuccess() or
     * asyncConfigureFailure(), unless \a operation has been deleted by then.
     */
    virtual void configure(AsyncNetworkInterfaceOperation *operation, const NetworkInterface &networkInterface,
                           const NetworkInterfaceConfig &config) = 0;

Q_SIGNALS:
    void asyncConfigureSuccess(morvek::AsyncNetworkInterfaceOperation *operation,
                               const morvek::NetworkInterfaceData &data);
    void asyncConfigureFailure(morvek::AsyncNetworkInterfaceOperation *operation, int code, const QString &message);
    void interfaceConfigurationChanged(const morvek::NetworkInterfaceData &data);
    void preferredInterfaceChanged(const morvek::NetworkInterfaceData &data);
    void interfaceConnected(const morvek::NetworkInterfaceData &data);
    void interfaceDisconnected(const morvek::NetworkInterfaceData &data);
    void interfaceAdded(const morvek::NetworkInterfaceData &data);
    void interfaceRemoved(const morvek::NetworkInterfaceData &data);
};

} // namespace morvek

#endif
