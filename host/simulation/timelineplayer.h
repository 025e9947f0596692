// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TIMELINEPLAYER_H
#define MORVEK_HOSTD_TIMELINEPLAYER_H

#include "scenario.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace morvek {

class Daemon;
class EventLog;
class SimulatedHotspot;
class SimulatedNetwork;
class SimulatedRadio;
class World;

/*! What events happen to. Neither the radio nor the hotspot nor their daemons are in every scenario. */
struct Stage
{
    World *world;
    SimulatedNetwork *network;
    SimulatedRadio *radio;
    SimulatedHotspot *hotspot;
    QMap<Service, Daemon *> daemons;
};

/*! Plays a scenario's events, one after the other, each at its time or as soon after it as the machine can. */
class TimelinePlayer : public QObject
{
    Q_OBJECT

public:
    /*! Everything that is passed must outlive the player. */
    TimelinePlayer(const QVector<TimelineEvent> &timeline, const Pace *pace, const Stage &stage, const EventLog *log,
                   QObject *parent = nullptr);
    ~TimelinePlayer() override;

    /*! From this moment on the events' times count. */
    void start();

private:
    Q_DISABLE_COPY(TimelinePlayer)

    void playDue();
    void play(const TimelineEvent &event);
    void changeAttributes(const TimelineEvent &event);

    QVector<TimelineEvent> m_timeline;
    int m_next = 0;
    QTimer m_timer;
    QElapsedTimer m_since;
    const Pace *m_pace;
    Stage m_stage;
    const EventLog *m_log;
};

} // namespace morvek

#endif
