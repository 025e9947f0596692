// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SIMULATEDRADIO_H
#define MORVEK_HOSTD_SIMULATEDRADIO_H

#include "radiocontrol.h"
#include "simulatedair.h"
#include "wifirequest.h"

#include <QtCore/QObject>

namespace morvek {

class SimulatedNetwork;
class World;

/*!
 * The Wi-Fi station of a scenario and the access points around it: drives the Wi-Fi status of the world, and the link
 * of the station's network interface.
 *
 * The station knows networks by identifiers. It is connected, or tries to be, with the one that was selected last,
 * until that turns out to have the wrong passkey.
 */
class SimulatedRadio : public QObject, public RadioControl
{
    Q_OBJECT

public:
    /*! Fills \a world with the scenario's start. \a world, \a network and \a pace must outlive the radio. */
    SimulatedRadio(const Scenario &scenario, World *world, SimulatedNetwork *network, Pace *pace,
                   QObject *parent = nullptr);
    ~SimulatedRadio() override;

    void carryOut(const WifiRequest &request, const AnswerCall &answer) override;
    /*! Makes a network known; its identifier. */
    QString addNetwork(const WifiNetwork &network);

    void setPower(bool power);
    /*! An access point comes into range or goes out of it; the station roams, or loses or regains its connection. */
    void setInRange(const QString &bssid, bool inRange);
    void setLevel(const QString &bssid, int level);
    /*! Moves to another access point of the same network, if the station is connected and the other would have it. */
    void roam(const QString &bssid);
    /*! The access point ends the connection for this \a reason; the station tries to come back. */
    void drop(int reason);
    void tellEvent(const QString &event);
    /*! The next attempt to join the network of this name turns out as with a wrong passkey, whatever the passkey is. */
    void awaitWrongKey(const QString &ssid) { m_wrongKeys.insert(ssid); }

    bool isOn() const { return m_power; }
    bool isConnected() const { return !m_current.isEmpty(); }
    bool isWrongKeyAwaited(const QString &ssid) const { return m_wrongKeys.contains(ssid); }
    /*! The access points in range. */
    QSet<QString> inRange() const { return m_air.inRange(); }
    /*! Why roam() would come to nothing; empty when it would not. */
    QString refusesToRoam(const QString &bssid) const;

private:
    Refusal refuses(const WifiRequest &request) const;
    void perform(const WifiRequest &request);
    void scan();
    void finishScan();
    void select(int network);
    void join();
    void finishJoining();
    bool isRefused(const SimulatedAccessPoint &accessPoint, const WifiNetwork &network);
    void associate(const SimulatedAccessPoint &accessPoint);
    void leave(int reason, ZopChangeset changes = {});
    void onInterfaceAdded(const QString &name);
    void onInterfaceRemoved(const QString &name);

    int networkOf(const QString &identifier) const;
    bool admits(const SimulatedAccessPoint &accessPoint) const;
    bool isUsable() const;

    static constexpr int None = -1;

    SimulatedAir m_air;
    QVector<WifiNetwork> m_networks; // their identifiers count from 0
    QString m_interface;
    bool m_power;
    int m_selected = None;     // of m_networks
    QString m_current;         // bssid; empty while the station is not connected
    QSet<QString> m_wrongKeys; // names of networks of which the next attempt fails
    quint32 m_attempt = 0;     // counts attempts to join, so that only the latest is finished
    bool m_scanning = false;
    quint32 m_scan = 0; // counts scans, likewise
    ScenarioDelays m_delays;
    World *m_world;
    SimulatedNetwork *m_network;
    Pace *m_pace;
};

} // namespace morvek

#endif
