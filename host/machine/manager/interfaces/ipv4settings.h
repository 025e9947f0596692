// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_IPV4SETTINGS_H
#define MORVEK_HOSTD_IPV4SETTINGS_H

#include "gobject.h"

namespace morvek {

struct NetworkingRequest;

/*! The network manager's connections, with the IPv4 settings that applications ask for. */
namespace Ipv4Settings {

/*! Those of \a connection, or the manager's defaults. */
GRef<NMSettingIPConfig> copyOf(NMConnection *connection);

/*! Whether others get addresses from this machine over \a connection, such as the stations of a hotspot. */
bool isShared(NMConnection *connection);

/*!
 * What \a request makes of \a present: it takes the addresses, or gives others. \a own are the settings before the
 * first request, which is where all that no request names comes from, such as metrics.
 */
GRef<NMConnection> applied(NMConnection *present, NMSettingIPConfig *own, const NetworkingRequest &request);

/*! A connection for a wired \a device that has none, with what \a request asks for. */
GRef<NMConnection> made(NMDevice *device, const NetworkingRequest &request);

/*! After how many seconds the manager gives up when no DHCP server answers; -1 for never. */
int dhcpTimeout(NMConnection *connection);

} // namespace Ipv4Settings

} // namespace morvek

#endif
