// SPDX-License-Identifier: Apache-2.0
#include "stageconnection.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <fcntl.h>
#include <unistd.h>

namespace morvek {

bool StageConnection::connectTo(const QString &root, QDeadlineTimer deadline)
{
    m_socket.abort();
    // The path of a socket has at most 107 bytes; that of a root may be longer.
    const int folder = open(QFile::encodeName(root).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    m_socket.connectToServer(QStringLiteral("/proc/self/fd/%1/.morvek-hostd.stage").arg(folder));
    const bool isConnected = m_socket.waitForConnected(int(deadline.remainingTime()));
    close(folder);
    return isConnected;
}

void StageConnection::disconnect()
{
    m_socket.abort();
}

bool StageConnection::ask(const QString &root, const QByteArray &request, QDeadlineTimer deadline, QJsonObject *answer)
{
    if (m_socket.state() != QLocalSocket::ConnectedState && !connectTo(root, deadline))
        return false;
    m_socket.write(request + '\n');
    while (!m_socket.canReadLine()) {
        if (!m_socket.waitForReadyRead(int(deadline.remainingTime())) && !m_socket.canReadLine()) {
            disconnect(); // or a late answer would be taken for that to the next request
            return false;
        }
    }
    *answer = QJsonDocument::fromJson(m_socket.readLine()).object();
    return true;
}

} // namespace morvek
