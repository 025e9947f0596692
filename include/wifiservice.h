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
 * #include <asyncwifiscanoperation.h>
 * #include <networklibraryexports.h>
 * #include <wifiservice.h>
 *
 * void Settings::begin()
 * {
 *     m_service = newWifiService();
 *     connect(m_service, &WifiService::readyChanged, this, &Settings::scan);
 * }
 *
 * void Settings::scan()
 * {
 *     AsyncWifiScanOperation *operation = m_service->scan();
 *     connect(operation, &AsyncWifiScanOperation::success, this, [this, operation] {
 *         for (const WifiAccessPoint &accessPoint : operation->results())
 *             show(accessPoint.ssid());
 *         operation->deleteLater();
 *     });
 *     connect(operation, &AsyncWifiScanOperation::failure, this, [this, operation] {
 *         show(operation->error().message());
 *         operation->deleteLater();
 *     });
 * }
 *
 * void Settings::end()
 * {
 *     deleteWifiService(&m_service);
 * }
 * \endcode
 *
 * WifiConnectionConfig shows how a network is joined.
 *
 * The service is usable on the thread that created it. Slots may delete it.
 *
 * A new service is not ready: it becomes so, from the event loop, when the Wi-Fi daemon has published its status, and
 * tells it with readyChanged(). It tries once: when the status is there and the daemon is not, such as while it
 * restarts, the service does not become ready any more, and no signal tells that. An application that is still
 * waiting after a second or two deletes it and makes a new one. Once ready, it outlives any restart of the daemon; what
 * it tells is what the daemon has published last, also while the daemon is dead.
 *
 * The caller owns the operations that are returned, which are never null, and may delete them at any time. Their
 * failures carry code -1. Deleting the service leaves its operations open for ever.
 *
 * What a scan finds passes through the locale's encoding. Let the application run in a UTF-8 locale: in another one, a
 * name that does not fit can cost the whole result.
 *
 * A security that is unknown here is logged as an error, with code 1300 and without the network's name: "Unrecognized
 * access point flag security protocol: "WPA3"" and the like, also "Unable to parse access point WPA flag". Nothing has
 * failed by that. The access point is in the results without what was not understood (WifiAccessPoint tells how that
 * looks), and a unit that has a WPA3 network in range has two such lines in its log after each scan. An application
 * that counts errors leaves them out, by these beginnings. KREL_VERBOSITY=1 in the environment silences them and all
 * other errors; where the platform's logger has a sink, KrelLogger::setSink(), an application hands on only the lines
 * that it wants.
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
     * Changes nothing while the service is not ready.
     */
    void powerOn();
    /*! The same for switching the radio off. */
    void powerOff();
    /*! Whether the radio is on, as the Wi-Fi daemon has told last; false while the service is not ready. */
    bool powered() const;

    /*!
     * Looks for access points. The operation succeeds with the next results that the Wi-Fi daemon publishes, be it for
     * another application's scan. It fails with "Service is not ready" only. The results are as the daemon lists
     * them: not sorted, and nothing is merged or left out.
     *
     * There is no time limit: when the daemon refuses to scan, the operation waits until it publishes results again.
     */
    AsyncWifiScanOperation *scan();

    /*!
     * Has the station leave the present network, if it is connected to one, and join that of \a config. The operation
     * succeeds with the access point when the station is connected; connectedChanged() has told that then, unless it
     * was connected all the while. It fails with one of these messages:
     *
     * - "Service is not ready"
     * - "Wifi Configuration provided is not valid": see WifiConnectionConfig::isValid().
     * - "Another connect operation in progress.": this service joins one network at a time.
     * - "Cancelling connect operation, due to issued disconnect command": disconnectAccessPoint() was called.
     * - "Failed to connect to Access Point": the passkey is wrong as a rule.
     *
     * or with the daemon's own text, when it refuses the network or is not there. After that, the station may still be
     * connected to the network that it was to leave.
     *
     * There is no time limit: joining a network that is out of range stays pending until disconnectAccessPoint() is
     * called, even when the operation is deleted meanwhile. Which network the station has joined is not compared with
     * \a config: the operation succeeds with the next connection that the daemon publishes, which may be one that
     * another application has asked for.
     */
    AsyncWifiConnectOperation *connectAccessPoint(const WifiConnectionConfig &config);

    /*!
     * Leaves the network, and ends a pending connectAccessPoint(). connectedChanged() tells when the station has left;
     * nothing tells a refusal. Changes nothing while the service is not ready.
     */
    void disconnectAccessPoint();

    /*!
     * The access point that the station is connected to; empty when there is none or the service is not ready.
     * Its rssi(), frequency() and serviceSet() are not known here and have their defaults; what the Wi-Fi daemon
     * does not name of its security is 0. It changes without a signal when the station goes from one access point
     * straight to another.
     */
    WifiAccessPoint connectedAccessPoint() const;
    /*! Whether the station is connected to an access point; false while the service is not ready. */
    bool connected() const;

Q_SIGNALS:
    /*! The radio has been switched on or off, by whomever. */
    void poweredChanged(bool powered);
    /*! The station is connected to an access point now, or it is to none any more. */
    void connectedChanged(bool connected);

private:
    Q_DISABLE_COPY(WifiService)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
