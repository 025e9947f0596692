// SPDX-License-Identifier: Apache-2.0
#include "managedradio.h"

#include "managerclient.h"

namespace morvek {

ManagedRadio::ManagedRadio(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                           QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_world(world),
      m_log(log)
{
}

ManagedRadio::~ManagedRadio() = default;

void ManagedRadio::carryOut(const WifiRequest &, const AnswerCall &answer)
{
    answer({{Refusal::ReadOnly, QStringLiteral("not yet")}, {}});
}

} // namespace morvek
