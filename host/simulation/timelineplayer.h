// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TIMELINEPLAYER_H
#define MORVEK_HOSTD_TIMELINEPLAYER_H

#include "pace.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtCore/QVector>

#include <functional>

namespace morvek {

/*! Plays events, one after the other, each at its time or as soon after it as the machine can. */
class TimelinePlayer : public QObject
{
    Q_OBJECT

public:
    /*! Has \a play called with the numbers of the events, from 0 on. \a pace must outlive the player. */
    TimelinePlayer(Pace *pace, std::function<void(int number)> play, QObject *parent = nullptr);
    ~TimelinePlayer() override;

    /*! The events' times, in milliseconds of the scenario and in order. */
    void setTimes(const QVector<int> &times) { m_times = times; }
    /*! \a pauseBefore says how many real milliseconds of rest an event still needs before it, which count anyway. */
    void setPause(std::function<int(int number)> pauseBefore) { m_pauseBefore = std::move(pauseBefore); }
    /*! From this moment on the events' times count. */
    void start();

private:
    Q_DISABLE_COPY(TimelinePlayer)

    void playDue();
    int pauseBefore(int number) const { return m_pauseBefore ? m_pauseBefore(number) : 0; }

    QVector<int> m_times;
    int m_next = 0;
    QTimer m_timer;
    QElapsedTimer m_since;
    Pace *m_pace;
    std::function<void(int number)> m_play;
    std::function<int(int number)> m_pauseBefore;
};

} // namespace morvek

#endif
