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
 * #include <networkinterfaceservice.h>
 * #include <networklibraryexports.h>
 *
 * void Settings::begin()
 * {
 *     m_service = newNetworkInterfaceService();
 *     connect(m_service, &NetworkInterfaceService::preferredInterfaceChanged, this,
 *             [this](const NetworkInterface &preferred) { show(preferred.name()); });
 *     for (const NetworkInterface &networkInterface : m_service->interfaces())
 *         show(networkInterface.name());
 * }
 *
 * void Settings::end()
 * {
 *     deleteNetworkInterfaceService(&m_service);
 * }
 * \endcode
 *
 * AsyncOperation shows how an interface is configured.
 *
 * The service and its values are usable on the thread that created it. It is ready as soon as it is constructed when
 * the networking daemon's objects exist then, and does not become ready later: delete it and make a new one to try
 * again. Once ready, it outlives any restart of the daemon. Slots may delete it.
 *
 * No signal tells that an interface has come or gone: ask interfaces() again.
 */
class MORVEK_NETWORK_EXPORT NetworkInterfaceService : public ServiceBase
{
    Q_OBJECT

public:
    NetworkInterfaceService();
    ~NetworkInterfaceService() override;

    /*! Always true. */
    bool available() const override;
    /*! Whether the networking daemon's objects could be opened. */
    bool ready() const override;

    /*! Every known interface, in ascending order of the names; empty while the service is not ready. */
    QList<NetworkInterface> interfaces() const;
    /*!
     * The interface that the unit prefers now; empty when there is none or the service is not ready. It is empty, too,
     * when the networking daemon names an interface that is not known yet, and when the preferred one vanishes: until
     * the daemon names one again, and no signal tells that the interface has come or gone.
     */
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
     * - "The interface to configure is not in the list of known interfaces.": it is not there, or it has vanished
     *   while the loss of its old addresses was awaited.
     * - "The new configuration settings are the same as the current configuration settings.": \a config equals
     *   the configuration that \a networkInterface holds, or both ask for DHCP.
     * - "For manual configuration, the new configuration settings must specify an IP address, a netmask address
     *   and a gateway address."
     *
     * or with "The system was unable to configure the interface.", followed by the reason in brackets when there is
     * one: with the networking daemon's own code when it refuses, with code -1 when it is not there or ends before
     * it has answered.
     *
     * There is no time limit: an interface that is disconnected and never reports the loss of its addresses leaves
     * the operation open. When the daemon refuses to disconnect the interface, the operation fails; should the
     * interface lose its addresses later all the same, the new configuration is still sent, and the same operation,
     * unless it was deleted, tells the outcome of that too. The signal that came last counts: error() and results()
     * keep what came before.
     */
    AsyncNetworkInterfaceOperation *configure(const NetworkInterface &networkInterface,
                                              const NetworkInterfaceConfig &config);

Q_SIGNALS:
    /*!
     * The networking daemon has set a property of the interface other than whether it is connected, be it to the
     * value that it had.
     */
    void interfaceConfigurationChanged(const morvek::NetworkInterface &networkInterface);
    /*!
     * The networking daemon has named the preferred interface, be it the same as before. It is empty when the daemon
     * names none, or one that is not known yet.
     */
    void preferredInterfaceChanged(const morvek::NetworkInterface &networkInterface);
    /*!
     * The networking daemon reports the interface as connected; it may say so more than once. Addresses that come
     * with the same update are not in \a networkInterface yet: interfaceConfigurationChanged() follows with them.
     */
    void interfaceConnected(const morvek::NetworkInterface &networkInterface);
    /*!
     * The networking daemon reports the interface as not connected; it may say so more than once. Addresses that go
     * with the same update are still in \a networkInterface: interfaceConfigurationChanged() follows without them.
     */
    void interfaceDisconnected(const morvek::NetworkInterface &networkInterface);

private:
    Q_DISABLE_COPY(NetworkInterfaceService)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
