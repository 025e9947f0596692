// SPDX-License-Identifier: Apache-2.0
#include "managedinterfaces.h"

#include "managerclient.h"

namespace morvek {

ManagedInterfaces::ManagedInterfaces(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                                     QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_world(world),
      m_log(log)
{
}

ManagedInterfaces::~ManagedInterfaces() = default;

void ManagedInterfaces::carryOut(const NetworkingRequest &, const AnswerCall &answer)
{
    answer({{Refusal::ReadOnly, QStringLiteral("not yet")}, {}});
}

} // namespace morvek
