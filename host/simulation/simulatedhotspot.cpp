// SPDX-License-Identifier: Apache-2.0
#include "simulatedhotspot.h"

#include "hotspotprofile.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

SimulatedHotspot::SimulatedHotspot(const Scenario &scenario, World *world, Pace *pace, QObject *parent)
    : QObject(parent),
      m_profile(scenario.hotspot.profile),
      m_running(scenario.hotspot.active ? m_profile : QJsonObject()),
      m_active(scenario.hotspot.active),
      m_wanted(m_active),
      m_delays(scenario.delays),
      m_world(world),
      m_pace(pace)
{
    tell();
    countInactivity();
}

SimulatedHotspot::~SimulatedHotspot() = default;

void SimulatedHotspot::setProfile(const QJsonObject &profile)
{
    m_profile = profile;
    if (!m_wanted)
        return;
    m_running = profile;
    if (m_active)
        countInactivity();
}

void SimulatedHotspot::start(const QJsonObject &profile, const AnswerCall &answer)
{
    answer({});
    start(profile);
}

void SimulatedHotspot::stop(const AnswerCall &answer)
{
    answer({});
    stop();
}

void SimulatedHotspot::start(const QJsonObject &profile)
{
    if (m_wanted)
        return;
    m_running = profile;
    begin(true, m_delays.hotspotStart);
}

void SimulatedHotspot::stop()
{
    if (m_wanted)
        begin(false, m_delays.hotspotStop);
}

void SimulatedHotspot::begin(bool wanted, DelayRange delay)
{
    m_wanted = wanted;
    m_pace->after(delay, this, [this, step = ++m_step] {
        if (step == m_step)
            finish();
    });
}

void SimulatedHotspot::finish()
{
    // Nothing is told when a newer request has undone what was under way.
    if (m_active != m_wanted) {
        m_active = m_wanted;
        tell();
    }
    if (!m_active)
        m_running = QJsonObject(); // its passphrase is of no use any more
    countInactivity();
}

void SimulatedHotspot::countInactivity()
{
    const int time = HotspotProfile::inactivityTime(m_running);
    ++m_step;
    if (!m_active || time == 0)
        return;
    m_pace->after(time, this, [this, step = m_step] {
        if (step != m_step)
            return;
        m_wanted = false;
        finish();
    });
}

void SimulatedHotspot::tell()
{
    ZopChangeset changes;
    changes.assignments.insert(Wire::State, m_active ? Wire::Active : Wire::Inactive);
    m_world->changeStatus(Service::Tethering, changes);
}

} // namespace morvek
