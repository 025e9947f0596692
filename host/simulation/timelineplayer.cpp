// SPDX-License-Identifier: Apache-2.0
#include "timelineplayer.h"

#include "eventplayer.h"

namespace morvek {

TimelinePlayer::TimelinePlayer(const QVector<TimelineEvent> &timeline, Pace *pace, const EventPlayer *player,
                               QObject *parent)
    : QObject(parent),
      m_timeline(timeline),
      m_pace(pace),
      m_player(player)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &TimelinePlayer::playDue);
}

TimelinePlayer::~TimelinePlayer() = default;

void TimelinePlayer::start()
{
    if (!m_pace->isHeld()) {
        m_since.start();
        playDue();
        return;
    }
    for (const TimelineEvent &event : qAsConst(m_timeline))
        m_pace->after(event.at, this, [this, &event] { m_player->play(event); });
    m_pace->pass(0);
}

void TimelinePlayer::playDue()
{
    // One timer for all, so that no time factor can reorder them.
    while (m_next < m_timeline.size() && m_pace->real(m_timeline.at(m_next).at) <= m_since.elapsed())
        m_player->play(m_timeline.at(m_next++));
    if (m_next < m_timeline.size())
        m_timer.start(qMax(0, m_pace->real(m_timeline.at(m_next).at) - static_cast<int>(m_since.elapsed())));
}

} // namespace morvek
