// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIO_H
#define MORVEK_HOSTD_SCENARIO_H

#include "attributes.h"
#include "fault.h"
#include "pace.h"
#include "service.h"

#include <QtCore/QJsonObject>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>

namespace morvek {

/*! The addresses of an interface and its gateways, as they are published. */
struct AddressSet
{
    QStringList addresses;
    QStringList gateways;
};

struct ScenarioInterface
{
    QString name;
    QString type;
    QString linkAddress; //!< empty: not published
    QString parent;      //!< empty: not a virtual interface
    int mtu = 0;         //!< 0: not published
    bool present = true;
    bool up = true;
    bool connected = false;
    bool manual = false;
    AddressSet given; //!< what it has while it is configured by hand
    AddressSet lease; //!< what DHCP gives it; nothing when there are no addresses
};

struct ScenarioDelays
{
    DelayRange reply {2, 15};
    DelayRange release {80, 250};
    DelayRange manual {150, 450};
    DelayRange lease {600, 1800};
    DelayRange scan {800, 2500};
    DelayRange associate {400, 1200};
    DelayRange hotspotStart {500, 1500};
    DelayRange hotspotStop {200, 600};
};

struct ScenarioAccessPoint
{
    QString bssid;
    QString ssid;
    int frequency = 0;
    int signalLevel = 0;
    int drift = 0;     //!< how far the signal level strays
    QStringList flags; //!< as they are published
    QString passkey;   //!< empty: nobody has one that is right
    bool inRange = true;
    bool answers = true; //!< false: an association with it never ends
    AddressSet lease;    //!< nothing: the interface's own
};

struct ScenarioWifi
{
    QString interface; //!< empty: there is no Wi-Fi
    bool power = true;
    QString connected; //!< a bssid, or empty
    QVector<ScenarioAccessPoint> accessPoints;

    /*! The access point with this bssid, or null. */
    const ScenarioAccessPoint *accessPoint(const QString &bssid) const
    {
        const auto found = std::find_if(accessPoints.begin(), accessPoints.end(),
                                        [&bssid](const ScenarioAccessPoint &one) { return one.bssid == bssid; });
        return found == accessPoints.end() ? nullptr : &*found;
    }
};

struct ScenarioHotspot
{
    QJsonObject profile; //!< the whole document; empty: there is no hotspot
    bool active = false;
};

struct TimelineEvent
{
    enum Kind {
        Vanish,
        Appear,
        LinkLost,
        LinkRegained,
        SetAttributes,
        RemoveAttributes,
        PinDefault,
        FollowDefault,
        SetPriority,
        DaemonDies,
        DaemonBack,
        FaultsEnd,
        OutOfRange,
        InRange,
        Signal,
        Roam,
        Dropped,
        WrongKey,
        RadioOn,
        RadioOff,
        TellWifiEvent,
        HotspotStarts,
        HotspotStops,
    };

    int number = 0; //!< its place in the file, from 0
    int at = 0;
    Kind kind = Vanish;
    QString interface;                     //!< of an attribute event: empty for a status object
    ZopChangeset changes;                  //!< of an attribute event
    QStringList order;                     //!< of SetPriority
    Service service = Service::Networking; //!< whose daemon or status object it is
    int backAfter = -1;                    //!< of DaemonDies; -1: never
    QString bssid;
    QString ssid;   //!< of WrongKey
    int level = 0;  //!< of Signal
    int reason = 0; //!< of Dropped
    QString told;   //!< of TellWifiEvent
    QString text;   //!< one line that describes it
};

/*! A world at its start, what happens in it, and what goes wrong with its daemons. */
struct Scenario
{
    QString description;
    quint32 seed = 1;
    ScenarioDelays delays;
    QVector<ScenarioInterface> interfaces;
    QStringList priority;
    bool pinsDefault = false;
    QString defaultInterface; //!< when it is pinned
    ScenarioWifi wifi;
    ScenarioHotspot hotspot;
    QVector<TimelineEvent> timeline; //!< in order of time
    QVector<Fault> faults;
};

/*! What of a scenario is there at some moment. */
struct Presence
{
    QSet<QString> interfaces;
    QSet<QString> accessPoints; //!< in range
};

} // namespace morvek

#endif
