// SPDX-License-Identifier: Apache-2.0
#include "scenariowarnings.h"

#include "scenario.h"
#include "simulatedaccesspoint.h"
#include "wifirequest.h"
#include "wirenames.h"

#include <QtCore/QMap>
#include <QtCore/QSet>

#include <limits>

namespace morvek {

namespace {

constexpr qint64 ForEver = std::numeric_limits<qint64>::max();

/*! Whether every request that fits \a later fits \a earlier, too, and stays there. */
bool takesAll(const Fault &earlier, const Fault &later)
{
    const auto covers = [](const QString &wide, const QString &narrow) { return wide.isEmpty() || wide == narrow; };
    const QString message = later.ssid.isEmpty() ? later.message : Wire::WnetNew; // no other names a network
    // What the earlier one lets pass is all that the later one gets, and it may let pass as much itself.
    return earlier.times == -1 && earlier.skip <= later.skip && covers(earlier.message, message)
        && covers(earlier.interface, later.interface) && covers(earlier.ssid, later.ssid);
}

bool canBeUsed(const ScenarioAccessPoint &settings)
{
    return settings.answers && SimulatedAccessPoint(settings).canBeJoined();
}

/*! What the timeline has come to, as far as clients have no part in it. */
class Past
{
public:
    explicit Past(const Scenario &scenario);

    /*! Why \a event changes nothing; empty when it may change something. */
    QString whyNothing(const TimelineEvent &event) const;
    void add(const TimelineEvent &event);

private:
    QString whyNoRoaming(const ScenarioAccessPoint &target) const;
    QString whyNoDropping() const;
    bool wasUsable(const ScenarioAccessPoint &accessPoint) const;

