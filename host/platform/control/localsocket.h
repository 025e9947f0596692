// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LOCALSOCKET_H
#define MORVEK_LOCALSOCKET_H

#include "filedescriptor.h"

#include <QtCore/QString>

#include <sys/types.h>

namespace morvek {

class ZopPath;

/*! Sockets at files below the root, between processes of one user. */
namespace LocalSocket {

/*!
 * A socket that is connected to who listens at the file \a name of the folder of \a path. Not open, with errno, when
 * there is none: isNobody() tells that from what only hinders this process at present.
 */
FileDescriptor connectTo(const ZopPath &path, const QByteArray &name, QString *error);
/*! Whether \a error of connectTo() means that nobody listens there for this user. */
bool isNobody(int error);

/*! A socket that listens at the file \a name of the folder of \a path. */
FileDescriptor listenAt(const ZopPath &path, const QByteArray &name, QString *error);
/*! Whether the other side of \a socket is this user's; then \a process is the one that has opened it. */
bool isOwnPeer(int socket, pid_t *process = nullptr);

} // namespace LocalSocket

} // namespace morvek

#endif
