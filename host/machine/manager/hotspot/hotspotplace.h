// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTPLACE_H
#define MORVEK_HOSTD_HOTSPOTPLACE_H

#include "hotspotchannel.h"
#include "hotspotsubnet.h"
#include "managerclient.h"
#include "refusal.h"

namespace morvek {

/*! Where on this machine a hotspot can be. */
namespace HotspotPlace {

/*! Whether there is a radio that can be an access point, usable now or not. */
bool exists(const ManagerClient &client);
/*!
 * The radio for it: rather one that is not connected, and of those, or of connected ones, rather not the one that
 * applications join networks with. Null, with the reason, when none can be used now.
 */
NMDeviceWifi *radio(const ManagerClient &client, Refusal *refusal);
/*! Why \a radio cannot be used now. */
Refusal objection(const ManagerClient &client, NMDeviceWifi *radio);

HotspotAir air(const ManagerClient &client, NMDeviceWifi *radio);
/*! The IPv4 networks of all other interfaces. */
QVector<HotspotSubnet> takenSubnets(const ManagerClient &client, NMDeviceWifi *radio);

} // namespace HotspotPlace

} // namespace morvek

#endif
