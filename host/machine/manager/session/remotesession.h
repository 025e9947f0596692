// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_REMOTESESSION_H
#define MORVEK_HOSTD_REMOTESESSION_H

#include "kernelnetwork.h"

#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

namespace morvek {

/*! The remote session (SSH) in which the user has started this program, and what carries it. */
namespace RemoteSession {

/*! An interface of the machine. */
struct Interface
{
    QString name;
    QList<QHostAddress> addresses;
    KernelLink link;
};

/*!
 * SSH_CONNECTION as the process \a pid was started with it, or else the nearest of its ancestors: sudo drops it on the
 * way. \a processes is where the kernel tells of them.
 */
QByteArray connection(qint64 pid, const QString &processes = QStringLiteral("/proc"));

/*! The machine's own address in \a connection; null when there is none. */
QHostAddress address(const QByteArray &connection);

struct Carriers
{
    QStringList names;
    bool isCertain = true; //!< else they are what the default routes lead to, as no interface has the address
};

/*!
 * Those of \a interfaces, by index, that have \a address, and all that carry them. What a tunnel is carried by is not
 * told: it may be whatever the default \a routes lead to.
 */
Carriers carriers(const QHostAddress &address, const QMap<int, Interface> &interfaces,
                  const QVector<KernelRoute> &routes);

/*! What carries the session of this process now, and the machine's \a own address in it, which is null for none. */
bool read(QHostAddress *own, Carriers *carried, QString *error);

} // namespace RemoteSession

} // namespace morvek

#endif
