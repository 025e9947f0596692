// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RECORDEDWORLD_H
#define MORVEK_HOSTD_RECORDEDWORLD_H

#include "fault.h"
#include "recording.h"
#include "timelineplayer.h"

#include <QtCore/QElapsedTimer>

#include <set>

namespace morvek {

class EventLog;
class World;

/*! What a recording tells of the three services happens again in a world. */
class RecordedWorld
{
public:
    /*! What was there at the beginning is in \a world at once. Everything that is passed must outlive this. */
    RecordedWorld(const Recording &recording, World *world, Pace *pace, const EventLog *log);

    /*! The services that it tells of. */
    std::set<Service> services() const { return m_services; }
    /*! What every request meets. */
    static Fault refusal();

    /*! From this moment on the events' times count. */
    void start() { m_player.start(); }

private:
    Q_DISABLE_COPY(RecordedWorld)

    void play(const RecordedEvent &event);
    int pauseBefore(const RecordedEvent &event) const;

    QVector<RecordedEvent> m_events; // of what happened after the beginning
    std::set<Service> m_services;
    World *m_world;
    const EventLog *m_log;
    TimelinePlayer m_player;
    QElapsedTimer m_sinceLast;
    RecordedEvent m_last;
};

} // namespace morvek

#endif
