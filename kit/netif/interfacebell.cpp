// SPDX-License-Identifier: Apache-2.0
#include "interfacebell_p.h"

#include <networkinterfaceservice.h>

namespace morvek {

InterfaceBell::InterfaceBell(const NetworkInterfaceService *service, QObject *parent)
    : QObject(parent),
      m_folder(QStringLiteral("/zop/services/networking/all/interfaces"), nullptr)
{
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &InterfaceBell::rung);
    const auto ring = [this] { m_turn.start(); };
    connect(&m_folder, &ZopDirWatcher::objectAdded, this, ring);
    connect(&m_folder, &ZopDirWatcher::objectRemoved, this, ring);
    connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, this, ring);
    connect(service, &NetworkInterfaceService::preferredInterfaceChanged, this, ring);
    connect(service, &NetworkInterfaceService::interfaceConnected, this, ring);
    connect(service, &NetworkInterfaceService::interfaceDisconnected, this, ring);
}

InterfaceBell::~InterfaceBell() = default;

} // namespace morvek
