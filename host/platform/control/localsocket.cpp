// SPDX-License-Identifier: Apache-2.0
#include "localsocket.h"

#include "zoppath.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace morvek {

namespace {

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
    return path.folderPlace().open(O_PATH | O_DIRECTORY);
}

FileDescriptor makeSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

} // namespace

FileDescriptor LocalSocket::connectTo(const ZopPath &path, const QByteArray &name, QString *error)
{
    const FileDescriptor folder = openFolder(path);
    sockaddr_un address;
    if (!makeAddress(folder, name, &address, error))
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

bool LocalSocket::isNobody(int error)
{
    return error == ECONNREFUSED || error == ENOENT || error == ENOTDIR || error == EPERM || error == ENAMETOOLONG;
}

FileDescriptor LocalSocket::listenAt(const ZopPath &path, const QByteArray &name, QString *error)
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

bool LocalSocket::isOwnPeer(int socket, pid_t *process)
{
    ucred peer = {};
    socklen_t size = sizeof(peer);
    const bool isKnown = getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    if (process)
        *process = peer.pid;
    return isKnown && peer.uid == geteuid();
}

} // namespace morvek
