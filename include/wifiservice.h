// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISERVICE_H
#define MORVEK_WIFISERVICE_H

#include "networkexport.h"
#include "servicebase.h"
#include "wifiaccesspoint.h"

#include <memory>

namespace morvek {

class AsyncWifiConnectOperation;
class AsyncWifiScanOperation;
class WifiConnectionConfig;

/*!
 * The unit's Wi-Fi station: switches the radio, finds access points, joins a network and leaves it.
 *
 * \code
 * WifiService *service = newWifiService();
 * connect(service, &WifiService::readyChanged, this, [this, service] {
 *     AsyncWifiScanOperation *operation = service->scan();
 *     connect(operation, &AsyncWifiScanOperation::success, this, [this, operation] {
 *         show(operation->results());
 *         operation->deleteLater();
 *     });
 * });
 * // at the end:
 * deleteWifiService(&service);
 * \endcode
 *
 * The service is usable on the thread that created it. A new service is not ready: it becomes so, from the event
 * loop, when the Wi-Fi daemon has published its status, and tells it with readyChanged(). Once ready, it outlives
 * any restart of the daemon. When one of the daemon's two objects cannot be opened at that moment, it does not become
 * ready any more: make a new one to try again. Slots may delete the service.
 *
 * The caller owns the operations that are returned, which are never null, and may delete them at any time. Their
 * failures carry code -1. Deleting the service leaves its operations open for ever.
 */
class MORVEK_NETWORK_EXPORT WifiService : public ServiceBase
{
    Q_OBJECT

public:
    WifiService();
    ~WifiService() override;

    /*! Always true. */
    bool available() const override;
    /*! Whether the Wi-Fi daemon's objects have been opened. */
    bool ready() const override;

    /*!
     * Asks the Wi-Fi daemon to switch the radio on. poweredChanged() tells when it is; nothing tells a refusal.
     * Does nothing while the service is not ready.
     */
    void powerOn();
    /*! The same for switching the radio off. */
    void powerOff();
    /*! Whether the radio is on; false while the service is not ready. */
    bool powered() const;

    /*!
     * Looks for access points. The operation succeeds with the next results that the Wi-Fi daemon publishes, be it for
     * another application's scan. It fails with "Service is not ready" only.
     *
     * There is no time limit: when the daemon refuses to scan, the operation waits until it publishes results again.
     */
    AsyncWifiScanOperation *scan();

    /*!
     * Leaves the present network and joins the one of \a config. The operation succeeds with the access point when the
     * station is connected. It fails with one of these messages:
     *
     * - "Service is not ready"
     * - "Wifi Configuration provided is not valid": see WifiConnectionConfig::isValid().
     * - "Another connect operation in progress.": this service joins one network at a time.
     * - "Cancelling connect operation, due to issued disconnect command": disconnectAccessPoint() was called.
     * - "Failed to connect to Access Point": the passkey is wrong as a rule.
     *
     * or with the daemon's own text, when it refuses the network or is not there.
     *
     * There is no time limit: joining a network that is out of range stays pending until disconnectAccessPoint() is
     * called, even when the operation is deleted meanwhile. Which network the station has joined is not compared with
     * \a config: when another application joins one at the same time, the operation may succeed with that.
     */
    AsyncWifiConnectOperation *connectAccessPoint(const WifiConnectionConfig &config);

    /*!
     * Leaves the network, and ends a pending connectAccessPoint(). connectedChanged() tells when the station has left;
     * nothing tells a refusal. Does nothing while the service is not ready.
     */
    void disconnectAccessPoint();

    /*!
     * The access point that the station is connected to; empty when there is none or the service is not ready.
     * Its rssi(), frequency() and serviceSet() are not known here and have their defaults; what the Wi-Fi daemon
     * does not name of its security is 0. It changes without a signal when the station roams.
     */
    WifiAccessPoint connectedAccessPoint() const;
    /*! Whether the station is connected to an access point; false while the service is not ready. */
    bool connected() const;

Q_SIGNALS:
    /*! The radio has been switched on or off, by whomever. */
    void poweredChanged(bool powered);
    /*! The station has joined a network, or left it or lost it. */
    void connectedChanged(bool connected);

private:
    Q_DISABLE_COPY(WifiService)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
