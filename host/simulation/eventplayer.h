// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_EVENTPLAYER_H
#define MORVEK_HOSTD_EVENTPLAYER_H

#include "scenario.h"

namespace morvek {

class Daemon;
class EventLog;
class FaultPlan;
class SimulatedHotspot;
class SimulatedNetwork;
class SimulatedRadio;
class World;

/*! What events happen to. Neither the radio nor the hotspot is in every scenario, nor does every daemon run. */
struct PlayedWorld
{
    World *world;
    SimulatedNetwork *network;
    SimulatedRadio *radio;
    SimulatedHotspot *hotspot;
    FaultPlan *faults;
    QMap<Service, Daemon *> daemons;
};

/*! Lets one event happen, whoever asks for it. */
class EventPlayer
{
public:
    /*! Everything that is passed must outlive the player. */
    EventPlayer(const PlayedWorld &world, const EventLog *log);

    Presence presence() const;
    /*! Why \a event, which fits what is there, would come to nothing now; empty when it would not. */
    QString obstacle(const TimelineEvent &event) const;
    void play(const TimelineEvent &event) const;

private:
    QString obstacleOfDaemon(const TimelineEvent &event) const;
    void changeAttributes(const TimelineEvent &event) const;

    PlayedWorld m_played;
    const EventLog *m_log;
};

} // namespace morvek

#endif
