// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"

#include "commandline.h"
#include "networkingdaemon.h"
#include "simulatednetwork.h"
#include "systemnetwork.h"
#include "timelineplayer.h"

namespace morvek {

Hostd::Hostd(const CommandLine &commandLine, const Scenario &scenario)
    : m_log(commandLine.verbose),
      m_pace(commandLine.speed, commandLine.seed == -1 ? scenario.seed : static_cast<quint32>(commandLine.seed)),
      m_faults(scenario.faults)
{
    InterfaceControl *control = nullptr;
    if (commandLine.system) {
        m_system = std::make_unique<SystemNetwork>(&m_world, &m_log);
        control = m_system.get();
    } else {
        m_simulated = std::make_unique<SimulatedNetwork>(scenario, &m_world, &m_pace);
        control = m_simulated.get();
    }
    m_networking = std::make_unique<NetworkingDaemon>(&m_world, control, &m_faults, &m_pace, &m_log);
    m_networking->setReplyDelay(scenario.delays.reply);
    if (m_simulated)
        m_player = std::make_unique<TimelinePlayer>(scenario.timeline, &m_pace, &m_world, m_simulated.get(),
                                                    m_networking.get(), &m_log);
}

Hostd::~Hostd() = default;

ExitCode Hostd::start(QString *error)
{
    switch (m_lock.take(error)) {
    case RootLock::Taken:
        break;
    case RootLock::Unusable:
        return ExitCode::UnusableRoot;
    case RootLock::Held:
        return ExitCode::AlreadyRunning;
    }
    if ((m_system && !m_system->start(error)) || !m_networking->start(error))
        return ExitCode::CannotPublish;
    if (m_player)
        m_player->start();
    return ExitCode::Success;
}

} // namespace morvek