    const Scenario &m_scenario;
    QSet<QString> m_links;        // of interfaces
    bool m_hasStation = false;    // its interface is there
    QSet<QString> m_heard;        // what has ever been in range
    QMap<Service, qint64> m_back; // when the daemons are back that have died
};

Past::Past(const Scenario &scenario)
    : m_scenario(scenario)
{
    for (const ScenarioInterface &interface : scenario.interfaces) {
        if (interface.up)
            m_links.insert(interface.name);
        if (interface.name == scenario.wifi.interface)
            m_hasStation = interface.present;
    }
    for (const ScenarioAccessPoint &accessPoint : scenario.wifi.accessPoints) {
        if (accessPoint.inRange)
            m_heard.insert(accessPoint.bssid);
    }
}

QString Past::whyNothing(const TimelineEvent &event) const
{
    Service teller = event.service;
    if (isToldByOne(event, m_scenario.wifi.interface, &teller) && m_back.value(teller) == ForEver)
        return QStringLiteral("the %1 daemon, which would tell of it, is dead for good").arg(nameOf(teller));
    switch (event.kind) {
    case TimelineEvent::LinkLost:
        return m_links.contains(event.interface) ? QString()
                                                 : QStringLiteral("\"%1\" has no link then").arg(event.interface);
    case TimelineEvent::LinkRegained:
        return m_links.contains(event.interface) ? QStringLiteral("\"%1\" has its link then").arg(event.interface)
                                                 : QString();
    case TimelineEvent::DaemonDies:
        return event.at < m_back.value(event.service)
            ? QStringLiteral("the %1 daemon is dead then").arg(nameOf(event.service))
            : QString();
    case TimelineEvent::Roam:
    case TimelineEvent::Dropped:
        if (!m_hasStation)
            return QStringLiteral("\"%1\" is not there then").arg(m_scenario.wifi.interface);
        return event.kind == TimelineEvent::Roam ? whyNoRoaming(*m_scenario.wifi.accessPoint(event.bssid))
                                                 : whyNoDropping();
    default:
        return {};
    }
}

void Past::add(const TimelineEvent &event)
{
    const bool comes = event.kind == TimelineEvent::Appear;
    if (comes || event.kind == TimelineEvent::LinkRegained)
        m_links.insert(event.interface);
    else if (event.kind == TimelineEvent::LinkLost)
        m_links.remove(event.interface);
    else if (event.kind == TimelineEvent::InRange)
        m_heard.insert(event.bssid);
    else if (event.kind == TimelineEvent::DaemonBack)
        m_back.remove(event.service);
    else if (event.kind == TimelineEvent::DaemonDies && event.at >= m_back.value(event.service))
        m_back[event.service] = event.backAfter == -1 ? ForEver : qint64(event.at) + event.backAfter;
    if ((comes || event.kind == TimelineEvent::Vanish) && event.interface == m_scenario.wifi.interface)
        m_hasStation = comes;
}

QString Past::whyNoRoaming(const ScenarioAccessPoint &target) const
{
    if (!canBeUsed(target))
        return QStringLiteral("nobody can join \"%1\"").arg(target.bssid);
    const SimulatedAccessPoint there(target);
    for (const ScenarioAccessPoint &one : m_scenario.wifi.accessPoints) {
        if (one.bssid == target.bssid || !wasUsable(one))
            continue;
        const WifiNetwork network = SimulatedAccessPoint(one).network();
        if (there.belongsTo(network) && there.accepts(network))
            return {};
    }
    return QStringLiteral("the station cannot be at another access point of the network of \"%1\" then")
        .arg(target.bssid);
}

QString Past::whyNoDropping() const
{
    const QVector<ScenarioAccessPoint> &all = m_scenario.wifi.accessPoints;
    const bool isPossible =
        std::any_of(all.begin(), all.end(), [this](const ScenarioAccessPoint &one) { return wasUsable(one); });
    return isPossible ? QString() : QStringLiteral("the station cannot be connected then");
}

bool Past::wasUsable(const ScenarioAccessPoint &accessPoint) const
{
    return m_heard.contains(accessPoint.bssid) && canBeUsed(accessPoint);
}

} // namespace

bool isToldByOne(const TimelineEvent &event, const QString &wifiInterface, Service *service)
{
    switch (event.kind) {
    case TimelineEvent::SetAttributes:
    case TimelineEvent::RemoveAttributes:
        *service = event.service;
        return true;
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
    case TimelineEvent::PinDefault:
    case TimelineEvent::FollowDefault:
    case TimelineEvent::SetPriority:
        *service = Service::Networking;
        return true;
    case TimelineEvent::Vanish:
    case TimelineEvent::Appear:
        *service = Service::Networking;
        return event.interface != wifiInterface;
    case TimelineEvent::TellWifiEvent:
        *service = Service::Wifi;
        return true;
    case TimelineEvent::HotspotStarts:
    case TimelineEvent::HotspotStops:
        *service = Service::Tethering;
        return true;
    case TimelineEvent::DaemonDies:
    case TimelineEvent::DaemonBack:
    case TimelineEvent::FaultsEnd:
    case TimelineEvent::OutOfRange:
    case TimelineEvent::InRange:
    case TimelineEvent::Signal:
    case TimelineEvent::Roam:
    case TimelineEvent::Dropped:
    case TimelineEvent::WrongKey:
    case TimelineEvent::RadioOn:
    case TimelineEvent::RadioOff:
        break;
    }
    return false;
}

QStringList warningsOf(const Scenario &scenario)
{
    QStringList warnings;
    for (int i = 0; i < scenario.wifi.accessPoints.size(); ++i) {
        const ScenarioAccessPoint &accessPoint = scenario.wifi.accessPoints.at(i);
        if (!accessPoint.lease.addresses.isEmpty() && !canBeUsed(accessPoint))
            warnings += QStringLiteral("wifi.access_points[%1].lease: is never given: nobody can join this one").arg(i);
    }
    Past past(scenario);
    for (const TimelineEvent &event : scenario.timeline) {
        const QString why = past.whyNothing(event);
        if (!why.isEmpty())
            warnings += QStringLiteral("timeline[%1]: has no effect: %2").arg(QString::number(event.number), why);
        past.add(event);
    }
    for (int i = 0; i < scenario.faults.size(); ++i) {
        const Fault &fault = scenario.faults.at(i);
        const auto taken = std::find_if(scenario.faults.begin(), scenario.faults.begin() + i,
                                        [&fault](const Fault &earlier) { return takesAll(earlier, fault); });
        if (taken != scenario.faults.begin() + i)
            warnings += QStringLiteral("faults[%1]: never happens: faults[%2] takes all of its requests")
                            .arg(i)
                            .arg(taken - scenario.faults.begin());
    }
    return warnings;
}

} // namespace morvek
