// SPDX-License-Identifier: Apache-2.0
#include "controllink.h"

#include "hostlog.h"
#include "zoppath.h"
#include "zopwire.h"

#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtCore/QtEndian>

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace morvek {

namespace {

using Length = quint32;

/*! The address of \a name in the folder: through the descriptor, as an address is too short for most paths. */
bool makeAddress(const FileDescriptor &folder, const QByteArray &name, sockaddr_un *address, QString *error)
{
    if (!folder.isOpen()) {
        const int reason = errno;
        *error = reason == ENOENT ? QStringLiteral("no such object") : systemError(reason);
        errno = reason;
        return false;
    }
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(folder.get()) + '/' + name;
    *address = {};
    address->sun_family = AF_UNIX;
    if (size_t(path.size()) >= sizeof(address->sun_path)) {
        *error = QStringLiteral("the name is too long for a control object");
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address->sun_path, path.constData(), size_t(path.size()));
    return true;
}

FileDescriptor openFolder(const ZopPath &path)
{
    return FileDescriptor(open(path.folder().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

FileDescriptor makeSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

} // namespace

ControlLink::ControlLink(FileDescriptor socket, const ZopPath &path, QObject *parent)
    : QObject(parent),
      m_file(path.file())
{
    m_socket.setReadBufferSize(LargestUpdate + int(sizeof(Length)));
    m_socket.setSocketDescriptor(socket.release());
    connect(&m_socket, &QLocalSocket::readyRead, this, &ControlLink::readLater);
    connect(&m_socket, &QLocalSocket::disconnected, this, &ControlLink::closed);
}

FileDescriptor ControlLink::connectTo(const ZopPath &path, QString *error)
{
    const FileDescriptor folder = openFolder(path);
    sockaddr_un address;
    if (!makeAddress(folder, path.name(), &address, error))
        return FileDescriptor();
    FileDescriptor socket = makeSocket();
    int reason = 0;
    if (!socket.isOpen()
        || ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        reason = errno;
        *error = reason == ECONNREFUSED ? QStringLiteral("no daemon serves it")
            : reason == ENOENT          ? QStringLiteral("no such object")
                                        : systemError(reason);
    } else if (!isOwnPeer(socket.get())) {
        reason = EPERM;
        *error = QStringLiteral("another user serves it");
    }
    if (reason != 0)
        socket.reset();
    errno = reason;
    return socket;
}

bool ControlLink::isNobody(int error)
{
    return error == ECONNREFUSED || error == ENOENT || error == ENOTDIR || error == EPERM || error == ENAMETOOLONG;
}

FileDescriptor ControlLink::listenAt(const ZopPath &path, const QByteArray &name, QString *error)
{
    const FileDescriptor folder = openFolder(path);
    sockaddr_un address;
    if (!makeAddress(folder, name, &address, error))
        return FileDescriptor();
    FileDescriptor socket = makeSocket();
    if (!socket.isOpen() || bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0
        || chmod(address.sun_path, S_IRUSR | S_IWUSR) != 0 || listen(socket.get(), SOMAXCONN) != 0) {
        *error = systemError(errno);
        socket.reset();
    }
    return socket;
}

bool ControlLink::isOwnPeer(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool ControlLink::send(const ZopChangeset &changes)
{
    const QByteArray frame = encodeChangeset(changes);
    if (!isAlive() || frame.size() > LargestUpdate || isFull())
        return false;
    const Length length = qToBigEndian(Length(frame.size()));
    m_socket.write(reinterpret_cast<const char *>(&length), sizeof(length));
    m_socket.write(frame);
    m_socket.flush();
    return true;
}

bool ControlLink::isFull() const
{
    return m_socket.bytesToWrite() > LargestUpdate;
}

bool ControlLink::isAlive() const
{
    pollfd state = {int(m_socket.socketDescriptor()), POLLOUT, 0};
    return m_socket.state() == QLocalSocket::ConnectedState && poll(&state, 1, 0) >= 0
        && !(state.revents & (POLLHUP | POLLERR));
}

void ControlLink::drop()
{
    m_isDropped = true;
    m_socket.abort();
}

/*!
 * Reads on from the event loop: a slot may delete this or run an event loop of its own, which inside the socket's
 * own signal would be the end of it, or wait in vain.
 */
void ControlLink::readLater()
{
    if (std::exchange(m_readsLater, true))
        return;
    const auto goOn = [this] {
        m_readsLater = false;
        readFrames();
    };
    QMetaObject::invokeMethod(this, goOn, Qt::QueuedConnection);
}

void ControlLink::readFrames()
{
    const QPointer<ControlLink> guard(this);
    Length length = 0;
    // A broken connection has nothing to be read, and what a dropped one still has is not believed.
    while (guard && !m_isDropped && m_socket.bytesAvailable() >= qint64(sizeof(length))) {
        m_socket.peek(reinterpret_cast<char *>(&length), sizeof(length));
        const int size = int(qMin(qFromBigEndian(length), Length(LargestUpdate + 1)));
        if (size <= LargestUpdate && m_socket.bytesAvailable() < qint64(sizeof(length)) + size)
            return;
        ZopChangeset changes;
        if (size > LargestUpdate
            || !decodeChangeset(m_socket.read(int(sizeof(length)) + size).mid(sizeof(length)), &changes)) {
            logWarning(QStringLiteral("Closed a connection of \"%1\", which carried malformed content")
                           .arg(QFile::decodeName(m_file)));
            drop();
            return;
        }
        if (m_socket.bytesAvailable() > 0)
            readLater();
        emit received(changes);
    }
}

} // namespace morvek
