// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SIMULATEDHOTSPOT_H
#define MORVEK_HOSTD_SIMULATEDHOTSPOT_H

#include "hotspotcontrol.h"
#include "scenario.h"

#include <QtCore/QObject>

namespace morvek {

class World;

/*! The hotspot of a scenario, which nobody ever joins: drives the tethering status of the world. */
class SimulatedHotspot : public QObject, public HotspotControl
{
    Q_OBJECT

public:
    /*! Fills \a world with the scenario's start. \a world and \a pace must outlive the hotspot. */
    SimulatedHotspot(const Scenario &scenario, World *world, Pace *pace, QObject *parent = nullptr);
    ~SimulatedHotspot() override;

    QJsonObject profile() const override { return m_profile; }
    void setProfile(const QJsonObject &profile) override;
    void start(const QJsonObject &profile, const AnswerCall &answer) override;
    void stop(const AnswerCall &answer) override;
    /*! The same without anybody who has asked. */
    void start(const QJsonObject &profile);
    void stop();

    /*! Whether it is active when all that is under way is done. */
    bool isWanted() const { return m_wanted; }

private:
    void begin(bool wanted, DelayRange delay);
    void finish();
    void countInactivity();
    void tell();

    QJsonObject m_profile;
    QJsonObject m_running; // what it runs with, or is being started with; empty when neither
    bool m_active;         // as it is told
    bool m_wanted;         // as it is when all that is under way is done
    quint32 m_step = 0;    // counts what is under way, so that only the latest is finished
    ScenarioDelays m_delays;
    World *m_world;
    Pace *m_pace;
};

} // namespace morvek

#endif
