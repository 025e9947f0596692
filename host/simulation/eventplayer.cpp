// SPDX-License-Identifier: Apache-2.0
#include "eventplayer.h"

#include "daemon.h"
#include "eventlog.h"
#include "faultplan.h"
#include "simulatedhotspot.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "world.h"

namespace morvek {

EventPlayer::EventPlayer(const PlayedWorld &world, const EventLog *log)
    : m_played(world),
      m_log(log)
{
}

Presence EventPlayer::presence() const
{
    Presence presence;
    const QStringList interfaces = m_played.world->interfaces();
    presence.interfaces = QSet<QString>(interfaces.begin(), interfaces.end());
    if (m_played.radio)
        presence.accessPoints = m_played.radio->inRange();
    return presence;
}

QString EventPlayer::obstacle(const TimelineEvent &event) const
{
    switch (event.kind) {
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
        if (m_played.network->hasOwnLink(event.interface) != (event.kind == TimelineEvent::LinkRegained))
            return {};
        return QStringLiteral("\"%1\" has %2 link already")
            .arg(event.interface,
                 event.kind == TimelineEvent::LinkRegained ? QStringLiteral("a") : QStringLiteral("no"));
    case TimelineEvent::Roam:
        return m_played.radio->refusesToRoam(event.bssid);
    case TimelineEvent::Dropped:
        return m_played.radio->isConnected() ? QString() : QStringLiteral("the station is not connected");
    case TimelineEvent::WrongKey:
        return m_played.radio->isWrongKeyAwaited(event.ssid)
            ? QStringLiteral("the next attempt to join \"%1\" fails already").arg(event.ssid)
            : QString();
    case TimelineEvent::RadioOn:
    case TimelineEvent::RadioOff:
        if (m_played.radio->isOn() != (event.kind == TimelineEvent::RadioOn))
            return {};
        return QStringLiteral("the radio is %1 already")
            .arg(event.kind == TimelineEvent::RadioOn ? QStringLiteral("on") : QStringLiteral("off"));
    case TimelineEvent::HotspotStarts:
    case TimelineEvent::HotspotStops:
        if (m_played.hotspot->isWanted() != (event.kind == TimelineEvent::HotspotStarts))
            return {};
        return QStringLiteral("the hotspot %1 already")
            .arg(event.kind == TimelineEvent::HotspotStarts ? QStringLiteral("is active or starts")
                                                            : QStringLiteral("is not active or stops"));
    case TimelineEvent::DaemonDies:
    case TimelineEvent::DaemonBack:
        return obstacleOfDaemon(event);
    default:
        return {};
    }
}

QString EventPlayer::obstacleOfDaemon(const TimelineEvent &event) const
{
    const Daemon *daemon = m_played.daemons.value(event.service);
    const bool comes = event.kind == TimelineEvent::DaemonBack;
    if (daemon && daemon->isDead() == comes)
        return {};
    return QStringLiteral("the %1 daemon is %2")
        .arg(nameOf(event.service),
             !daemon     ? QStringLiteral("left out")
                 : comes ? QStringLiteral("not dead")
                         : QStringLiteral("dead already"));
}

void EventPlayer::play(const TimelineEvent &event) const
{
    m_log->happened("event", event.text);
    Daemon *daemon = m_played.daemons.value(event.service);
    switch (event.kind) {
    case TimelineEvent::Vanish:
        return m_played.network->vanish(event.interface);
    case TimelineEvent::Appear:
        return m_played.network->appear(event.interface);
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
        return m_played.network->setLink(event.interface, event.kind == TimelineEvent::LinkRegained);
    case TimelineEvent::PinDefault:
        return m_played.network->pinDefault(event.interface);
    case TimelineEvent::FollowDefault:
        return m_played.network->followDefault();
    case TimelineEvent::SetPriority:
        return m_played.network->setPriority(event.order);
    case TimelineEvent::OutOfRange:
    case TimelineEvent::InRange:
        return m_played.radio->setInRange(event.bssid, event.kind == TimelineEvent::InRange);
    case TimelineEvent::Signal:
        return m_played.radio->setLevel(event.bssid, event.level);
    case TimelineEvent::Roam:
        return m_played.radio->roam(event.bssid);
    case TimelineEvent::Dropped:
        return m_played.radio->drop(event.reason);
    case TimelineEvent::WrongKey:
        return m_played.radio->awaitWrongKey(event.ssid);
    case TimelineEvent::RadioOn:
    case TimelineEvent::RadioOff:
        return m_played.radio->setPower(event.kind == TimelineEvent::RadioOn);
    case TimelineEvent::TellWifiEvent:
        return m_played.radio->tellEvent(event.told);
    case TimelineEvent::HotspotStarts:
        return m_played.hotspot->start(m_played.hotspot->profile());
    case TimelineEvent::HotspotStops:
        return m_played.hotspot->stop();
    case TimelineEvent::SetAttributes:
    case TimelineEvent::RemoveAttributes:
        return changeAttributes(event);
    case TimelineEvent::FaultsEnd:
        return m_played.faults->clear();
    case TimelineEvent::DaemonDies:
        return daemon ? daemon->die(event.backAfter) : void();
    case TimelineEvent::DaemonBack:
        return daemon ? daemon->comeBack() : void();
    }
}

void EventPlayer::changeAttributes(const TimelineEvent &event) const
{
    if (!event.interface.isEmpty())
        m_played.world->changeInterface(event.interface, event.changes);
    else
        m_played.world->changeStatus(event.service, event.changes);
}

} // namespace morvek
