// SPDX-License-Identifier: Apache-2.0
#include "stagecall.h"

#include "localsocket.h"
#include "stageserver.h"
#include "zoproot.h"

#include <cerrno>
#include <cstring>

#include <poll.h>

namespace morvek {

bool StageCall::isPossible(QString *error)
{
    const ZopRoot root = ZopRoot::look();
    if (root.state == ZopRoot::Unusable)
        *error = root.reason + QLatin1String(": ") + root.mend;
    return root.state != ZopRoot::Unusable;
}

bool StageCall::connect(QString *error)
{
    if (!isPossible(error))
        return false;
    const ZopPath beside = StagePlace::beside();
    m_socket = LocalSocket::connectTo(beside, StagePlace::FileName, error);
    if (!m_socket.isOpen() && LocalSocket::isNobody(errno))
        *error = QStringLiteral("no morvek-hostd runs below \"%1\"").arg(ZopRoot::look().path);
    return m_socket.isOpen();
}

bool StageCall::ask(const QByteArray &line, QDeadlineTimer deadline, QByteArray *answer, QString *error)
{
    // What it could not take any more it may have answered all the same.
    send(line + '\n', deadline);
    if (receive(deadline, answer))
        return true;
    *error = deadline.hasExpired() ? QStringLiteral("morvek-hostd does not answer")
                                   : QStringLiteral("morvek-hostd has ended");
    return false;
}

bool StageCall::await(short events, QDeadlineTimer deadline) const
{
    pollfd state = {m_socket.get(), events, 0};
    const int ready = poll(&state, 1, int(deadline.remainingTime()));
    return ready > 0 || (ready == -1 && errno == EINTR);
}

bool StageCall::send(const QByteArray &line, QDeadlineTimer deadline)
{
    PassingBytes outgoing;
    outgoing.append(line.constData(), line.size());
    while (outgoing.size() > 0) {
        if (outgoing.transmit(m_socket.get()) == -1 && (errno != EAGAIN || !await(POLLOUT, deadline)))
            return false;
    }
    return true;
}

bool StageCall::receive(QDeadlineTimer deadline, QByteArray *answer)
{
    constexpr int Most = 64 * 1024;
    for (;;) {
        const char *begin = m_incoming.data();
        const int held = m_incoming.size();
        if (const void *end = held > 0 ? std::memchr(begin, '\n', size_t(held)) : nullptr) {
            const int size = int(static_cast<const char *>(end) - begin);
            *answer = QByteArray(begin, size);
            m_incoming.pass(size + 1);
            return true;
        }
        const ssize_t size = m_incoming.receive(m_socket.get(), Most);
        if (size == 0 || (size == -1 && (errno != EAGAIN || !await(POLLIN, deadline))))
            return false;
    }
}

} // namespace morvek
