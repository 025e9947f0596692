// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STATIONPROFILE_H
#define MORVEK_HOSTD_STATIONPROFILE_H

#include "accesspointtext.h"
#include "gobject.h"

namespace morvek {

struct WifiNetwork;

/*! Makes what the network manager calls a connection: the settings by which a network is joined. */
namespace StationProfile {

/*! \a isHidden: the network has to be asked for by its name. It is never joined by itself. */
GRef<NMConnection> make(const WifiNetwork &network, AccessPointText::Way way, bool isHidden);
/*! From now on the network is joined by itself: so it is kept. */
void setKept(NMConnection *profile);
bool isKept(NMConnection *profile);
QString ssidOf(NMConnection *profile);

} // namespace StationProfile

} // namespace morvek

#endif
