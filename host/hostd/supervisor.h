// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SUPERVISOR_H
#define MORVEK_HOSTD_SUPERVISOR_H

#include <QtCore/QByteArray>

namespace morvek {

/*! Who has started this program as a service and wants to know how it goes (systemd), if anybody has. */
namespace Supervisor {

// What it may be told.
const QByteArray Ready = QByteArrayLiteral("READY=1");
const QByteArray Stopping = QByteArrayLiteral("STOPPING=1");

/*! By the socket that NOTIFY_SOCKET names: a path or, behind "@", a name that is none. */
void tell(const QByteArray &state);

} // namespace Supervisor

} // namespace morvek

#endif
