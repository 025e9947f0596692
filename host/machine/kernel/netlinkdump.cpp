// SPDX-License-Identifier: Apache-2.0
#include "netlinkdump.h"

#include <QtCore/QVector>

#include <cerrno>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvek {

namespace {

// The kernel fills as much of a reader's buffer as it can, and never needs more than this for one part.
constexpr int BufferSize = 64 * 1024;
// A list that changes while it is told must be asked for again; not for ever on a machine that never rests.
constexpr int MostAttempts = 10;

enum class Part { More, Last, Changed, Failed };

/*! A socket that is closed with its owner. */
class Socket
{
public:
    explicit Socket(int protocol)
        : m_fd(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol))
    {
    }
    ~Socket()
    {
        if (m_fd != -1)
            close(m_fd);
    }
    int fd() const { return m_fd; }

private:
    Q_DISABLE_COPY(Socket)
    int m_fd;
};

bool sendRequest(const Socket &socket, quint16 type, const QByteArray &body)
{
    nlmsghdr header = {};
    header.nlmsg_len = quint32(NLMSG_LENGTH(body.size()));
    header.nlmsg_type = type;
    header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    const QByteArray request = QByteArray(reinterpret_cast<const char *>(&header), NLMSG_HDRLEN) + body;
    return send(socket.fd(), request.constData(), size_t(request.size()), 0) == request.size();
}

/*! Splits one datagram of the kernel into messages. */
Part split(const QByteArray &datagram, QVector<QByteArray> *bodies)
{
    bool changed = false;
    int offset = 0;
    while (offset + NLMSG_HDRLEN <= datagram.size()) {
        nlmsghdr header;
        std::memcpy(&header, datagram.constData() + offset, sizeof header);
        const int length = int(header.nlmsg_len);
        if (length < NLMSG_HDRLEN || length > datagram.size() - offset || header.nlmsg_type == NLMSG_ERROR)
            return Part::Failed;
        changed = changed || (header.nlmsg_flags & NLM_F_DUMP_INTR);
        if (header.nlmsg_type == NLMSG_DONE)
            return changed ? Part::Changed : Part::Last;
        bodies->append(datagram.mid(offset + NLMSG_HDRLEN, length - NLMSG_HDRLEN));
        offset += int(NLMSG_ALIGN(header.nlmsg_len));
    }
    return changed ? Part::Changed : Part::More;
}

Part readList(int protocol, quint16 type, const QByteArray &request, QVector<QByteArray> *bodies)
{
    const Socket socket(protocol);
    if (socket.fd() == -1 || !sendRequest(socket, type, request))
        return Part::Failed;
    Part part = Part::More;
    while (part == Part::More) {
        QByteArray buffer(BufferSize, Qt::Uninitialized);
        const ssize_t size = recv(socket.fd(), buffer.data(), BufferSize, MSG_TRUNC);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0 || size > BufferSize)
            return Part::Failed;
        buffer.truncate(int(size));
        part = split(buffer, bodies);
    }
    return part;
}

} // namespace

bool NetlinkDump::read(quint16 type, unsigned char family, int headerSize, QString *error, const Consumer &consumer)
{
    return read(NETLINK_ROUTE, type, QByteArray(1, char(family)).append(headerSize - 1, '\0'), error, consumer);
}

bool NetlinkDump::read(int protocol, quint16 type, const QByteArray &request, QString *error, const Consumer &consumer)
{
    QVector<QByteArray> bodies;
    Part part = Part::Changed;
    for (int attempt = 0; attempt < MostAttempts && part == Part::Changed; ++attempt) {
        bodies.clear();
        part = readList(protocol, type, request, &bodies);
    }
    if (part == Part::Failed) {
        *error = QStringLiteral("the kernel does not tell its network interfaces: %1")
                     .arg(QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    // What still changed after so many attempts is told by another ring of the bell.
    for (const QByteArray &body : qAsConst(bodies))
        consumer(body);
    return true;
}

QMap<int, QByteArray> NetlinkDump::attributes(const QByteArray &bytes)
{
    QMap<int, QByteArray> result;
    int offset = 0;
    while (offset + int(sizeof(rtattr)) <= bytes.size()) {
        rtattr attribute;
        std::memcpy(&attribute, bytes.constData() + offset, sizeof attribute);
        const int length = attribute.rta_len;
        if (length < int(sizeof attribute) || length > bytes.size() - offset)
            break;
        result.insert(attribute.rta_type & NLA_TYPE_MASK,
                      bytes.mid(offset + int(sizeof attribute), length - int(sizeof attribute)));
        offset += int(RTA_ALIGN(length));
    }
    return result;
}

} // namespace morvek
