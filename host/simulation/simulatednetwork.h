// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SIMULATEDNETWORK_H
#define MORVEK_HOSTD_SIMULATEDNETWORK_H

#include "attributes.h"
#include "interfacecontrol.h"
#include "scenario.h"

#include <QtCore/QObject>

namespace morvek {

class World;

/*!
 * The networks of a scenario: drives the world as links, DHCP servers and the requests of clients would.
 *
 * An interface is up while it has a link: a physical one until the link is lost, a virtual one while its parent is
 * connected. An interface that is meant to be connected connects some time after it has come up. The interface of the
 * Wi-Fi station has a link while the station is connected.
 */
class SimulatedNetwork : public QObject, public InterfaceControl
{
    Q_OBJECT

public:
    /*! Fills \a world with the scenario's start. \a world and \a pace must outlive the network. */
    SimulatedNetwork(const Scenario &scenario, World *world, Pace *pace, QObject *parent = nullptr);
    ~SimulatedNetwork() override;

    void carryOut(const NetworkingRequest &request, const AnswerCall &answer) override;

    void vanish(const QString &interface);
    /*! Brings an interface that is not there: up, not connected yet, and configured as it was last. */
    void appear(const QString &interface);
    void setLink(const QString &interface, bool link);
    /*! Whether the interface has a link, as far as that does not depend on its parent. */
    bool hasOwnLink(const QString &interface) const { return m_stations.value(interface).link; }
    /*! From now on DHCP gives the interface \a lease, or its own when there are no addresses in it. */
    void offerLease(const QString &interface, const AddressSet &lease);
    /*! From now on the default interface is this one, or none when it is empty, whatever is connected. */
    void pinDefault(const QString &interface);
    /*! From now on the default interface is the most preferred one that is connected. */
    void followDefault();
    void setPriority(const QStringList &order);

private:
    Refusal refuses(const NetworkingRequest &request) const;
    void perform(const NetworkingRequest &request);

    struct Station
    {
        ScenarioInterface state;
        AddressSet offered; //!< instead of its own lease, when there are addresses in it
        bool link = true;
        bool wanted = false; //!< connects when it is up
        quint32 step = 0;    //!< counts what was begun with it, so that only the latest is finished
    };

    static const AddressSet &leaseOf(const Station &station);
    Attributes attributesOf(const Station &station) const;
    bool hasLink(const Station &station) const;
    void connectLater(Station *station);
    void release(Station *station, bool up);
    void tell(const Station &station, const QStringList &names);
    void settle();
    void followLinks();
    void updateStatus();
    template<typename Function>
    void later(Station *station, DelayRange delay, Function function);

    QMap<QString, Station> m_stations;
    QString m_wifiInterface; // its link is the radio's affair
    QStringList m_priority;
    QString m_pinnedDefault;
    bool m_pinsDefault;
    ScenarioDelays m_delays;
    World *m_world;
    Pace *m_pace;
};

} // namespace morvek

#endif
