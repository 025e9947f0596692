// SPDX-License-Identifier: Apache-2.0
#include "stageserver.h"

#include <utility>

#include <sys/socket.h>

namespace morvek {

ZopPath StagePlace::beside()
{
    return ZopPath::object(QStringLiteral("/zop"));
}

StageServer::StageServer(LineConnection::Answer answer, LineConnection::Refuse refuse)
    : m_answer(std::move(answer)),
      m_refuse(std::move(refuse))
{
}

StageServer::~StageServer() = default;

bool StageServer::keep(QString *error)
{
    if (!m_listening) {
        const ZopPath root = StagePlace::beside();
        *error = root.error();
        if (!root.isValid())
            return false;
        m_listening = std::make_unique<ListeningSocket>(
            root, StagePlace::FileName, [this](FileDescriptor socket, pid_t) { admit(std::move(socket)); });
    }
    return m_listening->keep(error);
}

void StageServer::admit(FileDescriptor socket)
{
    if (m_clients == MostClients) {
        const QByteArray refusal = m_refuse(QStringLiteral("%1 clients are here already").arg(MostClients)) + '\n';
        send(socket.get(), refusal.constData(), size_t(refusal.size()), MSG_NOSIGNAL);
        return;
    }
    ++m_clients;
    auto *client = new LineConnection(std::move(socket), m_answer, m_refuse, this);
    connect(client, &LineConnection::closed, this, [this, client] {
        --m_clients;
        client->deleteLater();
    });
}

} // namespace morvek
