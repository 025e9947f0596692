// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"

#include "hostdoptions.h"
#include "networkingdaemon.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "systemnetwork.h"
#include "timelineplayer.h"
#include "wifidaemon.h"

namespace morvek {

Hostd::Hostd(const HostdOptions &options, const Scenario &scenario)
    : m_log(options.verbose),
      m_pace(options.speed, options.seed == -1 ? scenario.seed : static_cast<quint32>(options.seed)),
      m_faults(scenario.faults),
      m_startsNetworking(!options.without.contains(Service::Networking)),
      m_startsWifi(!options.without.contains(Service::Wifi))
{
    const DaemonTools tools {&m_world, &m_faults, &m_pace, &m_log};
    InterfaceControl *control = nullptr;
    if (options.system) {
        m_system = std::make_unique<SystemNetwork>(&m_world, &m_log);
        control = m_system.get();
    } else {
        m_simulated = std::make_unique<SimulatedNetwork>(scenario, &m_world, &m_pace);
        control = m_simulated.get();
    }
    m_networking = std::make_unique<NetworkingDaemon>(control, tools);
    m_networking->setReplyDelay(scenario.delays.reply);
    if (!scenario.wifi.interface.isEmpty()) {
        m_radio = std::make_unique<SimulatedRadio>(scenario, &m_world, m_simulated.get(), &m_pace);
        m_wifi = std::make_unique<WifiDaemon>(m_radio.get(), tools);
        m_wifi->setReplyDelay(scenario.delays.reply);
    }
    const Stage stage {&m_world, m_simulated.get(), m_radio.get(), m_networking.get(), m_wifi.get()};
    if (m_simulated)
        m_player = std::make_unique<TimelinePlayer>(scenario.timeline, &m_pace, stage, &m_log);
}

Hostd::~Hostd() = default;

HostdExitCode Hostd::start(QString *error)
{
    switch (m_lock.take(error)) {
    case RootLock::Taken:
        break;
    case RootLock::Unusable:
        return HostdExitCode::UnusableRoot;
    case RootLock::Held:
        return HostdExitCode::AlreadyRunning;
    }
    if (m_system && !m_system->start(error))
        return HostdExitCode::CannotPublish;
    if ((m_startsNetworking && !m_networking->start(error)) || (m_startsWifi && m_wifi && !m_wifi->start(error)))
        return HostdExitCode::CannotPublish;
    if (m_player)
        m_player->start();
    return HostdExitCode::Success;
}

} // namespace morvek
