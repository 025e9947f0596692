// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SHAREDSTATION_P_H
#define MORVEK_SHAREDSTATION_P_H

#include "wifinetworkmodel.h"

#include <wifiaccesspoint.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <optional>

namespace morvek {

class AsyncWifiConnectOperation;
class WifiConnectionConfig;
class WifiService;
class ZopObject;

/*!
 * What the controllers of one Wi-Fi service share, so that they see the same and do not get in each other's way: the
 * station as the daemon has told it last, what scans have found, and what is being asked of the service.
 */
class SharedStation : public QObject
{
    Q_OBJECT

public:
    /*! That of \a service, which owns it. */
    static SharedStation *of(WifiService *service);
    ~SharedStation() override;

    WifiService *service() const;

    struct State
    {
        bool powered = false;
        WifiAccessPoint accessPoint; //!< empty when the station is not connected

        bool isConnected() const { return !accessPoint.isEmpty(); }
    };
    const State &state() const { return m_state; }
    /*! Looks at the service now, instead of with the next turn of the event loop after something was told. */
    void look();

    using Found = QVector<WifiNetworkModel::Found>;
    /*! What the last scan has found; nothing while the radio is off. */
    const Found &found() const { return m_found; }
    void setFound(const Found &found);
    bool isScanning() const { return m_scans > 0; }
    void beginScan();
    void endScan();
    /*! For how many milliseconds nothing has been scanned; -1 when nothing has since the radio is on. */
    qint64 sinceScan() const { return m_sinceScan.isValid() ? m_sinceScan.elapsed() : -1; }

    /*! False when somebody else is joining a network. */
    bool beginJoining(QObject *request, const QString &ssid);
    void endJoining(const QObject *request);
    bool isJoining() const { return !m_joining.isNull(); }
    QString joiningSsid() const { return m_joiningSsid; }

    /*!
     * Has the service join a network. What is left of an earlier attempt that was given up is ended before: joining
     * leaves the present network anyway, and the service would refuse to be busy twice.
     */
    AsyncWifiConnectOperation *connectAccessPoint(const WifiConnectionConfig &config);
    /*! Gives up what is being joined, unless the present network would be lost by that. */
    void withdraw();
    /*! Leaves the network, and lets whoever is joining one know. */
    void leave();

    /*! Whether the radio may still be switched to \a on, as it was asked to be. */
    bool mayBecomePowered(bool on) const { return m_awaitedPower == on; }
    void setPowered(bool on);

Q_SIGNALS:
    /*! state() has changed: the requests hear of it. It comes when all of one update has been told. */
    void changed();
    /*! Comes after that: all requests that it has ended know. */
    void settled();
    /*! The daemon has told an event. */
    void eventTold(const QString &event);
    void foundChanged();
    /*! A scan, or joining a network, has begun or ended. */
    void usageChanged();
    void leaveAsked();
    void powerAsked(bool on);

private:
    Q_DISABLE_COPY(SharedStation)
    explicit SharedStation(WifiService *service);
    void openStatus();
    void lookLater();

    State m_state;
    Found m_found;
    std::unique_ptr<ZopObject> m_status; //!< null until the service is ready, and where it cannot be opened
    std::unique_ptr<AsyncWifiConnectOperation> m_connect;
    QPointer<QObject> m_joining;
    QString m_joiningSsid;
    std::optional<bool> m_awaitedPower;
    QElapsedTimer m_sinceScan;
    int m_scans = 0;
    bool m_looksLater = false;
};

} // namespace morvek

#endif
