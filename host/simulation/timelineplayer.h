// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TIMELINEPLAYER_H
#define MORVEK_HOSTD_TIMELINEPLAYER_H

#include "scenario.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace morvek {

class EventPlayer;

/*! Plays a scenario's events, one after the other, each at its time or as soon after it as the machine can. */
class TimelinePlayer : public QObject
{
    Q_OBJECT

public:
    /*! Everything that is passed must outlive the player. */
    TimelinePlayer(const QVector<TimelineEvent> &timeline, Pace *pace, const EventPlayer *player,
                   QObject *parent = nullptr);
    ~TimelinePlayer() override;

    /*! From this moment on the events' times count. */
    void start();

private:
    Q_DISABLE_COPY(TimelinePlayer)

    void playDue();

    QVector<TimelineEvent> m_timeline;
    int m_next = 0;
    QTimer m_timer;
    QElapsedTimer m_since;
    Pace *m_pace;
    const EventPlayer *m_player;
};

} // namespace morvek

#endif
