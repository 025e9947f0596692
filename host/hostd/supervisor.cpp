// SPDX-License-Identifier: Apache-2.0
#include "supervisor.h"

#include "filedescriptor.h"

#include <cstddef>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

namespace morvek {

void Supervisor::tell(const QByteArray &state)
{
    QByteArray name = qgetenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (name.isEmpty() || size_t(name.size()) > sizeof address.sun_path)
        return;
    if (name.startsWith('@'))
        name[0] = '\0';
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const FileDescriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    // Whether it listens is its own matter.
    const ssize_t sent = sendto(descriptor.get(), state.constData(), size_t(state.size()), MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr *>(&address),
                                socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size())));
    Q_UNUSED(sent)
}

} // namespace morvek
