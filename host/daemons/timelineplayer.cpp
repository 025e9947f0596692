// SPDX-License-Identifier: Apache-2.0
#include "timelineplayer.h"

#include "eventlog.h"
#include "networkingdaemon.h"
#include "simulatednetwork.h"
#include "world.h"

namespace morvek {

TimelinePlayer::TimelinePlayer(const QVector<TimelineEvent> &timeline, const Pace *pace, World *world,
                               SimulatedNetwork *network, NetworkingDaemon *daemon, const EventLog *log,
                               QObject *parent)
    : QObject(parent),
      m_timeline(timeline),
      m_pace(pace),
      m_world(world),
      m_network(network),
      m_daemon(daemon),
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
        m_network->vanish(event.interface);
        break;
    case TimelineEvent::Appear:
        m_network->appear(event.interface);
        break;
    case TimelineEvent::LinkLost:
    case TimelineEvent::LinkRegained:
        m_network->setLink(event.interface, event.kind == TimelineEvent::LinkRegained);
        break;
    case TimelineEvent::SetAttributes:
    case TimelineEvent::RemoveAttributes:
        if (event.interface.isEmpty())
            m_world->changeStatus(event.changes);
        else
            m_world->changeInterface(event.interface, event.changes);
        break;
    case TimelineEvent::PinDefault:
        m_network->pinDefault(event.interface);
        break;
    case TimelineEvent::FollowDefault:
        m_network->followDefault();
        break;
    case TimelineEvent::SetPriority:
        m_network->setPriority(event.order);
        break;
    case TimelineEvent::DaemonDies:
        m_daemon->die(event.backAfter);
        break;
    }
}

} // namespace morvek
