// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACESERVICE_H
#define MORVEK_NETWORKINTERFACESERVICE_H

#include "networkexport.h"
#include "networkinterface.h"
#include "servicebase.h"

#include <QtCore/QList>

#include <memory>

namespace morvek {

class AsyncNetworkInterfaceOperation;
class NetworkInterfaceConfig;

/*!
 * The network interfaces of the unit: the list, the preferred one, and the choice between DHCP and a manual
 * IPv4 configuration.
 *
 * \code
 * NetworkInterfaceService *service = newNetworkInterfaceService();
 * for (const NetworkInterface &networkInterface : service->interfaces())
 *     qDebug() << networkInterface.name() << networkInterface.connected();
 *
 * AsyncNetworkInterfaceOperation *operation = service->configure(service->preferredInterface(), config);
 * connect(operation, &AsyncNetworkInterfaceOperation::success, this, &Settings::onConfigured);
 * connect(operation, &AsyncNetworkInterfaceOperation::failure, this, &Settings::onConfigureFailed);
 * \endcode
 *
 * The service is usable on the thread that created it. It is ready as soon as it is constructed when the
 * networking daemon's objects exist then, and does not become ready later.
 */
class MORVEK_NETWORK_EXPORT NetworkInterfaceService : public ServiceBase
{
    Q_OBJECT

public:
    NetworkInterfaceService();
    ~NetworkInterfaceService() override;

    /*! Always true. */
    bool available() const override;
    bool ready() const override;

    /*! Every known interface, in ascending order of the names; empty while the service is not ready. */
    QList<NetworkInterface> interfaces() const;
    /*! The interface that the unit prefers now; empty when there is none or the service is not ready. */
    NetworkInterface preferredInterface() const;

    /*!
     * Gives \a networkInterface, a value that this service handed out, the configuration \a config. A connected
     * interface is disconnected first and connected again when its old addresses are gone.
     *
     * The caller owns the operation that is returned, which is never null. Its success() means that the
     * networking daemon has accepted the configuration; the new addresses arrive with
     * interfaceConfigurationChanged(). It fails with code -1 and one of these messages:
     *
     * - "The operation failed because the service is not ready."
     * - "The interface to configure is not in the list of known interfaces."
     * - "The new configuration settings are the same as the current configuration settings.": \a config equals
     *   the configuration that \a networkInterface holds, or both ask for DHCP.
     * - "For manual configuration, the new configuration settings must specify an IP address, a netmask address
     *   and a gateway address."
     *
     * or with the networking daemon's own code and "The system was unable to configure the interface.", followed
     * by the daemon's words in brackets when it has any. There is no time limit.
     */
    AsyncNetworkInterfaceOperation *configure(const NetworkInterface &networkInterface,
                                              const NetworkInterfaceConfig &config);

Q_SIGNALS:
    /*! Any property of the interface has changed, except whether it is connected. */
    void interfaceConfigurationChanged(const morvek::NetworkInterface &networkInterface);
    /*! The unit prefers another interface now, or none: then it is empty. */
    void preferredInterfaceChanged(const morvek::NetworkInterface &networkInterface);
    /*! The networking daemon reports the interface as connected; it may say so more than once. */
    void interfaceConnected(const morvek::NetworkInterface &networkInterface);
    /*! The networking daemon reports the interface as not connected; it may say so more than once. */
    void interfaceDisconnected(const morvek::NetworkInterface &networkInterface);

private:
    Q_DISABLE_COPY(NetworkInterfaceService)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
