// SPDX-License-Identifier: Apache-2.0
#ifndef RAWCLIENT_H
#define RAWCLIENT_H

#include <QtCore/QByteArray>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/*! A client of a control object that does what it likes. */
class RawClient
{
public:
    /*! Connects to the control object "control" in \a folder. */
    explicit RawClient(const QByteArray &folder)
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        // Through the folder's descriptor, as an address is short.
        const int descriptor = open(folder.constData(), O_PATH | O_CLOEXEC);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof(address.sun_path), "/proc/self/fd/%d/control", descriptor);
        if (connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            closeNow();
        close(descriptor);
    }
    RawClient(RawClient &&other) noexcept
        : m_socket(std::exchange(other.m_socket, -1))
    {
    }
    RawClient &operator=(RawClient &&other) = delete;
    ~RawClient() { closeNow(); }

    /*! Whether it was let in and not been put out. */
    bool isOpen() const
    {
        char byte = 0;
        const ssize_t size = m_socket == -1 ? 0 : recv(m_socket, &byte, 1, MSG_PEEK);
        return size > 0 || (size == -1 && errno == EAGAIN);
    }

    /*! Sends as many of the bytes as can be sent at present; how many these are. */
    int send(const char *bytes, int size) const
    {
        return int(std::max<ssize_t>(::send(m_socket, bytes, size_t(size), MSG_NOSIGNAL), 0));
    }

private:
    void closeNow()
    {
        if (m_socket != -1)
            close(m_socket);
        m_socket = -1;
    }

    int m_socket;
};

/*! Several, which send the same at the same pace. */
class RawClients
{
public:
    RawClients(int count, const QByteArray &folder, const QByteArray &bytes = QByteArray())
        : m_bytes(bytes),
          m_sent(size_t(count), 0)
    {
        for (int i = 0; i < count; ++i)
            m_clients.emplace_back(folder);
    }

    int open() const
    {
        return int(
            std::count_if(m_clients.begin(), m_clients.end(), [](const RawClient &client) { return client.isOpen(); }));
    }

    /*! Sends what can be sent at present; true when each has sent everything or was put out. */
    bool sendMore()
    {
        bool isDone = true;
        for (size_t i = 0; i < m_clients.size(); ++i) {
            m_sent[i] += m_clients[i].send(m_bytes.constData() + m_sent[i], m_bytes.size() - m_sent[i]);
            isDone = isDone && (m_sent[i] == m_bytes.size() || !m_clients[i].isOpen());
        }
        return isDone;
    }

private:
    QByteArray m_bytes;
    std::vector<int> m_sent;
    std::vector<RawClient> m_clients;
};

#endif
