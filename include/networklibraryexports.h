// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKLIBRARYEXPORTS_H
#define MORVEK_NETWORKLIBRARYEXPORTS_H

#include "networkexport.h"

namespace morvek {
class HotSpotService;
class NetworkInterfaceService;
class WifiService;
} // namespace morvek

extern "C" {

/*! A new service, which the caller owns and gives back to deleteHotSpotService(). */
MORVEK_NETWORK_EXPORT morvek::HotSpotService *newHotSpotService();

/*! Deletes \a *service and sets it to null. Does nothing when \a service or \a *service is null. */
MORVEK_NETWORK_EXPORT void deleteHotSpotService(morvek::HotSpotService **service);

/*! A new service, which the caller owns and gives back to deleteNetworkInterfaceService(). */
MORVEK_NETWORK_EXPORT morvek::NetworkInterfaceService *newNetworkInterfaceService();

/*! Deletes \a *service and sets it to null. Does nothing when \a service or \a *service is null. */
MORVEK_NETWORK_EXPORT void deleteNetworkInterfaceService(morvek::NetworkInterfaceService **service);

/*! A new service, which the caller owns and gives back to deleteWifiService(). */
MORVEK_NETWORK_EXPORT morvek::WifiService *newWifiService();

/*! Deletes \a *service and sets it to null. Does nothing when \a service or \a *service is null. */
MORVEK_NETWORK_EXPORT void deleteWifiService(morvek::WifiService **service);

} // extern "C"

#endif
