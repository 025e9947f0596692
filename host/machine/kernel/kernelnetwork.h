// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_KERNELNETWORK_H
#define MORVEK_HOSTD_KERNELNETWORK_H

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*! What the kernel tells of an interface beside addresses and flags. */
struct KernelLink
{
    int parentIndex = 0; //!< the interface that carries this one; 0 when there is none in this namespace
    int masterIndex = 0; //!< the bridge or bond that this is a port of; 0 when there is none
    QByteArray kind;     //!< such as "vlan", "bridge" or "wireguard"; empty for hardware
    QByteArray bus;      //!< such as "pci" or "usb"; empty when it is on none
};

struct KernelRoute
{
    int interfaceIndex = 0;
    QString gateway; //!< an IPv4 address, or empty
    quint32 metric = 0;
};

/*! Asks the kernel over rtnetlink. Each call asks anew. */
namespace KernelNetwork {

/*! Every interface by its index. */
bool readLinks(QMap<int, KernelLink> *links, QString *error);

/*! Default routes that work, the most preferred first: IPv4 by metric, then IPv6 by metric. */
bool readDefaultRoutes(QVector<KernelRoute> *routes, QString *error);

} // namespace KernelNetwork

} // namespace morvek

#endif
