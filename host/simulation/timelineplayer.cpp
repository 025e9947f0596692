// SPDX-License-Identifier: Apache-2.0
#include "timelineplayer.h"

#include <QtCore/QThread>

namespace morvek {

TimelinePlayer::TimelinePlayer(Pace *pace, std::function<void(int number)> play, QObject *parent)
    : QObject(parent),
      m_pace(pace),
      m_play(std::move(play))
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
    for (int i = 0; i < m_times.size(); ++i) {
        m_pace->after(m_times.at(i), this, [this, i] {
            QThread::msleep(ulong(pauseBefore(i))); // who lets time pass waits until all of it has happened
            m_play(i);
        });
    }
    m_pace->pass(0);
}

void TimelinePlayer::playDue()
{
    // One timer for all, so that no time factor can reorder them.
    int pause = 0;
    while (m_next < m_times.size() && m_pace->real(m_times.at(m_next)) <= m_since.elapsed() && pause == 0) {
        pause = pauseBefore(m_next);
        if (pause == 0)
            m_play(m_next++);
    }
    if (m_next < m_times.size())
        m_timer.start(qMax(pause, m_pace->real(m_times.at(m_next)) - static_cast<int>(m_since.elapsed())));
}

} // namespace morvek
