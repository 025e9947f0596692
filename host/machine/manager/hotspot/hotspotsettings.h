// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTSETTINGS_H
#define MORVEK_HOSTD_HOTSPOTSETTINGS_H

#include "gobject.h"
#include "hotspotchannel.h"
#include "hotspotprofile.h"
#include "hotspotsubnet.h"

namespace morvek {

/*! The manager's settings of a hotspot: an access point with addresses and a way out for who joins it. */
namespace HotspotSettings {

/*!
 * \a network on a radio, as the profile \a uuid. With \a canIsolate false, nothing is said about clients among each
 * other, as a manager that does not know that setting refuses all of them.
 */
GRef<NMConnection> make(const HotspotProfile::Network &network, const char *uuid, const QString &interface,
                        const HotspotChannel &channel, const HotspotSubnet &subnet, bool canIsolate);

} // namespace HotspotSettings

} // namespace morvek

#endif
