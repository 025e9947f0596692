// SPDX-License-Identifier: Apache-2.0
#include "clientcrowd.h"

#include "controllink.h"

#include <QtCore/QMap>

#include <algorithm>

namespace morvek {

namespace {

constexpr int MostOfClient = 64;
constexpr int MostOfAll = 256; // of the 1024 files that a process may open as a rule
constexpr qint64 MostHeld = MostOfAll * ControlLink::Share;

constexpr pid_t Everybody = -1;

} // namespace

std::shared_ptr<ClientCrowd> ClientCrowd::instance()
{
    thread_local std::weak_ptr<ClientCrowd> current;
    std::shared_ptr<ClientCrowd> crowd = current.lock();
    if (!crowd)
        current = crowd = std::make_shared<ClientCrowd>();
    return crowd;
}

bool ClientCrowd::admit(ControlLink *link, pid_t client)
{
    forgetTheGone();
    const auto ofClient = std::count_if(m_members.begin(), m_members.end(),
                                        [client](const Member &member) { return member.client == client; });
    const bool isCrowded = int(m_members.size()) >= MostOfAll;
    if (!isCrowded && ofClient < MostOfClient) {
        m_members.push_back({link, client});
        return true;
    }
    const pid_t who = isCrowded ? Everybody : client;
    const QString reason = isCrowded
        ? QStringLiteral("as clients have %1 already").arg(MostOfAll)
        : QStringLiteral("as its client, process %1, has %2 already").arg(client).arg(MostOfClient);
    link->drop(m_told.contains(who) ? QString() : reason);
    m_told.insert(who);
    return false;
}

void ClientCrowd::makeRoom()
{
    forgetTheGone();
    while (held() > MostHeld) {
        const Member greedy = largest();
        const QString reason = QStringLiteral("as more than %1 MiB wait in all, most of it in those of process %2")
                                   .arg(MostHeld / 1024 / 1024)
                                   .arg(greedy.client);
        greedy.link->drop(m_told.contains(greedy.client) ? QString() : reason);
        m_told.insert(greedy.client);
        forgetTheGone();
    }
}

void ClientCrowd::forgetTheGone()
{
    const auto isGone = [](const Member &member) { return !member.link || !member.link->isOpen(); };
    m_members.erase(std::remove_if(m_members.begin(), m_members.end(), isGone), m_members.end());
    QSet<pid_t> present;
    for (const Member &member : m_members)
        present.insert(member.client);
    // All are told of anew when there has been room for long.
    if (int(m_members.size()) > MostOfAll / 2)
        present.insert(Everybody);
    m_told.intersect(present);
}

qint64 ClientCrowd::held() const
{
    qint64 sum = 0;
    for (const Member &member : m_members)
        sum += member.link->held();
    return sum;
}

ClientCrowd::Member ClientCrowd::largest() const
{
    QMap<pid_t, qint64> ofClients;
    for (const Member &member : m_members)
        ofClients[member.client] += member.link->held();
    const auto isLess = [&ofClients](const Member &a, const Member &b) {
        const qint64 ofA = ofClients.value(a.client);
        const qint64 ofB = ofClients.value(b.client);
        return ofA != ofB ? ofA < ofB : a.link->held() < b.link->held();
    };
    return *std::max_element(m_members.begin(), m_members.end(), isLess);
}

} // namespace morvek
