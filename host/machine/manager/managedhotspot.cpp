// SPDX-License-Identifier: Apache-2.0
#include "managedhotspot.h"

#include "managerclient.h"

namespace morvek {

ManagedHotspot::ManagedHotspot(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                               QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_world(world),
      m_log(log)
{
}

ManagedHotspot::~ManagedHotspot() = default;

void ManagedHotspot::setProfile(const QJsonObject &profile)
{
    m_profile = profile;
}

void ManagedHotspot::start(const QJsonObject &, const AnswerCall &answer)
{
    answer({{Refusal::ReadOnly, QStringLiteral("not yet")}, {}});
}

void ManagedHotspot::stop(const AnswerCall &answer)
{
    answer({});
}

} // namespace morvek
