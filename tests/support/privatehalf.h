// SPDX-License-Identifier: Apache-2.0
#ifndef PRIVATEHALF_H
#define PRIVATEHALF_H

#include "hotspotservice_p.h"
#include "networkinterfacedata.h"
#include "networkinterfaceservice_p.h"
#include "wifiservice_p.h"

/*!
 * The private half of a service, which the class hides: naming a member in an explicit instantiation is allowed
 * whatever its access.
 */
template<typename Service, auto Member>
struct PrivateHalf
{
    friend auto &privateHalf(Service &service) { return service.*Member; }
};

template struct PrivateHalf<morvek::HotSpotService, &morvek::HotSpotService::d>;
template struct PrivateHalf<morvek::NetworkInterfaceService, &morvek::NetworkInterfaceService::d>;
template struct PrivateHalf<morvek::WifiService, &morvek::WifiService::d>;

auto &privateHalf(morvek::HotSpotService &service);
auto &privateHalf(morvek::NetworkInterfaceService &service);
auto &privateHalf(morvek::WifiService &service);

template<typename Service>
using PrivateHalfOf = typename std::decay<decltype(*privateHalf(std::declval<Service &>()))>::type;

#endif
