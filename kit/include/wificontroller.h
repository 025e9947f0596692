// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICONTROLLER_H
#define MORVEK_WIFICONTROLLER_H

#include "networkcontroller.h"

namespace morvek {

class WifiNetworkModel;

/*!
 * The Wi-Fi station as a screen shows it: one state, the networks in range, and requests that always end.
 *
 * \code
 * #include <networkservices.h>
 * #include <wificontroller.h>
 *
 * void Settings::begin()
 * {
 *     m_services = new NetworkServices(this);
 *     m_wifi = new WifiController(m_services, this);
 *     m_wifi->setLooking(true); // somebody looks at the networks
 * }
 *
 * void Settings::join(const QString &ssid, const QString &passkey)
 * {
 *     NetworkRequest *request = m_wifi->join(ssid, passkey);
 *     connect(request, &NetworkRequest::finished, this, [this, request] {
 *         show(request->isDone() ? QStringLiteral("Connected.") : request->sentence());
 *     });
 * }
 * \endcode
 */
class MORVEK_KIT_EXPORT WifiController : public NetworkController
{
    Q_OBJECT
    Q_PROPERTY(morvek::WifiController::State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateChanged)
    Q_PROPERTY(bool powered READ isPowered NOTIFY stateChanged)
    Q_PROPERTY(bool connected READ isConnected NOTIFY stateChanged)
    Q_PROPERTY(QString ssid READ ssid NOTIFY stateChanged)
    Q_PROPERTY(QString bssid READ bssid NOTIFY stateChanged)
    Q_PROPERTY(QString joiningSsid READ joiningSsid NOTIFY stateChanged)
    Q_PROPERTY(bool looking READ isLooking WRITE setLooking NOTIFY lookingChanged)
    Q_PROPERTY(bool scanning READ isScanning NOTIFY scanningChanged)
    Q_PROPERTY(int scanPause READ scanPause WRITE setScanPause NOTIFY scanPauseChanged)
    Q_PROPERTY(morvek::WifiNetworkModel *networks READ networks CONSTANT)

public:
    /*! The first one that is true. */
    enum State {
        NotReady,    //!< availability() is not Ready
        SwitchingOn, //!< setPowered() is running
        SwitchingOff,
        Off,       //!< the radio is off
        Joining,   //!< join() is running, for joiningSsid()
        Leaving,   //!< leave() is running
        Connected, //!< to ssid()
        Disconnected,
    };
    Q_ENUM(State)

    explicit WifiController(QObject *parent = nullptr);
    explicit WifiController(NetworkServices *services, QObject *parent = nullptr);
    ~WifiController() override;

    State state() const;
    /*! A sentence about the state, for the driver. */
    QString stateText() const;
    /*! Whether the radio is on, as the daemon has told last. */
    bool isPowered() const;
    bool isConnected() const;
    /*! The network that the station is connected to, and its access point; empty when there is none. */
    QString ssid() const;
    QString bssid() const;
    /*! The network that join() is at; empty when it is at none. */
    QString joiningSsid() const;

    /*!
     * True while somebody looks at the networks: only then they are looked for, again and again, each time scanPause()
     * milliseconds after the last scan has ended, and neither while a network is being joined nor while the radio is
     * off. Controllers that share their services take turns. False at first.
     */
    bool isLooking() const;
    void setLooking(bool looking);
    /*! Whether a scan of this controller is running. */
    bool isScanning() const;
    /*! 10000 at first, at least 1000: a radio that scans neither sends nor receives. */
    int scanPause() const;
    void setScanPause(int milliseconds);

    /*!
     * The networks in range, as the last scan of any controller with these services has found them; owned by this.
     * While the radio is off there are none.
     */
    WifiNetworkModel *networks() const;

    /*!
     * Switches the radio; done when the daemon tells that it is so, also when it is so already. Deadline: 10 s. The
     * daemon's refusal is not told, and ends as TimedOut. It is Overtaken when the opposite is asked for meanwhile.
     */
    Q_INVOKABLE morvek::NetworkRequest *setPowered(bool on);
    /*!
     * Looks for networks once; done when networks() has them. Deadline: 15 s; a refusal ends as TimedOut. NotReady
     * while the radio is off; Overtaken when it goes off meanwhile.
     */
    Q_INVOKABLE morvek::NetworkRequest *scan();
    /*!
     * Joins the network \a ssid: looks for it, takes the strongest access point that \a passkey fits, has the station
     * leave its present network and join that one. Done when the station is connected to a network of that name.
     * Deadline: 45 s. It fails with
     *
     * - Invalid: there is no name; the passkey is neither 8 to 63 printable ASCII characters nor 64 hexadecimal digits;
     *   it is missing, or the network is open and there is one; or nothing but WPA and WPA2 with a passkey, and open
     *   networks, can be joined. An open network is never taken for a protected one of the same name.
     * - OutOfRange: no scan finds it, before it is joined or afterwards.
     * - WrongPasskey: the daemon says so, or the network, which is still in range, has not let the station in.
     * - Refused: the daemon's words are in text(); or an open network, still in range, has not let the station in.
     * - NotReady while the radio is off; Busy while another network is being joined.
     * - Overtaken: the station is connected to another network in its place, or to an open one instead of a protected
     *   one; leave() was called, or the radio went off, meanwhile.
     *
     * A failed one is withdrawn from the daemon unless that has given it up itself: otherwise it might come true when
     * nobody expects it any more. But while the station is still connected to the network that it was to leave, nothing
     * is withdrawn, as that network would be lost; sentence() says so then.
     */
    Q_INVOKABLE morvek::NetworkRequest *join(const QString &ssid, const QString &passkey = QString());
    /*!
     * Leaves the network, and ends a join() with Overtaken; done when the station is not connected. Deadline: 10 s; a
     * refusal ends as TimedOut.
     */
    Q_INVOKABLE morvek::NetworkRequest *leave();

Q_SIGNALS:
    /*! state(), or what goes with it, has changed. All of it is as it will stay when this comes. */
    void stateChanged();
    void lookingChanged();
    void scanningChanged();
    void scanPauseChanged();

protected:
    void onServiceReplaced() override;
    void onAvailabilityChanged() override;

private:
    Q_DISABLE_COPY(WifiController)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
