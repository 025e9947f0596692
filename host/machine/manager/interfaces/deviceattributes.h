// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_DEVICEATTRIBUTES_H
#define MORVEK_HOSTD_DEVICEATTRIBUTES_H

#include "attributes.h"
#include "gobject.h"

#include <QtCore/QVector>

namespace morvek {

/*! What the daemons publish of the network manager's devices. */
namespace DeviceAttributes {

/*! "10.0.0.2/255.255.255.0"; clients keep the last, so the manager's first comes last. */
QStringList ipv4Addresses(NMDevice *device);
/*! "fe80::1/64" */
QStringList ipv6Addresses(NMDevice *device);
/*! Whether its IPv4 addresses come from a DHCP server. */
bool hasLease(NMDevice *device);
/*! Whether it is connected, or on the way to it: then settings are applied to it. */
bool isActive(NMDevice *device);

/*! Everything that the manager knows of \a device. */
Attributes read(NMDevice *device);

/*! The names of those of \a devices that default routes lead to: IPv4 by metric, then IPv6; with both, twice. */
QStringList routed(const QVector<NMDevice *> &devices);

} // namespace DeviceAttributes

} // namespace morvek

#endif
