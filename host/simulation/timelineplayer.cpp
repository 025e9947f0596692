// SPDX-License-Identifier: Apache-2.0
#include "timelineplayer.h"

#include "daemon.h"
#include "eventlog.h"
#include "simulatedhotspot.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "world.h"

namespace morvek {

TimelinePlayer::TimelinePlayer(const QVector<TimelineEvent> &timeline, const Pace *pace, const Stage &stage,
                               const EventLog *log, QObject *parent)
    : QObject(parent),
      m_timeline(timeline),
      m_pace(pace),
      m_stage(stage),
      m_log(log)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &TimelinePlayer::playDue);
}

TimelinePlayer::~TimelinePlayer() = default;

void TimelinePlayer::start()
{
    m_since.start();
    playDue();
}

void TimelinePlayer::playDue()
{
    // One timer for all, so that no time factor can reorder them.
    while (m_next < m_timeline.size() && m_pace->real(m_timeline.at(m_next).at) <= m_since.elapsed())
        play(m_timeline.at(m_next++));
    if (m_next < m_timeline.size())
        m_timer.start(qMax(0, m_pace->real(m_timeline.at(m_next).at) - static_cast<int>(m_since.elapsed())));
}

void TimelinePlayer::play(const TimelineEvent &event)
{
    m_log->happened("event", event.text);
    switch (event.kind) {
    case TimelineEvent::Vanish:
        return m_stage.network->vanish(event.interface);
    case TimelineEvent::Appear:
        return m_stage.network->appear(event.interface);
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
        return m_stage.network->setLink(event.interface, event.kind == TimelineEvent::LinkRegained);
    case TimelineEvent::PinDefault:
        return m_stage.network->pinDefault(event.interface);
    case TimelineEvent::FollowDefault:
        return m_stage.network->followDefault();
    case TimelineEvent::SetPriority:
        return m_stage.network->setPriority(event.order);
    case TimelineEvent::OutOfRange:
    case TimelineEvent::InRange:
        return m_stage.radio->setInRange(event.bssid, event.kind == TimelineEvent::InRange);
    case TimelineEvent::Signal:
        return m_stage.radio->setLevel(event.bssid, event.level);
    case TimelineEvent::Roam:
        return m_stage.radio->roam(event.bssid);
    case TimelineEvent::Dropped:
        return m_stage.radio->drop(event.reason);
    case TimelineEvent::RadioOn:
    case TimelineEvent::RadioOff:
        return m_stage.radio->setPower(event.kind == TimelineEvent::RadioOn);
    case TimelineEvent::TellWifiEvent:
        return m_stage.radio->tellEvent(event.told);
    case TimelineEvent::HotspotStarts:
        return m_stage.hotspot->start(m_stage.hotspot->profile());
    case TimelineEvent::HotspotStops:
        return m_stage.hotspot->stop();
    case TimelineEvent::SetAttributes:
    case TimelineEvent::RemoveAttributes:
        return changeAttributes(event);
    case TimelineEvent::DaemonDies:
        return m_stage.daemons.value(event.service)->die(event.backAfter);
    }
}

void TimelinePlayer::changeAttributes(const TimelineEvent &event)
{
    if (!event.interface.isEmpty())
        m_stage.world->changeInterface(event.interface, event.changes);
    else
        m_stage.world->changeStatus(event.service, event.changes);
}

} // namespace morvek
